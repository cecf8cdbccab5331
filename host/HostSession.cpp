#include "HostSession.h"

#include <chrono>
#include <cmath>
#include <limits>
#include <utility>

#include "SessionState.h"

namespace mv::host {
namespace {

// No module answers with this number; a result cell that still holds it was not written.
constexpr std::int16_t kUnwrittenResult = 0x5AA5;
constexpr std::int32_t kSpaceOffered = std::numeric_limits<std::int32_t>::max();
constexpr std::int16_t kPaddingError = -3;

hostapi::Fixed ToFixed(double value) {
    return static_cast<hostapi::Fixed>(std::lround(std::fmin(value, 32767.0) * 65536.0));
}

void FillPlanes(hostapi::FilterRecord& record, const HostDocument& document) {
    record.planes = document.planesStated;
    record.inLayerPlanes = record.outLayerPlanes = record.absLayerPlanes = document.layerPlanes;
    record.inTransparencyMask = record.outTransparencyMask = record.absTransparencyMask =
        document.transparencyMask;
    record.inLayerMasks = record.outLayerMasks = record.absLayerMasks = document.layerMasks;
    record.inInvertedLayerMasks = record.outInvertedLayerMasks = record.absInvertedLayerMasks =
        document.invertedLayerMasks;
    record.inNonLayerPlanes = record.outNonLayerPlanes = record.absNonLayerPlanes =
        document.nonLayerPlanes;
    record.inHiPlane = record.outHiPlane = static_cast<std::int16_t>(document.planesStated - 1);
}

void FillImage(hostapi::FilterRecord& record, const HostDocument& document) {
    const auto width = static_cast<std::int16_t>(document.image.width);
    const auto height = static_cast<std::int16_t>(document.image.height);
    record.imageSize = record.wholeSize = {height, width};
    record.filterRect = {0, 0, height, width};
    record.imageMode = document.imageMode;
    record.depth = document.depthStated;
    record.filterCase = document.filterCase;
    record.isFloating = document.isFloating ? 1 : 0;
    record.haveMask = document.mask.empty() ? 0 : 1;
    record.autoMask = record.haveMask;
    record.imageHRes = ToFixed(document.horizontalResolution);
    record.imageVRes = ToFixed(document.verticalResolution);
    record.inputRate = record.maskRate = 0x00010000;
    record.inputPadding = record.outputPadding = record.maskPadding = kPaddingError;
}

void FillRecord(SessionState& state) {
    hostapi::FilterRecord& record = state.record;
    FillImage(record, state.document);
    FillPlanes(record, state.document);
    record.maxSpace = record.bufferSpace = kSpaceOffered;
    record.maxSpace64 = record.bufferSpace64 = kSpaceOffered;
    record.background = {65535, 65535, 65535};
    record.hostSig = hostapi::kCommandLineSignature;
    record.supportsPadding = state.offer.supportsPadding ? 1 : 0;
    record.samplingSupport = state.offer.samplingSupport;
    record.supportsAbsolute = 1;
    record.errorString = &state.errorString;
    record.platformData = state.offer.platformData ? &state.platformData : nullptr;
    record.handleProcs = state.offer.handleProcs ? &state.handleProcs : nullptr;
    record.sSPBasic = state.offer.basicSuite ? &state.basicSuite : nullptr;
    record.descriptorParameters =
        state.offer.descriptorParameters ? &state.descriptorParameters : nullptr;
    state.descriptorParameters.playInfo = state.offer.playInfo;
    state.descriptorParameters.readDescriptorProcs =
        state.offer.readDescriptorProcs ? &state.readProcs : nullptr;
    state.descriptorParameters.writeDescriptorProcs =
        state.offer.writeDescriptorProcs ? &state.writeProcs : nullptr;
    state.about.platformData = record.platformData;
    state.about.sSPBasic = record.sSPBasic;
}

// What hosts do when a run is over: the descriptor's handle is theirs to dispose.
void DropDescriptor(SessionState& state) {
    hostapi::Handle& descriptor = state.descriptorParameters.descriptor;
    if (descriptor != nullptr && state.descriptors.Find(descriptor) != nullptr) {
        state.descriptors.Forget(descriptor);
        if (state.handles.Owns(descriptor)) {
            state.handles.Dispose(descriptor);
        }
    }
    descriptor = nullptr;
}

bool AsksForMore(const hostapi::FilterRecord& record) {
    return !IsEmpty(record.inRect) || !IsEmpty(record.outRect) || !IsEmpty(record.maskRect);
}

}  // namespace

SessionState::SessionState(hostapi::EntryPoint entry, HostDocument given, HostOffer offered,
                           HostFaults planned)
    : entryPoint(entry),
      document(std::move(given)),
      offer(offered),
      faults(std::move(planned)),
      handles(faults, complaints),
      buffers(offer, faults, complaints),
      descriptors(faults, complaints),
      pixels(document, offer, complaints) {}

HostSession::HostSession(hostapi::EntryPoint entryPoint, HostDocument document, HostOffer offer,
                         HostFaults faults)
    : state_(std::make_unique<SessionState>(entryPoint, std::move(document), offer,
                                            std::move(faults))) {
    InstallProcs(*state_);
    FillRecord(*state_);
    state_->pixels.Restart(state_->record);
}

HostSession::~HostSession() = default;

void HostSession::Play(const ScriptValues& values) {
    SessionState& state = *state_;
    DropDescriptor(state);
    hostapi::Handle& descriptor = state.descriptorParameters.descriptor;
    if (!state.offer.playDescriptor) {
        return;
    }
    if (state.offer.descriptorHandle == DescriptorHandle::Own) {
        descriptor = state.handles.New(0);
    } else {
        descriptor = static_cast<hostapi::Handle>(PlatformAllocate(sizeof(hostapi::Ptr)));
        if (descriptor != nullptr) {
            *descriptor = nullptr;
        }
    }
    if (descriptor != nullptr) {
        state.descriptors.Keep(descriptor, values);
    }
}

hostapi::OSErr HostSession::Call(std::int16_t selector) {
    std::int16_t result = kUnwrittenResult;
    void* const block = selector == hostapi::filterSelectorAbout
                            ? static_cast<void*>(&state_->about)
                            : static_cast<void*>(&state_->record);
    {
        const CurrentSession current(*state_);
        state_->entryPoint(selector, block, &state_->data, &result);
    }
    if (result == kUnwrittenResult) {
        state_->complaints.emplace_back("the result of a selector was not stored");
    }
    return result;
}

hostapi::OSErr HostSession::CallAbout() {
    return Call(hostapi::filterSelectorAbout);
}

void HostSession::StoreOutput() {
    state_->pixels.StorePending();
}

RunOutcome HostSession::Run(bool withParameters) {
    state_->pixels.Restart(state_->record);
    const RunOutcome outcome = RunSelectors(withParameters);
    DropDescriptor(*state_);
    return outcome;
}

RunOutcome HostSession::RunSelectors(bool withParameters) {
    SessionState& state = *state_;
    RunOutcome outcome;
    const auto call = [&](std::int16_t selector) {
        outcome.selector = selector;
        outcome.status = Call(selector);
        return outcome.status == hostapi::noErr;
    };
    if (withParameters && !call(hostapi::filterSelectorParameters)) {
        return outcome;
    }
    if (!call(hostapi::filterSelectorPrepare)) {
        return outcome;
    }
    const auto before = std::chrono::steady_clock::now();
    const bool started = call(hostapi::filterSelectorStart);
    outcome.startSeconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - before).count();
    if (!started) {
        return outcome;
    }
    while (AsksForMore(state.record)) {
        const hostapi::OSErr error = state.pixels.Advance(state.record);
        if (error != hostapi::noErr || !call(hostapi::filterSelectorContinue)) {
            const hostapi::OSErr status = error != hostapi::noErr ? error : outcome.status;
            call(hostapi::filterSelectorFinish);
            outcome.status = status;
            return outcome;
        }
        ++outcome.continueCalls;
    }
    state.pixels.StorePending();
    outcome.stored = call(hostapi::filterSelectorFinish);
    if (outcome.stored && state.record.haveMask != 0 && state.record.autoMask != 0) {
        state.pixels.ClipToSelection();
    }
    return outcome;
}

