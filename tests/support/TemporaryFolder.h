#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

namespace halvex::test {

/// A folder of its own for a test, removed with everything in it at the end of the scope.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "halvex-test-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) ADD_FAILURE() << "no temporary folder " << name;
        m_path = name;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] std::string path(std::string_view name) const { return (m_path / name).string(); }

private:
    std::filesystem::path m_path;
};

inline void writeFile(const std::string& path, std::string_view content) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(content.data(), static_cast<std::streamsize>(content.size()));
    if (!out.flush()) ADD_FAILURE() << "cannot write " << path;
}

/// The whole content; "(missing)" when the file cannot be opened.
inline std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return in ? std::string(std::istreambuf_iterator<char>(in), {}) : std::string("(missing)");
}

}  // namespace halvex::test
