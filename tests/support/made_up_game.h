#pragma once

// A made-up league of six teams of 2017, written once per test program, and
// games loaded from it: the quickest way for a test to hold a real game.

#include <memory>
#include <vector>

#include "engine/team_load.h"
#include "support/temp_dir.h"

namespace tallyrink::test {

struct MadeUpLeague {
    testing::TempDir dir;
    std::vector<int> teams;  // the active team numbers
};

const MadeUpLeague& madeUpLeague();

// Regulation of three 20-minute periods, a 5-minute overtime and a shootout.
RulesRecord madeUpRules();

// Two of its teams (by index in `teams`) loaded for a game.
std::unique_ptr<GameSession> loadedGame(const RulesRecord& rules, std::uint64_t seed = 1, int visitor = 0,
                                        int home = 1);

}  // namespace tallyrink::test
