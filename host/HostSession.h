// One run of a filter module, seen from the host: record, suites, descriptors, pixels.
//
//     HostSession session(entryPoint, MakeDocument(image, alpha, mask));
//     session.Play({{FourCharacterCode("STRE"), 0.4}});
//     const RunOutcome outcome = session.Run();
//     session.Result(), session.Recorded(), session.Counts(), session.GetComplaints() ...
//
// or selector by selector: session.Call(hostapi::filterSelectorPrepare), with the record, the
// proc tables and the faults altered in between.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "HostImage.h"
#include "HostOffer.h"
#include "ScriptValues.h"
#include "hostapi/HostApi.h"

namespace mv::host {

struct SessionState;

// Called from inside the host's procedures, on whichever thread the module calls them.
struct HostHooks {
    std::function<void(std::int32_t done, std::int32_t total)> progress;
    std::function<bool()> abortAsked;
    std::function<void(hostapi::FilterRecord& record)> beforeAdvance;
    std::function<void(hostapi::FilterRecord& record)> afterAdvance;
    std::function<hostapi::OSErr(hostapi::ColorServicesInfo* info)> chooseColor;
    std::function<void(const std::string& report)> timing;
};

struct SessionCounts {
    int progressCalls = 0;
    int abortCalls = 0;
    int advanceCalls = 0;
    int colorCalls = 0;
    int suitesAcquired = 0;  // successfully
    int suitesReleased = 0;
    int suitesHeld = 0;
    int buffersAsked = 0;
    int buffersLive = 0;
    std::uint64_t bufferBytesLive = 0;
    std::uint64_t bufferBytesPeak = 0;
    int handlesMade = 0;
    int handlesLive = 0;
    int descriptorTokensOpen = 0;
};

struct RunOutcome {
    hostapi::OSErr status = hostapi::noErr;  // of the selector that ended the run
    std::int16_t selector = 0;               // the last one called
    int continueCalls = 0;
    bool stored = false;        // Result() is the filtered picture
    double startSeconds = 0.0;  // time inside the start selector
};

// A good host for one document, with everything a test wants to see or to break. The procedures
// carry no user pointer, so the session binds itself for the length of each call into the module;
// calls of different sessions wait for one another. To be used from one thread; the procedures
// may be called by the module's threads. Owns all memory given to the module.
class HostSession {
public:
    HostSession(hostapi::EntryPoint entryPoint, HostDocument document, HostOffer offer = {},
                HostFaults faults = {});
    ~HostSession();
    HostSession(const HostSession&) = delete;
    HostSession& operator=(const HostSession&) = delete;

    // The values for the module to read: fills `descriptor` of the descriptor block.
    void Play(const ScriptValues& values);

    // parameters, prepare, start, continue while a rectangle asks for more, finish. With an
    // error from start finish is not called, with one from continue it is, as hosts do. At the
    // end the host disposes the descriptor's handle; Recorded() keeps what was in it.
    RunOutcome Run(bool withParameters = true);
    // One selector, whatever its number; what the module stored as its result.
    hostapi::OSErr Call(std::int16_t selector);
    hostapi::OSErr CallAbout();
    // What hosts do behind the last call of a run: stores the delivered output.
    void StoreOutput();

    hostapi::FilterRecord& Record();
    hostapi::AboutRecord& About();
    hostapi::PIDescriptorParameters& Descriptor();
    hostapi::ReadDescriptorProcs& ReadProcs();
    hostapi::WriteDescriptorProcs& WriteProcs();
    hostapi::HandleProcs& Handles();
    hostapi::SPBasicSuite& BasicSuite();
    hostapi::PSBufferSuite1& BufferSuite();
    hostapi::PSHandleSuite2& HandleSuite();
    std::intptr_t& Data();  // the cell that the host keeps for the module
    HostFaults& Faults();
    HostHooks& Hooks();
    // Handles as the module gets them, for tests of the host's own procedures.
    hostapi::Handle MakeHandle(std::int32_t size);

    const HostImage& Source() const;
    // The destination: the source until output was stored.
    const HostImage& Result() const;
    HostImage TakeResult();
    // The document, for another session; this one is spent.
    HostDocument TakeDocument();
    // What the module wrote last through the write procedures and closed.
    const std::optional<ScriptValues>& Recorded() const;
    // Every put in order, a key that came twice twice.
    const ScriptValues& AllPuts() const;
    SessionCounts Counts() const;
    const std::vector<std::pair<std::int32_t, std::int32_t>>& ProgressCalls() const;
    // What the module did that the interface does not allow, one sentence each.
    const std::vector<std::string>& GetComplaints() const;
    // Calls of host procedures while no session was inside a call, in this process.
    static int StrayCalls();

private:
    RunOutcome RunSelectors(bool withParameters);

    std::unique_ptr<SessionState> state_;
};

}  // namespace mv::host
