#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "formats/sp3/Sp3Reader.h"

namespace halvex::sp3 {

/// The orbits of one SP3 file, held as a whole: what computed positions are compared with. Earth-fixed positions of the
/// centre of mass [m], instants on the GPS scale. Plain value; read-only use from any thread.
class PreciseOrbits {
public:
    /// Points of the interpolation: a polynomial of degree 10. For orbits of navigation satellites its error is far
    /// below a millimetre at steps of 5 min and stays there at 15 min.
    static constexpr std::size_t kPoints = 11;

    struct Span {
        SMjdTime first, last;
    };

    /// Reads the file in place of what was held. False, with errors(), when its header cannot be read. Bad epochs are
    /// left out, each with its error.
    [[nodiscard]] bool read(const std::string& name);
    [[nodiscard]] bool read(LineReader lines);

    /// Where the satellite is: at an epoch of the file what stands there, between epochs by interpolation. Empty
    /// without a position at that epoch, and between epochs unless the nearest one and five on either side of it have
    /// positions at equal steps: so outside span(), near its ends and beside gaps.
    [[nodiscard]] std::optional<ORBIT_COORD> position(const CALN::SCalSatID& id, const SMjdTime& gpsTime) const;

    [[nodiscard]] const Header& header() const { return m_header; }
    [[nodiscard]] const std::vector<SMjdTime>& epochs() const { return m_epochs; }
    /// First and last epoch; empty without any.
    [[nodiscard]] std::optional<Span> span() const;
    /// Between epochs [s], as the header has it.
    [[nodiscard]] double interval() const { return m_header.interval; }
    [[nodiscard]] bool endLineMissing() const { return m_endLineMissing; }
    [[nodiscard]] const std::vector<FormatError>& errors() const { return m_errors; }

private:
    struct Point {
        SMjdTime time;
        ORBIT_COORD position;
    };

    Header m_header;
    std::vector<SMjdTime> m_epochs;
    std::map<CALN::SCalSatID, std::vector<Point>> m_points;  ///< in the order of their times
    std::vector<FormatError> m_errors;
    bool m_endLineMissing = false;
};

}  // namespace halvex::sp3
