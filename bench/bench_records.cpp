#include <benchmark/benchmark.h>

#include <random>

#include "league/codec.h"
#include "league/records.h"

namespace {

using namespace tallyrink;

// Loading a league decodes every player record; this is the cost per record.
void BM_DecodePlayer(benchmark::State& state) {
    std::vector<std::uint8_t> bytes(1500);
    std::mt19937 gen(1);
    for (auto& b : bytes) b = static_cast<std::uint8_t>(gen());
    for (auto _ : state) {
        auto p = codec::fromSlot<PlayerRecord>(bytes);
        benchmark::DoNotOptimize(p);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * 1500);
}
BENCHMARK(BM_DecodePlayer);

void BM_EncodePlayer(benchmark::State& state) {
    PlayerRecord p{};
    p.LastName.assign("Bench");
    for (auto _ : state) {
        auto bytes = codec::toSlot(p);
        benchmark::DoNotOptimize(bytes);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * 1500);
}
BENCHMARK(BM_EncodePlayer);

void BM_DecodeGamePlan(benchmark::State& state) {
    std::vector<std::uint8_t> bytes(32000, 7);
    for (auto _ : state) {
        auto g = codec::fromSlot<GamePlanRecord>(bytes);
        benchmark::DoNotOptimize(g);
    }
}
BENCHMARK(BM_DecodeGamePlan);

}  // namespace
