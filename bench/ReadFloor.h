#pragma once

#include <benchmark/benchmark.h>
#include <zlib.h>

#include <array>
#include <charconv>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// What the benchmarks of the readers have in common: the file to read, and a floor that does the least a reader can do
/// with the same bytes.
namespace halvex::bench {

inline std::string unpacked(const std::string& name) {
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

/// The text to read as a plain file: `name` under the folder HALVEX_DATA, else what `madeUp` gives. In a folder of its
/// own that goes away with the program.
struct TextInput {
    std::filesystem::path folder;
    std::string name;
    std::size_t size = 0;

    TextInput(const std::string& dataName, std::string (*madeUp)()) {
        std::string text;
        if (const char* data = std::getenv("HALVEX_DATA")) text = unpacked(data + dataName);
        if (text.empty()) text = madeUp();
        std::string pattern = (std::filesystem::temp_directory_path() / "halvex-bench-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) std::abort();
        folder = pattern;
        name = folder / "input.rnx";
        size = text.size();
        const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(name.c_str(), "wb"), &std::fclose);
        if (!file || std::fwrite(text.data(), 1, size, file.get()) != size) std::abort();
    }
    TextInput(const TextInput&) = delete;
    TextInput& operator=(const TextInput&) = delete;
    ~TextInput() { std::filesystem::remove_all(folder); }
};

/// Where the number fields of a line are.
struct FieldColumns {
    std::size_t first = 0;
    std::size_t step = 0;
    std::size_t width = 0;
};

inline double sumOfFields(std::string_view line, const FieldColumns& columns) {
    double sum = 0.0;
    for (std::size_t column = columns.first; column < line.size(); column += columns.step) {
        const std::string_view field = line.substr(column, columns.width);
        const char* first = field.data();
        const char* const last = first + field.size();
        while (first != last && *first == ' ') ++first;
        double value = 0.0;
        if (first != last && std::from_chars(first, last, value).ec == std::errc()) sum += value;
    }
    return sum;
}

/// Pieces of 64 KiB, lines, std::from_chars over every field.
inline double readFloor(const std::string& name, const FieldColumns& columns) {
    constexpr std::size_t kPiece = 65536;
    std::vector<char> buffer(2 * kPiece);
    std::size_t held = 0;
    double sum = 0.0;
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(name.c_str(), "rb"), &std::fclose);
    std::setvbuf(file.get(), nullptr, _IONBF, 0);
    for (std::size_t count = 0; (count = std::fread(buffer.data() + held, 1, kPiece, file.get())) > 0;) {
        const char* first = buffer.data();
        const char* const last = first + held + count;
        while (const void* found = std::memchr(first, '\n', static_cast<std::size_t>(last - first))) {
            const char* const end = static_cast<const char*>(found);
            sum += sumOfFields(std::string_view(first, static_cast<std::size_t>(end - first)), columns);
            first = end + 1;
        }
        held = static_cast<std::size_t>(last - first);
        std::memmove(buffer.data(), first, held);
    }
    return sum;
}

/// Measures `work` with the floor in turns, so that both meet the same disturbances. The counter "floor" is the rate of
/// the work over the floor's.
template <class Work, class Floor>
void measureBesideFloor(benchmark::State& state, std::size_t bytes, Work work, Floor floor) {
    using Clock = std::chrono::steady_clock;
    const auto secondsOf = [](auto& piece) {
        const Clock::time_point start = Clock::now();
        benchmark::DoNotOptimize(piece());
        return std::chrono::duration<double>(Clock::now() - start).count();
    };
    double workSeconds = 0.0;
    double floorSeconds = 0.0;
    for (auto _ : state) {
        const double seconds = secondsOf(work);
        state.SetIterationTime(seconds);
        workSeconds += seconds;
        floorSeconds += secondsOf(floor);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
    state.counters["floor"] = floorSeconds / workSeconds;
}

}  // namespace halvex::bench
