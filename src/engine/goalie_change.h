#pragma once

// A computer coach's change of goalie after a goal against. A goalie who
// keeps letting pucks in is sent to the bench and the backup finishes the
// game: the coach hopes to stop the bleeding, wake his team up or spare the
// starter the rest of a bad night. Who is relieved, and when, follows the
// goalie's own setting where he has one ("after n goals allowed"), else the
// game plan's hook for the period; the goalie's "never pull in games he
// starts" overrides both.

#include <array>
#include <cstdint>

#include "team/lineup_tools.h"

namespace tallyrink {

// How a game's goalies were used.
struct GoalieRelief {
    std::array<int, 2> starter{kNoSlot, kNoSlot};  // in net at the opening faceoff
    // A bit a slot: goalies taken out after goals against. They stay on the
    // bench for the rest of the game unless the man who replaced them is
    // hurt.
    std::array<std::uint64_t, 2> relieved{};
};

// The game plan's hook, in the order of its list.
enum class GoalieHook : std::uint8_t { NoPreference, VerySlow, Slow, Fast, VeryFast };

// The plan keeps a hook for each regular period; the last one holds for any
// later period too. An index outside the list is no preference.
GoalieHook hookForPeriod(const std::array<std::uint8_t, 3>& hooks, int period);

// What the bench sees when a goal has just gone in against its goalie.
struct ReliefPicture {
    int goalsAllowed = 0;  // by the goalie in net this game, the new one counted
    int shotsFaced = 0;    // by him, goals included
    int period = 1;
    int regularPeriods = 3;
    int clock = 0;  // seconds left in the period
    int periodSeconds = 1200;
    int lead = 0;  // of the goalie's side with the goal counted: below 0 behind
};

// The chance, 0 to 1, that a coach of `hook` takes his goalie out now.
double reliefChance(GoalieHook hook, const ReliefPicture& p);

}  // namespace tallyrink
