#pragma once

// A stand-in for the computer coach that reads the game plan: it keeps
// games moving so that the loop, the clock and the periods can be played
// and tested. The game calls it in one place; the real coach replaces it
// there.

#include "engine/play_state.h"
#include "league/random.h"

namespace tallyrink {

class Game;

// The call a computer coach makes for `side` in the present state (at a
// faceoff: the faceoff call). Both coaches use it.
Call StandInComputerCall(const Game& game, int side, Random& rng);

}  // namespace tallyrink
