#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "league/codec.h"
#include "league/files.h"
#include "league/records.h"
#include "league/rules.h"
#include "support/temp_dir.h"

namespace tallyrink {
namespace {

using testing::TempDir;

struct Pin {
    const char* name;
    std::size_t offset;
    std::size_t width;
};

std::vector<std::uint8_t> randomBytes(std::size_t n, std::uint32_t seed) {
    std::mt19937 gen(seed);
    std::vector<std::uint8_t> out(n);
    for (auto& b : out) b = static_cast<std::uint8_t>(gen());
    return out;
}

void writeRulesFile(const TempDir& dir, const std::vector<std::uint8_t>& bytes) {
    writeFileAtomic(dir / "HKRULES", bytes);
}

std::vector<std::uint8_t> encoded(const RulesRecord& r) { return codec::toSlot(r); }

// A record as a version before the stamped groups wrote it: the first-form
// fields set, every later byte zero.
RulesRecord oldRecord() {
    RulesRecord r{};
    r.LeagueName.assign("Old League");
    r.DivisionName[0].assign("Patrick");
    r.GameEraList = 30;
    r.InjuryCheck = 2;
    r.SkaterLimitlist = 20;
    r.Periodslist = 3;
    r.Minuteslist = 14;
    r.OTLengthlist = 2;
    r.OTTypelist = 2;
    r.Fiveoption = 1;
    r.Fouroption = 0;
    r.ShootOutList = 0;
    r.MajorLengthlist = 4;
    r.Icinglist = 2;
    return r;
}

TEST(RulesLayout, EveryNamedFieldAtItsOffset) {
    static const Pin pins[] = {{"DivisionName", 0, 540},
                               {"LeagueName", 540, 30},
                               {"GameEraList", 570, 2},
                               {"InjuryCheck", 572, 1},
                               {"Transactioncheck", 573, 1},
                               {"GoalieInjcheck", 574, 1},
                               {"SkaterLimitlist", 575, 1},
                               {"Dec1Limitlist", 576, 1},
                               {"GoalieLimitlist", 577, 1},
                               {"Periodslist", 578, 1},
                               {"Minuteslist", 579, 1},
                               {"OTLengthlist", 580, 1},
                               {"OTTypelist", 581, 1},
                               {"Fiveoption", 582, 1},
                               {"Fouroption", 583, 1},
                               {"ShootOutList", 584, 1},
                               {"playoffOTLengthlist", 585, 1},
                               {"playoffOTTypelist", 586, 1},
                               {"playoffFiveoption", 587, 1},
                               {"playofffourOption", 588, 1},
                               {"PlayoffShootoutlist", 589, 1},
                               {"OnePointForOvertimeLossCheck", 590, 1},
                               {"Minorcheck", 591, 1},
                               {"MinorLengthlist", 592, 1},
                               {"MinorGoalcheck", 593, 1},
                               {"DoubleMinorcheck", 594, 1},
                               {"SubMinorcheck", 595, 1},
                               {"Majorcheck", 596, 1},
                               {"MajorLengthlist", 597, 1},
                               {"MajorGoalcheck", 598, 1},
                               {"MajorSubcheck", 599, 1},
                               {"MatchCheck", 600, 1},
                               {"Suspcheck", 601, 1},
                               {"SuspLengthlist", 602, 1},
                               {"MaxSportscheck", 603, 1},
                               {"PShotlist", 604, 1},
                               {"PShotFouledoption", 605, 1},
                               {"PShotAnyoption", 606, 1},
                               {"Offsideslist", 607, 1},
                               {"Icinglist", 608, 1},
                               {"NoDelayedcheck", 609, 1},
                               {"GoaliePenaltycheck", 610, 1},
                               {"VideoReviewcheck", 611, 1},
                               {"HighSchoolcheck", 612, 1},
                               {"DZonePasscheck", 613, 1},
                               {"NoGoaliePasscheck", 614, 1},
                               {"TwoLinePasscheck", 615, 1},
                               {"NoGoalieFreezecheck", 616, 1},
                               {"SubsOnAllPenaltiesCheck", 617, 1},
                               {"AllowLineChangesOnIcingCheck", 618, 1},
                               {"Misccheck", 620, 1},
                               {"MiscConductLengthList", 621, 1},
                               {"GameMisconductCheck", 622, 1},
                               {"ExhibitionRosterLimitsCheck", 623, 1},
                               {"NoFightingCheck", 624, 1},
                               {"ReuseShootersCheck", 625, 1},
                               {"TVTimeoutsCheck", 626, 1},
                               {"AutoLinesCheck", 628, 1},
                               {"GoalieConsecCheck", 630, 1},
                               {"NoComputerPlayCallsCheck", 642, 1},
                               {"TimeoutsAllowedCheck", 643, 1},
                               {"SaveGameFilmsCheck", 645, 1},
                               {"StandingsList", 647, 1},
                               {"HighlightAllTeamsCheck", 978, 1},
                               {"IsPlayoffFolder", 980, 1},
                               {"HasPlayoffFolder", 981, 1},
                               {"SeasonFolderPath", 982, 100},
                               {"AlternateRealityCheck", 1082, 1},
                               {"ThreeFightMajorsCheck", 1084, 1},
                               {"ConferenceName", 1109, 150},
                               {"AllGamesNeutralIceCheck", 1086, 1},
                               {"FightInstigatorCheck", 1090, 1},
                               {"AllTimeRecordCheck", 1092, 1},
                               {"AllowOffensiveZonePlayCallsCheck", 1094, 1},
                               {"PrivateLeaguePhotoFolderCheck", 1095, 1},
                               {"SkaterUsageList", 1098, 3},
                               {"GoalieUsageList", 1101, 3},
                               {"SkaterGameUsagePenaltiesCheck", 1104, 1},
                               {"GoalieGameUsagePenaltiesCheck", 1105, 1},
                               {"OneGameInjuryLimitCheck", 1107, 1},
                               {"GameScoreTickerCheck", 1261, 1},
                               {"ThreeOption", 1264, 1},
                               {"PlayoffThreeOption", 1265, 1},
                               {"FightFrequencyList", 1267, 1},
                               {"KeyPlayPauseTimeList", 1560, 1},
                               {"BlowoutSkipPauseCheck", 1561, 1},
                               {"endOfGameCheck", 1562, 1},
                               {"PauseEndOfQuarterCheck", 1563, 1},
                               {"Pause4thQuarterScoreList", 1564, 1},
                               {"Pause4thQuarterTimeList", 1565, 1},
                               {"PlayerReachesList", 1566, 7},
                               {"PauseInjuryCheck", 1573, 1},
                               {"EjectionCheck", 1574, 1},
                               {"PauseFightCheck", 1575, 1},
                               {"PausePowerPlayCheck", 1576, 1},
                               {"GoalPauseCheck", 1577, 1},
                               {"StandingsScoringList", 1579, 1},
                               {"ROWStandingsCheck", 1598, 1},
                               {"AllowComputerGeneralManagerRosterChangesCheck", 1601, 1},
                               {"SalaryValueList", 1603, 1},
                               {"LeagueLogo", 1605, 50},
                               {"AutolineFaceoffsCheck", 1655, 1},
                               {"ScheduleFile", 1658, 30},
                               {"LeagueUserName", 1689, 25},
                               {"UniversalDurabilityList", 1720, 1},
                               {"HideRealStatsCheck", 1722, 1},
                               {"PlayoffUsageLists", 1724, 6},
                               {"PlayoffSkaterUsageCheck", 1730, 1},
                               {"PlayoffGoalieUsageCheck", 1731, 1},
                               {"DisplayComputerHomeTeamLinesAtFaceoffCheck", 1735, 1}};
    for (const auto& p : pins) {
        const auto* f = codec::findField<RulesRecord>(p.name);
        ASSERT_NE(f, nullptr) << p.name;
        EXPECT_EQ(f->offset, p.offset) << p.name;
        EXPECT_EQ(f->width, p.width) << p.name;
    }
    const auto* variants = codec::findField<RulesRecord>("EmptyVariants");
    ASSERT_NE(variants, nullptr);
    EXPECT_EQ(variants->offset, 631u);
    EXPECT_EQ(variants->width, 10u);
    EXPECT_EQ(codec::Layout<RulesRecord>::size, 2000u);
}

TEST(RulesLayout, RecordRoundTripsByteForByte) {
    for (std::uint32_t seed : {1u, 2u, 3u}) {
        const auto bytes = randomBytes(2000, seed);
        const auto r = codec::fromSlot<RulesRecord>(bytes);
        EXPECT_EQ(codec::toSlot(r), bytes) << "seed " << seed;
    }
}

TEST(RulesFile, SavedRulesLoadBackUnchanged) {
    TempDir dir;
    auto rules = defaultRules(2017);
    rules.LeagueName.assign("Test League");
    rules.DivisionName[3].assign("Atlantic");
    rules.ConferenceName[1].assign("Western");
    rules.Periodslist = 3;
    rules.TVTimeoutsCheck = 0;  // a choice the stamp must not undo
    HkRulesSave(dir.path(), rules);
    EXPECT_EQ(fileLength(dir / "HKRULES"), 2000u);
    EXPECT_EQ(readBytes(dir / "HKRULES"), encoded(rules));
    const auto back = HkRulesLoad(dir.path(), 2017);
    EXPECT_EQ(encoded(back), encoded(rules));
}

TEST(RulesFile, MissingOrEmptyFileGivesEveryDefault) {
    TempDir dir;
    EXPECT_EQ(encoded(HkRulesLoad(dir.path(), 1995)), encoded(defaultRules(1995)));
    writeRulesFile(dir, {});
    EXPECT_EQ(encoded(HkRulesLoad(dir.path(), 1995)), encoded(defaultRules(1995)));
    writeRulesFile(dir, std::vector<std::uint8_t>(2000, 0));
    EXPECT_EQ(encoded(HkRulesLoad(dir.path(), 1995)), encoded(defaultRules(1995)));
}

TEST(RulesFile, ShortFileIsRefusedAndLeftAlone) {
    TempDir dir;
    const auto bytes = randomBytes(1999, 7);
    writeRulesFile(dir, bytes);
    try {
        HkRulesLoad(dir.path(), 2017);
        FAIL() << "a cut-short rules file must not load";
    } catch (const FileError& e) {
        EXPECT_NE(std::string(e.what()).find("HKRULES"), std::string::npos) << e.what();
        EXPECT_NE(std::string(e.what()).find("1999"), std::string::npos) << e.what();
    }
    EXPECT_EQ(readBytes(dir / "HKRULES"), bytes);
    EXPECT_THROW(modifyRules(dir.path(), 2017, [](RulesRecord&) {}), FileError);
    EXPECT_EQ(readBytes(dir / "HKRULES"), bytes);
}

TEST(RulesFile, BytesPastTheRecordAreKept) {
    TempDir dir;
    auto bytes = encoded(defaultRules(2017));
    const auto extra = randomBytes(100, 9);
    bytes.insert(bytes.end(), extra.begin(), extra.end());
    writeRulesFile(dir, bytes);
    modifyRules(dir.path(), 2017, [](RulesRecord& r) { r.LeagueName.assign("Renamed"); });
    const auto after = readBytes(dir / "HKRULES");
    ASSERT_EQ(after.size(), 2100u);
    EXPECT_TRUE(std::equal(extra.begin(), extra.end(), after.begin() + 2000));
    EXPECT_EQ(HkRulesLoad(dir.path(), 2017).LeagueName.str(), "Renamed");
}

TEST(RulesFile, FoundWhateverTheCaseOfItsName) {
    TempDir dir;
    auto rules = defaultRules(2000);
    rules.LeagueName.assign("Lower Case");
    writeFileAtomic(dir / "hkrules", encoded(rules));
    EXPECT_EQ(HkRulesLoad(dir.path(), 2000).LeagueName.str(), "Lower Case");
    rules.LeagueName.assign("Saved");
    HkRulesSave(dir.path(), rules);
    // Saved over the file that is there, not beside it.
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.path()), fs::directory_iterator()), 1);
    EXPECT_EQ(codec::fromSlot<RulesRecord>(readBytes(dir / "hkrules")).LeagueName.str(), "Saved");
}

