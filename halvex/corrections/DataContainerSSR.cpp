#include "halvex/corrections/DataContainerSSR.h"

#include <algorithm>
#include <cstddef>
#include <functional>

#include "halvex/platform/kernix/Assert.h"
#include "halvex/time/SatelliteTime.h"

namespace {

constexpr double kOrbitSeconds = 90.0;
constexpr double kClockSeconds = 15.0;

SMjdTime referenceTime(const SMjdTime& time) {
    if (time.GetMjdDay() != 0) return {time.GetGpsWeek(), time.GetGpsSeconds()};
    CSatelliteTime now;
    now.SetToCurrentGPSTime();
    return now;
}

}  // namespace

CDataContainerSSR::~CDataContainerSSR() = default;

void CDataContainerSSR::SSRGroupState::rebase(const SMjdTime& newReference) {
    if (newReference.IsSet() && newReference < epoch) {
        SYS_Assert("rstNewRefTime == SMjdTime() || rstNewRefTime >= m_stRefTime", "DataContainerSSR");
    }
    if (newReference == epoch) return;
    epoch = newReference;
    satellites.clear();
    moreToCome = false;
}

void CDataContainerSSR::SSRGroupState::add(const CALN::SSRCorrMsgBaseT& message) {
    auto before = static_cast<std::ptrdiff_t>(satellites.size());
    message.getSatIDs(satellites);
    before = std::min(before, static_cast<std::ptrdiff_t>(satellites.size()));  // messages of a host may not append
    // Streams send satellites in their order, so that there is nothing to do but for a message that comes again.
    const auto isOutOfOrder = std::greater_equal<CALN::SCalSatID>();
    if (std::adjacent_find(satellites.begin(), satellites.end(), isOutOfOrder) == satellites.end()) return;
    std::sort(satellites.begin() + before, satellites.end());
    std::inplace_merge(satellites.begin(), satellites.begin() + before, satellites.end());
    satellites.erase(std::unique(satellites.begin(), satellites.end()), satellites.end());
}

bool CDataContainerSSR::SSRGroupState::isValid(const SMjdTime& reference, double seconds) const {
    SMjdTime oldest = reference;
    oldest.SubtractSeconds(seconds);
    return !satellites.empty() && epoch >= oldest;
}

void CDataContainerSSR::AddCorrectionMsg(const CALN::SSRCorrMsgBaseT& message) {
    SSRGroupState* group = nullptr;
    switch (message.GetSSRType()) {
        case CALN::eCALSSR_ORBIT:
        case CALN::eCALSSR_ORBIT_COMBINED:
            group = &m_orbits[message.system];
            break;
        case CALN::eCALSSR_CLOCK:
        case CALN::eCALSSR_CLOCK_COMBINED:
            group = &m_clocks[message.system];
            break;
        default:
            return;
    }
    if (message.epoch > group->epoch) {
        group->epoch = message.epoch;
        group->satellites.clear();
    }
    group->add(message);
    group->moreToCome = message.multipleMessage != 0;
}

unsigned CDataContainerSSR::GetValidState(CALN::eCALSATSYSTEM system, const SMjdTime& time) const {
    const SMjdTime reference = referenceTime(time);
    return (m_orbits[system].isValid(reference, kOrbitSeconds) ? kOrbitsValid : 0U) |
           (m_clocks[system].isValid(reference, kClockSeconds) ? kClocksValid : 0U);
}

unsigned CDataContainerSSR::GetNumSat(CALN::eCALSATSYSTEM system, const SMjdTime& time) const {
    const unsigned state = GetValidState(system, time);
    if ((state & kClocksValid) != 0) return GetClockCount(system);
    return (state & kOrbitsValid) != 0 ? GetOrbitCount(system) : 0;
}

bool CDataContainerSSR::IsComplete(CALN::eCALSATSYSTEM system) const {
    const SSRGroupState& orbits = m_orbits[system];
    const SSRGroupState& clocks = m_clocks[system];
    if (!orbits.isActive() && !clocks.isActive()) return false;
    return !(orbits.isActive() && orbits.moreToCome) && !(clocks.isActive() && clocks.moreToCome);
}

unsigned CDataContainerSSR::GetOrbitCount(CALN::eCALSATSYSTEM system) const {
    return static_cast<unsigned>(m_orbits[system].satellites.size());
}

unsigned CDataContainerSSR::GetClockCount(CALN::eCALSATSYSTEM system) const {
    return static_cast<unsigned>(m_clocks[system].satellites.size());
}

void CDataContainerSSR::OnDisconnect() {
    m_siteId = 0;
    for (auto* groups : {&m_orbits, &m_clocks}) {
        for (SSRGroupState& group : *groups) group.rebase(SMjdTime());
    }
}
