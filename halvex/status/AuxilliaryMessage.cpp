#include "halvex/status/AuxilliaryMessage.h"

#include <vector>

#include "halvex/platform/kernix/ByteCodec.h"

namespace {

constexpr std::int32_t kStationData = 1014;
constexpr std::int32_t kIonoGps = 1015;
constexpr std::int32_t kGeoGps = 1016;
constexpr std::int32_t kText = 1029;
constexpr std::int32_t kPhysicalReference = 1032;
constexpr std::int32_t kIonoGlonass = 1037;
constexpr std::int32_t kGeoGlonass = 1038;
constexpr std::int32_t kIonoOther = 1040;
constexpr std::int32_t kGeoOther = 1041;

constexpr bool isAreaCorrection(std::int32_t number) {
    return number == 59 || number == 1034 || number == 1035;
}

constexpr std::int32_t numberFor(CALN::eCALSATSYSTEM system, std::int32_t gps, std::int32_t glonass) {
    switch (system) {
        case CALN::eCALSATSYSTEM_GPS:
            return gps;
        case CALN::eCALSATSYSTEM_GLONASS:
            return glonass;
        default:
            return 0;
    }
}

std::unique_ptr<IPersistData> emptyHolder(std::int32_t number) {
    switch (number) {
        case kStationData:
            return std::make_unique<CSimplePersistData<CALN::Msg1014T>>();
        case kIonoGps:
        case kIonoGlonass:
            return std::make_unique<CSimplePersistData<CALN::IonoMsgT>>();
        case kGeoGps:
        case kGeoGlonass:
            return std::make_unique<CSimplePersistData<CALN::GeoMsgT>>();
        case kPhysicalReference:
            return std::make_unique<CSimplePersistData<POS_REF_PHYS_REFERENCE>>();
        default:
            if (isAreaCorrection(number)) return std::make_unique<CSimplePersistData<POS_REF_VR_CORRECTION>>();
            return nullptr;
    }
}

}  // namespace

template <class T>
void CHalvexAuxilliaryMessage::hold(const T* record) {
    if (record != nullptr) m_holder = std::make_unique<CSimplePersistData<T>>(*record);
}

// The type is asked for besides the number: an area correction may begin with any number, and would otherwise be read
// as a longer record.
template <class T>
T* CHalvexAuxilliaryMessage::held() const {
    auto* holder = dynamic_cast<CSimplePersistData<T>*>(m_holder.get());
    return holder != nullptr ? &holder->getData() : nullptr;
}

CHalvexAuxilliaryMessage::CHalvexAuxilliaryMessage(const CALN::Msg1014T* message) : m_number(kStationData) {
    hold(message);
}

CHalvexAuxilliaryMessage::CHalvexAuxilliaryMessage(const CALN::IonoMsgT* message) {
    if (message != nullptr) m_number = numberFor(message->system, kIonoGps, kIonoGlonass);
    hold(message);
}

CHalvexAuxilliaryMessage::CHalvexAuxilliaryMessage(const CALN::GeoMsgT* message) {
    if (message != nullptr) m_number = numberFor(message->system, kGeoGps, kGeoGlonass);
    hold(message);
}

CHalvexAuxilliaryMessage::CHalvexAuxilliaryMessage(const PIO::RTCM3::UTF8MessageC& message) : m_number(kText) {
    hold(&message);
}

CHalvexAuxilliaryMessage::CHalvexAuxilliaryMessage(const POS_REF_VR_CORRECTION* message) {
    if (message != nullptr) m_number = message->messageNumber;
    hold(message);
}

CHalvexAuxilliaryMessage::CHalvexAuxilliaryMessage(const POS_REF_PHYS_REFERENCE& message)
    : m_number(kPhysicalReference) {
    hold(&message);
}

CHalvexAuxilliaryMessage::CHalvexAuxilliaryMessage(const CHalvexAuxilliaryMessage& other) : IPersistData(other) {
    *this = other;
}

