#include "halvex/orbits/HalvexTimeInfoGlonass.h"

#include "halvex/platform/kernix/ByteCodec.h"

CHalvexTimeInfoGlonass::CHalvexTimeInfoGlonass(const CHalvexTimeInfoGlonass& other) : IPersistData(other) {
    Assign(other);
}

CHalvexTimeInfoGlonass& CHalvexTimeInfoGlonass::operator=(const CHalvexTimeInfoGlonass& other) {
    if (this != &other) Assign(other);
    return *this;
}

CHalvexTimeInfoGlonass::~CHalvexTimeInfoGlonass() = default;

template <class Io, class Self>
void CHalvexTimeInfoGlonass::fields(Io& io, Self& d) {
    io(d.dayNumber);
    io(d.frameTime);
    for (const Byte byte : {kFourYearInterval, kAvailability, kLeapNotice, kSource}) io(d.bytes[byte]);
    for (auto* value : {&d.tauC, &d.tauGps, &d.b1, &d.b2}) io(*value);
}

bool CHalvexTimeInfoGlonass::loadData(const unsigned char* buffer, std::size_t length) {
    if (buffer == nullptr || length < kSavedSize) return false;
    halvex::ByteReader in(buffer, length);
    fields(in, m_data);
    return true;
}

void CHalvexTimeInfoGlonass::saveData(unsigned char* buffer, std::size_t length) const {
    if (buffer == nullptr || length < kSavedSize) return;
    halvex::ByteWriter out(buffer, length);
    fields(out, m_data);
}
