// The program behind its platform's main function.
#pragma once

#include <string>
#include <vector>

namespace mv::host {

// `arguments` are the words behind the program's name; the result is the exit code.
int RunProgram(std::vector<std::string> arguments);

}  // namespace mv::host