TEST(RulesFile, GarbageLoadsWithEveryListInRange) {
    TempDir dir;
    for (std::uint32_t seed = 1; seed <= 20; ++seed) {
        writeRulesFile(dir, randomBytes(2000, seed));
        RulesRecord r;
        ASSERT_NO_THROW(r = HkRulesLoad(dir.path(), 2017)) << "seed " << seed;
        EXPECT_LE(r.OTTypelist, 2);
        EXPECT_LE(r.playoffOTTypelist, 2);
        EXPECT_LE(r.StandingsList, 1);
        EXPECT_LE(r.NoFightingCheck, 1);
        EXPECT_LE(r.ReuseShootersCheck, 1);
        EXPECT_LE(r.GoalieConsecCheck, 1);
        EXPECT_LE(r.NoComputerPlayCallsCheck, 1);
        EXPECT_LE(r.ExhibitionRosterLimitsCheck, 1);
        EXPECT_LE(r.FightFrequencyList, 10);
        EXPECT_LE(r.UniversalDurabilityList, 10);
        EXPECT_GE(r.GameEraList, 0);
        EXPECT_LE(r.GameEraList, kGameEraMaxIndex);
        EXPECT_GE(periodsPerGame(r), 1);
        EXPECT_LE(periodsPerGame(r), 5);
        EXPECT_LE(overtimeMinutes(r, true), 20);
        EXPECT_EQ(r.GameEraStamp, 98);
        for (auto b : r.EmptyVariants) EXPECT_EQ(b, 0);
        for (const auto& d : r.DivisionName) EXPECT_NE(d.raw[0], ' ');
        // Loading twice changes nothing more.
        auto again = r;
        EXPECT_FALSE(upgradeRules(again, 2017)) << "seed " << seed;
    }
}

