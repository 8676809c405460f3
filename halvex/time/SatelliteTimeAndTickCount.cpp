#include "halvex/time/SatelliteTimeAndTickCount.h"

#include <cmath>

#include "halvex/platform/kernix/ByteCodec.h"
#include "halvex/platform/os/Clock.h"

CSatelliteTimeAndTickCount::CSatelliteTimeAndTickCount() : CSatelliteTimeAndTickCount(false) {}

CSatelliteTimeAndTickCount::CSatelliteTimeAndTickCount(bool gps) : m_time(gps), m_ticks(os::GetTickCount64()) {}

CSatelliteTimeAndTickCount::CSatelliteTimeAndTickCount(const CSatelliteTime& time, std::uint64_t ticks)
    : m_time(time), m_ticks(ticks) {}

CSatelliteTimeAndTickCount::CSatelliteTimeAndTickCount(const CSatelliteTimeAndTickCount& other)
    : IPersistData(other), m_time(other.m_time), m_ticks(other.m_ticks) {
    m_time = other.m_time;  // copying it above has reset its flag
}

CSatelliteTimeAndTickCount::~CSatelliteTimeAndTickCount() = default;

bool CSatelliteTimeAndTickCount::loadData(const unsigned char* buffer, std::size_t size) {
    if (buffer == nullptr || size < getSize() || !m_time.loadData(buffer, size)) return false;
    m_ticks = halvex::loadLittleEndian<std::uint64_t>(buffer + m_time.getSize());
    return true;
}

void CSatelliteTimeAndTickCount::saveData(unsigned char* buffer, std::size_t size) const {
    if (buffer == nullptr || size < getSize()) return;
    m_time.saveData(buffer, size);
    halvex::storeLittleEndian(buffer + m_time.getSize(), m_ticks);
}

std::size_t CSatelliteTimeAndTickCount::getSize() const {
    return m_time.getSize() + sizeof m_ticks;
}

void CSatelliteTimeAndTickCount::setToUtcNow() {
    set(CSatelliteTime(), os::GetTickCount64());
}

void CSatelliteTimeAndTickCount::set(const CSatelliteTime& time, std::uint64_t ticks) {
    m_time = time;
    m_ticks = ticks;
}

void CSatelliteTimeAndTickCount::addSeconds(double seconds) {
    m_time.AddSeconds(seconds);
    constexpr double kLimit = 0x1p62;  // what no count of milliseconds reaches, and a signed integer still holds
    const double milliseconds = seconds * 1000.0 + 0.5;
    if (std::abs(milliseconds) < kLimit) {
        m_ticks += static_cast<std::uint64_t>(static_cast<std::int64_t>(milliseconds));
    }
}
