// Reads one RINEX 3 observation file from start to end, into the file's epochs and on into station epochs, beside a
// floor that does the least a reader can do with the same bytes: pieces of 64 KiB, lines, std::from_chars over every
// 14-column field. The counter "floor" is the rate over the floor's, both of this run. The file comes from HALVEX_DATA,
// else a made-up one is used.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include "bench/ReadFloor.h"
#include "formats/rinex/EpochBuilder.h"
#include "formats/rinex/ObservationReader.h"

namespace {

using halvex::bench::TextInput;

/// 900 epochs of 32 satellites with 16 values each, some of them blank.
std::string madeUp() {
    std::mt19937 random(1980);
    std::uniform_real_distribution<double> range(2e7, 4e7);
    const auto record = [](std::string content, const char* label) {
        content.resize(60, ' ');
        return content + label + '\n';
    };
    std::string text = record("     3.05           OBSERVATION DATA    G", "RINEX VERSION / TYPE");
    text += record("G   16 C1C L1C D1C S1C C2W L2W D2W S2W C2L L2L D2L S2L C5Q", "SYS / # / OBS TYPES");
    text += record("       L5Q D5Q S5Q", "SYS / # / OBS TYPES");
    text += record("", "END OF HEADER");
    std::array<char, 64> field{};
    for (int second = 0; second < 900; ++second) {
        std::snprintf(field.data(), field.size(), "> 2024 07 08 00 %02d %2d.0000000  0 32\n", second / 60, second % 60);
        text += field.data();
        for (int satellite = 1; satellite <= 32; ++satellite) {
            std::snprintf(field.data(), field.size(), "G%02d", satellite);
            text += field.data();
            for (int value = 0; value < 16; ++value) {
                std::snprintf(field.data(), field.size(), "%14.3f 7", range(random));
                text += random() % 4 == 0 ? std::string(16, ' ') : std::string(field.data());
            }
            text += '\n';
        }
    }
    return text;
}

const TextInput& input() {
    static const TextInput theInput("/obs/TLSE00FRA_R_20241900000_15M_01S_MO.rnx.gz", madeUp);
    return theInput;
}

double readFloor() {
    return halvex::bench::readFloor(input().name, {.first = 3, .step = 16, .width = 14});
}

std::size_t readEpochs() {
    halvex::rinex::ObservationReader reader;
    halvex::rinex::ObservationEpoch epoch;
    std::size_t values = 0;
    if (!reader.open(input().name)) std::abort();
    while (reader.next(epoch) != halvex::rinex::ObservationReader::Result::end) values += epoch.values.size();
    return values;
}

std::size_t readStations() {
    halvex::rinex::ObservationReader reader;
    halvex::rinex::ObservationEpoch epoch;
    CHalvexStationObservation station;
    std::size_t satellites = 0;
    if (!reader.open(input().name)) std::abort();
    halvex::rinex::EpochBuilder builder(reader.header());
    while (reader.next(epoch) != halvex::rinex::ObservationReader::Result::end) {
        if (builder.build(epoch, 1, station)) satellites += station.observations().size();
    }
    return satellites;
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
BENCHMARK(BM_Read<readEpochs>)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(BM_Read<readStations>)->Unit(benchmark::kMillisecond)->UseManualTime();

}  // namespace

BENCHMARK_MAIN();
