/// Messages of 100 bytes that several threads write to one file, each handed to the kernel at once and in order:
/// CDecoupledFileWrite beside one thread with a plain write(2) for each message, and beside spdlog's asynchronous file
/// sink flushed at each message. Clocked from the first message until the last is in the file; the rounds take turns,
/// the medians are printed. Then how long Write() holds up its caller, and ten thousand files, a request each.

#include <fcntl.h>
#include <fmt/format.h>
#include <spdlog/async.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <latch>
#include <string>
#include <thread>
#include <vector>

#include "halvex/files/DecoupledFileWrite.h"
#include "halvex/platform/kernix/Monitor.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kMessageSize = 100;
constexpr int kMessages = 400000;
constexpr int kRounds = 7;

std::string folder;

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

std::string newFile() {
    static int number = 0;
    return folder + "/file" + std::to_string(++number);
}

void checkSize(const std::string& name, std::uint64_t bytes) {
    if (std::filesystem::file_size(name) != bytes) {
        fmt::print(stderr, "{}: {} bytes, not {}\n", name, std::filesystem::file_size(name), bytes);
        std::exit(1);
    }
    std::filesystem::remove(name);
}

/// Runs `produce(count)` on each of `producers` threads at once, then `finish`; returns messages a second.
template <class Produce, class Finish>
double rate(int producers, Produce produce, Finish finish) {
    std::latch ready(producers + 1);
    std::vector<std::thread> threads;
    for (int i = 0; i < producers; ++i) {
        threads.emplace_back([&] {
            ready.arrive_and_wait();
            produce(kMessages / producers);
        });
    }
    ready.arrive_and_wait();
    const auto start = Clock::now();
    for (std::thread& thread : threads) thread.join();
    finish();
    return kMessages / secondsSince(start);
}

