// Whole games against their era: a made-up league of 2017 played without a
// season behind it must come out near the era table's shots and penalty
// minutes, with goals per shot within the reach of the season's
// calibration, and the pieces that set those figures (the length of a play,
// the tally that counts them, the goalie who starts) must do what they
// claim.

#include <gtest/gtest.h>

#include <memory>

#include "engine/game.h"
#include "engine/goalie_rest.h"
#include "engine/penalties.h"
#include "engine/play_tally.h"
#include "engine/shooting.h"
#include "league/era.h"
#include "operations/made_up_league.h"
#include "support/made_up_game.h"
#include "support/source_tree.h"
#include "support/temp_dir.h"
#include "team/positions.h"

namespace tallyrink {
namespace {

using test::shippedEra;

// The league `tallyrink new-league --seed 7` makes, rated as it makes it:
// the shot model reads the goalies' and skaters' ratings.
struct RatedLeague {
    testing::TempDir dir;
    test::MadeUpLeague teams;
    RatedLeague() {
        NewLeagueOptions options;
        options.seed = 7;
        MadeUpLeagueFolder made = makeMadeUpLeague(dir.path(), options, shippedEra(), nullptr);
        for (int t = 1; t <= kMaxTeams; ++t)
            if (made.league.files.teams[std::size_t(t - 1)].TeamActive == 1) teams.teams.push_back(t);
    }
};

const RatedLeague& ratedLeague() {
    static RatedLeague league;
    return league;
}

std::unique_ptr<GameSession> loaded(const RulesRecord& rules, std::uint64_t seed, int visitor, int home) {
    const RatedLeague& league = ratedLeague();
    auto session = std::make_unique<GameSession>(LeagueContext{league.dir.path(), rules, &shippedEra(), nullptr});
    Random draws(seed);
    session->loadGame(league.teams.teams.at(std::size_t(visitor)), league.teams.teams.at(std::size_t(home)), 11, 10,
                      draws);
    return session;
}

struct SeasonFigures {
    int games = 0;
    double goals = 0, shots = 0, pim = 0;
    int pastRegulation = 0;
    PlayTally tally;

