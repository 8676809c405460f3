#include "halvex/time/SatelliteTimeRelative.h"

#include "halvex/platform/kernix/ByteCodec.h"
#include "halvex/platform/os/Clock.h"

CSatelliteTimeRelative::~CSatelliteTimeRelative() = default;

bool CSatelliteTimeRelative::loadData(const unsigned char* buffer, std::size_t size) {
    if (buffer == nullptr || size < getSize()) return false;
    m_ticks = halvex::loadLittleEndian<std::uint64_t>(buffer);
    return true;
}

void CSatelliteTimeRelative::saveData(unsigned char* buffer, std::size_t size) const {
    if (buffer == nullptr || size < getSize()) return;
    halvex::storeLittleEndian(buffer, m_ticks);
}

std::size_t CSatelliteTimeRelative::getSize() const {
    return sizeof m_ticks;
}

void CSatelliteTimeRelative::setToNow() {
    m_ticks = os::GetTickCount64();
}

std::uint64_t CSatelliteTimeRelative::getAsRelativeTicks(const CSatelliteTimeAndTickCount& reference) const {
    return isSet() ? m_ticks - reference.getAsAbsoluteTicks() : 0;
}

double CSatelliteTimeRelative::getAsMjd(const CSatelliteTimeAndTickCount& reference) const {
    if (!isSet()) return m_ticks == kNeverSet ? -1.0 : 0.0;
    return reference.getAsMjd() + static_cast<double>(getAsRelativeTicks(reference)) / SMjdTime::kMillisecondsPerDay;
}
