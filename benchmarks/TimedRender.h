// One render of the module inside a host, with the time of each of its stages.
#pragma once

#include <array>
#include <cstdint>

#include "HostSession.h"

namespace mv::benchmarks {

struct RenderCase {
    int width = 1200;
    int height = 900;
    int depth = 8;
    int colors = 3;
    bool alpha = false;
    bool mask = false;
    int mode = 1;
    double strength = 0.25;
    double originX = 0.5;
    double originY = 0.5;
    double holdout = 0.0;
    double zoomStart = 0.5;
    double soften = 0.0;
    bool inPlace = false;  // output lies where the input does
    int threads = 0;       // 0: as many as there are processors
};

// Selection with mask and linear light, move, clearing of the sums, rays, normalization,
// composition. Where all run while the rays do, that counts as rays.
enum Stage { kSelect, kMove, kClear, kRays, kNormalize, kCompose, kStages };

struct RenderTimes {
    double seconds = 0.0;                  // inside the start selector
    std::array<double, kStages> stages{};  // seconds, from progress report to progress report
    double longestInterval = 0.0;          // seconds between two reports of progress
    std::uint64_t suiteBytes = 0;          // most that the module held of the host's buffers
    std::uint64_t residentBytes = 0;       // most that the process held, pictures included
};

// The module that lies beside the benchmark program.
hostapi::EntryPoint LoadModule();

// The picture of a case: noise over a gradient, the same in every run.
host::HostDocument MakePicture(const RenderCase& wanted);

// The document comes back as it was. The picture that the module made goes to result.
RenderTimes Render(hostapi::EntryPoint entryPoint, const RenderCase& wanted,
                   host::HostDocument& document, host::HostImage* result = nullptr);

}  // namespace mv::benchmarks
