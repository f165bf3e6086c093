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
#include <string_view>
#include <utility>
#include <vector>

#include "engine/chance_table.h"
#include "engine/computer_coach.h"
#include "engine/events.h"
#include "engine/find_tools.h"
#include "engine/goalie_change.h"
#include "engine/live_stats.h"
#include "engine/narration.h"
#include "engine/penalties.h"
#include "engine/play_chances.h"
#include "engine/play_lines.h"
#include "engine/play_state.h"
#include "engine/play_tally.h"
#include "engine/presenter.h"
#include "engine/team_load.h"
#include "league/random.h"
#include "team/lineup_tools.h"
#include "team/team_ratings.h"

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
    // A human coach's "Auto-Lines": the computer changes his lines for him.
    std::array<bool, 2> autoLines{false, false};
    // The league's season against its eras (league games outside the
    // playoffs; see seasonCalibration).
    SeasonCalibration calibration{};
    // The wordings of the play-by-play; null: the built-in ones. Must
    // outlive the game.
    const PhraseTable* phrases = nullptr;
    // "Short" play-by-play: a presenter is shown one line a stoppage, shot
    // result or penalty instead of the full telling.
    bool shortPlayByPlay = false;
    // Marks the last line of a play that made a scoring chance "  *SC*".
    bool markScoringChances = false;
};

// The units a side has on the ice and how many it may choose from in the
// present manpower (special teams choose the unit only: pairs 0).
struct LineChoice {
    int forwards = 1;
    int pair = 1;
    int forwardUnits = 4;
    int pairs = 3;
    bool goaliePulled = false;
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
    // Each side's goalie when it went in, his net empty or not: the goalies
    // of record are read from the game's last goal.
    std::array<int, 2> goalies{kNoSlot, kNoSlot};
};

// A penalty as called, for the penalty summary.
struct PenaltyNote {
    int period = 0;
    int clock = 0;  // seconds left in the period
    int side = 0;
    int slot = kNoSlot;  // kNoSlot: a bench penalty
    int minutes = 0;
    std::string_view name;  // the infraction; always one of the program's fixed texts
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
    PenaltyState pen;  // the box, the power play, fights and injuries

    std::array<int, 2> Score{};
    std::array<int, 2> Shots{};
    std::array<int, 2> attackSeconds{};             // play begun in the attacking zone or on a rush
    std::vector<std::array<int, 2>> shotsByPeriod;  // [period - 1][side]
    std::vector<GoalNote> goals;
    std::vector<PenaltyNote> penalties;

    int Period = 1;
    int Clock = 1200;
    double PlayTime = 0;
    double PlayRating = 0;
    double Momentum = 0;
    double momentumSeconds = 0;  // play since momentum last faded
    bool periodEnds = false;     // time ran out inside the play
    int penaltyOn = -1;          // the drawn penalty: a side, or kBothSides for one on each

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

    CoachState coach;     // the computer coach, line changes, timeouts
    GoalieRelief relief;  // who started in goal and who was taken out
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
    // A set play ("PLAY-TO", "PLAY-SHOOT") at the man on ice position `targetPos`.
    void OffenseCommand(Call call, int targetPos);
    // Lines confirmed: the next stage of a faceoff, or the saved step of
    // "CONTINUE-BOX".
    void ContinueCommand();
    // The chances the coming step would draw from; changes nothing.
    PlayChances ProbeOnly();
    // Works out `PlayResult` as drawn: the next zone and possession, the
    // score and shots, and the play's time. Called once by PlayStep.
    void ApplyPlay();
    [[nodiscard]] bool powerPlayGoalHeldOut() const;

    // Lets the computer make every call, the human's too, and show nothing
    // until the stop is reached; then the game pauses.
    void runTo(AutoStop stop);

    // InitGame and SetPlayBox in one, for games nobody decides in.
    void playToEnd();

