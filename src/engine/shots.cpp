// A shot has been drawn: "GOAL", "SAVE", "MISS" or "BLOCK". Here it is
// counted and credited, and the puck is followed after it: kept in, shot
// again, cleared, frozen or out of play.

#include <fmt/core.h>

#include <algorithm>
#include <cmath>

#include "engine/game.h"
#include "engine/live_stats.h"
#include "engine/shooting.h"
#include "team/positions.h"

namespace tallyrink {

namespace {

std::size_t at(int i) { return static_cast<std::size_t>(i); }
int other(int side) { return side == 0 ? 1 : 0; }

constexpr int kLeftDefensePos = 3;
constexpr int kRightDefensePos = 4;

// Keep in, rebound shot, clear and out of play after a block or a miss,
// by the attackers' edge in men from -2 to +2.
constexpr std::array<std::array<int, 4>, 5> kShotBands{{
    {0, 1, 60, 3},   // -2
    {0, 2, 40, 3},   // -1
    {5, 2, 15, 3},   // 0
    {50, 4, 22, 3},  // +1
    {60, 5, 1, 3},   // +2
}};
// Rebound shot, keep in, clear, to the defence and out of play after a save
// (the goalie's pass comes first).
constexpr std::array<std::array<int, 5>, 5> kSaveBands{{
    {1, 0, 5, 45, 3},   // -2
    {2, 0, 5, 35, 3},   // -1
    {2, 4, 5, 25, 3},   // 0
    {4, 40, 5, 10, 3},  // +1
    {6, 50, 5, 8, 3},   // +2
}};

}  // namespace

std::string_view text(ShotKind k) {
    static constexpr std::array<std::string_view, 10> names{
        "", "ONETIMER", "DEFLECTION", "LONG", "WRIST", "SLAP", "WEAK", "BREAKAWAY", "REBOUND", "REBOUND-SHOT"};
    return names[static_cast<std::size_t>(k)];
}

std::string_view text(ShotRebound r) {
    static constexpr std::array<std::string_view, 8> names{
        "", "OFFENSE-ZONE", "NEUTRAL-ZONE", "REBOUND-SHOT", "CLEAR", "REBOUND-OUT-OF-PLAY", "DEFENSE-ZONE", "ICING"};
    return names[static_cast<std::size_t>(r)];
}

std::string_view text(SaveRebound r) {
    static constexpr std::array<std::string_view, 10> names{"",
                                                            "GOALIE-PASS",
                                                            "REBOUND-SHOT",
                                                            "REBOUND-OFFENSE-ZONE",
                                                            "REBOUND-NEUTRAL-ZONE",
                                                            "CLEAR",
                                                            "DEFENSE-ZONE",
                                                            "REBOUND-OUT-OF-PLAY",
                                                            "FREEZE",
                                                            "DIVE"};
    return names[static_cast<std::size_t>(r)];
}

int Game::netminder(int side) const { return s_.GoaliePulled[at(side)] ? kNoSlot : s_.goalie[at(side)]; }

int Game::edgeIndex() const { return std::clamp(strengthEdge(), -2, 2) + 2; }

// ---- The kind of shot -----------------------------------------------------------

ShotKind Game::chooseShotKind() {
    if (s_.events.Kind == ShotKind::ReboundShot) return ShotKind::ReboundShot;
    if (s_.LastZone == Zone::Rush)
        return s_.events.rushKind == RushKind::OneZero ? ShotKind::Breakaway : ShotKind::Wrist;
    if (s_.LastPlayResult == Result::Save || s_.LastPlayResult == Result::Miss || s_.LastPlayResult == Result::Block)
        if (s_.events.reboundHeld && rng_.rand(3) == 1) return ShotKind::Rebound;
    if (s_.LastZone == Zone::DefenseZone || s_.LastZone == Zone::NeutralZone) return ShotKind::Long;
    int pos = s_.find.CarrierPos;
    int spot = pos >= 0 && pos < static_cast<int>(kIcePositions) ? s_.find.Spot[at(pos)] : 0;
    if (spot == kSpotScreen && rng_.rand(3) == 1) return ShotKind::Deflection;
    if (s_.LastPlayCall == Call::Pass && rng_.rand(3) == 1) return ShotKind::OneTimer;
    if (spot == kSpotOut || pos == kLeftDefensePos || pos == kRightDefensePos)
        return rng_.rand(3) == 1 ? ShotKind::Wrist : ShotKind::Slap;
    if (rng_.rand(12) == 1) return ShotKind::Weak;
    return rng_.rand(4) == 1 ? ShotKind::Slap : ShotKind::Wrist;
}

// ---- Assists ---------------------------------------------------------------------

// Fewer assists in an era that gave fewer, none on a lone drive to the net
// by a scorer, and often only one on a rush.
void Game::cutAssists() {
    FindState& f = s_.find;
    int side = s_.PuckTeam;
    const EraRecord& era = session_.eraRow(sideOf(side).team.TeamYear, 2009);
    double perGoal = sideOf(side).team.TeamType.view() == "C" ? era.CollegeAssistsPerGoal : era.AssistsPerGoal;
    if (perGoal > 0 && rng_.under(perGoal, 1, .2) && rng_.rand(2) == 1) {
        f.Passer1 = kNoSlot;
        f.Passer2 = kNoSlot;
    }
    double goalsPer60 = f.Carrier == kNoSlot ? 0 : sideOf(side).rate(RateSet::Real, f.Carrier).GoalsPer60;
    if (s_.LastPlayCall == Call::Penetrate && rng_.over(goalsPer60, 0, 7) && rng_.rand(10) == 1) {
        f.Passer1 = kNoSlot;
        f.Passer2 = kNoSlot;
    }
    if (s_.LastZone == Zone::Rush && rng_.over(goalsPer60, 1, 10) && rng_.rand(10) == 1) f.Passer2 = kNoSlot;
    if (f.Passer1 == f.Carrier) f.Passer1 = kNoSlot;
    if (f.Passer2 == f.Carrier || f.Passer2 == f.Passer1) f.Passer2 = kNoSlot;
}

// ---- Shots on goal ------------------------------------------------------------------

void Game::countShotOnGoal(int side, int shooter) {
    ++s_.Shots[at(side)];
    ++s_.shotsByPeriod.back()[at(side)];
    if (shooter == kNoSlot) return;
    PlayerRecord& p = session_.side(side).player(shooter);
    int column = std::clamp(s_.events.ShotClass, 1, 6) - 1;
    for (auto& row : p.ShotsBySpot) ++row[at(column)];
    if (powerPlay(side))
        for (auto& n : p.PowerPlayShots) ++n;
}

void Game::countSave(int side, int shooter) {
    if (s_.events.ShotClass == 0) s_.events.ShotClass = 3;
    countShotOnGoal(side, shooter);
    if (shooter != kNoSlot) creditShotOnGoal(session_.side(side).player(shooter));
    int g = netminder(other(side));
    if (g != kNoSlot) {
        creditSave(session_.side(other(side)).player(g));
        ++s_.events.shotsFaced[at(other(side))][at(g)];
    }
}

// ---- Goals ------------------------------------------------------------------------

void Game::postGoal(bool fromClear) {
    EventState& ev = s_.events;
    FindState& f = s_.find;
    int side = s_.PuckTeam;
    int against = other(side);
    if (fromClear) {
        f.Passer1 = kNoSlot;
        f.Passer2 = kNoSlot;
    }
    int scorer = f.Carrier;
    if (s_.GoaliePulled[at(against)]) ++tally_.emptyNetGoals;
    if (s_.GoaliePulled[at(side)]) ++tally_.extraAttackerGoals;
    DescribeGoalLead();
    bool reboundKind =
        ev.Kind == ShotKind::Rebound || ev.Kind == ShotKind::ReboundShot || ev.Kind == ShotKind::Deflection;
    if (rng_.rand(24) == 1 && session_.league().rules.VideoReviewcheck == 1 && netminder(against) != kNoSlot &&
        !reboundKind)
        DescribeVideoReview();

    GoalCredit g;
    g.scorer = scorer;
    g.passer1 = f.Passer1;
    g.passer2 = f.Passer2;
    cleanAssists(g);
    // The man who won the draw that began this possession gets the second
    // assist when nobody else earned it.
    int drawMan = ev.lastDrawWinner[at(side)];
    if (g.passer2 == kNoSlot && g.passer1 != kNoSlot && ev.drawPossession == side && drawMan != kNoSlot &&
        drawMan != g.scorer && drawMan != g.passer1 && s_.onIce[at(side)].holds(drawMan))
        g.passer2 = drawMan;
    f.Passer1 = g.passer1;
    f.Passer2 = g.passer2;
    g.goalie = netminder(against);
    g.ice = {s_.onIce[at(side)], s_.onIce[at(against)]};
    g.skaters = {s_.Skaters[at(side)], s_.Skaters[at(against)]};
    g.emptyNet = s_.GoaliePulled[at(against)];
    g.penaltyShot = s_.LastZone == Zone::PenaltyShot;
    DescribeGoalCredit(scorer);
    DescribeAssists();

    ++s_.Score[at(side)];
    if (ev.ShotClass == 0) ev.ShotClass = 3;
    countShotOnGoal(side, kNoSlot);
    GoalType type = goalTypeOf(g.skaters[0], g.skaters[1], g.emptyNet, g.penaltyShot);
    creditGoalType(session_.side(side).team, type);
    if (scorer != kNoSlot) {
        PlayerRecord& p = session_.side(side).player(scorer);
        int column = std::clamp(ev.ShotClass, 1, 6) - 1;
        for (auto& row : p.ShotsBySpot) ++row[at(column)];
        for (auto& row : p.GoalsBySpot) ++row[at(column)];
        if (powerPlay(side))
            for (auto& n : p.PowerPlayShots) ++n;
    }
    if (g.goalie != kNoSlot) ++ev.shotsFaced[at(against)][at(g.goalie)];
    creditGoal(g, session_.side(side).GameRoster, session_.side(against).GameRoster);

    GoalNote note;
    note.period = s_.Period;
    note.clock = s_.Clock;
    note.side = side;
    // A penalty shot is one man against the goalie, whatever the manpower.
    note.strengthEdge = g.penaltyShot ? 0 : s_.Skaters[at(side)] - s_.Skaters[at(against)];
    note.emptyNet = g.emptyNet;
    note.scorer = g.scorer;
    note.assists = {g.passer1, g.passer2};
    note.type = type;
    note.goalies = s_.goalie;
    s_.goals.push_back(note);

    // The foul was punished by the shot itself: no one leaves the box for it.
    if (!g.penaltyShot) penaltyGoal(side);
    s_.PlayZone = Zone::FaceoffCenter1;
    s_.PuckTeam = kVisitor;
}

void Game::onGoal() { postGoal(s_.PlayResult == Result::ClearGoal); }

// ---- After a block or a miss ----------------------------------------------------------

ShotRebound Game::ReboundAfterShot() {
    EventState& ev = s_.events;
    int attackers = s_.PuckTeam;
    int defenders = other(attackers);
    int dPos = 3 + rng_.rand(2) - 1;
    int d = s_.onIce[at(defenders)].slot[at(dPos)];
    ev.ReboundDefender = d;
    auto band = kShotBands[at(edgeIndex())];
    double keep = band[0];
    if (edgeIndex() == 2)
        keep *= keepInFactor(d == kNoSlot ? 0 : sideOf(defenders).player(d).RatingDefense, .7, 1.3, rng_);
    bool netEmpty = s_.GoaliePulled[at(defenders)];
    int v = rng_.rand(100);
    double edge = keep;
    ShotRebound r = ShotRebound::DefenseZone;
    if (v <= edge) {
        r = rng_.rand(50) == 1 ? ShotRebound::NeutralZone : ShotRebound::OffenseZone;
        if (rng_.rand(6) == 1) s_.find.LooseInClose = true;
    } else if (v <= (edge += band[1])) {
        bool off = netEmpty || s_.Clock < 300 || s_.Skaters[at(attackers)] == 3 || rng_.rand(10) <= 6;
        r = off ? ShotRebound::DefenseZone : ShotRebound::ReboundShot;
    } else if (v <= (edge += band[2])) {
        r = netEmpty || penaltyDelayed() ? ShotRebound::DefenseZone : ShotRebound::Clear;
    } else if (v <= (edge += band[3])) {
        r = ShotRebound::OutOfPlay;
    }
    if (r != ShotRebound::OffenseZone && r != ShotRebound::NeutralZone) ev.ReboundDefender = kNoSlot;
    if (r == ShotRebound::OffenseZone && strength(attackers) < strength(defenders)) r = ShotRebound::DefenseZone;
    if (minPenaltyLeft() <= 4) r = ShotRebound::DefenseZone;
    bool kept = r == ShotRebound::OffenseZone || r == ShotRebound::NeutralZone || r == ShotRebound::ReboundShot;
    int carrier = s_.find.Carrier;
    double assists = carrier == kNoSlot ? 0 : sideOf(attackers).rate(RateSet::Real, carrier).AssistsPer60;
    if (kept && assists < rng_.rnd()) r = ShotRebound::DefenseZone;
    if ((r == ShotRebound::OffenseZone || r == ShotRebound::ReboundShot) && brokenStickOnIce(attackers))
        r = ShotRebound::DefenseZone;

    // A long shot from the own half that nobody touches is iced. Only one
    // from beyond the red line counts as an icing; the puck of a man who was
    // hit as he shot, or one shot from the own end, goes to the defenders.
    // A side that may not ice plays the puck on as after any other shot.
    if (s_.LastZone == Zone::DefenseZone || s_.LastZone == Zone::NeutralZone) {
        bool ices = session_.league().rules.Icinglist != 2 && strength(attackers) >= strength(defenders);
        if (ices)
            r = ev.shooterWasHit || s_.LastZone != Zone::NeutralZone ? ShotRebound::DefenseZone : ShotRebound::Icing;
        if (s_.PlayResult == Result::Penalty || penaltyDelayed()) r = ShotRebound::DefenseZone;
    }
    if (r == ShotRebound::OffenseZone || r == ShotRebound::ReboundShot) shiftPassersForRebound();
    return r;
}

// The man who shot becomes the first passer of the kept-in puck, and no one
// stays behind the net.
void Game::shiftPassersForRebound() {
    FindState& f = s_.find;
    f.Passer2 = f.Passer1;
    f.Passer1 = f.Carrier;
    for (int& spot : f.Spot)
        if (spot > 0 && spot < kSpotIn) spot = kSpotIn;
    s_.events.reboundHeld = true;
}

void Game::onMissOrBlock() {
    EventState& ev = s_.events;
    int side = s_.PuckTeam;
    int defenders = other(side);
    int shooter = s_.find.Carrier;
    if (s_.PlayResult == Result::Block) {
        FindBlocker();
        int blocker = s_.find.BlockerMan;
        if (blocker != kNoSlot) {
            creditBlock(session_.side(defenders).player(blocker));
            DescribeBlock(defenders, blocker);
        }
        ++ev.blocked[at(side)];
        if (ev.blocksByPeriod.size() < static_cast<std::size_t>(s_.Period)) ev.blocksByPeriod.resize(at(s_.Period));
        ++ev.blocksByPeriod[at(s_.Period - 1)][at(defenders)];
    } else {
        if (shooter != kNoSlot) creditMissedShot(session_.side(side).player(shooter));
        ++ev.missed[at(side)];
    }
    ev.shotRebound = ReboundAfterShot();
    followShotRebound();
}

void Game::followShotRebound() {
    EventState& ev = s_.events;
    int attackers = s_.PuckTeam;
    int defenders = other(attackers);
    switch (ev.shotRebound) {
        case ShotRebound::Icing:
            callIcing(attackers);
            break;
        case ShotRebound::OffenseZone:
        case ShotRebound::NeutralZone:
            if (ev.ReboundDefender != kNoSlot && !penaltyDelayed() &&
                (rng_.rand(5) == 1 || ev.shotRebound == ShotRebound::NeutralZone) && rng_.rand(20) == 1)
                DescribeKnockedAway(defenders, ev.ReboundDefender);
            PickLooseCarrier();
            s_.PlayZone = ev.shotRebound == ShotRebound::NeutralZone ? Zone::NeutralZone : Zone::OffenseZone;
            break;
        case ShotRebound::ReboundShot:
            reboundShot(false);
            break;
        case ShotRebound::Clear:
            changePossession();
            s_.PlayZone = rng_.rand(10) <= 3 ? Zone::DefenseZone : Zone::NeutralZone;
            DescribeReboundClear();
            break;
        case ShotRebound::OutOfPlay:
            DescribeOutOfPlay();
            s_.PlayZone = faceoffZone(FaceoffSpot::Defense, defenders, 1);
            s_.PuckTeam = kVisitor;
            break;
        default:
            changePossession();
            s_.PlayZone = Zone::DefenseZone;
            PickLooseCarrier();
            break;
    }
}

// ---- After a save ---------------------------------------------------------------------

SaveRebound Game::ReboundAfterSave(bool allowReboundShot) {
    EventState& ev = s_.events;
    int attackers = s_.PuckTeam;
    int defenders = other(attackers);
    int goalie = netminder(defenders);
    int goalieAssists = goalie == kNoSlot ? 0 : statLine(sideOf(defenders).player(goalie), StatLineIndex::Real).Assists;
    int pass = std::min(goalieAssists * 3 + 2, 35);
    auto band = kSaveBands[at(edgeIndex())];
    double keep = band[1];
    if (edgeIndex() == 2) {
        int d = s_.onIce[at(defenders)].slot[at(3 + rng_.rand(2) - 1)];
        keep *= keepInFactor(d == kNoSlot ? 0 : sideOf(defenders).player(d).RatingDefense, 1.5, .5, rng_);
    }
    const RulesRecord& rules = session_.league().rules;
    int v = rng_.rand(100);
    double edge = pass;
    SaveRebound r = SaveRebound::Freeze;
    if (v <= edge) {
        r = rules.NoGoaliePasscheck == 1 ? SaveRebound::Freeze : SaveRebound::GoaliePass;
    } else if (v <= (edge += band[0])) {
        r = s_.Skaters[at(attackers)] == 3 || rng_.rand(10) <= 6 || !allowReboundShot ? SaveRebound::Freeze
                                                                                      : SaveRebound::ReboundShot;
    } else if (v <= (edge += keep)) {
        r = rng_.rand(50) == 1 ? SaveRebound::NeutralZone : SaveRebound::OffenseZone;
        if (rng_.rand(6) == 1) s_.find.LooseInClose = true;
    } else if (v <= (edge += band[2])) {
        r = rng_.rand(10) <= 6 ? SaveRebound::Freeze : SaveRebound::Clear;
    } else if (v <= (edge += band[3])) {
        r = SaveRebound::DefenseZone;
    } else if (v <= (edge += band[4])) {
        r = penaltyDelayed() ? SaveRebound::Freeze : SaveRebound::OutOfPlay;
    }
    if (rng_.rand(100) <= 10) r = SaveRebound::Freeze;
    bool keptIn = r == SaveRebound::OffenseZone || r == SaveRebound::NeutralZone || r == SaveRebound::ReboundShot;
    if (keptIn && strength(attackers) < strength(defenders)) r = SaveRebound::Freeze;
    int carrier = s_.find.Carrier;
    double assists = carrier == kNoSlot ? 0 : sideOf(attackers).rate(RateSet::Real, carrier).AssistsPer60;
    if (keptIn && (s_.periodEnds || minPenaltyLeft() <= 4 || assists < rng_.rnd())) r = SaveRebound::Freeze;
    if (r == SaveRebound::OffenseZone || r == SaveRebound::ReboundShot) shiftPassersForRebound();
    (void)ev;
    return r;
}

void Game::onSave() {
    int side = s_.PuckTeam;
    if (s_.PlayResult == Result::ClearSave) {
        // A clear the goalie had to stop: no shot on goal, but the puck comes
        // off him as off any save, unless he had to dive for it.
        s_.events.saveRebound = ReboundAfterSave(true);
        if (DescribeClearSave()) s_.events.saveRebound = SaveRebound::Freeze;
    } else {
        s_.events.saveRebound = ReboundAfterSave(true);
        countSave(side, s_.find.Carrier);
    }
    followSaveRebound();
}

void Game::followSaveRebound() {
    EventState& ev = s_.events;
    int attackers = s_.PuckTeam;
    int defenders = other(attackers);
    switch (ev.saveRebound) {
        case SaveRebound::GoaliePass:
            ev.goaliePass = true;
            changePossession();
            s_.PlayZone = rng_.rand(4) == 1 ? Zone::NeutralZone : Zone::DefenseZone;
            DescribeGoaliePass();
            break;
        case SaveRebound::ReboundShot:
            reboundShot(true);
            break;
        case SaveRebound::OffenseZone:
        case SaveRebound::NeutralZone:
            PickLooseCarrier();
            s_.PlayZone = ev.saveRebound == SaveRebound::NeutralZone ? Zone::NeutralZone : Zone::OffenseZone;
            break;
        case SaveRebound::Clear:
            changePossession();
            s_.PlayZone = Zone::NeutralZone;
            DescribeReboundClear();
            break;
        case SaveRebound::DefenseZone:
            changePossession();
            s_.PlayZone = Zone::DefenseZone;
            PickLooseCarrier();
            break;
        case SaveRebound::OutOfPlay:
            DescribeOutOfPlay();
            s_.PlayZone = faceoffZone(FaceoffSpot::Defense, defenders, 1);
            s_.PuckTeam = kVisitor;
            break;
        default:  // frozen
            DescribeFreeze();
            s_.PlayZone = faceoffZone(FaceoffSpot::Defense, defenders, 1);
            s_.PuckTeam = kVisitor;
            break;
    }
}

// ---- Rebound shots ----------------------------------------------------------------------

int Game::pickReboundShooter(bool afterSave) {
    const FindState& f = s_.find;
    int side = s_.PuckTeam;
    const OnIce& ice = s_.onIce[at(side)];
    const SideTables& t = sideOf(side);
    auto shotsOf = [&](int slot) { return t.rate(RateSet::Real, slot).ShotsPer60; };
    int limit = afterSave ? 250 : (rng_.rand(2) == 1 ? 100 : 150);
    for (int tries = 1; tries <= limit + 1; ++tries) {
        int pos = rng_.rand(100) == 1 ? 3 + rng_.rand(2) - 1 : rng_.rand(3) - 1;
        int left = ice.slot[kLeftDefensePos];
        int right = ice.slot[kRightDefensePos];
        if (left != kNoSlot && rng_.over(shotsOf(left), 6, 6) && rng_.rand(50) == 1) pos = kLeftDefensePos;
        if (right != kNoSlot && rng_.over(shotsOf(right), 6, 6) && rng_.rand(55) == 1) pos = kRightDefensePos;
        if (afterSave && tries > limit) pos = 3 + rng_.rand(2) - 1;
        int slot = ice.slot[at(pos)];
        if (slot == kNoSlot) continue;
        bool strict = tries <= limit;
        if (strict && (slot == f.Passer1 || slot == f.Passer2 || (afterSave && slot == f.Carrier))) continue;
        if (strict && f.BrokenStick[at(side)][at(slot)]) continue;
        double need = afterSave ? 8 + 8 * rng_.rnd() : 7 + 10 * rng_.rnd();
        if (shotsOf(slot) > need || rng_.rand(50) == 1 || rng_.rand(5) == 1 || !strict) return pos;
    }
    return 1;
}

void Game::reboundShot(bool afterSave) {
    EventState& ev = s_.events;
    FindState& f = s_.find;
    int side = s_.PuckTeam;
    int defenders = other(side);
    int pos = pickReboundShooter(afterSave);
    int shooter = s_.onIce[at(side)].slot[at(pos)];
    if (shooter == kNoSlot) {
        changePossession();
        s_.PlayZone = Zone::DefenseZone;
        return;
    }
    // The passers were moved up when the puck was kept in: the first shooter
    // is the first passer now.
    f.Carrier = shooter;
    f.CarrierPos = pos;
    ev.Kind = ShotKind::ReboundShot;
    // The new shooter's chance comes from the shot model, as for any shot
    // on net: his own finish, the era, the goalie he faces, and the spot
    // he stands on.
    PlayChances model;
    GoalPct(model);
    double pct = model.GoalPct;
    ev.ShootN = afterSave ? roundToInt(pct * 100 + 20) : std::clamp(roundToInt(pct * 15), 1, 15);
    DescribeReboundShot(shooter);
    bool netEmpty = s_.GoaliePulled[at(defenders)];
    if (afterSave && !netEmpty && rng_.rand(200) == 1) DescribeGoalieDrops();
    ShotTallyRow& tally = tally_.byClass[kTallyRebound];
    if (netEmpty || rng_.rand(100) <= ev.ShootN) {
        tally.count(Result::Goal, ev.ShootN / 100.0);
        s_.PlayResult = Result::Goal;
        postGoal(false);
        return;
    }
    if (rng_.rand(100) <= 56 && !netEmpty) {
        tally.count(Result::Save, ev.ShootN / 100.0);
        s_.PlayResult = Result::Save;
        // Told like any save: untold, the man's next shot would follow his
        // last with nothing between.
        DescribeSave();
        ev.saveRebound = ReboundAfterSave(false);
        countSave(side, shooter);
        followSaveRebound();
        return;
    }
    tally.count(Result::Miss, 0);
    s_.PlayResult = Result::Miss;
    creditMissedShot(session_.side(side).player(shooter));
    ++ev.missed[at(side)];
    DescribeReboundMiss();
    changePossession();
    s_.PlayZone = Zone::DefenseZone;
    PickLooseCarrier();
}

}  // namespace tallyrink
