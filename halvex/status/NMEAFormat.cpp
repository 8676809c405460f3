#include "halvex/status/NMEAFormat.h"

#include <GeographicLib/TransverseMercator.hpp>
#include <GeographicLib/UTMUPS.hpp>
#include <array>
#include <cmath>
#include <cstring>
#include <exception>
#include <limits>
#include <string_view>

#include "halvex/status/SentenceText.h"

using halvex::SentenceText;

namespace {

constexpr double kDegreesPerRadian = 57.29577951308232;
constexpr std::size_t kBodyStart = 7;  // behind "$ttiii,"
constexpr std::size_t kFrameEnd = 5;   // "*hh\r\n"
constexpr std::size_t kLongestBody = CNMEAFormat::kLongestSentence - kBodyStart - kFrameEnd - 1;

/// A sentence is put together here, so that one that fails leaves the caller's buffer alone.
using Scratch = std::array<char, CNMEAFormat::kLongestSentence>;

constexpr std::size_t kLongestAngle = 32;

struct Angle {
    std::int16_t degrees = 0;
    double minutes = 0.0;
    bool positive = false;
};

bool split(double radians, Angle& angle) {
    const double magnitude = std::abs(radians * kDegreesPerRadian);
    if (!(magnitude < std::numeric_limits<std::int16_t>::max() + 1.0)) return false;
    const double whole = std::trunc(magnitude);
    angle = {static_cast<std::int16_t>(whole), (magnitude - whole) * 60.0, radians > 0.0};
    return true;
}

void putAngle(SentenceText& text, double radians, int degreeDigits, std::string_view hemispheres) {
    constexpr int kWidth = 10;
    constexpr int kDecimals = 7;
    Angle angle;
    if (!split(radians, angle)) return text.fail();
    text.number(static_cast<std::uint32_t>(angle.degrees), degreeDigits);
    text.fixed<kDecimals>(angle.minutes, kWidth);
    if (hemispheres.empty()) return;
    text.put(',');
    text.put(hemispheres[angle.positive ? 0 : 1]);
}

void putLatitude(SentenceText& text, double radians) {
    putAngle(text, radians, 2, "NS");
}
void putLongitude(SentenceText& text, double radians) {
    putAngle(text, radians, 3, "EW");
}

/// The text of one angle with its NUL.
bool angleText(double radians, bool signedForm, int degreeDigits, std::string_view hemispheres, char* out) {
    if (out == nullptr) return false;
    std::array<char, kLongestAngle> scratch;
    SentenceText text(scratch.data(), scratch.size() - 1);
    if (signedForm && radians < 0.0) text.put('-');
    putAngle(text, radians, degreeDigits, signedForm ? "" : hemispheres);
    if (!text.ok()) return false;
    scratch[text.size()] = '\0';
    std::memcpy(out, scratch.data(), text.size() + 1);
    return true;
}

void putTimeOfDay(SentenceText& text, const SMjdCalendar& calendar) {
    const auto seconds = static_cast<std::uint32_t>(calendar.second);
    text.twoDigits(static_cast<std::uint32_t>(calendar.hour));
    text.twoDigits(static_cast<std::uint32_t>(calendar.minute));
    text.twoDigits(seconds);
    text.put('.');
    text.twoDigits(static_cast<std::uint32_t>((calendar.second - seconds) * 100.0 + 0.5));
}

void putDate(SentenceText& text, const SMjdCalendar& calendar) {
    text.twoDigits(static_cast<std::uint32_t>(calendar.month));
    text.twoDigits(static_cast<std::uint32_t>(calendar.day));
    text.twoDigits(static_cast<std::uint32_t>((calendar.year % 100 + 100) % 100));
}

void putTimeAndDate(SentenceText& text, const CGPSTime& time) {
    const SMjdCalendar calendar = time.GetCalendar();
    putTimeOfDay(text, calendar);
    text.put(',');
    putDate(text, calendar);
}

void putPosition(SentenceText& text, double latitude, double longitude, std::int32_t quality) {
    if (quality == 0) return text.put(",,,,,0");
    text.put(',');
    putLatitude(text, latitude);
    text.put(',');
    putLongitude(text, longitude);
    text.put(',');
    text.number(static_cast<std::uint32_t>(quality), 1);
}

template <int kDecimals>
void putFixed(SentenceText& text, double value) {
    text.put(',');
    text.fixed<kDecimals>(value);
}

void putMetres(SentenceText& text, double value) {
    putFixed<3>(text, value);
    text.put(",M");
}

void putAccuracy(SentenceText& text, std::int32_t quality, std::uint16_t satellites, float coordinateQuality,
                 double height) {
    if (quality == 0) return text.put(",,,,");
    text.put(',');
    text.twoDigits(satellites);
    putFixed<4>(text, coordinateQuality);
    putMetres(text, height);
}

std::int32_t replaced(std::int32_t quality, std::int32_t what, std::int32_t by) {
    return quality == what ? by : quality;
}

char hexDigit(unsigned value) {
    return "0123456789ABCDEF"[value & 0xFU];
}

void checksumOf(const char* first, const char* last, char* checksum) {
    std::uint64_t eight = 0;  // bytes at a time, their sums side by side
    for (; last - first >= 7; first += 8) {
        std::uint64_t next = 0;
        std::memcpy(&next, first, 8);
        eight ^= next;
    }
    eight ^= eight >> 32U;
    eight ^= eight >> 16U;
    auto sum = static_cast<unsigned>((eight ^ (eight >> 8U)) & 0xFFU);
    for (; first <= last; ++first) sum ^= static_cast<unsigned char>(*first);
    checksum[0] = hexDigit(sum >> 4U);
    checksum[1] = hexDigit(sum);
}

bool startsSentence(const char* talker, const char* id) {
    return talker != nullptr && id != nullptr && std::strlen(talker) <= 2 && std::strlen(id) <= 3;
}

/// The frame around a body that stands where it belongs; the total length.
std::uint16_t frame(const char* talker, const char* id, std::size_t bodyLength, char* buffer) {
    const auto putRight = [](char* end, std::string_view text, std::size_t width) {
        std::memset(end - width, ' ', width - text.size());
        text.copy(end - text.size(), text.size());
    };
    buffer[0] = '$';
    putRight(buffer + 3, talker, 2);
    putRight(buffer + 6, id, 3);
    buffer[6] = ',';
    char* at = buffer + kBodyStart + bodyLength;
    at[0] = '*';
    checksumOf(buffer + 1, at - 1, at + 1);
    std::memcpy(at + 3, "\r\n", 3);
    return static_cast<std::uint16_t>(kBodyStart + bodyLength + kFrameEnd);
}

/// Puts the sentence together whose body `putBody` writes, and hands it over when that went well.
template <class PutBody>
bool writeSentence(const char* id, const char* talker, char* buffer, std::uint16_t& length, PutBody putBody) {
    if (buffer == nullptr || !startsSentence(talker, id)) return false;
    Scratch scratch;
    SentenceText body(scratch.data() + kBodyStart, kLongestBody);
    putBody(body);
    if (!body.ok()) return false;
    length = frame(talker, id, body.size(), scratch.data());
    std::memcpy(buffer, scratch.data(), length + 1U);
    return true;
}

/// The form for strings of a sentence, from the one for buffers.
template <class Format>
bool intoString(CString& text, Format format) {
    Scratch buffer{};
    std::uint16_t length = 0;
    if (!format("GP", buffer.data(), length)) return false;
    text = CString(std::string_view(buffer.data(), length));
    return true;
}

}  // namespace

