#include <benchmark/benchmark.h>

#include <filesystem>

#include "engine/team_load.h"
#include "league/era.h"
#include "league/file_images.h"
#include "league/folder_names.h"
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

// A run of many games: one session loads every game's sides anew from the
// run's images of the files.
void BM_LoadBothSidesInARun(benchmark::State& state) {
    const fs::path dir = test::madeUpLeague(8, 7).dir.path();
    FolderNames names(dir);
    FileImages images;
    const LeaguePlayerIndex index = LeaguePlayerIndex::read(dir);
    GameSession session({dir, {}, &test::shippedEra(), nullptr, &index, &names, &images});
    Random rng(1);
    int game = 0;
    for (auto _ : state) {
        session.GameActive = true;
        session.loadGame(1 + game % 4, 5 + game % 4, 11, 1, rng);
        ++game;
        benchmark::DoNotOptimize(session.side(1).TeamId);
    }
}
BENCHMARK(BM_LoadBothSidesInARun)->Unit(benchmark::kMicrosecond);

}  // namespace
