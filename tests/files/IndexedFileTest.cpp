#include <gmock/gmock.h>

#include "halvex/files/IndexedWrite.h"
#include "halvex/platform/kernix/IndexedFileRecord.h"
#include "halvex/time/TimeBase.h"
#include "tests/files/IndexedSet.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestClock.h"

using namespace halvex::test;
using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const std::string kVersion2("\2\0\0\0", 4);

/// Sets the clock to a GPS week and milliseconds of week, read as UTC.
void setClock(TestClock& clock, int week, double milliseconds) {
    CTimeBase(week, milliseconds / 1000.0).ToSystemTime(clock.utc);
}

void addBlock(CIndexedWriteFile& set, std::string_view block) {
    set.AddBlock(reinterpret_cast<const unsigned char*>(block.data()), static_cast<std::uint32_t>(block.size()));
}

/// The names of a set in a folder of its own.
class IndexedSet : public testing::Test {
protected:
    const TemporaryFolder folder;
    const std::string base = folder.path("set");
    const std::string name = base + "t";
};
using IndexedWriteFile = IndexedSet;
using IndexedReadFile = IndexedSet;
using IndexedRepair = IndexedSet;

TEST_F(IndexedWriteFile, BytesOfTheThreeFilesArePinned) {
    TestClock clock;
    setClock(clock, 1581, 210960250);
    CIndexedWriteFile set;
    ASSERT_TRUE(set.Open(base.c_str(), true));
    addBlock(set, "abc");
    EXPECT_EQ(readFile(base + "i").size(), 18u) << "the entry is on disk before its record";
    EXPECT_EQ(readFile(base + "t").size(), 4u);
    setClock(clock, 1581, 211560250);
    addBlock(set, "\xff");
    set.Flush();
    const std::string first = "\x2d\x06\x7a\xff\x92\x0c", second = "\x2d\x06\x3a\x27\x9c\x0c";
    EXPECT_EQ(readFile(base), "abc\xff");
    EXPECT_EQ(readFile(base + "t"), "\2\0\0\0"s + first + "\3\0\0\0"s + "abc" + second + "\1\0\0\0\xff"s);
    EXPECT_EQ(readFile(base + "i"), "\2\0\0\0"s + first + "\4\0\0\0\0\0\0\0"s + second + "\x11\0\0\0\0\0\0\0"s);
}

TEST_F(IndexedWriteFile, AnEntryEveryTenMinutesOfTheWeekItWasCountedIn) {
    TestClock clock;
    enum Step { stay, reopen };
    const std::tuple<unsigned, unsigned, Step, bool> rows[] = {
        {2000, 0, stay, true},          {2000, 599999, stay, false},   {2000, 600000, stay, true},
        {2000, 1100000, reopen, false}, {2000, 1200000, reopen, true}, {2000, 604500000, stay, true},
        {2000, 604799999, stay, false}, {2001, 100, stay, true},       {2001, 600099, stay, false}};
    std::string index = kVersion2;
    std::uint64_t position = 4;
    CIndexedWriteFile set;
    ASSERT_TRUE(set.Open(base.c_str(), true));
    for (const auto& [week, milliseconds, step, indexed] : rows) {
        if (step == reopen) {
            set.Close();
            ASSERT_TRUE(set.Open(base.c_str(), false));
        }
        setClock(clock, static_cast<int>(week), milliseconds);
        addBlock(set, "block");
        if (indexed) index += entry(week, milliseconds, position);
        position += 15;
        EXPECT_EQ(readFile(base + "i"), index) << week << ' ' << milliseconds;
    }
}

