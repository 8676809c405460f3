#pragma once

#include "halvex/orbits/OrbitListeners.h"
#include "halvex/platform/Export.h"
#include "halvex/platform/caln/Coordinates.h"
#include "halvex/platform/caln/ElevationAzimuth.h"
#include "halvex/platform/caln/ExtCalElevAziCalculator.h"
#include "halvex/platform/mdb/PrnIdZ9.h"

class CHalvexAlmanacNavic;

/// Satellites above a site's horizon, system by system, as raw-data histories keep them.
struct CSiteRawDataHistoryItem {
    unsigned char visibleGps = 0;
    unsigned char visibleGlonass = 0;
    unsigned char visibleBeidou = 0;
    unsigned char visibleGalileo = 0;
    unsigned char visibleQzss = 0;
};

/// Takes new ephemerides and almanacs of all systems into the elevation-azimuth engine and answers where satellites
/// stand and how many are visible. Instants are on the GPS scale. Any thread feeds and asks.
class HALVEX_EXPORT CHalvexElevAziCalculator : public IEphemerisListener, public IAlmanacListener {
public:
    /// The engine's arguments, see CALN::ExtCalElevAziCalculator.
    CHalvexElevAziCalculator(unsigned int orbitsPerSatellite, unsigned int keptEpochs, unsigned int timeframeMinutes,
                             CALN::ExtCalOrbitConsumer* consumer);
    ~CHalvexElevAziCalculator() override;

    /// False: a GPS or GLONASS orbit could not be converted. What the engine thinks of an orbit is not told.
    bool ProcessNewEphemeris(const CHalvexEphemerisNAVIC& ephemeris) override;
    bool ProcessNewEphemeris(const CHalvexEphemerisQZSS& ephemeris) override;
    bool ProcessNewEphemeris(const CHalvexEphemerisBDS& ephemeris) override;
    bool ProcessNewEphemeris(const CHalvexEphemerisGAL& ephemeris) override;
    bool ProcessNewEphemeris(const CHalvexEphemerisGLO& ephemeris) override;
    bool ProcessNewEphemeris(const CHalvexEphemeris& ephemeris) override;
    virtual bool ProcessNewAlmanac(const CHalvexAlmanacNavic& almanac);
    bool ProcessNewAlmanac(const CHalvexAlmanacQzss& almanac) override;
    bool ProcessNewAlmanac(const CHalvexAlmanacBds& almanac) override;
    bool ProcessNewAlmanac(const CHalvexAlmanacGal& almanac) override;
    bool ProcessNewAlmanac(const CHalvexAlmanacGlonass& almanac) override;
    bool ProcessNewAlmanac(const CHalvexAlmanac& almanac) override;

    /// Forgets all orbits.
    void Reset();

    /// All satellites over `site`; `flag`: those that are not healthy, too. False when nothing serves that epoch.
    bool GetElevAziData(const CGeoCoord& site, const SMjdTime& t, CALN::SCalElevationAzimuth& out, bool flag) const;
    bool GetSatElevAziData(const MDB::CPrnIdZ9& prn, const CGeoCoord& site, const SMjdTime& t,
                           CALN::SCalSatEpochDataOrbit& out) const;
    /// Healthy satellites strictly above the mask [rad]. True even when nothing serves the epoch: then all are 0.
    bool GetVisibilityCount(const CGeoCoord& site, const SMjdTime& t, double elevationMask, unsigned char& gps,
                            unsigned char& glonass, unsigned char& beidou, unsigned char& galileo, unsigned char& qzss);
    bool GetVisibilityCount(const CGeoCoord& site, const SMjdTime& t, double elevationMask,
                            CSiteRawDataHistoryItem& item);

    /// Which orbit serves a satellite, and where it puts it.
    [[nodiscard]] const CALN::ExtCalElevAziCalculator& GetEngine() const { return m_engine; }

private:
    CALN::ExtCalElevAziCalculator m_engine;
};

/// A site into both kinds of coordinates; false, leaving `to` alone, for numbers that are not finite or no latitude.
HALVEX_EXPORT bool convertCoords(const CGeoCoord& from, CALN::SCalCoordinateSet& to);
