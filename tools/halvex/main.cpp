#include <csignal>

#include "tools/halvex/Program.h"

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN);  // a reader that goes away is a failed write, told like any other
    std::signal(SIGXFSZ, SIG_IGN);  // and so is a file that has reached its limit
    return halvex::tool::runProgram(std::vector<std::string>(argv + 1, argv + argc));
}
