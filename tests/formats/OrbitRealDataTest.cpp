#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "formats/almanac/AlmanacReader.h"
#include "formats/sp3/PreciseOrbits.h"

namespace halvex {
namespace {

namespace fs = std::filesystem;
using sp3::PreciseOrbits;

class OrbitRealData : public testing::Test {
protected:
    void SetUp() override {
        const char* const data = std::getenv("HALVEX_DATA");
        if (data == nullptr) GTEST_SKIP() << "HALVEX_DATA is not set: no real data to read";
        m_data = data;
    }
    fs::path m_data;
};

double distance(const ORBIT_COORD& a, const ORBIT_COORD& b) {
    return std::hypot(a.x - b.x, a.y - b.y, a.z - b.z);
}

TEST_F(OrbitRealData, EveryFileHasItsSatellitesAtItsEpochs) {
    const struct {
        const char* name;
        std::size_t epochs;
        std::array<std::size_t, 5> satellites;  // G R E C J
        std::size_t noClock;
        std::size_t faultLine;
        bool endLineMissing;
    } rows[] = {
        {"sp3/COD0MGXFIN_20220010000_01D_05M_ORB.SP3.gz", 289, {32, 20, 24, 37, 3}, 128, 0, false},
        {"sp3/COD0MGXFIN_20212650000_01D_05M_ORB.SP3.gz", 289, {32, 21, 24, 37, 3}, 117, 0, false},
        {"sp3/igs21906.sp3.gz", 96, {32, 0, 0, 0, 0}, 0, 0, false},
        {"sp3/Sta21114.sp3.gz", 97, {31, 22, 24, 40, 4}, 118, 0, false},
        {"sp3/GRG0MGXFIN_20201770000_01D_15M_ORB.SP3.gz", 96, {30, 21, 24, 0, 0}, 0, 0, false},
        {"sp3/esa15253.sp3.gz", 96, {30, 18, 0, 0, 0}, 0, 0, false},
        {"odd/WUM0MGXULT_20220010000_01H_05M_ORB_one_sample_removed.SP3.gz", 12, {29, 20, 22, 39, 2}, 0, 0, true},
        {"odd/truncated.sp3", 1, {32, 0, 0, 0, 0}, 1, 38, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        sp3::Sp3Reader reader;
        ASSERT_TRUE(reader.open((m_data / row.name).string())) << reader.error().text();
        std::array<std::size_t, CALN::kSystemSlots> states{};
        std::size_t noClock = 0;
        std::size_t faultLine = 0;
        sp3::Epoch epoch;
        for (auto result = reader.next(epoch); result != sp3::Sp3Reader::Result::end; result = reader.next(epoch)) {
            if (result == sp3::Sp3Reader::Result::error) {
                faultLine = reader.error().line;
                continue;
            }
            for (const auto& state : epoch.states) {
                ++states[state.id.system];
                if (!state.clock) ++noClock;
                ASSERT_TRUE(state.position);
            }
        }
        EXPECT_EQ(reader.epochsRead(), row.epochs);
        constexpr std::array kSystems{CALN::eCALSATSYSTEM_GPS, CALN::eCALSATSYSTEM_GLONASS, CALN::eCALSATSYSTEM_GALILEO,
                                      CALN::eCALSATSYSTEM_BEIDOU, CALN::eCALSATSYSTEM_QZSS};
        for (std::size_t i = 0; i < kSystems.size(); ++i) {
            EXPECT_EQ(states[kSystems[i]], row.epochs * row.satellites[i]) << kSystems[i];
        }
        EXPECT_EQ(noClock, row.noClock);
        EXPECT_EQ(faultLine, row.faultLine);
        EXPECT_EQ(reader.endLineMissing(), row.endLineMissing);
    }
}

TEST_F(OrbitRealData, LeftOutEpochsAreFoundAgain) {
    const std::string name = m_data / "sp3/COD0MGXFIN_20220010000_01D_05M_ORB.SP3.gz";
    PreciseOrbits whole;
    ASSERT_TRUE(whole.read(name));
    // Every second epoch taken out of the text.
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
    lines.openBytes("thinned", thinned + "EOF\n");
    PreciseOrbits half;
    ASSERT_TRUE(half.read(std::move(lines)));
    std::size_t compared = 0;
    double worst = 0.0;
    for (const auto& satellite : whole.header().satellites) {
        for (std::size_t i = 1; i < whole.epochs().size(); i += 2) {
            const auto found = half.position(satellite.id, whole.epochs()[i]);
            if (!found) continue;
            ++compared;
            worst = std::max(worst, distance(*found, *whole.position(satellite.id, whole.epochs()[i])));
        }
    }
    RecordProperty("worst", std::to_string(worst));
    EXPECT_EQ(compared, 116U * 135U);
    EXPECT_LT(worst, 0.01);
}

/// Two centres' orbits of the same day agree, one of them interpolated.
TEST_F(OrbitRealData, CentresAgree) {
    PreciseOrbits fine;
    PreciseOrbits coarse;
    ASSERT_TRUE(fine.read(m_data / "sp3/COD0MGXFIN_20220010000_01D_05M_ORB.SP3.gz"));
    ASSERT_TRUE(coarse.read(m_data / "sp3/igs21906.sp3.gz"));
    std::size_t compared = 0;
    for (const auto& satellite : coarse.header().satellites) {
        for (const SMjdTime& time : fine.epochs()) {
            const auto a = fine.position(satellite.id, time);
            const auto b = coarse.position(satellite.id, time);
            if (!a || !b) continue;
            ++compared;
            ASSERT_LT(distance(*a, *b), 0.15) << int{satellite.id.number} << " at " << time.GetAsMjd();
        }
    }
    EXPECT_GT(compared, 32U * 250U);
}

TEST_F(OrbitRealData, Almanacs) {
    const struct {
        const char* name;
        std::size_t records;
        SMjdTime reference, toa;
    } rows[] = {
        {"almanac/yuma819.txt", 31, {2015, 1, 1, 0, 0, 0.0}, {1843, 319488.0}},
        {"almanac/sem387.txt", 30, {2010, 1, 1, 0, 0, 0.0}, {1411, 589824.0}},
    };
    for (const auto& row : rows) {
        FormatError error;
        const auto reader = almanac::openAlmanac((m_data / row.name).string(), error, row.reference);
        ASSERT_TRUE(reader) << error.text();
        CALN::CALX_SAT_ALMANAC almanac;
        std::size_t records = 0;
        for (; reader->next(almanac) == almanac::AlmanacReader::Result::record; ++records) {
            EXPECT_EQ(almanac.GetReferenceTime(), row.toa);
            EXPECT_NEAR(almanac.i, 0.96, 0.08) << int{almanac.satId};
            EXPECT_NEAR(almanac.omegaDot, -8e-9, 6e-10) << int{almanac.satId};
            EXPECT_NEAR(almanac.sqrtA, 5153.6, 3.0) << int{almanac.satId};
        }
        EXPECT_EQ(records, row.records) << reader->error().text();
    }
}

}  // namespace
}  // namespace halvex
