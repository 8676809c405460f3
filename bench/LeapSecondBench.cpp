// How much a leap-second lookup by instant costs, beside the least that any lookup could cost: one atomic load of a
// pointer to an immutable set, and the comparison of the instant with the change. With two threads neither may get
// slower, as far as there are two processors.

#include <benchmark/benchmark.h>

#include <array>
#include <atomic>
#include <cstddef>

#include "halvex/time/GPSLeapSeconds.h"

namespace {

struct Set {
    int ls;
    int lsf;
    SMjdTime change;
};

const Set floorSet{17, 18, SMjdTime(2017, 1, 1, 0, 0, 17.0)};
std::atomic<const Set*> floorTable{&floorSet};

/// Instants on both sides of the change, so that the branch is not always the same one.
std::array<SMjdTime, 64> instants() {
    std::array<SMjdTime, 64> result;
    for (std::size_t i = 0; i < result.size(); ++i) {
        result[i] = SMjdTime(2017, 1, 1, 0, 0, static_cast<double>(i * 37 % 64) - 15.0);
    }
    return result;
}

template <class Lookup>
void run(benchmark::State& state, Lookup lookup) {
    const auto times = instants();
    std::size_t next = 0;
    for (auto _ : state) benchmark::DoNotOptimize(lookup(times[next++ % times.size()]));
    state.SetItemsProcessed(state.iterations());
}

void BM_Floor(benchmark::State& state) {
    run(state, [](const SMjdTime& instant) {
        const Set* set = floorTable.load(std::memory_order_acquire);
        return instant > set->change ? set->lsf : set->ls;
    });
}

void BM_Lookup(benchmark::State& state) {
    run(state, [](const SMjdTime& instant) { return GetGPSLeapSeconds(instant); });
}

void initTable(const benchmark::State&) {
    InitCentralLeapSeconds();
}
void shutTable(const benchmark::State&) {
    ShutdownCentralLeapSeconds();
}

BENCHMARK(BM_Floor)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(BM_Lookup)->Setup(initTable)->Teardown(shutTable)->Threads(1)->Threads(2)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
