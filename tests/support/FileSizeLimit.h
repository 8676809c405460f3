#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

namespace halvex::test {

/// For its scope no file of the process can grow past `bytes`: a write across that comes back short, the next one
/// fails, as on a full disk.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN)) {
        if (::getrlimit(RLIMIT_FSIZE, &m_before) != 0) ADD_FAILURE() << "getrlimit";
        const rlimit limit{bytes, m_before.rlim_max};
        if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) ADD_FAILURE() << "setrlimit";
    }
    ~FileSizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit m_before{};
    void (*m_handler)(int);
};

}  // namespace halvex::test
