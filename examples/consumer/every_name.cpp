// Uses every class and every free function that the library offers, through its umbrella header, so that one that is
// missing there does not compile and one that is not exported does not link. What they do is tested elsewhere; here a
// result is looked at only to see that it is the library's.

#include <halvex/HalvexRTKBasics.h>
#include <boost/make_shared.hpp>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>
#include <mutex>
#include <sstream>
#include <string>
#include <unordered_map>

namespace {

int faults = 0;

void check(bool holds, int line) {
    if (holds) return;
    std::cerr << "every_name.cpp:" << line << ": does not match\n";
    ++faults;
}

template <class... Ignored>
void use(const Ignored&...) {}

// What a host derives from.

class Clock final : public os::Clock {
public:
    [[nodiscard]] SYSTEMTIME utcTime() const override { return {2020, 6, 0, 25, 12, 0, 30, 0}; }
    [[nodiscard]] SYSTEMTIME localTime() const override { return {2020, 6, 0, 25, 14, 0, 30, 0}; }
    [[nodiscard]] std::uint64_t tickCount() const override { return 5; }
};

class LogSink final : public ILogging::Sink {
public:
    void write(std::string_view, int, std::string_view message) override { last = message; }
    std::string last;
};

class MemoryStore final : public REG::Store {
public:
    std::optional<REG::Value> read(std::string_view, std::string_view name) override {
        const auto found = m_values.find(std::string(name));
        return found != m_values.end() ? std::optional(found->second) : std::nullopt;
    }
    bool write(std::string_view, std::string_view name, const REG::Value& value) override {
        m_values[std::string(name)] = value;
        return true;
    }

private:
    std::map<std::string, REG::Value> m_values;
};

class Persist final : public CLeapSecondsPersistBase {};

class Number final : public IPersistData {
public:
    bool loadData(const unsigned char* buffer, std::size_t size) override {
        halvex::ByteReader reader(buffer, size);
        std::uint32_t value = 0;
        reader(value);
        if (reader.ok()) m_value = value;
        return reader.ok();
    }
    void saveData(unsigned char* buffer, std::size_t size) const override {
        halvex::ByteWriter writer(buffer, size);
        writer(m_value);
    }
    [[nodiscard]] std::size_t getSize() const override {
        halvex::ByteCounter counter;
        counter(m_value);
        return counter.size();
    }

private:
    std::uint32_t m_value = 7;
};

class OneSecond final : public IGPSLeapSeconds {
public:
    int GetGPSLeapSeconds(const SMjdTime&) override { return 1; }
};

class Handler final : public ILeapSecondsMsgHnd {
public:
    void OnLeapSecondsAccepted(const int&, const int&, const int&) override { ++told; }
    void OnLeapSecondsRejected(const int&, const int&, const int&) override { ++told; }
    int told = 0;
};

class Blocks final : public IIndexedReadNotify {
public:
    void OnIndexedBlock(const unsigned char*, std::uint64_t) override { ++count; }
    void OnIndexedReadEnd() override {}
    int count = 0;
};

class Lossless final : public MDB::IObsLossOfLock {
public:
    [[nodiscard]] std::uint32_t getEpochTimeMsecs() const override { return 0; }
    void UpdateLossOfLock(MDB::CLossOfLockDetector&) override {}
    void StoreLossOfLock(MDB::CLossOfLockDetector&) const override {}
};

class NoGuard final : public ISyncGuard {
public:
    [[nodiscard]] bool TryLockRead() override { return true; }
    bool LockRead() override { return true; }
    void UnlockRead() override {}
    [[nodiscard]] bool TryLockWrite() override { return true; }
    bool LockWrite() override { return true; }
    void UnlockWrite() override {}
};

class Assertions final : public IAssertHandler {
public:
    void failed(std::string_view, std::string_view) override { ++count; }
    int count = 0;
};

class Consumer final : public CALN::ExtCalOrbitConsumer {
public:
    void OnNewOrbit(const CALN::SCalSatID&, CALN::eCALEPHEMERISTYPE, const SMjdTime&) override { ++count; }
    int count = 0;
};

class Listener final : public IEphemerisListener, public IAlmanacListener {
public:
    bool ProcessNewEphemeris(const CHalvexEphemerisNAVIC&) override { return true; }
    bool ProcessNewEphemeris(const CHalvexEphemerisQZSS&) override { return true; }
    bool ProcessNewEphemeris(const CHalvexEphemerisBDS&) override { return true; }
    bool ProcessNewEphemeris(const CHalvexEphemerisGAL&) override { return true; }
    bool ProcessNewEphemeris(const CHalvexEphemerisGLO&) override { return true; }
    bool ProcessNewEphemeris(const CHalvexEphemeris&) override { return true; }
    bool ProcessNewAlmanac(const CHalvexAlmanacQzss&) override { return true; }
    bool ProcessNewAlmanac(const CHalvexAlmanacBds&) override { return true; }
    bool ProcessNewAlmanac(const CHalvexAlmanacGal&) override { return true; }
    bool ProcessNewAlmanac(const CHalvexAlmanacGlonass&) override { return true; }
    bool ProcessNewAlmanac(const CHalvexAlmanac&) override { return true; }
};

void operatingSystem(const std::string& folder) {
    check(CString("b").Compare("a") > 0 && (CString("a") + "b").GetLength() == 2, __LINE__);

    os::Clock* before = os::setClock(nullptr);
    os::setClock(before);
    check(os::GetSystemTime().wYear == 2020 && os::GetLocalTime().wHour == 14 && os::GetTickCount64() == 5, __LINE__);

    const SYSTEMTIME now = os::GetSystemTime();
    check(!os::formatRegionalDate(now).empty() && !os::formatRegionalTime(now).empty(), __LINE__);
    check(os::formatDate("%Y", now) == "2020", __LINE__);
    check(os::fromVariantDate(os::toVariantDate(now).value_or(0.0)).has_value(), __LINE__);

    const std::string name = folder + "/file";
    os::File file;
    check(!file.openForWriting(name.c_str(), os::kShareReadWrite) && file.isOpen(), __LINE__);
    const unsigned char byte = 1;
    check(!file.append({&byte, 1}) && !file.sync() && !file.truncate(0), __LINE__);
    check(!file.close() && !file.openForReading(name.c_str(), os::kShareReadWrite), __LINE__);
    std::uint64_t size = 1;
    std::size_t count = 0;
    unsigned char to = 0;
    file.expectSequentialReading();
    check(!file.size(size) && size == 0 && !file.readAt(0, {&to, 1}, count), __LINE__);
    check(!os::deleteFile(name.c_str()), __LINE__);

    check(os::openFilesLimit() > 0 && (os::raiseOpenFilesLimit(), !os::raiseOpenFilesLimit()), __LINE__);
    check(!os::replaceFile(name, {&byte, 1}) && !os::deleteFile(name.c_str()), __LINE__);
    os::Event event(os::Event::Reset::automatic);
    os::Event* const events[] = {&event};
    check(event.Set() && os::waitAny(events) == 0U && !event.isSet(), __LINE__);
    os::setThreadName(os::currentThreadId(), "every_name");

    os::Published<2> published;
    published.publish({1, 2});
    check(published.read()[1] == 2, __LINE__);
    int one = 1;
    int two = 2;
    os::Replaceable<int> service(&one);
    check(service.exchange(&two) == &one && service.get() == 2, __LINE__);
}

void baseLibrary(const std::string& folder) {
    const std::string name = folder + "/buffered";
    CFileWriteBuffer out;
    std::uint32_t version = 2;
    check(out.Open(name.c_str(), 64, 0, true, os::kShareReadWrite, &version), __LINE__);
    std::uint64_t position = 0;
    check(out.Write("a", 1) && out.GetSpace(1) != nullptr && out.WriteUnbuffered("c", 1), __LINE__);
    check(out.GetFilePosition(position) && position == out.GetFileSizeEx() && out.Flush() && out.Close(), __LINE__);
    CFileReadBuffer in;
    check(in.Open(name.c_str()) && in.GetFileSizeEx() == 7 && in.GetData(4, 3)[0] == 'a' && in.Close(), __LINE__);
    CFileWriteBuffer outCopy(out);
    CFileReadBuffer inCopy(in);
    use(outCopy.GetLastError(), inCopy.GetLastError());

    unsigned char bytes[CIndexedFileIndex::kSavedSize] = {};
    CIndexedFileRecordHeader{.week = 1}.save(bytes);
    check(CIndexedFileRecordHeader::load(bytes).week == 1, __LINE__);
    CIndexedFileIndex{.week = 2}.save(bytes);
    check(CIndexedFileIndex::load(bytes).week == 2, __LINE__);
    halvex::storeLittleEndian(bytes, std::uint16_t{258});
    check(halvex::loadLittleEndian<std::uint16_t>(bytes) == 258, __LINE__);
    const Number number;
    CMemoryBuffer memory(bytes, number.getSize());
    number.saveData(memory.data(), memory.size());
    check(!memory.empty() && memory.data()[0] == 7, __LINE__);

    LockFreeSpinLock spin;
    const std::lock_guard held(spin);
    CCriticalSectionSyncGuard section;
    CReaderWriterSyncGuard shared;
    NoGuard none;
    for (ISyncGuard* guard :
         {static_cast<ISyncGuard*>(&section), static_cast<ISyncGuard*>(&shared), static_cast<ISyncGuard*>(&none)}) {
        const CReadWriteLock lock(*guard, true);
    }

    LogSink sink;
    const ScopedLogSink installed(sink);
    ILogging::getInstance().Log("every_name", ILogging::kError, "{} of {}", 1, "two");
    check(sink.last == "1 of two", __LINE__);
    CTraceUtil::SetEnabled(1);
    CTraceUtil::SetSink(nullptr);
    CTraceUtil::Trace(1, "traced");
    check(CTraceUtil::IsEnabled(1) && sink.last.ends_with("traced") && CTraceUtil::SetEnabled(0) == 1, __LINE__);

    CMonitorTree tree;
    const ScopedMonitorTree ownTree(tree);
    CMonitorElementContainer container("Queue/Every");
    CMonitorElement element(container, "In");
    CMonitorTimer timer(container, "Time");
    element.Increment();
    timer.start().stop();
    check(&CMonitorTree::getInstance() == &tree && tree.value(container.path(), element.name()) == 1.0, __LINE__);
    check(tree.snapshot().size() == 2 && tree.openMetrics().ends_with("# EOF\n") && timer.runs() == 1, __LINE__);

    check(!CMonitorExport::Write(name), __LINE__);
    { const CMonitorExport exporter(name, std::chrono::hours(1)); }
    CDualPriorityQueue<int> queue("Every", 8);
    int popped = 0;
    check(queue.Push(1, CDualPriorityQueue<int>::Level::low) && queue.Pop(popped) && queue.empty(), __LINE__);
    CActiveObject thread(
        "every_name", [](void*) -> std::uint32_t { return 0; }, nullptr, 1000);
    check(thread.StartThread("every_name.cpp", __LINE__, "baseLibrary") && thread.StopThread(), __LINE__);
    check(thread.GetStopHandle().isSet(), __LINE__);
    CWatchdogClient watchdog("every_name", 0);
    watchdog.NotifyWatchdog();
    check(CWatchdogClient::GetThreads().size() == 1, __LINE__);
    watchdog.NotifyWatchdogThisThreadClosing();

    MemoryStore store;
    const REG::ScopedStore ownStore(store);
    check(REG::WriteLong("key", "long", 3) && REG::GetLong("key", "long", 0) == 3, __LINE__);
    check(REG::WriteString("key", "text", "t") && REG::GetString("key", "text", "") == "t", __LINE__);

    TIME::SetDeltaUTCTime(0.5);
    check(TIME::GetDeltaUTCTime() == 0.5, __LINE__);
    TIME::SetDeltaUTCTime(0.0);

    CPrnID satellite(5);
    check(satellite.setPrn(6) && satellite.setPrnType(CPrnID::PRN_QZSS) && satellite.IsValid() &&
              satellite.GetPrn() == 6 && satellite.GetPrnType() == CPrnID::PRN_QZSS,
          __LINE__);
}

void computationLibrary() {
    SMjdTime instant(2111, 388830.0);
    char text[32] = {};
    instant.GetAsMJDString(text, sizeof text);
    instant.SetAsGpsWeekAndDayNumber(2111, 5);
    check(instant.GetGpsWeek() == 2111 && instant.GetDayOfYear() == 177 && text[0] == '5', __LINE__);
    check(mjd::time(instant) == instant, __LINE__);

    check(CALN::getFrequencyGroup(CALN::eCALFREQUENCY_G1) == CALN::eCALFREQUENCY_GROUP_L1, __LINE__);
    check(CALN::getCarrierFrequency(CALN::eCALFREQUENCY_L1) == 1575.42e6, __LINE__);
    check(halvex::slotBand(CALN::eCALSATSYSTEM_GPS, 0).rinexBand == '1', __LINE__);
    check(halvex::systemOfCode(1) == halvex::systemOfLetter('G') && halvex::systemOfTypeBit(2)->letter == 'R',
          __LINE__);

    CALN::CCalFrequencyMgr& frequencies = CALN::CCalFrequencyMgr::getInstance();
    CALN::setGlonassChannel({CALN::eCALSATSYSTEM_GLONASS, 5}, 1);
    double wavelength = 0.0;
    check(frequencies.getWavelength({CALN::eCALSATSYSTEM_GLONASS, 5}, CALN::eCALFREQUENCY_G1, wavelength), __LINE__);
    check(!frequencies.getWavelength({CALN::eCALSATSYSTEM_GLONASS, 6}, CALN::eCALFREQUENCY_G1, wavelength), __LINE__);

    BSS::TIM::UtcLeapSecond leap;
    BSS::TIM::GpsC::setGpsLeapSecondsData(18, 18, 0, 0, BSS::TIM::GpsC::kKindAutomatic);
    check(BSS::TIM::GpsC::getUtcLeapSecond(leap) == 0 && leap.leapSeconds == 18, __LINE__);

    const MDB::CPrnIdZ9 satellite(CALN::SCalSatID(CALN::eCALSATSYSTEM_GPS, 5));
    MDB::CLossOfLockDetector detector;
    detector.store(satellite, 0, true, 1);
    check(satellite.isValid() && detector.takeLoss(satellite, 0), __LINE__);
    Lossless().UpdateLossOfLock(detector);
    check(std::unordered_map<MDB::CPrnIdZ9, int>{{satellite, 1}}.contains(satellite), __LINE__);
}

void leapSeconds() {
    Persist persist;
    CLeapSecondsPersistBase* before = CLeapSecondsPersist::InitInstance(&persist);
    check(&CLeapSecondsPersist::GetInstance() == &persist, __LINE__);
    InitCentralLeapSeconds();
    UpdateCentralLeapSecondsFromDB();
    const SMjdTime now(2111, 388830.0);
    int ls = 0, lsf = 0, lsfMjd = 0;
    check(GetGPSLeapSeconds(now) == 18 && GetGPSLeapSeconds(now, ls, lsf, lsfMjd) && ls == 18, __LINE__);
    check(GetGPSLeapSecondsData(ls, lsf, lsfMjd) && CGPSLeapSeconds::hasInstance(), __LINE__);
    OneSecond table;
    check(GetGPSLeapSeconds(table, now) == 1, __LINE__);
    check(GetDefaultLeapSeconds() == 17 && GetDefaultLeapSecondsFuture() == 18, __LINE__);
    check(GetLeapSecondsMjd(GetDefaultLeapSecondsFutureMjd()) == "01.01.2017", __LINE__);
    check(GetLeapSecondsMjd(GetDefaultLeapSecondsConfirmMjd()) == "01.10.2016", __LINE__);
    Handler handler;
    use(SetAutomaticGPSLeapSeconds(&handler, 18, 18, 0, CGPSLeapSeconds::kFlagBypass),
        SetManualGPSLeapSeconds(&handler, 18, 19, 60000), SetSimulationGPSLeapSeconds(&handler, 18, 18, 0));
    check(handler.told > 0, __LINE__);
    IGPSLeapSeconds::SGPSLeapSeconds set(17, 18, 57754, 57662);
    check(CGPSLeapSeconds::ValidateGPSLeapSeconds(set, set, now, true), __LINE__);
    check(UpdateLeapSecondsCheckFutureMjd(set, now, true) && set.leapSeconds == 18, __LINE__);
    ShutdownCentralLeapSeconds();
    CGPSLeapSeconds::ResetFWCentralLeapSeconds();
    CLeapSecondsPersist::InitInstance(before);
}

void time() {
    CTimeBase base(2111, 388830.0);
    CString date, timeOfDay;
    base.FormatRegional(date, timeOfDay);
    check(base.Format("%H") == "12" && !date.IsEmpty() && base.GetFractionOfMinutes() == 30000, __LINE__);
    check(convertToSMjdTime(os::GetSystemTime()) == base, __LINE__);

    CSystemTime system;
    system.SetToCurrentHalvexGPSTime();
    system.SetWeekMilliseconds(1000);
    SetDeltaUTCTimeFromReference(CSystemTime(base));
    check(GetDeltaLocalTimeUTC() == 7200.0, __LINE__);

    OneSecond table;
    CGPSTime gps(base);
    check(gps.AdjustUTC2GPS(table) && gps.GetDifferenceInSeconds(base) == 1.0 && gps.AdjustGPS2UTC(table), __LINE__);
    check(gps.GPSWeekSec2GLODaySec(86400.0) < 86400.0, __LINE__);
    check(GPSTimeCompare(2, 1) > GPSTimeCompare(1, 2), __LINE__);

    CSatelliteTime satellite;
    satellite.SetToCurrentGPSTime();
    satellite.AdjustFromUTCToGPSTime();
    satellite.getSatelliteTime(timeOfDay);
    check(satellite.IsGPS() && timeOfDay == "12:00:48", __LINE__);
    const CSatelliteTimeAndLeapSeconds withLeapSeconds(18, 19, 60000);
    check(withLeapSeconds.getSize() == 25 && withLeapSeconds.GetLeapSeconds(base) == 18, __LINE__);
    CSatelliteTimeAndTickCount withTicks(satellite, 5);
    withTicks.addSeconds(1.0);
    CSatelliteTimeRelative relative;
    relative.setToNow();
    check(withTicks.getAsAbsoluteTicks() == 1005 && relative.getAsAbsoluteTicks() == 5, __LINE__);
    check(relative.getAsMjd(withTicks) > 59000.0, __LINE__);
}

void observations() {
    const CHalvexUniqueSiteID site(1, 2);
    std::ostringstream text;
    text << site;
    check(text.str() == "2,1" && site.getSize() == CHalvexUniqueAntennaID(3).getSize(), __LINE__);
    const CTripleID triple(1, 2, 3);
    check(triple.getString() == "3_2_1", __LINE__);
    use(CTripleIDHasher()(triple));

    CHalvexObservation observation(5);
    observation.setPseudorangeC(TYPE::FREQUENCY_L1, 2e7);
    check(observation.IsDataValid() && observation == CHalvexObservation(observation), __LINE__);
    CHalvexStationObservation epoch(388830000, 2111);
    check(epoch.AddObservation(observation, true) && epoch == CHalvexStationObservation(epoch), __LINE__);
    check(epoch.getReceiverType() == TYPE::SENSOR_UNKNOWN && epoch.getCoverageMode() == TYPE::COVERAGE_NONE, __LINE__);
    CContLockCount lockCounts;
    check(lockCounts.getCount(CALN::eCALFREQUENCY_L1, MDB::CPrnIdZ9(), true, SMjdTime()) == 0, __LINE__);
    lockCounts.Clear();
}

/// Elements of a circular orbit that any of the systems could have.
template <class Record>
Record keplerRecord(unsigned char satId) {
    Record record;
    record.satId = satId;
    record.source = CALN::eCALORBITSOURCE_RECEIVER;
    record.week = 2111;
    record.toe = 388800.0;
    record.sqrtA = 5400.0;
    return record;
}

template <class Thing>
void saveAndLoad(const Thing& thing) {
    std::vector<unsigned char> bytes(thing.getSize());
    thing.saveData(bytes.data(), bytes.size());
    Thing again;
    check(again.loadData(bytes.data(), bytes.size()) && again == thing, __LINE__);
}

void orbits() {
    const SMjdTime now(2111, 388830.0);
    const CGeoCoord place(0.9, 0.1, 50.0);
    CALN::SCalCoordinateSet site;
    check(convertCoords(place, site) && place.GetHeight() == site.geographic.height, __LINE__);
    ORBIT_GEOGRAPHIC geographic;
    CHalvexAlmanac::CartesianToGeographic(site.cartesian, geographic);
    check(std::abs(geographic.latitude - place.GetLatitude()) < 1e-9, __LINE__);
    double elevation = 0.0, azimuth = 0.0;
    CHalvexAlmanac::GetElevationAndAzimuth(site.cartesian, {2e7, 0.0, 2e7}, elevation, azimuth);
    check(halvex::LocalFrame(site.cartesian).directionTo({2e7, 0.0, 2e7}).azimuth == azimuth, __LINE__);
    ORBIT_COORD moved = site.cartesian;
    const ScopedPZ90ToWGS84 frame(CGlobalGeodeticSettings::defaults());
    CHalvexAlmanacGlonass::TransformPZ90ToWGS84(moved);
    check(std::abs(moved.x - site.cartesian.x) < 1.0, __LINE__);

    auto gps = keplerRecord<CALN::CALX_SAT_EPHEMERIS>(5);
    const auto galileo = keplerRecord<CALN::CALX_SAT_EPHEMERIS_GALILEO>(5 + 56);
    const auto beidou = keplerRecord<CALN::CALX_SAT_EPHEMERIS_BEIDOU>(20);
    const auto qzss = keplerRecord<CALN::CALX_SAT_EPHEMERIS_QZSS>(193);
    const auto navic = keplerRecord<CALN::CALX_SAT_EPHEMERIS_NAVIC>(5);
    CALN::CALX_SAT_EPHEMERIS_GLONASS glonass;
    glonass.satId = 5;
    glonass.week = 2111;
    glonass.referenceSeconds = 388800.0;
    glonass.position = {25.5e6, 0.0, 0.0};
    glonass.velocity = {0.0, 0.0, 3950.0};
    double position[3] = {};
    check(CALN::POS_SAT_CalcSatPosCartesian(gps, 388800.0, position) == CALN::kPositionDone, __LINE__);
    check(CALN::POS_SAT_CalcSatPosCartesianGal(galileo, 388800.0, position) == 0, __LINE__);
    check(CALN::POS_SAT_CalcSatPosCartesianBds(beidou, 388814.0, position) == 0, __LINE__);
    check(CALN::POS_SAT_CalcSatPosCartesianNavic(navic, 388800.0, position) == 0, __LINE__);
    check(CALN::POS_SAT_CalcSatPosCartesianGlo(glonass, 388800.0, position) == 0, __LINE__);

    CHalvexEphemeris ephemeris;
    CHalvexEphemerisGLO ephemerisGlo;
    check(convertGPSEphemeris(gps, ephemeris) && convertGPSEphemeris(ephemeris, gps), __LINE__);
    check(convertGLOEphemeris(glonass, ephemerisGlo) && convertGLOEphemeris(ephemerisGlo, glonass), __LINE__);
    check(GenerateNavIdentValues(ephemerisGlo), __LINE__);
    const CHalvexEphemerisGAL ephemerisGal(galileo);
    const CHalvexEphemerisBDS ephemerisBds(beidou);
    const CHalvexEphemerisQZSS ephemerisQzss(qzss);
    const CHalvexEphemerisNAVIC ephemerisNavic(navic);
    const IHalvexEphemerisBase* all[] = {&ephemeris,    &ephemerisGlo,  &ephemerisGal,
                                         &ephemerisBds, &ephemerisQzss, &ephemerisNavic};
    double minutes = 0.0;
    for (const IHalvexEphemerisBase* each : all) {
        MDB::CPrnIdZ9 id;
        check(each->GetPrnID(id) && each->GetOrbitType() == CALN::eCALEPHEMERISTYPE_EPHEMERIS, __LINE__);
        minutes += each->GetEphemerisValidatyTimeframeMinutes();
    }
    check(minutes == 840.0, __LINE__);
    saveAndLoad(ephemeris);
    saveAndLoad(ephemerisGlo);
    saveAndLoad(ephemerisGal);
    saveAndLoad(ephemerisBds);
    saveAndLoad(ephemerisQzss);
    saveAndLoad(ephemerisNavic);
    Assertions assertions;
    {
        const ScopedAssertHandler installed(assertions);
        use(ephemerisGal.GetRefTime(CHalvexEphemerisGAL::eREFTIMETYPE_ORBIT));
        SYS_Assert("false", "every_name");
    }
    check(assertions.count == 2, __LINE__);

    CALN::CALX_SAT_ALMANAC gpsAlmanac;
    CALN::CALX_SAT_ALMANAC_GLONASS glonassAlmanac;
    gpsAlmanac.satId = glonassAlmanac.satId = 7;
    CHalvexAlmanac almanac;
    CHalvexAlmanacGlonass almanacGlonass;
    check(convertGPSAlmanac(gpsAlmanac, almanac) && convertGPSAlmanac(almanac, gpsAlmanac), __LINE__);
    check(convertGLOAlmanac(glonassAlmanac, almanacGlonass) && convertGLOAlmanac(almanacGlonass, glonassAlmanac),
          __LINE__);
    saveAndLoad(almanac);
    saveAndLoad(almanacGlonass);
    saveAndLoad(CHalvexAlmanacGal(CALN::CALX_SAT_ALMANAC_GALILEO()));
    saveAndLoad(CHalvexAlmanacBds(CALN::CALX_SAT_ALMANAC_BEIDOU()));
    saveAndLoad(CHalvexAlmanacQzss(CALN::CALX_SAT_ALMANAC_QZSS()));
    saveAndLoad(CHalvexAlmanacNavic(CALN::CALX_SAT_ALMANAC_NAVIC()));

    CHalvexIonoUtc ionoUtc;
    CALN::CALX_IONO_UTC ionoUtcRecord;
    CHalvexTimeInfoGlonass timeInfo;
    CALN::CALX_CLOCK_GLONASS clock;
    check(convertIonoUTC(ionoUtc, ionoUtcRecord) && convertIonoUTC(ionoUtcRecord, ionoUtc), __LINE__);
    check(convertGLOClkInfo(timeInfo, clock) && convertGLOClkInfo(clock, timeInfo), __LINE__);
    saveAndLoad(ionoUtc);
    saveAndLoad(timeInfo);

    Consumer consumer;
    CHalvexElevAziCalculator calculator(0, 0, 0, &consumer);
    Listener listener;
    for (IEphemerisListener* each :
         {static_cast<IEphemerisListener*>(&calculator), static_cast<IEphemerisListener*>(&listener)}) {
        check(each->ProcessNewEphemeris(ephemeris) && each->ProcessNewEphemeris(ephemerisBds), __LINE__);
    }
    check(calculator.ProcessNewAlmanac(CHalvexAlmanacNavic()) && consumer.count == 2, __LINE__);
    CALN::SCalElevationAzimuth table;
    check(calculator.GetElevAziData(place, now, table, false), __LINE__);
    check(table.getEleAzi({CALN::eCALSATSYSTEM_GPS, 5}, elevation, azimuth), __LINE__);
    CALN::SCalSatEpochDataOrbit direction;
    check(calculator.GetSatElevAziData(MDB::CPrnIdZ9(CALN::eCALSATSYSTEM_GPS, 5), place, now, direction), __LINE__);
    check(std::abs(direction.elevation - elevation) < 1e-9, __LINE__);
    CSiteRawDataHistoryItem counts;
    check(calculator.GetVisibilityCount(place, now, -1.6, counts) && counts.visibleGps == 1, __LINE__);
    check(calculator.GetEngine().GetSatPosition({CALN::eCALSATSYSTEM_GPS, 5}, now).has_value(), __LINE__);
    CALN::ExtCalElevAziCalculator engine(1, 1, 0, nullptr);
    engine.SetMode(CALN::ExtCalElevAziCalculator::kModeEphemerides);
    check(engine.ProcessGPSEphemeris(boost::make_shared<BSS::TSK::MsgObjectT<CALN::CALX_SAT_EPHEMERIS>>(gps)),
          __LINE__);
    check(CSatelliteSystem::GetMaxSatelliteNumber(CALN::eCALSATSYSTEM_GPS) == 32, __LINE__);
    check(CALN::getMaxSatNumber(CALN::eCALSATSYSTEM_GALILEO) == 36, __LINE__);

    std::uint32_t coded = 0;
    unsigned char bytes[3] = {};
    PIO::RTCM3::CBitCollector collector(bytes);
    check(PIO::RTCM3::ConvertIntToIntS(-1, 8, coded) && collector.Add(coded, 8) && bytes[0] == 0x81, __LINE__);
    check(PIO::RTCM3::ComputeCRC24(bytes) != 0 && PIO::RTCM3::generateGLONASSIOD(0x95) == 0x15, __LINE__);
    check(os::currentThreadId() != 0, __LINE__);
}

template <class Message>
void correction() {
    Message message;
    message.system = CALN::eCALSATSYSTEM_GPS;
    message.entries.emplace_back().satId = {CALN::eCALSATSYSTEM_GPS, 5};
    const CHalvexSSRCorr record(CHalvexUniqueSiteID(1, 2), boost::make_shared<BSS::TSK::MsgObjectT<Message>>(message));
    check(record.GetMessage()->GetSSRType() == Message().GetSSRType() && record.GetSiteID().getSize() == 8, __LINE__);
    if (message.GetSSRType() != CALN::eCALSSR_SIGNALS) saveAndLoad(record);
    std::vector<unsigned char> bytes(message.getSize());
    std::uint64_t used = 0;
    message.saveData(bytes.data(), bytes.size(), used);
    Message again;
    check(again.loadData(bytes.data(), bytes.size(), used) && again == message, __LINE__);
    std::vector<CALN::SCalSatID> satellites;
    again.getSatIDs(satellites);
    check(satellites.size() == 1, __LINE__);
}

class Product final : public Z9::CRTKNetworkProduct {
public:
    std::int32_t addAuxiliaryCombinedIonoGeoCorrection(const CALN::MsgGNSS17T& message) override {
        return message.IsValidMsgType(CALN::MsgGNSS17T::kGps) ? 0 : 1;
    }
};

class Producer final : public CCorrectionBase {
public:
    using CCorrectionBase::CCorrectionBase;
    std::int32_t ProvideCorrections(const CHalvexZ9StationCorrection&, const CHalvexZ9StationCorrection&, CRtkAux&,
                                    bool) override {
        return kSuccess;
    }
    void ProvideEmptyCorrections(CALN::ebCALGNSSTYPECOMBINATION, CRtkAux&, unsigned, unsigned char) override {}
};

void producers() {
    const CHalvexUniqueSiteID master(1, 1), auxiliary(2, 2);
    CRtkAuxCollection collection;
    CRtkAux* aux = nullptr;
    CHalvexUniqueSiteID site;
    check(collection.AddRtkAux(auxiliary, CRtkAux(0, 1, 2)) && collection.IsAuxAvailable(auxiliary), __LINE__);
    check(collection.GetRtkAux(auxiliary, aux) && collection.GetRtkAux(0, aux, site) && site == auxiliary, __LINE__);

    std::size_t bytes = 0;
    Z9::CRtcm3NetworkProduct product([&](std::span<const unsigned char> frame) {
        bytes += frame.size();
        return true;
    });
    check(product.addAuxiliaryStationData(CALN::Msg1014T()) == 0 && product.GetLeftOut() == 0, __LINE__);
    const auto l1l2 = CALN::eCALFREQUENCY_GROUP_L1 | CALN::eCALFREQUENCY_GROUP_L2;
    const CALN::eCALFREQUENCY_GROUP bands[CALN::kSystemSlots] = {{}, l1l2};
    CCombinedIonoGeoCorrection combined(&collection, &product, master, CALN::ebCALGNSSTYPE_GPS, 1, true, false, true,
                                        bands);
    CHalvexZ9StationCorrection first, second;
    const CALN::SCalObservationFreq l1{
        CALN::eCALFREQUENCY_L1, 1.0, 2.0, true, true, CNALHalvexObservationZ9Helper::kFixed};
    auto l2 = l1;
    l2.frequency = CALN::eCALFREQUENCY_L2;
    first.satellites = second.satellites = {{{CALN::eCALSATSYSTEM_GPS, 5}, 7, {l1, l2}}};
    check(CNALHalvexObservationZ9Helper::getAmbiguityFixState(l2) == 3 && first == second, __LINE__);
    first.epoch = second.epoch = SMjdTime(2111, 5.0);
    check(combined.ProvideCorrections(first, second, *aux, true) == CCorrectionBase::kSuccess && bytes > 0, __LINE__);
    combined.ProvideEmptyCorrections(combined.GetActiveSystems(), *aux, 5, 1);

    Producer producer(&collection, &product, master, CALN::ebCALGNSSTYPE_GPS, 1, true, false);
    const auto result = boost::make_shared<CHalvexZ9StationCorrection>(first);
    check(producer.OnNALResults(result) == CCorrectionBase::kDiscarded, __LINE__);
    use(CPhaseCorrectionEpoch());
    check(collection.RemoveRtkAux(auxiliary) && collection.ClearRtkAuxCollection() && collection.GetCount() == 0,
          __LINE__);
}

void corrections() {
    producers();
    correction<CALN::SSROrbitCorrMsgT>();
    correction<CALN::SSRClockCorrMsgT>();
    correction<CALN::SSRHighRateClockMsgT>();
    correction<CALN::SSRCodeBiasMsgT>();
    correction<CALN::SSRPhaseBiasMsgT>();
    correction<CALN::SSRURAMsgT>();
    correction<CALN::SSRSignalMsgT>();
    correction<CALN::QTBaseCoordsMsgT>();
    correction<CALN::QTVertTropoCorrMsgT>();
    correction<CALN::QTSlantTropoCorrMsgT>();
    correction<CALN::QTVertIonoCorrMsgT>();
    correction<CALN::QTSlantIonoCorrMsgT>();
    correction<CALN::QTNetGeometryCorrMsgT>();
    check(CALN::getFirstCodeOfKind(CALN::eCALSSR_ORBIT_2) == CALN::eCALSSR_ORBIT, __LINE__);
    const BSS::TSK::MsgObjectT<CALN::SSRCorrMsgBaseT> none;
    check(none.GetSSRType() == CALN::eCALSSR_NONE && none.getSize() == 36, __LINE__);

    CHalvexSSRAllCorr set(CHalvexUniqueSiteID(1, 2), SMjdTime(2111, 388830.0));
    set.clock[CALN::eCALSATSYSTEM_GPS] = boost::make_shared<BSS::TSK::MsgObjectT<CALN::SSRClockCorrMsgT>>();
    CALN::SSRAllCorrMsgT::ebfSSRContent words[CALN::kSystemSlots] = {};
    set.getDataAvlblty(words, true, false, CALN::SSRAllCorrMsgT::ebfSSR_ALL);
    check(words[1] == CALN::SSRAllCorrMsgT::ebfSSR_CLOCK && set.GetEpoch().getSize() == 12, __LINE__);
    saveAndLoad(set);
    check(SLvlDiff().tag == -1 && SLvlDiff(CALN::SSRSignalID(), 1.0, 2).value == 1.0, __LINE__);

    CALN::SSRClockCorrMsgT clocks;
    clocks.system = CALN::eCALSATSYSTEM_GPS;
    clocks.epoch = set.GetEpoch();
    clocks.entries.emplace_back().satId = {CALN::eCALSATSYSTEM_GPS, 5};
    CDataContainerSSR container(7);
    container.AddCorrectionMsg(clocks);
    check(container.GetNumSat(CALN::eCALSATSYSTEM_GPS, clocks.epoch) == 1 && container.GetSiteID() == 7, __LINE__);
    check(container.GetClockCount(CALN::eCALSATSYSTEM_GPS) == 1 && container.IsComplete(CALN::eCALSATSYSTEM_GPS) &&
              container.GetClockEpoch(CALN::eCALSATSYSTEM_GPS) == clocks.epoch,
          __LINE__);
    container.OnDisconnect();
    check(container.GetValidState(CALN::eCALSATSYSTEM_GPS, clocks.epoch) == 0, __LINE__);

    double iono = 0.0, geoA = 0.0, geoB = 0.0, wavelength = 0.0;
    const CALN::CCalFrequencyTable& table = CALN::getFrequencyTable();
    check(table.getIFGFCoeffs(CALN::eCALSATSYSTEM_GPS, CALN::eCALFREQUENCY_GROUP_L1, CALN::eCALFREQUENCY_GROUP_L2,
                              &iono, &geoA, &geoB) &&
              std::abs(geoA + geoB - 1.0) < 1e-12,
          __LINE__);
    check(table.getWavelengthValue({CALN::eCALSATSYSTEM_GPS, 5}, CALN::eCALFREQUENCY_L1, wavelength), __LINE__);
    check(CALN::CCalFrequencyTable(CALN::CCalFrequencyMgr::getInstance())
              .getWavelengthValue({CALN::eCALSATSYSTEM_GPS, 5}, CALN::eCALFREQUENCY_L1, wavelength),
          __LINE__);

    CALN::SCalSatObservation observation;
    observation.frequencies.emplace_back().phaseValid = true;
    check(observation.frequencies[0].isPhaseValid(), __LINE__);
    CALN::MsgGNSS17T message;
    message.gps.entries.emplace_back().satId = 5;
    message.SetValidMsgType(CALN::MsgGNSS17T::kGps);
    Product product;
    check(product.addAuxiliaryCombinedIonoGeoCorrection(message) == 0, __LINE__);
}

void status() {
    const CHalvexSatStatus fixed(CPrnID(5), CHalvexSatStatus::kLevel3, 45);
    CHalvexSiteSatStatus site;
    site.SetStatus(fixed);
    check(site.GetStatus(fixed.GetPrnID()) == 0x30 && site.GetElevation(CPrnID(5)) == 45 && site.getSize() == 28,
          __LINE__);
    check(site.SetFixedThreshold(1) && !site.IsFixed(1) && site.DetectStateChanges(site) == 0, __LINE__);
    unsigned low = 0, mid = 0, high = 0;
    check(CHalvexSmallSiteSatStatus(site).GetSatsStatus(CPrnID::PRN_GPS, true, low, mid, high) && high == 1, __LINE__);

    CHalvexSiteSatStatusKey key(site);
    vecSatStatusT list;
    list.getList().push_back(fixed);
    unsigned char bytes[20] = {};
    const vecSiteSatStatusSaveHelper save(key, list);
    save.saveData(bytes, sizeof bytes);
    list.getList().clear();
    check(save.getSize() == 12 + 4 && vecSiteSatStatusLoadHelper(key, list).loadData(bytes, 20), __LINE__);
    check(list.getList().size() == 1 && list.getList()[0] == fixed, __LINE__);

    CALN::IonoMsgT iono;
    iono.system = CALN::eCALSATSYSTEM_GLONASS;
    const CHalvexAuxilliaryMessage message(&iono);
    check(message.getMsg1037T() != nullptr && message.getSize() == 268, __LINE__);
    const CALN::Msg1014T station;
    const CALN::GeoMsgT geometry;
    const POS_REF_VR_CORRECTION gradients;
    use(CHalvexAuxilliaryMessage(&station), CHalvexAuxilliaryMessage(&geometry), CHalvexAuxilliaryMessage(&gradients));
    check(CHalvexAuxilliaryMessage(POS_REF_PHYS_REFERENCE()).getPhysRefMsg() != nullptr, __LINE__);
    check(CHalvexAuxilliaryMessage(PIO::RTCM3::UTF8MessageC()).getMsg1029T() != nullptr, __LINE__);
    check(CSimplePersistData<CALN::Msg1014T>(station).getSize() == 24, __LINE__);

    MemoryStore store;
    const REG::ScopedStore ownStore(store);
    check(CSatelliteSystemDisablingHelper::SetSatSystemDisabled(1, true, true), __LINE__);
    check(REG::GetLong("SOFTWARE\\Tavro Ostwerk\\GPS Halvex", "DisabledSatSystems", 0) == 1, __LINE__);
    check(CSatelliteSystemDisablingHelper::GetFirstEnabledSatSystem() == 2, __LINE__);
    check(CSatelliteSystemDisablingHelper::SetSatSystemDisableMask(0, true), __LINE__);
    CHalvexStationObservation none;
    none.RemovePrnTypes(CPrnID::PRN_GPS);
}

void files(const std::string& folder) {
    const std::string base = folder + "/set";
    CIndexedWrite index;
    check(index.Open(CString(base + "x"), true) && !index.GetLastError(), __LINE__);
    CIndexedWriteFile writer;
    check(writer.Open(base.c_str(), true), __LINE__);
    writer.AddBlock(reinterpret_cast<const unsigned char*>("block"), 5);
    std::uint32_t week = 0, milliseconds = 0;
    check(writer.GetLastWriteTime(week, milliseconds) && week == 2111, __LINE__);
    writer.Close();
    Blocks blocks;
    CIndexedReadFile reader(&blocks);
    check(reader.Open((base + "t").c_str()) && reader.Read(0, 0) && blocks.count == 1, __LINE__);
    reader.Close();
    check(CIndexedReadFile::TransformTimeInfoFileToRaw((base + "t").c_str(), (base + "r").c_str()), __LINE__);
    CIndexedReadFile::DeleteIndexedFile(CString(base));
    check(!std::filesystem::exists(base), __LINE__);

    CDecoupledFileWriteHandle handle;
    CDecoupledFileWrite& asynchronous = *handle.GetRealPointer();
    CDecoupledFileWrite::FileData request;
    request.strFileName = CString(folder + "/decoupled");
    request.bufData.assign("data", 4);
    check(asynchronous.Write(request), __LINE__);
    {
        halvex::IndexedSetRequests set(asynchronous);
        std::error_code error;
        const unsigned char block = 1;
        check(set.Open(base.c_str(), error) && set.AddBlock({&block, 1}), __LINE__);
    }
    asynchronous.WaitUntilIdle();
    check(std::filesystem::file_size(folder + "/decoupled") == 4 && asynchronous.FailedOperations() == 0, __LINE__);

    CString name;
    check(CProductsFileName::Test(name) == 1 && CProductsFileName::Test(0U) == 1, __LINE__);
    check(RnxLongFileNameParam("deu", 0, 0, "01h", 'R').getSiteCountryCode() == "DEU", __LINE__);

    CTimeBase instant(2111, 388830.0);
    char url[16];
    check(CCustomURL::VerifyCustomURL("%Y") == 1 && CCustomURL::IsCustomFormatAvailable("%Y", 'Y') == 1, __LINE__);
    check(CCustomURL::getCustomURL(instant, "A", "%S%j") == "A177", __LINE__);
    check(CCustomURL::getCustomURL(instant, "A", "%Y", url, sizeof url) && std::string(url) == "2020", __LINE__);
    check(CCustomURL::getCustomFileName(instant, "%S%G", "A") == "A2111", __LINE__);
    check(CCustomURL::ExtractTimeFromString(instant, "%G", "2112") && instant.GetGpsWeek() == 2112, __LINE__);
}

class Sentences final : public CNMEAFormat {
public:
    void parts() const {
        char text[64] = "$GPGGA,1";
        check(wrapMsg("GP", "GGA", 1, text) == 13, __LINE__);
        calculateChecksum(text, text, text);
        std::int16_t degrees = 0;
        double minutes = 0.0, easting = 0.0, northing = 0.0;
        bool positive = false;
        check(ConvertToDegreeMinuteSign(1.0, degrees, minutes, positive) && degrees == 57 && positive, __LINE__);
        check(ConvertToStringLatitude(1.0, true, text) && ConvertToStringLongitude(1.0, false, text), __LINE__);
        check(GetUTM(1.0, 0.1, 0, 0, 0, 0, easting, northing) && northing > 6e6, __LINE__);
    }
};

void locks() {
    CCalLockHalvex lock;
    lock.acquire();
    lock.release();
    CCalDummyReaderWriterLock dummy;
    dummy.CheckThreadId();
    CCalReaderWriterLockHalvex shared;
    CCalReaderWriterLockHalvex2 exclusive;
    for (CALN::ICalReaderWriterLock* each :
         {static_cast<CALN::ICalReaderWriterLock*>(&shared), static_cast<CALN::ICalReaderWriterLock*>(&exclusive),
          static_cast<CALN::ICalReaderWriterLock*>(&dummy)}) {
        each->acquireWriteLock();
        each->releaseWriteLock();
    }
    CSyncGuardCalBased guard(new CCalReaderWriterLockHalvex);
    CSyncGuardCalBasedDummy none;
    for (ISyncGuard* each : {static_cast<ISyncGuard*>(&guard), static_cast<ISyncGuard*>(&none)}) {
        check(!each->TryLockWrite() && each->LockRead(), __LINE__);
        each->UnlockRead();
    }
    CCalFrequencyMgrHalvex manager;
    manager.setGlonassChannel({CALN::eCALSATSYSTEM_GLONASS, 1}, 1);
    check(manager.getGlonassChannel({CALN::eCALSATSYSTEM_GLONASS, 1}) == 1, __LINE__);
}

void sentences() {
    const CGPSTime now(2111, 388830.0);
    Sentences format;
    format.parts();
    CString text;
    ADD_POST_RESULTS results;
    check(format.ConvertToGGQ(now, 1.0, 0.1, 50.0, 47.0, 1, 0.5F, 9, text), __LINE__);
    check(format.convertToGGA(now, 1.0, 0.1, 50.0, 1, 9, text, 47.0, 0.8, 1.0, 7), __LINE__);
    check(format.convertToLLQ(now, 1.0, 0.1, 50.0, 1, 0.5F, 9, text, 47.0, 0, 0, 0, 0), __LINE__);
    check(format.convertToTavroProp(now, 1.0, 0.1, 50.0, 1, 0.5F, 9, text, 47.0, results, 1.0F), __LINE__);
    char buffer[CNMEAFormat::kLongestSentence];
    std::uint16_t length = 0;
    check(format.ConvertToGGQ(now, 1.0, 0.1, 50.0, 47.0, 1, 0.5F, 9, "GP", buffer, length), __LINE__);
    check(format.convertToGGA(now, 1.0, 0.1, 50.0, 1, 9, "GP", buffer, length, 47.0, 0.8, 1.0, 7), __LINE__);
    check(format.convertToLLQ(now, 1.0, 0.1, 50.0, 1, 0.5F, 9, "GP", buffer, length, 47.0, 0, 0, 0, 0), __LINE__);
    check(format.convertToTavroProp(now, 1.0, 0.1, 50.0, 1, 0.5F, 9, "GP", buffer, length, 47.0, results, 1.0F),
          __LINE__);
}

}  // namespace

int main() {
    std::string folder = (std::filesystem::temp_directory_path() / "halvex-names-XXXXXX").string();
    check(::mkdtemp(folder.data()) != nullptr, __LINE__);
    Clock clock;
    const os::ScopedClock ownClock(clock);
    LogSink quiet;
    const ScopedLogSink ownSink(quiet);
    operatingSystem(folder);
    baseLibrary(folder);
    computationLibrary();
    leapSeconds();
    time();
    observations();
    orbits();
    corrections();
    status();
    files(folder);
    sentences();
    locks();
    std::filesystem::remove_all(folder);
    return faults == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
