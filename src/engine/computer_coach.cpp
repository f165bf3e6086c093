#include "engine/computer_coach.h"

#include <fmt/core.h>

#include <algorithm>
#include <bit>
#include <cmath>

#include "engine/game.h"
#include "team/positions.h"
#include "team/slot_scan.h"
#include "team/team_ratings.h"

namespace tallyrink {

namespace {

constexpr int kEvenForwardUnits = 4;
constexpr int kEvenPairs = 3;
constexpr int kSpecialUnits = 2;
// A line whose men are all at least this fresh can go out.
constexpr int kRestedEnergy = 88;
// What lineChangeDue finds.
constexpr int kNoChange = 0;
constexpr int kLateChange = 1;
constexpr int kTiredChange = 2;

constexpr std::uint64_t kAllSlots = (std::uint64_t{1} << kRosterSlots) - 1;

int other(int side) { return side == 0 ? 1 : 0; }
std::size_t at(int i) { return static_cast<std::size_t>(i); }
std::size_t at(UnitKind k) { return static_cast<std::size_t>(k); }

bool isForwardPos(std::size_t pos) { return pos <= 2; }

}  // namespace

// ---- Pure parts -----------------------------------------------------------------

std::array<double, 6> offenseTargetWeights(const std::array<TargetRow, 6>& rows, bool powerPlay, double shootingRate,
                                           Random& rng) {
    std::array<double, 6> w{};
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const TargetRow& r = rows[i];
        if (r.spot == 0 || r.spot == 2) continue;
        if (r.carrier) {
            double c = r.spot == 3 ? 8000 : r.spot == 4 ? 7000 : r.spot == 5 ? 2500 : 0;
            if (powerPlay && r.spot == 5) {
                c *= 3;
                double rate = shootingRate > 0 ? shootingRate : .25;
                if (rng.rnd() * .1 <= rate) c *= .2;
                if (rng.rnd() * .25 <= rate) c *= .2;
                if (rng.rnd() * .2 + .2 >= rate) c *= 3;
            }
            w[i] = c;
            continue;
        }
        double base = 1;
        double bonus = 0;
        switch (r.shotTendency) {
            case 1:
                base = 5;
                break;
            case 2:
                base = 50;
                bonus = .3;
                break;
            case 3:
                base = 500;
                bonus = 1;
                break;
            default:
                break;
        }
        double x = base * ((r.passTendency - 3) * .2 + 1 + bonus) + r.shotsPer60;
        if (r.spot == 5) x *= .3;
        w[i] = std::max(x, 0.0);
    }
    return w;
}

int drawTarget(const std::array<double, 6>& weights, Random& rng) {
    double total = 0;
    for (double x : weights) total += x;
    if (total <= 0) return kNoTarget;
    double v = rng.rnd() * total;
    double run = 0;
    for (std::size_t i = 0; i < weights.size(); ++i) {
        run += weights[i];
        if (weights[i] > 0 && v < run) return static_cast<int>(i);
    }
    for (std::size_t i = weights.size(); i-- > 0;)
        if (weights[i] > 0) return static_cast<int>(i);
    return kNoTarget;
}

int mostDueUnit(const double* shares, const double* played, const bool* rested, int count) {
    double total = 0;
    for (int u = 0; u < count; ++u) total += played[u];
    int best = 0;
    double bestDue = 0;
    for (int pass = 0; pass < 2 && best == 0; ++pass) {
        for (int u = 0; u < count; ++u) {
            if (pass == 0 && !rested[u]) continue;
            double due = shares[u] * total - played[u];
            if (best == 0 || due > bestDue) {
                best = u + 1;
                bestDue = due;
            }
        }
    }
    return best == 0 ? 1 : best;
}

// ---- Start -------------------------------------------------------------------------

void Game::coachInit() {
    coachInPlayKey_.valid = false;
    for (int side : {kVisitor, kHome}) {
        SideTables& t = session_.side(side);
        s_.coach.live[at(side)] = planStrategy(t.plan);
        s_.coach.timeoutLeft[at(side)] = session_.league().rules.TimeoutsAllowedCheck == 1;
        int line = t.plan.StartingFWDLine;
        int pair = t.plan.StartingDEFPair;
        s_.forwardUnit[at(side)] = line >= 1 && line <= kEvenForwardUnits ? line : 1;
        s_.defensePair[at(side)] = pair >= 1 && pair <= kEvenPairs ? pair : 1;
        putUnitOnIce(side);
        // This game's line starts empty.
        for (std::size_t slot = 0; slot < kRosterSlots; ++slot) statLine(t.GameRoster[slot], StatLineIndex::Game) = {};
    }
}

// ---- The driver --------------------------------------------------------------------

void Game::SetPlayBox() {
    if (driverRunning_) return;
    driverRunning_ = true;
    coachInPlayKey_.valid = false;
    forgetKeptLineups();
    while (!s_.GameEndedFlag) {
        // 1. A pause stops everything until the user's Continue.
        if (s_.Paused) {
            if (!s_.NoDisplay) presenter_->ShowPause(*this);
            break;
        }
        // 2. A valid puck team; the end-game states.
        if (s_.PuckTeam != kVisitor && s_.PuckTeam != kHome) s_.PuckTeam = kVisitor;
        markEndGame();
        // 3. The mood of the shooter of a new play.
        if (s_.find.newPlay) drawShooterMood();
        // 4. A batch runner repaints between games, not here.
        // 5. Whether anything is shown.
        s_.NoDisplay = options_.noDisplay;
        // 6. Matching lines, worked out once.
        loadMatchingPairs();
        // 7. The goalie pull.
        for (int side : {kVisitor, kHome})
            if (computerDecides(side)) computerGoaliePull(side);
        // 8. Nobody in goal and no goalie pulled: put one in.
        for (int side : {kVisitor, kHome}) {
            if (s_.GoaliePulled[at(side)] || s_.onIce[at(side)][IcePos::GoalieOrExtra] != kNoSlot) continue;
            s_.goalie[at(side)] = chooseGoalie(teams_[at(side)], s_.goalie[at(side)]);
            putUnitOnIce(side);
        }
        // 9. The faceoff men are picked by the draw itself.
        // 10. Line changes on the way out of the own end and before a draw.
        Zone z = s_.PlayZone;
        if (faceoffStage(z) == 1 || z == Zone::DefenseZone || z == Zone::NeutralZone) {
            for (int side : {kVisitor, kHome})
                if (computerDecides(side) || options_.autoLines[at(side)]) computerLineChange(side, isFaceoff(z));
        }
        // 11. The game is over.
        if (s_.GameOverFlag) {
            GameOverCheck();
            break;
        }
        coachInPlayOnChange();
        // 12. Who makes the call.
        int side = decidingSide();
        bool autoCall = computerDecides(side);
        bool forHuman = !autoCall && autoCallForHuman(side);
        s_.coach.lastCallAutomatic = forHuman;
        // 14. A human decides: the screen asks and the game waits.
        if (!autoCall && !forHuman) {
            if (isFaceoff(z) || z == Zone::ContinueBox)
                presenter_->AskLineChange(*this, side);
            else
                presenter_->AskPlayCall(*this, side);
            break;
        }
        // 13. The computer's call runs at once; the loop goes on to the next.
        if (z == Zone::ContinueBox) {
            if (autoCall) computerLineChange(side, false);
            ContinueCommand();
        } else if (z == Zone::Shootout) {
            PlayStep();
        } else {
            OffenseCommand(ChooseCall(side));
        }
    }
    driverRunning_ = false;
}

