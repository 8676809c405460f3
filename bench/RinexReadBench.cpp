// Reads one RINEX 3 observation file from start to end, into the file's epochs and on into station epochs, beside a
// floor that does the least a reader can do with the same bytes: pieces of 64 KiB, lines, std::from_chars over every
// 14-column field. The counter "floor" is the rate over the floor's, both of this run. The file comes from HALVEX_DATA,
// else a made-up one is used.
#include <benchmark/benchmark.h>
#include <zlib.h>

#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "formats/rinex/EpochBuilder.h"
#include "formats/rinex/ObservationReader.h"

namespace {

using Clock = std::chrono::steady_clock;

std::string unpacked(const std::string& name) {
    std::string text;
    std::array<char, 65536> piece{};
    gzFile file = gzopen(name.c_str(), "rb");
    if (file == nullptr) return text;
    for (int count = 0; (count = gzread(file, piece.data(), static_cast<unsigned>(piece.size()))) > 0;) {
        text.append(piece.data(), static_cast<std::size_t>(count));
    }
    gzclose(file);
    return text;
}

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

/// The file to read, in a folder of its own that goes away with the program.
struct Input {
    std::filesystem::path folder;
    std::string name;
    std::size_t size = 0;

    Input() {
        std::string text;
        if (const char* data = std::getenv("HALVEX_DATA")) {
            text = unpacked(std::string(data) + "/obs/TLSE00FRA_R_20241900000_15M_01S_MO.rnx.gz");
        }
        if (text.empty()) text = madeUp();
        std::string pattern = (std::filesystem::temp_directory_path() / "halvex-bench-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) std::abort();
        folder = pattern;
        name = folder / "observations.rnx";
        size = text.size();
        const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(name.c_str(), "wb"), &std::fclose);
        if (!file || std::fwrite(text.data(), 1, size, file.get()) != size) std::abort();
    }
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;
    ~Input() { std::filesystem::remove_all(folder); }
};

const Input& input() {
    static const Input theInput;
    return theInput;
}

double sumOfFields(std::string_view line) {
    double sum = 0.0;
    for (std::size_t column = 3; column < line.size(); column += 16) {
        const std::string_view field = line.substr(column, 14);
        const char* first = field.data();
        const char* const last = first + field.size();
        while (first != last && *first == ' ') ++first;
        double value = 0.0;
        if (first != last && std::from_chars(first, last, value).ec == std::errc()) sum += value;
    }
    return sum;
}

double readFloor() {
    constexpr std::size_t kPiece = 65536;
    std::vector<char> buffer(2 * kPiece);
    std::size_t held = 0;
    double sum = 0.0;
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(input().name.c_str(), "rb"), &std::fclose);
    std::setvbuf(file.get(), nullptr, _IONBF, 0);
    for (std::size_t count = 0; (count = std::fread(buffer.data() + held, 1, kPiece, file.get())) > 0;) {
        const char* first = buffer.data();
        const char* const last = first + held + count;
        while (const void* found = std::memchr(first, '\n', static_cast<std::size_t>(last - first))) {
            const char* const end = static_cast<const char*>(found);
            sum += sumOfFields(std::string_view(first, static_cast<std::size_t>(end - first)));
            first = end + 1;
        }
        held = static_cast<std::size_t>(last - first);
        std::memmove(buffer.data(), first, held);
    }
    return sum;
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

template <class Work>
double secondsOf(Work work) {
    const Clock::time_point start = Clock::now();
    benchmark::DoNotOptimize(work());
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void BM_Floor(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(readFloor());
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(input().size));
}
BENCHMARK(BM_Floor)->Unit(benchmark::kMillisecond);

template <std::size_t (*Work)()>
void BM_Read(benchmark::State& state) {
    double reader = 0.0;
    double floor = 0.0;
    for (auto _ : state) {
        const double seconds = secondsOf(Work);
        state.SetIterationTime(seconds);
        reader += seconds;
        floor += secondsOf(readFloor);  // in turns, so that both meet the same disturbances
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(input().size));
    state.counters["floor"] = floor / reader;
}
BENCHMARK(BM_Read<readEpochs>)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(BM_Read<readStations>)->Unit(benchmark::kMillisecond)->UseManualTime();

}  // namespace

BENCHMARK_MAIN();