TEST(RulesDefaults, YearDependentRulesChangeAtTheirSeasons) {
    struct Case {
        int year;
        int majorSub, tvTimeouts, instigator, row, three, four, five, playoffThree, playoffFour, playoffFive;
    };
    const Case cases[] = {
        {1965, 0, 0, 0, 0, 0, 1, 0, 0, 0, 1}, {1966, 1, 0, 0, 0, 0, 1, 0, 0, 0, 1},
        {1979, 1, 0, 0, 0, 0, 1, 0, 0, 0, 1}, {1980, 1, 1, 0, 0, 0, 1, 0, 0, 0, 1},
        {1991, 1, 1, 0, 0, 0, 1, 0, 0, 0, 1}, {1992, 1, 1, 1, 0, 0, 1, 0, 0, 0, 1},
        {2010, 1, 1, 1, 0, 0, 1, 0, 0, 0, 1}, {2011, 1, 1, 1, 1, 0, 1, 0, 0, 0, 1},
        {2014, 1, 1, 1, 1, 0, 1, 0, 0, 0, 1}, {2015, 1, 1, 1, 1, 1, 0, 0, 1, 0, 0},
    };
    TempDir dir;
    for (const auto& c : cases) {
        // Through the file path, as a league folder without HKRULES opens.
        const auto r = HkRulesLoad(dir.path(), c.year);
        SCOPED_TRACE(c.year);
        EXPECT_EQ(r.MajorSubcheck, c.majorSub);
        EXPECT_EQ(r.TVTimeoutsCheck, c.tvTimeouts);
        EXPECT_EQ(r.FightInstigatorCheck, c.instigator);
        EXPECT_EQ(r.ROWStandingsCheck, c.row);
        EXPECT_EQ(r.ThreeOption, c.three);
        EXPECT_EQ(r.Fouroption, c.four);
        EXPECT_EQ(r.Fiveoption, c.five);
        EXPECT_EQ(r.PlayoffThreeOption, c.playoffThree);
        EXPECT_EQ(r.playofffourOption, c.playoffFour);
        EXPECT_EQ(r.playoffFiveoption, c.playoffFive);
    }
}

