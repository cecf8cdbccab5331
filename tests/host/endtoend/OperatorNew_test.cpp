// The module's own use of operator new fails at every single call: nothing may come out of the
// entry point, nothing may be left behind, and the next render must be right.
//
// The program replaces operator new for itself and, being linked so that its symbols can be seen,
// for the module that it loads. Its host takes all memory from malloc, so that only the module's
// calls are counted. Each case runs in a child process of its own, as a module is built only once.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

#include "hostapi/HostApi.h"

namespace {

std::atomic<bool> armed{false};
std::atomic<long> calls{0};
std::atomic<long> failAt{0};
std::atomic<bool> failAllLater{false};

bool MustFail() {
    if (!armed.load()) {
        return false;
    }
    const long number = ++calls;
    return number == failAt.load() || (failAllLater.load() && number > failAt.load());
}

void* Allocate(std::size_t size, std::size_t alignment) {
    if (MustFail()) {
        return nullptr;
    }
    const std::size_t rounded = (size + alignment - 1) / alignment * alignment;
    return std::aligned_alloc(alignment, rounded == 0 ? alignment : rounded);
}

void* AllocateOrThrow(std::size_t size, std::size_t alignment) {
    void* const memory = Allocate(size, alignment);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

constexpr std::size_t kAlignment = alignof(std::max_align_t);

}  // namespace

#define EXPORTED __attribute__((visibility("default")))

EXPORTED void* operator new(std::size_t size) {
    return AllocateOrThrow(size, kAlignment);
}
EXPORTED void* operator new[](std::size_t size) {
    return AllocateOrThrow(size, kAlignment);
}
EXPORTED void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size, kAlignment);
}
EXPORTED void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size, kAlignment);
}
EXPORTED void* operator new(std::size_t size, std::align_val_t alignment) {
    return AllocateOrThrow(size, static_cast<std::size_t>(alignment));
}
EXPORTED void* operator new[](std::size_t size, std::align_val_t alignment) {
    return AllocateOrThrow(size, static_cast<std::size_t>(alignment));
}
EXPORTED void operator delete(void* memory) noexcept {
    std::free(memory);
}
EXPORTED void operator delete[](void* memory) noexcept {
    std::free(memory);
}
EXPORTED void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
EXPORTED void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}
EXPORTED void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}
EXPORTED void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}
EXPORTED void operator delete(void* memory, std::align_val_t) noexcept {
    std::free(memory);
}
EXPORTED void operator delete[](void* memory, std::align_val_t) noexcept {
    std::free(memory);
}
EXPORTED void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    std::free(memory);
}
EXPORTED void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept {
    std::free(memory);
}

namespace {

using hostapi::FilterRecord;
using hostapi::FourCharacterCode;
using hostapi::Handle;
using hostapi::OSErr;
using hostapi::OSType;
using hostapi::Ptr;

const char* modulePath = nullptr;

// --- A host that needs no memory but malloc's ---

constexpr int kWidth = 23;
constexpr int kHeight = 17;
constexpr int kBytes = kWidth * kHeight * 4 * 4;  // of the largest pixels

// What the host's picture consists of.
struct Shape {
    int colors = 3;
    bool alpha = true;
    int depth = 8;
    int mode = 2;  // of the blur

