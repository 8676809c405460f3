#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "tools/halvex/orbits/Sky.h"
#include "tools/halvex/pictures/Svg.h"

namespace halvex::tool {

/// A picture of the sky laid on the map: north up, east on the right, the zenith in the middle, the horizon around. One
/// epoch gives a named mark for each satellite; several give tracks with a named mark at their ends. Names never
/// overlap; one that finds no room near its mark, as on a day of all systems, is left out.
class SkyPlot {
public:
    static constexpr double kWidth = 800.0;
    static constexpr double kHeight = 850.0;

    /// The mask [deg] is drawn as a ring.
    SkyPlot(std::string site, double mask) : m_site(std::move(site)), m_mask(mask) {}

    /// The next epoch. Tracks break where a satellite was not there at the epoch before.
    void add(const SMjdTime& t, const std::vector<SkySatellite>& satellites);
    /// The same picture for the same epochs.
    [[nodiscard]] std::string svg() const;

    /// Where a direction [rad] lies in the picture.
    [[nodiscard]] static Point pointOf(double elevation, double azimuth);

private:
    struct Track {
        std::vector<Point> points;
        Point end;
        std::uint64_t lastEpoch = 0;
        bool healthy = false;
    };

    void drawGrid(Svg& svg) const;
    void drawScales(Svg& svg) const;
    void drawLegend(Svg& svg) const;
    void drawTracks(Svg& svg) const;
    void drawEnds(Svg& svg) const;
    [[nodiscard]] std::string title() const;
    /// Where the names of the rings are covered least [rad].
    [[nodiscard]] double azimuthOfScale() const;

    std::string m_site;
    double m_mask;
    SMjdTime m_first, m_last;
    std::uint64_t m_epochs = 0;
    std::map<CALN::SCalSatID, std::vector<Track>> m_tracks;
};

}  // namespace halvex::tool
