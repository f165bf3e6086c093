#pragma once

// One game, step by step. A Game is built on a GameSession whose two sides
// are loaded; it owns the whole play state and its own generator, so games
// can run side by side and one seed replays one game.
//
// Control passes as a screen would see it: SetPlayBox runs steps until a
// human coach must decide (or the game ends); the decision comes back
// through OffenseCommand (a call) or ContinueCommand (lines confirmed).
// With two computer coaches, or no display, SetPlayBox plays to the end.
//
// Sides are 0 (visitor) and 1 (home), as in the team load; the literals of
// the faceoff states still carry 1 and 2.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "engine/events.h"
#include "engine/find_tools.h"
#include "engine/live_stats.h"
#include "engine/play_chances.h"
#include "engine/play_state.h"
#include "engine/presenter.h"
#include "engine/team_load.h"
#include "league/random.h"
#include "team/lineup_tools.h"

namespace tallyrink {

inline constexpr int kBothSides = 2;

enum class CoachKind : std::uint8_t { Human, Computer };

// How a finished game was decided.
enum class GameEnd : std::uint8_t { None, Regulation, Overtime, Shootout, Tie };
std::string_view gameEndText(GameEnd e);

struct GameOptions {
    std::uint64_t seed = 0;
    std::array<CoachKind, 2> coach{CoachKind::Computer, CoachKind::Computer};
    bool noDisplay = true;  // no screen: every presenter call but GameOver is skipped
};

// A goal, for the scoring summary.
struct GoalNote {
    int period = 0;
    int clock = 0;  // seconds left in the period
    int side = 0;
    int strengthEdge = 0;  // scorer's skaters less the other side's, extra attackers not counted
    bool emptyNet = false;
    int scorer = kNoSlot;  // slots of the scoring side
    std::array<int, 2> assists{kNoSlot, kNoSlot};
    GoalType type = GoalType::FiveOnFive;
};

// The play state. Everything a step reads or writes stands here; a test or
// a resumed game may set it by hand through Game::editState.
struct GameState {
    Zone PlayZone = Zone::FaceoffCenter1;
    Call PlayCall = Call::None;
    Call LastPlayCall = Call::None;
    Result PlayResult = Result::None;
    Result LastPlayResult = Result::None;
    Zone LastZone = Zone::FaceoffCenter1;
    Zone EntryZone = Zone::FaceoffCenter1;
    bool entryFromFaceoff = false;  // the step follows a draw
    bool OffensiveDraw = false;     // the draw was won in the other team's end

    int PuckTeam = 0;
    int StepPuckTeam = 0;
    [[nodiscard]] int OtherTeam() const { return PuckTeam == 0 ? 1 : 0; }

    std::array<OnIce, 2> onIce{};
    std::array<int, 2> goalie{kNoSlot, kNoSlot};
    std::array<int, 2> Skaters{5, 5};
    std::array<bool, 2> GoaliePulled{false, false};  // out of the net for an extra attacker
    std::array<int, 2> forwardUnit{1, 1};            // the unit of the situation on the ice
    std::array<int, 2> defensePair{1, 1};
    std::array<bool, 2> lineChangeMade{false, false};
    // Minor penalties running, seconds left, two a side at most.
    std::array<std::array<int, 2>, 2> penaltyLeft{};

    std::array<int, 2> Score{};
    std::array<int, 2> Shots{};
    std::vector<std::array<int, 2>> shotsByPeriod;  // [period - 1][side]
    std::vector<GoalNote> goals;

    int Period = 1;
    int Clock = 1200;
    double PlayTime = 0;
    double PlayRating = 0;
    double Momentum = 0;
    bool periodEnds = false;  // time ran out inside the play
    int penaltyOn = -1;       // the drawn penalty: a side, or kBothSides for one on each

    std::array<Call, 2> FaceoffCall{Call::Computer, Call::Computer};
    bool NoDisplay = true;
    bool ProbeOnly = false;
    bool Paused = false;
    AutoStop AutoPlayTo = AutoStop::None;  // the computer calls for both until this stop
    int tvTimeoutsTaken = 0;               // in this period
    bool GameOverFlag = false;
    bool GameEndedFlag = false;
    GameEnd endedBy = GameEnd::None;

    Zone ContinueZone = Zone::DefenseZone;
    Call ContinueCall = Call::None;
    int ContinueTeam = 0;

    // Shootout.
    int ShootoutRound = 1;
    int shootoutSide = 0;  // side whose shooter is next
    std::array<int, 2> ShootoutGoals{};
    std::array<BySlot<bool>, 2> ShootoutUsed{};

    // Fatigue, by side and slot.
    std::array<BySlot<double>, 2> ShiftSecs{};
    std::array<BySlot<int>, 2> Energy{};
    std::array<BySlot<double>, 2> stint{};  // seconds on the ice since the last change

    // Carrier, passers, spots, open men, the picks of the events, the shot
    // model's goalie form and the table's calibrations.
    FindState find;

