#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "league/codec.h"
#include "league/era.h"
#include "league/era_csv.h"
#include "league/files.h"
#include "support/source_tree.h"
#include "support/temp_dir.h"

namespace tallyrink {
namespace {

using testing::TempDir;

EraRecord season(int games, double goals, double pim, double save) {
    EraRecord e{};
    e.Games = static_cast<std::int16_t>(games);
    e.GoalsPerTeam = goals;
    e.PimPerGame = pim;
    e.AssistsPerGoal = 1.6;
    e.PowerPlayPct = 18;
    e.SavePct = save;
    return e;
}

bool containsText(const std::vector<std::string>& lines, const std::string& text) {
    for (const auto& l : lines)
        if (l.find(text) != std::string::npos) return true;
    return false;
}

std::string joined(const std::vector<std::string>& lines) {
    std::string out;
    for (const auto& l : lines) out += l + "\n";
    return out;
}

TEST(EraLayout, RecordFieldsAndSlot) {
    struct Pin {
        const char* name;
        std::size_t offset;
        std::size_t width;
    };
    const Pin pins[] = {{"Games", 0, 2},
                        {"PowerPlayPct", 2, 8},
                        {"GoalsPerTeam", 10, 8},
                        {"PimPerGame", 18, 8},
                        {"AssistsPerGoal", 26, 8},
                        {"CollegeGames", 34, 2},
                        {"CollegePowerPlayPct", 36, 8},
                        {"CollegeGoalsPerTeam", 44, 8},
                        {"CollegePim", 52, 8},
                        {"CollegeAssistsPerGoal", 60, 8},
                        {"SavePct", 68, 8},
                        {"CollegeSavePct", 76, 8},
                        {"FightsPerGame", 84, 8}};
    for (const auto& p : pins) {
        const auto* f = codec::findField<EraRecord>(p.name);
        ASSERT_NE(f, nullptr) << p.name;
        EXPECT_EQ(f->offset, p.offset) << p.name;
        EXPECT_EQ(f->width, p.width) << p.name;
    }
    EXPECT_EQ(codec::slotWidth<EraRecord>(), 100u);
}

TEST(EraFile, WritesAllYearsAndReadsThemBack) {
    TempDir dir;
    EraTable table;
    table.year(1900) = season(44, 1.5, 20, 93);
    table.year(2017) = season(82, 2.93, 17.29, 91.22);
    table.year(2050).SlotTail[7] = 0xAB;
    table.trailing = {1, 2, 3};
    SaveEra(dir.path(), table);
    EXPECT_EQ(fileLength(dir / "HkEra"), 151u * 100u + 3u);
    const auto back = readEraFile(dir / "HkEra");
    for (int y = EraTable::kFirstYear; y <= EraTable::kLastYear; ++y)
        EXPECT_EQ(codec::toSlot(back.year(y)), codec::toSlot(table.year(y))) << y;
    EXPECT_EQ(back.trailing, table.trailing);
    // Year y is record y - 1899: 2017 starts at byte 117 * 100.
    const auto bytes = readBytes(dir / "HkEra");
    EXPECT_EQ(bytes[117 * 100], 82);
}

TEST(EraFile, LengthsThatAreNotRecordsAreRefused) {
    TempDir dir;
    EXPECT_EQ(readEraFile(dir / "HkEra").year(2000).Games, 0);  // missing: empty
    writeFileAtomic(dir / "HkEra", std::vector<std::uint8_t>(150, 0));
    EXPECT_THROW(readEraFile(dir / "HkEra"), FileError);
    EXPECT_THROW(LoadEra(dir.path()), FileError);
    // A last record written without the rest of its slot is whole.
    std::vector<std::uint8_t> shortLast(150 * 100 + 92, 0);
    shortLast[150 * 100] = 60;
    writeFileAtomic(dir / "HkEra", shortLast);
    EXPECT_EQ(readEraFile(dir / "HkEra").year(2050).Games, 60);
}

TEST(EraFill, HolesTakeTheYearBeforeAndTheFirstYearsTheFirstSeason) {
    EraTable t;
    t.year(1917) = season(22, 4.75, 29, 85);
    t.year(1950) = season(70, 2.7, 20, 90);
    t.year(1952) = season(70, 2.4, 19, 91);
    t.year(2017) = season(82, 2.93, 17.29, 91.22);
    fillEraGaps(t);
    EXPECT_EQ(t.year(1900).Games, 22);
    EXPECT_DOUBLE_EQ(t.year(1916).GoalsPerTeam, 4.75);
    EXPECT_DOUBLE_EQ(t.year(1949).GoalsPerTeam, 4.75);
    EXPECT_DOUBLE_EQ(t.year(1951).GoalsPerTeam, 2.7);
    EXPECT_DOUBLE_EQ(t.year(1952).GoalsPerTeam, 2.4);
    EXPECT_DOUBLE_EQ(t.year(2016).GoalsPerTeam, 2.4);
    EXPECT_EQ(t.year(2050).Games, 82);
    EXPECT_DOUBLE_EQ(t.year(2050).SavePct, 91.22);
}

TEST(EraFill, CollegeColumnsFollowTheProfessionalOnes) {
    EraTable t;
    t.year(1990) = season(80, 3.5, 40, 88);
    t.year(1991) = season(80, 3.5, 40, 88);
    t.year(1991).CollegeGoalsPerTeam = 4.2;
    t.year(1991).CollegeSavePct = 86;
    fillEraGaps(t);
    const auto& e = t.year(1990);
    EXPECT_DOUBLE_EQ(e.CollegeGoalsPerTeam, 3.5 * 1.1);
    EXPECT_DOUBLE_EQ(e.CollegePim, 40 * 0.75);
    EXPECT_DOUBLE_EQ(e.CollegeSavePct, 88 * 0.97);
    EXPECT_DOUBLE_EQ(e.CollegePowerPlayPct, 18);
    EXPECT_DOUBLE_EQ(e.CollegeAssistsPerGoal, 1.6);
    EXPECT_DOUBLE_EQ(t.year(1991).CollegeGoalsPerTeam, 4.2);
    EXPECT_DOUBLE_EQ(t.year(1991).CollegeSavePct, 86);
    const auto college = figuresOf(t.year(1991), EraLevel::College);
    EXPECT_DOUBLE_EQ(college.goalsPerTeam, 4.2);
    EXPECT_EQ(college.games, 80);  // no college season length: the professional one
}

TEST(EraFill, FightsByEraAfterTheHolesAreFilled) {
    EraTable t;
    t.year(1969) = season(76, 2.9, 25, 90);
    t.year(1985) = season(80, 4.0, 43, 87.7);
    t.year(1985).FightsPerGame = 1.2;
    fillEraGaps(t);
    EXPECT_DOUBLE_EQ(t.year(1969).FightsPerGame, 0.3);
    // 1970 is a hole filled from 1969, yet plays by its own era.
    EXPECT_EQ(t.year(1970).Games, 76);
    EXPECT_DOUBLE_EQ(t.year(1970).FightsPerGame, 0.5);
    EXPECT_DOUBLE_EQ(t.year(1985).FightsPerGame, 1.2);
    EXPECT_DOUBLE_EQ(t.year(1986).FightsPerGame, 1.2);
}

TEST(EraFill, ValuesThatAreNoFiguresCountAsEmpty) {
    EraTable t;
    t.year(2000) = season(82, 2.7, 30, 90.3);
    t.year(2001) = season(82, std::numeric_limits<double>::quiet_NaN(), -5, 250);
    t.year(2002) = season(-3, 9, 9, 9);
    t.year(2003).FightsPerGame = 50;
    t.year(2003).Games = 82;
    fillEraGaps(t);
    EXPECT_DOUBLE_EQ(t.year(2001).GoalsPerTeam, 0);
    EXPECT_DOUBLE_EQ(t.year(2001).PimPerGame, 0);
    EXPECT_DOUBLE_EQ(t.year(2001).SavePct, 0);
    EXPECT_DOUBLE_EQ(t.year(2002).GoalsPerTeam, t.year(2001).GoalsPerTeam);  // a negative season is a hole
    EXPECT_DOUBLE_EQ(t.year(2003).FightsPerGame, 20);
}

TEST(EraTable, YearsOutsideTheTableTakeTheCallersYear) {
    EraTable t;
    t.year(2008).Games = 82;
    EXPECT_EQ(t.yearOr(1850, 2008).Games, 82);
    EXPECT_EQ(t.yearOr(2051, 2008).Games, 82);
    EXPECT_THROW((void)t.year(2051), std::out_of_range);
    EXPECT_TRUE(EraTable::contains(2050));
    EXPECT_FALSE(EraTable::contains(1899));
}

TEST(EraCsvImport, RowsSetTheirYearsAndEveryOtherYearIsCleared) {
    TempDir dir;
    writeFileAtomic(dir / "NHL ERA DATA.CSV", std::string("Year,Games,Teams,a,b,c,Goals,Assists,PIM,PP\r\n"
                                                          "2017,1271,31,x,y,z,5.86,9.93,17.29,20.18\r\n"
                                                          "\r\n"
                                                          "1981,840,21,,,,8.03,13.3,39.82,22.85\r\n"));
    const auto file = readEraCsv(dir / "NHL ERA DATA.CSV");
    ASSERT_TRUE(file.problems.empty()) << joined(file.problems);
    ASSERT_EQ(file.rows.size(), 2u);

    EraTable t;
    t.year(1990) = season(80, 3.5, 40, 88);
    t.year(2017).SavePct = 91.2;
    importEraCsv(t, file.rows);
    EXPECT_EQ(t.year(2017).Games, 82);
    EXPECT_DOUBLE_EQ(t.year(2017).GoalsPerTeam, 2.93);
    EXPECT_NEAR(t.year(2017).AssistsPerGoal, 9.93 / 5.86, 1e-12);
    EXPECT_DOUBLE_EQ(t.year(2017).PimPerGame, 17.29);
    EXPECT_DOUBLE_EQ(t.year(2017).PowerPlayPct, 20.18);
    EXPECT_DOUBLE_EQ(t.year(2017).SavePct, 91.2);
    EXPECT_EQ(t.year(1981).Games, 80);
    EXPECT_EQ(t.year(1990).Games, 0);
    EXPECT_DOUBLE_EQ(t.year(1990).GoalsPerTeam, 0);
    EXPECT_DOUBLE_EQ(t.year(1990).SavePct, 88);
}

TEST(EraCsvImport, BadRowsAreReportedWithLineAndColumn) {
    TempDir dir;
    const auto path = dir / "NHL ERA DATA.CSV";
    writeFileAtomic(path, std::string("Year,Games,Teams,a,b,c,Goals,Assists,PIM,PP\n"
                                      "2017,1271,31,,,,5.86,9.93,17.29,20.18\n"
                                      "2016,1230,30,,,,lots,9.3,18.41,19.12\n"
                                      "2015,1230,30,,,,5.4\n"
                                      "1890,100,4,,,,5,5,5,5\n"
                                      "2014,1230,0,,,,5.4,9.3,19.37,18.65\n"
                                      "2017,1271,31,,,,5.86,9.93,17.29,20.18\n"
                                      "2013,1230,30,,,,5.4,9.3,,18.65\n"));
    const auto file = readEraCsv(path);
    const auto& p = file.problems;
    ASSERT_EQ(p.size(), 6u) << joined(p);
    const std::string name = path.string();
    EXPECT_TRUE(containsText(p, name + ":3: column 7 (goals per game): \"lots\" is not a number")) << joined(p);
    EXPECT_TRUE(containsText(p, name + ":4: 10 values expected, found 7")) << joined(p);
    EXPECT_TRUE(containsText(p, name + ":5: column 1 (year): 1890 is not a year")) << joined(p);
    EXPECT_TRUE(containsText(p, name + ":6: column 3 (teams)")) << joined(p);
    EXPECT_TRUE(containsText(p, name + ":7: column 1 (year): 2017 is given twice")) << joined(p);
    EXPECT_TRUE(containsText(p, name + ":8: column 9 (penalty minutes per game): empty")) << joined(p);
    EXPECT_THROW(readEraCsv(dir / "nothing.csv"), FileError);
}

const char* kSeasonHeader =
    "season,teams,year_start,games_per_team,league_games,player_goals_total,assists_per_goal,pim_per_game,"
    "pp_pct,shots_per_team_game,save_pct\n";

TEST(EraSeasonBuild, MapsTheColumnsAndWorksOutMissingSavePercentages) {
    TempDir dir;
    const auto csv = dir / "seasons.csv";
    writeFileAtomic(csv, std::string(kSeasonHeader) +
                             "1980-81,21,1980,80,840,6000,1.6,40,,,\n"
                             "1982-83,21,1982,80,840,6500,1.65,33.4,22.9,30,87.5\n"
                             "1983-84,21,1983,80,840,6600,1.64,36.4,21.9,,\n"
                             "1984-85,21,1984,80,840,6400,1.66,37.2,22.2,31,88.5\n"
                             "2017-18,31,2017,82,1271,7449,1.694,17.29,20.18,31.81,91.22\n");
    const auto build = buildEraFromSeasons(csv);
    ASSERT_TRUE(build.problems.empty()) << joined(build.problems);
    EXPECT_EQ(build.firstSeason, 1980);
    EXPECT_EQ(build.lastSeason, 2017);
    const auto& t = build.table;
    EXPECT_EQ(t.year(2017).Games, 82);
    EXPECT_NEAR(t.year(2017).GoalsPerTeam, 7449.0 / 2542.0, 1e-12);
    EXPECT_DOUBLE_EQ(t.year(2017).PimPerGame, 17.29);
    // With the shots known every goal counts against the save percentage,
    // so that goals / (1 - save %) gives back the shots.
    const double g82 = 6500.0 / 1680, g84 = 6400.0 / 1680, g17 = 7449.0 / 2542, g80 = 6000.0 / 1680;
    EXPECT_NEAR(t.year(2017).SavePct, 100 * (1 - g17 / 31.81), 1e-9);
    EXPECT_NEAR(t.year(2017).GoalsPerTeam / (1 - t.year(2017).SavePct / 100), 31.81, 1e-9);
    EXPECT_DOUBLE_EQ(t.year(2017).FightsPerGame, 0);
    // Between measured seasons: the straight line.
    EXPECT_NEAR(t.year(1983).SavePct, (100 * (1 - g82 / 30) + 100 * (1 - g84 / 31)) / 2, 1e-9);
    // Before them: the shots of the measured seasons, which leave no
    // empty-net offset once every goal counts.
    EXPECT_NEAR(t.year(1980).SavePct, 100 * (1 - g80 / ((30 + 31 + 31.81) / 3)), 1e-9);
    EXPECT_DOUBLE_EQ(t.year(1980).PowerPlayPct, 0);
    EXPECT_EQ(build.estimatedSavePct, (std::vector<int>{1980, 1983}));
    // Years before the first season hold it; seasons missing stay empty.
    EXPECT_EQ(t.year(1900).Games, 80);
    EXPECT_DOUBLE_EQ(t.year(1900).SavePct, t.year(1980).SavePct);
    EXPECT_EQ(t.year(1981).Games, 0);
    EXPECT_EQ(t.year(2018).Games, 0);
}

TEST(EraSeasonBuild, ProblemsNameTheLineAndColumn) {
    TempDir dir;
    const auto csv = dir / "seasons.csv";
    writeFileAtomic(csv, std::string(kSeasonHeader) +
                             "2016-17,30,2016,82,1230,6700,1.68,18.41,19.12,30.1,91.35\n"
                             "2017-18,31,2017,eighty,1271,7449,1.694,17.29,20.18,31.81,91.22\n"
                             "2018-19,31,2018,82,1271,7449,1.694,17.29,20.18,31.81,191\n");
    const auto build = buildEraFromSeasons(csv);
    ASSERT_EQ(build.problems.size(), 2u) << joined(build.problems);
    EXPECT_TRUE(containsText(build.problems, csv.string() + ":3: column 4 (games_per_team): \"eighty\""));
    EXPECT_TRUE(containsText(build.problems, csv.string() + ":4: column 11 (save_pct): 191 is above 100"));

    writeFileAtomic(csv, std::string("season,year_start\n2017-18,2017\n"));
    const auto missing = buildEraFromSeasons(csv);
    EXPECT_TRUE(containsText(missing.problems, csv.string() + ":1: no column named games_per_team"))
        << joined(missing.problems);
}

// The era file the program ships, as the engine will read it.
TEST(ShippedEra, ReadsBackTheRealSeasons) {
    const fs::path data = test::shippedDataDir();
    const auto era = LoadEra(data);
    const auto& e2017 = era.year(2017);
    EXPECT_EQ(e2017.Games, 82);
    EXPECT_NEAR(e2017.GoalsPerTeam, 2.93, 0.01);
    EXPECT_NEAR(e2017.SavePct, 90.79, 0.01);  // every goal of 2.93 a game on 31.81 shots
    EXPECT_NEAR(e2017.PimPerGame, 17.29, 0.01);
    EXPECT_NEAR(e2017.PowerPlayPct, 20.18, 0.01);
    EXPECT_EQ(era.year(1994).Games, 48);
    // The lockout season plays as the one before; the future as the last.
    EXPECT_DOUBLE_EQ(era.year(2004).GoalsPerTeam, era.year(2003).GoalsPerTeam);
    EXPECT_DOUBLE_EQ(era.year(2050).SavePct, e2017.SavePct);
    EXPECT_EQ(era.year(1900).Games, era.year(1917).Games);
    EXPECT_DOUBLE_EQ(era.year(1969).FightsPerGame, 0.3);
    EXPECT_DOUBLE_EQ(era.year(1970).FightsPerGame, 0.5);
    // The engine divides by these: every year must have them.
    for (int y = EraTable::kFirstYear; y <= EraTable::kLastYear; ++y) {
        const auto& e = era.year(y);
        EXPECT_GT(e.Games, 0) << y;
        EXPECT_GT(e.GoalsPerTeam, 1) << y;
        EXPECT_GT(e.AssistsPerGoal, 0.3) << y;
        EXPECT_GT(e.PimPerGame, 5) << y;
        EXPECT_GT(e.SavePct, 80) << y;
        EXPECT_LT(e.SavePct, 96) << y;
    }
}

TEST(ShippedEra, IsWhatItsSourceBuilds) {
    const fs::path root = test::sourceDir();
    const auto build = buildEraFromSeasons(root / "data" / "sources" / "nhl_league_by_season.csv");
    ASSERT_TRUE(build.problems.empty()) << joined(build.problems);
    TempDir dir;
    writeEraFile(dir / "HkEra", build.table);
    EXPECT_EQ(readBytes(dir / "HkEra"), readBytes(root / "data" / "HkEra"))
        << "data/HkEra is stale: rebuild it with tallyrink era build";
}

}  // namespace
}  // namespace tallyrink
