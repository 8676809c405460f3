/// How far broadcast positions are from precise ones by the time from the reference of the ephemeris: every healthy
/// Kepler ephemeris of a RINEX navigation file at every epoch of an SP3 file within two hours, in bins of 15 min.
/// BeiDou's geostationary satellites and those of its second generation are left out. This is what the choice of an
/// orbit among several rests on.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "formats/rinex/NavigationReader.h"
#include "formats/sp3/PreciseOrbits.h"
#include "halvex/platform/caln/SatPosition.h"

namespace {

int positionOf(const CALN::CALX_SAT_EPHEMERIS& r, double seconds, double position[3]) {
    return CALN::POS_SAT_CalcSatPosCartesian(r, seconds, position);
}
int positionOf(const CALN::CALX_SAT_EPHEMERIS_GALILEO& r, double seconds, double position[3]) {
    return CALN::POS_SAT_CalcSatPosCartesianGal(r, seconds, position);
}
int positionOf(const CALN::CALX_SAT_EPHEMERIS_BEIDOU& r, double seconds, double position[3]) {
    const bool thirdGeneration = r.satId >= 19 && r.satId <= 58;
    return thirdGeneration ? CALN::POS_SAT_CalcSatPosCartesianBds(r, seconds, position) : CALN::kPositionNoOrbit;
}

class Ages {
public:
    explicit Ages(const halvex::sp3::PreciseOrbits& precise) : m_precise(precise) {}

    template <class Record>
    void add(const CALN::SCalSatID& id, const Record& record) {
        constexpr double kLongest = 7200.0;
        constexpr double kBin = 900.0;
        for (const SMjdTime& t : m_precise.epochs()) {
            const double age = t.GetDifferenceInSeconds(record.GetReferenceTime());
            const auto truth = std::abs(age) <= kLongest ? m_precise.position(id, t) : std::nullopt;
            double p[3];
            if (!truth || positionOf(record, t.GetGpsSeconds(), p) != CALN::kPositionDone) continue;
            m_distances[{halvex::systemOfCode(id.system)->letter, static_cast<int>(std::lround(age / kBin)) * 15}]
                .push_back(std::hypot(p[0] - truth->x, p[1] - truth->y, p[2] - truth->z));
        }
    }
    void print() {
        for (auto& [key, distances] : m_distances) {
            std::sort(distances.begin(), distances.end());
            std::printf("%c %5d min: %6zu positions, median %.2f m, 95 %% %.2f m\n", key.first, key.second,
                        distances.size(), distances[distances.size() / 2], distances[distances.size() * 95 / 100]);
        }
    }

private:
    const halvex::sp3::PreciseOrbits& m_precise;
    std::map<std::pair<char, int>, std::vector<double>> m_distances;
};

}  // namespace

int main(int argc, char** argv) {
    halvex::sp3::PreciseOrbits precise;
    halvex::rinex::NavigationReader reader;
    if (argc != 3 || !reader.open(std::string(argv[1])) || !precise.read(std::string(argv[2]))) {
        std::fprintf(stderr, "usage: %s NAV SP3\n", argv[0]);
        return 2;
    }
    Ages ages(precise);
    halvex::rinex::NavigationRecord record;
    using Result = halvex::rinex::NavigationReader::Result;
    for (Result result = reader.next(record); result != Result::end; result = reader.next(record)) {
        if (result == Result::error) continue;
        std::visit(
            [&](const auto& r) {
                if constexpr (requires(double* p) { positionOf(r, 0.0, p); }) {
                    if (r.isHealthy()) ages.add(reader.satellite(), r);
                }
            },
            record);
    }
    ages.print();
    return 0;
}
