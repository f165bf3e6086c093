// Whole leagues through the team load: both sides of games of a made-up
// league and of the shipped real season load, fill their lines and put a
// legal unit on the ice in every manpower situation.

#include <gtest/gtest.h>

#include <set>

#include "engine/team_load.h"
#include "operations/blank_league.h"
#include "operations/era_figures.h"
#include "operations/new_league.h"
#include "operations/season_import.h"
#include "support/source_tree.h"
#include "support/temp_dir.h"
#include "team/lineup_tools.h"
#include "team/positions.h"

namespace tallyrink {
namespace {

using test::shippedEra;

using testing::TempDir;

// Every situation the engine plays, with its units.
std::vector<IceRequest> situations() {
    std::vector<IceRequest> out;
    for (int u = 1; u <= 4; ++u) out.push_back({.own = 5, .opponent = 5, .unit = u});
    for (auto [own, opp] : {std::pair{5, 4}, {5, 3}, {4, 5}, {3, 5}, {4, 4}, {4, 3}, {3, 3}})
        for (int u = 1; u <= 2; ++u) out.push_back({.own = own, .opponent = opp, .unit = u});
    out.push_back({.own = 5, .opponent = 5, .goaliePulled = true});
    return out;
}

// Checks both sides of a loaded game; returns the number of units checked.
int checkGame(GameSession& game, Random& rng) {
    int checked = 0;
    for (int side : {kVisitor, kHome}) {
        LineupTeam team = game.lineupTeam(side);
        const SideTables& s = game.side(side);
        for (const IceRequest& req : situations()) {
            IcePlacement ice = PutLinesOnIce(team, req, &rng);
            LineupCheck check = CheckLineup(ice.onIce, req.own, req.goaliePulled);
            EXPECT_TRUE(check.LineupValid) << "team " << s.TeamId << " " << req.own << "-" << req.opponent << " unit "
                                           << req.unit << ": " << check.fault;
            std::set<int> seen;
            for (int slot : ice.onIce.slot) {
                if (slot == kNoSlot) continue;
                EXPECT_TRUE(seen.insert(slot).second);
                EXPECT_TRUE(team.candidate[std::size_t(slot)]);
                EXPECT_EQ(s.player(slot).TeamId, s.TeamId);
            }
            EXPECT_TRUE(isGoalie(s.player(ice.goalie))) << "team " << s.TeamId;
            ++checked;
        }
    }
    return checked;
}

TEST(LeagueGames, EveryPairingOfAMadeUpLeague) {
    TempDir dir;
    NewLeagueOptions options;
    options.teams = 8;
    options.year = 2017;
    options.seed = 77;
    GeneratedLeague league = generateLeague(options, eraTargets(shippedEra(), 2017));
    writeLeagueFolder(dir.path(), league.files);
    std::vector<int> teams;
    for (int t = 1; t <= kMaxTeams; ++t)
        if (league.files.teams[std::size_t(t - 1)].TeamActive == 1) teams.push_back(t);
    ASSERT_EQ(teams.size(), 8u);

    Random rng(2017);
    for (std::size_t a = 0; a < teams.size(); ++a) {
        for (std::size_t b = a + 1; b < teams.size(); ++b) {
            GameSession game({dir.path(), defaultRules(2017), &shippedEra(), nullptr});
            game.loadGame(teams[a], teams[b], 11, 10, rng);
            EXPECT_EQ(checkGame(game, rng), 2 * 19);
            if (a == 0 && b == 1) {
                // The first load of a team made its plan and lines.
                EXPECT_EQ(game.side(kVisitor).plan.GamePlanStamp, 44);
                EXPECT_GE(game.side(kVisitor).lines.holderOf(1, ForwardRole::Center), 0);
            }
        }
    }
}

TEST(LeagueGames, EachTeamOfTheRealSeason) {
    TempDir dir;
    ImportedLeague league = buildLeague(readSeasonData(defaultSeasonFolder({})));
    writeLeague(league, dir / "league", false);
    Schedule schedule = Schedule::load(dir / "league");
    std::set<int> seen;
    Random rng(2018);
    int games = 0;
    for (const GameRecord& g : schedule.rows()) {
        if (seen.count(g.VisitorTeam) && seen.count(g.HomeTeam)) continue;
        seen.insert(g.VisitorTeam);
        seen.insert(g.HomeTeam);
        GameSession game({dir / "league", defaultRules(2017), &shippedEra(), &schedule});
        game.loadGame(g.VisitorTeam, g.HomeTeam, g.Month, g.Day, rng);
        EXPECT_EQ(game.side(kVisitor).SeasonGames, 82);
        checkGame(game, rng);
        ++games;
    }
    EXPECT_EQ(seen.size(), 31u);
    EXPECT_LE(games, 31);
}

}  // namespace
}  // namespace tallyrink