void Game::markEndGame() {
    bool late = (s_.Period == periods_ && s_.Clock <= 70) || s_.Period > periods_;
    for (int side : {kVisitor, kHome}) {
        int lead = leadOf(side);
        bool close = std::abs(lead) <= 2;
        s_.coach.trailingEnd[at(side)] = late && close && lead < 0;
        s_.coach.leadingEnd[at(side)] = late && close && lead > 0;
    }
}

int Game::leadOf(int side) const { return s_.Score[at(side)] - s_.Score[at(other(side))]; }

// The computer calls some plays for a human coach: the routine ones of the
// middle of the game, so that he is asked where his call matters.
bool Game::autoCallForHuman(int side) {
    Zone z = s_.PlayZone;
    if (coach(side) != CoachKind::Human || isFaceoff(z)) return false;
    if (s_.PlayResult == Result::MoveUp || session_.league().rules.NoComputerPlayCallsCheck == 1) return false;
    if (s_.GoaliePulled[0] || s_.GoaliePulled[1] || s_.coach.lastCallAutomatic) return false;
    if (s_.LastPlayResult == Result::Clear) return false;
    bool lastMinutes = s_.Period >= periods_ && s_.Clock < 300;
    if (z == Zone::DefenseZone || z == Zone::NeutralZone) {
        if (s_.PlayRating < 2 || s_.PlayRating > 8 || lastMinutes) return false;
        for (int s : {kVisitor, kHome})
            for (int slot : s_.onIce[at(s)].slot)
                if (slot != kNoSlot && s_.Energy[at(s)][at(slot)] < 85) return false;
        return rng_.rand(100) > 25;
    }
    if (z == Zone::OffenseZone) {
        Call draw = s_.FaceoffCall[at(side)];
        if (s_.entryFromFaceoff && (draw == Call::DrawForward || draw == Call::DrawBack)) return true;
        return std::abs(leadOf(side)) > 2 && s_.Clock > 180 && !(s_.Period >= periods_ && s_.Clock <= 300) &&
               rng_.rand(100) <= 35;
    }
    return false;
}

// ---- The calls -----------------------------------------------------------------------

Call Game::ChooseCall(int side) {
    Zone z = s_.PlayZone;
    if (isFaceoff(z)) return ChooseOffensePlay(side, true);
    switch (z) {
        case Zone::DefenseZone:
        case Zone::NeutralZone:
            return ChooseOffensePlay(side, false);
        case Zone::OffenseShooter:
            return ChooseShooterPlay(side);
        case Zone::OffenseZone: {
            std::array<TargetRow, 6> rows = offenseTargetRows(side);
            int target = ChooseOffenseTarget(side, rows);
            s_.coach.target[at(side)] = target == kNoTarget ? -1 : target;
            // The set play goes to him: the next step hands him the puck.
            if (target != kNoTarget) s_.find.PlayTarget = s_.onIce[at(side)].slot[at(target)];
            if (target == kNoTarget) return Call::Pass;
            const TargetRow& row = rows[at(target)];
            if (row.carrier) return Call::Shoot;
            return row.shotTendency >= 2 ? Call::PlayShoot : Call::PlayTo;
        }
        case Zone::Rush:
            return Call::Rush;
        case Zone::PenaltyShot:
            return Call::Shoot;
        default:
            return Call::Balanced;
    }
}

