#include "engine/find_tools.h"

#include <algorithm>
#include <cmath>

#include "engine/game.h"
#include "team/positions.h"

namespace tallyrink {

namespace {

std::size_t at(int i) { return static_cast<std::size_t>(i); }
int other(int side) { return side == 0 ? 1 : 0; }

// Weights are whole numbers: every factor is applied and rounded at once.
void times(std::int32_t& w, double f) { w = roundToInt(w * f); }
std::int32_t whole(double x) { return roundToInt(x); }

constexpr int kMaxTries = 500;

}  // namespace

std::string_view spotText(int spot) {
    switch (spot) {
        case kSpotBehind:
            return "Behind";
        case kSpotScreen:
            return "Screen";
        case kSpotIn:
            return "In";
        case kSpotMid:
            return "Mid";
        case kSpotOut:
            return "Out";
        default:
            return "";
    }
}

std::string_view text(RushType r) {
    switch (r) {
        case RushType::OneZero:
            return "1-0";
        case RushType::TwoOne:
            return "2-1";
        case RushType::ThreeOne:
            return "3-1";
        case RushType::ThreeTwo:
            return "3-2";
        case RushType::None:
            break;
    }
    return "";
}

// ---- Shared pieces ---------------------------------------------------------------

// The weighted draw: running totals over the rows, scaled down to 30000
// when larger, a pick by Rand(total); the first row whose running total
// reaches the draw wins. No weight at all gives kNoPos, for the caller's
// default; a single row with weight wins without a draw. Built into its
// few callers, which draw several times a step.
[[gnu::always_inline]] inline int Game::weightedPick(const std::array<std::int32_t, kIcePositions>& w, int rows) {
    std::array<std::int64_t, kIcePositions> running;  // the first `rows` are set
    std::int64_t total = 0;
    int weighted = 0;
    int only = kNoPos;
    for (int i = 0; i < rows; ++i) {
        if (w[at(i)] > 0) {
            ++weighted;
            only = i;
            total += w[at(i)];
        }
        running[at(i)] = total;
    }
    if (weighted <= 1) return only;
    if (total > 30000) {
        // The scaled totals are at most 30000, well inside an int.
        double f = 30000.0 / static_cast<double>(total);
        for (int i = 0; i < rows; ++i) running[at(i)] = roundToInt(static_cast<double>(running[at(i)]) * f);
        total = running[at(rows - 1)];
        if (total <= 0) return kNoPos;
    }
    auto v = static_cast<std::int64_t>(rng_.rand(static_cast<int>(total)));
    for (int i = 0; i < rows; ++i)
        if (v <= running[at(i)]) return i;
    return kNoPos;
}

// ---- The carrier -----------------------------------------------------------------

[[gnu::always_inline]] inline Game::PickTerms Game::pickTerms() {
    const int side = s_.PuckTeam;
    return {powerPlay(side), powerPlay(other(side)), shotSteering(), alternateReality()};
}

// A shooter's weight: his real shots less his set-up play, his share of
// power-play or short-handed scoring, his coach's usage, fatigue, and the
// comparison of his replay shot rate with his real one (a man who shoots
// more than he did in real life is picked less).
// Worked in the loop that asks it, one man after another, several times a
// step: built into that loop, the call's saving and restoring of registers
// goes.
[[gnu::always_inline]] inline std::int32_t Game::carrierWeight(int pos, int slot, int unitPPG, const PickTerms& terms) {
    const int side = s_.PuckTeam;
    const SideTables& t = sideOf(side);
    const PlayerRecord& p = t.player(slot);
    const StatLine& real = statLine(p, StatLineIndex::Real);
    const StatLine& replay = statLine(p, StatLineIndex::Replay);
    const SetRates& rr = t.rate(RateSet::Real, slot);
    const double S = rr.ShotsPer60;
    const bool pp = terms.powerPlay;
    const bool sh = terms.shortHanded;
    const bool point = pos == 3 || pos == 4;
    // A man with a broken stick isn't picked: nothing else about him counts.
    if (stickBroken(side, slot)) return 0;
    const CarrierBase& base = carrierBase_[at(side)][at(slot)];
    const double q = base.share[unitPPG > 0 ? 1 : 0];
    std::int32_t w = base.weight[unitPPG > 0 ? 1 : 0];
    if (rng_.chance(base.setUpChance)) times(w, .6);
    if (rng_.chance(base.scorerChance)) times(w, 3);
    if (point) times(w, .65);
    if (pp && point) {
        if (!hasFlag(p, Flag::Defense) && rng_.randAtMost(7, real.PPG)) times(w, 5);
        times(w, .55);
        if (rng_.over(q, .2, .2) && rng_.randAtMost(7, real.PPG)) times(w, 3);
    }
    if (pp && unitPPG > 0) {
        if (rng_.under(q, .25, -.1)) times(w, .2);
        if (rng_.under(q, .15, -.1)) times(w, .2);
        if (rng_.under(q, 0, .1)) times(w, .2);
        if (rng_.over(q, .25, .1)) times(w, 3);
        if (rng_.over(q, .35, .1)) times(w, 3);
        if (rng_.over(q, .45, .1)) times(w, 3);
    }
    // A usage of 3 multiplies by one, which leaves any whole weight as it is.
    if (base.usageSet) times(w, base.usageFactor);
    if (pp && rng_.randAtMost(5, real.PPG)) {
        double pace = (real.PPG / (real.GP + 1.0)) / (.58 / 2.67);
        if (!rng_.under(pace, 1, .2))
            times(w, 3);
        else if (!rng_.over(pace, 1, -.2))
            times(w, .5);
        if (real.PPG > 0 && rng_.randAtMost(10, replay.GP - 3)) {
            double m = (replay.PPG / (replay.GP + 1.0)) / (real.PPG / (real.GP + 1.0));
            if (!rng_.under(m, 1, .2))
                times(w, .5);
            else if (!rng_.over(m, 1, -.2))
                times(w, 3);
        }
    }
    if (sh && rng_.randAtMost(3, real.SHG)) {
        double pace = (real.SHG / (real.GP + 1.0)) / (.08 / 2.67);
        if (!rng_.under(pace, 1, .5))
            times(w, 2);
        else if (!rng_.over(pace, 1, -.5))
            times(w, .5);
        if (real.SHG > 0 && rng_.randAtMost(10, replay.GP - 3)) {
            double m = (replay.SHG / (replay.GP + 1.0)) / (real.SHG / (real.GP + 1.0));
            if (!rng_.under(m, 1, .2))
                times(w, .5);
            else if (!rng_.over(m, 1, -.2))
                times(w, 2);
        }
    }
    if (base.steerable && terms.steering && rng_.overRand(real.Sog, 50, 50) && rng_.randAtMost(5, replay.Sog - 5)) {
        const double R = t.rate(RateSet::Replay, slot).ShotsPer60;
        if (rng_.over(R, 1.05, .05, S)) times(w, .5);
        if (rng_.over(R, 1, .05, S)) times(w, rng_.rnd());
        if (rng_.under(R, 1, -.05, S)) times(w, 1 + rng_.rnd());
        if (rng_.under(R, 1.05, -.05, S)) times(w, 1.5);
    }
    int energy = s_.Energy[at(side)][at(slot)];
    for (int e : {69, 49, 29})
        if (energy <= e) times(w, .8);
    if (terms.alternate) w = whole(w + p.FormBias * .05);
    return std::max(w, 1);
}

// The steering of shot rates runs only where the replay is meant to follow
// the real season: a real team against one of its own season.
bool Game::workOutShotSteering() {
    int& known = shotSteeringMemo_[at(s_.PuckTeam)];
    const SideTables& puck = sideOf(s_.PuckTeam);
    const SideTables& opp = sideOf(s_.OtherTeam());
    known = puck.team.TeamType.view() != "D" && puck.team.TeamYear == opp.team.TeamYear && !alternateReality();
    return known == 1;
}

// The start of each man's weight as a carrier and as a passer: his real
// figures hold through a game.
void Game::layPickBase() {
    for (int side : {kVisitor, kHome}) {
        const SideTables& t = sideOf(side);
        for (int slot = 0; slot < kRosterSlots; ++slot) {
            const StatLine& real = statLine(t.player(slot), StatLineIndex::Real);
            const SetRates& rr = t.rate(RateSet::Real, slot);
            const double S = rr.ShotsPer60, A = rr.AssistsPer60;
            CarrierBase& base = carrierBase_[at(side)][at(slot)];
            for (std::size_t scorers = 0; scorers < 2; ++scorers) {
                double q = .25;
                if (scorers == 1 && real.Goals > 0) q = static_cast<double>(real.PPG) / real.Goals;
                std::int32_t w = whole(S * 10 * (1 - q));
                w = whole(w - A * 5);
                if (w < S * .1) w = whole(S * .1);
                base.share[scorers] = q;
                base.weight[scorers] = w;
            }
            base.realPPG = real.PPG;
            const int aggressiveness = t.player(slot).UsageSogAggressiveness;
            const int usage = aggressiveness == 0 ? 3 : aggressiveness;
            base.usageFactor = (usage - 3) * .2 + 1;
            base.usageSet = usage != 3;
            base.steerable = usage == 3 && S > 0 && t.rate(RateSet::Replay, slot).ShotsPer60 > 0;
            const double G = rr.GoalsPer60;
            base.setUpChance = Random::chanceOver(S, 6, 3) * Random::chanceUnder(A, 1.5, 1);
            base.scorerChance = Random::chanceOver(A, 2, 2) * Random::chanceOver(A, 1.8, .4, G);
            PasserBase& passer = passerBase_[at(side)][at(slot)];
            passer.assists = std::min(A, 7.0);
            passer.goals = rr.GoalsPer60;
            passer.shots = S;
            passer.replayAssists = t.rate(RateSet::Replay, slot).AssistsPer60;
            passer.loneWeight = whole(passer.assists * passer.assists) + 1;
            passer.weight = whole(std::pow(passer.assists, 5)) + 1;
            passer.replayGames2 = statLine(t.player(slot), StatLineIndex::Replay).GP >= 2;
            passer.fives = passerFives(passer.assists, passer.goals, passer.shots);
        }
    }
}

PasserFives passerFives(double A, double G, double S) {
    using R = Random;
    const std::array<double, 5> chances{R::chanceOver(A, 2.5, 1.5), R::chanceOver(A, 1.6, .6, G),
                                        R::chanceOver(A, 2.5, 1) * R::chanceOver(A, 1.6, .6, G),
                                        R::chanceOver(S, 7, 4) * R::chanceOver(A, 2, 1.5),
                                        R::chanceOver(S, 8, 4) * R::chanceOver(A, 3, 1)};
    // The law of the count, test by test.
    std::array<double, 6> law{1, 0, 0, 0, 0, 0};
    for (double p : chances) {
        for (std::size_t n = law.size() - 1; n > 0; --n) law[n] = law[n] * (1 - p) + law[n - 1] * p;
        law[0] *= 1 - p;
    }
    PasserFives out;
    double sum = 0;
    for (std::size_t n = 0; n < out.below.size(); ++n) out.below[n] = sum += law[n];
    out.certain = std::all_of(chances.begin(), chances.end(), [](double p) { return p == 0 || p == 1; });
    if (out.certain) {
        // Every sum is then 0 or 1 but for rounding; the count is the tests that pass.
        out.sure = static_cast<int>(std::count(chances.begin(), chances.end(), 1.0));
        for (std::size_t n = 0; n < out.below.size(); ++n) out.below[n] = static_cast<int>(n) >= out.sure ? 1 : 0;
    }
    return out;
}

void Game::FindCarrier() {
    if (s_.ProbeOnly) return;
    FindState& f = s_.find;
    const int side = s_.PuckTeam;
    const int rows = positionsInPlay(side);
    int unitPPG = 0;
    for (int pos = 0; pos < rows; ++pos) {
        int slot = slotAt(side, pos);
        if (slot != kNoSlot) unitPPG += carrierBase_[at(side)][at(slot)].realPPG;
    }
    std::array<std::int32_t, kIcePositions> w{};
    const PickTerms terms = pickTerms();
    for (int pos = 0; pos < rows; ++pos) {
        int slot = slotAt(side, pos);
        if (slot == kNoSlot || slot == f.LastPasser || !available(side, slot)) continue;
        w[at(pos)] = carrierWeight(pos, slot, unitPPG, terms);
    }
    int pick = kNoPos;
    for (int tries = 0; tries < kMaxTries * 2; ++tries) {
        pick = weightedPick(w, rows);
        if (pick == kNoPos) pick = 2 + rng_.rand(2);
        int slot = slotAt(side, pick);
        if (slot == kNoSlot || !available(side, slot)) continue;
        if (stickBroken(side, slot) && tries < kMaxTries) continue;
        break;
    }
    if (slotAt(side, pick) == kNoSlot) pick = firstOccupied(side);
    int spot = kSpotOut;
    if (s_.PlayZone == Zone::OffenseShooter)
        spot = rng_.rand(10) <= 3 ? kSpotOut : kSpotMid;
    else if (s_.PlayZone == Zone::OffenseZone)
        spot = pick <= 2 ? kSpotBehind : kSpotOut;
    if (f.DrawForcedEntry && (f.drawCall == Call::DrawForward || f.drawCall == Call::DrawBack)) {
        if (f.drawCall == Call::DrawForward) {
            for (int tries = 0; tries < 100; ++tries) {
                int pos = rng_.rand(3) - 1;
                if (slotAt(side, pos) != kNoSlot) {
                    pick = pos;
                    break;
                }
            }
            spot = kSpotBehind;
        } else {
            int pos = 2 + rng_.rand(2);
            if (slotAt(side, pos) != kNoSlot) pick = pos;
            spot = kSpotOut;
        }
    }
    f.CarrierPos = pick;
    f.Carrier = slotAt(side, pick);
    if (pick != kNoPos) f.Spot[at(pick)] = spot;
}

int Game::firstOccupied(int side) const {
    for (int pos = 0; pos < positionsInPlay(side); ++pos)
        if (slotAt(side, pos) != kNoSlot) return pos;
    return kNoPos;
}

// ---- The passers -------------------------------------------------------------------

// Built into the draw that asks it, as the carrier's weight is.
[[gnu::always_inline]] inline std::int32_t Game::passerWeight(int pos, int slot, bool second, const PickTerms& terms) {
    const int side = s_.PuckTeam;
    const SideTables& t = sideOf(side);
    const PlayerRecord& p = t.player(slot);
    const PasserBase& base = passerBase_[at(side)][at(slot)];
    const double A = base.assists;
    const double R = base.replayAssists;
    const bool pp = terms.powerPlay;
    // A man with a broken stick isn't picked: nothing else about him counts.
    if (stickBroken(side, slot)) return 0;

    std::int32_t w = terms.loneCarrier ? base.loneWeight : base.weight;
    if (!second) {
        // Each pass multiplies a whole weight by 5, exactly.
        static constexpr std::array<std::int32_t, 6> kFives{1, 5, 25, 125, 625, 3125};
        const PasserFives& fives = base.fives;
        w *= kFives[at(fives.certain ? fives.sure : fivesFor(rng_.rnd(), fives))];
        bool topThere = false;
        if (terms.top != kNoSlot) {
            topThere = rng_.over(terms.topAssists, 2.5, 1.5);
            if (slot != terms.top && topThere) times(w, .5);
        }
        if (base.replayGames2) {
            if (rng_.over(R, 1.05, .05, A)) times(w, .5);
            if (rng_.over(R, 1, .05, A)) times(w, rng_.rnd());
            if (rng_.under(R, 1, -.05, A)) times(w, 1 + rng_.rnd());
            if (rng_.under(R, 1.05, -.05, A)) times(w, 3);
        }
        if (!pp) {
            times(w, .5);
            if (!rng_.randAtMost(10, p.PlayerYear - 1966)) times(w, .5);
            if (rng_.under(A, 0, .5)) times(w, .5);
        } else if (pos == 3 || pos == 4) {
            int topPos = positionOf(side, terms.top);
            times(w, (topPos == 3 || topPos == 4) && topThere ? 1.5 : 2.5);
        }
    } else {
        if (rng_.randAtMost(2, statLine(p, StatLineIndex::Game).Assists - 2)) times(w, .5);
        if (base.replayGames2) {
            if (rng_.over(R, 1, .1, A)) times(w, rng_.rnd() * rng_.rnd());
            if (rng_.under(R, 1, -.1, A)) times(w, 1 + rng_.rnd());
        }
        if (!pp || hasFlag(p, Flag::Defense)) {
            times(w, .5);
            if (!rng_.randAtMost(10, p.PlayerYear - 1966)) times(w, .5);
        }
    }
    if (terms.alternate) w = whole(w + p.FormBias * .05);
    return std::max(w, 1);
}

// A broken stick passes the puck on to a defenseman, if he isn't the carrier.
int Game::passerStickFallback(int pos) const {
    const int side = s_.PuckTeam;
    if (!stickBroken(side, slotAt(side, pos))) return pos;
    int to = stickBroken(side, slotAt(side, 3)) ? 4 : 3;
    int slot = slotAt(side, to);
    if (slot == kNoSlot || slot == s_.find.Carrier) return kNoPos;
    return to;
}

[[gnu::always_inline]] inline int Game::drawPasser(bool second, const PickTerms& terms) {
    FindState& f = s_.find;
    const int side = s_.PuckTeam;
    const int rows = positionsInPlay(side);
    std::array<std::int32_t, kIcePositions> w{};
    for (int pos = 0; pos < rows; ++pos) {
        int slot = slotAt(side, pos);
        if (slot == kNoSlot || slot == f.Carrier || slot == f.LastPasser || !available(side, slot)) continue;
        if (second && slot == f.Passer1) continue;
        w[at(pos)] = passerWeight(pos, slot, second, terms);
    }
    int pick = weightedPick(w, rows);
    if (pick == kNoPos) pick = 2 + rng_.rand(2);
    int slot = slotAt(side, pick);
    if (slot == kNoSlot || !available(side, slot) || slot == f.LastPasser) return kNoPos;
    if (second && slot == f.Passer1) return kNoPos;
    return passerStickFallback(pick);
}

void Game::FindPassers() {
    if (s_.ProbeOnly || s_.PlayZone == Zone::Rush) return;
    FindState& f = s_.find;
    const int side = s_.PuckTeam;
    const SideTables& t = sideOf(side);
    f.TopPlaymaker = kNoSlot;
    double best = -1;
    for (int pos = 0; pos < positionsInPlay(side); ++pos) {
        int slot = slotAt(side, pos);
        if (slot == kNoSlot || manFacts_[at(side)][at(slot)].goalie) continue;
        double a = passerBase_[at(side)][at(slot)].assists;
        if (a > best) {
            best = a;
            f.TopPlaymaker = slot;
        }
    }

    f.Passer1 = f.Passer2 = kNoSlot;
    f.Passer1Pos = f.Passer2Pos = kNoPos;
    PickTerms terms = pickTerms();
    terms.loneCarrier = f.Carrier == kNoSlot;
    terms.top = f.TopPlaymaker;
    if (terms.top != kNoSlot) terms.topAssists = passerBase_[at(side)][at(terms.top)].assists;
    for (int tries = 0; tries < 20; ++tries) {
        int pos = drawPasser(false, terms);
        if (pos != kNoPos) {
            f.Passer1Pos = pos;
            f.Passer1 = slotAt(side, pos);
            break;
        }
        if (rng_.rand(100) > 99) break;
    }
    for (int tries = 0; tries < 20; ++tries) {
        int pos = drawPasser(true, terms);
        if (pos != kNoPos && slotAt(side, pos) == f.Carrier) {
            f.Passer1 = kNoSlot;
            f.Passer1Pos = kNoPos;
            break;
        }
        if (pos != kNoPos && slotAt(side, pos) != f.Passer1) {
            f.Passer2Pos = pos;
            f.Passer2 = slotAt(side, pos);
            break;
        }
        if (rng_.rand(10) > 9) break;
    }

    // Eras differ in how many goals carry a second assist. Without a
    // second passer there is nothing to drop, and once dropped the second
    // test can't change that.
    if (f.Passer2 == kNoSlot) return;
    const EraFigures era = eraFiguresOf(t.team.TeamYear, side);
    double k = std::clamp((1.72 - era.assistsPerGoal) * 2500 * 1.35, 10.0, 999.0);
    bool drop = rng_.randAtMost(1000, k);
    if (!drop && rng_.under(era.assistsPerGoal, 1, .5) && rng_.rand(10) <= 9) drop = true;
    if (drop) {
        f.Passer2 = kNoSlot;
        f.Passer2Pos = kNoPos;
    }
}

// ---- Penalties ---------------------------------------------------------------------

std::int32_t Game::penaltyWeight(int side, int pos) {
    const int slot = slotAt(side, pos);
    const SideTables& t = sideOf(side);
    const PlayerRecord& p = t.player(slot);
    const StatLine& replay = statLine(p, StatLineIndex::Replay);
    const double P = t.rate(RateSet::Real, slot).NonFightPimPer60;
    const double P2 = t.rate(RateSet::Replay, slot).NonFightPimPer60;
    const double T = t.rate(RateSet::Real, slot).PimPer60;
    const double T2 = t.rate(RateSet::Replay, slot).PimPer60;

    std::int32_t w = whole(P * 100);
    // A short bench is counted only for the one man it can matter to.
    auto dressed = [&] {
        int n = 0;
        for (int s = 0; s < static_cast<int>(kRosterSlots); ++s) n += t.onTeam(s) ? 1 : 0;
        return n;
    };
    if ((pos == 3 || pos == 4) && p.PlayerYear <= 1975 && dressed() <= 16) times(w, .3);
    if (P > 0 && P2 > 0 && replay.GP > 3 + rng_.rand(3) && replay.Pim > 0) {
        double m = P2 / P;
        if (m >= 1 + .15 * rng_.rnd())
            times(w, .4);
        else if (m <= 1 - .15 * rng_.rnd())
            times(w, 1.6);
    }
    if (T > 0 && T >= rng_.rand(10) && T2 >= rng_.rand(10)) {
        double m = T2 / T;
        if (m >= 1 + .3 * rng_.rnd())
            times(w, .2);
        else if (m >= 1 + .15 * rng_.rnd())
            times(w, .4);
        else if (m <= 1 - .15 * rng_.rnd())
            times(w, 1.6);
    }
    if (replay.GP > 0 && replay.GP >= rng_.rand(10)) {
        // Penalties so far, each call once whatever its minutes.
        const int calls = p.Minors[0] + p.Majors[0] + p.Misconducts[0] + p.GameMisconducts[0] + p.MatchPenalties[0];
        double m = double(calls) / replay.GP;
        if (m > .6 + .3 * rng_.rnd())
            times(w, .3);
        else if (m > .4 + .3 * rng_.rnd())
            times(w, .5);
        else if (m > .2 + .3 * rng_.rnd())
            times(w, .7);
    }
    w = std::max(w + 1, 1);
    if (s_.find.inBox[at(side)][at(slot)] || !available(side, slot)) w = 0;
    if (alternateReality()) w = whole(w + p.FormBias * .05);
    return w;
}

void Game::FindPenalized() {
    FindState& f = s_.find;
    for (int side : {kVisitor, kHome}) {
        const SideTables& t = sideOf(side);
        for (int n = 0; n < f.PenaltiesToCall[at(side)]; ++n) {
            int pick = kNoPos;
            if (f.PenaltyServer) {
                int mark = 999;
                for (int pos = 0; pos < 3; ++pos) {
                    int slot = slotAt(side, pos);
                    if (slot == kNoSlot || f.Drawn[at(side)][at(pos)]) continue;
                    const PlayerRecord& p = t.player(slot);
                    if (p.RatingOffense + p.RatingDefense < mark) {
                        pick = pos;
                        mark = (4 - p.RatingPenaltyKill) * 100 + p.RatingDefense;
                    }
                }
                if (pick == kNoPos) pick = 2 + rng_.rand(2);
            } else {
                const int rows = positionsInPlay(side);
                std::array<std::int32_t, kIcePositions> w{};
                for (int pos = 0; pos < rows; ++pos) {
                    int slot = slotAt(side, pos);
                    if (slot == kNoSlot || !t.onTeam(slot) || f.Drawn[at(side)][at(pos)]) continue;
                    if (isGoalie(t.player(slot))) continue;
                    w[at(pos)] = penaltyWeight(side, pos);
                }
                pick = weightedPick(w, rows);
                for (int tries = 0; pick == kNoPos && tries < 1000; ++tries) {
                    int pos = rng_.rand(5) - 1;
                    int slot = slotAt(side, pos);
                    if (slot == kNoSlot || f.Drawn[at(side)][at(pos)]) continue;
                    double P = t.rate(RateSet::Real, slot).NonFightPimPer60;
                    if (P > 5 * rng_.rnd() || rng_.rand(10) == 1) pick = pos;
                }
            }
            if (pick == kNoPos || slotAt(side, pick) == kNoSlot) continue;
            f.Drawn[at(side)][at(pick)] = true;
            int& count = f.penalizedCount[at(side)];
            if (count < static_cast<int>(f.Penalized[at(side)].size()))
                f.Penalized[at(side)][at(count++)] = slotAt(side, pick);
        }
    }
}

// ---- The other picks ----------------------------------------------------------------

// The plan holds two shadow pairs a team: the first place of each row of
// `ShadowTarget` names the opponent's man to shadow, the same place of
// `ShadowPlayer` the own man who does it, both as roster places counted
// from 1, 0 for none.
int Game::shadowOf(int side, int target) const {
    if (target == kNoSlot) return kNoSlot;
    const GamePlanRecord& plan = sideOf(side).plan;
    const OnIce& own = s_.onIce[at(side)];
    const OnIce& theirs = s_.onIce[at(other(side))];
    for (std::size_t pair = 0; pair < plan.ShadowTarget.size(); ++pair) {
        int shadowed = plan.ShadowTarget[pair][0] - 1;
        int shadow = plan.ShadowPlayer[pair][0] - 1;
        if (shadowed < 0 || shadow < 0 || shadowed >= static_cast<int>(kRosterSlots) ||
            shadow >= static_cast<int>(kRosterSlots))
            continue;
        if (shadowed != target || !theirs.holds(shadowed)) continue;
        for (std::size_t pos = 0; pos < 5; ++pos)
            if (own.slot[pos] == shadow) return shadow;
    }
    return kNoSlot;
}

void Game::FindDefender() {
    FindState& f = s_.find;
    const int side = s_.OtherTeam();
    int pick = kNoPos;
    for (int tries = 0; tries < 100 && pick == kNoPos; ++tries) {
        int pos = 2 + rng_.rand(2);
        if (rng_.rand(3) == 1) pos = rng_.rand(5) - 1;
        if (slotAt(side, pos) == kNoSlot) pos = 2 + rng_.rand(2);
        if (slotAt(side, pos) != kNoSlot) pick = pos;
    }
    if (pick == kNoPos) pick = firstOccupied(side);
    // A man told to shadow the carrier is the one on him, as a rule, unless
    // his side plays a man up and has men to spare.
    int shadow = shadowOf(side, f.Carrier);
    if (shadow != kNoSlot && s_.Skaters[at(side)] <= s_.Skaters[at(other(side))] && rng_.rand(10) <= 9)
        pick = positionOf(side, shadow);
    f.DefenderPos = pick;
    f.Defender = slotAt(side, pick);
}

// Rate of a man per minute on the ice of a real counting stat.
double Game::perMinute(int side, int slot, RateSet set, int count) const {
    const SideTables& t = sideOf(side);
    const StatLine& line = statLine(t.player(slot), statLineOf(set));
    return count / (line.GP * t.rate(set, slot).AverageMinutes + 1);
}

void Game::FindTakeaway() {
    FindState& f = s_.find;
    const int side = s_.OtherTeam();
    const SideTables& t = sideOf(side);
    const int rows = positionsInPlay(side);
    int pick = kNoPos;
    for (int tries = 0; tries < 1000; ++tries) {
        int pos = rng_.rand(rows) - 1;
        int slot = slotAt(side, pos);
        if (slot == kNoSlot) continue;
        pick = pos;
        const PlayerRecord& p = t.player(slot);
        const StatLine& real = statLine(p, StatLineIndex::Real);
        double rate = perMinute(side, slot, RateSet::Real, real.Takeaways);
        double t10 = rate * 10;
        if (pos >= 3) t10 *= .35;
        t10 += pos <= 2 ? 5.3 : 2;
        double replayRate = perMinute(side, slot, RateSet::Replay, statLine(p, StatLineIndex::Replay).Takeaways);
        if (real.Takeaways > rng_.rand(3) && rate > 0 && replayRate > 0) {
            double m = replayRate / rate;
            if (m > 1 + .2 * rng_.rnd())
                t10 *= .5;
            else if (m < 1 - .2 * rng_.rnd())
                t10 *= 1.5;
        }
        if (!(t10 >= 30 * rng_.rnd() || rng_.rand(100) == 1)) continue;
        if (stickBroken(side, slot)) continue;
        if (s_.PlayResult == Result::ToRush && t.rate(RateSet::Real, slot).AssistsPer60 < 2 * rng_.rnd()) continue;
        break;
    }
    f.TakeawayPos = pick;
    f.TakeawayMan = slotAt(side, pick);
}

void Game::FindBlocker() {
    FindState& f = s_.find;
    const int side = s_.OtherTeam();
    const SideTables& t = sideOf(side);
    const int rows = positionsInPlay(side);
    int pick = kNoPos;
    for (int tries = 0; tries < 1000 && pick == kNoPos; ++tries) {
        int pos = rng_.rand(rows) - 1;
        int slot = slotAt(side, pos);
        if (slot == kNoSlot) continue;
        double b = perMinute(side, slot, RateSet::Real, statLine(t.player(slot), StatLineIndex::Real).Blocks) * 1.3;
        b += pos <= 2 ? rng_.rand(3) : 3;
        if (b >= 7 * rng_.rnd() || rng_.rand(10) == 1) {
            pick = pos;
        } else if (rng_.rand(10) == 1) {
            int d = 2 + rng_.rand(2);
            if (slotAt(side, d) != kNoSlot) pick = d;
        }
    }
    if (pick == kNoPos) pick = firstOccupied(side);
    f.BlockerPos = pick;
    f.BlockerMan = slotAt(side, pick);
}

void Game::FindHitter() {
    FindState& f = s_.find;
    const int side = s_.OtherTeam();
    const SideTables& t = sideOf(side);
    const int rows = positionsInPlay(side);
    bool carrierIsDefenseman = false;
    if (f.Carrier != kNoSlot) carrierIsDefenseman = isDefenseman(sideOf(s_.PuckTeam).player(f.Carrier));
    std::array<std::int32_t, kIcePositions> w{};
    for (int pos = 0; pos < rows; ++pos) {
        int slot = slotAt(side, pos);
        if (slot == kNoSlot || !available(side, slot)) continue;
        const PlayerRecord& p = t.player(slot);
        const bool forward = pos <= 2;
        double hits = t.rate(RateSet::Real, slot).HitsPer60;
        std::int32_t x = 0;
        if (hits > 0) {
            x = whole(hits * 10 + 5);
        } else {
            x = whole(p.RatingHit * 10);
            if (forward) {
                times(x, 1.7);
                if (p.PlayerYear >= 1965 + rng_.rand(5)) times(x, .65);
            }
        }
        if (forward) times(x, .45);
        if (carrierIsDefenseman) times(x, forward || pos == 5 ? 10 : .5);
        const StatLine& real = statLine(p, StatLineIndex::Real);
        const StatLine& replay = statLine(p, StatLineIndex::Replay);
        if (real.Hits > 10 && replay.Hits > 10 && real.GP > 0 && replay.GP > 0) {
            double m = (static_cast<double>(replay.Hits) / replay.GP) / (static_cast<double>(real.Hits) / real.GP);
            if (m > 1 + .4 * rng_.rnd())
                times(x, .5);
            else if (m > 1 + .2 * rng_.rnd())
                times(x, .75);
            else if (m < 1 - .4 * rng_.rnd())
                times(x, 1.75);
            else if (m < 1 - .2 * rng_.rnd())
                times(x, 1.25);
        }
        w[at(pos)] = x;
    }
    int pick = weightedPick(w, rows);
    if (pick == kNoPos) pick = rng_.rand(5) - 1;
    if (slotAt(side, pick) == kNoSlot) pick = firstOccupied(side);
    f.HitterPos = pick;
    f.Hitter = slotAt(side, pick);
}

void Game::PickNames(const OnIce* unit) {
    FindState& f = s_.find;
    const int side = s_.PuckTeam;
    const SideTables& t = sideOf(side);
    const OnIce& ice = unit ? *unit : s_.onIce[at(side)];
    const int rows = positionsInPlay(side);
    auto slotOf = [&](int pos) { return pos >= 0 && pos < rows ? ice.slot[at(pos)] : kNoSlot; };
    auto accept = [&](int slot, int tries) {
        if (slot == kNoSlot) return false;
        if (stickBroken(side, slot) && tries < 100) return false;
        return t.rate(RateSet::Real, slot).AssistsPer60 >= 7 * rng_.rnd() || rng_.rand(5) == 1;
    };
    f.NameFirst = f.NameSecond = kNoSlot;
    for (int tries = 0; tries < 1000; ++tries) {
        int pos = rng_.rand(10) == 1 ? rng_.rand(rows) - 1 : rng_.rand(3) - 1;
        if (accept(slotOf(pos), tries)) {
            f.NameFirst = slotOf(pos);
            break;
        }
    }
    for (int tries = 0; tries < 1000; ++tries) {
        int slot = slotOf(rng_.rand(rows) - 1);
        if (slot == f.NameFirst && rng_.rand(5) != 1) continue;
        if (accept(slot, tries)) {
            f.NameSecond = slot;
            break;
        }
    }
    if (rng_.rand(3) == 1 || (f.NameFirst == f.Carrier && rng_.rand(2) == 1)) f.NameSecond = kNoSlot;
}

void Game::PickOpponentName() {
    const int side = s_.OtherTeam();
    int slot = kNoSlot;
    for (int tries = 0; tries < 100 && slot == kNoSlot; ++tries) slot = slotAt(side, rng_.rand(5) - 1);
    if (slot == kNoSlot) slot = slotAt(side, firstOccupied(side));
    s_.find.Opponent = slot;
}

// ---- The offensive zone --------------------------------------------------------------

// Forwards take a depth by their shooting: a man who scores from inside goes
// in, one who shoots from outside stays out, some stand between; a strong
// inside shooter sometimes screens the goalie. Defensemen hold the points.
void Game::HkSetPlayCallList() {
    FindState& f = s_.find;
    const int side = s_.PuckTeam;
    const SideTables& t = sideOf(side);
    const int rows = positionsInPlay(side);
    f.openCount = 0;
    for (int pos = 0; pos < static_cast<int>(kIcePositions); ++pos) {
        int slot = slotAt(side, pos);
        if (slot == kNoSlot || pos >= rows) {
            f.Spot[at(pos)] = kSpotNone;
            continue;
        }
        const PlayerRecord& p = t.player(slot);
        int spot = kSpotOut;
        if (pos <= 2 || pos == 5) {
            // Three times in ten he stands between, whatever his shot: only
            // otherwise is it weighed (a draw only when it could go either
            // way), and a strong inside shooter may screen.
            int in = p.RatingShotIn;
            int total = p.RatingShotIn + p.RatingShotOut;
            if (rng_.rand(100) <= 30) {
                spot = kSpotMid;
            } else {
                spot = total > 0 && rng_.randAtMost(total, in) ? kSpotIn : kSpotOut;
                if (spot == kSpotIn && in >= 6 && rng_.rand(4) == 1) spot = kSpotScreen;
            }
        }
        f.Spot[at(pos)] = spot;
    }
    f.ListCarrier = f.Carrier;
    for (int pos = 0; pos < rows; ++pos) {
        int slot = slotAt(side, pos);
        if (slot == kNoSlot || !available(side, slot)) continue;
        const PlayerRecord& p = t.player(slot);
        const int spot = f.Spot[at(pos)];
        OpenMan& m = f.openMen[at(f.openCount++)];
        m.pos = pos;
        m.slot = slot;
        m.spot = spot;
        m.hasPuck = slot == f.Carrier;
        // Grades a coach reads: the shot from where he stands, the pass to him.
        int shot = spot <= kSpotIn    ? p.RatingShotIn
                   : spot == kSpotMid ? (p.RatingShotIn + p.RatingShotOut + 1) / 2
                                      : p.RatingShotOut;
        if (spot == kSpotScreen) shot = std::max(0, shot - 3);
        m.shotGrade = std::clamp(shot, 0, 10);
        m.passGrade = std::clamp(static_cast<int>(p.RatingPassing) - (spot <= kSpotScreen ? 2 : 0), 0, 10);
    }
}

void Game::PickLooseCarrier(int takeawayPos) {
    FindState& f = s_.find;
    const int side = s_.PuckTeam;
    int pick = kNoPos;
    for (int tries = 0; tries < 100; ++tries) {
        int pos = takeawayPos != kNoPos ? 2 + rng_.rand(2) : rng_.rand(5) - 1;
        if (slotAt(side, pos) == kNoSlot) pos = rng_.rand(2) == 1 ? 4 : 3;
        int slot = slotAt(side, pos);
        if (slot == kNoSlot) continue;
        pick = pos;
        if (!stickBroken(side, slot)) break;
    }
    if (pick == kNoPos) pick = firstOccupied(side);
    f.CarrierPos = pick;
    f.Carrier = slotAt(side, pick);
    f.LastPasser = kNoSlot;
}

}  // namespace tallyrink
