#include "halvex/platform/os/Published.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <thread>

namespace {

TEST(Published, NoReaderSeesPartsOfTwoPublications) {
    constexpr std::int32_t kLast = 2000000;
    os::Published<8> published;
    std::thread writer([&] {
        for (std::int32_t i = 1; i <= kLast; ++i) published.publish({i, i, i, i, i, i, i, i});
    });
    int torn = 0;
    std::int32_t newest = 0;
    while (newest != kLast) {  // so that the two overlap, whoever starts first
        const auto values = published.read();
        newest = values[0];
        if (std::any_of(values.begin(), values.end(), [&](std::int32_t value) { return value != newest; })) ++torn;
    }
    writer.join();
    EXPECT_EQ(torn, 0);
}

}  // namespace
