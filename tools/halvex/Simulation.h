#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "formats/rinex/ObservationHeader.h"
#include "formats/rinex/SignalSlots.h"
#include "halvex/observations/ContLockCount.h"
#include "halvex/observations/HalvexStationObservation.h"

namespace halvex::tool {

/// A station's day that never was: satellites of four systems on circular orbits, ranges, phases, Doppler and C/N0 on
/// each slot, and cycle slips. The same settings give the same epochs, to the last printed digit, on every machine.
class Simulation {
public:
    struct Settings {
        SMjdTime start = SMjdTime(2021, 1, 1, 0, 0, 0.0);                ///< first epoch, GPS time
        double interval = 30.0;                                          ///< [s]
        double duration = 3600.0;                                        ///< [s]
        std::array<double, 3> position{3582105.0, 532590.0, 5232755.0};  ///< Earth-fixed [m]
        std::string site = "SIMU00XXX";
        std::uint64_t seed = 1;
    };

    explicit Simulation(const Settings& settings);
    [[nodiscard]] rinex::ObservationHeader header() const;
    /// Fills the next epoch; false when the last one is out.
    bool next(CHalvexStationObservation& station);
    [[nodiscard]] std::uint64_t epochs() const { return m_epochs; }
    /// Cycle slips put in so far.
    [[nodiscard]] std::uint64_t slips() const { return m_slips; }

private:
    struct Satellite {
        CALN::SCalSatID id;
        double radius = 0.0;                              // of the orbit [m]
        double inclination = 0.0;                         // [rad]
        double node = 0.0;                                // right ascension at the start [rad]
        double anomaly = 0.0;                             // argument of latitude at the start [rad]
        int channel = 0;                                  // GLONASS
        std::array<double, kFrequencySlots> ambiguity{};  // [cycle]
    };
    struct Sight {
        double range = 0.0;      // [m]
        double elevation = 0.0;  // [rad]
    };
    [[nodiscard]] Sight sight(const Satellite& satellite, double seconds) const;
    void fill(Satellite& satellite, double seconds, CHalvexStationObservation& station);
    [[nodiscard]] double noise(const CALN::SCalSatID& id, unsigned slot, unsigned kind) const;

    Settings m_settings;
    std::vector<Satellite> m_satellites;
    CContLockCount m_lockCounts;
    SMjdTime m_now;
    std::uint64_t m_epoch = 0;
    std::uint64_t m_epochs;
    std::uint64_t m_slips = 0;
};

}  // namespace halvex::tool