    int Planes() const { return colors + (alpha ? 1 : 0); }
    int SampleBytes() const { return depth / 8; }
    int ImageMode() const {
        const int of[3][3] = {{1, 10, 17}, {7, 14, 14}, {3, 11, 16}};
        return of[colors - 1][depth / 16];
    }
};

Shape shape;
unsigned char source[kBytes];
unsigned char destination[kBytes];
unsigned char mask[kWidth * kHeight];
FilterRecord record{};
hostapi::AboutRecord about{};
hostapi::PIDescriptorParameters descriptorBlock{};
std::atomic<int> liveBuffers{0};
int liveHandles = 0;
int heldSuites = 0;
int openTokens = 0;

Ptr NewBuffer(std::uint32_t*, std::uint32_t size) {
    ++liveBuffers;
    return static_cast<Ptr>(std::malloc(size));
}

void DisposeBuffer(Ptr* buffer) {
    if (*buffer != nullptr) {
        --liveBuffers;
        std::free(*buffer);
    }
    *buffer = nullptr;
}

Handle NewHandle(std::int32_t size) {
    ++liveHandles;
    const auto handle = static_cast<Handle>(std::malloc(sizeof(Ptr)));
    *handle = static_cast<Ptr>(std::malloc(static_cast<std::size_t>(size) + 1));
    return handle;
}

void DisposeHandle(Handle handle) {
    --liveHandles;
    std::free(*handle);
    std::free(handle);
}

std::int32_t GetHandleSize(Handle) {
    return 0;
}
OSErr SetHandleSize(Handle, std::int32_t) {
    return 0;
}

hostapi::PSBufferSuite1 bufferSuite{NewBuffer, DisposeBuffer, nullptr, nullptr};
hostapi::PSHandleSuite2 handleSuite{NewHandle,     DisposeHandle, DisposeHandle, nullptr,
                                    GetHandleSize, SetHandleSize, nullptr};
hostapi::HandleProcs handleProcs{
    1,       8,       NewHandle, DisposeHandle, GetHandleSize, SetHandleSize,
    nullptr, nullptr, nullptr,   DisposeHandle};

std::int32_t AcquireSuite(const char* name, std::int32_t, const void** suite) {
    ++heldSuites;
    *suite = std::strcmp(name, hostapi::kPSBufferSuite) == 0
                 ? static_cast<const void*>(&bufferSuite)
                 : static_cast<const void*>(&handleSuite);
    return 0;
}

std::int32_t ReleaseSuite(const char*, std::int32_t) {
    --heldSuites;
    return 0;
}

hostapi::SPBasicSuite basicSuite{AcquireSuite, ReleaseSuite, nullptr, nullptr,
                                 nullptr,      nullptr,      nullptr};

hostapi::Boolean Abort() {
    return 0;
}
void Progress(std::int32_t, std::int32_t) {}

OSErr Advance() {
    record.inData = source;
    record.outData = destination;
    record.inRowBytes = record.outRowBytes = kWidth * shape.Planes() * shape.SampleBytes();
    record.maskData = mask;
    record.maskRowBytes = kWidth;
    return 0;
}

// --- The descriptor: 21 values under their keys ---

struct Entry {
    const char (&key)[5];
    char type;  // d, l or b
    double value;
};

const Entry kEntries[] = {{"ORIX", 'd', 0.3},   {"ORIY", 'd', 0.6},  {"INTE", 'd', 1.1},
                          {"STRE", 'd', 0.7},   {"ZOST", 'd', 0.2},  {"HORA", 'd', 0.1},
                          {"MODE", 'l', 2.0},   {"INGR", 'b', 1.0},  {"GAMA", 'b', 1.0},
                          {"CONT", 'd', 0.2},   {"GAMC", 'd', 1.3},  {"HSLH", 'd', 0.1},
                          {"HSLS", 'd', 0.2},   {"HSLL", 'd', -0.1}, {"SELL", 'd', 10.0},
                          {"SELH", 'd', 240.0}, {"SELS", 'd', 0.5},  {"SELC", 'd', 0.2},
                          {"USES", 'b', 0.0},   {"BLND", 'l', 3.0},  {"SHOW", 'l', 1.0}};
constexpr int kEntryCount = static_cast<int>(sizeof kEntries / sizeof kEntries[0]);
int nextEntry = 0;

hostapi::PIReadDescriptor OpenRead(Handle, OSType*) {
    ++openTokens;
    nextEntry = 0;
    return &nextEntry;
}
OSErr CloseRead(hostapi::PIReadDescriptor) {
    --openTokens;
    return 0;
}
hostapi::Boolean GetKey(hostapi::PIReadDescriptor, OSType* key, OSType* type, std::int32_t*) {
    if (nextEntry >= kEntryCount) {
        return 0;
    }
    *key = FourCharacterCode(kEntries[nextEntry].key);
    *type = hostapi::typeFloat;
    ++nextEntry;
    return 1;
}
OSErr GetInteger(hostapi::PIReadDescriptor, std::int32_t* value) {
    const Entry& entry = kEntries[nextEntry - 1];
    const bool isMode = std::strcmp(entry.key, "MODE") == 0;
    *value = isMode ? shape.mode : static_cast<std::int32_t>(entry.value);
    return 0;
}
OSErr GetFloat(hostapi::PIReadDescriptor, double* value) {
    *value = kEntries[nextEntry - 1].value;
    return 0;
}
OSErr GetBoolean(hostapi::PIReadDescriptor, hostapi::Boolean* value) {
    *value = kEntries[nextEntry - 1].value != 0.0;
    return 0;
}
hostapi::PIWriteDescriptor OpenWrite() {
    ++openTokens;
    return &nextEntry;
}
OSErr CloseWrite(hostapi::PIWriteDescriptor, Handle* handle) {
    --openTokens;
    *handle = NewHandle(0);
    return 0;
}
OSErr PutInteger(hostapi::PIWriteDescriptor, OSType, std::int32_t) {
    return 0;
}
OSErr PutFloat(hostapi::PIWriteDescriptor, OSType, const double*) {
    return 0;
}
OSErr PutBoolean(hostapi::PIWriteDescriptor, OSType, hostapi::Boolean) {
    return 0;
}

hostapi::ReadDescriptorProcs readProcs{};
hostapi::WriteDescriptorProcs writeProcs{};

void PrepareHost(int playInfo) {
    for (int i = 0; i < kBytes; ++i) {
        source[i] = static_cast<unsigned char>(i * 37 + i / 91);
        destination[i] = 0x5A;
    }
    for (int i = 0; shape.depth == 32 && i < kBytes / 4; ++i) {
        const float sample = static_cast<float>(i % 97) / 96.0f;
        std::memcpy(source + 4 * i, &sample, sizeof sample);
    }
    for (int i = 0; i < kWidth * kHeight; ++i) {
        mask[i] = static_cast<unsigned char>(255 - i % 7 * 9);
    }
    // The getters that the module never uses only have to be there.
    const auto other = reinterpret_cast<void (*)()>(GetFloat);
    auto* slots = reinterpret_cast<void (**)()>(&readProcs.openReadDescriptorProc);
    for (int i = 0; i < 18; ++i) {
        slots[i] = other;
    }
    readProcs.numReadDescriptorProcs = 18;
    readProcs.openReadDescriptorProc = OpenRead;
    readProcs.closeReadDescriptorProc = CloseRead;
    readProcs.getKeyProc = GetKey;
    readProcs.getIntegerProc = GetInteger;
    readProcs.getFloatProc = GetFloat;
    readProcs.getBooleanProc = GetBoolean;
    writeProcs.numWriteDescriptorProcs = 16;
    writeProcs.openWriteDescriptorProc = OpenWrite;
    writeProcs.closeWriteDescriptorProc = CloseWrite;
    writeProcs.putIntegerProc = PutInteger;
    writeProcs.putFloatProc = PutFloat;
    writeProcs.putBooleanProc = PutBoolean;
    descriptorBlock = {};
    descriptorBlock.playInfo = static_cast<std::int16_t>(playInfo);
    descriptorBlock.readDescriptorProcs = &readProcs;
    descriptorBlock.writeDescriptorProcs = &writeProcs;
    descriptorBlock.descriptor = NewHandle(0);
    record = {};
    record.abortProc = Abort;
    record.progressProc = Progress;
    record.advanceState = Advance;
    record.imageSize = {kHeight, kWidth};
    record.planes = static_cast<std::int16_t>(shape.Planes());
    record.imageMode = static_cast<std::int16_t>(shape.ImageMode());
    record.depth = shape.depth;
    record.inLayerPlanes = static_cast<std::int16_t>(shape.colors);
    record.inTransparencyMask = shape.alpha ? 1 : 0;
    record.haveMask = 1;
    record.handleProcs = &handleProcs;
    record.sSPBasic = &basicSuite;
    record.descriptorParameters = &descriptorBlock;
    about = {};
    about.sSPBasic = &basicSuite;
}

// --- One child process ---

hostapi::EntryPoint entryPoint = nullptr;

std::int16_t Call(std::int16_t selector) {
    std::intptr_t data = 0;
    std::int16_t result = 0x5AA5;
    entryPoint(selector, selector == 0 ? static_cast<void*>(&about) : &record, &data, &result);
    return result;
}

bool LoadModule() {
    void* const library = dlopen(modulePath, RTLD_NOW | RTLD_LOCAL);
    entryPoint = library == nullptr
                     ? nullptr
                     : reinterpret_cast<hostapi::EntryPoint>(dlsym(library, "ENTRYPOINT"));
    return entryPoint != nullptr;
}

bool InBalance() {
    // The recorded descriptor is the host's.
    return liveBuffers == 0 && liveHandles <= 1 && heldSuites == 0 && openTokens == 0;
}

void DropDescriptor() {
    if (descriptorBlock.descriptor != nullptr) {
        DisposeHandle(descriptorBlock.descriptor);
        descriptorBlock.descriptor = nullptr;
    }
}

// What the child tells its parent.
enum Verdict : int {
    kReached = 0,     // the call that was to fail came up, and all went well
    kNotReached = 1,  // there are fewer calls than that
    kNoModule = 2,
    kLeak = 3,
    kWrongStatus = 4,
    kHalfPicture = 5,
    kNextRenderWrong = 6,
};

unsigned char expected[kBytes];

// The picture that an undisturbed run gives.
bool RenderExpected() {
    PrepareHost(2);
    const bool good = Call(2) == 0 && Call(3) == 0 && InBalance();
    std::memcpy(expected, destination, sizeof expected);
    DropDescriptor();
    return good;
}

bool DestinationIs(const unsigned char* bytes) {
    return std::memcmp(destination, bytes, sizeof destination) == 0;
}

// `early`: the very first call into the module is the disturbed one.
int Disturbed(std::int16_t selector, int playInfo, long n, bool allLater, bool early) {
    if (!LoadModule()) {
        return kNoModule;
    }
    if (!early && !RenderExpected()) {
        return kNextRenderWrong;
    }
    PrepareHost(playInfo);
    unsigned char untouched[kBytes];
    std::memcpy(untouched, destination, sizeof untouched);
    calls = 0;
    failAt = n;
    failAllLater = allLater;
    armed = true;
    const std::int16_t result = Call(selector);
    armed = false;
    const bool reached = calls >= n;
    const bool rectanglesClear = record.inRect.right == 0 && record.outRect.right == 0;
    if (!InBalance()) {
        return kLeak;
    }
    if (selector == 3) {
        if (result != 0 && result != hostapi::memFullErr) {
            return kWrongStatus;
        }
        if (!rectanglesClear || (result != 0 && !DestinationIs(untouched))) {
            return kHalfPicture;
        }
        if (result == 0 && !early && !DestinationIs(expected)) {
            return kHalfPicture;
        }
    } else if (result != (selector >= 0 && selector <= 5 ? 0 : -1) &&
               !(early && result == hostapi::memFullErr)) {
        // Without memory for the filter object itself, the first call has no more to say.
        return kWrongStatus;
    }
    DropDescriptor();
    unsigned char before[kBytes];
    std::memcpy(before, expected, sizeof before);
    if (!RenderExpected() || (!early && std::memcmp(before, expected, sizeof before) != 0)) {
        return kNextRenderWrong;
    }
    return reached ? kReached : kNotReached;
}

const char* Text(int status) {
    static char text[64];
    if (WIFSIGNALED(status)) {
        std::snprintf(text, sizeof text, "ended by signal %d", WTERMSIG(status));
        return text;
    }
    static const char* const kTexts[] = {"all well",
                                         "not reached",
                                         "no module",
                                         "something is left",
                                         "wrong status",
                                         "half a picture",
                                         "the next render is wrong"};
    const int code = WEXITSTATUS(status);
    return code < 7 ? kTexts[code] : "unknown";
}

// Runs one child for each n, or for every few n, until n is beyond the last call. The number of
// the last call is given back.
long DisturbEveryCall(std::int16_t selector, int playInfo, bool allLater, bool early,
                      long step = 1) {
    for (long n = 1; n < 100000; n += step) {
        std::fflush(nullptr);
        const pid_t child = fork();
        if (child == 0) {
            std::_Exit(Disturbed(selector, playInfo, n, allLater, early));
        }
        int status = 0;
        waitpid(child, &status, 0);
        if (WIFEXITED(status) && WEXITSTATUS(status) == kNotReached) {
            return n - 1;
        }
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == kReached)
            << "selector " << selector << ", call " << n << ": " << Text(status);
        if (testing::Test::HasFailure() && n > 400) {
            return n;
        }
    }
    return -1;
}

