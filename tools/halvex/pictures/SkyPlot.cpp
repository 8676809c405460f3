#include "tools/halvex/pictures/SkyPlot.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "formats/rinex/SatelliteName.h"
#include "tools/halvex/pictures/Labels.h"
#include "tools/halvex/pictures/SystemMarks.h"

namespace halvex::tool {
namespace {

constexpr Point kCentre{400.0, 437.0};
constexpr double kRadius = 340.0;  // of the horizon
constexpr Box kNameArea{8.0, 60.0, 784.0, 752.0};
constexpr double kNameSize = 11.0;
constexpr double kReach = 140.0;  // how far from its mark a name may go

constexpr double radians(double degrees) {
    return degrees * std::numbers::pi / 180.0;
}

/// The text's box when it stands in the middle of `centre`.
Box boxAround(Point centre, std::string_view text, double size) {
    const double width = textWidth(text, size);
    return {centre.x - width / 2.0, centre.y - size / 2.0, width, size};
}

/// What stands around the horizon, each with its place.
std::vector<std::pair<std::string, Point>> azimuthNames() {
    constexpr double kOutside = 26.0;
    const std::string_view winds[] = {"N", "E", "S", "W"};
    std::vector<std::pair<std::string, Point>> names;
    for (int azimuth = 0; azimuth < 360; azimuth += 30) {
        const double angle = radians(azimuth);
        names.emplace_back(azimuth % 90 == 0 ? std::string(winds[azimuth / 90]) : fmt::format("{}\u00b0", azimuth),
                           Point{kCentre.x + (kRadius + kOutside) * std::sin(angle),
                                 kCentre.y - (kRadius + kOutside) * std::cos(angle)});
    }
    return names;
}

/// The rings' names, between two spokes.
std::vector<std::pair<std::string, Point>> elevationNames(double azimuth) {
    std::vector<std::pair<std::string, Point>> names;
    for (const int elevation : {0, 30, 60}) {
        names.emplace_back(fmt::format("{}\u00b0", elevation), SkyPlot::pointOf(radians(elevation), azimuth));
    }
    return names;
}

/// Room of a mark and its edge.
Box boxOfMark(Point at) {
    constexpr double kSize = 2.0 * kMarkRadius + 2.0;
    return {at.x - kSize / 2.0, at.y - kSize / 2.0, kSize, kSize};
}

}  // namespace

Point SkyPlot::pointOf(double elevation, double azimuth) {
    const double radius = kRadius * (1.0 - elevation / (std::numbers::pi / 2.0));
    return {kCentre.x + radius * std::sin(azimuth), kCentre.y - radius * std::cos(azimuth)};
}

void SkyPlot::add(const SMjdTime& t, const std::vector<SkySatellite>& satellites) {
    if (m_epochs++ == 0) m_first = t;
    m_last = t;
    for (const SkySatellite& satellite : satellites) {
        std::vector<Track>& tracks = m_tracks[satellite.id];
        if (tracks.empty() || tracks.back().lastEpoch + 1 != m_epochs) tracks.emplace_back();
        Track& track = tracks.back();
        track.lastEpoch = m_epochs;
        track.healthy = satellite.healthy;
        track.end = pointOf(satellite.elevation, satellite.azimuth);
        constexpr double kApart = 2.5;  // dense epochs do not make the picture larger
        if (track.points.empty() ||
            std::hypot(track.end.x - track.points.back().x, track.end.y - track.points.back().y) >= kApart) {
            track.points.push_back(track.end);
        }
    }
}

std::string SkyPlot::title() const {
    return "Sky of " + m_site;
}

void SkyPlot::drawGrid(Svg& svg) const {
    svg.beginGroup("fill=\"none\" stroke=\"#b8b8b8\"");
    for (const int elevation : {60, 30}) {
        svg.circle(kCentre, kCentre.y - pointOf(radians(elevation), 0.0).y);
    }
    for (int azimuth = 0; azimuth < 180; azimuth += 30) {
        svg.line(pointOf(0.0, radians(azimuth)), pointOf(0.0, radians(azimuth + 180)));
    }
    svg.circle(kCentre, kRadius, "stroke=\"#4d4d4d\" stroke-width=\"1.5\"");
    if (m_mask > 0.0) {
        svg.circle(kCentre, kCentre.y - pointOf(radians(m_mask), 0.0).y, "stroke=\"#4d4d4d\" stroke-dasharray=\"4 4\"");
    }
    svg.endGroup();
}

void SkyPlot::drawScales(Svg& svg) const {
    constexpr double kBaseLine = 4.5;  // below the middle of the text
    svg.beginGroup("class=\"azimuths\" font-size=\"13\" font-weight=\"bold\" text-anchor=\"middle\"");
    for (const auto& [name, at] : azimuthNames()) svg.text({at.x, at.y + kBaseLine}, name);
    svg.endGroup();
    svg.beginGroup("font-size=\"11\" fill=\"#4d4d4d\" text-anchor=\"middle\"");
    for (const auto& [name, at] : elevationNames(azimuthOfScale())) {
        svg.rectangle(boxAround(at, name, kNameSize), "fill=\"#fcfcfa\"");
        svg.text({at.x, at.y + 4.0}, name);
    }
    svg.endGroup();
}

double SkyPlot::azimuthOfScale() const {
    double best = 0.0;
    int fewest = std::numeric_limits<int>::max();
    for (int azimuth = 15; azimuth < 360; azimuth += 30) {
        int covered = 0;
        for (const auto& [name, at] : elevationNames(radians(azimuth))) {
            const Box box = boxAround(at, name, kNameSize);
            for (const auto& [id, tracks] : m_tracks) {
                for (const Track& track : tracks) covered += box.overlaps(boxOfMark(track.end)) ? 1 : 0;
            }
        }
        if (covered < fewest) {
            fewest = covered;
            best = radians(azimuth);
        }
    }
    return best;
}

void SkyPlot::drawTracks(Svg& svg) const {
    svg.beginGroup("fill=\"none\" stroke-width=\"1.4\" stroke-opacity=\"0.75\" stroke-linejoin=\"round\"");
    for (const auto& [id, tracks] : m_tracks) {
        for (const Track& track : tracks) {
            std::vector<Point> points = track.points;
            points.push_back(track.end);
            svg.polyline(points, fmt::format("stroke=\"{}\" {}", colourOf(id.system), dashesOf(id.system)));
        }
    }
    svg.endGroup();
}

void SkyPlot::drawEnds(Svg& svg) const {
    Labels labels(kNameArea);
    for (const auto& [name, at] : azimuthNames()) labels.reserve(boxAround(at, name, 13.0));
    for (const auto& [name, at] : elevationNames(azimuthOfScale())) labels.reserve(boxAround(at, name, kNameSize));
    struct End {
        CALN::SCalSatID id;
        Point at;
        bool isLast;
    };
    std::vector<End> ends;
    svg.beginGroup("class=\"marks\"");
    for (const auto& [id, tracks] : m_tracks) {
        for (const Track& track : tracks) {
            drawMark(svg, id.system, track.end, track.healthy);
            labels.reserve(boxOfMark(track.end));
            ends.push_back({id, track.end, &track == &tracks.back()});
        }
    }
    svg.endGroup();

    // Where room is short, the names of earlier passes are what is left out.
    std::stable_partition(ends.begin(), ends.end(), [](const End& end) { return end.isLast; });
    svg.beginGroup("class=\"names\" font-size=\"11\" stroke=\"#fcfcfa\" stroke-width=\"2.5\" paint-order=\"stroke\"");
    for (const End& end : ends) {
        const std::string name = rinex::satelliteName(end.id);
        const auto box =
            labels.place(end.at, kMarkRadius + 2.0, textWidth(name, kNameSize), kNameSize, end.isLast ? kReach : 30.0);
        if (!box) continue;
        const Point nearest{std::clamp(end.at.x, box->x, box->x + box->width),
                            std::clamp(end.at.y, box->y, box->y + box->height)};
        if (std::hypot(nearest.x - end.at.x, nearest.y - end.at.y) > kMarkRadius + 6.0) {
            svg.line(end.at, nearest, "stroke=\"#4d4d4d\" stroke-width=\"0.7\"");
        }
        svg.text({box->x + box->width / 2.0, box->y + 0.85 * box->height}, name, "text-anchor=\"middle\"");
    }
    svg.endGroup();
}

void SkyPlot::drawLegend(Svg& svg) const {
    struct Entry {
        CALN::eCALSATSYSTEM system;
        bool healthy;
        std::string text;
    };
    std::vector<Entry> entries;
    bool unhealthy = false;
    for (const SatelliteSystem& system : kSatelliteSystems) {
        std::size_t count = 0;
        for (const auto& [id, tracks] : m_tracks) {
            if (id.system != system.code) continue;
            ++count;
            unhealthy = unhealthy || !tracks.back().healthy;
        }
        if (count != 0) entries.push_back({system.code, true, fmt::format("{} {}", system.name, count)});
    }
    if (unhealthy) entries.push_back({CALN::eCALSATSYSTEM_GPS, false, "hollow: unhealthy"});
    constexpr double kMarkRoom = 28.0;
    double width = 0.0;
    for (const Entry& entry : entries) width += kMarkRoom + textWidth(entry.text, 12.0);
    Point at{(kWidth - width) / 2.0 + kMarkRoom / 2.0, kHeight - 26.0};
    svg.beginGroup("class=\"legend\"");
    for (const Entry& entry : entries) {
        drawMark(svg, entry.system, at, entry.healthy);
        svg.text({at.x + 10.0, at.y + 4.5}, entry.text);
        at.x += kMarkRoom + textWidth(entry.text, 12.0);
    }
    svg.endGroup();
}

std::string SkyPlot::svg() const {
    Svg svg(kWidth, kHeight, title());
    svg.beginGroup("text-anchor=\"middle\"");
    svg.text({kWidth / 2.0, 30.0}, title(), "font-size=\"17\" font-weight=\"bold\"");
    std::string times = formatTime(m_first);
    if (m_epochs > 1) times += " to " + formatTime(m_last);
    svg.text({kWidth / 2.0, 52.0},
             fmt::format("{} GPS time, {}", times,
                         m_mask > 0.0 ? fmt::format("above the mask of {}\u00b0 (dashed)", m_mask) : "mask 0\u00b0"),
             "font-size=\"13\"");
    svg.endGroup();
    drawGrid(svg);
    if (m_epochs > 1) drawTracks(svg);
    drawScales(svg);
    drawEnds(svg);
    drawLegend(svg);
    return svg.finish();
}

}  // namespace halvex::tool
