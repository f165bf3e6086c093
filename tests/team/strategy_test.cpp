// What a game plan says without a game: repaired live values, the breakout
// adjustments, line-specific settings, the late-game forecheck changes and
// their limits, usage shares and pull times.

#include "team/strategy.h"

#include <gtest/gtest.h>

#include "team/default_coach.h"

namespace tallyrink {
namespace {

GamePlanRecord defaultPlan() {
    GamePlanRecord plan{};
    applyDefaultCoach(plan, 2017);
    return plan;
}

TEST(Strategy, PlanValuesAreRepairedOnUse) {
    GamePlanRecord plan = defaultPlan();
    LiveStrategy s = planStrategy(plan);
    EXPECT_EQ(s.forecheck, 4);
    EXPECT_EQ(s.pkForecheck, 1);
    EXPECT_EQ(s.pkDzAggressiveness, 2);
    plan.Forecheck = 0;  // read as 2
    plan.DzAggressiveness = 0;
    plan.ZoneEntry = 9;  // out of range: the default
    plan.OffenseSystem = 7;
    s = planStrategy(plan);
    EXPECT_EQ(s.forecheck, 2);
    EXPECT_EQ(s.dzAggressiveness, 2);
    EXPECT_EQ(s.zoneEntry, 3);
    EXPECT_EQ(s.offenseSystem, 0);
}

TEST(Strategy, AdjustmentsCentreOnFour) {
    EXPECT_EQ(adjustment(4), 0);
    EXPECT_EQ(adjustment(7), 6);
    EXPECT_EQ(adjustment(1), -6);
    EXPECT_EQ(adjustment(0), 0);  // unset
    GamePlanRecord plan = defaultPlan();
    EXPECT_EQ(breakoutAdj(plan, BreakoutAdj::HighPotential), 2);
    EXPECT_EQ(breakoutAdj(plan, BreakoutAdj::Trailing), 4);
    EXPECT_EQ(breakoutAdj(plan, BreakoutAdj::Leading), -4);
    EXPECT_EQ(aggressivenessAdj(plan), 0);
}

TEST(Strategy, LineSettingsLieOverThePlan) {
    GamePlanRecord plan = defaultPlan();
    LiveStrategy base = planStrategy(plan);
    EXPECT_FALSE(lineSettings(plan, 1).any());
    plan.LineStrategy[0] = 4;  // the neutral forecheck: nothing of its own
    EXPECT_FALSE(lineSettings(plan, 1).any());
    plan.LineOption[0] = 3;  // cycle low
    plan.LineStrategy[0] = 6;
    plan.LineWord[0] = 45;
    LineSettings one = lineSettings(plan, 1);
    ASSERT_TRUE(one.any());
    LiveStrategy s = withLineSettings(base, one, false);
    EXPECT_EQ(s.offenseSystem, 2);
    EXPECT_EQ(s.forecheck, 6);  // the plan's 4 and two more
    EXPECT_EQ(s.dzDepth, 4);
    EXPECT_EQ(s.dzAggressiveness, 5);
    EXPECT_EQ(s.pkForecheck, base.pkForecheck);

    plan.LineStrategy[10] = 3;  // a penalty-kill line: two more forecheckers on the kill
    LiveStrategy kill = withLineSettings(base, lineSettings(plan, 11), killLine(11));
    EXPECT_EQ(kill.pkForecheck, 3);
    EXPECT_EQ(kill.forecheck, base.forecheck);
    EXPECT_FALSE(lineSettings(plan, 0).any());
    EXPECT_FALSE(lineSettings(plan, 31).any());
}

TEST(Strategy, LateGameChangesFollowTheChecksOfTheirColumn) {
    EXPECT_EQ(lateGameColumn(900), -1);
    EXPECT_EQ(lateGameColumn(899), 0);
    EXPECT_EQ(lateGameColumn(599), 1);
    EXPECT_EQ(lateGameColumn(10), 2);

    GamePlanRecord plan = defaultPlan();
    LiveStrategy base = planStrategy(plan);
    plan.IncreaseForecheckTrailingOne = {0, 0, 1};  // under 5 minutes only
    plan.DecreaseForecheckLeadingTwo = {1, 1, 1};
    EXPECT_EQ(lateGameStrategy(plan, base, base, {-1, 400, true}), base);
    LiveStrategy behind = lateGameStrategy(plan, base, base, {-1, 200, true});
    EXPECT_EQ(behind.forecheck, base.forecheck + 2);
    EXPECT_EQ(behind.dzAggressiveness, base.dzAggressiveness + 2);
    EXPECT_EQ(behind.pkForecheck, base.pkForecheck + 1);
    EXPECT_EQ(lateGameStrategy(plan, base, base, {-1, 200, false}), base);  // not the last period
    EXPECT_EQ(lateGameStrategy(plan, base, base, {-2, 200, true}), base);   // trailing by two is its own check

    LiveStrategy ahead = lateGameStrategy(plan, base, base, {3, 800, true});
    EXPECT_EQ(ahead.forecheck, base.forecheck - 2);
    EXPECT_EQ(ahead.dzAggressiveness, base.dzAggressiveness);
    EXPECT_EQ(lateGameStrategy(plan, base, base, {6, 800, true}), base);  // beyond 5: no change
}

TEST(Strategy, TheLimitsHoldTheForecheck) {
    GamePlanRecord plan = defaultPlan();
    LiveStrategy base = planStrategy(plan);  // 1 to 2 forecheckers
    plan.IncreaseForecheckTrailingOne = {1, 1, 1};
    // A line that adds a forechecker, and the late game one more.
    LiveStrategy lined = base;
    lined.forecheck = base.forecheck + 2;
    EXPECT_EQ(lateGameStrategy(plan, lined, base, {-1, 100, true}).forecheck, base.forecheck + 3);  // at the top
    plan.NeverChangeByTwo = 1;
    EXPECT_EQ(lateGameStrategy(plan, lined, base, {-1, 100, true}).forecheck, base.forecheck + 2);
    plan.NeverChangeByTwo = 0;
    plan.NeverMoreThanTwo = 1;
    EXPECT_EQ(forecheckers(lateGameStrategy(plan, lined, base, {-1, 100, true}).forecheck), 2);
    plan.NeverMoreThanTwo = 0;
    plan.NeverLessThanOne = 1;
    LiveStrategy low = base;
    low.forecheck = 1;
    EXPECT_EQ(forecheckers(lateGameStrategy(plan, low, base, {0, 100, true}).forecheck), 1);
}

TEST(Strategy, UsageSharesAndPullTimes) {
    GamePlanRecord plan = defaultPlan();
    UsageShares u = usageShares(plan);
    EXPECT_DOUBLE_EQ(u.lines[0], 6.0 / 18);
    EXPECT_DOUBLE_EQ(u.lines[3], 3.0 / 18);
    EXPECT_DOUBLE_EQ(u.pairs[0] + u.pairs[1] + u.pairs[2], 1);
    plan.LineUsage = {0, 0, 0, 0};
    EXPECT_GT(usageShares(plan).lines[0], usageShares(plan).lines[3]);

    EXPECT_EQ(pullTime(plan, 1), 80);
    EXPECT_EQ(pullTime(plan, 2), 100);
    plan.PullTrailingByOne = 0;
    EXPECT_EQ(pullTime(plan, 1), 80);
    EXPECT_TRUE(waitForPuck(plan, 2));
    plan.WaitForPossessionTrailingByTwo = 0;
    EXPECT_FALSE(waitForPuck(plan, 2));
}

}  // namespace
}  // namespace tallyrink
