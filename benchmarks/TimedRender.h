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
};

constexpr int kStages = 6;

struct RenderTimes {
    double seconds = 0.0;  // inside the start selector
    // Selection, mask, linear light, move, blur, composition: from a stage's first report of
    // progress to the next stage's.
    std::array<double, kStages> stages{};
    double longestInterval = 0.0;  // between two reports of progress
    std::uint64_t suiteBytes = 0;  // most that the module held of the host's buffers
};

// The module that lies beside the benchmark program.
hostapi::EntryPoint LoadModule();

// The picture of a case: noise over a gradient, the same in every run.
host::HostDocument MakePicture(const RenderCase& wanted);

RenderTimes Render(hostapi::EntryPoint entryPoint, const RenderCase& wanted,
                   const host::HostDocument& document);

}  // namespace mv::benchmarks
