#include "halvex/platform/caln/GeodeticSettings.h"

#include <mutex>

#include "halvex/platform/os/Published.h"

namespace {

constexpr std::size_t kNumbers = 12;
using Parameters = os::Published<kNumbers, double>;

constexpr double kMilliarcsecond = 4.84813681109536e-9;  // [rad]: pi / 648 000 000

// Linear form for small angles, coordinates turning with the frame.
constexpr double kAboutX = 0.019 * kMilliarcsecond;
constexpr double kAboutY = -0.042 * kMilliarcsecond;
constexpr double kAboutZ = 0.002 * kMilliarcsecond;
constexpr CGlobalGeodeticSettings::PZ90ToWGS84 kDefaults{
    {{{1.0, kAboutZ, -kAboutY}, {-kAboutZ, 1.0, kAboutX}, {kAboutY, -kAboutX, 1.0}}}, {-0.003, -0.001, 0.0}};

Parameters::Values numbersOf(const CGlobalGeodeticSettings::PZ90ToWGS84& parameters) {
    const auto& r = parameters.rotation;
    const ORBIT_COORD& t = parameters.translation;
    return {r[0][0], r[0][1], r[0][2], r[1][0], r[1][1], r[1][2], r[2][0], r[2][1], r[2][2], t.x, t.y, t.z};
}

CGlobalGeodeticSettings::PZ90ToWGS84 parametersOf(const Parameters::Values& n) {
    return {{{{n[0], n[1], n[2]}, {n[3], n[4], n[5]}, {n[6], n[7], n[8]}}}, {n[9], n[10], n[11]}};
}

struct Settings {
    Settings() { published.publish(numbersOf(kDefaults)); }
    std::mutex writing;
    Parameters published;
};

Settings& settings() {
    static Settings instance;
    return instance;
}

}  // namespace

const CGlobalGeodeticSettings::PZ90ToWGS84& CGlobalGeodeticSettings::defaults() {
    return kDefaults;
}

void CGlobalGeodeticSettings::GetPZ90ToWGS84RotMtrxLin(std::array<std::array<double, 3>, 3>& rotation) {
    rotation = GetPZ90ToWGS84().rotation;
}

void CGlobalGeodeticSettings::GetPZ90ToWGS84TrafoSet(ORBIT_COORD& translation) {
    translation = GetPZ90ToWGS84().translation;
}

CGlobalGeodeticSettings::PZ90ToWGS84 CGlobalGeodeticSettings::GetPZ90ToWGS84() {
    return parametersOf(settings().published.read());
}

CGlobalGeodeticSettings::PZ90ToWGS84 CGlobalGeodeticSettings::SetPZ90ToWGS84(const PZ90ToWGS84& parameters) {
    Settings& all = settings();
    const std::lock_guard lock(all.writing);
    const PZ90ToWGS84 before = parametersOf(all.published.read());
    all.published.publish(numbersOf(parameters));
    return before;
}
