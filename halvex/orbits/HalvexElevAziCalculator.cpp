#include "halvex/orbits/HalvexElevAziCalculator.h"

#include <boost/make_shared.hpp>
#include <utility>

#include "halvex/orbits/HalvexAlmanac.h"
#include "halvex/orbits/HalvexAlmanacGlonass.h"
#include "halvex/orbits/HalvexEphemeris.h"
#include "halvex/orbits/HalvexEphemerisBDS.h"
#include "halvex/orbits/HalvexEphemerisGAL.h"
#include "halvex/orbits/HalvexEphemerisGLO.h"
#include "halvex/orbits/HalvexEphemerisNAVIC.h"
#include "halvex/orbits/HalvexEphemerisQZSS.h"
#include "halvex/orbits/ThinAlmanacs.h"

namespace {

template <class Record>
auto messageOf(const Record& record) {
    return boost::make_shared<const BSS::TSK::MsgObjectT<Record>>(record);
}

}  // namespace

CHalvexElevAziCalculator::CHalvexElevAziCalculator(unsigned int orbitsPerSatellite, unsigned int keptEpochs,
                                                   unsigned int timeframeMinutes, CALN::ExtCalOrbitConsumer* consumer)
    : m_engine(orbitsPerSatellite, keptEpochs, timeframeMinutes, consumer) {
    m_engine.SetMode(CALN::ExtCalElevAziCalculator::kModeEphemerisBeforeAlmanac);
}

CHalvexElevAziCalculator::~CHalvexElevAziCalculator() = default;

void CHalvexElevAziCalculator::Reset() {
    m_engine.Reset();
}

bool CHalvexElevAziCalculator::ProcessNewEphemeris(const CHalvexEphemeris& ephemeris) {
    const auto message = boost::make_shared<BSS::TSK::MsgObjectT<CALN::CALX_SAT_EPHEMERIS>>();
    if (!convertGPSEphemeris(ephemeris, *message)) return false;
    m_engine.ProcessGPSEphemeris(message);
    return true;
}

bool CHalvexElevAziCalculator::ProcessNewEphemeris(const CHalvexEphemerisGLO& ephemeris) {
    const auto message = boost::make_shared<BSS::TSK::MsgObjectT<CALN::CALX_SAT_EPHEMERIS_GLONASS>>();
    if (!convertGLOEphemeris(ephemeris, *message)) return false;
    m_engine.ProcessGLOEphemeris(message);
    return true;
}

bool CHalvexElevAziCalculator::ProcessNewEphemeris(const CHalvexEphemerisGAL& ephemeris) {
    m_engine.ProcessGALEphemeris(messageOf<CALN::CALX_SAT_EPHEMERIS_GALILEO>(ephemeris));
    return true;
}

bool CHalvexElevAziCalculator::ProcessNewEphemeris(const CHalvexEphemerisBDS& ephemeris) {
    m_engine.ProcessBDSEphemeris(messageOf<CALN::CALX_SAT_EPHEMERIS_BEIDOU>(ephemeris));
    return true;
}

bool CHalvexElevAziCalculator::ProcessNewEphemeris(const CHalvexEphemerisQZSS& ephemeris) {
    m_engine.ProcessQZSSEphemeris(messageOf<CALN::CALX_SAT_EPHEMERIS_QZSS>(ephemeris));
    return true;
}

bool CHalvexElevAziCalculator::ProcessNewEphemeris(const CHalvexEphemerisNAVIC& ephemeris) {
    m_engine.ProcessNAVICEphemeris(messageOf<CALN::CALX_SAT_EPHEMERIS_NAVIC>(ephemeris));
    return true;
}

bool CHalvexElevAziCalculator::ProcessNewAlmanac(const CHalvexAlmanac& almanac) {
    const auto message = boost::make_shared<BSS::TSK::MsgObjectT<CALN::CALX_SAT_ALMANAC>>();
    if (!convertGPSAlmanac(almanac, *message)) return false;
    m_engine.ProcessGPSAlmanach(message);
    return true;
}

