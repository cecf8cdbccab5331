// What the machine gives a render: processors, memory bandwidth, memory in use.
#pragma once

#include <cstdint>

namespace mv::benchmarks {

// Lets the module see so many processors, which decides how many threads it runs on; 0 shows what
// is there. More than there are share what is there; one is confined to one.
void PretendProcessors(int count);
int RealProcessors();

// Peak resident memory of the process since the last reset, in bytes (proc(5), VmHWM).
void ResetPeakMemory();
std::uint64_t PeakMemory();

// Bytes per second that all processors together read and write (the triad of McCalpin's STREAM:
// two arrays read and one written), best of five.
double MeasureBandwidth();

}  // namespace mv::benchmarks
