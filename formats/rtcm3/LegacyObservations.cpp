#include "formats/rtcm3/BitReader.h"
#include "formats/rtcm3/Observations.h"

#include "formats/rinex/SatelliteName.h"

namespace halvex::rtcm3 {
namespace {

constexpr double kRangeStep = 0.02;    // [m]
constexpr double kPhaseStep = 0.0005;  // [m]
constexpr double kCnoStep = 0.25;      // [dB-Hz]
constexpr int kStepOfPhase = 1500;     // cycles; RTCM 10403.3, DF012
constexpr std::int64_t kMillisecondsPerDay = 86400000;

/// What L2 was tracked with: DF016, DF046.
char attributeOnL2(bool glonass, unsigned indicator) {
    if (indicator == 0) return glonass ? 'C' : 'X';
    return indicator == 1 ? 'P' : glonass ? char{0} : 'W';
}

std::optional<double> difference(BitReader& in, unsigned width, double step) {
    const std::int64_t value = in.signedBits(width);
    if (value == -(std::int64_t{1} << (width - 1))) return std::nullopt;
    return static_cast<double>(value) * step;
}

void readRatio(BitReader& in, Measurement& value) {
    const unsigned ratio = in.number(8);
    if (ratio != 0) value.cno = ratio * kCnoStep;
}

/// The range on L1 [m], from which those on L2 are told as differences.
double readL1(BitReader& in, bool glonass, Measurement& l1) {
    const bool precise = in.flag();
    if (glonass) {
        constexpr unsigned kLastChannel = 20;
        const unsigned channel = in.number(5);
        if (channel <= kLastChannel) l1.glonassChannel = static_cast<int>(channel) - 7;
    }
    const double part = static_cast<double>(in.bits(glonass ? 25 : 24)) * kRangeStep;
    const auto phase = difference(in, 20, kPhaseStep);
    l1.lock = lockTimeObservation(in.number(7));
    const double modulus = glonass ? 599584.916 : 299792.458;  // [m]
    const double range = part + static_cast<double>(in.bits(glonass ? 7 : 8)) * modulus;
    readRatio(in, l1);
    l1.signal = signalOf(l1.satellite.system, '1', precise ? 'P' : 'C');
    l1.pseudorange = range;
    l1.phaseStep = kStepOfPhase;
    if (phase) l1.phaseRange = range + *phase;
    return range;
}

void readL2(BitReader& in, bool glonass, double range, Measurement& l2) {
    const unsigned indicator = in.number(2);
    const auto code = difference(in, 14, kRangeStep);
    const auto phase = difference(in, 20, kPhaseStep);
    l2.lock = lockTimeObservation(in.number(7));
    readRatio(in, l2);
    const char attribute = attributeOnL2(glonass, indicator);
    if (attribute != 0) l2.signal = signalOf(l2.satellite.system, '2', attribute);
    l2.phaseStep = kStepOfPhase;
    if (code) l2.pseudorange = range + *code;
    if (phase) l2.phaseRange = range + *phase;
}

}  // namespace

CALN::SCalSatID satelliteOf(CALN::eCALSATSYSTEM system, unsigned number) {
    constexpr unsigned kFirstSbas = 40;
    constexpr unsigned kLastSbas = 58;
    constexpr unsigned kSbasNumber = 20;
    if (system == CALN::eCALSATSYSTEM_GPS && number >= kFirstSbas && number <= kLastSbas) {
        return {CALN::eCALSATSYSTEM_SBAS, static_cast<unsigned char>(number - kFirstSbas + kSbasNumber)};
    }
    if (number > rinex::lastSatelliteInFiles(*systemOfCode(system))) return {};
    return {system, static_cast<unsigned char>(number)};
}

bool readLegacyObservations(const Frame& frame, ObservationMessage& message) {
    const bool glonass = frame.number == 1010 || frame.number == 1012;
    const bool bothBands = frame.number == 1004 || frame.number == 1012;
    if (!glonass && frame.number != 1002 && frame.number != 1004) return false;
    BitReader in(frame.message);
    in.skip(12);
    message.system = glonass ? CALN::eCALSATSYSTEM_GLONASS : CALN::eCALSATSYSTEM_GPS;
    message.scale = glonass ? EpochScale::glonassDay : EpochScale::gpsWeek;
    message.station = in.number(12);
    message.milliseconds = in.number(glonass ? 27 : 30);
    if (message.milliseconds >= (glonass ? kMillisecondsPerDay + 1000 : 7 * kMillisecondsPerDay)) return false;
    message.more = in.flag();
    const unsigned satellites = in.number(5);
    in.skip(4);  // smoothing
    const std::size_t perSatellite = (glonass ? 79U : 74U) + (bothBands ? 51U : 0U);
    if (!in.ok() || in.left() < satellites * perSatellite) return false;

    message.unknownSatellites = 0;
    message.unknownSignals = 0;
    message.measurements.clear();
    for (unsigned i = 0; i < satellites; ++i) {
        Measurement l1;
        l1.satellite = satelliteOf(message.system, in.number(6));
        Measurement l2;
        l2.satellite = l1.satellite;
        const double range = readL1(in, glonass, l1);
        l2.glonassChannel = l1.glonassChannel;
        if (bothBands) readL2(in, glonass, range, l2);
        if (l1.satellite.number == 0) {
            ++message.unknownSatellites;
            continue;
        }
        message.measurements.push_back(l1);
        if (l2.pseudorange || l2.phaseRange) {
            if (l2.signal.band != 0) {
                message.measurements.push_back(l2);
            } else {
                ++message.unknownSignals;
            }
        }
    }
    return in.ok();
}

}  // namespace halvex::rtcm3
