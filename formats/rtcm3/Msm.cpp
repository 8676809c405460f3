#include <array>
#include <bit>

#include "formats/rinex/SatelliteName.h"
#include "formats/rtcm3/BitReader.h"
#include "formats/rtcm3/Observations.h"

namespace halvex::rtcm3 {
namespace {

constexpr double kMetresPerMillisecond = 299792.458;
constexpr std::int64_t kMillisecondsPerDay = 86400000;
constexpr std::size_t kMostCells = 64;

/// Fields of one kind of MSM. RTCM 10403.3, tables 3.5-82 to 3.5-90.
struct Layout {
    bool rates = false;  ///< with extended information and range rates
    unsigned codeBits = 15, phaseBits = 22, lockBits = 4, cnoBits = 6;
    double codeStep = 0x1p-24, phaseStep = 0x1p-29, cnoStep = 1.0;  ///< [ms, ms, dB-Hz]
};
constexpr Layout layoutOf(unsigned kind) {
    Layout layout;
    layout.rates = kind == 5 || kind == 7;
    if (kind >= 6) {
        layout.codeBits = 20;
        layout.phaseBits = 24;
        layout.lockBits = 10;
        layout.cnoBits = 10;
        layout.codeStep = 0x1p-29;
        layout.phaseStep = 0x1p-31;
        layout.cnoStep = 0x1p-4;
    }
    return layout;
}

/// A number of two's complement whose lowest value means that there is none.
std::optional<double> scaled(BitReader& in, unsigned width, double step) {
    const std::int64_t value = in.signedBits(width);
    if (value == -(std::int64_t{1} << (width - 1))) return std::nullopt;
    return static_cast<double>(value) * step;
}

/// The satellite of a bit of the satellite mask, 1 to 64.
CALN::SCalSatID satelliteOfMask(CALN::eCALSATSYSTEM system, unsigned id) {
    constexpr unsigned kFirstSbas = 19;  // bit 1 is PRN 120
    const unsigned number = system == CALN::eCALSATSYSTEM_SBAS ? id + kFirstSbas : id;
    if (number > rinex::lastSatelliteInFiles(*systemOfCode(system))) return {};
    return {system, static_cast<unsigned char>(number)};
}

bool readTime(BitReader& in, ObservationMessage& message) {
    constexpr unsigned kNoDay = 7;
    if (message.system == CALN::eCALSATSYSTEM_GLONASS) {
        const unsigned day = in.number(3);
        message.scale = day == kNoDay ? EpochScale::glonassDay : EpochScale::glonassInWeek;
        message.dayOfWeek = static_cast<int>(day);
        message.milliseconds = in.number(27);
        return message.milliseconds < kMillisecondsPerDay + 1000;  // with a leap second
    }
    message.scale = message.system == CALN::eCALSATSYSTEM_BEIDOU ? EpochScale::beidouWeek : EpochScale::gpsWeek;
    message.milliseconds = in.number(30);
    // Receivers that subtract BeiDou's 14 s from the time of the GPS week send the week's first ones as negative.
    constexpr std::int64_t kTurn = std::int64_t{1} << 30;
    constexpr std::int64_t kBehindGps = 14000;
    if (message.scale == EpochScale::beidouWeek && message.milliseconds >= kTurn - kBehindGps) {
        message.milliseconds -= kTurn;
    }
    return message.milliseconds < 7 * kMillisecondsPerDay;
}

struct Satellite {
    CALN::SCalSatID id;
    std::optional<double> roughRange;  // [ms]
    std::optional<double> roughRate;   // [m/s]
    std::optional<int> channel;
};

void readSatellites(BitReader& in, bool rates, std::span<Satellite> satellites) {
    constexpr unsigned kNoRange = 255;
    for (Satellite& satellite : satellites) {
        const unsigned whole = in.number(8);
        if (whole != kNoRange) satellite.roughRange = whole;
    }
    for (Satellite& satellite : satellites) {
        const unsigned information = rates ? in.number(4) : 15;
        constexpr unsigned kLastChannel = 13;
        if (satellite.id.system == CALN::eCALSATSYSTEM_GLONASS && information <= kLastChannel) {
            satellite.channel = static_cast<int>(information) - 7;
        }
    }
    for (Satellite& satellite : satellites) {
        const double part = static_cast<double>(in.bits(10)) / 1024.0;
        if (satellite.roughRange) *satellite.roughRange += part;
    }
    for (Satellite& satellite : satellites) {
        if (rates) satellite.roughRate = scaled(in, 14, 1.0);
    }
}

}  // namespace

MsmKind msmKindOf(unsigned number) {
    using namespace CALN;
    static constexpr std::array kOrder{eCALSATSYSTEM_GPS,  eCALSATSYSTEM_GLONASS, eCALSATSYSTEM_GALILEO,
                                       eCALSATSYSTEM_SBAS, eCALSATSYSTEM_QZSS,    eCALSATSYSTEM_BEIDOU,
                                       eCALSATSYSTEM_NAVIC};
    constexpr unsigned kFirst = 1070;
    if (number < kFirst || number >= kFirst + 10 * kOrder.size()) return {};
    const unsigned kind = number % 10;
    return kind >= 1 && kind <= 7 ? MsmKind{kOrder[(number - kFirst) / 10], kind} : MsmKind();
}

bool readMsm(const Frame& frame, ObservationMessage& message) {
    const auto [system, kind] = msmKindOf(frame.number);
    if (kind < 4) return false;
    BitReader in(frame.message);
    in.skip(12);
    message.system = system;
    message.station = in.number(12);
    if (!readTime(in, message)) return false;
    message.more = in.flag();
    in.skip(18);  // issue of data of the station, reserved, steering, external clock, smoothing
    std::uint64_t satelliteMask = in.bits(64);
    auto signalMask = static_cast<std::uint32_t>(in.bits(32));
    const auto satelliteCount = static_cast<unsigned>(std::popcount(satelliteMask));
    const auto signalCount = static_cast<unsigned>(std::popcount(signalMask));
    const unsigned maskBits = satelliteCount * signalCount;
    if (maskBits > kMostCells) return false;

    std::array<Satellite, kMostCells> satellites;
    for (unsigned i = 0; satelliteMask != 0; ++i) {
        const auto bit = static_cast<unsigned>(std::countl_zero(satelliteMask));
        satelliteMask &= ~(std::uint64_t{1} << (63 - bit));
        satellites[i].id = satelliteOfMask(system, bit + 1);
    }
    std::array<Signal, 32> signals;
    for (unsigned i = 0; signalMask != 0; ++i) {
        const auto bit = static_cast<unsigned>(std::countl_zero(signalMask));
        signalMask &= ~(std::uint32_t{1} << (31 - bit));
        signals[i] = signalOfMask(system, bit + 1);
    }
    const std::uint64_t cellMask = in.bits(maskBits);
    const auto cells = static_cast<std::size_t>(std::popcount(cellMask));
    if (satelliteCount > 0) readSatellites(in, layoutOf(kind).rates, std::span(satellites).first(satelliteCount));

    const Layout layout = layoutOf(kind);
    const std::size_t cellBits =
        layout.codeBits + layout.phaseBits + layout.lockBits + 1 + layout.cnoBits + (layout.rates ? 15U : 0U);
    if (!in.ok() || in.left() < cells * cellBits) return false;

    message.unknownSatellites = 0;
    message.unknownSignals = 0;
    message.measurements.clear();
    message.measurements.resize(cells);
    std::vector<Measurement>& list = message.measurements;
    std::array<const Satellite*, kMostCells> owners{};
    std::size_t next = 0;
    for (unsigned cell = 0; cell < maskBits; ++cell) {
        if ((cellMask >> (maskBits - 1 - cell) & 1U) == 0) continue;
        owners[next] = &satellites[cell / signalCount];
        list[next].satellite = owners[next]->id;
        list[next].glonassChannel = owners[next]->channel;
        list[next].signal = signals[cell % signalCount];
        ++next;
    }
    for (std::size_t i = 0; i < cells; ++i) {
        const auto fine = scaled(in, layout.codeBits, layout.codeStep);
        const auto& rough = owners[i]->roughRange;
        if (fine && rough) list[i].pseudorange = (*rough + *fine) * kMetresPerMillisecond;
    }
    for (std::size_t i = 0; i < cells; ++i) {
        const auto fine = scaled(in, layout.phaseBits, layout.phaseStep);
        const auto& rough = owners[i]->roughRange;
        if (fine && rough) list[i].phaseRange = (*rough + *fine) * kMetresPerMillisecond;
    }
    for (Measurement& value : list) {
        const unsigned indicator = in.number(layout.lockBits);
        value.lock = layout.lockBits == 4 ? lockTimeMsm(indicator) : lockTimeExtended(indicator);
    }
    for (Measurement& value : list) value.halfCycle = in.flag();
    for (Measurement& value : list) {
        const unsigned ratio = in.number(layout.cnoBits);
        if (ratio != 0) value.cno = ratio * layout.cnoStep;
    }
    for (std::size_t i = 0; layout.rates && i < cells; ++i) {
        constexpr double kRateStep = 0.0001;  // [m/s]
        const auto fine = scaled(in, 15, kRateStep);
        const auto& rough = owners[i]->roughRate;
        if (fine && rough) list[i].rangeRate = *rough + *fine;
    }

    for (unsigned i = 0; i < satelliteCount; ++i) message.unknownSatellites += satellites[i].id.number == 0 ? 1U : 0U;
    std::erase_if(list, [&](const Measurement& value) {
        if (value.satellite.number != 0 && value.signal.band == 0) ++message.unknownSignals;
        return value.satellite.number == 0 || value.signal.band == 0;
    });
    return in.ok();
}

}  // namespace halvex::rtcm3
