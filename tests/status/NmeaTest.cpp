#include <gtest/gtest.h>
#include <locale.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <random>

#include "halvex/status/NMEAFormat.h"
#include "halvex/status/SentenceText.h"

namespace halvex::test {
namespace {

/// printf in the C locale, whatever the process has set.
template <class... Values>
std::string print(const char* format, Values... values) {
    static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
    const locale_t before = uselocale(plain);
    std::array<char, 400> text{};
    std::snprintf(text.data(), text.size(), format, values...);
    uselocale(before);
    return text.data();
}

constexpr double kRadians = std::numbers::pi / 180.0;
const CGPSTime kTime(2020, 6, 25, 12, 0, 30.25);
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// A solution, with the numbers that the sentences take.
struct Solution {
    CGPSTime time = kTime;
    double latitude = 48.5 * kRadians;
    double longitude = -11.25 * kRadians;
    double height = 545.1236;
    double second = 47.5;
    std::int32_t quality = 1;
    float coordinateQuality = 0.5F;
    std::uint16_t satellites = 9;
    double hdop = 0.8;
    double age = 1.5;
    std::uint32_t station = 7;
    ADD_POST_RESULTS results{{1.5, 2, 3, 4, 5, 6, 7}};
    float figure = 2.5F;
};

/// Every sentence of a solution, "" for one that was refused.
struct Sentences : CNMEAFormat {
    explicit Sentences(Solution s) {
        const auto& [t, lat, lon, h, second, quality, cq, satellites, hdop, age, station, results, figure] = s;
        CString text;
        if (convertToGGA(t, lat, lon, h, quality, satellites, text, second, hdop, age, station)) gga = text.str();
        if (ConvertToGGQ(t, lat, lon, h, second, quality, cq, satellites, text)) ggq = text.str();
        if (convertToLLQ(t, lat, lon, h, quality, cq, satellites, text, second, 0, 0, 0, 0)) llq = text.str();
        if (convertToTavroProp(t, lat, lon, h, quality, cq, satellites, text, second, s.results, figure)) {
            lmm = text.str();
        }
    }
    std::string gga, ggq, llq, lmm;
};

std::string framed(const std::string& inside) {
    unsigned sum = 0;
    for (const char c : inside) sum ^= static_cast<unsigned char>(c);
    return "$" + inside + print("*%02X\r\n", sum);
}

TEST(Nmea, GoldenSentences) {
    const Sentences good{Solution{}};
    EXPECT_EQ(good.gga,
              framed("GPGGA,120030.25,4830.0000000,N,01115.0000000,W,1,09,0.8000,497.624,M,47.500,M,1.50,0007"));
    const std::string solution = ",120030.25,062520,4830.0000000,N,01115.0000000,W,1,09,0.5000,497.624,M";
    EXPECT_EQ(good.ggq, framed("GPGGQ" + solution));
    EXPECT_EQ(good.lmm, framed("GPLMM" + solution +
                               ",2.5,1.500000,2.0000000000,3.0000000000,5.0000000000,4.0000000000,"
                               "6.0000000000,7.0000000000"));

    Solution s;
    s.latitude = 0.0;
    s.longitude = 9.0 * kRadians;
    EXPECT_EQ(Sentences{s}.llq, framed("GPLLQ,120030.25,062520,500000.000,M,0.000,M,1,09,0.5000,497.624,M"));
    s.quality = 0;
    const Sentences none{s};
    EXPECT_EQ(none.gga, framed("GPGGA,120030.25,,,,,0,,,,,,,1.50,0007"));
    EXPECT_EQ(none.ggq, framed("GPGGQ,120030.25,062520,,,,,0,,,,"));
    EXPECT_EQ(none.llq, framed("GPLLQ,120030.25,062520,,,,,0,,,,"));
    EXPECT_EQ(none.lmm, framed("GPLMM,120030.25,062520,,,,,0,,,,,,,,,,,,"));
}

/// The field of a sentence, from 0.
std::string field(const std::string& sentence, int index) {
    std::size_t at = 0;
    for (; index > 0; --index) at = sentence.find(',', at) + 1;
    return sentence.substr(at, sentence.find_first_of(",*", at) - at);
}

TEST(Nmea, DeliberateOddities) {
    Solution s;
    for (const std::int32_t quality : {3, 4}) {
        s.quality = quality;
        const Sentences both{s};
        EXPECT_EQ(field(both.gga, 6) + field(both.ggq, 7) + field(both.llq, 7), "433");
        EXPECT_EQ(both.lmm.substr(both.lmm.find(",M") + 2, 9), ",,,,,,,,*") << "no figures for quality 3 and 4";
    }
    s = {};
    s.latitude = s.longitude = 0.0, s.hdop = s.age = -1.0, s.figure = -0.5F, s.station = 4294967295U;
    const Sentences odd{s};
    EXPECT_EQ(odd.gga, framed("GPGGA,120030.25,0000.0000000,S,00000.0000000,W,1,09,,,497.624,M,47.500,M,,-001"));
    EXPECT_EQ(field(odd.lmm, 12) + field(odd.lmm, 13), "1.500000") << "a negative figure is left out";
    s.hdop = s.age = kNaN;
    EXPECT_EQ(Sentences{s}.gga, odd.gga) << "what is no number is not there";

    s = {};
    s.time = CGPSTime(2009, 1, 2, 3, 4, 59.996);
    s.latitude = std::nextafter(49.0 * kRadians, 0.0), s.height = 47.4999, s.quality = -1;
    const Sentences rounded{s};
    EXPECT_EQ(rounded.ggq.substr(0, 39), "$GPGGQ,030459.100,010209,4860.0000000,N");
    EXPECT_EQ(field(rounded.ggq, 10), "-0.000");
    EXPECT_EQ(field(rounded.ggq, 7), "4294967295");
}

template <int kDecimals>
void expectAsPrintf() {
    std::mt19937_64 rng(183 + kDecimals);
    const auto check = [](double value, int width) {
        std::array<char, 400> text{};
        SentenceText out(text.data(), text.size());
        out.fixed<kDecimals>(value, width);
        ASSERT_TRUE(out.ok());
        ASSERT_EQ(text.data(), print("%0*.*f", width, kDecimals, value)) << kDecimals << " decimals, width " << width;
    };
    const double scale = std::pow(10.0, kDecimals);
    for (int i = 0; i < 30000; ++i) {
        const int width = static_cast<int>(rng() % 20);
        const auto units = static_cast<double>(rng() >> (14 + rng() % 50));
        check(std::ldexp(static_cast<double>(rng()), -static_cast<int>(rng() % 140)), width);
        check((units + 0.5) / scale, width);  // on halves and beside them
        check(-std::nextafter((units + 0.5) / scale, 0.0), width);
        check(std::ldexp(units, -static_cast<int>(rng() % 12)), width);  // ties
    }
    for (const double value : {0.0, -0.0, 5e-324, 1.7976931348623157e308, 0x1p51, 0x1p53 / 1e7, 225179981.3685248}) {
        check(value, 10);
    }
}

TEST(Nmea, NumbersAreThoseOfPrintf) {
    for (const auto expect : {&expectAsPrintf<1>, &expectAsPrintf<2>, &expectAsPrintf<3>, &expectAsPrintf<4>,
                              &expectAsPrintf<6>, &expectAsPrintf<7>, &expectAsPrintf<10>}) {
        expect();
    }
}

TEST(Nmea, HostileValuesStayInTheBuffer) {
    const double values[] = {0.0, -1e308, 1e308, kNaN, kInfinity, -kInfinity, 571.0, 572.0, 1.5707, 5e-324};
    std::mt19937 rng(1983);
    const auto any = [&] { return values[rng() % std::size(values)]; };
    for (int i = 0; i < 20000; ++i) {
        Solution s;
        for (double* value : {&s.latitude, &s.longitude, &s.height, &s.second}) *value = any();
        s.quality = static_cast<std::int32_t>(rng() % 6);
        s.coordinateQuality = static_cast<float>(any());
        for (double& value : s.results.values) value = any();
        std::string buffer(CNMEAFormat::kLongestSentence + 8, '~');
        std::uint16_t length = 4711;
        const bool good =
            CNMEAFormat().convertToTavroProp(s.time, s.latitude, s.longitude, s.height, s.quality, s.coordinateQuality,
                                             s.satellites, "GP", buffer.data(), length, s.second, s.results, s.figure);
        ASSERT_TRUE(good ? length <= 999 : length == 4711);
        ASSERT_EQ(buffer.find_first_not_of('~', good ? length + 1U : 0U), buffer.npos);
        ASSERT_EQ(buffer.find("nan") & buffer.find("inf"), buffer.npos) << buffer;
    }
    std::array<char, 1000> buffer{};
    std::uint16_t length = 0;
    const auto write = [&](const char* talker, char* to) {
        return CNMEAFormat().ConvertToGGQ(kTime, 0.0, 0.0, 0.0, 0.0, 0, 0.0F, 0, talker, to, length);
    };
    EXPECT_FALSE(write(nullptr, buffer.data()) || write("GP", nullptr) || write("GPS", buffer.data()));
    EXPECT_TRUE(write("G", buffer.data()));
    EXPECT_EQ(std::string(buffer.data(), length), framed(" GGGQ,120030.25,062520,,,,,0,,,,"));
}

/// What only classes derived from it see.
struct Inside : CNMEAFormat {
    using CNMEAFormat::ConvertToStringLatitude, CNMEAFormat::ConvertToStringLongitude;
    using CNMEAFormat::GetUTM, CNMEAFormat::wrapMsg;
};

TEST(Nmea, PartsOfASentence) {
    const Inside inside;
    std::array<char, 1000> buffer{};
    buffer[7] = 'p';
    EXPECT_EQ(inside.wrapMsg("GP", "GGA", 1, buffer.data()), 13);
    EXPECT_STREQ(buffer.data(), "$GPGGA,p*0A\r\n");
    EXPECT_EQ(inside.wrapMsg("GP", "GGA", 988, buffer.data()), 0);
    char text[20];
    EXPECT_TRUE(inside.ConvertToStringLatitude(-7.5 * kRadians, true, text));
    EXPECT_STREQ(text, "-0730.0000000");
    EXPECT_TRUE(inside.ConvertToStringLongitude(-571.0, false, text));  // five digits of degrees
    EXPECT_STREQ(text, print("32715%010.7f,W", std::fmod(571.0 * 57.29577951308232, 1.0) * 60.0).c_str());
    EXPECT_FALSE(inside.ConvertToStringLatitude(572.0, false, text));
}

TEST(Nmea, GridCoordinates) {
    const Inside inside;
    // The quarter meridian of WGS-84 is 10 001 965.729 m; the scale of UTM 0.9996.
    constexpr double kQuarter = 10001965.7293 * 0.9996;
    const std::tuple<const char*, double, double, std::array<std::int32_t, 4>, double, double> rows[] = {
        {"on the central meridian", 0.0, 9.0, {0, 0, 0, 0}, 500000.0, 0.0},
        {"the other pole", -90.0, 9.0, {0, 0, 32, 0}, 500000.0, 10000000.0 - kQuarter},
        {"the hemisphere said", 0.0, 9.0, {0, 0, 0, 2}, 500000.0, 10000000.0},
        {"an origin of its own", -90.0, 9.0, {3500000, 20000000, 0, 0}, 3500000.0, 20000000.0 - kQuarter},
        {"Norway belongs to zone 32", 60.0, 3.0, {0, 0, 0, 0}, 165640.332, 6666593.572},
        {"unless it is said", 60.0, 3.0, {0, 0, 31, 0}, 500000.0, 6651411.190}};
    for (const auto& [what, latitude, longitude, parameters, wantEasting, wantNorthing] : rows) {
        double x = 0.0, y = 0.0;
        const auto& [x0, y0, zone, hemisphere] = parameters;
        EXPECT_TRUE(inside.GetUTM(latitude * kRadians, longitude * kRadians, x0, y0, zone, hemisphere, x, y)) << what;
        EXPECT_NEAR(x, wantEasting, 0.001) << what;
        EXPECT_NEAR(y, wantNorthing, 0.001) << what;
    }
    double untouched = 7.0;
    const std::tuple<double, double, int, int> refused[] = {
        {0.5, 0.5, 61, 0}, {0.5, 0.5, -1, 0},      {0.5, 0.5, 0, 3}, {0.5, 0.5, 0, -1},
        {kNaN, 0.5, 0, 0}, {kInfinity, 0.5, 0, 0}, {1.6, 0.5, 0, 0}, {0.5, kNaN, 0, 0}};
    for (const auto& [latitude, longitude, zone, hemisphere] : refused) {
        EXPECT_FALSE(inside.GetUTM(latitude, longitude, 0, 0, zone, hemisphere, untouched, untouched)) << zone;
    }
    EXPECT_EQ(untouched, 7.0);
}

}  // namespace
}  // namespace halvex::test