bool CHalvexElevAziCalculator::ProcessNewAlmanac(const CHalvexAlmanacGlonass& almanac) {
    const auto message = boost::make_shared<BSS::TSK::MsgObjectT<CALN::CALX_SAT_ALMANAC_GLONASS>>();
    if (!convertGLOAlmanac(almanac, *message)) return false;
    m_engine.ProcessGLOAlmanach(message);
    return true;
}

bool CHalvexElevAziCalculator::ProcessNewAlmanac(const CHalvexAlmanacGal& almanac) {
    m_engine.ProcessGALAlmanach(messageOf<CALN::CALX_SAT_ALMANAC_GALILEO>(almanac));
    return true;
}

bool CHalvexElevAziCalculator::ProcessNewAlmanac(const CHalvexAlmanacBds& almanac) {
    m_engine.ProcessBDSAlmanach(messageOf<CALN::CALX_SAT_ALMANAC_BEIDOU>(almanac));
    return true;
}

bool CHalvexElevAziCalculator::ProcessNewAlmanac(const CHalvexAlmanacQzss& almanac) {
    m_engine.ProcessQZSSAlmanach(messageOf<CALN::CALX_SAT_ALMANAC_QZSS>(almanac));
    return true;
}

bool CHalvexElevAziCalculator::ProcessNewAlmanac(const CHalvexAlmanacNavic& almanac) {
    m_engine.ProcessNAVICAlmanach(messageOf<CALN::CALX_SAT_ALMANAC_NAVIC>(almanac));
    return true;
}

bool CHalvexElevAziCalculator::GetElevAziData(const CGeoCoord& site, const SMjdTime& t, CALN::SCalElevationAzimuth& out,
                                              bool flag) const {
    CALN::SCalCoordinateSet coordinates;
    out.clear();
    return convertCoords(site, coordinates) && m_engine.GetElevAziData(coordinates, t, out, flag) == 0;
}

bool CHalvexElevAziCalculator::GetSatElevAziData(const MDB::CPrnIdZ9& prn, const CGeoCoord& site, const SMjdTime& t,
                                                 CALN::SCalSatEpochDataOrbit& out) const {
    CALN::SCalCoordinateSet coordinates;
    return convertCoords(site, coordinates) && m_engine.GetSatElevAziData(prn.getCalSatID(), coordinates, t, out) == 0;
}

bool CHalvexElevAziCalculator::GetVisibilityCount(const CGeoCoord& site, const SMjdTime& t, double elevationMask,
                                                  unsigned char& gps, unsigned char& glonass, unsigned char& beidou,
                                                  unsigned char& galileo, unsigned char& qzss) {
    const std::pair<CALN::eCALSATSYSTEM, unsigned char&> counters[] = {
        {CALN::eCALSATSYSTEM_GPS, gps},         {CALN::eCALSATSYSTEM_GLONASS, glonass},
        {CALN::eCALSATSYSTEM_GALILEO, galileo}, {CALN::eCALSATSYSTEM_BEIDOU, beidou},
        {CALN::eCALSATSYSTEM_QZSS, qzss},
    };
    for (const auto& [system, count] : counters) count = 0;
    CALN::SCalElevationAzimuth table;
    if (!GetElevAziData(site, t, table, false)) return true;
    for (const auto& [system, count] : counters) {
        for (unsigned char number = 1; number <= CSatelliteSystem::GetMaxSatelliteNumber(system); ++number) {
            double elevation = 0.0;
            double azimuth = 0.0;
            if (table.getEleAzi({system, number}, elevation, azimuth) && elevation > elevationMask) ++count;
        }
    }
    return true;
}

bool CHalvexElevAziCalculator::GetVisibilityCount(const CGeoCoord& site, const SMjdTime& t, double elevationMask,
                                                  CSiteRawDataHistoryItem& item) {
    return GetVisibilityCount(site, t, elevationMask, item.visibleGps, item.visibleGlonass, item.visibleBeidou,
                              item.visibleGalileo, item.visibleQzss);
}
