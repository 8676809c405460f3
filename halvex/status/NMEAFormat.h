#pragma once

#include <cstddef>
#include <cstdint>

#include "halvex/platform/Export.h"
#include "halvex/platform/os/CString.h"
#include "halvex/time/GPSTime.h"

/// Further figures of a solution for the sentence LMM, which prints them as they are, without units, in the order 0, 1,
/// 2, 4, 3, 5, 6: the first with 6 decimals, the others with 10. What each stands for is agreed between whoever writes
/// and whoever reads the sentence. Plain value.
struct ADD_POST_RESULTS {
    double values[7] = {};
};

/// A position solution as an NMEA 0183 sentence: GGA, and GGQ, LLQ and LMM, which carry the date and the quality of the
/// coordinates. Holds nothing; callable from any thread.
///
/// Times are printed as they stand: a sentence shows UTC when the caller has turned GPS time into UTC before
/// (CGPSTime::AdjustGPS2UTC). Hundredths of a second are rounded alone, so that 59.996 s are written "59.100"; times on
/// 10 ms (RoundTo(10.0)) never are. Latitudes and longitudes are in radians, positive to the north and east; 0 is
/// written as south and west. Heights are in metres above whatever `secondHeight` or `geoidSeparation`, which is taken
/// off, refers to. Minutes of arc have 7 decimals and are rounded alone, too: just below a full degree they are
/// "60.0000000". Numbers are the bytes of printf in the C locale, correctly rounded, whatever the host's locale is.
///
/// Quality 0 means no solution: everything that describes one is left empty. GGQ, LLQ and LMM write quality 4 as 3, GGA
/// 3 as 4.
///
/// A buffer takes at most kLongestSentence bytes, the NUL behind the sentence included; usual sentences have fewer than
/// 130, LMM than 250. `length` is the sentence's with CR and LF, without the NUL. False, with buffer and length as they
/// were, when one of them is null, the talker is longer than two characters (a shorter one is filled with blanks in
/// front), a number to be printed is not finite, a latitude or longitude has more degrees than 16 bits hold, LLQ has no
/// grid coordinates (see GetUTM), or the sentence is too long. The CString forms take the talker "GP".
class HALVEX_EXPORT CNMEAFormat {
public:
    static constexpr std::size_t kLongestSentence = 1000;

    CNMEAFormat() = default;
    CNMEAFormat(const CNMEAFormat&) = default;
    CNMEAFormat& operator=(const CNMEAFormat&) = default;
    virtual ~CNMEAFormat();

    /// $ttGGQ,hhmmss.ss,MMDDYY,latitude,N,longitude,E,quality,satellites,coordinate quality,height,M
    bool ConvertToGGQ(const CGPSTime& time, double latitude, double longitude, double height, double secondHeight,
                      std::int32_t quality, float coordinateQuality, std::uint16_t satellites, const char* talker,
                      char* buffer, std::uint16_t& length) const;
    bool ConvertToGGQ(const CGPSTime& time, double latitude, double longitude, double height, double secondHeight,
                      std::int32_t quality, float coordinateQuality, std::uint16_t satellites, CString& text) const;

    /// $ttGGA,hhmmss.ss,latitude,N,longitude,E,quality,satellites,HDOP,height,M,geoid separation,M,age,station
    /// A negative HDOP gives two empty fields instead of one, a negative age [s] an empty one. The station is printed
    /// as a signed number of at least four digits.
    bool convertToGGA(const CGPSTime& time, double latitude, double longitude, double height, std::int32_t quality,
                      std::uint16_t satellites, const char* talker, char* buffer, std::uint16_t& length,
                      double geoidSeparation, double hdop, double ageOfCorrections,
                      std::uint32_t referenceStationId) const;
    bool convertToGGA(const CGPSTime& time, double latitude, double longitude, double height, std::int32_t quality,
                      std::uint16_t satellites, CString& text, double geoidSeparation, double hdop,
                      double ageOfCorrections, std::uint32_t referenceStationId) const;