hostapi::FilterRecord& HostSession::Record() {
    return state_->record;
}
hostapi::AboutRecord& HostSession::About() {
    return state_->about;
}
hostapi::PIDescriptorParameters& HostSession::Descriptor() {
    return state_->descriptorParameters;
}
hostapi::ReadDescriptorProcs& HostSession::ReadProcs() {
    return state_->readProcs;
}
hostapi::WriteDescriptorProcs& HostSession::WriteProcs() {
    return state_->writeProcs;
}
hostapi::HandleProcs& HostSession::Handles() {
    return state_->handleProcs;
}
hostapi::SPBasicSuite& HostSession::BasicSuite() {
    return state_->basicSuite;
}
hostapi::PSBufferSuite1& HostSession::BufferSuite() {
    return state_->bufferSuite;
}
hostapi::PSHandleSuite2& HostSession::HandleSuite() {
    return state_->handleSuite;
}
std::intptr_t& HostSession::Data() {
    return state_->data;
}
HostFaults& HostSession::Faults() {
    return state_->faults;
}
HostHooks& HostSession::Hooks() {
    return state_->hooks;
}

hostapi::Handle HostSession::MakeHandle(std::int32_t size) {
    return state_->handles.New(size);
}

const HostImage& HostSession::Source() const {
    return state_->document.image;
}
const HostImage& HostSession::Result() const {
    return state_->pixels.Destination();
}
HostImage HostSession::TakeResult() {
    return state_->pixels.TakeDestination();
}
HostDocument HostSession::TakeDocument() {
    return std::move(state_->document);
}
const std::optional<ScriptValues>& HostSession::Recorded() const {
    return state_->recorded;
}
const ScriptValues& HostSession::AllPuts() const {
    return state_->descriptors.AllPuts();
}

SessionCounts HostSession::Counts() const {
    SessionCounts counts = state_->counts;
    counts.suitesHeld = state_->bufferSuiteHeld + state_->handleSuiteHeld + state_->timingSuiteHeld;
    counts.buffersAsked = state_->buffers.Asked();
    counts.buffersLive = state_->buffers.Live();
    counts.bufferBytesLive = state_->buffers.LiveBytes();
    counts.bufferBytesPeak = state_->buffers.PeakBytes();
    counts.handlesMade = state_->handles.Made();
    counts.handlesLive = state_->handles.Live();
    counts.descriptorTokensOpen = state_->descriptors.OpenTokens();
    return counts;
}

const std::vector<std::pair<std::int32_t, std::int32_t>>& HostSession::ProgressCalls() const {
    return state_->progress;
}

const std::vector<std::string>& HostSession::GetComplaints() const {
    return state_->complaints;
}

int HostSession::StrayCalls() {
    return StrayProcCalls();
}

}  // namespace mv::host
