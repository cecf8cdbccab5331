#pragma once

#include <string>

namespace mv {

// Reads a variable of the process's environment as it is now. False when the variable is not set;
// `value` is then untouched. A variable that is set to nothing counts as set. The one function of
// the platform that may throw std::bad_alloc: to have no memory is not to have no variable, and a
// caller that took one for the other would go on with a wrong path.
bool ReadEnvironment(const char* name, std::string& value);

}  // namespace mv
