// Whole renders by size, depth, shape, mode, blur length and the settings that change the path.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "TimedRender.h"

namespace {

using mv::benchmarks::RenderCase;
using mv::benchmarks::RenderTimes;

struct NamedCase {
    std::string name;
    RenderCase render;
};

RenderCase Megapixels(int megapixels) {
    RenderCase wanted;
    wanted.width = megapixels == 2    ? 1732
                   : megapixels == 12 ? 4243
                   : megapixels == 24 ? 6000
                                      : 12247;
    wanted.height = megapixels == 2    ? 1155
                    : megapixels == 12 ? 2828
                    : megapixels == 24 ? 4000
                                       : 8165;
    return wanted;
}

std::vector<NamedCase> Cases() {
    std::vector<NamedCase> cases;
    const auto add = [&cases](const std::string& name, RenderCase wanted, auto change) {
        change(wanted);
        cases.push_back({name, wanted});
    };
    for (const int size : {2, 12, 24, 100}) {
        for (const double strength : {0.05, 0.25, 1.0}) {
            add(std::to_string(size) + "MP/strength:" + std::to_string(strength).substr(0, 4),
                Megapixels(size), [&](RenderCase& wanted) { wanted.strength = strength; });
        }
    }
    const RenderCase base = Megapixels(12);
    add("12MP/abberative", base, [](RenderCase& wanted) { wanted.mode = 2; });
    add("12MP/gray", base, [](RenderCase& wanted) { wanted.colors = 1; });
    add("12MP/alpha", base, [](RenderCase& wanted) { wanted.alpha = true; });
    add("12MP/abberative_alpha", base, [](RenderCase& wanted) {
        wanted.mode = 2;
        wanted.alpha = true;
    });
    add("12MP/16bit", base, [](RenderCase& wanted) { wanted.depth = 16; });
    add("12MP/16bit_alpha", base, [](RenderCase& wanted) {
        wanted.depth = 16;
        wanted.alpha = true;
    });
    add("12MP/float", base, [](RenderCase& wanted) { wanted.depth = 32; });
    add("12MP/mask", base, [](RenderCase& wanted) { wanted.mask = true; });
    add("12MP/soft_selection", base, [](RenderCase& wanted) { wanted.soften = 1.0; });
    add("12MP/holdout", base, [](RenderCase& wanted) { wanted.holdout = 0.3; });
    add("12MP/start:-0.5", base, [](RenderCase& wanted) { wanted.zoomStart = -0.5; });
    add("12MP/origin_in_corner", base, [](RenderCase& wanted) {
        wanted.originX = 0.0;
        wanted.originY = 0.0;
    });
    add("12MP/origin_outside", base, [](RenderCase& wanted) {
        wanted.originX = -0.5;
        wanted.originY = 1.4;
    });
    return cases;
}

void Run(benchmark::State& state, const RenderCase& wanted) {
    const mv::host::HostDocument document = mv::benchmarks::MakePicture(wanted);
    RenderTimes last;
    double longest = 0.0;
    for (auto unused : state) {
        static_cast<void>(unused);
        last = mv::benchmarks::Render(mv::benchmarks::LoadModule(), wanted, document);
        state.SetIterationTime(last.seconds);
        longest = std::max(longest, last.longestInterval);
    }
    const double pixels = static_cast<double>(wanted.width) * wanted.height;
    state.counters["ns_per_pixel"] = last.seconds * 1e9 / pixels;
    state.counters["select"] = last.stages[0] + last.stages[1] + last.stages[2];
    state.counters["move"] = last.stages[3];
    state.counters["blur"] = last.stages[4];
    state.counters["compose"] = last.stages[5];
    state.counters["progress_ms"] = longest * 1e3;
    state.counters["buffers_MiB"] = static_cast<double>(last.suiteBytes) / 1048576.0;
}

}  // namespace

int main(int argc, char** argv) {
    for (const NamedCase& entry : Cases()) {
        benchmark::RegisterBenchmark(
            entry.name.c_str(),
            [render = entry.render](benchmark::State& state) { Run(state, render); })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond)
            ->Iterations(1)
            ->Repetitions(5)
            ->ReportAggregatesOnly(true);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
