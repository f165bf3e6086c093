#include "reports/standings.h"

#include <gtest/gtest.h>

#include "league/league.h"
#include "support/league_fixture.h"
#include "support/temp_dir.h"

namespace tallyrink {
namespace {

using testing::LeagueFixture;
using testing::TempDir;

void setRecord(TeamRecord& t, int w, int l, int ties, int otl) {
    t.Wins = static_cast<std::int16_t>(w);
    t.Losses = static_cast<std::int16_t>(l);
    t.Ties = static_cast<std::int16_t>(ties);
    t.OvertimeLosses = static_cast<std::int16_t>(otl);
}

GameRecord played(int visitor, int home, int v, int h, int extra) {
    GameRecord g{};
    g.VisitorTeam = static_cast<std::int16_t>(visitor);
    g.HomeTeam = static_cast<std::int16_t>(home);
    g.ScoreOf = {static_cast<std::int16_t>(v), static_cast<std::int16_t>(h)};
    g.ExtraMark = static_cast<std::uint8_t>(extra);
    g.Status.assign("P");
    return g;
}

TEST(StandingsPoints, FollowTheLeagueScale) {
    RulesRecord rules{};
    StandingsRecord r{10, 5, 2, 3};
    EXPECT_EQ(standingsPoints(rules, r, 4), 22);  // 2-1-0: overtime losses earn nothing
    rules.OnePointForOvertimeLossCheck = 1;
    EXPECT_EQ(standingsPoints(rules, r, 4), 25);
    rules.OnePointForOvertimeLossCheck = 0;
    rules.StandingsScoringList = 1;  // 3 a regulation win, 2 an extra-time win, 1 an overtime loss
    EXPECT_EQ(standingsPoints(rules, r, 4), 30 - 4 + 3);
}

TEST(StandingsPoints, ExtraTimeWinsCountOnlyGamesPastRegulation) {
    std::vector<GameRecord> scores = {played(1, 2, 3, 2, 1), played(2, 1, 4, 3, 2), played(1, 2, 5, 1, 0),
                                      played(2, 1, 1, 2, 1)};
    EXPECT_EQ(extraTimeWinsOf(scores, 1), 2);
    EXPECT_EQ(extraTimeWinsOf(scores, 2), 1);
}

TEST(StandingsLayoutOf, TiesOnlyWithoutShootouts) {
    RulesRecord rules{};
    EXPECT_EQ(standingsLayout(rules), StandingsLayout::Ties);
    rules.OnePointForOvertimeLossCheck = 1;
    EXPECT_EQ(standingsLayout(rules), StandingsLayout::TiesAndOvertime);
    rules.ShootOutList = 2;
    EXPECT_EQ(standingsLayout(rules), StandingsLayout::OvertimeLosses);
}

struct StandingsLeague : ::testing::Test {
    TempDir dir;
    LeagueFixture fixture = LeagueFixture::make({.teams = 4, .playersPerTeam = 2});
    RulesRecord rules{};

    League load() {
        fixture.write(dir.path());
        League league(dir.path());
        league.readTeamTable();
        return league;
    }
};

TEST_F(StandingsLeague, OrderIsByPointsWithTheExchangeSortsTieOrder) {
    setRecord(fixture.team(1), 2, 3, 0, 0);  // 4
    setRecord(fixture.team(2), 3, 2, 0, 0);  // 6
    setRecord(fixture.team(3), 3, 2, 0, 0);  // 6
    setRecord(fixture.team(4), 4, 1, 0, 0);  // 8
    auto rows = buildStandings(load(), rules, {});
    std::vector<int> order;
    for (const auto& r : rows) order.push_back(r.team);
    // The exchange sort moves 3 ahead of 2 on equal points: that order
    // stands, as the playoff seeds read it.
    EXPECT_EQ(order, (std::vector<int>{4, 3, 2, 1}));
}

TEST_F(StandingsLeague, RowsShowRoadAsTotalLessHomeAndLastTen) {
    rules.OnePointForOvertimeLossCheck = 1;
    rules.ShootOutList = 1;
    rules.ROWStandingsCheck = 1;
    TeamRecord& t = fixture.team(1);
    setRecord(t, 5, 3, 0, 2);
    t.HomeWins = 3;
    t.HomeLosses = 1;
    t.HomeOvertimeLosses = 1;
    t.ShootoutWins = 1;
    t.TeamFor[0].Goals = 31;
    t.TeamAgainst[0].Goals = 25;
    const char* last[] = {"W", "W", "L", "O", "W", "L", "W", "O", "W", "L"};
    for (int k = 0; k < 10; ++k) t.LastResults[static_cast<std::size_t>(k + 1)].assign(last[k]);
    rules.LeagueName.assign("Test League");

    auto rows = buildStandings(load(), rules, {played(1, 2, 3, 2, 2)});
    const StandingsRow& row = rows.front();
    EXPECT_EQ(row.team, 1);
    EXPECT_EQ(row.points, 5 * 2 + 2);
    EXPECT_EQ(row.road().wins, 2);
    EXPECT_EQ(row.road().losses, 2);
    EXPECT_EQ(row.road().overtimeLosses, 1);
    EXPECT_EQ(row.regulationOvertimeWins(), 4);

    std::string text = DisplayStandingsDivision(rows, rules);
    EXPECT_EQ(text.rfind("Test League Standings\n", 0), 0u) << text;
    EXPECT_NE(text.find(" G  W  L OL  Pts  ROW   GF  GA Diff"), std::string::npos) << text;
    // Name, G W L OL Pts, ROW, GF GA Diff, home W L OL, road, last ten W L OL.
    EXPECT_NE(text.find("Halden         10  5  3  2   12 4      31  25    6     3  1  1     2  2  1     5  3  2"),
              std::string::npos)
        << text;
}

TEST_F(StandingsLeague, ConferenceStandingsPutDivisionWinnersFirst) {
    // Teams 1-2 in division 1, 13-14 in division 2 (12 slots a division).
    for (int t : {13, 14}) {
        fixture.team(t) = fixture.team(t - 12 + 2);
        fixture.team(t).TeamActive = 1;
    }
    fixture.team(3).TeamActive = 0;
    fixture.team(4).TeamActive = 0;
    setRecord(fixture.team(1), 5, 5, 0, 0);   // 10, leads division 1
    setRecord(fixture.team(2), 1, 9, 0, 0);   // 2
    setRecord(fixture.team(13), 9, 1, 0, 0);  // 18
    setRecord(fixture.team(14), 8, 2, 0, 0);  // 16
    auto rows = buildStandings(load(), rules, {});
    std::string text = DisplayStandingsConference(rows, rules);
    // Two divisions make two conferences of one division each.
    auto first = text.find("1 Conference");
    auto second = text.find("2 Conference");
    ASSERT_NE(first, std::string::npos) << text;
    ASSERT_NE(second, std::string::npos) << text;
    EXPECT_LT(text.find("1  Halden"), second) << text;
    EXPECT_NE(text.find("2  Brisk"), std::string::npos) << text;
}

}  // namespace
}  // namespace tallyrink
