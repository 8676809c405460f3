#include <gmock/gmock.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>

#include <latch>
#include <thread>

#include "halvex/files/DecoupledFileWrite.h"
#include "halvex/platform/kernix/Monitor.h"
#include "tests/files/IndexedSet.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/TemporaryFolder.h"

using namespace halvex::test;
using namespace std::string_literals;
using FileData = CDecoupledFileWrite::FileData;
using testing::ElementsAre;
using testing::StartsWith;

namespace {

FileData request(const std::string& file, std::string_view data, std::string_view header = {}) {
    FileData result;
    result.strFileName = CString(file);
    result.bufData.assign(data.data(), data.size());
    result.bufHeader.assign(header.data(), header.size());
    return result;
}

FileData closing(FileData data) {
    data.bCloseFile = true;
    return data;
}

bool queue(CDecoupledFileWrite& writer, FileData data) {
    return writer.Write(data);
}
void carryOut(CDecoupledFileWrite& writer, FileData data) {
    EXPECT_TRUE(writer.Write(data));
    writer.WaitUntilIdle();
}

double monitored(const char* path, const char* element) {
    return CMonitorTree::getInstance().value(path, element).value_or(-1.0);
}
double failures(const char* element) {
    return monitored("DecoupledFileWrite", element);
}
/// How the low queue stands.
double lowQueue(const char* element) {
    return monitored("Queue/DecoupledFileWrite/Low", element);
}

/// A writer whose requests are carried out by the test itself.
struct DirectWriter : CDecoupledFileWrite {
    bool process(FileData data) { return ProcessFile(data); }
};

/// Holds up the writer's thread at its first log entry, until a second one comes or open() is called.
class Gate final : public ILogging::Sink {
public:
    Gate() : m_installed(*this) {}
    void write(std::string_view, int, std::string_view message) override {
        const int entry = m_entries++;
        if (entry == 1) {
            second = message;
            open();
        }
        if (entry > 0) return;
        m_reached.count_down();
        m_opened.wait();
    }
    /// Queues a request that cannot be carried out and waits until the thread has come to it.
    void close(CDecoupledFileWrite& writer) {
        queue(writer, request("/no/such/folder/file", "x"));
        m_reached.wait();
    }
    void open() {
        if (!m_open.exchange(true)) m_opened.count_down();
    }

