#pragma once

// A made-up league folder ready to play: the invented teams and players
// written, the league's names in its rules, a season's schedule drawn from
// the same seed, and every player rated. The command line, the benchmarks
// and the tests all make their leagues this way.

#include <cstddef>
#include <filesystem>

#include "league/era.h"
#include "operations/new_league.h"
#include "operations/schedule_generator.h"
#include "team/ratings_file.h"

namespace tallyrink {

struct MadeUpLeagueFolder {
    GeneratedLeague league;
    ScheduleOutcome schedule;
    std::size_t rated = 0;
};

// Writes the league into `folder` (checked by the caller). `history` may be
// null: players are then rated from their lines alone.
MadeUpLeagueFolder makeMadeUpLeague(const std::filesystem::path& folder, const NewLeagueOptions& options,
                                    const EraTable& era, const HistoricalRatings* history);

}  // namespace tallyrink
