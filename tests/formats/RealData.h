#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace halvex::test {

/// Tests on files of the folder that HALVEX_DATA names; skipped without it.
class RealData : public testing::Test {
protected:
    void SetUp() override {
        if (m_folder == nullptr) GTEST_SKIP() << "HALVEX_DATA is not set: no real data to read";
    }
    [[nodiscard]] std::string path(const std::string& name) const { return m_folder + ('/' + name); }

private:
    const char* const m_folder = std::getenv("HALVEX_DATA");
};

}  // namespace halvex::test
