#include "formats/rtcm3/NetworkMessages.h"

#include <algorithm>

#include "formats/rtcm3/BitReader.h"

namespace halvex::rtcm3 {
namespace {

constexpr unsigned kStationBits = 12;
constexpr unsigned kSatelliteBits = 6;
constexpr std::int64_t kTenth = 100;    // [ms]
constexpr std::int64_t kSecond = 1000;  // [ms]

bool isGlonass(unsigned number) {
    return systemOfNetworkMessage(number) == CALN::eCALSATSYSTEM_GLONASS;
}

/// In tenths of seconds or in seconds; the day of GLONASS takes fewer bits than the week of GPS.
NetworkEpoch epochOf(BitReader& in, unsigned number, std::int64_t unit) {
    const bool glonass = isGlonass(number);
    const unsigned width = unit == kTenth ? (glonass ? 20 : 23) : (glonass ? 17 : 20);
    return {glonass ? EpochScale::glonassDay : EpochScale::gpsWeek, static_cast<std::int64_t>(in.bits(width)) * unit};
}

/// Satellite, state of its cycles, difference: the beginning of each entry of differences.
template <class Entry>
void takeAmbiguity(BitReader& in, Entry& entry) {
    in.take(kSatelliteBits, entry.satId);
    in.take(2, entry.ambiguityStatus);
    in.take(3, entry.nonSyncCount);
}
void takeDifference(BitReader& in, std::int32_t& difference) {
    in.takeSigned(17, difference);
}

void read(BitReader& in, unsigned, CALN::Msg1014T& message) {
    in.take(8, message.networkId);
    in.take(4, message.subnetworkId);
    in.take(5, message.auxiliaryStations);
    in.take(kStationBits, message.masterStation);
    in.take(kStationBits, message.auxiliaryStation);
    in.takeSigned(20, message.deltaLatitude);
    in.takeSigned(21, message.deltaLongitude);
    in.takeSigned(23, message.deltaHeight);
}

void readEntry(BitReader& in, CALN::IonoDifferenceT& entry) {
    takeAmbiguity(in, entry);
    takeDifference(in, entry.difference);
}
void readEntry(BitReader& in, CALN::GeoDifferenceT& entry) {
    takeAmbiguity(in, entry);
    takeDifference(in, entry.difference);
    in.take(8, entry.issueOfData);
}

template <class Message>
void read(BitReader& in, unsigned number, Differences<Message>& differences) {
    Message& message = differences.message;
    message.messageNumber = static_cast<std::uint16_t>(number);
    message.system = systemOfNetworkMessage(number);
    in.take(8, message.networkId);
    in.take(4, message.subnetworkId);
    differences.epoch = epochOf(in, number, kTenth);
    in.take(1, message.multipleMessage);
    in.take(kStationBits, message.masterStation);
    in.take(kStationBits, message.auxiliaryStation);
    in.take(4, message.satelliteCount);
    for (std::size_t i = 0; i < message.satelliteCount; ++i) readEntry(in, message.satellites[i]);
}

void read(BitReader& in, unsigned number, CALN::IonoGeoMsgT& message) {
    CALN::MsgHeaderT& header = message.header;
    header.messageNumber = static_cast<std::uint16_t>(number);
    in.take(8, header.networkId);
    in.take(4, header.subnetwork);
    header.epoch = static_cast<std::uint32_t>(epochOf(in, number, kTenth).milliseconds / kTenth);
    in.take(1, header.multipleMessage);
    in.take(kStationBits, header.masterStation);
    in.take(kStationBits, header.auxiliaryStation);
    in.take(4, header.satelliteCount);
    message.entries.resize(header.satelliteCount);
    for (CALN::IonoGeoEntryT& entry : message.entries) {
        takeAmbiguity(in, entry);
        entry.system = systemOfNetworkMessage(number);
        takeDifference(in, entry.geometric);
        in.take(8, entry.issueOfData);
        takeDifference(in, entry.ionospheric);
    }
}

void read(BitReader& in, unsigned number, NetworkResiduals& message) {
    message.messageNumber = number;
    message.epoch = epochOf(in, number, kSecond);
    in.take(kStationBits, message.station);
    in.take(7, message.referenceStations);
    message.satellites.resize(in.number(5));
    for (ResidualsEntry& entry : message.satellites) {
        in.take(kSatelliteBits, entry.satId);
        in.take(8, entry.constant);
        in.take(9, entry.byDistance);
        in.take(6, entry.byHeight);
        in.take(10, entry.ionoConstant);
        in.take(10, entry.ionoByDistance);
    }
}

void read(BitReader& in, unsigned, PhysicalReference& message) {
    in.take(kStationBits, message.station);
    in.take(kStationBits, message.physicalStation);
    in.take(6, message.itrfYear);
    for (std::int64_t& axis : message.position) in.takeSigned(38, axis);
}

void read(BitReader& in, unsigned number, AreaGradients& message) {
    message.messageNumber = number;
    in.take(kStationBits, message.station);
    message.epoch = epochOf(in, number, kSecond);
    message.satellites.resize(in.number(5));
    for (POS_REF_GRADIENTS& entry : message.satellites) {
        in.take(kSatelliteBits, entry.satId);
        in.take(8, entry.issueOfData);
        in.takeSigned(12, entry.geometryNorth);
        in.takeSigned(12, entry.geometryEast);
        in.takeSigned(14, entry.ionosphereNorth);
        in.takeSigned(14, entry.ionosphereEast);
    }
}

void read(BitReader& in, unsigned, PIO::RTCM3::UTF8MessageC& message) {
    in.take(kStationBits, message.stationId);
    in.take(16, message.day);
    in.take(17, message.secondsOfDay);
    in.take(7, message.characters);
    in.take(8, message.codeUnits);
    for (std::size_t i = 0; i < message.codeUnits; ++i) message.text[i] = static_cast<char>(in.number(8));
}

template <class Message>
bool readAs(const Frame& frame, NetworkMessage& message) {
    BitReader in(frame.message);
    in.skip(12);
    Message made;
    read(in, frame.number, made);
    if (in.ok()) message = std::move(made);
    return in.ok();
}

}  // namespace

bool isNetworkMessage(unsigned number) {
    return (number >= 1014 && number <= 1017) || (number >= 1029 && number <= 1032) || number == 1034 ||
           number == 1035 || (number >= 1037 && number <= 1039);
}

bool readNetworkMessage(const Frame& frame, NetworkMessage& message) {
    switch (frame.number) {
        case 1014:
            return readAs<CALN::Msg1014T>(frame, message);
        case 1015:
        case 1037:
            return readAs<Differences<CALN::IonoMsgT>>(frame, message);
        case 1016:
        case 1038:
            return readAs<Differences<CALN::GeoMsgT>>(frame, message);
        case 1017:
        case 1039:
            return readAs<CALN::IonoGeoMsgT>(frame, message);
        case 1029:
            return readAs<PIO::RTCM3::UTF8MessageC>(frame, message);
        case 1030:
        case 1031:
            return readAs<NetworkResiduals>(frame, message);
        case 1032:
            return readAs<PhysicalReference>(frame, message);
        case 1034:
        case 1035:
            return readAs<AreaGradients>(frame, message);
        default:
            return false;
    }
}

CALN::eCALSATSYSTEM systemOfNetworkMessage(unsigned number) {
    const bool glonass = number == 1031 || number == 1035 || (number >= 1037 && number <= 1039);
    return glonass ? CALN::eCALSATSYSTEM_GLONASS : CALN::eCALSATSYSTEM_GPS;
}

NetworkEpoch epochOf(const CALN::IonoGeoMsgT& message) {
    const bool glonass = isGlonass(message.header.messageNumber);
    return {glonass ? EpochScale::glonassDay : EpochScale::gpsWeek, message.header.epoch * kTenth};
}

std::optional<SMjdTime> instantOf(const NetworkEpoch& epoch, const SMjdTime& reference) {
    constexpr std::int64_t kDay = 86400 * kSecond;
    // A day in Moscow with a leap second has 86401.
    const std::int64_t end = epoch.scale == EpochScale::gpsWeek ? 7 * kDay : kDay + kSecond;
    if (!reference.IsSet() || epoch.milliseconds < 0 || epoch.milliseconds >= end) return std::nullopt;
    return instantNear(reference, epoch.scale, epoch.milliseconds);
}

}  // namespace halvex::rtcm3
