#pragma once

#include <cstdint>

/// A key that orders like the time it is made of: GPS week and a count inside it, such as milliseconds. There is only
/// "later" and "not earlier"; keys are not meant for anything else. Plain value.
class GPSTimeCompare {
public:
    GPSTimeCompare() = default;
    GPSTimeCompare(unsigned int high, unsigned int low) { SetTime(high, low); }

    void SetTime(unsigned int high, unsigned int low) { m_key = static_cast<std::uint64_t>(high) << 32 | low; }

    friend bool operator>(const GPSTimeCompare& left, const GPSTimeCompare& right) { return left.m_key > right.m_key; }
    friend bool operator>=(const GPSTimeCompare& left, const GPSTimeCompare& right) {
        return left.m_key >= right.m_key;
    }

private:
    std::uint64_t m_key = 0;
};
