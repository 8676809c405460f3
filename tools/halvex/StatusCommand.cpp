#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <iostream>
#include <memory>
#include <optional>

#include "formats/rinex/EpochBuilder.h"
#include "halvex/status/SiteSatStatus.h"
#include "tools/halvex/Tool.h"
#include "tools/halvex/orbits/Sky.h"
#include "tools/halvex/sets/StationSet.h"
#include "tools/halvex/streams/EpochSource.h"
#include "tools/halvex/systems/EnabledSystems.h"

namespace halvex::tool {
namespace {

struct Options {
    std::string file, site;
    std::vector<std::string> navigation;
    double mask = 0.0;     // [deg]
    double locked = 60.0;  // [s]
    bool keepGoing = false;
    bool json = false;
};

constexpr std::int32_t kAllSystems = 0xFF;

/// The level that a satellite has reached on a slot, as its status bit; 0 without a code.
unsigned char levelBit(const CHalvexObservation& observation, unsigned slot, double locked) {
    if (!observation.IsPseudorangeCValid(slot) && !observation.IsPseudorangePValid(slot)) return 0;
    unsigned level = 0;
    if (observation.IsPhaseValid(slot)) {
        constexpr double kCountsPerSecond = 100.0;
        unsigned short lock = 0;
        observation.getContLockCount(slot, lock);
        level = lock >= locked * kCountsPerSecond ? 2 : 1;
    }
    return static_cast<unsigned char>(1U << (2 * level + slot));
}

std::string_view nameOf(unsigned char stateChange) {
    if (stateChange == CHalvexSiteSatStatus::kGained) return "gained";
    return stateChange == CHalvexSiteSatStatus::kLost ? "lost" : "-";
}

/// Satellites times epochs of one system.
struct SystemCounts {
    std::uint64_t satellites = 0;                          // a bit for each number
    std::array<std::array<std::uint64_t, 3>, 2> levels{};  // by frequency: code, phase, locked
    std::uint64_t fixed = 0;
};

/// Follows a site's status through an observation file. Memory does not grow with the file.
class StatusRun {
public:
    explicit StatusRun(const Options& options) : m_options(options) {
        if (std::isnan(options.mask) || std::isnan(options.locked)) {  // a range check lets these pass
            throw Failure("--mask and --locked are numbers", Failure::kWrongUsage);
        }
        if (options.navigation.empty()) {
            if (options.mask != 0.0) throw Failure("--mask needs elevations: add --nav", Failure::kWrongUsage);
            if (!options.site.empty()) throw Failure("--site says nothing without --nav", Failure::kWrongUsage);
            return;
        }
        m_site = parseSite(options.site.empty() ? options.file : options.site);
        m_orbits.emplace(options.keepGoing);
        m_orbits->read(options.navigation);
    }

    void run() {
        EpochSource source(m_options.file);
        begin(source.header());
        const std::optional<Failure> failure = readAll(source);
        finish();
        if (failure) throw Failure(*failure);
        if (m_epochs == 0) throw Failure(m_options.file + ": there is no epoch");
    }

private:
    /// The fault that ended the reading, if one did.
    std::optional<Failure> readAll(EpochSource& source) {
        using Result = EpochSource::Result;
        rinex::EpochBuilder builder(source.header());
        rinex::ObservationEpoch epoch;
        CHalvexStationObservation station;
        std::uint32_t headerChanges = 0;
        Progress progress("reading " + m_options.file);
        for (Result result = source.next(epoch); result != Result::end; result = source.next(epoch)) {
            progress.update(source.bytesRead(), source.fileSize());
            if (result == Result::error) {
                if (!m_options.keepGoing) return source.error();
                ++m_bad;
                continue;
            }
            if (source.headerChanges() != headerChanges) {
                headerChanges = source.headerChanges();
                builder.setHeader(source.header());
            }
            if (result == Result::epoch && builder.build(epoch, -1, station)) take(station);
        }
        return std::nullopt;
    }

