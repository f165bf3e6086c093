#pragma once

// The rating tool on a league folder: read a team and its players, work out
// their stored ratings from their real lines, write the players back at
// their record numbers, and write "Hockey Ratings.CSV" for the league.

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "league/era.h"
#include "league/records.h"
#include "team/ratings.h"
#include "team/ratings_file.h"

namespace tallyrink {

// Rates records already in memory, all of one team: their minutes are
// worked out as the team load does, the inputs are prefilled from the era
// and the team's totals, and every rating is generated. Returns the inputs
// used.
RatingInputs rateRecords(std::span<PlayerRecord> players, const EraTable& era, int teamYear, bool college,
                         const HistoricalRatings* history = nullptr);

// True for a player whose real line has games but whose ratings were never
// worked out: a skater with neither offense nor defense, a goalie with saves
// and no goalie rating.
bool needsRatings(const PlayerRecord& p);

// For a team being loaded: when any of its players needs ratings, the team
// is rated as a whole (the ratings are relative to the team) and only the
// players who needed them take the new values; hand-edited ratings of the
// others stay. Returns the number of players rated.
int rateUnratedPlayers(std::span<PlayerRecord> players, const EraTable& era, int teamYear, bool college);

struct TeamRating {
    int team = 0;
    std::string city;
    RatingInputs inputs;
    std::vector<RatingSubject> players;  // in roster order
    std::vector<int> recordNumbers;      // HKPLAYER record of each player
    std::optional<std::string> refusal;  // set when nobody was rated
};

// The players on team t's roster that belong to the team, read from the
// folder, each with his real minutes per game. Ratings are not changed.
TeamRating readTeamForRating(const std::filesystem::path& leagueDir, int team, const EraTable& era);

// Reads team t and works out its players' ratings, without writing. With
// `inputs` the tool's figures are taken as given (and may be refused);
// without them they are prefilled.
TeamRating rateTeam(const std::filesystem::path& leagueDir, int team, const EraTable& era,
                    const HistoricalRatings* history, const RatingChecks& checks = {},
                    const std::optional<RatingInputs>& inputs = std::nullopt);

// Writes the rated players at their record numbers in HKPLAYER. A refused
// team writes nothing.
void saveTeamRatings(const std::filesystem::path& leagueDir, const TeamRating& rated);

// Rates and saves every active team of the folder, in team order, then
// writes "Hockey Ratings.CSV". Returns the teams as rated.
std::vector<TeamRating> rateLeague(const std::filesystem::path& leagueDir, const EraTable& era,
                                   const HistoricalRatings* history);

// "Hockey Ratings.CSV" in the league folder, for the players of the active
// teams in team and roster order, then the free agents.
void writeLeagueRatingsCsv(const std::filesystem::path& leagueDir);

}  // namespace tallyrink
