#include "halvex/platform/kernix/Registry.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <thread>

#include "tests/support/CapturedLog.h"
#include "tests/support/Environment.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using namespace halvex::test;

namespace fs = std::filesystem;

constexpr const char* kKey = "SOFTWARE\\Tavro Ostwerk\\GPS Halvex";

class Registry : public testing::Test {
protected:
    TemporaryFolder m_folder;
    std::string m_file = m_folder.path("new/registry.info");
    ScopedVariable m_place{"HALVEX_REGISTRY", m_file.c_str()};
    CapturedLog m_log;
};

TEST_F(Registry, MissingValuesAreTheirDefaultsAndTheFileIsPinned) {
    EXPECT_EQ(REG::GetLong(kKey, "DisabledSatSystems", 5), 5);
    EXPECT_FALSE(fs::exists(m_file)) << "reading creates nothing";
    EXPECT_EQ(REG::GetLong(kKey, "DisabledSatSystems", 5, true), 5);
    EXPECT_EQ(REG::GetLong(kKey, "DisabledSatSystems", 6, true), 5) << "written with its default";
    EXPECT_EQ(readFile(m_file),
              "key \"SOFTWARE\\\\Tavro Ostwerk\\\\GPS Halvex\"\n{\n    value DisabledSatSystems\n    {\n"
              "        long 5\n    }\n}\n");
    EXPECT_FALSE(fs::exists(m_file + ".new"));
    EXPECT_TRUE(m_log.take().empty());
}

TEST_F(Registry, ValuesAndNamesComeBackWhateverTheyContain) {
    const CommaLocale comma;
    const std::string texts[] = {"",       "#include \"x\"",       "a.b|c", "\"; } {", "\n\r\t",
                                 "back\\", std::string("n\0l", 3), "\xff"};
    const std::size_t count = std::size(texts);
    for (std::size_t i = 0; i < count; ++i) ASSERT_TRUE(REG::WriteString(texts[i], texts[count - 1 - i], texts[i]));
    for (std::size_t i = 0; i < count; ++i) EXPECT_EQ(REG::GetString(texts[i], texts[count - 1 - i], "?"), texts[i]);
    ASSERT_TRUE(REG::WriteLong(kKey, "Number", INT32_MIN));
    EXPECT_EQ(REG::GetLong(kKey, "Number", 7), INT32_MIN);
    EXPECT_EQ(REG::GetString(kKey, "Number", "other type"), "other type");
}

TEST_F(Registry, ADamagedFileGivesDefaultsAndStays) {
    fs::create_directories(m_folder.path("new"));
    for (const std::string text : {"key {", "}", "key \"", "#include \"registry.info\"\n", "  #include \"x\"\n"}) {
        writeFile(m_file, text);
        m_log.take();
        EXPECT_EQ(REG::GetLong(kKey, "Mask", 9, true), 9) << text;
        EXPECT_FALSE(REG::WriteLong(kKey, "Mask", 4)) << text;
        EXPECT_EQ(readFile(m_file), text);
        EXPECT_EQ(m_log.take().size(), 1U) << text;
        fs::remove(m_file);
        EXPECT_EQ(REG::GetLong(kKey, "Mask", 8), 8) << "readable again: the next damage is logged anew";
    }
    ASSERT_EQ(::mkfifo(m_file.c_str(), 0600), 0);
    EXPECT_EQ(REG::GetLong(kKey, "Mask", 7), 7) << "nobody waits for a pipe";
}

TEST_F(Registry, TheUsersConfigurationFolder) {
    const ScopedVariable noFile("HALVEX_REGISTRY", nullptr);
    const ScopedVariable home("HOME", m_folder.path("").c_str());
    for (const std::string& config : {std::string("relative"), m_folder.path("xdg")}) {
        const ScopedVariable folder("XDG_CONFIG_HOME", config.c_str());
        EXPECT_TRUE(REG::WriteLong(kKey, "Mask", 1));
    }
    EXPECT_TRUE(fs::exists(m_folder.path(".config/halvex/registry.info"))) << "in place of a relative one";
    EXPECT_TRUE(fs::exists(m_folder.path("xdg/halvex/registry.info")));
}

TEST_F(Registry, WritersOfSeveralThreadsAndProcessesLoseNothing) {
    const auto write = [](const std::string& who) {
        int written = 0;
        for (int i = 0; i < 20; ++i) written += REG::WriteLong(kKey, who + std::to_string(i), i) ? 1 : 0;
        return written == 20;
    };
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) ::_exit(write("child") ? 0 : 1);
    std::thread other([&] { EXPECT_TRUE(write("other")); });
    EXPECT_TRUE(write("main"));
    other.join();
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    for (const char* who : {"child", "other", "main"}) {
        for (int i = 0; i < 20; ++i) EXPECT_EQ(REG::GetLong(kKey, who + std::to_string(i), -1), i) << who;
    }
}

}  // namespace
