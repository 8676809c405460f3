#pragma once

#include <cstddef>

#include "halvex/platform/Export.h"

/// A value that persists itself into a caller's buffer: little-endian, packed, from the buffer's start on.
class HALVEX_EXPORT IPersistData {
public:
    virtual ~IPersistData();
    /// Takes the value from `buffer`. False, with the object left as it was, when the buffer is null, too short or not
    /// the saved form of this class. Bytes behind the saved form are allowed.
    virtual bool loadData(const unsigned char* buffer, std::size_t size) = 0;
    /// Writes the value; writes nothing when the buffer is null or smaller than getSize().
    virtual void saveData(unsigned char* buffer, std::size_t size) const = 0;
    /// Bytes that saveData asks for.
    [[nodiscard]] virtual std::size_t getSize() const = 0;

protected:
    IPersistData() = default;
    IPersistData(const IPersistData&) = default;
    IPersistData& operator=(const IPersistData&) = default;
};