struct Case {
    std::int16_t selector;
    int playInfo;
    bool early;
    const char* name;
};

class OperatorNewTest : public testing::TestWithParam<Case> {};

TEST_P(OperatorNewTest, EveryCallMayFail) {
    const Case& given = GetParam();
    for (const bool allLater : {false, true}) {
        const long disturbed =
            DisturbEveryCall(given.selector, given.playInfo, allLater, given.early);
        EXPECT_GE(disturbed, 0);
        std::printf("%s: %ld calls disturbed, %s\n", given.name, disturbed,
                    allLater ? "with all later ones" : "one at a time");
    }
}

INSTANTIATE_TEST_SUITE_P(
    Selectors, OperatorNewTest,
    testing::Values(Case{0, 2, true, "FirstCallAbout"}, Case{1, 2, true, "FirstCallParameters"},
                    Case{3, 2, true, "FirstCallStart"}, Case{6, 2, true, "FirstCallUnknown"},
                    Case{0, 2, false, "About"}, Case{1, 2, false, "Parameters"},
                    Case{2, 2, false, "Prepare"}, Case{3, 2, false, "StartSilent"},
                    Case{3, 1, false, "StartWithDialog"}, Case{4, 2, false, "Continue"},
                    Case{5, 2, false, "Finish"}, Case{-1, 2, false, "Unknown"}),
    [](const auto& given) { return std::string(given.param.name); });

