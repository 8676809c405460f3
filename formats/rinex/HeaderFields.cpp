#include "formats/rinex/HeaderFields.h"

namespace halvex::rinex {

HeaderFault readVersion(std::string_view line, double& version) {
    constexpr std::size_t kWidth = 9;
    if (parseDecimal(columns(line, 0, kWidth), version) != Field::number) return notANumber(line, 0, kWidth);
    const bool supported = (version >= 2.0 && version < 2.125) || (version >= 3.0 && version < 3.055) ||
                           (version >= 4.0 && version < 4.095);
    if (supported) return std::nullopt;
    return "version " + textAt(line, 0, kWidth) + " is not supported; 2.00 to 2.12, 3.00 to 3.05 and 4.0x are";
}

}  // namespace halvex::rinex
