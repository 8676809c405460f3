#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <latch>
#include <thread>

#include "halvex/platform/kernix/Registry.h"
#include "halvex/status/SatelliteSystemDisablingHelper.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/Environment.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using namespace halvex::test;

constexpr const char* kKey = "SOFTWARE\\Tavro Ostwerk\\GPS Halvex";
constexpr const char* kName = "DisabledSatSystems";

class Switch : public CSatelliteSystemDisablingHelper {
public:
    static bool isSet(int system, std::int32_t mask) { return IsSatSystemDisabled(system, mask); }
};

/// A registry file of its own; all systems enabled afterwards.
class SystemSwitch : public testing::Test {
protected:
    ~SystemSwitch() override { Switch::SetSatSystemDisableMask(0, false); }
    TemporaryFolder m_folder;
    std::string m_file = m_folder.path("registry.info");
    ScopedVariable m_place{"HALVEX_REGISTRY", m_file.c_str()};
    CapturedLog m_log;
};

TEST_F(SystemSwitch, BitsOfEverySystemCode) {
    const std::pair<int, unsigned> rows[] = {{1, 0},   {7, 6},        {32, 31},      {33, 0},         {0, 31},
                                             {-1, 30}, {INT_MIN, 31}, {INT_MAX, 30}, {INT_MIN + 1, 0}};
    for (const auto& [system, bit] : rows) {
        const auto mask = static_cast<std::int32_t>(1U << bit);
        EXPECT_TRUE(Switch::isSet(system, mask) && !Switch::isSet(system, ~mask)) << system;
        Switch::SetSatSystemDisableMask(0, false);
        EXPECT_TRUE(Switch::SetSatSystemDisabled(system, true, false));
        EXPECT_EQ(Switch::GetSatSystemDisableMask(), mask) << system;
        Switch::SetSatSystemDisableMask(-1, false);
        EXPECT_TRUE(Switch::SetSatSystemDisabled(system, false, false));
        EXPECT_EQ(Switch::GetSatSystemDisableMask(), ~mask) << system;
    }
    EXPECT_FALSE(std::filesystem::exists(m_file)) << "nothing was kept";
}

TEST_F(SystemSwitch, FirstEnabledSystemAndIdentifiers) {
    const std::pair<std::int32_t, int> rows[] = {{0x3, 3}, {0x7F, 8}, {0xFF, 0}, {~0xFF, 1}};
    for (const auto& [mask, first] : rows) {
        Switch::SetSatSystemDisableMask(mask, false);
        EXPECT_EQ(Switch::GetFirstEnabledSatSystem(), first) << mask;
    }
    Switch::SetSatSystemDisableMask(0x10, false);
    const CALN::SCalSatID beidou(CALN::eCALSATSYSTEM_BEIDOU, 7), gps(CALN::eCALSATSYSTEM_GPS, 7);
    EXPECT_TRUE(Switch::IsSatSystemDisabled(beidou) && Switch::IsSatSystemDisabled(MDB::CPrnIdZ9(beidou)));
    EXPECT_FALSE(Switch::IsSatSystemDisabled(gps) || Switch::IsSatSystemDisabled(MDB::CPrnIdZ9(gps)));
}

TEST_F(SystemSwitch, KeepingTheMask) {
    EXPECT_TRUE(Switch::SetSatSystemDisableMask(INT_MIN | 2, true));
    EXPECT_EQ(REG::GetLong(kKey, kName, 0), INT_MIN | 2);
    EXPECT_TRUE(Switch::SetSatSystemDisabled(2, false, true));
    EXPECT_EQ(REG::GetLong(kKey, kName, 0), INT_MIN);

    writeFile(m_file, "key {");
    EXPECT_FALSE(Switch::SetSatSystemDisableMask(4, true)) << "a damaged registry stays";
    EXPECT_EQ(Switch::GetSatSystemDisableMask(), 4) << "in force all the same";
    EXPECT_EQ(readFile(m_file), "key {");
    const ScopedVariable noFolder("HALVEX_REGISTRY", (m_file + "/below/a/file").c_str());
    EXPECT_TRUE(!Switch::SetSatSystemDisabled(1, true, true) && Switch::GetSatSystemDisableMask() == 5);
}

/// Counts the reads, which wait until they may go on.
class SlowStore final : public REG::Store {
public:
    std::optional<REG::Value> read(std::string_view key, std::string_view name) override {
        ++reads;
        reading.count_down();
        goOn.wait();
        return key == kKey && name == kName ? std::optional<REG::Value>(3) : std::nullopt;
    }
    bool write(std::string_view, std::string_view, const REG::Value&) override { return true; }
    std::latch reading{1}, goOn{1};
    int reads = 0;
};

// The first read is a process's only one, so each case runs in a process of its own.
TEST(SystemSwitchDeathTest, TheFirstReadIsTheOnlyOne) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto readOnce = [] {
        SlowStore store;
        store.goOn.count_down();
        const REG::ScopedStore scope(store);
        return Switch::GetSatSystemDisableMask() == 3 && Switch::GetFirstEnabledSatSystem() == 3 && store.reads == 1;
    };
    EXPECT_EXIT(std::_Exit(readOnce() ? 0 : 1), testing::ExitedWithCode(0), "");
    const auto setMeanwhile = [] {
        SlowStore store;
        const REG::ScopedStore scope(store);
        std::int32_t seen = 0;
        std::thread reader([&seen] { seen = Switch::GetSatSystemDisableMask(); });
        store.reading.wait();
        Switch::SetSatSystemDisableMask(8, false);
        store.goOn.count_down();
        reader.join();
        return seen == 8 && Switch::GetSatSystemDisableMask() == 8 && store.reads == 1;
    };
    // A setting is not undone by a slow read.
    EXPECT_EXIT(std::_Exit(setMeanwhile() ? 0 : 1), testing::ExitedWithCode(0), "");
}

}  // namespace