TEST(RulesDefaults, EveryEraGetsAPlayableGame) {
    for (int year : {0, 1917, 1930, 1950, 1975, 1990, 2005, 2017, 2050}) {
        SCOPED_TRACE(year);
        const auto r = defaultRules(year);
        EXPECT_EQ(periodsPerGame(r), 3);
        EXPECT_EQ(periodMinutes(r), 20);
        EXPECT_EQ(minorMinutes(r), 2);
        EXPECT_EQ(majorMinutes(r), 5);
        EXPECT_EQ(overtimeType(r, true), 1);
        EXPECT_EQ(overtimeMinutes(r, true), 20);
        EXPECT_EQ(r.FightFrequencyList, 3);
        EXPECT_EQ(r.ScheduleFile.str(), "Sked.skd");
        EXPECT_EQ(r.LeagueLogo.str(), "LeagueLogo.jpg");
        EXPECT_EQ(r.LeagueUserName.str(), "MyName");
        EXPECT_EQ(r.SkaterUsageList, (std::array<std::uint8_t, 3>{104, 114, 124}));
        EXPECT_EQ(r.PlayoffUsageLists, (std::array<std::uint8_t, 6>{34, 44, 54, 34, 44, 54}));
        EXPECT_EQ(r.DivisionName[0].str(), "1 Division");
        EXPECT_EQ(r.DivisionName[35].str(), "36 Division");
        EXPECT_EQ(r.ConferenceName[9].str(), "10 Conference");
    }
    // Overtime and shootouts by era: ties stood from 1942 until 1983, the
    // shootout came in 2005.
    EXPECT_EQ(overtimeMinutes(defaultRules(1935), false), 10);
    EXPECT_EQ(overtimeType(defaultRules(1935), false), 2);
    EXPECT_EQ(overtimeMinutes(defaultRules(1975), false), 0);
    EXPECT_EQ(shootoutRounds(defaultRules(1975), false), 0);
    EXPECT_EQ(overtimeMinutes(defaultRules(1990), false), 5);
    EXPECT_EQ(shootoutRounds(defaultRules(2004), false), 0);
    EXPECT_EQ(shootoutRounds(defaultRules(2005), false), 3);
    EXPECT_FALSE(defaultRules(1998).OnePointForOvertimeLossCheck);
    EXPECT_TRUE(defaultRules(1999).OnePointForOvertimeLossCheck);
    EXPECT_EQ(defaultRules(1964).GoalieLimitlist, 1);
    EXPECT_EQ(defaultRules(1965).GoalieLimitlist, 2);
}

