#include "tools/halvex/simulation/OwnConstellation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "formats/rinex/GlonassFields.h"
#include "formats/rinex/TimeSystems.h"
#include "tools/halvex/orbits/BroadcastOrbit.h"
#include "tools/halvex/simulation/MixedBits.h"
#include "tools/halvex/systems/EnabledSystems.h"

namespace halvex::tool {
namespace {

constexpr double kTwoPi = 2.0 * std::numbers::pi;
constexpr double kDegree = std::numbers::pi / 180.0;

// GLONASS renews at a quarter to and a quarter past every hour of UTC.
constexpr OwnConstellation::Plan kPlans[] = {
    {CALN::eCALSATSYSTEM_GPS, 6, 5, 26560e3, 55.0, 7200.0, 0.0},
    {CALN::eCALSATSYSTEM_GLONASS, 3, 8, 25508e3, 64.8, 1800.0, 900.0},
    {CALN::eCALSATSYSTEM_GALILEO, 3, 8, 29600e3, 56.0, 600.0, 0.0},
    {CALN::eCALSATSYSTEM_BEIDOU, 3, 8, 27906e3, 55.0, 3600.0, 0.0},
};
/// Where BeiDou's geostationary satellites stand [deg].
constexpr std::array<double, 5> kGeostationary{140.0, 80.0, 110.5, 160.0, 58.75};
constexpr double kGeostationaryRootOfAxis = 6493.4;  // [m^0.5]; deltaN brings the rate to that of the Earth

constexpr unsigned char kMadeUp = CALN::kSimulatedSource | CALN::eCALORBITSOURCE_RECEIVER;

/// How far GPS time is ahead of the time in which a system's reference times are round [s].
double gpsAhead(CALN::eCALSATSYSTEM system, const SMjdTime& t) {
    if (system == CALN::eCALSATSYSTEM_BEIDOU) return rinex::kGpsMinusBeiDou;
    if (system != CALN::eCALSATSYSTEM_GLONASS) return 0.0;
    SMjdTime utc = t;
    utc.SubtractSeconds(rinex::gpsMinusUtc(t));  // at most a second off, just before a step
    return rinex::gpsMinusUtc(utc);
}

/// Of the least effective age, of two equally old ones the later.
SMjdTime bestReference(const OwnConstellation::Plan& plan, const SMjdTime& t) {
    const double first = plan.phase + gpsAhead(plan.system, t);
    const double ahead = 1.0 / (1.0 + systemOfCode(plan.system)->costAhead);  // part of a period
    const double periods = std::floor((t.GetGpsSeconds() - first) / plan.every + ahead);
    return {t.GetGpsWeek(), first + periods * plan.every};
}

unsigned short issueOf(const SMjdTime& reference, const OwnConstellation::Plan& plan) {
    constexpr int kIssues = 256;
    return static_cast<unsigned short>(static_cast<int>(reference.GetGpsSeconds() / plan.every) % kIssues);
}

using Motion = glonass::State<double>;

Motion carried(const Motion& state, double seconds) {
    return glonass::propagate(state, seconds, [](const Motion& s) { return glonass::derivative(s, {}); });
}

/// The state `seconds` later from which the user algorithm comes back to the same place half-way as it reaches from the
/// earlier one. With its steps of 500 s it strays by decimetres: states of the true motion would not meet.
Motion nextState(const Motion& state, double seconds) {
    const double half = seconds / 2.0;
    const Motion middle = carried(state, half);
    const Motion wanted = carried(middle, half);
    Motion next = wanted;
    for (int step = 0; step < 4; ++step) {
        const Motion reached = carried(carried(next, -half), half);
        next = glonass::plus(glonass::plus(next, wanted, 1.0), reached, -1.0);
    }
    return next;
}

/// On a circle at the moment of passing `argument` from a node at that Earth-fixed longitude. Rounded, so that the
/// printed digits of all that follows do not hang on the last bit of a sine.
Motion circularState(double radius, double inclination, double node, double argument) {
    const double speed = std::sqrt(glonass::kGm / radius);
    const double earthRate = glonass::kTwiceEarthRate / 2.0;
    const auto inSpace = [&](double along, double across) {  // of the orbit's plane
        const double y = across * std::cos(inclination);
        return ORBIT_COORD{along * std::cos(node) - y * std::sin(node), along * std::sin(node) + y * std::cos(node),
                           across * std::sin(inclination)};
    };
    const auto rounded = [](double value) { return std::nearbyint(value * 1000.0) / 1000.0; };
    const ORBIT_COORD p = inSpace(radius * std::cos(argument), radius * std::sin(argument));
    const ORBIT_COORD v = inSpace(-speed * std::sin(argument), speed * std::cos(argument));
    return {rounded(p.x), rounded(p.y), rounded(p.z), rounded(v.x + earthRate * p.y), rounded(v.y - earthRate * p.x),
            rounded(v.z)};
}

}  // namespace

OwnConstellation::OwnConstellation(const SMjdTime& start) : m_start(start) {
    for (const Plan& plan : kPlans) {
        if (CSatelliteSystemDisablingHelper::IsSatSystemDisabled(plan.system)) continue;
        const int count = std::min<int>(plan.planes * plan.perPlane, systemOfCode(plan.system)->maxNumber);
        for (int i = 0; i < count; ++i) {
            const CALN::SCalSatID id{plan.system, static_cast<unsigned char>(i + 1)};
            const auto part = [&id](unsigned kind) {
                return uniform(std::uint64_t{id.system} << 16 | std::uint64_t{id.number} << 8 | kind);
            };
            const int plane = i % plan.planes;
            const int place = i / plan.planes;
            Satellite& satellite = m_satellites[id];
            satellite.plan = &plan;
            satellite.eccentricity = 0.001 + 0.009 * part(0);
            satellite.perigee = kTwoPi * (part(1) - 0.5);
            satellite.anomaly = kTwoPi * (place + 0.37 * plane) / plan.perPlane - satellite.perigee;
            satellite.node = kTwoPi * plane / plan.planes + 0.3 * static_cast<int>(plan.system);
            satellite.bias = 1e-3 * (part(2) - 0.5);
            satellite.drift = 2e-11 * (part(3) - 0.5);
            if (plan.system == CALN::eCALSATSYSTEM_GLONASS) satellite.channel = i % 14 - 7;
        }
    }
}

std::map<CALN::SCalSatID, int> OwnConstellation::satellites() const {
    std::map<CALN::SCalSatID, int> channels;
    for (const auto& [id, satellite] : m_satellites) channels[id] = satellite.channel;
    return channels;
}

const rinex::NavigationRecord* OwnConstellation::serving(const CALN::SCalSatID& id, const SMjdTime& t) {
    const auto at = m_satellites.find(id);
    if (at == m_satellites.end()) return nullptr;
    Satellite& satellite = at->second;
    const SMjdTime reference = bestReference(*satellite.plan, t);
    const bool isBeidou = id.system == CALN::eCALSATSYSTEM_BEIDOU;
    const int firstWeek = isBeidou ? CALN::CALX_SAT_EPHEMERIS_BEIDOU::kGpsWeekOfWeek0 : 0;
    if (reference < SMjdTime(firstWeek, gpsAhead(id.system, t))) return nullptr;  // before the system's time began
    if (!(satellite.reference == reference)) renew(satellite, id.number, reference);
    return &satellite.record;
}

template <class Record>
void OwnConstellation::setElements(Record& record, const Satellite& satellite, const kepler::Constants& constants,
                                   const SMjdTime& reference) const {
    const double seconds = reference.GetDifferenceInSeconds(m_start);
    record.source = kMadeUp;
    record.toe = record.toc = reference.GetGpsSeconds();
    record.week = static_cast<unsigned short>(reference.GetGpsWeek());
    if constexpr (requires { Record::kGpsMinusBdt; }) {
        const SMjdTime beidou(reference.GetGpsWeek() - Record::kGpsWeekOfWeek0,
                              reference.GetGpsSeconds() - Record::kGpsMinusBdt);
        record.toe = record.toc = beidou.GetGpsSeconds();
        record.week = static_cast<unsigned short>(beidou.GetGpsWeek());
    }
    record.transmissionTime = record.toe - satellite.plan->every / 2.0;
    record.sqrtA = std::sqrt(satellite.plan->radius);
    const double a = record.sqrtA * record.sqrtA;
    const double meanMotion = std::sqrt(constants.gm / (a * a * a));
    record.e = satellite.eccentricity;
    record.omega = satellite.perigee;
    record.i0 = satellite.plan->inclination * kDegree;
    record.m0 = std::remainder(satellite.anomaly + meanMotion * seconds, kTwoPi);
    record.omega0 =
        std::remainder(satellite.node - constants.earthRate * seconds + constants.earthRate * record.toe, kTwoPi);
    record.af0 = satellite.bias + satellite.drift * seconds;
    record.af1 = satellite.drift;
}

void OwnConstellation::renew(Satellite& satellite, unsigned char number, const SMjdTime& reference) const {
    const unsigned short issue = issueOf(reference, *satellite.plan);
    switch (satellite.plan->system) {
        case CALN::eCALSATSYSTEM_GPS: {
            CALN::CALX_SAT_EPHEMERIS r;
            setElements(r, satellite, kepler::kGps, reference);
            r.satId = number;
            r.iodc = issue;
            r.ura = 2.0;
            satellite.record = r;
            break;
        }
        case CALN::eCALSATSYSTEM_GALILEO: {
            CALN::CALX_SAT_EPHEMERIS_GALILEO r;
            setElements(r, satellite, kepler::kGalileo, reference);
            r.satId = static_cast<unsigned char>(number + 56);
            r.iodNav = issue;
            r.navType = r.kINav;
            r.inavReception = r.kReceivedOnBoth;
            r.dataSources = 0x205;  // both I/NAV pages, the clock of I/NAV
            r.sisaIndex = r.indexOfSisa(2.0);
            r.pageType1Week = r.week;
            r.pageType1Seconds = r.toe;
            satellite.record = r;
            break;
        }
        case CALN::eCALSATSYSTEM_BEIDOU: {
            CALN::CALX_SAT_EPHEMERIS_BEIDOU r;
            setElements(r, satellite, kepler::kBeidou, reference);
            r.satId = number;
            r.aode = r.aodc = 1;
            r.ura = 2.0;
            if (r.isGeostationary()) {
                // Standing still over the equator is, in the frame that the message tilts by 5 degrees and fixes at
                // each reference time, a circle inclined by these with its node opposite to longitude 0.
                constexpr double kTilt = 5.0 * kDegree;
                constexpr double a = kGeostationaryRootOfAxis * kGeostationaryRootOfAxis;
                r.messageType = CALN::eCALBDSMESSAGE_D2;
                r.sqrtA = kGeostationaryRootOfAxis;
                r.deltaN = kepler::kBeidou.earthRate - std::sqrt(kepler::kBeidou.gm / (a * a * a));
                r.e = r.omega = 0.0;
                r.i0 = kTilt;
                r.m0 = kGeostationary[number - 1U] * kDegree - std::numbers::pi;
                r.omega0 = std::remainder(std::numbers::pi + kepler::kBeidou.earthRate * r.toe, kTwoPi);
            }
            satellite.record = r;
            break;
        }
        default:
            renewGlonass(satellite, number, reference);
    }
    satellite.reference = reference;
}

void OwnConstellation::renewGlonass(Satellite& satellite, unsigned char number, const SMjdTime& reference) const {
    const double every = satellite.plan->every;
    if (!satellite.reference.IsSet()) {
        satellite.state = circularState(satellite.plan->radius, satellite.plan->inclination * kDegree, satellite.node,
                                        satellite.anomaly + satellite.perigee);
        satellite.reference = bestReference(*satellite.plan, m_start);
    }
    while (satellite.reference < reference) {
        SMjdTime next = satellite.reference;
        next.AddSeconds(every);
        if (reference.GetDifferenceInSeconds(next) < every / 2.0) next = reference;  // a leap second lies between
        satellite.state = nextState(satellite.state, next.GetDifferenceInSeconds(satellite.reference));
        satellite.reference = next;
    }
    CALN::CALX_SAT_EPHEMERIS_GLONASS r;
    r.satId = number;
    r.source = kMadeUp;
    SMjdTime utc = reference;
    const int leapSeconds = static_cast<int>(gpsAhead(satellite.plan->system, reference));
    utc.SubtractSeconds(leapSeconds);
    static_cast<void>(rinex::setGlonassTime(utc, leapSeconds, r));  // serving() has seen to the week
    r.frameTime = r.referenceSecondsOfDay;
    const auto& s = satellite.state;
    r.position = {s.x, s.y, s.z};
    r.velocity = {s.vx, s.vy, s.vz};
    r.tauN = -(satellite.bias + satellite.drift * reference.GetDifferenceInSeconds(m_start));
    r.gammaN = satellite.drift;
    r.frequencyNumber = static_cast<signed char>(satellite.channel);
    r.modification = 1;
    r.accuracyIndex = 3;  // 2.5 m
    r.healthFlags = 0x3;  // known, healthy
    satellite.record = r;
}

}  // namespace halvex::tool
