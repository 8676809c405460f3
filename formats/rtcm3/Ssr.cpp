#include "formats/rtcm3/Ssr.h"

#include <array>
#include <boost/make_shared.hpp>
#include <utility>

#include "formats/rinex/SatelliteName.h"
#include "formats/rtcm3/BitReader.h"
#include "formats/rtcm3/EpochTime.h"

namespace halvex::rtcm3 {
namespace {

using namespace CALN;
using BSS::TSK::MsgObjectT;

constexpr unsigned kIgsNumber = 4076;
constexpr unsigned kIgsElectronContent = 201;
constexpr unsigned kElectronContent = 1264;
constexpr unsigned kOrbitBits = 22 + 20 + 20 + 21 + 19 + 19;
constexpr unsigned kClockBits = 22 + 21 + 27;
constexpr unsigned kHighRateClockBits = 22;
constexpr unsigned kUraBits = 6;
constexpr unsigned kCodeBiasBits = 5 + 14;
constexpr unsigned kPhaseBiasBits = 5 + 1 + 2 + 4 + 20;

/// Where the messages of a system stand and what is not as wide as in those of the others. GPS and GLONASS: RTCM
/// 10403.3, messages 1057 to 1068; the rest as the proposals for them have it and streams are sent.
struct Layout {
    eCALSATSYSTEM system = eCALSATSYSTEM_NONE;
    unsigned firstNumber = 0;  ///< orbits; the five others of kRtcmKinds follow
    unsigned phaseBiasNumber = 0;
    EpochScale scale = EpochScale::gpsWeek;
    unsigned timeBits = 20;
    unsigned countBits = 6;
    unsigned satelliteBits = 6;
    unsigned satelliteBase = 0;  ///< what is sent and this give the number of the satellite
    unsigned ephemerisTimeBits = 0;
    std::array<unsigned, 2> issueBits{8, 8};  ///< as wide as one of these
};
constexpr std::array<Layout, 6> kRtcm{{
    {eCALSATSYSTEM_GPS, 1057, 1265},
    {eCALSATSYSTEM_GLONASS, 1063, 1266, EpochScale::glonassDay, 17, 6, 5},
    {eCALSATSYSTEM_GALILEO, 1240, 1267, EpochScale::gpsWeek, 20, 6, 6, 0, 0, {10, 10}},
    {eCALSATSYSTEM_QZSS, 1246, 1268, EpochScale::gpsWeek, 20, 4, 4},
    {eCALSATSYSTEM_SBAS, 1252, 1269, EpochScale::gpsWeek, 20, 6, 6, 20, 9, {24, 24}},
    {eCALSATSYSTEM_BEIDOU, 1258, 1270, EpochScale::beidouWeek, 20, 6, 6, 0, 10, {8, 24}},
}};
constexpr std::array kRtcmKinds{SsrKind::orbits,          SsrKind::clocks, SsrKind::codeBiases,
                                SsrKind::orbitsAndClocks, SsrKind::ura,    SsrKind::highRateClocks};

/// Systems of 4076, from sub-type 21 on twenty apart, and the kinds of each. IGS SSR 1.00.
constexpr std::array kIgsSystems{eCALSATSYSTEM_GPS,  eCALSATSYSTEM_GLONASS, eCALSATSYSTEM_GALILEO,
                                 eCALSATSYSTEM_QZSS, eCALSATSYSTEM_BEIDOU,  eCALSATSYSTEM_SBAS};
constexpr std::array kIgsKinds{
    SsrKind::orbits,      SsrKind::clocks, SsrKind::orbitsAndClocks, SsrKind::highRateClocks, SsrKind::codeBiases,
    SsrKind::phaseBiases, SsrKind::ura};
constexpr unsigned kIgsSbasBase = 19;

struct Found {
    Layout layout;
    SsrKind kind = SsrKind::orbits;
};

std::optional<Found> findIgs(unsigned subType) {
    if (subType == kIgsElectronContent) return Found{{}, SsrKind::electronContent};
    const unsigned place = subType / 20;
    const unsigned kind = subType % 20;
    if (place < 1 || place > kIgsSystems.size() || kind < 1 || kind > kIgsKinds.size()) return std::nullopt;
    Layout layout;
    layout.system = kIgsSystems[place - 1];
    if (layout.system == eCALSATSYSTEM_SBAS) layout.satelliteBase = kIgsSbasBase;
    return Found{layout, kIgsKinds[kind - 1]};
}

std::optional<Found> find(const MessageType& message) {
    if (message.number == kIgsNumber) return findIgs(message.subType);
    if (message.number == kElectronContent) return Found{{}, SsrKind::electronContent};
    for (const Layout& layout : kRtcm) {
        if (message.number == layout.phaseBiasNumber) return Found{layout, SsrKind::phaseBiases};
        const unsigned place = message.number - layout.firstNumber;
        if (place < kRtcmKinds.size()) return Found{layout, kRtcmKinds[place]};
    }
    return std::nullopt;
}

void readFields(BitReader& in, SSROrbitKind::Entry& entry) {
    in.takeSigned(22, entry.radial);
    in.takeSigned(20, entry.alongTrack);
    in.takeSigned(20, entry.crossTrack);
    in.takeSigned(21, entry.radialRate);
    in.takeSigned(19, entry.alongTrackRate);
    in.takeSigned(19, entry.crossTrackRate);
}
void readFields(BitReader& in, SSRClockKind::Entry& entry) {
    in.takeSigned(22, entry.c0);
    in.takeSigned(21, entry.c1);
    in.takeSigned(27, entry.c2);
}
void readFields(BitReader& in, SSRHighRateClockKind::Entry& entry) {
    in.takeSigned(kHighRateClockBits, entry.correction);
}
void readFields(BitReader& in, SSRURAKind::Entry& entry) {
    in.take(kUraBits, entry.ura);
}
void readFields(BitReader& in, SSRCodeBiasKind::Entry& entry) {
    const unsigned count = in.number(5);
    if (in.left() < std::size_t{count} * kCodeBiasBits) return in.skip(in.left() + 1);
    entry.biases.resize(count);
    for (SSRCodeBiasKind::Bias& bias : entry.biases) {
        in.take(5, bias.signal);
        in.takeSigned(14, bias.bias);
    }
}
void readFields(BitReader& in, SSRPhaseBiasKind::Entry& entry) {
    const unsigned count = in.number(5);
    in.take(9, entry.yawAngle);
    in.takeSigned(8, entry.yawRate);
    if (in.left() < std::size_t{count} * kPhaseBiasBits) return in.skip(in.left() + 1);
    entry.biases.resize(count);
    for (SSRPhaseBiasKind::Bias& bias : entry.biases) {
        in.take(5, bias.signal);
        in.take(1, bias.integer);
        in.take(2, bias.wideLane);
        in.take(4, bias.discontinuityCounter);
        in.takeSigned(20, bias.bias);
    }
}

/// Reads one message. Whatever is wrong shows at its end, in ok() of the bits.
class Reader {
public:
    Reader(const Frame& frame, const Found& found, SsrMessages& out)
        : m_in(frame.message),
          m_layout(found.layout),
          m_kind(found.kind),
          m_igs(frame.number == kIgsNumber),
          m_out(out) {}

