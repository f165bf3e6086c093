#pragma once

// The odds of a draw, apart from the game so that they can be read by hand:
// each man starts from his faceoff rating, the two chances are set against
// each other, then manpower and a human against the computer bend them.

#include <array>

#include "league/random.h"

namespace tallyrink {

struct DrawSide {
    int rating = 5;   // RatingFaceoff of the man at the circle
    int skaters = 5;  // of his side
    bool human = false;
};

// The two chances, side 0 first. Side 1's sum is taken against side 0's
// value as it stands after its own adjustment, so a gap counts a little
// more for the home side than for the visitor.
std::array<double, 2> faceoffChances(const DrawSide& visitor, const DrawSide& home);

// The winning side (0 or 1) of a draw with those chances.
int faceoffWinner(const std::array<double, 2>& c, Random& rng);

}  // namespace tallyrink
