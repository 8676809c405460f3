#pragma once

#include <array>
#include <cstdint>
#include <map>

#include "halvex/corrections/StationCorrection.h"
#include "halvex/observations/HalvexStationObservation.h"
#include "halvex/platform/caln/Coordinates.h"
#include "tools/halvex/orbits/OrbitSource.h"

namespace halvex::tool {

/// What is left of a station's observations when range, satellite clock and receiver clock are taken off. The
/// receiver's clock is the median of the pseudoranges on the first slot.
struct StationResiduals {
    struct Signal {
        bool code = false, phase = false;
        bool lossOfLock = false;
        double codeMetres = 0.0;
        double phaseMetres = 0.0;  ///< with the ambiguity
        double wavelength = 0.0;   ///< [m]
    };
    struct Satellite {
        double elevation = 0.0;    ///< [rad]
        double troposphere = 0.0;  ///< modelled delay, still in the residuals [m]
        std::uint8_t issueOfData = 0;
        std::array<Signal, kFrequencySlots> signals;
    };
    std::map<CALN::SCalSatID, Satellite> satellites;
    double codeSpread = 0.0;  ///< median of what is left of the pseudoranges, without signs [m]
};

/// Residuals of an epoch for the satellites above `mask` [rad] that have an ephemeris.
[[nodiscard]] StationResiduals residualsOf(const CHalvexStationObservation& station, const SMjdTime& t,
                                           const ORBIT_COORD& position, OrbitSource& orbits, double mask);

/// Whole cycles that are taken off a station's phases, signal by signal, so that those of two stations can be compared.
///
/// The master's are arbitrary: what brings a phase next to zero when it is first seen. An auxiliary station's are such
/// that its single difference to the master, less the modelled troposphere and what all satellites of that carrier have
/// in common (the receivers' clocks and delays), is next to zero when it is first seen: right as long as ionosphere and
/// orbits differ by less than half a cycle between the stations, which holds over some ten kilometres. A signal that is
/// further than a quarter of a cycle from whole cycles counts as not fixed; one that jumps by more than half a cycle
/// has slipped, and is begun anew, as after a loss of lock on either side.
///
/// What all have in common follows the mean of the satellites that go on, so that the differences are smooth whatever
/// satellites come and go.
class Levelling {
public:
    /// The master's result: every signal counts as fixed.
    CHalvexZ9StationCorrection master(const StationResiduals& residuals);
    /// An auxiliary station's, against the master's residuals and levels of the same epoch.
    CHalvexZ9StationCorrection auxiliary(const StationResiduals& residuals, const StationResiduals& masterResiduals,
                                         const Levelling& masterLevels);

    /// Signals that were begun anew although neither side reported a loss of lock.
    [[nodiscard]] std::uint64_t slips() const { return m_slips; }

private:
    struct Level {
        bool set = false;
        double cycles = 0.0;
        double deviation = 0.0;         ///< from what all have in common, at the last epoch [m]
        std::uint64_t begun = 0;        ///< counts the times that it was set
        std::uint64_t masterBegun = 0;  ///< of the master's level that it belongs to
    };
    using Levels = std::map<CALN::SCalSatID, std::array<Level, kFrequencySlots>>;

    void forgetAbsent(const StationResiduals& residuals);
    void levelCarrier(CALN::eCALSATSYSTEM system, unsigned slot, const StationResiduals& residuals,
                      const StationResiduals& masterResiduals, const Levelling& masterLevels,
                      CHalvexZ9StationCorrection& result);

    Levels m_levels;
    std::uint64_t m_slips = 0;
};

}  // namespace halvex::tool
