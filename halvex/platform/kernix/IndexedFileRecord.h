#pragma once

#include <cstddef>
#include <cstdint>

#include "halvex/platform/kernix/ByteCodec.h"

/// Head of one record of a time-info file; the block's bytes follow it. Saved form: 10 bytes, little-endian, the fields
/// in their order. GPS week and milliseconds of week say when the block was written.
struct CIndexedFileRecordHeader {
    static constexpr std::size_t kSavedSize = 10;

    std::uint16_t week = 0;
    std::uint32_t milliseconds = 0;  ///< of the week
    std::uint32_t size = 0;          ///< bytes of the block

    /// From kSavedSize bytes.
    [[nodiscard]] static CIndexedFileRecordHeader load(const unsigned char* from) {
        CIndexedFileRecordHeader header;
        halvex::ByteReader io(from, kSavedSize);
        io(header.week);
        io(header.milliseconds);
        io(header.size);
        return header;
    }
    /// To kSavedSize bytes.
    void save(unsigned char* to) const {
        halvex::ByteWriter io(to, kSavedSize);
        io(week);
        io(milliseconds);
        io(size);
    }
    /// Bytes of the whole record.
    [[nodiscard]] std::uint64_t recordSize() const { return kSavedSize + std::uint64_t{size}; }

    friend bool operator==(const CIndexedFileRecordHeader&, const CIndexedFileRecordHeader&) = default;
};

/// Entry of an index file: the record at `position` of the time-info file was written at this time. Saved form: 14
/// bytes, little-endian, the fields in their order.
struct CIndexedFileIndex {
    static constexpr std::size_t kSavedSize = 14;

    std::uint16_t week = 0;
    std::uint32_t milliseconds = 0;  ///< of the week
    std::uint64_t position = 0;      ///< of the record, in bytes from the start of the time-info file

    /// From kSavedSize bytes.
    [[nodiscard]] static CIndexedFileIndex load(const unsigned char* from) {
        CIndexedFileIndex entry;
        halvex::ByteReader io(from, kSavedSize);
        io(entry.week);
        io(entry.milliseconds);
        io(entry.position);
        return entry;
    }
    /// To kSavedSize bytes.
    void save(unsigned char* to) const {
        halvex::ByteWriter io(to, kSavedSize);
        io(week);
        io(milliseconds);
        io(position);
    }

    friend bool operator==(const CIndexedFileIndex&, const CIndexedFileIndex&) = default;
};
