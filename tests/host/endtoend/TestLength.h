// Tests with a long form take it when RADIAL_BLUR_LONG is set, as `./dev test --long` does.
#pragma once

#include <cstdlib>

namespace endtoend {

inline bool IsLongForm() {
    return std::getenv("RADIAL_BLUR_LONG") != nullptr;
}

// The number for this run: the usual one, or the long form's.
inline int Times(int usual, int thorough) {
    return IsLongForm() ? thorough : usual;
}

}  // namespace endtoend
