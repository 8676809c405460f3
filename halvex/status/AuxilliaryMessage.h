#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <type_traits>

#include "halvex/platform/Export.h"
#include "halvex/platform/caln/NetworkMessages.h"
#include "halvex/platform/caln/ReferenceMessages.h"
#include "halvex/platform/kernix/PersistData.h"
#include "halvex/platform/pio/Rtcm3Text.h"

/// Holder of a plain record whose saved form is by definition its memory image, byte for byte. Owns the record.
template <class T>
class CSimplePersistData : public IPersistData {
    static_assert(std::is_trivially_copyable_v<T> && std::is_standard_layout_v<T>);

public:
    CSimplePersistData() = default;
    explicit CSimplePersistData(const T& record) : m_record(record) {}

    bool loadData(const unsigned char* buffer, std::size_t size) override {
        if (buffer == nullptr || size < sizeof m_record) return false;
        std::memcpy(&m_record, buffer, sizeof m_record);
        return true;
    }
    void saveData(unsigned char* buffer, std::size_t size) const override {
        if (buffer != nullptr && size >= sizeof m_record) std::memcpy(buffer, &m_record, sizeof m_record);
    }
    [[nodiscard]] std::size_t getSize() const override { return sizeof m_record; }

    [[nodiscard]] T& getData() { return m_record; }
    [[nodiscard]] const T& getData() const { return m_record; }

    friend bool operator==(const CSimplePersistData& left, const CSimplePersistData& right) {
        return left.m_record == right.m_record;
    }

private:
    T m_record;
};

/// One of a network's auxiliary messages, whichever it is, tagged with its message number: what a host queues, stores
/// and replays. Owns the record it holds; constructors copy what they are given. One thread at a time.
///
/// Saved form: uint32 message number, then the record's memory image; nothing at all when nothing is held or the number
/// is 0. Texts (1029) are saved but not loaded.
class HALVEX_EXPORT CHalvexAuxilliaryMessage : public IPersistData {
public:
    /// Number 0, nothing held.
    CHalvexAuxilliaryMessage() = default;
    /// Number 1014, also for null, which leaves nothing held.
    explicit CHalvexAuxilliaryMessage(const CALN::Msg1014T* message);
    /// Number 1015 for GPS, 1037 for GLONASS; another system's record is held under number 0. Null: number 0, nothing
    /// held, here and below.
    explicit CHalvexAuxilliaryMessage(const CALN::IonoMsgT* message);
    /// Number 1016 for GPS, 1038 for GLONASS, else 0.
    explicit CHalvexAuxilliaryMessage(const CALN::GeoMsgT* message);
    /// Number 1029.
    explicit CHalvexAuxilliaryMessage(const PIO::RTCM3::UTF8MessageC& message);
    /// The number that the record begins with: 59, 1034 or 1035.
    explicit CHalvexAuxilliaryMessage(const POS_REF_VR_CORRECTION* message);
    /// Number 1032.
    explicit CHalvexAuxilliaryMessage(const POS_REF_PHYS_REFERENCE& message);
    /// Copies hold a record of their own. Area correction parameters are left behind on purpose: such a copy, as one
    /// of any number that no constructor but theirs gives, has the number and holds nothing.
    CHalvexAuxilliaryMessage(const CHalvexAuxilliaryMessage& other);
    CHalvexAuxilliaryMessage& operator=(const CHalvexAuxilliaryMessage& other);
    ~CHalvexAuxilliaryMessage() override;

    /// Number 0, nothing held.
    void Clear();

    /// False, with the object as it was, when the buffer is null, shorter than four bytes or shorter than getSize() of
    /// what is held now. False, with the number taken over and nothing held, when the number is none that can be
    /// loaded or the record is cut off.
    bool loadData(const unsigned char* buffer, std::size_t size) override;
    void saveData(unsigned char* buffer, std::size_t size) const override;
    /// 0 when there is nothing to save.
    [[nodiscard]] std::size_t getSize() const override;

    [[nodiscard]] virtual std::int32_t getMessageNumber() const;
    /// The record that is held, when the number is the getter's own (and the record is of its type), else null. It
    /// stays the object's and lives until that is changed.
    [[nodiscard]] virtual CALN::Msg1014T* getMsg1014T() const;
    [[nodiscard]] virtual CALN::IonoMsgT* getMsg1015T() const;
    [[nodiscard]] virtual CALN::GeoMsgT* getMsg1016T() const;
    [[nodiscard]] virtual CALN::IonoMsgT* getMsg1037T() const;
    [[nodiscard]] virtual CALN::GeoMsgT* getMsg1038T() const;
    [[nodiscard]] virtual CALN::IonoMsgT* getMsg1040T() const;
    [[nodiscard]] virtual CALN::GeoMsgT* getMsg1041T() const;
    /// Numbers 59, 1034 and 1035.
    [[nodiscard]] virtual POS_REF_VR_CORRECTION* getFKPMsg() const;
    /// Number 1032.
    [[nodiscard]] virtual POS_REF_PHYS_REFERENCE* getPhysRefMsg() const;
    [[nodiscard]] virtual PIO::RTCM3::UTF8MessageC* getMsg1029T() const;

    /// Same number and same saved form.
    friend HALVEX_EXPORT bool operator==(const CHalvexAuxilliaryMessage& left, const CHalvexAuxilliaryMessage& right);

private:
    template <class T>
    void hold(const T* record);
    template <class T>
    [[nodiscard]] T* held() const;

    std::int32_t m_number = 0;
    std::unique_ptr<IPersistData> m_holder;
};