TEST_F(IndexedWriteFile, WrongVersionsAreDeletedAndMadeAnew) {
    const std::string other("\3\0\0\0data", 8), kept = kVersion2 + record(1, 2, "kept");
    CapturedLog log;
    for (const char* suffix : {"", "t", "i", "2"}) writeFile(base + suffix, other);
    ASSERT_TRUE(CIndexedWriteFile().Open(base.c_str(), false));
    EXPECT_THAT(
        log.take(),
        ElementsAre("3 CIndexedWrite::Open: CIndexedWrite::Open wrong version -> deleted file " + base + "i, version 3",
                    "3 CIndexedWriteFile::Open: CIndexedWriteFile::Open wrong version -> deleted file " + base +
                        "t, version 3"));
    EXPECT_EQ(readFile(base + "t") + readFile(base + "i") + readFile(base), kVersion2 + kVersion2);
    EXPECT_EQ(readFile(base + "2"), other);

    writeFile(base + "t", kept);
    writeFile(base + "i", other);
    ASSERT_TRUE(CIndexedWriteFile().Open(base.c_str(), false));
    EXPECT_EQ(readFile(base + "t"), kept) << "an index of another version costs the index alone";
    EXPECT_EQ(readFile(base + "i"), kVersion2);
    EXPECT_FALSE(CIndexedWriteFile().Open(std::string(259, 'n').c_str(), false)) << "name with suffix too long";
}

/// Four records in two weeks, 15 bytes each, and an index of all of them.
class SetOfTwoWeeks : public IndexedSet {
protected:
    SetOfTwoWeeks() {
        writeFile(name, kVersion2 + record(2000, 604000000, "first") + record(2000, 604600000, "secnd") +
                            record(2001, 400000, "third") + record(2001, 604300000, "forth"));
        writeFile(name + "i", kVersion2 + entry(2000, 604000000, 4) + entry(2000, 604600000, 19) +
                                  entry(2001, 400000, 34) + entry(2001, 604300000, 49));
    }
};

TEST_F(SetOfTwoWeeks, ReplayStartsWhereTheIndexAndTheScanLead) {
    const std::tuple<const char*, unsigned, unsigned, std::size_t> rows[] = {
        {"week 0 is the start, whatever the time", 0, 604500000, 0},
        {"time of an entry", 2001, 400000, 2},
        {"before the first entry's milliseconds: from the start", 2001, 399999, 2},
        {"after every entry's milliseconds: from the start", 2000, 604600001, 2},
        {"after every record", 2002, 0, 4},
        {"milliseconds alone are looked up: the entry before 604600000 of week 2000", 2001, 604300001, 4}};
    const Blocks all = {"first", "secnd", "third", "forth"};
    for (const auto& [what, week, milliseconds, first] : rows) {
        const Blocks want(all.begin() + static_cast<std::ptrdiff_t>(first), all.end());
        EXPECT_EQ(replay(name, week, milliseconds), want) << what;
    }
    writeFile(name + "i", kVersion2 + entry(2000, 604000000, 4) + entry(2001, 0, 34) + entry(2001, 604700000, 49));
    EXPECT_THAT(replay(name, 2000, 604500000), ElementsAre("third", "forth"))
        << "the entry before is of the next week: the second block is passed over";
}

TEST_F(SetOfTwoWeeks, HostileIndexesAreNotFollowed) {
    const Blocks fromSecond = {"secnd", "third", "forth"};
    for (const std::uint64_t position : {0ull, 3ull, 64ull, 65ull, 1ull << 63, ~0ull}) {
        writeFile(name + "i", kVersion2 + entry(2000, 604600000, position));
        EXPECT_EQ(replay(name, 2000, 604600000), fromSecond) << position;
    }
    const std::string whole = kVersion2 + entry(2000, 604600000, 19);
    for (std::size_t length = 4; length <= whole.size(); ++length) {
        writeFile(name + "i", whole.substr(0, length));
        EXPECT_EQ(replay(name, 2000, 604600000), fromSecond) << length;
    }
    writeFile(name + "i", kVersion2 + entry(2000, 604600000, 63));
    EXPECT_THAT(replay(name, 2000, 604600000), IsEmpty()) << "inside the file, but no record";

    CapturedLog log;
    for (const auto& [content, version] : {std::pair{"\2\0\0"s, "-1"}, {"\xff\xff\xff\xff"s, "4294967295"}}) {
        writeFile(name + "i", content);
        EXPECT_EQ(replay(name, 2000, 604600000), fromSecond);
        EXPECT_THAT(log.take(), ElementsAre("3 CIndexedRead::GetIndexPos: CIndexedRead::GetIndexPos, wrong version -> "
                                            "deleted file " +
                                            name + "i, version " + version));
        EXPECT_EQ(readFile(name + "i"), "(missing)");
    }
}

