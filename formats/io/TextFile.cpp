#include "formats/io/TextFile.h"

#include <cerrno>
#include <cstddef>
#include <system_error>

namespace halvex {
namespace {

constexpr std::size_t kWriteAt = 1U << 16;

}  // namespace

bool TextFile::failed(const char* what) {
    m_error = {m_name, 0, std::string(what) + ": " + std::generic_category().message(errno)};
    return false;
}

bool TextFile::create(const std::string& name) {
    m_name = name;
    m_error = {};
    m_text.clear();
    m_file.reset(name == "-" ? stdout : std::fopen(name.c_str(), "wbe"));
    return m_file != nullptr || failed("cannot be created");
}

bool TextFile::flush() {
    return m_text.size() < kWriteAt || writeOut();
}

bool TextFile::writeOut() {
    if (m_file == nullptr) return failed("is not open");
    const bool written = std::fwrite(m_text.data(), 1, m_text.size(), m_file.get()) == m_text.size();
    m_text.clear();
    return written || failed("cannot be written");
}

bool TextFile::close() {
    if (m_file == nullptr) return true;
    bool good =
        m_error.message.empty() && writeOut() && (std::fflush(m_file.get()) == 0 || failed("cannot be written"));
    std::FILE* file = m_file.release();
    if (file != stdout && std::fclose(file) != 0 && good) good = failed("cannot be closed");
    return good;
}

}  // namespace halvex
