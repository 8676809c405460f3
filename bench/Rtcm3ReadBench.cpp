// Reads an RTCM 3 stream from start to end: its frames alone, into epochs and ephemerides, and on into station epochs,
// beside a floor that does the least a reader can do with the same bytes: pieces of 64 KiB through the check sum. The
// counter "floor" is the rate over the floor's, both of this run. The file comes from HALVEX_DATA, else a made-up one
// is used.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "bench/ReadFloor.h"
#include "formats/rinex/EpochBuilder.h"
#include "formats/rtcm3/StreamReader.h"
#include "halvex/platform/pio/Rtcm3.h"

namespace {

using halvex::bench::TextInput;
using halvex::rtcm3::StreamReader;

/// 4000 MSM7 messages of ten satellites with three signals of no particular value.
std::string madeUp() {
    std::string text;
    for (unsigned epoch = 0; epoch < 4000; ++epoch) {
        std::array<unsigned char, 432> frame{0xD3, 1, 170};
        const std::span<unsigned char> message = std::span(frame).subspan(3, 426);
        PIO::RTCM3::CBitCollector bits(message);
        bool good = bits.Add(1077, 12) && bits.Add(1, 12) && bits.Add(epoch * 1000, 30) && bits.Add(0, 19);
        good = good && bits.Add(0x3FF, 32) && bits.Add(0, 32) && bits.Add(0x40010100, 32) && bits.Add(0x3FFFFFFF, 30);
        while (good && bits.GetBitCount() + 8 <= message.size() * 8) good = bits.Add(epoch % 251, 8);
        const std::uint32_t check = PIO::RTCM3::ComputeCRC24(std::span(frame).first(429));
        for (std::size_t i = 0; i < 3; ++i) frame[429 + i] = static_cast<unsigned char>(check >> (16 - 8 * i));
        if (!good) std::abort();
        text.append(frame.begin(), frame.end());
    }
    return text;
}

const TextInput& input() {
    static const TextInput theInput("/rtcm/week-rollover-STR17.rtcm3", madeUp);
    return theInput;
}

double readFloor() {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(input().name.c_str(), "rb"), &std::fclose);
    std::array<unsigned char, 65536> piece{};
    double sum = 0.0;
    for (std::size_t count = 0; (count = std::fread(piece.data(), 1, piece.size(), file.get())) > 0;) {
        sum += PIO::RTCM3::ComputeCRC24(std::span(piece).first(count));
    }
    return sum;
}

std::size_t readFrames() {
    halvex::rtcm3::FrameReader reader;
    if (!reader.open(input().name)) std::abort();
    while (reader.next()) {
    }
    return reader.frames();
}

template <bool build>
std::size_t readEpochs() {
    const SMjdTime reference(2010, 0.0);
    StreamReader reader(reference);
    reader.setTime(reference);
    if (!reader.open(input().name)) std::abort();
    halvex::rinex::EpochBuilder builder(reader.header());
    halvex::rinex::ObservationEpoch epoch;
    CHalvexStationObservation station;
    std::uint32_t changes = 0;
    std::size_t values = 0;
    for (auto result = reader.next(epoch); result != StreamReader::Result::end; result = reader.next(epoch)) {
        if (result != StreamReader::Result::epoch) continue;
        values += epoch.values.size();
        if constexpr (build) {
            if (std::exchange(changes, reader.headerChanges()) != reader.headerChanges()) {
                builder.setHeader(reader.header());
            }
            if (builder.build(epoch, 1, station)) values += station.observations().size();
        }
    }
    return values;
}

void BM_Floor(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(readFloor());
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(input().size));
}
BENCHMARK(BM_Floor)->Unit(benchmark::kMillisecond);

template <std::size_t (*Work)()>
void BM_Read(benchmark::State& state) {
    halvex::bench::measureBesideFloor(state, input().size, Work, readFloor);
}
BENCHMARK(BM_Read<readFrames>)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(BM_Read<readEpochs<false>>)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(BM_Read<readEpochs<true>>)->Unit(benchmark::kMillisecond)->UseManualTime();

}  // namespace

BENCHMARK_MAIN();
