#pragma once

#include <cstdio>
#include <memory>
#include <string>

#include "formats/io/FormatError.h"

namespace halvex {

/// A text file that is being written. Text gathers in memory and goes out in large pieces. One thread at a time.
class TextFile {
public:
    /// Creates the file ("-": standard output). False with error().
    [[nodiscard]] bool create(const std::string& name);
    /// What has gathered: to be appended to.
    [[nodiscard]] std::string& text() { return m_text; }
    /// Writes what has gathered when it is enough to be worth it. False with error() when the file takes no more.
    [[nodiscard]] bool flush();
    /// Writes all that is left and closes. False with error() when that fails or a write has failed before.
    [[nodiscard]] bool close();
    [[nodiscard]] const FormatError& error() const { return m_error; }

private:
    struct CloseFile {
        void operator()(std::FILE* file) const {
            if (file != stdout) std::fclose(file);
        }
    };
    bool writeOut();
    bool failed(const char* what);

    std::unique_ptr<std::FILE, CloseFile> m_file;
    std::string m_name;
    std::string m_text;
    FormatError m_error;
};

}  // namespace halvex
