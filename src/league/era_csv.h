#pragma once

// Era figures from comma-separated files. Two forms come in:
//
// - "NHL ERA DATA.CSV", the form the era screen imports: a header line of
//   ten values, then one season a line: year, the league's games, teams,
//   three values passed over, then goals, assists and penalty minutes per
//   game and the power-play percentage.
// - The league-by-season table the program's own era file is built from
//   (data/sources/nhl_league_by_season.csv): columns found by their names.
//
// Both are read whole before anything changes; a row that can't be read is
// reported with the file, the line and the column, and a caller refuses the
// whole file when there are any.

#include <filesystem>
#include <string>
#include <vector>

#include "league/era.h"

namespace tallyrink {

inline constexpr const char* kEraCsvFileName = "NHL ERA DATA.CSV";

struct EraCsvRow {
    int year{};
    double leagueGames{};  // games of the whole league's season
    double teams{};
    double goalsPerGame{};  // both teams
    double assistsPerGame{};
    double pimPerGame{};
    double powerPlayPct{};
};

struct EraCsvFile {
    std::vector<EraCsvRow> rows;
    std::vector<std::string> problems;  // "FILE:LINE: column N (name): what"
};

EraCsvFile readEraCsv(const std::filesystem::path& path);

// The import of the era screen: Games, GoalsPerTeam, AssistsPerGoal,
// PimPerGame and PowerPlayPct of every year are cleared, then each row sets
// its year. Games is the league's games over half the teams (each game is two
// teams' game); GoalsPerTeam half the goals of a game.
void importEraCsv(EraTable& table, const std::vector<EraCsvRow>& rows);

struct SeasonEraBuild {
    EraTable table;
    std::vector<std::string> problems;
    int firstSeason{};
    int lastSeason{};
    std::vector<int> estimatedSavePct;  // seasons whose save percentage was worked out, not measured
};

// The program's era table from the league-by-season table. The mapping:
//
// - The season 2017-18 is the year 2017 (its first year, as a team's year is).
// - Games: games_per_team. AssistsPerGoal: assists_per_goal.
// - GoalsPerTeam: player_goals_total / (2 * league_games): the goals a
//   simulated game has to produce, without the one goal a shootout winner is
//   credited with in the standings.
// - PimPerGame: pim_per_game, both teams: the engine halves it to compare a
//   team's minutes and adds two teams' figures for a game.
// - PowerPlayPct: pp_pct; empty before 1963, left 0 (the engine has its own
//   stand-in for an unknown percentage).
// - SavePct: 100 * (1 - GoalsPerTeam / shots_per_team_game) for a season
//   with both save_pct and shots, so that empty-net goals count as well and
//   the goals and the save percentage give back the season's shots, as the
//   engine reads them; save_pct alone for a season without shots. A season
//   without one between measured seasons takes the straight line between its
//   neighbours. A season before the first measured one assumes the shots of
//   the first three measured seasons and their offset for empty-net goals:
//   100 * (1 - goals / shots) + offset.
// - FightsPerGame: no figure; left 0, so that loading gives 0.3 a game up to
//   1969 and 0.5 after.
// - Years before the first season hold its figures; a season missing from the
//   table (the lockout of 2004-05) and the years after the last are left empty,
//   so that loading carries the year before forward.
// - The college columns are left empty for loading to derive.
SeasonEraBuild buildEraFromSeasons(const std::filesystem::path& csv);

}  // namespace tallyrink