CNMEAFormat::~CNMEAFormat() = default;

double CNMEAFormat::MATH_SQRT(double x) {
    return std::sqrt(x);
}

bool CNMEAFormat::ConvertToGGQ(const CGPSTime& time, double latitude, double longitude, double height,
                               double secondHeight, std::int32_t quality, float coordinateQuality,
                               std::uint16_t satellites, const char* talker, char* buffer,
                               std::uint16_t& length) const {
    quality = replaced(quality, 4, 3);
    return writeSentence("GGQ", talker, buffer, length, [&](SentenceText& text) {
        putTimeAndDate(text, time);
        putPosition(text, latitude, longitude, quality);
        putAccuracy(text, quality, satellites, coordinateQuality, height - secondHeight);
    });
}

bool CNMEAFormat::ConvertToGGQ(const CGPSTime& time, double latitude, double longitude, double height,
                               double secondHeight, std::int32_t quality, float coordinateQuality,
                               std::uint16_t satellites, CString& text) const {
    return intoString(text, [&](const char* talker, char* buffer, std::uint16_t& length) {
        return ConvertToGGQ(time, latitude, longitude, height, secondHeight, quality, coordinateQuality, satellites,
                            talker, buffer, length);
    });
}

bool CNMEAFormat::convertToGGA(const CGPSTime& time, double latitude, double longitude, double height,
                               std::int32_t quality, std::uint16_t satellites, const char* talker, char* buffer,
                               std::uint16_t& length, double geoidSeparation, double hdop, double ageOfCorrections,
                               std::uint32_t referenceStationId) const {
    quality = replaced(quality, 3, 4);
    return writeSentence("GGA", talker, buffer, length, [&](SentenceText& text) {
        putTimeOfDay(text, time.GetCalendar());
        putPosition(text, latitude, longitude, quality);
        if (quality != 0) {
            text.put(',');
            text.twoDigits(satellites);
            hdop >= 0.0 ? putFixed<4>(text, hdop) : text.put(",,");
            putMetres(text, height - geoidSeparation);
            putMetres(text, geoidSeparation);
        } else {
            text.put(",,,,,,");
        }
        ageOfCorrections >= 0.0 ? putFixed<2>(text, ageOfCorrections) : text.put(',');
        text.put(',');
        text.signedNumber(static_cast<std::int32_t>(referenceStationId), 4);
    });
}

