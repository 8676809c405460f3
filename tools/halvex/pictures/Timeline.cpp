#include "tools/halvex/pictures/Timeline.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "tools/halvex/Tool.h"
#include "tools/halvex/pictures/SystemMarks.h"

namespace halvex::tool {
namespace {

constexpr double kWidth = 960.0;
constexpr double kHeight = 520.0;
constexpr Box kPlot{70.0, 70.0, 770.0, 340.0};
constexpr double kDay = 86400.0;

/// One curve.
struct Curve {
    std::string name;
    std::string attributes;
    std::vector<unsigned> counts;
};

std::vector<Curve> curvesOf(const std::vector<VisibleSatellites>& epochs) {
    std::vector<Curve> curves(1);
    curves[0].name = "sum";
    curves[0].attributes = "stroke=\"#1a1a1a\" stroke-width=\"2.4\"";
    for (const VisibleSatellites& epoch : epochs) curves[0].counts.push_back(epoch.sum());
    for (std::size_t i = 0; i < kCountedSystems.size(); ++i) {
        Curve curve;
        const SatelliteSystem* const system = systemOfCode(kCountedSystems[i]);
        curve.name = system->name;
        curve.attributes =
            fmt::format("stroke=\"{}\" stroke-width=\"1.8\" {}", colourOf(system->code), dashesOf(system->code));
        for (const VisibleSatellites& epoch : epochs) curve.counts.push_back(epoch.counts[i]);
        if (*std::max_element(curve.counts.begin(), curve.counts.end()) != 0) curves.push_back(std::move(curve));
    }
    return curves;
}

/// The smallest of the steps that makes no more than `most` pieces; multiples of the last one beyond.
double tickStep(double length, double most, std::initializer_list<double> steps) {
    for (const double step : steps) {
        if (length <= step * most) return step;
    }
    const double last = *(steps.end() - 1);
    return last * std::ceil(length / most / last);
}

/// Both axes, and where values lie between them.
class Axes {
public:
    Axes(const std::vector<VisibleSatellites>& epochs, unsigned highest) : m_first(epochs.front().t) {
        constexpr double kShortest = 60.0;  // so that a single epoch has a width
        m_length = std::max(kShortest, epochs.back().t.GetDifferenceInSeconds(m_first));
        m_timeStep =
            tickStep(m_length, 12.0,
                     {10.0, 30.0, 60.0, 120.0, 300.0, 600.0, 1800.0, 3600.0, 7200.0, 10800.0, 21600.0, 43200.0, kDay});
        m_countStep = static_cast<unsigned>(tickStep(std::max(1U, highest), 8.0, {1.0, 2.0, 5.0, 10.0}));
        m_top = m_countStep * (highest / m_countStep + 1);
    }
    [[nodiscard]] double x(const SMjdTime& t) const { return xOf(t.GetDifferenceInSeconds(m_first)); }
    [[nodiscard]] double end() const { return kPlot.x + kPlot.width; }
    [[nodiscard]] double y(unsigned count) const {
        return kPlot.y + kPlot.height * (1.0 - static_cast<double>(count) / m_top);
    }

    void draw(Svg& svg, double mask) const {
        svg.beginGroup("stroke=\"#d0d0d0\"");
        for (unsigned count = 0; count <= m_top; count += m_countStep) {
            svg.line({kPlot.x, y(count)}, {kPlot.x + kPlot.width, y(count)});
        }
        const std::vector<double> ticks = timeTicks();
        for (const double tick : ticks) {
            svg.line({xOf(tick), kPlot.y}, {xOf(tick), kPlot.y + kPlot.height + 5.0});
        }
        svg.rectangle(kPlot, "fill=\"none\" stroke=\"#4d4d4d\"");
        svg.endGroup();
        svg.beginGroup("text-anchor=\"end\"");
        for (unsigned count = 0; count <= m_top; count += m_countStep) {
            svg.text({kPlot.x - 7.0, y(count) + 4.5}, fmt::format("{}", count));
        }
        svg.endGroup();
        drawTimes(svg, ticks);
        svg.text({kPlot.x + kPlot.width / 2.0, kPlot.y + kPlot.height + 58.0}, "GPS time [hours:minutes, date]",
                 "text-anchor=\"middle\" font-size=\"13\"");
        const double middle = kPlot.y + kPlot.height / 2.0;
        svg.text({24.0, middle}, fmt::format("satellites above {}\u00b0 [count]", mask),
                 fmt::format("text-anchor=\"middle\" font-size=\"13\" transform=\"rotate(-90 24 {})\"", middle));
    }

private:
    [[nodiscard]] double xOf(double seconds) const { return kPlot.x + kPlot.width * seconds / m_length; }

    /// Full hours and their like, in seconds from the first epoch.
    [[nodiscard]] std::vector<double> timeTicks() const {
        const double ofDay = m_first.GetMjdFractMilliseconds() / 1000.0;
        const double first = std::ceil(ofDay / m_timeStep) * m_timeStep - ofDay;
        const int after = static_cast<int>(std::floor((m_length - first) / m_timeStep));
        std::vector<double> ticks;
        for (int i = 0; i <= after; ++i) ticks.push_back(first + i * m_timeStep);
        return ticks;
    }

