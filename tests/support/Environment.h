#pragma once

#include <cstdlib>
#include <filesystem>
#include <locale>
#include <optional>
#include <string>

/// An environment variable for a scope; null removes it.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const char* value) : m_name(name) {
        if (const char* before = std::getenv(name)) m_before = before;
        set(value);
    }
    ~ScopedVariable() { set(m_before ? m_before->c_str() : nullptr); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    void set(const char* value) const {
        value != nullptr ? ::setenv(m_name.c_str(), value, 1) : ::unsetenv(m_name.c_str());
    }
    std::string m_name;
    std::optional<std::string> m_before;
};

/// A folder of the test's own, gone when it ends.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "halvex-test-XXXXXX").string();
        m_path = ::mkdtemp(pattern.data());
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    [[nodiscard]] const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

/// A global C++ locale that writes 1234.5 as 1.234,5, for a scope. It needs nothing installed.
class CommaLocale {
public:
    CommaLocale() : m_before(std::locale::global(std::locale(std::locale::classic(), new Comma))) {}
    ~CommaLocale() { std::locale::global(m_before); }
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

private:
    struct Comma : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    std::locale m_before;
};
