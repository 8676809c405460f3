#include "halvex/time/SatelliteTimeAndLeapSeconds.h"

#include "halvex/platform/kernix/ByteCodec.h"
#include "halvex/time/GPSLeapSeconds.h"

namespace {

constexpr std::size_t kValuesSize = 3 * sizeof(std::int32_t) + 1;

}  // namespace

CSatelliteTimeAndLeapSeconds::CSatelliteTimeAndLeapSeconds() : CSatelliteTimeAndLeapSeconds(false) {}

CSatelliteTimeAndLeapSeconds::CSatelliteTimeAndLeapSeconds(bool gps)
    : m_time(gps),
      m_ls(GetDefaultLeapSeconds()),
      m_lsf(GetDefaultLeapSecondsFuture()),
      m_lsfMjd(GetDefaultLeapSecondsFutureMjd()) {}

CSatelliteTimeAndLeapSeconds::CSatelliteTimeAndLeapSeconds(const int& ls, const int& lsf, const int& lsfMjd)
    : m_ls(ls), m_lsf(lsf), m_lsfMjd(lsfMjd) {}

CSatelliteTimeAndLeapSeconds::CSatelliteTimeAndLeapSeconds(const CSatelliteTimeAndLeapSeconds& other)
    : IPersistData(other), m_time(other.m_time) {
    *this = other;  // copying the time above has reset its flag
}

CSatelliteTimeAndLeapSeconds::~CSatelliteTimeAndLeapSeconds() = default;

bool CSatelliteTimeAndLeapSeconds::loadData(const unsigned char* buffer, std::size_t size) {
    if (buffer == nullptr || size < getSize() || !m_time.loadData(buffer, size)) return false;
    halvex::ByteReader reader(buffer + m_time.getSize(), kValuesSize);
    reader(m_ls);
    reader(m_lsf);
    reader(m_lsfMjd);
    reader(m_manual);
    return true;
}

void CSatelliteTimeAndLeapSeconds::saveData(unsigned char* buffer, std::size_t size) const {
    if (buffer == nullptr || size < getSize()) return;
    m_time.saveData(buffer, size);
    halvex::ByteWriter writer(buffer + m_time.getSize(), kValuesSize);
    writer(m_ls);
    writer(m_lsf);
    writer(m_lsfMjd);
    writer(m_manual);
}

std::size_t CSatelliteTimeAndLeapSeconds::getSize() const {
    return m_time.getSize() + kValuesSize;
}

void CSatelliteTimeAndLeapSeconds::SetLeapSecondsData(const int& ls, const int& lsf, const int& lsfMjd) {
    m_ls = ls;
    m_lsf = lsf;
    m_lsfMjd = lsfMjd;
}

int CSatelliteTimeAndLeapSeconds::GetLeapSeconds(const SMjdTime& instant) const {
    return instant >= SMjdTime::FromDayAndMilliseconds(m_lsfMjd, 0.0) ? m_lsf : m_ls;
}
