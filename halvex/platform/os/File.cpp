#include "halvex/platform/os/File.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <limits>
#include <utility>

namespace os {
namespace {

std::error_code lastError() {
    return {errno, std::generic_category()};
}

/// Few enough for every system (POSIX guarantees 16, Linux takes 1024).
constexpr std::size_t kPiecesInOneCall = 256;

constexpr std::uint64_t kLargestOffset = std::numeric_limits<off_t>::max();

bool isEmpty(const char* name) {
    return name == nullptr || *name == '\0';
}

bool isSameFile(int descriptor, const char* name) {
    struct stat opened {};
    struct stat named {};
    return ::fstat(descriptor, &opened) == 0 && ::lstat(name, &named) == 0 && opened.st_dev == named.st_dev &&
           opened.st_ino == named.st_ino;
}

/// Repeats a system call as long as signals interrupt it.
template <class Call>
auto retry(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR) result = call();
    return result;
}

}  // namespace

File::~File() {
    discard();
}

File::File(File&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}

File& File::operator=(File&& other) noexcept {
    if (this != &other) {
        discard();
        m_descriptor = std::exchange(other.m_descriptor, -1);
    }
    return *this;
}

void File::discard() {
    if (isOpen()) ::close(std::exchange(m_descriptor, -1));
}

std::error_code File::openForReading(const char* name, std::uint32_t shareMode) {
    return open(name, O_RDONLY, shareMode);
}

std::error_code File::openForWriting(const char* name, std::uint32_t shareMode) {
    return open(name, O_RDWR | O_CREAT | O_APPEND, shareMode);
}

std::error_code File::open(const char* name, int flags, std::uint32_t shareMode) {
    discard();
    if (isEmpty(name) || (shareMode != kShareNone && shareMode != kShareReadWrite)) {
        return std::make_error_code(std::errc::invalid_argument);
    }
    // Non-blocking, so that a pipe in the place of the file cannot hold us; a regular file ignores it.
    const int descriptor = retry(
        [=] { return ::open(name, flags | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH); });
    if (descriptor < 0) return lastError();
    File opened;
    opened.m_descriptor = descriptor;

    struct stat status {};
    if (::fstat(descriptor, &status) != 0) return lastError();
    if (S_ISDIR(status.st_mode)) return std::make_error_code(std::errc::is_a_directory);
    if (!S_ISREG(status.st_mode)) return std::make_error_code(std::errc::invalid_argument);

    const int lock = shareMode == kShareNone ? LOCK_EX : LOCK_SH;
    if (retry([=] { return ::flock(descriptor, lock | LOCK_NB); }) != 0) {
        return errno == EWOULDBLOCK ? std::make_error_code(std::errc::device_or_resource_busy) : lastError();
    }
    *this = std::move(opened);
    return {};
}

std::error_code File::size(std::uint64_t& bytes) const {
    struct stat status {};
    if (::fstat(m_descriptor, &status) != 0) return lastError();
    bytes = static_cast<std::uint64_t>(status.st_size);
    return {};
}

std::error_code File::readAt(std::uint64_t position, std::span<unsigned char> to, std::size_t& count) const {
    count = 0;
    if (position > kLargestOffset || to.size() > kLargestOffset - position) {
        return std::make_error_code(std::errc::value_too_large);
    }
    while (count < to.size()) {
        const auto got = retry([&] {
            return ::pread(m_descriptor, to.data() + count, to.size() - count, static_cast<off_t>(position + count));
        });
        if (got < 0) return lastError();
        if (got == 0) break;
        count += static_cast<std::size_t>(got);
    }
    return {};
}

void File::expectSequentialReading() const {
    (void)::posix_fadvise(m_descriptor, 0, 0, POSIX_FADV_SEQUENTIAL);
}

