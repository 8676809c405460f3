#pragma once

#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <cstdint>

#include "halvex/observations/HalvexUniqueID.h"
#include "halvex/platform/Export.h"
#include "halvex/platform/caln/SsrAllCorrections.h"
#include "halvex/platform/kernix/PersistData.h"

/// Level difference of one signal. Plain value.
struct SLvlDiff {
    SLvlDiff() = default;
    explicit SLvlDiff(const CALN::SSRSignalID& signalId) : signal(signalId) {}
    SLvlDiff(const CALN::SSRSignalID& signalId, double levelDifference, signed char mark = -1)
        : signal(signalId), value(levelDifference), tag(mark) {}

    friend bool operator==(const SLvlDiff&, const SLvlDiff&) = default;

    CALN::SSRSignalID signal;
    double value = 0.0;
    signed char tag = -1;  ///< the caller's own; -1: none
};

/// One correction message of any kind, of one site. Copies share the message. Without locks.
///
/// Saved form: uint32 version 1, the site (8 bytes), uint32 type code of the message (0: no message), then the message
/// in its own saved form. A code without a kind of its own (0, 17, above 18) loads as a record without a message.
class HALVEX_EXPORT CHalvexSSRCorr : public IPersistData {
public:
    using Message = boost::shared_ptr<const BSS::TSK::MsgObjectT<CALN::SSRCorrMsgBaseT>>;

    CHalvexSSRCorr() : CHalvexSSRCorr(CHalvexUniqueSiteID()) {}
    explicit CHalvexSSRCorr(const CHalvexUniqueSiteID& site, const Message& message = Message())
        : m_site(site), m_message(message) {}

    [[nodiscard]] const CHalvexUniqueSiteID& GetSiteID() const { return m_site; }
    /// Null when there is none.
    [[nodiscard]] const Message& GetMessage() const { return m_message; }

    /// False, with the record as it was, for a null buffer, one of less than 16 bytes, and another version; false, with
    /// the site taken over and the message as it was, when the message does not load.
    bool loadData(const unsigned char* buffer, std::size_t length) override;
    void saveData(unsigned char* buffer, std::size_t length) const override;
    [[nodiscard]] std::size_t getSize() const override;

    /// Same site and same saved form.
    friend HALVEX_EXPORT bool operator==(const CHalvexSSRCorr& left, const CHalvexSSRCorr& right);

private:
    CHalvexUniqueSiteID m_site;
    Message m_message;
};

/// The complete correction set of one site at one epoch. Copies share the messages. Without locks.
///
/// Saved form: uint32 version 1, the site (8 bytes), the epoch (12 bytes), uint32 word, nine uint32 of availability
/// bits (SSRAllCorrMsgT), then the messages that they announce, each in its own saved form: base coordinates, vertical
/// troposphere, vertical ionosphere, network geometry; then for each system code from 1 to 8 signals, orbit, clock,
/// high-rate clock, code bias, phase bias, slant ionosphere, slant troposphere. Slot 0 of the systems is never saved.
///
/// Loading replaces the slots that are announced and leaves the others as they are. A message that does not load is put
/// into its slot as it then stands, empty, and the ones behind it are looked for in its place.
class HALVEX_EXPORT CHalvexSSRAllCorr : public CALN::SSRAllCorrMsgT, public IPersistData {
public:
    CHalvexSSRAllCorr() : CHalvexSSRAllCorr(CHalvexUniqueSiteID()) {}
    explicit CHalvexSSRAllCorr(const CHalvexUniqueSiteID& site, const SMjdTime& epoch = SMjdTime())
        : m_site(site), m_epoch(epoch) {}

    [[nodiscard]] const CHalvexUniqueSiteID& GetSiteID() const { return m_site; }
    [[nodiscard]] const SMjdTime& GetEpoch() const { return m_epoch; }  ///< GPS time

    bool loadData(const unsigned char* buffer, std::size_t length) override;
    void saveData(unsigned char* buffer, std::size_t length) const override;
    [[nodiscard]] std::size_t getSize() const override;

    /// False, with the set as it was and `used` 0, for a null buffer, another version, an epoch that is none, or a
    /// buffer that is shorter than what stands before the messages. `used` becomes the bytes read or written.
    bool loadData(const unsigned char* buffer, std::uint64_t length, std::uint64_t& used);
    void saveData(unsigned char* buffer, std::uint64_t length, std::uint64_t& used) const;

    /// Same saved form.
    friend HALVEX_EXPORT bool operator==(const CHalvexSSRAllCorr& left, const CHalvexSSRAllCorr& right);

private:
    CHalvexUniqueSiteID m_site;
    SMjdTime m_epoch;
};
