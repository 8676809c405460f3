#include <fmt/format.h>

#include <iostream>
#include <memory>

#include "tools/halvex/orbits/Sky.h"
#include "tools/halvex/pictures/Timeline.h"
#include "tools/halvex/systems/EnabledSystems.h"

namespace halvex::tool {
namespace {

VisibleSatellites visibleAt(OrbitFiles& orbits, const CGeoCoord& site, const SMjdTime& t, double mask) {
    CSiteRawDataHistoryItem item;
    orbits.calculator().GetVisibilityCount(site, t, mask, item);
    return {t, {item.visibleGps, item.visibleGlonass, item.visibleGalileo, item.visibleBeidou, item.visibleQzss}};
}

/// One row; columns as wide as whole milliseconds and the systems' names need.
std::string textOf(const std::string& time, const std::array<std::string, kCountedSystems.size()>& counts,
                   const std::string& sum) {
    std::string text = fmt::format("{:<23}", time);
    for (std::size_t i = 0; i < counts.size(); ++i) {
        text += fmt::format("  {:>{}}", counts[i], systemOfCode(kCountedSystems[i])->name.size());
    }
    return text + fmt::format("  {:>3}\n", sum);
}

std::string textOf(const VisibleSatellites& visible) {
    std::array<std::string, kCountedSystems.size()> counts;
    for (std::size_t i = 0; i < counts.size(); ++i) counts[i] = std::to_string(visible.counts[i]);
    return textOf(formatTime(visible.t), counts, std::to_string(visible.sum()));
}

std::string headText() {
    std::array<std::string, kCountedSystems.size()> names;
    for (std::size_t i = 0; i < names.size(); ++i) names[i] = systemOfCode(kCountedSystems[i])->name;
    return textOf("GPS time", names, "sum");
}

Json jsonOf(const VisibleSatellites& visible) {
    Json counts;
    for (std::size_t i = 0; i < kCountedSystems.size(); ++i) {
        counts[systemOfCode(kCountedSystems[i])->name] = visible.counts[i];
    }
    return {{"time", formatTime(visible.t)}, {"counts", counts}, {"sum", visible.sum()}};
}

void count(const SkyOptions& options) {
    const double mask = options.maskRadians();
    const std::optional<SMjdTime> from = options.from.empty() ? std::nullopt : std::optional(parseTime(options.from));
    const std::optional<SMjdTime> to = options.to.empty() ? std::nullopt : std::optional(parseTime(options.to));
    if (from && to) static_cast<void>(makeSpan(*from, *to, options.step));  // before anything long is read
    const Site site = siteOf(options);
    OrbitFiles orbits(options.keepGoing, from.value_or(SMjdTime()));
    orbits.read(options.files);
    const char* const instead = "say --from and --to";
    const Span span = makeSpan(from ? *from : ephemerisTime(orbits.first(), instead),
                               to ? *to : ephemerisTime(orbits.last(), instead), options.step);

    std::optional<EpochPrinter> json;
    std::vector<VisibleSatellites> epochs;
    if (options.json) {
        json.emplace(
            Json{{"navigation", orbits.json()}, {"site", siteJson(site)}, {"mask", options.mask}, {"step", span.step}});
    } else if (options.svg.empty()) {
        std::cout << orbits.text() << siteText(site)
                  << fmt::format(", healthy satellites above {} degrees\n", options.mask) << headText();
    }
    bool served = false;
    Progress progress("counting satellites");
    for (std::uint64_t i = 0; i < span.count; ++i) {
        const VisibleSatellites visible = visibleAt(orbits, site.position, span.at(i), mask);
        served = served || visible.sum() != 0 || skyOver(orbits, site.position, visible.t, mask);
        if (json) {
            json->add(jsonOf(visible));
        } else if (!options.svg.empty()) {
            epochs.push_back(visible);
        } else {
            std::cout << textOf(visible);
        }
        progress.update(i, span.count);
    }
    if (json) json->finish();
    if (!served) throw noOrbitServes(orbits, span);
    if (!options.svg.empty()) {
        writePicture(options.svg, drawTimeline(siteText(site), options.mask, epochs));
        (options.svg == "-" ? std::cerr : std::cout) << orbits.text();
    }
}

}  // namespace

void addVisibilityCommand(CLI::App& app) {
    auto options = std::make_shared<SkyOptions>();
    CLI::App* command = addSatelliteCommand(
        app, "visibility", "how many satellites of each system a site sees over time",
        "halvex visibility BRDC00IGS_R_20220010000_01D_MN.rnx.gz --site 43.5607,1.4809,207 --mask 10 --svg "
        "visibility.svg");
    addSkyOptions(*command, *options);
    addSpanOptions(*command, *options, "; without, that of the first ephemeris, and of the last one for --to");
    command->callback([options] { count(*options); });
}

}  // namespace halvex::tool
