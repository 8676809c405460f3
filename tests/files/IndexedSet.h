#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "halvex/files/IndexedRead.h"
#include "halvex/files/IndexedWrite.h"
#include "halvex/platform/kernix/IndexedFileRecord.h"
#include "halvex/platform/kernix/Logging.h"
#include "halvex/platform/mjd/MjdTime.h"
#include "halvex/platform/os/Clock.h"
#include "tests/support/TemporaryFolder.h"

namespace halvex::test {

inline const std::string kVersion2("\2\0\0\0", 4);

/// A record and an index entry, written out byte by byte.
inline std::string littleEndian(std::uint64_t value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i) text += static_cast<char>(value >> (8 * i));
    return text;
}
inline std::string record(unsigned week, unsigned milliseconds, std::string_view block) {
    return littleEndian(week, 2) + littleEndian(milliseconds, 4) + littleEndian(block.size(), 4) + std::string(block);
}
inline std::string entry(unsigned week, unsigned milliseconds, std::uint64_t position) {
    return littleEndian(week, 2) + littleEndian(milliseconds, 4) + littleEndian(position, 8);
}

/// A clock that stands at a GPS week and milliseconds of week (read as UTC) until it is set again.
class StandingClock final : public os::Clock {
public:
    StandingClock(int week, double milliseconds) { set(week, milliseconds); }
    void set(int week, double milliseconds) {
        int year = 0, month = 0, day = 0, hour = 0, minute = 0;
        double second = 0.0;
        SMjdTime(week, milliseconds / 1000.0).GetAsDate(year, month, day, hour, minute, second);
        const auto word = [](double value) { return static_cast<std::uint16_t>(value); };
        const auto thousandths = static_cast<int>(second * 1000.0 + 0.5);
        m_now = {word(year),
                 word(month),
                 0,
                 word(day),
                 word(hour),
                 word(minute),
                 word(thousandths / 1000),
                 word(thousandths % 1000)};
    }
    [[nodiscard]] SYSTEMTIME utcTime() const override { return m_now; }
    [[nodiscard]] SYSTEMTIME localTime() const override { return m_now; }
    [[nodiscard]] std::uint64_t tickCount() const override { return 1; }

private:
    SYSTEMTIME m_now;
};

/// Keeps what is logged in its scope, as "LEVEL SOURCE: MESSAGE".
class RecordedLog final : public ILogging::Sink {
public:
    void write(std::string_view source, int level, std::string_view message) override {
        lines.push_back(std::to_string(level) + " " + std::string(source) + ": " + std::string(message));
    }
    std::vector<std::string> lines;

private:
    ScopedLogSink m_scope{*this};
};

/// Keeps the blocks of a replay; cancels after `cancelAfter` of them.
class Collector final : public IIndexedReadNotify {
public:
    void OnIndexedBlock(const unsigned char* block, std::uint64_t size) override {
        blocks.emplace_back(reinterpret_cast<const char*>(block), size);
        if (blocks.size() == cancelAfter) reader->cancelRead();
    }
    void OnIndexedReadEnd() override { ++ends; }

    std::vector<std::string> blocks;
    int ends = 0;
    std::size_t cancelAfter = 0;
    CIndexedReadFile* reader = nullptr;
};

inline std::vector<std::string> replay(const std::string& fileName, unsigned week = 0, unsigned milliseconds = 0) {
    Collector collector;
    CIndexedReadFile reader(&collector);
    if (reader.Open(fileName.c_str())) reader.Read(week, milliseconds);
    return collector.blocks;
}

inline void addBlock(CIndexedWriteFile& set, std::string_view block) {
    set.AddBlock(reinterpret_cast<const unsigned char*>(block.data()), static_cast<std::uint32_t>(block.size()));
}

}  // namespace halvex::test