CHalvexAuxilliaryMessage& CHalvexAuxilliaryMessage::operator=(const CHalvexAuxilliaryMessage& other) {
    if (this == &other) return *this;
    Clear();
    m_number = other.m_number;
    switch (m_number) {
        case kStationData:
            hold(other.held<CALN::Msg1014T>());
            break;
        case kIonoGps:
        case kIonoGlonass:
            hold(other.held<CALN::IonoMsgT>());
            break;
        case kGeoGps:
        case kGeoGlonass:
            hold(other.held<CALN::GeoMsgT>());
            break;
        case kText:
            hold(other.held<PIO::RTCM3::UTF8MessageC>());
            break;
        case kPhysicalReference:
            hold(other.held<POS_REF_PHYS_REFERENCE>());
            break;
        default:
            break;
    }
    return *this;
}

CHalvexAuxilliaryMessage::~CHalvexAuxilliaryMessage() = default;

void CHalvexAuxilliaryMessage::Clear() {
    m_number = 0;
    m_holder.reset();
}

bool CHalvexAuxilliaryMessage::loadData(const unsigned char* buffer, std::size_t size) {
    if (buffer == nullptr || size < sizeof m_number || size < getSize()) return false;
    Clear();
    m_number = halvex::loadLittleEndian<std::int32_t>(buffer);
    m_holder = emptyHolder(m_number);
    if (m_holder == nullptr) return false;
    if (m_holder->loadData(buffer + sizeof m_number, size - sizeof m_number)) return true;
    m_holder.reset();
    return false;
}

void CHalvexAuxilliaryMessage::saveData(unsigned char* buffer, std::size_t size) const {
    const std::size_t needed = getSize();
    if (buffer == nullptr || needed == 0 || size < needed) return;
    halvex::storeLittleEndian(buffer, m_number);
    m_holder->saveData(buffer + sizeof m_number, size - sizeof m_number);
}

std::size_t CHalvexAuxilliaryMessage::getSize() const {
    return m_number != 0 && m_holder != nullptr ? sizeof m_number + m_holder->getSize() : 0;
}

std::int32_t CHalvexAuxilliaryMessage::getMessageNumber() const {
    return m_number;
}
CALN::Msg1014T* CHalvexAuxilliaryMessage::getMsg1014T() const {
    return m_number == kStationData ? held<CALN::Msg1014T>() : nullptr;
}
CALN::IonoMsgT* CHalvexAuxilliaryMessage::getMsg1015T() const {
    return m_number == kIonoGps ? held<CALN::IonoMsgT>() : nullptr;
}
CALN::GeoMsgT* CHalvexAuxilliaryMessage::getMsg1016T() const {
    return m_number == kGeoGps ? held<CALN::GeoMsgT>() : nullptr;
}
CALN::IonoMsgT* CHalvexAuxilliaryMessage::getMsg1037T() const {
    return m_number == kIonoGlonass ? held<CALN::IonoMsgT>() : nullptr;
}
CALN::GeoMsgT* CHalvexAuxilliaryMessage::getMsg1038T() const {
    return m_number == kGeoGlonass ? held<CALN::GeoMsgT>() : nullptr;
}
CALN::IonoMsgT* CHalvexAuxilliaryMessage::getMsg1040T() const {
    return m_number == kIonoOther ? held<CALN::IonoMsgT>() : nullptr;
}
CALN::GeoMsgT* CHalvexAuxilliaryMessage::getMsg1041T() const {
    return m_number == kGeoOther ? held<CALN::GeoMsgT>() : nullptr;
}
POS_REF_VR_CORRECTION* CHalvexAuxilliaryMessage::getFKPMsg() const {
    return isAreaCorrection(m_number) ? held<POS_REF_VR_CORRECTION>() : nullptr;
}
POS_REF_PHYS_REFERENCE* CHalvexAuxilliaryMessage::getPhysRefMsg() const {
    return m_number == kPhysicalReference ? held<POS_REF_PHYS_REFERENCE>() : nullptr;
}
PIO::RTCM3::UTF8MessageC* CHalvexAuxilliaryMessage::getMsg1029T() const {
    return m_number == kText ? held<PIO::RTCM3::UTF8MessageC>() : nullptr;
}

bool operator==(const CHalvexAuxilliaryMessage& left, const CHalvexAuxilliaryMessage& right) {
    const auto image = [](const CHalvexAuxilliaryMessage& message) {
        std::vector<unsigned char> bytes(message.getSize());
        message.saveData(bytes.data(), bytes.size());
        return bytes;
    };
    return left.m_number == right.m_number && image(left) == image(right);
}
