#pragma once

// The starter of the day among a team's dressed goalies. The first goalie
// of the chart plays most nights, but a man who has played several games in
// a row, or who runs ahead of the share of starts he is meant to have, sits
// for the next one; so a season's starts fall near the real ones and no
// goalie plays the tired games that the shot model charges him for.

#include "league/random.h"
#include "team/lines.h"
#include "team/lineup_tools.h"

namespace tallyrink {

struct GoalieSeason {
    int teamGames = 0;     // games the team has played this season
    int seasonGames = 82;  // games of its schedule
};

// The slot of the starter, or kNoSlot when no dressed candidate is a goalie.
int startingGoalie(const LineupTeam& team, const GoalieSeason& season, Random& rng);

// Games in a row a goalie of `realGames` real games plays before a rest.
int goalieStreakLimit(int realGames, Random& rng);

}  // namespace tallyrink