std::error_code File::append(std::span<const std::span<const unsigned char>> pieces) {
    std::array<iovec, kPiecesInOneCall> vectors{};
    std::uint64_t done = 0;
    std::size_t first = 0;   // the piece that is to be written next
    std::size_t offset = 0;  // and the byte in it
    for (;;) {
        std::size_t count = 0;
        for (std::size_t i = first; i < pieces.size() && count < vectors.size(); ++i) {
            const auto rest = pieces[i].subspan(i == first ? offset : 0);
            // writev() promises not to touch what it is given, but its struct serves reading, too.
            if (!rest.empty()) vectors[count++] = {const_cast<unsigned char*>(rest.data()), rest.size()};
        }
        if (count == 0) return {};
        const auto written = retry([&] { return ::writev(m_descriptor, vectors.data(), static_cast<int>(count)); });
        if (written <= 0) {
            const std::error_code error = written < 0 ? lastError() : std::make_error_code(std::errc::io_error);
            takeBack(done);
            return error;
        }
        done += static_cast<std::uint64_t>(written);
        offset += static_cast<std::size_t>(written);
        while (first < pieces.size() && offset >= pieces[first].size()) offset -= pieces[first++].size();
    }
}

void File::takeBack(std::uint64_t appended) {
    if (appended == 0) return;
    // After an appending write the descriptor stands where that write ended.
    const off_t end = ::lseek(m_descriptor, 0, SEEK_CUR);
    std::uint64_t now = 0;
    if (end >= static_cast<off_t>(appended) && !size(now) && now == static_cast<std::uint64_t>(end)) {
        (void)truncate(now - appended);  // the error before is the one to report
    }
}

std::error_code File::truncate(std::uint64_t size) {
    if (size > kLargestOffset) return std::make_error_code(std::errc::value_too_large);
    return retry([&] { return ::ftruncate(m_descriptor, static_cast<off_t>(size)); }) == 0 ? std::error_code{}
                                                                                           : lastError();
}

std::error_code File::sync() {
    return retry([&] { return ::fsync(m_descriptor); }) == 0 ? std::error_code{} : lastError();
}

std::error_code File::close() {
    if (!isOpen()) return {};
    // The descriptor is gone even when close() is interrupted; closing again could hit somebody else's file.
    if (::close(std::exchange(m_descriptor, -1)) == 0 || errno == EINTR) return {};
    return lastError();
}

std::error_code deleteFile(const char* name) {
    if (isEmpty(name)) return std::make_error_code(std::errc::invalid_argument);
    return ::unlink(name) == 0 ? std::error_code{} : lastError();
}

std::error_code replaceFile(const std::string& name, std::span<const unsigned char> bytes) {
    const std::string next = name + ".new";
    File file;
    do {
        // No link is followed: what it leads to is not ours to empty.
        if (const auto error = file.open(next.c_str(), O_RDWR | O_CREAT | O_APPEND | O_NOFOLLOW, kShareNone)) {
            return error;
        }
        // Somebody else may have renamed it between our opening and our lock: then it is his finished file.
    } while (!isSameFile(file.m_descriptor, next.c_str()));
    std::error_code error = file.truncate(0);
    if (!error) error = file.append(bytes);
    if (!error) error = file.sync();
    // Renamed with the lock in hand: the next one to replace the file makes a new one beside it.
    if (!error && ::rename(next.c_str(), name.c_str()) != 0) error = lastError();
    if (error) {
        (void)deleteFile(next.c_str());
        return error;
    }
    // The rename itself reaches the disk with its folder; when that fails the new file stands all the same.
    const std::size_t slash = name.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : name.substr(0, slash + 1);
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        ::fsync(descriptor);
        ::close(descriptor);
    }
    return {};
}

std::uint64_t openFilesLimit() {
    rlimit limit{};
    return ::getrlimit(RLIMIT_NOFILE, &limit) == 0 ? limit.rlim_cur : 0;
}

bool raiseOpenFilesLimit() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur >= limit.rlim_max) return false;
    limit.rlim_cur = limit.rlim_max;
    return ::setrlimit(RLIMIT_NOFILE, &limit) == 0;
}

}  // namespace os