    // The draw, the shot, the clear and the turnover of the play, and the
    // team figures of the game.
    EventState events;

    int steps = 0;
};

class Game {
public:
    // `session` must have both sides loaded and outlive the game.
    Game(GameSession& session, GameOptions options, GamePresenter* presenter = nullptr);

    // Resets the state for the opening faceoff.
    void InitGame();
    // The driver: runs steps until a human must decide or the game has ended.
    void SetPlayBox();
    // One step with the zone, call and puck team as they stand.
    void PlayStep();
    // A coach's call reaches the game (human click, computer coach or peer).
    void OffenseCommand(Call call);
    // Lines confirmed: the next stage of a faceoff, or the saved step of
    // "CONTINUE-BOX".
    void ContinueCommand();
    // The chances the coming step would draw from; changes nothing.
    PlayChances ProbeOnly();
    // Works out `PlayResult` as drawn: the next zone and possession, the
    // score and shots, and the play's time. Called once by PlayStep.
    void ApplyPlay();

    // Lets the computer make every call, the human's too, and show nothing
    // until the stop is reached; then the game pauses.
    void runTo(AutoStop stop);

    // InitGame and SetPlayBox in one, for games nobody decides in.
    void playToEnd();

    [[nodiscard]] const GameState& state() const { return s_; }
    GameState& editState() { return s_; }
    [[nodiscard]] const GameSession& session() const { return session_; }
    [[nodiscard]] const std::vector<std::string>& playLines() const { return lines_; }
    [[nodiscard]] int periods() const { return periods_; }
    [[nodiscard]] int periodSeconds() const { return minutes_ * 60; }
    [[nodiscard]] int overtimeSeconds() const { return overtimeMinutes_ * 60; }
    [[nodiscard]] int shootoutRounds() const { return shootoutRounds_; }
    [[nodiscard]] CoachKind coach(int side) const { return options_.coach[static_cast<std::size_t>(side)]; }
    // The side whose coach decides next.
    [[nodiscard]] int decidingSide() const;
    // The final score as the schedule shows it: the shootout winner gets one.
    [[nodiscard]] std::array<int, 2> finalScore() const;
    // Skaters, the extra attacker counted.
    [[nodiscard]] int strength(int side) const {
        auto i = static_cast<std::size_t>(side);
        return s_.Skaters[i] + (s_.GoaliePulled[i] ? 1 : 0);
    }
    [[nodiscard]] int strengthEdge() const { return strength(s_.PuckTeam) - strength(s_.OtherTeam()); }

    // ---- Chances: selection tools, shot model, chance table ----------------
    // Weighted picks among the players on the ice (find_tools.cpp). Each
    // leaves its pick in state().find.
    void FindCarrier();
    void FindPassers();
    // One pick per penalty for each side with find.PenaltiesToCall above 0.
    void FindPenalized();
    void FindDefender();
    void FindTakeaway();
    void FindBlocker();
    void FindHitter();
    // Names of a pass for narration; `unit` stands for the puck team's men
    // on the ice (the unit before a line change), null for those now on it.
    void PickNames(const OnIce* unit = nullptr);
    void PickOpponentName();
    // Spots of the attackers and the list of open men of the offensive zone.
    void HkSetPlayCallList();
    // A new carrier of the puck team after a loose puck; `takeawayPos` is the
    // position of the man who took it away, kNoPos when nobody did.
    void PickLooseCarrier(int takeawayPos = kNoPos);
    // The chance table of the coming step (chance_table.cpp); with
    // ProbeOnly set it draws nothing that a probe must not.
    PlayChances ChanceTable();
    // First stage of the shooting percentage (shooting.cpp): sets
    // chances.GoalPct and chances.ShotClass.
    void GoalPct(PlayChances& c);
    // The rush stage: the percentage of a rush shot, whatever the first gave.
    void RushGoalPct(PlayChances& c);

