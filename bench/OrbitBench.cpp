/// Satellite positions beside the plain functions that a reader of the interface documents would write: a GPS position,
/// a GLONASS position a quarter of an hour from its reference, all satellites of six systems at one epoch through the
/// elevation-azimuth engine, and a further site at an epoch whose positions are known. The ratios of the medians are
/// printed last.

#include <benchmark/benchmark.h>

#include <boost/make_shared.hpp>
#include <cmath>
#include <cstdio>
#include <map>
#include <numbers>
#include <random>
#include <string>
#include <vector>

#include "halvex/HalvexRTKBasics.h"

namespace {

constexpr double kPi = std::numbers::pi;
const SMjdTime kEpoch(2190, 302400.0 + 900.0);  // a quarter of an hour behind the reference time of all orbits

CALN::CALX_SAT_EPHEMERIS_COMMON keplerOrbit(unsigned index, double semiMajorAxis, double inclination) {
    std::mt19937 random(index);
    const auto uniform = [&random](double least, double most) {
        return std::uniform_real_distribution<double>(least, most)(random);
    };
    CALN::CALX_SAT_EPHEMERIS_COMMON r;
    r.source = CALN::eCALORBITSOURCE_RECEIVER;
    r.week = 2190;
    r.toe = r.toc = 302400.0;
    r.m0 = uniform(-kPi, kPi);
    r.deltaN = uniform(4e-9, 5e-9);
    r.e = uniform(0.001, 0.02);
    r.sqrtA = std::sqrt(semiMajorAxis);
    r.omega0 = uniform(-kPi, kPi);
    r.i0 = inclination;
    r.omega = uniform(-kPi, kPi);
    r.omegaDot = -8e-9;
    r.idot = 1e-10;
    r.cuc = r.cus = uniform(-5e-6, 5e-6);
    r.crc = uniform(100.0, 300.0);
    r.crs = uniform(-100.0, 100.0);
    r.cic = r.cis = uniform(-1e-7, 1e-7);
    return r;
}

template <class Record>
Record recordOf(const CALN::CALX_SAT_EPHEMERIS_COMMON& orbit, unsigned char satId) {
    Record record;
    static_cast<CALN::CALX_SAT_EPHEMERIS_COMMON&>(record) = orbit;
    record.satId = satId;
    return record;
}

CALN::CALX_SAT_EPHEMERIS_GLONASS glonassOrbit(unsigned char slot) {
    CALN::CALX_SAT_EPHEMERIS_GLONASS r;
    r.satId = slot;
    r.source = CALN::eCALORBITSOURCE_RECEIVER;
    r.week = 2190;
    r.referenceSeconds = 302400.0;
    const double angle = slot * 2.0 * kPi / 24.0;
    r.position = {25508e3 * std::cos(angle), 10900e3 * std::sin(angle), 23000e3 * std::sin(angle)};
    r.velocity = {-3500.0 * std::sin(angle), 1500.0 * std::cos(angle), 3200.0 * std::cos(angle)};
    r.acceleration = {1e-6, -2e-6, 3e-6};
    return r;
}

/// IS-GPS-200 as it reads: ten steps, each function called where it stands.
void plainGps(const CALN::CALX_SAT_EPHEMERIS_COMMON& r, double gm, double t, double position[3]) {
    const double earthRate = 7.2921151467e-5;
    const double a = r.sqrtA * r.sqrtA;
    const double n = std::sqrt(gm / (a * a * a)) + r.deltaN;
    double tk = t - r.toe;
    if (tk < -302400.0) tk += 604800.0;
    if (tk > 302400.0) tk -= 604800.0;
    const double m = r.m0 + n * tk;
    double anomaly = m;
    double sine = 0.0;
    for (int i = 0; i < 10; ++i) {
        sine = std::sin(anomaly);
        anomaly = m + r.e * sine;
    }
    const double cosine = std::cos(anomaly);
    const double v = std::atan2(std::sqrt(1.0 - r.e * r.e) * sine, cosine - r.e);
    const double phi = v + r.omega;
    const double c2 = std::cos(2.0 * phi);
    const double s2 = std::sin(2.0 * phi);
    const double u = phi + r.cus * s2 + r.cuc * c2;
    const double radius = a * (1.0 - r.e * cosine) + r.crc * c2 + r.crs * s2;
    const double i = r.i0 + r.cic * c2 + r.cis * s2 + r.idot * tk;
    const double node = r.omega0 + (r.omegaDot - earthRate) * tk - earthRate * r.toe;
    const double x = radius * std::cos(u);
    const double y = radius * std::sin(u);
    position[0] = x * std::cos(node) - y * std::cos(i) * std::sin(node);
    position[1] = x * std::sin(node) + y * std::cos(i) * std::cos(node);
    position[2] = y * std::sin(i);
}

void plainMotion(const double s[6], const double pull[3], double d[6]) {
    const double gm = 3.9860044e14;
    const double oblateness = -2.633267117769225e25;
    const double earthRate = 7.292115e-5;
    const double r = std::sqrt(s[0] * s[0] + s[1] * s[1] + s[2] * s[2]);
    const double m = -gm / (r * r * r);
    const double j = oblateness / (r * r * r * r * r);
    const double q = 5.0 * s[2] * s[2] / (r * r);
    for (int i = 0; i < 3; ++i) d[i] = s[i + 3];
    d[3] = m * s[0] + j * s[0] * (1.0 - q) + pull[0] + earthRate * earthRate * s[0] + 2.0 * earthRate * s[4];
    d[4] = m * s[1] + j * s[1] * (1.0 - q) + pull[1] + earthRate * earthRate * s[1] - 2.0 * earthRate * s[3];
    d[5] = m * s[2] + j * s[2] * (3.0 - q) + pull[2];
}

/// The same Runge-Kutta steps as a plain loop over the six numbers.
void plainGlonass(const CALN::CALX_SAT_EPHEMERIS_GLONASS& r, double t, double position[3]) {
    const double dt = t - r.referenceSeconds;
    const int steps = std::abs(static_cast<int>(dt / 500.0)) + 1;
    const double whole = dt > 0.0 ? 500.0 : -500.0;
    double y[6] = {r.position[0], r.position[1], r.position[2], r.velocity[0], r.velocity[1], r.velocity[2]};
    for (int step = 1; step <= steps; ++step) {
        const double h = step < steps ? whole : dt - whole * (steps - 1);
        double k[4][6];
        double at[6];
        plainMotion(y, r.acceleration.data(), k[0]);
        for (int i = 0; i < 6; ++i) at[i] = y[i] + k[0][i] * h / 2.0;
        plainMotion(at, r.acceleration.data(), k[1]);
        for (int i = 0; i < 6; ++i) at[i] = y[i] + k[1][i] * h / 2.0;
        plainMotion(at, r.acceleration.data(), k[2]);
        for (int i = 0; i < 6; ++i) at[i] = y[i] + k[2][i] * h;
        plainMotion(at, r.acceleration.data(), k[3]);
        for (int i = 0; i < 6; ++i) y[i] += h / 6.0 * (k[0][i] + 2.0 * k[1][i] + 2.0 * k[2][i] + k[3][i]);
    }
    ORBIT_COORD wgs84{y[0], y[1], y[2]};
    halvex::transformPZ90ToWGS84(wgs84);
    position[0] = wgs84.x;
    position[1] = wgs84.y;
    position[2] = wgs84.z;
}

/// Elevation and azimuth from the two positions, from scratch.
void plainDirection(const ORBIT_COORD& site, const double satellite[3], double& elevation, double& azimuth) {
    ORBIT_GEOGRAPHIC geographic;
    CHalvexAlmanac::CartesianToGeographic(site, geographic);
    CHalvexAlmanac::GetElevationAndAzimuth({satellite[0], satellite[1], satellite[2]}, site, geographic, elevation,
                                           azimuth);
}

/// Six systems in the numbers of today's sky.
struct Constellation {
    Constellation() {
        for (unsigned char n = 1; n <= 32; ++n) {
            gps.push_back(recordOf<CALN::CALX_SAT_EPHEMERIS>(keplerOrbit(n, 26560e3, 0.96), n));
        }
        for (unsigned char n = 1; n <= 24; ++n) glonass.push_back(glonassOrbit(n));
        for (unsigned char n = 1; n <= 30; ++n) {
            auto record = recordOf<CALN::CALX_SAT_EPHEMERIS_GALILEO>(keplerOrbit(100U + n, 29600e3, 0.98),
                                                                     static_cast<unsigned char>(n + 56));
            record.navType = CALN::CALX_SAT_EPHEMERIS_GALILEO::kINav;
            galileo.push_back(record);
        }
        for (unsigned char n = 1; n <= 46; ++n) {
            auto record = recordOf<CALN::CALX_SAT_EPHEMERIS_BEIDOU>(
                n <= 10 ? keplerOrbit(200U + n, 42164e3, n <= 5 ? 0.1 : 0.96) : keplerOrbit(200U + n, 27906e3, 0.96),
                n);
            record.week = 2190 - 1356;
            record.toe -= 14.0;
            beidou.push_back(record);
        }
        for (unsigned char n = 1; n <= 4; ++n) {
            qzss.push_back(recordOf<CALN::CALX_SAT_EPHEMERIS_QZSS>(keplerOrbit(300U + n, 42164e3, 0.7),
                                                                   static_cast<unsigned char>(n + 192)));
        }
        for (unsigned char n = 1; n <= 7; ++n) {
            navic.push_back(recordOf<CALN::CALX_SAT_EPHEMERIS_NAVIC>(keplerOrbit(400U + n, 42164e3, 0.5), n));
        }
    }
    void feed(CALN::ExtCalElevAziCalculator& engine) const {
        const auto message = [](const auto& record) {
            using Record = std::decay_t<decltype(record)>;
            return boost::make_shared<const BSS::TSK::MsgObjectT<Record>>(record);
        };
        for (const auto& record : gps) engine.ProcessGPSEphemeris(message(record));
        for (const auto& record : glonass) engine.ProcessGLOEphemeris(message(record));
        for (const auto& record : galileo) engine.ProcessGALEphemeris(message(record));
        for (const auto& record : beidou) engine.ProcessBDSEphemeris(message(record));
        for (const auto& record : qzss) engine.ProcessQZSSEphemeris(message(record));
        for (const auto& record : navic) engine.ProcessNAVICEphemeris(message(record));
    }
    [[nodiscard]] std::int64_t size() const {
        return static_cast<std::int64_t>(gps.size() + glonass.size() + galileo.size() + beidou.size() + qzss.size() +
                                         navic.size());
    }
    std::vector<CALN::CALX_SAT_EPHEMERIS> gps;
    std::vector<CALN::CALX_SAT_EPHEMERIS_GLONASS> glonass;
    std::vector<CALN::CALX_SAT_EPHEMERIS_GALILEO> galileo;
    std::vector<CALN::CALX_SAT_EPHEMERIS_BEIDOU> beidou;
    std::vector<CALN::CALX_SAT_EPHEMERIS_QZSS> qzss;
    std::vector<CALN::CALX_SAT_EPHEMERIS_NAVIC> navic;
};
const Constellation kConstellation;
const CGeoCoord kSite(0.9075, 0.0767, 75.0);

void GpsPosition(benchmark::State& state) {
    std::vector<CHalvexEphemeris> orbits(kConstellation.gps.size());
    for (std::size_t i = 0; i < orbits.size(); ++i) convertGPSEphemeris(kConstellation.gps[i], orbits[i]);
    for (auto _ : state) {
        for (const CHalvexEphemeris& orbit : orbits) {
            ORBIT_COORD position;
            benchmark::DoNotOptimize(orbit.CalcSatPosCartesian(kEpoch.GetGpsSeconds(), position));
            benchmark::DoNotOptimize(position);
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(orbits.size()));
}

void PlainGpsPosition(benchmark::State& state) {
    for (auto _ : state) {
        for (const auto& record : kConstellation.gps) {
            double position[3];
            plainGps(record, 3.986005e14, kEpoch.GetGpsSeconds(), position);
            benchmark::DoNotOptimize(position);
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kConstellation.gps.size()));
}

void GlonassPosition(benchmark::State& state) {
    std::vector<CHalvexEphemerisGLO> orbits(kConstellation.glonass.size());
    for (std::size_t i = 0; i < orbits.size(); ++i) convertGLOEphemeris(kConstellation.glonass[i], orbits[i]);
    for (auto _ : state) {
        for (const CHalvexEphemerisGLO& orbit : orbits) {
            ORBIT_COORD position;
            benchmark::DoNotOptimize(orbit.CalcSatPosCartesianGlo(kEpoch, position));
            benchmark::DoNotOptimize(position);
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(orbits.size()));
}

void PlainGlonassPosition(benchmark::State& state) {
    for (auto _ : state) {
        for (const auto& record : kConstellation.glonass) {
            double position[3];
            plainGlonass(record, kEpoch.GetGpsSeconds(), position);
            benchmark::DoNotOptimize(position);
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kConstellation.glonass.size()));
}

/// A new epoch each time: positions and the geometry of one site.
void EngineEpoch(benchmark::State& state) {
    CALN::ExtCalElevAziCalculator engine(0, 0, 0, nullptr);
    kConstellation.feed(engine);
    CALN::SCalCoordinateSet site;
    convertCoords(kSite, site);
    SMjdTime t = kEpoch;
    CALN::SCalElevationAzimuth table;
    for (auto _ : state) {
        t.AddMilliseconds(1.0);
        if (engine.GetElevAziData(site, t, table, true) != 0) state.SkipWithError("no orbits");
        benchmark::DoNotOptimize(table);
    }
    state.SetItemsProcessed(state.iterations() * kConstellation.size());
}

/// The same through the plain functions: ten Kepler steps for all systems but GLONASS.
void PlainEpoch(benchmark::State& state) {
    CALN::SCalCoordinateSet site;
    convertCoords(kSite, site);
    SMjdTime t = kEpoch;
    for (auto _ : state) {
        t.AddMilliseconds(1.0);
        const double seconds = t.GetGpsSeconds();
        const auto look = [&site](const double position[3]) {
            double elevation = 0.0;
            double azimuth = 0.0;
            plainDirection(site.cartesian, position, elevation, azimuth);
            benchmark::DoNotOptimize(elevation + azimuth);
        };
        double position[3];
        const auto all = [&](const auto& records, double gm, double lag) {
            for (const auto& record : records) {
                plainGps(record, gm, seconds - lag, position);
                look(position);
            }
        };
        all(kConstellation.gps, 3.986005e14, 0.0);
        all(kConstellation.galileo, 3.986004418e14, 0.0);
        all(kConstellation.beidou, 3.986004418e14, 14.0);
        all(kConstellation.qzss, 3.986005e14, 0.0);
        all(kConstellation.navic, 3.986005e14, 0.0);
        for (const auto& record : kConstellation.glonass) {
            plainGlonass(record, seconds, position);
            look(position);
        }
    }
    state.SetItemsProcessed(state.iterations() * kConstellation.size());
}

/// Another site each time at an epoch that is known.
void EngineSite(benchmark::State& state) {
    CALN::ExtCalElevAziCalculator engine(0, 0, 0, nullptr);
    kConstellation.feed(engine);
    CALN::SCalElevationAzimuth table;
    double longitude = 0.0;
    for (auto _ : state) {
        CALN::SCalCoordinateSet site;
        convertCoords(CGeoCoord(0.9075, longitude += 1e-4, 75.0), site);
        if (engine.GetElevAziData(site, kEpoch, table, true) != 0) state.SkipWithError("no orbits");
        benchmark::DoNotOptimize(table);
    }
    state.SetItemsProcessed(state.iterations() * kConstellation.size());
}

void PlainDirection(benchmark::State& state) {
    std::vector<std::array<double, 3>> positions;
    for (const auto& record : kConstellation.gps) {
        positions.emplace_back();
        plainGps(record, 3.986005e14, kEpoch.GetGpsSeconds(), positions.back().data());
    }
    double longitude = 0.0;
    for (auto _ : state) {
        CALN::SCalCoordinateSet site;
        convertCoords(CGeoCoord(0.9075, longitude += 1e-4, 75.0), site);
        for (const auto& position : positions) {
            double elevation = 0.0;
            double azimuth = 0.0;
            plainDirection(site.cartesian, position.data(), elevation, azimuth);
            benchmark::DoNotOptimize(elevation + azimuth);
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(positions.size()));
}

/// The usual report, and a note of the median processor time of an item of each benchmark.
class ItemReporter final : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.aggregate_name == "median") {
                nanoseconds[run.run_name.function_name] = 1e9 / run.counters.at("items_per_second");
            }
        }
        ConsoleReporter::ReportRuns(runs);
    }
    std::map<std::string, double> nanoseconds;
};

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    const std::pair<const char*, void (*)(benchmark::State&)> all[] = {
        {"GpsPosition", GpsPosition},         {"PlainGpsPosition", PlainGpsPosition},
        {"GlonassPosition", GlonassPosition}, {"PlainGlonassPosition", PlainGlonassPosition},
        {"EngineEpoch", EngineEpoch},         {"PlainEpoch", PlainEpoch},
        {"EngineSite", EngineSite},           {"PlainDirection", PlainDirection},
    };
    for (const auto& [name, run] : all) {
        benchmark::RegisterBenchmark(name, run)->Repetitions(9)->ReportAggregatesOnly()->MinTime(0.1);
    }
    ItemReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    const auto compare = [&reporter](const char* what, const char* ours, const char* floor) {
        if (!reporter.nanoseconds.contains(ours) || !reporter.nanoseconds.contains(floor)) return;
        const double here = reporter.nanoseconds[ours];
        const double there = reporter.nanoseconds[floor];
        std::printf("%s: %.1f ns beside %.1f ns, %.2f of it\n", what, here, there, here / there);
    };
    compare("GPS position", "GpsPosition", "PlainGpsPosition");
    compare("GLONASS position", "GlonassPosition", "PlainGlonassPosition");
    compare("engine, a satellite of a new epoch with its direction", "EngineEpoch", "PlainEpoch");
    compare("engine, a satellite of a new epoch, beside a plain GPS position", "EngineEpoch", "PlainGpsPosition");
    compare("engine, a satellite for a further site", "EngineSite", "PlainDirection");
    return 0;
}
