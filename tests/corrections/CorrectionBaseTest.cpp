#include <gmock/gmock.h>

#include <boost/make_shared.hpp>

#include "halvex/corrections/CorrectionBase.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Result = boost::shared_ptr<const CHalvexZ9StationCorrection>;

CHalvexUniqueSiteID site(std::int64_t id) {
    CHalvexUniqueSiteID result;
    result.setUniqueSiteID(id);
    return result;
}

/// A result whose satellites have the given fix states on L1.
Result result(std::int64_t station, double second, const std::vector<int>& states = {3, 3}) {
    auto made = boost::make_shared<CHalvexZ9StationCorrection>();
    made->stationId = site(station);
    made->epoch = SMjdTime(2111, second);
    unsigned char number = 0;
    for (const int state : states) {
        CALN::SCalSatObservation satellite;
        satellite.satId = {CALN::eCALSATSYSTEM_GPS, ++number};
        satellite.frequencies = {{CALN::eCALFREQUENCY_L2, 1.0, 1.0, true, true, 3},
                                 {CALN::eCALFREQUENCY_L1, 1.0, 1.0, true, true, state}};
        made->satellites.push_back(satellite);
    }
    return made;
}

/// Writes down what the base asks for.
class Recorder final : public CCorrectionBase {
public:
    explicit Recorder(int interval = 1)
        : CCorrectionBase(&stations, nullptr, site(1), CALN::ebCALGNSSTYPE_GPS, interval, true, false) {
        for (const auto id : {std::uint16_t{3}, std::uint16_t{2}}) stations.AddRtkAux(site(id), CRtkAux(0, 1, id));
        EXPECT_FALSE(stations.AddRtkAux(site(2), CRtkAux(4, 5, 6))) << "the first of a site is kept";
        m_sentSystems = CALN::ebCALGNSSTYPE_GPS;
    }
    std::int32_t ProvideCorrections(const CHalvexZ9StationCorrection& first, const CHalvexZ9StationCorrection& second,
                                    CRtkAux& aux, bool) override {
        EXPECT_EQ(first.stationId, site(1));
        EXPECT_EQ(aux.auxiliaryStation, second.stationId.getUniqueSiteID());
        if (refusing == aux.auxiliaryStation) return kFailure;
        log.push_back(std::to_string(aux.auxiliaryStation) + "@" +
                      std::to_string(static_cast<int>(second.epoch.GetGpsSeconds())));
        return kSuccess;
    }
    void ProvideEmptyCorrections(CALN::ebCALGNSSTYPECOMBINATION systems, CRtkAux& aux, unsigned epoch,
                                 unsigned char) override {
        EXPECT_EQ(systems, CALN::ebCALGNSSTYPE_GPS);
        log.push_back("empty " + std::to_string(aux.auxiliaryStation) + "@" + std::to_string(epoch));
    }
    /// What taking results of these stations at an epoch gives, and what was asked for meanwhile.
    std::vector<std::string> feed(double second, const std::vector<int>& ids) {
        log.clear();
        for (const int id : ids) EXPECT_EQ(OnNALResults(result(id, second)), kTaken) << id << " at " << second;
        return log;
    }
    std::vector<std::string> clear() {
        log.clear();
        ClearCorrections();
        return log;
    }
    using CCorrectionBase::CalculateGloDPORandP1OR;

    CRtkAuxCollection stations;
    std::vector<std::string> log;
    int refusing = 0;
};

}  // namespace

TEST(CorrectionBase, Gates) {
    Recorder base(5);
    EXPECT_EQ(base.OnNALResults(nullptr), 1);
    EXPECT_EQ(base.OnNALResults(result(1, 100)), 1) << "sets the start";
    EXPECT_EQ(base.OnNALResults(result(2, 100)), 1) << "not later than the start";
    EXPECT_EQ(base.OnNALResults(result(1, 101, {3})), 1) << "one fixed satellite is not enough";
    EXPECT_EQ(base.OnNALResults(result(1, 101, {1, 1, 0})), 1);
    EXPECT_EQ(base.OnNALResults(result(1, 101, {1, 2})), 0) << "a wide lane is";
    EXPECT_THAT(base.feed(101, {2, 3}), ElementsAre("2@101", "3@101"));
    EXPECT_EQ(base.OnNALResults(result(1, 102)), 1) << "before the interval is over";
    EXPECT_THAT(base.feed(103, {1, 2, 3}), ElementsAre("2@103", "3@103")) << "two seconds ahead of the slot";
    EXPECT_EQ(base.OnNALResults(result(1, 107.999)), 1);
    EXPECT_THAT(base.feed(108.0004, {1, 2, 3}), ElementsAre("2@108", "3@108")) << "to the millisecond";

    Recorder each(1);
    EXPECT_EQ(each.OnNALResults(result(1, 100)), 1);
    each.feed(101, {1, 2, 3});
    EXPECT_EQ(each.OnNALResults(result(1, 101.5)), 1) << "slots of one second are at whole seconds";
    EXPECT_EQ(each.OnNALResults(result(1, 102)), 0);
}

