#pragma once

// Made-up leagues of 2017, each written once per test program, and games
// loaded from them: the quickest way for a test to hold a real game. A test
// file picks its league by team count and seed, so its seeded expectations
// don't move when another file wants a different league.

#include <cstdint>
#include <filesystem>
#include <memory>
#include <vector>

#include "engine/game.h"
#include "engine/team_load.h"
#include "league/schedule.h"
#include "postgame/box_file.h"
#include "support/temp_dir.h"

namespace tallyrink::test {

struct WrittenLeague {
    std::vector<int> teams;  // the active team numbers
    ActiveTeams active;      // the same as a set, as a new schedule wants them
};

// A made-up league of 2017 with `teams` teams written into `dir`, with no
// schedule: for a test that posts games and so needs a folder of its own.
WrittenLeague writeMadeUpLeague(const std::filesystem::path& dir, int teams, std::uint64_t seed);

struct MadeUpLeague {
    testing::TempDir dir;
    std::vector<int> teams;  // the active team numbers
};

const MadeUpLeague& madeUpLeague(int teams = 6, std::uint64_t seed = 31);

// Regulation of three 20-minute periods, a 5-minute overtime and a shootout.
RulesRecord madeUpRules();

// Two teams (by index in `teams`) of `league` loaded for a game on 10 November.
std::unique_ptr<GameSession> loadedGame(const MadeUpLeague& league, const RulesRecord& rules, std::uint64_t seed = 1,
                                        int visitor = 0, int home = 1);
// The same from the default league.
std::unique_ptr<GameSession> loadedGame(const RulesRecord& rules, std::uint64_t seed = 1, int visitor = 0,
                                        int home = 1);

// A finished game posted as the first game of its schedule, on 4 November
// 2017, into the league folder `dir` the session has open; its box file read
// back.
std::unique_ptr<BoxFile> postAndReadBox(GameSession& session, const Game& game, const std::filesystem::path& dir);

}  // namespace tallyrink::test