    [[nodiscard]] const GameState& state() const { return s_; }
    // Whatever an edit touches, every slot's fatigue is charged from then on,
    // and what the game keeps of the session's records and rates is laid
    // down again, for an edit of those made since the last call.
    GameState& editState() {
        fatigueTracked_.fill(~std::uint64_t{0} >> (64 - kRosterSlots));
        layManFacts();
        layPickBase();
        unitMemo_ = {};
        forgetKeptLineups();
        keptOffChanged();
        return s_;
    }
    [[nodiscard]] const GameSession& session() const { return session_; }
    // The lines of the last play as the presenter was shown them.
    [[nodiscard]] const std::vector<std::string>& playLines() const {
        return options_.shortPlayByPlay ? play_.shortTexts() : play_.texts();
    }
    // The full telling of the last play with each line's marks.
    [[nodiscard]] const PlayLines& playTelling() const { return play_; }
    // Scoring chances of `side` so far, as the telling judged its shots.
    [[nodiscard]] int scoringChances(int side) const { return told_.chances[static_cast<std::size_t>(side)]; }
    [[nodiscard]] int periods() const { return periods_; }
    [[nodiscard]] int periodSeconds() const { return minutes_ * 60; }
    [[nodiscard]] int overtimeSeconds() const { return overtimeMinutes_ * 60; }
    [[nodiscard]] int shootoutRounds() const { return shootoutRounds_; }
    [[nodiscard]] CoachKind coach(int side) const { return options_.coach[static_cast<std::size_t>(side)]; }
    // Hands a side to the computer or to a person from the next decision on.
    void setCoach(int side, CoachKind kind) { options_.coach[static_cast<std::size_t>(side)] = kind; }
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
    // What this game's steps drew, for tuning (simulate --detail).
    [[nodiscard]] const PlayTally& tally() const { return tally_; }

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
    // Sets the manpower of both sides and puts the matching units on the
    // ice, for a look at the chances of a situation (a test, the probe).
    void setManpower(int visitorSkaters, int homeSkaters);
    // The chance table of the coming step (chance_table.cpp); with
    // ProbeOnly set it draws nothing that a probe must not.
    PlayChances ChanceTable();
    // The same, written into `c` (the step's own table, which nothing reads
    // while it is worked out).
    void fillChanceTable(PlayChances& c);
    // First stage of the shooting percentage (shooting.cpp): sets
    // chances.GoalPct and chances.ShotClass.
    void GoalPct(PlayChances& c);
    // The rush stage: the percentage of a rush shot, whatever the first gave.
    void RushGoalPct(PlayChances& c);

    // ---- Events: faceoffs, shots, zone play ----------------------------------
    // The men who take the coming draw (faceoffs.cpp).
    void PickFaceoffMen();
    // ---- Penalties, power play, fights and injuries (penalties.cpp) ----
    // Calls a penalty on `offender` of `side` (kNoSlot: a bench penalty) and
    // puts its server in the box. An empty name is drawn.
    void assessPenalty(int side, int offender, PenaltyType type, PenaltyKind kind = PenaltyKind::OneSide,
                       std::string_view name = {});
    // A goal by `side`: a power-play goal ends the shortest penalty that
    // ends on a goal.
    void penaltyGoal(int side);
    // Runs the box clocks by a play's seconds; men whose time is up return.
    // `sinceLastRun`: the calls made since the clock last ran (in the play
    // just over) keep their full time.
    void runPenaltyClock(double seconds, bool sinceLastRun = false);
    // Two men drop the gloves; `keener` is the side of the more willing one.
    void fight(std::array<int, 2> fighter, int keener);
    // A man is hurt and misses `games` games after this one (0: only the
    // rest of the period or the game).
    void injure(int side, int slot, int games);
    // A penalty shot for `side` whose man `fouled` was hauled down on a
    // breakaway; true on a goal. Leaves the next faceoff in PlayZone.
    bool PenaltyShot(int side, int fouled);
    // The step of the "PENALTY-SHOT" state: the shot, told and counted.
    void PenaltyShotStep();
    // A penalty shot or shootout attempt by `shooter` of `side` in the
    // shooter's and goalie's lines; the shooter's goal only with `countGoal`.
    void countPenaltyShot(int side, int shooter, bool goal, bool countGoal);
    // A foul on a breakaway or on the attack may give a penalty shot instead.
    void callPenaltyShot();
    // The penalty and fight chances of a step outside the offensive zone.
    void PenaltyChances(PlayChances& c);
    [[nodiscard]] int minPenaltyLeft() const;
    // In the box, out of the game or hurt.
    [[nodiscard]] bool offIce(int side, int slot) const;

private:
    // ---- Penalties (penalties.cpp) ----
    void onPenalty(int side);
    void callPenalty(int side, int offender, PenaltyType type, PenaltyKind kind, std::string_view name);
    void CallDelayedPenalty(bool goalScored);
    bool oddPenalty(int side);
    void wordsWithTheReferee(int side, int offender, PenaltyType type);
    void delayOfGame();
    void afterPlayPenalties();
    // `delayed`: the call of a delayed penalty; `onGoal`: one the play ran on to a goal.
    PenaltyType penaltyTypeFor(int side, int offender, PenaltyKind kind, bool delayed = false, bool onGoal = false);
    int pickPenalized(int side);
    int penaltyServer(int side);
    BoxPenalty& addToBox(int side, int offender, int server, PenaltyType type, int seconds);
    void creditPenalty(int side, int slot, PenaltyType type, int minutes);
    void tellPenalty(int side, int offender, PenaltyType type, std::string_view name, int minutes);
    void endPenalty(int side, std::size_t index, bool told = true);
    void startWaitingPenalties(int side);
    void recountSkaters();
    [[nodiscard]] bool heldAsKeptOff(int side, bool* anyOff = nullptr) const;
    // heldAsKeptOff for the quiet step, from what was found when nobody was
    // out, hurt or held, while that still stands.
    [[nodiscard]] bool keptOffQuiet(int side);
    // Who is out, hurt, held or fit to play has changed: the kept answer of
    // keptOffQuiet is asked again.
    void keptOffChanged() {
        keptOffQuiet_[0].goalie = kNoSlot - 1;
        keptOffQuiet_[1].goalie = kNoSlot - 1;
        boxCount_.kept = false;
        heldSettled_ = {false, false};
    }
    // The box as recountSkaters reads it, packed into boxCount_'s form;
    // false when a box holds more than that keeps.
    [[nodiscard]] bool packBoxes(std::array<std::array<std::uint64_t, 6>, 2>& boxes,
                                 std::array<std::uint8_t, 2>& sizes) const;
    // Skaters a side dresses on the ice at full strength: five, or in
    // overtime four or three by the league's overtime rule.
    [[nodiscard]] int fullStrength() const;
    void countPowerPlay();
    void keepPenalizedOff(int side);
    [[nodiscard]] double eraPenaltyFactor() const;
    [[nodiscard]] double fightRate() const;
    int FightChance();
    bool FindFighters();
    void ScrumAfterWhistle();
    void HkInjury2017();
    int injuryGamesOwed(int side, int slot, int& left) const;
    void clearShortInjuries();

