#include "league/database.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "league/files.h"
#include "support/league_fixture.h"
#include "support/temp_dir.h"

namespace tallyrink {
namespace {

using testing::LeagueFixture;
using testing::TempDir;

StatLine& replayOf(PlayerRecord& p) { return statLine(p, StatLineIndex::Replay); }
StatLine& realOf(PlayerRecord& p) { return statLine(p, StatLineIndex::Real); }

// Three teams (Halden, Brisk, Corran) of three players each.
LeagueFixture threeTeams(int gamesPlayed = 10) {
    return LeagueFixture::make({.teams = 3, .playersPerTeam = 3, .gamesPlayed = gamesPlayed});
}

void setGames(LeagueFixture& lg, int t, int games) {
    lg.team(t).Wins = static_cast<std::int16_t>(games);
    lg.team(t).Losses = 0;
}

// The combined rows after a database load, in order.
std::vector<PlayerRow> totalRows(LeagueFixture& lg, const fs::path& dir) {
    lg.write(dir);
    League league(dir);
    LoadDataBase(league);
    std::vector<PlayerRow> out;
    for (const auto& row : league.PlayerTable())
        if (row.player.TeamId == kTotalRow) out.push_back(row);
    return out;
}

TEST(ComboPlayerScan, ATradedPlayerGetsOneSummedRow) {
    TempDir dir;
    auto lg = threeTeams();
    replayOf(lg.player(4)).GP = 6;  // Brisk now
    replayOf(lg.player(4)).Goals = 2;
    int old = lg.addTradedRow(4, 1, 4);  // four games for Halden first
    replayOf(lg.player(old)).Goals = 3;

    auto totals = totalRows(lg, dir.path());
    ASSERT_EQ(totals.size(), 1u);
    const auto& t = totals[0];
    EXPECT_EQ(t.player.TotalRowTeams.str(), "H-B");
    EXPECT_EQ(statLine(t.player, StatLineIndex::Replay).GP, 10);
    EXPECT_EQ(statLine(t.player, StatLineIndex::Replay).Goals, 5);
    EXPECT_EQ(t.label, "Last4        H-B");

    // The working copy holds every record, the combined row and two empty rows.
    RandomFile leaders(dir / "HKPLAYER-Leaders", 1500);
    EXPECT_EQ(leaders.count(kPlayerRounding), static_cast<std::size_t>(lg.playerCount() + 1 + 2));
    EXPECT_EQ(readRecord<PlayerRecord>(leaders, static_cast<std::size_t>(lg.playerCount() + 1)).TeamId, kTotalRow);
}

TEST(ComboPlayerScan, StintsThatCantFitInTheTeamsGamesAreNoPair) {
    TempDir dir;
    // Both teams played 10 games; the two rows add up to 11.
    auto lg = threeTeams(10);
    replayOf(lg.player(4)).GP = 6;
    lg.addTradedRow(4, 1, 5);
    EXPECT_TRUE(totalRows(lg, dir.path()).empty());

    // Different age: another man of the same name.
    auto other = threeTeams(10);
    replayOf(other.player(4)).GP = 5;
    int row = other.addTradedRow(4, 1, 5);
    other.player(row).Age = 31;
    EXPECT_TRUE(totalRows(other, dir.path()).empty());

    // Two rows of the same team are never a pair.
    auto same = threeTeams(10);
    replayOf(same.player(4)).GP = 5;
    same.addTradedRow(4, 2, 2);
    EXPECT_TRUE(totalRows(same, dir.path()).empty());
}

TEST(ComboPlayerScan, TotalRowFlagOnTheFirstRowTurnsOffOnlyItsTeamsCheck) {
    TempDir dir;
    auto build = [](std::uint8_t flag, int braskGames) {
        auto lg = threeTeams();
        setGames(lg, 1, 5);           // Halden: 5 games
        setGames(lg, 2, braskGames);  // Brisk
        replayOf(lg.player(4)).GP = 7;
        int old = lg.addTradedRow(4, 1, 4);  // 4 + 7 = 11 > Halden's 5
        lg.player(old).TotalRowFlag = flag;
        return lg;
    };
    auto noFlag = build(0, 12);
    EXPECT_TRUE(totalRows(noFlag, dir.path()).empty());
    auto flagged = build(1, 12);
    EXPECT_EQ(totalRows(flagged, dir.path()).size(), 1u);
    auto flaggedButBriskShort = build(1, 10);  // 11 > Brisk's 10 still stops it
    EXPECT_TRUE(totalRows(flaggedButBriskShort, dir.path()).empty());
}

TEST(ComboPlayerScan, AFreeAgentWithATeamRowIsLabelledWithTheTeamAndFA) {
    TempDir dir;
    auto lg = LeagueFixture::make({.teams = 3, .playersPerTeam = 3, .freeAgents = 1, .gamesPlayed = 10});
    int fa = lg.playerCount();
    replayOf(lg.player(fa)).GP = 0;
    lg.addTradedRow(fa, 3, 8);  // eight games for Corran before his release

    auto totals = totalRows(lg, dir.path());
    ASSERT_EQ(totals.size(), 1u);
    EXPECT_EQ(totals[0].player.TotalRowTeams.str(), "C-FA");
    EXPECT_EQ(totals[0].label, fmt::format("{:<12} C-F", fmt::format("Last{}", fa)));
    EXPECT_EQ(statLine(totals[0].player, StatLineIndex::Replay).GP, 8);
}

TEST(ComboPlayerScan, ACopiedStintOrAFlaggedOneIsNotAddedTwice) {
    TempDir dir;
    auto lg = threeTeams();
    replayOf(lg.player(4)).GP = 4;
    replayOf(lg.player(4)).Toi = 3000;
    int old = lg.addTradedRow(4, 1, 4);
    replayOf(lg.player(old)).Toi = 3000;  // the same line in GP, Toi, Sog, +/- and saves
    auto totals = totalRows(lg, dir.path());
    ASSERT_EQ(totals.size(), 1u);
    EXPECT_EQ(statLine(totals[0].player, StatLineIndex::Replay).GP, 4);

    auto flagged = threeTeams();
    replayOf(flagged.player(4)).GP = 5;
    flagged.addTradedRow(4, 1, 3);
    flagged.player(4).TotalRowFlag = 1;  // the current stint must not be merged
    totals = totalRows(flagged, dir.path());
    ASSERT_EQ(totals.size(), 1u);
    EXPECT_EQ(totals[0].player.TotalRowTeams.str(), "H-B");
    EXPECT_EQ(statLine(totals[0].player, StatLineIndex::Replay).GP, 3);
}

TEST(ComboPlayerScan, ATotalFarPastAnyTeamsGamesShowsTheLongestStint) {
    TempDir dir;
    auto lg = LeagueFixture::make({.teams = 2, .playersPerTeam = 2, .freeAgents = 1, .gamesPlayed = 10});
    int fa = lg.playerCount();
    replayOf(lg.player(fa)).Toi = 5000;
    replayOf(lg.player(fa)).Goals = 1;
    int old = lg.addTradedRow(fa, 1, 20);  // 20 games: more than any team played
    lg.player(old).TotalRowFlag = 1;
    replayOf(lg.player(old)).Toi = 3000;

    auto totals = totalRows(lg, dir.path());
    ASSERT_EQ(totals.size(), 1u);
    const auto& line = statLine(totals[0].player, StatLineIndex::Replay);
    EXPECT_EQ(line.Toi, 5000);  // the free agent's row, the longer one
    EXPECT_EQ(line.Goals, 1);
    EXPECT_EQ(totals[0].player.TotalRowTeams.str(), "H-FA");
}

TEST(ComboPlayerScan, SumsSaturateInsteadOfWrapping) {
    StatLine a{};
    StatLine b{};
    a.GP = 200;
    b.GP = 100;
    a.Assists = 30000;
    b.Assists = 5000;
    a.PlusMinus = -30000;
    b.PlusMinus = -5000;
    a.Toi = 10;
    b.Toi = 20;
    addStatLine(a, b);
    EXPECT_EQ(a.GP, 255);
    EXPECT_EQ(a.Assists, 32767);
    EXPECT_EQ(a.PlusMinus, -32768);
    EXPECT_EQ(a.Toi, 30);
}

TEST(LoadDataBase, RowsCarryLabelsRatesAndQualification) {
    TempDir dir;
    auto lg = LeagueFixture::make({.teams = 2, .playersPerTeam = 3, .freeAgents = 1, .gamesPlayed = 10});
    // Player 1 is a goalie, 3 a skater of Halden; 7 a free agent.
    realOf(lg.player(1)).GP = 50;   // 50 / 82 >= 0.6
    replayOf(lg.player(1)).GP = 4;  // 4 / 10 >= 0.4
    realOf(lg.player(3)).GP = 57;   // 57 / 82 < 0.7
    realOf(lg.player(3)).Toi = 1800;
    replayOf(lg.player(3)).GP = 7;  // 7 / 10 >= 0.7
    replayOf(lg.player(3)).Toi = 1800;
    replayOf(lg.player(3)).FaceoffsWon = 30;
    replayOf(lg.player(3)).FaceoffsLost = 10;
    replayOf(lg.player(2)).GP = 3;  // goalie, 3 / 10 < 0.4
    lg.addPlayer(0, "Empty", "Slot");
    lg.write(dir.path());

    League league(dir.path());
    LoadDataBase(league);
    ASSERT_EQ(league.PlayerCount(), 7);  // the team-id-0 record is left out
    const auto& goalie = league.PlayerTable()[0];
    const auto& backup = league.PlayerTable()[1];
    const auto& skater = league.PlayerTable()[2];
    const auto& freeAgent = league.PlayerTable()[6];

    EXPECT_EQ(goalie.label, "Last1        HAL");
    EXPECT_TRUE(goalie.RealQualified);
    EXPECT_TRUE(goalie.ReplayQualified);
    EXPECT_EQ(statLine(goalie.player, StatLineIndex::Real).Toi, 50 * 3600);  // filled from games
    EXPECT_FALSE(backup.ReplayQualified);

    EXPECT_FALSE(skater.RealQualified);
    EXPECT_EQ(skater.real.Per60Factor, 0.0);
    EXPECT_TRUE(skater.ReplayQualified);
    EXPECT_DOUBLE_EQ(skater.replay.Per60Factor, 2.0);
    EXPECT_DOUBLE_EQ(skater.replay.FaceoffShare, 0.75);

    EXPECT_EQ(freeAgent.label, "Last7        FA ");
    EXPECT_FALSE(freeAgent.ReplayQualified);
    EXPECT_EQ(league.team(1).City.str(), "Halden");  // the team table is read again
}

TEST(LoadDataBase, RealQualificationUsesTheErasGamesOfThePlayersYear) {
    TempDir dir;
    auto lg = LeagueFixture::make({.teams = 1, .playersPerTeam = 3, .teamYear = 2013});
    realOf(lg.player(3)).GP = 34;
    lg.player(2).PlayerYear = 0;  // takes the team's year
    realOf(lg.player(2)).GP = 34;
    lg.write(dir.path());

    League league(dir.path());
    LoadDataBase(league);
    EXPECT_FALSE(league.PlayerTable()[2].RealQualified);  // 34 / 82

    std::vector<int> asked;
    LoadDataBase(league, [&](int year) {
        asked.push_back(year);
        return year == 2013 ? 48 : 82;
    });
    EXPECT_TRUE(league.PlayerTable()[2].RealQualified);  // 34 / 48
    EXPECT_TRUE(league.PlayerTable()[1].RealQualified);
    EXPECT_EQ(std::count(asked.begin(), asked.end(), 2013), 3);
}

}  // namespace
}  // namespace tallyrink
