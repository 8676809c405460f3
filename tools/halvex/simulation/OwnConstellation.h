#pragma once

#include <map>

#include "halvex/platform/caln/GlonassMotion.h"
#include "halvex/platform/caln/KeplerOrbit.h"
#include "tools/halvex/orbits/OrbitSource.h"

namespace halvex::tool {

/// Satellites that never were: thirty of GPS and 24 each of GLONASS, Galileo and BeiDou, those of BeiDou with numbers
/// up to 5 geostationary. Each has one orbit and one clock for all time from the start on, and an ephemeris of them
/// every two hours (GPS), 30 min (GLONASS), 10 min (Galileo), an hour (BeiDou); where one hands over to the next they
/// agree to the digits that files print. Orbits are plain ellipses, fixed in space, and of GLONASS those of the
/// system's own user algorithm. Source bytes have the simulated bit.
class OwnConstellation final : public OrbitSource {
public:
    explicit OwnConstellation(const SMjdTime& start);
    [[nodiscard]] std::map<CALN::SCalSatID, int> satellites() const override;
    [[nodiscard]] const rinex::NavigationRecord* serving(const CALN::SCalSatID& id, const SMjdTime& t) override;

    /// A system's orbits and when it renews its ephemerides.
    struct Plan {
        CALN::eCALSATSYSTEM system;
        int planes;
        int perPlane;
        double radius;       ///< [m]
        double inclination;  ///< [deg]
        double every;        ///< between reference times [s]
        double phase;        ///< of the first one within the week of the system's time [s]
    };

private:
    struct Satellite {
        const Plan* plan = nullptr;
        double eccentricity = 0.0;
        double perigee = 0.0;  // argument [rad]
        double anomaly = 0.0;  // mean, at the start [rad]
        double node = 0.0;     // Earth-fixed longitude at the start [rad]
        double bias = 0.0;     // of the clock at the start [s]
        double drift = 0.0;    // [s/s]
        int channel = 0;       // GLONASS
        glonass::State<double> state;
        SMjdTime reference;  // of the record and the state; unset: there are none yet
        rinex::NavigationRecord record;
    };
    void renew(Satellite& satellite, unsigned char number, const SMjdTime& reference) const;
    void renewGlonass(Satellite& satellite, unsigned char number, const SMjdTime& reference) const;
    template <class Record>
    void setElements(Record& record, const Satellite& satellite, const kepler::Constants& constants,
                     const SMjdTime& reference) const;

    SMjdTime m_start;
    std::map<CALN::SCalSatID, Satellite> m_satellites;
};

}  // namespace halvex::tool