bool CNMEAFormat::convertToGGA(const CGPSTime& time, double latitude, double longitude, double height,
                               std::int32_t quality, std::uint16_t satellites, CString& text, double geoidSeparation,
                               double hdop, double ageOfCorrections, std::uint32_t referenceStationId) const {
    return intoString(text, [&](const char* talker, char* buffer, std::uint16_t& length) {
        return convertToGGA(time, latitude, longitude, height, quality, satellites, talker, buffer, length,
                            geoidSeparation, hdop, ageOfCorrections, referenceStationId);
    });
}

bool CNMEAFormat::convertToLLQ(const CGPSTime& time, double latitude, double longitude, double height,
                               std::int32_t quality, float coordinateQuality, std::uint16_t satellites,
                               const char* talker, char* buffer, std::uint16_t& length, double secondHeight,
                               std::int32_t falseEasting, std::int32_t falseNorthing, std::int32_t zone,
                               std::int32_t hemisphere) const {
    quality = replaced(quality, 4, 3);
    return writeSentence("LLQ", talker, buffer, length, [&](SentenceText& text) {
        putTimeAndDate(text, time);
        if (quality != 0) {
            double easting = 0.0;
            double northing = 0.0;
            if (!GetUTM(latitude, longitude, falseEasting, falseNorthing, zone, hemisphere, easting, northing)) {
                return text.fail();
            }
            putMetres(text, easting);
            putMetres(text, northing);
            text.put(',');
            text.number(static_cast<std::uint32_t>(quality), 1);
        } else {
            text.put(",,,,,0");
        }
        putAccuracy(text, quality, satellites, coordinateQuality, height - secondHeight);
    });
}

bool CNMEAFormat::convertToLLQ(const CGPSTime& time, double latitude, double longitude, double height,
                               std::int32_t quality, float coordinateQuality, std::uint16_t satellites, CString& text,
                               double secondHeight, std::int32_t falseEasting, std::int32_t falseNorthing,
                               std::int32_t zone, std::int32_t hemisphere) const {
    return intoString(text, [&](const char* talker, char* buffer, std::uint16_t& length) {
        return convertToLLQ(time, latitude, longitude, height, quality, coordinateQuality, satellites, talker, buffer,
                            length, secondHeight, falseEasting, falseNorthing, zone, hemisphere);
    });
}