TEST_F(SetOfTwoWeeks, CancellingKeepsThePlace) {
    Collector collector;
    CIndexedReadFile& reader = collector.reader;
    collector.cancelAfter = 2;
    EXPECT_TRUE(reader.isEndOfFile()) << "nothing is open";
    ASSERT_TRUE(reader.Open(name.c_str()));
    EXPECT_TRUE(reader.Read(0, 0));
    EXPECT_THAT(collector.blocks, ElementsAre("first", "secnd"));
    EXPECT_TRUE(collector.ends == 1 && !reader.isEndOfFile());
    EXPECT_TRUE(reader.Read(0, 0));
    EXPECT_THAT(collector.blocks, ElementsAre("first", "secnd", "secnd", "third", "forth"));
    EXPECT_TRUE(collector.ends == 2 && reader.isEndOfFile());
}

TEST_F(SetOfTwoWeeks, EveryCutGivesTheWholeRecordsBeforeIt) {
    const std::string whole = readFile(name);
    Blocks want = {"first", "secnd", "third", "forth"};
    for (std::size_t length = whole.size(); length >= 4; --length) {
        writeFile(name, whole.substr(0, length));
        want.resize((length - 4) / 15);
        EXPECT_EQ(replay(name), want) << length;
    }
    writeFile(name, kVersion2 + record(2000, 0, "whole") + "\xd0\7\1\0\0\0\xff\xff\xff\xff"s + "short");
    EXPECT_THAT(replay(name), ElementsAre("whole")) << "a size of 4 GiB";
}

TEST_F(IndexedReadFile, WrongVersionsAreDeleted) {
    CapturedLog log;
    CIndexedReadFile reader;
    writeFile(name, "");
    EXPECT_FALSE(reader.Open(name.c_str()));
    EXPECT_EQ(readFile(name), "") << "an empty file stays";
    writeFile(name + "i", kVersion2);
    for (const auto& [content, version] : {std::pair{"\2\0\0"s, "-1"s}, {"\1\0\0\0"s, "1"s}}) {
        writeFile(name, content);
        EXPECT_FALSE(reader.Open(name.c_str()));
        EXPECT_THAT(log.take(),
                    ElementsAre("3 CIndexedReadFile::Open: CIndexedReadFile::Open, wrong version -> deleted file " +
                                name + ", version " + version));
        EXPECT_EQ(readFile(name), "(missing)");
    }
    EXPECT_EQ(readFile(name + "i"), kVersion2) << "nothing else";
    for (const char* suffix : {"", "t", "tt"}) writeFile(name + suffix, "x");
    CIndexedReadFile::DeleteIndexedFile(name.c_str());
    for (const char* suffix : {"", "t", "i"}) EXPECT_EQ(readFile(name + suffix), "(missing)") << suffix;
    EXPECT_EQ(readFile(name + "tt"), "x");
}

