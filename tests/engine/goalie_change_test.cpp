// A computer coach's change of goalie after a goal against: the goalie's own
// limit, the cases in which nobody is changed, the relieved goalie's return
// only when his reliever is hurt, and the hook that decides when the goalie
// has no limit of his own.

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "engine/game.h"
#include "engine/goalie_change.h"
#include "league/schedule.h"
#include "operations/season_import.h"
#include "support/made_up_game.h"
#include "support/source_tree.h"
#include "support/temp_dir.h"
#include "team/positions.h"
#include "team/rating_tool.h"

namespace tallyrink {
namespace {

const test::MadeUpLeague& madeUp() { return test::madeUpLeague(6, 31); }

int countHolding(const std::vector<std::string>& lines, const std::string& words) {
    int n = 0;
    for (const auto& l : lines) n += l.find(words) != std::string::npos ? 1 : 0;
    return n;
}

class Relief : public ::testing::Test {
protected:
    std::unique_ptr<GameSession> session = test::loadedGame(madeUp(), test::madeUpRules(), 5);
    // A screen, so that the change is told; both coaches are the computer.
    Game game{*session, GameOptions{.seed = 11, .noDisplay = false}};
    int starter = kNoSlot;
    int spare = kNoSlot;

    void SetUp() override {
        game.InitGame();
        starter = game.state().goalie[kHome];
        const SideTables& t = session->side(kHome);
        for (int slot = 0; slot < kRosterSlots && spare == kNoSlot; ++slot)
            if (slot != starter && t.onTeam(slot) && t.DressedToday[std::size_t(slot)] == 0 && isGoalie(t.player(slot)))
                spare = slot;
        ASSERT_NE(starter, kNoSlot);
        ASSERT_NE(spare, kNoSlot) << "a made-up team dresses two goalies";
        limitGoals(starter, 2);
    }
    PlayerRecord& home(int slot) { return session->side(kHome).player(slot); }
    void limitGoals(int slot, int goals) { home(slot).GoaliePullAfterGoalsAllowed = std::uint8_t(goals); }
    // `side` scores in mid-period; the step's change follows.
    void goalBy(int side, int period = 2, int clock = 600) {
        GameState& s = game.editState();
        s.Period = period;
        s.Clock = clock;
        s.PlayZone = Zone::OffenseShooter;
        s.PuckTeam = side;
        s.PlayResult = Result::Goal;
        const std::array<int, 2> before = s.Score;
        game.ApplyPlay();
        game.goalieChangeAfterGoal(before);
    }
    int goalieNow() const { return game.state().goalie[kHome]; }
    int inNet() const { return game.state().onIce[kHome][IcePos::GoalieOrExtra]; }
    int toldChanges() const { return countHolding(game.playLines(), "now in goal for"); }
};

TEST_F(Relief, TheGoaliesOwnLimitRelievesHimRightAfterThatGoal) {
    goalBy(kVisitor);
    goalBy(kHome);  // his own team's goals count for nothing
    goalBy(kHome);
    EXPECT_EQ(goalieNow(), starter);
    EXPECT_EQ(statLine(home(starter), StatLineIndex::Game).GoalsAllowed, 1);
    EXPECT_EQ(toldChanges(), 0);

    goalBy(kVisitor);
    EXPECT_EQ(goalieNow(), spare);
    EXPECT_EQ(inNet(), spare);
    EXPECT_EQ(toldChanges(), 1);
    EXPECT_EQ(countHolding(game.playLines(), "heads to the bench"), 1);
    EXPECT_EQ(countHolding(game.playTelling().shortTexts(), "now in goal for"), 1);
    EXPECT_EQ(game.tally().goalieReliefs, 1);
    EXPECT_EQ(game.state().relief.starter[kHome], starter);
    // The faceoff after the goal doesn't tell the change again.
    EXPECT_EQ(game.state().events.goalieAnnounced[kHome], spare);
    // The goals went against the man in net at each.
    EXPECT_EQ(statLine(home(starter), StatLineIndex::Game).GoalsAllowed, 2);

    // The reliever, with a limit of his own, has nobody left behind him: the
    // relieved starter doesn't come back for goals.
    limitGoals(spare, 1);
    goalBy(kVisitor);
    goalBy(kVisitor);
    EXPECT_EQ(goalieNow(), spare);
    EXPECT_EQ(statLine(home(spare), StatLineIndex::Game).GoalsAllowed, 2);
    EXPECT_EQ(toldChanges(), 1);
}

TEST_F(Relief, TheStarterReturnsOnlyWhenHisRelieverIsHurt) {
    goalBy(kVisitor);
    goalBy(kVisitor);
    ASSERT_EQ(goalieNow(), spare);
    game.injure(kHome, spare, 5);
    game.setManpower(5, 5);
    EXPECT_EQ(goalieNow(), starter);
    EXPECT_EQ(inNet(), starter);
}

TEST_F(Relief, NobodyIsChangedWhereACoachWouldNotOrCouldNot) {
    // A starter marked never to be pulled in games he starts.
    home(starter).GoalieNeverPullInGamesStarted = 1;
    goalBy(kVisitor);
    goalBy(kVisitor);
    goalBy(kVisitor);
    EXPECT_EQ(goalieNow(), starter);
    home(starter).GoalieNeverPullInGamesStarted = 0;

    // Past his limit now, but it is his own team that scores.
    goalBy(kHome);
    EXPECT_EQ(goalieNow(), starter);

    // No fit spare.
    game.editState().find.PlayerOut[kHome][std::size_t(spare)] = true;
    goalBy(kVisitor);
    EXPECT_EQ(goalieNow(), starter);
    game.editState().find.PlayerOut[kHome][std::size_t(spare)] = false;

    // Overtime, and the last minute of regulation.
    goalBy(kVisitor, 4, 200);
    EXPECT_EQ(goalieNow(), starter);
    goalBy(kVisitor, 3, 45);
    EXPECT_EQ(goalieNow(), starter);

    // A goal into the empty net is not the goalie's.
    game.editState().GoaliePulled[kHome] = true;
    goalBy(kVisitor);
    EXPECT_EQ(goalieNow(), starter);
    game.editState().GoaliePulled[kHome] = false;

    // A person coaching the side changes his own goalie.
    game.setCoach(kHome, CoachKind::Human);
    goalBy(kVisitor);
    EXPECT_EQ(goalieNow(), starter);
    EXPECT_EQ(toldChanges(), 0);
    EXPECT_EQ(game.tally().goalieReliefs, 0);

    // Given back to the computer, the next goal against brings the change.
    game.setCoach(kHome, CoachKind::Computer);
    goalBy(kVisitor);
    EXPECT_EQ(goalieNow(), spare);
}

TEST_F(Relief, WithoutALimitThePlansHookDecides) {
    limitGoals(starter, 0);
    // A very slow hook keeps a goalie through five goals, whatever the draw.
    session->side(kHome).plan.YankGoalie = {1, 1, 1};
    for (int g = 0; g < 4; ++g) goalBy(kVisitor, 1, 1000 - 10 * g);
    EXPECT_EQ(goalieNow(), starter);
    // The coach's chances each goal after that add up to a change soon.
    session->side(kHome).plan.YankGoalie = {4, 4, 4};
    for (int g = 0; g < 12 && goalieNow() == starter; ++g) goalBy(kVisitor, 1, 900 - 10 * g);
    EXPECT_EQ(goalieNow(), spare);
}

// ---- The hook ----------------------------------------------------------------------

double chance(GoalieHook h, int goals, int shots, int period = 2, int clock = 600, int lead = -2) {
    return reliefChance(h,
                        {.goalsAllowed = goals, .shotsFaced = shots, .period = period, .clock = clock, .lead = lead});
}

TEST(GoalieHook, EachPeriodHasItsHookAndTheLastHoldsAfterIt) {
    const std::array<std::uint8_t, 3> hooks{1, 3, 4};
    EXPECT_EQ(hookForPeriod(hooks, 1), GoalieHook::VerySlow);
    EXPECT_EQ(hookForPeriod(hooks, 2), GoalieHook::Fast);
    EXPECT_EQ(hookForPeriod(hooks, 5), GoalieHook::VeryFast);
    EXPECT_EQ(hookForPeriod({9, 0, 0}, 1), GoalieHook::NoPreference);
}

TEST(GoalieHook, GoalsHookPeriodShotsAndScoreSetTheChance) {
    using enum GoalieHook;
    // More goals, or a faster hook, never make a change less likely.
    const std::array<GoalieHook, 5> slowToFast{VerySlow, Slow, NoPreference, Fast, VeryFast};
    for (std::size_t i = 0; i < slowToFast.size(); ++i)
        for (int goals = 1; goals < 9; ++goals) {
            const double c = chance(slowToFast[i], goals, goals * 5);
            EXPECT_LE(c, chance(slowToFast[i], goals + 1, goals * 5 + 5)) << goals;
            if (i + 1 < slowToFast.size()) {
                EXPECT_LE(c, chance(slowToFast[i + 1], goals, goals * 5)) << goals;
            }
            EXPECT_LT(c, 1);
        }
    // One goal never; the usual bench waits for a third, a slow one for a
    // fourth or a fifth, a fast one may go after the second.
    EXPECT_EQ(chance(VeryFast, 1, 2), 0);
    EXPECT_EQ(chance(NoPreference, 2, 8), 0);
    EXPECT_GT(chance(NoPreference, 3, 8), 0);
    EXPECT_EQ(chance(Slow, 3, 8), 0);
    EXPECT_EQ(chance(VerySlow, 4, 12), 0);
    EXPECT_GT(chance(Fast, 2, 6), 0);
    // Early rather than late; goals on few shots rather than many; behind
    // by a lot rather than by one, tied or ahead.
    EXPECT_GT(chance(NoPreference, 4, 20, 1), chance(NoPreference, 4, 20, 2));
    EXPECT_GT(chance(NoPreference, 4, 20, 2), chance(NoPreference, 4, 20, 3, 900));
    EXPECT_GT(chance(NoPreference, 4, 20, 3, 900), chance(NoPreference, 4, 20, 3, 300));
    EXPECT_GT(chance(NoPreference, 4, 10), chance(NoPreference, 4, 20));
    EXPECT_GT(chance(NoPreference, 4, 20), chance(NoPreference, 4, 40));
    EXPECT_GT(chance(NoPreference, 4, 20, 2, 600, -3), chance(NoPreference, 4, 20, 2, 600, -1));
    EXPECT_GT(chance(NoPreference, 4, 20, 2, 600, -1), chance(NoPreference, 4, 20, 2, 600, 0));
    EXPECT_GT(chance(NoPreference, 4, 20, 2, 600, 0), chance(NoPreference, 4, 20, 2, 600, 1));
}

// ---- Over a season ------------------------------------------------------------------

// Coaches with no preference of their own, on the real season's teams,
// against the real season's benches. Of its team-games in which the goalies
// let in three goals or more, 196 of 1,357 (14.4%) saw a second goalie, most
// of them after the first was taken out for the goals, a few for an injury
// (218 of all 2,542 team-games had two). Counted over those games, the
// figure holds whether a league scores a little more or less than the real
// one: the games here aren't posted, so the season never steers its goals
// and shots toward the era's as a replay does.
TEST(DefaultHook, ChangesGoaliesAboutAsOftenAsTheRealSeasonsBenches) {
    testing::TempDir dir;
    const std::filesystem::path folder = dir.path() / "league";
    writeLeague(buildLeague(readSeasonData(defaultSeasonFolder({}))), folder, false);
    rateLeague(folder, test::shippedEra(), nullptr);
    Schedule schedule = Schedule::load(folder);
    GameSession session({folder, defaultRules(2017), &test::shippedEra(), &schedule});
    session.GameActive = true;
    int teamGames = 0, threeOrMore = 0, twoGoalies = 0;
    long reliefs = 0;
    for (std::size_t r = 1; r <= 700; ++r) {
        const GameRecord& row = schedule.row(r);
        Random draws(r);
        session.loadGame(row.VisitorTeam, row.HomeTeam, row.Month, row.Day, draws);
        Game game(session, GameOptions{.seed = r * 31});
        game.playToEnd();
        reliefs += game.tally().goalieReliefs;
        for (int side : {kVisitor, kHome}) {
            int goalies = 0, against = 0;
            for (const PlayerRecord& p : session.side(side).GameRoster) {
                if (!isGoalie(p) || statLine(p, StatLineIndex::Game).Toi <= 0) continue;
                ++goalies;
                against += statLine(p, StatLineIndex::Game).GoalsAllowed;
            }
            ++teamGames;
            if (against < 3) continue;
            ++threeOrMore;
            twoGoalies += goalies >= 2 ? 1 : 0;
        }
    }
    const double rate = double(twoGoalies) / threeOrMore;
    RecordProperty("twoGoalies", std::to_string(rate));
    RecordProperty("threeOrMore", std::to_string(double(threeOrMore) / teamGames));
    EXPECT_GT(rate, 0.09);
    EXPECT_LT(rate, 0.21);
    // The changes the coaches made are the second goalies of those games.
    EXPECT_LE(reliefs, twoGoalies);
    EXPECT_GT(reliefs, twoGoalies / 2);
}

}  // namespace
}  // namespace tallyrink
