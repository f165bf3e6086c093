#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "league/codec.h"
#include "league/files.h"
#include "presentation/phrases.h"
#include "support/source_tree.h"
#include "support/temp_dir.h"

namespace tallyrink {
namespace {

using testing::TempDir;

using Bytes = std::vector<std::uint8_t>;

std::size_t offsetOf(int key, int variant) { return (phraseRecordNumber(key, variant) - 1) * kPhraseWidth; }

std::string recordAt(const Bytes& bytes, int key, int variant) {
    const auto at = bytes.begin() + static_cast<std::ptrdiff_t>(offsetOf(key, variant));
    return std::string(at, at + static_cast<std::ptrdiff_t>(kPhraseWidth));
}

// Stores `text` in a record as a user's file would hold it: blank-padded,
// with no trimming, so leading blanks and control bytes go in as given.
void put(Bytes& bytes, int key, int variant, std::string_view text) {
    const auto at = offsetOf(key, variant);
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), kPhraseWidth, ' ');
    std::copy(text.begin(), text.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
}

std::string padded(std::string_view text) {
    std::string out(text.substr(0, kPhraseWidth));
    out.resize(kPhraseWidth, ' ');
    return out;
}

// A file in which every slot holds a wording of the user's own.
Bytes userFile() {
    Bytes b = PhraseFile::standard().bytes();
    for (int key = 1; key <= kPhraseKeys; ++key)
        for (int v = 1; v <= kPhraseVariants; ++v)
            put(b, key, v, "user " + std::to_string(key) + "/" + std::to_string(v));
    return b;
}

void expectDefaultsEverywhere(const PhraseTable& t) {
    for (int key = 1; key <= kPhraseKeys; ++key)
        for (int v = 1; v <= kPhraseVariants; ++v)
            ASSERT_EQ(t(v, key), defaultWording(key)) << "key " << key << " variant " << v;
}

TEST(PhraseLayout, RecordAndItsPlaceInTheFile) {
    EXPECT_EQ(codec::Layout<PhraseRecord>::size, 40u);
    const auto fields = codec::fieldInfo<PhraseRecord>();
    ASSERT_EQ(fields.size(), 1u);
    EXPECT_EQ(fields[0].name, "Wording");
    EXPECT_EQ(fields[0].offset, 0u);
    EXPECT_EQ(fields[0].width, 40u);

    EXPECT_EQ(phraseRecordNumber(1, 1), 1u);
    EXPECT_EQ(phraseRecordNumber(1, 20), 20u);
    EXPECT_EQ(phraseRecordNumber(2, 1), 21u);
    EXPECT_EQ(phraseRecordNumber(250, 20), 5000u);

    const Bytes b = PhraseFile::standard().bytes();
    ASSERT_EQ(b.size(), 200000u);
    EXPECT_EQ(recordAt(b, 1, 1), padded("at the left point"));
    EXPECT_EQ(recordAt(b, 62, 5), padded("rebound"));
    EXPECT_EQ(recordAt(b, 223, 20), padded("We'll go to yet another overtime period"));
    // A default longer than the record is stored cut.
    EXPECT_EQ(recordAt(b, 81, 2), "is cycling the puck in the attacking zon");
    // Keys without a default are blanks, not zero bytes.
    EXPECT_EQ(recordAt(b, 224, 1), std::string(40, ' '));
    EXPECT_EQ(recordAt(b, 250, 20), std::string(40, ' '));
}

TEST(PhraseLayout, DefaultWordingsKeepTheirNumbers) {
    EXPECT_EQ(DefaultPhrases[0], "at the point");
    EXPECT_EQ(defaultWording(5), "at the point");
    EXPECT_EQ(defaultWording(24), "shoots");
    EXPECT_EQ(defaultWording(100), "has control");
    EXPECT_EQ(defaultWording(162), "HE SCORES!");
    EXPECT_EQ(defaultWording(166), "five hole");
    EXPECT_EQ(defaultWording(223), "We'll go to yet another overtime period");
    EXPECT_EQ(defaultWording(224), "");
    EXPECT_EQ(defaultWording(0), "");
    EXPECT_EQ(defaultWording(251), "");
    // Every default must survive its own load rule.
    for (int key = 1; key <= kDefaultPhraseKeys; ++key) EXPECT_GE(defaultWording(key).size(), kShortestWording) << key;
}

TEST(PhraseLayout, ByteExactRoundTrip) {
    Bytes b = PhraseFile::standard().bytes();
    put(b, 62, 2, "loose rebound");
    put(b, 164, 7,
        "BUT! C\xE9l\xE9"
        "bration");
    put(b, 12, 3, "   leading blanks kept");
    std::fill_n(b.begin() + static_cast<std::ptrdiff_t>(offsetOf(40, 9)), kPhraseWidth, 0);  // never written
    const std::string extra = "bytes past the last record";
    b.insert(b.end(), extra.begin(), extra.end());

    EXPECT_EQ(PhraseFile::fromBytes(b).bytes(), b);

    TempDir dir;
    const auto path = dir / "Mine.HKp";
    writeFileAtomic(path, b);
    PhraseFile::read(path).write(dir / "Copy.HKp");
    EXPECT_EQ(readBytes(dir / "Copy.HKp"), b);
}

TEST(PhraseLayout, SaveCutsLongWordingsAndTrimsTheRight) {
    auto t = PhraseTable::defaults();
    const std::string longText = "a wording typed well past the forty characters";
    t.set(2, 50, longText);
    t.set(3, 50, "blocker stop   ");
    EXPECT_EQ(t(2, 50), longText);  // in memory until saved
    EXPECT_EQ(t(3, 50), "blocker stop");

    const Bytes b = PhraseFile::ofTable(t).bytes();
    EXPECT_EQ(recordAt(b, 50, 2), longText.substr(0, 40));
    EXPECT_EQ(recordAt(b, 50, 3), padded("blocker stop"));
    const auto back = loadPhrases(PhraseFile::fromBytes(b)).table;
    EXPECT_EQ(back(2, 50), longText.substr(0, 40));
}

TEST(PhraseLoad, MissingTruncatedAndForeignFilesGiveTheDefaults) {
    TempDir dir;
    {
        const auto load = loadPhraseFile(dir / "nothing.HKp");
        expectDefaultsEverywhere(load.table);
        EXPECT_EQ(load.report.recordsFound, 0u);
        EXPECT_EQ(load.report.fallbacks(), 223u * 20);
    }
    {
        writeFileAtomic(dir / "empty.HKp", Bytes{});
        expectDefaultsEverywhere(loadPhraseFile(dir / "empty.HKp").table);
    }
    {
        // Cut inside record 309 (key 16, variant 9): the whole records keep
        // their wordings, the cut one and everything after take the defaults.
        Bytes b = userFile();
        b.resize(12345);
        const auto load = loadPhrases(PhraseFile::fromBytes(b));
        EXPECT_EQ(load.report.recordsFound, 308u);
        EXPECT_EQ(load.table(2, 1), "user 1/2");
        EXPECT_EQ(load.table(8, 16), "user 16/8");
        EXPECT_EQ(load.table(9, 16), "on the wing");
        EXPECT_EQ(load.table(20, 200), defaultWording(200));
        EXPECT_EQ(load.table(20, 240), "");
    }
    {
        std::mt19937 gen(7);
        Bytes garbage(200000);
        for (auto& x : garbage) x = static_cast<std::uint8_t>(gen());
        const auto load = loadPhrases(PhraseFile::fromBytes(garbage));
        EXPECT_TRUE(load.report.foreign);
        EXPECT_TRUE(load.report.faults.empty());
        expectDefaultsEverywhere(load.table);
    }
    // The standard file loads as the built-in table, long defaults whole.
    const auto standard = loadPhrases(PhraseFile::standard());
    EXPECT_EQ(standard.table, PhraseTable::defaults());
    EXPECT_EQ(standard.table(7, 81), "is cycling the puck in the attacking zone");
    EXPECT_EQ(standard.table(7, 210), "some pushing and shoving after the whistle");
    EXPECT_TRUE(standard.report.faults.empty());
    EXPECT_EQ(standard.report.fallbacks(), 0u);
}

TEST(PhraseLoad, OneBadVariantFallsBackAlone) {
    Bytes b = PhraseFile::standard().bytes();
    put(b, 62, 1, "REBOUND!");          // slot 1 is always the default
    put(b, 62, 2, "loose rebound");     // kept
    put(b, 62, 3, "rebo");              // 4 characters
    put(b, 62, 4, "icing");             // 5 characters: kept
    put(b, 62, 5, "   loose puck   ");  // trimmed
    put(b, 62, 6, "bad\x01text");       // not text
    put(b, 62, 7, "");                  // blank
    put(b, 62, 8, "  abcd  ");          // 4 once trimmed
    put(b, 224, 1, "a user wording");   // slot 1 of a key without default: empty again
    put(b, 224, 2, "a user wording");   // kept: keys past 223 take what the user gives
    put(b, 224, 3, "abc");              // too short: empty
    const auto load = loadPhrases(PhraseFile::fromBytes(b));
    const auto& t = load.table;

    EXPECT_EQ(t(1, 62), "rebound");
    EXPECT_EQ(t(2, 62), "loose rebound");
    EXPECT_EQ(t(3, 62), "rebound");
    EXPECT_EQ(t(4, 62), "icing");
    EXPECT_EQ(t(5, 62), "loose puck");
    EXPECT_EQ(t(6, 62), "rebound");
    EXPECT_EQ(t(7, 62), "rebound");
    EXPECT_EQ(t(8, 62), "rebound");
    for (int v = 9; v <= 20; ++v) EXPECT_EQ(t(v, 62), "rebound");
    for (int v = 1; v <= 20; ++v) EXPECT_EQ(t(v, 61), defaultWording(61));
    EXPECT_EQ(t(1, 224), "");
    EXPECT_EQ(t(2, 224), "a user wording");
    EXPECT_EQ(t(3, 224), "");
    EXPECT_EQ(t(4, 224), "");

    struct Expected {
        int key;
        int variant;
        WordingFault fault;
    };
    const std::vector<Expected> expected = {
        {62, 1, WordingFault::FirstSlot}, {62, 3, WordingFault::TooShort}, {62, 6, WordingFault::NotText},
        {62, 7, WordingFault::Blank},     {62, 8, WordingFault::TooShort}, {224, 1, WordingFault::FirstSlot},
        {224, 3, WordingFault::TooShort},
    };
    ASSERT_EQ(load.report.faults.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(load.report.faults[i].key, expected[i].key) << i;
        EXPECT_EQ(load.report.faults[i].variant, expected[i].variant) << i;
        EXPECT_EQ(load.report.faults[i].fault, expected[i].fault) << i;
    }
    EXPECT_EQ(load.report.faults[0].stored, "REBOUND!");
    EXPECT_FALSE(load.report.foreign);
    EXPECT_EQ(load.report.fallbacks(), 5u);  // keys past 223 have no default to fall back on
}

TEST(PhraseLoad, BlankKeyAndStrayControlBytesDoNotMakeAFileForeign) {
    Bytes b = userFile();
    for (int v = 1; v <= 20; ++v) put(b, 30, v, "");
    for (int key = 100; key <= 110; ++key) put(b, key, 4, "tab\there");
    const auto load = loadPhrases(PhraseFile::fromBytes(b));
    EXPECT_FALSE(load.report.foreign);
    for (int v = 1; v <= 20; ++v) EXPECT_EQ(load.table(v, 30), "with a snap shot");
    EXPECT_EQ(load.table(4, 105), "dekes");
    EXPECT_EQ(load.table(5, 105), "user 105/5");
}

TEST(PhraseDraw, SeededDrawIsReproducibleAndReachesEveryVariant) {
    auto t = PhraseTable::defaults();
    for (int key = 1; key <= kPhraseKeys; ++key)
        for (int v = 1; v <= kPhraseVariants; ++v) t.set(v, key, std::to_string(key) + "/" + std::to_string(v));

    Random a(42), b(42);
    std::map<std::string, int> seen;
    for (int i = 0; i < 4000; ++i) {
        const auto& w = t.phrase(100, a);
        EXPECT_EQ(w, t.phrase(100, b));
        ++seen[w];
    }
    ASSERT_EQ(seen.size(), 20u);
    for (const auto& [wording, n] : seen) {
        EXPECT_GT(n, 120) << wording;  // 200 expected of each
        EXPECT_LT(n, 280) << wording;
    }

    // Base 166 count 6: keys 167 to 172, each with all its variants.
    Random r(3);
    std::set<std::string> spots;
    for (int i = 0; i < 3000; ++i) spots.insert(t.phrase(166, 6, r));
    EXPECT_EQ(spots.size(), 6u * 20);
    for (const auto& s : spots) {
        const int key = std::stoi(s.substr(0, s.find('/')));
        EXPECT_TRUE(key >= 167 && key <= 172) << s;
    }
}

TEST(PhraseDraw, SlotsOutsideTheTableReadSafely) {
    auto t = PhraseTable::defaults();
    t.set(1, 5, "typed in slot one");
    EXPECT_EQ(t(0, 5), "typed in slot one");
    EXPECT_EQ(t(21, 5), "typed in slot one");
    EXPECT_EQ(t(1, 0), "");
    EXPECT_EQ(t(1, 251), "");
    Random r(1);
    EXPECT_EQ(t.phrase(300, r), "");
    t.set(1, 251, "ignored");
    t.set(21, 5, "ignored");
    EXPECT_EQ(t(20, 5), "at the point");
}

TEST(PhraseProgramFolder, MasterAndStandardFiles) {
    TempDir dir;
    const Bytes standard = PhraseFile::standard().bytes();

    // A master file short of 150000 bytes is written anew at load.
    writeFileAtomic(dir / "hckypbp", Bytes(149999, 'x'));
    HkLoadPlayByPlay(dir.path(), "HkPbp.HKp");
    EXPECT_EQ(readBytes(dir / "hckypbp"), standard);
    EXPECT_FALSE(ensureMasterPhraseFile(dir.path()));

    // The standard file is restored from the master only while it is short.
    writeFileAtomic(dir / "HKPBP.HKP", Bytes(999, ' '));
    EXPECT_TRUE(restoreStandardPhraseFile(dir.path()));
    EXPECT_EQ(readBytes(dir / "HKPBP.HKP"), standard);
    writeFileAtomic(dir / "HKPBP.HKP", Bytes(1000, ' '));
    EXPECT_FALSE(restoreStandardPhraseFile(dir.path()));

    TempDir other;
    writeFileAtomic(other / "HckyPbp", Bytes(50000, ' '));
    EXPECT_FALSE(restoreStandardPhraseFile(other.path()));
    writeFileAtomic(other / "HckyPbp", standard);
    EXPECT_TRUE(restoreStandardPhraseFile(other.path()));
    EXPECT_EQ(readBytes(findFile(other.path(), "HKpbp.HKp")), standard);
}

TEST(PhraseProgramFolder, ActiveFileIsFoundInAnyCase) {
    EXPECT_EQ(activePhraseFileName(""), "HKpbp.HKp");
    EXPECT_EQ(activePhraseFileName("  Mine.hkp  "), "Mine.hkp");
    EXPECT_EQ(activePhraseFileName("HkPbp.HKp"), "HkPbp.HKp");
    EXPECT_EQ(activePhraseFileName("Mine.txt"), "HKpbp.HKp");
    EXPECT_EQ(activePhraseFileName("hk"), "HKpbp.HKp");
    EXPECT_EQ(activePhraseFileName("../elsewhere.HKp"), "HKpbp.HKp");

    TempDir dir;
    Bytes b = PhraseFile::standard().bytes();
    put(b, 49, 2, "what a glove");
    writeFileAtomic(dir / "MINE.HKP", b);
    auto load = HkLoadPlayByPlay(dir.path(), "mine.hkp");
    EXPECT_EQ(load.table(2, 49), "what a glove");

    // The save goes to the same file, keeps what lies past the records, and
    // what was typed in slot 1 is the default again at the next load.
    writeFileAtomic(dir / "MINE.HKP", [&] {
        auto withTail = b;
        withTail.push_back('!');
        return withTail;
    }());
    load.table.set(1, 49, "typed in slot one");
    load.table.set(3, 49, "a diving glove save");
    savePlayByPlay(dir.path(), "Mine.HKp", load.table);
    const auto saved = readBytes(dir / "MINE.HKP");
    ASSERT_EQ(saved.size(), 200001u);
    EXPECT_EQ(saved.back(), '!');
    const auto again = HkLoadPlayByPlay(dir.path(), "Mine.HKp").table;
    EXPECT_EQ(again(1, 49), "glove save");
    EXPECT_EQ(again(3, 49), "a diving glove save");
}

TEST(PhraseEditor, SearchResetAndFileNames) {
    auto t = PhraseTable::defaults();
    t.set(5, 50, "blocker stop");
    t.set(6, 50, "a long wording whose end lies past forty: BLOCKER");
    const auto hits = t.search("BLOCKER");
    ASSERT_EQ(hits.size(), 19u);  // the wording past 40 characters is not searched there
    EXPECT_EQ(hits[4].variant, 5);
    EXPECT_EQ(hits[4].wording, "blocker stop");
    EXPECT_EQ(searchRow(hits[0]), " 50 blocker save");
    EXPECT_EQ(searchRow({7, 1, "in the crease"}), "  7 in the crease");
    EXPECT_TRUE(t.search("").empty());
    EXPECT_EQ(t.search("glove side").size(), 3u * 20);

    t.set(1, 62, "typed in slot one");
    t.resetToDefaults();
    for (int v = 1; v <= 20; ++v) EXPECT_EQ(t(v, 62), "typed in slot one");
    for (int v = 1; v <= 20; ++v) EXPECT_EQ(t(v, 50), "blocker save");

    EXPECT_TRUE(isStandardPhraseFile("hkPBP.hkp "));
    EXPECT_TRUE(isStandardPhraseFile("HKPBP.HKP"));
    EXPECT_FALSE(isStandardPhraseFile(kPhraseNameAfterDelete));
    EXPECT_EQ(saveAsPhraseFileName(" NewPbpFile "), "NewPbpFile.HKp");
    EXPECT_EQ(saveAsPhraseFileName("Mine.HKp"), "Mine.HKp");
    EXPECT_EQ(saveAsPhraseFileName("Mine.hkp"), "Mine.hkp.HKp");  // only ".HKp" exactly is taken off
    EXPECT_EQ(saveAsPhraseFileName(".HKp"), std::nullopt);
    EXPECT_EQ(saveAsPhraseFileName("   "), std::nullopt);
    EXPECT_EQ(saveAsPhraseFileName("sub/Mine"), std::nullopt);
}

TEST(ShippedPhraseFile, EqualsTheBuiltFile) {
    const fs::path data = test::shippedDataDir();
    const auto shipped = findFile(data, "HkPbp.HKp");
    ASSERT_TRUE(fs::exists(shipped)) << shipped;
    EXPECT_EQ(readBytes(shipped), PhraseFile::standard().bytes());
}

}  // namespace
}  // namespace tallyrink