Call Game::ChooseOffensePlay(int side, bool faceoff) {
    const GamePlanRecord& plan = sideOf(side).plan;
    auto adj = [&](BreakoutAdj a) { return breakoutAdj(plan, a); };
    Random& r = rng_;

    int lead = leadOf(side);
    int behind = -lead;
    bool leading = lead > 0;
    bool trailing = lead < 0;
    bool lastRegular = s_.Period == periods_;
    int left = s_.Clock;

    Call call = Call::Balanced;
    // An empty net at the other end sends everyone forward, whatever else
    // stands; a pulled goalie of one's own, or a man short, settles the
    // breakout before the rest is weighed.
    const bool emptyNetAhead = s_.GoaliePulled[at(other(side))];
    const bool shortHanded = s_.Skaters[at(side)] < s_.Skaters[at(other(side))];
    const bool ownNetEmpty = s_.GoaliePulled[at(side)];
    if (emptyNetAhead) {
        s_.coach.ownLastCall[at(side)] = Call::Aggressive;
        return Call::Aggressive;
    }
    if (ownNetEmpty) {
        call = Call::Safe;
    } else if (shortHanded) {
        call = r.randAtMost(100, 50) ? Call::Clear : Call::Safe;
    } else {
        double rating = faceoff ? 5 : s_.PlayRating;
        // The unit ratings in tenths, the scale the matching margins are set in.
        double offense = onIceOffense(side) * 10;
        double defense = onIceDefense(other(side)) * 10;
        // offense > defense + 10 + rand(20), and offense < defense - 10 - rand(20)
        auto overmatched = [&] { return r.overRand(offense, defense + 10, 20); };
        auto undermatched = [&] { return r.overRand(-offense, -(defense - 10), 20); };

        // A safe breakout outranks an aggressive one, which outranks the
        // last call repeated: each is weighed only when those above it
        // didn't come, as their draws would count for nothing.
        double safe = 15;
        if (r.over(rating, 5, 5)) safe = 7 - adj(BreakoutAdj::HighPotential);
        if (r.over(rating, 7, 3)) safe = 2;
        if (r.under(rating, 2, 3)) safe = 1.5 * safe - adj(BreakoutAdj::LowPotential);
        if (r.over(rating, 5, 2)) safe = 0;
        if (leading) safe -= adj(BreakoutAdj::Leading);
        if (trailing) safe -= adj(BreakoutAdj::Trailing);
        if (overmatched())
            safe -= adj(BreakoutAdj::Overmatched);
        else if (undermatched())
            safe += adj(BreakoutAdj::Undermatched);
        if (r.overRand(behind, 2, 3)) safe = 0;
        if (r.overRand(behind, 1, 3)) safe *= .5;
        if (behind > 1 && lastRegular) {
            safe *= .5;
            if (!r.overRand(left, 360, 360)) safe = 0;
        }
        if (r.overRand(lead, 2, 3)) safe = 50;
        if (r.overRand(lead, 1, 3)) safe = (safe + 5) * 1.5;
        if (lead > 1) safe = (safe + 5) * 1.5;
        if (leading) safe = (safe + 5) * 1.5;
        if (leading && lastRegular) {
            if (!r.overRand(left, 360, 360)) safe *= 2;
            if (left <= 180) safe *= 2;
        }
        if (lead > 1 && lastRegular && left <= 180) safe = 100;
        if (r.randAtMost(100, safe)) {
            call = Call::Safe;
        } else {
            double a = 30 + aggressivenessAdj(plan);
            if (r.over(rating, 5, 5)) a = 50 + adj(BreakoutAdj::HighPotential);
            if (r.over(rating, 7, 3)) a = 80;
            if (r.under(rating, 2, 3)) a = 10 + adj(BreakoutAdj::LowPotential);
            if (r.under(rating, 1, 2)) a = 0;
            if (leading) a += adj(BreakoutAdj::Leading);
            if (trailing) a += adj(BreakoutAdj::Trailing);
            if (overmatched())
                a += adj(BreakoutAdj::Overmatched);
            else if (undermatched())
                a += adj(BreakoutAdj::Undermatched);
            if (r.overRand(lead, 2, 3)) a *= .1;
            if (r.overRand(lead, 1, 3)) a *= .5;
            if (leading && s_.Period >= 2) a *= .5;
            if (lead > 1 && lastRegular) a *= .5;
            if (lead > 1 && lastRegular && !r.overRand(left, 360, 360)) a = 0;
            if (leading && lastRegular && left <= 180) a = 0;
            if (r.overRand(behind, 1, 3) && r.randAtMost(2, s_.Period)) a = (a + 3) * 1.1;
            if (lastRegular && r.overRand(behind, 0, 2)) a = (a + 2) * 1.1;
            if (trailing && s_.Period >= periods_ && r.underRand(left, 480, 480)) a = (a + 3) * 1.1;
            if (behind > 1 && lastRegular && !r.overRand(left, 90, 90)) a += 20;
            if (trailing && lastRegular && !r.overRand(left, 60, 60)) a = 100;
            if (r.randAtMost(100, a))
                call = Call::Aggressive;
            else if (r.rand(10) <= 2)
                call = s_.coach.ownLastCall[at(side)];
        }
    }

    if (lastRegular && trailing && (left < 120 || (left < 360 && r.rand(2) == 1))) call = Call::Safe;
    const bool pressing = call == Call::Aggressive || call == Call::Balanced;
    if (pressing && lead >= 3 && ((lastRegular && r.rand(2) == 1) || (r.overRand(left, 300, 600) && r.rand(2) == 1))) {
        if (call == Call::Aggressive) call = Call::Balanced;
        if (call == Call::Balanced) call = Call::Safe;
    }
    if (lastRegular && lead > 4 && call != Call::Safe && r.rand(2) == 1) call = Call::Safe;
    if (!faceoff && s_.PlayZone == Zone::NeutralZone) {
        if (call == Call::Safe) call = Call::DumpChase;
        if (call == Call::Aggressive) call = Call::SkatePass;
    }
    if (lastRegular && trailing && r.underRand(left, 60, 30)) call = Call::Aggressive;
    if (lastRegular && behind > 1 && r.underRand(left, 120, 60)) call = Call::Aggressive;

    // What is kept is the kind of call, whatever the zone called it.
    Call kept = call == Call::DumpChase ? Call::Safe : call == Call::SkatePass ? Call::Aggressive : call;
    s_.coach.ownLastCall[at(side)] = kept;
    return call;
}

Call Game::ChooseShooterPlay(int side) {
    const OnIce& ice = s_.onIce[at(side)];
    int carrier = s_.find.Carrier;
    if (carrier == kNoSlot || !ice.holds(carrier)) carrier = ice[IcePos::Center];
    if (carrier == kNoSlot) return Call::Shoot;
    const PlayerRecord& p = sideOf(side).player(carrier);
    double s = (p.RatingShotIn + p.RatingSkate) / (p.RatingShotOut + 2.0);
    int penetrate = p.UsagePenetrate >= 1 && p.UsagePenetrate <= 5 ? p.UsagePenetrate : 3;
    double f = (penetrate - 3) * .2 + 1;
    return rng_.rand(25) <= s * f ? Call::Penetrate : Call::Shoot;
}

int Game::ChooseOffenseTarget(int side, const std::array<TargetRow, 6>& rows) {
    double shooting = 0;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        int slot = s_.onIce[at(side)].slot[i];
        if (rows[i].carrier && slot != kNoSlot) shooting = sideOf(side).rates[at(slot)].ShootingPct;
    }
    bool powerPlay = s_.Skaters[at(side)] > s_.Skaters[at(other(side))];
    return drawTarget(offenseTargetWeights(rows, powerPlay, shooting, rng_), rng_);
}

// The men of the offensive zone where the play-call list put them, with
// what the list says of each as a shooter. Before any list is built (or
// when it is empty) they stand where their positions put them: the center
// in the slot with the puck, the wings at mid range, the defensemen at the
// points.
std::array<TargetRow, 6> Game::offenseTargetRows(int side) const {
    static constexpr std::array<int, 6> kSpotOf{4, 3, 4, 5, 5, 3};
    const FindState& f = s_.find;
    bool listed = side == s_.PuckTeam && f.openCount > 0;
    std::array<TargetRow, 6> rows{};
    const OnIce& ice = s_.onIce[at(side)];
    const SideTables& t = sideOf(side);
    for (std::size_t pos = 0; pos < rows.size(); ++pos) {
        int slot = ice.slot[pos];
        if (slot == kNoSlot) continue;
        if (pos == 5 && !s_.GoaliePulled[at(side)]) continue;
        const PlayerRecord& p = t.player(slot);
        TargetRow& r = rows[pos];
        r.passTendency = p.UsageOffensiveZone >= 1 && p.UsageOffensiveZone <= 5 ? p.UsageOffensiveZone : 3;
        r.shotsPer60 = t.rate(RateSet::Real, slot).ShotsPer60;
        if (!listed) {
            r.spot = kSpotOf[pos];
            r.shotTendency = r.spot == kSpotIn ? 3 : r.spot == kSpotMid ? 2 : r.spot == kSpotOut ? 1 : 0;
            r.carrier = pos == static_cast<std::size_t>(IcePos::Center);
            continue;
        }
        r.spot = f.Spot[pos];
        r.carrier = slot == f.Carrier;
        // The set play looks for the man nearest the net: its tendency to
        // shoot from a depth, not the shooter's own grade there (a grade
        // would leave the puck with the man at the point nearly always).
        r.shotTendency = 0;
        for (int i = 0; i < f.openCount; ++i) {
            const OpenMan& m = f.openMen[at(i)];
            if (m.pos != static_cast<int>(pos)) continue;
            r.shotTendency = m.spot == kSpotIn ? 3 : m.spot == kSpotMid ? 2 : m.spot == kSpotOut ? 1 : 0;
            if (m.hasPuck) r.carrier = true;
        }
    }
    return rows;
}

