#include "team/strategy.h"

#include <algorithm>

namespace tallyrink {

namespace {

int inRange(int v, int lo, int hi, int fallback) { return v >= lo && v <= hi ? v : fallback; }

template <std::size_t N>
std::array<double, N> shares(const std::array<std::uint8_t, N>& usage, const std::array<double, N>& fallback) {
    double sum = 0;
    for (auto u : usage) sum += u;
    std::array<double, N> out{};
    for (std::size_t i = 0; i < N; ++i) out[i] = sum > 0 ? usage[i] / sum : fallback[i];
    return out;
}

}  // namespace

LiveStrategy planStrategy(const GamePlanRecord& plan) {
    LiveStrategy s;
    auto zeroAsTwo = [](int v) { return v == 0 ? 2 : v; };
    s.offenseSystem = inRange(plan.OffenseSystem, 0, 3, 0);
    s.zoneEntry = inRange(plan.ZoneEntry, 1, 5, 3);
    s.forecheck = inRange(zeroAsTwo(plan.Forecheck), 1, 7, 4);
    s.pkForecheck = inRange(plan.PKForecheck, 1, 3, 1);
    s.dzDepth = inRange(plan.DzDepth, 1, 5, 3);
    s.pkDzDepth = inRange(plan.PKDzDepth, 1, 5, 3);
    s.dzAggressiveness = inRange(zeroAsTwo(plan.DzAggressiveness), 1, 5, 3);
    s.pkDzAggressiveness = inRange(zeroAsTwo(plan.PKDzAggressiveness), 1, 5, 2);
    return s;
}

int adjustment(int setting) { return (inRange(setting, 1, 7, 4) - 4) * 2; }

int breakoutAdj(const GamePlanRecord& plan, BreakoutAdj which) {
    return adjustment(plan.BreakoutAdj[static_cast<std::size_t>(which)]);
}

int aggressivenessAdj(const GamePlanRecord& plan) { return adjustment(plan.Breakout); }

LineSettings lineSettings(const GamePlanRecord& plan, int line) {
    LineSettings out;
    if (line < 1 || line > kLineSets) return out;
    auto i = static_cast<std::size_t>(line - 1);
    int option = plan.LineOption[i];
    if (option >= 1 && option <= 4) out.offenseSystem = option - 1;
    int strategy = plan.LineStrategy[i];
    if (killLine(line)) {
        if (strategy >= 1 && strategy <= 3) out.forecheckChange = strategy - 1;
    } else if (strategy >= 1 && strategy <= 7) {
        out.forecheckChange = strategy - 4;
    }
    int word = plan.LineWord[i];
    int depth = word / 10;
    int aggressiveness = word % 10;
    if (depth >= 1 && depth <= 5) out.depth = depth;
    if (aggressiveness >= 1 && aggressiveness <= 5) out.aggressiveness = aggressiveness;
    return out;
}

LiveStrategy withLineSettings(const LiveStrategy& base, const LineSettings& line, bool kill) {
    LiveStrategy s = base;
    if (line.offenseSystem) s.offenseSystem = *line.offenseSystem;
    if (kill) {
        s.pkForecheck = std::clamp(s.pkForecheck + line.forecheckChange, 1, 3);
        if (line.depth) s.pkDzDepth = *line.depth;
        if (line.aggressiveness) s.pkDzAggressiveness = *line.aggressiveness;
    } else {
        s.forecheck = std::clamp(s.forecheck + line.forecheckChange, 1, 7);
        if (line.depth) s.dzDepth = *line.depth;
        if (line.aggressiveness) s.dzAggressiveness = *line.aggressiveness;
    }
    return s;
}

int lateGameColumn(int clock) {
    if (clock < 0 || clock >= 900) return -1;
    return 2 - clock / 300;
}

LiveStrategy lateGameStrategy(const GamePlanRecord& p, const LiveStrategy& current, const LiveStrategy& plan,
                              const LateGame& at) {
    LiveStrategy s = current;
    int column = lateGameColumn(at.clock);
    if (!at.late || column < 0) return s;
    auto c = static_cast<std::size_t>(column);
    // One forechecker is two steps of the forecheck scroll and one of the
    // kill's.
    int change = 0;
    if (at.lead >= 2 && at.lead <= 5 && p.DecreaseForecheckLeadingTwo[c] == 1) change = -1;
    if (at.lead == 1 && p.DecreaseForecheckLeadingOne[c] == 1) change = -1;
    if (at.lead == -1 && p.IncreaseForecheckTrailingOne[c] == 1) change = 1;
    if (at.lead <= -2 && at.lead >= -5 && p.IncreaseForecheckTrailingTwo[c] == 1) change = 1;
    if (change != 0) {
        s.forecheck = std::clamp(s.forecheck + 2 * change, 1, 7);
        s.pkForecheck = std::clamp(s.pkForecheck + change, 1, 3);
        if (change > 0) {
            s.dzAggressiveness = std::clamp(s.dzAggressiveness + 2, 1, 5);
            s.pkDzAggressiveness = std::clamp(s.pkDzAggressiveness + 2, 1, 5);
        }
    }
    if (p.NeverMoreThanTwo == 1) s.forecheck = std::min(s.forecheck, 5);
    if (p.NeverLessThanOne == 1) s.forecheck = std::max(s.forecheck, 3);
    if (p.NeverChangeByTwo == 1) {
        s.forecheck = std::clamp(s.forecheck, plan.forecheck - 2, plan.forecheck + 2);
        s.pkForecheck = std::clamp(s.pkForecheck, plan.pkForecheck - 1, plan.pkForecheck + 1);
    }
    return s;
}

UsageShares usageShares(const GamePlanRecord& plan) {
    UsageShares u;
    u.lines = shares(plan.LineUsage, {13 / 40.0, 11 / 40.0, 9 / 40.0, 7 / 40.0});
    u.pairs = shares(plan.PairUsage, {13 / 33.0, 11 / 33.0, 9 / 33.0});
    u.powerPlay = shares(plan.PowerPlayUsage, {.6, .4});
    u.penaltyKill = shares(plan.PenaltyKillUsage, {.6, .4});
    return u;
}

int pullTime(const GamePlanRecord& plan, int behind) {
    int t = behind >= 2 ? plan.PullTrailingByTwo : plan.PullTrailingByOne;
    if (t > 0) return t;
    return behind >= 2 ? 100 : 80;
}

bool waitForPuck(const GamePlanRecord& plan, int behind) {
    return (behind >= 2 ? plan.WaitForPossessionTrailingByTwo : plan.WaitForPossessionTrailingByOne) == 1;
}

}  // namespace tallyrink
