#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "formats/rinex/NavigationRecords.h"
#include "formats/rinex/ObservationHeader.h"
#include "formats/rinex/SignalSlots.h"
#include "halvex/observations/ContLockCount.h"
#include "halvex/observations/HalvexStationObservation.h"
#include "halvex/platform/caln/Coordinates.h"
#include "tools/halvex/orbits/OrbitSource.h"

namespace halvex::tool {

/// What a station would have observed: pseudoranges, phases, Doppler and C/N0 on each slot, and cycle slips, of the
/// satellites of an OrbitSource that stand higher than ten degrees. The same settings give the same epochs, to the last
/// printed digit, on every machine.
///
///   pseudorange = r - c dt + T + (f1 / f)^2 I,    wavelength x phase = r - c dt + T - (f1 / f)^2 I + ambiguity
///
/// r: from the satellite's place when the signal left to the site when it arrives, the Earth having turned meanwhile;
/// dt: the satellite's clock then (see broadcastClock); T, I: troposphere and, on the GPS L1 carrier f1, ionosphere
/// (see Atmosphere.h), or 0. The receiver's clock is GPS time, signals have no delays in satellite or receiver. Doppler
/// is the rate of the phase over the second around the epoch. Noise is spread evenly over +-0.3 m (C), +-0.15 m (P),
/// +-0.01 cycles, +-0.05 Hz and +-0.5 dB, or 0. docs/simulation.md says the same with its sources.
class Simulation {
public:
    struct Settings {
        SMjdTime start = SMjdTime(2021, 1, 1, 0, 0, 0.0);  ///< first epoch, GPS time
        double interval = 30.0;                            ///< [s]
        double duration = 3600.0;                          ///< [s]
        ORBIT_COORD position{3582105.0, 532590.0, 5232755.0};
        std::string site = "SIMU00XXX";
        std::uint64_t seed = 1;
        bool atmosphere = true;
        bool noise = true;
    };

    /// `orbits` outlives the simulation, which alone asks it.
    Simulation(const Settings& settings, OrbitSource& orbits);
    [[nodiscard]] rinex::ObservationHeader header() const;
    [[nodiscard]] rinex::NavigationHeader navigationHeader() const;
    /// Fills the next epoch; false when the last one is out.
    bool next(CHalvexStationObservation& station);
    [[nodiscard]] std::uint64_t epochs() const { return m_epochs; }
    /// The ephemerides that this epoch is the first one to use, for satellites below the horizon as well.
    [[nodiscard]] const std::vector<rinex::NavigationRecord>& newEphemerides() const { return m_newEphemerides; }
    /// Cycle slips put in so far.
    [[nodiscard]] std::uint64_t slips() const { return m_slips; }

private:
    struct Satellite {
        CALN::SCalSatID id;
        int channel = 0;  // GLONASS
        SMjdTime ephemeris;
        std::array<double, kFrequencySlots> ambiguity{};  // [cycle]
    };
    struct Sight {
        double range = 0.0;       // with the clock and the troposphere [m]
        double ionosphere = 0.0;  // delay of L1 [m]
        double elevation = 0.0;   // [rad]
    };
    [[nodiscard]] Sight sight(const rinex::NavigationRecord& ephemeris, double gpsSeconds) const;
    void fill(Satellite& satellite, const rinex::NavigationRecord& ephemeris, CHalvexStationObservation& station);
    [[nodiscard]] double noise(const CALN::SCalSatID& id, unsigned slot, unsigned kind) const;

    Settings m_settings;
    OrbitSource& m_orbits;
    ORBIT_GEOGRAPHIC m_geographic;
    LocalFrame m_frame;
    std::vector<Satellite> m_satellites;
    std::vector<rinex::NavigationRecord> m_newEphemerides;
    CContLockCount m_lockCounts;
    SMjdTime m_now;
    std::uint64_t m_epoch = 0;
    std::uint64_t m_epochs;
    std::uint64_t m_slips = 0;
};

}  // namespace halvex::tool
