#include "halvex/status/SatStatus.h"

#include <algorithm>
#include <cstdint>

#include "halvex/platform/kernix/ByteCodec.h"

bool CHalvexSatStatus::loadData(const unsigned char* buffer, std::size_t size) {
    if (buffer == nullptr || size < kSavedSize) return false;
    m_satellite.readFrom(buffer);
    m_status = buffer[CPrnID::kSavedSize];
    m_elevation = buffer[CPrnID::kSavedSize + 1];
    return true;
}

void CHalvexSatStatus::saveData(unsigned char* buffer, std::size_t size) const {
    if (buffer == nullptr || size < kSavedSize) return;
    m_satellite.writeTo(buffer);
    buffer[CPrnID::kSavedSize] = m_status;
    buffer[CPrnID::kSavedSize + 1] = m_elevation;
}

bool vecSatStatusT::loadData(const unsigned char* buffer, std::size_t size) {
    m_list.clear();
    halvex::ByteReader in(buffer, size);
    std::uint32_t count = 0;
    in(count);
    m_list.reserve(std::min<std::size_t>(count, in.left() / CHalvexSatStatus::kSavedSize));
    for (std::uint32_t i = 0; in.ok() && i < count; ++i) {
        if (const unsigned char* from = in.take(CHalvexSatStatus::kSavedSize)) {
            m_list.emplace_back().loadData(from, CHalvexSatStatus::kSavedSize);
        }
    }
    return in.ok();
}

void vecSatStatusT::saveData(unsigned char* buffer, std::size_t size) const {
    if (buffer == nullptr || size < getSize()) return;
    halvex::ByteWriter out(buffer, size);
    out(static_cast<std::uint32_t>(m_list.size()));
    for (const CHalvexSatStatus& status : m_list) {
        if (unsigned char* to = out.take(status.getSize())) status.saveData(to, status.getSize());
    }
}

std::size_t vecSatStatusT::getSize() const {
    return sizeof(std::uint32_t) + m_list.size() * CHalvexSatStatus::kSavedSize;
}
