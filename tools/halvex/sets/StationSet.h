#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "formats/rinex/EpochBuilder.h"
#include "halvex/files/IndexedRead.h"
#include "halvex/files/IndexedSetRequests.h"
#include "halvex/files/IndexedWrite.h"
#include "halvex/observations/HalvexStationObservation.h"
#include "halvex/platform/os/Clock.h"
#include "tools/halvex/sets/StationHeader.h"

namespace halvex::tool {

/// A clock that stands at an epoch, so that what is archived is stamped with its own time (GPS time in the place of
/// UTC).
class EpochClock final : public os::Clock {
public:
    void set(const SMjdTime& time);
    [[nodiscard]] SYSTEMTIME utcTime() const override { return m_now; }
    [[nodiscard]] SYSTEMTIME localTime() const override { return m_now; }
    [[nodiscard]] std::uint64_t tickCount() const override { return 1; }

private:
    SYSTEMTIME m_now;
};

[[nodiscard]] SMjdTime epochTime(const CHalvexStationObservation& station);

/// Writes station epochs to one indexed set, which is begun or, where it is there already, continued behind its last
/// record: epochs that are not later than that are refused, so that archiving a file twice changes nothing.
class SetWriter {
public:
    /// Failure when the set cannot be written. `clock` is the process's clock for as long as this object lives. The
    /// blocks go through `writer`, which outlives this object, or directly to the files when it is null.
    SetWriter(std::string base, const rinex::ObservationHeader& header, EpochClock& clock, CDecoupledFileWrite* writer);
    /// False when the epoch is not later than the last one of the set. Failure when it cannot be written.
    bool add(const CHalvexStationObservation& station, const rinex::EpochBuilder& builder);
    /// Everything to the system. Failure when that cannot be done.
    void close();

    [[nodiscard]] const std::string& base() const { return m_base; }
    [[nodiscard]] std::uint64_t epochs() const { return m_epochs; }
    [[nodiscard]] std::uint64_t bytes() const { return m_bytes; }

private:
    void check(std::error_code error) const;
    void checkLost() const;

    std::string m_base;
    EpochClock& m_clock;
    CDecoupledFileWrite* m_writer;
    std::optional<SMjdTime> m_last;
    std::optional<StationHeaderWriter> m_header;
    CIndexedWriteFile m_file;  // one of the two is used
    std::optional<IndexedSetRequests> m_requests;
    std::vector<unsigned char> m_block;
    std::uint64_t m_failedBefore = 0;
    std::uint64_t m_epochs = 0;
    std::uint64_t m_bytes = 0;
};

/// Reads the blocks of an indexed set in their order.
class SetReader {
public:
    /// Called for each block with the bytes; false stops.
    using OnBlock = std::function<bool(std::span<const unsigned char>)>;

    /// Failure when there is no set of that name or it is none.
    explicit SetReader(const std::string& base);
    ~SetReader();
    SetReader(const SetReader&) = delete;
    SetReader& operator=(const SetReader&) = delete;

    /// All blocks from the record that is stamped `from` or later on (unset: from the first). Returns cutOff(), or 0
    /// when stopped.
    std::uint64_t read(const SMjdTime& from, const OnBlock& onBlock);
    /// Bytes behind the last whole record: 0 for a set that ends as it should.
    [[nodiscard]] std::uint64_t cutOff() const;
    [[nodiscard]] std::optional<SMjdTime> firstTime();
    [[nodiscard]] std::uint64_t size() const { return m_size; }

private:
    std::string m_base;
    std::string m_view;
    std::unique_ptr<CIndexedReadFile> m_file;
    std::unique_ptr<IIndexedReadNotify> m_notify;
    std::uint64_t m_size = 0;
};

}  // namespace halvex::tool
