#include <gmock/gmock.h>

#include <random>

#include "halvex/corrections/CombinedIonoGeoCorrection.h"
#include "halvex/platform/caln/FrequencyTable.h"
#include "halvex/platform/z9/Rtcm3NetworkProduct.h"

using namespace CALN;
using testing::IsEmpty;

namespace {

struct Product final : Z9::CRTKNetworkProduct {
    std::int32_t addAuxiliaryCombinedIonoGeoCorrection(const MsgGNSS17T& message) override {
        last = message;
        return answer;
    }
    MsgGNSS17T last;
    std::int32_t answer = 0;
};

constexpr auto kAll = static_cast<ebCALGNSSTYPECOMBINATION>(0xFF);
constexpr auto kL1L2 = eCALFREQUENCY_GROUP_L1 | eCALFREQUENCY_GROUP_L2;
constexpr auto kL1L5 = eCALFREQUENCY_GROUP_L1 | eCALFREQUENCY_GROUP_L5;
constexpr eCALFREQUENCY_GROUP kMasks[kSystemSlots] = {
    {}, kL1L2, kL1L2, kL1L5, eCALFREQUENCY_GROUP_L1, kL1L2 | eCALFREQUENCY_GROUP_E6, {}, {}, kL1L2};

struct Producer {
    explicit Producer(ebCALGNSSTYPECOMBINATION systems = kAll, bool offsets = false, bool enabled = true,
                      const eCALFREQUENCY_GROUP (&masks)[kSystemSlots] = kMasks)
        : combined(&collection, &product, CHalvexUniqueSiteID(), systems, 1, true, offsets, enabled, masks) {}
    std::int32_t provide(const std::vector<SCalSatObservation>& master, const std::vector<SCalSatObservation>& other,
                         bool flag = true) {
        const CHalvexZ9StationCorrection first{{}, epoch, master};
        const CHalvexZ9StationCorrection second{{}, epoch, other};
        return combined.ProvideCorrections(first, second, aux, flag);
    }
    SMjdTime epoch{2111, 388830.3};
    CRtkAux aux{5, 101, 202};
    CRtkAuxCollection collection;
    Product product;
    CCombinedIonoGeoCorrection combined;
};

double wavelength(const SCalSatID& id, eCALFREQUENCY frequency) {
    double value = 0.0;
    EXPECT_TRUE(getFrequencyTable().getWavelengthValue(id, frequency, value));
    return value;
}

/// A satellite whose phases show a range and an ionospheric delay on the first carrier [m].
SCalSatObservation satellite(const SCalSatID& id, const std::vector<eCALFREQUENCY>& carriers, double range,
                             double delay) {
    SCalSatObservation made{id, 77, {}};
    const double first = wavelength(id, carriers.front());
    for (const eCALFREQUENCY carrier : carriers) {
        const double length = wavelength(id, carrier);
        const double phase = (range - delay * (length / first) * (length / first)) / length;
        made.frequencies.push_back({carrier, phase, range, true, true, 3});
    }
    return made;
}

const SCalSatID kG7(eCALSATSYSTEM_GPS, 7);
const std::vector<eCALFREQUENCY> kGpsCarriers{eCALFREQUENCY_L1, eCALFREQUENCY_L2};

}  // namespace

TEST(CombinedIonoGeo, DifferencesAreTheTruthToTheRounding) {
    setGlonassChannel({eCALSATSYSTEM_GLONASS, 3}, -4);
    const std::pair<SCalSatID, std::vector<eCALFREQUENCY>> rows[] = {
        {kG7, kGpsCarriers},
        {{eCALSATSYSTEM_GLONASS, 3}, {eCALFREQUENCY_G1, eCALFREQUENCY_G2}},
        {{eCALSATSYSTEM_GALILEO, 9}, {eCALFREQUENCY_L1, eCALFREQUENCY_L5}},
        {{eCALSATSYSTEM_QZSS, 2}, kGpsCarriers}};
    std::mt19937 random(1980);
    std::uniform_real_distribution<double> metres(-10.0, 10.0);
    for (const auto& [id, carriers] : rows) {
        for (int i = 0; i < 200; ++i) {
            const double range = 2.2e7 + metres(random), delay = metres(random);
            const double geometric = metres(random), ionospheric = metres(random);
            Producer producer;
            ASSERT_EQ(producer.provide({satellite(id, carriers, range, delay)},
                                       {satellite(id, carriers, range + geometric, delay + ionospheric)}),
                      0);
            const MsgGNSS17T& message = producer.product.last;
            const auto& entries = id.system == eCALSATSYSTEM_GLONASS   ? message.glonass.entries
                                  : id.system == eCALSATSYSTEM_GALILEO ? message.galileo.entries
                                                                       : message.gps.entries;
            ASSERT_EQ(entries.size(), 1U);
            EXPECT_NEAR(entries[0].geometric, geometric * 2000.0, 0.501);
            EXPECT_NEAR(entries[0].ionospheric, -ionospheric * 2000.0, 0.501) << "a phase is advanced";
            EXPECT_EQ(entries[0].issueOfData, 77);
        }
    }
}