    [[nodiscard]] bool read(const SMjdTime& reference) {
        if (!readHead(reference)) return false;
        switch (m_kind) {
            case SsrKind::orbits:
                return readOrbits(0);
            case SsrKind::orbitsAndClocks:
                return readOrbits(kClockBits);
            case SsrKind::clocks:
                return readEntries<SSRClockCorrMsgT>(kClockBits);
            case SsrKind::highRateClocks:
                return readEntries<SSRHighRateClockMsgT>(kHighRateClockBits);
            case SsrKind::codeBiases:
                return readEntries<SSRCodeBiasMsgT>(5);
            case SsrKind::phaseBiases:
                return readEntries<SSRPhaseBiasMsgT>(5 + 9 + 8);
            case SsrKind::ura:
                return readEntries<SSRURAMsgT>(kUraBits);
            case SsrKind::electronContent:
                return readElectronContent();
        }
        return false;
    }

private:
    template <class Message>
    using Object = boost::shared_ptr<MsgObjectT<Message>>;

    bool readHead(const SMjdTime& reference) {
        constexpr std::int64_t kMillisecond = 1000;
        constexpr unsigned kWeek = 604800;
        constexpr unsigned kDay = 86400;
        const bool hasOrbits = m_kind == SsrKind::orbits || m_kind == SsrKind::orbitsAndClocks;
        m_in.skip(12);
        if (m_igs) {
            m_in.take(3, m_head.igsVersion);
            m_in.skip(8);
        }
        const unsigned seconds = m_in.number(m_layout.timeBits);
        m_head.system = m_layout.system;
        m_in.take(4, m_head.updateInterval);
        m_in.take(1, m_head.multipleMessage);
        if (hasOrbits && !m_igs) m_in.take(1, m_head.referenceDatum);
        m_in.take(4, m_head.issueOfData);
        m_in.take(16, m_head.provider);
        m_in.take(4, m_head.solution);
        if (hasOrbits && m_igs) m_in.take(1, m_head.referenceDatum);
        if (m_kind == SsrKind::phaseBiases) {
            m_in.take(1, m_head.dispersiveBiasConsistency);
            m_in.take(1, m_head.melbourneWuebbenaConsistency);
        }
        if (m_kind != SsrKind::electronContent) m_count = m_in.number(m_layout.countBits);
        // A Moscow day with a leap second has one more.
        const bool isTime = m_layout.scale == EpochScale::glonassDay ? seconds <= kDay : seconds < kWeek;
        if (!m_in.ok() || !isTime) return false;
        m_head.epoch = instantNear(reference, m_layout.scale, seconds * kMillisecond);
        return true;
    }

