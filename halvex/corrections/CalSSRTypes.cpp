#include "halvex/corrections/CalSSRTypes.h"

#include <array>
#include <boost/make_shared.hpp>
#include <vector>

#include "halvex/platform/kernix/Assert.h"
#include "halvex/platform/kernix/ByteCodec.h"

using namespace CALN;
using BSS::TSK::MsgObjectT;

namespace {

constexpr std::uint32_t kVersion = 1;
constexpr std::size_t kWordSize = sizeof(std::uint32_t);
constexpr std::size_t kSiteSize = 8;

/// The epoch behind version and site, then the host's word and the availability.
constexpr std::size_t kEpochAt = kWordSize + kSiteSize;
constexpr std::size_t kSetHead = kEpochAt + SMjdTime::kSavedSize + kWordSize + kSystemSlots * kWordSize;

template <class Message>
boost::shared_ptr<MsgObjectT<SSRCorrMsgBaseT>> create() {
    return boost::make_shared<MsgObjectT<Message>>();
}

/// A message of the kind that the code stands for, null for a code without one.
boost::shared_ptr<MsgObjectT<SSRCorrMsgBaseT>> createMessage(std::uint32_t code) {
    switch (getFirstCodeOfKind(static_cast<eCALSSRCorrectionType>(code))) {
        case eCALSSR_ORBIT:
            return create<SSROrbitCorrMsgT>();
        case eCALSSR_CLOCK:
            return create<SSRClockCorrMsgT>();
        case eCALSSR_PHASE_BIAS:
            return create<SSRPhaseBiasMsgT>();
        case eCALSSR_CODE_BIAS:
            return create<SSRCodeBiasMsgT>();
        case eCALSSR_URA:
            return create<SSRURAMsgT>();
        case eCALSSR_HIGH_RATE_CLOCK:
            return create<SSRHighRateClockMsgT>();
        case eCALSSR_VERTICAL_IONOSPHERE:
            return create<QTVertIonoCorrMsgT>();
        case eCALSSR_SLANT_IONOSPHERE:
            return create<QTSlantIonoCorrMsgT>();
        case eCALSSR_VERTICAL_TROPOSPHERE:
            return create<QTVertTropoCorrMsgT>();
        case eCALSSR_SLANT_TROPOSPHERE:
            return create<QTSlantTropoCorrMsgT>();
        case eCALSSR_BASE_COORDINATES:
            return create<QTBaseCoordsMsgT>();
        case eCALSSR_NETWORK_GEOMETRY:
            return create<QTNetGeometryCorrMsgT>();
        default:
            return nullptr;
    }
}

/// Hands every slot whose bit is set to `visit`, in the order of the saved form: the one place where it stands.
template <class Set, class Visit>
void forEachAnnounced(Set& set, const std::array<SSRAllCorrMsgT::ebfSSRContent, kSystemSlots>& words, Visit visit) {
    const auto slot = [&](std::size_t word, SSRAllCorrMsgT::ebfSSRContent bit, auto& message) {
        if ((words[word] & bit) != 0) visit(message);
    };
    slot(0, Set::ebfSSR_BASE_COORDINATES, set.baseCoords);
    slot(0, Set::ebfSSR_VERTICAL_TROPOSPHERE, set.vertTropo);
    slot(0, Set::ebfSSR_VERTICAL_IONOSPHERE, set.vertIono);
    slot(0, Set::ebfSSR_NETWORK_GEOMETRY, set.netGeometry);
    for (std::size_t system = 1; system < words.size(); ++system) {
        slot(system, Set::ebfSSR_SIGNALS, set.signal[system]);
        slot(system, Set::ebfSSR_ORBIT, set.orbit[system]);
        slot(system, Set::ebfSSR_CLOCK, set.clock[system]);
        slot(system, Set::ebfSSR_HIGH_RATE_CLOCK, set.highRateClock[system]);
        slot(system, Set::ebfSSR_CODE_BIAS, set.codeBias[system]);
        slot(system, Set::ebfSSR_PHASE_BIAS, set.phaseBias[system]);
        slot(system, Set::ebfSSR_SLANT_IONOSPHERE, set.slantIono[system]);
        slot(system, Set::ebfSSR_SLANT_TROPOSPHERE, set.slantTropo[system]);
    }
}

std::array<SSRAllCorrMsgT::ebfSSRContent, kSystemSlots> availability(const SSRAllCorrMsgT& set) {
    std::array<SSRAllCorrMsgT::ebfSSRContent, kSystemSlots> words{};
    set.getDataAvlblty(words.data(), true, false, SSRAllCorrMsgT::ebfSSR_ALL);
    return words;
}

/// Loads a fresh message into the slot, whether or not it loads.
template <class Message>
std::uint64_t loadSlot(boost::shared_ptr<const MsgObjectT<Message>>& slot, const unsigned char* buffer,
                       std::uint64_t length) {
    const auto message = boost::make_shared<MsgObjectT<Message>>();
    std::uint64_t used = 0;
    static_cast<void>(message->loadData(buffer, length, used));
    slot = message;
    return used;
}

std::vector<unsigned char> savedForm(const IPersistData& record) {
    std::vector<unsigned char> bytes(record.getSize());
    record.saveData(bytes.data(), bytes.size());
    return bytes;
}

}  // namespace