    // Chances: the parts of a step up to the table (chance_table.cpp).
    void drawShooterMood();
    int shooterMood();
    void moveForecheck();
    void chooseCarrier();
    void eraFactors();
    void eraFactorsFor(int side);
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
    double hitSteering(int side);
    void countHit();
    TurnoverKind turnoverKind();
    bool joinsRush(int side, int pos);
    void buildRush();
    void RushAssists();
    void onDelay();
    // Events: the play-by-play lines (narration.cpp).
    void initNarration();
    std::string_view phrase(int key);
    std::string_view phrase(int base, int count);
    int roll(int n) { return rng_.rand(n); }
    // Builds a sentence from its parts only when the game is told.
    template <class... P>
    std::string words(const P&... parts) const;
    LineMarks& say(std::string&& text, NamedMan opens = {}, NamedMan ends = {});
    LineMarks& sayFor(int side, std::string&& text, NamedMan opens = {}, NamedMan ends = {});
    void sayPossession(int side, int slot);
    void sayPass(int side, int from, int to);
    void sayShotResult();
    [[nodiscard]] std::string lastText() const;
    [[nodiscard]] int shooterDepth() const;
    [[nodiscard]] bool goalieBeaten(int side, int goalie) const;
    [[nodiscard]] const std::string& nameOf(int side, int slot) const;
    [[nodiscard]] std::string_view teamName(int side) const;
    [[nodiscard]] std::string_view cityOf(int side) const;
    void DescribeOpening();
    void DescribeNewGoalie(int side);
    void DescribeCircleChange(int side, int out, int in);
    void DescribeTension();
    void DescribeFaceoffResult(int winner);
    void DescribeShot();
    void DescribeSave();
    void DescribeShotsNoGoal();
    void DescribeMiss();
    void DescribeBlock(int side, int blocker);
    void DescribeGoalLead();
    void DescribeVideoReview();
    void DescribeGoalCredit(int scorer);
    void DescribeGoalColor(int scorer);
    void DescribeGoalClose(int scorer);
    void DescribeAssists();
    void DescribeKnockedAway(int side, int defender);
    void DescribeReboundClear();
    void DescribeOutOfPlay();
    // A clear the goalie had to stop; true when he was caught behind his
    // net and had to dive, which freezes the puck.
    bool DescribeClearSave();
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
    void DescribePeriodEnd(bool last);
    void DescribePenalty(int side, int offender, PenaltyType type, std::string_view name, int minutes);
    void DescribeBackOnIce(int side, int slot);
    void DescribeDelayedPenalty(int side, int offender);
    void DescribeFight(std::array<int, 2> fighter);
    void DescribePenaltyShot(int side, int shooter, bool goal);
    void DescribePenaltyShotCall();
    void DescribeInjury(int side, int slot, int games);
    void DescribeGoaliePull(int side);
    void DescribeGoalieRelief(int side, int out);
    void DescribeTimeout(int side);
    void DescribeLineChange(int side);
    void countScoringChance(double quality);
    void DescribeGameSituation();
    void DescribeDeke(bool beatHim);
    void DescribeShootoutAttempt(int side, int shooter, bool goal);
    // The chances' part of InitGame: goalie form and calibration.
    void initChances();
    // Carrier, passers and spots for the zone a result left the puck in.
    void prepareZone();
    [[nodiscard]] double goalieFatigue(int side, int goalie, bool rush) const;
    // Of the side's goalie, pulled or not; 2008 unknown. Inline: the era
    // memos ask it for both sides at every step.
    [[nodiscard]] int goalieYear(int side) const {
        const int g = s_.goalie[static_cast<std::size_t>(side)];
        const int year = g == kNoSlot ? 0 : sideOf(side).player(g).PlayerYear;
        return year < 1910 || year > 2050 ? 2008 : year;
    }
    [[nodiscard]] int goalieYearOnIce(int side) const;  // 0 with nobody in net
    [[nodiscard]] double basePct() const;
    bool trailingLate();
    // Helpers of the picks (find_tools.cpp).
    [[nodiscard]] int slotAt(int side, int pos) const {
        if (pos < 0 || pos >= static_cast<int>(kIcePositions)) return kNoSlot;
        return s_.onIce[static_cast<std::size_t>(side)].slot[static_cast<std::size_t>(pos)];
    }
    [[nodiscard]] int positionsInPlay(int side) const {
        return s_.GoaliePulled[static_cast<std::size_t>(side)] ? 6 : 5;
    }
    [[nodiscard]] int positionOf(int side, int slot) const {
        if (slot == kNoSlot) return kNoPos;
        const OnIce& ice = s_.onIce[static_cast<std::size_t>(side)];
        for (int pos = 0; pos < static_cast<int>(kIcePositions); ++pos)
            if (ice.slot[static_cast<std::size_t>(pos)] == slot) return pos;
        return kNoPos;
    }
    [[nodiscard]] int firstOccupied(int side) const;
    // The man of `side` who shadows the other team's `target`, when the
    // side's plan pairs them and both are on the ice; kNoSlot otherwise.
    [[nodiscard]] int shadowOf(int side, int target) const;
    [[nodiscard]] bool alternateReality() const { return session_.league().rules.AlternateRealityCheck == 1; }
    [[nodiscard]] bool available(int side, int slot) const {
        return slot != kNoSlot && !s_.find.PlayerOut[static_cast<std::size_t>(side)][static_cast<std::size_t>(slot)];
    }
    [[nodiscard]] bool stickBroken(int side, int slot) const {
        return slot != kNoSlot && s_.find.BrokenStick[static_cast<std::size_t>(side)][static_cast<std::size_t>(slot)];
    }
    // Asked every step; the teams and rules behind it hold through a game,
    // so each side's answer is kept once worked out (cleared at InitGame).
    [[nodiscard]] bool shotSteering() {
        const int known = shotSteeringMemo_[static_cast<std::size_t>(s_.PuckTeam)];
        return known >= 0 ? known == 1 : workOutShotSteering();
    }
    bool workOutShotSteering();
    [[nodiscard]] double perMinute(int side, int slot, RateSet set, int count) const;
    int weightedPick(const std::array<std::int32_t, kIcePositions>& w, int rows);
    // What the weights of one draw share, the same for every man weighed:
    // worked out once a draw rather than once a man.
    struct PickTerms {
        bool powerPlay = false;    // the side with the puck has more men on
        bool shortHanded = false;  // it has fewer
        bool steering = false;     // see shotSteering
        bool alternate = false;    // see alternateReality
        // For the passers: whether anyone has the puck, and the best
        // playmaker on the ice with his assists.
        bool loneCarrier = false;
        int top = kNoSlot;
        double topAssists = 0;
    };
    PickTerms pickTerms();
    // The weights of the man at `pos`, in `slot` (one who is there and fit).
    std::int32_t carrierWeight(int pos, int slot, int unitPPG, const PickTerms& terms);
    std::int32_t passerWeight(int pos, int slot, bool second, const PickTerms& terms);
    std::int32_t penaltyWeight(int side, int pos);
    int passerStickFallback(int pos) const;
    int drawPasser(bool second, const PickTerms& terms);
    // Era figures of a year for a side's level (college columns for a
    // college team); a year outside the table takes `fallback`'s. The
    // answer is kept only until a later call: copy it to hold it longer.
    // A game asks about a handful of years, many times a step each: the kept
    // answers are searched where the question is asked, and only a new one
    // goes out to the era table.
    [[nodiscard]] const EraFigures& eraFiguresOf(int year, int side, int fallback = 2008) const {
        const std::uint64_t years = eraYearsKey(year, fallback);
        for (const EraFiguresMemo& m : eraFiguresMemo_)
            if (m.years == years && m.side == side) return m.figures;
        return workOutEraFigures(year, side, fallback);
    }
    static std::uint64_t eraYearsKey(int year, int fallback) {
        return std::uint64_t{static_cast<std::uint32_t>(year)} << 32 | static_cast<std::uint32_t>(fallback);
    }
    const EraFigures& workOutEraFigures(int year, int side, int fallback) const;

