#pragma once

// The arithmetic of the chance table that stands on its own: the era's
// penalty factor, the multiplier it gives shots and penalties, the season
// calibration of a league's rates, the power-play era factor and the usage
// tier of a player. The table itself is Game::ChanceTable (chance_table.cpp).

#include <array>
#include <cstdint>

#include "league/random.h"

namespace tallyrink {

class League;
class EraTable;
struct RulesRecord;

// How far the league's season so far stands from the eras its teams play
// in; 1 everywhere when there is nothing to go by. A game takes it from its
// options, so a day of games works it out once.
struct SeasonCalibration {
    double Shots = 1;
    double Penalty = 1;
    double Fight = 1;
    double Shooting = 1;
    double PowerPlay = 1;
};

// Works it out from the open league's teams and players: each active team
// is set against the era of a regular of its roster. Only for league games
// outside the playoffs; with fewer than 5 to 14 games played in all it
// leaves every value at 1.
SeasonCalibration seasonCalibration(const League& league, const EraTable& era, const RulesRecord& rules, Random& rng);

// Every chance is a whole number out of 1000; a factor on one is applied
// and rounded at once, halves to even, so a small chance can vanish.
inline int scaled(int chance, double factor) { return roundToInt(chance * factor); }
inline void scale(int& chance, double factor) { chance = scaled(chance, factor); }
inline void add(int& chance, double amount) { chance = roundToInt(chance + amount); }

// Penalties of an era against its shots, relative to 2008's, to the power
// 1.4: `pim` and `shots` are the sums (or values) of the goalies' years,
// `refPim` the 2008 penalty minutes a game.
double eraPenaltyFactor(double pim, double shots, double refPim);

// What the era does to shots and penalties: 1.2, rising by steps of .06
// with the penalty factor.
double eraMultiplier(double eraPenaltyFactor);

// A season figure against the era's expectation, raised to `power` and held
// to lo..hi; 1 with nothing expected.
double calibration(double actual, double expected, double power, double lo, double hi);

// The power-play factor of an era whose success rate is `pct` per cent.
double powerPlayEraFactor(double pct);

// The shooter's mood before his own record is weighed: 5 (4 one time in
// three), then three times, one in three, one in five and one in seven, a
// swing of a throw of three less another (-2 to 2). The law of the sum is
// held as whole weights out of kMoodWeightTotal, for -2 to 11, so the mood
// takes one draw instead of up to ten, and no branch on it.
inline constexpr int kLowestMood = -2;
inline constexpr int kMoodWeightTotal = 3 * (3 * 9) * (5 * 9) * (7 * 9);
inline constexpr std::array<std::int32_t, 14> kMoodWeights = [] {
    std::array<std::int64_t, 14> w{};
    w[4 - kLowestMood] = 1;  // the start, 4 or 5, weighted 1 and 2 out of 3
    w[5 - kLowestMood] = 2;
    constexpr std::array<int, 5> swing{1, 2, 3, 2, 1};  // -2 to 2, out of 9
    for (int odds : {3, 5, 7}) {
        std::array<std::int64_t, 14> next{};
        for (std::size_t m = 0; m < w.size(); ++m) {
            next[m] += w[m] * (odds - 1) * 9;  // no swing
            for (std::size_t d = 0; d < swing.size(); ++d) {
                const std::size_t to = m + d - 2;
                if (w[m] != 0) next[to] += w[m] * swing[d];
            }
        }
        w = next;
    }
    std::array<std::int32_t, 14> out{};
    for (std::size_t m = 0; m < w.size(); ++m) out[m] = static_cast<std::int32_t>(w[m]);
    return out;
}();

// The mood for a draw 0 <= u < 1: the place of Int(u * kMoodWeightTotal)
// among the weights' running sums.
inline int baseShooterMood(double u) {
    static constexpr std::array<std::int32_t, 13> kBounds = [] {
        std::array<std::int32_t, 13> b{};
        std::int32_t sum = 0;
        for (std::size_t m = 0; m < b.size(); ++m) b[m] = sum += kMoodWeights[m];
        return b;
    }();
    const auto k = static_cast<std::int32_t>(u * kMoodWeightTotal);
    int mood = kLowestMood;
    for (std::int32_t bound : kBounds) mood += k >= bound ? 1 : 0;
    return mood;
}

// A player's usage tier, 0 to 3: the highest step his replay games (plus
// the one he is playing) have run past, in per cent of his real games.
int usageTier(const std::array<std::uint8_t, 3>& steps, int replayGames, int realGames);

}  // namespace tallyrink
