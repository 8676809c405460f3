#pragma once

#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <vector>

namespace halvex::test {

using Bytes = std::vector<unsigned char>;

/// Bytes from hexadecimal text; blanks separate as one likes.
inline Bytes hex(std::string_view text) {
    const auto digit = [](char c) { return c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10; };
    Bytes bytes;
    int high = -1;
    for (const char c : text) {
        if (c == ' ' || c == '\n') continue;
        if (high < 0) {
            high = digit(c);
        } else {
            bytes.push_back(static_cast<unsigned char>(high * 16 + digit(c)));
            high = -1;
        }
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

}  // namespace halvex::test