// ---- Strategy in play -------------------------------------------------------------------

void Game::CoachInPlay() {
    coachInPlayKey_.valid = false;
    coachInPlayOnChange();
}

void Game::coachInPlayOnChange() {
    // The clock counts only through the late-game column it falls in, and
    // only in the last period or after.
    const bool late = s_.Period >= periods_;
    CoachInPlayKey key{true, {coach(kVisitor), coach(kHome)}, s_.Skaters,
                       {},   {s_.Score[0], s_.Score[1]},      late ? lateGameColumn(s_.Clock) : -1,
                       late};
    for (int side : {kVisitor, kHome})
        for (std::size_t pos = 0; pos < 3; ++pos) key.forwards[at(side)][pos] = s_.onIce[at(side)].slot[pos];
    if (key == coachInPlayKey_) return;
    coachInPlayKey_ = key;
    for (int side : {kVisitor, kHome}) {
        const GamePlanRecord& plan = sideOf(side).plan;
        if (coach(side) == CoachKind::Human && plan.DontUseWhenHumanCoached == 1) continue;
        const LiveStrategy& base = keptPlan(side).strategy;
        LiveStrategy live = base;
        int own = s_.Skaters[at(side)];
        int opp = s_.Skaters[at(other(side))];
        if (plan.DontUseLineSpecificSettings != 1) {
            // The situation line whose forwards are the ones on the ice.
            LineRange range = situationLines(own, opp);
            const LineTables& lines = sideOf(side).lines;
            const OnIce& ice = s_.onIce[at(side)];
            for (int line = range.last; line >= range.first; --line) {
                bool all = true;
                bool anyone = false;
                for (std::size_t pos = 0; pos < 3 && all; ++pos) {
                    int slot = ice.slot[pos];
                    if (slot == kNoSlot) continue;
                    anyone = true;
                    all = lines.lineRole(line, slot) != ForwardRole::None;
                }
                if (!all || !anyone) continue;
                LineSettings settings = lineSettings(plan, line);
                if (settings.any()) live = withLineSettings(base, settings, killLine(line));
                break;
            }
        }
        s_.coach.live[at(side)] = lateGameStrategy(plan, live, base, LateGame{leadOf(side), s_.Clock, late});
    }
}

double Game::onIceOffense(int side) const {
    UnitSituation situation;
    situation.skaters = s_.Skaters[at(side)];
    situation.opponentSkaters = s_.Skaters[at(other(side))];
    situation.extraAttacker = s_.GoaliePulled[at(side)];
    return unitRatings(side, false, situation).onIceOffense;
}

double Game::onIceDefense(int side) const {
    UnitSituation situation;
    situation.skaters = s_.Skaters[at(side)];
    situation.opponentSkaters = s_.Skaters[at(other(side))];
    situation.extraAttacker = s_.GoaliePulled[at(side)];
    return unitRatings(side, false, situation).onIceDefense;
}

// ---- Lines -------------------------------------------------------------------------------

// A plan that sends its checkers against the other side's scorers finds,
// once a game, its best defensive forward line and the other side's best
// scoring one.
void Game::loadMatchingPairs() {
    if (s_.coach.pairsLoaded) return;
    s_.coach.pairsLoaded = true;
    auto lineAverage = [&](int side, int line, bool defense) {
        const SideTables& t = sideOf(side);
        double sum = 0;
        int n = 0;
        for (int slot = 0; slot < kRosterSlots; ++slot) {
            if (!teams_[at(side)].candidate[at(slot)] || t.lines.lineRole(line, slot) == ForwardRole::None) continue;
            const PlayerRecord& p = t.player(slot);
            sum += defense ? p.RatingDefense : p.RatingOffense;
            ++n;
        }
        return n > 0 ? sum / n : 0.0;
    };
    for (int side : {kVisitor, kHome}) {
        s_.coach.matchFor[at(side)] = {};
        if (sideOf(side).plan.DefVsScoring != 1) continue;
        int checkers = 1;
        int scorers = 1;
        for (int line = 2; line <= kEvenForwardUnits; ++line) {
            if (lineAverage(side, line, true) > lineAverage(side, checkers, true)) checkers = line;
            if (lineAverage(other(side), line, false) > lineAverage(other(side), scorers, false)) scorers = line;
        }
        s_.coach.matchFor[at(side)][at(scorers - 1)] = checkers;
    }
}

namespace {
constexpr std::uint64_t kLookedAt = std::uint64_t{1} << 63;
static_assert(kRosterSlots < 64, "the top bit is free to mark a line looked at");
}  // namespace

// Built into unitRested, as most lines asked for are kept.
[[gnu::always_inline]] inline std::uint64_t Game::lineMen(int side, int line, bool forwards) {
    const std::uint64_t kept = lineMenMemo_[at(side)].at(at((forwards ? 0 : kLineSets) + line - 1));
    return kept != 0 ? kept & ~kLookedAt : readLineMen(side, line, forwards);
}

std::uint64_t Game::readLineMen(int side, int line, bool forwards) {
    const LineTables& lines = sideOf(side).lines;
    const BySlot<std::uint8_t>& roles =
        forwards ? lines.LineRoleLive.at(at(line - 1)) : lines.LineFlagLive.at(at(line - 1));
    // A role is any nonzero byte.
    std::uint64_t men = 0;
    for (std::size_t first = 0; first < kRosterSlots; first += 8)
        men |= byteMarks(nonzeroBytes(slotWord(roles, first))) << first;
    if (keepsLineups()) lineMenMemo_[at(side)].at(at((forwards ? 0 : kLineSets) + line - 1)) = men | kLookedAt;
    return men;
}

// Asked for each unit in turn by the coach's choices: built into those loops,
// the call and its set-up go. `fit` is fitBits of the side's candidates.
[[gnu::always_inline]] inline bool Game::unitRested(int side, int line, bool forwards, std::uint64_t fit) {
    for (std::uint64_t men = lineMen(side, line, forwards) & fit; men != 0; men &= men - 1)
        if (s_.Energy[at(side)][at(std::countr_zero(men))] < kRestedEnergy) return false;
    return true;
}

// Asked once a side at every stop; built into its one caller.
[[gnu::always_inline]] inline int Game::lineChangeDue(int side) {
    int margin = std::abs(leadOf(side));
    if (margin >= 2 && rng_.underRand(s_.Clock, 30, 10)) return kNoChange;
    if (s_.coach.pendingChange[at(side)]) return kTiredChange;
    const OnIce& ice = s_.onIce[at(side)];
    for (std::size_t pos = 0; pos < 5; ++pos) {
        int slot = ice.slot[pos];
        if (slot == kNoSlot) continue;
        const ManFacts& facts = manFacts_[at(side)][at(slot)];
        int energy = s_.Energy[at(side)][at(slot)];
        if (energy <= 60 || energy <= facts.pullBelow + 7) return kTiredChange;
        int limit = (isForwardPos(pos) ? 60 : 70) + facts.longerStint;
        if (s_.stint[at(side)][at(slot)] > limit) return kTiredChange;
    }
    // The last minutes of a close game: the coach wants his lines for it.
    if (margin <= 1 && s_.Period >= periods_ && s_.Clock <= 180) return kLateChange;
    return kNoChange;
}

