#include "halvex/platform/kernix/PrnID.h"

#include <bit>

#include "halvex/platform/kernix/ByteCodec.h"

bool CPrnID::IsSystem(PrnType type) {
    return std::has_single_bit(static_cast<unsigned>(type)) && type <= PRN_NAVIC;
}

bool CPrnID::setPrn(unsigned char number) {
    if (number == 0) return false;
    m_number = number;
    return true;
}

bool CPrnID::setPrnType(PrnType type) {
    if (!IsSystem(type)) return false;
    m_type = type;
    return true;
}

bool CPrnID::loadData(const unsigned char* buffer, std::size_t size) {
    halvex::ByteReader reader(buffer, size);
    std::uint8_t number = 0;
    std::uint8_t type = 0;
    reader(number);
    reader(type);
    if (!reader.ok()) return false;
    m_number = number;
    m_type = static_cast<PrnType>(type);
    return true;
}

void CPrnID::saveData(unsigned char* buffer, std::size_t size) const {
    if (buffer == nullptr || size < getSize()) return;
    halvex::ByteWriter writer(buffer, size);
    writer(m_number);
    writer(static_cast<std::uint8_t>(m_type));
}
