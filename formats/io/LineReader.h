#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "formats/io/ByteInput.h"
#include "formats/io/FormatError.h"

namespace halvex {

/// Lines of a text file, plain or gzip-compressed (told apart by the first two bytes), or of standard input ("-").
/// Streaming: holds one block of the file whatever its length. Lines end in LF or CR LF; a last line without an end
/// counts. A NUL byte or a line of more than kLongestLine bytes is an error: such a file is no text. One thread at a
/// time.
class LineReader {
public:
    static constexpr std::size_t kLongestLine = 65536;

    LineReader();
    ~LineReader();
    LineReader(LineReader&&) noexcept;
    LineReader& operator=(LineReader&&) noexcept;

    /// False, with error(), when the file cannot be opened or is a folder.
    [[nodiscard]] bool open(const std::string& name);
    /// The same for an input that is open already.
    void open(ByteInput input);
    /// The same for a file that is already in memory, plain or compressed; `name` stands in error messages.
    void openBytes(std::string name, std::string bytes);
    /// The next line without its end; valid until the next call. Empty at the end of the input and after an error:
    /// error() tells which (a gzip stream that is damaged or cut off yields its good lines first).
    [[nodiscard]] std::optional<std::string_view> next();
    /// Gives the line that next() returned last once more at the next call.
    void putBack();

    [[nodiscard]] const std::string& name() const;
    /// Number of the line that next() returned last, 1-based.
    [[nodiscard]] std::uint64_t lineNumber() const;
    /// Bytes read from the file so far (compressed ones of a gzip file), and its size, 0 when unknown: for progress.
    [[nodiscard]] std::uint64_t bytesRead() const;
    [[nodiscard]] std::uint64_t fileSize() const;
    [[nodiscard]] const std::optional<FormatError>& error() const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

}  // namespace halvex
