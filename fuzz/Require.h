#pragma once

#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "halvex/platform/kernix/Logging.h"

namespace halvex::fuzz {

/// What holds whatever the bytes are; otherwise the input is kept as a crash.
inline void require(bool holds, const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
    if (holds) return;
    std::fprintf(stderr, "%s:%d: does not hold\n", file, line);
    std::abort();
}

/// Hostile input is logged at every run: this keeps it off the terminal.
class SilentLog final : public ILogging::Sink {
public:
    void write(std::string_view, int, std::string_view) override {}

private:
    ScopedLogSink m_scope{*this};
};

}  // namespace halvex::fuzz
