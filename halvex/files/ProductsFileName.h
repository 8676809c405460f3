#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "halvex/platform/Export.h"
#include "halvex/platform/mjd/MjdTime.h"
#include "halvex/platform/os/CString.h"
#include "halvex/time/TimeBase.h"

/// What the RINEX 3 long name of a station's file needs beside its site code and time. Plain value.
class HALVEX_EXPORT RnxLongFileNameParam {
public:
    RnxLongFileNameParam() = default;
    RnxLongFileNameParam(const std::string& siteCountryCode, std::uint32_t monumentNumber, std::uint32_t receiverNumber,
                         const std::string& productLength, char dataSource);
    void assign(const RnxLongFileNameParam& other) { *this = other; }

    /// ISO country code; kept in upper case, the first 3 characters count.
    void setSiteCountryCode(const std::string& code);
    /// Monument and receiver numbers are printed in full, also when they have more than the one digit of the format.
    void setMonumentNumber(std::uint32_t number) { m_monumentNumber = number; }
    void setReceiverNumber(std::uint32_t number) { m_receiverNumber = number; }
    /// File period such as "01D"; kept in upper case, the first 3 characters count.
    void setProductLength(const std::string& length);
    /// R receiver, S stream, U unknown.
    void setDataSource(char source) { m_dataSource = source; }

    [[nodiscard]] std::string getSiteCountryCode() const { return m_siteCountryCode; }
    [[nodiscard]] std::uint32_t getMonumentNumber() const { return m_monumentNumber; }
    [[nodiscard]] std::uint32_t getReceiverNumber() const { return m_receiverNumber; }
    [[nodiscard]] std::string getProductLength() const { return m_productLength; }
    [[nodiscard]] char getDataSource() const { return m_dataSource; }

    friend bool operator==(const RnxLongFileNameParam&, const RnxLongFileNameParam&) = default;

private:
    std::string m_siteCountryCode;
    std::uint32_t m_monumentNumber = 0;
    std::uint32_t m_receiverNumber = 0;
    std::string m_productLength;
    char m_dataSource = 'S';
};

/// Names of the files that the network produces. Static functions without state, callable from any thread; letters are
/// ASCII, whatever the locale. Times are GPS week and seconds of week and come out as GPS calendar time.
///
/// A function with a buffer clears all of it and writes what fits, a NUL included. A null text counts as an empty one.
/// The integer results are 1, or 0 with an empty output.
class HALVEX_EXPORT CProductsFileName {
public:
    /// Compression of a file: none, ".zip", ".gz", ".Z".
    enum TargetFileType : int {
        TARGET_NONE = 0,
        TARGET_ZIP = 1,
        TARGET_GZIP = 2,
        TARGET_UNIX_COMPRESS = 3,
    };
    /// Time span of a file; decides the session field of a short name: letter and minutes, letter, "0".
    enum RinexFileNameType : int { RINEX_SUBHOURLY = 1, RINEX_HOURLY = 2, RINEX_DAILY = 3 };
    /// Letter case of the site code in a short name; other values leave it as it is.
    enum RinexSiteCodeType : int { SITECODE_AS_GIVEN = 1, SITECODE_UPPER = 2, SITECODE_LOWER = 3 };

    /// SSSSMRCCC_S_YYYYDDDHHMM_PPP: site, monument, receiver, country, data source, start, period. Sampling, content,
    /// format and compression are appended by the caller. An empty site code is "UNKN". Always true.
    static bool CreateRinexLongFileName(const char* siteCode, const RnxLongFileNameParam& parameters, int gpsWeek,
                                        double secondsOfWeek, char* name, std::size_t size);
    static bool CreateRinexLongFileName(const char* siteCode, const RnxLongFileNameParam& parameters, int gpsWeek,
                                        double secondsOfWeek, CString& name);
    static bool CreateRinexLongFileName(const char* siteCode, const RnxLongFileNameParam& parameters, int gpsWeek,
                                        double secondsOfWeek, std::string& name);

