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
    ASSERT_EQ(epoch["satellites"].size(), 4U);
    const std::tuple<const char*, double, double, bool> rows[] = {
        {"G01", 30.0, 90.0, true}, {"G02", 55.0, 0.0, true}, {"G03", 60.0, 270.0, false}};
    for (std::size_t i = 0; const auto& [name, angle, azimuth, healthy] : rows) {
        const json& satellite = epoch["satellites"][i++];
        EXPECT_EQ(satellite["satellite"], name);
        EXPECT_NEAR(satellite["elevation"], elevationAt(angle), 1e-6);
        EXPECT_NEAR(std::remainder(satellite["azimuth"].get<double>() - azimuth, 360.0), 0.0, 1e-6);
        EXPECT_TRUE(satellite["healthy"] == healthy && satellite["age"] == 0.0) << satellite;
    }
    const json epochs = run({"sky", "--site", "0,0,0", "--from", "2020-12-31T23:50", "--to", "2021-01-01T00:19:59",
                             "--step", "600"})["epochs"];
    ASSERT_EQ(epochs.size(), 3U) << "the end is no epoch of its own";
    EXPECT_EQ(epochs[0]["satellites"][0]["age"], -600.0);
    const json place = run({"orbits", "--at", "2021-01-01T00:10"})["positions"][0];
    EXPECT_EQ(std::tuple(place["satellite"], place["age"], place["reference"]),
              std::tuple("G01", 600.0, "2021-01-01T00:00:00"));

    const std::string text = runTool(with({"sky", "--site", "6378137,0,0", "--mask", "12.7"})).out;
    EXPECT_NE(text.find("G01            51.38          90.00  good    ephemeris        0.0\n"), text.npos) << text;
    EXPECT_NE(text.find("GPS time, 4 satellites"), text.npos) << text;
    EXPECT_EQ(run({"sky", "--site", "0,0,0", "--mask", "17"})["epochs"][0]["satellites"].size(), 3U);
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
    const std::string table = runTool(with({"visibility", file, "--site", "0,0,0", "--mask", "45"})).out;
    EXPECT_NE(table.find("2021-01-01T00:00:00        2        0        1       3     0    6\n"), table.npos) << table;
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
    const json& gps = report["systems"]["GPS"];
    EXPECT_EQ(std::tuple(gps["tracked"], gps["belowHorizon"], gps["withoutOrbit"], gps["expected"], gps["met"]),
              std::tuple(5, 1, 1, 6, 2));
    EXPECT_EQ(report["all"], gps);
    EXPECT_NEAR(gps["share"], 2.0 / 6.0, 1e-12);
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
        {1, {"sky", "--site", "0,0,0", "--at", "2021-01-02"}, "no orbit serves 2021-01-02T00:00:00; the "},
        {1, {"sky", "--site", "0,0,0", "--svg", none + "/x"}, none + "/x: cannot be created"},
        {2, {"visibility", "--site", "0,0,0", "--step", "0"}, "--step is more than 0 s"},
        {2, {"visibility", "--site", "0,0,0", "--to", "2021-01-13", "--step", "1"}, "--step 1 makes more than "}};
    for (const auto& [status, arguments, text] : rows) {
        expectFault(runTool(with(arguments)), "halvex: " + text, status);
    }
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

TEST_F(Sky, PicturesAreWholeAndHaveEastOnTheRight) {
    const auto drawn = [&](const Arguments& arguments) {
        EXPECT_EQ(runTool(with(arguments + Arguments{"--svg", m_folder.path("svg")})).status, 0);
        std::istringstream in(readFile(m_folder.path("svg")));
        EXPECT_EQ(in.str().find("nan"), std::string::npos);
        ptree picture;
        EXPECT_NO_THROW(boost::property_tree::read_xml(in, picture));
        return picture;
    };
    writeOrbits(m_orbits, {circle(1, 30.0)});
    writeFile(m_folder.path("obs"), version("3.05") + record("A<B&\xff\x01", "MARKER NAME") +
                                        record("  6378137.0000        0.0000        0.0000", "APPROX POSITION XYZ") +
                                        record("G    1 C1C", "SYS / # / OBS TYPES") + endOfHeader());
    const ptree sky = drawn({"sky", "--site", m_folder.path("obs")}).get_child("svg");
    EXPECT_TRUE(sky.get<std::string>("title").starts_with("Sky of A<B&??"));
    const auto marks = std::find_if(
        sky.begin(), sky.end(), [](const auto& child) { return child.second.get("<xmlattr>.class", "") == "marks"; });
    ASSERT_NE(marks, sky.end());
    const auto at = [&](const char* coordinate) {
        return std::stoi(marks->second.get<std::string>(std::string("circle.<xmlattr>.") + coordinate));
    };
    EXPECT_GT(at("cx"), 500) << "the zenith is at 400, 437";
    EXPECT_NEAR(at("cy"), 437, 1);
    drawn({"sky", "--site", "0,0,0", "--from", "2020-12-31T23:00", "--to", "2021-01-01T01:00"});
    for (const char* const to : {"2021-01-01", "2021-02-01"}) {
        drawn({"visibility", "--site", "0,0,0", "--from", "2021-01-01", "--to", to});
    }
}

}  // namespace
}  // namespace halvex::test
