#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <tuple>

#include "formats/almanac/AlmanacReader.h"
#include "formats/sp3/PreciseOrbits.h"

namespace halvex {
namespace {

class OrbitRealData : public testing::Test {
protected:
    void SetUp() override {
        if (std::getenv("HALVEX_DATA") == nullptr) GTEST_SKIP() << "HALVEX_DATA is not set: no real data to read";
        m_data = std::getenv("HALVEX_DATA");
    }
    std::filesystem::path m_data;
};

TEST_F(OrbitRealData, EveryFileHasItsSatellitesAtItsEpochs) {
    const std::tuple<const char*, std::size_t, std::size_t, bool, const char*> rows[] = {
        {"sp3/COD0MGXFIN_20220010000_01D_05M_ORB.SP3.gz", 289, 116, false, ""},
        {"sp3/COD0MGXFIN_20212650000_01D_05M_ORB.SP3.gz", 289, 117, false, ""},
        {"sp3/igs21906.sp3.gz", 96, 32, false, ""},
        {"sp3/Sta21114.sp3.gz", 97, 121, false, ""},
        {"sp3/GRG0MGXFIN_20201770000_01D_15M_ORB.SP3.gz", 96, 75, false, ""},
        {"sp3/esa15253.sp3.gz", 96, 48, false, ""},
        {"odd/WUM0MGXULT_20220010000_01H_05M_ORB_one_sample_removed.SP3.gz", 12, 112, true, ""},
        {"odd/truncated.sp3", 1, 32, true, ":38: the file ends inside an epoch: 0 of 32 satellites"},
    };
    for (const auto& [file, epochs, satellites, endLineMissing, fault] : rows) {
        SCOPED_TRACE(file);
        const std::string name = m_data / file;
        sp3::PreciseOrbits orbits;
        ASSERT_TRUE(orbits.read(name));
        EXPECT_EQ(orbits.endLineMissing(), endLineMissing);
        EXPECT_EQ(orbits.errors().empty() ? "" : orbits.errors().front().text().substr(name.size()), fault);
        EXPECT_EQ(orbits.epochs().size(), epochs);
        EXPECT_EQ(orbits.header().satellites.size(), satellites);
        for (const auto& satellite : orbits.header().satellites) {
            for (const SMjdTime& time : orbits.epochs()) ASSERT_TRUE(orbits.position(satellite.id, time));
        }
    }
}

TEST_F(OrbitRealData, LeftOutEpochsAreFoundAgain) {
    const std::string name = m_data / "sp3/COD0MGXFIN_20220010000_01D_05M_ORB.SP3.gz";
    LineReader lines;
    ASSERT_TRUE(lines.open(name));
    std::string thinned;
    std::size_t epochs = 0;
    while (const auto line = lines.next()) {
        if (line->starts_with('*')) ++epochs;
        std::string text(*line);
        if (text.starts_with("## ")) text.replace(text.find("  300.0"), 7, "  600.0");
        if (epochs % 2 != 0 || epochs == 0) thinned += text + '\n';
    }
    lines.openBytes("thinned", thinned);
    sp3::PreciseOrbits whole, half;
    ASSERT_TRUE(whole.read(name) && half.read(std::move(lines)));
    std::size_t compared = 0;
    for (const auto& satellite : whole.header().satellites) {
        for (std::size_t i = 1; i < whole.epochs().size(); i += 2) {
            const SMjdTime& time = whole.epochs()[i];
            const ORBIT_COORD want = whole.position(satellite.id, time).value_or(ORBIT_COORD());
            const ORBIT_COORD found = half.position(satellite.id, time).value_or(ORBIT_COORD());
            if (found == ORBIT_COORD()) continue;
            ++compared;
            ASSERT_LT(std::hypot(found.x - want.x, found.y - want.y, found.z - want.z), 0.01);
        }
    }
    EXPECT_EQ(compared, 116U * 135U);
}

TEST_F(OrbitRealData, Almanacs) {
    const std::tuple<const char*, std::size_t, SMjdTime> rows[] = {
        {"almanac/yuma819.txt", 31, {1843, 319488.0}},
        {"almanac/sem387.txt", 30, {1411, 589824.0}},
    };
    for (const auto& [name, count, toa] : rows) {
        FormatError error;
        const auto reader = almanac::openAlmanac(m_data / name, error, toa);
        ASSERT_TRUE(reader) << error.text();
        CALN::CALX_SAT_ALMANAC almanac;
        std::size_t records = 0;
        for (; reader->next(almanac) == almanac::AlmanacReader::Result::record; ++records) {
            EXPECT_EQ(almanac.GetReferenceTime(), toa);
            EXPECT_NEAR(almanac.i, 0.96, 0.08);
            EXPECT_NEAR(almanac.omegaDot, -8e-9, 6e-10);
        }
        EXPECT_EQ(records, count) << reader->error().text();
    }
}

}  // namespace
}  // namespace halvex
