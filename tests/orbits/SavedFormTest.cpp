#include "halvex/platform/kernix/TraceUtil.h"
#include "halvex/platform/os/Thread.h"
#include "tests/orbits/Convert.h"
#include "tests/support/CapturedLog.h"

namespace {

using namespace halvex::test;

/// Hexadecimal text with the number of this thread written over the four bytes at `offset`.
Bytes withThread(std::string_view text, std::size_t offset) {
    Bytes bytes = hex(text);
    halvex::storeLittleEndian(bytes.data() + offset, os::currentThreadId());
    return bytes;
}

TEST(OrbitSavedForm, GpsEphemeris) {
    CALN::CALX_SAT_EPHEMERIS r;
    r.satId = 7, r.source = 0x83, r.health = 5, r.week = 2111, r.ura = 2.5, r.codeOnL2 = 1, r.uraIndex = 2;
    r.l2pDataFlag = 3, r.aodo = 4, r.fitIntervalFlag = 5, r.iodc = 0x0106, r.tgd = 0.5, r.toe = 388800, r.toc = 388816;
    r.m0 = 1, r.deltaN = 2, r.e = 3, r.sqrtA = 4, r.omega0 = 5, r.i0 = 6, r.omega = 7, r.omegaDot = 8, r.idot = 9;
    r.cuc = 1, r.cus = 2, r.crc = 3, r.crs = 4, r.cic = 5, r.cis = 6;
    r.af0 = 0.25, r.af1 = 0.125, r.af2 = -1, r.delayTerm1 = 10, r.delayTerm2 = 11;
    const Bytes golden = withThread(
        "0e00 00000000 07 83 0500 3f08 0000000000000440 0100 0200 0300 0400 0500 0601 0000003f "
        "000000000000f03f 0000000000000040 0000000000000840 0000000000001040 0000000000001440 0000000000001840 "
        "0000000000001c40 0000000000002040 0000000000002240 "
        "0000803f 00000040 00004040 00008040 0000a040 0000c040 c0ee0500 d0ee0500 0000803e 0000003e 000080bf "
        "0000000000002440 0000000000002640",
        2);
    const auto ephemeris = as<CHalvexEphemeris>(r);
    expectSavedForm(ephemeris, CHalvexEphemeris(), golden);
    EXPECT_TRUE(patched(ephemeris, 2, 0xFFFFFFFFU) == ephemeris) << "the writing thread is skipped";
    EXPECT_TRUE(ephemeris.GetIode() == 6 && ephemeris.GetGPSMsec() == 388800000U);
    EXPECT_TRUE(ephemeris.GetRefTime() == SMjdTime(2111, 388800.0));
}

TEST(OrbitSavedForm, GlonassEphemeris) {
    CALN::CALX_SAT_EPHEMERIS_GLONASS r;
    r.satId = 7, r.source = 0x82, r.frequencyNumber = -5, r.health = 1, r.dayNumber = 1000, r.frameTime = 40000;
    r.modification = 1, r.accuracyIndex = 3, r.week = 2111, r.referenceSeconds = 388800.5, r.tb = 57;
    r.referenceSecondsOfDay = 51300, r.fourYearInterval = 7, r.controlFlags = 0x55, r.healthFlags = 9;
    r.position = {-10000500.0, 20000250.0, 8000000.0}, r.velocity = {-1500.0, 250.0, 3000.0};
    r.acceleration = {3000 * 0x1p-30, -2000 * 0x1p-30, 15000 * 0x1p-30}, r.recordFlags = 0x01020304;
    r.tauN = -0x1p-12, r.deltaTauN = 0x1p-29, r.gammaN = 3 * 0x1p-38, r.ageOfData = -3;
    // The identity 0x34c16d is the CRC-24Q of 732000000ca7108009c408007d00004c00000200001800000e4f.
    const Bytes golden = withThread(
        "20 00000000 07 82 fb 01000000 e803 409c0000 01 0300 3f08 f49f2c17 64c80000 39000000 "
        "000000800e1363c1 000000a0df127341 0000000080845e41 00000000007097c0 0000000000406f40 000000000070a740 "
        "000000000070c73e 000000000040bfbe 00000000004ced3e 00000000000030bf 000000000000203e 000000000000a83d "
        "00000000000008c0 07000000 55000000 09000000 04030201 39 6dc13400",
        1);
    const auto ephemeris = as<CHalvexEphemerisGLO>(r);
    expectSavedForm(ephemeris, CHalvexEphemerisGLO(), golden);
    EXPECT_TRUE(patched(ephemeris, 1, 0xFFFFFFFFU).EquivalentAll(ephemeris)) << "the writing thread is skipped";
    EXPECT_TRUE(ephemeris.GetRefTime() == SMjdTime(2111, 388800.5));
}

TEST(OrbitSavedForm, Almanacs) {
    CALN::CALX_SAT_ALMANAC gps;
    gps.satId = 7, gps.source = 3, gps.week = 2111, gps.toa = 147 * 4096, gps.health = 5;
    gps.m0 = 1, gps.e = 2, gps.sqrtA = 3, gps.omega0 = 4, gps.i = 5, gps.omega = 6, gps.omegaDot = 7;
    gps.af0 = 8, gps.af1 = 9;
    expectSavedForm(
        as<CHalvexAlmanac>(gps), CHalvexAlmanac(),
        hex("07 03 9300 05 000000000000f03f 0000000000000040 0000000000000840 0000000000001040 "
            "0000000000001440 0000000000001840 0000000000001c40 0000000000002040 0000000000002240 3f080000"));
    EXPECT_EQ(as<CHalvexAlmanac>(gps).GetRefTimeInGPSSeconds(), 602112U);

    CALN::CALX_SAT_ALMANAC_GLONASS glonass;
    glonass.satId = 7, glonass.source = 3, glonass.week = 2111;
    glonass.dayNumber = 1000, glonass.fourYearInterval = 7, glonass.modification = 1, glonass.channel = 28;
    glonass.controlFlags = 0x0203, glonass.referenceMilliseconds = 388800500, glonass.nodeSecondsOfDay = 20000;
    glonass.health = 1;
    glonass.tauN = 1, glonass.lambda = 2, glonass.deltaI = 3, glonass.e = 4, glonass.omega = 5, glonass.deltaT = 6;
    glonass.deltaTDot = 7, glonass.tauC = 8;
    expectSavedForm(as<CHalvexAlmanacGlonass>(glonass), CHalvexAlmanacGlonass(),
                    hex("07 e803 07000000 01 1c 0302 3f08 f49f2c17 204e 03 01000000 000000000000f03f 0000000000000040 "
                        "0000000000000840 0000000000001040 0000000000001440 0000000000001840 0000000000001c40 "
                        "0000000000002040"));

    CHalvexAlmanac cleared;
    EXPECT_EQ(saved(cleared), Bytes(81, 0)) << "a new object's source is 0";
    cleared.Clear();
    EXPECT_EQ(saved(cleared)[1], 255);
}

TEST(OrbitSavedForm, IonosphereUtcAndGlonassTime) {
    CALN::CALX_IONO_UTC iono;
    iono.source = CALN::kSimulatedSource;
    iono.alpha = {1, 2, 3, 4}, iono.beta = {5, 6, 7, 8}, iono.a0 = 9, iono.a1 = 10;
    iono.wnt = 2111, iono.tot = 61440, iono.word1 = 3, iono.word2 = 4;
    iono.deltaTls = 18, iono.deltaTlsf = 19, iono.wnLsf = 2185, iono.dn = 7;
    expectSavedForm(as<CHalvexIonoUtc>(iono), CHalvexIonoUtc(),
                    hex("0200 01000000 000000000000f03f 0000000000000040 0000000000000840 0000000000001040 "
                        "0000000000001440 0000000000001840 0000000000001c40 0000000000002040 12 13 89080000 07 "
                        "0000000000002240 0000000000002440 3f080000 00f00000 03000000 04000000"));

    CALN::CALX_CLOCK_GLONASS clock;
    clock.available = true, clock.dayNumber = 1000, clock.frameTime = 40000, clock.fourYearInterval = 7;
    clock.leapNotice = 3, clock.source = 0x81, clock.slot = 9, clock.almanacDay = 999;
    clock.tauC = 1, clock.tauGps = 2, clock.b1 = 3, clock.b2 = 4;
    const auto time = as<CHalvexTimeInfoGlonass>(clock);
    expectSavedForm(time, CHalvexTimeInfoGlonass(),
                    hex("e803 409c0000 07 02 03 81 000000000000f03f 0000000000000040 0000000000000840 0000000000001040 "
                        "000000"));
    Bytes bytes(45, 0xEE);
    time.saveData(bytes.data(), bytes.size());
    EXPECT_EQ(Bytes(bytes.begin() + 42, bytes.end()), Bytes(3, 0xEE)) << "the last three bytes are left alone";
    EXPECT_TRUE(patched(time, 10, 77.0) == time && patched(time, 6, std::uint8_t{1}) == time);
    EXPECT_FALSE(patched(time, 0, std::uint16_t{1}) == time || patched(time, 2, 1U) == time);
    CHalvexTimeInfoGlonass copy;
    copy = time;
    EXPECT_EQ(as<CALN::CALX_CLOCK_GLONASS>(copy), clock) << "a copy keeps what is not saved";
}

TEST(OrbitSavedForm, OldVersionsAreRefusedAndTraced) {
    CapturedLog log;
    const auto mask = CTraceUtil::SetEnabled(0xFFFFFFFFU);
    const std::string gps = "CHalvexEphemeris::LoadData received old version ";
    const std::string glonass = "CHalvexEphemerisGLO::LoadData received old version ";
    const std::tuple<bool, unsigned char, std::size_t, std::string> rows[] = {
        {true, 13, 168, gps + "13"},    {true, 13, 2, gps + "13"},      {true, 13, 1, ""},   {true, 14, 167, ""},
        {false, 5, 160, glonass + "5"}, {false, 33, 1, glonass + "33"}, {false, 32, 159, ""}};
    for (const auto& [isGps, version, size, text] : rows) {
        Bytes bytes(size, 0);
        bytes[0] = version;
        EXPECT_FALSE(isGps ? CHalvexEphemeris().loadData(bytes.data(), size)
                           : CHalvexEphemerisGLO().loadData(bytes.data(), size));
        const auto lines = log.take();
        EXPECT_TRUE(text.empty() ? lines.empty() : lines.size() == 1 && lines[0].ends_with("] " + text)) << size;
    }
    Bytes iono = saved(CHalvexIonoUtc());
    iono[0] = 1;
    EXPECT_FALSE(CHalvexIonoUtc().loadData(iono.data(), iono.size()));
    CTraceUtil::SetEnabled(mask);
}

}  // namespace
