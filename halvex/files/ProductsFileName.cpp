#include "halvex/files/ProductsFileName.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string_view>

#include "halvex/time/GPSTime.h"

namespace {

using TargetFileType = CProductsFileName::TargetFileType;

struct Compression {
    const char* extension;
    const char* name;
};
constexpr std::array<Compression, 4> kCompressions{
    {{"", "None"}, {".zip", "Zip"}, {".gz", "GZip"}, {".Z", "Unix compress"}}};

const Compression* compressionOf(TargetFileType type) {
    const auto number = static_cast<std::size_t>(type);  // a negative value becomes a large one
    return number < kCompressions.size() ? &kCompressions[number] : nullptr;
}

std::string lowerCase(std::string text) {
    for (char& c : text) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return text;
}

std::string upperCase(std::string text) {
    for (char& c : text) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return text;
}

std::string orUnknown(const char* siteCode) {
    return siteCode != nullptr && *siteCode != '\0' ? siteCode : "Unknown";
}

void copyCut(const std::string& text, char* buffer, std::size_t size) {
    if (buffer == nullptr || size == 0) return;
    std::memset(buffer, 0, size);
    text.copy(buffer, size - 1);
}

template <class... Values>
std::string print(const char* format, Values... values) {
    std::array<char, 160> text{};  // four characters of site, some numbers: never cut
    std::snprintf(text.data(), text.size(), format, values...);
    return text.data();
}

std::string rinexLongName(const char* siteCode, const RnxLongFileNameParam& parameters, int week, double seconds) {
    const CGPSTime start(week, seconds);
    const SMjdCalendar date = start.GetCalendar();
    return print("%.4s%u%u%.3s_%c_%4.4d%3.3d%2.2d%2.2d_%.3s", upperCase(orUnknown(siteCode)).c_str(),
                 parameters.getMonumentNumber(), parameters.getReceiverNumber(),
                 parameters.getSiteCountryCode().c_str(), parameters.getDataSource(), date.year, start.GetDayOfYear(),
                 date.hour, date.minute, parameters.getProductLength().c_str());
}

std::string rinexShortName(const char* siteCode, int week, double seconds,
                           CProductsFileName::RinexSiteCodeType siteCodeType,
                           CProductsFileName::RinexFileNameType fileNameType) {
    std::string site = orUnknown(siteCode);
    if (siteCodeType == CProductsFileName::SITECODE_LOWER) site = lowerCase(site);
    if (siteCodeType == CProductsFileName::SITECODE_UPPER) site = upperCase(site);
    const CGPSTime start(week, seconds);
    const SMjdCalendar date = start.GetCalendar();
    const std::string minutes =
        fileNameType == CProductsFileName::RINEX_SUBHOURLY ? print("%2.2d", date.minute) : std::string();
    const int session = fileNameType == CProductsFileName::RINEX_DAILY ? '0' : 'a' + date.hour;
    return print("%.4s%3.3d%c%s.%2.2d", site.c_str(), start.GetDayOfYear(), session, minutes.c_str(), date.year % 100);
}

/// The four parts of a file name; put together again they give it back, unless a part is longer than it may be.
struct PathParts {
    std::string drive, directory, stem, extension;

    explicit PathParts(std::string_view path) {
        if (path.size() >= 2 && path[1] == ':') {
            drive = path.substr(0, 2);
            path.remove_prefix(2);
        }
        const std::size_t stemAt = path.find_last_of("/\\") + 1;  // 0 when there is no folder
        directory = path.substr(0, std::min(stemAt, kLongest));
        path.remove_prefix(stemAt);
        const std::size_t dot = std::min(path.rfind('.'), path.size());
        stem = path.substr(0, std::min(dot, kLongest));
        extension = path.substr(dot, kLongest);
    }

private:
    static constexpr std::size_t kLongest = 256;
};

/// What differs between RINEX files and the other products.
struct ChangeRules {
    bool rinex = false;
    bool hatanaka = false;
    bool keepNumber = false;
};

/// The letter or letters that a short name takes over from the extension that it loses.
std::string takenOver(const std::string& extension, TargetFileType type, const ChangeRules& rules) {
    std::string taken;
    if (rules.keepNumber && extension.size() == 4) taken = extension.substr(2);
    if (type != CProductsFileName::TARGET_GZIP && type != CProductsFileName::TARGET_UNIX_COMPRESS) return taken;
    if (extension == ".log") return taken + 'l';
    if (!rules.rinex || extension.empty() || extension.size() > 4) return taken;
    return taken + (extension == ".htm" ? 'h' : extension.back());
}

/// Empty for an empty name or an unknown compression.
std::optional<std::string> changedName(const char* fileName, TargetFileType type, bool longName, bool dropPath,
                                       const ChangeRules& rules) {
    const Compression* compression = compressionOf(type);
    if (fileName == nullptr || *fileName == '\0' || compression == nullptr) return std::nullopt;
    PathParts parts(fileName);
    if (type != CProductsFileName::TARGET_NONE) {
        if (longName) {
            if (type == CProductsFileName::TARGET_ZIP) parts.extension = rules.hatanaka ? ".crx" : ".rnx";
            parts.extension += compression->extension;
        } else {
            parts.stem += takenOver(parts.extension, type, rules);
            parts.extension = compression->extension;
        }
    }
    const std::string folder = dropPath ? std::string() : parts.drive + parts.directory;
    return folder + parts.stem + parts.extension;
}

int give(const std::optional<std::string>& text, char* buffer, std::size_t size) {
    copyCut(text.value_or(""), buffer, size);
    return text ? 1 : 0;
}

int give(const std::optional<std::string>& text, CString& to) {
    to = CString(text.value_or(""));
    return text ? 1 : 0;
}

int createLogName(const char* prefix, const CTimeBase& time, CString& name) {
    const SMjdCalendar date = time.GetCalendar();
    name = CString(prefix) + print("%04d%02d%02d_%02d%02d%02d.log", date.year, date.month, date.day, date.hour,
                                   date.minute, static_cast<int>(date.second))
                                 .c_str();
    return 1;
}

}  // namespace

