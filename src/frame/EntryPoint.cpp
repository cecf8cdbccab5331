// The one exported function.
#include <atomic>
#include <new>

#include "diagnostics/Log.h"
#include "frame/pfFilterRadialBlur.h"
#include "platform/FloatEnvironment.h"

#if defined(_WIN32)
#define MV_EXPORT extern "C" __declspec(dllexport)
#else
#define MV_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace mv {
namespace {

// The guillemets are single bytes of the Windows code page.
constexpr const char* kName = "Vandrel \xBBRadialBlur\xAB";
constexpr const char* kMaker = "Morvenhale";
constexpr const char* kDescription =
    "Gererates a Radial Blur using selected footage.\n"
    "Streaks run along the lines through the origin.";

// Built on the first call of any selector. Without memory for it the call fails, and the next
// one tries again.
pfFilterRadialBlur* GetFilter() noexcept {
    try {
        static pfFilterRadialBlur filter(kName, kMaker, 1, 2, 6, kDescription);
        return &filter;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

std::atomic_flag entered = ATOMIC_FLAG_INIT;

// A host that calls in again from one of its own callbacks, or from a second thread, would pull
// the record and the suites from under the running call: it is refused.
class EntryGuard {
public:
    EntryGuard() noexcept : isFirst_(!entered.test_and_set()) {}
    ~EntryGuard() {
        if (isFirst_) {
            entered.clear();
        }
    }
    EntryGuard(const EntryGuard&) = delete;
    EntryGuard& operator=(const EntryGuard&) = delete;

    bool IsFirst() const { return isFirst_; }

private:
    bool isFirst_;
};

void Enter(std::int16_t selector, void* parameterBlock, std::intptr_t* data,
           std::int16_t* result) noexcept {
    const EntryGuard entry;
    if (!entry.IsFirst()) {
        if (result != nullptr) {
            *result = hostapi::filterBadParameters;
        }
        return;
    }
    const FloatEnvironmentGuard environment;
    pfFilterRadialBlur* filter = GetFilter();
    WriteLog(kTrace, "ENTRYPOINT( selector(", selector, "), filterParamBlock(0x",
             LogPointer{parameterBlock}, "), data(0x", LogPointer{data}, "), result(0x",
             LogPointer{result}, ") )");
    const LogScope scope;
    if (filter != nullptr) {
        filter->Dispatch(selector, parameterBlock, data, result);
    } else if (result != nullptr) {
        *result = hostapi::memFullErr;
    }
}

}  // namespace
}  // namespace mv

MV_EXPORT void ENTRYPOINT(std::int16_t selector, void* parameterBlock, std::intptr_t* data,
                          std::int16_t* result) {
    mv::Enter(selector, parameterBlock, data, result);
}
