#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <random>

#include "halvex/platform/kernix/FileReadBuffer.h"
#include "halvex/platform/kernix/FileWriteBuffer.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/TemporaryFolder.h"

using namespace halvex::test;
using os::kShareNone, os::kShareReadWrite;
using namespace std::string_literals;

namespace {

const std::string kVersion2("\2\0\0\0", 4);

bool write(CFileWriteBuffer& file, const std::string& piece) {
    return file.Write(piece.data(), piece.size());
}

bool fill(CFileWriteBuffer& file, const std::string& piece) {
    unsigned char* space = file.GetSpace(piece.size());
    return space != nullptr && std::memcpy(space, piece.data(), piece.size()) != nullptr;
}

std::uint64_t positionOf(CFileWriteBuffer& file) {
    std::uint64_t position = ~std::uint64_t{0};
    EXPECT_TRUE(file.GetFilePosition(position));
    return position;
}

class File : public testing::Test {
protected:
    const TemporaryFolder folder;
    const std::string name = folder.path("file");
};
using FileWriteBuffer = File;
using FileReadBuffer = File;

}  // namespace

TEST_F(File, RefusesWhatIsNotARegularFileByACode) {
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    const std::pair<std::string, std::errc> rows[] = {
        {"", std::errc::invalid_argument},
        {folder.path(""), std::errc::is_a_directory},
        {folder.path("pipe"), std::errc::invalid_argument},
        {folder.path("no/such/file"), std::errc::no_such_file_or_directory}};
    for (const auto& [path, want] : rows) {
        os::File file;
        EXPECT_EQ(file.openForReading(path.c_str(), kShareReadWrite), want) << path;
        EXPECT_TRUE(file.openForWriting(path.c_str(), kShareReadWrite)) << path;
        EXPECT_FALSE(file.isOpen()) << path;
    }
    EXPECT_EQ(os::File().openForReading(nullptr, kShareReadWrite), std::errc::invalid_argument);
    EXPECT_EQ(os::File().openForWriting(folder.path("file").c_str(), 1), std::errc::invalid_argument) << "share mode";
}

TEST_F(File, ShareModesHoldWithinTheProcessAndAcrossProcesses) {
    const std::tuple<std::uint32_t, std::uint32_t, std::errc> rows[] = {
        {kShareReadWrite, kShareReadWrite, std::errc{}},
        {kShareNone, kShareReadWrite, std::errc::device_or_resource_busy},
        {kShareReadWrite, kShareNone, std::errc::device_or_resource_busy}};
    for (const auto& [first, second, want] : rows) {
        SCOPED_TRACE(testing::Message() << first << " then " << second);
        os::File owner;
        ASSERT_FALSE(owner.openForWriting(name.c_str(), first));
        EXPECT_EQ(os::File().openForWriting(name.c_str(), second).value(), static_cast<int>(want));
        EXPECT_EQ(os::File().openForReading(name.c_str(), second).value(), static_cast<int>(want));
        const pid_t child = ::fork();
        if (child == 0) ::_exit(os::File().openForWriting(name.c_str(), second).value());
        int status = -1;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(WEXITSTATUS(status), static_cast<int>(want));
        ASSERT_FALSE(owner.close());
        EXPECT_FALSE(os::File().openForWriting(name.c_str(), second)) << "free again";
    }
}

TEST_F(FileWriteBuffer, VersionWordIsWrittenOrReported) {
    const std::string old = "\1\2\3\4old";
    const std::tuple<std::string, bool, std::uint32_t, std::string> rows[] = {{"", false, 2, kVersion2},
                                                                              {"\7\7\7", false, 2, kVersion2},
                                                                              {kVersion2, false, 2, kVersion2},
                                                                              {old, false, 0x04030201, old},
                                                                              {old, true, 2, kVersion2}};
    for (const auto& [before, overwrite, reported, opened] : rows) {
        writeFile(name, before);
        CFileWriteBuffer file, intruder;
        std::uint32_t version = 2;
        ASSERT_TRUE(file.Open(name.c_str(), 100, 0, overwrite, kShareNone, &version)) << before;
        EXPECT_EQ(version, reported) << before;
        EXPECT_EQ(readFile(name), opened) << before;
        EXPECT_FALSE(intruder.Open(name.c_str(), 1, 0, true, kShareReadWrite, nullptr));
        EXPECT_EQ(intruder.GetLastError(), std::errc::device_or_resource_busy);
        EXPECT_EQ(readFile(name), opened) << "overwriting waits for the lock";
        EXPECT_TRUE(write(file, "x") && file.Close());
        EXPECT_EQ(readFile(name), opened + "x") << before;
    }
}

