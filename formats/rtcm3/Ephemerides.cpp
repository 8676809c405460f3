#include "formats/rtcm3/Ephemerides.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "formats/rinex/GlonassFields.h"
#include "formats/rinex/SatelliteName.h"
#include "formats/rinex/TimeSystems.h"
#include "formats/rtcm3/BitReader.h"

namespace halvex::rtcm3 {
namespace {

using rinex::MessageKind;

constexpr double kPi = 3.1415926535898;  // of broadcast orbits; IS-GPS-200, 20.3.3.4.3
constexpr double kWeek = 604800.0;
constexpr int kWeeksOfTenBits = 1024;
constexpr int kFirstGalileoWeek = 1024;  // as a GPS week

double scaled(BitReader& in, unsigned width, double step) {
    return static_cast<double>(in.signedBits(width)) * step;
}
double scaledUnsigned(BitReader& in, unsigned width, double step) {
    return static_cast<double>(in.bits(width)) * step;
}
/// Semicircles, or semicircles per second.
double angle(BitReader& in, unsigned width, double step) {
    return scaled(in, width, step) * kPi;
}

/// Nominal user range accuracy of an index [m]. IS-GPS-200, 20.3.3.3.1.3.
double uraOf(unsigned index) {
    constexpr double kRounded[] = {2.0, 2.8, 4.0, 5.7, 8.0, 11.3, 16.0};
    return index < std::size(kRounded) ? kRounded[index] : std::ldexp(1.0, static_cast<int>(index) - 2);
}

/// Sets satellite and source; false when there is no such satellite.
bool begin(CALN::eCALSATSYSTEM system, unsigned number, unsigned base, CALN::CALX_SAT_EPHEMERIS_BASE& record,
           Ephemeris& ephemeris) {
    if (number < 1 || number > rinex::lastSatelliteInFiles(*systemOfCode(system))) return false;
    ephemeris.satellite = {system, static_cast<unsigned char>(number)};
    record.satId = static_cast<unsigned char>(base + number);
    record.source = CALN::eCALORBITSOURCE_STREAM;
    return true;
}

/// Sets the week of toe, `week` being the one that was sent, in the GPS count less `weekOffset`.
void setWeek(int week, int weekOffset, const TimeReference& reference, CALN::CALX_SAT_EPHEMERIS_COMMON& record) {
    if (reference.isEpoch) {
        const double ahead = SMjdTime(week + weekOffset, record.toe).GetDifferenceInSeconds(reference.time);
        if (std::fabs(ahead) > kWeek / 2 && std::fabs(ahead) < 1.5 * kWeek) week -= ahead > 0 ? 1 : -1;
    }
    record.week = static_cast<unsigned short>(std::max(week, 0));
    record.transmissionTime = record.toe;
}

/// Whether an orbit dates the messages around it. The week that is sent is that of the sending: shortly behind the
/// week's begin toe may have been sent in either week.
bool tellsTime(const CALN::CALX_SAT_EPHEMERIS_COMMON& record) {
    constexpr double kSentAhead = 2 * 3600.0;  // IS-GPS-200, 20.3.4.4; the others less
    return record.toe > kSentAhead;
}

/// How wide the elements from Crs to the rate of right ascension are, and the units of their last bits.
struct KeplerFields {
    unsigned bits = 16;          ///< of the corrections
    double radiusStep = 0x1p-5;  ///< [m]
    double angleStep = 0x1p-29;  ///< [rad]
    unsigned toeBits = 16;
    double toeStep = 16.0;  ///< [s]
};

/// These elements in the order that all but NavIC have.
void readKepler(BitReader& in, const KeplerFields& fields, CALN::CALX_SAT_EPHEMERIS_COMMON& r) {
    r.crs = scaled(in, fields.bits, fields.radiusStep);
    r.deltaN = angle(in, 16, 0x1p-43);
    r.m0 = angle(in, 32, 0x1p-31);
    r.cuc = scaled(in, fields.bits, fields.angleStep);
    r.e = scaledUnsigned(in, 32, 0x1p-33);
    r.cus = scaled(in, fields.bits, fields.angleStep);
    r.sqrtA = scaledUnsigned(in, 32, 0x1p-19);
    r.toe = scaledUnsigned(in, fields.toeBits, fields.toeStep);
    r.cic = scaled(in, fields.bits, fields.angleStep);
    r.omega0 = angle(in, 32, 0x1p-31);
    r.cis = scaled(in, fields.bits, fields.angleStep);
    r.i0 = angle(in, 32, 0x1p-31);
    r.crc = scaled(in, fields.bits, fields.radiusStep);
    r.omega = angle(in, 32, 0x1p-31);
    r.omegaDot = angle(in, 24, 0x1p-43);
}

bool readGps(BitReader& in, const TimeReference& reference, Ephemeris& ephemeris) {
    auto& r = ephemeris.record.emplace<CALN::CALX_SAT_EPHEMERIS>();
    if (!begin(CALN::eCALSATSYSTEM_GPS, in.number(6), 0, r, ephemeris)) return false;
    const unsigned week = in.number(10);
    in.take(4, r.uraIndex);
    in.take(2, r.codeOnL2);
    r.idot = angle(in, 14, 0x1p-43);
    in.skip(8);  // the issue of the orbit is the low part of the IODC
    r.toc = scaledUnsigned(in, 16, 16.0);
    r.af2 = scaled(in, 8, 0x1p-55);
    r.af1 = scaled(in, 16, 0x1p-43);
    r.af0 = scaled(in, 22, 0x1p-31);
    in.take(10, r.iodc);
    readKepler(in, {}, r);
    r.tgd = scaled(in, 8, 0x1p-31);
    in.take(6, r.health);
    in.take(1, r.l2pDataFlag);
    in.take(1, r.fitIntervalFlag);
    r.ura = uraOf(r.uraIndex);
    setWeek(fullWeek(week, kWeeksOfTenBits, reference), 0, reference, r);
    ephemeris.tellsTime = r.isHealthy() && tellsTime(r);
    return true;
}

bool readQzss(BitReader& in, const TimeReference& reference, Ephemeris& ephemeris) {
    constexpr unsigned kBase = 192;
    auto& r = ephemeris.record.emplace<CALN::CALX_SAT_EPHEMERIS_QZSS>();
    if (!begin(CALN::eCALSATSYSTEM_QZSS, in.number(4), kBase, r, ephemeris)) return false;
    r.toc = scaledUnsigned(in, 16, 16.0);
    r.af2 = scaled(in, 8, 0x1p-55);
    r.af1 = scaled(in, 16, 0x1p-43);
    r.af0 = scaled(in, 22, 0x1p-31);
    in.skip(8);  // the issue of the orbit is the low part of the IODC
    readKepler(in, {}, r);
    r.idot = angle(in, 14, 0x1p-43);
    in.take(2, r.codeOnL2);
    const unsigned week = in.number(10);
    in.take(4, r.uraIndex);
    in.take(6, r.health);
    r.tgd = scaled(in, 8, 0x1p-31);
    in.take(10, r.iodc);
    in.take(1, r.fitIntervalFlag);
    r.ura = uraOf(r.uraIndex);
    setWeek(fullWeek(week, kWeeksOfTenBits, reference), 0, reference, r);
    ephemeris.tellsTime = r.isHealthy() && tellsTime(r);
    return true;
}

bool readBeidou(BitReader& in, const TimeReference& reference, Ephemeris& ephemeris) {
    using Beidou = CALN::CALX_SAT_EPHEMERIS_BEIDOU;
    auto& r = ephemeris.record.emplace<Beidou>();
    if (!begin(CALN::eCALSATSYSTEM_BEIDOU, in.number(6), 0, r, ephemeris)) return false;
    const unsigned week = in.number(13);
    r.ura = uraOf(in.number(4));
    r.idot = angle(in, 14, 0x1p-43);
    in.take(5, r.aode);
    r.toc = scaledUnsigned(in, 17, 8.0);
    r.af2 = scaled(in, 11, 0x1p-66);
    r.af1 = scaled(in, 22, 0x1p-50);
    r.af0 = scaled(in, 24, 0x1p-33);
    in.take(5, r.aodc);
    readKepler(in, {.bits = 18, .radiusStep = 0x1p-6, .angleStep = 0x1p-31, .toeBits = 17, .toeStep = 8.0}, r);
    r.tgd1 = scaled(in, 10, 1e-10);
    r.tgd2 = scaled(in, 10, 1e-10);
    in.take(1, r.health);
    r.messageType = r.isGeostationary() ? CALN::eCALBDSMESSAGE_D2 : CALN::eCALBDSMESSAGE_D1;
    setWeek(static_cast<int>(week), Beidou::kGpsWeekOfWeek0, reference, r);
    ephemeris.kind = r.isGeostationary() ? MessageKind::beidouD2 : MessageKind::beidouD1;
    ephemeris.tellsTime = r.isHealthy() && tellsTime(r);
    return true;
}

bool readGalileo(BitReader& in, bool fnav, const TimeReference& reference, Ephemeris& ephemeris) {
    using Galileo = CALN::CALX_SAT_EPHEMERIS_GALILEO;
    constexpr unsigned kBase = 56;
    constexpr double kMinute = 60.0;
    auto& r = ephemeris.record.emplace<Galileo>();
    if (!begin(CALN::eCALSATSYSTEM_GALILEO, in.number(6), kBase, r, ephemeris)) return false;
    const unsigned week = in.number(12);
    in.take(10, r.iodNav);
    in.take(8, r.sisaIndex);
    r.idot = angle(in, 14, 0x1p-43);
    r.toc = scaledUnsigned(in, 14, kMinute);
    r.af2 = scaled(in, 6, 0x1p-59);
    r.af1 = scaled(in, 21, 0x1p-46);
    r.af0 = scaled(in, 31, 0x1p-34);
    readKepler(in, {.toeBits = 14, .toeStep = kMinute}, r);
    r.bgdE5aE1 = scaled(in, 10, 0x1p-32);
    const auto status = [&in](Galileo::SignalStatus& signal) {
        in.take(2, signal.health);
        in.take(1, signal.dataValidity);
    };
    // Data sources as files number them: F/NAV on E5a with its clock; I/NAV on E1-B and E5b with theirs.
    if (fnav) {
        status(r.e5a);
        in.skip(7);
        r.navType = Galileo::kFNav;
        r.dataSources = 0x102;
    } else {
        r.bgdE5bE1 = scaled(in, 10, 0x1p-32);
        status(r.e5b);
        status(r.e1b);
        in.skip(2);
        r.navType = Galileo::kINav;
        r.inavReception = Galileo::kReceivedOnBoth;
        r.dataSources = 0x205;
    }
    setWeek(static_cast<int>(week) + kFirstGalileoWeek, 0, reference, r);
    r.pageType1Week = r.week;
    r.pageType1Seconds = r.transmissionTime;
    ephemeris.tellsTime = r.isHealthy() && tellsTime(r);
    return true;
}

bool readNavic(BitReader& in, const TimeReference& reference, Ephemeris& ephemeris) {
    auto& r = ephemeris.record.emplace<CALN::CALX_SAT_EPHEMERIS_NAVIC>();
    if (!begin(CALN::eCALSATSYSTEM_NAVIC, in.number(6), 0, r, ephemeris)) return false;
    const unsigned week = in.number(10);  // begins with GPS week 1024: the same modulo 1024
    r.af0 = scaled(in, 22, 0x1p-31);
    r.af1 = scaled(in, 16, 0x1p-43);
    r.af2 = scaled(in, 8, 0x1p-55);
    r.ura = uraOf(in.number(4));
    r.toc = scaledUnsigned(in, 16, 16.0);
    r.tgd = scaled(in, 8, 0x1p-31);
    r.deltaN = angle(in, 22, 0x1p-41);
    in.take(8, r.iodec);
    in.skip(10);
    const unsigned l5 = in.number(1);
    r.health = static_cast<unsigned short>(l5 | in.number(1) << 1U);
    r.cuc = scaled(in, 15, 0x1p-28);
    r.cus = scaled(in, 15, 0x1p-28);
    r.cic = scaled(in, 15, 0x1p-28);
    r.cis = scaled(in, 15, 0x1p-28);
    r.crc = scaled(in, 15, 0x1p-4);
    r.crs = scaled(in, 15, 0x1p-4);
    r.idot = angle(in, 14, 0x1p-43);
    r.m0 = angle(in, 32, 0x1p-31);
    r.toe = scaledUnsigned(in, 16, 16.0);
    r.e = scaledUnsigned(in, 32, 0x1p-33);
    r.sqrtA = scaledUnsigned(in, 32, 0x1p-19);
    r.omega0 = angle(in, 32, 0x1p-31);
    r.omega = angle(in, 32, 0x1p-31);
    r.omegaDot = angle(in, 22, 0x1p-41);
    r.i0 = angle(in, 32, 0x1p-31);
    in.skip(4);
    setWeek(fullWeek(week, kWeeksOfTenBits, reference), 0, reference, r);
    ephemeris.kind = MessageKind::navic;
    ephemeris.tellsTime = r.isHealthy() && tellsTime(r);
    return true;
}

/// The instant nearest to `near` at which Moscow's clock shows that second; both in UTC.
SMjdTime nearestMoscowSecond(double second, const SMjdTime& near) {
    constexpr double kDay = 86400.0;
    constexpr double kMoscowAhead = 3 * 3600.0;
    SMjdTime time = near;
    const double ofDay = near.GetMjdFractMilliseconds() / 1000.0;
    time.AddSeconds(std::remainder(second - kMoscowAhead - ofDay, kDay));
    return time;
}

bool readGlonass(BitReader& in, const TimeReference& reference, Ephemeris& ephemeris) {
    constexpr double kKilometre = 1000.0;
    constexpr unsigned kLastTb = 95;
    auto& r = ephemeris.record.emplace<CALN::CALX_SAT_EPHEMERIS_GLONASS>();
    if (!begin(CALN::eCALSATSYSTEM_GLONASS, in.number(6), 0, r, ephemeris)) return false;
    const unsigned channel = in.number(5);
    constexpr unsigned kLastChannel = 20;
    if (channel > kLastChannel) return false;
    r.frequencyNumber = static_cast<signed char>(static_cast<int>(channel) - 7);
    r.healthFlags = in.number(1);
    r.healthFlags |= in.number(1) << 1U;
    const unsigned p1 = in.number(2);
    const unsigned frame = in.number(12);
    r.frameTime = (frame >> 7U) * 3600 + (frame >> 1U & 63U) * 60 + (frame & 1U) * 30;
    const unsigned bn = in.number(1);
    const unsigned p2 = in.number(1);
    const unsigned tb = in.number(7);
    for (std::size_t axis = 0; axis < 3; ++axis) {
        r.velocity[axis] = static_cast<double>(in.signMagnitude(24)) * 0x1p-20 * kKilometre;
        r.position[axis] = static_cast<double>(in.signMagnitude(27)) * 0x1p-11 * kKilometre;
        r.acceleration[axis] = static_cast<double>(in.signMagnitude(5)) * 0x1p-30 * kKilometre;
    }
    const unsigned p3 = in.number(1);
    r.gammaN = static_cast<double>(in.signMagnitude(11)) * 0x1p-40;
    const unsigned p = in.number(2);
    unsigned ln = in.number(1);
    r.tauN = static_cast<double>(in.signMagnitude(22)) * 0x1p-30;
    r.deltaTauN = static_cast<double>(in.signMagnitude(5)) * 0x1p-30;
    r.ageOfData = static_cast<int>(in.number(5));
    const unsigned p4 = in.number(1);
    in.take(4, r.accuracyIndex);
    const unsigned day = in.number(11);
    in.take(2, r.modification);
    const bool additional = in.flag();
    in.skip(11 + 32);  // day and correction of the almanac
    const unsigned fourYears = in.number(5);
    in.skip(22);
    ln |= in.number(1);
    in.skip(7);
    if (!in.ok() || tb > kLastTb || tb == 0) return false;
    r.controlFlags = p | p1 << 2U | p2 << 4U | p3 << 5U | p4 << 6U;
    r.health = bn | ln << 1U;
    r.healthFlags |= ln << 2U;

    // With day and four-year interval the message has its whole date; tb may lie on the next day.
    SMjdTime near = reference.time.IsSet() ? reference.time : reference.latest;
    near.SubtractSeconds(rinex::gpsMinusUtc(near));
    const SMjdTime known = near;
    constexpr unsigned kLastDay = 1461;
    if (additional && fourYears != 0 && day != 0 && day <= kLastDay) {
        constexpr int kFirstYear = 1996;
        near = SMjdTime(kFirstYear + 4 * (static_cast<int>(fourYears) - 1), 1, 1, 0, 0, 0.0);
        near.AddDays(static_cast<int>(day) - 1);
        near.AddSeconds(r.frameTime - 3 * 3600.0);
        // Some receivers leave the interval as it was years ago.
        if (reference.time.IsSet() && std::fabs(near.GetDifferenceInSeconds(known)) > kWeek / 2) near = known;
    }
    constexpr double kStep = 900.0;
    const SMjdTime utc = nearestMoscowSecond(tb * kStep, near);
    if (!rinex::setGlonassTime(utc, rinex::gpsMinusUtc(utc), r)) return false;
    ephemeris.kind = MessageKind::glonass;
    return true;
}

}  // namespace

int fullWeek(unsigned week, int modulus, const TimeReference& reference) {
    const int begin = static_cast<int>(week) % modulus;
    if (reference.time.IsSet()) {
        const int turns =
            static_cast<int>(std::lround(static_cast<double>(reference.time.GetGpsWeek() - begin) / modulus));
        return begin + std::max(turns, 0) * modulus;
    }
    return begin + std::max((reference.latest.GetGpsWeek() - begin) / modulus, 0) * modulus;
}

bool isEphemeris(unsigned number) {
    return number == 1019 || number == 1020 || number == 1041 || number == 1042 || (number >= 1044 && number <= 1046);
}

bool readEphemeris(const Frame& frame, const TimeReference& reference, Ephemeris& ephemeris) {
    BitReader in(frame.message);
    in.skip(12);
    ephemeris.kind = MessageKind::lnav;
    ephemeris.tellsTime = false;
    bool known = false;
    switch (frame.number) {
        case 1019:
            known = readGps(in, reference, ephemeris);
            break;
        case 1020:
            known = readGlonass(in, reference, ephemeris);
            break;
        case 1041:
            known = readNavic(in, reference, ephemeris);
            break;
        case 1042:
            known = readBeidou(in, reference, ephemeris);
            break;
        case 1044:
            known = readQzss(in, reference, ephemeris);
            break;
        case 1045:
        case 1046:
            ephemeris.kind = MessageKind::galileo;
            known = readGalileo(in, frame.number == 1045, reference, ephemeris);
            break;
        default:
            return false;
    }
    if (!known || !in.ok()) return false;
    ephemeris.referenceTime = std::visit(
        [](const auto& record) {
            if constexpr (requires { record.GetReferenceTime(); }) return record.GetReferenceTime();
            return SMjdTime();
        },
        ephemeris.record);
    return true;
}

}  // namespace halvex::rtcm3
