// The inside of a HostSession, as its procedures see it.
#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "HostSession.h"
#include "HostStores.h"
#include "PixelServer.h"

namespace mv::host {

// Owned by its HostSession. During a call everything below is reached under `lock` only.
struct SessionState {
    SessionState(hostapi::EntryPoint entry, HostDocument given, HostOffer offered,
                 HostFaults planned);

    hostapi::EntryPoint entryPoint;
    HostDocument document;
    HostOffer offer;
    HostFaults faults;
    HostHooks hooks;
    Complaints complaints;
    HandleStore handles;
    BufferStore buffers;
    DescriptorStore descriptors;
    PixelServer pixels;

    hostapi::FilterRecord record{};
    hostapi::AboutRecord about{};
    hostapi::PlatformData platformData{};
    hostapi::Str255 errorString{};
    hostapi::HandleProcs handleProcs{};
    hostapi::PIDescriptorParameters descriptorParameters{};
    hostapi::ReadDescriptorProcs readProcs{};
    hostapi::WriteDescriptorProcs writeProcs{};
    hostapi::SPBasicSuite basicSuite{};
    hostapi::PSBufferSuite1 bufferSuite{};
    hostapi::PSHandleSuite2 handleSuite{};
    hostapi::TimingSuite1 timingSuite{};
    std::intptr_t data = 0;

    std::optional<ScriptValues> recorded;
    std::vector<std::pair<std::int32_t, std::int32_t>> progress;
    SessionCounts counts;  // those that no store keeps
    int bufferSuiteHeld = 0;
    int handleSuiteHeld = 0;
    int timingSuiteHeld = 0;
    bool overlapReported = false;

    std::recursive_mutex lock;
};

// Makes a session the one that the procedures find, for the object's life. Holds a lock of the
// whole process, so that no two sessions are inside a module at once.
class CurrentSession {
public:
    explicit CurrentSession(SessionState& state);
    ~CurrentSession();
    CurrentSession(const CurrentSession&) = delete;
    CurrentSession& operator=(const CurrentSession&) = delete;

private:
    SessionState* before_;
};

// Fills the proc tables of a session and the record's single procedures.
void InstallProcs(SessionState& state);
int StrayProcCalls();

}  // namespace mv::host
