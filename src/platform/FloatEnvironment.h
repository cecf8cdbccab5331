#pragma once

#include <cfenv>
#include <cstdint>

namespace mv {

// Puts the calling thread into the default floating-point environment for the length of a scope:
// round to nearest, all exceptions masked, denormals kept, full precision of the old register
// stack. A host may have set any of these, and results are promised to the bit. What was set
// before, status flags included, is back when the scope ends. Lives on the stack of its thread.
class FloatEnvironmentGuard {
public:
    FloatEnvironmentGuard() noexcept;
    ~FloatEnvironmentGuard();
    FloatEnvironmentGuard(const FloatEnvironmentGuard&) = delete;
    FloatEnvironmentGuard& operator=(const FloatEnvironmentGuard&) = delete;

private:
    std::fenv_t saved_{};
    std::uint32_t savedVectorState_ = 0;
};

}  // namespace mv