    // A step's parts, in the order PlayStep runs them.
    Result drawResult(const PlayChances& c);
    // Adds a played step to the tally: the zone it started in, the result
    // drawn and the puck team's edge in men then.
    void countStep(Zone zone, Result drawn, int edge);
    void mendSticks(bool stoppage);
    // The factor on the call against the side without the puck from one of
    // its skaters' replay penalty minutes against his real ones.
    double penaltySteering();
    [[nodiscard]] double disciplineFactor(int side) const;
    // The goalie who starts today for `side`, kNoSlot for the chart's first.
    int dayStarter(int side, const LineupTeam& team);
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
    void onPass();
    void onTurnover(Result r);

    void SetPlayRating();
    void SetPlayTime();
    void RunClock();
    void endOfPeriod();
    void GameOverCheck();
    void finishGame(GameEnd how);

    // Lines and the ice.
    void putUnitOnIce(int side);
    // The placement of a request, kept while the driver runs without a
    // screen for the few requests and fit lists a game keeps making; forgotten
    // when the driver starts, at an edit and when a game starts.
    IcePlacement placeUnit(int side, const IceRequest& req);
    // A kept placement: the request packed in a word (0: nothing kept), the
    // men fit to play a bit a slot, and where they went.
    struct KeptPlacement {
        std::uint64_t key = 0;
        std::uint64_t fit = 0;
        IcePlacement placed{};
    };
    // By side, two placements to each set, the set picked by a hash of the
    // request and the fit list, the one used last first. A game makes a few
    // dozen of them a side (the units of each manpower, and each of those
    // again while a man sits in the box); a ring small enough to search in
    // turn dropped the even-strength ones a power play came after, and the
    // search of it cost more than a hash.
    static constexpr std::size_t kPlacementSets = 32;
    std::array<std::array<std::array<KeptPlacement, 2>, kPlacementSets>, 2> placementMemo_{};
    // lineMen's answers by side, the forward lines and then the pairs, kept
    // on the same terms as the placements: the line tables change only
    // while the driver waits on a person. The top bit says the line was
    // looked at (no slot uses it); zero, that it wasn't.
    std::array<std::array<std::uint64_t, 2 * kLineSets>, 2> lineMenMemo_{};
    // What the plans say of the game's time by unit and of the strategy they
    // start from, by side, kept on the same terms as the placements: a plan
    // changes only while the driver waits on a person, and a line change
    // asks at every stop.
    struct KeptPlan {
        bool known = false;
        UsageShares shares{};
        LiveStrategy strategy{};
    };
    std::array<KeptPlan, 2> planMemo_{};
    const KeptPlan& keptPlan(int side);
    // The placements, line men and plans above may be kept only while the
    // driver runs with no screen: only a person changes lines and plans, and
    // only while the driver waits on him.
    [[nodiscard]] bool keepsLineups() const { return driverRunning_ && s_.NoDisplay; }
    void forgetKeptLineups() {
        placementMemo_ = {};
        lineMenMemo_ = {};
        planMemo_ = {};
    }
    // The play time `pt` at the pace of the era of a man on the ice.
    double eraPace(double pt);
    // What the pace takes from a year's era figures (rated: the figures
    // can rate a pace at all), kept for the last few years asked about;
    // cleared when a game starts.
    struct EraPace {
        int year = 0;
        bool rated = false;
        double events = 0;
        double factor = 1;
        double penalties = 0;
        double pim = 0;
    };
    std::array<EraPace, 4> eraPaceMemo_{};
    std::size_t eraPaceMemoNext_ = 0;
    const EraPace& eraPaceOf(int year);
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
    // Momentum fades with the play, and a side on the power play plays free
    // of any that stands against it.
    void momentumOverTime();

