// The play loop: the zone states and their literals, the transitions of a
// step, the faceoff and line-change handshakes, the end of periods, overtime
// and the shootout, replay by seed, and whole schedules of a made-up league
// played to a legal end.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <set>

#include "engine/game.h"
#include "operations/blank_league.h"
#include "operations/era_figures.h"
#include "operations/new_league.h"
#include "operations/schedule_generator.h"
#include "postgame/game_summary.h"
#include "support/made_up_game.h"
#include "support/source_tree.h"
#include "support/temp_dir.h"

namespace tallyrink {
namespace {

using test::shippedEra;

using testing::TempDir;

// Six made-up teams, written once for all tests of this file.
const test::MadeUpLeague& madeUp() { return test::madeUpLeague(6, 31); }

// Regulation of three 20-minute periods; overtime and shootout as given.
RulesRecord rulesWith(int overtimeFives, int overtimeKind, int shootoutValue) {
    RulesRecord r = defaultRules(2017);
    r.Periodslist = 2;
    r.Minuteslist = 19;
    r.OTLengthlist = static_cast<std::uint8_t>(overtimeFives);
    r.OTTypelist = static_cast<std::uint8_t>(overtimeKind);
    r.ShootOutList = static_cast<std::uint8_t>(shootoutValue);
    r.AllowOffensiveZonePlayCallsCheck = 1;
    return r;
}

std::unique_ptr<GameSession> loaded(const RulesRecord& rules, std::uint64_t seed = 1, int visitor = 0, int home = 1) {
    return test::loadedGame(madeUp(), rules, seed, visitor, home);
}

// Remembers who was asked for what.
struct Recorder final : NullPresenter {
    std::vector<std::pair<char, int>> asked;  // 'P' play call, 'L' line change; side
    int gameOver = 0;
    int pauses = 0;
    int linesShown = 0;
    void ShowPlayLines(const Game&, const std::vector<std::string>&) override { ++linesShown; }
    void AskPlayCall(const Game&, int side) override { asked.emplace_back('P', side); }
    void AskLineChange(const Game&, int side) override { asked.emplace_back('L', side); }
    void ShowPause(const Game&) override { ++pauses; }
    void GameOver(const Game&) override { ++gameOver; }
};

GameOptions humans(std::uint64_t seed = 3) {
    GameOptions o;
    o.seed = seed;
    o.coach = {CoachKind::Human, CoachKind::Human};
    o.noDisplay = false;
    return o;
}

// ---- Literals ------------------------------------------------------------------

TEST(PlayState, LiteralsRoundTripAndFaceoffStatesDecode) {
    for (std::size_t i = 0; i < kZoneCount; ++i) {
        auto z = static_cast<Zone>(i);
        EXPECT_EQ(zoneFromText(text(z)), z) << text(z);
    }
    for (std::size_t i = 1; i < kCallCount; ++i)
        EXPECT_EQ(callFromText(text(static_cast<Call>(i))), static_cast<Call>(i));
    for (std::size_t i = 1; i < kResultCount; ++i)
        EXPECT_EQ(resultFromText(text(static_cast<Result>(i))), static_cast<Result>(i));
    for (std::size_t i = 0; i < kAutoStopCount; ++i)
        EXPECT_EQ(autoStopFromText(text(static_cast<AutoStop>(i))), static_cast<AutoStop>(i));
    EXPECT_EQ(pointOf(*autoStopFromText("3rd Period - 1 Minute")).minutes, 1);
    EXPECT_EQ(pointOf(*autoStopFromText("End 2nd Period")).period, 2);
    EXPECT_FALSE(zoneFromText("FACEOFF-CENTER-3"));
    EXPECT_FALSE(callFromText(""));
    EXPECT_FALSE(resultFromText("goal"));
    EXPECT_EQ(text(Call::DumpChase), "DUMP/CHASE");
    EXPECT_EQ(text(Call::DrawForward), "DRAW FORWARD");

    EXPECT_EQ(text(faceoffZone(FaceoffSpot::Defense, kHome, 2)), "FACEOFF-DEFENSE-2-2");
    EXPECT_EQ(text(faceoffZone(FaceoffSpot::Neutral, kVisitor, 1)), "FACEOFF-NEUTRAL-1-1");
    EXPECT_EQ(text(faceoffZone(FaceoffSpot::Center, kHome, 2)), "FACEOFF-CENTER-2");
    for (std::size_t i = 0; i < kZoneCount; ++i) {
        auto z = static_cast<Zone>(i);
        std::string_view t = text(z);
        EXPECT_EQ(isFaceoff(z), t.starts_with("FACEOFF")) << t;
        if (!isFaceoff(z)) {
            EXPECT_EQ(faceoffStage(z), 0);
            continue;
        }
        EXPECT_EQ(faceoffStage(z), t.back() - '0') << t;
        if (faceoffSpot(z) != FaceoffSpot::Center) {
            EXPECT_EQ(faceoffEndSide(z) + 1, t[t.size() - 3] - '0') << t;
        }
        EXPECT_EQ(faceoffZone(faceoffSpot(z), faceoffEndSide(z), faceoffStage(z)), z) << t;
    }
}

// ---- Transitions -----------------------------------------------------------------

class Transitions : public ::testing::Test {
protected:
    std::unique_ptr<GameSession> session = loaded(rulesWith(1, 0, 1));
    Game game{*session, GameOptions{}};
    void SetUp() override { game.InitGame(); }
    // A hand-set state in mid-period and the result to apply.
    const GameState& apply(Zone zone, int puck, Result result) {
        GameState& s = game.editState();
        s.PlayZone = zone;
        s.PuckTeam = puck;
        s.PlayResult = result;
        s.Clock = 600;
        game.ApplyPlay();
        return game.state();
    }
};

TEST_F(Transitions, PossessionAndZoneFollowTheResult) {
    EXPECT_EQ(apply(Zone::NeutralZone, kVisitor, Result::ToDefense).PlayZone, Zone::OffenseZone);
    EXPECT_EQ(game.state().PuckTeam, kHome);
    EXPECT_EQ(apply(Zone::OffenseZone, kVisitor, Result::To).PlayZone, Zone::DefenseZone);
    EXPECT_EQ(game.state().PuckTeam, kHome);
    EXPECT_EQ(apply(Zone::DefenseZone, kHome, Result::ToNeutral).PlayZone, Zone::NeutralZone);
    EXPECT_EQ(game.state().PuckTeam, kVisitor);
    EXPECT_EQ(apply(Zone::DefenseZone, kHome, Result::MoveUp).PlayZone, Zone::NeutralZone);
    EXPECT_EQ(game.state().PuckTeam, kHome);
    EXPECT_EQ(apply(Zone::NeutralZone, kVisitor, Result::OffenseZone).PlayZone, Zone::OffenseZone);
    // Offside: the draw is outside the blue line of the other team.
    EXPECT_EQ(text(apply(Zone::NeutralZone, kVisitor, Result::Offsides).PlayZone), "FACEOFF-NEUTRAL-2-1");
    EXPECT_EQ(text(apply(Zone::DefenseZone, kHome, Result::Offsides).PlayZone), "FACEOFF-NEUTRAL-1-1");
    for (int i = 0; i < 30; ++i) {
        Zone z = apply(Zone::OffenseZone, kVisitor, Result::Retreat).PlayZone;
        EXPECT_TRUE(z == Zone::DefenseZone || z == Zone::NeutralZone) << text(z);
        Zone p = apply(Zone::NeutralZone, kVisitor, Result::Pass).PlayZone;
        EXPECT_TRUE(p == Zone::OffenseZone || p == Zone::OffenseShooter) << text(p);
    }
}

TEST_F(Transitions, GoalsShotsAndPenaltiesChangeTheScoreAndManpower) {
    const GameState& s = apply(Zone::OffenseShooter, kHome, Result::Goal);
    EXPECT_EQ(s.Score[kHome], 1);
    EXPECT_EQ(s.Shots[kHome], 1);
    EXPECT_EQ(s.PlayZone, Zone::FaceoffCenter1);
    EXPECT_EQ(s.PuckTeam, kVisitor);
    apply(Zone::OffenseZone, kVisitor, Result::Block);
    apply(Zone::OffenseZone, kVisitor, Result::Miss);
    EXPECT_EQ(s.Shots[kVisitor], 0);  // blocked and missed shots aren't on goal
    apply(Zone::OffenseZone, kVisitor, Result::Save);
    EXPECT_EQ(s.Shots[kVisitor], 1);
    EXPECT_EQ(s.shotsByPeriod.back()[kVisitor], 1);

    GameState& e = game.editState();
    e.penaltyOn = kHome;  // on the puck team: called at once
    apply(Zone::NeutralZone, kHome, Result::Penalty);
    EXPECT_EQ(s.Skaters[kHome], 4);
    EXPECT_EQ(s.Skaters[kVisitor], 5);
    EXPECT_EQ(text(s.PlayZone), "FACEOFF-DEFENSE-2-1");  // in the end of the side that took it
    EXPECT_EQ(game.strengthEdge(), s.PuckTeam == kVisitor ? 1 : -1);
    // A power-play goal frees the short-handed side from a minor (the draw
    // may have called something longer: the test wants the minor).
    ASSERT_EQ(s.pen.box[kHome].size(), 1u);
    BoxPenalty& minor = e.pen.box[kHome].front();
    minor.type = PenaltyType::Minor;
    minor.ReleaseOnGoal = 1;
    minor.DoubleMinorFlag = false;
    minor.NextPenaltySeconds = 0;
    minor.PenaltySeconds = std::min(minor.PenaltySeconds, 120);
    apply(Zone::OffenseZone, kVisitor, Result::Goal);
    EXPECT_EQ(s.Skaters[kHome], 5);
    ASSERT_EQ(s.goals.size(), 2u);
    EXPECT_EQ(s.goals.back().strengthEdge, 1);

    e.penaltyOn = kBothSides;
    apply(Zone::NeutralZone, kVisitor, Result::Penalty);
    EXPECT_EQ(s.Skaters, (std::array<int, 2>{5, 5}));
}

TEST_F(Transitions, ReboundsEndInTheirStatesOnly) {
    std::set<Zone> afterSave;
    for (int i = 0; i < 200; ++i) {
        const GameState& s = apply(Zone::OffenseZone, kVisitor, Result::Save);
        afterSave.insert(s.PlayZone);
        if (s.PlayZone == Zone::OffenseZone) {
            EXPECT_EQ(s.PuckTeam, kVisitor);
        }
        if (s.PlayZone == Zone::DefenseZone) {
            EXPECT_EQ(s.PuckTeam, kHome);
        }
    }
    // Frozen in the home end, taken or moved out by the home side, or the
    // rebound kept (rarely outside the line); a rebound shot may score.
    std::set<Zone> legal{Zone::FaceoffDefense21, Zone::DefenseZone, Zone::NeutralZone, Zone::OffenseZone,
                         Zone::FaceoffCenter1};
    for (Zone z : afterSave) EXPECT_TRUE(legal.count(z)) << text(z);
    for (Zone z : {Zone::FaceoffDefense21, Zone::DefenseZone}) EXPECT_TRUE(afterSave.count(z));
}

TEST_F(Transitions, TheHornInsideAPlayEndsThePeriod) {
    GameState& s = game.editState();
    s.PlayZone = Zone::NeutralZone;
    s.PlayResult = Result::Pass;
    s.Clock = 3;
    game.ApplyPlay();
    EXPECT_TRUE(s.periodEnds);
    EXPECT_EQ(s.PlayZone, Zone::FaceoffCenter1);
    EXPECT_EQ(s.PlayTime, 3);
    // Mid-period a play leaves time for the next one.
    for (int i = 0; i < 100; ++i) {
        s.periodEnds = false;
        s.PlayZone = Zone::OffenseShooter;
        s.PlayResult = Result::Pass;
        s.Clock = 40;
        game.ApplyPlay();
        EXPECT_GE(s.PlayTime, 1);
        EXPECT_LT(s.PlayTime, 40);
    }
}

TEST_F(Transitions, StepsDrawOnlyWhatTheZoneAllows) {
    GameState& s = game.editState();
    for (int i = 0; i < 400; ++i) {
        s.PlayZone = Zone::OffenseZone;
        s.PlayCall = Call::Pass;
        s.PuckTeam = kVisitor;
        s.Clock = 900;
        s.Period = 1;
        s.GameOverFlag = false;
        game.PlayStep();
        Result r = s.PlayResult;
        // A turnover in the far end gives the puck back in the taker's own end.
        EXPECT_NE(r, Result::ToDefense);
        EXPECT_NE(r, Result::ToNeutral);
        EXPECT_NE(r, Result::Offsides);
        EXPECT_EQ(s.LastPlayResult, r);
        EXPECT_EQ(s.LastPlayCall, Call::Pass);
        EXPECT_EQ(s.LastZone, Zone::OffenseZone);
    }
    // The call "CLEAR" in the far end is a clear, whatever was drawn.
    for (int i = 0; i < 50; ++i) {
        s.PlayZone = Zone::OffenseShooter;
        s.PlayCall = Call::Clear;
        s.Clock = 900;
        game.PlayStep();
        EXPECT_TRUE(s.LastPlayResult == Result::Clear || s.LastPlayResult == Result::Penalty) << text(s.LastPlayResult);
    }
}

TEST_F(Transitions, AProbeChangesNothingAndDrawsNothing) {
    auto other = loaded(rulesWith(1, 0, 1));
    Game twin(*other, GameOptions{});
    twin.InitGame();
    for (Game* g : {&game, &twin}) {
        GameState& s = g->editState();
        s.PlayZone = Zone::OffenseZone;
        s.PlayCall = Call::Shoot;
        s.Clock = 700;
    }
    GameState before = game.state();
    PlayChances c = game.ProbeOnly();
    EXPECT_GT(c.ShootChance(), 0);
    EXPECT_EQ(c.EntryChance, 0);
    const GameState& s = game.state();
    EXPECT_EQ(s.Clock, before.Clock);
    EXPECT_EQ(s.PlayResult, before.PlayResult);
    EXPECT_EQ(s.PlayZone, before.PlayZone);
    EXPECT_EQ(s.steps, before.steps);
    EXPECT_FALSE(s.ProbeOnly);
    // The probed game goes on exactly as the one never probed.
    for (int i = 0; i < 20; ++i) {
        game.PlayStep();
        twin.PlayStep();
    }
    EXPECT_EQ(game.state().Clock, twin.state().Clock);
    EXPECT_EQ(game.state().PlayResult, twin.state().PlayResult);
    EXPECT_EQ(game.state().Shots, twin.state().Shots);
}

// ---- Handshakes --------------------------------------------------------------------

// The computer calls some routine plays for a human coach; these tests of
// the handshake turn that off, so that every decision is the human's.
RulesRecord everyCallAsked() {
    RulesRecord r = rulesWith(1, 0, 1);
    r.NoComputerPlayCallsCheck = 1;
    return r;
}

TEST(Handshake, AFaceoffAsksVisitorThenHomeThenPlaysTheWinnersCall) {
    auto session = loaded(everyCallAsked());
    Recorder screen;
    Game game(*session, humans(), &screen);
    game.InitGame();
    game.SetPlayBox();
    ASSERT_EQ(screen.asked, (std::vector<std::pair<char, int>>{{'L', kVisitor}}));
    EXPECT_EQ(game.state().PlayZone, Zone::FaceoffCenter1);

    game.OffenseCommand(Call::Aggressive);
    EXPECT_EQ(game.state().PlayZone, Zone::FaceoffCenter2);
    EXPECT_EQ(game.state().FaceoffCall[kVisitor], Call::Aggressive);
    EXPECT_EQ(game.state().steps, 0);
    ASSERT_EQ(screen.asked.size(), 2u);
    EXPECT_EQ(screen.asked[1], std::make_pair('L', kHome));

    game.OffenseCommand(Call::Safe);
    const GameState& s = game.state();
    EXPECT_EQ(s.steps, 1);
    EXPECT_EQ(s.FaceoffCall[kHome], Call::Safe);
    EXPECT_EQ(s.LastPlayCall, s.FaceoffCall[std::size_t(s.StepPuckTeam)]);
    EXPECT_EQ(s.LastZone, Zone::DefenseZone);  // the winner starts from his own end
    // The driver came back for the next decision.
    EXPECT_EQ(screen.asked.size(), 3u);
    EXPECT_EQ(screen.asked.back().second, game.decidingSide());

    // Confirming lines alone moves a draw on from the first stage only.
    game.editState().PlayZone = Zone::FaceoffDefense11;
    game.ContinueCommand();
    EXPECT_EQ(game.state().PlayZone, Zone::FaceoffDefense12);
    EXPECT_EQ(game.state().steps, 1);
}

TEST(Handshake, ALineChangeGivesTheOtherCoachATurnAndThenRunsTheSavedCall) {
    auto session = loaded(everyCallAsked());
    Recorder screen;
    Game game(*session, humans(), &screen);
    game.InitGame();
    GameState& s = game.editState();
    s.PlayZone = Zone::NeutralZone;
    s.PuckTeam = kHome;
    s.lineChangeMade[kHome] = true;
    game.OffenseCommand(Call::DumpChase);
    EXPECT_EQ(s.PlayZone, Zone::ContinueBox);
    EXPECT_EQ(s.ContinueZone, Zone::NeutralZone);
    EXPECT_EQ(s.ContinueCall, Call::DumpChase);
    EXPECT_EQ(s.ContinueTeam, kHome);
    EXPECT_EQ(s.steps, 0);
    ASSERT_FALSE(screen.asked.empty());
    EXPECT_EQ(screen.asked.back(), std::make_pair('L', kVisitor));

    game.ContinueCommand();
    EXPECT_EQ(s.steps, 1);
    EXPECT_EQ(s.StepPuckTeam, kHome);
    EXPECT_EQ(s.LastPlayCall, Call::DumpChase);
    EXPECT_EQ(s.LastZone, Zone::NeutralZone);

    // With no change made the call runs at once.
    s.PlayZone = Zone::NeutralZone;
    s.PuckTeam = kVisitor;
    s.Skaters = {5, 5};
    s.pen = PenaltyState{};
    game.OffenseCommand(Call::Balanced);
    EXPECT_EQ(s.steps, 2);

    // A call sent from the box by the other coach doesn't replace the one
    // that was waiting.
    s.PlayZone = Zone::NeutralZone;
    s.PuckTeam = kHome;
    s.Skaters = {5, 5};
    s.pen = PenaltyState{};
    s.lineChangeMade[kHome] = true;
    game.OffenseCommand(Call::DumpChase);
    ASSERT_EQ(s.PlayZone, Zone::ContinueBox);
    game.OffenseCommand(Call::Aggressive);
    EXPECT_EQ(s.steps, 3);
    EXPECT_EQ(s.StepPuckTeam, kHome);
    EXPECT_EQ(s.LastPlayCall, Call::DumpChase);
}

TEST(Handshake, AComputerCoachTrailingLatePullsHisGoalieAndPutsHimBack) {
    auto session = loaded(rulesWith(1, 0, 1));
    session->side(kVisitor).plan.WaitForPossessionTrailingByOne = 0;
    session->side(kVisitor).plan.DontPullGoalie = 0;
    Recorder screen;
    GameOptions options = humans();
    options.coach[kVisitor] = CoachKind::Computer;
    Game game(*session, options, &screen);
    game.InitGame();
    int goalie = game.state().goalie[kVisitor];
    GameState& s = game.editState();
    s.Period = 3;
    s.Clock = 150;
    s.Score = {1, 2};
    s.PlayZone = Zone::NeutralZone;
    s.PuckTeam = kHome;  // the human decides, so the driver stops at once
    game.SetPlayBox();
    EXPECT_FALSE(s.GoaliePulled[kVisitor]);  // too early

    s.Clock = 70;
    game.SetPlayBox();
    ASSERT_TRUE(s.GoaliePulled[kVisitor]);
    EXPECT_EQ(game.strength(kVisitor), 6);
    EXPECT_EQ(game.strengthEdge(), -1);
    int extra = s.onIce[kVisitor][IcePos::GoalieOrExtra];
    EXPECT_NE(extra, goalie);
    EXPECT_NE(extra, kNoSlot);
    EXPECT_EQ(s.goalie[kVisitor], goalie);

    s.Score = {2, 2};
    game.SetPlayBox();
    EXPECT_FALSE(s.GoaliePulled[kVisitor]);
    EXPECT_EQ(s.onIce[kVisitor][IcePos::GoalieOrExtra], goalie);
}

TEST(Handshake, RunningAheadToAStopAsksNobodyAndPausesThere) {
    auto session = loaded(rulesWith(1, 0, 1));
    Recorder screen;
    Game game(*session, humans(), &screen);
    game.InitGame();
    game.runTo(AutoStop::End1st);
    const GameState& s = game.state();
    EXPECT_TRUE(s.Paused);
    EXPECT_EQ(s.Period, 2);
    EXPECT_EQ(s.Clock, 1200);
    EXPECT_EQ(s.AutoPlayTo, AutoStop::None);
    EXPECT_TRUE(screen.asked.empty());
    EXPECT_LE(screen.linesShown, 1);  // the play that reached the stop
    EXPECT_EQ(screen.pauses, 1);
    EXPECT_GT(s.steps, 50);

    game.ContinueCommand();  // the user's Continue: his turn at the draw
    EXPECT_FALSE(s.Paused);
    ASSERT_EQ(screen.asked.size(), 1u);
    EXPECT_EQ(screen.asked[0], std::make_pair('L', kVisitor));

    game.runTo(AutoStop::Second5);
    EXPECT_TRUE(s.Paused);
    EXPECT_EQ(s.Period, 2);
    EXPECT_LT(s.Clock, 300);
    EXPECT_GT(s.Clock, 200);
}

// ---- Periods, overtime, shootout -------------------------------------------------------

// Runs steps from the neutral zone with the horn about to go.
void playToHorn(Game& game, int period, std::array<int, 2> score) {
    GameState& s = game.editState();
    s.Period = period;
    s.Score = score;
    s.Clock = 2;
    s.PlayZone = Zone::NeutralZone;
    s.PlayCall = Call::Safe;
    game.PlayStep();
}

TEST(Periods, RegulationOvertimeAndShootoutFollowTheRules) {
    auto session = loaded(rulesWith(1, 0, 1));
    {
        Game game(*session, humans());
        game.InitGame();
        playToHorn(game, 1, {0, 0});
        EXPECT_EQ(game.state().Period, 2);
        EXPECT_EQ(game.state().Clock, 1200);
        EXPECT_EQ(game.state().PlayZone, Zone::FaceoffCenter1);
        EXPECT_EQ(game.state().shotsByPeriod.size(), 2u);
        EXPECT_FALSE(game.state().GameOverFlag);
    }
    {
        Game game(*session, humans());
        game.InitGame();
        playToHorn(game, 3, {2, 1});
        EXPECT_TRUE(game.state().GameEndedFlag);
        EXPECT_EQ(game.state().endedBy, GameEnd::Regulation);
    }
    {  // tied: five minutes of overtime, then sudden death
        Game game(*session, humans());
        game.InitGame();
        playToHorn(game, 3, {2, 2});
        EXPECT_EQ(game.state().Period, 4);
        EXPECT_EQ(game.state().Clock, 300);
        EXPECT_FALSE(game.state().GameOverFlag);
        GameState& s = game.editState();
        s.PlayZone = Zone::OffenseShooter;
        s.Clock = 250;
        s.PuckTeam = kHome;
        s.PlayResult = Result::Goal;
        game.ApplyPlay();
        game.editState().PlayZone = Zone::NeutralZone;
        game.PlayStep();
        EXPECT_EQ(game.state().endedBy, GameEnd::Overtime);
        EXPECT_EQ(game.finalScore(), (std::array<int, 2>{2, 3}));
        // The overtime ends, still tied: the shootout.
        Game next(*session, humans());
        next.InitGame();
        playToHorn(next, 4, {1, 1});
        EXPECT_EQ(next.state().PlayZone, Zone::Shootout);
        EXPECT_EQ(next.state().Period, 4);
    }
}

TEST(Periods, NoOvertimeOrShootoutLeavesATie) {
    auto session = loaded(rulesWith(0, 0, 0));
    Game game(*session, humans());
    game.InitGame();
    playToHorn(game, 3, {3, 3});
    EXPECT_EQ(game.state().endedBy, GameEnd::Tie);
    EXPECT_EQ(game.state().Period, 3);
}

TEST(Periods, AFullOvertimePeriodAndOvertimesUntilAGoal) {
    {  // kind 2: a goal doesn't end the overtime before its horn
        auto session = loaded(rulesWith(2, 2, 0));
        Game game(*session, humans());
        game.InitGame();
        playToHorn(game, 3, {1, 1});
        ASSERT_EQ(game.state().Period, 4);
        EXPECT_EQ(game.state().Clock, 600);
        game.editState().Score = {1, 2};
        game.editState().PlayZone = Zone::NeutralZone;
        game.PlayStep();
        EXPECT_FALSE(game.state().GameOverFlag);
        playToHorn(game, 4, {1, 2});
        EXPECT_EQ(game.state().endedBy, GameEnd::Overtime);
    }
    {  // kind 1: overtime periods go on while tied
        auto session = loaded(rulesWith(1, 1, 3));
        Game game(*session, humans());
        game.InitGame();
        playToHorn(game, 4, {0, 0});
        EXPECT_EQ(game.state().Period, 5);
        EXPECT_EQ(game.state().PlayZone, Zone::FaceoffCenter1);
    }
}

TEST(Periods, AShootoutEndsWithOneSideAheadAfterFullRounds) {
    auto session = loaded(rulesWith(1, 0, 1));
    EXPECT_EQ(shootoutRounds(session->league().rules, false), 3);
    for (std::uint64_t seed = 1; seed <= 40; ++seed) {
        Game game(*session, GameOptions{.seed = seed});
        game.InitGame();
        GameState& s = game.editState();
        s.Period = 4;
        s.Score = {2, 2};
        s.PlayZone = Zone::Shootout;
        game.SetPlayBox();
        ASSERT_EQ(s.endedBy, GameEnd::Shootout);
        EXPECT_NE(s.ShootoutGoals[0], s.ShootoutGoals[1]);
        auto score = game.finalScore();
        EXPECT_EQ(score[0] + score[1], 5);
        int winner = s.ShootoutGoals[0] > s.ShootoutGoals[1] ? 0 : 1;
        EXPECT_EQ(score[std::size_t(winner)], 3);
        EXPECT_LE(s.ShootoutRound, 50);
        // Each attempt is a penalty shot in the shooter's and the goalie's
        // lines, and each shootout goal a penalty-shot goal.
        std::array<int, 2> attempts{}, goals{}, faced{}, against{};
        for (int side : {kVisitor, kHome})
            for (int slot = 0; slot < kRosterSlots; ++slot) {
                const StatLine& g = statLine(session->side(side).player(slot), StatLineIndex::Game);
                attempts[std::size_t(side)] += g.PenaltyShotAttempts;
                goals[std::size_t(side)] += g.PenaltyShotGoals;
                faced[std::size_t(side)] += g.GoaliePenaltyShotsFaced;
                against[std::size_t(side)] += g.GoaliePenaltyShotGoals;
            }
        EXPECT_EQ(goals, s.ShootoutGoals) << "seed " << seed;
        EXPECT_EQ(faced[kHome], attempts[kVisitor]);
        EXPECT_EQ(faced[kVisitor], attempts[kHome]);
        EXPECT_EQ(against[kHome], goals[kVisitor]);
        EXPECT_GE(attempts[kVisitor] - attempts[kHome], 0);
        EXPECT_LE(attempts[kVisitor] - attempts[kHome], 1);
        EXPECT_GE(attempts[kHome], 2);
        for (int side : {kVisitor, kHome})
            for (PlayerRecord& p : session->side(side).GameRoster) {
                StatLine& g = statLine(p, StatLineIndex::Game);
                g.PenaltyShotAttempts = g.PenaltyShotGoals = g.GoaliePenaltyShotsFaced = g.GoaliePenaltyShotGoals = 0;
            }
    }
}

// ---- The overrides after the draw ----------------------------------------------------------

struct Overrides : ::testing::Test {
    std::unique_ptr<GameSession> session = loaded(rulesWith(1, 0, 1));
    std::unique_ptr<Game> game;
    GameState& fresh(std::uint64_t seed, Zone zone) {
        game = std::make_unique<Game>(*session, GameOptions{.seed = seed});
        game->InitGame();
        GameState& s = game->editState();
        s.PlayZone = zone;
        s.PuckTeam = kVisitor;
        s.Period = 1;
        s.Clock = 900;
        s.find.Carrier = s.onIce[kVisitor].slot[0];
        s.find.CarrierPos = 0;
        return s;
    }
};

// A breakaway at an empty net goes in whatever the draw gave, and nothing
// is called on the step.
TEST_F(Overrides, ABreakawayAtAnEmptyNetAlwaysScores) {
    for (std::uint64_t seed = 1; seed <= 40; ++seed) {
        GameState& s = fresh(seed, Zone::Rush);
        s.find.rush = RushType::OneZero;
        s.GoaliePulled[kHome] = true;
        s.PlayCall = Call::Rush;
        game->PlayStep();
        EXPECT_EQ(game->state().Score[kVisitor], 1) << "seed " << seed;
        EXPECT_EQ(game->state().pen.periodPenalties, (std::array<int, 2>{0, 0})) << "seed " << seed;
    }
}

// Carrying the puck up at an empty net moves it up ice most of the time,
// and otherwise loses it in one end or the other; it is never a shot.
TEST_F(Overrides, AdvancingAtAnEmptyNetMovesUpOrLosesThePuck) {
    int up = 0, n = 0;
    for (std::uint64_t seed = 1; seed <= 300; ++seed) {
        GameState& s = fresh(seed, Zone::NeutralZone);
        s.GoaliePulled[kHome] = true;
        s.PlayCall = Call::Advance;
        game->PlayStep();
        const Result r = game->state().LastPlayResult;
        EXPECT_TRUE(r == Result::MoveUp || r == Result::ToDefense || r == Result::ToNeutral) << text(r);
        up += r == Result::MoveUp;
        ++n;
    }
    EXPECT_NEAR(up / double(n), .6, .1);
}

// Once in a long while the building holds play up early in a game; play
// goes on with a draw at center.
TEST_F(Overrides, TheBuildingNowAndThenHoldsUpPlay) {
    bool held = false;
    for (std::uint64_t seed = 1; seed <= 30000 && !held; ++seed) {
        fresh(seed, Zone::DefenseZone);
        game->PlayStep();
        if (game->state().LastPlayResult != Result::Delay) continue;
        held = true;
        EXPECT_EQ(game->state().PlayZone, Zone::FaceoffCenter1);
    }
    EXPECT_TRUE(held);
}

// A broken stick is replaced on the bench, and at a stoppage for everybody:
// a man who broke one isn't left without a stick for the rest of the game.
TEST_F(Overrides, BrokenSticksAreMendedOnTheBenchAndAtADraw) {
    GameState& s = fresh(5, Zone::DefenseZone);
    const int onIce = s.onIce[kHome].slot[3];
    int bench = 0;
    while (s.onIce[kVisitor].holds(bench)) ++bench;
    s.find.BrokenStick[kHome][std::size_t(onIce)] = true;
    s.find.BrokenStick[kVisitor][std::size_t(bench)] = true;
    s.PlayCall = Call::Balanced;
    game->PlayStep();
    EXPECT_FALSE(game->state().find.BrokenStick[kVisitor][std::size_t(bench)]);
    EXPECT_TRUE(game->state().find.BrokenStick[kHome][std::size_t(onIce)]);

    GameState& draw = fresh(5, Zone::FaceoffNeutral12);
    const int center = draw.onIce[kVisitor].slot[1];
    draw.find.BrokenStick[kVisitor][std::size_t(center)] = true;
    draw.PlayCall = Call::Balanced;
    game->PlayStep();
    EXPECT_FALSE(game->state().find.BrokenStick[kVisitor][std::size_t(center)]);
}

// A dump-in that goes in leaves the chaser with the puck for the next play,
// which doesn't look for a new carrier, and is forgotten after that play:
// later clears aren't told as dumps.
TEST_F(Overrides, ADumpInIsPlayedOnForTheOneStepAfterIt) {
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        GameState& s = fresh(seed, Zone::OffenseZone);
        s.events.dumpIn = true;
        s.PlayCall = Call::Pass;
        game->PlayStep();
        EXPECT_FALSE(game->state().find.PickCarrier) << "seed " << seed;
        EXPECT_FALSE(game->state().events.dumpIn) << "seed " << seed;
    }
}

// Broadcast breaks come at whistles, one a whistle: a period whose first
// stop after 14 minutes comes with under 6 left still has its second break
// for a later stop. An icing is no stop for a break.
TEST_F(Overrides, BroadcastBreaksComeOneAWhistleAndNeverAtAnIcing) {
    int breaks = 0, icings = 0;
    for (std::uint64_t seed = 1; seed <= 600; ++seed) {
        // Clears from the own half for the icings; shots for the whistles
        // of frozen pucks that a break may come at.
        const int kind = static_cast<int>(seed % 3);
        GameState& s = fresh(seed, kind == 0 ? Zone::DefenseZone : kind == 1 ? Zone::NeutralZone : Zone::OffenseZone);
        s.Clock = 300;
        s.PlayCall = kind == 2 ? Call::Shoot : Call::Clear;
        game->PlayStep();
        const GameState& after = game->state();
        if (!isFaceoff(after.PlayZone) || after.Period != 1) continue;
        if (after.events.IcingFlag) {
            ++icings;
            EXPECT_EQ(after.tvTimeoutsTaken, 0) << "seed " << seed;
        }
        if (after.tvTimeoutsTaken == 0) continue;
        ++breaks;
        EXPECT_EQ(after.tvTimeoutsTaken, 1) << "seed " << seed;
    }
    EXPECT_GT(breaks, 0);
    EXPECT_GT(icings, 0);
}

// ---- Whole games -------------------------------------------------------------------------

struct Outcome {
    std::array<int, 2> score{};
    std::array<int, 2> shots{};
    int steps = 0;
    GameEnd end = GameEnd::None;
    bool operator==(const Outcome&) const = default;
};

Outcome playWhole(std::uint64_t seed, int visitor = 0, int home = 1) {
    auto session = loaded(rulesWith(1, 0, 1), seed, visitor, home);
    Game game(*session, GameOptions{.seed = seed});
    game.playToEnd();
    return {game.finalScore(), game.state().Shots, game.state().steps, game.state().endedBy};
}

TEST(WholeGames, TheSameSeedPlaysTheSameGame) {
    Outcome first = playWhole(2024);
    EXPECT_EQ(playWhole(2024), first);
    bool differs = false;
    for (std::uint64_t seed = 1; seed <= 5 && !differs; ++seed) differs = !(playWhole(seed) == first);
    EXPECT_TRUE(differs);
}

// The box score's time of attack: each side has some, and the two together
// are only a part of the game, the play begun in an attacking zone or on a
// rush.
TEST(WholeGames, BothSidesGetTimeOfAttackWithinTheGamesLength) {
    for (std::uint64_t seed : {5u, 11u}) {
        auto session = loaded(rulesWith(1, 0, 1), seed);
        Game game(*session, GameOptions{.seed = seed});
        game.playToEnd();
        FinishedGame done = summarizeGame(game, 1, 11, 4, 2017);
        const int played = 3 * 20 * 60 + (game.state().endedBy == GameEnd::Regulation ? 0 : 5 * 60);
        SCOPED_TRACE(seed);
        EXPECT_GT(done.side[kVisitor].timeOfAttack, 60);
        EXPECT_GT(done.side[kHome].timeOfAttack, 60);
        EXPECT_LT(done.side[kVisitor].timeOfAttack + done.side[kHome].timeOfAttack, played / 2);
    }
}

// A game the driver plays through with nobody watching keeps the lines it
// put on the ice for each request and fit list, the men on each line, and
// the plans' shares of ice time its line changes go by; a game on a screen
// works every one out afresh. The two must play alike, send out the same units for the same
// time, tire the same men and end on the same strategies, through the penalties, fights and injuries
// that change who is fit to play.
TEST(WholeGames, AGameNobodyWatchesPlaysAsOneOnAScreen) {
    int penalties = 0;
    for (std::uint64_t seed : {4u, 17u, 23u}) {
        std::array<Outcome, 2> outcome;
        std::array<decltype(GameState{}.coach.unitSecs), 2> unitSecs{};
        std::array<decltype(GameState{}.Energy), 2> energy{};
        std::array<decltype(GameState{}.coach.live), 2> strategy{};
        for (bool watched : {false, true}) {
            auto session = loaded(defaultRules(2017), seed);
            // The home coach leans on his top units and sends his men in
            // deep, so each side plays by a plan of its own.
            GamePlanRecord& plan = session->side(1).plan;
            plan.LineUsage = {20, 12, 6, 2};
            plan.PairUsage = {18, 10, 5};
            plan.PowerPlayUsage = {20, 5};
            plan.Forecheck = 7;
            plan.DzDepth = 5;
            Game game(*session, GameOptions{.seed = seed, .noDisplay = !watched});
            game.playToEnd();
            const GameState& s = game.state();
            const std::size_t i = watched ? 1 : 0;
            outcome[i] = {game.finalScore(), s.Shots, s.steps, s.endedBy};
            unitSecs[i] = s.coach.unitSecs;
            energy[i] = s.Energy;
            strategy[i] = s.coach.live;
            if (!watched) penalties += int(s.penalties.size());
        }
        EXPECT_EQ(outcome[0], outcome[1]) << "seed " << seed;
        EXPECT_EQ(unitSecs[0], unitSecs[1]) << "seed " << seed;
        EXPECT_EQ(energy[0], energy[1]) << "seed " << seed;
        EXPECT_TRUE(strategy[0] == strategy[1]) << "seed " << seed;
    }
    EXPECT_GT(penalties, 6);
}

// What a game keeps between steps (the fatigue it tracks, the unit ratings
// and placements it has worked out, whether the men kept off are as they
// were and who it held off, the manpower it counted from the box) must
// always be what it would work out afresh. A game that drops all
// of it after every step, through the edit that would have changed it, must
// play exactly as one that keeps it, through the penalties, fights and
// injuries that change who may play.
struct Forgetful final : NullPresenter {
    Game* game = nullptr;
    std::vector<std::string> told;
    void ShowPlayLines(const Game&, const std::vector<std::string>& lines) override {
        told.insert(told.end(), lines.begin(), lines.end());
    }
    void ShowClock(const Game&) override {
        if (game != nullptr) (void)game->editState();
    }
};

// However a watched game ends (at the horn, in sudden death, by a shootout
// or as a tie) its last line says so, once.
TEST(WholeGames, EveryEndingIsToldAsGameOver) {
    struct LastLines final : NullPresenter {
        std::vector<std::string> last;
        void ShowPlayLines(const Game&, const std::vector<std::string>& lines) override {
            if (!lines.empty()) last = lines;
        }
    };
    std::set<GameEnd> seen;
    for (std::uint64_t seed = 1; seed <= 40 && seen.size() < 3; ++seed) {
        auto session = loaded(rulesWith(1, 0, 1), seed);
        LastLines shown;
        Game game(*session, GameOptions{.seed = seed, .noDisplay = false}, &shown);
        game.playToEnd();
        const GameEnd end = game.state().endedBy;
        seen.insert(end);
        ASSERT_FALSE(shown.last.empty());
        EXPECT_EQ(shown.last.back(), "Game Over") << gameEndText(end) << " seed " << seed;
        EXPECT_EQ(std::count(shown.last.begin(), shown.last.end(), "Game Over"), 1) << "seed " << seed;
    }
    EXPECT_TRUE(seen.count(GameEnd::Regulation));
    EXPECT_TRUE(seen.count(GameEnd::Overtime) || seen.count(GameEnd::Shootout));
}

// The short telling marks the end of regulation of a tied game, once, and
// never that of a game decided in it.
TEST(WholeGames, ATiedGameIsToldAtTheEndOfRegulation) {
    struct AllShort final : NullPresenter {
        std::vector<std::string> told;
        void ShowPlayLines(const Game&, const std::vector<std::string>& lines) override {
            told.insert(told.end(), lines.begin(), lines.end());
        }
    };
    std::set<bool> seen;
    for (std::uint64_t seed = 1; seed <= 40 && seen.size() < 2; ++seed) {
        auto session = loaded(rulesWith(1, 0, 1), seed);
        AllShort shown;
        Game game(*session, GameOptions{.seed = seed, .noDisplay = false, .shortPlayByPlay = true}, &shown);
        game.playToEnd();
        const bool pastRegulation = game.state().endedBy != GameEnd::Regulation;
        seen.insert(pastRegulation);
        EXPECT_EQ(std::count(shown.told.begin(), shown.told.end(), "End Of Regulation"), pastRegulation ? 1 : 0)
            << "seed " << seed;
    }
    EXPECT_EQ(seen.size(), 2u);
}

TEST(WholeGames, KeptAnswersDroppedAfterEveryStepPlayTheSame) {
    int penalties = 0, injuries = 0;
    for (std::uint64_t seed : {4u, 9u, 23u, 41u}) {
        std::array<Outcome, 2> outcome;
        std::array<std::vector<std::string>, 2> told;
        std::array<std::array<BySlot<int>, 2>, 2> energy{};
        for (bool forget : {false, true}) {
            auto session = loaded(defaultRules(2017), seed, int(seed % 3), 3 + int(seed % 2));
            // Coaches who send some men to shoot more or less than others,
            // so the weights the game keeps for them differ from man to man.
            for (int side : {0, 1})
                for (int slot = 0; slot < kRosterSlots; slot += 3)
                    session->side(side).player(slot).UsageSogAggressiveness = std::uint8_t(1 + (slot + side) % 5);
            Forgetful presenter;
            Game game(*session, GameOptions{.seed = seed, .noDisplay = false}, &presenter);
            if (forget) presenter.game = &game;
            game.playToEnd();
            const GameState& s = game.state();
            const std::size_t i = forget ? 1 : 0;
            outcome[i] = {game.finalScore(), s.Shots, s.steps, s.endedBy};
            told[i] = presenter.told;
            energy[i] = s.Energy;
            if (!forget) {
                penalties += int(s.penalties.size());
                injuries += s.pen.injuries;
            }
        }
        EXPECT_EQ(outcome[0], outcome[1]) << "seed " << seed;
        EXPECT_EQ(energy[0], energy[1]) << "seed " << seed;
        EXPECT_TRUE(told[0] == told[1]) << "seed " << seed;
    }
    EXPECT_GT(penalties, 10);
    EXPECT_GT(injuries, 0);
}

// Checks that a finished game ended in a way its rules allow.
void expectLegalEnd(const Game& game) {
    const GameState& s = game.state();
    ASSERT_TRUE(s.GameEndedFlag);
    EXPECT_EQ(s.shotsByPeriod.size(), std::size_t(s.Period));
    std::array<int, 2> shots{};
    for (const auto& p : s.shotsByPeriod)
        for (int side : {0, 1}) shots[std::size_t(side)] += p[std::size_t(side)];
    EXPECT_EQ(shots, s.Shots);
    for (int side : {0, 1}) EXPECT_GE(s.Shots[std::size_t(side)], s.Score[std::size_t(side)]);
    EXPECT_EQ(int(s.goals.size()), s.Score[0] + s.Score[1]);
    switch (s.endedBy) {
        case GameEnd::Regulation:
            EXPECT_EQ(s.Period, game.periods());
            EXPECT_NE(s.Score[0], s.Score[1]);
            EXPECT_GE(s.Clock, 0);
            break;
        case GameEnd::Overtime:
            EXPECT_EQ(s.Period, game.periods() + 1);
            EXPECT_EQ(std::abs(s.Score[0] - s.Score[1]), 1);  // sudden death
            break;
        case GameEnd::Shootout:
            EXPECT_EQ(s.Score[0], s.Score[1]);
            EXPECT_NE(s.ShootoutGoals[0], s.ShootoutGoals[1]);
            break;
        default:
            ADD_FAILURE() << "ended by " << gameEndText(s.endedBy);
    }
}

TEST(WholeGames, EveryGameOfAMadeUpScheduleEndsLegallyAtLeagueRates) {
    const test::MadeUpLeague& lg = madeUp();
    Random draws(8);
    ScheduleRequest request;
    request.gamesPerTeam = 10;
    request.seasonYear = 2017;
    GeneratedSchedule schedule = generateSchedule(lg.teams, request, draws);
    ASSERT_EQ(schedule.records.size(), 30u);
    int goals = 0, shots = 0, overtimes = 0;
    std::uint64_t seed = 100;
    for (const GameRecord& row : schedule.records) {
        GameSession session({lg.dir.path(), rulesWith(1, 0, 1), &shippedEra(), nullptr});
        Random loadDraws(++seed);
        session.loadGame(row.VisitorTeam, row.HomeTeam, row.Month, row.Day, loadDraws);
        Game game(session, GameOptions{.seed = seed});
        game.playToEnd();
        SCOPED_TRACE(::testing::Message() << "game " << row.VisitorTeam << " at " << row.HomeTeam);
        expectLegalEnd(game);
        goals += game.state().Score[0] + game.state().Score[1];
        shots += game.state().Shots[0] + game.state().Shots[1];
        overtimes += game.state().endedBy != GameEnd::Regulation ? 1 : 0;
    }
    double games = double(schedule.records.size());
    EXPECT_GT(goals / games / 2, 1.8);
    EXPECT_LT(goals / games / 2, 4.2);
    // The league's players are unrated, so every unit plays as an average
    // one; shots run a little above a real season's until the zone play
    // around the chance table is complete.
    EXPECT_GT(shots / games / 2, 22);
    EXPECT_LT(shots / games / 2, 42);
    EXPECT_LT(overtimes, 15);
}

// Momentum leans a game a little one way: hits and scrums move it a tenth
// at a time, never past a half either way, and none of it stands against
// a side on the power play.
TEST(WholeGames, MomentumStaysWithinAHalfAndNeverAgainstThePowerPlay) {
    double most = 0;
    for (std::uint64_t seed : {3, 4, 5}) {
        auto session = loaded(rulesWith(1, 0, 1), seed);
        Game game(*session, GameOptions{.seed = seed});
        game.InitGame();
        while (!game.state().GameOverFlag) {
            const auto before = game.state().Skaters;
            game.PlayStep();
            const double m = game.state().Momentum;
            ASSERT_LE(std::fabs(m), .5 + 1e-9) << "step " << game.state().steps;
            const auto& men = game.state().Skaters;
            const auto& pulled = game.state().GoaliePulled;
            const int visitor = men[0] + (pulled[0] ? 1 : 0), home = men[1] + (pulled[1] ? 1 : 0);
            // A man back from the box on the clock's last run gives a power
            // play that the next step's bookkeeping weighs.
            if (men[0] > before[0] || men[1] > before[1]) continue;
            if (visitor > home) {
                EXPECT_GE(m, 0) << "step " << game.state().steps;
            }
            if (home > visitor) {
                EXPECT_LE(m, 0) << "step " << game.state().steps;
            }
            most = std::max(most, std::fabs(m));
        }
    }
    EXPECT_GT(most, .25);  // the hits did move it
}

// ---- Fatigue ----------------------------------------------------------------------

// The clock's fatigue charge visits only the men whose fatigue can move.
// Opening the state for an edit makes it visit every slot at the next
// charge; two games with the same seed and the same calls, one of them
// opened before every decision, must agree on everyone's fatigue after
// every step, through the periods, penalties and injuries of whole games.
TEST(Fatigue, ChargingOnlyTheMenWhoseFatigueCanMoveChangesNothing) {
    RulesRecord rules = defaultRules(2017);
    rules.NoComputerPlayCallsCheck = 1;  // one step a decision
    auto decide = [](Game& g) {
        const Zone z = g.state().PlayZone;
        if (z == Zone::ContinueBox)
            g.ContinueCommand();
        else
            g.OffenseCommand(g.ChooseCall(g.decidingSide()));
    };
    for (std::uint64_t seed : {3u, 11u, 29u}) {
        auto sessionA = loaded(rules, seed);
        auto sessionB = loaded(rules, seed);
        GameOptions options = humans(seed);
        options.autoLines = {true, true};
        Recorder screenA, screenB;
        Game quick(*sessionA, options, &screenA);
        Game full(*sessionB, options, &screenB);
        quick.InitGame();
        full.InitGame();
        quick.SetPlayBox();
        full.SetPlayBox();
        int decisions = 0;
        for (; decisions < 20000 && !quick.state().GameEndedFlag; ++decisions) {
            decide(quick);
            full.editState();
            decide(full);
            const GameState& q = quick.state();
            const GameState& f = full.state();
            ASSERT_EQ(q.steps, f.steps) << "seed " << seed;
            ASSERT_EQ(q.Energy, f.Energy) << "seed " << seed << " step " << q.steps;
            ASSERT_EQ(q.ShiftSecs, f.ShiftSecs) << "seed " << seed << " step " << q.steps;
            ASSERT_EQ(q.stint, f.stint) << "seed " << seed << " step " << q.steps;
            ASSERT_EQ(q.coach.wasOn, f.coach.wasOn) << "seed " << seed << " step " << q.steps;
        }
        EXPECT_TRUE(quick.state().GameEndedFlag) << "seed " << seed;
        EXPECT_GT(quick.state().steps, 200) << "seed " << seed;
        EXPECT_EQ(quick.state().Score, full.state().Score) << "seed " << seed;
    }
}

}  // namespace
}  // namespace tallyrink
