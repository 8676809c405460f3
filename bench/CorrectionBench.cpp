// Booking correction messages of 32 satellites, beside a floor that only walks their entries and marks a bit for each;
// and the network corrections of an epoch, a master and 20 auxiliary stations of 40 satellites each, beside a floor
// that only does the arithmetic.
#include <benchmark/benchmark.h>

#include <bitset>
#include <boost/make_shared.hpp>
#include <cmath>
#include <cstdint>
#include <vector>

#include "halvex/corrections/CombinedIonoGeoCorrection.h"
#include "halvex/corrections/DataContainerSSR.h"
#include "halvex/platform/caln/FrequencyTable.h"
#include "halvex/platform/z9/Rtcm3NetworkProduct.h"

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
constexpr std::int64_t kAuxiliaries = 20;
constexpr auto kL1L2 = CALN::eCALFREQUENCY_GROUP_L1 | CALN::eCALFREQUENCY_GROUP_L2;
constexpr CALN::eCALFREQUENCY_GROUP kBands[CALN::kSystemSlots] = {
    {}, kL1L2, kL1L2, CALN::eCALFREQUENCY_GROUP_L1 | CALN::eCALFREQUENCY_GROUP_L5, {}, {}, {}, {}, {}};

CHalvexUniqueSiteID siteId(std::int64_t number) {
    CHalvexUniqueSiteID id;
    id.setUniqueSiteID(number);
    return id;
}

/// 14 satellites of GPS, 12 of GLONASS, 14 of Galileo on two carriers.
CHalvexZ9StationCorrection typicalResult(std::int64_t site) {
    using namespace CALN;
    CHalvexZ9StationCorrection result;
    result.stationId = siteId(site);
    const auto add = [&](eCALSATSYSTEM system, unsigned char count, eCALFREQUENCY a, eCALFREQUENCY b) {
        for (unsigned char number = 1; number <= count; ++number) {
            const double phase = 0.01 * static_cast<double>(site) + 0.02 * number;
            result.satellites.push_back(
                {{system, number}, number, {{a, phase, 0.1, true, true, 3}, {b, phase + 0.1, 0.2, true, true, 3}}});
        }
    };
    add(eCALSATSYSTEM_GPS, 14, eCALFREQUENCY_L1, eCALFREQUENCY_L2);
    add(eCALSATSYSTEM_GLONASS, 12, eCALFREQUENCY_G1, eCALFREQUENCY_G2);
    add(eCALSATSYSTEM_GALILEO, 14, eCALFREQUENCY_L1, eCALFREQUENCY_L5);
    return result;
}

struct CountingProduct final : Z9::CRTKNetworkProduct {
    std::int32_t addAuxiliaryCombinedIonoGeoCorrection(const CALN::MsgGNSS17T& message) override {
        entries += message.gps.entries.size() + message.glonass.entries.size() + message.galileo.entries.size();
        return 0;
    }
    std::size_t entries = 0;
};

/// An epoch an iteration, through the producer into `product`.
void runEpochs(benchmark::State& state, Z9::CRTKNetworkProduct& product) {
    CRtkAuxCollection collection;
    for (unsigned char number = 1; number <= 12; ++number) {
        CALN::setGlonassChannel({CALN::eCALSATSYSTEM_GLONASS, number}, number % 14 - 7);
    }
    std::vector<CHalvexZ9StationCorrection> stations{typicalResult(1)};
    for (std::int64_t i = 2; i <= kAuxiliaries + 1; ++i) {
        collection.AddRtkAux(siteId(i), CRtkAux(0, 1, static_cast<unsigned short>(i)));
        stations.push_back(typicalResult(i));
    }
    CCombinedIonoGeoCorrection producer(
        &collection, &product, siteId(1),
        CALN::ebCALGNSSTYPE_GPS | CALN::ebCALGNSSTYPE_GLONASS | CALN::ebCALGNSSTYPE_GALILEO, 1, true, false, true,
        kBands);
    SMjdTime t(2111, 0.0);
    const auto resultsOfNextEpoch = [&] {
        t.AddSeconds(1.0);
        std::vector<boost::shared_ptr<const CHalvexZ9StationCorrection>> results;
        for (const CHalvexZ9StationCorrection& station : stations) {
            const auto result = boost::make_shared<CHalvexZ9StationCorrection>(station);
            result->epoch = t;
            results.push_back(result);
        }
        return results;
    };
    for (const auto& result : resultsOfNextEpoch()) producer.OnNALResults(result);  // the first only sets the start
    for (auto _ : state) {
        state.PauseTiming();  // results are made by somebody else
        const auto results = resultsOfNextEpoch();
        state.ResumeTiming();
        for (const auto& result : results) producer.OnNALResults(result);
    }
    state.SetItemsProcessed(state.iterations() * kAuxiliaries *
                            static_cast<std::int64_t>(stations[0].satellites.size()));
}

void BM_NetworkEpoch(benchmark::State& state) {
    CountingProduct product;
    runEpochs(state, product);
    if (product.entries == 0) state.SkipWithError("nothing was sent");
}
/// The same, and its messages as RTCM 3 frames.
void BM_NetworkEpochToFrames(benchmark::State& state) {
    std::size_t bytes = 0;
    Z9::CRtcm3NetworkProduct product([&](std::span<const unsigned char> frame) {
        bytes += frame.size();
        return true;
    });
    runEpochs(state, product);
    if (bytes == 0) state.SkipWithError("nothing was sent");
}
void BM_NetworkEpochFloor(benchmark::State& state) {
    const CHalvexZ9StationCorrection master = typicalResult(1);
    std::vector<CHalvexZ9StationCorrection> stations;
    for (std::int64_t i = 2; i <= kAuxiliaries + 1; ++i) stations.push_back(typicalResult(i));
    std::vector<std::pair<int, int>> out(master.satellites.size());
    for (auto _ : state) {
        for (const CHalvexZ9StationCorrection& station : stations) {
            for (std::size_t i = 0; i < station.satellites.size(); ++i) {
                const auto& a = station.satellites[i].frequencies;
                const auto& b = master.satellites[i].frequencies;
                const double d1 = (a[0].phase - b[0].phase) * 0.1903;
                const double d2 = (a[1].phase - b[1].phase) * 0.2442;
                out[i] = {static_cast<int>(std::floor((2.5457 * d1 - 1.5457 * d2) * 2000.0 + 0.5)),
                          static_cast<int>(std::floor(-1.5457 * (d1 - d2) * 2000.0 + 0.5))};
            }
            benchmark::DoNotOptimize(out.data());
            benchmark::ClobberMemory();
        }
    }
    state.SetItemsProcessed(state.iterations() * kAuxiliaries * static_cast<std::int64_t>(out.size()));
}

BENCHMARK(BM_Floor);
BENCHMARK(BM_NewEpochs);
BENCHMARK(BM_SameEpoch);
BENCHMARK(BM_NetworkEpochFloor);
BENCHMARK(BM_NetworkEpoch);
BENCHMARK(BM_NetworkEpochToFrames);

}  // namespace

BENCHMARK_MAIN();
