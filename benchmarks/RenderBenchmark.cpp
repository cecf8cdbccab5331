// Whole renders by size, depth, shape, mode, blur length, threads and the settings that change the
// path, with the share of each stage and the time that memory traffic alone would take.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "Machine.h"
#include "MarkdownTable.h"
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

std::string Short(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

void AddSizes(std::vector<NamedCase>& cases) {
    for (const int size : {2, 12, 24, 100}) {
        for (const double strength : {0.05, 0.25, 1.0}) {
            NamedCase added{std::to_string(size) + " MP, length " + Short(strength),
                            Megapixels(size)};
            added.render.strength = strength;
            cases.push_back(added);
        }
    }
    for (const int threads : {1, 2, 4, 8}) {
        NamedCase added{"24 MP, threads " + std::to_string(threads), Megapixels(24)};
        added.render.threads = threads;
        cases.push_back(added);
    }
}

void AddShapes(std::vector<NamedCase>& cases) {
    using Shape = std::tuple<const char*, int, bool>;
    for (const int depth : {8, 16, 32}) {
        for (const auto& [name, colors, alpha] :
             {Shape{"gray", 1, false}, Shape{"RGB", 3, false}, Shape{"RGBA", 3, true}}) {
            for (const int mode : {1, 2}) {
                NamedCase added{"12 MP, " + std::to_string(depth) + " bit " + name +
                                    (mode == 1 ? ", normal" : ", abberative"),
                                Megapixels(12)};
                added.render.depth = depth;
                added.render.colors = colors;
                added.render.alpha = alpha;
                added.render.mode = mode;
                cases.push_back(added);
            }
        }
    }
}

void AddSettings(std::vector<NamedCase>& cases) {
    const auto add = [&cases](const std::string& name, auto change) {
        for (const int mode : {1, 2}) {
            NamedCase added{"12 MP, " + name + (mode == 1 ? "" : ", abberative"), Megapixels(12)};
            added.render.mode = mode;
            change(added.render);
            cases.push_back(added);
        }
    };
    add("mask", [](RenderCase& wanted) { wanted.mask = true; });
    add("soft selection", [](RenderCase& wanted) { wanted.soften = 1.0; });
    add("holdout 0.3", [](RenderCase& wanted) { wanted.holdout = 0.3; });
    add("start -0.5", [](RenderCase& wanted) { wanted.zoomStart = -0.5; });
    add("origin in a corner", [](RenderCase& wanted) { wanted.originX = wanted.originY = 0.0; });
    add("origin outside", [](RenderCase& wanted) {
        wanted.originX = -0.5;
        wanted.originY = 1.4;
    });
}

// Least traffic in bytes per pixel: each stage reads and writes each of its images once, selection
// and move together, and the sums of the blur stay near.
double TrafficOf(const RenderCase& wanted) {
    const double channels = wanted.colors + (wanted.alpha ? 1 : 0);
    const double host = channels * wanted.depth / 8.0 + (wanted.mask ? 1.0 : 0.0);
    const double working = 4.0 * channels;
    const double prepare = host + working;
    const double blur = 2.0 * working;
    const double compose = working + 2.0 * host;
    return prepare + blur + compose;
}

void Run(benchmark::State& state, const RenderCase& wanted, double bandwidth) {
    mv::host::HostDocument document = mv::benchmarks::MakePicture(wanted);
    RenderTimes last;
    for (auto unused : state) {
        static_cast<void>(unused);
        last = mv::benchmarks::Render(mv::benchmarks::LoadModule(), wanted, document);
        state.SetIterationTime(last.seconds);
    }
    const double pixels = static_cast<double>(wanted.width) * wanted.height;
    state.counters["ns"] = last.seconds * 1e9 / pixels;
    for (std::size_t stage = 0; stage < mv::benchmarks::kStages; ++stage) {
        state.counters["stage" + std::to_string(stage)] = 100.0 * last.stages[stage] / last.seconds;
    }
    state.counters["roofline"] = 1e3 * TrafficOf(wanted) * pixels / bandwidth;
    state.counters["progress"] = last.longestInterval * 1e3;
    state.counters["suite"] = static_cast<double>(last.suiteBytes) / 1048576.0;
    state.counters["resident"] = static_cast<double>(last.residentBytes) / 1048576.0;
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    const double bandwidth = mv::benchmarks::MeasureBandwidth();
    std::printf("%d processors, %.1f GB/s of memory bandwidth; medians of five renders\n\n",
                mv::benchmarks::RealProcessors(), bandwidth * 1e-9);
    std::vector<NamedCase> cases;
    AddSizes(cases);
    AddShapes(cases);
    AddSettings(cases);
    for (const NamedCase& entry : cases) {
        benchmark::RegisterBenchmark(entry.name.c_str(),
                                     [render = entry.render, bandwidth](benchmark::State& state) {
                                         Run(state, render, bandwidth);
                                     })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond)
            ->Iterations(1)
            ->Repetitions(5)
            ->ReportAggregatesOnly(true);
    }
    mv::benchmarks::MarkdownTable table({{"ns/pixel", "ns", 1},
                                         {"select %", "stage0", 0},
                                         {"move %", "stage1", 0},
                                         {"clear %", "stage2", 0},
                                         {"rays %", "stage3", 0},
                                         {"normalize %", "stage4", 0},
                                         {"compose %", "stage5", 0},
                                         {"traffic ms", "roofline", 0},
                                         {"longest progress ms", "progress", 1},
                                         {"buffers MiB", "suite", 0},
                                         {"process MiB", "resident", 0}});
    benchmark::RunSpecifiedBenchmarks(&table);
    return 0;
}
