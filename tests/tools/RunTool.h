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

/// Runs the tool within the test, its output caught.
inline ToolRun runTool(const std::vector<std::string>& arguments) {
    std::ostringstream out;
    std::ostringstream err;
    std::streambuf* const outBefore = std::cout.rdbuf(out.rdbuf());
    std::streambuf* const errBefore = std::cerr.rdbuf(err.rdbuf());
    ToolRun run;
    run.status = tool::runProgram(arguments);
    std::cout.rdbuf(outBefore);
    std::cerr.rdbuf(errBefore);
    run.out = out.str();
    run.err = err.str();
    return run;
}

}  // namespace halvex::test
