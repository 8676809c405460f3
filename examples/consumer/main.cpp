// A reference station's minute, from epoch to archive to replay, with the installed library alone. Prints what it did;
// the exit status is not 0 when something does not match.

#include <halvex/HalvexRTKBasics.h>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

namespace {

constexpr int kWeek = 2111;          // 21 to 27 June 2020
constexpr double kStart = 388830.0;  // seconds of that week: Thursday 12:00:30
constexpr double kReplayFrom = kStart + 30.0;
constexpr int kEpochs = 60;

bool allMatched = true;

void check(bool holds, const char* what) {
    if (holds) return;
    std::cerr << "does not match: " << what << '\n';
    allMatched = false;
}

/// The archive stamps its blocks with the clock's time: this one shows the time of the data.
class ArchiveClock final : public os::Clock {
public:
    void set(const CTimeBase& now) { now.ToSystemTime(m_now); }
    [[nodiscard]] SYSTEMTIME utcTime() const override { return m_now; }
    [[nodiscard]] SYSTEMTIME localTime() const override { return m_now; }
    [[nodiscard]] std::uint64_t tickCount() const override { return 1; }

private:
    SYSTEMTIME m_now;
};

/// An epoch of three satellites of three systems, on two slots each.
CHalvexStationObservation epochAt(double secondsOfWeek) {
    CHalvexStationObservation epoch(static_cast<unsigned>(std::lround(secondsOfWeek * 1000.0)), kWeek);
    epoch.setSiteID(17);
    for (const CPrnID& satellite :
         {CPrnID(5, CPrnID::PRN_GPS), CPrnID(9, CPrnID::PRN_GLONASS), CPrnID(11, CPrnID::PRN_GALILEO)}) {
        CHalvexObservation* observation = nullptr;
        epoch.CreateObservation(satellite, observation);
        const double range = 2.1e7 + 1e5 * satellite.getPrn() + 100.0 * (secondsOfWeek - kStart);
        for (const unsigned slot : {0U, 1U}) {
            observation->setPseudorangeC(slot, range + slot);
            observation->setPhase(slot, range, false);
            observation->setCNO(slot, 45.25F);
        }
    }
    return epoch;
}

void archive(const std::string& base) {
    ArchiveClock clock;
    const os::ScopedClock installed(clock);
    CIndexedWriteFile writer;
    check(writer.Open(base.c_str(), true), "the archive opens");
    std::vector<unsigned char> bytes;
    for (int second = 0; second < kEpochs; ++second) {
        const CHalvexStationObservation epoch = epochAt(kStart + second);
        bytes.resize(epoch.getSize());
        epoch.saveData(bytes.data(), bytes.size());
        clock.set(CGPSTime(kWeek, kStart + second));
        writer.AddBlock(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    }
    writer.Close();
    check(!writer.GetLastError(), "the archive is written");
}

/// Compares each replayed epoch with the one that was archived.
class Comparison final : public IIndexedReadNotify {
public:
    void OnIndexedBlock(const unsigned char* block, std::uint64_t size) override {
        check(m_epoch.loadData(block, size), "a block is an epoch");
        check(m_epoch == epochAt(kReplayFrom + count), "an epoch comes back as it was");
        ++count;
    }
    void OnIndexedReadEnd() override { ended = true; }

    int count = 0;
    bool ended = false;

private:
    CHalvexStationObservation m_epoch;
};

void replay(const std::string& base) {
    Comparison comparison;
    CIndexedReadFile reader(&comparison);
    check(reader.Open((base + "t").c_str()), "the replay opens");
    check(reader.Read(kWeek, static_cast<std::uint32_t>(kReplayFrom * 1000.0)), "the replay runs");
    check(comparison.ended && comparison.count == kEpochs / 2, "half of the minute is replayed");
    std::cout << "replayed " << comparison.count << " of " << kEpochs << " epochs, "
              << epochAt(kStart).GetCountObservation() << " satellites each\n";
}

void convertTime() {
    InitCentralLeapSeconds();
    CGPSTime time(kWeek, kStart);
    const CString gps = time.Format("%Y-%m-%d %H:%M:%S");
    check(time.AdjustGPS2UTC(CGPSLeapSeconds::getInstance()), "GPS time becomes UTC");
    const CString utc = time.Format("%H:%M:%S");
    check(gps == "2020-06-25 12:00:30" && utc == "12:00:12", "UTC is 18 s behind GPS time");
    std::cout << "GPS " << gps.str() << " is UTC " << utc.str() << '\n';
    ShutdownCentralLeapSeconds();
}

void nameProducts() {
    std::string longName;
    CProductsFileName::CreateRinexLongFileName("site", RnxLongFileNameParam("deu", 0, 0, "01h", 'R'), kWeek, kStart,
                                               longName);
    longName += "_30S_MO.rnx";
    CString packed;
    CProductsFileName::ChangeRinexFileName(longName.c_str(), CProductsFileName::TARGET_GZIP, true, packed);
    CString shortName;
    CProductsFileName::CreateRinexFileName("site", kWeek, kStart, shortName, CProductsFileName::SITECODE_LOWER,
                                           CProductsFileName::RINEX_HOURLY);
    shortName += "o";
    check(packed == "SITE00DEU_R_20201771200_01H_30S_MO.rnx.gz" && shortName == "site177m.20o", "products are named");
    std::cout << packed.str() << "\n" << shortName.str() << '\n';
}

}  // namespace

int main() {
    std::string folder = (std::filesystem::temp_directory_path() / "halvex-consumer-XXXXXX").string();
    if (::mkdtemp(folder.data()) == nullptr) {
        std::cerr << "no temporary folder\n";
        return EXIT_FAILURE;
    }
    const std::string base = folder + "/SITE";
    archive(base);
    replay(base);
    std::filesystem::remove_all(folder);

    convertTime();
    nameProducts();
    std::cout << "library version " << halvex::kVersion << '\n';
    return allMatched ? EXIT_SUCCESS : EXIT_FAILURE;
}
