// What a session offers to a module, and where it is told to go wrong.
#pragma once

#include <cstdint>
#include <limits>
#include <set>

#include "HostMemory.h"
#include "hostapi/HostApi.h"

namespace mv::host {

// What stands in outData when it is delivered.
enum class OutputContents { CopyOfImage, Zero, Unset };

// How the descriptor handle with the values to play is made.
enum class DescriptorHandle {
    Own,                // through the session's handles, as the module will dispose it
    PlatformAllocated,  // for hosts without handle procedures: the module frees it by itself
};

// The defaults are those of a good host: everything is there. Tests take single things away.
// More than this can be changed in HostSession::Record() and the proc tables before a call.
struct HostOffer {
    bool advanceState = true;
    bool progressProc = true;
    bool abortProc = true;
    bool colorServices = true;
    bool platformData = true;
    bool basicSuite = true;
    bool bufferSuite = true;
    bool handleSuite = true;             // version 2
    bool refusedSuiteIsCleared = false;  // else the cell of a refused suite stays untouched
    bool timingSuite = false;            // the one of the command line
    bool handleProcs = true;
    std::int16_t handleProcsCount = 8;
    bool descriptorParameters = true;
    bool readDescriptorProcs = true;
    bool writeDescriptorProcs = true;
    bool playDescriptor = true;  // else `descriptor` is null although there are values to play
    DescriptorHandle descriptorHandle = DescriptorHandle::Own;
    std::int16_t playInfo = hostapi::plugInDialogSilent;
    bool supportsPadding = true;
    std::uint8_t samplingSupport = 1;

    Placement placement = Placement::Heap;  // of pixel buffers and of the Buffer suite's blocks
    FreshBytes freshBytes = FreshBytes::Pattern;
    // Input that is asked for whole is the picture itself, and the destination is made when output
    // is stored: two pictures less in memory.
    bool sparesCopies = false;
    OutputContents outputContents = OutputContents::CopyOfImage;
    bool refillsAlways = true;  // each advanceState gives new buffers; else only on a new request
    // Bytes behind each delivered row. They hold a pattern and must keep it.
    std::int32_t inRowPadding = 0;
    std::int32_t outRowPadding = 0;
    std::int32_t maskRowPadding = 0;
};

// Numbers count from 1; 0 means never.
struct HostFaults {
    int failBufferAt = 0;           // this Buffer suite New gives null, ...
    bool failBuffersAfter = false;  // ... and every later one too
    std::uint64_t bufferBytesLimit = std::numeric_limits<std::uint64_t>::max();
    int failHandleAt = 0;     // this new handle is null (both suites and handleProcs)
    int abortAtProgress = 0;  // abortProc says yes once progressProc was called so many times
    int abortAtAsk = 0;       // abortProc says yes when it is asked for the n-th time, and later
    int failAdvanceAt = 0;    // this advanceState gives advanceError
    hostapi::OSErr advanceError = hostapi::memFullErr;
    bool failOpenRead = false;
    bool failOpenWrite = false;
    std::set<hostapi::OSType> failingGets = {};  // getters of these keys give errMissingParameter
    std::set<hostapi::OSType> failingPuts = {};
};

}  // namespace mv::host