TEST(CombinedIonoGeo, WhatIsSkippedAndWhatTheHeadsSay) {
    using Carriers = std::vector<eCALFREQUENCY>;
    const auto gps = [](const Carriers& carriers) { return satellite(kG7, carriers, 2e7, 1.0); };
    Producer producer;
    EXPECT_EQ(producer.combined.GetActiveSystems(),
              ebCALGNSSTYPE_GPS | ebCALGNSSTYPE_GLONASS | ebCALGNSSTYPE_GALILEO | ebCALGNSSTYPE_QZSS)
        << "one band, three bands, none, and bands that a system has not";
    EXPECT_EQ(Producer(ebCALGNSSTYPE_QZSS | ebCALGNSSTYPE_GALILEO).combined.GetActiveSystems(), ebCALGNSSTYPE_GALILEO)
        << "QZSS rides on GPS";

    auto invalid = gps(kGpsCarriers);
    invalid.frequencies[1].phaseValid = false;
    setGlonassChannel({eCALSATSYSTEM_GLONASS, 24}, 0);
    const auto noChannel = satellite({eCALSATSYSTEM_GLONASS, 24}, {eCALFREQUENCY_G1, eCALFREQUENCY_G2}, 2e7, 1.0);
    setGlonassChannel({eCALSATSYSTEM_GLONASS, 24}, 99);
    const auto otherBand = gps({eCALFREQUENCY_L1, eCALFREQUENCY_L5});
    const std::tuple<const char*, std::vector<SCalSatObservation>, std::vector<SCalSatObservation>> rows[] = {
        {"not at the master", {}, {gps(kGpsCarriers)}},
        {"one carrier in common", {gps({eCALFREQUENCY_L1})}, {gps(kGpsCarriers)}},
        {"two in common, one of another band", {otherBand}, {otherBand}},
        {"a phase that is not valid", {gps(kGpsCarriers)}, {invalid}},
        {"no channel", {noChannel}, {noChannel}}};
    for (const auto& [what, first, second] : rows) {
        Producer each;
        EXPECT_EQ(each.provide(first, second), 0) << what;
        const MsgGNSS17T& message = each.product.last;
        EXPECT_TRUE(message.gps.entries.empty() && message.glonass.entries.empty() && message.validTypes == 0) << what;
    }

    EXPECT_EQ(producer.provide({gps(kGpsCarriers)}, {gps(kGpsCarriers)}), 0);
    const MsgGNSS17T& last = producer.product.last;
    const auto heading = [](const MsgHeaderT& head) {
        return std::tuple(int{head.messageNumber}, head.epoch, int{head.satelliteCount}, int{head.flag});
    };
    EXPECT_EQ(heading(last.gps.header), std::tuple(1017, 3888303U, 1, 1));
    // 18 s less and three hours more on the fifth day, in whole seconds.
    EXPECT_EQ(heading(last.glonass.header), std::tuple(1039, 540120U, 0, 1));
    for (const MsgHeaderT* head : {&last.gps.header, &last.glonass.header}) {
        EXPECT_EQ(std::tuple(head->subnetwork, head->masterStation, head->auxiliaryStation), std::tuple(5, 101, 202));
    }
    EXPECT_EQ(std::tuple(last.galileo.header.flag, last.glonassPseudorange.header.flag, last.beidou.header.flag),
              std::tuple(1, 1, 0));
    EXPECT_EQ(last.gps.entries, (std::vector<IonoGeoEntryT>{{7, eCALSATSYSTEM_GPS, 1, 0, 0, 0, 77, 0}}));

    EXPECT_EQ(producer.provide({}, {}, true), 0);
    EXPECT_EQ(producer.product.last.validTypes, MsgGNSS17T::kGps) << "fell silent after it was sent";
    EXPECT_EQ(producer.provide({}, {}, false), 0);
    EXPECT_EQ(producer.product.last.validTypes, 0U);
    producer.product.answer = 1;
    EXPECT_EQ(producer.provide({}, {}), static_cast<std::int32_t>(0x80004005U));

    Producer disabled(kAll, false, false);
    EXPECT_EQ(disabled.provide({gps(kGpsCarriers)}, {gps(kGpsCarriers)}), 0);
    EXPECT_THAT(disabled.product.last.gps.entries, IsEmpty());

    producer.combined.ProvideEmptyCorrections(ebCALGNSSTYPE_GPS | ebCALGNSSTYPE_BEIDOU, producer.aux, 388830, 1);
    EXPECT_EQ(last.validTypes, MsgGNSS17T::kGps | MsgGNSS17T::kBeidou);
    EXPECT_EQ(heading(last.gps.header), std::tuple(1017, 3888300U, 0, 1));
    EXPECT_EQ(last.glonass.header.epoch, 540120U);
}

