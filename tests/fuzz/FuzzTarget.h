// What every fuzz target gives: the function that takes one input, and inputs to begin with.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

// Never fails quietly: what must not be ends the process.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzzing {

std::vector<std::string> Seeds();

// Ends the process with a sentence when a promise is broken.
inline void Require(bool condition, const char* promise) {
    if (!condition) {
        std::fprintf(stderr, "broken promise: %s\n", promise);
        std::abort();
    }
}

}  // namespace fuzzing
