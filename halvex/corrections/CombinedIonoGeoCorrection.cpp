#include "halvex/corrections/CombinedIonoGeoCorrection.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "halvex/platform/caln/FrequencyTable.h"
#include "halvex/platform/kernix/TraceUtil.h"

using namespace CALN;

namespace {

constexpr double kUnitsPerMetre = 2000.0;  // 0.5 mm
constexpr std::uint8_t kIntegersRight = 1;
constexpr std::uint32_t kTrace = 2;  // category

constexpr std::uint16_t kGpsMessage = 1017;
constexpr std::uint16_t kGlonassMessage = 1039;
constexpr std::uint16_t kOffsetMessage = 1071;

/// A type of message, the system bit that it stands for, and where it is in MsgGNSS17T.
struct SystemMessage {
    ebCALGNSSTYPECOMBINATION system;
    MsgGNSS17T::MsgType type;
    IonoGeoMsgT MsgGNSS17T::*message;
};
constexpr SystemMessage kMessages[] = {
    {ebCALGNSSTYPE_GPS, MsgGNSS17T::kGps, &MsgGNSS17T::gps},
    {ebCALGNSSTYPE_GLONASS, MsgGNSS17T::kGlonass, &MsgGNSS17T::glonass},
    {ebCALGNSSTYPE_BEIDOU, MsgGNSS17T::kBeidou, &MsgGNSS17T::beidou},
    {ebCALGNSSTYPE_GALILEO, MsgGNSS17T::kGalileo, &MsgGNSS17T::galileo},
};

/// Where a system's satellites go; null for one that has no message.
IonoGeoMsgT* messageOf(eCALSATSYSTEM system, MsgGNSS17T& message) {
    switch (system) {
        case eCALSATSYSTEM_GPS:
        case eCALSATSYSTEM_QZSS:
            return &message.gps;
        case eCALSATSYSTEM_GLONASS:
            return &message.glonass;
        case eCALSATSYSTEM_GALILEO:
            return &message.galileo;
        case eCALSATSYSTEM_BEIDOU:
            return &message.beidou;
        default:
            return nullptr;
    }
}

/// Of the seconds of GLONASS day at a GPS second of week of that week.
std::uint32_t glonassTenths(const SMjdTime& week, std::uint32_t gpsSeconds) {
    constexpr double kDay = 86400.0;
    const double seconds = CGPSTime(week).GPSWeekSec2GLODaySec(gpsSeconds);  // below 0 with absurd leap seconds
    return static_cast<std::uint32_t>((seconds < 0.0 ? seconds + kDay : seconds) * 10.0);
}

const SCalObservationFreq* inBand(const SCalObservationFreq* const* entries, unsigned count, eCALFREQUENCY_GROUP band) {
    const auto* found = std::find_if(entries, entries + count, [band](const SCalObservationFreq* each) {
        return getFrequencyGroup(each->frequency) == band;
    });
    return found != entries + count ? *found : nullptr;
}

}  // namespace

struct CCombinedIonoGeoCorrection::Offsets {
    std::vector<ProvIonoGeoGLOPRMsgT> list;
    double sum = 0.0;
};

CCombinedIonoGeoCorrection::CCombinedIonoGeoCorrection(CRtkAuxCollection* collection, Z9::CRTKNetworkProduct* product,
                                                       const CHalvexUniqueSiteID& master,
                                                       ebCALGNSSTYPECOMBINATION systems, std::int32_t intervalSeconds,
                                                       bool announceSilence, bool gloPseudorangeOffsets, bool enabled,
                                                       const eCALFREQUENCY_GROUP* groupMasks)
    : CCorrectionBase(collection, product, master, systems, intervalSeconds, announceSilence, gloPseudorangeOffsets),
      m_enabled(enabled) {
    for (std::size_t s = 1; s < m_combinations.size(); ++s) {
        const auto system = static_cast<eCALSATSYSTEM>(s);
        if (!isActive(system)) continue;
        bool usable = false;
        if (system == eCALSATSYSTEM_QZSS) {
            usable = isActive(eCALSATSYSTEM_GPS);
            if (usable) m_combinations[s] = m_combinations[eCALSATSYSTEM_GPS];
        } else {
            usable = makeCombination(system, groupMasks[s], m_combinations[s]);
        }
        if (!usable) m_activeSystems &= ~combinationOf(system);
    }
}

bool CCombinedIonoGeoCorrection::makeCombination(eCALSATSYSTEM system, eCALFREQUENCY_GROUP bands,
                                                 Combination& combination) {
    constexpr std::uint32_t kBands = 0x3F;
    const std::uint32_t bits = static_cast<std::uint32_t>(bands) & kBands;
    if (std::popcount(bits) != 2) return false;
    Combination made;
    made.a = static_cast<eCALFREQUENCY_GROUP>(1U << static_cast<unsigned>(std::countr_zero(bits)));
    made.b = static_cast<eCALFREQUENCY_GROUP>(bits & ~static_cast<std::uint32_t>(made.a));
    if (!getFrequencyTable().getIFGFCoeffs(system, made.a, made.b, &made.iono, &made.geoA, &made.geoB)) return false;
    combination = made;
    return true;
}

