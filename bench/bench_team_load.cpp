#include <benchmark/benchmark.h>

#include <filesystem>
#include <random>

#include "engine/team_load.h"
#include "league/era.h"
#include "operations/blank_league.h"
#include "operations/era_figures.h"
#include "operations/new_league.h"
#include "support/source_tree.h"

namespace {

using namespace tallyrink;
namespace fs = std::filesystem;

// A made-up league of 8 teams in a folder of its own, made once for the run.
struct BenchLeague {
    fs::path dir;
    EraTable era;

    BenchLeague() {
        dir = fs::temp_directory_path() / ("tallyrink-bench-" + std::to_string(std::random_device{}()));
        era = LoadEra(test::shippedDataDir());
        NewLeagueOptions options;
        options.teams = 8;
        options.year = 2017;
        options.seed = 7;
        writeLeagueFolder(dir, generateLeague(options, eraTargets(era, 2017)).files);
    }
    ~BenchLeague() {
        std::error_code ec;
        fs::remove_all(dir, ec);
    }
};

// Every game starts by loading both sides: records read, stamps checked,
// rates worked out, lines filled.
void BM_LoadBothSides(benchmark::State& state) {
    static BenchLeague league;
    LeagueContext context{league.dir, {}, &league.era, nullptr};
    Random rng(1);
    for (auto _ : state) {
        GameSession session(context);
        session.loadGame(1, 2, 11, 1, rng);
        benchmark::DoNotOptimize(session.side(1).TeamId);
    }
}
BENCHMARK(BM_LoadBothSides)->Unit(benchmark::kMicrosecond);

}  // namespace
