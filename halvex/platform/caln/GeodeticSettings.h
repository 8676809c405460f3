#pragma once

#include <array>

#include "halvex/platform/Export.h"
#include "halvex/platform/caln/Coordinates.h"

/// The process's geodetic parameters that are configuration: the transformation X' = T + R X of GLONASS positions from
/// PZ-90 to WGS-84. Any thread reads or sets; a reader sees one whole set, old or new, and takes no lock.
class HALVEX_EXPORT CGlobalGeodeticSettings {
public:
    struct PZ90ToWGS84 {
        std::array<std::array<double, 3>, 3> rotation;  ///< R with the scale in it, row by row
        ORBIT_COORD translation;                        ///< T [m]

        friend bool operator==(const PZ90ToWGS84&, const PZ90ToWGS84&) = default;
    };

    /// Parameters from PZ-90.11, the frame of GLONASS broadcast orbits since 2014, to ITRF2008, with which WGS-84
    /// (G1762 and later) agrees to centimetres: translation -0.003, -0.001, 0.000 m, rotation 0.019, -0.042, 0.002
    /// milliarcseconds, scale 0. Reference document "Parametry Zemli 1990" (PZ-90.11), Moscow 2014.
    [[nodiscard]] static const PZ90ToWGS84& defaults();

    static void GetPZ90ToWGS84RotMtrxLin(std::array<std::array<double, 3>, 3>& rotation);
    static void GetPZ90ToWGS84TrafoSet(ORBIT_COORD& translation);
    /// Both from one set.
    [[nodiscard]] static PZ90ToWGS84 GetPZ90ToWGS84();

    /// Puts a copy in force and returns what was in force before.
    static PZ90ToWGS84 SetPZ90ToWGS84(const PZ90ToWGS84& parameters);
};

/// Other parameters for the life of this object.
class ScopedPZ90ToWGS84 {
public:
    explicit ScopedPZ90ToWGS84(const CGlobalGeodeticSettings::PZ90ToWGS84& parameters)
        : m_before(CGlobalGeodeticSettings::SetPZ90ToWGS84(parameters)) {}
    ~ScopedPZ90ToWGS84() { CGlobalGeodeticSettings::SetPZ90ToWGS84(m_before); }
    ScopedPZ90ToWGS84(const ScopedPZ90ToWGS84&) = delete;
    ScopedPZ90ToWGS84& operator=(const ScopedPZ90ToWGS84&) = delete;

private:
    CGlobalGeodeticSettings::PZ90ToWGS84 m_before;
};