    /// The hour below each tick; the date below the first one and below those that begin a day.
    void drawTimes(Svg& svg, const std::vector<double>& ticks) const {
        svg.beginGroup("class=\"times\" text-anchor=\"middle\"");
        std::string date;
        double free = 0.0;
        for (const double tick : ticks) {
            SMjdTime t = m_first;
            t.AddSeconds(tick);
            const std::string text = formatTime(t);  // 2022-01-01T06:00:00
            svg.text({xOf(tick), kPlot.y + kPlot.height + 20.0}, text.substr(11, m_timeStep < 60.0 ? 8 : 5));
            const double half = textWidth(text.substr(0, 10), 12.0) / 2.0;
            if (text.substr(0, 10) != date && xOf(tick) - half >= free) {
                date = text.substr(0, 10);
                free = xOf(tick) + half;
                svg.text({xOf(tick), kPlot.y + kPlot.height + 36.0}, date);
            }
        }
        svg.endGroup();
    }

    SMjdTime m_first;
    double m_length = 0.0;    // [s]
    double m_timeStep = 1.0;  // [s]
    unsigned m_countStep = 1;
    unsigned m_top = 1;
};

/// Steps, without the points in the middle of a level stretch.
std::vector<Point> stepsOf(const Curve& curve, const std::vector<VisibleSatellites>& epochs, const Axes& axes) {
    std::vector<Point> points{{axes.x(epochs[0].t), axes.y(curve.counts[0])}};
    for (std::size_t i = 1; i < epochs.size(); ++i) {
        if (curve.counts[i] == curve.counts[i - 1]) continue;
        points.push_back({axes.x(epochs[i].t), points.back().y});
        points.push_back({axes.x(epochs[i].t), axes.y(curve.counts[i])});
    }
    points.push_back({axes.end(), points.back().y});
    return points;
}

/// Names and last counts at the curves' ends, from the top down and moved apart where the curves are not.
void drawNames(Svg& svg, const std::vector<Curve>& curves, const Axes& axes) {
    std::vector<const Curve*> order;
    order.reserve(curves.size());
    for (const Curve& curve : curves) order.push_back(&curve);
    std::stable_sort(order.begin(), order.end(),
                     [](const Curve* a, const Curve* b) { return a->counts.back() > b->counts.back(); });
    constexpr double kLine = 15.0;
    std::vector<double> heights;
    for (const Curve* curve : order) {
        const double wanted = axes.y(curve->counts.back());
        heights.push_back(heights.empty() ? wanted : std::max(wanted, heights.back() + kLine));
    }
    double lowest = kPlot.y + kPlot.height;
    for (auto height = heights.rbegin(); height != heights.rend(); ++height, lowest -= kLine) {
        *height = std::min(*height, lowest);
    }
    svg.beginGroup("class=\"names\"");
    for (std::size_t i = 0; i < order.size(); ++i) {
        const Curve& curve = *order[i];
        svg.line({axes.end(), axes.y(curve.counts.back())}, {axes.end() + 14.0, heights[i]},
                 "stroke=\"#4d4d4d\" stroke-width=\"0.7\"");
        svg.text({axes.end() + 18.0, heights[i] + 4.5}, fmt::format("{} {}", curve.name, curve.counts.back()));
    }
    svg.endGroup();
}

void drawLegend(Svg& svg, const std::vector<Curve>& curves) {
    constexpr double kSampleRoom = 56.0;
    double width = 0.0;
    for (const Curve& curve : curves) width += kSampleRoom + textWidth(curve.name, 12.0);
    Point at{(kWidth - width) / 2.0, kHeight - 22.0};
    svg.beginGroup("class=\"legend\"");
    for (const Curve& curve : curves) {
        svg.line(at, {at.x + 34.0, at.y}, curve.attributes);
        svg.text({at.x + 40.0, at.y + 4.5}, curve.name);
        at.x += kSampleRoom + textWidth(curve.name, 12.0);
    }
    svg.endGroup();
}

}  // namespace

std::string drawTimeline(const std::string& site, double mask, const std::vector<VisibleSatellites>& epochs) {
    const std::vector<Curve> curves = curvesOf(epochs);
    const unsigned highest = *std::max_element(curves[0].counts.begin(), curves[0].counts.end());
    const Axes axes(epochs, highest);
    const std::string title = "Satellites visible from " + site;
    Svg svg(kWidth, kHeight, title);
    svg.beginGroup("text-anchor=\"middle\"");
    svg.text({kWidth / 2.0, 30.0}, title, "font-size=\"17\" font-weight=\"bold\"");
    svg.text({kWidth / 2.0, 52.0},
             fmt::format("{} to {} GPS time, healthy satellites above {}\u00b0", formatTime(epochs.front().t),
                         formatTime(epochs.back().t), mask),
             "font-size=\"13\"");
    svg.endGroup();
    axes.draw(svg, mask);
    svg.beginGroup("class=\"curves\" fill=\"none\" stroke-linejoin=\"round\"");
    for (const Curve& curve : curves) svg.polyline(stepsOf(curve, epochs, axes), curve.attributes);
    svg.endGroup();

    drawNames(svg, curves, axes);
    drawLegend(svg, curves);
    return svg.finish();
}

}  // namespace halvex::tool
