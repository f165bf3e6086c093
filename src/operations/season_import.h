#pragma once

// Builds a league folder from the facts of a real season: teams in their
// real divisions, one player record per player and team stint with his real
// stat line, the real schedule as unplayed games, the real results beside
// it, and a game plan per team. The league is built whole in memory first;
// writing it replaces nothing until every file is complete.

#include <filesystem>
#include <string>
#include <vector>

#include "league/files.h"
#include "league/records.h"
#include "league/schedule.h"
#include "operations/season_data.h"

namespace tallyrink {

inline constexpr std::string_view kScheduleFile = "Sked.skd";
// The real results, one line per schedule row in the same order, for the
// report that compares a replay with the real season.
inline constexpr std::string_view kRealResultsFile = "RealResults.csv";

// Names that belong in the league's rules: entry d - 1 names division d
// (team numbers 12 d - 11 to 12 d), entry c - 1 conference c.
struct LeagueNames {
    std::vector<std::string> divisions;
    std::vector<std::string> conferences;
};

struct RealResult {
    CalendarDate date;
    int visitorTeam{};
    int homeTeam{};
    std::string visitor;  // abbreviations
    std::string home;
    int visitorGoals{};
    int homeGoals{};
    std::string decidedIn;  // "REG", "OT" or "SO"
};

struct ImportedLeague {
    int seasonYear{};                       // the year the season starts in: 2017 for 2017-18
    std::vector<TeamRecord> teams;          // all 288 team slots
    std::vector<PlayerRecord> players;      // record r is players[r - 1]
    std::vector<GamePlanRecord> gamePlans;  // team 1 to the highest team number in use
    std::vector<GameRecord> schedule;       // in date order
    std::vector<RealResult> results;        // row r belongs to schedule row r
    LeagueNames names;
    std::vector<std::string> notes;  // what the data lacked and how it was filled
    int distinctPlayers{};
    int tradedPlayers{};  // players with more than one stint
};

// Team number of a team code in a built league, 0 if none.
int teamNumber(const ImportedLeague& league, std::string_view code);

// Throws FileError when the season can't make a league (a division of more
// than 12 teams, more than 24 divisions, a roster of more than 50).
ImportedLeague buildLeague(const SeasonData& data);

// The text of RealResults.csv.
std::string realResultsText(const std::vector<RealResult>& results);

// Writes the league into `dir`. A new folder is written under a temporary
// name and renamed when complete; in an existing folder each file is
// written beside it and renamed over the old one. A folder that already
// holds a league is refused unless `replace` is set.
void writeLeague(const ImportedLeague& league, const std::filesystem::path& dir, bool replace);

// The season folder shipped with the program: "seasons/2017-18" below the
// program folder when it has one, else below the shipped data folder.
std::filesystem::path defaultSeasonFolder(const std::filesystem::path& programDir);

}  // namespace tallyrink
