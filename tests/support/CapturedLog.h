#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "halvex/platform/kernix/Logging.h"

namespace halvex::test {

/// Takes the log of the process for a scope. Any thread may log.
class CapturedLog final : public ILogging::Sink {
public:
    CapturedLog() : m_installed(*this) {}

    void write(std::string_view source, int level, std::string_view message) override {
        const std::lock_guard lock(m_mutex);
        m_lines.push_back(std::to_string(level) + " " + std::string(source) + ": " + std::string(message));
    }
    /// What was logged since the last call, each line as "LEVEL SOURCE: MESSAGE".
    std::vector<std::string> take() {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_lines, {});
    }

private:
    std::mutex m_mutex;
    std::vector<std::string> m_lines;
    ScopedLogSink m_installed;
};

}  // namespace halvex::test
