#pragma once

// A made-up league: invented teams and players whose real-life lines look
// like a season of the chosen year. The league's totals per team-game come
// out at the era's figures, and its players differ as real ones do: stars
// and fourth-liners, puck-moving and stay-at-home defencemen, a starting
// goalie and his backup, enforcers, part-timers and call-ups.

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "league/records.h"
#include "operations/blank_league.h"
#include "operations/era_figures.h"

namespace tallyrink {

inline constexpr int kMinNewLeagueTeams = 2;
inline constexpr int kDefaultNewLeagueTeams = 24;

struct NewLeagueOptions {
    int teams = kDefaultNewLeagueTeams;
    int year = 2017;
    std::uint64_t seed = 1;
    int divisions = 0;       // 0: chosen from the number of teams
    std::string leagueName;  // blank: "Tallyrink League"
};

// Teams in each division in use, division 1 first: an even spread over a
// number of divisions that suits the team count (one division up to 7
// teams, 2 up to 15, 4 from 16 to 32, 6 to 48, 8 to 64, then one for every
// 8 teams, never more than 12 to a division).
std::vector<int> divisionLayout(int teams, int divisions = 0);

// What a made-up team's season came to before it was split among its
// players. The player records hold most of it; the team's power plays and
// the shots its goalies faced are kept nowhere else.
struct TeamSeason {
    int team = 0;          // team number
    double offence = 1.0;  // drawn strength: goals for, relative to the league
    double defence = 1.0;  // goals against, relative to the league (lower is better)
    int games = 0;
    int wins = 0, losses = 0, ties = 0, overtimeLosses = 0, shootoutWins = 0;
    int goalsFor = 0, goalsAgainst = 0;
    int emptyNetGoalsFor = 0, emptyNetGoalsAgainst = 0;
    int powerPlayGoalsFor = 0, powerPlayGoalsAgainst = 0;
    int shortHandedGoalsFor = 0, shortHandedGoalsAgainst = 0;
    int assists = 0, powerPlayAssists = 0, shortHandedAssists = 0;
    int shotsFor = 0;
    int shotsAgainst = 0;  // faced by the goalies: empty-net goals left out
    int missedShots = 0;
    int powerPlays = 0, timesShortHanded = 0;
    int minors = 0, majors = 0, fights = 0, misconducts = 0, gameMisconducts = 0, matchPenalties = 0;
    int faceoffsWon = 0, faceoffsLost = 0;
    int hits = 0, blocks = 0, takeaways = 0, giveaways = 0;
    int shutouts = 0;
    int penaltyShots = 0, penaltyShotGoals = 0, penaltyShotsFaced = 0, penaltyShotGoalsAllowed = 0;
    int seconds = 0;             // the team's clock over the season, overtime included
    int powerPlaySeconds = 0;    // of which with a man more
    int shortHandedSeconds = 0;  // of which with a man less
    int emptyNetSeconds = 0;     // of which with the goalie pulled

    [[nodiscard]] int pim() const {
        return 2 * minors + 5 * majors + 10 * (misconducts + gameMisconducts + matchPenalties);
    }
};

struct GeneratedLeague {
    int year = 0;
    EraTargets era;  // the figures drawn to, shots filled in where the era had none
    std::string leagueName;
    std::vector<int> teamsPerDivision;
    std::vector<std::string> divisionNames;    // one for each division in use
    std::vector<std::string> conferenceNames;  // two when there are two divisions or more
    LeagueFiles files;
    std::vector<TeamSeason> seasons;  // one for each live team, by team number
};

// Shots per team-game a league of these figures takes: the era's own when it
// has them, otherwise what its goals and save % imply.
double targetShotsPerTeamGame(const EraTargets& era);

// Draws the whole league in memory. The same options and figures give the
// same league, byte for byte. Throws ToolRefused for a team count or a
// division count that can't be laid out.
GeneratedLeague generateLeague(const NewLeagueOptions& options, const EraTargets& era);

// The league's own figures, worked out from its records the way the era's
// are defined, to set beside the era's.
struct LeagueFigures {
    int teams = 0;
    int players = 0;
    int goalies = 0;
    EraTargets measured;
};
LeagueFigures measureLeague(const GeneratedLeague& league);

}  // namespace tallyrink
