#include "formats/rtcm3/StationMessages.h"

#include "formats/rinex/TimeSystems.h"
#include "formats/rtcm3/BitReader.h"
#include "halvex/platform/caln/Coordinates.h"

namespace halvex::rtcm3 {
namespace {

/// A text behind its length of eight bits; what a header cannot hold becomes a blank.
std::string text(BitReader& in) {
    const unsigned length = in.number(8);
    if (in.left() / 8 < length) {
        in.skip(in.left() + 1);
        return {};
    }
    std::string value;
    for (unsigned i = 0; i < length; ++i) {
        const unsigned byte = in.number(8);
        value += byte >= ' ' && byte <= '~' ? static_cast<char>(byte) : ' ';
    }
    return value;
}

}  // namespace

bool isStationMessage(unsigned number) {
    return (number >= 1005 && number <= 1008) || number == 1033;
}

std::optional<unsigned> stationOf(const Frame& frame) {
    if (!isStationMessage(frame.number)) return std::nullopt;
    BitReader in(frame.message);
    in.skip(12);
    const unsigned station = in.number(12);
    return in.ok() ? std::optional(station) : std::nullopt;
}

bool readStationMessage(const Frame& frame, StationDescription& description) {
    if (!isStationMessage(frame.number)) return false;
    BitReader in(frame.message);
    in.skip(24);
    StationDescription read = description;
    if (frame.number == 1005 || frame.number == 1006) {
        constexpr double kStep = 0.0001;  // [m]
        in.skip(6 + 4);                   // realisation year; GPS, GLONASS, Galileo, reference station
        std::array<double, 3> position{};
        position[0] = static_cast<double>(in.signedBits(38)) * kStep;
        in.skip(2);  // single oscillator, reserved
        position[1] = static_cast<double>(in.signedBits(38)) * kStep;
        in.skip(2);  // quarter cycles
        position[2] = static_cast<double>(in.signedBits(38)) * kStep;
        if (position != std::array<double, 3>{}) read.position = position;
        if (frame.number == 1006) read.antennaHeight = static_cast<double>(in.bits(16)) * kStep;
    } else {
        read.antennaType = text(in);
        in.skip(8);  // set-up
        if (frame.number != 1007) read.antennaNumber = text(in);
        if (frame.number == 1033) {
            read.receiverType = text(in);
            read.receiverVersion = text(in);
            read.receiverNumber = text(in);
        }
    }
    if (in.ok()) description = read;
    return in.ok();
}

void describe(const StationDescription& description, rinex::ObservationHeader& header) {
    header.position = description.position;
    header.antennaDelta.reset();
    if (description.antennaHeight) header.antennaDelta = {*description.antennaHeight, 0.0, 0.0};
    if (description.position && description.antennaHeight) {
        const auto& [x, y, z] = *description.position;
        ORBIT_GEOGRAPHIC marker = toGeographic({x, y, z});
        marker.height -= *description.antennaHeight;
        const ORBIT_COORD position = toCartesian(marker);
        header.position = {position.x, position.y, position.z};
    }
    header.antennaType = description.antennaType;
    header.antennaNumber = description.antennaNumber;
    header.receiverType = description.receiverType;
    header.receiverVersion = description.receiverVersion;
    header.receiverNumber = description.receiverNumber;
}

std::optional<SMjdTime> timeOfMessage(const Frame& frame) {
    if (frame.number != 1013 && frame.number != 1029) return std::nullopt;
    BitReader in(frame.message);
    in.skip(24);
    const auto day = static_cast<std::int32_t>(in.bits(16));
    const double second = static_cast<double>(in.bits(17));
    // Streams whose clock is not set send day 0.
    if (!in.ok() || day < SMjdTime::kMjdOfGpsWeek0) return std::nullopt;
    SMjdTime time = SMjdTime::FromDayAndMilliseconds(day, second * 1000.0);
    time.AddSeconds(rinex::gpsMinusUtc(time));
    return time;
}

}  // namespace halvex::rtcm3