    /// $ttLLQ,hhmmss.ss,MMDDYY,easting,M,northing,M,quality,satellites,coordinate quality,height,M
    /// For the four grid parameters see GetUTM.
    bool convertToLLQ(const CGPSTime& time, double latitude, double longitude, double height, std::int32_t quality,
                      float coordinateQuality, std::uint16_t satellites, const char* talker, char* buffer,
                      std::uint16_t& length, double secondHeight, std::int32_t falseEasting, std::int32_t falseNorthing,
                      std::int32_t zone, std::int32_t hemisphere) const;
    bool convertToLLQ(const CGPSTime& time, double latitude, double longitude, double height, std::int32_t quality,
                      float coordinateQuality, std::uint16_t satellites, CString& text, double secondHeight,
                      std::int32_t falseEasting, std::int32_t falseNorthing, std::int32_t zone,
                      std::int32_t hemisphere) const;

    /// LMM: the fields of GGQ and eight more, the figure with 1 decimal and the seven of `results`. They are empty for
    /// the qualities 0, 3 and 4; a negative figure alone is an empty field.
    bool convertToTavroProp(const CGPSTime& time, double latitude, double longitude, double height,
                            std::int32_t quality, float coordinateQuality, std::uint16_t satellites, const char* talker,
                            char* buffer, std::uint16_t& length, double secondHeight, ADD_POST_RESULTS& results,
                            float figure) const;
    bool convertToTavroProp(const CGPSTime& time, double latitude, double longitude, double height,
                            std::int32_t quality, float coordinateQuality, std::uint16_t satellites, CString& text,
                            double secondHeight, ADD_POST_RESULTS& results, float figure) const;

protected:
    /// Puts the frame around the body of `bodyLength` bytes that stands 7 bytes into the buffer, and a NUL behind it.
    /// The total length; 0, with nothing written, when the talker has more than two characters, the id more than three,
    /// something is null or the sentence is longer than kLongestSentence with its NUL.
    std::uint16_t wrapMsg(const char* talker, const char* id, std::uint16_t bodyLength, char* buffer) const;

    /// The exclusive-or of the bytes from `first` to `last`, both included, as two upper-case hexadecimal digits
    /// without a NUL.
    void calculateChecksum(const char* first, const char* last, char* checksum) const;

    /// Whole degrees and minutes of the absolute value, and whether the value is above 0. False, with the rest as it
    /// was, for a value that is not finite or has more degrees than 16 bits hold.
    bool ConvertToDegreeMinuteSign(double radians, std::int16_t& degrees, double& minutes, bool& positive) const;

    /// "ddmm.mmmmmmm,N" and "dddmm.mmmmmmm,E", or with `signedForm` "ddmm.mmmmmmm" with a '-' before a value below 0.
    /// At most 20 bytes with the NUL. False, with nothing written, for a null text and where ConvertToDegreeMinuteSign
    /// is.
    bool ConvertToStringLatitude(double radians, bool signedForm, char* text) const;
    bool ConvertToStringLongitude(double radians, bool signedForm, char* text) const;

    /// UTM coordinates [m] on the ellipsoid WGS-84. The false easting and northing are in metres; with 0 they are those
    /// of UTM: 500 000 m, and 10 000 000 m in the southern hemisphere. Zone 1 to 60, with 0 the one that the point lies
    /// in (the exceptions of Norway and Svalbard included). Hemisphere 1 is north, 2 south, 0 the one that the point
    /// lies in (the equator is north). False, with the coordinates as they were, for other parameters, a latitude
    /// beyond the poles, angles that are not finite, and where the projection has no value.
    bool GetUTM(double latitude, double longitude, std::int32_t falseEasting, std::int32_t falseNorthing,
                std::int32_t zone, std::int32_t hemisphere, double& easting, double& northing) const;

private:
    static constexpr double MATH_SQ2(double x) { return x * x; }
    static constexpr double MATH_SQ3(double x) { return MATH_SQ2(x) * x; }
    static constexpr double MATH_SQ4(double x) { return MATH_SQ2(MATH_SQ2(x)); }
    static constexpr double MATH_SQ5(double x) { return MATH_SQ4(x) * x; }
    static double MATH_SQRT(double x);
};
