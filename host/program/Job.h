// One picture through the filter.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "HostSession.h"
#include "pictures/Picture.h"
#include "program/CommandLine.h"

namespace mv::host {

// What all pictures of a run share. Belongs to the run.
struct JobSettings {
    hostapi::EntryPoint entryPoint = nullptr;
    ScriptValues values;
    std::optional<Picture> mask;
    std::string maskName;
    bool showProgress = false;
    bool timing = false;
    bool skipExisting = false;  // an output that is there is left as it is, and its input unread
};

struct JobResult {
    std::filesystem::path input;
    std::filesystem::path output;
    std::optional<Failure> failure;  // empty: the output was written, or was there already
    bool skipped = false;            // it was there already
    Picture picture;                 // its shape; the samples are gone
    double readSeconds = 0.0;
    double renderSeconds = 0.0;
    double writeSeconds = 0.0;
    double totalSeconds = 0.0;
    SessionCounts counts;
    std::string timing;                   // the module's report, where it was asked for
    ScriptValues usedValues;              // as the module recorded them
    std::vector<std::string> complaints;  // the host's remarks on the module's conduct
};

JobResult RunJob(const std::filesystem::path& input, const std::filesystem::path& output,
                 const JobSettings& settings);

// Reads the mask picture for all jobs.
std::optional<Failure> ReadMask(const std::string& name, JobSettings& settings);

}  // namespace mv::host