void Game::computerLineChange(int side, bool atFaceoff) {
    Zone z = s_.PlayZone;
    if (z == Zone::Shootout || z == Zone::ContinueBox) return;
    // A side that iced the puck keeps its men for the draw.
    bool iced = atFaceoff && s_.LastPlayResult == Result::Clear && faceoffSpot(z) == FaceoffSpot::Defense &&
                faceoffEndSide(z) == side && session_.league().rules.AllowLineChangesOnIcingCheck == 0;
    if (iced) return;
    int need = lineChangeDue(side);
    bool due = need == kTiredChange;
    if (!atFaceoff && need != kNoChange && !s_.coach.pendingChange[at(side)]) {
        bool cleared = s_.LastPlayResult == Result::Clear && side != s_.PuckTeam && !powerPlay(side);
        if (cleared || (s_.Skaters[0] != s_.Skaters[1] && rng_.rand(2) == 1)) {
            if (due) s_.coach.pendingChange[at(side)] = true;
            return;
        }
    }
    // At a draw, or late, a coach may also want a line for the zone, the
    // match-up or the score.
    if (need == kNoChange && !atFaceoff) return;
    s_.coach.pendingChange[at(side)] = false;
    int forwards = s_.forwardUnit[at(side)];
    int pair = s_.defensePair[at(side)];
    chooseUnits(side, !due);
    if (forwards != s_.forwardUnit[at(side)] || pair != s_.defensePair[at(side)]) {
        putUnitOnIce(side);
        s_.lineChangeMade[at(side)] = true;
        // A new pair alone slips on unnoticed; new forwards are told now and then.
        if (forwards != s_.forwardUnit[at(side)] && rng_.rand(3) == 1) DescribeLineChange(side);
    }
}

// Picks the units to send out: the one of each kind that has fallen
// furthest behind its share of the game's time among those rested enough,
// unless the end of the game, the match-up or the draw's zone asks for
// another. With `preferenceOnly` the units on the ice stay unless a
// preference names others.
void Game::chooseUnits(int side, bool preferenceOnly) {
    const GamePlanRecord& plan = sideOf(side).plan;
    int own = s_.Skaters[at(side)];
    int opp = s_.Skaters[at(other(side))];
    LineRange range = situationLines(own, opp);
    const UsageShares& shares = keptPlan(side).shares;
    auto& played = s_.coach.unitSecs[at(side)];
    int& forwards = s_.forwardUnit[at(side)];
    int& pair = s_.defensePair[at(side)];
    const std::uint64_t fit = fitBits(teams_[at(side)].candidate);

    if (own != 5 || opp != 5) {
        if (preferenceOnly) return;
        int units = std::min(kSpecialUnits, range.last - range.first + 1);
        UnitKind kind = own > opp ? UnitKind::PowerPlay : own < opp ? UnitKind::PenaltyKill : UnitKind::Forwards;
        const double* share = kind == UnitKind::PowerPlay     ? shares.powerPlay.data()
                              : kind == UnitKind::PenaltyKill ? shares.penaltyKill.data()
                                                              : shares.powerPlay.data();
        std::array<bool, kMaxUnits> rested{};
        for (int u = 1; u <= units; ++u) rested[at(u - 1)] = unitRested(side, range.first + u - 1, true, fit);
        forwards = mostDueUnit(share, played[at(kind)].data(), rested.data(), units);
        return;
    }

    Zone z = s_.PlayZone;
    bool ownEnd = isFaceoff(z) && faceoffSpot(z) == FaceoffSpot::Defense && faceoffEndSide(z) == side;
    bool otherEnd = isFaceoff(z) && faceoffSpot(z) == FaceoffSpot::Defense && faceoffEndSide(z) == other(side);
    int wantForwards = ownEnd ? plan.DefZoneFWD : otherEnd ? plan.OffZoneFWD : 0;
    int wantPair = ownEnd ? plan.DefZoneDEF : otherEnd ? plan.OffZoneDEF : 0;
    int opposing = s_.forwardUnit[at(other(side))];
    if (opposing >= 1 && opposing <= kEvenForwardUnits && s_.coach.matchFor[at(side)][at(opposing - 1)] > 0)
        wantForwards = s_.coach.matchFor[at(side)][at(opposing - 1)];
    // Late in a close game the scorers go out to tie it, the checkers to
    // hold a lead.
    bool late = s_.Period >= periods_ && s_.Clock <= 180 && std::abs(leadOf(side)) <= 1;
    if (s_.coach.trailingEnd[at(side)] || (late && leadOf(side) <= 0)) wantForwards = 1;
    if (s_.coach.leadingEnd[at(side)] || (late && leadOf(side) > 0)) {
        for (int u : s_.coach.matchFor[at(side)])
            if (u > 0) wantForwards = u;
    }
    if (wantForwards < 1 || wantForwards > kEvenForwardUnits || !unitRested(side, wantForwards, true, fit))
        wantForwards = 0;
    if (wantPair < 1 || wantPair > kEvenPairs || !unitRested(side, wantPair, false, fit)) wantPair = 0;
    if (preferenceOnly) {
        if (wantForwards > 0) forwards = wantForwards;
        if (wantPair > 0) pair = wantPair;
        return;
    }

    std::array<bool, kMaxUnits> rested{};
    for (int u = 1; u <= kEvenForwardUnits; ++u) rested[at(u - 1)] = unitRested(side, u, true, fit) && u != forwards;
    int next =
        mostDueUnit(shares.lines.data(), played[at(UnitKind::Forwards)].data(), rested.data(), kEvenForwardUnits);
    if (plan.FillFromDepth != 1) {
        // Rotating: the next line in turn, unless it has already had more
        // than a shift beyond its share.
        int turn = forwards % kEvenForwardUnits + 1;
        const auto& time = played[at(UnitKind::Forwards)];
        double total = time[0] + time[1] + time[2] + time[3];
        if (rested[at(turn - 1)] && time[at(turn - 1)] - shares.lines[at(turn - 1)] * total < 45) next = turn;
    }
    forwards = wantForwards > 0 ? wantForwards : next;
    for (int u = 1; u <= kEvenPairs; ++u) rested[at(u - 1)] = unitRested(side, u, false, fit) && u != pair;
    int nextPair = mostDueUnit(shares.pairs.data(), played[at(UnitKind::Pairs)].data(), rested.data(), kEvenPairs);
    pair = wantPair > 0 ? wantPair : nextPair;
}

const Game::KeptPlan& Game::keptPlan(int side) {
    KeptPlan& kept = planMemo_[at(side)];
    const bool keep = keepsLineups();
    if (keep && kept.known) return kept;
    const GamePlanRecord& plan = sideOf(side).plan;
    kept = {keep, usageShares(plan), planStrategy(plan)};
    return kept;
}

