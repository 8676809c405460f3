#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "halvex/corrections/CalSSRTypes.h"
#include "halvex/files/IndexedWrite.h"
#include "tools/halvex/sets/StationSet.h"

namespace halvex::tool {

/// Writes correction messages to a new indexed set, a CHalvexSSRCorr a record, whose site is the product that its
/// provider and solution make. A record is stamped with its epoch or, when that is earlier, with the stamp before.
class SsrSetWriter {
public:
    /// Failure when there is such a set, or it cannot be written. The process's clock stands at the stamps for as long
    /// as this object lives.
    explicit SsrSetWriter(std::string base);
    /// Failure when it cannot be written.
    void add(const CHalvexSSRCorr::Message& message);
    /// Everything to the system. Failure when that cannot be done.
    void close();

    [[nodiscard]] const std::string& base() const { return m_base; }
    [[nodiscard]] std::uint64_t records() const { return m_records; }
    [[nodiscard]] std::uint64_t bytes() const { return m_bytes; }

private:
    void check() const;

    std::string m_base;
    EpochClock m_clock;
    os::ScopedClock m_scope{m_clock};
    CIndexedWriteFile m_file;
    SMjdTime m_stamp;
    std::vector<unsigned char> m_block;
    std::uint64_t m_records = 0;
    std::uint64_t m_bytes = 0;
};

/// Hands over the messages of a set. The result is empty when all blocks are such and the last is whole, else says what
/// is wrong. Failure when there is no such set.
[[nodiscard]] std::string readSsrSet(const std::string& base,
                                     const std::function<void(const CHalvexSSRCorr::Message&)>& onMessage);

}  // namespace halvex::tool
