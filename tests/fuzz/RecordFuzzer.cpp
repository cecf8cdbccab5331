// A whole filter record: any shape, sizes, rows, parameter values, selectors, and a host that
// refuses, lies or cancels anywhere. Pictures lie between pages that fault.
#include <sched.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "FuzzInput.h"
#include "FuzzTarget.h"
#include "GuardedPages.h"
#include "HostBlocks.h"
#include "HostScript.h"
#include "hostapi/HostApi.h"

extern "C" void ENTRYPOINT(std::int16_t selector, void* parameterBlock, std::intptr_t* data,
                           std::int16_t* result);

namespace {

using fuzzing::FuzzInput;
using fuzzing::GuardedPages;
using fuzzing::Require;
using hostapi::FilterRecord;
using hostapi::OSErr;

struct Area {
    std::uint8_t* first = nullptr;  // the lowest byte that belongs to the picture
    std::uint8_t* data = nullptr;   // what the record points at: the first pixel of row 0
    std::size_t size = 0;
    std::int32_t rowBytes = 0;
    int usedBytes = 0;  // of a row
};

// What one input made of the host.
struct Host {
    FilterRecord record{};
    hostapi::AboutRecord about{};
    hostapi::Str255 errorString{};
    int width = 0;
    int height = 0;
    Area source;
    Area destination;
    Area mask;
    bool sourceIsDestination = false;
    bool hasMask = false;
    bool clips = false;
    int nothingDelivered = 0;  // 1 input, 2 output, 3 both are null although all went well
    OSErr advanceError = 0;
    int failBufferAt = 0;
    bool failAllLater = false;
    int refusedSuite = 0;  // 1 buffer, 2 handle, 3 both
    int abortAt = 0;

