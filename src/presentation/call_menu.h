#pragma once

// The calls a coach may make in the state a game stands in, as a screen
// offers them: a key, a caption and the call it sends to the engine. The
// terminal and the windowed game screen both build their choices from it,
// so they offer the same calls under the same captions.

#include <string>
#include <vector>

#include "engine/play_state.h"

namespace tallyrink {

class Game;

// Which picture of calls the state shows, first match wins in this order.
enum class CallBox {
    Shootout,
    PenaltyShot,
    Faceoff,
    ContinueBox,
    Shooter,
    OffenseZone,
    Rush,
    EmptyNet,
    PowerPlay,
    ShortHanded,
    Balanced,
};

struct CallChoice {
    char key = 0;  // the keyboard digit or letter
    std::string caption;
    Call call = Call::None;
    int target = 0;  // a player's position for a call at an open man, else 0
};

CallBox callBoxOf(const Game& game, int side);

// The choices of the box, in key order; in the offensive zone the open men
// of the game's list come first, rows 1 to 6.
std::vector<CallChoice> callChoices(const Game& game, int side);

// The text over the call box: who has the puck and where.
std::string callBoxCaption(const Game& game);

}  // namespace tallyrink
