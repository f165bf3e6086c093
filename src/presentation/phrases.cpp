#include "presentation/phrases.h"

#include <fmt/format.h>

#include <algorithm>
#include <system_error>

#include "league/files.h"
#include "presentation/ansi_text.h"

namespace tallyrink::codec {

template <>
struct FieldTable<PhraseRecord> {
    static constexpr auto fields = std::tuple{
        Field{"Wording", 0, &PhraseRecord::Wording},
    };
};

static_assert(tilesExactly<PhraseRecord>());

TALLYRINK_INSTANTIATE_RECORD_CODEC(PhraseRecord)

}  // namespace tallyrink::codec

namespace tallyrink {

namespace {

const std::string kNoWording;

bool validKey(int key) { return key >= 1 && key <= kPhraseKeys; }
bool validVariant(int variant) { return variant >= 1 && variant <= kPhraseVariants; }

std::string rightTrimmed(std::string_view text) {
    const auto end = text.find_last_not_of(' ');
    return end == std::string_view::npos ? std::string() : std::string(text.substr(0, end + 1));
}

std::string_view trimmedBlanks(std::string_view text) {
    const auto begin = text.find_first_not_of(' ');
    if (begin == std::string_view::npos) return {};
    const auto end = text.find_last_not_of(' ');
    return text.substr(begin, end - begin + 1);
}

// A default longer than the record is stored cut; read back, it is still the
// default, and the narration should say it whole.
bool isStoredDefault(std::string_view stored, std::string_view fallback) {
    if (fallback.empty()) return false;
    if (stored == fallback) return true;
    return fallback.size() > kPhraseWidth && stored == trimmedBlanks(fallback.substr(0, kPhraseWidth));
}

std::optional<WordingFault> faultOf(std::string_view stored, int key, int variant) {
    const auto fallback = defaultWording(key);
    if (isStoredDefault(stored, fallback)) return std::nullopt;
    if (std::any_of(stored.begin(), stored.end(), isControlByte)) return WordingFault::NotText;
    if (stored.empty()) return fallback.empty() ? std::nullopt : std::optional(WordingFault::Blank);
    if (stored.size() < kShortestWording) return WordingFault::TooShort;
    if (variant == 1 && stored != fallback) return WordingFault::FirstSlot;
    return std::nullopt;
}

// Most of what the file holds isn't text: it is some other kind of file, and
// the few records that happen to read as words are noise, not wordings.
bool looksForeign(std::size_t nonBlank, std::size_t notText) { return notText > 0 && notText * 2 > nonBlank; }

}  // namespace

std::string_view defaultWording(int key) {
    if (key < 1 || key > kDefaultPhraseKeys) return {};
    return DefaultPhrases[static_cast<std::size_t>(key)];
}

// ---- PhraseTable ---------------------------------------------------------------

PhraseTable::PhraseTable() : wordings_(kPhraseRecords) {}

std::size_t PhraseTable::index(int variant, int key) { return phraseRecordNumber(key, variant) - 1; }

PhraseTable PhraseTable::defaults() {
    PhraseTable t;
    for (int key = 1; key <= kPhraseKeys; ++key)
        for (int v = 1; v <= kPhraseVariants; ++v) t.wordings_[index(v, key)] = std::string(defaultWording(key));
    return t;
}

const std::string& PhraseTable::operator()(int variant, int key) const {
    if (!validKey(key)) return kNoWording;
    return wordings_[index(validVariant(variant) ? variant : 1, key)];
}

void PhraseTable::set(int variant, int key, std::string_view text) {
    if (!validKey(key) || !validVariant(variant)) return;
    wordings_[index(variant, key)] = rightTrimmed(text);
}

const std::string& PhraseTable::phrase(int key, Random& random) const { return (*this)(drawVariant(random), key); }

const std::string& PhraseTable::phrase(int base, int count, Random& random) const {
    const int key = base + random.rand(count);
    return phrase(key, random);
}

void PhraseTable::resetToDefaults() {
    for (int key = 1; key <= kPhraseKeys; ++key) {
        const std::string first = wordings_[index(1, key)];
        for (int v = 2; v <= kPhraseVariants; ++v) wordings_[index(v, key)] = first;
    }
}

std::vector<PhraseHit> PhraseTable::search(std::string_view text) const {
    std::vector<PhraseHit> hits;
    if (text.empty()) return hits;
    const std::string wanted = upperAnsi(text);
    for (int key = 1; key <= kPhraseKeys; ++key) {
        for (int v = 1; v <= kPhraseVariants; ++v) {
            // The editor compares the 40-character form a save would store.
            FixedText<kPhraseWidth> form;
            form.assign(wordings_[index(v, key)]);
            const std::string padded = upperAnsi(std::string_view(form.raw.data(), kPhraseWidth));
            if (padded.find(wanted) != std::string::npos) hits.push_back({key, v, wordings_[index(v, key)]});
        }
    }
    return hits;
}

std::string searchRow(const PhraseHit& hit) { return fmt::format("{:>3} {}", hit.key, hit.wording); }

// ---- PhraseFile ----------------------------------------------------------------

PhraseFile PhraseFile::fromBytes(std::span<const std::uint8_t> bytes) {
    PhraseFile f;
    f.length = bytes.size();
    for (std::size_t r = 0; r < kPhraseRecords; ++r) {
        const std::size_t begin = r * kPhraseWidth;
        if (begin >= bytes.size()) break;
        const std::size_t n = std::min(kPhraseWidth, bytes.size() - begin);
        f.records[r] = codec::fromSlot<PhraseRecord>(bytes.subspan(begin, n));
    }
    if (bytes.size() > kPhraseFileBytes) f.trailing.assign(bytes.begin() + kPhraseFileBytes, bytes.end());
    return f;
}

PhraseFile PhraseFile::read(const fs::path& path) { return fromBytes(readBytes(path)); }

PhraseFile PhraseFile::ofTable(const PhraseTable& table) {
    PhraseFile f;
    for (int key = 1; key <= kPhraseKeys; ++key)
        for (int v = 1; v <= kPhraseVariants; ++v) f.at(key, v).Wording.assign(table(v, key));
    f.length = kPhraseFileBytes;
    return f;
}

PhraseFile PhraseFile::standard() { return ofTable(PhraseTable::defaults()); }

std::vector<std::uint8_t> PhraseFile::bytes() const {
    std::vector<std::uint8_t> out;
    out.reserve(kPhraseFileBytes + trailing.size());
    for (const auto& r : records) {
        const auto slot = codec::toSlot(r);
        out.insert(out.end(), slot.begin(), slot.end());
    }
    out.insert(out.end(), trailing.begin(), trailing.end());
    return out;
}

void PhraseFile::write(const fs::path& path) const { writeFileAtomic(path, bytes()); }

// ---- loading -------------------------------------------------------------------

std::string_view faultText(WordingFault fault) {
    switch (fault) {
        case WordingFault::Blank:
            return "blank";
        case WordingFault::TooShort:
            return "shorter than 5 characters";
        case WordingFault::NotText:
            return "not text";
        case WordingFault::FirstSlot:
            return "slot 1 always holds the default";
    }
    return "";
}

std::size_t PhraseLoadReport::fallbacks() const {
    if (foreign || readError) return std::size_t{kDefaultPhraseKeys} * kPhraseVariants;
    std::size_t n = missingWithDefault;
    for (const auto& f : faults) n += f.key <= kDefaultPhraseKeys;
    return n;
}

PhraseLoad loadPhrases(const PhraseFile& file) {
    PhraseLoad out;
    auto& report = out.report;
    report.length = file.length;
    // A record cut by the end of the file holds part of a wording: the load
    // treats it as missing rather than narrate half a phrase.
    report.recordsFound = static_cast<std::size_t>(std::min<std::uint64_t>(kPhraseRecords, file.length / kPhraseWidth));

    std::vector<std::string> stored(kPhraseRecords);
    for (std::size_t r = 0; r < kPhraseRecords; ++r) {
        stored[r] = file.records[r].Wording.str();
        if (stored[r].empty()) continue;
        ++report.nonBlank;
        report.notText += std::any_of(stored[r].begin(), stored[r].end(), isControlByte);
    }
    report.foreign = looksForeign(report.nonBlank, report.notText);
    if (report.foreign) return out;

    for (int key = 1; key <= kPhraseKeys; ++key) {
        for (int v = 1; v <= kPhraseVariants; ++v) {
            const std::size_t r = phraseRecordNumber(key, v) - 1;
            if (r >= report.recordsFound) {
                report.missingWithDefault += key <= kDefaultPhraseKeys;
                continue;  // the table already holds the default
            }
            const auto fault = faultOf(stored[r], key, v);
            if (fault) {
                report.faults.push_back({key, v, *fault, stored[r]});
            } else if (!isStoredDefault(stored[r], defaultWording(key))) {
                out.table.set(v, key, stored[r]);
            }
        }
    }
    return out;
}

PhraseLoad loadPhraseFile(const fs::path& path) {
    try {
        return loadPhrases(PhraseFile::read(path));
    } catch (const FileError& e) {
        PhraseLoad out;
        out.report.readError = e.what();
        return out;
    }
}

// ---- the program folder --------------------------------------------------------

std::string activePhraseFileName(std::string_view playByPlayFile) {
    const auto name = trimmedBlanks(playByPlayFile);
    const bool leavesFolder = name.find_first_of("/\\") != std::string_view::npos;
    if (leavesFolder || name.size() < 3 || upperAnsi(name.substr(name.size() - 3)) != "HKP")
        return std::string(kStandardPhraseFile);
    return std::string(name);
}

fs::path activePhraseFile(const fs::path& programDir, std::string_view playByPlayFile) {
    return findFile(programDir, activePhraseFileName(playByPlayFile));
}

bool restoreStandardPhraseFile(const fs::path& programDir) {
    const auto working = findFile(programDir, kStandardPhraseFile);
    const auto master = findFile(programDir, kMasterPhraseFile);
    if (fileLength(working) >= kWorkingFileShortBelow || fileLength(master) <= kMasterUsableAbove) return false;
    try {
        writeFileAtomic(working, readBytes(master));
        return true;
    } catch (const FileError&) {
        return false;
    }
}

bool ensureMasterPhraseFile(const fs::path& programDir) {
    const auto master = findFile(programDir, kMasterPhraseFile);
    if (fileLength(master) >= kMasterRewriteBelow) return false;
    try {
        PhraseFile::standard().write(master);
        return true;
    } catch (const FileError&) {
        return false;
    }
}

PhraseLoad HkLoadPlayByPlay(const fs::path& programDir, std::string_view playByPlayFile) {
    ensureMasterPhraseFile(programDir);
    return loadPhraseFile(activePhraseFile(programDir, playByPlayFile));
}

void savePlayByPlay(const fs::path& programDir, std::string_view playByPlayFile, const PhraseTable& table) {
    const auto path = activePhraseFile(programDir, playByPlayFile);
    auto file = PhraseFile::ofTable(table);
    file.trailing = PhraseFile::read(path).trailing;
    file.write(path);
}

bool isStandardPhraseFile(std::string_view name) {
    return upperAnsi(trimmedBlanks(name)) == upperAnsi(kStandardPhraseFile);
}

std::optional<std::string> saveAsPhraseFileName(std::string_view typed) {
    auto name = trimmedBlanks(typed);
    if (name.ends_with(kPhraseFileExtension)) name.remove_suffix(kPhraseFileExtension.size());
    if (name.empty() || name.find_first_of("/\\") != std::string_view::npos) return std::nullopt;
    return std::string(name) + std::string(kPhraseFileExtension);
}

}  // namespace tallyrink
