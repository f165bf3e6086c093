#pragma once

// A stand-in for the part of a game not built yet: the chance table that
// reads ratings, strategy, era and the season so far. It keeps games moving with rates near a
// modern league's (about 30 shots and 3 goals a team, 3 to 4 power plays),
// so that the loop, the clock and the periods can be played and tested.
// It is one function the game calls in one place; the real table replaces
// it there.

#include "engine/play_chances.h"
#include "engine/play_state.h"

namespace tallyrink {

class Game;

// The chance table of the coming step from the zone, the call and the
// manpower alone.
PlayChances StandInChances(const Game& game);

}  // namespace tallyrink