TEST(CombinedIonoGeo, UnitsAreRoundedAndGlonassOffsetsAreCoded) {
    for (const SCalSatID& each : {kG7, SCalSatID(eCALSATSYSTEM_QZSS, 2)}) {
        for (const auto& [metres, units] : {std::pair(0.000251, 1), {0.000249, 0}, {-0.000249, 0}, {-0.000251, -1}}) {
            Producer producer;
            producer.provide({satellite(each, kGpsCarriers, 0, 0)}, {satellite(each, kGpsCarriers, metres, -metres)});
            const IonoGeoEntryT& entry = producer.product.last.gps.entries.at(0);
            EXPECT_EQ(std::pair(entry.geometric, entry.ionospheric), std::pair(units, units)) << "a phase is advanced";
        }
    }

    const SCalSatID id(eCALSATSYSTEM_GLONASS, 3);
    setGlonassChannel(id, -4);
    const std::vector<eCALFREQUENCY> carriers{eCALFREQUENCY_G1, eCALFREQUENCY_G2};
    const auto master = satellite(id, carriers, 2e7, 1.0);
    auto auxiliary = master;
    auxiliary.frequencies[0].pseudorange += 5.3;
    auxiliary.frequencies[1].pseudorange += 2.1;
    Producer offsets(kAll, true);
    offsets.provide({master}, {auxiliary});
    const IonoGeoMsgT& coded = offsets.product.last.glonassPseudorange;
    EXPECT_EQ(std::tuple(coded.header.messageNumber, coded.header.satelliteCount, coded.header.offsetCount),
              std::tuple(1071, 1, 1));
    EXPECT_EQ(std::pair(int{coded.header.dpo}, int{coded.header.p1or}),
              std::pair(3, 6));  // 81/32 5.3 - 49/32 (2.1 + 3)
    EXPECT_THAT(coded.offsets, testing::ElementsAre(GloPrOffsetT{3, 2, 77, -20}));
    EXPECT_EQ(offsets.product.last.validTypes, MsgGNSS17T::kGlonass | MsgGNSS17T::kGlonassPseudorange);
    auxiliary.frequencies[0].pseudorange += 40.0;
    offsets.provide({master}, {auxiliary});
    EXPECT_EQ(offsets.product.last.validTypes, MsgGNSS17T::kGlonass) << "an offset out of range";

    eCALFREQUENCY_GROUP bands[kSystemSlots] = {};
    bands[eCALSATSYSTEM_GALILEO] = kL1L5;
    bands[eCALSATSYSTEM_BEIDOU] = eCALFREQUENCY_GROUP_L1 | eCALFREQUENCY_GROUP_E6;
    Producer others(kAll, false, true, bands);
    const auto galileo = satellite({eCALSATSYSTEM_GALILEO, 1}, {eCALFREQUENCY_L1, eCALFREQUENCY_L5}, 1.0, 0.0);
    const auto beidou = satellite({eCALSATSYSTEM_BEIDOU, 2}, {eCALFREQUENCY_B1, eCALFREQUENCY_B3}, 1.0, 0.0);
    others.provide({galileo, beidou}, {galileo, beidou});
    const MsgGNSS17T& last = others.product.last;
    EXPECT_EQ(std::tuple(last.validTypes, last.galileo.header.satelliteCount, last.beidou.header.satelliteCount),
              std::tuple(16U | 8U, 1, 1));
    others.provide({beidou}, {beidou}, false);
    EXPECT_EQ(last.validTypes, 8U);
}

