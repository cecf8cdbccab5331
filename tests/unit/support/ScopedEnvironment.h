#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace mv::test {

// Sets or unsets a variable of the process's environment; what was there before is back when the
// scope ends. Not for use while other threads read the environment.
class ScopedEnvironment {
public:
    ScopedEnvironment(const char* name, const std::optional<std::string>& value) : name_(name) {
        if (const char* before = std::getenv(name)) {
            before_ = before;
        }
        Store(value);
    }
    ~ScopedEnvironment() { Store(before_); }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    void Store(const std::optional<std::string>& value) const {
#ifdef _WIN32
        // An empty value unsets here.
        _putenv_s(name_.c_str(), value.value_or(std::string()).c_str());
#else
        if (value) {
            setenv(name_.c_str(), value->c_str(), 1);
        } else {
            unsetenv(name_.c_str());
        }
#endif
    }

    std::string name_;
    std::optional<std::string> before_;
};

}  // namespace mv::test
