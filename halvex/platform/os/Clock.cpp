#include "halvex/platform/os/Clock.h"

#include <chrono>
#include <ctime>

namespace os {
namespace {

SYSTEMTIME toSystemTime(const std::tm& calendar, int milliseconds) {
    const auto word = [](int value) { return static_cast<std::uint16_t>(value); };
    return {word(calendar.tm_year + 1900), word(calendar.tm_mon + 1), word(calendar.tm_wday), word(calendar.tm_mday),
            word(calendar.tm_hour),        word(calendar.tm_min),     word(calendar.tm_sec),  word(milliseconds)};
}

class SystemClock final : public Clock {
public:
    SYSTEMTIME utcTime() const override {
        return now([](const std::time_t& seconds, std::tm& calendar) { gmtime_r(&seconds, &calendar); });
    }
    SYSTEMTIME localTime() const override {
        return now([](const std::time_t& seconds, std::tm& calendar) {
            tzset();  // localtime_r alone may keep the zone that it saw first
            localtime_r(&seconds, &calendar);
        });
    }
    std::uint64_t tickCount() const override {
        const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
        return 1 +
               static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(sinceStart).count());
    }

private:
    template <class Convert>
    static SYSTEMTIME now(Convert convert) {
        using std::chrono::floor, std::chrono::milliseconds, std::chrono::seconds;
        const auto instant = std::chrono::system_clock::now();
        const auto whole = floor<seconds>(instant);
        std::tm calendar{};
        convert(std::chrono::system_clock::to_time_t(whole), calendar);
        return toSystemTime(calendar, static_cast<int>(floor<milliseconds>(instant - whole).count()));
    }
};

SystemClock& systemClock() {
    static SystemClock clock;
    return clock;
}

Replaceable<Clock>& currentClock() {
    static Replaceable<Clock> clock(&systemClock());
    return clock;
}

}  // namespace

Clock::~Clock() = default;

Clock* setClock(Clock* clock) {
    return currentClock().exchange(clock != nullptr ? clock : &systemClock());
}

SYSTEMTIME GetSystemTime() {
    return currentClock().get().utcTime();
}
SYSTEMTIME GetLocalTime() {
    return currentClock().get().localTime();
}
std::uint64_t GetTickCount64() {
    return currentClock().get().tickCount();
}

}  // namespace os
