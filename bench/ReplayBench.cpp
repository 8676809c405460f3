/// Replaying an archived set of 1 Hz epochs, 60 MB in blocks of about 3 KB, with a warm page cache: CIndexedReadFile
/// beside a plain std::ifstream loop over the same headers and blocks. Both touch the first and the last byte of every
/// block. Two caches: filled by read-ahead from the disk, in large pages, as when an archive is replayed, and left by a
/// writer's small writes, in single pages, which the kernel copies at half that rate. The ratios of the medians are
/// printed last.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

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

std::string writtenFile;  // as the writer left it in the cache
std::string readFile;     // the same, brought into the cache from the disk

/// Writes the set.
void writeSet(const std::string& timeInfoFile) {
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
}

/// Puts the file's pages out of the cache and reads them in again.
void readAgain(const std::string& path) {
    const int file = ::open(path.c_str(), O_RDONLY);
    ::fsync(file);
    ::posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED);
    std::vector<char> buffer(1U << 20U);
    while (::read(file, buffer.data(), buffer.size()) > 0) continue;
    ::close(file);
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

void report(benchmark::State& state, const std::string& timeInfoFile) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(std::filesystem::file_size(timeInfoFile)));
    state.SetItemsProcessed(state.iterations() * kEpochs);
}

void IndexedReadFile(benchmark::State& state, const std::string& timeInfoFile) {
    for (auto _ : state) {
        Counter counter;
        CIndexedReadFile reader(&counter);
        if (!reader.Open(timeInfoFile.c_str()) || !reader.Read(0, 0) || counter.blocks != kEpochs) {
            state.SkipWithError("incomplete replay");
        }
    }
    report(state, timeInfoFile);
}

void PlainStream(benchmark::State& state, const std::string& timeInfoFile) {
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
    report(state, timeInfoFile);
}

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
    writtenFile = folder + "/sett";
    readFile = folder + "/readt";
    writeSet(writtenFile);
    writeSet(readFile);
    readAgain(readFile);
    const auto add = [](const char* name, auto run, const std::string& file) {
        benchmark::RegisterBenchmark(name, [run, &file](benchmark::State& state) { run(state, file); })
            ->Repetitions(9)
            ->ReportAggregatesOnly()
            ->Unit(benchmark::kMillisecond);
    };
    add("IndexedReadFile/FromDisk", IndexedReadFile, readFile);
    add("PlainStream/FromDisk", PlainStream, readFile);
    add("IndexedReadFile/AsWritten", IndexedReadFile, writtenFile);
    add("PlainStream/AsWritten", PlainStream, writtenFile);
    MedianReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::filesystem::remove_all(folder);
    for (const std::string cache : {"FromDisk", "AsWritten"}) {
        if (!reporter.medians.contains("IndexedReadFile/" + cache)) continue;
        std::printf("replay against a plain stream, cache %s: %.2f times as fast\n", cache.c_str(),
                    reporter.medians["PlainStream/" + cache] / reporter.medians["IndexedReadFile/" + cache]);
    }
    return 0;
}
