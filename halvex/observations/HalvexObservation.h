#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "halvex/observations/ObservationTypes.h"
#include "halvex/platform/Export.h"
#include "halvex/platform/caln/Frequency.h"
#include "halvex/platform/kernix/PrnID.h"

/// Raw observation of one satellite at one epoch: on each of three frequency slots (halvex::slotBand says which
/// carrier) the phase, two pseudoranges, Doppler, signal strength, error estimates and a lock count. Every value has a
/// validity bit; only valid values are persisted. A slot index of 3 or more is invalid: setters do nothing, getters and
/// validity tests return false and leave their output alone, getters that return a number give 0.
///
/// The network processing reuses some fields for its own results per signal (cycle slips, rejections, ambiguity state),
/// packed into the same bytes: a caller uses one meaning or the other. Plain value without locks.
///
/// Saved form, little-endian and packed:
///   CPrnID (2 bytes), uint8 validity (1 elevation mask, 2 azimuth, 4 issue of data), then only if valid: uint8 issue
///   of data, float64 elevation mask, float64 azimuth; for each slot: uint32 flags, then only if its flag is set:
///   float64 phase, float64 pseudorange C, float64 pseudorange P, float32 Doppler, uint16 phase error, uint16
///   pseudorange error, uint8 multipath, float32 C/N0, uint8 Costas indicator, and always uint16 lock count.
class HALVEX_EXPORT CHalvexObservation {
public:
    /// State of an ambiguity, four bits.
    enum eAmbiguityFixStateType : unsigned {
        eAmbiguityNotFixed = 0,
        eAmbiguityFloat = 1,
        eAmbiguityWidelaneFixed = 2,
        eAmbiguityFixed = 3,
    };
    static constexpr unsigned kSlots = static_cast<unsigned>(halvex::kFrequencySlots);

    CHalvexObservation() = default;
    explicit CHalvexObservation(unsigned char prn) : m_prnId(prn, CPrnID::PRN_GPS) {}
    explicit CHalvexObservation(const CPrnID& prnId) : m_prnId(prnId) {}
    CHalvexObservation& Assign(const CHalvexObservation& other) { return *this = other; }

    /// Clears the satellite, the satellite-level validity, elevation mask and azimuth, and the flags of the slots:
    /// their values stay but are no longer valid.
    void Reset();

    bool setPrn(unsigned char prn) { return m_prnId.setPrn(prn); }
    bool setPrnType(CPrnID::PrnType type) { return m_prnId.setPrnType(type); }
    void setPrnID(const CPrnID& prnId) { m_prnId = prnId; }
    bool getPrn(unsigned char& prn) const;
    [[nodiscard]] CPrnID::PrnType getPrnType() const { return m_prnId.getPrnType(); }
    [[nodiscard]] const CPrnID& getPrnID() const { return m_prnId; }

    void setIssueOfData(unsigned char issueOfData);
    void setElevationMask(double degrees);
    void setAzimuth(double degrees);
    bool getIssueOfData(unsigned char& issueOfData) const;
    bool getElevationMask(double& degrees) const;
    bool getAzimuth(double& degrees) const;
    [[nodiscard]] bool IsIssueOfDataValid() const { return (m_validity & kIssueOfDataValid) != 0; }
    [[nodiscard]] bool IsElevationMaskValid() const { return (m_validity & kElevationMaskValid) != 0; }
    [[nodiscard]] bool IsAzimuthValid() const { return (m_validity & kAzimuthValid) != 0; }

    [[nodiscard]] static bool CheckFrequency(unsigned frequency) { return frequency < kSlots; }
    [[nodiscard]] static bool CheckCodePhaseType(unsigned codePhaseType) { return codePhaseType < 6; }

    /// Phase in cycles or, with `inCycles` false, in metres: those are divided by the L1 wavelength on slot 0 and by
    /// the L2 wavelength on both others.
    void setPhase(unsigned frequency, double value, bool inCycles);
    void setPseudorangeC(unsigned frequency, double metres);
    void setPseudorangeP(unsigned frequency, double metres);
    void setDoppler(unsigned frequency, float hertz);
    void setCNO(unsigned frequency, float decibelHertz);
    void setPhaseError(unsigned frequency, unsigned short value);
    void setPseudorangeError(unsigned frequency, unsigned short value);
    void setMultipathError(unsigned frequency, unsigned char value);
    /// Has no validity bit: the lock count of a valid slot is always there. CContLockCount counts in 10 ms.
    void setContLockCount(unsigned frequency, unsigned short count);

