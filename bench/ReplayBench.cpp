/// Replaying an archived set of 1 Hz epochs, 60 MB in blocks of about 3 KB, with a warm page cache: CIndexedReadFile
/// beside a plain std::ifstream loop over the same headers and blocks. Both touch the first and the last byte of every
/// block. The ratio of the two medians is printed last.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "halvex/files/IndexedRead.h"
#include "halvex/platform/kernix/IndexedFileRecord.h"

namespace {

constexpr int kEpochs = 20000;

std::string timeInfoFile;
std::uint64_t fileSize = 0;

void writeSet() {
    std::ofstream out(timeInfoFile, std::ios::binary);
    std::vector<unsigned char> bytes(sizeof kIndexedFileVersion);
    halvex::storeLittleEndian(bytes.data(), kIndexedFileVersion);
    std::mt19937 random(1980);
    std::uniform_int_distribution<std::uint32_t> size(2500, 3500);  // 30 to 40 satellites
    const auto put = [&] {
        out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    };
    put();
    for (int i = 0; i < kEpochs; ++i) {
        const CIndexedFileRecordHeader header{2190, static_cast<std::uint32_t>(i) * 1000, size(random)};
        bytes.assign(header.recordSize(), static_cast<unsigned char>(i));
        header.save(bytes.data());
        put();
    }
    fileSize = static_cast<std::uint64_t>(out.tellp());
}

struct Counter final : IIndexedReadNotify {
    void OnIndexedBlock(const unsigned char* block, std::uint64_t size) override {
        ++blocks;
        benchmark::DoNotOptimize(sum += block[0] + block[size - 1]);
    }
    void OnIndexedReadEnd() override {}
    int blocks = 0;
    unsigned sum = 0;
};

void report(benchmark::State& state) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(fileSize));
    state.SetItemsProcessed(state.iterations() * kEpochs);
}

void IndexedReadFile(benchmark::State& state) {
    for (auto _ : state) {
        Counter counter;
        CIndexedReadFile reader(&counter);
        if (!reader.Open(timeInfoFile.c_str()) || !reader.Read(0, 0) || counter.blocks != kEpochs) {
            state.SkipWithError("incomplete replay");
        }
    }
    report(state);
}

void PlainStream(benchmark::State& state) {
    for (auto _ : state) {
        Counter counter;
        std::ifstream in(timeInfoFile, std::ios::binary);
        in.seekg(sizeof kIndexedFileVersion);
        unsigned char head[CIndexedFileRecordHeader::kSavedSize];
        std::vector<unsigned char> block;
        while (in.read(reinterpret_cast<char*>(head), sizeof head)) {
            block.resize(CIndexedFileRecordHeader::load(head).size);
            if (!in.read(reinterpret_cast<char*>(block.data()), static_cast<std::streamsize>(block.size()))) break;
            counter.OnIndexedBlock(block.data(), block.size());
        }
        if (counter.blocks != kEpochs) state.SkipWithError("incomplete replay");
    }
    report(state);
}

BENCHMARK(IndexedReadFile)->Repetitions(9)->ReportAggregatesOnly()->Unit(benchmark::kMillisecond);
BENCHMARK(PlainStream)->Repetitions(9)->ReportAggregatesOnly()->Unit(benchmark::kMillisecond);

/// The usual report, and a note of the median processor time of each benchmark.
class MedianReporter final : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.aggregate_name == "median") medians[run.run_name.function_name] = run.GetAdjustedCPUTime();
        }
        ConsoleReporter::ReportRuns(runs);
    }
    std::map<std::string, double> medians;
};

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    std::string folder = (std::filesystem::temp_directory_path() / "halvex-bench-XXXXXX").string();
    if (::mkdtemp(folder.data()) == nullptr) return 1;
    timeInfoFile = folder + "/sett";
    writeSet();
    MedianReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::filesystem::remove_all(folder);
    if (reporter.medians.size() == 2) {
        std::printf("replay against a plain stream: %.2f times as fast\n",
                    reporter.medians["PlainStream"] / reporter.medians["IndexedReadFile"]);
    }
    return 0;
}