    std::string second;

private:
    std::atomic<int> m_entries{0};
    std::atomic<bool> m_open{false};
    std::latch m_reached{1}, m_opened{1};
    ScopedLogSink m_installed;
};

/// Runs `child` in a process of its own and expects it to end with 0; kSkip: the machine does not allow the check.
constexpr int kSkip = 77;
int inChild(const std::function<int()>& child) {
    const pid_t process = ::fork();
    if (process == 0) ::_exit(child());
    int status = 0;
    ::waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

TEST(DecoupledFileWrite, EachRequestDoesWhatItsFlagsSay) {
    const TemporaryFolder folder;
    const std::string name = folder.path("file");
    const FileData pureClose = closing(request(name, ""));
    FileData version2 = request(name, "A", "H"), anew = request(name, "B"), anewPureClose = pureClose;
    version2.nVersion = 2;
    anew.bNewFile = anewPureClose.bNewFile = true;
    const std::tuple<const char*, std::string, std::vector<FileData>, std::string> rows[] = {
        {"header into an empty file, once", "", {request(name, "A", "H"), request(name, "B", "H")}, "HAB"},
        {"header behind 4 bytes", "1234", {request(name, "A", "H")}, "1234HA"},
        {"no header behind 5 bytes", "12345", {request(name, "A", "H")}, "12345A"},
        {"header again at the next opening", "", {closing(request(name, "abc")), request(name, "A", "H")}, "abcHA"},
        {"header alone", "", {request(name, "", "H")}, "H"},
        {"version word first, then the header", "", {version2}, "\2\0\0\0HA"s},
        {"the wanted version is kept", "\2\0\0\0old"s, {version2}, "\2\0\0\0oldA"s},
        {"another version: begun anew", "\1\0\0\0old"s, {version2}, "\2\0\0\0HA"s},
        {"a new file while it is open", "", {request(name, "A"), anew}, "B"},
        {"new and closing, nothing to write", "old", {anewPureClose}, "old"},
        {"the same while it is open", "old", {request(name, "A"), anewPureClose}, "oldA"},
        {"closed twice", "", {request(name, "A"), closing(request(name, "B")), pureClose}, "AB"}};
    for (const auto& [what, before, requests, after] : rows) {
        writeFile(name, before);
        DirectWriter writer;
        for (const FileData& data : requests) EXPECT_TRUE(writer.process(data)) << what;
        EXPECT_EQ(readFile(name), after) << what;
        EXPECT_EQ(failures("OpenFiles"), requests.back().bCloseFile ? 0 : 1) << what;
    }

    DirectWriter writer;
    EXPECT_TRUE(writer.process(closing(request(folder.path("never"), ""))));
    EXPECT_EQ(readFile(folder.path("never")), "(missing)") << "closing what is not open does nothing";
    for (const char* each : {"case", "CASE"}) EXPECT_TRUE(writer.process(request(folder.path(each), each)));
    EXPECT_EQ(failures("OpenFiles"), 2) << "names are told apart by case";
}

TEST(DecoupledFileWrite, AClosingRequestOvertakesTheOthers) {
    const TemporaryFolder folder;
    const std::string name = folder.path("file");
    Gate gate;
    CDecoupledFileWrite writer;
    EXPECT_FALSE(queue(writer, request("", "data")) || queue(writer, request(name, ""))) << "nothing to do";
    gate.close(writer);
    for (const char* data : {"a", "b", "c"}) queue(writer, request(name, data, "H"));
    queue(writer, closing(request(name, "Z", "H")));
    EXPECT_EQ(lowQueue("Size"), 3);
    gate.open();
    writer.WaitUntilIdle();
    EXPECT_EQ(readFile(name), "HZHabc")
        << "written and closed first, opened again (2 bytes: the header) for the others";
}

TEST(DecoupledFileWrite, WhatIsQueuedAtTheEndIsDiscarded) {
    const TemporaryFolder folder;
    const std::string name = folder.path("file");
    Gate gate;
    {
        CDecoupledFileWrite writer;
        carryOut(writer, request(name, "written"));
        gate.close(writer);
        queue(writer, request(name, "discarded"));
    }  // stopping is announced, then takes too long: that is logged, and opens the gate
    EXPECT_EQ(readFile(name), "written");
    EXPECT_EQ(gate.second, "thread 'CDecoupledFileWrite' has not ended within 3000 ms, waiting on");
}

TEST(DecoupledFileWrite, WhatCannotBeOpenedOrWrittenIsLostAloneAndCounted) {
    const TemporaryFolder folder;
    CapturedLog log;
    CDecoupledFileWrite writer;
    const std::string good = folder.path("good"), sub = folder.path("sub/file");
    std::filesystem::create_directory(folder.path("sub"));
    const std::string bad[] = {folder.path("none/file"), folder.path(""), "/" + std::string(4096, 'x'),
                               folder.path("nul\0behind"s), "/dev/full"};
    for (int round = 0; round < 2; ++round) {
        for (const std::string& name : bad) {
            queue(writer, request(name, "lost"));
            queue(writer, request(good, "kept"));
        }
    }
    writer.WaitUntilIdle();
    EXPECT_EQ(readFile(good), "keptkeptkeptkeptkeptkeptkeptkeptkeptkept");
    EXPECT_EQ(failures("FailedOpens"), 10);
    EXPECT_EQ(readFile(folder.path("nul")), "(missing)") << "no name is cut at a NUL";
    EXPECT_EQ(log.take().size(), std::size(bad)) << "each file is logged once";

    // A folder that vanishes: an open file's bytes go where it went; opened again it is missing, until it is back.
    carryOut(writer, request(sub, "before"));
    std::filesystem::remove_all(folder.path("sub"));
    carryOut(writer, closing(request(sub, "lost")));
    carryOut(writer, request(sub, "lost as well"));
    EXPECT_THAT(log.take(), ElementsAre(StartsWith("3 CDecoupledFileWrite: file '" + sub + "' cannot be opened: ")));
    std::filesystem::create_directory(folder.path("sub"));
    carryOut(writer, request(sub, "again"));
    EXPECT_EQ(readFile(sub), "again");
}

TEST(DecoupledFileWrite, ARunThatDoesNotFitIsWrittenAsFarAsItsRequestsFit) {
    const TemporaryFolder folder;
    const std::string name = folder.path("file");
    Gate gate;
    CDecoupledFileWrite writer;
    gate.close(writer);  // so that the requests wait together
    {
        const FileSizeLimit limit(10);
        for (const char* data : {"1234", "5678", "too long", "9", "too long", "0", "x"}) {
            queue(writer, request(name, data));
        }
        gate.open();
        writer.WaitUntilIdle();
    }
    carryOut(writer, request(name, "more"));
    EXPECT_EQ(readFile(name), "1234567890more") << "as single writes would have done";
    EXPECT_EQ(failures("FailedWrites"), 3);
    EXPECT_THAT(gate.second, testing::HasSubstr("cannot be written"));
}

TEST(DecoupledFileWrite, AHeaderThatCannotBeWrittenIsLoggedOnce) {
    const TemporaryFolder folder;
    CapturedLog log;
    const FileSizeLimit limit(2);
    CDecoupledFileWrite writer;
    FileData header = closing(request(folder.path("file"), ""));
    header.bufHeader.assign("header", 6);
    for (int i = 0; i < 2; ++i) queue(writer, header);
    carryOut(writer, header);
    EXPECT_TRUE(log.take().size() == 1 && failures("FailedWrites") == 3) << "nothing to write is no success";
}

TEST(DecoupledFileWrite, AFullDiskAndOneThatTurnsReadOnly) {
    const TemporaryFolder folder;
    const std::string disk = folder.path("disk");
    std::filesystem::create_directory(disk);
    const int result = inChild([&] {
        if (::unshare(CLONE_NEWNS | (::geteuid() == 0 ? 0 : CLONE_NEWUSER)) != 0) return kSkip;
        ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
        if (::mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=64k") != 0) return kSkip;
        CapturedLog log;
        CDecoupledFileWrite writer;
        const std::string block(3000, 'x');
        for (int i = 0; i < 40; ++i) queue(writer, request(disk + "/full", block));
        carryOut(writer, request(folder.path("elsewhere"), "kept"));
        const auto size = std::filesystem::file_size(disk + "/full");
        if (size % block.size() != 0 || static_cast<double>(size / block.size()) + failures("FailedWrites") != 40)
            return 1;
        if (readFile(folder.path("elsewhere")) != "kept" || log.take().size() != 1) return 2;
        carryOut(writer, closing(request(disk + "/full", "")));
        if (::mount(nullptr, disk.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) != 0) return kSkip;
        queue(writer, request(disk + "/full", block));
        carryOut(writer, request(disk + "/new", block));
        return failures("FailedOpens") == 2 ? 0 : 3;
    });
    if (result == kSkip) GTEST_SKIP() << "no mount namespaces here";
    EXPECT_EQ(result, 0);
}

TEST(DecoupledFileWrite, MoreFilesThanMayBeOpenLoseNothing) {
    const TemporaryFolder folder;
    const auto name = [&](int i) { return folder.path("f" + std::to_string(i)); };
    EXPECT_EQ(inChild([&] {
                  const rlimit few{80, 100};  // raised to 100 by the writer, of which it leaves half
                  ::setrlimit(RLIMIT_NOFILE, &few);
                  CDecoupledFileWrite writer;
                  for (int round = 0; round < 3; ++round) {
                      for (int i = 0; i < 300; ++i) {
                          FileData data = request(name(i), "ab"s + std::to_string(round), "H");
                          data.nVersion = 7;
                          writer.Write(data);
                      }
                      if (round == 0) {
                          writer.WaitUntilIdle();
                          std::filesystem::remove(name(0));  // closed to make room by now: begun anew
                      }
                  }
                  writer.WaitUntilIdle();
                  return failures("OpenFiles") == 50 && failures("FailedOpens") == 0 ? 0 : 1;
              }),
              0);
    EXPECT_EQ(readFile(name(0)), "\7\0\0\0Hab1ab2"s);
    for (int i = 1; i < 300; ++i) ASSERT_EQ(readFile(name(i)), "\7\0\0\0Hab0ab1ab2"s) << i;
}

TEST(DecoupledFileWrite, AKilledProcessLeavesWholeRequestsAndASetThatReadsBack) {
    const TemporaryFolder folder;
    const std::string name = folder.path("sett");
    constexpr unsigned kWritten = 1000;
    killAfter(1, [&](auto tell) {
        CDecoupledFileWrite writer;
        for (unsigned i = 0;; ++i) {
            FileData data = request(name, record(2190, i * 1000, "block " + std::to_string(i)));
            data.nVersion = 2;
            writer.Write(data);
            if (i != kWritten) continue;
            writer.WaitUntilIdle();
            (void)tell();
        }
    });
    const Blocks blocks = replay(name);
    EXPECT_GT(blocks.size(), kWritten) << "what had reached the kernel";
    for (std::size_t i = 0; i < blocks.size(); ++i) ASSERT_EQ(blocks[i], "block " + std::to_string(i));
}

TEST(DecoupledFileWriteHandle, TheCountDecidesHowLongTheWriterLives) {
    const auto lives = [] { return lowQueue("In") >= 0; };
    {
        CDecoupledFileWriteHandle handle;
        EXPECT_FALSE(lives()) << "made when it is asked for";
        CDecoupledFileWrite* const writer = handle.GetRealPointer();
        {
            CDecoupledFileWriteHandle other;
            EXPECT_EQ(other.GetRealPointer(), writer);
            other = handle;
        }
        EXPECT_TRUE(lives());
        { CDecoupledFileWriteHandle copy(handle); }
        EXPECT_FALSE(lives()) << "a copy does not count, its end does";
    }
    // The handle above has taken the count to -1: the next one brings it back to 0, and its end to -1 again.
    CDecoupledFileWriteHandle restoring, second;
    EXPECT_NE(restoring.GetRealPointer(), nullptr);
}

/// An hour of a network of 1000 stations is 3.6 million requests: HALVEX_STRESS_SECONDS=3600. Four threads, each with
/// its stations, a request for each station and second; every byte is compared.
TEST(DecoupledFileWrite, ManyProducersAndFilesEveryByte) {
    constexpr int kProducers = 4, kStationsEach = 250;
    const char* asked = std::getenv("HALVEX_STRESS_SECONDS");
    const int seconds = asked != nullptr ? std::atoi(asked) : 12;
    const TemporaryFolder folder;
    const auto name = [&](int station) { return folder.path("station" + std::to_string(station)); };
    const auto message = [](int station, int second) {
        return std::string(static_cast<std::size_t>(60 + (station * 7 + second) % 40),
                           static_cast<char>('a' + second % 26)) +
               std::to_string(station) + "," + std::to_string(second) + "\n";
    };
    CDecoupledFileWrite writer;
    std::vector<std::jthread> producers;
    for (int producer = 0; producer < kProducers; ++producer) {
        producers.emplace_back([&, producer] {
            for (int second = 0; second < seconds; ++second) {
                for (int i = 0; i < kStationsEach; ++i) {
                    const int station = producer * kStationsEach + i;
                    if (!queue(writer, request(name(station), message(station, second)))) ADD_FAILURE();
                }
            }
        });
    }
    producers.clear();
    writer.WaitUntilIdle();
    EXPECT_EQ(lowQueue("Out"), 1.0 * kProducers * kStationsEach * seconds);
    for (int station = 0; station < kProducers * kStationsEach; ++station) {
        std::string expected;
        for (int second = 0; second < seconds; ++second) expected += message(station, second);
        ASSERT_TRUE(readFile(name(station)) == expected) << "station " << station;
    }
}