// Every shape in both modes. The short form tries some calls of each, other ones for each shape;
// with RADIAL_BLUR_LONG it is every call.
class OperatorNewShapeTest : public testing::TestWithParam<int> {
protected:
    void TearDown() override { shape = Shape{}; }
};

TEST_P(OperatorNewShapeTest, AnyCallOfAStartMayFail) {
    const int number = GetParam();
    shape = {1 + number / 2 % 3, number % 2 != 0, 8 << number / 6 % 3, 1 + number / 18};
    const bool isLong = std::getenv("RADIAL_BLUR_LONG") != nullptr;
    for (const bool allLater : {false, true}) {
        EXPECT_GE(DisturbEveryCall(3, 2, allLater, false, isLong ? 1 : 83 + number), 1);
    }
}

INSTANTIATE_TEST_SUITE_P(ShapesAndModes, OperatorNewShapeTest, testing::Range(0, 36));

// That the counter sees the module's calls at all: the first call builds the filter object.
TEST(OperatorNew, TheModulesCallsAreCounted) {
    const pid_t child = fork();
    if (child == 0) {
        if (!LoadModule()) {
            std::_Exit(kNoModule);
        }
        PrepareHost(2);
        armed = true;
        Call(1);
        armed = false;
        std::_Exit(calls > 0 ? kReached : kNotReached);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == kReached) << Text(status);
}

}  // namespace

int main(int argumentCount, char** arguments) {
    testing::InitGoogleTest(&argumentCount, arguments);
    if (argumentCount < 2) {
        std::fprintf(stderr, "the module's file is missing\n");
        return 1;
    }
    modulePath = arguments[1];
    return RUN_ALL_TESTS();
}