RnxLongFileNameParam::RnxLongFileNameParam(const std::string& siteCountryCode, std::uint32_t monumentNumber,
                                           std::uint32_t receiverNumber, const std::string& productLength,
                                           char dataSource)
    : m_siteCountryCode(upperCase(siteCountryCode)),
      m_monumentNumber(monumentNumber),
      m_receiverNumber(receiverNumber),
      m_productLength(upperCase(productLength)),
      m_dataSource(dataSource) {}

void RnxLongFileNameParam::setSiteCountryCode(const std::string& code) {
    m_siteCountryCode = upperCase(code);
}

void RnxLongFileNameParam::setProductLength(const std::string& length) {
    m_productLength = upperCase(length);
}

bool CProductsFileName::CreateRinexLongFileName(const char* siteCode, const RnxLongFileNameParam& parameters,
                                                int gpsWeek, double secondsOfWeek, char* name, std::size_t size) {
    copyCut(rinexLongName(siteCode, parameters, gpsWeek, secondsOfWeek), name, size);
    return true;
}

bool CProductsFileName::CreateRinexLongFileName(const char* siteCode, const RnxLongFileNameParam& parameters,
                                                int gpsWeek, double secondsOfWeek, CString& name) {
    name = CString(rinexLongName(siteCode, parameters, gpsWeek, secondsOfWeek));
    return true;
}

bool CProductsFileName::CreateRinexLongFileName(const char* siteCode, const RnxLongFileNameParam& parameters,
                                                int gpsWeek, double secondsOfWeek, std::string& name) {
    name = rinexLongName(siteCode, parameters, gpsWeek, secondsOfWeek);
    return true;
}

int CProductsFileName::CreateRinexFileName(const char* siteCode, int gpsWeek, double secondsOfWeek, char* name,
                                           std::size_t size, RinexSiteCodeType siteCodeType,
                                           RinexFileNameType fileNameType) {
    return give(rinexShortName(siteCode, gpsWeek, secondsOfWeek, siteCodeType, fileNameType), name, size);
}

int CProductsFileName::CreateRinexFileName(const char* siteCode, int gpsWeek, double secondsOfWeek, CString& name,
                                           RinexSiteCodeType siteCodeType, RinexFileNameType fileNameType) {
    return give(rinexShortName(siteCode, gpsWeek, secondsOfWeek, siteCodeType, fileNameType), name);
}

int CProductsFileName::CreateRinexFileName(const char* siteCode, int gpsWeek, double secondsOfWeek, std::string& name,
                                           RinexSiteCodeType siteCodeType, RinexFileNameType fileNameType) {
    name = rinexShortName(siteCode, gpsWeek, secondsOfWeek, siteCodeType, fileNameType);
    return 1;
}

CProductsFileName::RinexFileNameType CProductsFileName::getFileNameType(const SMjdTime& start, const SMjdTime& end) {
    constexpr std::int64_t kHalfHour = 1800000;  // [ms]
    constexpr std::int64_t kHalfDay = 43200000;
    const double span = end.GetDifferenceInSeconds(start);
    const auto first = static_cast<std::int64_t>(start.GetGpsWeekMilliseconds());
    const auto last = static_cast<std::int64_t>(end.GetGpsWeekMilliseconds());
    if (span < 1800.0 && first / kHalfHour == last / kHalfHour) return RINEX_SUBHOURLY;
    if (span >= 43200.0) return RINEX_DAILY;
    return first / kHalfDay != last / kHalfDay ? RINEX_DAILY : RINEX_HOURLY;
}

