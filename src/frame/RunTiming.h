#pragma once

#include "hostapi/HostApi.h"

namespace mv {

class MorvenhaleHost;

// Measures one run for the command line, if that asks for it with its timing suite: for its life
// the filter's measuring points fill the table, whose report goes to the suite in the end. In any
// other host it asks for nothing and does nothing. Lives on the start selector's stack.
class RunTiming {
public:
    RunTiming(MorvenhaleHost& filter, const hostapi::FilterRecord& record) noexcept;
    ~RunTiming();
    RunTiming(const RunTiming&) = delete;
    RunTiming& operator=(const RunTiming&) = delete;

private:
    MorvenhaleHost& filter_;
    const hostapi::TimingSuite1* suite_ = nullptr;
};

}  // namespace mv
