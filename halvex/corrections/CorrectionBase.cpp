#include "halvex/corrections/CorrectionBase.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "halvex/platform/kernix/TraceUtil.h"

using CALN::SCalObservationFreq;
using CALN::SCalSatObservation;

namespace {

constexpr int kMillisecondsPerSecond = 1000;
constexpr int kAhead = 2000;         ///< the processing runs so far ahead of an output slot [ms]
constexpr int kShortGap = 5000;      ///< [ms]
constexpr int kGapStep = 1000;       ///< [ms]
constexpr std::uint32_t kTrace = 1;  ///< category
constexpr double kSecondsPerDay = 86400.0;

SMjdTime toMillisecond(SMjdTime t) {
    t.RoundTo(1.0, SMjdTime::kUnitMillisecond);
    return t;
}

}  // namespace

CCorrectionBase::CCorrectionBase(CRtkAuxCollection* collection, Z9::CRTKNetworkProduct* product,
                                 const CHalvexUniqueSiteID& master, CALN::ebCALGNSSTYPECOMBINATION systems,
                                 std::int32_t intervalSeconds, bool announceSilence, bool gloPseudorangeOffsets)
    : m_collection(collection),
      m_product(product),
      m_master(master),
      m_interval(std::clamp(intervalSeconds, 0, std::numeric_limits<int>::max() / kMillisecondsPerSecond) *
                 kMillisecondsPerSecond),
      m_activeSystems(systems),
      m_announceSilence(announceSilence),
      m_gloPseudorangeOffsets(gloPseudorangeOffsets) {}

CCorrectionBase::~CCorrectionBase() = default;

double CCorrectionBase::roundHalfUp(double value) {
    return std::floor(value + 0.5);
}

bool CCorrectionBase::isDue(const SMjdTime& t) const {
    if (m_interval == 0) return true;
    const auto milliseconds = static_cast<std::int64_t>(t.GetGpsWeekMilliseconds());
    return milliseconds % m_interval == std::max(m_interval - kAhead, 0);
}

std::int32_t CCorrectionBase::OnNALResults(const boost::shared_ptr<const CHalvexZ9StationCorrection>& result) {
    if (result == nullptr) return kDiscarded;
    const SMjdTime t = toMillisecond(result->epoch);
    if (!m_start.IsSet()) m_start = result->epoch;
    if (!(result->epoch > m_start)) return kDiscarded;
    if (t.GetDifferenceInSeconds(m_lastSent) * kMillisecondsPerSecond < m_interval && !isDue(t)) return kDiscarded;
    if (!CheckCorrection(*result)) return kDiscarded;

    const double mjd = t.GetAsMjd();
    if (m_pending.empty()) {
        add(result, t, mjd);
        return kTaken;
    }
    const auto oldest = m_pending.begin();
    if (oldest->first > mjd) return kDiscarded;
    add(result, t, mjd);
    if (oldest->first < mjd) {
        SendOldCorrection(mjd);
    } else if (SendCorrection(oldest->second)) {
        m_lastSent = CGPSTime(t);
        m_lastSent.RoundTo(1.0, SMjdTime::kUnitMillisecond);
        m_pending.erase(oldest);
    }
    return kTaken;
}

void CCorrectionBase::add(const boost::shared_ptr<const CHalvexZ9StationCorrection>& result, const SMjdTime& t,
                          double mjd) {
    CPhaseCorrectionEpoch& pending = m_pending[mjd];
    pending.epoch = t;
    if (result->stationId == m_master) {
        pending.master = result;
    } else {
        pending.auxiliaries[result->stationId] = result;
    }
}

bool CCorrectionBase::CheckCorrection(const CHalvexZ9StationCorrection& result) const {
    int fixed = 0;
    bool wideLane = false;
    for (const SCalSatObservation& satellite : result.satellites) {
        const auto found = std::find_if(
            satellite.frequencies.begin(), satellite.frequencies.end(), [](const SCalObservationFreq& each) {
                return CALN::getFrequencyGroup(each.frequency) == CALN::eCALFREQUENCY_GROUP_L1 && each.isPhaseValid();
            });
        if (found == satellite.frequencies.end()) continue;
        const int state = CNALHalvexObservationZ9Helper::getAmbiguityFixState(*found);
        if (state == CNALHalvexObservationZ9Helper::kFixed) ++fixed;
        if (state == CNALHalvexObservationZ9Helper::kWideLane) wideLane = true;
    }
    return fixed > 1 || wideLane;
}

bool CCorrectionBase::CalculateGeoCorrection(double a1, double a2, double b1, double b2, double c1, double c2,
                                             double& out) {
    out = c1 * (a1 - a2) + c2 * (b1 - b2);
    return true;
}

bool CCorrectionBase::CalculateIonoCorrection(double a1, double a2, double b1, double b2, double c, double& out) {
    out = c * ((a1 - a2) - (b1 - b2));
    return true;
}

bool CCorrectionBase::CalculateGloL1L2PRCorrections(double a1, double a2, double b1, double b2, double& d1, double& d2,
                                                    double& sum) {
    d1 = a1 - a2;
    d2 = b1 - b2;
    sum += d1 - d2;
    return true;
}

