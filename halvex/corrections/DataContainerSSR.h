#pragma once

#include <array>
#include <vector>

#include "halvex/platform/Export.h"
#include "halvex/platform/caln/SsrMessages.h"

/// Which satellites a correction stream covers with orbits and with clocks, system by system, and how current that is.
/// Keeps no correction values. One thread at a time.
///
/// Each system has a group for its orbits (type codes 1 and 2) and one for its clocks (3 and 4): a reference epoch, the
/// newest that was seen, and the satellites that came for it. A message of an older epoch adds its satellites, too.
/// System codes are used as an index of nine: others are the caller's fault.
class HALVEX_EXPORT CDataContainerSSR {
public:
    /// Bits of GetValidState.
    static constexpr unsigned kOrbitsValid = 1;  ///< there are some, not older than 90 s
    static constexpr unsigned kClocksValid = 2;  ///< there are some, not older than 15 s

    explicit CDataContainerSSR(unsigned siteId) : m_siteId(siteId) {}
    virtual ~CDataContainerSSR();

    [[nodiscard]] unsigned GetSiteID() const { return m_siteId; }
    /// Books a message; one of another kind is ignored.
    void AddCorrectionMsg(const CALN::SSRCorrMsgBaseT& message);
    /// What is valid at `time` (GPS time). When its day is 0: now, as CSatelliteTime::SetToCurrentGPSTime reads it.
    [[nodiscard]] unsigned GetValidState(CALN::eCALSATSYSTEM system, const SMjdTime& time) const;
    /// Satellites with a valid clock or, when the clocks are not valid, with a valid orbit; else 0.
    [[nodiscard]] unsigned GetNumSat(CALN::eCALSATSYSTEM system, const SMjdTime& time) const;
    /// Whether the last message of each group that has satellites was the last one of its epoch; false when none has.
    [[nodiscard]] bool IsComplete(CALN::eCALSATSYSTEM system) const;
    /// Reference epoch of a system's orbits and clocks, unset without any, and the satellites in each.
    [[nodiscard]] const SMjdTime& GetOrbitEpoch(CALN::eCALSATSYSTEM system) const { return m_orbits[system].epoch; }
    [[nodiscard]] const SMjdTime& GetClockEpoch(CALN::eCALSATSYSTEM system) const { return m_clocks[system].epoch; }
    [[nodiscard]] unsigned GetOrbitCount(CALN::eCALSATSYSTEM system) const;
    [[nodiscard]] unsigned GetClockCount(CALN::eCALSATSYSTEM system) const;
    /// The stream is lost: forgets everything, the site ID as well.
    void OnDisconnect();

private:
    struct SSRGroupState {
        SMjdTime epoch;
        std::vector<CALN::SCalSatID> satellites;  ///< in order, each once
        bool moreToCome = false;

        void add(const CALN::SSRCorrMsgBaseT& message);
        /// Takes a new reference epoch, unset or not before the old one; another one empties the group.
        void rebase(const SMjdTime& newReference);
        [[nodiscard]] bool isActive() const { return epoch.IsSet() && !satellites.empty(); }
        [[nodiscard]] bool isValid(const SMjdTime& reference, double seconds) const;
    };

    std::array<SSRGroupState, CALN::kSystemSlots> m_orbits;
    std::array<SSRGroupState, CALN::kSystemSlots> m_clocks;
    unsigned m_siteId;
};
