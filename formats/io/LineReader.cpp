#include "formats/io/LineReader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>
#include <vector>

namespace halvex {
namespace {

constexpr std::size_t kBlock = std::size_t{128} << 10;  // of text, refilled behind the line that crosses its end
constexpr std::size_t kPiece = std::size_t{64} << 10;   // of the compressed file

std::string systemText(int code) {
    return std::generic_category().message(code);
}

}  // namespace

struct LineReader::State {
    State() = default;
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    ~State() {
        if (gzip) inflateEnd(&stream);
        if (ownsFile) ::close(file);
    }

    std::string name;
    int file = -1;
    bool ownsFile = false;
    std::string memory;  // the file itself, when it was given as bytes
    std::uint64_t bytesRead = 0;
    std::uint64_t fileSize = 0;

    std::vector<char> piece;  // bytes of the file not yet turned into text
    std::size_t pieceBegin = 0;
    std::size_t pieceEnd = 0;
    bool gzip = false;
    bool insideMember = false;
    z_stream stream{};

    std::vector<char> text;  // lines in [begin, end)
    std::size_t begin = 0;
    std::size_t end = 0;
    bool exhausted = true;  // no text will follow
    std::string readFault;  // why, when it was not the end of the file

    std::string_view line;
    std::uint64_t lineNumber = 0;
    bool hasLine = false;
    bool putBack = false;
    std::optional<FormatError> error;

    void start();
    std::size_t readFile(char* to, std::size_t size);
    std::size_t readText(char* to, std::size_t size);
    std::size_t inflateText(char* to, std::size_t size);
    void fill();
    void fail(std::string message) { error = FormatError{name, lineNumber + 1, std::move(message)}; }
};

/// Looks at the first two bytes for the mark of a gzip file (RFC 1952, 2.3.1).
void LineReader::State::start() {
    exhausted = false;
    piece.resize(kPiece);
    text.resize(kLongestLine + kBlock);
    while (pieceEnd < 2) {
        const std::size_t count = readFile(piece.data() + pieceEnd, piece.size() - pieceEnd);
        if (count == 0) return;
        pieceEnd += count;
    }
    if (piece[0] != '\x1f') return;
    if (piece[1] == '\x8b') {
        constexpr int kGzipOnly = 16;
        gzip = inflateInit2(&stream, MAX_WBITS + kGzipOnly) == Z_OK;
        if (!gzip) readFault = "no memory to unpack it";
    } else if (piece[1] == '\x9d') {
        readFault = "is packed by compress (.Z); unpack it first";
    }
}

std::size_t LineReader::State::readFile(char* to, std::size_t size) {
    if (file < 0) {
        const std::size_t count = memory.copy(to, size, static_cast<std::size_t>(bytesRead));
        bytesRead += count;
        return count;
    }
    ssize_t count = 0;
    do {
        count = ::read(file, to, size);
    } while (count < 0 && errno == EINTR);
    if (count < 0) {
        readFault = "cannot be read: " + systemText(errno);
        return 0;
    }
    bytesRead += static_cast<std::uint64_t>(count);
    return static_cast<std::size_t>(count);
}

/// Some more text; 0 at the end, with readFault when that is not where it should be.
std::size_t LineReader::State::readText(char* to, std::size_t size) {
    if (!readFault.empty()) return 0;
    if (gzip) return inflateText(to, size);
    if (pieceBegin == pieceEnd) return readFile(to, size);
    const std::size_t count = std::min(size, pieceEnd - pieceBegin);
    std::memcpy(to, piece.data() + pieceBegin, count);
    pieceBegin += count;
    return count;
}

std::size_t LineReader::State::inflateText(char* to, std::size_t size) {
    stream.next_out = reinterpret_cast<Bytef*>(to);
    stream.avail_out = static_cast<uInt>(size);
    while (stream.avail_out == size) {
        if (pieceBegin == pieceEnd) {
            pieceBegin = 0;
            pieceEnd = readFile(piece.data(), piece.size());
            if (pieceEnd == 0) {
                if (insideMember && readFault.empty()) readFault = "the compressed file is cut off";
                return 0;
            }
        }
        if (!insideMember) {  // members may follow one another
            inflateReset(&stream);
            insideMember = true;
        }
        stream.next_in = reinterpret_cast<Bytef*>(piece.data() + pieceBegin);
        stream.avail_in = static_cast<uInt>(pieceEnd - pieceBegin);
        const int result = inflate(&stream, Z_NO_FLUSH);
        pieceBegin = pieceEnd - stream.avail_in;
        if (result == Z_STREAM_END) {
            insideMember = false;
        } else if (result != Z_OK && result != Z_BUF_ERROR) {
            readFault = std::string("the compressed file is damaged") +
                        (stream.msg != nullptr ? std::string(": ") + stream.msg : std::string());
            break;
        }
    }
    return size - stream.avail_out;
}

/// Moves the piece of a line that is left to the front and reads on behind it.
void LineReader::State::fill() {
    std::memmove(text.data(), text.data() + begin, end - begin);
    end -= begin;
    begin = 0;
    const std::size_t count = readText(text.data() + end, text.size() - end);
    exhausted = count == 0;
    end += count;
}

LineReader::LineReader() : m_state(std::make_unique<State>()) {}
LineReader::~LineReader() = default;
LineReader::LineReader(LineReader&&) noexcept = default;
LineReader& LineReader::operator=(LineReader&&) noexcept = default;

bool LineReader::open(const std::string& name) {
    m_state = std::make_unique<State>();
    State& state = *m_state;
    state.name = name;
    if (name == "-") {
        state.file = STDIN_FILENO;
    } else {
        state.file = ::open(name.c_str(), O_RDONLY | O_CLOEXEC);
        if (state.file < 0) {
            state.error = FormatError{name, 0, "cannot be opened: " + systemText(errno)};
            return false;
        }
        state.ownsFile = true;
    }
    struct stat status {};
    if (::fstat(state.file, &status) == 0) {
        if (S_ISDIR(status.st_mode)) {
            state.error = FormatError{name, 0, "is a folder"};
            return false;
        }
        if (S_ISREG(status.st_mode)) state.fileSize = static_cast<std::uint64_t>(status.st_size);
    }
    state.start();
    return true;
}

void LineReader::openBytes(std::string name, std::string bytes) {
    m_state = std::make_unique<State>();
    m_state->name = std::move(name);
    m_state->memory = std::move(bytes);
    m_state->fileSize = m_state->memory.size();
    m_state->start();
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
            if (!state.readFault.empty()) {
                state.fail(state.readFault);
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
    return m_state->name;
}
std::uint64_t LineReader::lineNumber() const {
    return m_state->lineNumber;
}
std::uint64_t LineReader::bytesRead() const {
    return m_state->bytesRead;
}
std::uint64_t LineReader::fileSize() const {
    return m_state->fileSize;
}
const std::optional<FormatError>& LineReader::error() const {
    return m_state->error;
}

}  // namespace halvex
