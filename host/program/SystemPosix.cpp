#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <csignal>

#include "program/System.h"

namespace mv::host {
namespace {

std::atomic<bool> interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler touches it");

void NoteSignal(int) {
    interrupted.store(true);
}

void Handle(int number, void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(number, &action, nullptr);
}

// A signal that the caller has set to be ignored, as nohup does, stays ignored.
void HandleUnlessIgnored(int number) {
    struct sigaction before {};
    if (sigaction(number, nullptr, &before) == 0 && before.sa_handler != SIG_IGN) {
        Handle(number, NoteSignal);
    }
}

}  // namespace

void CatchInterrupts() {
    HandleUnlessIgnored(SIGINT);
    HandleUnlessIgnored(SIGTERM);
    HandleUnlessIgnored(SIGHUP);
    // A file that grows too large and a reader that went away show as errors of the write.
    Handle(SIGXFSZ, SIG_IGN);
    Handle(SIGPIPE, SIG_IGN);
}

bool Interrupted() {
    return interrupted.load();
}

bool StandardErrorIsTerminal() {
    return isatty(STDERR_FILENO) == 1;
}

std::uint64_t PeakMemoryBytes() {
    struct rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<std::uint64_t>(usage.ru_maxrss) * 1024;
}

Utf8Console::Utf8Console() = default;
Utf8Console::~Utf8Console() = default;

}  // namespace mv::host
