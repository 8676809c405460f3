#pragma once

#include <array>

#include "halvex/corrections/CorrectionBase.h"
#include "halvex/platform/Export.h"
#include "halvex/platform/caln/Frequency.h"

/// Makes, for each satellite that the master and an auxiliary station have in common, the geometric and the ionospheric
/// difference of their phases (auxiliary minus master, 0.5 mm), and hands them to the network product by system: 1017
/// for GPS, with QZSS in it, 1039 for GLONASS, and, if asked for, pseudorange offsets of GLONASS (1071). One thread at
/// a time.
///
/// A difference that does not fit into 32 bits, and the satellites of a system beyond the 255th, are left out. BeiDou's
/// coefficients are those of B1I: on L1 it should be the carrier of both stations.
class HALVEX_EXPORT CCombinedIonoGeoCorrection : public CCorrectionBase {
public:
    /// `groupMasks[s]` has the bits of the two bands of system s, for s = 1 to 8. A system without exactly two, or with
    /// two that give no coefficients, is no longer active. QZSS takes those of GPS and needs GPS to be active. Not
    /// `enabled`: messages have heads alone.
    CCombinedIonoGeoCorrection(CRtkAuxCollection* collection, Z9::CRTKNetworkProduct* product,
                               const CHalvexUniqueSiteID& master, CALN::ebCALGNSSTYPECOMBINATION systems,
                               std::int32_t intervalSeconds, bool announceSilence, bool gloPseudorangeOffsets,
                               bool enabled, const CALN::eCALFREQUENCY_GROUP* groupMasks);

    std::int32_t ProvideCorrections(const CHalvexZ9StationCorrection& first, const CHalvexZ9StationCorrection& second,
                                    CRtkAux& aux, bool flag) override;
    void ProvideEmptyCorrections(CALN::ebCALGNSSTYPECOMBINATION systems, CRtkAux& aux, unsigned epoch,
                                 unsigned char flag) override;

    static constexpr unsigned kMostFrequencies = 6;
    /// Entries of the two observations on a carrier that both have with a valid phase, at most six, in the order of the
    /// first; `out[0]` gets those of `a`, `out[1]` those of `b`. Returns how many.
    unsigned GetUseableFrqs(const CALN::SCalSatObservation& a, const CALN::SCalSatObservation& b,
                            const CALN::SCalObservationFreq* (*out)[kMostFrequencies]) const;

private:
    /// Which bands a system's differences are made of, and with which coefficients.
    struct Combination {
        CALN::eCALFREQUENCY_GROUP a = CALN::eCALFREQUENCY_GROUP_NONE;
        CALN::eCALFREQUENCY_GROUP b = CALN::eCALFREQUENCY_GROUP_NONE;
        double geoA = 0.0;
        double geoB = 0.0;
        double iono = 0.0;
    };
    struct Offsets;

    static bool makeCombination(CALN::eCALSATSYSTEM system, CALN::eCALFREQUENCY_GROUP bands, Combination& combination);
    [[nodiscard]] bool isActive(CALN::eCALSATSYSTEM system) const {
        return (m_activeSystems & CALN::combinationOf(system)) != CALN::ebCALGNSSTYPE_NONE;
    }
    static void setHeads(CALN::MsgGNSS17T& message, const CRtkAux& aux, std::uint32_t gpsTenths,
                         std::uint32_t glonassTenths);
    bool addSatellite(const CALN::SCalSatObservation& first, const CALN::SCalSatObservation& second,
                      CALN::MsgGNSS17T& message, Offsets& offsets) const;
    bool addOffsets(const Offsets& offsets, CALN::MsgGNSS17T& message) const;
    void markValid(CALN::MsgGNSS17T& message, bool flag);
    std::int32_t deliver(const CALN::MsgGNSS17T& message);

    SMjdTime m_latest;  // epoch that differences were made of last
    bool m_enabled;
    std::array<Combination, CALN::kSystemSlots> m_combinations{};
};
