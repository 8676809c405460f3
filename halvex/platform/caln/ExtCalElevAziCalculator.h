#pragma once

#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <memory>
#include <optional>

#include "halvex/platform/Export.h"
#include "halvex/platform/bss/MsgObject.h"
#include "halvex/platform/caln/AlmanacRecords.h"
#include "halvex/platform/caln/Coordinates.h"
#include "halvex/platform/caln/ElevationAzimuth.h"
#include "halvex/platform/caln/EphemerisBeidou.h"
#include "halvex/platform/caln/EphemerisGalileo.h"
#include "halvex/platform/caln/EphemerisGlonass.h"
#include "halvex/platform/caln/EphemerisGps.h"
#include "halvex/platform/caln/EphemerisNavic.h"

namespace CALN {

/// Told of every orbit that the engine has taken over. Called on the feeding thread, with no lock held.
class HALVEX_EXPORT ExtCalOrbitConsumer {
public:
    virtual ~ExtCalOrbitConsumer();
    virtual void OnNewOrbit(const SCalSatID& id, eCALEPHEMERISTYPE type, const SMjdTime& referenceTime) = 0;
};

/// Elevation-azimuth engine: keeps the orbits of all satellites of six systems and answers where they stand in the sky
/// of a site. Instants are on the GPS scale, geometry is straight (no light time, no refraction).
///
/// Which orbit serves an instant: of the ephemerides no further from it than their system's timeframe (GPS 240, Galileo
/// 180, BeiDou, QZSS and NavIC 120, GLONASS 60 min) the one of the least effective age (see getEffectiveAge), of two
/// equally old ones the one with the later reference time; else the almanac nearest in time within two weeks. When that
/// orbit says that the satellite is not healthy, the satellite has no position: an older orbit does not make it
/// healthy. Of two orbits of a satellite with the same reference time the one that arrived later stays. What cannot be
/// used - an unknown satellite, a record of Galileo, BeiDou, QZSS or NavIC with source 0, numbers that are not finite,
/// a semi-major axis below 2.0e7 m or an eccentricity that is none - is refused.
///
/// Positions of an epoch are worked out once, for all satellites together, and kept: a further site costs geometry
/// alone. Any thread feeds and asks at any time; queries of epochs that are kept run side by side, and a new orbit
/// waits for those that have begun alone. Queries allocate nothing.
class HALVEX_EXPORT ExtCalElevAziCalculator {
public:
    /// Which orbits are used.
    static constexpr int kModeEphemerisBeforeAlmanac = 0;
    static constexpr int kModeEphemerides = 1;
    static constexpr int kModeAlmanacs = 2;

    /// Status of queries.
    static constexpr int kDone = 0;
    static constexpr int kNoOrbit = 1;   ///< nothing to serve that epoch with
    static constexpr int kBadInput = 2;  ///< an unset instant or a site that is none

    /// Numbers of 0 stand for the values in brackets. `orbitsPerSatellite` (64): ephemerides kept for each satellite,
    /// the oldest go first. `keptEpochs` (4, at most 1024): epochs whose positions are kept. `timeframeMinutes` (the
    /// systems' own): how far from its reference time an ephemeris is used. The consumer, if any, outlives the engine.
    ExtCalElevAziCalculator(unsigned int orbitsPerSatellite, unsigned int keptEpochs, unsigned int timeframeMinutes,
                            ExtCalOrbitConsumer* consumer);
    ~ExtCalElevAziCalculator();
    ExtCalElevAziCalculator(const ExtCalElevAziCalculator&) = delete;
    ExtCalElevAziCalculator& operator=(const ExtCalElevAziCalculator&) = delete;

    /// An unknown mode changes nothing.
    void SetMode(int mode);
    /// Forgets all orbits and positions.
    void Reset();

    template <class Record>
    using Message = boost::shared_ptr<const BSS::TSK::MsgObjectT<Record>>;
    /// Take an orbit over. False: it was refused, or is older than all that are kept. The latest GLONASS
    /// ephemeris of a satellite tells the process's frequency manager its channel.
    bool ProcessGPSEphemeris(const Message<CALX_SAT_EPHEMERIS>& message);
    bool ProcessGLOEphemeris(const Message<CALX_SAT_EPHEMERIS_GLONASS>& message);
    bool ProcessGALEphemeris(const Message<CALX_SAT_EPHEMERIS_GALILEO>& message);
    bool ProcessBDSEphemeris(const Message<CALX_SAT_EPHEMERIS_BEIDOU>& message);
    bool ProcessQZSSEphemeris(const Message<CALX_SAT_EPHEMERIS_QZSS>& message);
    bool ProcessNAVICEphemeris(const Message<CALX_SAT_EPHEMERIS_NAVIC>& message);
    bool ProcessGPSAlmanach(const Message<CALX_SAT_ALMANAC>& message);
    bool ProcessGLOAlmanach(const Message<CALX_SAT_ALMANAC_GLONASS>& message);
    bool ProcessGALAlmanach(const Message<CALX_SAT_ALMANAC_GALILEO>& message);
    bool ProcessBDSAlmanach(const Message<CALX_SAT_ALMANAC_BEIDOU>& message);
    bool ProcessQZSSAlmanach(const Message<CALX_SAT_ALMANAC_QZSS>& message);
    bool ProcessNAVICAlmanach(const Message<CALX_SAT_ALMANAC_NAVIC>& message);

    /// All satellites over a site. `withUnhealthy`: also those whose orbit says that they are not healthy. The table is
    /// emptied when the status is not 0.
    int GetElevAziData(const SCalCoordinateSet& site, const SMjdTime& t, SCalElevationAzimuth& out,
                       bool withUnhealthy) const;
    /// One satellite, if healthy.
    int GetSatElevAziData(const SCalSatID& id, const SCalCoordinateSet& site, const SMjdTime& t,
                          SCalSatEpochDataOrbit& out) const;

    /// Which orbit serves a satellite at an instant, and where it puts it.
    struct SatellitePosition {
        ORBIT_COORD position;  ///< Earth-fixed, WGS-84 [m]
        eCALEPHEMERISTYPE type = eCALEPHEMERISTYPE_EPHEMERIS;
        SMjdTime referenceTime;
        bool healthy = false;
    };
    /// Empty when nothing serves.
    [[nodiscard]] std::optional<SatellitePosition> GetSatPosition(const SCalSatID& id, const SMjdTime& t) const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

}  // namespace CALN
