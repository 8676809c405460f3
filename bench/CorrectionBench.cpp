// Booking correction messages of 32 satellites, beside a floor that only walks their entries and marks a bit for each.
#include <benchmark/benchmark.h>

#include <bitset>
#include <cstdint>
#include <vector>

#include "halvex/corrections/DataContainerSSR.h"

namespace {

constexpr unsigned char kSatellites = 32;
constexpr int kEpochs = 64;

/// A stream of epochs at 5 s: a clock message each and an orbit message with every sixth.
struct Stream {
    std::vector<CALN::SSROrbitCorrMsgT> orbits;
    std::vector<CALN::SSRClockCorrMsgT> clocks;
};

template <class Message>
Message typicalMessage(int epoch) {
    Message message;
    message.system = CALN::eCALSATSYSTEM_GPS;
    message.epoch = SMjdTime(2111, 388800.0 + 5.0 * epoch);
    for (unsigned char number = 1; number <= kSatellites; ++number) {
        message.entries.emplace_back().satId = {CALN::eCALSATSYSTEM_GPS, number};
    }
    return message;
}

Stream typicalStream() {
    Stream stream;
    for (int epoch = 0; epoch < kEpochs; ++epoch) {
        if (epoch % 6 == 0) stream.orbits.push_back(typicalMessage<CALN::SSROrbitCorrMsgT>(epoch));
        stream.clocks.push_back(typicalMessage<CALN::SSRClockCorrMsgT>(epoch));
    }
    return stream;
}

/// Hands every message of the stream to `book`, again and again.
template <class Book>
void run(benchmark::State& state, Book book) {
    const Stream stream = typicalStream();
    for (auto _ : state) {
        for (const auto& message : stream.orbits) book(message);
        for (const auto& message : stream.clocks) book(message);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() *
                            static_cast<std::int64_t>(stream.orbits.size() + stream.clocks.size()));
}

void BM_Floor(benchmark::State& state) {
    std::bitset<256> satellites;
    run(state, [&](const auto& message) {
        satellites.reset();
        for (const auto& entry : message.entries) satellites.set(entry.satId.number);
        benchmark::DoNotOptimize(satellites);
    });
}
/// Every message of a new epoch.
void BM_NewEpochs(benchmark::State& state) {
    CDataContainerSSR container(1);
    run(state, [&](const auto& message) {
        // Back to the first epoch: what came before would count as older.
        if (message.epoch < container.GetClockEpoch(message.system)) container.OnDisconnect();
        container.AddCorrectionMsg(message);
    });
}
/// Every message once more for the epoch that is there.
void BM_SameEpoch(benchmark::State& state) {
    CDataContainerSSR container(1);
    run(state, [&](const auto& message) { container.AddCorrectionMsg(message); });
}
BENCHMARK(BM_Floor);
BENCHMARK(BM_NewEpochs);
BENCHMARK(BM_SameEpoch);

}  // namespace

BENCHMARK_MAIN();