unsigned CCombinedIonoGeoCorrection::GetUseableFrqs(const SCalSatObservation& a, const SCalSatObservation& b,
                                                    const SCalObservationFreq* (*out)[kMostFrequencies]) const {
    unsigned count = 0;
    for (const SCalObservationFreq& mine : a.frequencies) {
        if (count == kMostFrequencies) break;
        if (!mine.isPhaseValid()) continue;
        const auto theirs = std::find_if(
            b.frequencies.begin(), b.frequencies.end(),
            [&](const SCalObservationFreq& each) { return each.frequency == mine.frequency && each.isPhaseValid(); });
        if (theirs == b.frequencies.end()) continue;
        out[0][count] = &mine;
        out[1][count] = &*theirs;
        ++count;
    }
    return count;
}

void CCombinedIonoGeoCorrection::setHeads(MsgGNSS17T& message, const CRtkAux& aux, std::uint32_t gpsTenths,
                                          std::uint32_t glonassTenths_) {
    MsgHeaderT gps = aux;
    gps.messageNumber = kGpsMessage;
    gps.epoch = gpsTenths;
    gps.satelliteCount = 0;
    gps.multipleMessage = 0;
    message.gps.header = gps;
    message.galileo.header = message.beidou.header = gps;
    message.galileo.header.messageNumber = message.beidou.header.messageNumber = 0;

    MsgHeaderT glonass;
    glonass.messageNumber = kGlonassMessage;
    glonass.epoch = glonassTenths_;
    glonass.subnetwork = aux.subnetwork;
    glonass.networkId = aux.networkId;
    glonass.masterStation = aux.masterStation;
    glonass.auxiliaryStation = aux.auxiliaryStation;
    message.glonass.header = message.glonassPseudorange.header = glonass;
    message.glonassPseudorange.header.messageNumber = kOffsetMessage;
}

bool CCombinedIonoGeoCorrection::addSatellite(const SCalSatObservation& first, const SCalSatObservation& second,
                                              MsgGNSS17T& message, Offsets& offsets) const {
    const SCalObservationFreq* shared[2][kMostFrequencies];
    const unsigned count = GetUseableFrqs(second, first, shared);
    if (count < 2) return true;
    const SCalSatID& id = second.satId;
    const Combination& combination = m_combinations[id.system];
    const SCalObservationFreq* const secondA = inBand(shared[0], count, combination.a);
    const SCalObservationFreq* const secondB = inBand(shared[0], count, combination.b);
    const SCalObservationFreq* const firstA = inBand(shared[1], count, combination.a);
    const SCalObservationFreq* const firstB = inBand(shared[1], count, combination.b);
    if (secondA == nullptr || secondB == nullptr || firstA == nullptr || firstB == nullptr) return true;
    IonoGeoMsgT* const target = messageOf(id.system, message);
    if (target == nullptr) return true;

    if (id.system == eCALSATSYSTEM_GLONASS && m_gloPseudorangeOffsets) {
        constexpr unsigned char kValue = 2;
        ProvIonoGeoGLOPRMsgT offset{id.number, kValue, second.issueOfData, 0.0, 0.0};
        if (!CalculateGloL1L2PRCorrections(secondA->pseudorange, firstA->pseudorange, secondB->pseudorange,
                                           firstB->pseudorange, offset.x, offset.y, offsets.sum)) {
            return false;
        }
        offsets.list.push_back(offset);
    }
    double wavelengthA = 0.0;
    double wavelengthB = 0.0;
    const CCalFrequencyTable& table = getFrequencyTable();
    if (!table.getWavelengthValue(id, secondA->frequency, wavelengthA) ||
        !table.getWavelengthValue(id, secondB->frequency, wavelengthB)) {
        return true;
    }
    const double a2 = wavelengthA * secondA->phase;
    const double a1 = wavelengthA * firstA->phase;
    const double b2 = wavelengthB * secondB->phase;
    const double b1 = wavelengthB * firstB->phase;
    double geometric = 0.0;
    double ionospheric = 0.0;
    if (!CalculateGeoCorrection(a2, a1, b2, b1, combination.geoA, combination.geoB, geometric) ||
        !CalculateIonoCorrection(a2, a1, b2, b1, combination.iono, ionospheric)) {
        return false;
    }
    const double geometricUnits = roundHalfUp(geometric * kUnitsPerMetre);
    const double ionosphericUnits = roundHalfUp(ionospheric * kUnitsPerMetre);
    // What an integer cannot hold is no difference of two stations.
    constexpr double kLargest = std::numeric_limits<std::int32_t>::max();
    if (!(std::abs(geometricUnits) <= kLargest) || !(std::abs(ionosphericUnits) <= kLargest)) return true;
    if (target->entries.size() == std::numeric_limits<std::uint8_t>::max()) return true;
    target->entries.push_back({id.number, id.system, kIntegersRight, 0, static_cast<std::int32_t>(geometricUnits),
                               static_cast<std::int32_t>(ionosphericUnits), second.issueOfData, 0});
    if (CTraceUtil::IsEnabled(kTrace)) {
        CTraceUtil::Trace(kTrace, "correction SYS[" + std::to_string(id.system) + "] PRN[" + std::to_string(id.number) +
                                      "] IODE[" + std::to_string(second.issueOfData) + "]\n");
    }
    return true;
}