namespace {

/// Reads the network frames by their published layout, with nothing of the library's.
class BitText {
public:
    explicit BitText(std::span<const unsigned char> bytes) {
        for (const unsigned char byte : bytes) {
            for (int bit = 7; bit >= 0; --bit) m_bits += (byte >> bit & 1) != 0 ? '1' : '0';
        }
    }
    long take(std::size_t bits, bool isSigned = false) {
        const long value = std::stol(m_bits.substr(m_at, bits), nullptr, 2);
        const bool negative = isSigned && m_bits[m_at] == '1';
        m_at += bits;
        return negative ? value - (1L << bits) : value;
    }
    void expect(const std::vector<std::pair<std::size_t, long>>& fields) {
        for (const auto& [bits, value] : fields) EXPECT_EQ(take(bits), value) << "of " << bits << " bits";
    }

private:
    std::string m_bits;
    std::size_t m_at = 0;
};

}  // namespace

TEST(Rtcm3NetworkProduct, FramesReadAsPublished) {
    std::vector<std::vector<unsigned char>> frames;
    Z9::CRtcm3NetworkProduct product([&](std::span<const unsigned char> frame) {
        frames.emplace_back(frame.begin(), frame.end());
        return true;
    });
    MsgGNSS17T message;
    message.SetValidMsgType(MsgGNSS17T::kGps);
    message.SetValidMsgType(MsgGNSS17T::kGlonass);
    message.gps.header = {.subnetwork = 5,
                          .masterStation = 3597,
                          .auxiliaryStation = 2423,
                          .epoch = 3920368,
                          .messageNumber = 1017,
                          .networkId = 222};
    message.glonass.header = message.gps.header;
    message.glonass.header.messageNumber = 1039;
    message.glonass.header.epoch = 91951;
    for (std::uint8_t i = 1; i <= 17; ++i) {
        message.gps.entries.push_back({i, eCALSATSYSTEM_GPS, 3, 6, i == 2 ? -65535 : 1000 * i, -7 * i, 153, 0});
    }
    message.gps.entries.push_back({1, eCALSATSYSTEM_QZSS, 1, 0, 1, 1, 1, 0});
    message.gps.entries.push_back({20, eCALSATSYSTEM_GPS, 1, 0, 65536, 1, 1, 0});
    message.glonass.entries.push_back({2, eCALSATSYSTEM_GLONASS, 3, 0, -38739, -33547, 122, 0});
    EXPECT_EQ(product.addAuxiliaryCombinedIonoGeoCorrection(message), 0);
    EXPECT_EQ(product.GetLeftOut(), 2U);
    Msg1014T station{1014, 124, 13, 9, {}, 1866, 2649, 505920, -342171, -3112084};
    EXPECT_EQ(product.addAuxiliaryStationData(station), 0);
    station.deltaHeight = 1 << 22;
    EXPECT_EQ(product.addAuxiliaryStationData(station), 1) << "does not fit";
    ASSERT_EQ(frames.size(), 4U);

    const std::pair<std::size_t, long> counts[] = {{23, 15}, {23, 2}, {20, 1}};
    for (std::size_t f = 0; f < 3; ++f) {
        const auto& frame = frames[f];
        const std::size_t length = (frame[1] & 3U) * 256U + frame[2];
        EXPECT_EQ(frame[0], 0xD3);
        ASSERT_EQ(frame.size(), length + 6);
        const bool glonass = f == 2;
        BitText bits({frame.data() + 3, length});
        bits.expect({{12, glonass ? 1039 : 1017}, {8, 222}, {4, 5}, {counts[f].first, glonass ? 91951 : 3920368}});
        EXPECT_EQ(bits.take(1), f == 0 ? 1 : 0) << "more messages follow";
        bits.expect({{12, 3597}, {12, 2423}});
        const long count = bits.take(4);
        ASSERT_EQ(count, counts[f].second);
        for (long i = 0; i < count; ++i) {
            const IonoGeoEntryT& entry =
                glonass ? message.glonass.entries[0] : message.gps.entries[static_cast<std::size_t>(i) + 15 * f];
            bits.expect({{6, entry.satId}, {2, entry.ambiguityStatus}, {3, entry.nonSyncCount}});
            EXPECT_EQ(bits.take(17, true), entry.geometric);
            EXPECT_EQ(bits.take(8), entry.issueOfData);
            EXPECT_EQ(bits.take(17, true), entry.ionospheric);
        }
    }
    BitText bits({frames[3].data() + 3, frames[3].size() - 6});
    bits.expect({{12, 1014}, {8, 124}, {4, 13}, {5, 9}, {12, 1866}, {12, 2649}});
    EXPECT_EQ(bits.take(20, true), 505920);
    EXPECT_EQ(bits.take(21, true), -342171);
    EXPECT_EQ(bits.take(23, true), -3112084);
}
