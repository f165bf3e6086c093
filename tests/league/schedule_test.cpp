#include "league/schedule.h"

#include <gtest/gtest.h>

#include <fstream>

#include "support/temp_dir.h"

namespace tallyrink {
namespace {

using testing::TempDir;

constexpr std::size_t kSlot = 200;

GameRecord game(int visitor, int home, int month, int day, char status = 'U', int year = 2017) {
    auto g = newGameRecord(visitor, home, month, day, year);
    g.Status.raw[0] = status;
    return g;
}

void writeRows(const fs::path& path, const std::vector<GameRecord>& rows) {
    rewriteRecords(RandomFile(path, kSlot), rows);
}

void writeBytes(const fs::path& path, std::size_t n, std::uint8_t fill) {
    std::vector<std::uint8_t> bytes(n, fill);
    writeFileAtomic(path, bytes);
}

ActiveTeams teams(std::initializer_list<int> numbers) {
    ActiveTeams a;
    for (int t : numbers) a.set(static_cast<std::size_t>(t));
    return a;
}

TEST(ScheduleFile, RowCountRoundsUpFromThreeQuartersOfASlot) {
    TempDir dir;
    std::vector<GameRecord> rows{game(1, 2, 10, 5), game(3, 4, 10, 6), game(5, 6, 10, 7)};
    writeRows(dir / "Sked.skd", rows);

    // 2 whole rows and 50 bytes of the third: three rows, the last one short.
    std::filesystem::resize_file(dir / "Sked.skd", 2 * kSlot + 50);
    auto s = Schedule::load(dir.path());
    ASSERT_EQ(s.size(), 3u);
    EXPECT_EQ(s.row(2).HomeTeam, 4);
    // What is missing of the short row reads as never written: its teams are
    // gone, so it is a deleted row.
    EXPECT_EQ(statusOf(s.row(3)), kDeleted);
    EXPECT_EQ(s.row(3).VisitorTeam, 0);

    std::filesystem::resize_file(dir / "Sked.skd", 2 * kSlot + 49);
    EXPECT_EQ(Schedule::load(dir.path()).size(), 2u);
}

TEST(ScoresFile, RowCountRoundsUpFromHalfASlot) {
    TempDir dir;
    std::vector<GameRecord> scores{game(1, 2, 10, 5, 'P'), game(3, 4, 10, 6, 'P')};
    scores[0].ScoreOf = {3, 2};
    scores[0].ResultStamp = 99;
    saveScores(dir.path(), scores);
    auto back = loadScores(dir.path());
    ASSERT_EQ(back.size(), 2u);
    EXPECT_EQ(back[0].ScoreOf[0], 3);
    EXPECT_EQ(back[0].ResultStamp, 99);

    std::filesystem::resize_file(dir / "SCORES", kSlot + 100);
    EXPECT_EQ(loadScores(dir.path()).size(), 2u);
    std::filesystem::resize_file(dir / "SCORES", kSlot + 99);
    EXPECT_EQ(loadScores(dir.path()).size(), 1u);
    EXPECT_TRUE(loadScores(dir / "no-such-folder").empty());
}

TEST(ScheduleLoad, RowOneGivesEveryRowItsYearAcrossNewYear) {
    TempDir dir;
    writeRows(dir / "Sked.skd", {game(1, 2, 12, 30, 'P', 2017), game(3, 4, 1, 2, 'U', 2018), game(5, 6, 2, 1, 'U', 0)});
    auto s = Schedule::load(dir.path());
    for (const auto& g : s.rows()) EXPECT_EQ(g.Year, 2017);
    EXPECT_EQ(s.seasonYear(), 2017);
    // The calendar follows from the season month: January is the next year.
    auto today = s.leagueDate();
    ASSERT_TRUE(today);
    EXPECT_EQ(today->month, 1);
    EXPECT_EQ(today->day, 2);
    EXPECT_EQ(today->year, 2018);
    EXPECT_EQ(calendarYearOf(2017, 9), 2017);
    EXPECT_EQ(calendarYearOf(2017, 8), 2018);
    EXPECT_EQ(calendarYearOf(0, 1), 0);
}

TEST(ScheduleLoad, RowsWithoutTwoTeamNumbersAreDeletedAndOddLettersRepaired) {
    TempDir dir;
    auto odd = game(1, 2, 10, 5);
    odd.Status.raw[0] = 'x';
    odd.Coach[1].raw[0] = 0;
    writeRows(dir / "Sked.skd", {game(0, 2, 10, 5), game(1, 289, 10, 5), game(-3, 4, 10, 5), game(288, 1, 10, 5), odd});
    auto s = Schedule::load(dir.path());
    for (std::size_t r = 1; r <= 3; ++r) {
        EXPECT_EQ(statusOf(s.row(r)), kDeleted) << r;
        EXPECT_EQ(s.row(r).VisitorTeam, 0) << r;
        EXPECT_EQ(s.row(r).HomeTeam, 0) << r;
    }
    EXPECT_EQ(statusOf(s.row(4)), kUnplayed);
    EXPECT_EQ(statusOf(s.row(5)), kUnplayed);
    EXPECT_EQ(s.row(5).Coach[1].str(), "C");
}

TEST(ScheduleLoad, TooManyRowsIsAFileErrorNotATruncation) {
    TempDir dir;
    writeBytes(dir / "Sked.skd", (kMaxScheduleGames + 1) * kSlot, 0);
    EXPECT_THROW(Schedule::load(dir.path()), FileError);
    EXPECT_EQ(fileLength(dir / "Sked.skd"), (kMaxScheduleGames + 1) * kSlot);
}

TEST(ScheduleFileRule, OldSkedIsCopiedOnlyToTheDefaultNameWhenThatIsNearlyEmpty) {
    {
        TempDir dir;  // no schedule yet: SKED of 50 bytes or more is taken
        writeRows(dir / "SKED", {game(1, 2, 10, 5)});
        auto s = Schedule::load(dir.path(), "sked.SKD");
        ASSERT_EQ(s.size(), 1u);
        EXPECT_EQ(s.row(1).HomeTeam, 2);
        EXPECT_EQ(s.path().filename(), "sked.SKD");
    }
    {
        TempDir dir;  // an existing file of 49 bytes still counts as empty
        writeRows(dir / "Sked", {game(1, 2, 10, 5)});
        writeBytes(dir / "Sked.skd", 49, 0);
        EXPECT_EQ(Schedule::load(dir.path()).size(), 1u);
    }
    {
        TempDir dir;  // a schedule of its own is kept
        writeRows(dir / "SKED", {game(1, 2, 10, 5)});
        writeRows(dir / "Sked.skd", {game(3, 4, 10, 5), game(5, 6, 10, 5)});
        EXPECT_EQ(Schedule::load(dir.path()).size(), 2u);
    }
    {
        TempDir dir;  // a SKED of fewer than 50 bytes holds nothing
        writeBytes(dir / "SKED", 49, 1);
        EXPECT_EQ(Schedule::load(dir.path()).size(), 0u);
    }
    {
        TempDir dir;  // another schedule name never takes the old file
        writeRows(dir / "SKED", {game(1, 2, 10, 5)});
        EXPECT_EQ(Schedule::load(dir.path(), "Playoffs.skd").size(), 0u);
    }
}

TEST(ScheduleSave, LeavesOutDeletedRowsAndGamesOfInactiveTeams) {
    TempDir dir;
    writeRows(dir / "Sked.skd",
              {game(1, 2, 10, 5), game(3, 4, 10, 5, 'D'), game(5, 1, 10, 6), game(0, 2, 10, 6), game(2, 1, 10, 7)});
    auto s = Schedule::load(dir.path());
    s.save(teams({1, 2, 3, 4}), ScheduleTail::Truncate);  // team 5 is no longer in the league
    ASSERT_EQ(s.size(), 2u);
    auto back = Schedule::load(dir.path());
    ASSERT_EQ(back.size(), 2u);
    EXPECT_EQ(back.row(1).VisitorTeam, 1);
    EXPECT_EQ(back.row(2).VisitorTeam, 2);
    EXPECT_EQ(fileLength(dir / "Sked.skd"), 2 * kSlot);
}

TEST(ScheduleSave, SlotsBehindTheLastRowKeepWhatTheyHeld) {
    TempDir dir;
    std::vector<GameRecord> rows{game(1, 2, 10, 5), game(3, 4, 10, 6), game(5, 6, 10, 7), game(7, 8, 10, 8)};
    rows[1].SlotTail = {0xEE, 0xEF};
    writeRows(dir / "Sked.skd", rows);
    auto s = Schedule::load(dir.path());
    ASSERT_TRUE(s.removeGame(1));
    s.save(teams({1, 2, 3, 4, 5, 6, 7, 8}));

    EXPECT_EQ(fileLength(dir / "Sked.skd"), 4 * kSlot);
    auto back = Schedule::load(dir.path());
    ASSERT_EQ(back.size(), 4u);  // the old last row is counted again
    EXPECT_EQ(back.row(1).VisitorTeam, 3);
    EXPECT_EQ(back.row(3).VisitorTeam, 7);
    EXPECT_EQ(back.row(4).VisitorTeam, 7);
    // Only the record part of a slot is written: slot 1 keeps its own unused
    // bytes, though row 2 moved into it.
    auto bytes = readBytes(dir / "Sked.skd");
    EXPECT_EQ(bytes[198], 0);
    EXPECT_EQ(bytes[398], 0xEE);
}

TEST(ScheduleSave, AFileThatCannotBeReadIsLeftAlone) {
    TempDir dir;
    writeRows(dir / "Sked.skd", {game(1, 2, 10, 5)});
    auto s = Schedule::load(dir.path());
    std::filesystem::remove(dir / "Sked.skd");
    std::filesystem::create_directory(dir / "Sked.skd");
    EXPECT_THROW(s.save(teams({1, 2})), FileError);
    EXPECT_TRUE(std::filesystem::is_directory(dir / "Sked.skd"));
}

TEST(LeagueDate, EarliestOpenGameInSeasonOrder) {
    TempDir dir;
    auto s = Schedule::fromRows(dir.path(), {game(1, 2, 1, 3, 'U'), game(3, 4, 10, 30, 'N'), game(5, 6, 10, 4, 'P'),
                                             game(7, 8, 9, 30, 'D'), game(9, 10, 11, 1, 'U')});
    auto today = s.leagueDate();
    ASSERT_TRUE(today);
    // October comes before January although its month number is larger; a
    // played or deleted game has no say.
    EXPECT_EQ(today->month, 10);
    EXPECT_EQ(today->day, 30);
    EXPECT_EQ(today->seasonMonth, 2);
    EXPECT_EQ(today->year, 2017);

    auto done = Schedule::fromRows(dir.path(), {game(1, 2, 10, 4, 'P')});
    EXPECT_FALSE(done.leagueDate());
    EXPECT_FALSE(Schedule::fromRows(dir.path(), {}).leagueDate());
}

TEST(ScheduleEdit, AddRefusesIncompleteGamesAndAppendsAnUnplayedComputerGame) {
    TempDir dir;
    auto s = Schedule::fromRows(dir.path(), {});
    EXPECT_EQ(s.addGame(3, 3, 10, 5), 0u);
    EXPECT_EQ(s.addGame(0, 3, 10, 5), 0u);
    EXPECT_EQ(s.addGame(2, 3, 0, 5), 0u);
    EXPECT_EQ(s.addGame(2, 3, 4, 31), 0u);
    EXPECT_EQ(s.size(), 0u);

    EXPECT_EQ(s.addGame(2, 3, 10, 5, 2017), 1u);
    EXPECT_EQ(s.addGame(4, 5, 1, 5, 1999), 2u);  // the first row's year stands
    const auto& g = s.row(2);
    EXPECT_EQ(g.Coach[0].str(), "C");
    EXPECT_EQ(g.Coach[1].str(), "C");
    EXPECT_EQ(statusOf(g), kUnplayed);
    EXPECT_TRUE(g.RecordText[0].blank());
    EXPECT_EQ(g.RecordText[0].raw[0], ' ');
    EXPECT_EQ(g.Year, 2017);
    EXPECT_TRUE(s.teamPlaysOn(5, 1, 5));
    EXPECT_FALSE(s.teamPlaysOn(5, 1, 6));

    s.removeGame(1);
    EXPECT_FALSE(s.teamPlaysOn(2, 10, 5));
    EXPECT_FALSE(s.removeGame(3));
    s.save(teams({2, 3, 4, 5}));
    EXPECT_EQ(Schedule::load(dir.path()).size(), 1u);
}

TEST(ScheduleEdit, CoachesChangeOnlyInGamesStillToPlay) {
    TempDir dir;
    auto s = Schedule::fromRows(dir.path(), {game(1, 2, 10, 5, 'P'), game(2, 1, 10, 6, 'U'), game(3, 1, 10, 7, 'N')});
    s.setAllCoaches('H');
    EXPECT_EQ(s.row(1).Coach[0].str(), "C");
    EXPECT_EQ(s.row(2).Coach[0].str(), "H");
    EXPECT_EQ(s.row(3).Coach[1].str(), "H");
    s.setAllCoaches('C');
    s.setTeamCoach(1, 'H');
    EXPECT_EQ(s.row(1).Coach[1].str(), "C");
    EXPECT_EQ(s.row(2).Coach[0].str(), "C");
    EXPECT_EQ(s.row(2).Coach[1].str(), "H");
    EXPECT_EQ(s.row(3).Coach[1].str(), "H");
}

TEST(ScheduleEdit, EraseEmptiesTheFileAtOnce) {
    TempDir dir;
    writeRows(dir / "Sked.skd", {game(1, 2, 10, 5), game(3, 4, 10, 5)});
    auto s = Schedule::load(dir.path());
    s.eraseAll();
    EXPECT_EQ(s.size(), 0u);
    EXPECT_EQ(fileLength(dir / "Sked.skd"), 0u);
}

TEST(ScheduleFiles, ListsEverySkdFileWhateverItsCase) {
    TempDir dir;
    for (const char* name : {"Sked.skd", "playoffs.SKD", "SKED", "notes.skd.txt"}) writeBytes(dir / name, 1, 0);
    std::filesystem::create_directory(dir / "old.skd");
    EXPECT_EQ(scheduleFileList(dir.path()), (std::vector<std::string>{"Sked.skd", "playoffs.SKD"}));
}

TEST(NewSchedule, ReplacesTheWholeFile) {
    TempDir dir;
    writeRows(dir / "Sked.skd", {game(1, 2, 10, 5), game(3, 4, 10, 5), game(5, 6, 10, 5)});
    saveNewSchedule(dir.path(), {game(1, 2, 11, 1), game(7, 8, 11, 2)}, teams({1, 2, 3, 4, 5, 6}));
    auto s = Schedule::load(dir.path());
    ASSERT_EQ(s.size(), 1u);
    EXPECT_EQ(s.row(1).Month, 11);
}

}  // namespace
}  // namespace tallyrink
