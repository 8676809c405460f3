#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/Require.h"
#include "halvex/HalvexRTKBasics.h"

namespace {

using halvex::fuzz::require;
using Bytes = std::vector<unsigned char>;
using Input = std::span<const unsigned char>;

template <class Record>
bool load(Record& record, Input bytes) {
    return record.loadData(bytes.data(), bytes.size());
}
template <class Record>
void save(const Record& record, Bytes& bytes) {
    record.saveData(bytes.data(), bytes.size());
}

// An observation stands at an offset inside a longer buffer.
constexpr std::size_t kOffset = 3;

bool load(CHalvexObservation& observation, Input bytes) {
    std::size_t offset = std::min(kOffset, bytes.size());
    const std::size_t before = offset;
    const bool loaded = observation.LoadData(bytes.data(), bytes.size(), offset);
    require(offset == (loaded ? before + observation.getSize() : before) && offset <= bytes.size());
    return loaded;
}
void save(const CHalvexObservation& observation, Bytes& bytes) {
    std::size_t offset = kOffset;
    const bool fits = bytes.size() == kOffset + observation.getSize();
    require(observation.SaveData(bytes.data(), bytes.size(), offset) == fits);
    require(offset == (fits ? bytes.size() : kOffset));
}

template <class Record>
std::size_t sizeOf(const Record& record) {
    return record.getSize();
}
std::size_t sizeOf(const CHalvexObservation& observation) {
    return kOffset + observation.getSize();
}

template <class Record>
Bytes saved(const Record& record) {
    Bytes bytes(sizeOf(record));
    save(record, bytes);
    return bytes;
}

/// Equal, or of the same bytes: NaN is persisted, but not equal to itself.
template <class Record>
bool same(const Record& left, const Record& right) {
    return left == right || saved(left) == saved(right);
}

void exercise(CTimeBase& time) {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0;
    double second = 0.0;
    time.GetAsDate(year, month, day, hour, minute, second);
    require(month >= 1 && month <= 12 && day >= 1 && day <= 31 && hour >= 0 && hour < 24 && minute >= 0 && minute < 60);
    require(second >= 0.0 && second < 60.0);
    require(time.GetDayOfYear() >= 1 && time.GetDayOfYear() <= 366);
    CTimeBase again;
    again.SetAsDate(year, month, day, hour, minute, second);
    require(again.GetDifferenceInSeconds(time) < 1e-6 && time.GetDifferenceInSeconds(again) < 1e-6);
    require(time.GetGpsWeekMilliseconds() >= 0.0 && time.GetGpsWeekMilliseconds() < 604800000.0);
    require(time.GetFractionOfMinutes() < 60000);
    require(time.Compare(time) == 0 && time.Compare(again, true, true) == -again.Compare(time, true, true));

    DBTIMESTAMP stamp;
    time.ToDbTimeStamp(stamp);
    require(stamp.second < 60 && stamp.fraction < 1000000000U);
    SYSTEMTIME system;
    time.ToSystemTime(system);
    require(system.wMilliseconds <= 1000);
    const bool valid = year >= 100 && year <= 9999;
    require((time.Format("%Y-%j %H:%M:%S") != "Invalid DateTime.") == valid);
    std::array<char, 12> text;
    text.fill('~');
    time.GetAsMJDString(text.data(), text.size() - 1);
    require(text.back() == '~' && std::find(text.begin(), text.end(), '\0') != text.end());
    text.fill('~');
    time.FormatRegional(text.data(), text.size() - 1);
    require(text.back() == '~' && std::find(text.begin(), text.end(), '\0') != text.end());

    CString name;
    require(CProductsFileName::CreateQCFileName("qc", time, name) == 1);
    CProductsFileName::CreateRinexFileName("SITE", time.GetGpsWeek(), time.GetGpsSeconds(), name,
                                           CProductsFileName::SITECODE_LOWER, CProductsFileName::RINEX_SUBHOURLY);
    CProductsFileName::getFileNameType(time, again);
    CGPSLeapSeconds& table = CGPSLeapSeconds::getInstance();
    CGPSTime gps(time);
    gps.AdjustGPS2UTC(table);
    gps.AdjustUTC2GPS(table);
    (void)gps.GPSWeekSec2GLODaySec(gps.GetGpsSeconds());
    time.RoundTo(30, SMjdTime::kUnitSecond);
    time.AddDays(1e9);
    require(time.GetMjdFractMilliseconds() >= 0.0 && time.GetMjdFractMilliseconds() < SMjdTime::kMillisecondsPerDay);
}

void exercise(CSatelliteTime& time) {
    time.MarkAsGPSTime(true);
    time.AdjustFromGPSToUTCTime();
    time.AdjustFromUTCToGPSTime();
    require(time.IsGPS());
    exercise(static_cast<CTimeBase&>(time));
}

void exercise(CSatelliteTimeAndLeapSeconds& time) {
    const int now = time.GetLeapSeconds(time.GetSatTimeRef());
    require(now == time.GetLeapSeconds() || now == time.GetLeapSecondsFuture());
    IGPSLeapSeconds::SGPSLeapSeconds set(time.GetLeapSeconds(), time.GetLeapSecondsFuture(),
                                         time.GetLeapSecondsFutureMjd(), 0);
    (void)CGPSLeapSeconds::ValidateGPSLeapSeconds(set, set, time.GetSatTimeRef(), false);
    UpdateLeapSecondsCheckFutureMjd(set, time.GetSatTimeRef(), true);
    require(!GetLeapSecondsMjd(time.GetLeapSecondsFutureMjd()).empty());
}

void exercise(CSatelliteTimeAndTickCount& time) {
    const CSatelliteTimeRelative relative(time.getAsAbsoluteTicks() + 1500);
    require(!relative.isSet() || relative.getAsRelativeTicks(time) == 1500);
    (void)relative.getAsMjd(time);
    time.addSeconds(time.getAsMjd());
    time.addSeconds(-1e300);
}

void exercise(CSatelliteTimeRelative& time) {
    const CSatelliteTimeAndTickCount reference(CSatelliteTime(2111, 388830.5), 5000);
    (void)time.getAsMjd(reference);
    require(time.isSet() || time.getAsRelativeTicks(reference) == 0);
}

void exercise(CHalvexUniqueSiteID& site) {
    std::uint32_t product = 0;
    require(site.isSSRBasedRTProductID() == site.getUniqueSSRBasedRTProductID(product));
    require(site.GetOutputFormat('/').find('/') != std::string::npos);
}

void exercise(CHalvexUniqueAntennaID& antenna) {
    std::uint32_t low = 0, high = 0;
    antenna.getUniqueAntennaID(low, high);
    require(antenna == CHalvexUniqueAntennaID(low, high));
}

void exercise(CPrnID& satellite) {
    const MDB::CPrnIdZ9 id = CHalvexStationObservation::getNewPrnTypeFromDeprecated(satellite);
    if (CPrnID::IsSystem(satellite.getPrnType())) {
        require(CHalvexStationObservation::getDepricatedPrnTypeFromNew(id) == satellite);
    }
    (void)id.isValid();
}

void exercise(CHalvexObservation& observation) {
    const bool valid = observation.IsDataValid();
    require(!valid || observation.IsTracked(0));
    for (unsigned slot = 0; slot <= CHalvexObservation::kSlots; ++slot) {
        double value = 0.0;
        require(observation.getPhase(slot, value, false) == observation.IsPhaseValid(slot));
        observation.SetAmbiguityValue(slot, value);
        observation.SetAmbiguitySearchAndSubLevel(slot, observation.GetCycleSlip(slot), 9);
        observation.SetAmbiguityFixState(slot, observation.GetAmbiguityFixState(slot));
        observation.SetAmbiguityChanges(slot, observation.GetObservationRejection(slot));
    }
    observation.AdjustForClockJumps(-2147483647 - 1);
    observation.Reset();
    require(!observation.IsDataValid() && observation.getSize() == CHalvexObservation::kSmallestSize);
}

void exercise(CHalvexStationObservation& station) {
    const std::int32_t count = station.GetCountObservation();
    require(station.GetCountObsL1L2() <= count && station.GetCountObservationSatSystem(0xFF) <= count);
    require(station.GetCountTrackedOnL1() + station.GetCountTrackedOnL1Glo() <= count);
    require(station.IsGlonassTracked() ==
            (station.GetCountTrackedOnL1Glo() > 0 || station.GetCountTrackedOnL2Glo() > 0));
    (void)station.GetSubclusterAmbiguityLevel();
    (void)station.GetSubclusterID();
    (void)station.getReceiverType();
    (void)station.getCoverageMode();

    station.SetPrnTypeFilter(CPrnID::PRN_GPS | CPrnID::PRN_GLONASS);
    std::int32_t walked = 0;
    CHalvexObservation* observation = nullptr;
    for (bool more = station.First(); more; more = station.Next()) walked += station.GetRef(observation) ? 1 : 0;
    require(walked == station.GetCountObservationSatSystem(station.GetPrnTypeFilter()));

    MDB::CLossOfLockDetector detector;
    station.StoreLossOfLock(detector);
    station.UpdateLossOfLock(detector);
    CContLockCount lockCounts;
    const SMjdTime now(station.getGPSWeek(), station.getGPSFraction() / 1000.0);
    for (const CHalvexObservation& each : station.observations()) {
        const auto satellite = CHalvexStationObservation::getNewPrnTypeFromDeprecated(each.getPrnID());
        lockCounts.getCount(CALN::eCALFREQUENCY_L1, satellite, false, now);
        require(station.GetObservation(each.getPrnID(), observation));
    }
    const bool any = station.ValidateObservations();
    require(any == (station.GetCountObservation() > 0) && station.GetCountObservation() <= count);
}

const ORBIT_COORD kSite{3771793.968, 140253.342, 5124304.349};
const CGeoCoord kSiteOnTheEllipsoid(0.94, 0.037, 73.0);

/// What the library's classes make of an orbit ends, and its numbers can be told from rubbish.
template <std::derived_from<IHalvexOrbitBase> Orbit>
void exercise(Orbit& orbit) {
    static CHalvexElevAziCalculator calculator(2, 2, 0, nullptr);
    const SMjdTime reference = orbit.GetRefTime();
    MDB::CPrnIdZ9 satellite;
    require(orbit.GetPrnID(satellite) == satellite.isValid());
    require(!orbit.IsValid(reference) || reference.IsSet());
    double azimuth = 0.0;
    double elevation = 0.0;
    if (orbit.GetAzimuthElevation(reference, kSite, azimuth, elevation) && satellite.isValid()) {
        require(!(elevation > 1.6 || elevation < -1.6) && !(azimuth < 0.0 || azimuth >= 6.2831853071795862));
    }
    std::string info;
    orbit.GetAdditionalInfo(info);
    if constexpr (std::derived_from<Orbit, IHalvexEphemerisBase>) {
        (void)calculator.ProcessNewEphemeris(orbit);
    } else {
        (void)calculator.ProcessNewAlmanac(orbit);
    }
    CALN::SCalElevationAzimuth table;
    if (calculator.GetElevAziData(kSiteOnTheEllipsoid, reference, table, true) &&
        table.getEleAzi(satellite.getCalSatID(), elevation, azimuth)) {
        require(elevation <= 1.6 && elevation >= -1.6 && azimuth >= 0.0 && azimuth < 6.2831853071795862);
    }
    if constexpr (std::same_as<Orbit, CHalvexEphemeris>) {
        (void)orbit.IsDataValid();
        (void)orbit.Equivalent(orbit);
    }
    if constexpr (std::same_as<Orbit, CHalvexEphemerisGLO>) (void)GenerateNavIdentValues(orbit);
}

/// There and back again: what comes back can be saved as it was.
template <class Object, class Record>
void convertBoth(bool (*fromRecord)(const Record&, Object&), bool (*toRecord)(const Object&, Record&), Record& record) {
    Object object;
    Object again;
    Record back;
    if (!fromRecord(record, object)) return;
    require(toRecord(object, back) && fromRecord(back, again) && saved(again) == saved(object));
}
void exercise(CALN::CALX_SAT_EPHEMERIS& r) {
    convertBoth<CHalvexEphemeris>(&convertGPSEphemeris, &convertGPSEphemeris, r);
}
void exercise(CALN::CALX_SAT_EPHEMERIS_GLONASS& r) {
    convertBoth<CHalvexEphemerisGLO>(&convertGLOEphemeris, &convertGLOEphemeris, r);
}
void exercise(CALN::CALX_SAT_ALMANAC& r) {
    convertBoth<CHalvexAlmanac>(&convertGPSAlmanac, &convertGPSAlmanac, r);
}
void exercise(CALN::CALX_SAT_ALMANAC_GLONASS& r) {
    convertBoth<CHalvexAlmanacGlonass>(&convertGLOAlmanac, &convertGLOAlmanac, r);
}
void exercise(CALN::CALX_IONO_UTC& r) {
    convertBoth<CHalvexIonoUtc>(&convertIonoUTC, &convertIonoUTC, r);
}
void exercise(CALN::CALX_CLOCK_GLONASS& r) {
    convertBoth<CHalvexTimeInfoGlonass>(&convertGLOClkInfo, &convertGLOClkInfo, r);
}
void exercise(CHalvexTimeInfoGlonass& time) {
    CALN::CALX_CLOCK_GLONASS record;
    require(!convertGLOClkInfo(time, record) || record.available == time.IsAvailable());
}
void exercise(CHalvexIonoUtc& parameters) {
    require(parameters.getValidMJDStart() < parameters.getValidMJDEnd());
    const int day = parameters.GetLeapSecondsMjd();
    parameters.SetLeapSecondsData(18, 19, day);
    require(parameters.GetLeapSecondsMjd() == day || parameters.GetLeapSecondsWeekNumber() > 0x7FFFFFFFU);
}

void exercise(CHalvexSatStatus& status) {
    require(status.IsFixed() == ((status.GetStatus() & 0x30) == 0x30));
}
void exercise(CHalvexSiteSatStatusKey& key) {
    require(CHalvexSiteSatStatusKey(key.GetSiteID(), key.GetClusterID()) == key && !(key < key));
}
void exercise(CHalvexSiteSatStatus& site) {
    const unsigned count = site.GetSatCount();
    unsigned nonEmpty = 0, fixed = 0, low = 0, mid = 0, high = 0;
    site.GetSatsAvailable(nonEmpty, fixed);
    site.GetSatsStatus(CPrnID::PRN_NONE, true, true, low, mid, high);
    require(fixed <= nonEmpty && nonEmpty <= count && low + mid + high <= nonEmpty && fixed <= high);
    require(site.IsFixed(-1) == site.IsFixed(0xFF) && site == site && site.Compare(site));
    require(site.DetectStateChanges(site) != CHalvexSiteSatStatus::kGained);
    (void)site.GetNotEmptySats(CPrnID::PRN_GPS);
    const CHalvexSmallSiteSatStatus small(site);
    require(small.Compare(small) && small.GetSatsStatus(CPrnID::PRN_NONE, true, low, mid, high) && high <= count);
    CHalvexSatStatus* each = nullptr;
    unsigned walked = 0;
    while (site.GetNextEnumByRef(each)) ++walked;
    require(walked == count);
    site.FilterSatsBelowElevMask(45.0);
    site.FilterPrnType(CPrnID::PRN_GLONASS | CPrnID::PRN_BEIDOU);
    require(site.GetSatCount() <= count);
}
void exercise(vecSatStatusT& list) {
    CHalvexSiteSatStatus site;
    for (const CHalvexSatStatus& each : list.getList()) site.SetStatus(each);
    exercise(site);
}
void exercise(CHalvexAuxilliaryMessage& message) {
    const int held = (message.getMsg1014T() != nullptr) + (message.getMsg1015T() != nullptr) +
                     (message.getMsg1016T() != nullptr) + (message.getMsg1037T() != nullptr) +
                     (message.getMsg1038T() != nullptr) + (message.getPhysRefMsg() != nullptr) +
                     (message.getFKPMsg() != nullptr);
    require(held == (message.getSize() != 0 ? 1 : 0));
    const CHalvexAuxilliaryMessage copy = message;
    require(message.getFKPMsg() != nullptr ? copy.getSize() == 0 : copy == message);
}

/// A class of which a part may stay when the rest is cut off: what is there then is whole.
template <class Record>
void testParts(Record record, Input input) {
    if (load(record, input)) require(record.getSize() <= input.size());
    const Bytes bytes = saved(record);
    Record again;
    require(bytes.empty() || (load(again, bytes) && saved(again) == bytes));
    exercise(record);
}

/// Loads the bytes into `record`, which holds something already.
template <class Record>
void test(Record record, Input input) {
    const Record before = record;
    if (!load(record, input)) {
        require(same(record, before));
        return;
    }
    const Bytes bytes = saved(record);
    if (!bytes.empty()) {
        const Bytes untouched(bytes.size() - 1, 0xA5);
        Bytes tooSmall = untouched;
        save(record, tooSmall);
        require(tooSmall == untouched);
    }
    Record again = before;
    require(load(again, bytes) && same(again, record) && saved(again) == bytes);
    exercise(record);
}

CHalvexObservation someObservation() {
    CHalvexObservation observation(CPrnID(7, CPrnID::PRN_GALILEO));
    observation.setPhase(0, 1.1e8, true);
    observation.setPseudorangeC(2, 2.2e7);
    observation.setIssueOfData(9);
    return observation;
}

CHalvexStationObservation someStation() {
    CHalvexStationObservation station(388830500, 2111);
    station.setSiteID(4711);
    station.setClockOffsetCode(1e-4);
    station.AddObservation(someObservation(), false);
    return station;
}

}  // namespace

