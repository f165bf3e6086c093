#pragma once

// What a game plan says, read without a game: the live strategy values a
// side plays with, the breakout adjustments, the late-game forecheck
// changes and their limits, the line-specific settings, the usage shares
// of lines and pairs, and the goalie-pull times. Bad values are repaired
// here, on use, so a damaged plan still coaches a team.

#include <array>
#include <optional>

#include "league/records.h"

namespace tallyrink {

// The strategy a side plays with right now. Forecheck is on its scroll, 1
// ("Forecheck: 0") to 7 ("Forecheck: 3"), two steps a forechecker; the
// penalty-kill forecheck 1 to 3; depth and aggressiveness 1 to 5.
struct LiveStrategy {
    int offenseSystem = 0;  // 0 balanced, 1 point, 2 cycle low, 3 defensive
    int zoneEntry = 3;
    int forecheck = 4;
    int pkForecheck = 1;
    int dzDepth = 3;
    int pkDzDepth = 3;
    int dzAggressiveness = 3;
    int pkDzAggressiveness = 2;

    bool operator==(const LiveStrategy&) const = default;
};

// The plan's own values, repaired: a forecheck or aggressiveness of 0 reads
// as 2, anything else out of range takes the default.
LiveStrategy planStrategy(const GamePlanRecord& plan);

// Forecheckers of a forecheck scroll value: 0 to 3, halves for the ranges.
inline double forecheckers(int forecheck) { return (forecheck - 1) / 2.0; }

// The breakout adjustments, in the order the plan keeps them.
enum class BreakoutAdj : std::size_t {
    HighPotential,
    LowPotential,
    Leading,
    Trailing,
    Overmatched,
    Undermatched,
    ForecheckLessTwo,
    ForecheckMoreTwo,
};
// A setting of 1 to 7 as a change of a chance in per cent: (x - 4) * 2. A
// value out of range counts as the neutral 4.
int adjustment(int setting);
int breakoutAdj(const GamePlanRecord& plan, BreakoutAdj which);
// The plan's aggressiveness (BreakoutScroll) as an adjustment.
int aggressivenessAdj(const GamePlanRecord& plan);

// Settings of one situation line. Kept in the plan's three per-line arrays:
// LineOption 0 none, 1 to 4 the offense system 0 to 3; LineStrategy the
// line's forecheck, added to the plan's as its distance from the neutral 4
// (on the penalty-kill lines 11 to 16: 0 none, 1 to 3 added as v - 1);
// LineWord depth * 10 + aggressiveness, 0 none.
struct LineSettings {
    std::optional<int> offenseSystem;
    int forecheckChange = 0;
    std::optional<int> depth;
    std::optional<int> aggressiveness;
    [[nodiscard]] bool any() const { return offenseSystem || forecheckChange != 0 || depth || aggressiveness; }
};
LineSettings lineSettings(const GamePlanRecord& plan, int line);
// Penalty-kill situation lines, whose settings speak of the kill.
inline bool killLine(int line) { return line >= 11 && line <= 16; }

// The plan's values with a line's own settings laid over them.
LiveStrategy withLineSettings(const LiveStrategy& base, const LineSettings& line, bool kill);

// Where a side stands late in the game, for the forecheck changes.
struct LateGame {
    int lead = 0;       // goals ahead; negative behind
    int clock = 0;      // seconds left in the period
    bool late = false;  // the last regular period or later
};

// The check box of the late-game table that applies at `clock`: 0 "Under 15
// Minutes", 1 "Under 10 Minutes", 2 "Under 5 Minutes"; -1 before that.
int lateGameColumn(int clock);

// The late-game forecheck and aggressiveness changes and the plan's limits
// on them, laid over `current`; `plan` is what the limits are measured from.
LiveStrategy lateGameStrategy(const GamePlanRecord& planRecord, const LiveStrategy& current, const LiveStrategy& plan,
                              const LateGame& at);

// Shares of ice time, each list summing to 1: forward lines 1 to 4, pairs 1
// to 3, power-play units 1 and 2, penalty-kill units 1 and 2. A list of
// zeros takes the default usage.
struct UsageShares {
    std::array<double, 4> lines{};
    std::array<double, 3> pairs{};
    std::array<double, 2> powerPlay{};
    std::array<double, 2> penaltyKill{};
};
UsageShares usageShares(const GamePlanRecord& plan);

// Seconds left at which a goalie comes out trailing by one or two goals
// (defaults 80 and 100 for a plan that has none).
int pullTime(const GamePlanRecord& plan, int behind);
bool waitForPuck(const GamePlanRecord& plan, int behind);

}  // namespace tallyrink
