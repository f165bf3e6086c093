#include "engine/find_tools.h"

#include <algorithm>

#include "engine/game.h"

namespace tallyrink {

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

namespace {

std::size_t at(int i) { return static_cast<std::size_t>(i); }
int other(int side) { return side == 0 ? 1 : 0; }

}  // namespace

// Stand-ins until the weighted picks are built: plain choices among the
// men on the ice, weighted by their real rates, so that the events have a
// carrier, passers, a hitter and the rest to credit.

namespace {

// A position of `ice` among 0..4 by weight; kNoPos when nobody qualifies.
template <class Weight>
int pickPosition(const OnIce& ice, Random& rng, Weight weight) {
    std::array<double, 5> w{};
    double total = 0;
    for (int pos = 0; pos < 5; ++pos) {
        int slot = ice.slot[at(pos)];
        if (slot == kNoSlot) continue;
        w[at(pos)] = std::max(0.0, weight(pos, slot));
        total += w[at(pos)];
    }
    if (total <= 0) return kNoPos;
    double r = rng.rnd() * total;
    for (int pos = 0; pos < 5; ++pos) {
        if (w[at(pos)] <= 0) continue;
        if (r < w[at(pos)]) return pos;
        r -= w[at(pos)];
    }
    return kNoPos;
}

}  // namespace

void Game::FindCarrier() {
    FindState& f = s_.find;
    int side = s_.PuckTeam;
    const OnIce& ice = s_.onIce[at(side)];
    const SideTables& t = session_.side(side);
    int pos = kNoPos;
    if (f.DrawForcedEntry) {
        pos = f.drawCall == Call::DrawBack ? 3 + rng_.rand(2) - 1 : rng_.rand(3) - 1;
        if (pos != kNoPos && ice.slot[at(pos)] != kNoSlot)
            f.Spot[at(pos)] = f.drawCall == Call::DrawBack ? kSpotOut : kSpotBehind;
        else
            pos = kNoPos;
    }
    if (pos == kNoPos) {
        bool offense = isOffenseState(s_.PlayZone);
        pos = pickPosition(ice, rng_, [&](int p, int slot) {
            if (slot == f.LastPasser) return 0.0;
            const SetRates& r = t.rate(RateSet::Real, slot);
            double w = offense ? .5 + r.ShotsPer60 : .5 + r.AssistsPer60;
            if (!offense && p >= 3) w *= 1.5;
            return w;
        });
    }
    if (pos == kNoPos) pos = ice.slot[3] != kNoSlot ? 3 : kNoPos;
    f.CarrierPos = pos;
    f.Carrier = pos == kNoPos ? kNoSlot : ice.slot[at(pos)];
}

void Game::FindPassers() {
    FindState& f = s_.find;
    int side = s_.PuckTeam;
    const OnIce& ice = s_.onIce[at(side)];
    const SideTables& t = session_.side(side);
    auto weight = [&](int exclude) {
        return [&, exclude](int, int slot) {
            if (slot == f.Carrier || slot == exclude) return 0.0;
            return .3 + t.rate(RateSet::Real, slot).AssistsPer60;
        };
    };
    int p1 = pickPosition(ice, rng_, weight(kNoSlot));
    f.Passer1Pos = p1;
    f.Passer1 = p1 == kNoPos ? kNoSlot : ice.slot[at(p1)];
    int p2 = p1 == kNoPos ? kNoPos : pickPosition(ice, rng_, weight(f.Passer1));
    f.Passer2Pos = p2;
    f.Passer2 = p2 == kNoPos ? kNoSlot : ice.slot[at(p2)];
}

void Game::FindPenalized() {}

void Game::FindDefender() {
    FindState& f = s_.find;
    int side = other(s_.PuckTeam);
    int pos = pickPosition(s_.onIce[at(side)], rng_, [](int, int) { return 1.0; });
    f.DefenderPos = pos;
    f.Defender = pos == kNoPos ? kNoSlot : s_.onIce[at(side)].slot[at(pos)];
}

void Game::FindTakeaway() {
    FindState& f = s_.find;
    int side = other(s_.PuckTeam);
    const SideTables& t = session_.side(side);
    int pos = pickPosition(s_.onIce[at(side)], rng_, [&](int, int slot) {
        return .5 + statLine(t.player(slot), StatLineIndex::Real).Takeaways / 20.0;
    });
    f.TakeawayPos = pos;
    f.TakeawayMan = pos == kNoPos ? kNoSlot : s_.onIce[at(side)].slot[at(pos)];
}

void Game::FindBlocker() {
    FindState& f = s_.find;
    int side = other(s_.PuckTeam);
    const SideTables& t = session_.side(side);
    int pos = pickPosition(s_.onIce[at(side)], rng_, [&](int p, int slot) {
        return (p >= 3 ? 2.0 : 1.0) + statLine(t.player(slot), StatLineIndex::Real).Blocks / 40.0;
    });
    f.BlockerPos = pos;
    f.BlockerMan = pos == kNoPos ? kNoSlot : s_.onIce[at(side)].slot[at(pos)];
}

void Game::FindHitter() {
    FindState& f = s_.find;
    int side = other(s_.PuckTeam);
    const SideTables& t = session_.side(side);
    int pos = pickPosition(s_.onIce[at(side)], rng_,
                           [&](int, int slot) { return .3 + t.rate(RateSet::Real, slot).HitsPer60; });
    f.HitterPos = pos;
    f.Hitter = pos == kNoPos ? kNoSlot : s_.onIce[at(side)].slot[at(pos)];
}

void Game::PickNames(const OnIce* unit) {
    FindState& f = s_.find;
    const OnIce& ice = unit ? *unit : s_.onIce[at(s_.PuckTeam)];
    f.NameFirst = f.Carrier;
    int pos = pickPosition(ice, rng_, [&](int, int slot) { return slot == f.Carrier ? 0.0 : 1.0; });
    f.NameSecond = pos == kNoPos ? kNoSlot : ice.slot[at(pos)];
}

void Game::PickOpponentName() {
    FindDefender();
    s_.find.Opponent = s_.find.Defender;
}

void Game::HkSetPlayCallList() {
    FindState& f = s_.find;
    const OnIce& ice = s_.onIce[at(s_.PuckTeam)];
    for (int pos = 0; pos < static_cast<int>(kIcePositions); ++pos) {
        if (ice.slot[at(pos)] == kNoSlot || pos == 5) {
            f.Spot[at(pos)] = kSpotNone;
            continue;
        }
        f.Spot[at(pos)] = pos >= 3 ? kSpotOut - (rng_.rand(4) == 1 ? 1 : 0) : 1 + rng_.rand(4);
    }
}

void Game::PickLooseCarrier(int takeawayPos) {
    FindState& f = s_.find;
    const OnIce& ice = s_.onIce[at(s_.PuckTeam)];
    int pos = takeawayPos != kNoPos ? 3 + rng_.rand(2) - 1 : rng_.rand(5) - 1;
    for (int tries = 0; tries < 10; ++tries) {
        int slot = ice.slot[at(pos)];
        if (slot != kNoSlot && !f.BrokenStick[at(s_.PuckTeam)][at(slot)]) break;
        pos = slot == kNoSlot ? (rng_.rand(2) == 1 ? 4 : 3) : rng_.rand(5) - 1;
    }
    f.CarrierPos = pos;
    f.Carrier = ice.slot[at(pos)];
    if (f.Carrier == kNoSlot) f.CarrierPos = kNoPos;
}

}  // namespace tallyrink
