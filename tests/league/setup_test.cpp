#include "league/setup.h"

#include <gtest/gtest.h>

#include <fstream>
#include <numeric>

#include "league/files.h"
#include "support/temp_dir.h"

namespace tallyrink {
namespace {

using testing::TempDir;

const SetupLoadContext kCtx{"/leagues/Demo2018", std::nullopt};

std::size_t offsetOf(std::string_view field) {
    const auto* f = codec::findField<SetupRecord>(field);
    EXPECT_NE(f, nullptr) << field;
    return f ? f->offset : 0;
}

// A filled record as an earlier run left it: stamp set, everything in range.
std::vector<std::uint8_t> filledBytes() {
    auto bytes = codec::toSlot(newSetupRecord(kCtx));
    return bytes;
}

void putI16(std::vector<std::uint8_t>& b, std::size_t at, std::int16_t v) {
    b[at] = static_cast<std::uint8_t>(v);
    b[at + 1] = static_cast<std::uint8_t>(static_cast<std::uint16_t>(v) >> 8);
}

TEST(SetupRecord, FieldsLieWhereTheFileHasThem) {
    EXPECT_EQ(setupFileName(), "HockeySetup2021.dat");
    EXPECT_EQ(offsetOf("SetupStamp"), 70u);
    EXPECT_EQ(offsetOf("KeyReportName"), 106u);
    EXPECT_EQ(offsetOf("KeyReportColumn"), 2126u);
    EXPECT_EQ(offsetOf("SecondLayoutName"), 11868u);
    EXPECT_EQ(offsetOf("PBPdelayscroll"), 13014u);
    EXPECT_EQ(offsetOf("PlayByPlayFile"), 13159u);
    EXPECT_EQ(offsetOf("EncyclopediaFile"), 13217u);
    EXPECT_EQ(offsetOf("VoiceList"), 13437u);
    EXPECT_EQ(offsetOf("CustomSoundFile"), 13544u);
    EXPECT_EQ(offsetOf("NarratorFaceoffsCheck"), 22848u);
    EXPECT_EQ(codec::slotWidth<SetupRecord>(), 30000u);
}

TEST(SetupRecord, MissingShortAndGarbageFilesGiveFirstRunDefaults) {
    TempDir dir;
    std::vector<std::vector<std::uint8_t>> inputs = {{}, std::vector<std::uint8_t>(69, 0x41)};
    std::vector<std::uint8_t> garbage(30000);
    std::iota(garbage.begin(), garbage.end(), std::uint8_t{7});
    garbage[70] = 200;  // not the filled stamp
    inputs.push_back(garbage);

    for (const auto& in : inputs) {
        auto s = setupFromBytes(in, kCtx);
        EXPECT_EQ(s.SetupStamp, 1);
        EXPECT_EQ(s.SetupLeagueDir.str(), "/leagues/Demo2018");
        EXPECT_EQ(s.PBPscroll, 5);
        EXPECT_EQ(s.PBPdelayscroll, 1);
        EXPECT_EQ(s.ViewDataOption, 1);
        EXPECT_EQ(s.SoundCheck, 1);
        EXPECT_EQ(s.PlayByPlayFile.str(), "HkPbp.HKp");
        EXPECT_EQ(s.EncyclopediaNumber, 1);
        EXPECT_EQ(s.EncyclopediaFile[0].str(), "HKencyclopedia1");
        EXPECT_EQ(s.EncyclopediaFile[9].str(), "HKencyclopedia10");
        EXPECT_EQ(s.NarratorScroll, 10);
        EXPECT_EQ(s.GoalMusicList, 3);
        EXPECT_EQ(s.NarratorVolScroll, 75);
        EXPECT_EQ(s.GoalMusicVolScroll, 100);
        EXPECT_EQ(s.AnthemsCheck, 1);
        EXPECT_EQ(s.BackgroundCrowdVolumeScroll, 75);
        EXPECT_EQ(s.NarratorFaceoffsCheck, 1);
        // Fields without a default are cleared, not left as the junk they held.
        EXPECT_EQ(s.TeamColorCheck, 0);
        EXPECT_EQ(s.Reserved13016[3], 0);
    }
    auto missing = loadSetupFile(dir / "HockeySetup2021.dat", kCtx);
    EXPECT_EQ(missing.PBPscroll, 5);
}

TEST(SetupRecord, ClampsApplyToAFilledRecordAtEveryLoad) {
    auto b = filledBytes();
    putI16(b, offsetOf("PBPscroll"), 51);
    putI16(b, offsetOf("PBPdelayscroll"), 0);
    b[offsetOf("ComputerCheck")] = 2;
    b[offsetOf("VoiceList")] = 4;
    b[offsetOf("EncyclopediaNumber")] = 11;
    b[offsetOf("SoundVolScroll")] = 101;
    b[offsetOf("TeamColorCheck")] = 1;  // a user's choice, kept
    std::fill_n(b.begin() + static_cast<std::ptrdiff_t>(offsetOf("PlayByPlayFile")), 50, ' ');

    auto s = setupFromBytes(b, {"/elsewhere", 4});
    EXPECT_EQ(s.SetupLeagueDir.str(), "/leagues/Demo2018");  // not a new record
    EXPECT_EQ(s.PBPscroll, 5);
    EXPECT_EQ(s.PBPdelayscroll, 1);
    EXPECT_EQ(s.ComputerCheck, 0);
    EXPECT_EQ(s.VoiceList, 0);  // voices 0 to 3 exist
    EXPECT_EQ(s.EncyclopediaNumber, 1);
    EXPECT_EQ(s.SoundVolScroll, 75);
    EXPECT_EQ(s.TeamColorCheck, 1);
    EXPECT_EQ(s.PlayByPlayFile.str(), "HkPbp.HKp");

    b[offsetOf("ComputerCheck")] = 1;
    b[offsetOf("VoiceList")] = 3;
    putI16(b, offsetOf("PBPscroll"), 50);
    putI16(b, offsetOf("PBPdelayscroll"), 30);
    s = setupFromBytes(b, {"/elsewhere", 4});
    EXPECT_EQ(s.ComputerCheck, 1);
    EXPECT_EQ(s.VoiceList, 3);
    EXPECT_EQ(s.PBPscroll, 50);
    EXPECT_EQ(s.PBPdelayscroll, 30);
    // Without a speech engine to ask, the choice of voice stays.
    b[offsetOf("VoiceList")] = 9;
    EXPECT_EQ(setupFromBytes(b, kCtx).VoiceList, 9);
}

TEST(SetupRecord, LateNarratorGroupGetsItsDefaultsOnceByItsStamp) {
    auto b = filledBytes();
    b[offsetOf("LateNarratorStamp")] = 0;  // written before the group existed
    b[offsetOf("NarratorShotsCheck")] = 0;
    b[offsetOf("BackgroundCrowdVolumeScroll")] = 0;
    auto s = setupFromBytes(b, kCtx);
    EXPECT_EQ(s.NarratorShotsCheck, 1);
    EXPECT_EQ(s.BackgroundCrowdVolumeScroll, 75);

    // Once stamped, the user's 0 is a choice and stays.
    s.NarratorShotsCheck = 0;
    auto again = setupFromBytes(codec::toSlot(s), kCtx);
    EXPECT_EQ(again.NarratorShotsCheck, 0);
}

TEST(SetupRecord, BuiltInLayoutsAreRebuiltAndUserColumnsClamped) {
    auto s = newSetupRecord(kCtx);
    s.KeyReportName[1].assign("Mine");
    s.KeyReportColumn[0][1] = 250;  // built-in report 1, column 1
    s.KeyReportColumn[20][1] = 77;  // past its last column
    s.KeyReportName[19].assign("My report");
    s.KeyReportColumn[0][19] = 301;  // user's report: out of range
    s.KeyReportColumn[1][19] = -4;
    s.KeyReportColumn[2][19] = 300;
    s.SecondLayoutColumn[5][30] = 999;
    s.SecondLayoutColumn[6][30] = 12;
    s.SecondLayoutName[2].assign("Junk");
    s.SecondLayoutName[9].assign("Road trip");

    auto t = setupFromBytes(codec::toSlot(s), kCtx);
    EXPECT_EQ(t.KeyReportName[1].str(), "Basic");
    EXPECT_EQ(t.KeyReportName[8].str(), "Per 60 Min");
    EXPECT_EQ(t.KeyReportName[18].str(), "Advanced Metrics");
    EXPECT_EQ(t.KeyReportColumn[0][1], 1);
    EXPECT_EQ(t.KeyReportColumn[12][1], 13);
    EXPECT_EQ(t.KeyReportColumn[13][1], 0);
    EXPECT_EQ(t.KeyReportColumn[20][1], 0);
    EXPECT_EQ(t.KeyReportColumn[22][2], 24);   // "Expanded": 1 to 22, then 24
    EXPECT_EQ(t.KeyReportColumn[0][16], 310);  // built-in ids past 300 stay
    EXPECT_EQ(t.KeyReportName[19].str(), "My report");
    EXPECT_EQ(t.KeyReportColumn[0][19], 0);
    EXPECT_EQ(t.KeyReportColumn[1][19], 0);
    EXPECT_EQ(t.KeyReportColumn[2][19], 300);
    EXPECT_EQ(t.SecondLayoutColumn[5][30], 0);
    EXPECT_EQ(t.SecondLayoutColumn[6][30], 12);
    EXPECT_EQ(t.SecondLayoutName[1].str(), "Basic");
    EXPECT_EQ(t.SecondLayoutName[2].str(), "Per Game");
    EXPECT_EQ(t.SecondLayoutName[7].str(), "Shooting");
    EXPECT_EQ(t.SecondLayoutName[9].str(), "Road trip");
}

TEST(SetupRecord, SaveAndLoadKeepUnknownBytesExactly) {
    TempDir dir;
    auto path = dir / "HockeySetup2021.dat";
    // A loaded record in a steady state, then every reserved byte and the
    // slot's tail set to a pattern this program doesn't know.
    auto bytes = codec::toSlot(setupFromBytes(filledBytes(), kCtx));
    for (const auto& f : codec::fieldInfo<SetupRecord>()) {
        if (!f.name.starts_with("Reserved")) continue;
        for (std::size_t i = 0; i < f.width; ++i) bytes[f.offset + i] = static_cast<std::uint8_t>(0xA0 + i % 31);
    }
    for (std::size_t i = 22850; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(i * 7);
    bytes.push_back(0x5A);  // something after the slot, too
    writeFileAtomic(path, bytes);

    auto s = loadSetupFile(path, kCtx);
    saveSetupFile(path, s);
    EXPECT_EQ(readBytes(path), bytes);
}

}  // namespace
}  // namespace tallyrink
