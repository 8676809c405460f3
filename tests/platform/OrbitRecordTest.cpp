#include <gtest/gtest.h>

#include "halvex/platform/caln/AlmanacRecords.h"
#include "halvex/platform/caln/EphemerisBeidou.h"
#include "halvex/platform/caln/EphemerisGalileo.h"
#include "halvex/platform/caln/EphemerisGlonass.h"
#include "halvex/platform/caln/EphemerisGps.h"
#include "halvex/platform/caln/EphemerisNavic.h"
#include "halvex/platform/caln/IonoUtc.h"
#include "halvex/platform/pio/Rtcm3.h"
#include "tests/support/Bytes.h"
#include "tests/support/RandomFields.h"

namespace {

using namespace halvex::test;

/// Saved size of a record: the version and every one of its fields. A field left out of its list shows here.
template <class Record, std::size_t Size>
struct Sized {
    using Type = Record;
    static constexpr std::size_t kSize = Size;
};

template <class Row>
class OrbitRecord : public testing::Test {};
using Rows = testing::Types<Sized<CALN::CALX_SAT_EPHEMERIS, 301>, Sized<CALN::CALX_SAT_EPHEMERIS_QZSS, 301>,
                            Sized<CALN::CALX_SAT_EPHEMERIS_GALILEO, 229>, Sized<CALN::CALX_SAT_EPHEMERIS_BEIDOU, 282>,
                            Sized<CALN::CALX_SAT_EPHEMERIS_NAVIC, 212>, Sized<CALN::CALX_SAT_EPHEMERIS_GLONASS, 149>,
                            Sized<CALN::CALX_SAT_ALMANAC, 87>, Sized<CALN::CALX_SAT_ALMANAC_GALILEO, 88>,
                            Sized<CALN::CALX_SAT_ALMANAC_BEIDOU, 87>, Sized<CALN::CALX_SAT_ALMANAC_QZSS, 87>,
                            Sized<CALN::CALX_SAT_ALMANAC_NAVIC, 95>, Sized<CALN::CALX_SAT_ALMANAC_GLONASS, 90>,
                            Sized<CALN::CALX_IONO_UTC, 106>, Sized<CALN::CALX_CLOCK_GLONASS, 47>>;
TYPED_TEST_SUITE(OrbitRecord, Rows);

TYPED_TEST(OrbitRecord, RoundTripShortLengthsAndVersions) {
    using Record = typename TypeParam::Type;
    RandomFields random;
    for (int i = 0; i < 20; ++i) {
        const auto record = randomRecord<Record>(random);
        ASSERT_EQ(record.getSize(), TypeParam::kSize);
        expectSavedForm(record, Record(), saved(record));
        Bytes bytes = saved(record);
        EXPECT_TRUE(bytes[0] == 1 && bytes[1] == 0);
        Record other;
        for (const int version : {0, 2, 255}) {
            bytes[0] = static_cast<unsigned char>(version);
            EXPECT_FALSE(other.loadData(bytes.data(), bytes.size()));
        }
        EXPECT_TRUE(other == Record());
    }
}

TEST(Rtcm3, CheckSum) {
    // The check value of CRC-24 with this polynomial and start 0 in the catalogues of parametrised CRCs.
    const std::string_view digits = "123456789";
    const std::vector<unsigned char> text(digits.begin(), digits.end());
    EXPECT_EQ(PIO::RTCM3::ComputeCRC24(text), 0xCDE703U);
}

}  // namespace