    /// A message of this head, of the first code of its kind without a `type`, with room for its entries. Their count
    /// has been checked.
    template <class Message>
    Object<Message> begin(eCALSSRCorrectionType type = eCALSSR_NONE) {
        auto message = boost::make_shared<MsgObjectT<Message>>();
        static_cast<SSRCorrMsgBaseT&>(*message) = m_head;
        message->type = type != eCALSSR_NONE ? type : message->GetSSRType();
        message->entries.reserve(m_count);
        m_out.messages.push_back(message);
        return message;
    }

    /// None when the system has no such satellite.
    SCalSatID readSatellite() {
        const unsigned number = m_in.number(m_layout.satelliteBits) + m_layout.satelliteBase;
        if (number >= 1 && number <= rinex::lastSatelliteInFiles(*systemOfCode(m_layout.system))) {
            return {m_layout.system, static_cast<unsigned char>(number)};
        }
        ++m_out.unknownSatellites;
        return {};
    }

    template <class Message>
    static void add(const Object<Message>& message, const SCalSatID& satellite, typename Message::Entry& entry) {
        if (satellite.number == 0) return;
        entry.satId = satellite;
        message->entries.push_back(std::move(entry));
    }

    /// Whether the message can have as many entries as it counts, of so many bits at least.
    [[nodiscard]] bool hasRoom(std::size_t entryBits) const {
        return m_in.left() >= m_count * (m_layout.satelliteBits + entryBits);
    }

    template <class Message>
    bool readEntries(std::size_t leastBits) {
        if (!hasRoom(leastBits)) return false;
        const auto message = begin<Message>();
        for (unsigned i = 0; i < m_count; ++i) {
            const SCalSatID satellite = readSatellite();
            typename Message::Entry entry;
            readFields(m_in, entry);
            add(message, satellite, entry);
        }
        return finish();
    }

