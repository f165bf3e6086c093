#pragma once

// The computer coach's state in a game, and the parts of its choices that
// need no game: the weights of the offensive-zone target and the line a
// team's usage asks for next. The choices themselves are Game members
// (computer_coach.cpp), since they read the whole play state.

#include <array>
#include <cstdint>

#include "engine/play_state.h"
#include "league/random.h"
#include "team/lines.h"
#include "team/strategy.h"

namespace tallyrink {

// A long stint's swing of a man's fatigue seconds, by his replay minutes
// against his real ones: +1 unless under(ratio, 1, .07); else -2 unless
// over(ratio, .98, -.03); else -1 unless over(ratio, 1, -.07); else none.
// stintSwingBelow gives the running sums of the chances of +1, -2 and -1,
// and stintSwing the swing they give a draw u, so the swing takes one draw.
// A certain swing has sums of 0 and 1 only, and a draw of 0 finds it.
std::array<double, 3> stintSwingBelow(double ratio);
double stintSwing(double u, const std::array<double, 3>& below);

// Kinds of unit whose ice time a coach shares out.
enum class UnitKind : std::size_t { Forwards, Pairs, PowerPlay, PenaltyKill };
inline constexpr std::size_t kUnitKinds = 4;
inline constexpr std::size_t kMaxUnits = 4;

struct CoachState {
    // The strategy each side plays with now (CoachInPlay keeps it).
    std::array<LiveStrategy, 2> live{};
    // The call each side made last, kept to be made again.
    std::array<Call, 2> ownLastCall{Call::Balanced, Call::Balanced};
    // The last 70 seconds of a close game, for the side behind and ahead.
    std::array<bool, 2> trailingEnd{};
    std::array<bool, 2> leadingEnd{};
    // The own forward line sent against each line of the other side, for a
    // plan that matches its checkers against the other's scorers; 0 none.
    std::array<std::array<int, kMaxUnits>, 2> matchFor{};
    bool pairsLoaded = false;
    // A change that was due but couldn't be made yet.
    std::array<bool, 2> pendingChange{};
    // The computer made the last call for a human coach.
    bool lastCallAutomatic = false;
    // The offensive-zone target a computer call picked: a position 0 to 5,
    // -1 none.
    std::array<int, 2> target{-1, -1};
    std::array<bool, 2> timeoutLeft{true, true};
    bool tvTimeoutThisStep = false;
    bool coachTimeoutThisStep = false;
    // Seconds each unit has played, for the usage shares.
    std::array<std::array<std::array<double, kMaxUnits>, kUnitKinds>, 2> unitSecs{};
    // Who was on the ice when the clock last ran, to count shifts.
    std::array<BySlot<bool>, 2> wasOn{};
};

// One skater on the ice as the target choice sees him.
struct TargetRow {
    int spot = 0;          // 1 behind, 2 screen, 3 in, 4 mid, 5 out; 0 nobody
    int shotTendency = 0;  // 0 to 3: what the play offers him as a shooter
    int passTendency = 3;  // the player's offensive-zone usage, 1 to 5, 3 as in real life
    double shotsPer60 = 0;
    bool carrier = false;
};

// The weight of each row for the target draw; 0 for a row that can't be
// picked. `shootingRate` is the carrier's goals per shot (0 for none known).
std::array<double, 6> offenseTargetWeights(const std::array<TargetRow, 6>& rows, bool powerPlay, double shootingRate,
                                           Random& rng);
// A row drawn in proportion to the weights, or kNoTarget when all are 0.
inline constexpr int kNoTarget = -99;
int drawTarget(const std::array<double, 6>& weights, Random& rng);

// The unit that has fallen furthest behind its share of `played` seconds.
// `rested[u]` says whether unit u is fit to go; a unit that isn't is taken
// only if no unit is. `count` units are considered, from 1.
int mostDueUnit(const double* shares, const double* played, const bool* rested, int count);

}  // namespace tallyrink