    // ---- Coach (computer_coach.cpp): the computer's calls, line changes,
    // the goalie pull, coach timeouts, fatigue and ice time.
public:
    // The call the computer makes for `side` in the present state.
    Call ChooseCall(int side);
    // The breakout call of the side with the puck (at a draw: its faceoff call).
    Call ChooseOffensePlay(int side, bool faceoff);
    Call ChooseShooterPlay(int side);
    // ---- A human coach's bench (line_change.cpp) ----
    // Why `side` may not change lines now; empty when it may.
    [[nodiscard]] std::string lineChangeRefusal(int side) const;
    [[nodiscard]] LineChoice linesOnIce(int side) const;
    // Sends out forward unit `forwards` and defense pair `pair` (from 1; 0
    // keeps the one on the ice). Returns the refusal, empty when done.
    std::string HumanLineChange(int side, int forwards, int pair);
    // Takes the goalie out for an extra attacker, or puts him back.
    std::string HumanGoaliePull(int side, bool pull);
    // The change the computer coach would make now ("CPU Change").
    std::string RollLines(int side);

    // The position (0 to 5) the play goes to in the offensive zone, or
    // kNoTarget, from the side's offenseTargetRows.
    int ChooseOffenseTarget(int side, const std::array<TargetRow, 6>& rows);
    // Lays the plan's line-specific and late-game strategies over the live
    // values of both sides.
    void CoachInPlay();
    // A computer coach's timeout at a stoppage late in a close game.
    void CoachTimeout();
    // The step's change of goalie by a computer coach after a goal against
    // (goalie_change.cpp): `scoreBefore` is the score as the play began.
    void goalieChangeAfterGoal(const std::array<int, 2>& scoreBefore);
    // A broadcast break at the stoppage that ends the step; `previous` is
    // the result of the play before it.
    void tvTimeout(Result previous);
    // Seconds of the game, so far, each side's units have played.
    [[nodiscard]] double unitSeconds(int side, UnitKind kind, int unit) const;

private:
    void coachInit();
    void markEndGame();
    void loadMatchingPairs();
    [[nodiscard]] bool autoCallForHuman(int side);
    [[nodiscard]] int leadOf(int side) const;
    [[nodiscard]] double onIceOffense(int side) const;
    // The ratings of the men of `side` on the ice in `sit`, their broken
    // sticks counted when `sticks`, remembered for the few units and
    // situations a stretch of play keeps asking about. A man's ratings and
    // real figures don't change during a game, so the slots on the ice, who
    // of them is tired or without a stick and the situation decide the
    // answer.
    // The answer stays good only until the next question: a caller keeps a
    // copy of what it needs.
    [[nodiscard]] const UnitRatings& unitRatings(int side, bool sticks, const UnitSituation& sit) const;
    [[nodiscard]] double onIceDefense(int side) const;
    [[nodiscard]] std::array<TargetRow, 6> offenseTargetRows(int side) const;
    // 0 no change due, 1 the late game asks for its lines, 2 men tired or
    // past their shift.
    [[nodiscard]] int lineChangeDue(int side);
    void computerLineChange(int side, bool atFaceoff);
    void chooseUnits(int side, bool preferenceOnly);
    [[nodiscard]] bool unitRested(int side, int line, bool forwards, std::uint64_t fit);
    // The slots with a role on a forward line or pair, a bit a slot.
    [[nodiscard]] std::uint64_t lineMen(int side, int line, bool forwards);
    [[nodiscard]] std::uint64_t readLineMen(int side, int line, bool forwards);
    void computerGoaliePull(int side);
    void returnGoalie(int side);
    // The goalie to send in for the one just scored on, kNoSlot to keep him.
    int reliefGoalie(int side);
    [[nodiscard]] int spareGoalie(int side) const;
    void restoreEveryone();
    // Charges the play's `t` seconds and sets each man's energy from them.
    // Returns, by side, a bit for each slot whose fall in energy is drawn:
    // SetEnergy sets those, after everything else the clock draws.
    std::array<std::uint64_t, 2> chargePlayers(double t);
    void SetEnergy(const std::array<std::uint64_t, 2>& drawn);
    // Marks, by side, the slots whose fatigue the clock may move: the men
    // dressed and any whose rest isn't settled. Called as a game starts and
    // when everyone is rested.
    void trackFatigue();