/// The first byte chooses a class, the others are its saved form.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const halvex::fuzz::SilentLog silent;
    if (size == 0) return 0;
    const Input input(data + 1, size - 1);
    switch (data[0] % 37) {
        case 0:
            test(CTimeBase(2111, 388830.5), input);
            break;
        case 1:
            test(CGPSTime(2111, 388830.5), input);
            break;
        case 2:
            test(CSystemTime(2111, 388830.5), input);
            break;
        case 3:
            test(CSatelliteTime(2111, 388830.5), input);
            break;
        case 4:
            test(CSatelliteTimeAndLeapSeconds(18, 19, 60000), input);
            break;
        case 5:
            test(CSatelliteTimeAndTickCount(CSatelliteTime(2111, 388830.5), 77), input);
            break;
        case 6:
            test(CSatelliteTimeRelative(77), input);
            break;
        case 7:
            test(CHalvexUniqueSiteID(7, 8), input);
            break;
        case 8:
            test(CHalvexUniqueAntennaID(7, 8), input);
            break;
        case 9:
            test(CPrnID(7, CPrnID::PRN_QZSS), input);
            break;
        case 10:
            test(someObservation(), input);
            break;
        case 12:
            test(CHalvexEphemeris(), input);
            break;
        case 13:
            test(CHalvexEphemerisGLO(), input);
            break;
        case 14:
            test(CHalvexAlmanac(), input);
            break;
        case 15:
            test(CHalvexAlmanacGlonass(), input);
            break;
        case 16:
            test(CHalvexEphemerisGAL(), input);
            break;
        case 17:
            test(CHalvexEphemerisBDS(), input);
            break;
        case 18:
            test(CHalvexEphemerisQZSS(), input);
            break;
        case 19:
            test(CHalvexEphemerisNAVIC(), input);
            break;
        case 20:
            test(CHalvexAlmanacGal(), input);
            break;
        case 21:
            test(CHalvexAlmanacBds(), input);
            break;
        case 22:
            test(CHalvexAlmanacQzss(), input);
            break;
        case 23:
            test(CHalvexAlmanacNavic(), input);
            break;
        case 24:
            test(CHalvexIonoUtc(), input);
            break;
        case 25:
            test(CHalvexTimeInfoGlonass(), input);
            break;
        case 26:
            test(CALN::CALX_SAT_EPHEMERIS(), input);
            break;
        case 27:
            test(CALN::CALX_SAT_EPHEMERIS_GLONASS(), input);
            break;
        case 28:
            test(CALN::CALX_SAT_ALMANAC(), input);
            break;
        case 29:
            test(CALN::CALX_SAT_ALMANAC_GLONASS(), input);
            break;
        case 30:
            test(CALN::CALX_IONO_UTC(), input);
            break;
        case 31:
            test(CALN::CALX_CLOCK_GLONASS(), input);
            break;
        case 32:
            test(CHalvexSatStatus(CPrnID(7), 0x15, 45), input);
            break;
        case 33:
            test(CHalvexSiteSatStatusKey(CHalvexUniqueSiteID(7, 8), 9), input);
            break;
        case 34:
            testParts(CHalvexSiteSatStatus(), input);
            break;
        case 35:
            testParts(vecSatStatusT(), input);
            break;
        case 36:
            testParts(CHalvexAuxilliaryMessage(), input);
            break;
        default:
            test(someStation(), input);
            break;
    }
    return 0;
}
