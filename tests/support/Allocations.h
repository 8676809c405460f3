#pragma once

#include <cstddef>

namespace halvex::test {

/// Allocations of the calling thread so far. Test programs that ask link Allocations.cpp.
std::size_t allocations();

}  // namespace halvex::test