    void take(const CHalvexStationObservation& station) {
        const SMjdTime t = epochTime(station);
        if (m_epochs++ == 0) m_first = t;
        m_last = t;
        std::swap(m_before, m_now);
        m_now.Reset();
        m_now.SetEpochTime(t.GetAsMjd());
        CALN::SCalElevationAzimuth sky;
        if (m_orbits) m_orbits->calculator().GetElevAziData(m_site.position, t, sky, true);
        for (const CHalvexObservation& observation : station.observations()) {
            const unsigned char status =
                levelBit(observation, 0, m_options.locked) | levelBit(observation, 1, m_options.locked);
            m_now.SetStatus({observation.getPrnID(), status, elevationOf(sky, observation.getPrnID())});
        }
        m_now.FilterSatsBelowElevMask(m_options.mask);
        count();
        tellChanges(t);
    }

    /// Whole degrees, cut; 0 without an orbit and below the horizon.
    static unsigned char elevationOf(const CALN::SCalElevationAzimuth& sky, const CPrnID& satellite) {
        double elevation = 0.0;
        double azimuth = 0.0;
        const auto id = CHalvexStationObservation::getNewPrnTypeFromDeprecated(satellite).getCalSatID();
        if (!sky.getEleAzi(id, elevation, azimuth)) return 0;
        return static_cast<unsigned char>(std::clamp(degrees(elevation), 0.0, 90.0));
    }

    void count() {
        std::vector<unsigned> fixed;
        m_now.GetSatsAvailable(fixed);
        for (const SatelliteSystem& system : kSatelliteSystems) {
            const auto type = static_cast<CPrnID::PrnType>(system.typeBit());
            SystemCounts& counts = m_counts[system.code];
            counts.satellites |= m_now.GetNotEmptySats(type);
            counts.fixed += fixed[system.code];
            for (std::size_t frequency = 0; frequency < counts.levels.size(); ++frequency) {
                unsigned low = 0, mid = 0, high = 0;
                m_now.GetSatsStatus(type, frequency == 0, frequency == 1, low, mid, high);
                counts.levels[frequency][0] += low;
                counts.levels[frequency][1] += mid;
                counts.levels[frequency][2] += high;
            }
        }
    }

    /// A state that goes on is told once.
    void tellChanges(const SMjdTime& t) {
        const unsigned char found = m_now.DetectStateChanges(m_before);
        const unsigned char change = found != m_lastChange ? found : static_cast<unsigned char>(0);
        if (found != 0) m_lastChange = found;
        const bool fixed = m_now.IsFixed(kAllSystems);
        m_fixedEpochs += fixed ? 1U : 0U;
        if (fixed == m_wasFixed && change == 0) return;
        m_wasFixed = fixed;
        ++m_changes;
        unsigned satellites = 0, fixedSatellites = 0;
        m_now.GetSatsAvailable(satellites, fixedSatellites);
        if (m_json) {
            m_json->add({{"time", formatTime(t)},
                         {"fixed", fixed},
                         {"stateChange", change},
                         {"satellites", satellites},
                         {"fixedSatellites", fixedSatellites}});
        } else {
            std::cout << fmt::format("{:<23}  {:<9}  {:<12}  {:>10}  {:>5}\n", formatTime(t),
                                     fixed ? "fixed" : "not fixed", nameOf(change), satellites, fixedSatellites);
        }
    }

    void begin(const rinex::ObservationHeader& header) {
        if (m_options.json) {
            Json head = {{"file", m_options.file}, {"station", header.markerName}, {"locked", m_options.locked}};
            tellDisabledSystems(head);
            if (m_orbits) {
                head["navigation"] = m_orbits->json();
                head["site"] = siteJson(m_site);
                head["mask"] = m_options.mask;
            }
            m_json.emplace(head, "changes");
            return;
        }
        if (m_orbits) std::cout << m_orbits->text() << siteText(m_site) << "\n";
        std::cout << fmt::format("{:<23}  {:<9}  {:<12}  {:>10}  {:>5}\n", "GPS time", "site", "five locked",
                                 "satellites", "fixed");
    }

