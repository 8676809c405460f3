#pragma once

#include <utility>

#include "formats/almanac/AlmanacReader.h"

namespace halvex::almanac {

/// YUMA almanacs: blocks of "KEY: value" lines, each block complete, its keys in any order, blocks set apart by blank
/// lines or lines of asterisks. ICD-GPS-870, appendix II.
class YumaReader final : public AlmanacReader {
public:
    explicit YumaReader(LineReader lines, const SMjdTime& reference = now())
        : AlmanacReader(std::move(lines), reference) {}

    Result next(CALN::CALX_SAT_ALMANAC& almanac) override;

private:
    bool m_lost = false;  ///< a bad block is behind, its end is not found yet
};

}  // namespace halvex::almanac
