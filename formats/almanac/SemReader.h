#pragma once

#include <utility>

#include "formats/almanac/AlmanacReader.h"

namespace halvex::almanac {

/// SEM almanacs: a line with the number of records and a title, one with week and toa, then records of eight lines set
/// apart by blank lines. Angles stand there in semicircles, the inclination as an offset to 0.3 semicircles.
/// ICD-GPS-870, appendix II.
class SemReader final : public AlmanacReader {
public:
    explicit SemReader(LineReader lines, const SMjdTime& reference = now())
        : AlmanacReader(std::move(lines), reference) {}

    /// Without a good header the first call is an error and the next one the end.
    Result next(CALN::CALX_SAT_ALMANAC& almanac) override;

private:
    Result readHeader();

    int m_announced = -1;  ///< records; -1: the header is not read yet
    int m_taken = 0;       ///< records so far, bad ones included
    int m_week = 0;
    double m_toa = 0.0;
    bool m_lost = false;  ///< a bad record is behind, its end is not found yet
};

}  // namespace halvex::almanac
