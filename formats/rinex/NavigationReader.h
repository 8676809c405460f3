#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "formats/io/FormatError.h"
#include "formats/io/LineReader.h"
#include "formats/rinex/NavigationMessages.h"
#include "formats/rinex/NavigationRecords.h"

namespace halvex::rinex {

class FieldReader;
struct PrintedFields;

/// Streaming reader of RINEX navigation files, plain or gzip-compressed: 2.00 to 2.12 of GPS, GLONASS and SBAS, 3.00 to
/// 3.05 and 4.0x of any system. Memory does not grow with the file. One thread at a time.
///
/// Times come as the records keep them: BeiDou in BeiDou time, GLONASS brought from UTC to the GPS scale with the
/// header's leap seconds (without them, with those in force then), all others on the GPS scale. A blank field is 0
/// where the message may do without it; a blank orbit or clock is an error. A transmission time that is blank or
/// unknown (0.9999E+09) is given as toe. A GLONASS accuracy that a file does not give is 15 (none), a delay of G2 that
/// it does not know 0. The issue of a GPS orbit is not kept beside the IODC.
class NavigationReader {
public:
    enum class Result : std::uint8_t {
        record,
        end,    ///< the input is used up
        error,  ///< error() says what; the next call goes on at the next record that begins properly
    };

    /// Opens the file and reads its header. False, with error(), when there is none to be had.
    [[nodiscard]] bool open(const std::string& name);
    /// The same for lines that are opened already.
    [[nodiscard]] bool open(LineReader lines);
    /// Reads the next record that this reader knows. After an error `record` means nothing; a last record that is cut
    /// off is an error. Records of version 4 with a type, system or message that is not known are passed over.
    [[nodiscard]] Result next(NavigationRecord& record);

    [[nodiscard]] const NavigationHeader& header() const { return m_header; }
    [[nodiscard]] const FormatError& error() const { return m_error; }
    [[nodiscard]] const LineReader& lines() const { return m_lines; }
    /// Of the record read last; number 0 when it stands for its system as a whole.
    [[nodiscard]] const CALN::SCalSatID& satellite() const { return m_satellite; }
    /// What that record holds, and the line it began with.
    [[nodiscard]] MessageKind kind() const { return m_kind; }
    [[nodiscard]] std::uint64_t line() const { return m_firstLine; }
    /// Records passed over so far, by type, system letter and message, as "EPH R L1OC"; beyond a hundred of
    /// these as "other".
    [[nodiscard]] const std::map<std::string, std::uint64_t>& skipped() const { return m_skipped; }

private:
    bool readHeader();
    bool nextLine();
    bool findRecord();
    [[nodiscard]] bool mayBeginRecord() const;
    [[nodiscard]] std::optional<std::string> readAnnouncement();
    [[nodiscard]] std::optional<std::string> readSatellite();
    Result readRecord(NavigationRecord& record);
    void fill(FieldReader& in, const PrintedFields& fields, bool status, NavigationRecord& record) const;
    Result fail(std::string message);
    Result failShort(std::size_t linesRead, bool atEnd);

    LineReader m_lines;
    NavigationHeader m_header;
    std::map<std::string, std::uint64_t> m_skipped;
    FormatError m_error;
    std::string_view m_line;  ///< the line that is being read
    std::uint64_t m_firstLine = 0;
    CALN::SCalSatID m_satellite;
    MessageKind m_kind = MessageKind::lnav;
    const MessageLayout* m_layout = nullptr;  ///< null: the record is to be passed over
    std::string m_message;                    ///< of the announced record
    bool m_insideRecord = false;              ///< m_line is not the line that the record began with
    bool m_lost = false;                      ///< a record is left behind, the next one is not found yet
    bool m_ended = true;
};

}  // namespace halvex::rinex
