// The basic suite, the Buffer and Handle suites, and the older handle procedures.
#pragma once

#include "hostapi/Types.h"

namespace hostapi {

struct SPBasicSuite {
    std::int32_t (*AcquireSuite)(const char* name, std::int32_t version, const void** suite);
    std::int32_t (*ReleaseSuite)(const char* name, std::int32_t version);
    std::int32_t (*IsEqual)(const char* token1, const char* token2);
    std::int32_t (*AllocateBlock)(std::size_t size, void** block);
    std::int32_t (*FreeBlock)(void* block);
    std::int32_t (*ReallocateBlock)(void* block, std::size_t newSize, void** newBlock);
    std::int32_t (*Undefined)();
};

// Version 1. Hosts differ in the width of the two sizes: some read 64 bits through
// requestedSize. The address of a 64-bit cell whose upper half is zero serves both.
struct PSBufferSuite1 {
    Ptr (*New)(std::uint32_t* requestedSize, std::uint32_t minimumSize);
    void (*Dispose)(Ptr* buffer);
    std::uint32_t (*GetSize)(Ptr buffer);
    std::uint32_t (*GetSpace)();
};

struct PSHandleSuite2 {
    Handle (*New)(std::int32_t size);
    void (*Dispose)(Handle handle);
    void (*DisposeRegularHandle)(Handle handle);
    void (*SetLock)(Handle handle, Boolean lock, Ptr* address, Boolean* oldLock);
    std::int32_t (*GetSize)(Handle handle);
    OSErr (*SetSize)(Handle handle, std::int32_t newSize);
    void (*RecoverSpace)(std::int32_t size);
};

// Version 1, eight procedures; some hosts state seven and lack the last.
struct HandleProcs {
    std::int16_t handleProcsVersion;
    std::int16_t numHandleProcs;
    Handle (*newProc)(std::int32_t size);
    void (*disposeProc)(Handle handle);
    std::int32_t (*getSizeProc)(Handle handle);
    OSErr (*setSizeProc)(Handle handle, std::int32_t newSize);
    Ptr (*lockProc)(Handle handle, Boolean moveHigh);
    void (*unlockProc)(Handle handle);
    void (*recoverSpaceProc)(std::int32_t size);
    void (*disposeRegularHandleProc)(Handle handle);
};

static_assert(sizeof(SPBasicSuite) == 56);
static_assert(offsetof(SPBasicSuite, ReleaseSuite) == 8);
static_assert(sizeof(PSBufferSuite1) == 32);
static_assert(offsetof(PSBufferSuite1, Dispose) == 8);
static_assert(sizeof(PSHandleSuite2) == 56);
static_assert(offsetof(PSHandleSuite2, GetSize) == 32);
static_assert(sizeof(HandleProcs) == 72);
static_assert(offsetof(HandleProcs, newProc) == 8);
static_assert(offsetof(HandleProcs, setSizeProc) == 32);

}  // namespace hostapi
