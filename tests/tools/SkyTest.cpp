#include <gtest/gtest.h>

#include <boost/property_tree/xml_parser.hpp>
#include <cmath>
#include <numbers>

#include "formats/rinex/NavigationWriter.h"
#include "tests/support/TestClock.h"
#include "tests/tools/Station.h"

namespace halvex::test {
namespace {

using boost::property_tree::ptree;

constexpr double kDegree = std::numbers::pi / 180.0;
constexpr double kRootOfAxis = 5153.7;
constexpr double kReference = 432000.0;  // 2021-01-01 in week 2138

/// A circular orbit, inclined by 55 degrees, whose node has that longitude at the reference time; the satellite is then
/// `argument` from it. On the node it stands over the equator, a quarter on 90 degrees farther east over 55 north.
template <class Ephemeris = CALN::CALX_SAT_EPHEMERIS>
Ephemeris circle(unsigned char satellite, double nodeLongitude, double argument = 0.0) {
    Ephemeris orbit;
    orbit.satId = satellite;
    orbit.source = CALN::eCALORBITSOURCE_FILE;
    orbit.week = 2138;
    orbit.toe = orbit.toc = orbit.transmissionTime = kReference;
    orbit.sqrtA = kRootOfAxis;
    orbit.i0 = 55.0 * kDegree;
    orbit.m0 = argument * kDegree;
    orbit.omega0 = std::remainder(nodeLongitude * kDegree + 7.2921151467e-5 * kReference, 2.0 * std::numbers::pi);
    return orbit;
}

/// Elevation [deg] of such a satellite for who stands `angle` away from the point below it.
double elevationAt(double angle) {
    const double ratio = 6378137.0 / (kRootOfAxis * kRootOfAxis);
    return std::atan2(std::cos(angle * kDegree) - ratio, std::sin(angle * kDegree)) / kDegree;
}

std::string writeOrbits(const std::string& name, const std::vector<rinex::NavigationRecord>& records) {
    rinex::NavigationWriter writer;
    EXPECT_TRUE(writer.open(name, {}));
    for (const auto& record : records) EXPECT_TRUE(writer.write(record));
    EXPECT_TRUE(writer.close());
    EXPECT_EQ(writer.unwritten(), 0U);
    return name;
}

/// Three satellites in the sky of 0 N 0 E (a fourth is not healthy), one in its zenith, one 80 and one 180 degrees
/// away.
class Sky : public testing::Test {
protected:
    /// The command, the orbits, the rest.
    [[nodiscard]] Arguments with(Arguments arguments) const {
        arguments.insert(arguments.begin() + 1, m_orbits);
        return arguments;
    }
    [[nodiscard]] json run(const Arguments& arguments) const { return jsonOf(with(arguments)); }
    void draw(const Arguments& arguments) const { EXPECT_EQ(runTool(with(arguments)).status, 0); }
    [[nodiscard]] static std::vector<std::string> names(const json& epoch) {
        std::vector<std::string> names;
        for (const json& satellite : epoch["satellites"]) names.push_back(satellite["satellite"]);
        return names;
    }

