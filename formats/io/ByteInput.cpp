#include "formats/io/ByteInput.h"

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

constexpr std::size_t kPiece = std::size_t{64} << 10;  // of the compressed file

std::string systemText(int code) {
    return std::generic_category().message(code);
}

}  // namespace

struct ByteInput::State {
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

    std::vector<char> piece;  // bytes of the file not yet unpacked
    std::size_t pieceBegin = 0;
    std::size_t pieceEnd = 0;
    bool gzip = false;
    bool insideMember = false;
    z_stream stream{};
    std::string peeked;  // unpacked bytes that have been looked at; taken up to peekedBegin
    std::size_t peekedBegin = 0;
    std::string readFault;  // why the bytes ended, when it was not the end of the file
    std::optional<FormatError> error;

    void start();
    std::size_t readFile(char* to, std::size_t size);
    std::size_t readUnpacked(char* to, std::size_t size);
    std::size_t inflateBytes(char* to, std::size_t size);
};

/// Looks at the first two bytes for the mark of a gzip file (RFC 1952, 2.3.1).
void ByteInput::State::start() {
    piece.resize(kPiece);
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

std::size_t ByteInput::State::readFile(char* to, std::size_t size) {
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

/// Some more bytes; 0 at the end, with readFault when that is not where it should be.
std::size_t ByteInput::State::readUnpacked(char* to, std::size_t size) {
    if (!readFault.empty()) return 0;
    if (gzip) return inflateBytes(to, size);
    if (pieceBegin == pieceEnd) return readFile(to, size);
    const std::size_t count = std::min(size, pieceEnd - pieceBegin);
    std::memcpy(to, piece.data() + pieceBegin, count);
    pieceBegin += count;
    return count;
}

std::size_t ByteInput::State::inflateBytes(char* to, std::size_t size) {
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

ByteInput::ByteInput() : m_state(std::make_unique<State>()) {}
ByteInput::~ByteInput() = default;
ByteInput::ByteInput(ByteInput&&) noexcept = default;
ByteInput& ByteInput::operator=(ByteInput&&) noexcept = default;

bool ByteInput::open(const std::string& name) {
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

void ByteInput::openBytes(std::string name, std::string bytes) {
    m_state = std::make_unique<State>();
    m_state->name = std::move(name);
    m_state->memory = std::move(bytes);
    m_state->fileSize = m_state->memory.size();
    m_state->start();
}

std::size_t ByteInput::read(char* to, std::size_t size) {
    State& state = *m_state;
    const std::size_t left = state.peeked.size() - state.peekedBegin;
    if (left == 0) return state.readUnpacked(to, size);
    const std::size_t count = std::min(size, left);
    std::memcpy(to, state.peeked.data() + state.peekedBegin, count);
    state.peekedBegin += count;
    return count;
}

std::string_view ByteInput::peek(std::size_t size) {
    State& state = *m_state;
    state.peeked.erase(0, std::exchange(state.peekedBegin, 0));
    while (state.peeked.size() < size) {
        const std::size_t had = state.peeked.size();
        state.peeked.resize(size);
        const std::size_t count = state.readUnpacked(state.peeked.data() + had, size - had);
        state.peeked.resize(had + count);
        if (count == 0) break;
    }
    return std::string_view(state.peeked).substr(0, size);
}

const std::string& ByteInput::name() const {
    return m_state->name;
}
const std::string& ByteInput::fault() const {
    return m_state->readFault;
}
std::uint64_t ByteInput::bytesRead() const {
    return m_state->bytesRead;
}
std::uint64_t ByteInput::fileSize() const {
    return m_state->fileSize;
}
const std::optional<FormatError>& ByteInput::error() const {
    return m_state->error;
}

}  // namespace halvex
