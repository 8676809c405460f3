#include <gtest/gtest.h>

#include <cstring>
#include <string>

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
    if (space != nullptr) std::memcpy(space, piece.data(), piece.size());
    return space != nullptr;
}

std::uint64_t positionOf(CFileWriteBuffer& file) {
    std::uint64_t position = ~std::uint64_t{0};
    EXPECT_TRUE(file.GetFilePosition(position));
    return position;
}

}  // namespace

TEST(FileWriteBuffer, VersionWordIsWrittenOrReported) {
    const TemporaryFolder folder;
    struct Row {
        std::string before;
        bool overwrite;
        std::uint32_t reported;
        std::string after;  // after appending "x"
    };
    const Row rows[] = {{"", false, 2, kVersion2 + "x"},
                        {"\7\7\7", false, 2, kVersion2 + "x"},
                        {kVersion2, false, 2, kVersion2 + "x"},
                        {"\1\2\3\4old", false, 0x04030201, "\1\2\3\4oldx"},
                        {"\1\2\3\4old", true, 2, kVersion2 + "x"}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.before);
        const std::string name = folder.path("file");
        writeFile(name, row.before);
        CFileWriteBuffer file;
        std::uint32_t version = 2;
        ASSERT_TRUE(file.Open(name.c_str(), 100, 0, row.overwrite, kShareReadWrite, &version));
        EXPECT_EQ(version, row.reported);
        EXPECT_EQ(file.GetFileSizeEx(), row.after.size() - 1) << "the word is there at once";
        EXPECT_TRUE(write(file, "x"));
        EXPECT_TRUE(file.Close());
        EXPECT_EQ(readFile(name), row.after);
    }
}

TEST(FileWriteBuffer, OverwritingWaitsForTheLock) {
    const TemporaryFolder folder;
    const std::string name = folder.path("file");
    CFileWriteBuffer owner, intruder;
    ASSERT_TRUE(owner.Open(name.c_str(), 1, 0, true, kShareNone, nullptr));
    ASSERT_TRUE(write(owner, "precious"));
    EXPECT_FALSE(intruder.Open(name.c_str(), 1, 0, true, kShareReadWrite, nullptr));
    EXPECT_EQ(intruder.GetLastError(), std::errc::device_or_resource_busy);
    EXPECT_EQ(readFile(name), "precious");
}

TEST(FileWriteBuffer, PiecesStayWholeAndPositionsCountTheBuffer) {
    const TemporaryFolder folder;
    const std::string name = folder.path("file");
    CFileWriteBuffer file;
    ASSERT_TRUE(file.Open(name.c_str(), 10, 0, true, kShareReadWrite, nullptr));
    struct Row {
        const char* what;
        bool (*add)(CFileWriteBuffer&, const std::string&);
        std::string piece;
        std::size_t onDisk;
    };
    const Row rows[] = {{"buffered", write, "1234", 0},
                        {"fits exactly", fill, "567890", 0},
                        {"does not fit: the two before go", write, "ab", 10},
                        {"larger than the buffer, in the buffer", fill, "ABCDEFGHIJKLMNO", 12},
                        {"larger than the buffer", write, "01234567890123456789", 47},
                        {"nothing", fill, "", 47}};
    std::string all;
    for (const Row& row : rows) {
        EXPECT_TRUE(row.add(file, row.piece)) << row.what;
        all += row.piece;
        EXPECT_EQ(readFile(name), all.substr(0, row.onDisk)) << row.what;
        EXPECT_EQ(positionOf(file), all.size()) << row.what;
    }
    EXPECT_TRUE(write(file, "tail"));
    EXPECT_TRUE(file.WriteUnbuffered("!", 1));
    EXPECT_EQ(readFile(name), all + "tail!");
    EXPECT_TRUE(write(file, "?"));
    CFileWriteBuffer heir(file);
    EXPECT_FALSE(file.IsOpen());
    EXPECT_FALSE(write(file, "lost"));
    EXPECT_EQ(positionOf(heir), all.size() + 6);
    { const CFileWriteBuffer last(std::move(heir)); }
    EXPECT_EQ(readFile(name), all + "tail!?") << "the destructor flushes";
}

