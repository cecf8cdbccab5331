// The procedures that a module calls: record, handles, Buffer suite, basic suite.
#include <atomic>
#include <cstring>

#include "ProcSupport.h"

namespace mv::host {
namespace {

std::recursive_mutex callLock;
std::atomic<SessionState*> currentSession{nullptr};
std::atomic<int> strayCalls{0};

}  // namespace

CurrentSession::CurrentSession(SessionState& state) {
    callLock.lock();
    before_ = currentSession.exchange(&state);
}

CurrentSession::~CurrentSession() {
    currentSession.store(before_);
    callLock.unlock();
}

SessionState* SessionOfThisCall() {
    SessionState* const state = currentSession.load();
    if (state == nullptr) {
        ++strayCalls;
    }
    return state;
}

int StrayProcCalls() {
    return strayCalls.load();
}

ProcEntry::ProcEntry(SessionState& state) : state_(state) {
    if (!state.lock.try_lock()) {
        state.lock.lock();
        if (!state.overlapReported) {
            state.overlapReported = true;
            state.complaints.emplace_back("host procedures were called on two threads at once");
        }
    }
}

ProcEntry::~ProcEntry() {
    state_.lock.unlock();
}

namespace {

// --- Procedures of the record ---

hostapi::Boolean AbortProc() {
    return InSession<hostapi::Boolean>(0, [](SessionState& state) -> hostapi::Boolean {
        ++state.counts.abortCalls;
        const HostFaults& faults = state.faults;
        const bool planned =
            (faults.abortAtProgress > 0 && state.counts.progressCalls >= faults.abortAtProgress) ||
            (faults.abortAtAsk > 0 && state.counts.abortCalls >= faults.abortAtAsk);
        const bool asked = state.hooks.abortAsked && state.hooks.abortAsked();
        return planned || asked ? 1 : 0;
    });
}

void ProgressProc(std::int32_t done, std::int32_t total) {
    InSession<int>(0, [done, total](SessionState& state) {
        ++state.counts.progressCalls;
        if (total <= 0) {
            state.complaints.emplace_back("progress was reported with a total that is not above 0");
        }
        state.progress.emplace_back(done, total);
        if (state.hooks.progress) {
            state.hooks.progress(done, total);
        }
        return 0;
    });
}

hostapi::OSErr AdvanceState() {
    return InSession<hostapi::OSErr>(hostapi::memFullErr, [](SessionState& state) {
        ++state.counts.advanceCalls;
        if (state.hooks.beforeAdvance) {
            state.hooks.beforeAdvance(state.record);
        }
        if (state.counts.advanceCalls == state.faults.failAdvanceAt) {
            return state.faults.advanceError;
        }
        const hostapi::OSErr error = state.pixels.Advance(state.record);
        if (state.hooks.afterAdvance) {
            state.hooks.afterAdvance(state.record);
        }
        return error;
    });
}

// Without a hook there is nobody to choose a colour: the same as a cancelled picker.
hostapi::OSErr ColorServices(hostapi::ColorServicesInfo* info) {
    return InSession<hostapi::OSErr>(hostapi::paramErr, [info](SessionState& state) {
        ++state.counts.colorCalls;
        if (info == nullptr) {
            return hostapi::paramErr;
        }
        return state.hooks.chooseColor ? state.hooks.chooseColor(info) : hostapi::userCanceledErr;
    });
}

void HostProc(std::int16_t, std::intptr_t*) {}
void ProcessEvent(void*) {}

// --- Handles, in the older table and in the suite ---

hostapi::Handle NewHandle(std::int32_t size) {
    return InSession<hostapi::Handle>(
        nullptr, [size](SessionState& state) { return state.handles.New(size); });
}

void DisposeHandle(hostapi::Handle handle) {
    InSession<int>(0, [handle](SessionState& state) {
        state.descriptors.Forget(handle);
        state.handles.Dispose(handle);
        return 0;
    });
}

std::int32_t GetHandleSize(hostapi::Handle handle) {
    return InSession<std::int32_t>(
        0, [handle](SessionState& state) { return state.handles.GetSize(handle); });
}

hostapi::OSErr SetHandleSize(hostapi::Handle handle, std::int32_t newSize) {
    return InSession<hostapi::OSErr>(hostapi::memFullErr, [=](SessionState& state) {
        return state.handles.SetSize(handle, newSize);
    });
}

hostapi::Ptr LockHandle(hostapi::Handle handle, hostapi::Boolean) {
    return InSession<hostapi::Ptr>(nullptr, [handle](SessionState& state) {
        return state.handles.SetLock(handle, true, nullptr);
    });
}

void UnlockHandle(hostapi::Handle handle) {
    InSession<int>(0, [handle](SessionState& state) {
        state.handles.SetLock(handle, false, nullptr);
        return 0;
    });
}

void RecoverSpace(std::int32_t) {}

void SetLock(hostapi::Handle handle, hostapi::Boolean lock, hostapi::Ptr* address,
             hostapi::Boolean* oldLock) {
    InSession<int>(0, [=](SessionState& state) {
        bool before = false;
        const hostapi::Ptr data = state.handles.SetLock(handle, lock != 0, &before);
        if (address != nullptr) {
            *address = data;
        }
        if (oldLock != nullptr) {
            *oldLock = before ? 1 : 0;
        }
        return 0;
    });
}

// --- The Buffer suite ---

void CheckHeld(SessionState& state, int held) {
    if (held == 0) {
        state.complaints.emplace_back("a suite was used after it was released");
    }
}

hostapi::Ptr NewBuffer(std::uint32_t* requestedSize, std::uint32_t minimumSize) {
    return InSession<hostapi::Ptr>(nullptr, [=](SessionState& state) {
        CheckHeld(state, state.bufferSuiteHeld);
        return state.buffers.New(requestedSize, minimumSize);
    });
}

void DisposeBuffer(hostapi::Ptr* buffer) {
    InSession<int>(0, [buffer](SessionState& state) {
        CheckHeld(state, state.bufferSuiteHeld);
        state.buffers.Dispose(buffer);
        return 0;
    });
}

std::uint32_t GetBufferSize(hostapi::Ptr buffer) {
    return InSession<std::uint32_t>(
        0, [buffer](SessionState& state) { return state.buffers.GetSize(buffer); });
}

std::uint32_t GetBufferSpace() {
    return InSession<std::uint32_t>(0,
                                    [](SessionState& state) { return state.buffers.GetSpace(); });
}

// --- The basic suite ---

bool IsBufferSuite(const char* name, std::int32_t version) {
    return std::strcmp(name, hostapi::kPSBufferSuite) == 0 &&
           version == hostapi::kPSBufferSuiteVersion1;
}

bool IsHandleSuite(const char* name, std::int32_t version) {
    return std::strcmp(name, hostapi::kPSHandleSuite) == 0 &&
           version == hostapi::kPSHandleSuiteVersion2;
}

bool IsTimingSuite(const char* name, std::int32_t version) {
    return std::strcmp(name, hostapi::kTimingSuite) == 0 &&
           version == hostapi::kTimingSuiteVersion1;
}

void TakeTimingReport(const char* text) {
    InSession<int>(0, [text](SessionState& state) {
        CheckHeld(state, state.timingSuiteHeld);
        if (state.hooks.timing && text != nullptr) {
            state.hooks.timing(text);
        }
        return 0;
    });
}

std::int32_t AcquireSuite(const char* name, std::int32_t version, const void** suite) {
    return InSession<std::int32_t>(hostapi::kSPBadParameterError, [=](SessionState& state) {
        if (name == nullptr || suite == nullptr) {
            return hostapi::kSPBadParameterError;
        }
        if (state.offer.bufferSuite && IsBufferSuite(name, version)) {
            ++state.bufferSuiteHeld;
            *suite = &state.bufferSuite;
        } else if (state.offer.handleSuite && IsHandleSuite(name, version)) {
            ++state.handleSuiteHeld;
            *suite = &state.handleSuite;
        } else if (state.offer.timingSuite && IsTimingSuite(name, version)) {
            ++state.timingSuiteHeld;
            *suite = &state.timingSuite;
        } else {
            if (state.offer.refusedSuiteIsCleared) {
                *suite = nullptr;
            }
            return hostapi::kSPSuiteNotFoundError;
        }
        ++state.counts.suitesAcquired;
        return hostapi::kSPNoError;
    });
}

// Releasing what is not held is ignored, as hosts do.
std::int32_t ReleaseSuite(const char* name, std::int32_t version) {
    return InSession<std::int32_t>(hostapi::kSPBadParameterError, [=](SessionState& state) {
        if (name == nullptr) {
            return hostapi::kSPBadParameterError;
        }
        int* held = nullptr;
        if (IsBufferSuite(name, version)) {
            held = &state.bufferSuiteHeld;
        } else if (IsHandleSuite(name, version)) {
            held = &state.handleSuiteHeld;
        } else if (IsTimingSuite(name, version)) {
            held = &state.timingSuiteHeld;
        }
        if (held != nullptr && *held > 0) {
            --*held;
            ++state.counts.suitesReleased;
        }
        return hostapi::kSPNoError;
    });
}

std::int32_t IsEqual(const char* left, const char* right) {
    return left != nullptr && right != nullptr && std::strcmp(left, right) == 0 ? 1 : 0;
}

std::int32_t NoBlock(std::size_t, void** block) {
    *block = nullptr;
    return hostapi::memFullErr;
}
std::int32_t NoFree(void*) {
    return hostapi::kSPBadParameterError;
}
std::int32_t NoReallocation(void*, std::size_t, void**) {
    return hostapi::memFullErr;
}
std::int32_t Undefined() {
    return hostapi::kSPBadParameterError;
}

}  // namespace

void InstallProcs(SessionState& state) {
    const HostOffer& offer = state.offer;
    hostapi::FilterRecord& record = state.record;
    record.abortProc = offer.abortProc ? AbortProc : nullptr;
    record.progressProc = offer.progressProc ? ProgressProc : nullptr;
    record.advanceState = offer.advanceState ? AdvanceState : nullptr;
    record.colorServices = offer.colorServices ? ColorServices : nullptr;
    record.hostProc = HostProc;
    record.processEvent = ProcessEvent;
    state.handleProcs = {1,
                         offer.handleProcsCount,
                         NewHandle,
                         DisposeHandle,
                         GetHandleSize,
                         SetHandleSize,
                         LockHandle,
                         UnlockHandle,
                         RecoverSpace,
                         offer.handleProcsCount >= 8 ? DisposeHandle : nullptr};
    state.bufferSuite = {NewBuffer, DisposeBuffer, GetBufferSize, GetBufferSpace};
    state.timingSuite = {TakeTimingReport};
    state.handleSuite = {NewHandle,     DisposeHandle, DisposeHandle, SetLock,
                         GetHandleSize, SetHandleSize, RecoverSpace};
    state.basicSuite = {AcquireSuite, ReleaseSuite,   IsEqual,  NoBlock,
                        NoFree,       NoReallocation, Undefined};
    InstallDescriptorProcs(state);
}

}  // namespace mv::host