TEST(RulesUpgrade, OldRecordKeepsItsFirstFormAndGainsTheStampedGroups) {
    TempDir dir;
    writeRulesFile(dir, encoded(oldRecord()));
    const auto r = HkRulesLoad(dir.path(), 2010);

    // Kept: the first-form fields have no stamp.
    EXPECT_EQ(r.LeagueName.str(), "Old League");
    EXPECT_EQ(r.DivisionName[0].str(), "Patrick");
    EXPECT_EQ(r.InjuryCheck, 2);
    EXPECT_EQ(r.SkaterLimitlist, 20);
    EXPECT_EQ(periodsPerGame(r), 4);
    EXPECT_EQ(periodMinutes(r), 15);
    EXPECT_EQ(overtimeMinutes(r, false), 10);
    EXPECT_EQ(overtimeType(r, false), 2);
    EXPECT_EQ(r.Fiveoption, 1);
    EXPECT_EQ(r.Fouroption, 0);
    EXPECT_EQ(shootoutRounds(r, false), 0);
    EXPECT_EQ(majorMinutes(r), 6);
    EXPECT_EQ(r.Icinglist, 2);

    // Given: each stamped group, with the stamps written.
    EXPECT_EQ(r.TVTimeoutsCheck, 1);
    EXPECT_EQ(r.MajorSubcheck, 1);
    EXPECT_EQ(r.AutoLinesCheck, 1);
    EXPECT_EQ(r.TimeoutsAllowedCheck, 1);
    EXPECT_EQ(r.SaveGameFilmsCheck, 1);
    EXPECT_EQ(r.FightInstigatorCheck, 1);
    EXPECT_EQ(r.ThreeFightMajorsCheck, 1);
    EXPECT_EQ(r.ROWStandingsCheck, 0);
    EXPECT_EQ(r.FightFrequencyList, 3);
    EXPECT_EQ(r.ScheduleFile.str(), "Sked.skd");
    EXPECT_EQ(r.LeagueUserName.str(), "MyName");
    EXPECT_EQ(r.ConferenceName[0].str(), "1 Conference");
    EXPECT_EQ(r.DivisionName[1].str(), "2 Division");
    EXPECT_EQ(r.BlowoutSkipPauseCheck, 1);
    EXPECT_EQ(r.AllowComputerGeneralManagerRosterChangesCheck, 1);
    EXPECT_EQ(r.TVTimeoutsStamp, 22);
    EXPECT_EQ(r.ThreeOnThreeStamp, 77);
    // Playoff shootout: an unset value becomes 1 once.
    EXPECT_EQ(r.PlayoffShootoutlist, 1);
    // The era choice is cleared once.
    EXPECT_EQ(r.GameEraList, 0);
    EXPECT_EQ(r.GameEraStamp, 98);

    // A second load leaves the user's later choices alone.
    auto changed = r;
    changed.TVTimeoutsCheck = 0;
    changed.PlayoffShootoutlist = 0;
    changed.GameEraList = 69;
    changed.FightFrequencyList = 7;
    auto reloaded = changed;
    EXPECT_FALSE(upgradeRules(reloaded, 2010));
    EXPECT_EQ(encoded(reloaded), encoded(changed));
}

