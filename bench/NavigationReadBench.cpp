// Reads a day of merged navigation records from start to end, RINEX 3.05 and 4.00, beside the floor of ReadFloor.h over
// every 19-column field. The counter "floor" is the rate over the floor's, both of this run. The files come from
// HALVEX_DATA, else a made-up one is used.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/ReadFloor.h"
#include "formats/rinex/NavigationReader.h"

namespace {

using halvex::bench::TextInput;

/// 20000 records of 32 satellites.
std::string madeUp() {
    const auto record = [](std::string content, const char* label) {
        content.resize(60, ' ');
        return content + label + '\n';
    };
    std::string text = record("     3.05           N: GNSS NAV DATA    M", "RINEX VERSION / TYPE");
    text += record("", "END OF HEADER");
    std::array<char, 128> line{};
    for (int i = 0; i < 20000; ++i) {
        std::snprintf(line.data(), line.size(), "G%02d 2022 01 01 %02d 00 00", i % 32 + 1, i / 32 % 24);
        text += line.data();
        for (int field = 1; field < 30; ++field) {
            const bool toe = field == 12;
            const double value = toe ? 518400.0 : field == 22 ? 2190.0 : (i % 97 - 48) * 1.2345678e-4 / field;
            if (field % 4 == 0) text += "\n    ";
            std::snprintf(line.data(), line.size(), "%19.12e", field > 19 && field != 22 ? 1.0 : value);
            text += line.data();
        }
        text += '\n';
    }
    return text;
}

const TextInput& input(bool version4) {
    static const TextInput version3File("/nav/BRDC00IGS_R_20220010000_01D_MN.rnx.gz", madeUp);
    static const TextInput version4File("/nav/BRD400DLR_S_20220010000_01D_MN.rnx.gz", madeUp);
    return version4 ? version4File : version3File;
}

double readFloor(const TextInput& file) {
    return halvex::bench::readFloor(file.name, {.first = 4, .step = 19, .width = 19});
}

std::size_t readRecords(const TextInput& file) {
    using Result = halvex::rinex::NavigationReader::Result;
    halvex::rinex::NavigationReader reader;
    halvex::rinex::NavigationRecord record;
    std::size_t records = 0;
    if (!reader.open(file.name)) std::abort();
    for (Result result = reader.next(record); result != Result::end; result = reader.next(record)) {
        if (result == Result::record) ++records;
    }
    return records;
}

template <bool version4>
void BM_Read(benchmark::State& state) {
    const TextInput& file = input(version4);
    halvex::bench::measureBesideFloor(
        state, file.size, [&file] { return readRecords(file); }, [&file] { return readFloor(file); });
}
BENCHMARK(BM_Read<false>)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(BM_Read<true>)->Unit(benchmark::kMillisecond)->UseManualTime();

}  // namespace

BENCHMARK_MAIN();
