#include "halvex/platform/caln/SsrMessages.h"

#include <type_traits>
#include <utility>

#include "halvex/platform/kernix/ByteCodec.h"
#include "halvex/platform/kernix/RecordCodec.h"

namespace CALN {
namespace {

using halvex::ByteCounter;
using halvex::ByteReader;
using halvex::ByteWriter;
using halvex::enumerationField;

constexpr std::uint16_t kSavedVersion = 2;

template <class Io, class Id>
void fields(Io& io, Id& id) requires std::is_same_v<std::remove_const_t<Id>, SCalSatID> {
    enumerationField(io, id.system);
    io(id.number);
}
template <class Io, class Id>
void fields(Io& io, Id& id) requires std::is_same_v<std::remove_const_t<Id>, SSRSignalID> {
    enumerationField(io, id.system);
    io(id.signal);
}

// Lists stand in fields and fields in lists.
template <class Io, class Element>
void list(Io& io, const std::vector<Element>& elements);
template <class Element>
void list(ByteReader& io, std::vector<Element>& elements);

template <class Type, class... Any>
inline constexpr bool isOneOf = (std::is_same_v<std::remove_const_t<Type>, Any> || ...);

template <class Io, class E>
void fields(Io& io, E& e) requires isOneOf<E, SSRCodeBiasKind::Bias> {
    io(e.signal);
    io(e.bias);
}
template <class Io, class E>
void fields(Io& io, E& e) requires isOneOf<E, SSRPhaseBiasKind::Bias> {
    io(e.signal);
    io(e.integer);
    io(e.wideLane);
    io(e.discontinuityCounter);
    io(e.bias);
}
template <class Io, class E>
void fields(Io& io, E& e) requires isOneOf<E, SSROrbitKind::Entry> {
    fields(io, e.satId);
    io(e.issueOfData);
    io(e.ephemerisTime);
    io(e.radial);
    io(e.alongTrack);
    io(e.crossTrack);
    io(e.radialRate);
    io(e.alongTrackRate);
    io(e.crossTrackRate);
}
template <class Io, class E>
void fields(Io& io, E& e) requires isOneOf<E, SSRClockKind::Entry> {
    fields(io, e.satId);
    io(e.c0);
    io(e.c1);
    io(e.c2);
}
template <class Io, class E>
void fields(Io& io, E& e) requires isOneOf<E, SSRHighRateClockKind::Entry> {
    fields(io, e.satId);
    io(e.correction);
}
template <class Io, class E>
void fields(Io& io, E& e) requires isOneOf<E, SSRCodeBiasKind::Entry> {
    fields(io, e.satId);
    list(io, e.biases);
}
template <class Io, class E>
void fields(Io& io, E& e) requires isOneOf<E, SSRPhaseBiasKind::Entry> {
    fields(io, e.satId);
    io(e.yawAngle);
    io(e.yawRate);
    list(io, e.biases);
}
template <class Io, class E>
void fields(Io& io, E& e) requires isOneOf<E, SSRURAKind::Entry> {
    fields(io, e.satId);
    io(e.ura);
}
template <class Io, class E>
void fields(Io& io, E& e) requires isOneOf<E, SSRSignalKind::Entry> {
    fields(io, e.satId);
    fields(io, e.signal);
}
template <class Io, class E>
void fields(Io& io, E& e) requires isOneOf<E, QTBaseCoordsKind::Entry> {
    fields(io, e.satId);
    io(e.stationId);
    io(e.x);
    io(e.y);
    io(e.z);
}
template <class Io, class E>
void fields(Io& io, E& e) requires isOneOf<E, QTVertTropoKind::Entry> {
    fields(io, e.satId);
    io(e.stationId);
    io(e.hydrostaticDelay);
    io(e.wetDelay);
    io(e.gradientNorth);
    io(e.gradientEast);
}
template <class Io, class E>
void fields(Io& io, E& e) requires isOneOf<E, QTSlantTropoKind::Entry, QTSlantIonoKind::Entry> {
    fields(io, e.satId);
    io(e.stationId);
    io(e.delay);
}
template <class Io, class E>
void fields(Io& io, E& e) requires isOneOf<E, QTVertIonoKind::Entry> {
    fields(io, e.satId);
    io(e.height);
    io(e.degree);
    io(e.order);
    io(e.quality);
    list(io, e.cosines);
    list(io, e.sines);
}
template <class Io, class E>
void fields(Io& io, E& e) requires isOneOf<E, QTNetGeometryKind::Entry> {
    fields(io, e.satId);
    io(e.stationId);
    io(e.issueOfData);
    io(e.correction);
}

/// A list: its count, then each element. What comes from outside says how many there are only as far as the bytes that
/// follow can hold that many.
template <class Io, class Element>
void list(Io& io, const std::vector<Element>& elements) {
    io(static_cast<std::uint32_t>(elements.size()));
    for (const Element& element : elements) {
        if constexpr (std::is_arithmetic_v<Element>) {
            io(element);
        } else {
            fields(io, element);
        }
    }
}
template <class Element>
void list(ByteReader& io, std::vector<Element>& elements) {
    std::uint32_t count = 0;
    io(count);
    ByteCounter least;
    if constexpr (std::is_arithmetic_v<Element>) {
        least(Element{});
    } else {
        const Element smallest{};
        fields(least, smallest);
    }
    if (count > io.left() / least.size()) return io.fail();
    elements.resize(count);
    for (Element& element : elements) {
        if constexpr (std::is_arithmetic_v<Element>) {
            io(element);
        } else {
            fields(io, element);
        }
    }
}

template <class Io, class M>
void fieldsBehindEpoch(Io& io, M& m) {
    io(m.multipleMessage);
    io(m.updateInterval);
    io(m.issueOfData);
    io(m.provider);
    io(m.solution);
    io(m.referenceDatum);
    io(m.igsVersion);
    io(m.dispersiveBiasConsistency);
    io(m.melbourneWuebbenaConsistency);
}
template <class Io>
void head(Io& io, const SSRCorrMsgBaseT& m) {
    io(kSavedVersion);
    io(static_cast<std::uint32_t>(m.GetSSRType()));
    io(static_cast<std::uint8_t>(m.system));
    io(m.epoch.GetMjdDay());
    io(m.epoch.GetMjdFractMilliseconds());
    fieldsBehindEpoch(io, m);
}
void head(ByteReader& io, SSRCorrMsgBaseT& m) {
    std::uint16_t version = 0;
    std::uint32_t type = 0;
    std::uint8_t system = 0;
    io(version);
    io(type);
    io(system);
    std::uint64_t used = 0;
    const unsigned char* epoch = io.take(SMjdTime::kSavedSize);
    if (system >= kSystemSlots) io.fail();
    if (version != kSavedVersion || !m.epoch.loadData(epoch, SMjdTime::kSavedSize, used)) return io.fail();
    fieldsBehindEpoch(io, m);
    m.type = static_cast<eCALSSRCorrectionType>(type);
    m.system = static_cast<eCALSATSYSTEM>(system);
}

/// Entries of a message without any.
const std::vector<SCalSatID> kNoEntries;

template <class Entry>
std::uint64_t sizeOf(const SSRCorrMsgBaseT& m, const std::vector<Entry>& entries) {
    ByteCounter counter;
    head(counter, m);
    list(counter, entries);
    return counter.size();
}
template <class Entry>
void save(const SSRCorrMsgBaseT& m, const std::vector<Entry>& entries, unsigned char* buffer, std::uint64_t length,
          std::uint64_t& used) {
    const std::uint64_t size = sizeOf(m, entries);
    used = 0;
    if (buffer == nullptr || length < size) return;
    ByteWriter out(buffer, size);
    head(out, m);
    list(out, entries);
    used = size;
}
/// Loads a message of `kind`; of any, when that is none.
template <class Entry>
bool load(SSRCorrMsgBaseT& m, std::vector<Entry>& entries, eCALSSRCorrectionType kind, const unsigned char* buffer,
          std::uint64_t length, std::uint64_t& used) {
    used = 0;
    ByteReader in(buffer, length);
    SSRCorrMsgBaseT loaded;
    std::vector<Entry> loadedEntries;
    head(in, loaded);
    if (kind != eCALSSR_NONE && getFirstCodeOfKind(loaded.type) != kind) return false;
    if (in.ok()) list(in, loadedEntries);
    if (!in.ok()) return false;
    m.SSRCorrMsgBaseT::operator=(loaded);
    entries = std::move(loadedEntries);
    used = length - in.left();
    return true;
}

}  // namespace

SSRCorrMsgBaseT::~SSRCorrMsgBaseT() = default;

eCALSSRCorrectionType SSRCorrMsgBaseT::GetSSRType() const {
    return type;
}
std::uint64_t SSRCorrMsgBaseT::getSize() const {
    return sizeOf(*this, kNoEntries);
}
void SSRCorrMsgBaseT::saveData(unsigned char* buffer, std::uint64_t length, std::uint64_t& used) const {
    save(*this, kNoEntries, buffer, length, used);
}
bool SSRCorrMsgBaseT::loadData(const unsigned char* buffer, std::uint64_t length, std::uint64_t& used) {
    std::vector<SCalSatID> entries;
    SSRCorrMsgBaseT loaded;
    if (!load(loaded, entries, eCALSSR_NONE, buffer, length, used) || !entries.empty()) {
        used = 0;
        return false;
    }
    *this = loaded;
    return true;
}
void SSRCorrMsgBaseT::getSatIDs(std::vector<SCalSatID>& /*satellites*/) const {}

bool SSRCorrMsgBaseT::equals(const SSRCorrMsgBaseT& other) const {
    return GetSSRType() == other.GetSSRType() && system == other.system && epoch == other.epoch &&
           multipleMessage == other.multipleMessage && updateInterval == other.updateInterval &&
           issueOfData == other.issueOfData && provider == other.provider && solution == other.solution &&
           referenceDatum == other.referenceDatum && igsVersion == other.igsVersion &&
           dispersiveBiasConsistency == other.dispersiveBiasConsistency &&
           melbourneWuebbenaConsistency == other.melbourneWuebbenaConsistency;
}

template <class Kind>
eCALSSRCorrectionType SSRMessageT<Kind>::GetSSRType() const {
    return type != eCALSSR_NONE ? type : Kind::kType;
}
template <class Kind>
std::uint64_t SSRMessageT<Kind>::getSize() const {
    return sizeOf(*this, entries);
}
template <class Kind>
void SSRMessageT<Kind>::saveData(unsigned char* buffer, std::uint64_t length, std::uint64_t& used) const {
    save(*this, entries, buffer, length, used);
}
template <class Kind>
bool SSRMessageT<Kind>::loadData(const unsigned char* buffer, std::uint64_t length, std::uint64_t& used) {
    return load(*this, entries, Kind::kType, buffer, length, used);
}
template <class Kind>
void SSRMessageT<Kind>::getSatIDs(std::vector<SCalSatID>& satellites) const {
    satellites.reserve(satellites.size() + entries.size());
    for (const Entry& entry : entries) satellites.push_back(entry.satId);
}

template struct SSRMessageT<SSROrbitKind>;
template struct SSRMessageT<SSRClockKind>;
template struct SSRMessageT<SSRHighRateClockKind>;
template struct SSRMessageT<SSRCodeBiasKind>;
template struct SSRMessageT<SSRPhaseBiasKind>;
template struct SSRMessageT<SSRURAKind>;
template struct SSRMessageT<SSRSignalKind>;
template struct SSRMessageT<QTBaseCoordsKind>;
template struct SSRMessageT<QTVertTropoKind>;
template struct SSRMessageT<QTSlantTropoKind>;
template struct SSRMessageT<QTVertIonoKind>;
template struct SSRMessageT<QTSlantIonoKind>;
template struct SSRMessageT<QTNetGeometryKind>;

}  // namespace CALN
