// What the program tells about a run.
#pragma once

#include <string>
#include <vector>

#include "program/Job.h"
#include "program/Json.h"

namespace mv::host {

struct RunReport {
    std::string module;
    std::vector<JobResult> jobs;
    std::size_t planned = 0;  // more than there are jobs when the run was stopped
    ExitCode code = ExitCode::Success;
    double seconds = 0.0;
    std::uint64_t peakMemoryBytes = 0;
};

// "in.png -> out.png: 1600 x 1067, RGB, 8 bit, 0.83 s".
std::string JobLine(const JobResult& job);
// Where the time of a picture went inside of the module, as this told it.
std::string TimingText(const JobResult& job);
// "3 of 5 pictures done, 1 skipped, 1 failed", with the names of those that failed in lines below.
std::string SummaryText(const RunReport& report);
// The member "values" of a JSON object, by the parameters' names.
void WriteValues(JsonWriter& json, const ScriptValues& values);
std::string ReportJson(const RunReport& report);

}  // namespace mv::host