    Sky() {
        auto unhealthy = circle(3, -60.0);
        unhealthy.health = 1;
        writeOrbits(m_orbits, {circle(1, 30.0), circle(2, -90.0, 90.0), unhealthy, circle(4, 180.0), circle(5, 80.0),
                               circle(6, 0.0)});
    }
    const TemporaryFolder m_folder;
    const std::string m_orbits = m_folder.path("orbits");
};

TEST_F(Sky, DirectionsInClosedForm) {
    const json report = run({"sky", "--site", "0,0,0"});
    const json& epoch = report["epochs"][0];
    EXPECT_EQ(epoch["time"], "2021-01-01T00:00:00") << "the first ephemeris' time";
    ASSERT_EQ(names(epoch), (Arguments{"G01", "G02", "G03", "G06"}));
    const std::tuple<std::size_t, double, double, bool> rows[] = {
        {0, 30.0, 90.0, true}, {1, 55.0, 0.0, true}, {2, 60.0, 270.0, false}};
    for (const auto& [i, angle, azimuth, healthy] : rows) {
        const json& satellite = epoch["satellites"][i];
        EXPECT_NEAR(satellite["elevation"], elevationAt(angle), 1e-6);
        EXPECT_NEAR(std::remainder(satellite["azimuth"].get<double>() - azimuth, 360.0), 0.0, 1e-6);
        EXPECT_TRUE(satellite["healthy"] == healthy && satellite["age"] == 0.0) << satellite;
    }

    const std::string text = runTool(with({"sky", "--site", "6378137,0,0", "--mask", "12.7"})).out;
    EXPECT_NE(text.find("     elevation [deg]  azimuth [deg]  health  orbit      age [min]\n"
                        "G01            51.38          90.00  good    ephemeris        0.0\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("GPS time, 4 satellites"), std::string::npos) << text;
    EXPECT_NE(runTool(with({"sky", "--site", "0,0,0", "--mask", "17"})).out.find("GPS time, 3 satellites"),
              std::string::npos);
}

TEST_F(Sky, SpanAroundTheZenithIsSymmetric) {
    const json epochs = run({"sky", "--site", "0,0,0", "--from", "2020-12-31T23:50", "--to", "2021-01-01T00:19:59",
                             "--step", "600"})["epochs"];
    ASSERT_EQ(epochs.size(), 3U) << "the end is no epoch of its own";
    const json& before = epochs[0]["satellites"].back();
    const json& after = epochs[2]["satellites"].back();
    ASSERT_TRUE(before["satellite"] == "G06" && after["satellite"] == "G06");
    EXPECT_TRUE(before["age"] == -600.0 && after["age"] == 600.0);
    EXPECT_LT(before["elevation"], 88.0);
    EXPECT_NEAR(before["elevation"], after["elevation"].get<double>(), 1e-6);
    EXPECT_NEAR(std::abs(before["azimuth"].get<double>() - after["azimuth"].get<double>()), 180.0, 1e-6);
}

TEST_F(Sky, CountsOfEachSystem) {
    using Beidou = CALN::CALX_SAT_EPHEMERIS_BEIDOU;
    auto galileo = circle<CALN::CALX_SAT_EPHEMERIS_GALILEO>(57, 30.0);
    galileo.dataSources = 1;  // I/NAV
    std::vector<rinex::NavigationRecord> others = {galileo};
    for (unsigned char number = 20; number < 24; ++number) {
        Beidou orbit = circle<Beidou>(number, 10.0 * number - 190.0);
        orbit.week = 2138 - 1356;
        orbit.toe = orbit.toc = orbit.transmissionTime = kReference - 14.0;
        others.push_back(orbit);
    }
    const std::string file = writeOrbits(m_folder.path("others"), others);
    const json expected = {{"GPS", 3}, {"GLONASS", 0}, {"Galileo", 1}, {"BeiDou", 4}, {"QZSS", 0}};
    const json report = run({"visibility", file, "--site", "0,0,0"});
    ASSERT_EQ(report["epochs"].size(), 1U);
    EXPECT_EQ(report["epochs"][0], json({{"time", "2021-01-01T00:00:00"}, {"counts", expected}, {"sum", 8}}));
    const ToolRun table = runTool(with({"visibility", file, "--site", "0,0,0", "--mask", "45"}));
    EXPECT_NE(table.out.find("2021-01-01T00:00:00        2        0        1       3     0    6\n"), std::string::npos)
        << table.out;
    const json hour = run({"visibility", "--site", "0,0,0", "--from", "2021-01-01", "--to", "2021-01-01T01:00"});
    EXPECT_TRUE(hour["step"] == 60.0 && hour["epochs"].size() == 61) << "about a hundred";
}

TEST_F(Sky, ComparedWithWhatWasTracked) {
    const std::string blank = "\n", value = "  20000000.123 7 105000000.456 7\n";
    writeFile(m_folder.path("obs"),
              version("3.05") + record("ABCD", "MARKER NAME") +
                  record("  6378137.0000        0.0000        0.0000", "APPROX POSITION XYZ") +
                  record("G    2 C1C L1C", "SYS / # / OBS TYPES") + record("R    2 C1C L1C", "SYS / # / OBS TYPES") +
                  endOfHeader() + "> 2021 01 01 00 00  0.0000000  0  6\nG01" + value + "G02" + blank + "G03" + value +
                  "G05" + value + "G09" + value + "R07" + value + "> 2021 01 01 00 00 30.0000000  0  1\nG01" + value);
    const json report = run({"sky", "--tracked", m_folder.path("obs")});
    const json counts = json::parse(R"({"tracked": 5, "belowHorizon": 1, "withoutOrbit": 1, "expected": 6, "met": 2})");
    for (const auto& [name, count] : counts.items()) EXPECT_EQ(report["systems"]["GPS"][name], count) << name;
    EXPECT_EQ(report["all"], report["systems"]["GPS"]);
    EXPECT_NEAR(report["all"]["share"], 2.0 / 6.0, 1e-12);
    EXPECT_EQ(report["leftOut"], json({{"GLONASS", 1}}));
    EXPECT_EQ(report["agrees"], false);
    EXPECT_NEAR(report["belowHorizon"][0]["lowest"], elevationAt(80.0), 1e-6);
    EXPECT_TRUE(report["belowHorizon"][0]["satellite"] == "G05" && report["withoutOrbit"][0]["satellite"] == "G09");
    EXPECT_EQ(run({"sky", "--tracked", m_folder.path("obs"), "--from", "2021-01-01T00:00:30"})["epochs"], 1);
}

TEST_F(Sky, WhatIsWrongIsSaidInOneLine) {
    const std::string none = m_folder.path("none");
    const std::tuple<int, std::vector<std::string>, std::string> rows[] = {
        {2, {"sky"}, "--site is missing: LAT,LON,H, X,Y,Z or a RINEX observation file"},
        {2, {"sky", "--site", "1,2"}, "the site '1,2' is neither LAT,LON,H nor X,Y,Z nor an observation file"},
        {1, {"sky", "--site", m_orbits}, m_orbits},
        {2, {"sky", "--site", "0,0,0", "--mask", "nan"}, "--mask is 0 to 90 degrees"},
        {2, {"sky", "--site", "0,0,0", "--from", "2021-01-01"}, "--from and --to belong together"},
        {2, {"sky", "--site", "0,0,0", "--at", "2021-01-01", "--tracked", none}, "--at says nothing beside --tracked"},
        {1,
         {"sky", "--site", "0,0,0", "--at", "2021-01-02"},
         "no orbit serves 2021-01-02T00:00:00; the ephemerides are"},
        {1, {"sky", "--site", "0,0,0", "--svg", none + "/x"}, none + "/x: cannot be created"},
        {2, {"visibility", "--site", "0,0,0", "--from", "2021-01-02", "--to", "2021-01-01"}, "the span ends, "},
        {2, {"visibility", "--site", "0,0,0", "--step", "0"}, "--step is more than 0 s"},
        {2,
         {"visibility", "--site", "0,0,0", "--to", "2021-01-13", "--step", "1"},
         "--step 1 makes more than a million"}};
    for (const auto& [status, arguments, text] : rows) {
        expectFault(runTool(with(arguments)), "halvex: " + text, status);
    }
}

TEST_F(Sky, PositionsAtATime) {
    auto flat = circle(5, 10.0);
    flat.i0 = 0.0;
    writeOrbits(m_orbits, {flat});
    const json position = run({"orbits", "--at", "2021-01-01T00:10"})["positions"][0];
    EXPECT_EQ(std::tuple(position["satellite"], position["age"], position["reference"]),
              std::tuple("G05", 600.0, "2021-01-01T00:00:00"));
    const double a = kRootOfAxis * kRootOfAxis;
    const double angle = 10.0 * kDegree + (std::sqrt(3.986005e14 / (a * a * a)) - 7.2921151467e-5) * 600.0;
    EXPECT_NEAR(position["position"][0], a * std::cos(angle), 1e-2);
    EXPECT_NEAR(position["position"][1], a * std::sin(angle), 1e-2);
    EXPECT_NEAR(position["position"][2], 0.0, 1e-2);
}

TEST_F(Sky, WhatCannotBeBelievedIsToldWithItsLine) {
    const auto good = circle(5, 0.0);
    auto contradicting = good, implausible = good, future = good;
    contradicting.m0 = 0.001;
    implausible.af0 = 0.02;
    future.week = 2142;
    auto low = circle<CALN::CALX_SAT_EPHEMERIS_QZSS>(193, 0.0);
    low.sqrtA = 2000.0;
    const std::pair<rinex::NavigationRecord, const char*> rows[] = {
        {contradicting, "the ephemeris of G05 contradicts an earlier one of 2021-01-01T00:00:00"},
        {implausible, "the ephemeris of G05 is not plausible"},
        {low, "the ephemeris of J01 has elements of no orbit"},
        {future, "the ephemeris of G05 is of the future: 2021-01-29T00:00:00"},
    };
    const TestClock now(2021, 1, 1, 1);
    for (const auto& [record, what] : rows) {
        writeOrbits(m_orbits, {good, record});
        expectFault(runTool({"orbits", m_orbits}), m_orbits + ":12: " + what);
        const json navigation = run({"orbits", "--keep-going"})["navigation"];
        EXPECT_EQ(std::tuple(navigation["faults"], navigation["orbits"]), std::tuple(1, 1));
    }
    writeOrbits(m_orbits, {good, good});
    EXPECT_EQ(run({"orbits"})["navigation"]["repeated"], 1);
}

TEST_F(Sky, NothingInCommonAndNothingAtAll) {
    const std::string sp3 = m_folder.path("far.sp3");
    writeFile(sp3,
              "#cP2022  1  1  0  0  0.00000000       1 ORBIT IGS14 FIT AIUB\n"
              "## 2190 518400.00000000   900.00000000 59580 0.0000000000000\n"
              "+    1   G05\n*  2022  1  1  0  0  0.00000000\n"
              "PG05  10000.000000  20000.000000  10000.000000 999999.999999\nEOF\n");
    expectFault(runTool({"orbits", m_orbits, "--compare", sp3}), "no satellite in common");
    expectFault(runTool({"orbits", m_orbits, "--at", "2021-01-03"}), "no orbit serves 2021-01-03T00:00:00");
    EXPECT_EQ(runTool({"orbits", m_orbits, "--at", "2021-01-03", "--compare", sp3}).status, 2);
}

/// The picture's groups of that class, their elements in order.
std::vector<std::pair<std::string, ptree>> elements(const ptree& svg, const std::string& groupClass) {
    std::vector<std::pair<std::string, ptree>> found;
    for (const auto& [name, group] : svg.get_child("svg")) {
        if (name != "g" || group.get("<xmlattr>.class", "") != groupClass) continue;
        for (const auto& [element, content] : group) {
            if (element != "<xmlattr>") found.emplace_back(element, content);
        }
    }
    return found;
}

double number(const ptree& element, const std::string& attribute) {
    return std::stod(element.get<std::string>("<xmlattr>." + attribute));
}

ptree readPicture(const std::string& file) {
    std::istringstream in(readFile(file));
    ptree picture;
    EXPECT_NO_THROW(boost::property_tree::read_xml(in, picture));
    return picture;
}

TEST_F(Sky, PictureHasEastOnTheRightAndNoNameOverAnother) {
    std::vector<rinex::NavigationRecord> crowd;
    for (unsigned char number = 1; number <= 32; ++number) crowd.push_back(circle(number, 30.0 + number * 0.2));
    writeOrbits(m_orbits, crowd);
    writeFile(m_folder.path("obs"), version("3.05") + record("A<B&\xff\x01", "MARKER NAME") +
                                        record("  6378137.0000        0.0000        0.0000", "APPROX POSITION XYZ") +
                                        record("G    1 C1C", "SYS / # / OBS TYPES") + endOfHeader());
    draw({"sky", "--site", m_folder.path("obs"), "--svg", m_folder.path("svg")});
    const ptree picture = readPicture(m_folder.path("svg"));
    EXPECT_TRUE(picture.get<std::string>("svg.title").starts_with("Sky of A<B&??"));
    std::vector<std::pair<double, double>> names;
    for (const auto& [element, content] : elements(picture, "names")) {
        if (element == "text") names.emplace_back(number(content, "x"), number(content, "y"));
    }
    ASSERT_EQ(names.size(), 32U);
    constexpr double kWidth = 20.0, kHeight = 10.0;  // of three letters of 11 units
    const auto apart = [](double x, double y, double width, double height) {
        return std::abs(x) > width || std::abs(y) > height;
    };
    for (auto name = names.begin(); name != names.end(); ++name) {
        for (auto other = names.begin(); other != name; ++other) {
            EXPECT_TRUE(apart(name->first - other->first, name->second - other->second, kWidth, kHeight));
        }
        for (const auto& [element, mark] : elements(picture, "marks")) {
            const double x = number(mark, "cx"), y = number(mark, "cy");
            EXPECT_TRUE(apart(name->first - x, name->second - 4 - y, kWidth / 2 + 4, kHeight / 2 + 4));
            EXPECT_TRUE(x > 500.0 && std::abs(y - 437.0) < 1.0) << "these stand in the east, the zenith is at 400, 437";
        }
    }

    draw({"sky", "--site", "0,0,0", "--from", "2020-12-31T23:00", "--to", "2021-01-01T01:00", "--svg",
          m_folder.path("tracks")});
    EXPECT_EQ(readFile(m_folder.path("tracks")).find("nan"), std::string::npos);
    readPicture(m_folder.path("tracks"));
}

TEST_F(Sky, TimelineHasACurveForEachSystemThatIsSeenAndTheirSum) {
    for (const char* const to : {"2021-01-01", "2021-01-01T00:01", "2021-01-01T06:00", "2021-02-01"}) {
        draw({"visibility", "--site", "0,0,0", "--from", "2021-01-01", "--to", to, "--svg", m_folder.path("svg")});
        const auto curves = elements(readPicture(m_folder.path("svg")), "curves");
        ASSERT_EQ(curves.size(), 2U) << to;
        for (const auto& [element, curve] : curves) {
            std::string text = curve.get<std::string>("<xmlattr>.points");
            std::replace(text.begin(), text.end(), ',', ' ');
            std::istringstream numbers(text);
            double before = 70.0, x = 0.0, y = 0.0;  // the plot's left edge
            for (std::size_t i = 0; numbers >> x >> y; ++i) {
                EXPECT_TRUE(x >= before && (i > 0 || x == before) && y >= 70.0 && y <= 410.0) << to << " " << text;
                before = x;
            }
            EXPECT_EQ(before, 840.0) << "the right edge";
        }
    }
}

}  // namespace
}  // namespace halvex::test
