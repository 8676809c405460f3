#pragma once

#include <string>
#include <vector>

namespace halvex::tool {

/// The program: runs the subcommand that the arguments (without the program's name) ask for. Output goes to std::cout,
/// what is wrong to std::cerr in one line. Returns the exit status: 0 done, 1 bad input, 2 wrong usage.
int runProgram(const std::vector<std::string>& arguments);

}  // namespace halvex::tool
