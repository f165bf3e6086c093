// A game without a screen allocates nothing once it is under way: a season
// of thousands of games runs through these steps, and an allocation per step
// is the first thing to show up in a profile.

#include <gtest/gtest.h>

#include "engine/game.h"
#include "support/alloc_count.h"
#include "support/made_up_game.h"

namespace tallyrink {
namespace {

struct Stretch {
    std::uint64_t allocations = 0;
    int steps = 0;
};

// Plays the first period to warm the game's buffers up, then counts what
// the second period allocates.
Stretch secondPeriod(std::uint64_t seed, int visitor, int home) {
    auto session = test::loadedGame(test::madeUpRules(), seed, visitor, home);
    Game game(*session, GameOptions{.seed = seed});
    game.InitGame();
    game.runTo(AutoStop::End1st);
    int before = game.state().steps;
    Stretch s;
    s.allocations = test::allocationsDuring([&] { game.runTo(AutoStop::End2nd); });
    s.steps = game.state().steps - before;
    return s;
}

TEST(HotPath, QuietStepsAllocateNothing) {
    for (std::uint64_t seed : {1u, 7u, 23u}) {
        Stretch s = secondPeriod(seed, static_cast<int>(seed % 2), 2 + static_cast<int>(seed % 3));
        ASSERT_GT(s.steps, 50) << "seed " << seed;
        EXPECT_EQ(s.allocations, 0u) << "seed " << seed << ": " << s.allocations << " allocations in " << s.steps
                                     << " steps";
    }
}

TEST(HotPath, CounterSeesAllocations) {
    // Guards the test above against a counter that silently counts nothing.
    auto n = test::allocationsDuring([] {
        int* volatile p = new int(3);
        delete p;
    });
    EXPECT_EQ(n, 1u);
}

}  // namespace
}  // namespace tallyrink