std::size_t CHalvexSSRCorr::getSize() const {
    return kWordSize + kSiteSize + kWordSize + (m_message != nullptr ? m_message->getSize() : 0);
}

void CHalvexSSRCorr::saveData(unsigned char* buffer, std::size_t length) const {
    if (buffer == nullptr || getSize() > length) return;
    std::size_t size = kWordSize + kSiteSize + kWordSize;
    halvex::storeLittleEndian(buffer, kVersion);
    m_site.saveData(buffer + kWordSize, length - kWordSize);
    const auto code = m_message != nullptr ? static_cast<std::uint32_t>(m_message->GetSSRType()) : 0U;
    halvex::storeLittleEndian(buffer + kWordSize + kSiteSize, code);
    if (m_message != nullptr) {
        std::uint64_t used = 0;
        m_message->saveData(buffer + size, length - size, used);
        size += used;
    }
    if (size > length) SYS_Assert("iSize <= uiBufferLength", "CalSSRTypesHalvex");
}

bool CHalvexSSRCorr::loadData(const unsigned char* buffer, std::size_t length) {
    halvex::ByteReader in(buffer, length);
    std::uint32_t version = 0;
    std::uint32_t code = 0;
    in(version);
    if (!in.ok() || version != kVersion) return false;
    const unsigned char* site = in.take(kSiteSize);
    in(code);
    if (!in.ok()) return false;
    m_site.loadData(site, kSiteSize);
    const auto message = createMessage(code);
    std::uint64_t used = 0;
    if (message != nullptr && !message->loadData(in.position(), in.left(), used)) return false;
    m_message = message;
    return true;
}

bool operator==(const CHalvexSSRCorr& left, const CHalvexSSRCorr& right) {
    return savedForm(left) == savedForm(right);
}

std::size_t CHalvexSSRAllCorr::getSize() const {
    std::uint64_t size = kSetHead;
    forEachAnnounced(*this, availability(*this), [&](const auto& slot) { size += slot->getSize(); });
    return size;
}

void CHalvexSSRAllCorr::saveData(unsigned char* buffer, std::size_t length) const {
    std::uint64_t used = 0;
    saveData(buffer, length, used);
}

bool CHalvexSSRAllCorr::loadData(const unsigned char* buffer, std::size_t length) {
    std::uint64_t used = 0;
    return loadData(buffer, length, used);
}

void CHalvexSSRAllCorr::saveData(unsigned char* buffer, std::uint64_t length, std::uint64_t& used) const {
    used = 0;
    if (buffer == nullptr || getSize() > length) return;
    halvex::storeLittleEndian(buffer, kVersion);
    m_site.saveData(buffer + kWordSize, kSiteSize);
    std::uint64_t epochSize = 0;
    m_epoch.saveData(buffer + kEpochAt, SMjdTime::kSavedSize, epochSize);
    halvex::ByteWriter out(buffer + kEpochAt + epochSize, kSetHead - kEpochAt - epochSize);
    out(word);
    const auto words = availability(*this);
    for (const auto each : words) out(static_cast<std::uint32_t>(each));
    used = kSetHead;
    forEachAnnounced(*this, words, [&](const auto& slot) {
        std::uint64_t size = 0;
        slot->saveData(buffer + used, length - used, size);
        used += size;
    });
}

bool CHalvexSSRAllCorr::loadData(const unsigned char* buffer, std::uint64_t length, std::uint64_t& used) {
    used = 0;
    halvex::ByteReader in(buffer, length);
    std::uint32_t version = 0;
    in(version);
    if (!in.ok() || version != kVersion || length < kSetHead) return false;
    const unsigned char* site = in.take(kSiteSize);
    SMjdTime epoch;
    std::uint64_t epochSize = 0;
    if (!epoch.loadData(in.take(SMjdTime::kSavedSize), SMjdTime::kSavedSize, epochSize)) return false;
    m_site.loadData(site, kSiteSize);
    m_epoch = epoch;
    in(word);
    std::array<ebfSSRContent, kSystemSlots> words{};
    for (ebfSSRContent& each : words) {
        std::uint32_t bits = 0;
        in(bits);
        each = static_cast<ebfSSRContent>(bits);
    }
    used = kSetHead;
    forEachAnnounced(*this, words, [&](auto& slot) { used += loadSlot(slot, buffer + used, length - used); });
    return true;
}

bool operator==(const CHalvexSSRAllCorr& left, const CHalvexSSRAllCorr& right) {
    return savedForm(left) == savedForm(right);
}
