#include "presentation/narrator_translations.h"

#include <fmt/format.h>

#include <array>
#include <utility>

#include "league/files.h"
#include "presentation/ansi_text.h"

namespace tallyrink {

namespace {

std::string_view trimmed(std::string_view s) {
    const auto begin = s.find_first_not_of(' ');
    if (begin == std::string_view::npos) return {};
    const auto end = s.find_last_not_of(' ');
    return s.substr(begin, end - begin + 1);
}

// Fields of one line: a field that opens with a quote runs to its closing
// quote, a doubled quote standing for one; an unquoted field loses its
// outer blanks.
std::vector<std::string> splitFields(std::string_view line) {
    std::vector<std::string> fields;
    std::size_t i = 0;
    while (true) {
        while (i < line.size() && line[i] == ' ') ++i;
        std::string field;
        if (i < line.size() && line[i] == '"') {
            ++i;
            while (i < line.size()) {
                if (line[i] == '"') {
                    if (i + 1 < line.size() && line[i + 1] == '"') {
                        field += '"';
                        i += 2;
                        continue;
                    }
                    ++i;
                    break;
                }
                field += line[i++];
            }
            // Anything between the closing quote and the comma is dropped.
            while (i < line.size() && line[i] != ',') ++i;
        } else {
            const auto comma = line.find(',', i);
            const auto end = comma == std::string_view::npos ? line.size() : comma;
            field = std::string(trimmed(line.substr(i, end - i)));
            i = end;
        }
        fields.push_back(std::move(field));
        if (i >= line.size()) break;
        ++i;  // the comma
    }
    return fields;
}

std::string quotedIfNeeded(const std::string& field) {
    const bool plain = field.find_first_of(",\"") == std::string::npos &&
                       (field.empty() || (field.front() != ' ' && field.back() != ' '));
    if (plain) return field;
    std::string out = "\"";
    for (char c : field) {
        if (c == '"') out += '"';
        out += c;
    }
    return out + "\"";
}

bool sameName(std::string_view a, std::string_view b) { return upperAnsi(a) == upperAnsi(b); }

constexpr std::array<std::pair<std::string_view, std::string_view>, 14> kSpokenForms = {{
    {"9", "nine"},
    {"1st", "first"},
    {"2nd", "second"},
    {"3rd", "third"},
    {"4th", "fourth"},
    {"5th", "fifth"},
    {"6th", "sixth"},
    {"7th", "seventh"},
    {"8th", "eight"},
    {"9th", "ninth"},
    {"10th", "tenth"},
    {"2:00", "two minutes"},
    {"5:00", "five minutes"},
    {"10:00", "ten minutes"},
}};

// Suffixes a voice would read as letters or numerals; a name sounds right without them.
constexpr std::array<std::string_view, 6> kSilentWords = {"ii", "iii", "jr.", "jr", "sr.", "sr"};

std::string spokenForm(std::string word) {
    const std::string lower = lowerAnsi(word);
    for (auto silent : kSilentWords)
        if (lower == silent) return {};
    for (const auto& [written, spoken] : kSpokenForms)
        if (lower == written) return std::string(spoken);
    return word;
}

}  // namespace

std::string translationFileName(int dataYear) { return fmt::format("TLY-HK-Translate{}.csv", dataYear); }

fs::path translationFile(const fs::path& dataRoot, int dataYear) {
    return findFile(dataRoot, "Sounds/" + translationFileName(dataYear));
}

NarratorTranslations NarratorTranslations::read(const fs::path& path) {
    if (fileLength(path) < kShortestTranslationFile) return {};
    try {
        const auto bytes = readBytes(path);
        return parse(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    } catch (const FileError&) {
        return {};
    }
}

NarratorTranslations NarratorTranslations::parse(std::string_view text) {
    NarratorTranslations table;
    while (!text.empty()) {
        const auto nl = text.find('\n');
        auto line = text.substr(0, nl);
        text = nl == std::string_view::npos ? std::string_view() : text.substr(nl + 1);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        auto fields = splitFields(line);
        if (fields.size() < 2 || fields[0].empty()) continue;
        std::string translation = fields[1];
        for (std::size_t i = 2; i < fields.size(); ++i) translation += "," + fields[i];
        if (!table.add(std::move(fields[0]), std::move(translation))) break;
    }
    return table;
}

bool NarratorTranslations::add(std::string name, std::string translation) {
    if (entries_.size() >= kMaxNarratorTranslations) return false;
    upperNames_.push_back(upperAnsi(name));
    entries_.push_back({std::move(name), std::move(translation)});
    return true;
}

std::optional<std::string> NarratorTranslations::lookup(std::string_view name) const {
    const auto wanted = trimmed(name);
    for (auto it = entries_.rbegin(); it != entries_.rend(); ++it)
        if (sameName(it->name, wanted)) return it->translation;
    return std::nullopt;
}

std::string NarratorTranslations::spokenName(std::string_view name) const {
    auto t = lookup(name);
    return t ? *t : std::string(name);
}

bool NarratorTranslations::set(std::string_view name, std::string_view translation) {
    const auto n = trimmed(name);
    const auto t = trimmed(translation);
    if (n.empty() || t.empty()) return false;
    bool replaced = false;
    for (auto& e : entries_) {
        if (!sameName(e.name, n)) continue;
        e.translation = std::string(t);
        replaced = true;
    }
    return replaced || add(std::string(n), std::string(t));
}

std::string NarratorTranslations::text() const {
    std::string out;
    for (const auto& e : entries_) out += quotedIfNeeded(e.name) + "," + quotedIfNeeded(e.translation) + "\n";
    return out;
}

void NarratorTranslations::write(const fs::path& path) const { writeFileAtomic(path, text()); }

std::string NarratorTranslations::filter(std::string_view text) const {
    std::string out;
    if (text.empty()) return out;
    std::size_t start = 0;
    while (start <= text.size()) {
        // Words are split at each single blank, so a run of blanks gives empty words.
        auto blank = text.find(' ', start);
        if (blank == std::string_view::npos) blank = text.size();
        std::string word(trimmed(text.substr(start, blank - start)));
        // Each match feeds the next entry, so a later entry can refine an earlier one.
        std::string upper = upperAnsi(word);
        for (std::size_t i = 0; i < entries_.size(); ++i) {
            if (upper != upperNames_[i]) continue;
            word = entries_[i].translation;
            upper = upperAnsi(word);
        }
        // Every word goes after a blank, the first too; a voice doesn't hear it.
        out += ' ';
        out += spokenForm(std::move(word));
        start = blank + 1;
    }
    return out;
}

}  // namespace tallyrink