    /// ssssDDDh[MM].YY: site, day of year, session, year. The letter of the file's content is appended by the caller.
    /// An empty site code is "Unkn" in the wanted case. Always 1.
    static int CreateRinexFileName(const char* siteCode, int gpsWeek, double secondsOfWeek, char* name,
                                   std::size_t size, RinexSiteCodeType siteCodeType, RinexFileNameType fileNameType);
    static int CreateRinexFileName(const char* siteCode, int gpsWeek, double secondsOfWeek, CString& name,
                                   RinexSiteCodeType siteCodeType, RinexFileNameType fileNameType);
    static int CreateRinexFileName(const char* siteCode, int gpsWeek, double secondsOfWeek, std::string& name,
                                   RinexSiteCodeType siteCodeType, RinexFileNameType fileNameType);

    /// Sub-hourly below 30 minutes within one half-hour of the week; daily from 12 hours on or across a half-day of the
    /// week; hourly otherwise.
    static RinexFileNameType getFileNameType(const SMjdTime& start, const SMjdTime& end);

    /// The name of a RINEX file after compression by `type`; TARGET_NONE keeps the name. 0 for an empty name or an
    /// unknown type. "/" and "\" separate folders, "X:" is a drive; `dropPath` leaves them out.
    ///
    /// A long name keeps its extension before that of the compression, but for zip, where it becomes ".crx"
    /// (`hatanaka`) or ".rnx". A short name gives its extension up; for gzip and compress the extension's last letter
    /// goes to the end of the name before that ("h" of ".htm", "l" of ".log"), when the extension has at most 3
    /// letters.
    static int ChangeRinexFileName(const char* fileName, TargetFileType type, bool longName, char* name,
                                   std::size_t size, bool hatanaka = false, bool dropPath = false);
    static int ChangeRinexFileName(const char* fileName, TargetFileType type, bool longName, CString& name,
                                   bool hatanaka = false, bool dropPath = false);

    /// The same for the other products: long names as above without Hatanaka; a short name gets its "l" from ".log"
    /// alone. With `keepNumber` the last two of an extension's three letters ("02" of ".T02") go to the end of a short
    /// name first, whatever the compression.
    static int ChangeMdbFileName(const char* fileName, TargetFileType type, bool longName, char* name, std::size_t size,
                                 bool keepNumber = false, bool dropPath = false);
    static int ChangeMdbFileName(const char* fileName, TargetFileType type, bool longName, CString& name,
                                 bool keepNumber = false, bool dropPath = false);
    static int ChangeQCFileName(const char* fileName, TargetFileType type, bool longName, char* name, std::size_t size,
                                bool keepNumber = false, bool dropPath = false);
    static int ChangeQCFileName(const char* fileName, TargetFileType type, bool longName, CString& name,
                                bool keepNumber = false, bool dropPath = false);
    static int ChangeEventLogFileName(const char* fileName, TargetFileType type, bool longName, char* name,
                                      std::size_t size, bool keepNumber = false, bool dropPath = false);
    static int ChangeEventLogFileName(const char* fileName, TargetFileType type, bool longName, CString& name,
                                      bool keepNumber = false, bool dropPath = false);

    /// PREFIXyyyyMMdd_HHmmss.log, the time as it stands. Always 1.
    static int CreateEventLogFileName(const char* prefix, const CTimeBase& time, CString& name);
    static int CreateQCFileName(const char* prefix, const CTimeBase& time, CString& name);

    /// ".zip" and so on; "Zip" and so on. 0 for an unknown type.
    static int GetFileExtension(TargetFileType type, CString& extension);
    static int GetCompressionTypeNames(TargetFileType type, CString& name);

    /// Self-check on a fixed example, the name of an hourly file: 1 when it comes out as it should. `name` gets it.
    static int Test(CString& name);
    /// The same for one of the examples 0 (long name), 1 (hourly), 2 (daily), 3 (sub-hourly); 0 for other numbers.
    static int Test(unsigned int example);
};