TEST(CorrectionBase, PairsLateStationsSilentOnesAndGaps) {
    Recorder base;
    EXPECT_EQ(base.OnNALResults(result(1, 100)), 1);
    EXPECT_THAT(base.feed(101, {3, 1}), IsEmpty()) << "waits for the second station";
    EXPECT_THAT(base.feed(101, {2}), ElementsAre("2@101", "3@101"));
    EXPECT_THAT(base.feed(102, {2, 1}), IsEmpty());
    EXPECT_THAT(base.feed(103, {1}), ElementsAre("2@102", "empty 3@102"));
    EXPECT_EQ(base.OnNALResults(result(3, 102)), 1) << "too late";
    EXPECT_THAT(base.feed(103, {2, 3}), ElementsAre("2@103", "3@103"));
    EXPECT_THAT(base.feed(104, {2, 3}), IsEmpty());
    EXPECT_THAT(base.feed(107, {1}),
                ElementsAre("empty 2@104", "empty 3@104", "empty 2@105", "empty 3@105", "empty 2@106", "empty 3@106"))
        << "without the master nothing can be said; nor of the seconds that are missing";
    EXPECT_THAT(base.feed(112, {1}), ElementsAre("empty 2@107", "empty 3@107")) << "no rover bridges five seconds";
    EXPECT_THAT(base.clear(), ElementsAre("empty 2@112", "empty 3@112"));

    base.refusing = 3;
    EXPECT_THAT(base.feed(113, {1, 2, 3}), ElementsAre("2@113"));
    base.refusing = 0;
    EXPECT_THAT(base.feed(114, {1}), ElementsAre("3@113")) << "what was refused is tried once more, that alone";
    base.refusing = 3;
    EXPECT_THAT(base.feed(114, {2, 3}), ElementsAre("2@114"));
    EXPECT_THAT(base.clear(), ElementsAre("empty 3@114")) << "the other has its corrections";
    base.refusing = 0;

    EXPECT_THAT(base.feed(115, {1, 2, 3}), ElementsAre("2@115", "3@115"));
    EXPECT_THAT(base.feed(115, {2, 9}), IsEmpty()) << "one again, one of no station of the network";
    EXPECT_THAT(base.feed(116, {1, 2, 3}), ElementsAre("2@116", "3@116")) << "nobody has fallen silent";
    base.feed(116, {9});
    EXPECT_THAT(base.clear(), IsEmpty());
}

TEST(CorrectionBase, PseudorangeOffsetsAndTheirLimits) {
    using Entry = CALN::ProvIonoGeoGLOPRMsgT;
    const std::tuple<const char*, double, std::vector<Entry>, int, int, std::vector<std::int16_t>> rows[] = {
        {"half up", 31.5, {{1, 2, 3, 32.0, 0.0}}, 32, 32, {0}},
        {"half up below zero", -31.5, {{1, 2, 3, -1.5, 29.5}}, -31, -1, {-25}},
        {"a common difference of -32", -32.0, {{1, 2, 3, -127.0, -95.0}}, -32, -127, {0}},
        {"a common part of -128", 0.0, {{1, 0, 0, -128.0, -128.0}}, 0, 0, {}},
        {"a common difference of 33", 32.5, {{1, 2, 3, 1.0, 0.0}}, 0, 0, {}},
        {"not a number", std::numeric_limits<double>::quiet_NaN(), {{1, 2, 3, 1.0, 0.0}}, 0, 0, {}},
        {"12 bits of the first residual", 0.0, {{1, 0, 0, 40.94, 0.0}, {2, 0, 0, 40.96, 0.0}}, 0, 41, {-3}},
        {"a common part of 128", 0.0, {{1, 0, 0, 127.5, 127.5}}, 0, 0, {}},
        {"12 bits of the second residual",
         0.0,
         {{1, 0, 0, 0.0, 0.0}, {2, 0, 0, 100.0, 100.0}, {3, 0, 0, 9.06, 9.06}},
         0,
         36,
         {-1800, -1347}}};
    for (const auto& [what, difference, in, wantDpo, wantP1or, want] : rows) {
        CALN::IonoGeoMsgT out;
        signed char dpo = 9, p1or = 9;
        int n = 9;
        // The residuals are x - y - dpo and x - dpo0 y - p1or [0.02 m].
        EXPECT_TRUE(Recorder::CalculateGloDPORandP1OR(in.data(), out, static_cast<int>(in.size()), difference, 1.0, 1.0,
                                                      0.0, dpo, p1or, n));
        EXPECT_EQ(std::tuple(dpo, p1or, n), std::tuple(wantDpo, wantP1or, static_cast<int>(want.size()))) << what;
        std::vector<std::int16_t> residuals;
        for (const auto& offset : out.offsets) residuals.push_back(offset.residual);
        EXPECT_EQ(residuals, want) << what;
    }
}
