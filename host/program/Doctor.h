// "radial-blur doctor FILE": what is wrong with a filter module, and what to do.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace mv::host {

// `arguments` are the words behind "doctor"; the result is the exit code.
int RunDoctor(const std::vector<std::string>& arguments);

}  // namespace mv::host
