#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace halvex::test {

using Bytes = std::vector<unsigned char>;

/// Bytes from hexadecimal text; blanks separate as one likes.
inline Bytes hex(std::string_view text) {
    std::string digits(text);
    std::erase(digits, ' ');
    Bytes bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        bytes.push_back(static_cast<unsigned char>(std::stoi(digits.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

/// What a persistable object saves into a buffer of exactly its size.
template <class Record>
Bytes saved(const Record& record) {
    Bytes bytes(record.getSize());
    record.saveData(bytes.data(), bytes.size());
    return bytes;
}

/// The record is saved as `golden` and comes back from it. Every shorter buffer and a null one are refused both ways,
/// and leave `other`, which differs from the record, as it is.
template <class Record>
void expectSavedForm(const Record& record, Record other, const Bytes& golden) {
    EXPECT_EQ(saved(record), golden);
    const Record before(other);
    for (std::size_t size = 0; size < golden.size(); ++size) {
        Bytes part = golden;
        part.resize(size);
        EXPECT_FALSE(other.loadData(part.data(), size)) << size;
        part.assign(size, 0xEE);
        record.saveData(part.data(), size);
        EXPECT_EQ(part, Bytes(size, 0xEE)) << size;
    }
    EXPECT_FALSE(other.loadData(nullptr, golden.size()));
    record.saveData(nullptr, golden.size());
    EXPECT_TRUE(other == before && saved(other) == saved(before));
    Bytes longer = golden;
    longer.push_back(0xEE);
    EXPECT_TRUE(other.loadData(longer.data(), longer.size()));
    EXPECT_TRUE(other == record && saved(other) == golden);
}

}  // namespace halvex::test
