#pragma once

#include <cstdint>
#include <string>

namespace halvex {

/// Why a piece of input was refused, and where. One line for people: "FILE:LINE: what is wrong".
struct FormatError {
    std::string file;
    std::uint64_t line = 0;  ///< 1-based; 0 when the fault has no line (a file that cannot be opened)
    std::string message;     ///< what is wrong and, where it helps, what to do; no line breaks

    [[nodiscard]] std::string text() const {
        return line != 0 ? file + ":" + std::to_string(line) + ": " + message : file + ": " + message;
    }
};

}  // namespace halvex
