#include "tools/halvex/sets/SetNames.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>

#include "halvex/files/ProductsFileName.h"
#include "tools/halvex/Tool.h"

namespace halvex::tool {
namespace {

bool isAlphanumeric(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0;
}
bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
bool isLetter(char c) {
    return isAlphanumeric(c) && !isDigit(c);
}

std::string upper(std::string text) {
    for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

/// "ESBC00DNK": four characters, two digits, three letters.
bool isLongSite(std::string_view text) {
    return text.size() == 9 && std::all_of(text.begin(), text.begin() + 4, isAlphanumeric) && isDigit(text[4]) &&
           isDigit(text[5]) && std::all_of(text.begin() + 6, text.end(), isLetter);
}

StationName fromLongSite(std::string_view text) {
    return {std::string(text.substr(0, 4)), static_cast<unsigned>(text[4] - '0'), static_cast<unsigned>(text[5] - '0'),
            std::string(text.substr(6))};
}

/// The site in the name of a file: "ESBC00DNK_R_..." or "ssssdddf.yyt". Empty when it is neither.
std::string siteOfFileName(const std::string& fileName) {
    const std::string name = std::filesystem::path(fileName).filename().string();
    if (name.size() > 10 && name[9] == '_' && isLongSite(std::string_view(name).substr(0, 9))) return name.substr(0, 9);
    const bool isShort = name.size() >= 12 && name[8] == '.' && isDigit(name[4]) && isDigit(name[5]) &&
                         isDigit(name[6]) && isDigit(name[9]) && isDigit(name[10]) && isLetter(name[11]) &&
                         std::all_of(name.begin(), name.begin() + 4, isAlphanumeric);
    return isShort ? name.substr(0, 4) : "";
}

/// Sampling part of a long name. RINEX 4.01, table A1: "30S", "01M", "10Z" for 10 Hz, "00U" when not known.
std::string sampling(double interval) {
    if (!(interval > 0.0) || interval >= 86400.0) return "00U";
    if (interval < 1.0) return fmt::format("{:02}Z", std::min(99L, std::lround(1.0 / interval)));
    const long seconds = std::lround(interval);
    if (seconds < 60) return fmt::format("{:02}S", seconds);
    return seconds < 3600 ? fmt::format("{:02}M", seconds / 60) : fmt::format("{:02}H", seconds / 3600);
}

}  // namespace

SMjdTime spanStart(const SMjdTime& time, Span span) {
    const double length = span == Span::daily    ? SMjdTime::kMillisecondsPerDay
                          : span == Span::hourly ? 3600000.0
                                                 : 900000.0;
    return SMjdTime::FromDayAndMilliseconds(time.GetMjdDay(),
                                            std::floor(time.GetMjdFractMilliseconds() / length) * length);
}

StationName stationName(const std::string& given, const std::string& fileName, const std::string& marker) {
    if (isLongSite(given)) return fromLongSite(upper(given));
    if (!given.empty()) {
        constexpr std::size_t kLongest = 4;
        if (given.size() > kLongest || !std::all_of(given.begin(), given.end(), isAlphanumeric)) {
            throw Failure("'" + given + "' is no site code: write up to 4 letters and digits, or 9 as ESBC00DNK",
                          Failure::kWrongUsage);
        }
        return {upper(given)};
    }
    const std::string fromFile = siteOfFileName(fileName);
    if (isLongSite(fromFile)) return fromLongSite(upper(fromFile));
    std::string fromMarker;
    std::copy_if(marker.begin(), marker.end(), std::back_inserter(fromMarker), isAlphanumeric);
    if (isLongSite(fromMarker)) return fromLongSite(upper(fromMarker));
    if (!fromFile.empty()) return {upper(fromFile)};
    return {upper(fromMarker)};
}

std::string setName(const StationName& station, const SMjdTime& start, Span span,
                    const rinex::ObservationHeader& header) {
    const char* period = span == Span::daily ? "01D" : span == Span::hourly ? "01H" : "15M";
    RnxLongFileNameParam parameters(station.country, station.monument, station.receiver, period, 'R');
    std::string name;
    CProductsFileName::CreateRinexLongFileName(station.site.c_str(), parameters, start.GetGpsWeek(),
                                               start.GetGpsSeconds(), name);
    return fmt::format("{}_{}_{}O", name, sampling(header.interval), header.fileSystem);
}

std::string setBase(const std::string& fileName) {
    const auto exists = [](const std::string& name) {
        std::error_code ignored;
        return std::filesystem::is_regular_file(name, ignored);
    };
    if (exists(fileName + "t")) return fileName;
    const std::string shorter = fileName.substr(0, fileName.size() - (fileName.empty() ? 0 : 1));
    const char last = fileName.empty() ? ' ' : fileName.back();
    return (last == 't' || last == 'i' || last == 'h') && exists(shorter + "t") ? shorter : fileName;
}

}  // namespace halvex::tool
