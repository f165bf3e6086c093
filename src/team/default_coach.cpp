#include "team/default_coach.h"

namespace tallyrink {

int defaultDefenseRosterCount(int teamYear) { return teamYear <= 1949 ? 0 : teamYear <= 1974 ? 1 : 2; }

void applyDefaultCoach(GamePlanRecord& plan, int teamYear) {
    plan.Forecheck = 4;  // one to two forecheckers
    plan.PKForecheck = 1;
    plan.DzDepth = 3;
    plan.PKDzDepth = 3;
    plan.DzAggressiveness = 3;
    plan.PKDzAggressiveness = 2;
    plan.OffenseSystem = 0;  // balanced
    plan.ZoneEntry = 3;
    plan.DontPullGoalie = 1;
    plan.PullTrailingByTwo = 100;
    plan.WaitForPossessionTrailingByTwo = 1;
    plan.PullTrailingByOne = 80;
    plan.WaitForPossessionTrailingByOne = 1;
    plan.YankGoalie = {0, 0, 0};  // no preference
    plan.BalancedMatching = 1;
    plan.DefVsScoring = 0;
    plan.RotateLines = 1;
    plan.FillFromDepth = 0;
    plan.StartingFWDLine = 1;
    plan.StartingDEFPair = 1;
    plan.OffZoneFWD = 0;
    plan.OffZoneDEF = 0;
    plan.DefZoneFWD = 0;
    plan.DefZoneDEF = 0;
    plan.Breakout = 4;
    // High potential, low potential, leading, trailing, overmatched,
    // undermatched, forecheck under two, forecheck over two.
    plan.BreakoutAdj = {5, 3, 2, 6, 3, 5, 4, 4};
    plan.DontUseWhenHumanCoached = 1;
    plan.NeverMoreThanTwo = 0;
    plan.NeverLessThanOne = 0;
    plan.NeverChangeByTwo = 0;
    plan.IncreaseForecheckTrailingOne = {0, 0, 0};
    plan.IncreaseForecheckTrailingTwo = {0, 0, 0};
    plan.DecreaseForecheckLeadingOne = {0, 0, 0};
    plan.DecreaseForecheckLeadingTwo = {0, 0, 0};
    plan.LineUsage = {6, 5, 4, 3};
    plan.PairUsage = {5, 4, 3};
    plan.PowerPlayUsage = {5, 3};
    plan.PenaltyKillUsage = {5, 3};
    plan.DefenseRosterCount = static_cast<std::uint8_t>(defaultDefenseRosterCount(teamYear));
    plan.GamePlanStamp = 44;
}

}  // namespace tallyrink
