#pragma once

// The computer's default game plan: the coaching choices a new team starts
// with and that "Default All Team Strategies" brings back.

#include "league/records.h"

namespace tallyrink {

// Sets the coach-style block of `plan` to its defaults for a team of
// `teamYear` and marks the block as set. Line sets, depth charts and the
// per-player copies are left as they are.
void applyDefaultCoach(GamePlanRecord& plan, int teamYear);

// Defencemen a team of that year dresses, as the `DefenseRosterCount` list
// index: 0 four, 1 five, 2 six.
int defaultDefenseRosterCount(int teamYear);

}  // namespace tallyrink
