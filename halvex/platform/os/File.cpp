#include "halvex/platform/os/File.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <limits>
#include <utility>

namespace os {
namespace {

std::error_code lastError() {
    return {errno, std::generic_category()};
}

constexpr std::uint64_t kLargestOffset = std::numeric_limits<off_t>::max();

bool isEmpty(const char* name) {
    return name == nullptr || *name == '\0';
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

std::error_code File::append(std::span<const unsigned char> bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const auto written = retry([&] { return ::write(m_descriptor, bytes.data() + done, bytes.size() - done); });
        if (written > 0) {
            done += static_cast<std::size_t>(written);
            continue;
        }
        const std::error_code error = written < 0 ? lastError() : std::make_error_code(std::errc::io_error);
        if (done > 0) {
            // After an appending write the descriptor stands where that write ended.
            const off_t end = ::lseek(m_descriptor, 0, SEEK_CUR);
            std::uint64_t now = 0;
            if (end >= static_cast<off_t>(done) && !size(now) && now == static_cast<std::uint64_t>(end)) {
                (void)truncate(now - done);  // the first error is the one to report
            }
        }
        return error;
    }
    return {};
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

}  // namespace os
