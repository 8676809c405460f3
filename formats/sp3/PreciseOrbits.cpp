#include "formats/sp3/PreciseOrbits.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>
#include <utility>

namespace halvex::sp3 {
namespace {

/// Weights of barycentric interpolation at equal steps: binomial coefficients with alternating signs
/// (J.-P. Berrut, L. N. Trefethen, SIAM Review 46, 2004, 5.1).
constexpr std::array<double, PreciseOrbits::kPoints> barycentricWeights() {
    std::array<double, PreciseOrbits::kPoints> weights{};
    weights[0] = 1.0;
    for (std::size_t i = 1; i < weights.size(); ++i) {
        weights[i] = -weights[i - 1] * static_cast<double>(weights.size() - i) / static_cast<double>(i);
    }
    return weights;
}

}  // namespace

bool PreciseOrbits::read(const std::string& name) {
    LineReader lines;
    if (lines.open(name)) return read(std::move(lines));
    *this = PreciseOrbits();
    m_errors.push_back(lines.error().value_or(FormatError{name, 0, "cannot be opened"}));
    return false;
}

bool PreciseOrbits::read(LineReader lines) {
    *this = PreciseOrbits();
    Sp3Reader reader;
    if (!reader.open(std::move(lines))) {
        m_errors.push_back(reader.error());
        return false;
    }
    m_header = reader.header();
    Epoch epoch;
    for (auto result = reader.next(epoch); result != Sp3Reader::Result::end; result = reader.next(epoch)) {
        if (result == Sp3Reader::Result::error) {
            m_errors.push_back(reader.error());
            continue;
        }
        m_epochs.push_back(epoch.time);
        for (const SatelliteState& state : epoch.states) {
            if (state.position) m_points[state.id].push_back({epoch.time, *state.position});
        }
    }
    m_endLineMissing = reader.endLineMissing();
    return true;
}

std::optional<PreciseOrbits::Span> PreciseOrbits::span() const {
    if (m_epochs.empty()) return std::nullopt;
    return Span{m_epochs.front(), m_epochs.back()};
}

std::optional<ORBIT_COORD> PreciseOrbits::position(const CALN::SCalSatID& id, const SMjdTime& gpsTime) const {
    const auto satellite = m_points.find(id);
    if (satellite == m_points.end()) return std::nullopt;
    const std::vector<Point>& points = satellite->second;
    const auto after = std::ranges::lower_bound(points, gpsTime, {}, &Point::time);
    if (after == points.end()) return std::nullopt;
    if (after->time == gpsTime) return after->position;
    auto nearest = static_cast<std::size_t>(after - points.begin());
    if (nearest == 0) return std::nullopt;
    if (gpsTime.GetDifferenceInSeconds(points[nearest - 1].time) < after->time.GetDifferenceInSeconds(gpsTime)) {
        --nearest;
    }

    constexpr std::size_t kBeside = kPoints / 2;
    if (nearest < kBeside || nearest + kBeside >= points.size()) return std::nullopt;
    const auto window = std::span(points).subspan(nearest - kBeside, kPoints);
    const double steps = gpsTime.GetDifferenceInSeconds(window[0].time) / interval();

    static constexpr auto kWeights = barycentricWeights();
    constexpr double kTimeTolerance = 1e-6;  // [s]
    ORBIT_COORD sum;
    double sumOfWeights = 0.0;
    for (std::size_t i = 0; i < kPoints; ++i) {
        const auto& [time, point] = window[i];
        const double index = static_cast<double>(i);
        const double seconds = time.GetDifferenceInSeconds(window[0].time);
        if (std::abs(seconds - index * interval()) > kTimeTolerance) return std::nullopt;
        const double distance = steps - index;
        // So close to an epoch the division is by next to nothing.
        if (std::abs(distance) < 1e-12) return point;
        const double weight = kWeights[i] / distance;
        sum.x += weight * point.x;
        sum.y += weight * point.y;
        sum.z += weight * point.z;
        sumOfWeights += weight;
    }
    return ORBIT_COORD{sum.x / sumOfWeights, sum.y / sumOfWeights, sum.z / sumOfWeights};
}

}  // namespace halvex::sp3
