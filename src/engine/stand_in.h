#pragma once

// Stand-ins for the parts of a game not built yet: the chance table that
// reads ratings, strategy, era and the season so far, and the computer
// coach that reads the game plan. They keep games moving with rates near a
// modern league's (about 30 shots and 3 goals a team, 3 to 4 power plays),
// so that the loop, the clock and the periods can be played and tested.
// Each is one function the game calls in one place; the real ones replace
// them there.

#include "engine/play_chances.h"
#include "engine/play_state.h"
#include "league/random.h"

namespace tallyrink {

class Game;

// The chance table of the coming step from the zone, the call and the
// manpower alone.
PlayChances StandInChances(const Game& game);

// The call a computer coach makes for `side` in the present state (at a
// faceoff: the faceoff call). Both coaches use it.
Call StandInComputerCall(const Game& game, int side, Random& rng);

}  // namespace tallyrink