TEST_F(IndexedReadFile, TransformsToTheBlocksAlone) {
    const std::string raw = folder.path("raw");
    const std::string two = kVersion2 + record(1, 1, "abc") + record(1, 2, "de"), empty = record(1, 3, "");
    const std::tuple<const char*, std::string, bool, std::string> rows[] = {
        {"whole", two, true, "abcde"},
        {"last block short", two.substr(0, two.size() - 1), false, "abc"},
        {"scraps of a header behind", two + "123456789", true, "abcde"},
        {"a header without its block behind", two + "1234567890", false, "abcde"},
        {"a record without bytes ends it", two + empty + record(1, 4, "f"), false, "abcde"},
        {"other version", "\1\0\0\0"s + two.substr(4), false, "before"}};
    for (const auto& [what, content, want, wantRaw] : rows) {
        writeFile(name, content);
        writeFile(raw, "before");
        EXPECT_EQ(CIndexedReadFile::TransformTimeInfoFileToRaw(name.c_str(), raw.c_str()), want) << what;
        EXPECT_EQ(readFile(raw), wantRaw) << what;
    }
    writeFile(name, two);
    EXPECT_FALSE(CIndexedReadFile::TransformTimeInfoFileToRaw(name.c_str(), name.c_str())) << "onto itself";
    EXPECT_EQ(readFile(name), two);
}

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

TEST_F(IndexedRepair, ASetCutAnywhereIsAppendedToCleanly) {
    const std::string whole = kTwoRecords + kThird + "torn";
    CapturedLog log;
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        for (std::size_t indexLength = 0; indexLength <= kIndex.size(); indexLength += length % 3 + 1) {
            SCOPED_TRACE(testing::Message() << length << ' ' << indexLength);
            writeFile(base + "t", whole.substr(0, length));
            writeFile(base + "i", kIndex.substr(0, indexLength));
            append(base, "new");
            Blocks want = {"one", "two", "three"};
            want.resize(length < 17 ? 0 : length < 30 ? 1 : length < 45 ? 2 : 3);
            want.emplace_back("new");
            EXPECT_EQ(replay(base + "t"), want);
            expectIndexFits(base);
        }
    }
    writeFile(base + "t", whole.substr(0, 35));
    writeFile(base + "i", kIndex);
    log.take();
    append(base, "new");
    EXPECT_THAT(
        log.take(),
        ElementsAre("2 CIndexedWriteFile::Open: incomplete last record cut off file " + base + "t, 5 bytes",
                    "2 CIndexedWriteFile::Open: index entries without a record cut off file " + base + "i, 14 bytes"));
}

TEST_F(IndexedRepair, WholeRecordsBehindDamageStayWhenTheIndexKnowsThem) {
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

TEST_F(IndexedRepair, NothingIsCutWhileAnotherWriterHasTheRawFile) {
    CapturedLog log;
    CIndexedWriteFile owner;
    ASSERT_TRUE(owner.Open(base.c_str(), true));
    writeFile(base + "t", kTwoRecords + "torn");
    writeFile(base + "i", kIndex);
    ASSERT_TRUE(CIndexedWriteFile().Open(base.c_str(), false));
    EXPECT_EQ(readFile(base + "t"), kTwoRecords + "torn");
    EXPECT_EQ(readFile(base + "i"), kIndex);
    EXPECT_THAT(log.take(), IsEmpty());
}

std::string numberedBlock(int number) {
    return std::to_string(number) +
           std::string(static_cast<std::size_t>(number * 797 % 9000), static_cast<char>('a' + number % 26));
}

TEST_F(IndexedRepair, AKilledWritersSetIsAppendedToCleanly) {
    for (int flushes = 1; flushes <= 24; ++flushes) {
        SCOPED_TRACE(flushes);
        CIndexedReadFile::DeleteIndexedFile(base.c_str());
        killAfter(flushes, [&](auto tell) {
            TestClock clock;
            CIndexedWriteFile set;
            for (int number = 0; number > 0 || set.Open(base.c_str(), false); ++number) {
                setClock(clock, 2000, number * 200000.0);
                addBlock(set, numberedBlock(number));
                if (number % 3 != 0) continue;
                set.Flush();
                if (tell() != 1) return;
            }
        });
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

}  // namespace
