#pragma once

// The numbers the play engine reads for each player: minutes a game and
// their split, rates per 60 minutes on the ice, shooting percentage, fight
// rate, shift length and energy, worked out from a player's real-life line
// and his replay line so far. Each function here works on one player and
// the figures it is handed, so the team load decides which era row and
// which team totals apply and the formulas can be checked by hand.

#include <array>
#include <cstddef>
#include <cstdint>

#include "league/era.h"
#include "league/random.h"
#include "league/records.h"

namespace tallyrink {

// The two statistic sets the rates are worked out for.
enum class RateSet : std::size_t { Real = 0, Replay = 1 };
inline constexpr std::array kRateSets = {RateSet::Real, RateSet::Replay};

inline StatLineIndex statLineOf(RateSet s) { return s == RateSet::Real ? StatLineIndex::Real : StatLineIndex::Replay; }

// The rates of one set.
struct SetRates {
    double AverageMinutes = 0;  // minutes a game
    std::int16_t EvenMinutes = 0;
    std::int16_t PowerPlayMinutes = 0;
    std::int16_t ShortHandMinutes = 0;
    double SeasonShots = 0;  // shots of the season, real or estimated from goals
    double AssistsPer60 = 0;
    double GoalsPer60 = 0;
    double ShotsPer60 = 0;
    double HitsPer60 = 0;
    double PimPer60 = 0;
    double NonFightPimPer60 = 0;
    double FightsPer1000 = 0;  // fights per 1,000 minutes on the ice
};

struct PlayerRates {
    std::array<SetRates, 2> set{};  // by RateSet
    double ShootingPct = 0;         // goals per shot, the real figure or an estimate
    double ShotStyleFactor = 1;     // how the player's shooting usage bends his shooting percentage

    SetRates& operator[](RateSet s) { return set[static_cast<std::size_t>(s)]; }
    const SetRates& operator[](RateSet s) const { return set[static_cast<std::size_t>(s)]; }
};

// What the rates of one player are worked out against.
struct RateContext {
    EraFigures era;                // the player's year (2008 for a year outside the table), at his level
    int gamesForScale = 82;        // season length behind the 82-game scale of goal and point bumps
    bool college = false;          // a college player: college figures, no 82-game scale
    int year = 0;                  // PlayerYear, or the team's year when that is 0
    bool leagueFightData = false;  // the league holds real fight counts
    bool steerFights = false;      // a league game that isn't a playoff game, with the replay steered
    int sportsmanship = -1;        // what the fight rate reads in place of the stored rating; -1 the stored one
};

// The sportsmanship a player's penalty minutes per 60 give, against the
// era's penalty minutes per game: for a player whose ratings were never
// generated, whose stored 0 would make a brawler of him.
int sportsmanshipFromPenalties(double pimPer60, double eraPimPerGame);

// One set's rates of one player (steps 1 to 16 of the rate work). The Real
// set must be worked out before the Replay set: the replay pass reads the
// Real minutes and steers the Real fight rate. Draws from `rng` for the
// estimates that call for chance.
void computeSetRates(RateSet set, const PlayerRecord& p, const RateContext& ctx, Random& rng, PlayerRates& out);

// Shift length and energy of a skater (goalies: 360,000 seconds and 100).
struct ShiftContext {
    int eraGames = 82;       // season length of the player's year
    int dressedSkaters = 0;  // skaters of the side who dress
    int defenseGames = 0;    // real games of all the side's defensemen together
    int teamGames = 0;       // games the team has played (its wins, losses, ties and overtime losses)
};
struct ShiftResult {
    std::int32_t ShiftLimit = 100;
    std::uint8_t MaxEnergy = 100;
};
ShiftResult computeShift(const PlayerRecord& p, double realAverageMinutes, const ShiftContext& ctx);

// Salary from ratings, scoring rates and games played.
struct SalaryContext {
    EraFigures era;                 // figures of the player's year (2010 outside 1910 to 2050)
    int eraGames = 82;              // season length of his year (2009's when the year has none)
    bool scaleGames = true;         // his year lies from 1900 to 2099
    bool shortSeasonCount = false;  // a 2020 player of a season cut short: games count x 82 / 56
};
std::int32_t ComputeSalary(const PlayerRecord& p, const PlayerRates& rates, const SalaryContext& ctx);

// Games of the season that fall in the player's availability window.
// `seasonGames` is the era's season length of his year (the college
// length for a college team).
std::int16_t seasonGamesOfPlayer(const PlayerRecord& p, int seasonGames);

// Whether a season date (season month, day) lies in the player's
// availability window, both ends included. Dates out of range stand for the
// whole season.
bool withinAvailability(const PlayerRecord& p, int seasonMonth, int day);

// Durability from games played against the games he could play.
std::uint8_t durabilityOf(int realGames, int seasonGamesOfPlayer);

// A goalie's rest between starts.
std::uint8_t goalieRestGames(int realGames, int seasonGamesOfPlayer, int targetStarts);

// Whether the penalty record makes a player an enforcer. `eraPim` is the
// era's penalty minutes per game.
bool enforcerByRecord(const PlayerRecord& p, double realAverageMinutes, double realHitsPer60, double eraPim);

// Real minutes a game and real hits per 60 of a player, as the Real pass of
// the rate work would give them (these need no draws).
double realAverageMinutes(const PlayerRecord& p, const RateContext& ctx);

}  // namespace tallyrink