    int buffersAsked = 0;
    int progressCalls = 0;
    int suitesHeld = 0;
    bool delivered = false;
};

Host* host = nullptr;

fuzzing::HostBlocks& Blocks() {
    static fuzzing::HostBlocks blocks;
    return blocks;
}

std::vector<std::uint8_t> before(GuardedPages::kSize);
std::vector<std::uint8_t> sourceBefore(GuardedPages::kSize);

// --- The host's procedures ---

hostapi::Ptr NewBuffer(std::uint32_t* requested, std::uint32_t size) {
    Require(requested[0] == size && requested[1] == 0, "the wanted size is the least one");
    const int number = ++host->buffersAsked;
    const bool fails =
        number == host->failBufferAt ||
        (host->failAllLater && host->failBufferAt != 0 && number > host->failBufferAt);
    return fails ? nullptr : Blocks().New(size);
}

void DisposeBuffer(hostapi::Ptr* buffer) {
    Blocks().Dispose(*buffer);
    *buffer = nullptr;
}

hostapi::Handle NoHandle(std::int32_t) {
    return nullptr;
}
void FreeHandle(hostapi::Handle handle) {
    std::free(handle);
}
std::int32_t NoSize(hostapi::Handle) {
    return 0;
}
OSErr KeepSize(hostapi::Handle, std::int32_t) {
    return 0;
}

const hostapi::PSBufferSuite1 kBufferSuite{NewBuffer, DisposeBuffer, nullptr, nullptr};
const hostapi::PSHandleSuite2 kHandleSuite{NoHandle, FreeHandle, FreeHandle, nullptr,
                                           NoSize,   KeepSize,   nullptr};
hostapi::HandleProcs handleProcs{1,        8,       NoHandle, FreeHandle, NoSize,
                                 KeepSize, nullptr, nullptr,  nullptr,    FreeHandle};

std::int32_t AcquireSuite(const char* name, std::int32_t version, const void** suite) {
    const bool isBuffer = std::strcmp(name, hostapi::kPSBufferSuite) == 0;
    Require(isBuffer ? version == 1 : version == 2, "suites are asked for by their versions");
    if ((host->refusedSuite & (isBuffer ? 1 : 2)) != 0) {
        return -1;
    }
    ++host->suitesHeld;
    *suite = isBuffer ? static_cast<const void*>(&kBufferSuite)
                      : static_cast<const void*>(&kHandleSuite);
    return 0;
}

std::int32_t ReleaseSuite(const char* name, std::int32_t) {
    const bool isBuffer = std::strcmp(name, hostapi::kPSBufferSuite) == 0;
    if ((host->refusedSuite & (isBuffer ? 1 : 2)) == 0) {
        --host->suitesHeld;
    }
    return 0;
}

hostapi::SPBasicSuite basicSuite{AcquireSuite, ReleaseSuite, nullptr, nullptr,
                                 nullptr,      nullptr,      nullptr};

void Progress(std::int32_t done, std::int32_t total) {
    ++host->progressCalls;
    Require(done >= 0 && done <= total, "progress stays within its total");
}

hostapi::Boolean Abort() {
    return host->abortAt != 0 && host->progressCalls >= host->abortAt ? 1 : 0;
}

OSErr Advance() {
    FilterRecord& record = host->record;
    Require(!host->delivered, "one request is enough");
    host->delivered = true;
    record.inData = (host->nothingDelivered & 1) != 0 ? nullptr : host->source.data;
    record.outData = (host->nothingDelivered & 2) != 0 ? nullptr : host->destination.data;
    record.inRowBytes = host->source.rowBytes;
    record.outRowBytes = host->destination.rowBytes;
    record.maskData = host->hasMask ? host->mask.data : nullptr;
    record.maskRowBytes = host->mask.rowBytes;
    if (host->clips) {
        record.outRect = {5, 7, static_cast<std::int16_t>(5 + host->height),
                          static_cast<std::int16_t>(7 + host->width)};
    }
    return host->advanceError;
}

// --- The record ---

std::int16_t Short(int value) {
    return static_cast<std::int16_t>(value);
}

void Place(Area& area, GuardedPages& pages, FuzzInput& input, int pixelBytes) {
    const int width = std::max(host->width, 0);
    const int height = std::max(host->height, 0);
    area.usedBytes = width * pixelBytes;
    int distance = area.usedBytes + (input.Rarely(2) ? input.Below(40) : 0);
    if (input.Rarely(16)) {
        distance = 0;
    }
    area.size =
        height == 0 ? 0 : static_cast<std::size_t>((height - 1) * distance + area.usedBytes);
    area.first = pages.Place(area.size, input.Flag());
    const bool fromBelow = input.Rarely(4) && height > 0;
    area.data = fromBelow ? area.first + (height - 1) * distance : area.first;
    area.rowBytes = fromBelow ? -distance : distance;
}

// A cheap generator: the bytes need not be good, but many.
class Noise {
public:
    explicit Noise(std::uint32_t seed) : state_(seed | 1u) {}
    std::uint32_t Next() {
        state_ ^= state_ << 13;
        state_ ^= state_ >> 17;
        state_ ^= state_ << 5;
        return state_;
    }

private:
    std::uint32_t state_;
};

void FillFloats(Area& area, FuzzInput& input, Noise& noise) {
    for (std::size_t i = 0; i + sizeof(float) <= area.size; i += sizeof(float)) {
        const auto value = static_cast<float>(noise.Next() >> 8) / 16777216.0f;
        std::memcpy(area.first + i, &value, sizeof value);
    }
    for (int bad = input.Below(4); bad > 0 && area.size >= 4; --bad) {
        const double number = input.Number();
        const double bounded = std::isfinite(number) ? std::clamp(number, -3e38, 3e38) : number;
        const auto value = static_cast<float>(bounded);
        const std::size_t at = input.Raw<std::uint16_t>() % (area.size / 4) * 4;
        std::memcpy(area.first + at, &value, sizeof value);
    }
}

void FillPixels(Area& area, FuzzInput& input, int depth) {
    Noise noise(input.Raw<std::uint32_t>());
    const int kind = input.Below(4);
    if (kind == 0) {
        std::memset(area.first, input.Byte(), area.size);
    } else if (kind < 3 && depth == 32) {
        FillFloats(area, input, noise);
    } else {
        std::size_t i = 0;
        for (; i + 4 <= area.size; i += 4) {
            const std::uint32_t value = noise.Next();
            std::memcpy(area.first + i, &value, sizeof value);
        }
        for (; i < area.size; ++i) {
            area.first[i] = static_cast<std::uint8_t>(noise.Next());
        }
    }
}

// What the record says of the picture; the bytes of a pixel that a host of such a record delivers.
int FillShape(FuzzInput& input) {
    FilterRecord& record = host->record;
    static constexpr std::int16_t kModes[] = {1, 3, 7, 10, 11, 14, 16, 17, 0, 2, 4, 9, 12, 99};
    record.imageMode = kModes[input.Below(input.Flag() ? 8 : 14)];
    static constexpr std::int32_t kDepths[] = {8, 16, 32, 0, 1, 24, -8, 64};
    record.depth = kDepths[input.Below(input.Flag() ? 4 : 8)];
    record.planes = Short(input.Rarely(16) ? input.Raw<std::int16_t>() : 1 + input.Below(5));
    record.inLayerPlanes = Short(input.Rarely(16) ? input.Raw<std::int16_t>() : input.Below(5));
    record.inTransparencyMask = Short(input.Below(3));
    record.inNonLayerPlanes = Short(input.Rarely(16) ? input.Raw<std::int16_t>() : input.Below(6));
    const int sampleBytes = record.depth == 32 ? 4 : record.depth == 16 ? 2 : 1;
    record.planes = std::min(record.planes, std::int16_t{8});
    return std::max<int>(record.planes, 0) * sampleBytes;
}

void FillSize(FuzzInput& input) {
    const int head = input.Byte();
    const int kind = head % 8;
    // Small pictures are quick, and have a corner, an edge and a centre like any other; one in a
    // hundred is long, and one in thirty wide enough for every kind of row.
    const bool isLarger = head / 8 == 1;
    host->width = 1 + input.Below(isLarger ? 20 : 6);
    host->height = 1 + input.Below(isLarger ? 20 : 6);
    if (kind == 0) {
        host->width = 1 + input.Below(2);
        host->height = 1 + input.Below(isLarger ? 150 : 24);
    } else if (kind == 1) {
        host->width = 1 + input.Below(isLarger ? 150 : 24);
        host->height = 1 + input.Below(2);
    } else if (kind == 2) {
        // No pixels at all, or fewer than none: nothing may be touched.
        host->width = input.Below(3) - 1;
    }
    host->record.imageSize = {Short(host->height), Short(host->width)};
    host->clips = input.Rarely(8);
    if (host->clips) {
        // The host changes the rectangle; the size that it told before may be anything.
        host->record.imageSize = {input.Raw<std::int16_t>(), input.Raw<std::int16_t>()};
    }
}

void Lie(FuzzInput& input, fuzzing::HostScript& script) {
    FilterRecord& record = host->record;
    switch (input.Below(13)) {
        case 0:
            record.abortProc = nullptr;
            break;
        case 1:
            record.progressProc = nullptr;
            break;
        case 2:
            record.advanceState = nullptr;
            break;
        case 3:
            host->nothingDelivered = 1 + input.Below(3);
            break;
        case 4:
            host->advanceError = input.Raw<std::int16_t>();
            break;
        case 5:
            record.sSPBasic = nullptr;
            break;
        case 6:
            host->refusedSuite = 1 + input.Below(3);
            break;
        case 7:
            record.descriptorParameters = nullptr;
            break;
        case 8:
            record.handleProcs = nullptr;
            break;
        case 9:
            script.Block().playInfo = input.Raw<std::int16_t>();
            break;
        case 10:
            host->failBufferAt = 1 + input.Below(16);
            host->failAllLater = input.Flag();
            break;
        case 11:
            host->abortAt = 1 + input.Below(255);
            break;
        default:
            script.Drop();
            break;
    }
}

void FillRecord(fuzzing::HostScript& script, int stray) {
    // What the module does not use may hold anything, addresses of nothing too.
    std::memset(&host->record, stray, sizeof host->record);
    FilterRecord& record = host->record;
    record.abortProc = Abort;
    record.progressProc = Progress;
    record.advanceState = Advance;
    record.platformData = nullptr;
    record.handleProcs = &handleProcs;
    record.errorString = &host->errorString;
    record.descriptorParameters = &script.Block();
    record.sSPBasic = &basicSuite;
    host->about.sSPBasic = &basicSuite;
    host->about.platformData = nullptr;
}

// --- Calls and what they must leave behind ---

std::int16_t Call(std::int16_t selector) {
    std::intptr_t data = 0;
    std::int16_t result = 0x5AA5;
    ENTRYPOINT(
        selector,
        selector == hostapi::filterSelectorAbout ? static_cast<void*>(&host->about) : &host->record,
        &data, &result);
    Require(result != 0x5AA5, "the result is stored");
    Require(host->suitesHeld == 0, "suites are released");
    Require(Blocks().Live() == 0, "every block is given back");
    return result;
}

// Every byte outside the rows' pixels.
void RequirePaddingUntouched(const Area& area) {
    const int distance = std::abs(area.rowBytes);
    if (distance <= area.usedBytes) {
        return;
    }
    for (int y = 0; y + 1 < host->height; ++y) {
        const int at = y * distance + area.usedBytes;
        Require(std::memcmp(area.first + at, before.data() + at,
                            static_cast<std::size_t>(distance - area.usedBytes)) == 0,
                "nothing is written between the rows");
    }
}

void CheckStart(std::int16_t result) {
    const FilterRecord& record = host->record;
    const hostapi::Rect none{};
    Require(std::memcmp(&record.inRect, &none, sizeof none) == 0 &&
                std::memcmp(&record.outRect, &none, sizeof none) == 0 &&
                std::memcmp(&record.maskRect, &none, sizeof none) == 0,
            "the rectangles are cleared");
    Require(result == 0 || result == hostapi::memFullErr || result == hostapi::userCanceledErr ||
                result == 1 || (host->advanceError != 0 && result == host->advanceError),
            "the status is one of those that a start gives");
    Require(result != hostapi::userCanceledErr || host->abortAt != 0 ||
                host->advanceError == hostapi::userCanceledErr,
            "nobody cancelled");
    if (!host->sourceIsDestination) {
        Require(std::memcmp(host->source.first, sourceBefore.data(), host->source.size) == 0,
                "the source is only read");
    }
    const bool isUntouched = result != 0 && result != hostapi::userCanceledErr;
    Require(!isUntouched ||
                std::memcmp(host->destination.first, before.data(), host->destination.size) == 0,
            "what failed has written nothing");
    RequirePaddingUntouched(host->destination);
}

void CallStart() {
    host->delivered = false;
    host->buffersAsked = 0;
    host->progressCalls = 0;
    std::memcpy(sourceBefore.data(), host->source.first, host->source.size);
    std::memcpy(before.data(), host->destination.first, host->destination.size);
    CheckStart(Call(hostapi::filterSelectorStart));
}

// Sets every parameter, so that no input depends on the one before.
void SetDefaults() {
    fuzzing::HostScript script;
    FuzzInput nothing(nullptr, 0);
    script.Play(nothing, 0);
    FillRecord(script, 0);
    host->advanceError = -1;
    Call(hostapi::filterSelectorStart);
    *host = Host{};
}

// The pool has as many threads as the process may use processors: one makes runs repeatable, and
// many small renders quick.
void UseOneProcessor() {
    cpu_set_t set;
    CPU_ZERO(&set);
    const int processor = sched_getcpu();
    CPU_SET(static_cast<std::size_t>(std::max(processor, 0)), &set);
    sched_setaffinity(0, sizeof set, &set);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool ready = (UseOneProcessor(), true);
    static GuardedPages sourcePages;
    static GuardedPages destinationPages;
    static GuardedPages maskPages;
    Require(ready, "a processor is chosen");
    Host now;
    host = &now;
    FuzzInput input(data, size);
    const int lies = input.Below(4);
    if (lies > 0) {
        SetDefaults();
    }
    fuzzing::HostScript script;
    FillRecord(script, input.Byte());
    FillSize(input);
    const int pixelBytes = FillShape(input);
    now.hasMask = input.Flag();
    now.record.haveMask = input.Flag() ? 1 : 0;
    now.record.isFloating = input.Flag() ? 1 : 0;
    Place(now.source, sourcePages, input, pixelBytes);
    Place(now.destination, destinationPages, input, pixelBytes);
    Place(now.mask, maskPages, input, 1);
    FillPixels(now.source, input, now.record.depth);
    FillPixels(now.mask, input, 8);
    std::memset(now.destination.first, 0x5A, now.destination.size);
    if (input.Rarely(16)) {
        now.destination = now.source;
        now.sourceIsDestination = true;
    }
    const int selectors = input.Below(4);
    static constexpr std::int16_t kSelectors[] = {0, 1, 2, 4, 5, 6, -1, 32767};
    std::int16_t chosen[4] = {};
    for (int i = 0; i < selectors; ++i) {
        chosen[i] = kSelectors[input.Below(8)];
    }
    script.Renew();
    for (int i = 1; i < lies; ++i) {
        Lie(input, script);
    }
    const bool hasDescriptor = script.Block().descriptor != nullptr;
    script.Play(input, 24);
    if (!hasDescriptor) {
        script.Drop();
    }
    for (int i = 0; i < selectors; ++i) {
        Call(chosen[i]);
    }
    CallStart();
    Require(script.OpenTokens() == 0, "every token is closed");
    Blocks().Restart();
    host = nullptr;
    return 0;
}

std::vector<std::string> fuzzing::Seeds() {
    std::vector<std::string> seeds;
    // Sizes of every kind, each mode and depth, planes and alpha; then pixels and a few values.
    for (int shape = 0; shape < 18; ++shape) {
        static constexpr char kModeOfColors[] = {0, 2, 1};
        const int colors = shape / 2 % 3;
        const bool alpha = shape % 2 != 0;
        std::string seed(1, static_cast<char>(shape % 3 == 2 ? 2 : 0));
        seed += '\x00';
        seed += shape % 2 == 0 ? '\x05' : '\x0D';
        seed += std::string("\x08\x09\x00", 3);
        seed += std::string(1, '\x01') + kModeOfColors[colors];
        seed += std::string(1, '\x01') + static_cast<char>(shape / 6);
        seed += std::string(1, '\x00') + static_cast<char>(colors + (alpha ? 1 : 0));
        seed += std::string(1, '\x00') + static_cast<char>(colors + 1);
        seed += static_cast<char>(alpha ? 1 : 0);
        seed += std::string("\x00\x00", 2);
        seed += std::string("\x01\x01\x00", 3);
        // Three placements, then two pictures of noise.
        seed += std::string(12, '\x00');
        seed += std::string("\x11\x22\x33\x44\x01\x02\x00\x00\x40\x00\x00\x55\x66\x77\x08\x01", 16);
        seed += std::string("\x00\x00", 2);
        for (char key = 0; key < 21; key = static_cast<char>(key + 1 + shape % 5)) {
            seed += key;
            seed += std::string("\x01\x00\x10", 3);
        }
        seeds.push_back(seed);
    }
    return seeds;
}
