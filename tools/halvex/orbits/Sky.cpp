#include "tools/halvex/orbits/Sky.h"

#include <fmt/format.h>

#include <cmath>
#include <iostream>
#include <numbers>

#include "formats/io/TextFile.h"

namespace halvex::tool {
namespace {

constexpr double kMostEpochs = 1e6;
constexpr double kDay = 86400.0;

/// The smallest round step that makes no more than about a hundred epochs.
double roundStep(double length) {
    constexpr double kWanted = 100.0;
    for (const double step :
         {1.0, 5.0, 10.0, 30.0, 60.0, 120.0, 300.0, 600.0, 900.0, 1800.0, 3600.0, 7200.0, 10800.0, 21600.0, 43200.0}) {
        if (length <= step * kWanted) return step;
    }
    return std::ceil(length / kWanted / kDay) * kDay;
}

}  // namespace

double degrees(double radians) {
    return radians * 180.0 / std::numbers::pi;
}

std::optional<std::vector<SkySatellite>> skyOver(OrbitFiles& orbits, const CGeoCoord& site, const SMjdTime& t,
                                                 double mask) {
    CALN::SCalElevationAzimuth table;
    if (!orbits.calculator().GetElevAziData(site, t, table, true)) return std::nullopt;
    std::vector<SkySatellite> sky;
    for (const auto& [id, count] : orbits.satellites()) {
        SkySatellite satellite{.id = id};
        if (!table.getEleAzi(id, satellite.elevation, satellite.azimuth) || !(satellite.elevation > mask)) continue;
        const auto orbit = orbits.calculator().GetEngine().GetSatPosition(id, t);
        if (!orbit) continue;
        satellite.age = t.GetDifferenceInSeconds(orbit->referenceTime);
        satellite.orbit = orbit->type;
        satellite.healthy = orbit->healthy;
        sky.push_back(satellite);
    }
    return sky;
}

Span makeSpan(const SMjdTime& from, const SMjdTime& to, const std::optional<double>& step) {
    const double length = to.GetDifferenceInSeconds(from);
    if (length < 0.0) {
        throw Failure("the span ends, " + formatTime(to) + ", before it begins, " + formatTime(from),
                      Failure::kWrongUsage);
    }
    const double seconds = step.value_or(roundStep(length));
    if (!(seconds > 0.0) || std::isinf(seconds)) throw Failure("--step is more than 0 s", Failure::kWrongUsage);
    constexpr double kRounding = 1e-9;  // a last epoch at 0.1 s steps is not lost to it
    const double steps = std::floor(length / seconds + kRounding);
    if (!(steps < kMostEpochs)) {
        throw Failure(fmt::format("--step {} makes more than a million epochs from {} to {}", seconds, formatTime(from),
                                  formatTime(to)),
                      Failure::kWrongUsage);
    }
    return {from, seconds, static_cast<std::uint64_t>(steps) + 1};
}

Failure noOrbitServes(const OrbitFiles& orbits, const Span& span) {
    std::string text = "no orbit serves " + formatTime(span.first);
    if (span.count > 1) text += " to " + formatTime(span.last());
    if (orbits.first().IsSet()) {
        text += fmt::format("; the ephemerides are of {} to {}", formatTime(orbits.first()), formatTime(orbits.last()));
    }
    return Failure(text);
}

double SkyOptions::maskRadians() const {
    if (!(mask >= 0.0 && mask < 90.0)) throw Failure("--mask is 0 to 90 degrees, 90 excluded", Failure::kWrongUsage);
    return mask * std::numbers::pi / 180.0;
}

void addSkyOptions(CLI::App& command, SkyOptions& options) {
    command.add_option("NAV", options.files, "RINEX navigation files, RTCM 3 streams, YUMA and SEM almanacs")
        ->required();
    command.add_option("--site", options.site,
                       "LAT,LON,H (degrees, metres), X,Y,Z (metres) or a file that has it: RINEX observations, RTCM 3");
    command.add_option("--mask", options.mask, "satellites above this elevation alone [deg]")->capture_default_str();
    auto* json = command.add_flag("--json", options.json, "as JSON");
    command.add_option("--svg", options.svg, "a picture instead, into this file, - for standard output")
        ->excludes(json);
    command.add_flag("--keep-going", options.keepGoing, "pass over what is wrong in the files, and say how much");
}

void addSpanOptions(CLI::App& command, SkyOptions& options, const std::string& fromDefault) {
    command.add_option("--from", options.from, "first epoch" + fromDefault);
    command.add_option("--to", options.to, "last epoch");
    command.add_option("--step", options.step, "seconds between epochs; without, such that there are about 100");
}

Site siteOf(const SkyOptions& options) {
    if (options.site.empty()) {
        throw Failure("--site is missing: LAT,LON,H, X,Y,Z or a RINEX observation file", Failure::kWrongUsage);
    }
    return parseSite(options.site);
}

SMjdTime ephemerisTime(const SMjdTime& time, const std::string& instead) {
    if (!time.IsSet()) throw Failure("almanacs alone: " + instead, Failure::kWrongUsage);
    return time;
}

std::string siteText(const Site& site) {
    const double latitude = degrees(site.position.GetLatitude());
    const double longitude = degrees(site.position.GetLongitude());
    const std::string place =
        fmt::format("{:.4f}\u00b0 {}, {:.4f}\u00b0 {}, {:.0f} m", std::abs(latitude), latitude < 0.0 ? "S" : "N",
                    std::abs(longitude), longitude < 0.0 ? "W" : "E", site.position.GetHeight());
    return site.named ? site.name + " (" + place + ")" : place;
}

Json siteJson(const Site& site) {
    return {{"name", site.name},
            {"latitude", degrees(site.position.GetLatitude())},
            {"longitude", degrees(site.position.GetLongitude())},
            {"height", site.position.GetHeight()}};
}

std::string jsonText(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

EpochPrinter::EpochPrinter(const Json& head, std::string_view array) {
    std::string text = jsonText(head);
    text.pop_back();
    std::cout << text << ",\"" << array << "\":[";
}

void EpochPrinter::add(const Json& epoch) {
    std::cout << (m_empty ? "" : ",") << jsonText(epoch);
    m_empty = false;
}

void EpochPrinter::finish(const Json& tail) {
    const std::string text = jsonText(tail);
    std::cout << (tail.empty() ? "]" : "],") << text.substr(1) << "\n";
}

void writePicture(const std::string& file, const std::string& picture) {
    if (file == "-") {
        std::cout << picture;
        return;
    }
    TextFile out;
    if (!out.create(file)) throw Failure(out.error());
    out.text() += picture;
    if (!out.close()) throw Failure(out.error());
}

}  // namespace halvex::tool
