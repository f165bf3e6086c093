#include <benchmark/benchmark.h>

#include <filesystem>

#include "engine/team_load.h"
#include "league/era.h"
#include "support/made_up_game.h"
#include "support/source_tree.h"

namespace {

using namespace tallyrink;
namespace fs = std::filesystem;

// Every game starts by loading both sides: records read, stamps checked,
// rates worked out, lines filled.
void BM_LoadBothSides(benchmark::State& state) {
    LeagueContext context{test::madeUpLeague(8, 7).dir.path(), {}, &test::shippedEra(), nullptr};
    Random rng(1);
    for (auto _ : state) {
        GameSession session(context);
        session.loadGame(1, 2, 11, 1, rng);
        benchmark::DoNotOptimize(session.side(1).TeamId);
    }
}
BENCHMARK(BM_LoadBothSides)->Unit(benchmark::kMicrosecond);

}  // namespace
