// A human coach's line changes: the units he sends out, the goalie pulled
// or put back, and the computer's change on request. The same rules bind
// him that a bench boss lives by: changes at a stoppage only, none for the
// side that iced the puck when the league forbids it, and the goalie stays
// while the other team attacks.

#include <fmt/core.h>

#include "engine/game.h"

namespace tallyrink {

namespace {

std::size_t at(int i) { return static_cast<std::size_t>(i); }

constexpr int kEvenForwardUnits = 4;
constexpr int kEvenPairs = 3;
constexpr int kSpecialUnits = 2;

}  // namespace

std::string Game::lineChangeRefusal(int side) const {
    Zone z = s_.PlayZone;
    if (z == Zone::Shootout || s_.GameOverFlag) return "You may not make a line change in this situation!";
    if (!isFaceoff(z) && z != Zone::ContinueBox) return "You may not make a line change in this situation!";
    bool iced = isFaceoff(z) && s_.LastPlayResult == Result::Clear && faceoffSpot(z) == FaceoffSpot::Defense &&
                faceoffEndSide(z) == side && session_.league().rules.AllowLineChangesOnIcingCheck == 0;
    if (iced) return "You may not change lines after icing!";
    return {};
}

LineChoice Game::linesOnIce(int side) const {
    bool even = s_.Skaters[0] == 5 && s_.Skaters[1] == 5;
    LineChoice c;
    c.forwards = s_.forwardUnit[at(side)];
    c.pair = even ? s_.defensePair[at(side)] : 0;
    c.forwardUnits = even ? kEvenForwardUnits : kSpecialUnits;
    c.pairs = even ? kEvenPairs : 0;
    c.goaliePulled = s_.GoaliePulled[at(side)];
    return c;
}

std::string Game::HumanLineChange(int side, int forwards, int pair) {
    if (side != kVisitor && side != kHome) return "You may not make a line change in this situation!";
    if (std::string refusal = lineChangeRefusal(side); !refusal.empty()) return refusal;
    LineChoice now = linesOnIce(side);
    if (forwards < 0 || forwards > now.forwardUnits)
        return fmt::format("There is no forward unit {}: choose 1 to {}", forwards, now.forwardUnits);
    if (pair < 0 || pair > now.pairs)
        return now.pairs == 0 ? std::string("The defense pair goes with the unit in this situation")
                              : fmt::format("There is no defense pair {}: choose 1 to {}", pair, now.pairs);
    int f = forwards > 0 ? forwards : now.forwards;
    int p = pair > 0 ? pair : s_.defensePair[at(side)];
    if (f == s_.forwardUnit[at(side)] && p == s_.defensePair[at(side)]) return {};
    s_.forwardUnit[at(side)] = f;
    s_.defensePair[at(side)] = p;
    putUnitOnIce(side);
    s_.lineChangeMade[at(side)] = true;
    DescribeLineChange(side);
    return {};
}

std::string Game::HumanGoaliePull(int side, bool pull) {
    if (side != kVisitor && side != kHome) return "You may not make a line change in this situation!";
    if (s_.GoaliePulled[at(side)] == pull) return {};
    // Pulling is allowed whenever the side may change; putting him back
    // with the puck in his own end would leave the net open in the middle
    // of the other team's attack.
    if (std::string refusal = lineChangeRefusal(side); !refusal.empty()) {
        bool attacked = s_.PuckTeam != side && isOffenseState(s_.PlayZone);
        if (attacked) return "You may not replace the goalie during an offensive zone play in progress!";
        return refusal;
    }
    if (pull) {
        s_.GoaliePulled[at(side)] = true;
        putUnitOnIce(side);
        DescribeGoaliePull(side);
    } else {
        returnGoalie(side);
    }
    s_.lineChangeMade[at(side)] = true;
    return {};
}

std::string Game::RollLines(int side) {
    if (side != kVisitor && side != kHome) return "You may not make a line change in this situation!";
    if (std::string refusal = lineChangeRefusal(side); !refusal.empty()) return refusal;
    LineChoice before = linesOnIce(side);
    computerLineChange(side, isFaceoff(s_.PlayZone));
    LineChoice after = linesOnIce(side);
    if (before.forwards != after.forwards || before.pair != after.pair) DescribeLineChange(side);
    return {};
}

}  // namespace tallyrink