TEST(FileWriteBuffer, FullDiskKeepsAcceptedPiecesInTheirPlace) {
    const TemporaryFolder folder;
    const std::string name = folder.path("file");
    CFileWriteBuffer file;
    ASSERT_TRUE(file.Open(name.c_str(), 8, 0, true, kShareReadWrite, nullptr));
    ASSERT_TRUE(file.WriteUnbuffered("0000", 4));
    {
        const FileSizeLimit full(6);
        EXPECT_FALSE(file.WriteUnbuffered("1111", 4));
        EXPECT_EQ(file.GetLastError(), std::errc::file_too_large);
        EXPECT_EQ(positionOf(file), 4u) << "a refused piece has no position";
        EXPECT_TRUE(write(file, "2222"));
        EXPECT_TRUE(fill(file, "3333"));
        EXPECT_EQ(file.GetSpace(4), nullptr);
        EXPECT_FALSE(write(file, "4444"));
        EXPECT_FALSE(file.Flush());
        EXPECT_EQ(positionOf(file), 12u);
        EXPECT_EQ(readFile(name), "0000");
    }
    EXPECT_TRUE(write(file, "5555")) << "room again";
    EXPECT_TRUE(file.Flush());
    EXPECT_EQ(readFile(name), "0000222233335555");
    EXPECT_EQ(file.GetLastError(), std::errc::file_too_large) << "kept until the next Open";
    const FileSizeLimit stillFull(16);
    EXPECT_TRUE(write(file, "6"));
    EXPECT_FALSE(file.Close()) << "the last byte is lost, and that is reported";
}

TEST(FileWriteBuffer, FullDiskLeavesNoPartOfAVersionWord) {
    const TemporaryFolder folder;
    CFileWriteBuffer file;
    const FileSizeLimit full(3);
    std::uint32_t version = 2;
    EXPECT_FALSE(file.Open(folder.path("file").c_str(), 8, 0, false, kShareReadWrite, &version));
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(readFile(folder.path("file")), "");
}

TEST(FileReadBuffer, GivesExactlyWhatTheFileHolds) {
    constexpr std::size_t kSize = 3 << 20;
    const TemporaryFolder folder;
    const std::string name = folder.path("file");
    std::string content(kSize, '\0');
    for (std::size_t i = 0; i < kSize; ++i) content[i] = static_cast<char>(i * 7 + i / 251);
    writeFile(name, content);
    CFileReadBuffer file;
    std::uint32_t version = 0;
    ASSERT_TRUE(file.Open(name.c_str(), kShareReadWrite, &version));
    EXPECT_EQ(version, 0x150e0700u);

    struct Row {
        std::uint64_t position, size;
    };
    const Row rows[] = {{0, 10},      {262140, 8},    {100, 4},
                        {5, 2 << 20}, {kSize - 1, 1}, {0, kSize},
                        {kSize, 0},   {7, 0},         {kSize - 262144, 262144}};
    for (const Row& row : rows) {
        const unsigned char* data = file.GetData(row.position, row.size);
        ASSERT_NE(data, nullptr) << row.position << '+' << row.size;
        EXPECT_EQ(std::memcmp(data, content.data() + row.position, row.size), 0) << row.position << '+' << row.size;
    }
    constexpr std::uint64_t kMax = ~std::uint64_t{0};
    const Row outside[] = {{0, kSize + 1}, {kSize, 1}, {kSize + 1, 0}, {1, kMax}, {kMax, kMax}, {4, 1ull << 40}};
    for (const Row& row : outside) EXPECT_EQ(file.GetData(row.position, row.size), nullptr) << row.position;
    EXPECT_FALSE(file.GetLastError());

    const unsigned char* window = file.GetData(0, 4096);
    EXPECT_EQ(file.GetData(96, 4000), window + 96) << "no copy inside the window";
}

TEST(FileReadBuffer, FollowsAFileThatGrowsOrIsCutOff) {
    const TemporaryFolder folder;
    const std::string name = folder.path("file");
    writeFile(name, "12345");
    CFileReadBuffer file;
    std::uint32_t version = 0;
    ASSERT_TRUE(file.Open(name.c_str()));
    ASSERT_NE(file.GetData(0, 5), nullptr);
    EXPECT_EQ(file.GetData(0, 6), nullptr);
    writeFile(name, std::string(600000, 'x'));
    EXPECT_EQ(file.GetFileSizeEx(), 600000u);
    ASSERT_NE(file.GetData(5, 100), nullptr);
    writeFile(name, std::string(300000, 'x'));
    EXPECT_EQ(file.GetData(299990, 11), nullptr);
    EXPECT_NE(file.GetData(299990, 10), nullptr);
    writeFile(name, "123");
    EXPECT_FALSE(file.Open(name.c_str(), kShareReadWrite, &version)) << "no room for a version word";
    EXPECT_FALSE(file.IsOpen());
}
