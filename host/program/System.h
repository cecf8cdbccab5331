// What the program asks of the operating system.
#pragma once

#include <cstdint>

namespace mv::host {

// From here on Ctrl-C and a request to end only raise a flag, so that the run stops in order.
void CatchInterrupts();
bool Interrupted();

bool StandardErrorIsTerminal();
std::uint64_t PeakMemoryBytes();

// Text goes to the console as UTF-8 for the object's life.
class Utf8Console {
public:
    Utf8Console();
    ~Utf8Console();
    Utf8Console(const Utf8Console&) = delete;
    Utf8Console& operator=(const Utf8Console&) = delete;

private:
    [[maybe_unused]] unsigned before_ = 0;  // only Windows has something to put back
};

}  // namespace mv::host
