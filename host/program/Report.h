// What the program tells about a run.
#pragma once

#include <string>
#include <vector>

#include "program/Job.h"

namespace mv::host {

struct RunReport {
    std::string module;
    std::vector<JobResult> jobs;
    ExitCode code = ExitCode::Success;
    double seconds = 0.0;
    std::uint64_t peakMemoryBytes = 0;
};

// "in.png -> out.png: 1600 x 1067, RGB, 8 bit, 0.83 s".
std::string JobLine(const JobResult& job);
// "3 of 4 pictures done, 1 failed".
std::string SummaryLine(const RunReport& report);
std::string ReportJson(const RunReport& report);

}  // namespace mv::host
