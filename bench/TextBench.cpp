// What a GGA sentence costs beside the same sentence by snprintf, field by field as the format of each says, and what
// the usual templates of URLs cost beside their fields by strftime. The ratio of the sentences' medians is printed
// last.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "halvex/HalvexRTKBasics.h"

namespace {

struct Solution {
    CGPSTime time;
    double latitude, longitude, height, separation, hdop, age;
};

/// Positions all over the Earth at odd times, the same in every run.
std::vector<Solution> solutions() {
    std::mt19937 rng(183);
    const auto any = [&rng](double from, double to) { return std::uniform_real_distribution(from, to)(rng); };
    std::vector<Solution> result(256);
    for (Solution& s : result) {
        s = {CGPSTime(2111, any(0.0, 604800.0)),
             any(-1.5, 1.5),
             any(-3.1, 3.1),
             any(-100.0, 4000.0),
             any(-60.0, 60.0),
             any(0.5, 3.0),
             any(0.0, 10.0)};
    }
    return result;
}

int byPrintf(const Solution& s, char* buffer) {
    constexpr double kDegrees = 57.29577951308232;
    const auto angle = [](char* text, double radians, int digits, const char* hemispheres) {
        const double degrees = std::abs(radians * kDegrees);
        const auto whole = static_cast<short>(degrees);
        std::snprintf(text, 64, "%0*hd%0*.*f,%c", digits, whole, 10, 7, (degrees - whole) * 60.0,
                      hemispheres[radians > 0.0 ? 0 : 1]);
    };
    const SMjdCalendar calendar = s.time.GetCalendar();
    const auto seconds = static_cast<unsigned>(calendar.second);
    const auto hundredths = static_cast<unsigned>((calendar.second - seconds) * 100.0 + 0.5);
    char* at = buffer + 7;
    const auto print = [&at, buffer](const char* format, auto... values) {
        at += std::snprintf(at, static_cast<std::size_t>(buffer + 1000 - at), format, values...);
    };
    char latitude[64], longitude[64];
    print("%02u%02u%02u.", static_cast<unsigned>(calendar.hour), static_cast<unsigned>(calendar.minute), seconds);
    print("%02u", hundredths);
    angle(latitude, s.latitude, 2, "NS");
    angle(longitude, s.longitude, 3, "EW");
    print(",%s,%s,%u", latitude, longitude, 4U);
    print(",%02u", 12U);
    print(",%-.*f", 4, s.hdop);
    print(",%-.*f,M", 3, s.height - s.separation);
    print(",%-.3f,M", s.separation);
    print(",%-.*f", 2, s.age);
    print(",%04d", 7);
    char start[16];
    std::snprintf(start, sizeof start, "$%2s%3s,", "GP", "GGA");
    std::memcpy(buffer, start, 7);
    unsigned sum = 0;
    for (const char* c = buffer + 1; c != at; ++c) sum ^= static_cast<unsigned char>(*c);
    print("*%02X\r\n", sum);
    return static_cast<int>(at - buffer);
}

int byClass(const Solution& s, char* buffer) {
    std::uint16_t length = 0;
    CNMEAFormat().convertToGGA(s.time, s.latitude, s.longitude, s.height, 4, 12, "GP", buffer, length, s.separation,
                               s.hdop, s.age, 7);
    return length;
}

template <class Write>
void sentences(benchmark::State& state, Write write) {
    const std::vector<Solution> all = solutions();
    std::array<char, 1000> buffer{};
    std::array<char, 1000> other{};
    for (const Solution& s : all) {
        if (byClass(s, buffer.data()) != byPrintf(s, other.data()) || buffer != other) {
            return state.SkipWithError("the two sentences differ");
        }
    }
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(write(all[next++ % all.size()], buffer.data()));
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations());
}
void BM_Gga(benchmark::State& state) {
    sentences(state, byClass);
}
void BM_GgaByPrintf(benchmark::State& state) {
    sentences(state, byPrintf);
}

const char* const kTemplate = "ftp://archive/%Y/%j/%S%j%H.%2yo.gz";

void BM_Url(benchmark::State& state) {
    const CTimeBase time(2111, 388830.5);
    for (auto _ : state) benchmark::DoNotOptimize(CCustomURL::getCustomURL(time, "ESBC", kTemplate));
}
void BM_UrlByStrftime(benchmark::State& state) {
    const SMjdTime time(2111, 388830.5);
    for (auto _ : state) {
        const SMjdCalendar calendar = time.GetCalendar();
        std::tm fields{};
        fields.tm_year = calendar.year - 1900;
        fields.tm_mon = calendar.month - 1;
        fields.tm_mday = calendar.day;
        fields.tm_hour = calendar.hour;
        fields.tm_yday = time.GetDayOfYear() - 1;
        char text[128];
        const std::size_t length = std::strftime(text, sizeof text, "ftp://archive/%Y/%j/ESBC%j?.%yo.gz", &fields);
        std::replace(text, text + length, '?', static_cast<char>('a' + calendar.hour));
        benchmark::DoNotOptimize(std::string(text, length));
    }
}
void BM_UrlBack(benchmark::State& state) {
    CTimeBase time(2111, 388830.5);
    for (auto _ : state) {
        benchmark::DoNotOptimize(CCustomURL::ExtractTimeFromString(time, "/%Y/%j/%H.%y", "/2020/177/m.20"));
    }
}

BENCHMARK(BM_Gga);
BENCHMARK(BM_GgaByPrintf);
BENCHMARK(BM_Url);
BENCHMARK(BM_UrlByStrftime);
BENCHMARK(BM_UrlBack);

/// The usual report, and the medians by name.
class Report : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.aggregate_name == "median") m_medians[run.run_name.function_name] = run.GetAdjustedCPUTime();
        }
    }
    void printRatio(const std::string& of, const std::string& to) {
        const double first = m_medians[of];
        const double second = m_medians[to];
        if (first > 0.0 && second > 0.0) std::printf("%s / %s: %.3f\n", of.c_str(), to.c_str(), first / second);
    }

private:
    std::map<std::string, double> m_medians;
};

}  // namespace

int main(int count, char** arguments) {
    std::vector<char*> all(arguments, arguments + count);
    std::string repetitions = "--benchmark_repetitions=5";
    std::string aggregates = "--benchmark_report_aggregates_only=true";
    all.insert(all.begin() + 1, {repetitions.data(), aggregates.data()});
    int allCount = static_cast<int>(all.size());
    benchmark::Initialize(&allCount, all.data());
    Report report;
    benchmark::RunSpecifiedBenchmarks(&report);
    report.printRatio("BM_Gga", "BM_GgaByPrintf");
    report.printRatio("BM_Url", "BM_UrlByStrftime");
}