TEST(RulesUpgrade, ThreeOnThreeFromTwentyFifteenReplacesTheOtherOvertimes) {
    auto old = oldRecord();
    EXPECT_TRUE(upgradeRules(old, 2016));
    EXPECT_EQ(old.ThreeOption, 1);
    EXPECT_EQ(old.PlayoffThreeOption, 1);
    EXPECT_EQ(old.Fiveoption, 0);
    EXPECT_EQ(old.Fouroption, 0);
    EXPECT_EQ(old.playoffFiveoption, 0);
    EXPECT_EQ(old.ROWStandingsCheck, 1);
}

TEST(RulesUpgrade, ValuesOutOfRangeGoBackToTheirDefaults) {
    auto r = defaultRules(2017);
    r.OTTypelist = 3;
    r.playoffOTTypelist = 200;
    r.StandingsList = 2;
    r.NoFightingCheck = 5;
    r.ReuseShootersCheck = 2;
    r.GoalieConsecCheck = 9;
    r.NoComputerPlayCallsCheck = 255;
    r.ExhibitionRosterLimitsCheck = 3;
    r.FightFrequencyList = 11;
    r.UniversalDurabilityList = 40;
    r.GameEraList = 500;
    r.Periodslist = 9;
    r.Minuteslist = 99;
    r.ShootOutList = 8;
    r.EmptyVariants[4] = 1;
    r.DivisionName[2].assign(" Smythe");
    r.ConferenceName[3].assign("");
    EXPECT_TRUE(upgradeRules(r, 2017));
    const auto d = defaultRules(2017);
    EXPECT_EQ(r.OTTypelist, 0);
    EXPECT_EQ(r.playoffOTTypelist, 0);
    EXPECT_EQ(r.StandingsList, 0);
    EXPECT_EQ(r.NoFightingCheck, 0);
    EXPECT_EQ(r.ReuseShootersCheck, 0);
    EXPECT_EQ(r.GoalieConsecCheck, 0);
    EXPECT_EQ(r.NoComputerPlayCallsCheck, 0);
    EXPECT_EQ(r.ExhibitionRosterLimitsCheck, 0);
    EXPECT_EQ(r.FightFrequencyList, 3);
    EXPECT_EQ(r.UniversalDurabilityList, 0);
    EXPECT_EQ(r.GameEraList, 0);
    EXPECT_EQ(r.Periodslist, d.Periodslist);
    EXPECT_EQ(r.Minuteslist, d.Minuteslist);
    EXPECT_EQ(r.ShootOutList, d.ShootOutList);
    EXPECT_EQ(r.EmptyVariants[4], 0);
    EXPECT_EQ(r.DivisionName[2].str(), "3 Division");
    EXPECT_EQ(r.ConferenceName[3].str(), "4 Conference");
}

