#include <map>
#include <tuple>

#include "formats/rinex/NavigationReader.h"
#include "formats/rinex/SatelliteName.h"
#include "formats/sp3/PreciseOrbits.h"
#include "tests/formats/RealData.h"

namespace halvex {
namespace {

using OrbitRealData = test::RealData;

/// Records by system and, in version 4, by the number of their kind.
TEST_F(OrbitRealData, NavigationRecordsOfEverySystemAndMessage) {
    const std::pair<const char*, std::string> files[] = {
        {"nav/BRDC00IGS_R_20220010000_01D_MN.rnx.gz", "C 1056, E 5675, G 422, J 120, R 1104, S 10375, "},
        {"nav/ESBC00DNK_R_20201770000_01D_MN.rnx.gz", "C 357, E 1602, G 257, J 15, R 510, S 2130, "},
        {"nav/SEPT2650.21P", "E 253, G 49, J 19, "},
        {"nav/JDPR00IND_R_20241460600_01H_30S_MN.rnx", "C 37, E 96, G 22, I 13, J 8, R 26, "},
        {"nav/brdc0910.09n.gz", "G 424, "},
        {"nav/brdc0910.09g.gz", "R 912, "},
        {"nav/BRD400DLR_S_20220010000_01D_MN.rnx.gz",
         "C12 96, C13 1, C14 11, C16 10, C5 894, C6 175, C7 649, C8 651, C9 472, E12 2, E15 3, E4 5701, G0 423, "
         "G1 315, G12 9, G13 3, G14 4, I10 153, I12 4, I13 1, I14 2, J0 121, J1 205, J12 4, J13 75, J14 276, J2 199, "
         "R12 2, R3 1106, S11 8577, "},
        {"odd/spare_filled_nav3.rnx", "E 2, G 4, R 1, "},
        {"odd/galileo3.15n", "E 2, :29: E12: columns 62 to 80: \" . 000000000000D+00\" is no number"},
        {"odd/test_input_rinex2_nav_BadHeader.99n", ":1: a header line has 80 columns; this one goes on behind them"},
        {"odd/test_input_rinex3_nav_BadHeader.15n",
         ":1: RINEX VERSION / TYPE: version 3.33 is not supported; 2.00 to 2.12, 3.00 to 3.05 and 4.0x are"}};
    using Result = rinex::NavigationReader::Result;
    for (const auto& [file, want] : files) {
        const std::string name = path(file);
        rinex::NavigationReader reader;
        rinex::NavigationRecord record;
        std::map<std::string, int> counts;
        std::string told, error;
        auto result = reader.open(name) ? reader.next(record) : Result::error;
        for (; result != Result::end; result = reader.next(record)) {
            const std::string kind = std::to_string(static_cast<int>(reader.kind()));
            if (result == Result::error) {
                error = reader.error().text().substr(name.size());
            } else {
                ++counts[rinex::satelliteName(reader.satellite())[0] + (reader.header().version < 4.0 ? "" : kind)];
            }
        }
        for (const auto& [kind, count] : counts) told += kind + ' ' + std::to_string(count) + ", ";
        EXPECT_EQ(told + error, want) << name;
        EXPECT_TRUE(reader.skipped().empty());
    }
}

TEST_F(OrbitRealData, EveryFileHasItsSatellitesAtItsEpochs) {
    const std::tuple<const char*, std::size_t, std::size_t, bool, const char*> rows[] = {
        {"sp3/COD0MGXFIN_20220010000_01D_05M_ORB.SP3.gz", 289, 116, false, ""},
        {"sp3/igs21906.sp3.gz", 96, 32, false, ""},
        {"sp3/Sta21114.sp3.gz", 97, 121, false, ""},
        {"sp3/GRG0MGXFIN_20201770000_01D_15M_ORB.SP3.gz", 96, 75, false, ""},
        {"odd/WUM0MGXULT_20220010000_01H_05M_ORB_one_sample_removed.SP3.gz", 12, 112, true, ""},
        {"odd/truncated.sp3", 1, 32, true, ":38: the file ends inside an epoch: 0 of 32 satellites"},
    };
    for (const auto& [file, epochs, satellites, endLineMissing, fault] : rows) {
        SCOPED_TRACE(file);
        const std::string name = path(file);
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

}  // namespace
}  // namespace halvex
