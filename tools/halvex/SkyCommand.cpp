#include <fmt/format.h>

#include <iostream>
#include <memory>

#include "formats/rinex/SatelliteName.h"
#include "tools/halvex/orbits/Sky.h"
#include "tools/halvex/orbits/Tracking.h"
#include "tools/halvex/pictures/SkyPlot.h"
#include "tools/halvex/systems/EnabledSystems.h"

namespace halvex::tool {
namespace {

struct Options : SkyOptions {
    std::string at, tracked;
};

std::string_view nameOf(CALN::eCALEPHEMERISTYPE orbit) {
    return orbit == CALN::eCALEPHEMERISTYPE_EPHEMERIS ? "ephemeris" : "almanac";
}

std::string textOf(const std::vector<SkySatellite>& sky) {
    Table table({"", "elevation [deg]", "azimuth [deg]", "health", "orbit", "age [min]"}, "<>><<>");
    for (const SkySatellite& satellite : sky) {
        table.add({rinex::satelliteName(satellite.id), fmt::format("{:.2f}", degrees(satellite.elevation)),
                   fmt::format("{:.2f}", degrees(satellite.azimuth)), satellite.healthy ? "good" : "bad",
                   std::string(nameOf(satellite.orbit)), fmt::format("{:.1f}", satellite.age / 60.0)});
    }
    return table.text();
}

Json jsonOf(const SMjdTime& t, const std::vector<SkySatellite>& sky) {
    Json satellites = Json::array();
    for (const SkySatellite& satellite : sky) {
        satellites.push_back({{"satellite", rinex::satelliteName(satellite.id)},
                              {"elevation", degrees(satellite.elevation)},
                              {"azimuth", degrees(satellite.azimuth)},
                              {"healthy", satellite.healthy},
                              {"orbit", nameOf(satellite.orbit)},
                              {"age", satellite.age}});
    }
    return {{"time", formatTime(t)}, {"satellites", satellites}};
}

void compare(const Options& options) {
    for (const auto& [given, name] :
         {std::pair(!options.at.empty(), "--at"), std::pair(options.step.has_value(), "--step"),
          std::pair(options.mask != 0.0, "--mask"), std::pair(!options.svg.empty(), "--svg")}) {
        if (given) throw Failure(std::string(name) + " says nothing beside --tracked", Failure::kWrongUsage);
    }
    const SMjdTime from = options.from.empty() ? SMjdTime() : parseTime(options.from);
    const SMjdTime to = options.to.empty() ? SMjdTime() : parseTime(options.to);
    if (from.IsSet() && to.IsSet()) static_cast<void>(makeSpan(from, to, std::nullopt));
    const Site site = parseSite(options.site.empty() ? options.tracked : options.site);
    OrbitFiles orbits(options.keepGoing, from);
    orbits.read(options.files);
    const Tracking tracking(orbits, site, options.tracked, from, to, options.keepGoing);
    if (options.json) {
        Json json = {{"navigation", orbits.json()}, {"site", siteJson(site)}};
        json.update(tracking.json());
        std::cout << jsonText(json) << "\n";
    } else {
        std::cout << orbits.text() << siteText(site) << "\n" << tracking.text();
    }
}

/// The span that was asked for; empty when it follows from the orbits.
std::optional<Span> spanOf(const Options& options) {
    if (options.from.empty() != options.to.empty()) {
        throw Failure("--from and --to belong together", Failure::kWrongUsage);
    }
    if (!options.from.empty()) return makeSpan(parseTime(options.from), parseTime(options.to), options.step);
    if (options.step) throw Failure("--step needs --from and --to", Failure::kWrongUsage);
    if (!options.at.empty()) return Span{.first = parseTime(options.at)};
    return std::nullopt;
}

void show(const Options& options) {
    const double mask = options.maskRadians();
    std::optional<Span> span = spanOf(options);
    const Site site = siteOf(options);
    OrbitFiles orbits(options.keepGoing, span ? span->first : SMjdTime());
    orbits.read(options.files);
    if (!span) span = Span{.first = ephemerisTime(orbits.first(), "say --at or --from and --to")};

    std::optional<EpochPrinter> json;
    std::optional<SkyPlot> plot;
    if (options.json) {
        json.emplace(Json{{"navigation", orbits.json()}, {"site", siteJson(site)}, {"mask", options.mask}});
    } else if (!options.svg.empty()) {
        plot.emplace(siteText(site), options.mask);
    } else {
        std::cout << orbits.text() << siteText(site) << "\n";
    }
    bool served = false;
    Progress progress("looking at the sky");
    for (std::uint64_t i = 0; i < span->count; ++i) {
        const SMjdTime t = span->at(i);
        const auto seen = skyOver(orbits, site.position, t, mask);
        served = served || seen;
        const std::vector<SkySatellite> sky = seen.value_or(std::vector<SkySatellite>());
        if (json) {
            json->add(jsonOf(t, sky));
        } else if (plot) {
            plot->add(t, sky);
        } else {
            std::cout << formatTime(t) << " GPS time, " << sky.size() << " satellites\n" << textOf(sky);
        }
        progress.update(i, span->count);
    }
    if (json) json->finish();
    if (!served) throw noOrbitServes(orbits, *span);
    if (plot) {
        writePicture(options.svg, plot->svg());
        (options.svg == "-" ? std::cerr : std::cout) << orbits.text();
    }
}

}  // namespace

void addSkyCommand(CLI::App& app) {
    auto options = std::make_shared<Options>();
    CLI::App* command =
        addSatelliteCommand(app, "sky", "where the satellites stand over a site, as a table or a picture",
                            "halvex sky BRDC00IGS_R_20220010000_01D_MN.rnx.gz --site 43.5607,1.4809,207 --from "
                            "2022-01-01T06:00 --to 2022-01-01T12:00 --svg sky.svg");
    addSkyOptions(*command, *options);
    auto* at = command->add_option("--at", options->at, "one epoch; without, the time of the first ephemeris");
    addSpanOptions(*command, *options, "");
    at->excludes("--from")->excludes("--to")->excludes("--step");
    command->add_option(
        "--tracked", options->tracked,
        "RINEX observation file or RTCM 3 stream: how its tracked satellites agree with the predicted ones; its site, "
        "unless there is --site");
    command->callback([options] {
        if (options->tracked.empty()) {
            show(*options);
        } else {
            compare(*options);
        }
    });
}

}  // namespace halvex::tool
