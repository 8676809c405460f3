#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "formats/io/FormatError.h"
#include "formats/io/LineReader.h"
#include "halvex/platform/caln/AlmanacRecords.h"
#include "halvex/platform/mjd/MjdTime.h"

namespace halvex::almanac {

/// Now by the process's clock: the reference of weeks when the caller has none. UTC, whose seconds do not matter here.
[[nodiscard]] SMjdTime now();

/// Streaming reader of a GPS almanac file, one record at a time. Records come with complete angles in radians and the
/// source eCALORBITSOURCE_FILE.
///
/// The files print the week modulo 1024: of the weeks that may be meant the latest is taken that is at most four weeks
/// ahead of the reference, which the caller gives and which for a file of the past is not the present. Weeks from 1024
/// on are taken as they are. One thread at a time.
class AlmanacReader {
public:
    enum class Result : std::uint8_t {
        record,
        end,    ///< the input is used up
        error,  ///< error() says what; the next call goes on behind the bad record, or ends if that cannot be done
    };

    virtual ~AlmanacReader();
    AlmanacReader(const AlmanacReader&) = delete;
    AlmanacReader& operator=(const AlmanacReader&) = delete;

    /// Reads the next record. After an error `almanac` is as it was.
    [[nodiscard]] virtual Result next(CALN::CALX_SAT_ALMANAC& almanac) = 0;
    /// Where the record begins that next() gave last, or found a fault in.
    [[nodiscard]] std::uint64_t recordLine() const { return m_recordLine; }
    [[nodiscard]] const FormatError& error() const { return m_error; }

protected:
    AlmanacReader(LineReader lines, const SMjdTime& reference);

    bool nextLine();
    /// Goes on to the next line that is not blank.
    bool nextText();
    Result fail(std::string message);
    /// The end of the input, or what kept it from being read.
    Result end();
    /// Checks what both formats have in common, completes the week and hands the record over. A fault is told with
    /// recordLine().
    Result finish(CALN::CALX_SAT_ALMANAC record, int id, int health, int week, CALN::CALX_SAT_ALMANAC& almanac);

    LineReader m_lines;
    SMjdTime m_reference;
    FormatError m_error;
    std::string_view m_line;  ///< the line that is being read
    std::uint64_t m_recordLine = 0;
    bool m_ended = false;
};

/// Opens a YUMA or SEM file, told apart by the first line with text: that of a SEM file begins with a number. Null,
/// with `error`, when the file cannot be opened or is neither.
[[nodiscard]] std::unique_ptr<AlmanacReader> openAlmanac(const std::string& name, FormatError& error,
                                                         const SMjdTime& reference = now());
[[nodiscard]] std::unique_ptr<AlmanacReader> openAlmanac(LineReader lines, FormatError& error,
                                                         const SMjdTime& reference = now());

}  // namespace halvex::almanac
