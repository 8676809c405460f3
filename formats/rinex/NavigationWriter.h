#pragma once

#include <cstdint>
#include <string>

#include "formats/io/TextFile.h"
#include "formats/rinex/NavigationRecords.h"

namespace halvex::rinex {

/// Writes a RINEX navigation file, version 4.00 when the header names a version from 4 on, else 3.05. Numbers come out
/// with 12 decimals, so that NavigationReader gives the same records to these digits; epochs are whole seconds. What
/// files have no field for is lost: the host's words, AODO, the URA index beside the URA. One thread at a time.
class NavigationWriter {
public:
    /// Creates the file ("-": standard output) and writes the header; version 4 keeps ionosphere and time corrections
    /// out of it, in records of their own. False with error().
    [[nodiscard]] bool open(const std::string& name, const NavigationHeader& header);
    /// Writes one record. False with error() when the file takes no more.
    [[nodiscard]] bool write(const NavigationRecord& record);
    /// Writes what is buffered and closes. False with error() when that fails or a write has failed before.
    [[nodiscard]] bool close() { return m_file.close(); }

    [[nodiscard]] const FormatError& error() const { return m_file.error(); }
    /// Records left out: of a message that the version does not have, of a satellite that files have no name for, with
    /// a number that no field can hold.
    [[nodiscard]] std::uint64_t unwritten() const { return m_unwritten; }

private:
    TextFile m_file;
    NavigationHeader m_header;
    std::uint64_t m_unwritten = 0;
};

}  // namespace halvex::rinex