    double perTeamGame(double total) const { return total / (2.0 * games); }
    double savePct() const { return 100 * (shots - goals) / shots; }
};

// Every pairing of the league, home and away, `rounds` times over, as
// league games with nothing posted.
SeasonFigures playLeague(const RulesRecord& rules, int rounds) {
    // The first eight teams of the rated league meet one another.
    SeasonFigures out;
    std::uint64_t seed = 1;
    int n = 8;
    for (int round = 0; round < rounds; ++round) {
        for (int v = 0; v < n; ++v) {
            for (int h = 0; h < n; ++h) {
                if (v == h) continue;
                auto session = loaded(rules, ++seed, v, h);
                session->GameActive = true;
                session->GameType = 'L';
                Game game(*session, GameOptions{.seed = seed * 7919});
                game.playToEnd();
                const GameState& s = game.state();
                ++out.games;
                for (int side : {kVisitor, kHome}) {
                    out.goals += s.Score[std::size_t(side)];
                    out.shots += s.Shots[std::size_t(side)];
                    out.pim += s.pen.PenaltyMinutes[std::size_t(side)];
                }
                if (s.endedBy == GameEnd::Overtime || s.endedBy == GameEnd::Shootout) ++out.pastRegulation;
                out.tally.add(game.tally());
                long steps = 0;
                for (long k : game.tally().steps) steps += k;
                EXPECT_EQ(steps, s.steps) << "every step of a game is in its tally";
            }
        }
    }
    return out;
}

RulesRecord leagueRules() {
    RulesRecord rules = defaultRules(2017);
    rules.AlternateRealityCheck = 0;
    return rules;
}

TEST(Realism, AMadeUpSeasonPlaysNearItsEra) {
    SeasonFigures f = playLeague(leagueRules(), 3);  // 168 games
    const auto& byClass = f.tally.byClass;
    long near = byClass[kShotInside].tried + byClass[kShotMid].tried;
    RecordProperty("near", std::to_string(near));
    RecordProperty("outside", std::to_string(byClass[kShotOutside].tried));
    EraFigures era = figuresOf(shippedEra().yearOr(2017, 2017), EraLevel::Professional);
    // Bands wide enough for the games of one seed, narrow enough to catch a
    // clock or a shot rate that is off by a tenth.
    EXPECT_NEAR(f.perTeamGame(f.shots), era.shotsPerTeam(), 2.5);
    // Goals per shot come to the era's through the season's shooting
    // calibration, which divides a shot's chance by 0.8 to 1.2 once a few
    // games are played. Games with no season behind them must lie within
    // its reach.
    double perShot = (100 - f.savePct()) / (100 - era.savePct);
    EXPECT_GT(perShot, 0.8);
    EXPECT_LT(perShot, 1.2);
    EXPECT_NEAR(f.perTeamGame(f.pim), era.pimPerGame / 2, 1.5);
    double past = 100.0 * f.pastRegulation / f.games;
    EXPECT_GT(past, 12);
    EXPECT_LT(past, 35);
    // The late game: a team a goal or two down pulls its goalie, and some
    // of those nets are found empty, as in a real season (about 0.28 a game).
    EXPECT_GT(f.tally.goaliePulls, f.games / 3);
    double emptyNet = double(f.tally.emptyNetGoals) / f.games;
    EXPECT_GT(emptyNet, 0.1);
    EXPECT_LT(emptyNet, 0.5);
    // The penalty mix: a fight sends a man of each side off with a major,
    // about as many as the era's fighting majors a game, and the minors
    // that make power plays carry most of the minutes.
    const auto& calls = f.tally.calls;
    const auto& minutes = f.tally.callMinutes;
    EXPECT_EQ(f.tally.fightMajors % 2, 0);
    double fightMajors = double(f.tally.fightMajors) / f.games;
    EXPECT_GT(fightMajors, era.fightsPerGame * 0.5);
    EXPECT_LT(fightMajors, era.fightsPerGame * 1.6);
    EXPECT_LE(f.tally.fightMajors, calls[std::size_t(PenaltyType::Major)]);
    double all = 0;
    for (long m : minutes) all += double(m);
    EXPECT_GT(double(minutes[std::size_t(PenaltyType::Minor)]) / all, 0.6);
}

TEST(Realism, OvertimeRulesSetThePaceOfEveryPlay) {
    // The league's overtime length stretches the plays of all periods.
    RulesRecord none = leagueRules();
    none.OTLengthlist = 0;
    RulesRecord five = leagueRules();
    five.OTLengthlist = 1;
    auto secondsPerStep = [](const SeasonFigures& f) {
        auto z = static_cast<std::size_t>(Zone::DefenseZone);
        return f.tally.seconds[z] / static_cast<double>(f.tally.steps[z]);
    };
    double plain = secondsPerStep(playLeague(none, 1));
    double stretched = secondsPerStep(playLeague(five, 1));
    EXPECT_GT(stretched / plain, 1.03);
    EXPECT_LT(stretched / plain, 1.12);
}

// Two goalies dressed: a starter of 60 real games and his backup of 25.
struct Crease {
    BySlot<PlayerRecord> roster{};
    LineupTeam team;
    Crease() {
        team.roster = &roster;
        for (int slot : {0, 1}) {
            PlayerRecord& g = roster[std::size_t(slot)];
            g.PlayerId = slot + 1;
            g.PositionFlags[std::size_t(Flag::Goalie)] = 1;
            team.candidate[std::size_t(slot)] = true;
        }
        starter().DepthGoalie = 10;
        starter().RatingGoalie = 75;
        statLine(starter(), StatLineIndex::Real).GP = 60;
        backup().DepthGoalie = 9;
        backup().RatingGoalie = 60;
        statLine(backup(), StatLineIndex::Real).GP = 25;
    }
    PlayerRecord& starter() { return roster[0]; }
    PlayerRecord& backup() { return roster[1]; }
};

TEST(GoalieRotation, TheStarterPlaysUntilHisRunOrHisShareRestsHim) {
    Crease c;
    Random rng(4);
    // Fresh, on his pace: the first of the chart starts.
    statLine(c.starter(), StatLineIndex::Replay).GP = 7;
    c.starter().RosterGames[0] = 1;
    EXPECT_EQ(startingGoalie(c.team, {10, 82}, rng), 0);
    // Eight in a row is past the run of a 60-game goalie.
    c.starter().RosterGames[0] = 8;
    EXPECT_EQ(startingGoalie(c.team, {10, 82}, rng), 1);
    // Rested, but already well ahead of his share of starts.
    c.starter().RosterGames[0] = 0;
    statLine(c.starter(), StatLineIndex::Replay).GP = 10;
    statLine(c.backup(), StatLineIndex::Replay).GP = 0;
    EXPECT_EQ(startingGoalie(c.team, {10, 82}, rng), 1);
    // A goalie not dressed never starts.
    c.team.candidate[1] = false;
    EXPECT_EQ(startingGoalie(c.team, {10, 82}, rng), 0);
}

TEST(GoalieRotation, ASeasonSharesTheStartsNearTheRealGames) {
    Crease c;
    Random rng(11);
    std::array<int, 2> starts{};
    for (int game = 0; game < 82; ++game) {
        int g = startingGoalie(c.team, {game, 82}, rng);
        ASSERT_TRUE(g == 0 || g == 1);
        ++starts[std::size_t(g)];
        for (int slot : {0, 1}) {
            PlayerRecord& p = c.roster[std::size_t(slot)];
            p.RosterGames[0] = slot == g ? p.RosterGames[0] + 1 : 0;
            if (slot == g) ++statLine(p, StatLineIndex::Replay).GP;
        }
    }
    // 60 and 25 real games, 82 to share: about 58 and 24.
    EXPECT_NEAR(starts[0], 58, 6);
    EXPECT_NEAR(starts[1], 24, 6);
}

}  // namespace
}  // namespace tallyrink
