#include "halvex/platform/os/File.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <string>
#include <tuple>

#include "tests/support/FileSizeLimit.h"
#include "tests/support/TemporaryFolder.h"

using namespace halvex::test;
using os::kShareNone, os::kShareReadWrite;

namespace {

std::span<const unsigned char> bytesOf(std::string_view text) {
    return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

}  // namespace

TEST(File, RefusesWhatIsNotARegularFileByACode) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    const std::pair<std::string, std::errc> rows[] = {
        {"", std::errc::invalid_argument},
        {folder.path(""), std::errc::is_a_directory},
        {folder.path("pipe"), std::errc::invalid_argument},
        {folder.path("no/such/file"), std::errc::no_such_file_or_directory}};
    for (const auto& [name, want] : rows) {
        os::File file;
        EXPECT_EQ(file.openForReading(name.c_str(), kShareReadWrite), want) << name;
        EXPECT_TRUE(file.openForWriting(name.c_str(), kShareReadWrite)) << name;
        EXPECT_FALSE(file.isOpen()) << name;
    }
    EXPECT_EQ(os::File().openForReading(nullptr, kShareReadWrite), std::errc::invalid_argument);
    EXPECT_EQ(os::File().openForWriting(folder.path("file").c_str(), 1), std::errc::invalid_argument) << "share mode";
}

TEST(File, ShareModesHoldWithinTheProcessAndAcrossProcesses) {
    const TemporaryFolder folder;
    const std::string name = folder.path("file");
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

TEST(File, AppendsWholeOrNotAtAll) {
    const TemporaryFolder folder;
    const std::string name = folder.path("file");
    os::File file;
    ASSERT_FALSE(file.openForWriting(name.c_str(), kShareReadWrite));
    ASSERT_FALSE(file.append(bytesOf("12345")));
    {
        const FileSizeLimit full(8);
        EXPECT_EQ(file.append(bytesOf("abcdef")), std::errc::file_too_large);
        EXPECT_EQ(readFile(name), "12345");
        EXPECT_FALSE(file.append(bytesOf("abc")));
    }
    os::File other;
    ASSERT_FALSE(other.openForWriting(name.c_str(), kShareReadWrite));
    ASSERT_FALSE(other.append(bytesOf("+")));
    ASSERT_FALSE(file.append(bytesOf("-")));
    EXPECT_EQ(readFile(name), "12345abc+-");

    unsigned char bytes[4];
    std::size_t count = 0;
    EXPECT_FALSE(file.readAt(8, bytes, count));
    EXPECT_EQ(count, 2u);
    EXPECT_TRUE(file.readAt(~std::uint64_t{0} - 2, bytes, count));
}
