#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "halvex/platform/kernix/ByteCodec.h"

namespace halvex {

/// A field list's entry for an enumeration, which is persisted as one byte.
template <class Io, class Enumeration>
void enumerationField(Io& io, Enumeration& value) {
    auto byte = static_cast<std::uint8_t>(value);
    io(byte);
    if constexpr (!std::is_const_v<Enumeration>) value = static_cast<Enumeration>(byte);
}

/// Persistence of a plain record `Record`, which derives from this: uint16 Record::kSavedVersion, then the fields in
/// the order in which the record's static function `fields(io, record)` names them. That list is the one place where
/// the saved form is written down: loading, saving and measuring go through it.
template <class Record>
struct PersistedRecord {
    /// False, with the record as it was, when the buffer is null, too short or of another version. Any content of the
    /// fields is taken: whether it is plausible is asked elsewhere.
    bool loadData(const unsigned char* buffer, std::size_t size) {
        ByteReader in(buffer, size);
        std::uint16_t version = 0;
        in(version);
        Record loaded;
        Record::fields(in, loaded);
        if (!in.ok() || version != Record::kSavedVersion) return false;
        static_cast<Record&>(*this) = loaded;
        return true;
    }
    /// Writes nothing when the buffer is null or shorter than getSize().
    void saveData(unsigned char* buffer, std::size_t size) const {
        if (buffer == nullptr || size < getSize()) return;
        ByteWriter out(buffer, size);
        out(std::uint16_t{Record::kSavedVersion});
        Record::fields(out, static_cast<const Record&>(*this));
    }
    [[nodiscard]] std::size_t getSize() const {
        ByteCounter counter;
        counter(std::uint16_t{Record::kSavedVersion});
        Record::fields(counter, static_cast<const Record&>(*this));
        return counter.size();
    }

    friend bool operator==(const PersistedRecord&, const PersistedRecord&) = default;
};

}  // namespace halvex
