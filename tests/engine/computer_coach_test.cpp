// The computer coach in a game: calls that follow the game plan and the
// score, the goalie pull at the plan's times, line changes on shift limits
// and tired men, timeouts, and the ice time and shifts a game charges to
// the players on the ice.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>

#include "engine/computer_coach.h"
#include "engine/game.h"
#include "operations/era_figures.h"
#include "operations/new_league.h"
#include "support/made_up_game.h"
#include "support/source_tree.h"
#include "support/temp_dir.h"
#include "team/positions.h"

namespace tallyrink {
namespace {

using test::shippedEra;
using testing::TempDir;

const test::MadeUpLeague& madeUp() { return test::madeUpLeague(4, 57); }

// Three 20-minute periods; no overtime, so a game lasts exactly 3,600 seconds.
RulesRecord regulationOnly() {
    RulesRecord r = defaultRules(2017);
    r.Periodslist = 2;
    r.Minuteslist = 19;
    r.OTLengthlist = 0;
    r.ShootOutList = 0;
    r.TimeoutsAllowedCheck = 1;
    r.AllowOffensiveZonePlayCallsCheck = 1;
    return r;
}

std::unique_ptr<GameSession> loaded(std::uint64_t seed = 1, RulesRecord rules = regulationOnly()) {
    return test::loadedGame(madeUp(), rules, seed);
}

struct Silent final : NullPresenter {
    int asked = 0;
    void AskPlayCall(const Game&, int) override { ++asked; }
    void AskLineChange(const Game&, int) override { ++asked; }
};

// The visitor is the computer; the home coach is a human, so the driver
// stops as soon as the home side must decide.
GameOptions computerVisitor(std::uint64_t seed = 5) {
    GameOptions o;
    o.seed = seed;
    o.coach = {CoachKind::Computer, CoachKind::Human};
    o.noDisplay = false;
    return o;
}

void setAllBreakout(GamePlanRecord& plan, int value) {
    plan.Breakout = static_cast<std::uint8_t>(value);
    plan.BreakoutAdj.fill(static_cast<std::uint8_t>(value));
}

struct CallCounts {
    int aggressive = 0;
    int safe = 0;
    int other = 0;
};

// Breakout calls of the visitor over many plays in the middle of a tied game.
CallCounts breakoutCalls(GameSession& session, std::uint64_t seed, Zone zone, int draws = 3000) {
    Game game(session, GameOptions{.seed = seed});
    game.InitGame();
    GameState& s = game.editState();
    Random ratings(seed + 1);
    CallCounts n;
    for (int i = 0; i < draws; ++i) {
        s.Period = 2;
        s.Clock = 800;
        s.PlayZone = zone;
        s.PuckTeam = kVisitor;
        s.PlayRating = std::clamp(5.7 + 2 * ratings.rnd() - 2 * ratings.rnd(), 1.0, 10.0);
        Call c = game.ChooseOffensePlay(kVisitor, false);
        if (c == Call::Aggressive || c == Call::SkatePass)
            ++n.aggressive;
        else if (c == Call::Safe || c == Call::DumpChase)
            ++n.safe;
        else
            ++n.other;
    }
    return n;
}

TEST(CoachCalls, AnAggressivePlanCallsMoreAggressivePlaysThanADefensiveOne) {
    auto session = loaded();
    GamePlanRecord& plan = session->side(kVisitor).plan;
    for (std::uint64_t seed : {11u, 12u, 13u}) {
        setAllBreakout(plan, 7);
        CallCounts bold = breakoutCalls(*session, seed, Zone::DefenseZone);
        setAllBreakout(plan, 1);
        CallCounts careful = breakoutCalls(*session, seed, Zone::DefenseZone);
        EXPECT_GT(bold.aggressive, careful.aggressive * 5 / 4) << seed;
        EXPECT_LT(bold.safe, careful.safe) << seed;
    }
    // The neutral zone calls the same choices by their own names.
    setAllBreakout(plan, 4);
    Game game(*session, GameOptions{.seed = 3});
    game.InitGame();
    GameState& s = game.editState();
    s.PlayZone = Zone::NeutralZone;
    for (int i = 0; i < 300; ++i) {
        s.PlayRating = 1 + i % 10;
        Call c = game.ChooseOffensePlay(kVisitor, false);
        EXPECT_TRUE(c == Call::Balanced || c == Call::DumpChase || c == Call::SkatePass) << text(c);
    }
}

TEST(CoachCalls, TheScoreAndTheClockOverrideThePlan) {
    auto session = loaded();
    setAllBreakout(session->side(kVisitor).plan, 1);  // even a careful coach
    Game game(*session, GameOptions{.seed = 21});
    game.InitGame();
    GameState& s = game.editState();
    s.PlayZone = Zone::DefenseZone;
    s.PuckTeam = kVisitor;
    s.Period = 3;
    // Behind by one in the last 60 seconds: all in.
    s.Score = {1, 2};
    s.Clock = 55;
    for (int i = 0; i < 200; ++i) EXPECT_EQ(game.ChooseOffensePlay(kVisitor, false), Call::Aggressive);
    // The other net empty: always the aggressive call.
    s.Score = {3, 2};
    s.Clock = 40;
    s.GoaliePulled[kHome] = true;
    for (int i = 0; i < 100; ++i) EXPECT_EQ(game.ChooseOffensePlay(kVisitor, false), Call::Aggressive);
    s.GoaliePulled[kHome] = false;

    // Far ahead late: never aggressive.
    setAllBreakout(session->side(kVisitor).plan, 7);
    s.Score = {6, 1};
    s.Clock = 500;
    for (int i = 0; i < 300; ++i) EXPECT_NE(game.ChooseOffensePlay(kVisitor, false), Call::Aggressive);

    // Short-handed in the own end: safe or clear, about half each.
    s.Score = {1, 1};
    s.Period = 1;
    s.Clock = 900;
    s.Skaters = {4, 5};
    int clears = 0;
    for (int i = 0; i < 1000; ++i) {
        Call c = game.ChooseOffensePlay(kVisitor, false);
        ASSERT_TRUE(c == Call::Safe || c == Call::Clear) << text(c);
        clears += c == Call::Clear ? 1 : 0;
    }
    EXPECT_GT(clears, 400);
    EXPECT_LT(clears, 600);
}

TEST(CoachCalls, EveryZoneGetsACallItOffers) {
    auto session = loaded();
    Game game(*session, GameOptions{.seed = 8});
    game.InitGame();
    GameState& s = game.editState();
    s.PuckTeam = kVisitor;
    s.PlayRating = 6;
    s.PlayZone = Zone::OffenseShooter;
    for (int i = 0; i < 50; ++i) {
        Call c = game.ChooseCall(kVisitor);
        EXPECT_TRUE(c == Call::Shoot || c == Call::Penetrate) << text(c);
    }
    s.PlayZone = Zone::OffenseZone;
    int plays = 0;
    for (int i = 0; i < 200; ++i) {
        Call c = game.ChooseCall(kVisitor);
        EXPECT_TRUE(c == Call::Shoot || c == Call::PlayShoot || c == Call::PlayTo) << text(c);
        plays += c != Call::Shoot ? 1 : 0;
        int target = s.coach.target[kVisitor];
        ASSERT_GE(target, 0);
        EXPECT_NE(s.onIce[kVisitor].slot[std::size_t(target)], kNoSlot);
    }
    EXPECT_GT(plays, 0);
    s.PlayZone = Zone::Rush;
    EXPECT_EQ(game.ChooseCall(kVisitor), Call::Rush);
    s.PlayZone = Zone::FaceoffCenter1;
    for (int i = 0; i < 50; ++i) {
        Call c = game.ChooseCall(kVisitor);
        EXPECT_TRUE(c == Call::Balanced || c == Call::Safe || c == Call::Aggressive) << text(c);
    }
}

TEST(CoachCalls, TheTargetDrawSkipsScreenersAndFollowsTheWeights) {
    std::array<TargetRow, 6> rows{};
    rows[0] = {.spot = 2, .shotTendency = 3};                   // in the screen: never
    rows[1] = {.spot = 3, .shotTendency = 3, .carrier = true};  // the carrier in the slot
    rows[2] = {.spot = 4, .shotTendency = 2, .passTendency = 5, .shotsPer60 = 10};
    rows[3] = {.spot = 5, .shotTendency = 1};
    Random rng(4);
    auto w = offenseTargetWeights(rows, false, .1, rng);
    EXPECT_EQ(w[0], 0);
    EXPECT_EQ(w[1], 8000);
    EXPECT_DOUBLE_EQ(w[2], 50 * (2 * .2 + 1 + .3) + 10);
    EXPECT_DOUBLE_EQ(w[3], 5 * .3);
    EXPECT_EQ(w[4], 0);
    std::array<int, 6> picks{};
    for (int i = 0; i < 5000; ++i) ++picks[std::size_t(drawTarget(w, rng))];
    EXPECT_EQ(picks[0], 0);
    EXPECT_GT(picks[1], picks[2] * 50);
    EXPECT_GT(picks[2], 0);
    EXPECT_EQ(drawTarget({}, rng), kNoTarget);
}

// ---- The goalie pull -------------------------------------------------------------

struct PullCase {
    std::unique_ptr<GameSession> session = loaded();
    Silent screen;
    std::unique_ptr<Game> game;
    int goalie = kNoSlot;
    explicit PullCase(int byOne, int byTwo, bool wait, GameOptions options = computerVisitor()) {
        GamePlanRecord& plan = session->side(kVisitor).plan;
        plan.DontPullGoalie = 0;
        plan.PullTrailingByOne = static_cast<std::int16_t>(byOne);
        plan.PullTrailingByTwo = static_cast<std::int16_t>(byTwo);
        plan.WaitForPossessionTrailingByOne = wait ? 1 : 0;
        plan.WaitForPossessionTrailingByTwo = wait ? 1 : 0;
        game = std::make_unique<Game>(*session, options, &screen);
        game->InitGame();
        goalie = game->state().goalie[kVisitor];
    }
    // The driver with the home side to decide at `clock` of the third period.
    bool pulledAt(int clock, std::array<int, 2> score, int puck = kHome, Zone zone = Zone::NeutralZone) {
        GameState& s = game->editState();
        s.Period = 3;
        s.Clock = clock;
        s.Score = score;
        s.PlayZone = zone;
        s.PuckTeam = puck;
        game->SetPlayBox();
        return s.GoaliePulled[kVisitor];
    }
    // Whether the goalie went out at any moment of the rest of a game that
    // runs on by itself.
    bool pulledInTheRest(int clock, std::array<int, 2> score) {
        pulledAt(clock, score, kVisitor);
        return game->tally().goaliePulls > 0;
    }
};

// A long stint's swing in one draw comes as often as the three tests it
// stands for, taken in turn on their own draws; a swing the minutes settle
// takes no draw and is the one the tests would give.
TEST(FatigueCharge, TheStintSwingInOneDrawHasTheLawOfItsThreeTests) {
    for (double ratio : {0.9, 0.94, 0.955, 0.97, 0.985, 0.995, 1.03, 1.1}) {
        const std::array<double, 3> below = stintSwingBelow(ratio);
        Random tests(17), one(29);
        std::map<double, int> inTurn, inOne;
        constexpr int kTries = 100000;
        for (int i = 0; i < kTries; ++i) {
            double swing = 0;
            if (!tests.under(ratio, 1, .07))
                swing = 1;
            else if (!tests.over(ratio, .98, -.03))
                swing = -2;
            else if (!tests.over(ratio, 1, -.07))
                swing = -1;
            ++inTurn[swing];
            ++inOne[stintSwing(one.rnd(), below)];
        }
        for (double swing : {1.0, -2.0, -1.0, 0.0})
            EXPECT_NEAR(inOne[swing] / double(kTries), inTurn[swing] / double(kTries), 0.006)
                << "ratio " << ratio << " swing " << swing;
        // Settled just where the tests in turn take no draw.
        const bool settled = std::all_of(below.begin(), below.end(), [](double p) { return p == 0 || p == 1; });
        Random once(3), untouched(3);
        if (once.under(ratio, 1, .07) && once.over(ratio, .98, -.03)) once.over(ratio, 1, -.07);
        EXPECT_EQ(settled, once.rnd() == untouched.rnd()) << ratio;
        if (settled) {
            EXPECT_EQ(inTurn[stintSwing(0, below)], kTries) << ratio;
        }
    }
}

TEST(GoaliePull, ThePlansTimesAreHonoured) {
    PullCase c(95, 115, false);
    EXPECT_FALSE(c.pulledAt(100, {1, 2}));
    EXPECT_TRUE(c.pulledAt(94, {1, 2}));
    EXPECT_FALSE(c.pulledAt(94, {2, 2}));  // tied again: back in
    EXPECT_EQ(c.game->state().onIce[kVisitor][IcePos::GoalieOrExtra], c.goalie);
    EXPECT_FALSE(c.pulledAt(118, {1, 3}));
    EXPECT_TRUE(c.pulledAt(110, {1, 3}));
    EXPECT_FALSE(c.pulledAt(100, {1, 4}));  // three down: no use
    // Not with a draw in his own end.
    EXPECT_FALSE(c.pulledAt(60, {1, 2}, kHome, Zone::FaceoffDefense12));

    PullCase waiting(95, 115, true);
    EXPECT_FALSE(waiting.pulledAt(60, {1, 2}, kHome));  // the other side has the puck
}

// Notes whether the visitor's net was empty during the first play run.
struct FirstPlay final : NullPresenter {
    int plays = 0;
    bool emptyNet = false;
    void ShowClock(const Game& game) override {
        if (plays++ == 0) emptyNet = game.state().GoaliePulled[kVisitor];
    }
};

TEST(GoaliePull, AWaitingCoachPullsOnceHeHasThePuck) {
    auto session = loaded();
    GamePlanRecord& plan = session->side(kVisitor).plan;
    plan.DontPullGoalie = 0;
    plan.WaitForPossessionTrailingByOne = 1;
    FirstPlay screen;
    Game game(*session, computerVisitor(), &screen);
    game.InitGame();
    GameState& s = game.editState();
    s.Period = 3;
    s.Clock = 60;
    s.Score = {1, 2};
    s.PlayZone = Zone::NeutralZone;
    s.PuckTeam = kVisitor;
    game.SetPlayBox();
    EXPECT_GT(screen.plays, 0);
    EXPECT_TRUE(screen.emptyNet);
}

TEST(GoaliePull, ATrailingTeamPullsLateAndALeadingOneNever) {
    PullCase c(80, 100, false);
    EXPECT_TRUE(c.pulledAt(45, {0, 1}));
    PullCase lead(80, 100, false);
    EXPECT_FALSE(lead.pulledAt(45, {2, 1}));
    EXPECT_FALSE(lead.pulledAt(5, {2, 1}));
    // The plan's check holds the computer back only while it plays a
    // person's team for him; its own teams pull by the plan's times.
    PullCase own(80, 100, false);
    own.session->side(kVisitor).plan.DontPullGoalie = 1;
    EXPECT_TRUE(own.pulledAt(20, {0, 1}));
    GameOptions unwatched = computerVisitor();
    unwatched.coach = {CoachKind::Human, CoachKind::Human};
    unwatched.noDisplay = true;
    PullCase person(80, 100, false, unwatched);
    person.session->side(kVisitor).plan.DontPullGoalie = 1;
    EXPECT_FALSE(person.pulledInTheRest(20, {0, 1}));
    PullCase willing(80, 100, false, unwatched);
    EXPECT_TRUE(willing.pulledInTheRest(20, {0, 1}));
}

// ---- Line changes -------------------------------------------------------------------

class LineChanges : public ::testing::Test {
protected:
    std::unique_ptr<GameSession> session = loaded();
    Silent screen;
    Game game{*session, computerVisitor(), &screen};
    void SetUp() override {
        game.InitGame();
        GameState& s = game.editState();
        s.Period = 1;
        s.Clock = 900;
        s.PlayZone = Zone::NeutralZone;
        s.PuckTeam = kHome;
    }
    int slotAt(IcePos p) { return game.state().onIce[kVisitor][p]; }
};

TEST_F(LineChanges, AFreshLineStaysOn) {
    OnIce before = game.state().onIce[kVisitor];
    game.SetPlayBox();
    EXPECT_EQ(game.state().onIce[kVisitor].slot, before.slot);
    EXPECT_EQ(game.state().forwardUnit[kVisitor], 1);
}

TEST_F(LineChanges, AForwardPastHisShiftBringsOnTheNextLine) {
    GameState& s = game.editState();
    int center = slotAt(IcePos::Center);
    s.stint[kVisitor][std::size_t(center)] = 61;
    game.SetPlayBox();
    EXPECT_NE(s.forwardUnit[kVisitor], 1);
    EXPECT_FALSE(s.onIce[kVisitor].holds(center));
    EXPECT_TRUE(s.lineChangeMade[kVisitor]);
    // A defenseman's shift is longer.
    SetUp();
    int defense = slotAt(IcePos::LeftDefense);
    int pair = s.defensePair[kVisitor];
    s.stint[kVisitor][std::size_t(defense)] = 65;
    game.SetPlayBox();
    EXPECT_EQ(s.defensePair[kVisitor], pair);
    s.stint[kVisitor][std::size_t(defense)] = 71;
    game.SetPlayBox();
    EXPECT_NE(s.defensePair[kVisitor], pair);
}

TEST_F(LineChanges, ATiredManBringsAChangeButNotAfterAClearAgainstHim) {
    GameState& s = game.editState();
    int wing = slotAt(IcePos::LeftWing);
    s.Energy[kVisitor][std::size_t(wing)] = 75;
    s.LastPlayResult = Result::Clear;  // the visitor iced it: no change on the fly
    game.SetPlayBox();
    EXPECT_TRUE(s.onIce[kVisitor].holds(wing));
    s.LastPlayResult = Result::Save;
    game.SetPlayBox();
    EXPECT_FALSE(s.onIce[kVisitor].holds(wing));
}

TEST(LineChangesForAHuman, OnlyWithAutoLines) {
    auto session = loaded();
    for (bool autoLines : {false, true}) {
        Silent screen;
        GameOptions options = computerVisitor();
        options.coach = {CoachKind::Human, CoachKind::Human};
        options.autoLines[kVisitor] = autoLines;
        Game game(*session, options, &screen);
        game.InitGame();
        GameState& s = game.editState();
        s.PlayZone = Zone::NeutralZone;
        s.PuckTeam = kHome;
        int center = s.onIce[kVisitor][IcePos::Center];
        s.stint[kVisitor][std::size_t(center)] = 90;
        game.SetPlayBox();
        EXPECT_EQ(s.onIce[kVisitor].holds(center), !autoLines);
        EXPECT_EQ(screen.asked, 1);
    }
}

TEST_F(LineChanges, TheTopLineGoesOutLateInACloseGame) {
    GameState& s = game.editState();
    s.forwardUnit[kVisitor] = 3;
    s.Period = 3;
    s.Clock = 100;
    s.Score = {1, 2};
    game.SetPlayBox();
    EXPECT_EQ(s.forwardUnit[kVisitor], 1);
}

// ---- Timeouts ------------------------------------------------------------------------

TEST(Timeouts, AComputerCoachTakesOneLateInACloseLastPeriod) {
    auto session = loaded();
    GameOptions options = computerVisitor();
    Silent screen;
    Game game(*session, options, &screen);
    game.InitGame();
    GameState& s = game.editState();
    int center = s.onIce[kVisitor][IcePos::Center];
    auto stop = [&](int period, int clock, std::array<int, 2> score) {
        s.PlayZone = Zone::FaceoffNeutral11;
        s.Period = period;
        s.Clock = clock;
        s.Score = score;
        s.Energy[kVisitor][std::size_t(center)] = 85;
        s.ShiftSecs[kVisitor][std::size_t(center)] = 50;
        game.CoachTimeout();
        return s.Energy[kVisitor][std::size_t(center)] == 100;
    };
    EXPECT_FALSE(stop(2, 60, {1, 2}));   // not the last period
    EXPECT_FALSE(stop(3, 400, {1, 2}));  // too early
    EXPECT_FALSE(stop(3, 60, {1, 4}));   // not close
    EXPECT_TRUE(stop(3, 60, {1, 2}));
    EXPECT_EQ(s.ShiftSecs[kVisitor][std::size_t(center)], 0);
    EXPECT_FALSE(stop(3, 50, {1, 2}));  // one a game
    EXPECT_EQ(s.Energy[kHome][std::size_t(s.onIce[kHome][IcePos::Center])],
              session->side(kHome).MaxEnergy[std::size_t(s.onIce[kHome][IcePos::Center])]);

    // None where the rules allow none, nor for the human.
    RulesRecord none = regulationOnly();
    none.TimeoutsAllowedCheck = 0;
    auto other = loaded(1, none);
    Game noTimeouts(*other, options, &screen);
    noTimeouts.InitGame();
    GameState& t = noTimeouts.editState();
    t.PlayZone = Zone::FaceoffNeutral11;
    t.Period = 3;
    t.Clock = 60;
    t.Score = {2, 1};  // the human home side trails
    t.Energy[kHome][std::size_t(t.onIce[kHome][IcePos::Center])] = 85;
    noTimeouts.CoachTimeout();
    EXPECT_EQ(t.Energy[kHome][std::size_t(t.onIce[kHome][IcePos::Center])], 85);
}

// Broadcast breaks: two a period, at the first fit stop under 14 and under
// 6 minutes, and never right after a man is hurt.
TEST(Timeouts, TwoTvBreaksAPeriodAtFitStops) {
    RulesRecord rules = regulationOnly();
    rules.TVTimeoutsCheck = 1;
    auto session = loaded(1, rules);
    Silent screen;
    Game game(*session, computerVisitor(), &screen);
    game.InitGame();
    GameState& s = game.editState();
    int center = s.onIce[kVisitor][IcePos::Center];
    auto stop = [&](int clock, bool hurt = false, Result result = Result::Save) {
        s.PlayZone = Zone::FaceoffNeutral11;
        s.PlayResult = result;
        s.Period = 1;
        s.Clock = clock;
        s.pen.injuredThisPlay = hurt;
        s.Energy[kVisitor][std::size_t(center)] = 85;
        s.ShiftSecs[kVisitor][std::size_t(center)] = 50;
        game.tvTimeout(Result::None);
        return s.Energy[kVisitor][std::size_t(center)] != 85;
    };
    EXPECT_FALSE(stop(900));                       // too early
    EXPECT_FALSE(stop(800, false, Result::Goal));  // not after a goal
    EXPECT_FALSE(stop(800, true));                 // a man is down
    EXPECT_TRUE(stop(800));
    EXPECT_EQ(s.ShiftSecs[kVisitor][std::size_t(center)], 0);
    EXPECT_FALSE(stop(700));  // the first is taken
    EXPECT_TRUE(stop(350));
    EXPECT_FALSE(stop(300));
}

// ---- Ice time ---------------------------------------------------------------------------

TEST(IceTime, EveryDressedSkaterPlaysAndTheTimesAddUp) {
    for (std::uint64_t seed : {3u, 4u, 5u}) {
        auto session = loaded(seed);
        std::array<BySlot<int>, 2> shiftsBefore{};
        for (int side : {kVisitor, kHome})
            for (int slot = 0; slot < kRosterSlots; ++slot)
                shiftsBefore[std::size_t(side)][std::size_t(slot)] =
                    statLine(session->side(side).player(slot), StatLineIndex::Replay).Shifts;
        Game game(*session, GameOptions{.seed = seed});
        game.playToEnd();
        ASSERT_TRUE(game.state().GameEndedFlag);
        const int length = 3 * 1200;
        for (int side : {kVisitor, kHome}) {
            SCOPED_TRACE(::testing::Message() << "seed " << seed << " side " << side);
            const SideTables& t = session->side(side);
            BySlot<bool> fit = BuildFitList(t.GameRoster, t.TeamId, t.DressedToday);
            int skaterSeconds = 0, goalieSeconds = 0, pp = 0, sh = 0, skaters = 0;
            for (int slot = 0; slot < kRosterSlots; ++slot) {
                const PlayerRecord& p = t.player(slot);
                const StatLine& g = statLine(p, StatLineIndex::Game);
                int replayShifts = statLine(p, StatLineIndex::Replay).Shifts;
                EXPECT_EQ(replayShifts - shiftsBefore[std::size_t(side)][std::size_t(slot)], g.Shifts);
                if (!fit[std::size_t(slot)]) {
                    EXPECT_EQ(g.Toi, 0);
                    continue;
                }
                if (isGoalie(p)) {
                    goalieSeconds += g.Toi;
                    EXPECT_EQ(g.Shifts, 0);
                    continue;
                }
                skaterSeconds += g.Toi;
                pp += g.ToiPP;
                sh += g.ToiSH;
                // The men of the even lines all play; a spare skater who is
                // on none of them may sit.
                bool lined = false;
                for (int line = 1; line <= 4; ++line)
                    lined = lined || t.lines.lineRole(line, slot) != ForwardRole::None ||
                            (line <= 3 && t.lines.pairRole(line, slot) != PairRole::None);
                if (!lined) continue;
                ++skaters;
                // A man hurt or thrown out before his first shift can't play.
                if (g.Toi == 0 && game.state().find.PlayerOut[std::size_t(side)][std::size_t(slot)]) continue;
                EXPECT_GT(g.Toi, 0) << p.LastName.str();
                EXPECT_GT(g.Shifts, 0) << p.LastName.str();
                EXPECT_EQ(g.GP, 1);
                EXPECT_LE(g.ToiPP + g.ToiSH, g.Toi);
            }
            EXPECT_GE(skaters, 18);
            // The goalie is in net all game but for an empty net at the end.
            EXPECT_LE(goalieSeconds, length);
            EXPECT_GE(goalieSeconds, length - 240);
            // Five skaters on the ice all game, one less for each second of
            // a man short, one more with the goalie out.
            int emptyNet = length - goalieSeconds;
            EXPECT_GE(skaterSeconds, 5 * length - sh);
            EXPECT_LE(skaterSeconds, 5 * length + emptyNet);
            EXPECT_GE(skaterSeconds, 4 * length);
        }
    }
}

// A step's time is power-play or short-handed time by the manpower the step
// began with: the play that draws a penalty was played at even strength, and
// the one in which a penalty runs out was still played a man up.
TEST(IceTime, AStepCountsByTheManpowerItBeganWith) {
    int manpowerChanges = 0;
    for (std::uint64_t seed : {7u, 8u, 9u}) {
        auto session = loaded(seed);
        Game game(*session, GameOptions{.seed = seed});
        game.InitGame();
        while (!game.state().GameOverFlag) {
            const std::array<int, 2> before = game.state().Skaters;
            std::array<BySlot<std::pair<int, int>>, 2> times{};
            for (int side : {kVisitor, kHome})
                for (int slot = 0; slot < kRosterSlots; ++slot) {
                    const StatLine& g = statLine(session->side(side).player(slot), StatLineIndex::Game);
                    times[std::size_t(side)][std::size_t(slot)] = {g.ToiPP, g.ToiSH};
                }
            game.PlayStep();
            if (game.state().Skaters != before) ++manpowerChanges;
            for (int side : {kVisitor, kHome}) {
                const int own = before[std::size_t(side)], opp = before[std::size_t(1 - side)];
                for (int slot = 0; slot < kRosterSlots; ++slot) {
                    const StatLine& g = statLine(session->side(side).player(slot), StatLineIndex::Game);
                    const auto [pp, sh] = times[std::size_t(side)][std::size_t(slot)];
                    if (own <= opp) {
                        EXPECT_EQ(g.ToiPP, pp) << "seed " << seed << " side " << side;
                    }
                    if (own >= opp) {
                        EXPECT_EQ(g.ToiSH, sh) << "seed " << seed << " side " << side;
                    }
                }
            }
        }
    }
    EXPECT_GT(manpowerChanges, 10);  // the games had penalties called and served
}

// The bench: a man who hasn't played is at his full energy whatever was set
// before the step, and a man of little stamina loses ground even sitting.
TEST(IceTime, TheBenchRestsMenAsTheirStaminaAllows) {
    auto session = loaded(6);
    constexpr int kWeak = kRosterSlots - 1;  // never on the ice
    session->side(kVisitor).MaxEnergy[kWeak] = 30;
    Game game(*session, GameOptions{.seed = 6});
    game.InitGame();
    int n = 0;
    double weakMost = 0;  // his most fatigue seconds: faceoffs take some back
    while (!game.state().GameOverFlag && game.state().Period < 2) {
        const GameState& s = game.state();
        int fresh = kNoSlot;
        for (int slot = 0; slot < kRosterSlots - 1 && fresh == kNoSlot; ++slot)
            if (!s.onIce[kHome].holds(slot) && s.ShiftSecs[kHome][std::size_t(slot)] == 0 &&
                s.stint[kHome][std::size_t(slot)] == 0)
                fresh = slot;
        if (fresh != kNoSlot) game.editState().Energy[kHome][std::size_t(fresh)] = 40;
        game.editState().PlayCall = ++n % 3 == 0 ? Call::Shoot : Call::Balanced;
        game.PlayStep();
        weakMost = std::max(weakMost, game.state().ShiftSecs[kVisitor][kWeak]);
        if (fresh != kNoSlot && game.state().ShiftSecs[kHome][std::size_t(fresh)] == 0) {
            EXPECT_EQ(game.state().Energy[kHome][std::size_t(fresh)],
                      session->side(kHome).MaxEnergy[std::size_t(fresh)]);
        }
        for (int side : {kVisitor, kHome})
            for (int slot = 0; slot < kRosterSlots; ++slot) {
                auto i = std::size_t(slot);
                if (slot == kWeak || game.state().ShiftSecs[std::size_t(side)][i] > 0) continue;
                EXPECT_EQ(game.state().Energy[std::size_t(side)][i],
                          std::min(100, int(session->side(side).MaxEnergy[i])));
            }
    }
    EXPECT_GT(n, 20);
    EXPECT_GT(weakMost, 0);
}

// After every step each man's energy is what his fatigue seconds come to:
// at most his full energy, at least 80 while within his shift limit, and
// under 80 past it, except that a fresh man who goes far past his limit at
// once loses only a few points, drawn.
TEST(IceTime, EnergyFollowsTheFatigueSecondsOfEveryMan) {
    int drawnFalls = 0, pastLimit = 0;
    for (std::uint64_t seed : {3u, 12u}) {
        auto session = loaded(seed);
        Game game(*session, GameOptions{.seed = seed});
        game.InitGame();
        for (int n = 0; n < 200 && !game.state().GameOverFlag; ++n) {
            const int period = game.state().Period;
            // Now and then a rested skater on the ice is pushed far past
            // his limit, so the drawn fall comes up.
            int pushed = kNoSlot;
            if (n % 7 == 3) {
                GameState& s = game.editState();
                pushed = s.onIce[kVisitor][IcePos::Center];
                const int limit = pushed == kNoSlot ? 0 : session->side(kVisitor).ShiftLimit[std::size_t(pushed)];
                if (limit <= 0) {
                    pushed = kNoSlot;
                } else {
                    s.Energy[kVisitor][std::size_t(pushed)] = 100;
                    s.ShiftSecs[kVisitor][std::size_t(pushed)] = limit + 200;
                }
            }
            const auto before = game.state().Energy;
            game.editState().PlayCall = n % 3 == 0 ? Call::Shoot : Call::Balanced;
            game.PlayStep();
            const GameState& s = game.state();
            if (s.Period != period || s.GameOverFlag) continue;  // the break rests everyone
            for (int side : {kVisitor, kHome})
                for (int slot = 0; slot < kRosterSlots; ++slot) {
                    const auto i = std::size_t(slot);
                    const SideTables& t = session->side(side);
                    const int limit = t.ShiftLimit[i];
                    if (limit <= 0) continue;
                    const double secs = s.ShiftSecs[std::size_t(side)][i];
                    const int energy = s.Energy[std::size_t(side)][i];
                    const int was = before[std::size_t(side)][i];
                    int expected = t.MaxEnergy[i];
                    if (secs > limit) {
                        ++pastLimit;
                        expected = std::clamp(int(std::nearbyint(80 - (secs - limit) * .3)), 0, 79);
                        if (was >= 80 && was - expected > 10) {
                            ++drawnFalls;
                            EXPECT_GE(energy, std::clamp(was - 6, 0, 100)) << "seed " << seed << " slot " << slot;
                            EXPECT_LE(energy, std::clamp(was + 2, 0, 100)) << "seed " << seed << " slot " << slot;
                            continue;
                        }
                    } else if (secs > 0) {
                        expected = std::max(int(std::nearbyint(t.MaxEnergy[i] - secs / limit * 20)), 80);
                    }
                    EXPECT_EQ(energy, std::clamp(expected, 0, 100))
                        << "seed " << seed << " side " << side << " slot " << slot << " secs " << secs;
                }
            if (pushed != kNoSlot) {
                EXPECT_GE(s.Energy[kVisitor][std::size_t(pushed)], 94);
            }
        }
    }
    EXPECT_GT(drawnFalls, 5);
    EXPECT_GT(pastLimit, drawnFalls);
}

TEST(IceTime, TheFirstLinePlaysMoreThanTheFourth) {
    double first = 0, fourth = 0, firstPair = 0, thirdPair = 0;
    for (std::uint64_t seed = 30; seed < 36; ++seed) {
        auto session = loaded(seed);
        Game game(*session, GameOptions{.seed = seed});
        game.playToEnd();
        first += game.unitSeconds(kVisitor, UnitKind::Forwards, 1) + game.unitSeconds(kHome, UnitKind::Forwards, 1);
        fourth += game.unitSeconds(kVisitor, UnitKind::Forwards, 4) + game.unitSeconds(kHome, UnitKind::Forwards, 4);
        // One game can tilt with its penalties and its last minutes; the
        // pairs' shares show over a few.
        firstPair += game.unitSeconds(kVisitor, UnitKind::Pairs, 1);
        thirdPair += game.unitSeconds(kVisitor, UnitKind::Pairs, 3);
    }
    EXPECT_GT(firstPair, thirdPair * 1.1);
    EXPECT_GT(first, fourth * 1.3);
    EXPECT_LT(first, fourth * 3);
}

}  // namespace
}  // namespace tallyrink

