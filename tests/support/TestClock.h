#pragma once

#include <cstdint>

#include "halvex/platform/os/Clock.h"

namespace halvex::test {

/// The process's clock for a scope, showing what the test sets. One thread sets; readers only while nobody does.
class TestClock final : public os::Clock {
public:
    TestClock() : m_installed(*this) {}
    TestClock(int year, int month, int day, int hour = 0, int minute = 0, int second = 0, int milliseconds = 0)
        : TestClock() {
        utc = local = stamp(year, month, day, hour, minute, second, milliseconds);
    }

    static SYSTEMTIME stamp(int year, int month, int day, int hour = 0, int minute = 0, int second = 0,
                            int milliseconds = 0) {
        const auto word = [](int value) { return static_cast<std::uint16_t>(value); };
        return {word(year), word(month), 0, word(day), word(hour), word(minute), word(second), word(milliseconds)};
    }

    SYSTEMTIME utc;
    SYSTEMTIME local;
    std::uint64_t ticks = 1;

    [[nodiscard]] SYSTEMTIME utcTime() const override { return utc; }
    [[nodiscard]] SYSTEMTIME localTime() const override { return local; }
    [[nodiscard]] std::uint64_t tickCount() const override { return ticks; }

private:
    os::ScopedClock m_installed;
};

}  // namespace halvex::test
