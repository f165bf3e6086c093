#pragma once

// Division and conference standings from the team records the posting keeps
// (wins, losses, home splits, last ten) and the scores table (which wins came
// in extra time). The order built here is the league's order: the playoff
// seeds and the web site read it too.

#include <array>
#include <string>
#include <vector>

#include "league/records.h"
#include "league/rules.h"

namespace tallyrink {

class League;

// Which record columns a league's standings show.
enum class StandingsLayout {
    Ties = 0,            // W L T: no point for an overtime loss
    OvertimeLosses = 1,  // W L OL: shootouts decide every game
    TiesAndOvertime = 2  // W L T OL: an overtime loss earns a point, yet games can end tied
};

StandingsLayout standingsLayout(const RulesRecord& rules);

struct StandingsRecord {
    int wins = 0;
    int losses = 0;
    int ties = 0;
    int overtimeLosses = 0;
};

struct StandingsRow {
    int team = 0;
    int division = 0;
    std::string name;
    std::string code;
    StandingsRecord total;
    StandingsRecord home;
    StandingsRecord lastTen;
    int extraTimeWins = 0;
    int shootoutWins = 0;
    int goalsFor = 0;
    int goalsAgainst = 0;
    double points = 0;

    [[nodiscard]] int games() const { return total.wins + total.losses + total.ties + total.overtimeLosses; }
    [[nodiscard]] StandingsRecord road() const {
        return {total.wins - home.wins, total.losses - home.losses, total.ties - home.ties,
                total.overtimeLosses - home.overtimeLosses};
    }
    // Regulation and overtime wins: every win but those of a shootout.
    [[nodiscard]] int regulationOvertimeWins() const { return total.wins - shootoutWins; }
};

// Points of a team's record under the league's scale.
double standingsPoints(const RulesRecord& rules, const StandingsRecord& r, int extraTimeWins);

// Wins of `team` in games that went past regulation, over the scores table.
int extraTimeWinsOf(const std::vector<GameRecord>& scores, int team);

// Every active team, in the league's order: most points first. Equal points
// keep the order the exchange sort leaves them in, with no further tie-break.
std::vector<StandingsRow> buildStandings(const League& league, const RulesRecord& rules,
                                         const std::vector<GameRecord>& scores);

// The sort itself, exposed for callers that add their own bonus first.
void sortByPoints(std::vector<StandingsRow>& rows);

std::string DisplayStandingsDivision(const std::vector<StandingsRow>& rows, const RulesRecord& rules);
std::string DisplayStandingsConference(const std::vector<StandingsRow>& rows, const RulesRecord& rules);

}  // namespace tallyrink
