// What every procedure of the host does first: find its session, enter it, let nothing out.
#pragma once

#include "SessionState.h"

namespace mv::host {

// The session inside a call, or null (and the call is counted as a stray one).
SessionState* SessionOfThisCall();

// Holds the session's lock. Modules must not call from two threads at once: a wait is reported.
class ProcEntry {
public:
    explicit ProcEntry(SessionState& state);
    ~ProcEntry();
    ProcEntry(const ProcEntry&) = delete;
    ProcEntry& operator=(const ProcEntry&) = delete;

private:
    SessionState& state_;
};

// Runs `body` on the current session; no exception passes through the module.
template <class Result, class Body>
Result InSession(Result otherwise, Body body) noexcept {
    SessionState* const state = SessionOfThisCall();
    if (state == nullptr) {
        return otherwise;
    }
    try {
        const ProcEntry entry(*state);
        return body(*state);
    } catch (...) {
        return otherwise;
    }
}

void InstallDescriptorProcs(SessionState& state);

}  // namespace mv::host
