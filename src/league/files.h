#pragma once

// The league folder's files: fixed-slot random-access files, whole-file text
// files, and the name lookup that ignores case. Every operation opens, uses
// and closes its file; nothing stays open between operations.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "league/codec.h"

namespace tallyrink {

namespace fs = std::filesystem;

// File names as the league folder spells them; looked up without regard to case.
inline constexpr std::string_view kPlayerFile = "HKPLAYER";
inline constexpr std::string_view kTeamFile = "HKTEAMS";
inline constexpr std::string_view kGamePlanFile = "HKgameplan";
inline constexpr std::string_view kLeadersWorkFile = "HKPLAYER-Leaders";

// An I/O failure the user must hear about: the message names the file.
class FileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Record counts are worked out from a file's length with a rounding that
// differs by file: Int(length / slot + num / den).
struct Rounding {
    std::uint64_t num;
    std::uint64_t den;
};
inline constexpr Rounding kScheduleRounding{3, 4};
inline constexpr Rounding kScoresRounding{1, 2};
inline constexpr Rounding kPlayerRounding{1, 2};
inline constexpr Rounding kDisplayRounding{9, 10};
inline constexpr Rounding kNewPlayerTradeRounding{9, 10};
inline constexpr Rounding kWholeSlots{0, 1};

constexpr std::size_t recordCount(std::uint64_t length, std::size_t slot, Rounding r) {
    return static_cast<std::size_t>((length * r.den + r.num * slot) / (slot * r.den));
}

// The path of `name` below `dir`, matched without regard to case. A name may
// hold several parts separated by "/" or "\"; each is matched in turn. When
// nothing matches, the name is returned as written so that a new file gets it.
fs::path findFile(const fs::path& dir, std::string_view name);

// Length in bytes, 0 for a file that isn't there.
std::uint64_t fileLength(const fs::path& path);

// Whole file as bytes; a missing file is empty.
std::vector<std::uint8_t> readBytes(const fs::path& path);

// Writes a whole file through a temporary file in the same folder renamed over
// the old one, so a failure part way leaves the old file as it was.
void writeFileAtomic(const fs::path& path, std::span<const std::uint8_t> bytes);
void writeFileAtomic(const fs::path& path, std::string_view text);

// Text-in: lines without their line ends (CR LF or LF). A missing file is
// created empty where the folder allows it and reads as no lines.
std::vector<std::string> readLines(const fs::path& path);
// Text-out: the file is replaced by these lines.
void writeLines(const fs::path& path, const std::vector<std::string>& lines);
// Append: one line added at the end.
void appendLine(const fs::path& path, std::string_view line);

// A random-access file of fixed slots; record r (from 1) starts at
// (r - 1) * slot. A record shorter than its slot leaves the rest unwritten.
class RandomFile {
public:
    RandomFile(fs::path path, std::size_t slot) : path_(std::move(path)), slot_(slot) {}

    [[nodiscard]] const fs::path& path() const { return path_; }
    [[nodiscard]] std::size_t slot() const { return slot_; }
    [[nodiscard]] std::uint64_t length() const { return fileLength(path_); }
    [[nodiscard]] std::size_t count(Rounding r) const { return recordCount(length(), slot_, r); }

    // The bytes of slot r; bytes past the end of the file read as zero.
    [[nodiscard]] std::vector<std::uint8_t> readSlot(std::size_t r) const;
    // All slots up to `count`, each zero-padded to the slot length.
    [[nodiscard]] std::vector<std::vector<std::uint8_t>> readSlots(std::size_t count) const;

    // Writes `bytes` at the start of slot r in place, extending the file with
    // zero bytes when r lies past its end.
    void writeSlot(std::size_t r, std::span<const std::uint8_t> bytes) const;
    // Replaces the file by these slots (temporary file, then rename).
    void rewrite(const std::vector<std::vector<std::uint8_t>>& slots) const;

private:
    fs::path path_;
    std::size_t slot_;
};

// Reads many slots of one file through one open file, for loads that pick
// records here and there (a roster's players). Reads as readSlot does.
class SlotReader {
public:
    explicit SlotReader(const RandomFile& file);
    [[nodiscard]] std::vector<std::uint8_t> readSlot(std::size_t r);
    // The same into `into`, whose room a reader of many slots keeps.
    void readSlot(std::size_t r, std::vector<std::uint8_t>& into);

private:
    const RandomFile& file_;
    std::ifstream in_;
    bool open_ = false;
};

template <codec::Record R>
R readRecord(SlotReader& f, std::size_t r) {
    auto bytes = f.readSlot(r);
    return codec::fromSlot<R>(bytes);
}

template <codec::Record R>
R readRecord(const RandomFile& f, std::size_t r) {
    auto bytes = f.readSlot(r);
    return codec::fromSlot<R>(bytes);
}

// Writes the record part of the slot only, so a slot tail on disk stays as it
// was; the tail kept in memory is written only by a whole-file rewrite.
template <codec::Record R>
void writeRecord(const RandomFile& f, std::size_t r, const R& rec) {
    f.writeSlot(r, codec::recordBytes(rec));
}

template <codec::Record R>
std::vector<R> readRecords(const RandomFile& f, std::size_t count) {
    std::vector<R> out;
    out.reserve(count);
    for (const auto& s : f.readSlots(count)) out.push_back(codec::fromSlot<R>(s));
    return out;
}

template <codec::Record R>
void rewriteRecords(const RandomFile& f, const std::vector<R>& recs) {
    std::vector<std::vector<std::uint8_t>> slots;
    slots.reserve(recs.size());
    for (const auto& r : recs) slots.push_back(codec::toSlot(r));
    f.rewrite(slots);
}

}  // namespace tallyrink
