#include <benchmark/benchmark.h>

#include <filesystem>

#include "engine/game.h"
#include "league/era.h"
#include "support/made_up_game.h"
#include "support/source_tree.h"

namespace {

using namespace tallyrink;
namespace fs = std::filesystem;

// A call that keeps a game moving, as a computer coach would make it.
Call callFor(Zone z, int n) {
    switch (z) {
        case Zone::OffenseZone:
            return n % 3 == 0 ? Call::Pass : Call::Shoot;
        case Zone::OffenseShooter:
            return n % 4 == 0 ? Call::Penetrate : Call::Shoot;
        case Zone::Rush:
            return Call::Rush;
        case Zone::NeutralZone:
            return n % 2 == 0 ? Call::SkatePass : Call::Balanced;
        default:
            return n % 5 == 0 ? Call::Safe : Call::Balanced;
    }
}

// One step of a game without a screen: the carrier, the chance table, the
// draw, the result and the clock.
void BM_PlayStep(benchmark::State& state) {
    GameSession session({test::madeUpLeague(4, 11).dir.path(), defaultRules(2017), &test::shippedEra(), nullptr});
    Random draws(1);
    session.loadGame(1, 2, 11, 1, draws);
    Game game(session, GameOptions{.seed = 5});
    game.InitGame();
    int n = 0;
    for (auto _ : state) {
        if (game.state().GameOverFlag) {
            state.PauseTiming();
            game.InitGame();
            state.ResumeTiming();
        }
        game.editState().PlayCall = callFor(game.state().PlayZone, ++n);
        game.PlayStep();
        benchmark::DoNotOptimize(game.state().Clock);
    }
}
BENCHMARK(BM_PlayStep)->Unit(benchmark::kMicrosecond);

// A whole game between two computer coaches, loads not counted.
void BM_WholeGame(benchmark::State& state) {
    GameSession session({test::madeUpLeague(4, 11).dir.path(), defaultRules(2017), &test::shippedEra(), nullptr});
    Random draws(1);
    session.loadGame(3, 4, 11, 1, draws);
    std::uint64_t seed = 1;
    for (auto _ : state) {
        Game game(session, GameOptions{.seed = ++seed});
        game.playToEnd();
        benchmark::DoNotOptimize(game.state().Score);
    }
}
BENCHMARK(BM_WholeGame)->Unit(benchmark::kMillisecond);

}  // namespace