    // ---- Events: faceoffs, shots, zone play ----------------------------------
    // The men who take the coming draw (faceoffs.cpp).
    void PickFaceoffMen();

private:
    // Chances: the parts of a step up to the table (chance_table.cpp).
    void drawShooterMood();
    void moveForecheck();
    void chooseCarrier();
    void eraFactors();
    void seasonCalibration();
    void drawGoalieForm();
    // Events: the draw (faceoffs.cpp).
    [[nodiscard]] int faceoffRating(int side, int pos) const;
    [[nodiscard]] int penaltiesTaken(int side) const;
    void tensionBeforeDraw();
    // Events: the result of a step (apply_play.cpp).
    void clearPlayFlags();
    void rareClearEvents();
    void dispatchResult();
    void prepareNextState();
    [[nodiscard]] int chanceShotClass() const;
    // Events: shots and rebounds (shots.cpp).
    [[nodiscard]] int netminder(int side) const;  // the goalie in the net, kNoSlot when it is empty
    [[nodiscard]] int edgeIndex() const;          // the puck team's edge in men, -2..2, as 0..4
    ShotKind chooseShotKind();
    void cutAssists();
    void countShotOnGoal(int side, int shooter);
    void countSave(int side, int shooter);
    void postGoal(bool fromClear);
    ShotRebound ReboundAfterShot();
    SaveRebound ReboundAfterSave(bool allowReboundShot);
    void shiftPassersForRebound();
    void followShotRebound();
    void followSaveRebound();
    int pickReboundShooter(bool afterSave);
    void reboundShot(bool afterSave);
    // Events: the puck moved without a shot (zone_play.cpp).
    [[nodiscard]] bool penaltyDelayed() const;
    [[nodiscard]] bool brokenStickOnIce(int side) const;
    void onEntry();
    void onMoveUp();
    ClearTarget clearTarget();
    bool recoversClear();
    void callIcing(int side);
    void onOffside();
    [[nodiscard]] double hitSteering(int side) const;
    void countHit();
    TurnoverKind turnoverKind();
    bool joinsRush(int side, int pos);
    void buildRush();
    void RushAssists();
    void onDelay();
    // Events: the play-by-play lines (narration.cpp).
    [[nodiscard]] std::string nameOf(int side, int slot) const;
    [[nodiscard]] std::string teamName(int side) const;
    void DescribeOpening();
    void DescribeNewGoalie(int side);
    void DescribeCircleChange(int side, int out, int in);
    void DescribeTension();
    void DescribeFaceoffResult(int winner);
    void DescribeShot();
    void DescribeBlock(int side, int blocker);
    void DescribeGoalLead();
    void DescribeVideoReview();
    void DescribeGoalCredit(int scorer);
    void DescribeAssists();
    void DescribeKnockedAway(int side, int defender);
    void DescribeReboundClear();
    void DescribeOutOfPlay();
    void DescribeClearSave();
    void DescribeGoaliePass();
    void DescribeFreeze();
    void DescribeReboundShot(int shooter);
    void DescribeGoalieDrops();
    void DescribeReboundMiss();
    void DescribeDump();
    void DescribePass();
    void DescribeEntry();
    void DescribeMoveUp();
    void DescribeRecover();
    void DescribeClear();
    void DescribeIcing(int side);
    void DescribeOffside();
    void DescribeHit(int side, int hitter);
    void DescribeTurnover();
    void DescribeLoosePuck();
    void DescribeRush();
    void DescribeRetreat();
    void DescribeDelay();
    // Draws of the telling only, so that a told game plays as an untold one.
    Random narrationRng_{0};

    // A step's parts, in the order PlayStep runs them.
    Result drawResult(const PlayChances& c);
    Result splitTurnover(const PlayChances& c);
    Result applyOverrides(Result r);
    void FaceoffStep();
    void ShootoutStep();
    int FindShootoutShooter(int side);

    // One function per result: each sets the next zone and possession.
    void changePossession() { s_.PuckTeam = s_.OtherTeam(); }
    void onGoal();
    void onSave();
    void onMissOrBlock();
    void onClear();
    void onPenalty(int side);
    void onPass();
    void onTurnover(Result r);

    void SetPlayRating();
    void SetPlayTime();
    void RunClock();
    void SetEnergy();
    void endOfPeriod();
    void GameOverCheck();
    void finishGame(GameEnd how);

    // Lines and the ice.
    void putUnitOnIce(int side);
    void computerLineChange(int side, bool force);
    void computerGoaliePull(int side);
    void returnGoalie(int side);
    [[nodiscard]] bool lineChangeDue(int side) const;
    void restoreEveryone();
    void recountSkaters();
    [[nodiscard]] int minPenaltyLeft() const;
    double eraPace();
    [[nodiscard]] bool powerPlay(int side) const { return strength(side) > strength(side == 0 ? 1 : 0); }
    void resumeDriver();
    void tell(std::string line);
    // Lines are told whenever there is a screen; the presenter sees them
    // only when the game isn't running ahead to a stop.
    bool telling() const { return !s_.NoDisplay; }
    bool shown() const { return !s_.NoDisplay && s_.AutoPlayTo == AutoStop::None; }
    bool computerDecides(int side) const {
        return coach(side) == CoachKind::Computer || s_.NoDisplay || s_.AutoPlayTo != AutoStop::None;
    }
    void checkAutoStop();
    void tvTimeout(Result previous);

    GameSession& session_;
    GameOptions options_;
    NullPresenter nullPresenter_;
    GamePresenter* presenter_;
    Random rng_;
    std::array<LineupTeam, 2> teams_{};
    GameState s_;
    std::vector<std::string> lines_;
    PlayChances chances_{};
    bool driverRunning_ = false;

    int periods_ = 3;
    int minutes_ = 20;
    int overtimeMinutes_ = 0;
    int overtimeType_ = 0;
    int shootoutRounds_ = 0;
};

}  // namespace tallyrink
