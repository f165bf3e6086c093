// The plays that move the puck without a shot: passes and entries, the
// clear and the icing, the offside, hits, the turnovers and the rush that
// may follow one.

#include <fmt/core.h>

#include <algorithm>
#include <cmath>

#include "engine/game.h"
#include "engine/live_stats.h"
#include "team/positions.h"

namespace tallyrink {

namespace {

std::size_t at(int i) { return static_cast<std::size_t>(i); }
int other(int side) { return side == 0 ? 1 : 0; }

constexpr int kDefensePositions[2] = {3, 4};

}  // namespace

std::string_view text(RushKind k) {
    static constexpr std::array<std::string_view, 4> names{"1-0", "2-1", "3-1", "3-2"};
    return names[static_cast<std::size_t>(k)];
}

std::string_view text(TurnoverKind k) {
    static constexpr std::array<std::string_view, 5> names{"", "LOST", "TAKEAWAY", "GIVEAWAY", "HIT/TAKEAWAY"};
    return names[static_cast<std::size_t>(k)];
}

// A penalty is signalled and waits for the offending side to touch the puck.
bool Game::penaltyDelayed() const { return s_.pen.DelayedState > 0; }

bool Game::brokenStickOnIce(int side) const {
    for (std::size_t pos = 0; pos < 5; ++pos) {
        int slot = s_.onIce[at(side)].slot[pos];
        if (slot != kNoSlot && s_.find.BrokenStick[at(side)][at(slot)]) return true;
    }
    return false;
}

// ---- Passes, entries and the walk up ---------------------------------------------------

void Game::onPass() {
    Zone from = s_.LastZone;
    if (s_.PlayResult == Result::Pass && s_.LastPlayCall == Call::DumpChase && from == Zone::NeutralZone) {
        s_.events.dumpIn = true;
        DescribeDump();
    } else if (from == Zone::OffenseShooter || from == Zone::OffenseZone) {
        s_.find.LastPasser = s_.find.Carrier;
        DescribePass();
    } else if (from == Zone::DefenseZone || from == Zone::NeutralZone || from == Zone::Rush) {
        PickNames();
        DescribeEntry();
    }
    bool shooter = s_.PlayResult == Result::OffenseShooter || rng_.rand(100) <= 30;
    if (session_.league().rules.AllowOffensiveZonePlayCallsCheck == 0) shooter = false;
    // A pass from the set-up shooter keeps the play in the zone at large.
    if (s_.PlayResult == Result::Pass && from == Zone::OffenseShooter) shooter = false;
    s_.PlayZone = shooter ? Zone::OffenseShooter : Zone::OffenseZone;
}

void Game::onEntry() {
    if (s_.LastZone == Zone::DefenseZone || s_.LastZone == Zone::NeutralZone) {
        PickNames();
        DescribeEntry();
    }
    s_.PlayZone = Zone::OffenseZone;
}

void Game::onMoveUp() {
    if (s_.PlayZone == Zone::DefenseZone) {
        s_.PlayZone = Zone::NeutralZone;
        DescribeMoveUp();
    } else if (s_.PlayZone == Zone::NeutralZone) {
        onPass();
    }
}

// ---- The clear -------------------------------------------------------------------------

ClearTarget Game::clearTarget() {
    const EventState& ev = s_.events;
    int side = s_.PuckTeam;
    bool shortHanded = strength(side) < strength(other(side));
    bool noIcingRule = session_.league().rules.Icinglist == 2;
    bool reboundSet = ev.shotRebound != ShotRebound::None || ev.saveRebound != SaveRebound::None;
    bool stoppage = s_.PlayResult == Result::Penalty || penaltyDelayed();
    ClearTarget t = ClearTarget::DefenseZone;
    if (s_.LastZone == Zone::DefenseZone) {
        int v = rng_.rand(100);
        if (v <= 35) {
            t = ClearTarget::DefenseZone;
        } else if (v <= 80) {
            t = ClearTarget::NeutralZone;
            if (shortHanded && rng_.rand(100) <= 90) t = ClearTarget::DefenseZone;
        } else if (noIcingRule) {
            t = ClearTarget::NeutralZone;
        } else {
            bool held = shortHanded || minPenaltyLeft() < 35 || reboundSet;
            t = held ? ClearTarget::DefenseZone : ClearTarget::Icing;
        }
    } else if (s_.LastZone == Zone::NeutralZone && rng_.rand(100) <= 15) {
        bool held = shortHanded || reboundSet || minPenaltyLeft() < 35 || noIcingRule || penaltyDelayed();
        t = held ? ClearTarget::DefenseZone : ClearTarget::Icing;
    }
    if (stoppage) t = ClearTarget::DefenseZone;
    return t;
}

// The forecheckers sometimes catch their own team's clear at the line, or
// chase down their dump-in.
bool Game::recoversClear() {
    bool dump = s_.LastZone == Zone::NeutralZone && s_.LastPlayCall == Call::DumpChase;
    if (s_.LastZone != Zone::OffenseZone && !dump) return false;
    int pos = s_.find.CarrierPos;
    if (pos >= 0 && pos < static_cast<int>(kIcePositions) && s_.find.Spot[at(pos)] == kSpotBehind) return false;
    int level = s_.find.ForecheckLevel[at(s_.PuckTeam)];
    if (level == 0) return false;
    int c = level * 10;
    int edge = strengthEdge();
    if (edge == 1) c += 20;
    if (edge == 2) c += 10;
    c = std::clamp(c, 0, 40);
    return rng_.rand(100) <= c;
}

void Game::onClear() {
    EventState& ev = s_.events;
    ev.HitDone = false;
    ev.IcingFlag = false;
    int side = s_.PuckTeam;
    ClearTarget t = clearTarget();
    if (recoversClear()) t = ClearTarget::Recover;
    ev.clearTarget = t;
    if (ev.dumpIn || s_.LastPlayCall == Call::DumpChase) DescribeDump();
    switch (t) {
        case ClearTarget::Recover:
            DescribeRecover();
            s_.PlayZone = Zone::OffenseZone;
            break;
        case ClearTarget::NeutralZone:
            DescribeClear();
            changePossession();
            s_.PlayZone = Zone::NeutralZone;
            PickNames();
            break;
        case ClearTarget::Icing:
            // The clear is seen going down the ice before the whistle.
            DescribeClear();
            callIcing(side);
            break;
        default:
            DescribeClear();
            changePossession();
            s_.PlayZone = Zone::DefenseZone;
            break;
    }
}

void Game::callIcing(int side) {
    EventState& ev = s_.events;
    ev.IcingFlag = true;
    ev.IcedBy[at(side)] = true;
    ev.clearTarget = ClearTarget::Icing;
    DescribeIcing(side);
    s_.PlayZone = faceoffZone(FaceoffSpot::Defense, side, 1);
    s_.PuckTeam = kVisitor;
}

// ---- Offside -----------------------------------------------------------------------------

void Game::onOffside() {
    int side = s_.PuckTeam;
    DescribeOffside();
    s_.PlayZone = s_.events.offsideFlag ? faceoffZone(FaceoffSpot::Defense, side, 1)
                                        : faceoffZone(FaceoffSpot::Neutral, other(side), 1);
    s_.events.offsideFlag = false;
    s_.PuckTeam = kVisitor;
}

// ---- Hits -------------------------------------------------------------------------------

// A team that has hit more a game in the replay than in its real season
// hits less now, and the other way round, in the steps by which a man's own
// hits steer who throws the hit. Too few hits on either side steer nothing.
double Game::hitSteering(int side) {
    const TeamRecord& t = sideOf(side).team;
    const StatLine& real = t.TeamRealLine;
    const TeamStatLine& replay = t.TeamFor[0];
    if (real.Hits <= 10 || replay.Hits <= 10 || real.GP <= 0 || replay.GP <= 0) return 1;
    double m = (static_cast<double>(replay.Hits) / replay.GP) / (static_cast<double>(real.Hits) / real.GP);
    if (m > 1 + .4 * rng_.rnd()) return .5;
    if (m > 1 + .2 * rng_.rnd()) return .75;
    if (m < 1 - .4 * rng_.rnd()) return 1.75;
    if (m < 1 - .2 * rng_.rnd()) return 1.25;
    return 1;
}

void Game::countHit() {
    EventState& ev = s_.events;
    Result r = s_.PlayResult;
    bool turnover = r == Result::To || r == Result::ToDefense || r == Result::ToNeutral || r == Result::ToRush;
    double chance = r == Result::Penalty ? 10 : turnover ? 65 : 0;
    int hitting = other(s_.PuckTeam);
    chance *= 1.1;
    chance *= hitSteering(hitting);
    int g = s_.goalie[at(s_.PuckTeam)];
    int goalieYear = g == kNoSlot ? 2008 : sideOf(s_.PuckTeam).player(g).PlayerYear;
    if (goalieYear <= 1975) chance *= .75;
    if (penaltyDelayed() || r == Result::MoveUp || s_.LastZone == Zone::Rush) chance = 0;
    bool hit = rng_.rand(100) <= chance;
    if (!hit && turnover && s_.Skaters[at(hitting)] >= 4 && rng_.rand(50) == 1) hit = true;
    if (!hit) return;
    FindHitter();
    int hitter = s_.find.Hitter;
    if (hitter == kNoSlot) return;
    ev.HitDone = true;
    ++ev.hits[at(hitting)];
    PlayerRecord& p = session_.side(hitting).player(hitter);
    creditHit(p);
    double gain = 0;
    if (!rng_.randAtMost(50, 6 - p.RatingSportsmanship)) gain += .1;
    if (p.Enforcer == 1 && rng_.rand(100) <= 10) gain += .1;
    s_.Momentum = std::clamp(s_.Momentum + (hitting == kVisitor ? gain : -gain), -.5, .5);
    DescribeHit(hitting, hitter);
}

// ---- Turnovers ------------------------------------------------------------------------------

TurnoverKind Game::turnoverKind() {
    int v = rng_.rand(100);
    if (s_.events.HitDone) return v <= 91 ? TurnoverKind::Lost : TurnoverKind::HitTakeaway;
    if (v <= 11) return TurnoverKind::Lost;
    if (v <= 38) return TurnoverKind::Takeaway;
    return TurnoverKind::Giveaway;
}

void Game::onTurnover(Result r) {
    EventState& ev = s_.events;
    int losing = s_.PuckTeam;
    int taking = other(losing);
    int carrier = s_.find.Carrier;
    if (r == Result::ToRush &&
        (penaltyDelayed() || (carrier != kNoSlot && s_.find.BrokenStick[at(losing)][at(carrier)])))
        r = Result::To;
    ev.turnover = turnoverKind();
    int takeawayPos = kNoPos;
    switch (ev.turnover) {
        case TurnoverKind::Giveaway:
            if (carrier != kNoSlot) creditGiveaway(session_.side(losing).player(carrier));
            ++ev.giveaways[at(losing)];
            break;
        case TurnoverKind::HitTakeaway:
        case TurnoverKind::Takeaway: {
            int man = ev.turnover == TurnoverKind::HitTakeaway ? s_.find.Hitter : kNoSlot;
            int manPos = ev.turnover == TurnoverKind::HitTakeaway ? s_.find.HitterPos : kNoPos;
            if (man == kNoSlot || s_.find.BrokenStick[at(taking)][at(man)]) {
                FindTakeaway();
                man = s_.find.TakeawayMan;
                manPos = s_.find.TakeawayPos;
            }
            if (man != kNoSlot) {
                creditTakeaway(session_.side(taking).player(man));
                ++ev.takeaways[at(taking)];
                takeawayPos = manPos;
            }
            break;
        }
        default:
            break;
    }
    DescribeTurnover();
    changePossession();
    PickLooseCarrier(ev.turnover == TurnoverKind::Takeaway ? takeawayPos : kNoPos);
    DescribeLoosePuck();
    switch (r) {
        case Result::ToDefense:
            s_.PlayZone = Zone::OffenseZone;
            break;
        case Result::ToNeutral:
            s_.PlayZone = Zone::NeutralZone;
            break;
        case Result::ToRush:
            s_.PlayZone = Zone::Rush;
            if (powerPlay(s_.PuckTeam) && rng_.rand(100) <= 80) s_.PlayZone = Zone::DefenseZone;
            if (powerPlay(s_.OtherTeam()) && rng_.rand(100) <= 90) s_.PlayZone = Zone::DefenseZone;
            if (s_.PlayZone == Zone::Rush) buildRush();
            break;
        default:
            s_.PlayZone = Zone::DefenseZone;
            break;
    }
}

// ---- The rush ----------------------------------------------------------------------------------

bool Game::joinsRush(int side, int pos) {
    const OnIce& ice = s_.onIce[at(side)];
    int slot = ice.slot[at(pos)];
    if (slot == kNoSlot || s_.find.BrokenStick[at(side)][at(slot)]) return false;
    const PlayerRecord& p = sideOf(side).player(slot);
    const SetRates& real = sideOf(side).rate(RateSet::Real, slot);
    double u = (p.UsagePenetrate - 3) * .2 + 1;
    bool defenseman = pos >= kDefensePositions[0];
    bool joins = false;
    // Once he joins, the further reasons to join change nothing.
    if (rng_.over(real.ShotsPer60, 5, 15, u) && rng_.rand(2) == 1) joins = true;
    if (!joins && rng_.over(real.ShotsPer60, 8, 8)) joins = true;
    if (!joins && rng_.over(real.AssistsPer60, 1, 6, u) && rng_.rand(2) == 1) joins = true;
    int forwardOdds = roundToInt(static_cast<int>(u * 3) + .5);
    int defenseOdds = roundToInt(static_cast<int>(u * 6) + .5);
    if (!joins && !defenseman && rng_.rand(forwardOdds) == 1) joins = true;
    if (!joins && defenseman && rng_.rand(defenseOdds) == 1) joins = true;
    if (defenseman && joins && rng_.rand(2) == 1) {
        double as = real.AssistsPer60 + real.ShotsPer60;
        if (rng_.over(as, 2, 10, u) &&
            (rng_.under(as, 8, 8, u) || (!rng_.overRand(p.PlayerYear, 1965, 10) && rng_.rand(3) >= 2)))
            joins = false;
    }
    if (rng_.rand(10) == 1) joins = false;
    if (!defenseman && s_.Skaters[at(side)] == 3 && rng_.rand(10) == 1) joins = true;
    return joins;
}

void Game::buildRush() {
    EventState& ev = s_.events;
    int side = s_.PuckTeam;
    int n = 0;
    for (int tries = 0; tries < 100; ++tries) {
        ev.RushMember = {};
        n = 0;
        for (int pos = 0; pos < 5; ++pos)
            if (joinsRush(side, pos)) {
                ev.RushMember[at(pos)] = true;
                ++n;
            }
        if (n == 0) continue;
        if (strength(side) > 3 && n <= rng_.rand(2) && rng_.rand(100) <= 90) continue;
        if (n < 3 && rng_.rand(100) <= rng_.rand(35)) continue;
        break;
    }
    int carrierPos = s_.find.CarrierPos;
    if (carrierPos >= 0 && carrierPos < 5 && !ev.RushMember[at(carrierPos)]) {
        ev.RushMember[at(carrierPos)] = true;
        ++n;
    }
    n = std::max(n, 1);
    if (n == 1)
        s_.events.rushKind = RushKind::OneZero;
    else if (n == 2)
        s_.events.rushKind = RushKind::TwoOne;
    else if (n == 3)
        s_.events.rushKind = rng_.rand(3) == 1 ? RushKind::ThreeOne : RushKind::ThreeTwo;
    else
        s_.events.rushKind = RushKind::ThreeTwo;  // four or five men go as the usual three on two
    // The step that plays the rush reads its manpower from here: a
    // breakaway is shot far more often, and better, than an odd-man rush.
    static constexpr std::array<RushType, 4> kRushTypes{RushType::OneZero, RushType::TwoOne, RushType::ThreeOne,
                                                        RushType::ThreeTwo};
    s_.find.rush = kRushTypes[static_cast<std::size_t>(s_.events.rushKind)];
    for (int pos = 0; pos < 5; ++pos)
        if (ev.RushMember[at(pos)]) s_.find.Spot[at(pos)] = 2 + rng_.rand(2);
    RushAssists();
    DescribeRush();
}

// The passers of a rush come from the men in it, by their playmaking.
void Game::RushAssists() {
    FindState& f = s_.find;
    EventState& ev = s_.events;
    int side = s_.PuckTeam;
    const SideTables& t = sideOf(side);
    std::array<double, 5> weight{};
    for (int pos = 0; pos < 5; ++pos) {
        int slot = s_.onIce[at(side)].slot[at(pos)];
        if (!ev.RushMember[at(pos)] || slot == kNoSlot || slot == f.Carrier) continue;
        weight[at(pos)] = .5 + t.rate(RateSet::Real, slot).AssistsPer60;
    }
    auto pick = [&]() {
        double total = 0;
        for (double w : weight) total += w;
        if (total <= 0) return kNoPos;
        double r = rng_.rnd() * total;
        for (int pos = 0; pos < 5; ++pos) {
            if (weight[at(pos)] <= 0) continue;
            if (r < weight[at(pos)]) return pos;
            r -= weight[at(pos)];
        }
        return kNoPos;
    };
    int p1 = pick();
    if (p1 != kNoPos) weight[at(p1)] = 0;
    int p2 = pick();
    f.Passer1 = p1 == kNoPos ? kNoSlot : s_.onIce[at(side)].slot[at(p1)];
    f.Passer1Pos = p1;
    f.Passer2 = p2 == kNoPos ? kNoSlot : s_.onIce[at(side)].slot[at(p2)];
    f.Passer2Pos = p2;
}

// ---- A stoppage of the building ----------------------------------------------------------------

void Game::onDelay() {
    DescribeDelay();
    s_.PlayZone = Zone::FaceoffCenter1;
    s_.PuckTeam = kVisitor;
    restoreEveryone();
}

}  // namespace tallyrink
