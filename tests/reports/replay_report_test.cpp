#include "reports/replay_report.h"

#include <gtest/gtest.h>

#include "league/era.h"
#include "league/league.h"
#include "support/league_fixture.h"
#include "support/temp_dir.h"

namespace tallyrink {
namespace {

using testing::LeagueFixture;
using testing::TempDir;

constexpr auto kPoints = static_cast<std::size_t>(PlayerStat::P);
constexpr auto kGoals = static_cast<std::size_t>(PlayerStat::G);
constexpr auto kToi = static_cast<std::size_t>(PlayerStat::TOI);

TEST(Pearson, KnownValues) {
    EXPECT_DOUBLE_EQ(pearson({1, 2, 3}, {2, 4, 6}), 1.0);
    EXPECT_DOUBLE_EQ(pearson({1, 2, 3}, {3, 2, 1}), -1.0);
    EXPECT_EQ(pearson({1, 1, 1}, {1, 2, 3}), 0.0);  // no spread, no correlation
    EXPECT_EQ(pearson({1}, {1}), 0.0);
}

struct ReplayLeague : ::testing::Test {
    TempDir dir;
    LeagueFixture fixture = LeagueFixture::make({.teams = 2, .playersPerTeam = 8});

    // Real lines of 80 games; skater k scores k goals and 2k assists.
    void giveRealLines() {
        for (auto& p : fixture.players) {
            StatLine& real = statLine(p, StatLineIndex::Real);
            real.GP = 80;
            int k = p.PlayerId;
            real.Goals = static_cast<std::uint8_t>(k);
            real.Assists = static_cast<std::int16_t>(2 * k);
            real.Sog = static_cast<std::int16_t>(10 * k);
            real.Toi = 80 * 60 * (12 + k % 5);
        }
        for (int t : {1, 2}) {
            StatLine& line = fixture.team(t).TeamRealLine;
            line.GP = 80;
            line.GoalsAllowed = 200;
            line.PlusMinus = static_cast<std::int16_t>(t == 1 ? 40 : -40);
            line.Sog = 2400;
            line.GoalieWins = static_cast<std::uint8_t>(t == 1 ? 50 : 30);
        }
    }

    // A replay of `games` team games in which every player keeps his real pace.
    void replayAtRealPace(int games) {
        for (auto& p : fixture.players) {
            const StatLine& real = statLine(p, StatLineIndex::Real);
            StatLine& replay = statLine(p, StatLineIndex::Replay);
            replay.GP = static_cast<std::uint8_t>(games);
            replay.Goals = static_cast<std::uint8_t>(real.Goals * games / 80);
            replay.Assists = static_cast<std::int16_t>(real.Assists * games / 80);
            replay.Sog = static_cast<std::int16_t>(real.Sog * games / 80);
            replay.Toi = real.Toi / 80 * games;
        }
        for (int t : {1, 2}) {
            TeamRecord& team = fixture.team(t);
            team.Wins = static_cast<std::int16_t>(games / 2);
            team.Losses = static_cast<std::int16_t>(games - games / 2);
            team.TeamFor[0].Goals = static_cast<std::int16_t>(3 * games);
            team.TeamAgainst[0].Goals = static_cast<std::int16_t>(3 * games);
            team.TeamFor[0].Sog = static_cast<std::int16_t>(30 * games);
        }
    }