double Game::unitSeconds(int side, UnitKind kind, int unit) const {
    if (unit < 1 || unit > static_cast<int>(kMaxUnits)) return 0;
    return s_.coach.unitSecs[at(side)][at(kind)][at(unit - 1)];
}

// ---- The goalie pull ------------------------------------------------------------------------

// Late in the last period (and in overtime) a computer coach trailing by
// one or two goals takes his goalie out for an extra attacker at the time
// his game plan sets, and puts him back when the score no longer asks for
// it or the draw is in his own end.
void Game::computerGoaliePull(int side) {
    Zone z = s_.PlayZone;
    if (s_.Period < periods_ || s_.Clock > 120 || z == Zone::Shootout || z == Zone::PenaltyShot) {
        returnGoalie(side);
        return;
    }
    const GamePlanRecord& plan = sideOf(side).plan;
    int behind = -leadOf(side);
    bool ownEndDraw = isFaceoff(z) && faceoffSpot(z) == FaceoffSpot::Defense && faceoffEndSide(z) == side;
    bool pressedInOwnEnd = s_.PuckTeam == other(side) && isOffenseState(z);
    if (s_.GoaliePulled[at(side)]) {
        if (!pressedInOwnEnd && (behind < 1 || behind > 2 || ownEndDraw)) returnGoalie(side);
        return;
    }
    // The plan's check keeps the computer from pulling the goalie of a team
    // whose coach is a person while it plays that team for him (a zoom, a
    // game with no screen); its own teams pull by the plan's times.
    bool mayPull = coach(side) == CoachKind::Computer || plan.DontPullGoalie != 1;
    if (!mayPull || behind < 1 || behind > 2 || ownEndDraw || pressedInOwnEnd) return;
    if (s_.Clock >= pullTime(plan, behind)) return;
    if (waitForPuck(plan, behind) && (s_.PuckTeam != side || isFaceoff(z))) return;
    s_.GoaliePulled[at(side)] = true;
    ++tally_.goaliePulls;
    putUnitOnIce(side);
    DescribeGoaliePull(side);
}

void Game::returnGoalie(int side) {
    if (!s_.GoaliePulled[at(side)]) return;
    s_.GoaliePulled[at(side)] = false;
    putUnitOnIce(side);
}

// ---- Timeouts, fatigue and ice time --------------------------------------------------------------

void Game::restoreEveryone() {
    for (int side : {kVisitor, kHome}) {
        const SideTables& tables = sideOf(side);
        const BySlot<bool>& dressed = teams_[at(side)].candidate;
        // What trackFatigue would find once everyone is restored, found as
        // he is: with no seconds and no stint, a man's fatigue rests unless
        // he was on or his energy, now his most, can't settle (more than
        // 100, or 50 and less with a shift limit).
        std::uint64_t tracked = 0;
        for (std::size_t slot = 0; slot < kRosterSlots; ++slot) {
            const int maxEnergy = tables.MaxEnergy[slot];
            s_.Energy[at(side)][slot] = maxEnergy;
            s_.ShiftSecs[at(side)][slot] = 0;
            s_.stint[at(side)][slot] = 0;
            const bool settles = tables.ShiftLimit[slot] <= 0 || (maxEnergy > 50 && maxEnergy <= 100);
            if (dressed[slot] || s_.coach.wasOn[at(side)][slot] || !settles) tracked |= std::uint64_t{1} << slot;
        }
        fatigueTracked_[at(side)] |= tracked;
    }
}

// A computer coach's one timeout: at a stoppage late in a close last
// period, to rest tired men or to set up a team that isn't ahead.
void Game::CoachTimeout() {
    if (!isFaceoff(s_.PlayZone) || play_.full() || s_.coach.tvTimeoutThisStep) return;
    if (session_.league().rules.TimeoutsAllowedCheck != 1 || s_.Period != periods_) return;
    if (std::abs(leadOf(kVisitor)) > 2 || !rng_.underRand(s_.Clock, 120, 60)) return;
    for (int side : {kVisitor, kHome}) {
        if (coach(side) != CoachKind::Computer || !s_.coach.timeoutLeft[at(side)] || s_.coach.coachTimeoutThisStep)
            continue;
        bool tired = false;
        for (std::size_t pos = 0; pos < 5; ++pos) {
            int slot = s_.onIce[at(side)].slot[pos];
            if (slot != kNoSlot && s_.Energy[at(side)][at(slot)] < 95) tired = true;
        }
        if (!tired && leadOf(side) > 0) continue;
        DescribeTimeout(side);
        restoreEveryone();
        s_.coach.timeoutLeft[at(side)] = false;
        s_.coach.coachTimeoutThisStep = true;
    }
}

namespace {

// The rate a man on the ice tires at, by his energy from 79 (and below) to
// 100 (and above): a table, as the bands of energy a branch would test
// change from man to man.
constexpr double tireRate(int e) {
    return e >= 100 ? .5 : e >= 90 ? 1.1 - (e - 90) * .05 : e >= 80 ? 1.6 - (e - 80) * .04 : 1.7;
}
constexpr auto kTireRate = [] {
    std::array<double, 22> rates{};
    for (int e = 79; e <= 100; ++e) rates[static_cast<std::size_t>(e - 79)] = tireRate(e);
    return rates;
}();

// A man's energy from his fatigue seconds against his shift limit: his
// most while he is rested, down to 80 at the limit, under 80 past it.
int energyAfter(double secs, int limit, int maxEnergy) {
    if (secs > limit) return std::clamp(roundToInt(80 - (secs - limit) * .3), 0, 79);
    if (secs > 0) return std::max(roundToInt(maxEnergy - (secs / limit) * 20), 80);
    return maxEnergy;
}

}  // namespace