namespace tallyrink {
namespace {

// ---- Strategy in play and calls made for a human ----------------------------------------

TEST(CoachInPlay, TheLineOnTheIceBringsItsOwnSettings) {
    auto session = loaded();
    GamePlanRecord& plan = session->side(kVisitor).plan;
    plan.LineOption[1] = 3;  // line 2: cycle low, two forecheckers more than the plan
    plan.LineStrategy[1] = 6;
    Game game(*session, GameOptions{.seed = 2});
    game.InitGame();
    game.CoachInPlay();
    const GameState& s = game.state();
    EXPECT_EQ(s.coach.live[kVisitor], planStrategy(plan));

    // The second line comes on.
    const LineTables& lines = session->side(kVisitor).lines;
    OnIce& ice = game.editState().onIce[kVisitor];
    ice[IcePos::LeftWing] = lines.holderOf(2, ForwardRole::LeftWing);
    ice[IcePos::Center] = lines.holderOf(2, ForwardRole::Center);
    ice[IcePos::RightWing] = lines.holderOf(2, ForwardRole::RightWing);
    game.CoachInPlay();
    EXPECT_EQ(s.coach.live[kVisitor].offenseSystem, 2);
    EXPECT_EQ(s.coach.live[kVisitor].forecheck, planStrategy(plan).forecheck + 2);
    EXPECT_EQ(s.coach.live[kHome], planStrategy(session->side(kHome).plan));

    plan.DontUseLineSpecificSettings = 1;
    game.CoachInPlay();
    EXPECT_EQ(s.coach.live[kVisitor], planStrategy(plan));
}

// Answers every question of the screen with a plain call, and counts them.
struct Answering final : NullPresenter {
    Game* game = nullptr;
    int asked = 0;
    void AskPlayCall(const Game&, int) override { ++asked; }
    void AskLineChange(const Game&, int) override { ++asked; }
    void answer() {
        // Fresh legs, as a coach who changes his lines keeps them.
        GameState& s = game->editState();
        for (auto& side : s.Energy) side.fill(100);
        for (auto& side : s.ShiftSecs) side.fill(0);
        Zone z = s.PlayZone;
        if (z == Zone::ContinueBox)
            game->ContinueCommand();
        else
            game->OffenseCommand(z == Zone::OffenseZone || z == Zone::OffenseShooter ? Call::Shoot : Call::Balanced);
    }
};

int stepsPerQuestion(bool noComputerCalls) {
    RulesRecord rules = regulationOnly();
    rules.NoComputerPlayCallsCheck = noComputerCalls ? 1 : 0;
    auto session = loaded(4, rules);
    Answering screen;
    GameOptions options;
    options.seed = 9;
    options.coach = {CoachKind::Human, CoachKind::Human};
    options.noDisplay = false;
    Game game(*session, options, &screen);
    screen.game = &game;
    game.InitGame();
    game.SetPlayBox();
    while (screen.asked < 400 && !game.state().GameEndedFlag) screen.answer();
    return game.state().steps * 100 / std::max(screen.asked, 1);
}

// Moves the clock of a running game between steps and notes the home
// side's forecheck the step after each move was played under.
struct ClockMover final : NullPresenter {
    Game* game = nullptr;
    std::vector<int> clocks;
    std::vector<int> forechecks;
    std::size_t next = 0;
    void ShowClock(const Game&) override {
        GameState& s = game->editState();
        if (next > 0 && forechecks.size() < next) forechecks.push_back(s.coach.live[kHome].forecheck);
        s.Score = {1, 0};
        // Fresh legs: the same men stay on, so only the clock moves.
        for (auto& side : s.Energy) side.fill(100);
        for (auto& side : s.ShiftSecs) side.fill(0);
        if (next < clocks.size()) s.Clock = clocks[next++];
    }
};

// Within one run of the driver, the computer's late-game strategy follows
// the clock from one column of its plan to the next, nothing else changing.
TEST(CoachInPlay, TheDriverFollowsTheClockIntoTheLateGameColumns) {
    auto session = loaded(4);
    GamePlanRecord& plan = session->side(kHome).plan;
    plan.DontUseLineSpecificSettings = 1;
    plan.IncreaseForecheckTrailingOne = {0, 0, 1};  // the last five minutes only
    ClockMover screen;
    screen.clocks = {600, 590, 250, 240, 700, 690};
    GameOptions options;
    options.seed = 3;
    options.noDisplay = false;
    Game game(*session, options, &screen);
    screen.game = &game;
    game.InitGame();
    GameState& s = game.editState();
    s.Period = 3;
    s.Score = {1, 0};
    game.SetPlayBox();
    const int planned = planStrategy(plan).forecheck;
    EXPECT_EQ(screen.forechecks, (std::vector<int>{planned, planned, planned + 2, planned + 2, planned, planned}));
}

TEST(CoachCalls, TheComputerCallsSomePlaysForAHumanUnlessTheRulesForbidIt) {
    // A step needs one answer, or two at a faceoff (both coaches confirm).
    int asked = stepsPerQuestion(true);
    EXPECT_LE(asked, 100);
    // Most of the own-end and neutral-zone plays of a quiet game the
    // computer calls by itself.
    EXPECT_GT(stepsPerQuestion(false), asked + 8);
}

}  // namespace
}  // namespace tallyrink
