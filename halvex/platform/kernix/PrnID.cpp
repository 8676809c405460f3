#include "halvex/platform/kernix/PrnID.h"

#include <bit>

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
    if (buffer == nullptr || size < kSavedSize) return false;
    readFrom(buffer);
    return true;
}

void CPrnID::saveData(unsigned char* buffer, std::size_t size) const {
    if (buffer != nullptr && size >= kSavedSize) writeTo(buffer);
}