    /// Orbits, each with `clockBits` of a clock behind it or none.
    bool readOrbits(unsigned clockBits) {
        const unsigned otherBits = m_layout.ephemerisTimeBits + kOrbitBits + clockBits;
        const unsigned issueBits = issueWidth(otherBits);
        if (issueBits == 0 || !hasRoom(otherBits + issueBits)) return false;
        const bool combined = clockBits != 0;
        const auto orbits = begin<SSROrbitCorrMsgT>(combined ? eCALSSR_ORBIT_COMBINED : eCALSSR_ORBIT);
        const auto clocks = combined ? begin<SSRClockCorrMsgT>(eCALSSR_CLOCK_COMBINED) : Object<SSRClockCorrMsgT>();
        for (unsigned i = 0; i < m_count; ++i) {
            const SCalSatID satellite = readSatellite();
            SSROrbitKind::Entry orbit;
            m_in.take(m_layout.ephemerisTimeBits, orbit.ephemerisTime);
            m_in.take(issueBits, orbit.issueOfData);
            readFields(m_in, orbit);
            add(orbits, satellite, orbit);
            if (!combined) continue;
            SSRClockKind::Entry clock;
            readFields(m_in, clock);
            add(clocks, satellite, clock);
        }
        return finish();
    }

    /// Width of an issue beside `otherBits` of the entry's: where there are two, the one that fills the message, 0 when
    /// none does.
    [[nodiscard]] unsigned issueWidth(std::size_t otherBits) const {
        const auto& widths = m_layout.issueBits;
        if (widths[0] == widths[1]) return widths[0];
        for (const unsigned width : widths) {
            const std::size_t needed = m_count * (m_layout.satelliteBits + otherBits + width);
            if (m_in.left() >= needed && m_in.left() - needed < 8) return width;
        }
        return 0;
    }

    bool readElectronContent() {
        std::uint16_t quality = 0;
        m_in.take(9, quality);
        m_count = m_in.number(2) + 1;
        const auto message = begin<QTVertIonoCorrMsgT>();
        for (unsigned layer = 0; layer < m_count; ++layer) {
            QTVertIonoKind::Entry entry;
            m_in.take(8, entry.height);
            const unsigned degree = m_in.number(4) + 1;
            const unsigned order = m_in.number(4) + 1;
            // Degrees from each order to the highest one; there is no sine of order 0.
            const unsigned cosines = (order + 1) * (degree + 1) - order * (order + 1) / 2;
            const unsigned sines = cosines - (degree + 1);
            constexpr unsigned kBits = 16;
            if (order > degree || m_in.left() < std::size_t{cosines + sines} * kBits) return false;
            entry.quality = quality;
            entry.degree = static_cast<std::uint8_t>(degree);
            entry.order = static_cast<std::uint8_t>(order);
            entry.cosines.resize(cosines);
            entry.sines.resize(sines);
            for (std::int16_t& value : entry.cosines) m_in.takeSigned(kBits, value);
            for (std::int16_t& value : entry.sines) m_in.takeSigned(kBits, value);
            message->entries.push_back(std::move(entry));
        }
        return finish();
    }

    bool finish() {
        m_out.bitsLeft = m_in.left();
        return m_in.ok();
    }

    BitReader m_in;
    Layout m_layout;
    SsrKind m_kind;
    bool m_igs;
    SsrMessages& m_out;
    SSRCorrMsgBaseT m_head;
    unsigned m_count = 0;
};

}  // namespace

std::optional<SsrType> ssrTypeOf(const MessageType& message) {
    const auto found = find(message);
    return found ? std::optional(SsrType{found->layout.system, found->kind}) : std::nullopt;
}

bool readSsr(const Frame& frame, const SMjdTime& reference, SsrMessages& out) {
    const auto found = find({frame.number, frame.subType});
    if (!found || !reference.IsSet()) return false;
    SsrMessages read;
    if (!Reader(frame, *found, read).read(reference)) return false;
    out = std::move(read);
    return true;
}

}  // namespace halvex::rtcm3
