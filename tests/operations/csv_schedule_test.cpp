#include "operations/csv_schedule.h"

#include <gtest/gtest.h>

#include "support/team_file.h"
#include "support/temp_dir.h"

namespace tallyrink {
namespace {

using testing::TempDir;

class CsvScheduleTest : public ::testing::Test {
protected:
    void SetUp() override {
        testing::writeTeams(dir.path(), {{1, "Toronto", "Maple Leafs", "TOR", 2017},
                                         {2, "Montreal", "Canadiens", "MTL", 2017},
                                         {13, "Boston", "Bruins", "BOS", 2017},
                                         {14, "New York", "Rangers", "NYR", 2017},
                                         {15, "New York", "Islanders", "NYI", 2017}});
        teams = TeamDirectory::load(dir.path());
        // A schedule the league already has, which a bad file must not touch.
        saveNewSchedule(dir.path(), {newGameRecord(1, 2, 10, 4, 2017)}, teams.activeTeams());
    }

    std::string importError(const std::string& text) {
        writeFileAtomic(dir / "games.csv", text);
        auto outcome = importCsvSchedule(dir.path(), dir / "games.csv");
        EXPECT_FALSE(outcome.ok);
        EXPECT_EQ(Schedule::load(dir.path()).size(), 1u) << "a bad file changed the schedule";
        auto message = outcome.messages.empty() ? std::string() : outcome.messages.front();
        auto label = (dir / "games.csv").string();
        return message.starts_with(label) ? message.substr(label.size()) : message;
    }

    TempDir dir;
    TeamDirectory teams;
};

TEST_F(CsvScheduleTest, ReadsNamesCodesSeasonMonthsAndQuotedFields) {
    writeFileAtomic(dir / "games.csv",
                    "Month,Day,Visitor,Home\r\n"
                    "October,4,Toronto Maple Leafs,MTL\r\n"
                    "\r\n"
                    "1,5,\"Boston\",toronto,,\r\n"  // season month 1 is September
                    "5, 7 ,NYR,NYI\n"               // and 5 is January
                    "dec,24,Islanders,Bruins");
    auto outcome = importCsvSchedule(dir.path(), dir / "games.csv");
    ASSERT_TRUE(outcome.ok) << outcome.messages.front();
    EXPECT_EQ(outcome.messages, (std::vector<std::string>{"Imported 4 games!"}));
    auto s = Schedule::load(dir.path());
    ASSERT_EQ(s.size(), 4u);
    auto expect = [&](std::size_t r, int v, int h, int m, int d) {
        EXPECT_EQ(s.row(r).VisitorTeam, v) << r;
        EXPECT_EQ(s.row(r).HomeTeam, h) << r;
        EXPECT_EQ(s.row(r).Month, m) << r;
        EXPECT_EQ(s.row(r).Day, d) << r;
        EXPECT_EQ(statusOf(s.row(r)), kUnplayed) << r;
        EXPECT_EQ(s.row(r).Coach[1].str(), "C") << r;
        EXPECT_EQ(s.row(r).Year, 2017) << r;
    };
    expect(1, 1, 2, 10, 4);
    expect(2, 13, 1, 9, 5);
    expect(3, 14, 15, 1, 7);
    expect(4, 15, 13, 12, 24);
}

TEST_F(CsvScheduleTest, ABadGameNamesFileLineAndColumnAndChangesNothing) {
    EXPECT_EQ(importError("Oct,4,TOR,MTL\nOct,5,BOS,Hamilton\n"), ", line 2, column 4: Invalid Team: Hamilton");
    EXPECT_EQ(importError("Oct,4,TOR,MTL\nOct,5,New York,BOS\n"),
              ", line 2, column 3: Invalid Team: New York (more than one team has that name)");
    EXPECT_EQ(importError("Oct,4,TOR,MTL\nOcto,5,BOS,TOR\nSmarch,5,BOS,TOR\n"),
              ", line 3, column 1: Invalid month: Smarch Game: 3");
    EXPECT_EQ(importError("Oct,4,TOR,MTL\n13,5,BOS,TOR\n"), ", line 2, column 1: Invalid month: 13 Game: 2");
    EXPECT_EQ(importError("Feb,29,TOR,MTL\n"), ", line 1, column 2: Invalid Day For February : 29");
    EXPECT_EQ(importError("Nov,31,TOR,MTL\n"), ", line 1, column 2: Invalid Day For November : 31");
    EXPECT_EQ(importError("Nov,x,TOR,MTL\n"), ", line 1, column 2: Invalid Day For November : x");
    EXPECT_EQ(importError("Nov,3,TOR,Toronto\n"), ", line 1, column 4: A team cannot play itself: Toronto");
    EXPECT_EQ(importError("Nov,3,TOR,MTL\nNov,3,Montreal,Toronto\n"),
              ", line 2, column 3: Duplicate game: Montreal @ Toronto on November 3");
    EXPECT_EQ(importError("Nov,3,TOR,MTL\nNov,3,BOS,MTL\n"), ", line 2, column 4: MTL already plays on November 3");
    EXPECT_EQ(
        importError("Nov,3,TOR,MTL\nNov,4,BOS\n"),
        ": This file is not in the proper format! (line 2 has 3 items: month, day, visitor and home make a game)");
    EXPECT_EQ(importError("\n\n"), " holds no games.");
}

TEST_F(CsvScheduleTest, ExportReadsBackAsTheSameSchedule) {
    auto s = Schedule::fromRows(dir.path(), {newGameRecord(1, 2, 10, 4, 2017), newGameRecord(14, 15, 2, 28, 2017),
                                             newGameRecord(13, 1, 9, 30, 2017)});
    s.removeGame(3);
    auto text = csvScheduleText(s, teams);
    EXPECT_EQ(text,
              "October,4,Toronto Maple Leafs,Montreal Canadiens\nFebruary,28,New York Rangers,New York Islanders\n");
    auto back = parseCsvSchedule(text, teams, 2017, "x.csv");
    ASSERT_EQ(back.error, "");
    ASSERT_EQ(back.games.size(), 2u);
    EXPECT_EQ(back.games[1].VisitorTeam, 14);
    EXPECT_EQ(back.games[1].HomeTeam, 15);
    EXPECT_EQ(back.games[1].Month, 2);

    saveNewSchedule(dir.path(), s.rows(), teams.activeTeams());
    EXPECT_EQ(exportCsvSchedule(dir.path(), dir / "out.csv"), 2u);
    EXPECT_TRUE(importCsvSchedule(dir.path(), dir / "out.csv").ok);
    EXPECT_EQ(Schedule::load(dir.path()).size(), 2u);
}

}  // namespace
}  // namespace tallyrink
