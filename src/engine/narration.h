#pragma once

// The play-by-play seam of the events. Each Describe... member of Game
// (bodies in narration.cpp) tells one plain line of what just happened,
// only while the game is told (a screen, or a game whose lines are
// kept); a game without one builds no strings. The phrase tables take the
// place of these lines later, member by member, without touching the
// events that call them.

#include <string>

#include "engine/team_load.h"

namespace tallyrink {

// The name a play-by-play line uses for a player: his short name, else his
// last name; "nobody" for an empty slot.
std::string playName(const SideTables& side, int slot);

// "1st", "2nd", "3rd", "4th" ...
std::string ordinal(int n);

}  // namespace tallyrink