bool CNMEAFormat::convertToTavroProp(const CGPSTime& time, double latitude, double longitude, double height,
                                     std::int32_t quality, float coordinateQuality, std::uint16_t satellites,
                                     const char* talker, char* buffer, std::uint16_t& length, double secondHeight,
                                     ADD_POST_RESULTS& results, float figure) const {
    quality = replaced(quality, 4, 3);
    return writeSentence("LMM", talker, buffer, length, [&](SentenceText& text) {
        putTimeAndDate(text, time);
        putPosition(text, latitude, longitude, quality);
        putAccuracy(text, quality, satellites, coordinateQuality, height - secondHeight);
        if (quality == 3 || quality == 0) return text.put(",,,,,,,,");
        figure >= 0.0F ? putFixed<1>(text, figure) : text.put(',');
        putFixed<6>(text, results.values[0]);
        for (const int index : {1, 2, 4, 3, 5, 6}) putFixed<10>(text, results.values[index]);
    });
}

bool CNMEAFormat::convertToTavroProp(const CGPSTime& time, double latitude, double longitude, double height,
                                     std::int32_t quality, float coordinateQuality, std::uint16_t satellites,
                                     CString& text, double secondHeight, ADD_POST_RESULTS& results,
                                     float figure) const {
    return intoString(text, [&](const char* talker, char* buffer, std::uint16_t& length) {
        return convertToTavroProp(time, latitude, longitude, height, quality, coordinateQuality, satellites, talker,
                                  buffer, length, secondHeight, results, figure);
    });
}

std::uint16_t CNMEAFormat::wrapMsg(const char* talker, const char* id, std::uint16_t bodyLength, char* buffer) const {
    if (buffer == nullptr || !startsSentence(talker, id) || bodyLength > kLongestBody) return 0;
    return frame(talker, id, bodyLength, buffer);
}

void CNMEAFormat::calculateChecksum(const char* first, const char* last, char* checksum) const {
    checksumOf(first, last, checksum);
}

bool CNMEAFormat::ConvertToDegreeMinuteSign(double radians, std::int16_t& degrees, double& minutes,
                                            bool& positive) const {
    Angle angle;
    if (!split(radians, angle)) return false;
    degrees = angle.degrees;
    minutes = angle.minutes;
    positive = angle.positive;
    return true;
}

bool CNMEAFormat::ConvertToStringLatitude(double radians, bool signedForm, char* text) const {
    return angleText(radians, signedForm, 2, "NS", text);
}

bool CNMEAFormat::ConvertToStringLongitude(double radians, bool signedForm, char* text) const {
    return angleText(radians, signedForm, 3, "EW", text);
}

bool CNMEAFormat::GetUTM(double latitude, double longitude, std::int32_t falseEasting, std::int32_t falseNorthing,
                         std::int32_t zone, std::int32_t hemisphere, double& easting, double& northing) const {
    using GeographicLib::UTMUPS;
    constexpr double kRightAngle = 90.0;
    const double latitudeDegrees = latitude * kDegreesPerRadian;
    const double longitudeDegrees = longitude * kDegreesPerRadian;
    if (!(std::abs(latitudeDegrees) <= kRightAngle) || !std::isfinite(longitudeDegrees)) return false;
    if (zone < 0 || zone > UTMUPS::MAXUTMZONE || hemisphere < 0 || hemisphere > 2) return false;
    try {
        if (zone == 0) zone = UTMUPS::StandardZone(latitudeDegrees, longitudeDegrees, UTMUPS::UTM);
        double x = 0.0;
        double y = 0.0;
        GeographicLib::TransverseMercator::UTM().Forward(6.0 * zone - 183.0, latitudeDegrees, longitudeDegrees, x, y);
        if (!std::isfinite(x) || !std::isfinite(y)) return false;
        const bool south = hemisphere == 2 || (hemisphere == 0 && latitude < 0.0);
        const double ownFalseNorthing = south ? 10000000.0 : 0.0;
        easting = x + (falseEasting != 0 ? falseEasting : 500000.0);
        northing = y + (falseNorthing != 0 ? falseNorthing : ownFalseNorthing);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}
