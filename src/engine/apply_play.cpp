// Working out the result a step has drawn: the rare events that change it,
// the assists it can carry, the dispatch by result to the next zone and
// possession, and the men set up for the step after.

#include <algorithm>
#include <cmath>

#include "engine/game.h"

namespace tallyrink {

namespace {

std::size_t at(int i) { return static_cast<std::size_t>(i); }
bool isTurnover(Result r) {
    return r == Result::To || r == Result::ToDefense || r == Result::ToNeutral || r == Result::ToRush;
}

}  // namespace

void Game::clearPlayFlags() {
    EventState& ev = s_.events;
    ev.Kind = ShotKind::None;
    ev.ShootN = 0;
    ev.shotRebound = ShotRebound::None;
    ev.saveRebound = SaveRebound::None;
    ev.ReboundDefender = kNoSlot;
    ev.reboundHeld = false;
    ev.goaliePass = false;
    ev.shooterWasHit = false;
    ev.clearTarget = ClearTarget::None;
    ev.IcingFlag = false;
    ev.IcedBy = {false, false};
    ev.turnover = TurnoverKind::None;
    ev.HitDone = false;
    ev.puckToEmptyEnd = false;
}

// A clear that goes all the way in, or that the goalie has to stop.
void Game::rareClearEvents() {
    Result& r = s_.PlayResult;
    bool ownHalf = s_.LastZone == Zone::DefenseZone || s_.LastZone == Zone::NeutralZone;
    if (r != Result::Clear || !ownHalf || s_.Clock <= 60 || s_.GoaliePulled[at(s_.OtherTeam())]) return;
    if (rng_.rand(25000) == 1)
        r = Result::ClearGoal;
    else if (rng_.rand(100) == 1)
        r = Result::ClearSave;
}

// A power-play goal is kept out while the killers have both a coincidental
// call in its last half minute and a penalty the goal would end.
bool Game::powerPlayGoalHeldOut() const {
    const int killers = s_.OtherTeam();
    if (s_.Skaters[at(s_.PuckTeam)] <= s_.Skaters[at(killers)]) return false;
    const RulesRecord& rules = session_.league().rules;
    bool coincidentalEnding = false, goalWouldEnd = false;
    for (const BoxPenalty& p : s_.pen.box[at(killers)]) {
        if (!p.running) continue;
        if (p.Coincidental && p.PenaltySeconds > 0 && p.PenaltySeconds < 30) coincidentalEnding = true;
        if (!p.Coincidental && p.shortHanded &&
            ((p.ReleaseOnGoal == 1 && rules.MinorGoalcheck == 1) ||
             (p.ReleaseOnGoal == 2 && rules.MajorGoalcheck == 1)))
            goalWouldEnd = true;
    }
    return coincidentalEnding && goalWouldEnd;
}

void Game::ApplyPlay() {
    s_.LastZone = s_.PlayZone;
    clearPlayFlags();
    s_.events.ShotClass = chanceShotClass();
    Result& r = s_.PlayResult;
    FindState& f = s_.find;

    // A draw won forward or back goes straight in.
    if (f.DrawForcedEntry && s_.entryFromFaceoff) r = Result::OffenseZone;
    f.DrawForcedEntry = false;
    if (s_.PuckTeam != kVisitor && s_.PuckTeam != kHome) s_.PuckTeam = kVisitor;

    // A carrier whose place has emptied hands the puck to a defenceman.
    int pos = f.CarrierPos;
    if (pos >= 0 && pos < static_cast<int>(kIcePositions) && s_.onIce[at(s_.PuckTeam)].slot[at(pos)] == kNoSlot) {
        f.CarrierPos = rng_.rand(2) == 1 ? 4 : 3;
        f.Carrier = s_.onIce[at(s_.PuckTeam)].slot[at(f.CarrierPos)];
    }
    if (r == Result::Delay) {
        onDelay();
        SetPlayTime();
        return;
    }
    if (r == Result::Goal && powerPlayGoalHeldOut()) r = Result::Save;
    bool ownHalf = s_.LastZone == Zone::DefenseZone || s_.LastZone == Zone::NeutralZone;
    if (ownHalf && s_.PlayCall == Call::Clear && s_.GoaliePulled[at(s_.OtherTeam())]) r = Result::Clear;
    rareClearEvents();
    if (r == Result::Goal || r == Result::ClearGoal) cutAssists();

    // Time running out inside the play: a late shot loses its edge, and far
    // from the net the horn may go with nothing at all.
    int horn = 5 + rng_.rand(6);
    switch (s_.PlayZone) {
        case Zone::OffenseShooter:
            horn = 1 + rng_.rand(2);
            break;
        case Zone::Rush:
            horn = 2 + rng_.rand(2);
            break;
        case Zone::OffenseZone:
            horn = 3 + rng_.rand(2);
            break;
        case Zone::NeutralZone:
            horn = 4 + rng_.rand(5);
            break;
        default:
            break;
    }
    // The horn sweeps away all but the end of a play, so a penalty shot is
    // only called when the period goes on.
    if (s_.Clock > horn) callPenaltyShot();
    if (s_.Clock <= horn) {
        s_.periodEnds = true;
        if (r == Result::Goal && rng_.rand(10) <= 4) r = Result::Save;
        if (r == Result::Save && rng_.rand(10) <= 6) r = Result::Miss;
        // Nobody stands in an empty net to make the save: the shot that
        // came too late went wide.
        if (r == Result::Save && s_.GoaliePulled[static_cast<std::size_t>(s_.OtherTeam())]) r = Result::Miss;
    }

    if (isShotResult(r)) {
        s_.events.Kind = chooseShotKind();
        DescribeShot();
    }
    if (r == Result::Penalty || isTurnover(r) || r == Result::MoveUp) countHit();
    dispatchResult();
    if (s_.PuckTeam != s_.StepPuckTeam) s_.events.drawPossession = -1;
    if (s_.PlayZone == Zone::NeutralZoneRetreat) s_.PlayZone = Zone::NeutralZone;
    if (s_.PlayZone == Zone::DefenseZoneRetreat) s_.PlayZone = Zone::DefenseZone;
    if (s_.periodEnds) s_.PlayZone = Zone::FaceoffCenter1;
    prepareNextState();
    afterPlayPenalties();
    SetPlayTime();
}

void Game::dispatchResult() {
    Result r = s_.PlayResult;
    switch (r) {
        case Result::Penalty:
            onPenalty(s_.penaltyOn);
            break;
        case Result::Pass:
        case Result::OffenseShooter:
            onPass();
            break;
        case Result::OffenseZone:
            onEntry();
            break;
        case Result::MoveUp:
            onMoveUp();
            break;
        case Result::Offsides:
            onOffside();
            break;
        case Result::Clear:
            onClear();
            break;
        case Result::Goal:
        case Result::ClearGoal:
            onGoal();
            break;
        case Result::Save:
        case Result::ClearSave:
            onSave();
            break;
        case Result::Miss:
        case Result::Block:
            onMissOrBlock();
            break;
        case Result::To:
        case Result::ToDefense:
        case Result::ToNeutral:
        case Result::ToRush:
            onTurnover(r);
            break;
        case Result::Retreat:
            // Told as a retreat; play goes on from the plain zone.
            s_.PlayZone = rng_.rand(100) <= 70 ? Zone::NeutralZoneRetreat : Zone::DefenseZoneRetreat;
            DescribeRetreat();
            break;
        case Result::PenaltyShot:
            // No penalty is served: the fouled side shoots next.
            s_.PlayZone = Zone::PenaltyShot;
            break;
        case Result::NoPlay:
            s_.periodEnds = true;
            s_.PlayZone = Zone::FaceoffCenter1;
            break;
        default:
            break;
    }
}

// Who has the puck, and where the attackers stand, for the coming step.
void Game::prepareNextState() {
    FindState& f = s_.find;
    switch (s_.PlayZone) {
        case Zone::OffenseZone:
            if (!s_.events.reboundHeld) f.Carrier = kNoSlot;
            HkSetPlayCallList();
            FindCarrier();
            FindDefender();
            if (f.CarrierPos >= 0 && f.CarrierPos < static_cast<int>(kIcePositions))
                f.Spot[at(f.CarrierPos)] = kSpotOut;
            break;
        case Zone::OffenseShooter:
            FindPassers();
            if (f.CarrierPos >= 0 && f.CarrierPos < static_cast<int>(kIcePositions) &&
                !(f.CarrierPos <= 2 && rng_.rand(100) <= 95))
                f.Spot[at(f.CarrierPos)] = 2 + rng_.rand(2) + 1;
            FindDefender();
            break;
        case Zone::DefenseZone:
        case Zone::NeutralZone:
            f.Passer1 = kNoSlot;
            f.Passer2 = kNoSlot;
            if (s_.events.goaliePass) {
                // The goalie's outlet goes to a defenceman, or now and then a
                // forward curling back.
                int side = s_.PuckTeam;
                int pos = rng_.rand(4) == 1 ? rng_.rand(3) - 1 : 3 + rng_.rand(2) - 1;
                int slot = s_.onIce[at(side)].slot[at(pos)];
                if (slot == kNoSlot) {
                    pos = 3;
                    slot = s_.onIce[at(side)].slot[3];
                }
                f.Carrier = slot;
                f.CarrierPos = slot == kNoSlot ? kNoPos : pos;
                f.Passer1 = s_.goalie[at(side)];
                f.Passer2 = kNoSlot;
            }
            break;
        case Zone::Rush:
            break;
        case Zone::PenaltyShot:
            // The fouled carrier stays on the puck; the man who fouled him is
            // the one who was on him.
            f.Passer1 = kNoSlot;
            f.Passer2 = kNoSlot;
            FindDefender();
            DescribePenaltyShotCall();
            break;
        default:
            f.Carrier = kNoSlot;
            f.CarrierPos = kNoPos;
            f.Passer1 = kNoSlot;
            f.Passer2 = kNoSlot;
            break;
    }
}

// The shot's class as the shooting model set it for this step.
int Game::chanceShotClass() const { return chances_.ShotClass; }

}  // namespace tallyrink
