#pragma once

#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "tools/halvex/Program.h"

namespace halvex::test {

/// What a run of the tool gave.
struct ToolRun {
    int status = -1;
    std::string out;
    std::string err;
};

/// Runs the tool within the test, its output caught, or handed to `sink`.
inline ToolRun runTool(const std::vector<std::string>& arguments, std::streambuf* sink = nullptr) {
    const std::ostringstream out, err;
    std::streambuf* const outBefore = std::cout.rdbuf(sink != nullptr ? sink : out.rdbuf());
    std::streambuf* const errBefore = std::cerr.rdbuf(err.rdbuf());
    const int status = tool::runProgram(arguments);
    std::cout.rdbuf(outBefore);
    std::cerr.rdbuf(errBefore);
    return {status, out.str(), err.str()};
}

}  // namespace halvex::test
