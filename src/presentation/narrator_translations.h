#pragma once

// Word replacements for the speech narrator: how a name or word is to be
// pronounced ("Pietrangelo" said as "pea tran jello"). They change only what
// is spoken, never the written play-by-play. The table lies in the file
// "TLY-HK-Translate2021.csv" of the data root's "Sounds" folder (the number
// is the program's data year): one entry a line, the name, a comma and the
// translation.

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "league/setup.h"

namespace tallyrink {

namespace fs = std::filesystem;

inline constexpr std::size_t kMaxNarratorTranslations = 100000;
// A file shorter than this holds no entry worth reading and is left alone.
inline constexpr std::uint64_t kShortestTranslationFile = 10;

// "TLY-HK-Translate2021.csv" for the data year 2021.
std::string translationFileName(int dataYear = kEditionYear);
// The translation file below the data root, matched without regard to case.
fs::path translationFile(const fs::path& dataRoot, int dataYear = kEditionYear);

struct NarratorTranslation {
    std::string name;
    std::string translation;
};

class NarratorTranslations {
public:
    // The table of a file. A missing, unreadable or nearly empty file gives
    // an empty table: the narrator then speaks the text unchanged.
    static NarratorTranslations read(const fs::path& path);
    // Entries from the lines of a file: comma-separated fields, quoted or
    // not; the first is the name and the rest, joined by commas, the
    // translation. Lines without a name or without a comma are passed over.
    static NarratorTranslations parse(std::string_view text);

    [[nodiscard]] const std::vector<NarratorTranslation>& entries() const { return entries_; }
    [[nodiscard]] std::size_t size() const { return entries_.size(); }

    // Appends an entry; returns false when the table is full.
    bool add(std::string name, std::string translation);

    // The translation of the last entry whose name matches (case ignored).
    [[nodiscard]] std::optional<std::string> lookup(std::string_view name) const;
    // The name as the narrator would say it: its translation, else itself.
    [[nodiscard]] std::string spokenName(std::string_view name) const;

    // The editor's save of a pair: every entry of the name (case ignored)
    // takes the translation, or when there is none the trimmed pair is
    // appended. Returns false for an empty name or translation, or a full table.
    bool set(std::string_view name, std::string_view translation);

    // The file's text: "name,translation" a line. A field that holds a comma,
    // a quote or outer blanks is quoted so that it reads back the same.
    [[nodiscard]] std::string text() const;
    // Whole-file rewrite; throws FileError naming the file.
    void write(const fs::path& path) const;

    // The speech filter: the text with every word replaced as the table says,
    // then generation suffixes dropped and numbers, ordinals and penalty
    // times spelt out for the voice.
    [[nodiscard]] std::string filter(std::string_view text) const;

private:
    std::vector<NarratorTranslation> entries_;
    std::vector<std::string> upperNames_;  // beside entries_: names in upper case, for the filter
};

}  // namespace tallyrink
