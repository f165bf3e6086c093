#pragma once

// The pieces of the shooting percentage that stand on their own: a
// goalie's form of the day, the goalie's part of the percentage, the three
// depths of a shot and the limits of a shot class against the era's
// percentage. The Game puts them together with the state of the play
// (shooting.cpp).

#include "league/random.h"

namespace tallyrink {

// Shot classes.
inline constexpr int kShotNone = 0;
inline constexpr int kShotInside = 1;
inline constexpr int kShotMid = 2;
inline constexpr int kShotOutside = 3;
inline constexpr int kShotRush = 4;
inline constexpr int kShotDeflection = 5;

// A goalie's form of the day, in tenths of his rating, kept so that rating
// and form together stay below 100.
int drawGoalieForm(int ratingGoalie, Random& rng);

// What a goalie adds to the chance of a goal from his rating and form
// (before his record, his rest and his own form are counted): a weak goalie
// adds, a great one takes away, an old-time one a little more of either.
double goalieRatingTerm(int ratingGoalie, int form, int playerYear);

struct ShotDepths {
    double inside = 0;
    double mid = 0;
    double outside = 0;
};
// The percentages from the three depths of a man at a 0-based ice position
// (kNoPos -1 for no carrier), bent by how he shoots from inside and out.
ShotDepths shotDepths(double goalPct, int pos, int ratingShotIn, int ratingShotOut);

// A shot's percentage held to the range its class allows against the era's
// percentage `playerPct`.
double limitByClass(double goalPct, int shotClass, double playerPct);

// The factor on the attackers' chance to keep a rebound in at even
// strength, by the defensive rating (in tenths, 0 to 100) of the
// defenseman who contests it: `strong` past 7 + Rand(3), else `weak` at
// or below Rand(5), else 1. On the tenths scale nearly every dressed
// defenseman is past the first mark.
double keepInFactor(int ratingDefense, double strong, double weak, Random& rng);

}  // namespace tallyrink
