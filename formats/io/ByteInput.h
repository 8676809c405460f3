#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "formats/io/FormatError.h"

namespace halvex {

/// Bytes of a file, plain or gzip-compressed (told apart by the first two bytes), or of standard input ("-").
/// Streaming: holds a piece of the file whatever its length. One thread at a time.
class ByteInput {
public:
    ByteInput();
    ~ByteInput();
    ByteInput(ByteInput&&) noexcept;
    ByteInput& operator=(ByteInput&&) noexcept;

    /// False, with error(), when the file cannot be opened or is a folder.
    [[nodiscard]] bool open(const std::string& name);
    /// The same for a file that is already in memory, plain or compressed; `name` stands in error messages.
    void openBytes(std::string name, std::string bytes);
    /// Some of the next unpacked bytes, at most `size`; 0 at the end of the input and after a fault: fault() tells
    /// which (a gzip stream that is damaged or cut off yields its good bytes first).
    [[nodiscard]] std::size_t read(char* to, std::size_t size);
    /// The next unpacked bytes without taking them, `size` or all that are left; valid until the next call.
    [[nodiscard]] std::string_view peek(std::size_t size);

    [[nodiscard]] const std::string& name() const;
    /// Why reading ended before the end of the input; empty when it did not.
    [[nodiscard]] const std::string& fault() const;
    /// Bytes read from the file so far (compressed ones of a gzip file), and its size, 0 when unknown: for progress.
    [[nodiscard]] std::uint64_t bytesRead() const;
    [[nodiscard]] std::uint64_t fileSize() const;
    /// Why open() failed.
    [[nodiscard]] const std::optional<FormatError>& error() const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

}  // namespace halvex
