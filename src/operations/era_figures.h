#pragma once

// League-wide averages of one season, as a made-up league is drawn to match
// them: the era table's figures put in the terms the generator works in.

#include "league/era.h"

namespace tallyrink {

struct EraTargets {
    int games = 82;                  // games of a team's season
    double goalsPerTeamGame = 2.93;  // goals credited to one team's players in one game
    double assistsPerGoal = 1.69;
    double pimPerTeamGame = 8.64;  // penalty minutes of one team in one game
    double powerPlayPct = 20.2;    // power-play goals per 100 power plays
    double savePct = 91.2;         // saves per 100 shots faced by goalies
    double shotsPerTeamGame = 0;   // shots on goal of one team in one game; 0 when unknown
    double fightsPerGame = 0.44;   // fighting majors in one game, both teams together (a fight gives two)
};

// The targets of `year` from the era table (years outside it take the
// nearest). Figures the season didn't keep are estimated.
EraTargets eraTargets(const EraTable& table, int year);

// The same figures brought into the ranges the generator can honour; a
// figure out of range (a damaged era table) takes that of a modern season.
EraTargets sanitizedEra(const EraTargets& era, int year);

// How a season's games end, by the rules of its time: shares of all games.
struct DecisionShares {
    double ties = 0;             // games left tied
    double overtimeLosses = 0;   // games whose loser gets an overtime or shootout loss
    double shootouts = 0;        // games decided by a shootout
    double overtimeMinutes = 0;  // overtime played per game, on average
};
DecisionShares decisionShares(int year);

// Skaters a team dresses for a game in the year's game.
struct DressedSkaters {
    int forwards = 12;
    int defence = 6;
};
DressedSkaters dressedSkaters(int year);

}  // namespace tallyrink