// The clock's charge to the players: fatigue seconds on the ice and
// recovery on the bench, and the time and shifts of the game's line.
std::array<std::uint64_t, 2> Game::chargePlayers(double t) {
    static_assert(kRosterSlots <= 64, "a side's slots fit one word of bits");
    std::array<std::uint64_t, 2> drawn{};
    bool faceoff = isFaceoff(s_.PlayZone);
    bool afterPenalty = s_.LastPlayResult == Result::Penalty;
    bool timeout = s_.coach.tvTimeoutThisStep || s_.coach.coachTimeoutThisStep;
    bool counted = session_.GameType != 'E';
    // The whole seconds the clock will lose, so a game's times add up.
    int seconds = s_.Clock - roundToInt(s_.Clock - t);
    for (int side : {kVisitor, kHome}) {
        SideTables& tables = session_.side(side);
        const OnIce& ice = s_.onIce[at(side)];
        int own = stepSkaters_[at(side)];
        int opp = stepSkaters_[at(other(side))];
        int dressed = slotsSet(teams_[at(side)].candidate);
        double benchRate = .5 + (dressed <= 17 ? .05 : 0) + (dressed <= 16 ? .05 : 0);
        // A top-line man among the first three places: each is tested on
        // his own until one passes, so one draw against the chance that
        // any does.
        double noTopLine = 1;
        for (std::size_t pos = 0; pos < 3; ++pos) {
            const int slot = ice.slot[pos];
            if (slot != kNoSlot) noTopLine *= 1 - manFacts_[at(side)][at(slot)].topLineChance;
        }
        const bool topLine = rng_.chance(1 - noTopLine);
        // Who is on, by slot: one pass over the six places instead of a
        // search of them for each of the roster's slots.
        // Worked without a test per place: which places are filled varies
        // from step to step more than a branch can guess.
        std::uint64_t onIce = 0;
        for (int slot : ice.slot)
            onIce |= std::uint64_t{static_cast<unsigned>(slot) < static_cast<unsigned>(kRosterSlots)} << (slot & 63);
        // Only the men who could have anything to charge are visited; the
        // rest sit as they were and SetEnergy passes them over too. A man
        // sent out joins them until he has sat long enough to settle.
        std::uint64_t& tracked = fatigueTracked_[at(side)];
        tracked |= onIce;
        // Time running backwards would charge the bench too.
        if (t < 0) tracked = kAllSlots;
        // A man's energy follows from his seconds once they are charged: it
        // is set here while his figures are at hand. Only a fall that is
        // drawn waits for SetEnergy, so the draws still come after all of
        // the charge's, in slot order; nothing in between reads energy.
        auto settleEnergy = [&](int slot, double secs, int limit) {
            if (limit <= 0) return;
            int& energy = s_.Energy[at(side)][at(slot)];
            const int e = energyAfter(secs, limit, tables.MaxEnergy[at(slot)]);
            if (secs > limit && energy >= 80 && energy - e > 10) {
                drawn[at(side)] |= std::uint64_t{1} << slot;
                return;
            }
            energy = std::clamp(e, 0, 100);
        };
        // A man who has sat since the game began (or since a timeout rested
        // everyone) has nothing to charge: he has no seconds to recover and
        // no stint, and his bench rate can't push him above zero.
        const bool restful = t >= 0;
        // The box is a full rest: a man comes out of it fresh.
        std::uint64_t boxed = 0;
        for (const BoxPenalty& p : s_.pen.box[at(side)])
            if (p.server >= 0 && p.server < kRosterSlots) boxed |= std::uint64_t{1} << p.server;
        // The bench first: recovery only, from the small per-slot tables,
        // and no draws, so the men on the ice still draw in slot order after
        // it; each loop's tests then run one way for most of its men.
        for (std::uint64_t left = tracked & ~onIce; left != 0; left &= left - 1) {
            const int slot = std::countr_zero(left);
            double& secs = s_.ShiftSecs[at(side)][at(slot)];
            const int limit = tables.ShiftLimit[at(slot)];
            if (boxed >> slot & 1) {
                secs = 0;
                s_.stint[at(side)][at(slot)] = 0;
                s_.coach.wasOn[at(side)][at(slot)] = false;
                s_.Energy[at(side)][at(slot)] = tables.MaxEnergy[at(slot)];
                settleEnergy(slot, 0, limit);
                continue;
            }
            if (restful && secs == 0 && s_.stint[at(side)][at(slot)] == 0 && !s_.coach.wasOn[at(side)][at(slot)] &&
                (limit <= 0 || tables.MaxEnergy[at(slot)] > 50)) {
                const bool settled =
                    limit <= 0 || s_.Energy[at(side)][at(slot)] == std::min<int>(tables.MaxEnergy[at(slot)], 100);
                // Settled, he stays so until he is sent out again, and the
                // ice is added to the visited slots at every charge; his
                // energy is where it stays.
                if (settled)
                    tracked &= ~(std::uint64_t{1} << slot);
                else
                    settleEnergy(slot, 0, limit);
                continue;
            }
            s_.coach.wasOn[at(side)][at(slot)] = false;
            if (limit <= 0) continue;
            // Worked in a local: the stores to the tables can't then hold
            // up the sums.
            // The stoppages' allowances as sums of nothing when they don't
            // apply (taking away zero leaves any value as it was).
            double recovered = secs;
            recovered -= faceoff ? 7.0 : 0.0;
            recovered -= afterPenalty ? 2.0 : 0.0;
            recovered -= t * (benchRate - (100 - tables.MaxEnergy[at(slot)]) * .01);
            s_.stint[at(side)][at(slot)] = 0;
            recovered = std::max(recovered, 0.0);
            secs = timeout ? 0 : recovered;
            settleEnergy(slot, secs, limit);
        }
        // The side's figures for every man on, read once: the stores to the
        // men's records would otherwise have them read again for each.
        const int goalieSlot = s_.goalie[at(side)];
        const int ppSeconds = own > opp ? seconds : 0;
        const int shSeconds = own < opp ? seconds : 0;
        for (std::uint64_t left = tracked & onIce; left != 0; left &= left - 1) {
            const int slot = std::countr_zero(left);
            double& secs = s_.ShiftSecs[at(side)][at(slot)];
            const int limit = tables.ShiftLimit[at(slot)];
            PlayerRecord& p = tables.player(slot);
            const ManFacts& facts = manFacts_[at(side)][at(slot)];
            const bool goalie = facts.goalie & (slot == goalieSlot);
            {
                // Added as counts of nothing rather than tested: the men
                // visited alternate in kind too often for a branch to follow.
                StatLine& game = statLine(p, StatLineIndex::Game);
                game.Toi += seconds;
                if (counted) game.GP = 1;
                const bool skater = !goalie;
                game.ToiPP += skater ? ppSeconds : 0;
                game.ToiSH += skater ? shSeconds : 0;
                const int newShift = (skater & !s_.coach.wasOn[at(side)][at(slot)]) ? 1 : 0;
                game.Shifts = static_cast<std::int16_t>(game.Shifts + newShift);
                StatLine& replay = statLine(p, StatLineIndex::Replay);
                replay.Shifts = static_cast<std::int16_t>(replay.Shifts + newShift);
            }
            s_.coach.wasOn[at(side)][at(slot)] = true;

            if (limit <= 0) continue;
            double sum = secs;
            sum -= faceoff ? 4.9 : 0.0;
            sum -= afterPenalty ? 2.0 : 0.0;
            double rate = kTireRate[static_cast<std::size_t>(std::clamp(s_.Energy[at(side)][at(slot)], 79, 100) - 79)];
            if (rng_.over(limit, 90, 20)) rate *= facts.limitFactor;
            if (topLine && !facts.defenseman) rate *= .9;
            // A player running ahead of his real minutes tires sooner.
            const double ratio = facts.minutesRatio;
            if (facts.minutes10 && rng_.under(ratio, .92, .05)) rate *= .95;
            if (rng_.chance(facts.tireChance18)) rate *= .9;
            sum += t * rate;
            s_.stint[at(side)][at(slot)] += t;
            // A swing the man's minutes make certain takes no draw.
            if (sum >= 5 && t >= 5)
                sum += facts.swingCertain ? facts.swingSure : stintSwing(rng_.rnd(), facts.swingBelow);
            sum = std::max(sum, 0.0);
            secs = timeout ? 0 : sum;
            settleEnergy(slot, secs, limit);
        }
        // The units' share of the game's time.
        auto& units = s_.coach.unitSecs[at(side)];
        if (own == 5 && opp == 5) {
            units[at(UnitKind::Forwards)][at(std::clamp(s_.forwardUnit[at(side)], 1, 4) - 1)] += seconds;
            units[at(UnitKind::Pairs)][at(std::clamp(s_.defensePair[at(side)], 1, 3) - 1)] += seconds;
        } else if (own != opp) {
            UnitKind kind = own > opp ? UnitKind::PowerPlay : UnitKind::PenaltyKill;
            units[at(kind)][at(std::clamp(s_.forwardUnit[at(side)], 1, 2) - 1)] += seconds;
        }
    }
    s_.coach.tvTimeoutThisStep = false;
    s_.coach.coachTimeoutThisStep = false;
    return drawn;
}