int CProductsFileName::ChangeRinexFileName(const char* fileName, TargetFileType type, bool longName, char* name,
                                           std::size_t size, bool hatanaka, bool dropPath) {
    return give(changedName(fileName, type, longName, dropPath, {.rinex = true, .hatanaka = hatanaka}), name, size);
}

int CProductsFileName::ChangeRinexFileName(const char* fileName, TargetFileType type, bool longName, CString& name,
                                           bool hatanaka, bool dropPath) {
    return give(changedName(fileName, type, longName, dropPath, {.rinex = true, .hatanaka = hatanaka}), name);
}

int CProductsFileName::ChangeMdbFileName(const char* fileName, TargetFileType type, bool longName, char* name,
                                         std::size_t size, bool keepNumber, bool dropPath) {
    return give(changedName(fileName, type, longName, dropPath, {.keepNumber = keepNumber}), name, size);
}

int CProductsFileName::ChangeMdbFileName(const char* fileName, TargetFileType type, bool longName, CString& name,
                                         bool keepNumber, bool dropPath) {
    return give(changedName(fileName, type, longName, dropPath, {.keepNumber = keepNumber}), name);
}

int CProductsFileName::ChangeQCFileName(const char* fileName, TargetFileType type, bool longName, char* name,
                                        std::size_t size, bool keepNumber, bool dropPath) {
    return ChangeMdbFileName(fileName, type, longName, name, size, keepNumber, dropPath);
}

int CProductsFileName::ChangeQCFileName(const char* fileName, TargetFileType type, bool longName, CString& name,
                                        bool keepNumber, bool dropPath) {
    return ChangeMdbFileName(fileName, type, longName, name, keepNumber, dropPath);
}

int CProductsFileName::ChangeEventLogFileName(const char* fileName, TargetFileType type, bool longName, char* name,
                                              std::size_t size, bool keepNumber, bool dropPath) {
    return ChangeMdbFileName(fileName, type, longName, name, size, keepNumber, dropPath);
}

int CProductsFileName::ChangeEventLogFileName(const char* fileName, TargetFileType type, bool longName, CString& name,
                                              bool keepNumber, bool dropPath) {
    return ChangeMdbFileName(fileName, type, longName, name, keepNumber, dropPath);
}

int CProductsFileName::CreateEventLogFileName(const char* prefix, const CTimeBase& time, CString& name) {
    return createLogName(prefix, time, name);
}

int CProductsFileName::CreateQCFileName(const char* prefix, const CTimeBase& time, CString& name) {
    return createLogName(prefix, time, name);
}

int CProductsFileName::GetFileExtension(TargetFileType type, CString& extension) {
    const Compression* compression = compressionOf(type);
    extension = compression != nullptr ? compression->extension : "";
    return compression != nullptr ? 1 : 0;
}

int CProductsFileName::GetCompressionTypeNames(TargetFileType type, CString& name) {
    const Compression* compression = compressionOf(type);
    name = compression != nullptr ? compression->name : "";
    return compression != nullptr ? 1 : 0;
}

namespace {

// 27 April 2010, 10:36:00, day 117 of the year.
constexpr int kExampleWeek = 1581;
constexpr double kExampleSeconds = 210960.0;

std::string shortExample(CProductsFileName::RinexFileNameType type) {
    return rinexShortName("Site", kExampleWeek, kExampleSeconds, CProductsFileName::SITECODE_LOWER, type);
}

}  // namespace

int CProductsFileName::Test(CString& name) {
    name = CString(shortExample(RINEX_HOURLY));
    return name == "site117k.10" ? 1 : 0;
}

int CProductsFileName::Test(unsigned int example) {
    switch (example) {
        case 0: {
            const RnxLongFileNameParam parameters("deu", 0, 1, "01h", 'R');
            const std::string name = rinexLongName("Site", parameters, kExampleWeek, kExampleSeconds);
            return name == "SITE01DEU_R_20101171036_01H" ? 1 : 0;
        }
        case 1:
            return shortExample(RINEX_HOURLY) == "site117k.10" ? 1 : 0;
        case 2:
            return shortExample(RINEX_DAILY) == "site1170.10" ? 1 : 0;
        case 3:
            return shortExample(RINEX_SUBHOURLY) == "site117k36.10" ? 1 : 0;
        default:
            return 0;
    }
}