    ReplayReport build(const EraTable* era = nullptr) {
        fixture.write(dir.path());
        League league(dir.path());
        league.readTeamTable();
        return buildReplayReport(league, fixture.players, era);
    }
};

TEST_F(ReplayLeague, AReplayAtRealPaceAgreesPerfectlyAtHalfSeason) {
    giveRealLines();
    replayAtRealPace(40);
    ReplayReport r = build();
    EXPECT_FALSE(r.seasonComplete);
    // Goalies are left out of the player comparison.
    EXPECT_EQ(r.players.size(), 12u);
    for (const auto& p : r.players) {
        EXPECT_DOUBLE_EQ(p.fraction, 0.5);
        EXPECT_NEAR(p.stat[kPoints].real, p.stat[kPoints].replay, 1.0) << p.name;
        EXPECT_DOUBLE_EQ(p.stat[kToi].real, p.stat[kToi].replay) << p.name;  // a rate, not pro-rated
    }
    EXPECT_GT(r.agreement[kPoints].correlation, 0.99);
    EXPECT_LT(std::abs(r.agreement[kGoals].meanError), 0.5);
    // Real goals for: goals against plus the goal difference, per game.
    EXPECT_DOUBLE_EQ(r.league.goals.real, (240.0 + 160.0) / 160);
    EXPECT_DOUBLE_EQ(r.league.goals.replay, 3.0);
    EXPECT_DOUBLE_EQ(r.league.shots.replay, 30.0);
    EXPECT_NEAR(r.league.savePct.replay, 0.9, 1e-9);
    EXPECT_DOUBLE_EQ(r.teams[0].points.real, 50.0);  // 100 points pro-rated to half the season
}

TEST_F(ReplayLeague, PlayersAheadOfTheirPaceShowAsPositiveError) {
    giveRealLines();
    replayAtRealPace(80);
    for (auto& p : fixture.players) statLine(p, StatLineIndex::Replay).Goals += 4;
    ReplayReport r = build();
    EXPECT_TRUE(r.seasonComplete);
    EXPECT_DOUBLE_EQ(r.agreement[kGoals].meanError, 4.0);
    EXPECT_DOUBLE_EQ(r.agreement[kGoals].meanAbsError, 4.0);
    EXPECT_GT(r.agreement[kGoals].correlation, 0.99);  // a constant shift keeps the order

    // Every report carries the same league rows as the text one.
    std::string text = replayReportText(r);
    std::string html = replayReportHtml(r, "Test <League>");
    EXPECT_NE(html.find("Test &lt;League&gt;"), std::string::npos);
    EXPECT_NE(html.find("<svg"), std::string::npos);
    for (const char* name : {"Power plays", "Games past regulation", "Power-play percentage"}) {
        EXPECT_NE(text.find(name), std::string::npos) << name;
        EXPECT_NE(html.find(std::string("<td>") + name + "</td>"), std::string::npos) << name;
    }
    std::string csv = replayReportCsv(r);
    // Header and 12 skaters, then a blank line and the league's table.
    std::string players = csv.substr(0, csv.find("\n\n") + 1);
    EXPECT_EQ(std::count(players.begin(), players.end(), '\n'), 13);
    EXPECT_NE(csv.find("\nleague,real,replay\n"), std::string::npos);
    EXPECT_NE(csv.find("\ngoals,"), std::string::npos);
    EXPECT_NE(csv.find("\nshots,"), std::string::npos);
    EXPECT_NE(csv.find("\npower_plays,,"), std::string::npos);  // the real season keeps no count
    EXPECT_NE(csv.find("\npast_regulation,"), std::string::npos);
}

// The league's files keep no real power plays: the season's power-play
// percentage in the era table and the real power-play goals give them.
TEST_F(ReplayLeague, RealPowerPlaysComeFromTheSeasonsPercentage) {
    giveRealLines();
    replayAtRealPace(80);
    EraTable era;
    era.year(2017).PowerPlayPct = 20;
    for (int t : {1, 2}) {
        TeamRecord& team = fixture.team(t);
        team.TeamYear = 2017;
        team.TeamRealLine.PPG = 48;  // 240 chances at 20 per cent
        team.TeamFor[0].PPG = 44;
        team.PowerPlays[0] = 200;
    }
    ReplayReport r = build(&era);
    EXPECT_DOUBLE_EQ(r.league.powerPlayPct.real, 0.2);
    EXPECT_DOUBLE_EQ(r.league.powerPlayPct.replay, 0.22);
    EXPECT_DOUBLE_EQ(r.league.powerPlays.real, 3.0);
    EXPECT_DOUBLE_EQ(r.league.powerPlays.replay, 2.5);
    EXPECT_NE(replayReportText(r).find("Power-play percentage      20.0%    22.0%   +10.0%"), std::string::npos)
        << replayReportText(r);
    EXPECT_NE(replayReportCsv(r).find("\npower_plays,3.0000,2.5000\n"), std::string::npos);

    // A season the era table doesn't know leaves them unknown.
    for (int t : {1, 2}) fixture.team(t).TeamYear = 2049;
    r = build(&era);
    EXPECT_EQ(r.league.powerPlayPct.real, 0);
    EXPECT_NE(replayReportText(r).find("Power plays                    -     2.50"), std::string::npos)
        << replayReportText(r);
}

TEST_F(ReplayLeague, PlayersWithFewRealGamesAreLeftOut) {
    giveRealLines();
    statLine(fixture.player(5), StatLineIndex::Real).GP = kReplayReportMinGames - 1;
    ReplayReport r = build();
    EXPECT_EQ(r.players.size(), 11u);
    EXPECT_EQ(r.league.teamGamesReplay, 0);
    EXPECT_EQ(r.league.goals.replay, 0.0);
}

}  // namespace
}  // namespace tallyrink