double plainLoop(int /*producers*/) {
    const std::string name = newFile();
    const std::string message(kMessageSize, 'x');
    const int file = ::open(name.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    const double result = rate(
        1,
        [&](int count) {
            for (int i = 0; i < count; ++i) {
                if (::write(file, message.data(), message.size()) != static_cast<ssize_t>(message.size())) std::exit(1);
            }
        },
        [] {});
    ::close(file);
    checkSize(name, kMessages * kMessageSize);
    return result;
}

double decoupled(int producers) {
    const std::string name = newFile();
    CDecoupledFileWriteHandle handle;
    CDecoupledFileWrite& writer = *handle.GetRealPointer();
    const std::string message(kMessageSize, 'x');
    const double result = rate(
        producers,
        [&](int count) {
            CDecoupledFileWrite::FileData request;
            request.strFileName = name.c_str();
            for (int i = 0; i < count; ++i) {
                request.bufData.assign(message.data(), message.size());
                if (!writer.Write(request)) std::exit(1);
            }
        },
        [&] { writer.WaitUntilIdle(); });
    checkSize(name, kMessages * kMessageSize);
    return result;
}

double spdlogSink(int producers) {
    const std::string name = newFile();
    auto pool = std::make_shared<spdlog::details::thread_pool>(8192, 1);
    auto sink = std::make_shared<spdlog::sinks::basic_file_sink_mt>(name);
    auto logger = std::make_shared<spdlog::async_logger>("bench", sink, pool, spdlog::async_overflow_policy::block);
    logger->set_pattern("%v");
    logger->flush_on(spdlog::level::trace);
    const std::string message(kMessageSize - 1, 'x');  // the sink adds a line end
    const double result = rate(
        producers,
        [&](int count) {
            for (int i = 0; i < count; ++i) logger->info(spdlog::string_view_t(message));
        },
        [&] { pool.reset(); });  // waits until everything is written
    logger.reset();
    sink.reset();
    checkSize(name, kMessages * kMessageSize);
    return result;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void throughput() {
    fmt::print("{:>9}  {:>14}  {:>14}  {:>14}  {:>8}  {:>8}\n", "producers", "write(2) [1/s]", "spdlog [1/s]",
               "decoupled", "/write(2)", "/spdlog");
    for (const int producers : {1, 2, 4}) {
        std::vector<double> plain;
        std::vector<double> log;
        std::vector<double> ours;
        for (int round = 0; round < kRounds; ++round) {
            plain.push_back(plainLoop(producers));
            log.push_back(spdlogSink(producers));
            ours.push_back(decoupled(producers));
        }
        fmt::print("{:>9}  {:>14.0f}  {:>14.0f}  {:>14.0f}  {:>8.2f}  {:>8.2f}\n", producers, median(plain),
                   median(log), median(ours), median(ours) / median(plain), median(ours) / median(log));
    }
}

/// How long one call takes its caller. In bursts, each begun when the one before is written, the writer's thread is
/// awake but for the first message of each, which wakes it. Without a pause it is awake all the time, but a single
/// producer is faster than it: the backlog grows, and every request takes new memory.
void latency(const char* what, int burst) {
    const std::string name = newFile();
    CDecoupledFileWriteHandle handle;
    CDecoupledFileWrite& writer = *handle.GetRealPointer();
    CDecoupledFileWrite::FileData request;
    request.strFileName = name.c_str();
    const std::string message(kMessageSize, 'x');
    std::vector<double> nanoseconds;
    nanoseconds.reserve(kMessages);
    for (int i = 0; i < kMessages; ++i) {
        if (i % burst == 0) writer.WaitUntilIdle();
        request.bufData.assign(message.data(), message.size());
        const auto start = Clock::now();
        if (!writer.Write(request)) std::exit(1);
        nanoseconds.push_back(secondsSince(start) * 1e9);
    }
    writer.WaitUntilIdle();
    std::sort(nanoseconds.begin(), nanoseconds.end());
    const auto at = [&](double share) {
        return nanoseconds[static_cast<std::size_t>(share * static_cast<double>(nanoseconds.size()))];
    };
    fmt::print("one call of Write() [ns], {}: median {:.0f}, 99 % within {:.0f}, 99.9 % within {:.0f}\n", what, at(0.5),
               at(0.99), at(0.999));
}

void manyFiles() {
    constexpr int kFiles = 10000;
    constexpr int kSeconds = 5;
    CDecoupledFileWriteHandle handle;
    CDecoupledFileWrite& writer = *handle.GetRealPointer();
    CDecoupledFileWrite::FileData request;
    const std::string message(kMessageSize, 'x');
    request.bufData.assign(message.data(), message.size());
    std::string took;
    for (int second = 0; second < kSeconds; ++second) {
        const auto start = Clock::now();
        for (int i = 0; i < kFiles; ++i) {
            request.strFileName = fmt::format("{}/station{}", folder, i).c_str();
            if (!writer.Write(request)) std::exit(1);
        }
        writer.WaitUntilIdle();
        took += fmt::format(" {:.0f}", secondsSince(start) * 1e3);
        std::this_thread::sleep_until(start + std::chrono::seconds(1));
    }
    const auto value = [](const char* element) {
        return CMonitorTree::getInstance().value("DecoupledFileWrite", element).value_or(-1);
    };
    fmt::print("{} files, a request a second each: a second's work took{} ms; {} files open, {} failed\n", kFiles, took,
               value("OpenFiles"), value("FailedOpens") + value("FailedWrites"));
    for (int i = 0; i < kFiles; ++i) checkSize(fmt::format("{}/station{}", folder, i), kSeconds * kMessageSize);
}

}  // namespace

int main() {
    folder = (std::filesystem::temp_directory_path() / "halvex-bench-XXXXXX").string();
    if (::mkdtemp(folder.data()) == nullptr) return 1;
    throughput();
    latency("bursts of 1000", 1000);
    latency("without a pause", kMessages);
    manyFiles();
    std::filesystem::remove_all(folder);
    return 0;
}
