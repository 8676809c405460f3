#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>

#include "formats/rinex/SatelliteName.h"
#include "formats/sp3/PreciseOrbits.h"
#include "halvex/platform/caln/SatPosition.h"
#include "tools/halvex/Tool.h"
#include "tools/halvex/orbits/OrbitFiles.h"
#include "tools/halvex/systems/EnabledSystems.h"

namespace halvex::tool {
namespace {

struct Options {
    std::vector<std::string> files;
    std::string compare;
    std::string at;
    double maxAge = 0.0;  // [min]; 0: half of the system's timeframe
    bool keepGoing = false;
    bool json = false;
};

constexpr double kEarthRate = 7.2921151467e-5;  // [rad/s], WGS-84

ORBIT_COORD minus(const ORBIT_COORD& a, const ORBIT_COORD& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
double dot(const ORBIT_COORD& a, const ORBIT_COORD& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
ORBIT_COORD cross(const ORBIT_COORD& a, const ORBIT_COORD& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
ORBIT_COORD unit(const ORBIT_COORD& a) {
    const double length = std::sqrt(dot(a, a));
    return {a.x / length, a.y / length, a.z / length};
}

/// Differences of one satellite or one group, broadcast minus precise.
struct Differences {
    std::vector<double> distances;                     // [m]
    double radial2 = 0.0, along2 = 0.0, cross2 = 0.0;  // sums of squares
    double worst = 0.0;
    SMjdTime worstAt;

    void add(const ORBIT_COORD& radialAlongCross, const SMjdTime& t) {
        const double distance = std::sqrt(dot(radialAlongCross, radialAlongCross));
        distances.push_back(distance);
        radial2 += radialAlongCross.x * radialAlongCross.x;
        along2 += radialAlongCross.y * radialAlongCross.y;
        cross2 += radialAlongCross.z * radialAlongCross.z;
        if (distance > worst) {
            worst = distance;
            worstAt = t;
        }
    }
    [[nodiscard]] double rms(double sum) const { return std::sqrt(sum / static_cast<double>(distances.size())); }
    /// The value below which that share of the distances lies.
    [[nodiscard]] double share(double part) const {
        std::vector<double> sorted = distances;
        std::sort(sorted.begin(), sorted.end());
        return sorted[static_cast<std::size_t>(part * static_cast<double>(sorted.size() - 1) + 0.5)];
    }
    [[nodiscard]] std::vector<std::string> row(const std::string& name) const {
        std::vector<std::string> row{name, std::to_string(distances.size())};
        for (const double value :
             {rms(radial2), rms(along2), rms(cross2), rms(radial2 + along2 + cross2), share(0.5), share(0.95), worst}) {
            row.push_back(fmt::format("{:.2f}", value));
        }
        row.push_back(formatTime(worstAt));
        return row;
    }
    [[nodiscard]] Json json() const {
        return {{"epochs", distances.size()},
                {"radialRms", rms(radial2)},
                {"alongRms", rms(along2)},
                {"crossRms", rms(cross2)},
                {"rms", rms(radial2 + along2 + cross2)},
                {"median", share(0.5)},
                {"p95", share(0.95)},
                {"worst", worst},
                {"worstAt", formatTime(worstAt)}};
    }
};

/// Systems by name; BeiDou's geostationary satellites, whose orbits are known far less well, are a group of their own.
std::string groupOf(const CALN::SCalSatID& id) {
    CALN::CALX_SAT_EPHEMERIS_BEIDOU beidou;
    beidou.satId = id.number;
    if (id.system == CALN::eCALSATSYSTEM_BEIDOU) {
        return beidou.isGeostationary() ? "BeiDou geostationary" : "BeiDou";
    }
    return std::string(systemOfCode(id.system)->name);
}

/// GLONASS ephemerides by satellite and reference time.
using GlonassRecords = std::map<std::pair<CALN::SCalSatID, SMjdTime>, CALN::CALX_SAT_EPHEMERIS_GLONASS>;

class Comparison {
public:
    Comparison(OrbitFiles& orbits, const GlonassRecords& glonass, const sp3::PreciseOrbits& precise, double maxAge) {
        const auto& engine = orbits.calculator().GetEngine();
        for (const SMjdTime& t : precise.epochs()) {
            for (const sp3::Header::Satellite& satellite : precise.header().satellites) {
                const auto truth = precise.position(satellite.id, t);
                if (!truth) continue;
                auto broadcast = engine.GetSatPosition(satellite.id, t);
                if (!broadcast || !isInTime(satellite.id, t, *broadcast, maxAge)) {
                    ++m_without;
                } else if (!broadcast->healthy) {
                    ++m_unhealthy;
                } else {
                    const Axes axes = axesAt(engine, satellite.id, t, *broadcast);
                    if (const auto record = glonass.find({satellite.id, broadcast->referenceTime});
                        record != glonass.end()) {
                        m_groups["GLONASS, 500 s steps"].add(axes.partsOf(minus(broadcast->position, *truth)), t);
                        broadcast->position = inShortSteps(record->second, t);
                    }
                    const ORBIT_COORD parts = axes.partsOf(minus(broadcast->position, *truth));
                    m_satellites[satellite.id].add(parts, t);
                    m_groups[groupOf(satellite.id)].add(parts, t);
                }
            }
        }
    }
    [[nodiscard]] bool empty() const { return m_satellites.empty(); }
    [[nodiscard]] std::string text() const {
        const std::vector<std::string> head{"",    "epochs", "radial", "along", "cross",
                                            "RMS", "median", "95 %",   "worst", "at"};
        Table table(head, "<>>>>>>>><");
        for (const auto& [name, differences] : m_groups) table.add(differences.row(name));
        for (const auto& [id, differences] : m_satellites) table.add(differences.row(rinex::satelliteName(id)));
        return table.text() +
               fmt::format(
                   "Broadcast minus precise [m]: RMS of the radial, along and cross parts and of the "
                   "distance. GLONASS in\nsteps of a minute, as its interface document has it, and in "
                   "those of the library's classes.\n{} positions without an ephemeris in time and {} of "
                   "unhealthy satellites are left out.\n",
                   m_without, m_unhealthy);
    }
    [[nodiscard]] Json json() const {
        Json json;
        for (const auto& [name, differences] : m_groups) json["systems"][name] = differences.json();
        for (const auto& [id, differences] : m_satellites) {
            json["satellites"][rinex::satelliteName(id)] = differences.json();
        }
        json["withoutEphemeris"] = m_without;
        json["unhealthy"] = m_unhealthy;
        return json;
    }

private:
    /// Directions at a satellite.
    struct Axes {
        ORBIT_COORD radial, along, cross;
        [[nodiscard]] ORBIT_COORD partsOf(const ORBIT_COORD& d) const {
            return {dot(d, radial), dot(d, along), dot(d, cross)};
        }
    };
    using SatellitePosition = CALN::ExtCalElevAziCalculator::SatellitePosition;

    /// From an ephemeris that is effectively no older than half of its timeframe or `maxAge` [min].
    static bool isInTime(const CALN::SCalSatID& id, const SMjdTime& t, const SatellitePosition& broadcast,
                         double maxAge) {
        const double minutes =
            CALN::getEffectiveAge(id.system, t.GetDifferenceInSeconds(broadcast.referenceTime)) / 60.0;
        const double most = maxAge > 0.0 ? maxAge : CALN::getEphemerisTimeframeMinutes(id.system) / 2.0;
        return broadcast.type == CALN::eCALEPHEMERISTYPE_EPHEMERIS && minutes <= most;
    }
    /// Along the orbit is where the satellite moves to in a frame that does not turn with the Earth. An ephemeris that
    /// has just ended serves a second longer with its neighbour: for directions that is as good.
    static Axes axesAt(const CALN::ExtCalElevAziCalculator& engine, const CALN::SCalSatID& id, SMjdTime t,
                       const SatellitePosition& broadcast) {
        t.AddSeconds(1.0);
        const ORBIT_COORD& here = broadcast.position;
        const ORBIT_COORD velocity = minus(engine.GetSatPosition(id, t).value_or(broadcast).position, here);
        const ORBIT_COORD inertial{velocity.x - kEarthRate * here.y, velocity.y + kEarthRate * here.x, velocity.z};
        const ORBIT_COORD radial = unit(here);
        const ORBIT_COORD crossTrack = unit(cross(here, inertial));
        return {radial, cross(crossTrack, radial), crossTrack};
    }
    static ORBIT_COORD inShortSteps(const CALN::CALX_SAT_EPHEMERIS_GLONASS& record, const SMjdTime& t) {
        constexpr double kMinute = 60.0;
        double position[3] = {};
        static_cast<void>(CALN::POS_SAT_CalcSatPosCartesianGloSteps(record, t.GetGpsSeconds(), kMinute, position));
        return {position[0], position[1], position[2]};
    }

    std::map<CALN::SCalSatID, Differences> m_satellites;
    std::map<std::string, Differences> m_groups;
    std::uint64_t m_without = 0;
    std::uint64_t m_unhealthy = 0;
};

void compare(const Options& options, OrbitFiles& orbits, const GlonassRecords& glonass) {
    sp3::PreciseOrbits precise;
    if (!precise.read(options.compare)) throw Failure(precise.errors().front());
    if (!options.keepGoing && !precise.errors().empty()) throw Failure(precise.errors().front());
    const Comparison comparison(orbits, glonass, precise, options.maxAge);
    if (comparison.empty()) {
        const auto span = precise.span();
        throw Failure(fmt::format("{}: its span, {} to {}, has no satellite in common with the ephemerides",
                                  options.compare, span ? formatTime(span->first) : "nothing",
                                  span ? formatTime(span->last) : "nothing"));
    }
    if (options.json) {
        Json json = {{"navigation", orbits.json()}, {"precise", options.compare}};
        json.update(comparison.json());
        std::cout << json.dump() << "\n";
    } else {
        std::cout << orbits.text() << comparison.text();
    }
}

void positions(const Options& options, OrbitFiles& orbits) {
    const SMjdTime t = options.at.empty() ? orbits.first() : parseTime(options.at);
    Table table({"", "X [m]", "Y [m]", "Z [m]", "from", "of", "age [min]", "health"}, "<>>><<><");
    Json list = Json::array();
    for (const auto& [id, count] : orbits.satellites()) {
        const auto satellite = orbits.calculator().GetEngine().GetSatPosition(id, t);
        if (!satellite) continue;
        const auto& [x, y, z] = satellite->position;
        const char* type = satellite->type == CALN::eCALEPHEMERISTYPE_EPHEMERIS ? "ephemeris" : "almanac";
        const double age = t.GetDifferenceInSeconds(satellite->referenceTime);
        table.add({rinex::satelliteName(id), fmt::format("{:.3f}", x), fmt::format("{:.3f}", y),
                   fmt::format("{:.3f}", z), type, formatTime(satellite->referenceTime),
                   fmt::format("{:.1f}", age / 60.0), satellite->healthy ? "good" : "bad"});
        list.push_back({{"satellite", rinex::satelliteName(id)},
                        {"position", {x, y, z}},
                        {"orbit", type},
                        {"reference", formatTime(satellite->referenceTime)},
                        {"age", age},
                        {"healthy", satellite->healthy}});
    }
    if (list.empty()) throw Failure("no orbit serves " + formatTime(t), Failure::kBadInput);
    if (options.json) {
        std::cout << Json{{"navigation", orbits.json()}, {"time", formatTime(t)}, {"positions", list}}.dump() << "\n";
    } else {
        std::cout << orbits.text() << formatTime(t) << " GPS time, Earth-fixed\n" << table.text();
    }
}

}  // namespace

void addOrbitsCommand(CLI::App& app) {
    auto options = std::make_shared<Options>();
    CLI::App* command =
        addSatelliteCommand(app, "orbits", "satellite positions, and how they compare with precise orbits",
                            "halvex orbits BRDC00IGS_R_20220010000_01D_MN.rnx.gz --compare "
                            "COD0MGXFIN_20220010000_01D_05M_ORB.SP3.gz");
    command->add_option("NAV", options->files, "RINEX navigation files, RTCM 3 streams, YUMA and SEM almanacs")
        ->required();
    auto* compareOption =
        command->add_option("--compare", options->compare, "SP3 file: differences for each satellite and system");
    command->add_option("--at", options->at, "time of the positions; without, that of the first ephemeris")
        ->excludes(compareOption);
    command
        ->add_option("--max-age", options->maxAge,
                     "minutes from its reference time up to which an ephemeris is compared, ahead of it an eighth of "
                     "that for Galileo and half for BeiDou; without: GPS 120, Galileo 90, BeiDou, QZSS and NavIC 60, "
                     "GLONASS 30")
        ->check(CLI::PositiveNumber);
    command->add_flag("--keep-going", options->keepGoing, "pass over what is wrong in the files, and say how much");
    command->add_flag("--json", options->json, "as JSON");
    command->callback([options] {
        GlonassRecords glonass;
        OrbitFiles orbits(options->keepGoing, options->at.empty() ? SMjdTime() : parseTime(options->at),
                          [&glonass](const rinex::NavigationRecord& record) {
                              if (const auto* r = std::get_if<CALN::CALX_SAT_EPHEMERIS_GLONASS>(&record)) {
                                  glonass[{{CALN::eCALSATSYSTEM_GLONASS, r->satId}, r->GetReferenceTime()}] = *r;
                              }
                          });
        orbits.read(options->files);
        if (options->compare.empty()) {
            positions(*options, orbits);
        } else {
            compare(*options, orbits, glonass);
        }
    });
}

}  // namespace halvex::tool
