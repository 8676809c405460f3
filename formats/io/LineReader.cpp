#include "formats/io/LineReader.h"

#include <cstring>
#include <utility>
#include <vector>

namespace halvex {
namespace {

constexpr std::size_t kBlock = std::size_t{128} << 10;  // of text, refilled behind the line that crosses its end

}  // namespace

struct LineReader::State {
    ByteInput input;
    std::vector<char> text;  // lines in [begin, end)
    std::size_t begin = 0;
    std::size_t end = 0;
    bool exhausted = true;  // no text will follow

    std::string_view line;
    std::uint64_t lineNumber = 0;
    bool hasLine = false;
    bool putBack = false;
    std::optional<FormatError> error;

    void start() {
        exhausted = false;
        text.resize(kLongestLine + kBlock);
    }
    void fill();
    void fail(std::string message) { error = FormatError{input.name(), lineNumber + 1, std::move(message)}; }
};

/// Moves the piece of a line that is left to the front and reads on behind it.
void LineReader::State::fill() {
    std::memmove(text.data(), text.data() + begin, end - begin);
    end -= begin;
    begin = 0;
    const std::size_t count = input.read(text.data() + end, text.size() - end);
    exhausted = count == 0;
    end += count;
}

LineReader::LineReader() : m_state(std::make_unique<State>()) {}
LineReader::~LineReader() = default;
LineReader::LineReader(LineReader&&) noexcept = default;
LineReader& LineReader::operator=(LineReader&&) noexcept = default;

bool LineReader::open(const std::string& name) {
    ByteInput input;
    const bool opened = input.open(name);
    m_state = std::make_unique<State>();
    m_state->error = input.error();
    m_state->input = std::move(input);
    if (opened) m_state->start();
    return opened;
}

void LineReader::open(ByteInput input) {
    m_state = std::make_unique<State>();
    m_state->input = std::move(input);
    m_state->start();
}

void LineReader::openBytes(std::string name, std::string bytes) {
    ByteInput input;
    input.openBytes(std::move(name), std::move(bytes));
    open(std::move(input));
}

std::optional<std::string_view> LineReader::next() {
    State& state = *m_state;
    if (state.putBack) {
        state.putBack = false;
        ++state.lineNumber;
        return state.line;
    }
    state.hasLine = false;
    if (state.error) return std::nullopt;

    std::size_t searched = 0;
    for (;;) {
        const char* const first = state.text.data() + state.begin;
        const std::size_t available = state.end - state.begin;
        const void* const lineFeed =
            available > searched ? std::memchr(first + searched, '\n', available - searched) : nullptr;
        std::size_t length = available;
        std::size_t used = available;
        if (lineFeed != nullptr) {
            length = static_cast<std::size_t>(static_cast<const char*>(lineFeed) - first);
            used = length + 1;
        } else if (available <= kLongestLine) {
            if (!state.exhausted) {
                searched = available;
                state.fill();
                continue;
            }
            // A piece of a line before a fault is not the line that was written: it is left out.
            if (!state.input.fault().empty()) {
                state.fail(state.input.fault());
                return std::nullopt;
            }
            if (available == 0) return std::nullopt;
        }
        if (length > kLongestLine) {
            state.fail("a line of more than " + std::to_string(kLongestLine) + " bytes; this is no text file");
            return std::nullopt;
        }
        if (length > 0 && std::memchr(first, '\0', length) != nullptr) {
            state.fail("a NUL byte; this is no text file");
            return std::nullopt;
        }
        state.begin += used;
        if (length > 0 && first[length - 1] == '\r') --length;
        state.line = std::string_view(first, length);
        state.hasLine = true;
        ++state.lineNumber;
        return state.line;
    }
}

void LineReader::putBack() {
    if (!m_state->hasLine || m_state->putBack) return;
    m_state->putBack = true;
    --m_state->lineNumber;
}

const std::string& LineReader::name() const {
    return m_state->input.name();
}
std::uint64_t LineReader::lineNumber() const {
    return m_state->lineNumber;
}
std::uint64_t LineReader::bytesRead() const {
    return m_state->input.bytesRead();
}
std::uint64_t LineReader::fileSize() const {
    return m_state->input.fileSize();
}
const std::optional<FormatError>& LineReader::error() const {
    return m_state->error;
}

}  // namespace halvex