bool CCombinedIonoGeoCorrection::addOffsets(const Offsets& offsets, MsgGNSS17T& message) const {
    if (offsets.list.empty() || !m_gloPseudorangeOffsets) return true;
    constexpr double kScale = -1.53125;  // -49/32: the squared ratio of the carriers is 81/49
    constexpr double kFirst = 2.53125;   // 81/32
    constexpr double kSecond = 1.53125;
    signed char dpo = 0;
    signed char p1or = 0;
    int count = 0;
    const double mean = offsets.sum / static_cast<double>(offsets.list.size());
    if (!CalculateGloDPORandP1OR(offsets.list.data(), message.glonassPseudorange, static_cast<int>(offsets.list.size()),
                                 mean, kScale, kFirst, kSecond, dpo, p1or, count)) {
        return false;
    }
    MsgHeaderT& header = message.glonassPseudorange.header;
    header.dpo = dpo;
    header.p1or = p1or;
    header.offsetCount = static_cast<std::uint8_t>(std::min<int>(count, std::numeric_limits<std::uint8_t>::max()));
    header.satelliteCount = header.offsetCount;
    return true;
}

void CCombinedIonoGeoCorrection::markValid(MsgGNSS17T& message, bool flag) {
    for (const SystemMessage& each : kMessages) {
        if ((m_activeSystems & each.system) == ebCALGNSSTYPE_NONE) continue;
        const bool sentBefore = (m_sentSystems & each.system) != ebCALGNSSTYPE_NONE;
        if (!(message.*each.message).entries.empty()) {
            message.SetValidMsgType(each.type);
            m_sentSystems |= each.system;
        } else if (sentBefore && flag) {
            message.SetValidMsgType(each.type);
        }
    }
    if (message.IsValidMsgType(MsgGNSS17T::kGlonass) && m_gloPseudorangeOffsets &&
        message.glonassPseudorange.header.offsetCount > 0) {
        message.SetValidMsgType(MsgGNSS17T::kGlonassPseudorange);
    }
}

std::int32_t CCombinedIonoGeoCorrection::deliver(const MsgGNSS17T& message) {
    return m_product->addAuxiliaryCombinedIonoGeoCorrection(message) == 0 ? kSuccess : kFailure;
}

std::int32_t CCombinedIonoGeoCorrection::ProvideCorrections(const CHalvexZ9StationCorrection& first,
                                                            const CHalvexZ9StationCorrection& second, CRtkAux& aux,
                                                            bool flag) {
    SMjdTime t = second.epoch;
    t.RoundTo(1.0, SMjdTime::kUnitMillisecond);
    m_latest = t;
    // From milliseconds, so that a tenth that a double does not hold is not cut to the one before.
    const auto tenths = static_cast<std::uint32_t>(t.GetGpsWeekMilliseconds() / 100.0);
    MsgGNSS17T message;
    setHeads(message, aux, tenths, glonassTenths(t, tenths / 10));

    Offsets offsets;
    for (const SCalSatObservation& satellite : second.satellites) {
        if (!m_enabled || !isActive(satellite.satId.system)) continue;
        const auto partner =
            std::find_if(first.satellites.begin(), first.satellites.end(),
                         [&](const SCalSatObservation& each) { return each.satId == satellite.satId; });
        if (partner == first.satellites.end()) continue;
        if (!addSatellite(*partner, satellite, message, offsets)) return kFailure;
    }
    if (!addOffsets(offsets, message)) return kFailure;

    for (const SystemMessage& each : kMessages) {
        IonoGeoMsgT& part = message.*each.message;
        part.header.satelliteCount = static_cast<std::uint8_t>(part.entries.size());
    }
    if (flag) {
        for (IonoGeoMsgT* part : {&message.gps, &message.galileo, &message.glonass, &message.glonassPseudorange}) {
            part->header.flag = 1;
        }
    }
    markValid(message, flag);
    return deliver(message);
}

void CCombinedIonoGeoCorrection::ProvideEmptyCorrections(ebCALGNSSTYPECOMBINATION systems, CRtkAux& aux, unsigned epoch,
                                                         unsigned char flag) {
    MsgGNSS17T message;
    // It decides about leap seconds alone: the latest epoch that differences were made of stands for now.
    setHeads(message, aux, epoch * 10, glonassTenths(m_latest.IsSet() ? m_latest : m_start, epoch));
    for (const SystemMessage& each : kMessages) {
        (message.*each.message).header.flag = flag;
        if ((systems & each.system) != ebCALGNSSTYPE_NONE) message.SetValidMsgType(each.type);
    }
    message.glonassPseudorange.header.flag = flag;
    if ((systems & ebCALGNSSTYPE_GLONASS) != ebCALGNSSTYPE_NONE && m_gloPseudorangeOffsets) {
        message.SetValidMsgType(MsgGNSS17T::kGlonassPseudorange);
    }
    static_cast<void>(deliver(message));
}