    GameSession& session_;
    // The session's two sides as the engine reads them, many times a step:
    // the session keeps both for its life, so they are found once. Their
    // tables are changed through session_.side, which notes the change.
    std::array<const SideTables*, 2> sideTables_{};
    [[nodiscard]] const SideTables& sideOf(int side) const { return *sideTables_[static_cast<std::size_t>(side)]; }
    GameOptions options_;
    NullPresenter nullPresenter_;
    GamePresenter* presenter_;
    Random rng_;
    std::array<LineupTeam, 2> teams_{};
    GameState s_;
    const PhraseTable* phrases_;
    PlayLines play_;
    NarrationState told_;
    PlayChances chances_{};
    PlayTally tally_{};
    // Manpower as the step began: its time is power-play or short-handed
    // time by these counts, whatever the play itself called or ended.
    std::array<int, 2> stepSkaters_{5, 5};
    bool fightCounts_ = false;  // the rosters carry real fight counts
    bool driverRunning_ = false;

    // Answers kept for unitRatings by the key of what they rest on (0: none
    // kept), each at a place picked by a hash of its key; cleared when a
    // game starts.
    struct UnitMemo {
        std::uint64_t key = 0;
        UnitRatings out{};
    };
    mutable std::array<UnitMemo, 64> unitMemo_{};
    // unitRatings without a kept answer: out of line, so the frequent look-up
    // carries none of its stack. Keeps the answer under `key` (0 keeps none).
    const UnitRatings& rateUnit(int side, bool sticks, const UnitSituation& sit, std::uint64_t key,
                                UnitMemo& kept) const;
    // The era factors and the base shooting percentage last worked out for
    // each side with the puck, with the goalies' years they rest on: they
    // change only with a goalie. The puck goes back and forth, so each side
    // keeps its own.
    struct EraFactorsMemo {
        int side = -1;
        std::array<int, 2> years{};
        double shotsPerGame = 0;
        double penaltyFactor = 0;
    };
    std::array<EraFactorsMemo, 2> eraMemo_{};
    struct BasePctMemo {
        bool known = false;
        std::array<int, 2> years{};
        double pct = 0;
    };
    mutable std::array<BasePctMemo, 2> basePctMemo_{};
    // The real power-play and short-handed goals of each side's roster: the
    // real lines and the rosters hold still through a game. Worked out at
    // the first step that asks; cleared when a game starts.
    struct SpecialGoals {
        bool known = false;
        int powerPlay = 0;
        int shortHanded = 0;
    };
    std::array<SpecialGoals, 2> rosterSpecialGoals_{};
    const SpecialGoals& rosterSpecialGoals(int side);
    // What the fatigue charge, the line change and the pace of play read of
    // a man's record and rates every step, by side and slot, kept together
    // so they read one small entry: the record and rates hold through a
    // game. Laid down as a game starts.
    struct ManFacts {
        int paceYear = 2014;      // the year of his era's pace
        int pullBelow = 80;       // the coach pulls him at this energy and a little above
        int longerStint = 0;      // seconds a man of an early era stays out past the usual
        double realMinutes = 0;   // real minutes a game
        double minutesRatio = 1;  // replay minutes a game against real ones
        double limitFactor = 1;   // on the rate of a man with a long shift limit
        int replayGames = 0;
        bool goalie = false;
        bool defenseman = false;
        bool minutes10 = false;  // real minutes a game of 10 or more
        bool minutes18 = false;  // of 18 or more
        bool college = false;    // a college player
        bool enforcer = false;
        double fightsPer1000 = 0;  // his real fights a thousand minutes
        double indiscipline = -1;  // his penalty rate against his era's, for the unit ratings
        // The fatigue charge's chances for him, as his minutes set them: that
        // he is taken for a top-line man, that a man of 18 minutes tires
        // sooner, and the running sums of the chances of a long stint's
        // swing of +1, -2 and -1 seconds (the rest is none), with whether
        // the swing is certain and takes no draw, and what it then is.
        double topLineChance = 0;
        double tireChance18 = 0;
        std::array<double, 3> swingBelow{};
        bool swingCertain = true;
        double swingSure = 0;  // the swing when it is certain
    };
    std::array<BySlot<ManFacts>, 2> manFacts_{};
    // What kind of team each side is, read from its record with the men's facts.
    struct SideFacts {
        bool college = false;
        bool typeD = false;
        bool year2017 = false;  // the team plays in 2017 or later
    };
    std::array<SideFacts, 2> sideFacts_{};
    // The teams' era on the rate of fights: it rests on the years of the
    // two teams alone. Laid down with the facts above.
    double fightEraFactor_ = 1;
    // The start of a man's weight as a carrier, by side and slot: his share
    // of power-play goals and the weight from his shots less his set-up
    // play, without and with power-play scorers on his unit. Laid down with
    // the facts above.
    struct CarrierBase {
        std::array<double, 2> share{.25, .25};
        std::array<std::int32_t, 2> weight{};
        int realPPG = 0;  // his real power-play goals
        // His coach's shot usage (3 when unset) as a factor of the weight,
        // and whether his shot rate may be steered: a usage of 3 and both
        // his real and replay shot rates above zero.
        double usageFactor = 1;
        bool usageSet = false;
        bool steerable = false;
        // The chances of his two pairs of tests of shots, assists and goals
        // that must both pass (a set-up man shoots less, a scorer more): one
        // draw each against the product of the pair's chances.
        double setUpChance = 0;
        double scorerChance = 0;
    };
    std::array<BySlot<CarrierBase>, 2> carrierBase_{};
    // What a man's weight as a passer starts from, by side and slot: his
    // real assists (at most 7), goals and shots a 60 minutes, his replay
    // assists, the weight from his assists with nobody on the puck and
    // with a carrier (their fifth power), and whether he has two games in
    // the replay.
    struct PasserBase {
        double assists = 0;
        double goals = 0;
        double shots = 0;
        double replayAssists = 0;
        std::int32_t loneWeight = 1;
        std::int32_t weight = 1;
        bool replayGames2 = false;
        // The first passer's five tests of his assists, goals and shots,
        // each of which multiplies his weight by 5, as one draw of how many
        // pass (passerFives).
        PasserFives fives;
    };
    std::array<BySlot<PasserBase>, 2> passerBase_{};
    void layPickBase();
    void layManFacts();
    static void layFatigueChances(ManFacts& facts);
    // The slots chargePlayers visits, by side (see trackFatigue); a man put
    // on the ice is added, and one whose fatigue has settled on the bench
    // leaves.
    std::array<std::uint64_t, 2> fatigueTracked_{};
    // By side, what heldAsKeptOff read besides the tables keptOffChanged
    // watches, when it last found the side as keepPenalizedOff would leave
    // it: the goalie's slot (no slot can hold kNoSlot - 1, which says
    // nothing is kept) and, when anyone is out or hurt, who was on the ice.
    struct KeptOffQuiet {
        int goalie = kNoSlot - 1;
        bool anyOff = false;
        OnIce ice;
    };
    std::array<KeptOffQuiet, 2> keptOffQuiet_{};
    // What recountSkaters last came to while someone was in the box: the
    // boxes as it left them (each penalty's server, order, and whether it
    // runs and leaves the side short) and the count. While all of it and
    // the tables keptOffChanged watches stand, a count again would start,
    // hold and count nothing new, and only the men on the ice need a look.
    // keptOffChanged drops it.
    struct BoxCount {
        bool kept = false;
        int full = 0;
        std::array<int, 2> skaters{};
        std::array<std::uint8_t, 2> sizes{};
        std::array<std::array<std::uint64_t, 6>, 2> boxes{};
    };
    BoxCount boxCount_{};
    // By side, keepPenalizedOff has run since anything it reads last
    // changed: who is out, hurt, held or fit (keptOffChanged) or who sits in
    // the box (addToBox, endPenalty). Another run would move nobody.
    std::array<bool, 2> heldSettled_{};
    // Answers kept for eraFiguresOf: the era table and the teams' levels
    // hold through a game. Cleared when a game starts.
    struct EraFiguresMemo {
        std::uint64_t years = 0;  // the year and the fallback, as eraYearsKey packs them
        int side = -1;            // no side: nothing kept here
        EraFigures figures{};
    };
    mutable std::array<EraFiguresMemo, 6> eraFiguresMemo_{};
    mutable std::size_t eraFiguresMemoNext_ = 0;
    // CoachInPlay as the driver asks for it: again only when what it last
    // worked from has changed. Within a run of the driver the strategies it
    // lays down depend on nothing else (the plans and lines change only
    // while the driver waits), and the stages of a faceoff ask again with
    // all of it unchanged. Forgotten when the driver starts and when the
    // coaches' strategies are set afresh.
    void coachInPlayOnChange();
    struct CoachInPlayKey {
        bool valid = false;
        std::array<CoachKind, 2> coaches{};
        std::array<int, 2> skaters{};
        std::array<std::array<int, 3>, 2> forwards{};
        std::array<int, 2> score{};
        int lateColumn = 0;
        bool late = false;
        bool operator==(const CoachInPlayKey&) const = default;
    } coachInPlayKey_;
    // shotSteering's answer by the side with the puck: -1 unknown, else 0 or 1.
    std::array<int, 2> shotSteeringMemo_{-1, -1};

    int periods_ = 3;
    int minutes_ = 20;
    int overtimeMinutes_ = 0;
    int overtimeType_ = 0;
    int shootoutRounds_ = 0;
};

}  // namespace tallyrink
