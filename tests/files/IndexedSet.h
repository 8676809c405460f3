#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "halvex/files/IndexedRead.h"

namespace halvex::test {

using Blocks = std::vector<std::string>;

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

/// Keeps the blocks of a replay; cancels after `cancelAfter` of them.
class Collector final : public IIndexedReadNotify {
public:
    void OnIndexedBlock(const unsigned char* block, std::uint64_t size) override {
        blocks.emplace_back(reinterpret_cast<const char*>(block), size);
        if (blocks.size() == cancelAfter) reader.cancelRead();
    }
    void OnIndexedReadEnd() override { ++ends; }

    Blocks blocks;
    int ends = 0;
    std::size_t cancelAfter = 0;
    CIndexedReadFile reader{this};
};

inline Blocks replay(const std::string& fileName, unsigned week = 0, unsigned milliseconds = 0) {
    Collector collector;
    if (collector.reader.Open(fileName.c_str())) collector.reader.Read(week, milliseconds);
    return collector.blocks;
}

/// Runs `work` in a process of its own, with a pipe to this one, and kills it when it has written `count` bytes to it.
template <class Work>
void killAfter(int count, const Work& work) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        work([&] { return ::write(ends[1], "x", 1); });
        ::_exit(1);
    }
    ::close(ends[1]);
    char byte = 0;
    for (int i = 0; i < count; ++i) ASSERT_EQ(::read(ends[0], &byte, 1), 1);
    ASSERT_EQ(::kill(child, SIGKILL), 0);  // wherever it is by now
    ASSERT_EQ(::waitpid(child, nullptr, 0), child);
    ::close(ends[0]);
}

}  // namespace halvex::test