TEST_F(FileWriteBuffer, PiecesStayWholeAndPositionsCountTheBuffer) {
    CFileWriteBuffer file;
    ASSERT_TRUE(file.Open(name.c_str(), 10, 0, true, kShareReadWrite, nullptr));
    using Add = bool (*)(CFileWriteBuffer&, const std::string&);
    const std::tuple<const char*, Add, std::string, std::size_t> rows[] = {
        {"buffered", write, "1234", 0},
        {"fits exactly", fill, "567890", 0},
        {"does not fit: the two before go", write, "ab", 10},
        {"larger than the buffer, in the buffer", fill, "ABCDEFGHIJKLMNO", 12},
        {"larger than the buffer", write, "01234567890123456789", 47}};
    std::string all;
    for (const auto& [what, add, piece, onDisk] : rows) {
        EXPECT_TRUE(add(file, piece)) << what;
        all += piece;
        EXPECT_EQ(readFile(name), all.substr(0, onDisk)) << what;
        EXPECT_EQ(positionOf(file), all.size()) << what;
    }
    EXPECT_TRUE(write(file, "tail") && file.WriteUnbuffered("!", 1));
    EXPECT_EQ(readFile(name), all + "tail!");
    EXPECT_TRUE(write(file, "?"));
    { const CFileWriteBuffer heir(file); }
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(readFile(name), all + "tail!?") << "the destructor flushes";
}

TEST_F(FileWriteBuffer, FullDiskKeepsAcceptedPiecesInTheirPlace) {
    CFileWriteBuffer file;
    ASSERT_TRUE(file.Open(name.c_str(), 8, 0, true, kShareReadWrite, nullptr));
    ASSERT_TRUE(file.WriteUnbuffered("0000", 4));
    {
        const FileSizeLimit full(6);
        EXPECT_FALSE(file.WriteUnbuffered("1111", 4));
        EXPECT_EQ(file.GetLastError(), std::errc::file_too_large);
        EXPECT_EQ(positionOf(file), 4u) << "a refused piece has no position";
        EXPECT_TRUE(write(file, "2222") && fill(file, "3333"));
        EXPECT_FALSE(fill(file, "4444") || write(file, "4444") || file.Flush());
        EXPECT_EQ(positionOf(file), 12u);
        EXPECT_EQ(readFile(name), "0000");
    }
    EXPECT_TRUE(write(file, "5555") && file.Flush()) << "room again";
    EXPECT_EQ(readFile(name), "0000222233335555");
    EXPECT_EQ(file.GetLastError(), std::errc::file_too_large) << "kept until the next Open";
    const FileSizeLimit stillFull(16);
    EXPECT_TRUE(write(file, "6"));
    EXPECT_FALSE(file.Close()) << "the last byte is lost, and that is reported";
    const FileSizeLimit noRoom(3);
    std::uint32_t version = 2;
    EXPECT_FALSE(file.Open(folder.path("new").c_str(), 8, 0, false, kShareReadWrite, &version));
    EXPECT_EQ(readFile(folder.path("new")), "") << "no part of a version word";
}

TEST_F(FileReadBuffer, GivesExactlyWhatTheFileHolds) {
    constexpr std::size_t kSize = 3 << 20;
    std::mt19937 rng(3);
    std::string content(kSize, '\0');
    std::ranges::generate(content, [&] { return static_cast<char>(rng()); });
    writeFile(name, content);
    CFileReadBuffer file;
    ASSERT_TRUE(file.Open(name.c_str()));
    for (std::uint64_t i = 0; i < 500; ++i) {
        const std::uint64_t position = rng() % (kSize + 1), room = kSize - position;
        for (const std::uint64_t size : {rng() % (room + 1), room, std::min(room, i)}) {
            const unsigned char* data = file.GetData(position, size);
            ASSERT_NE(data, nullptr) << position << '+' << size;
            ASSERT_EQ(std::memcmp(data, content.data() + position, size), 0) << position << '+' << size;
        }
        ASSERT_EQ(file.GetData(position, room + 1), nullptr);
        ASSERT_EQ(file.GetData(position + room + 1, 0), nullptr);
        ASSERT_EQ(file.GetData(position + 1, ~std::uint64_t{0}), nullptr);
    }
    EXPECT_FALSE(file.GetLastError());
    const unsigned char* window = file.GetData(0, 4096);
    EXPECT_EQ(file.GetData(96, 4000), window + 96) << "no copy inside the window";
    EXPECT_EQ(CFileReadBuffer(file).GetData(96, 4000), window + 96) << "handed over with the file";
}

TEST_F(FileReadBuffer, FollowsAFileThatGrowsOrIsCutOff) {
    writeFile(name, "12345");
    CFileReadBuffer file;
    std::uint32_t version = 0;
    ASSERT_TRUE(file.Open(name.c_str(), kShareReadWrite, &version));
    EXPECT_EQ(version, 0x34333231U);
    EXPECT_EQ(file.GetData(0, 6), nullptr);
    writeFile(name, std::string(600000, 'x'));
    EXPECT_NE(file.GetData(5, 100), nullptr);
    writeFile(name, std::string(300000, 'x'));
    EXPECT_EQ(file.GetData(299990, 11), nullptr);
    EXPECT_NE(file.GetData(299990, 10), nullptr);
    writeFile(name, "123");
    EXPECT_FALSE(file.Open(name.c_str(), kShareReadWrite, &version)) << "no room for a version word";
}