TEST(RulesFile, ModifyRulesKeepsWhatItDoesNotTouch) {
    TempDir dir;
    auto start = defaultRules(2017);
    start.Minuteslist = 14;
    HkRulesSave(dir.path(), start);
    modifyRules(dir.path(), 2017, [](RulesRecord& r) {
        r.DivisionName[0].assign("Atlantic");
        r.ConferenceName[0].assign("Eastern");
    });
    const auto r = HkRulesLoad(dir.path(), 2017);
    EXPECT_EQ(r.DivisionName[0].str(), "Atlantic");
    EXPECT_EQ(r.ConferenceName[0].str(), "Eastern");
    EXPECT_EQ(periodMinutes(r), 15);
}

TEST(RulesFile, LeagueYearIsTeamOnesYear) {
    TempDir dir;
    EXPECT_EQ(leagueYear(dir.path()), 0);
    TeamRecord t{};
    t.TeamYear = 1987;
    t.TeamActive = 1;
    writeRecord(RandomFile(dir / "HKTEAMS", 1500), 1, t);
    EXPECT_EQ(leagueYear(dir.path()), 1987);
}

TEST(RulesLists, CaptionsAndWhatTheValuesStandFor) {
    EXPECT_EQ(universalDurabilityCaption(0), "Use Player Ratings");
    EXPECT_EQ(universalDurabilityCaption(1), "All Players Rated 1 (Low)");
    EXPECT_EQ(universalDurabilityCaption(5), "All Players Rated 5");
    EXPECT_EQ(universalDurabilityCaption(10), "All Players Rated 10 (High)");
    EXPECT_EQ(fightFrequencyCaption(0), " 0  None");
    EXPECT_EQ(fightFrequencyCaption(3), " 3 Realistic");
    EXPECT_EQ(fightFrequencyCaption(7), " 7");
    EXPECT_EQ(fightFrequencyCaption(10), "10 Brutal");
    EXPECT_EQ(gameEraCaption(0), "Blended Off/Def Era");
    EXPECT_EQ(gameEraCaption(1), "Average Historical Era");
    EXPECT_EQ(gameEraCaption(2), "1950");
    EXPECT_EQ(gameEraCaption(kGameEraMaxIndex), "2050");
    EXPECT_EQ(minutesCaption(1), "1 Minute");
    EXPECT_EQ(minutesCaption(20), "20 Minutes");

    RulesRecord r{};
    r.GameEraList = 69;
    EXPECT_EQ(gameEraYear(r), 2017);
    r.GameEraList = 1;
    EXPECT_EQ(gameEraYear(r), 0);
    r.ShootOutList = 4;
    EXPECT_EQ(shootoutRounds(r, false), 6);
    r.ShootOutList = 5;
    EXPECT_EQ(shootoutRounds(r, false), 0);
}

}  // namespace
}  // namespace tallyrink
