#include "engine/game.h"
#include "engine/goalie_rest.h"

#include <fmt/core.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

#include "team/positions.h"
#include "team/slot_scan.h"

namespace tallyrink {

namespace {

constexpr int kEvenForwardUnits = 4;
constexpr int kEvenPairs = 3;
constexpr int kSpecialUnits = 2;
constexpr int kMaxShootoutRound = 50;

int other(int side) { return side == 0 ? 1 : 0; }
constexpr double kPlayPace = 1.04;

std::size_t at(int i) { return static_cast<std::size_t>(i); }

}  // namespace

std::string_view gameEndText(GameEnd e) {
    switch (e) {
        case GameEnd::Regulation:
            return "regulation";
        case GameEnd::Overtime:
            return "overtime";
        case GameEnd::Shootout:
            return "shootout";
        case GameEnd::Tie:
            return "tie";
        case GameEnd::None:
            break;
    }
    return "not finished";
}

Game::Game(GameSession& session, GameOptions options, GamePresenter* presenter)
    : session_(session),
      sideTables_{&std::as_const(session).side(kVisitor), &std::as_const(session).side(kHome)},
      options_(options),
      presenter_(presenter ? presenter : &nullPresenter_),
      rng_(options.seed),
      phrases_(options.phrases ? options.phrases : &builtInPhrases()) {
    const RulesRecord& rules = session_.league().rules;
    bool playoff = session_.PlayoffGame;
    periods_ = std::max(1, periodsPerGame(rules));
    minutes_ = std::max(1, periodMinutes(rules));
    overtimeMinutes_ = overtimeMinutes(rules, playoff);
    overtimeType_ = overtimeType(rules, playoff);
    shootoutRounds_ = tallyrink::shootoutRounds(rules, playoff);
}

// ---- Start ------------------------------------------------------------------

void Game::InitGame() {
    s_ = GameState{};
    keptOffChanged();
    unitMemo_ = {};
    eraMemo_ = {};
    forgetKeptLineups();
    eraPaceMemo_ = {};
    basePctMemo_ = {};
    rosterSpecialGoals_ = {};
    shotSteeringMemo_ = {-1, -1};
    eraFiguresMemo_ = {};
    fightCounts_ = false;
    s_.NoDisplay = options_.noDisplay;
    s_.Clock = periodSeconds();
    // Room for a long night up front, so nothing grows while the game runs.
    s_.shotsByPeriod.reserve(8);
    s_.shotsByPeriod.assign(1, {0, 0});
    s_.goals.reserve(24);
    s_.penalties.reserve(48);
    for (auto& box : s_.pen.box) box.reserve(16);
    for (int side : {kVisitor, kHome}) {
        SideTables& t = session_.side(side);
        LineupTeam& team = teams_[at(side)];
        team = session_.lineupTeam(side);
        team.candidate = BuildFitList(t.GameRoster, t.TeamId, t.DressedToday);
        for (std::size_t slot = 0; slot < kRosterSlots; ++slot) {
            s_.Energy[at(side)][slot] = t.MaxEnergy[slot];
            if (t.player(static_cast<int>(slot)).Fights[0] > 0) fightCounts_ = true;
        }
        s_.goalie[at(side)] = chooseGoalie(team, dayStarter(side, team));
        putUnitOnIce(side);
        s_.relief.starter[at(side)] = s_.goalie[at(side)];
        clearGameLines(t.GameRoster, t.team);
    }
    s_.events.blocksByPeriod.reserve(8);
    s_.events.blocksByPeriod.assign(1, {0, 0});
    initNarration();
    coachInit();
    initChances();
    layManFacts();
    layPickBase();
    fatigueTracked_ = {};
    trackFatigue();
}

// A league game of the season rotates the goalies; the playoffs and
// exhibitions ride the first of the chart.
int Game::dayStarter(int side, const LineupTeam& team) {
    if (session_.PlayoffGame || session_.GameType != 'L') return kNoSlot;
    const SideTables& t = sideOf(side);
    return startingGoalie(team, {t.team.TeamFor[0].GP, t.SeasonGames}, rng_);
}

void Game::playToEnd() {
    InitGame();
    SetPlayBox();
}

// ---- The driver and the two commands ----------------------------------------

int Game::decidingSide() const {
    if (isFaceoff(s_.PlayZone)) return faceoffStage(s_.PlayZone) == 1 ? kVisitor : kHome;
    if (s_.PlayZone == Zone::ContinueBox) return other(s_.ContinueTeam);
    if (s_.PlayZone == Zone::Shootout) return s_.shootoutSide;
    return s_.PuckTeam;
}

void Game::OffenseCommand(Call call, int targetPos) {
    if (targetPos >= 0 && targetPos < static_cast<int>(kIcePositions))
        s_.find.PlayTarget = s_.onIce[at(s_.PuckTeam)].slot[static_cast<std::size_t>(targetPos)];
    OffenseCommand(call);
}

void Game::OffenseCommand(Call call) {
    if (s_.GameOverFlag) return;
    s_.PlayCall = call;
    Zone z = s_.PlayZone;
    if (isFaceoff(z)) {
        s_.FaceoffCall[at(decidingSide())] = call;
        ContinueCommand();
        return;
    }
    if (z == Zone::Shootout || z == Zone::ContinueBox || z == Zone::PenaltyShot) {
        PlayStep();
        return;
    }
    s_.FaceoffCall[at(s_.PuckTeam)] = call;
    // The other coach may answer a line change, or a power play setting up
    // in its own end, with a change of his own before the play runs.
    bool answer = s_.lineChangeMade[at(s_.PuckTeam)] || (powerPlay(s_.PuckTeam) && z == Zone::DefenseZone);
    if (answer) {
        s_.ContinueZone = z;
        s_.ContinueCall = call;
        s_.ContinueTeam = s_.PuckTeam;
        s_.PlayZone = Zone::ContinueBox;
        s_.lineChangeMade = {false, false};
        resumeDriver();
        return;
    }
    PlayStep();
}

void Game::ContinueCommand() {
    if (s_.GameOverFlag) return;
    if (s_.Paused) {  // the user's Continue after a stop
        s_.Paused = false;
        resumeDriver();
        return;
    }
    Zone z = s_.PlayZone;
    if (isFaceoff(z)) {
        if (faceoffStage(z) == 1) {
            s_.PlayZone = faceoffZone(faceoffSpot(z), faceoffEndSide(z), 2);
            resumeDriver();
            return;
        }
        FaceoffStep();
        PlayStep();
        return;
    }
    if (z == Zone::ContinueBox) {
        s_.PlayZone = s_.ContinueZone;
        s_.PlayCall = s_.ContinueCall;
        s_.PuckTeam = s_.ContinueTeam;
        s_.lineChangeMade = {false, false};
        PlayStep();
        return;
    }
}

PlayChances Game::ProbeOnly() {
    bool was = s_.ProbeOnly;
    // A look at the chances leaves the game's own draws as they were.
    Random saved = rng_;
    s_.ProbeOnly = true;
    PlayStep();
    s_.ProbeOnly = was;
    rng_ = saved;
    return chances_;
}

// ---- One step -----------------------------------------------------------------

void Game::PlayStep() {
    if (s_.Paused || s_.GameOverFlag) return;
    if (s_.PlayZone == Zone::Shootout) {
        if (s_.ProbeOnly) return;
        play_.startPlay();
        ShootoutStep();
        GameOverCheck();
        if (shown()) presenter_->ShowPlayLines(*this, playLines());
        play_.endPlay();
        resumeDriver();
        return;
    }
    if (s_.PlayZone == Zone::PenaltyShot) {
        if (!s_.ProbeOnly) PenaltyShotStep();
        return;
    }
    if (s_.PlayZone == Zone::ContinueBox) {
        // The step that waited on the other coach's answer runs as it was
        // called, whatever he sent.
        s_.PlayZone = s_.ContinueZone;
        s_.PlayCall = s_.ContinueCall;
        s_.PuckTeam = s_.ContinueTeam;
    }
    if (!s_.ProbeOnly) mendSticks(isFaceoff(s_.PlayZone));
    if (isFaceoff(s_.PlayZone)) {
        // Called straight on a draw (a probe of a faceoff state reads the
        // winner's first play only after the draw is made).
        if (s_.ProbeOnly) return;
        FaceoffStep();
    }
    if (!s_.ProbeOnly) {
        if (!s_.entryFromFaceoff) play_.startPlay();  // the draw's lines belong to this play
        s_.EntryZone = s_.PlayZone;
        if (!isOffenseState(s_.PlayZone) && s_.PlayRating == 0) SetPlayRating();
    }
    eraFactors();
    if (!s_.ProbeOnly) {
        moveForecheck();
        s_.LastPlayCall = s_.PlayCall;
    }
    chooseCarrier();
    fillChanceTable(chances_);
    if (s_.ProbeOnly) return;
    s_.find.LooseInClose = false;

    s_.penaltyOn = -1;
    Result previous = s_.LastPlayResult;
    s_.PlayResult = applyOverrides(drawResult(chances_));
    s_.StepPuckTeam = s_.PuckTeam;
    const Zone startZone = s_.PlayZone;
    const Result drawn = s_.PlayResult;
    const int edge = strengthEdge();
    stepSkaters_ = s_.Skaters;
    // A dump-in is told and played on for the one step that follows it.
    const bool afterDump = s_.events.dumpIn;
    const std::array<int, 2> scoreBefore = s_.Score;
    ApplyPlay();
    if (afterDump) s_.events.dumpIn = false;
    countStep(startZone, drawn, edge);
    goalieChangeAfterGoal(scoreBefore);
    if (rng_.rand(35) == 1) s_.find.LooseInClose = true;
    s_.find.newPlay = true;
    SetPlayRating();
    s_.LastPlayResult = s_.PlayResult;
    s_.entryFromFaceoff = false;
    s_.OffensiveDraw = false;
    s_.lineChangeMade = {false, false};
    tvTimeout(previous);
    momentumOverTime();
    CoachTimeout();
    RunClock();
    GameOverCheck();
    ++s_.steps;
    if (shown()) {
        presenter_->ShowClock(*this);
        presenter_->ShowIce(*this);
        if (s_.PlayZone == Zone::OffenseZone) presenter_->ShowOffenseTargets(*this);
        presenter_->ShowPlayLines(*this, playLines());
    }
    play_.endPlay();
    resumeDriver();
}

// A man with a broken stick gets a new one on the bench, and everybody has
// one by the time the puck is dropped.
void Game::mendSticks(bool stoppage) {
    for (int side : {kVisitor, kHome}) {
        auto& broken = s_.find.BrokenStick[at(side)];
        // Most steps nobody's stick is broken: one look over the whole row.
        if (std::memchr(broken.data(), true, broken.size()) == nullptr) continue;
        for (std::size_t slot = 0; slot < broken.size(); ++slot)
            if (broken[slot] && (stoppage || !s_.onIce[at(side)].holds(static_cast<int>(slot)))) broken[slot] = false;
    }
}

void Game::countStep(Zone zone, Result drawn, int edge) {
    auto z = static_cast<std::size_t>(zone);
    ++tally_.steps[z];
    tally_.seconds[z] += s_.PlayTime;
    ++tally_.results[z][static_cast<std::size_t>(drawn)];
    if (drawn == Result::Penalty) ++tally_.penaltyDraws;
    if (!isShotResult(drawn)) return;
    auto shotClass = static_cast<std::size_t>(std::clamp(chances_.ShotClass, 0, 5));
    auto strength = edge > 0 ? TallyStrength::PowerPlay : edge < 0 ? TallyStrength::ShortHanded : TallyStrength::Even;
    tally_.byClass[shotClass].count(drawn, chances_.GoalPct);
    tally_.byStrength[static_cast<std::size_t>(strength)].count(drawn, chances_.GoalPct);
}

Result Game::drawResult(const PlayChances& c) {
    int r = rng_.rand(1000);
    const bool forced = s_.find.DrawForcedEntry;
    int total = forced || s_.events.ForcedEntry ? 1000 : c.EntryChance;
    if (r <= total) return !forced && rng_.rand(100) <= 20 ? Result::OffenseShooter : Result::OffenseZone;
    total += c.PenaltyOppChance;
    if (r <= total) {
        s_.penaltyOn = s_.OtherTeam();
        return Result::Penalty;
    }
    total += c.PenaltyOwnChance;
    if (r <= total) {
        s_.penaltyOn = s_.PuckTeam;
        return Result::Penalty;
    }
    total += c.PenaltyBothChance;
    // A fight lies over the start of the pass band: it is taken first and
    // doesn't move the bands after it.
    if (r <= total + c.FightChance) {
        s_.penaltyOn = kBothSides;
        return Result::Penalty;
    }
    total += c.PassChance;
    if (r <= total) return s_.PlayCall == Call::Retreat ? Result::Retreat : Result::Pass;
    total += c.GoalChance;
    if (r <= total) return Result::Goal;
    total += c.SaveChance;
    if (r <= total) return Result::Save;
    total += c.BlockChance;
    if (r <= total) return Result::Block;
    total += c.MissChance;
    if (r <= total) return Result::Miss;
    total += c.ClearChance;
    if (r <= total) {
        if (s_.OffensiveDraw && s_.entryFromFaceoff) return Result::To;
        if (s_.PlayCall == Call::SkatePass) return Result::Miss;
        if (s_.PlayCall == Call::Clear && s_.PlayZone == Zone::DefenseZone && rng_.rand(100) <= 15)
            return Result::ToDefense;
        if (s_.PlayCall == Call::Clear && s_.PlayZone == Zone::NeutralZone && rng_.rand(100) <= 5)
            return Result::ToNeutral;
        return Result::Clear;
    }
    // A pulled goalie in the other end: a long shot can't be offside.
    if (!(s_.PlayCall == Call::Shoot && s_.GoaliePulled[at(s_.OtherTeam())])) total += c.OffsideChance;
    if (r <= total) return Result::Offsides;
    return splitTurnover(c);
}

Result Game::splitTurnover(const PlayChances& c) {
    double r2 = rng_.rnd();
    Result r = Result::To;
    if (r2 <= c.TurnoverDefenseShare)
        r = Result::ToDefense;
    else if (r2 <= c.TurnoverDefenseShare + c.TurnoverNeutralShare)
        r = Result::ToNeutral;
    else if (r2 <= c.TurnoverDefenseShare + c.TurnoverNeutralShare + c.TurnoverRushShare)
        r = Result::ToRush;
    bool pressing = isOffenseState(s_.PlayZone) || (s_.OffensiveDraw && s_.entryFromFaceoff);
    if (pressing && (r == Result::ToDefense || r == Result::ToNeutral)) r = Result::To;
    // A team that isn't ahead late doesn't give the leader a rush.
    if (r == Result::ToRush && s_.Period >= 3) {
        int puck = s_.Score[at(s_.PuckTeam)];
        int otherScore = s_.Score[at(s_.OtherTeam())];
        if (otherScore >= puck + rng_.rand(3) && rng_.rand(10) <= 7) r = Result::To;
        if (otherScore >= puck + 1 + rng_.rand(4) && rng_.rand(10) <= 7) r = Result::To;
    }
    // The power play gives the other side a chance to break out.
    if (rng_.rand(3) == 1 && powerPlay(s_.PuckTeam)) {
        const int opp = s_.OtherTeam();
        const SideTables& o = sideOf(opp);
        int shg = 0;
        for (int slot = 0; slot < static_cast<int>(kRosterSlots); ++slot)
            if (o.onTeam(slot)) shg += statLine(o.player(slot), StatLineIndex::Real).SHG;
        if (rng_.rand(10) <= 2) r = Result::ToRush;
        if (rng_.rand(10) <= 3 && shg >= rng_.rand(10)) r = Result::ToRush;
        if (o.team.TeamYear >= 1970 + rng_.rand(15) || rng_.rand(5) == 1) {
            int fwd = s_.onIce[at(opp)].slot[at(rng_.rand(3) - 1)];
            if (fwd != kNoSlot && o.player(fwd).RatingOffense >= 30 + rng_.rand(70)) r = Result::ToRush;
            int d = s_.onIce[at(s_.PuckTeam)].slot[at(2 + rng_.rand(2))];
            if (d != kNoSlot && sideOf(s_.PuckTeam).player(d).RatingDefense <= rng_.rand(70)) r = Result::ToRush;
        }
    }
    return r;
}

Result Game::applyOverrides(Result r) {
    bool lastPeriod = s_.Period == periods_;
    bool tied = s_.Score[0] == s_.Score[1];
    if (lastPeriod && tied && s_.Clock < 60 + rng_.rand(30) &&
        (r == Result::Block || r == Result::Save || r == Result::Miss) && rng_.rand(100) <= 5)
        r = Result::Goal;
    if (s_.PlayCall == Call::Clear && (isOffenseState(s_.PlayZone) || isShotResult(r))) r = Result::Clear;
    // A breakaway at an empty net goes in, and nothing the step drew
    // against either side is called.
    if (s_.PlayZone == Zone::Rush && s_.find.rush == RushType::OneZero && s_.GoaliePulled[at(s_.OtherTeam())]) {
        r = Result::Goal;
        s_.penaltyOn = -1;
    }
    // Carrying the puck up at an empty net: mostly it goes up ice, else it
    // is lost in one end or the other. A long unwatched game hurries less.
    if (s_.PlayCall == Call::Advance) {
        r = Result::ToDefense;
        if (rng_.rand(100) <= 20) r = Result::ToNeutral;
        if (s_.entryFromFaceoff && s_.OffensiveDraw) r = Result::To;
        if (!(s_.NoDisplay && s_.steps > 200) && rng_.rand(100) <= 60) r = Result::MoveUp;
    }
    // Late in a close game the puck is walked up quickly: the play moves up
    // and the next step draws again.
    bool late = (s_.Period >= periods_ && s_.Clock <= 120) || s_.Clock <= 30;
    bool ownHalf = s_.PlayZone == Zone::DefenseZone || s_.PlayZone == Zone::NeutralZone;
    bool netsManned = !s_.GoaliePulled[0] && !s_.GoaliePulled[1];
    if (late && ownHalf && netsManned && std::abs(s_.Score[0] - s_.Score[1]) <= 2 &&
        !(s_.entryFromFaceoff && s_.OffensiveDraw)) {
        switch (r) {
            case Result::OffenseShooter:
            case Result::OffenseZone:
            case Result::Miss:
            case Result::Block:
            case Result::Save:
            case Result::Goal:
            case Result::To:
            case Result::ToRush:
            case Result::ToNeutral:
            case Result::Offsides:
                r = Result::MoveUp;
                break;
            default:
                break;
        }
    }
    // Now and then the building holds up play early in a game: a fan, the
    // scoreboard, the horn, the lights or a broken pane of glass.
    if (s_.PlayZone == Zone::DefenseZone && s_.Clock < periodSeconds() * s_.Period - 40 && minPenaltyLeft() > 10 &&
        s_.Clock > 30 && s_.steps < 150 && rng_.rand(10000) == 1)
        return Result::Delay;
    return r;
}

// ---- The shootout -------------------------------------------------------------

int Game::FindShootoutShooter(int side) {
    const SideTables& t = sideOf(side);
    const LineupTeam& team = teams_[at(side)];
    auto& used = s_.ShootoutUsed[at(side)];
    for (int pass = 0; pass < 2; ++pass) {
        int best = kNoSlot;
        int bestScore = -1;
        for (int slot = 0; slot < static_cast<int>(kRosterSlots); ++slot) {
            const PlayerRecord& p = t.player(slot);
            if (!team.candidate[at(slot)] || isGoalie(p) || used[at(slot)]) continue;
            int score = p.DepthShootout * 1000 + p.RatingPenaltyShot * 100 + p.RatingShotOut + rng_.rand(5);
            if (score > bestScore) {
                bestScore = score;
                best = slot;
            }
        }
        if (best != kNoSlot) return best;
        used = {};  // everyone has shot: they go again
    }
    return kNoSlot;
}

void Game::ShootoutStep() {
    int side = s_.shootoutSide;
    int shooter = FindShootoutShooter(side);
    double penaltyShot = shooter == kNoSlot ? 5 : sideOf(side).player(shooter).RatingPenaltyShot;
    int goalie = s_.goalie[at(other(side))];
    double goalieRating = goalie == kNoSlot ? 65 : sideOf(other(side)).player(goalie).RatingGoalie;
    double c = std::clamp((penaltyShot - 6.2) * 45 + 300 + (6.5 - goalieRating / 10) * 20, 100.0, 600.0);
    int round = s_.ShootoutRound;
    if (round >= 2 + rng_.rand(3)) c *= side == kVisitor ? .5 : 1.5;
    if (round >= 4 + rng_.rand(3) && side == kHome) c = s_.ShootoutGoals[0] == s_.ShootoutGoals[1] ? 1000 : 0;
    bool goal = rng_.rand(1000) <= c;
    s_.PlayResult = goal ? Result::ShootoutGoal : Result::ShootoutMiss;
    s_.LastPlayResult = s_.PlayResult;
    if (shooter != kNoSlot) {
        s_.ShootoutUsed[at(side)][at(shooter)] = true;
        countPenaltyShot(side, shooter, goal, true);
    }
    if (goal) ++s_.ShootoutGoals[at(side)];
    DescribeShootoutAttempt(side, shooter, goal);

    int left = std::max(shootoutRounds_ - round, 0);
    int leftVisitor = left;
    int leftHome = left + (side == kVisitor ? 1 : 0);
    if (s_.ShootoutGoals[0] + leftVisitor < s_.ShootoutGoals[1] ||
        s_.ShootoutGoals[1] + leftHome < s_.ShootoutGoals[0]) {
        finishGame(GameEnd::Shootout);
        return;
    }
    if (side == kVisitor) {
        s_.shootoutSide = kHome;
        return;
    }
    s_.shootoutSide = kVisitor;
    if (++s_.ShootoutRound > kMaxShootoutRound) {
        // Never reached in practice: the late rounds decide. Settle it by lot.
        ++s_.ShootoutGoals[at(rng_.rand(2) - 1)];
        finishGame(GameEnd::Shootout);
    }
}

std::array<int, 2> Game::finalScore() const {
    std::array<int, 2> score = s_.Score;
    if (s_.endedBy == GameEnd::Shootout) ++score[s_.ShootoutGoals[0] > s_.ShootoutGoals[1] ? 0 : 1];
    return score;
}

// ---- Play rating ----------------------------------------------------------------

void Game::SetPlayRating() {
    // A faceoff is rated even whatever the play before it: nothing below
    // would count, so nothing is drawn for it.
    if (isFaceoff(s_.PlayZone)) {
        s_.PlayRating = 5;
        return;
    }
    double r = 5.7 + 2 * rng_.rnd() - 2 * rng_.rnd();
    bool against = (s_.PuckTeam == kVisitor && s_.Momentum < 0) || (s_.PuckTeam == kHome && s_.Momentum > 0);
    if (against) r -= std::fabs(s_.Momentum);
    if (s_.PlayZone == Zone::Rush) r += 2;
    if (s_.Skaters[0] == 4 && s_.Skaters[1] == 4) r += 1;
    if (s_.Skaters[0] == 3 && s_.Skaters[1] == 3) r += 2;
    const int puck = s_.PuckTeam;
    const int other = s_.OtherTeam();
    // A broken stick hurts his own side's play more than it helps the other.
    for (int pos = 0; pos < 5; ++pos) {
        if (stickBroken(puck, slotAt(puck, pos))) r -= 2;
        if (stickBroken(other, slotAt(other, pos))) r += .5;
    }
    // How the last play was called, and how it ended: each weighed half
    // the time, and drawn for only when it could count.
    const Zone last = s_.LastZone;
    const Call lastCall = s_.LastPlayCall;
    const bool callCounts = lastCall == Call::Penetrate || lastCall == Call::Safe || lastCall == Call::DumpChase ||
                            lastCall == Call::Clear || lastCall == Call::Aggressive || lastCall == Call::SkatePass;
    if (callCounts && rng_.rand(2) == 1) {
        switch (lastCall) {
            case Call::Penetrate:
                r += 1.5;
                break;
            case Call::Safe:
            case Call::DumpChase:
                if (last == Zone::DefenseZone) {
                    if (rng_.rand(100) <= 50) r -= rng_.rnd();
                } else if (last == Zone::NeutralZone) {
                    if (rng_.rand(100) <= 80) r -= 1.5 * rng_.rnd();
                } else {
                    r -= 2;
                }
                break;
            case Call::Clear:
                r += last == Zone::DefenseZone   ? .8 - 1.4 * rng_.rnd()
                     : last == Zone::NeutralZone ? -2 * rng_.rnd()
                                                 : -1 - 1.5 * rng_.rnd();
                break;
            case Call::Aggressive:
            case Call::SkatePass:
                if (rng_.rand(100) <= 50) r += rng_.rnd();
                break;
            default:
                break;
        }
    }
    const Result lr = s_.LastPlayResult;
    const bool endCounts = lr == Result::To || lr == Result::ToDefense || lr == Result::Miss || lr == Result::Save;
    if (endCounts && rng_.rand(2) == 1) {
        // The system of the side that lost the puck leaves it more or less open.
        auto system = [&]() {
            const int s = std::clamp(s_.coach.live[at(other)].offenseSystem, 0, 3);
            if (s == 1 || s == 2) r += 1;
            if (s == 3) r -= 1;
        };
        if (lr == Result::To || lr == Result::ToDefense) {
            if (last == Zone::OffenseZone || last == Zone::OffenseShooter || last == Zone::NeutralZone) r += 1;
            system();
        } else if (lr == Result::Miss || lr == Result::Save) {
            r -= .5;
            system();
        }
    }
    const double pressLift = (std::clamp(s_.coach.live[at(puck)].pkDzAggressiveness, 1, 5) - 3) * .75;
    if (pressLift != 0 && isOffenseState(last) && rng_.rand(2) == 1) r += pressLift;
    switch (strengthEdge()) {
        case 2:
            r += 4.5;
            if (r < 5.6) r = 5.25 - .5 * rng_.rnd();
            break;
        case 1:
            r += 2;
            if (r < 4.5) r = 4.25 - .5 * rng_.rnd();
            if (r > 8.5) r = 8.25 + .5 * rng_.rnd();
            break;
        case 0:
            r -= rng_.rnd();
            if (r > 7.5) r = 7.25 + .5 * rng_.rnd();
            break;
        case -1:
            r -= 2;
            if (r > 2) r = 2 + .5 * rng_.rnd();
            break;
        default:
            r -= 4;
            if (r > 1.25) r = 1 + .5 * rng_.rnd();
            break;
    }
    if (strengthEdge() < 0 && rng_.rand(5) == 1) r = 2 + 3 * rng_.rnd();
    s_.PlayRating = std::clamp(r, 1.0, 10.0);
}

// ---- The clock -------------------------------------------------------------------

// Asked at every step; the era's pace and its other small helpers are built
// into it.
[[gnu::flatten]] void Game::SetPlayTime() {
    const Zone z = s_.LastZone;
    const bool lastPeriod = s_.Period == periods_;
    const int puck = s_.PuckTeam;
    const int other = s_.OtherTeam();
    const SideTables& t = sideOf(puck);
    const RulesRecord& rules = session_.league().rules;
    const int lead = s_.Score[at(puck)] - s_.Score[at(other)];
    const bool tied = s_.Score[0] == s_.Score[1];
    // The table's own shot chance, not the sum of its endings: the blocks
    // are raised after the split, so the endings can add up to more.
    const int shoot = chances_.shotsTried;

    double pt = 14.5 + 4 * rng_.rnd() - 4 * rng_.rnd();
    if (lastPeriod && s_.Clock < 120) pt *= .35;
    // A tied game late: both teams press.
    if (lastPeriod && pt > 10 && tied && shoot > 10 && shoot < 900 && rng_.underRand(s_.Clock, 90, 90)) pt *= .8;
    if (pt < 7) pt = 3 + rng_.rand(2);
    if (z == Zone::OffenseShooter) pt = pt * .45 + 3 * rng_.rnd() - 3 * rng_.rnd();
    if (z == Zone::OffenseZone || z == Zone::Rush) pt = pt * .55 + 3 * rng_.rnd() - 3 * rng_.rnd();
    pt *= 1.05;
    if (!rng_.overRand(t.team.TeamYear, 1960, 20)) pt *= .9;
    if (s_.LastPlayResult == Result::Clear && stepSkaters_[at(puck)] > stepSkaters_[at(other)] &&
        !rng_.underRand(pt, 12, 10))
        pt = std::max(pt * .8, 3.0);
    if (s_.Skaters[at(puck)] == s_.Skaters[at(other)] + 2) pt *= .8;
    if (s_.PlayResult == Result::MoveUp) pt = 3 + 3 * rng_.rnd() + 3 * rng_.rnd();
    pt = eraPace(pt);
    // The league's overtime rules set the pace of all its games.
    if (rules.OTLengthlist > 0) pt *= 1 + rules.OTLengthlist * .07;
    if (rules.OTTypelist == 1) pt *= 1.05;
    if (sideFacts_[at(kHome)].college) pt *= .9;
    if (pt > 40 && rng_.underRand(s_.Clock, 30, 30)) pt = 30 + rng_.rand(10);
    if (s_.LastPlayResult == Result::Clear && pt <= 3) pt = 3 + rng_.rand(2);
    if (s_.PlayResult == Result::Penalty && pt >= 15) pt = 13 + rng_.rand(5);
    pt = std::max(pt, z == Zone::DefenseZone ? 5.0 : z == Zone::NeutralZone ? 4.0 : 3.0);
    if (sideFacts_[at(puck)].typeD) pt *= 1.1;
    const bool quickPlay = s_.events.ForcedEntry && !(lastPeriod && s_.Clock <= 90);
    s_.events.ForcedEntry = false;
    if (quickPlay) {
        // The quick play off a draw won in the other end.
        pt = rng_.rand(5);
        if (pt >= s_.Clock) pt = std::max(s_.Clock - 1, 0);
        s_.PlayTime = pt;
        return;
    }
    if (lastPeriod && pt > 20 && s_.Clock < 120) pt *= .8;

    // The leader kills time; the trailing team hurries.
    if (lead < 0 && rng_.underRand(s_.Clock, 60, 60)) pt *= .7;
    if (lead > 0) {
        if (s_.Period >= 2) {
            pt *= 1.05;
            if (rng_.overRand(lead, 0, 3)) pt *= 1.1;
            if (rng_.overRand(lead, 2, 3)) pt *= 1.1;
        }
        if (s_.Period == 3) {
            pt *= 1.05;
            if (rng_.overRand(lead, 0, 2)) pt *= 1.1;
            if (rng_.overRand(lead, 2, 2)) pt *= 1.2;
            if (rng_.underRand(s_.Clock, 180, 180) && rng_.overRand(lead, 0, 3)) pt *= 1.1;
            if (rng_.underRand(s_.Clock, 120, 120)) pt *= 1.1;
            if (rng_.underRand(s_.Clock, 60, 60)) pt *= 1.1;
        }
    }
    if (rng_.underRand(pt, 2, 2)) pt = 2 + rng_.rand(2);

    // Fit the play to the end of the nearest penalty.
    int pen = minPenaltyLeft();
    if (pt > 7 && pen < 30 && pen - pt <= 5) pt = pen - 5;
    if (pt > pen) pt = pen;
    double d = pen - pt;
    if (d >= 1 && !rng_.overRand(d, 5, 5)) pt = pen;

    if (rules.AllowOffensiveZonePlayCallsCheck == 0) pt *= isOffenseState(z) ? .65 : .95;
    // A season running ahead of its era's shots plays its plays longer. The
    // pace is the same idea before any season: the steps of the table come a
    // little too thick for the era's events (shots, hits and draws all ran
    // about a tenth high), and this stretch brings 1,000 games of a made-up
    // league of 2017 to its era's shots.
    if (session_.GameType != 'E' && pt >= 5)
        pt *= kPlayPace * (s_.find.ShotsCalibration > 0 ? s_.find.ShotsCalibration : 1);
    if (pt < 3 && s_.Clock >= 3) pt = 3;
    if (pt < 1) pt = 1;
    if (pt > s_.Clock) pt = s_.Clock;
    if (s_.periodEnds) {
        pt = s_.Clock;
        s_.PlayZone = Zone::FaceoffCenter1;
    } else if (pt >= s_.Clock) {
        // Only the horn ends a period: an ordinary play leaves time on the clock.
        pt = std::max(0, s_.Clock - rng_.rand(3));
    }
    s_.PlayTime = pt;
    // The box score's time of attack: the whole play goes to the side that
    // had the puck when it began.
    if (isOffenseState(z)) s_.attackSeconds[at(s_.StepPuckTeam)] += static_cast<int>(std::lround(pt));
}

// Plays of an era with many events (shots, penalties, fights) are short;
// an era of 34 a team a game plays at par. The era is that of a skater
// picked at random from the ice.
double Game::eraPace(double pt) {
    // The era of a man drawn from the last three places of either side;
    // when they all share one, no draw is needed to find it.
    auto yearAt = [&](int side, int pos) {
        int slot = s_.onIce[at(side)].slot[at(pos)];
        return slot == kNoSlot ? 2014 : manFacts_[at(side)][at(slot)].paceYear;
    };
    int year = yearAt(kVisitor, 3);
    bool shared = true;
    for (int side : {kVisitor, kHome})
        for (int pos = 3; pos <= 5 && shared; ++pos) shared = yearAt(side, pos) == year;
    if (!shared) {
        int side = rng_.rand(2) - 1;
        year = yearAt(side, 2 + rng_.rand(3));
    }
    const EraPace& era = eraPaceOf(year);
    if (!era.rated) return pt;
    if (era.events > 0) pt *= era.factor;
    if (rng_.over(era.penalties, 5.5, 2)) pt = (pt + 1) * 1.2;  // many whistles: longer stops
    if (rng_.under(era.pim / 2, 7, 5)) pt *= .93;
    if (rng_.over(era.pim / 2, 12, 7)) pt *= 1.1;
    return pt;
}

// The figures of a year hold through a game, so the few years a game sees
// are kept.
const Game::EraPace& Game::eraPaceOf(int year) {
    for (const EraPace& kept : eraPaceMemo_)
        if (kept.year == year) return kept;
    EraPace& out = eraPaceMemo_[eraPaceMemoNext_];
    eraPaceMemoNext_ = (eraPaceMemoNext_ + 1) % eraPaceMemo_.size();
    out = EraPace{.year = year};
    const EraRecord& era = session_.eraRow(year, 2014);
    bool college = sideOf(kHome).team.TeamType.view() == "C";
    double savePct = college ? era.CollegeSavePct : era.SavePct;
    double goals = college ? era.CollegeGoalsPerTeam : era.GoalsPerTeam;
    double pim = college ? era.CollegePim : era.PimPerGame;
    if (savePct <= 0 || savePct >= 100 || goals <= 0) return out;
    double shots = goals / (100 - savePct) * 100;
    double fights = college ? 0 : era.FightsPerGame;
    double penalties = ((pim - fights * 5 * 1.3) / 2) / 2.52;
    double events = penalties + shots + fights;
    if (year <= 2003) events -= std::min(.005 * (2003 - year), .2) * shots;
    out.rated = true;
    out.events = events;
    out.factor = events > 0 ? std::clamp((34 / events) * (34 / events), .7, 1.3) : 1;
    out.penalties = penalties;
    out.pim = pim;
    return out;
}

void Game::RunClock() {
    double t = s_.PlayTime;
    const auto drawn = chargePlayers(t);
    runPenaltyClock(t, true);
    s_.Clock = roundToInt(s_.Clock - t);
    // A goal is timed at the end of its play.
    if ((s_.PlayResult == Result::Goal || s_.PlayResult == Result::ClearGoal) && !s_.goals.empty())
        s_.goals.back().clock = s_.Clock;
    checkAutoStop();
    // Most charges leave no fall to draw.
    if ((drawn[0] | drawn[1]) != 0) SetEnergy(drawn);
    endOfPeriod();
}

void Game::endOfPeriod() {
    bool tied = s_.Score[0] == s_.Score[1];
    if (s_.Period > periods_ && overtimeType_ != 2 && !tied) {
        finishGame(GameEnd::Overtime);  // sudden death
        return;
    }
    if (s_.Clock > 0) return;
    // The end of regulation is told either way; a tied overtime that leads
    // to more play is not an ending.
    DescribePeriodEnd(s_.Period == periods_ || (s_.Period > periods_ && !tied));
    s_.periodEnds = false;
    s_.Momentum = s_.Momentum > 0 ? std::max(0.0, s_.Momentum - .2) : std::min(0.0, s_.Momentum + .2);
    restoreEveryone();
    clearShortInjuries();
    for (int side : {kVisitor, kHome}) returnGoalie(side);
    auto nextPeriod = [&](int seconds) {
        ++s_.Period;
        s_.Clock = seconds;
        s_.PlayZone = Zone::FaceoffCenter1;
        s_.PuckTeam = kVisitor;
        s_.PlayCall = Call::None;
        s_.PlayResult = Result::None;
        s_.shotsByPeriod.push_back({0, 0});
        s_.events.blocksByPeriod.push_back({0, 0});
        s_.tvTimeoutsTaken = 0;
        // Overtime may be played with fewer men a side.
        recountSkaters();
    };
    if (s_.Period < periods_) {
        nextPeriod(periodSeconds());
        return;
    }
    if (!tied) {
        finishGame(s_.Period > periods_ ? GameEnd::Overtime : GameEnd::Regulation);
        return;
    }
    bool anotherPeriod = overtimeMinutes_ > 0 && (s_.Period == periods_ || overtimeType_ == 1);
    if (anotherPeriod) {
        say(words(phrase(s_.Period == periods_ ? 221 : 223)));
        nextPeriod(overtimeSeconds());
        return;
    }
    if (shootoutRounds_ > 0) {
        say(words(phrase(222)));
        s_.PlayZone = Zone::Shootout;
        s_.PuckTeam = kVisitor;
        s_.shootoutSide = kVisitor;
        s_.ShootoutRound = 1;
        return;
    }
    finishGame(GameEnd::Tie);
}

void Game::finishGame(GameEnd how) {
    s_.GameOverFlag = true;
    s_.endedBy = how;
}

void Game::GameOverCheck() {
    if (!s_.GameOverFlag || s_.GameEndedFlag) return;
    s_.GameEndedFlag = true;
    // However it ended: at the horn (which has told it already), in sudden
    // death, by a shootout or as a tie.
    const std::vector<std::string>& told = play_.texts();
    if (told.empty() || told.back() != "Game Over") {
        say(std::string("Game Over"));
        if (telling()) play_.addShort(std::string("Game Over"));
    }
    presenter_->GameOver(*this);
}

void Game::runTo(AutoStop stop) {
    s_.AutoPlayTo = stop;
    s_.Paused = false;
    SetPlayBox();
}

void Game::checkAutoStop() {
    if (s_.AutoPlayTo == AutoStop::None) return;
    AutoStopPoint at = pointOf(s_.AutoPlayTo);
    bool fires = at.minutes == 0 ? s_.Period == at.period && s_.Clock <= 0
                                 : s_.Period == at.period && s_.Clock < at.minutes * 60;
    // A stop already passed isn't waited for into the next periods.
    if (fires || s_.Period > at.period) {
        s_.AutoPlayTo = AutoStop::None;
        s_.Paused = true;
    }
}

// Broadcast breaks: two a period at the first whistle after 14 and 6
// minutes left, when play is even and the stop isn't a goal, a penalty or
// an icing. Everybody gets his breath back.
void Game::momentumOverTime() {
    // A tenth toward even for every five minutes of play.
    s_.momentumSeconds += s_.PlayTime;
    if (s_.momentumSeconds > 300) {
        s_.Momentum = s_.Momentum > 0 ? std::max(0.0, s_.Momentum - .1) : std::min(0.0, s_.Momentum + .1);
        s_.momentumSeconds = 0;
    }
    if (powerPlay(kVisitor) && s_.Momentum < 0) s_.Momentum = 0;
    if (powerPlay(kHome) && s_.Momentum > 0) s_.Momentum = 0;
}

void Game::tvTimeout(Result previous) {
    const RulesRecord& rules = session_.league().rules;
    if (rules.TVTimeoutsCheck != 1 || rules.TimeoutsAllowedCheck != 1) return;
    // A man hurt on the play is seen to first: the break waits for a later stop.
    if (!isFaceoff(s_.PlayZone) || s_.PlayResult == Result::Goal || s_.PlayResult == Result::Penalty ||
        previous == Result::Penalty || s_.events.IcingFlag || penaltyDelayed() || s_.pen.injuredThisPlay)
        return;
    if (strength(0) != strength(1) || s_.Period > 3 || s_.Clock <= 120) return;
    // One break a whistle: a first break that comes late still leaves the
    // second for a later whistle.
    int due = s_.Clock <= 360 ? 2 : s_.Clock <= 840 ? 1 : 0;
    if (s_.tvTimeoutsTaken >= due) return;
    ++s_.tvTimeoutsTaken;
    s_.coach.tvTimeoutThisStep = true;
    restoreEveryone();
    if (telling()) tell("TV Timeout");
}

// ---- Lines -----------------------------------------------------------------------

void Game::putUnitOnIce(int side) {
    bool even = s_.Skaters[0] == 5 && s_.Skaters[1] == 5;
    keepPenalizedOff(side);
    IceRequest req;
    req.own = s_.Skaters[at(side)];
    req.opponent = s_.Skaters[at(other(side))];
    req.unit = s_.forwardUnit[at(side)];
    req.pair = even ? s_.defensePair[at(side)] : 0;
    req.goalie = s_.goalie[at(side)];
    req.goaliePulled = s_.GoaliePulled[at(side)];
    IcePlacement placed = placeUnit(side, req);
    OnIce before = s_.onIce[at(side)];
    s_.onIce[at(side)] = placed.onIce;
    if (placed.goalie != kNoSlot) s_.goalie[at(side)] = placed.goalie;
    for (int slot : placed.onIce.slot)
        if (slot != kNoSlot && !before.holds(slot)) s_.stint[at(side)][at(slot)] = 0;
}

namespace {

// The request as one word, a byte a field from -1 up, with the top bit set
// so that no request packs to 0; 0 when a field won't fit its byte.
std::uint64_t packedRequest(const IceRequest& req) {
    std::uint64_t key = std::uint64_t{1} << 63;
    int shift = 0;
    for (int field : {req.own, req.opponent, req.unit, req.pair, req.goalie, req.threeSkaterFormation}) {
        const auto byte = static_cast<unsigned>(field + 1);
        if (byte > 0xFF) return 0;
        key |= std::uint64_t{byte} << shift;
        shift += 8;
    }
    return key;
}

}  // namespace

IcePlacement Game::placeUnit(int side, const IceRequest& req) {
    // The extra attacker is drawn; with a screen a person may change lines
    // while the driver waits on him. Otherwise nothing but the request and
    // the men fit to play moves the placement while the driver runs.
    const LineupTeam& team = teams_[at(side)];
    if (!keepsLineups() || req.goaliePulled) return PutLinesOnIce(team, req, &rng_);
    const std::uint64_t key = packedRequest(req);
    if (key == 0) return PutLinesOnIce(team, req, &rng_);
    static_assert(std::has_single_bit(kPlacementSets), "the hash picks a set by its top bits");
    const std::uint64_t fit = fitBits(team.candidate);
    const std::uint64_t hash = (key ^ (fit * 0x9E3779B97F4A7C15ULL)) * 0xD6E8FEB86659FD93ULL;
    auto& set = placementMemo_[at(side)][hash >> (64 - std::countr_zero(kPlacementSets))];
    if (set[0].key == key && set[0].fit == fit) return set[0].placed;
    if (set[1].key == key && set[1].fit == fit) {
        std::swap(set[0], set[1]);
        return set[0].placed;
    }
    set[1] = set[0];
    set[0] = {key, fit, PutLinesOnIce(team, req, &rng_)};
    return set[0].placed;
}

// On a screen a command or a step hands back to the driver, which asks for
// the next decision; without one the caller's driver loop goes on.
void Game::resumeDriver() {
    if (!s_.NoDisplay && !driverRunning_) SetPlayBox();
}

void Game::tell(std::string line) { play_.addPlain(std::move(line)); }

}  // namespace tallyrink