    bool getPhase(unsigned frequency, double& value, bool inCycles) const;
    bool getPseudorangeC(unsigned frequency, double& metres) const;
    bool getPseudorangeP(unsigned frequency, double& metres) const;
    bool getDoppler(unsigned frequency, float& hertz) const;
    bool getCNO(unsigned frequency, float& decibelHertz) const;
    bool getPhaseError(unsigned frequency, unsigned short& value) const;
    bool getPseudorangeError(unsigned frequency, unsigned short& value) const;
    bool getMultipathError(unsigned frequency, unsigned char& value) const;
    bool getCosta(unsigned frequency, unsigned char& value) const;
    bool getContLockCount(unsigned frequency, unsigned short& count) const;

    [[nodiscard]] bool IsPhaseValid(unsigned frequency) const { return has(frequency, kPhaseValid); }
    [[nodiscard]] bool IsPseudorangeCValid(unsigned frequency) const { return has(frequency, kPseudorangeCValid); }
    [[nodiscard]] bool IsPseudorangePValid(unsigned frequency) const { return has(frequency, kPseudorangePValid); }
    [[nodiscard]] bool IsDopplerValid(unsigned frequency) const { return has(frequency, kDopplerValid); }
    [[nodiscard]] bool IsPhaseErrorValid(unsigned frequency) const { return has(frequency, kPhaseErrorValid); }
    [[nodiscard]] bool IsPseudorangeErrorValid(unsigned frequency) const {
        return has(frequency, kPseudorangeErrorValid);
    }
    [[nodiscard]] bool IsMultipathErrorValid(unsigned frequency) const { return has(frequency, kMultipathErrorValid); }
    [[nodiscard]] bool IsCNOValid(unsigned frequency) const { return has(frequency, kCnoValid); }
    [[nodiscard]] bool IsCostaValid(unsigned frequency) const { return has(frequency, kCostaValid); }
    [[nodiscard]] bool IsContLockCountValid(unsigned frequency) const { return CheckFrequency(frequency); }
    /// A code or the phase of the slot is valid: the satellite is tracked on it.
    [[nodiscard]] bool IsTracked(unsigned frequency) const {
        return has(frequency, kPhaseValid | kPseudorangeCValid | kPseudorangePValid);
    }

    void setLossOfLock(unsigned frequency, bool on) { setFlag(frequency, kLossOfLock, on); }
    void setRTCMCorrection(unsigned frequency, bool on) { setFlag(frequency, kRtcmCorrection, on); }
    void setResidualType(unsigned frequency, bool on) { setFlag(frequency, kResidualType, on); }
    void setASInEffect(unsigned frequency, bool on) { setFlag(frequency, kAntiSpoofing, on); }
    void setWaveLength(unsigned frequency, bool on) { setFlag(frequency, kWavelengthFactor, on); }
    void setParityKnown(unsigned frequency, bool on) { setFlag(frequency, kParityKnown, on); }
    void setHalfWaveCorrected(unsigned frequency, bool on) { setFlag(frequency, kHalfWaveCorrected, on); }
    void setWaasCorrected(unsigned frequency, bool on) { setFlag(frequency, kWaasCorrected, on); }
    bool getLossOfLock(unsigned frequency, bool& on) const { return getFlag(frequency, kLossOfLock, on); }
    bool getRTCMCorrection(unsigned frequency, bool& on) const { return getFlag(frequency, kRtcmCorrection, on); }
    bool getResidualType(unsigned frequency, bool& on) const { return getFlag(frequency, kResidualType, on); }
    bool getASInEffect(unsigned frequency, bool& on) const { return getFlag(frequency, kAntiSpoofing, on); }
    bool getWaveLength(unsigned frequency, bool& on) const { return getFlag(frequency, kWavelengthFactor, on); }
    bool getParityKnown(unsigned frequency, bool& on) const { return getFlag(frequency, kParityKnown, on); }
    bool getHalfWaveCorrected(unsigned frequency, bool& on) const { return getFlag(frequency, kHalfWaveCorrected, on); }
    bool getWaasCorrected(unsigned frequency, bool& on) const { return getFlag(frequency, kWaasCorrected, on); }