bool CCorrectionBase::CalculateGloDPORandP1OR(const CALN::ProvIonoGeoGLOPRMsgT* in, CALN::IonoGeoMsgT& out, int count,
                                              double dpo, double scale, double c1, double c2, signed char& dpoOut,
                                              signed char& p1orOut, int& n) {
    constexpr double kLargestDpo = 32.0;
    constexpr double kLargestP1or = 127.0;
    constexpr double kLargestResidual = 2047.5;
    constexpr double kUnitsPerMetre = 50.0;
    n = 0;
    dpoOut = p1orOut = 0;
    const auto fits = [](double value, double largest) { return std::abs(value) <= largest; };  // no NaN does

    const double roundedDpo = roundHalfUp(dpo);
    if (!fits(roundedDpo, kLargestDpo)) return true;
    dpoOut = static_cast<signed char>(roundedDpo);

    const auto common = [&](const CALN::ProvIonoGeoGLOPRMsgT& entry) {
        return c1 * entry.x - c2 * entry.y - c2 * roundedDpo;
    };
    std::vector<const CALN::ProvIonoGeoGLOPRMsgT*> kept;
    double sum = 0.0;
    for (int i = 0; i < count; ++i) {
        const double residual = roundHalfUp(scale * (in[i].x - in[i].y - roundedDpo) * kUnitsPerMetre);
        if (!fits(residual, kLargestResidual)) continue;
        kept.push_back(&in[i]);
        sum += common(in[i]);
    }
    if (kept.empty()) return true;
    const double roundedP1or = roundHalfUp(sum / static_cast<double>(kept.size()));
    if (!fits(roundedP1or, kLargestP1or)) return true;
    p1orOut = static_cast<signed char>(roundedP1or);

    for (const CALN::ProvIonoGeoGLOPRMsgT* entry : kept) {
        const double residual = roundHalfUp((common(*entry) - roundedP1or) * kUnitsPerMetre);
        if (!fits(residual, kLargestResidual)) continue;
        out.offsets.push_back({entry->satId, entry->value, entry->issue, static_cast<std::int16_t>(residual)});
        ++n;
    }
    return true;
}

bool CCorrectionBase::SendCorrection(CPhaseCorrectionEpoch& pending) {
    if (pending.master == nullptr) return false;
    auto& stations = m_collection->entries();
    const bool complete = std::all_of(stations.begin(), stations.end(), [&](const auto& station) {
        return station.first == m_master || pending.auxiliaries.contains(station.first);
    });
    if (!complete) return false;
    bool sent = true;
    for (auto& [site, aux] : stations) {
        if (site != m_master) sent = sendPair(pending, site, aux) && sent;
    }
    return sent;
}

bool CCorrectionBase::sendPair(CPhaseCorrectionEpoch& pending, const CHalvexUniqueSiteID& site, CRtkAux& aux) {
    if (pending.delivered.contains(site)) return true;
    const CHalvexZ9StationCorrection& auxiliary = *pending.auxiliaries.find(site)->second;
    MaxiDebugTrace(*pending.master, auxiliary);
    if (ProvideCorrections(*pending.master, auxiliary, aux, m_announceSilence) != kSuccess) return false;
    pending.delivered.insert(site);
    return true;
}

void CCorrectionBase::sendEmpty(CRtkAux& aux, const SMjdTime& epoch) {
    if (m_sentSystems == CALN::ebCALGNSSTYPE_NONE) return;  // a rover that was told nothing misses nothing
    ProvideEmptyCorrections(m_sentSystems, aux, static_cast<unsigned>(epoch.GetGpsSeconds()),
                            m_announceSilence ? 1 : 0);
}

bool CCorrectionBase::isSent(const CPhaseCorrectionEpoch& pending) const {
    return m_lastSent.IsSet() && !(pending.epoch > m_lastSent);
}

void CCorrectionBase::SendEmptyCorrection(CPhaseCorrectionEpoch& pending) {
    if (isSent(pending)) return;
    for (auto& [site, aux] : m_collection->entries()) {
        if (site != m_master && !pending.delivered.contains(site)) sendEmpty(aux, pending.epoch);
    }
}

void CCorrectionBase::sendIncomplete(CPhaseCorrectionEpoch& pending) {
    if (isSent(pending)) return;
    if (pending.master == nullptr) return SendEmptyCorrection(pending);
    for (auto& [site, aux] : m_collection->entries()) {
        if (site == m_master) continue;
        if (!pending.auxiliaries.contains(site)) {
            sendEmpty(aux, pending.epoch);
        } else {
            sendPair(pending, site, aux);
        }
    }
}

void CCorrectionBase::SendOldCorrection(double mjd) {
    SMjdTime last;
    while (!m_pending.empty() && m_pending.begin()->first < mjd) {
        const auto oldest = m_pending.begin();
        sendIncomplete(oldest->second);
        last = oldest->second.epoch;
        m_pending.erase(oldest);
    }
    if (!last.IsSet()) return;
    // A day number as a double is good to a microsecond.
    const auto gap = std::llround((mjd - last.GetAsMjd()) * kSecondsPerDay * kMillisecondsPerSecond);
    if (gap >= kShortGap) return;
    CPhaseCorrectionEpoch missing;
    for (int step = kGapStep; step < gap; step += kGapStep) {
        missing.epoch = last;
        missing.epoch.AddMilliseconds(step);
        if (isDue(missing.epoch)) SendEmptyCorrection(missing);
    }
}

void CCorrectionBase::ClearCorrections() {
    for (auto& [mjd, pending] : m_pending) SendEmptyCorrection(pending);
    m_pending.clear();
}

void CCorrectionBase::MaxiDebugTrace(const CHalvexZ9StationCorrection& first,
                                     const CHalvexZ9StationCorrection& second) {
    if (!CTraceUtil::IsEnabled(kTrace)) return;
    CTraceUtil::Trace(kTrace, "pair " + std::to_string(first.stationId.getUniqueSiteID()) + " (" +
                                  std::to_string(first.satellites.size()) + " satellites), " +
                                  std::to_string(second.stationId.getUniqueSiteID()) + " (" +
                                  std::to_string(second.satellites.size()) + "), MJD " +
                                  std::to_string(second.epoch.GetMjdDay()));
}
