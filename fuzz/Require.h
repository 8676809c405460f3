#pragma once

#include <cstdio>
#include <cstdlib>
#include <source_location>
#include <string_view>

#include "halvex/platform/kernix/Logging.h"

namespace halvex::fuzz {

/// What holds whatever the bytes are; otherwise the input is kept as a crash.
inline void require(bool holds, std::source_location where = std::source_location::current()) {
    if (holds) return;
    std::fprintf(stderr, "%s:%u: does not hold\n", where.file_name(), static_cast<unsigned>(where.line()));
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
