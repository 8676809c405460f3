#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "tests/files/IndexedSet.h"

using namespace halvex::test;
using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using Blocks = std::vector<std::string>;

namespace {

/// Every entry of the index leads to a record of its own time.
void expectIndexFits(const std::string& base) {
    const std::string index = readFile(base + "i"), timeInfo = readFile(base + "t");
    ASSERT_EQ((index.size() - 4) % CIndexedFileIndex::kSavedSize, 0u);
    for (std::size_t at = 4; at < index.size(); at += CIndexedFileIndex::kSavedSize) {
        const auto found = CIndexedFileIndex::load(reinterpret_cast<const unsigned char*>(index.data()) + at);
        ASSERT_LE(found.position + CIndexedFileRecordHeader::kSavedSize, timeInfo.size());
        EXPECT_EQ(timeInfo.substr(found.position, 6), index.substr(at, 6));
    }
}

/// Opens the set for appending with a new writer and adds one block in week 2100.
void append(const std::string& base, std::string_view block) {
    TestClock clock;
    setClock(clock, 2100, 0);
    CIndexedWriteFile set;
    ASSERT_TRUE(set.Open(base.c_str(), false));
    addBlock(set, block);
}

const std::string kTwoRecords = kVersion2 + record(2000, 1, "one") + record(2000, 2, "two");
const std::string kThird = record(2000, 600001, "three");
const std::string kIndex = kVersion2 + entry(2000, 1, 4) + entry(2000, 600001, 30);

}  // namespace

TEST(IndexedRepair, ATimeInfoFileCutAnywhereIsAppendedToCleanly) {
    const TemporaryFolder folder;
    const std::string base = folder.path("set");
    const std::string whole = kTwoRecords + kThird;
    CapturedLog log;
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        SCOPED_TRACE(length);
        writeFile(base + "t", whole.substr(0, length));
        writeFile(base + "i", kIndex);
        append(base, "new");
        Blocks want = {"one", "two", "three"};
        want.resize(length < 17 ? 0 : length < 30 ? 1 : length < whole.size() ? 2 : 3);
        want.emplace_back("new");
        EXPECT_EQ(replay(base + "t"), want);
        expectIndexFits(base);
        const Blocks lines = taken(log);
        if (length != 35) continue;
        EXPECT_THAT(lines,
                    ElementsAre("2 CIndexedWriteFile::Open: incomplete last record cut off file " + base + "t, 5 bytes",
                                "2 CIndexedWriteFile::Open: index entries without a record cut off file " + base +
                                    "i, 14 bytes"));
    }
}

TEST(IndexedRepair, AnIndexCutAnywhereIsAppendedToCleanly) {
    const TemporaryFolder folder;
    const std::string base = folder.path("set");
    CapturedLog log;
    for (std::size_t length = 0; length <= kIndex.size(); ++length) {
        SCOPED_TRACE(length);
        writeFile(base + "t", kTwoRecords + kThird + "torn");
        writeFile(base + "i", kIndex.substr(0, length));
        append(base, "new");
        EXPECT_THAT(replay(base + "t"), ElementsAre("one", "two", "three", "new"));
        expectIndexFits(base);
    }
}

TEST(IndexedRepair, WholeRecordsBehindDamageStayWhenTheIndexKnowsThem) {
    const TemporaryFolder folder;
    const std::string base = folder.path("set");
    std::string damaged = kTwoRecords;
    damaged.replace(23, 4, "\xff\xff\xff\xff");  // the size of the second record
    const std::pair<std::string, std::string> rows[] = {
        {kIndex + entry(2000, 9, 31) + entry(2000, 9, ~0ull), damaged + kThird},
        {kVersion2 + entry(2001, 600001, 30) + entry(2000, 2, 30), damaged.substr(0, 17)},
        {"\1\0\0\0"s, damaged.substr(0, 17)}};
    for (const auto& [index, want] : rows) {
        CapturedLog log;
        writeFile(base + "t", damaged + kThird + "torn");
        writeFile(base + "i", index);
        append(base, "new");
        EXPECT_EQ(readFile(base + "t"), want + record(2100, 0, "new"));
    }
}

TEST(IndexedRepair, NothingIsCutWhileAnotherWriterHasTheRawFile) {
    const TemporaryFolder folder;
    const std::string base = folder.path("set");
    CapturedLog log;
    CIndexedWriteFile owner;
    ASSERT_TRUE(owner.Open(base.c_str(), true));
    writeFile(base + "t", kTwoRecords + "torn");
    writeFile(base + "i", kIndex);
    ASSERT_TRUE(CIndexedWriteFile().Open(base.c_str(), false));
    EXPECT_EQ(readFile(base + "t"), kTwoRecords + "torn");
    EXPECT_EQ(readFile(base + "i"), kIndex);
    EXPECT_THAT(taken(log), IsEmpty());
}

namespace {

std::string numberedBlock(int number) {
    return std::to_string(number) +
           std::string(static_cast<std::size_t>(number * 797 % 9000), static_cast<char>('a' + number % 26));
}

/// Writes numbered blocks until it is killed; after each that is flushed, tells so with a byte.
[[noreturn]] void writeUntilKilled(const std::string& base, int toParent) {
    TestClock clock;
    setClock(clock, 2000, 0);
    CIndexedWriteFile set;
    if (!set.Open(base.c_str(), false)) ::_exit(1);
    for (int number = 0;; ++number) {
        setClock(clock, 2000, number * 200000.0);
        addBlock(set, numberedBlock(number));
        if (number % 3 != 0) continue;
        set.Flush();
        if (::write(toParent, "x", 1) != 1) ::_exit(1);
    }
}

}  // namespace

TEST(IndexedRepair, AKilledWritersSetIsAppendedToCleanly) {
    for (int flushes = 1; flushes <= 24; ++flushes) {
        SCOPED_TRACE(flushes);
        const TemporaryFolder folder;
        const std::string base = folder.path("set");
        int ends[2];
        ASSERT_EQ(::pipe(ends), 0);
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) writeUntilKilled(base, ends[1]);
        ::close(ends[1]);
        char byte = 0;
        for (int i = 0; i < flushes; ++i) ASSERT_EQ(::read(ends[0], &byte, 1), 1);
        ASSERT_EQ(::kill(child, SIGKILL), 0);  // wherever it is by now
        ASSERT_EQ(::waitpid(child, nullptr, 0), child);
        ::close(ends[0]);

        CapturedLog log;
        append(base, "new");
        Blocks blocks = replay(base + "t");
        ASSERT_FALSE(blocks.empty());
        EXPECT_EQ(blocks.back(), "new");
        blocks.pop_back();
        EXPECT_GE(blocks.size(), static_cast<std::size_t>(3 * flushes - 2)) << "what was flushed is there";
        for (std::size_t i = 0; i < blocks.size(); ++i) ASSERT_EQ(blocks[i], numberedBlock(static_cast<int>(i)));
        expectIndexFits(base);
    }
}
