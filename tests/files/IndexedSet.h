#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "halvex/files/IndexedRead.h"
#include "halvex/files/IndexedWrite.h"
#include "halvex/platform/kernix/IndexedFileRecord.h"
#include "halvex/time/TimeBase.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestClock.h"

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

/// Sets the clock to a GPS week and milliseconds of week, read as UTC.
inline void setClock(TestClock& clock, int week, double milliseconds) {
    CTimeBase(week, milliseconds / 1000.0).ToSystemTime(clock.utc);
}

/// What was logged since the last call, each line as "LEVEL SOURCE: MESSAGE".
inline std::vector<std::string> taken(CapturedLog& log) {
    std::vector<std::string> lines;
    for (const auto& [source, level, message] : log.take()) {
        lines.push_back(std::to_string(level) + " " + source + ": " + message);
    }
    return lines;
}

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