    void finish() {
        if (m_json) {
            m_json->finish(summary());
            return;
        }
        if (m_epochs == 0) return;
        std::cout << fmt::format("{} epochs, {} to {}, fixed in {} ({:.1f} %), changes: {}\n", m_epochs,
                                 formatTime(m_first), formatTime(m_last), m_fixedEpochs,
                                 100.0 * static_cast<double>(m_fixedEpochs) / static_cast<double>(m_epochs), m_changes);
        if (m_bad != 0) std::cout << m_bad << " bad epochs passed over\n";
        Table table({"", "satellites", "code 1", "phase 1", "locked 1", "code 2", "phase 2", "locked 2", "fixed"},
                    "<>>>>>>>>");
        for (const SatelliteSystem& system : kSatelliteSystems) {
            const SystemCounts& counts = m_counts[system.code];
            if (counts.satellites == 0) continue;
            std::vector<std::string> row{std::string(system.name), std::to_string(std::popcount(counts.satellites))};
            for (const auto& levels : counts.levels) {
                for (const std::uint64_t level : levels) row.push_back(std::to_string(level));
            }
            row.push_back(std::to_string(counts.fixed));
            table.add(row);
        }
        std::cout << table.text()
                  << fmt::format(
                         "Satellites times epochs by the highest level on frequency 1 and on frequency 2; locked: "
                         "phase without\na loss of lock for {} s. Fixed: locked on both.\n",
                         m_options.locked);
    }

    [[nodiscard]] Json summary() const {
        Json json = {{"changeCount", m_changes},
                     {"epochs", m_epochs},
                     {"fixedEpochs", m_fixedEpochs},
                     {"badEpochs", m_bad},
                     {"systems", Json::object()}};
        if (m_epochs != 0) {
            json["from"] = formatTime(m_first);
            json["to"] = formatTime(m_last);
        }
        for (const SatelliteSystem& system : kSatelliteSystems) {
            const SystemCounts& counts = m_counts[system.code];
            if (counts.satellites == 0) continue;
            const auto levels = [&counts](std::size_t frequency) {
                const auto& [code, phase, locked] = counts.levels[frequency];
                return Json{{"code", code}, {"phase", phase}, {"locked", locked}};
            };
            json["systems"][system.name] = {{"satellites", std::popcount(counts.satellites)},
                                            {"first", levels(0)},
                                            {"second", levels(1)},
                                            {"fixed", counts.fixed}};
        }
        return json;
    }

    const Options& m_options;
    Site m_site;
    std::optional<OrbitFiles> m_orbits;
    std::optional<EpochPrinter> m_json;
    CHalvexSiteSatStatus m_now, m_before;
    SMjdTime m_first, m_last;
    std::uint64_t m_epochs = 0;
    std::uint64_t m_fixedEpochs = 0;
    std::uint64_t m_changes = 0;
    std::uint64_t m_bad = 0;
    bool m_wasFixed = false;
    unsigned char m_lastChange = 0;
    std::array<SystemCounts, CALN::kSystemSlots> m_counts{};
};

}  // namespace

void addStatusCommand(CLI::App& app) {
    auto options = std::make_shared<Options>();
    CLI::App* command =
        addSatelliteCommand(app, "status", "how far a station's satellites are from code to locked phase, and when",
                            "halvex status ESBC00DNK_R_20201770000_01D_30S_MO.rnx.gz --nav "
                            "ESBC00DNK_R_20201770000_01D_MN.rnx.gz --mask 10");
    command->add_option("OBS", options->file, "RINEX observation file or RTCM 3 stream, plain or gzip")->required();
    command->add_option("--nav", options->navigation, "navigation files and almanacs: elevations");
    command->add_option("--site", options->site, "of the elevations; without, that of the observation file");
    command->add_option("--mask", options->mask, "satellites from this elevation on alone [deg]")
        ->check(CLI::Range(0.0, 90.0))
        ->capture_default_str();
    // Lock counts end at 655 s.
    command->add_option("--locked", options->locked, "seconds without a loss of lock that make a phase locked")
        ->check(CLI::Range(0.0, 600.0))
        ->capture_default_str();
    command->add_flag("--keep-going", options->keepGoing, "pass over bad epochs and orbits, and say how many");
    command->add_flag("--json", options->json, "as JSON");
    command->callback([options] { StatusRun(*options).run(); });
}

}  // namespace halvex::tool
