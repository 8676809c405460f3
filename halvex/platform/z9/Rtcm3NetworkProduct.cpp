#include "halvex/platform/z9/Rtcm3NetworkProduct.h"

#include <algorithm>
#include <array>
#include <vector>

#include "halvex/platform/pio/Rtcm3.h"

namespace Z9 {
namespace {

using CALN::IonoGeoEntryT;
using PIO::RTCM3::CBitCollector;

constexpr std::size_t kHeadSize = 3;
constexpr std::size_t kCheckSize = 3;
constexpr std::size_t kLongestMessage = 1023;
constexpr std::size_t kMostSatellites = 15;  // a count of four bits

constexpr unsigned kDifferenceBits = 17;
constexpr std::int32_t kLargestDifference = (1 << (kDifferenceBits - 1)) - 1;
constexpr std::uint8_t kLargestSatellite = 63;

/// One frame that is filled field by field. A value that does not fit makes it fail.
class Frame {
public:
    void add(std::uint32_t value, unsigned bits) { m_ok = m_bits.Add(value, bits) && m_ok; }
    /// Two's complement.
    void addSigned(std::int32_t value, unsigned bits) {
        const std::int64_t limit = std::int64_t{1} << (bits - 1);
        m_ok = m_ok && value >= -limit && value < limit;
        if (m_ok) add(static_cast<std::uint32_t>(value) & ((std::uint32_t{1} << bits) - 1), bits);
    }
    [[nodiscard]] bool ok() const { return m_ok; }

    /// Preamble, length and check sum around what was added (RTCM 10403.3, 4.1).
    [[nodiscard]] std::span<const unsigned char> close() {
        const std::size_t length = (m_bits.GetBitCount() + 7) / 8;
        m_bytes[0] = 0xD3;
        m_bytes[1] = static_cast<unsigned char>(length >> 8U);
        m_bytes[2] = static_cast<unsigned char>(length & 0xFFU);
        const std::uint32_t check = PIO::RTCM3::ComputeCRC24({m_bytes.data(), kHeadSize + length});
        for (std::size_t i = 0; i < kCheckSize; ++i) {
            m_bytes[kHeadSize + length + i] = static_cast<unsigned char>(check >> (8 * (kCheckSize - 1 - i)) & 0xFFU);
        }
        return {m_bytes.data(), kHeadSize + length + kCheckSize};
    }

private:
    std::array<unsigned char, kHeadSize + kLongestMessage + kCheckSize> m_bytes{};
    CBitCollector m_bits{{m_bytes.data() + kHeadSize, kLongestMessage}};
    bool m_ok = true;
};

bool fits(const IonoGeoEntryT& entry) {
    const auto inRange = [](std::int32_t value) { return value >= -kLargestDifference && value <= kLargestDifference; };
    return entry.system != CALN::eCALSATSYSTEM_QZSS && entry.satId <= kLargestSatellite && entry.ambiguityStatus <= 3 &&
           entry.nonSyncCount <= 7 && inRange(entry.geometric) && inRange(entry.ionospheric);
}

}  // namespace

bool CRtcm3NetworkProduct::send(const CALN::IonoGeoMsgT& message, unsigned epochBits) {
    std::vector<const IonoGeoEntryT*> entries;
    for (const IonoGeoEntryT& entry : message.entries) {
        if (fits(entry)) {
            entries.push_back(&entry);
        } else {
            ++m_leftOut;
        }
    }
    const CALN::MsgHeaderT& header = message.header;
    bool sent = true;
    std::size_t first = 0;
    do {
        const std::size_t count = std::min(entries.size() - first, kMostSatellites);
        const bool more = first + count < entries.size();
        Frame frame;
        frame.add(header.messageNumber, 12);
        frame.add(header.networkId, 8);
        frame.add(header.subnetwork, 4);
        frame.add(header.epoch, epochBits);
        frame.add(more || header.multipleMessage != 0 ? 1 : 0, 1);
        frame.add(header.masterStation, 12);
        frame.add(header.auxiliaryStation, 12);
        frame.add(static_cast<std::uint32_t>(count), 4);
        for (std::size_t i = first; i < first + count; ++i) {
            const IonoGeoEntryT& entry = *entries[i];
            frame.add(entry.satId, 6);
            frame.add(entry.ambiguityStatus, 2);
            frame.add(entry.nonSyncCount, 3);
            frame.addSigned(entry.geometric, kDifferenceBits);
            frame.add(entry.issueOfData, 8);
            frame.addSigned(entry.ionospheric, kDifferenceBits);
        }
        sent = frame.ok() && m_sink(frame.close()) && sent;
        first += count;
    } while (first < entries.size());
    return sent;
}

std::int32_t CRtcm3NetworkProduct::addAuxiliaryCombinedIonoGeoCorrection(const CALN::MsgGNSS17T& message) {
    constexpr unsigned kGpsEpochBits = 23;
    constexpr unsigned kGlonassEpochBits = 20;
    bool sent = true;
    if (message.IsValidMsgType(CALN::MsgGNSS17T::kGps)) sent = send(message.gps, kGpsEpochBits);
    if (message.IsValidMsgType(CALN::MsgGNSS17T::kGlonass)) sent = send(message.glonass, kGlonassEpochBits) && sent;
    return sent ? 0 : 1;
}

std::int32_t CRtcm3NetworkProduct::addAuxiliaryStationData(const CALN::Msg1014T& message) {
    Frame frame;
    frame.add(message.messageNumber, 12);
    frame.add(message.networkId, 8);
    frame.add(message.subnetworkId, 4);
    frame.add(message.auxiliaryStations, 5);
    frame.add(message.masterStation, 12);
    frame.add(message.auxiliaryStation, 12);
    frame.addSigned(message.deltaLatitude, 20);
    frame.addSigned(message.deltaLongitude, 21);
    frame.addSigned(message.deltaHeight, 23);
    return frame.ok() && m_sink(frame.close()) ? 0 : 1;
}

}  // namespace Z9