void Game::layManFacts() {
    double eraFights = 0;
    for (int side : {kVisitor, kHome}) {
        int year = sideOf(side).team.TeamYear;
        if (year >= EraTable::kFirstYear && year <= EraTable::kLastYear)
            eraFights = session_.eraRow(year, 2008).FightsPerGame;
    }
    fightEraFactor_ = eraFights > 0 ? std::clamp(eraFights / .6, .1, 10.0) : 1;
    const EraTable* era = session_.league().era;
    for (int side : {kVisitor, kHome}) {
        const SideTables& tables = sideOf(side);
        sideFacts_[at(side)] = {tables.team.TeamType.view() == "C", tables.team.TeamType.view() == "D",
                                tables.team.TeamYear >= 2017};
        for (int slot = 0; slot < kRosterSlots; ++slot) {
            const PlayerRecord& p = tables.player(slot);
            const SetRates& real = tables.rate(RateSet::Real, slot);
            const SetRates& replay = tables.rate(RateSet::Replay, slot);
            const int limit = tables.ShiftLimit[at(slot)];
            const double f = isDefenseman(p) ? .006 : .003;
            ManFacts& facts = manFacts_[at(side)][at(slot)];
            facts.pullBelow = p.PullWhenFatigueBelow > 0 ? p.PullWhenFatigueBelow : 80;
            const int year = p.PlayerYear;
            facts.longerStint = (year <= 1969 ? 15 : 0) + (year <= 1964 ? 15 : 0) + (year <= 1959 ? 15 : 0);
            facts.paceYear = p.PlayerYear < 1900 || p.PlayerYear > 2050 ? 2014 : p.PlayerYear;
            facts.realMinutes = real.AverageMinutes;
            facts.minutesRatio = real.AverageMinutes > 0 ? replay.AverageMinutes / real.AverageMinutes : 1;
            facts.limitFactor = std::clamp(1 - (limit - 90) * f, .5, .9);
            facts.replayGames = statLine(p, StatLineIndex::Replay).GP;
            facts.goalie = isGoalie(p);
            facts.defenseman = isDefenseman(p);
            facts.minutes10 = real.AverageMinutes >= 10;
            facts.minutes18 = real.AverageMinutes >= 18;
            facts.college = p.PlayerType.view() == "C";
            facts.enforcer = p.Enforcer == 1;
            facts.fightsPer1000 = real.FightsPer1000;
            layFatigueChances(facts);
            // Only a man of the team can be on the ice to be rated; the
            // rest are left to be worked out should that ever change.
            facts.indiscipline =
                era != nullptr && tables.onTeam(slot) ? indiscipline(p, real.AverageMinutes, *era) : -1;
        }
    }
}

void Game::layFatigueChances(ManFacts& facts) {
    facts.topLineChance = Random::chanceOver(facts.realMinutes, 22, 4);
    const double ratio = facts.minutesRatio;
    facts.tireChance18 =
        facts.minutes18 ? Random::chanceAtMost(10, facts.replayGames - 10) * Random::chanceUnder(ratio, .95, .04) : 0;
    facts.swingBelow = stintSwingBelow(ratio);
    auto sure = [](double p) { return p == 0 || p == 1; };
    facts.swingCertain = std::all_of(facts.swingBelow.begin(), facts.swingBelow.end(), sure);
    facts.swingSure = stintSwing(0, facts.swingBelow);
}

std::array<double, 3> stintSwingBelow(double ratio) {
    const double up = 1 - Random::chanceUnder(ratio, 1, .07);
    const double down2 = 1 - Random::chanceOver(ratio, .98, -.03);
    const double down1 = 1 - Random::chanceOver(ratio, 1, -.07);
    const double upOrDown2 = up + (1 - up) * down2;
    return {up, upOrDown2, upOrDown2 + (1 - upOrDown2) * down1};
}

double stintSwing(double u, const std::array<double, 3>& below) {
    return u < below[0] ? 1.0 : u < below[1] ? -2.0 : u < below[2] ? -1.0 : 0.0;
}

void Game::trackFatigue() {
    for (int side : {kVisitor, kHome}) {
        const SideTables& tables = sideOf(side);
        const BySlot<bool>& dressed = teams_[at(side)].candidate;
        std::uint64_t tracked = 0;
        for (int slot = 0; slot < kRosterSlots; ++slot) {
            // Off the ice a man whose fatigue is at rest stays there unless
            // his shift limit is short of energy to recover with.
            const int limit = tables.ShiftLimit[at(slot)];
            const int maxEnergy = tables.MaxEnergy[at(slot)];
            const bool still =
                s_.ShiftSecs[at(side)][at(slot)] == 0 && s_.stint[at(side)][at(slot)] == 0 &&
                !s_.coach.wasOn[at(side)][at(slot)] &&
                (limit <= 0 || (maxEnergy > 50 && s_.Energy[at(side)][at(slot)] == std::min(maxEnergy, 100)));
            if (dressed[at(slot)] || !still) tracked |= std::uint64_t{1} << slot;
        }
        fatigueTracked_[at(side)] |= tracked;
    }
}

void Game::SetEnergy(const std::array<std::uint64_t, 2>& drawn) {
    for (int side : {kVisitor, kHome}) {
        // Only the men the charge left a drawn fall for, lowest slot first so
        // the draws come as they always have: a fresh man far past his limit
        // at once loses a few points, not all the way down.
        for (std::uint64_t left = drawn[at(side)]; left != 0; left &= left - 1) {
            const auto slot = static_cast<std::size_t>(std::countr_zero(left));
            int& energy = s_.Energy[at(side)][slot];
            const int e = energy - 2 + rng_.rand(5) - rng_.rand(5);
            energy = std::clamp(e, 0, 100);
        }
    }
}

}  // namespace tallyrink
