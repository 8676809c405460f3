#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/halvex/Tool.h"
#include "tools/halvex/orbits/OrbitFiles.h"
#include "tools/halvex/orbits/Site.h"

namespace halvex::tool {

/// A satellite as a site sees it at an epoch.
struct SkySatellite {
    CALN::SCalSatID id;
    double elevation = 0.0;  ///< [rad]
    double azimuth = 0.0;    ///< clockwise from north [rad]
    double age = 0.0;        ///< epoch minus reference time of the orbit that served [s]
    CALN::eCALEPHEMERISTYPE orbit = CALN::eCALEPHEMERISTYPE_EPHEMERIS;
    bool healthy = false;
};

/// All satellites above the mask [rad], unhealthy ones too, by system and number. No vector, as opposed to an empty
/// one: no orbit serves the epoch.
[[nodiscard]] std::optional<std::vector<SkySatellite>> skyOver(OrbitFiles& orbits, const CGeoCoord& site,
                                                               const SMjdTime& t, double mask);

/// Epochs at equal steps, first and last included where the last is one.
struct Span {
    SMjdTime first;
    double step = 0.0;  ///< [s]
    std::uint64_t count = 1;

    [[nodiscard]] SMjdTime at(std::uint64_t i) const {
        SMjdTime t = first;
        t.AddSeconds(static_cast<double>(i) * step);
        return t;
    }
    [[nodiscard]] SMjdTime last() const { return at(count - 1); }
};

/// The span from one time to another; without a step, a round one that makes about a hundred epochs. Failure (2) when
/// it ends before it begins, the step is not positive or there are more than a million epochs.
[[nodiscard]] Span makeSpan(const SMjdTime& from, const SMjdTime& to, const std::optional<double>& step);

/// What ends a command whose orbits served none of the epochs.
[[nodiscard]] Failure noOrbitServes(const OrbitFiles& orbits, const Span& span);

/// What the commands that look at the sky are told.
struct SkyOptions {
    std::vector<std::string> files;
    std::string site, from, to, svg;
    std::optional<double> step;
    double mask = 0.0;  ///< [deg]
    bool json = false;
    bool keepGoing = false;

    [[nodiscard]] double maskRadians() const;
};

/// Adds these options but for the span's; the site is asked for later, as not every command insists on it.
void addSkyOptions(CLI::App& command, SkyOptions& options);
void addSpanOptions(CLI::App& command, SkyOptions& options, const std::string& fromDefault);

/// The site of --site. Failure (2) without one.
[[nodiscard]] Site siteOf(const SkyOptions& options);
/// Time of the first or last ephemeris. Failure (2), asking for `instead`, when the files hold almanacs alone.
[[nodiscard]] SMjdTime ephemerisTime(const SMjdTime& time, const std::string& instead);

/// A site for titles: its name, if it has one, latitude, longitude and height.
[[nodiscard]] std::string siteText(const Site& site);
[[nodiscard]] Json siteJson(const Site& site);
/// One line of JSON; bytes in names out of files that are no UTF-8 do no harm.
[[nodiscard]] std::string jsonText(const Json& json);
/// Prints a JSON object on one line, with an array that grows epoch by epoch: memory does not. What is known only at
/// the end comes behind it.
class EpochPrinter {
public:
    explicit EpochPrinter(const Json& head, std::string_view array = "epochs");
    void add(const Json& epoch);
    void finish(const Json& tail = Json::object());

private:
    bool m_empty = true;
};

/// Writes a picture ("-": standard output).
void writePicture(const std::string& file, const std::string& picture);

/// Degrees of an angle in radians.
[[nodiscard]] double degrees(double radians);

}  // namespace halvex::tool