    // Results of the network processing. All OR into the bits that are there and never clear them.

    /// Low five bits of the multipath byte; makes it valid.
    void SetCycleSlip(unsigned frequency, std::int32_t count);
    [[nodiscard]] std::int32_t GetCycleSlip(unsigned frequency) const;
    /// Bits 0 to 5 of the lock count.
    void SetObservationRejection(unsigned frequency, std::int32_t rejection);
    [[nodiscard]] std::int32_t GetObservationRejection(unsigned frequency) const;
    /// Bits 6 to 11 of the lock count.
    void SetAmbiguityChanges(unsigned frequency, std::int32_t changes);
    [[nodiscard]] std::int32_t GetAmbiguityChanges(unsigned frequency) const;
    /// Bits 12 to 15 of the lock count.
    void SetAmbiguityFixState(unsigned frequency, eAmbiguityFixStateType state);
    [[nodiscard]] eAmbiguityFixStateType GetAmbiguityFixState(unsigned frequency) const;
    /// The ambiguity levels in the fraction of C/N0: sub level (below 10, else false) in the first decimal, search
    /// level in thousandths.
    bool SetAmbiguitySearchAndSubLevel(unsigned frequency, std::int32_t search, std::int32_t sub);
    /// The ambiguity in the integer part of C/N0; the fraction, with the levels, stays.
    bool SetAmbiguityValue(unsigned frequency, double value);

    /// Plausibility of a GPS or GLONASS observation on its first two slots. NaN is implausible.
    [[nodiscard]] bool IsDataValid() const;
    /// Moves phases (cycles) and pseudoranges (metres) of the first two slots by a jump of the receiver clock.
    void AdjustForClockJumps(std::int32_t milliseconds);

    /// `size` is the whole buffer's. On success the offset moves behind the saved form; on failure (null or short
    /// buffer) object and offset stay as they were and nothing past the buffer is touched.
    bool SaveData(unsigned char* buffer, std::size_t size, std::size_t& offset) const;
    bool LoadData(const unsigned char* buffer, std::size_t size, std::size_t& offset);
    [[nodiscard]] std::size_t getSize() const { return m_size; }
    /// A record with nothing valid: no saved form is shorter.
    static constexpr std::size_t kSmallestSize = CPrnID::kSavedSize + 1 + std::size_t{kSlots} * (4 + 2);
    /// A record with everything valid: none is longer.
    static constexpr std::size_t kLargestSize =
        kSmallestSize + 1 + 2 * sizeof(double) + std::size_t{kSlots} * (3 * 8 + 2 * 4 + 2 * 2 + 2);

    /// Exact comparison of all fields, floating values included.
    friend HALVEX_EXPORT bool operator==(const CHalvexObservation& left, const CHalvexObservation& right);

protected:
    void SetLossOfLock(unsigned frequency) { setFlag(frequency, kLossOfLock, true); }

private:
    friend class CHalvexStationObservation;

    enum Validity : std::uint8_t { kElevationMaskValid = 0x01, kAzimuthValid = 0x02, kIssueOfDataValid = 0x04 };
    enum Flag : std::uint32_t {
        kLossOfLock = 0x1,
        kRtcmCorrection = 0x2,
        kResidualType = 0x4,
        kAntiSpoofing = 0x8,
        kWavelengthFactor = 0x10,
        kParityKnown = 0x800,
        kHalfWaveCorrected = 0x1000,
        kWaasCorrected = 0x2000,
        kPhaseValid = 0x4000,
        kPseudorangeCValid = 0x8000,
        kDopplerValid = 0x10000,
        kPhaseErrorValid = 0x20000,
        kPseudorangeErrorValid = 0x40000,
        kMultipathErrorValid = 0x200000,
        kCnoValid = 0x400000,
        kCostaValid = 0x800000,
        kPseudorangePValid = 0x1000000,
    };
    /// The flags that decide what is persisted.
    static constexpr std::uint32_t kValues = kPhaseValid | kPseudorangeCValid | kPseudorangePValid | kDopplerValid |
                                             kPhaseErrorValid | kPseudorangeErrorValid | kMultipathErrorValid |
                                             kCnoValid | kCostaValid;
    struct Slot {
        double phase = 0.0;         // cycles
        double pseudorangeC = 0.0;  // metres
        double pseudorangeP = 0.0;  // metres
        float doppler = 0.0F;
        std::uint16_t phaseError = 0;
        std::uint16_t pseudorangeError = 0;
        std::uint8_t multipathError = 0;
        float cno = 0.0F;
        std::uint8_t costa = 0;
        std::uint16_t contLockCount = 0;
        std::uint32_t flags = 0;

        friend bool operator==(const Slot&, const Slot&) = default;
    };

    [[nodiscard]] bool has(unsigned frequency, std::uint32_t mask) const {
        return frequency < kSlots && (m_slots[frequency].flags & mask) != 0;
    }
    void setFlag(unsigned frequency, Flag flag, bool on);
    bool getFlag(unsigned frequency, Flag flag, bool& on) const;
    template <class T>
    void setValue(unsigned frequency, T Slot::*member, T value, Flag valid);
    template <class T>
    bool getValue(unsigned frequency, T Slot::*member, T& value, Flag valid) const;

    /// Saved sizes of a slot and of what stands before the slots, by their flags: summed up once for every
    /// combination of bits.
    static constexpr unsigned kSizesShift = 14;
    static constexpr auto kSizes = [] {
        std::array<std::uint8_t, 2048> sizes{};
        for (std::uint32_t bits = 0; bits < sizes.size(); ++bits) {
            const auto bit = [set = bits << kSizesShift](Flag flag) { return (set & flag) != 0 ? 1U : 0U; };
            sizes[bits] = static_cast<std::uint8_t>(
                4 + 2 + 8 * (bit(kPhaseValid) + bit(kPseudorangeCValid) + bit(kPseudorangePValid)) +
                4 * (bit(kDopplerValid) + bit(kCnoValid)) + 2 * (bit(kPhaseErrorValid) + bit(kPseudorangeErrorValid)) +
                bit(kMultipathErrorValid) + bit(kCostaValid));
        }
        return sizes;
    }();
    static constexpr std::size_t slotSize(std::uint32_t flags) { return kSizes[(flags & kValues) >> kSizesShift]; }
    static constexpr auto kHeadSizes = [] {
        std::array<std::uint8_t, 8> sizes{};
        for (std::uint32_t bits = 0; bits < sizes.size(); ++bits) {
            const auto bit = [bits](Validity flag) { return std::size_t{(bits & flag) != 0 ? 1U : 0U}; };
            sizes[bits] = static_cast<std::uint8_t>(CPrnID::kSavedSize + 1 + bit(kIssueOfDataValid) +
                                                    8 * (bit(kElevationMaskValid) + bit(kAzimuthValid)));
        }
        return sizes;
    }();
    static constexpr std::size_t headSize(std::uint8_t validity) {
        return kHeadSizes[validity & (kHeadSizes.size() - 1)];
    }
    /// Keeps m_size what the flags say; called whenever one of them changes that decides what is persisted.
    void measure() {
        std::size_t size = headSize(m_validity);
        for (const Slot& slot : m_slots) size += slotSize(slot.flags);
        m_size = static_cast<std::uint16_t>(size);
    }
    void setValid(Validity valid) {
        m_validity |= valid;
        measure();
    }
    template <class Use>
    static auto withSet(std::uint8_t validity, Use&& use);
    template <class Use>
    static auto withSet(std::uint32_t flags, Use&& use);
    /// Bytes of the saved form at `from`, 0 when `left` bytes do not hold a whole one.
    static std::size_t savedSize(const unsigned char* from, std::size_t left);
    template <class Direction, class Self>
    static typename Direction::Position fields(typename Direction::Position at, Self& self);
    /// The two directions without a length check: the caller has made sure of getSize() or savedSize() bytes.
    unsigned char* write(unsigned char* to) const;
    const unsigned char* read(const unsigned char* from);

    CPrnID m_prnId;
    std::uint8_t m_validity = 0;
    std::uint8_t m_issueOfData = 0;
    std::uint16_t m_size = kSmallestSize;  // of the saved form: every epoch is measured before it is written
    double m_elevationMask = 0.0;          // degrees
    double m_azimuth = 0.0;                // degrees
    std::array<Slot, kSlots> m_slots;
};
