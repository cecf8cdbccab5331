// The fast forms beside the plain form: the same renders in one process, alternating, medians. The
// blur alone is timed with input and output in one place, where stages run one after the other.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "TimedRender.h"
#include "effect/kernels/RayKernels.h"

// The module's sources are part of this program, so that it can choose among their kernels.
extern "C" void ENTRYPOINT(std::int16_t selector, void* parameterBlock, std::intptr_t* data,
                           std::int16_t* result);

namespace {

using mv::InstructionSet;
using mv::benchmarks::RenderCase;
using mv::benchmarks::RenderTimes;

constexpr struct {
    InstructionSet set;
    const char* name;
} kSets[] = {{InstructionSet::Plain, "plain"},
             {InstructionSet::Sse2, "SSE2"},
             {InstructionSet::Avx2, "AVX2"},
             {InstructionSet::Avx512, "AVX-512"}};

struct Variation {
    const char* name;
    void (*change)(RenderCase& wanted);
};

constexpr Variation kVariations[] = {
    {"8 bit RGB", [](RenderCase&) {}},
    {"8 bit RGB, abberative", [](RenderCase& wanted) { wanted.mode = 2; }},
    {"8 bit gray", [](RenderCase& wanted) { wanted.colors = 1; }},
    {"8 bit RGBA", [](RenderCase& wanted) { wanted.alpha = true; }},
    {"16 bit RGB", [](RenderCase& wanted) { wanted.depth = 16; }},
    {"float RGB", [](RenderCase& wanted) { wanted.depth = 32; }},
    {"mask", [](RenderCase& wanted) { wanted.mask = true; }},
    {"soft selection", [](RenderCase& wanted) { wanted.soften = 1.0; }},
    {"holdout 0.3", [](RenderCase& wanted) { wanted.holdout = 0.3; }},
    {"origin in a corner", [](RenderCase& wanted) { wanted.originX = wanted.originY = 0.0; }},
    {"origin outside",
     [](RenderCase& wanted) {
         wanted.originX = -0.5;
         wanted.originY = 1.4;
     }},
};

struct Times {
    std::vector<double> whole;
    std::vector<double> blur;
};

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void Compare(const char* name, const RenderCase& wanted, int repetitions) {
    mv::host::HostDocument document = mv::benchmarks::MakePicture(wanted);
    Times times[std::size(kSets)];
    for (int i = 0; i < repetitions; ++i) {
        for (std::size_t set = 0; set < std::size(kSets); ++set) {
            if (!mv::ForceInstructionSet(kSets[set].set)) {
                continue;
            }
            const RenderTimes render = mv::benchmarks::Render(&ENTRYPOINT, wanted, document);
            times[set].whole.push_back(render.seconds);
            RenderCase inPlace = wanted;
            inPlace.inPlace = true;
            const RenderTimes staged = mv::benchmarks::Render(&ENTRYPOINT, inPlace, document);
            times[set].blur.push_back(staged.stages[mv::benchmarks::kRays] +
                                      staged.stages[mv::benchmarks::kNormalize]);
        }
    }
    for (std::size_t set = 0; set < std::size(kSets); ++set) {
        if (!times[set].whole.empty()) {
            const double blur = Median(times[set].blur);
            const double whole = Median(times[set].whole);
            std::printf("| %s | %s | %.0f | %.0f | %.2f | %.2f |\n", name, kSets[set].name,
                        whole * 1e3, blur * 1e3, whole / Median(times[0].whole),
                        blur / Median(times[0].blur));
        }
    }
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
    const int repetitions = argc > 1 ? std::max(std::atoi(argv[1]), 1) : 5;
    std::printf("| case, 12 MP | form | whole ms | blur ms | whole / plain | blur / plain |\n");
    std::printf("|---|---|---:|---:|---:|---:|\n");
    for (const Variation& variation : kVariations) {
        RenderCase wanted;
        wanted.width = 4243;
        wanted.height = 2828;
        variation.change(wanted);
        Compare(variation.name, wanted, repetitions);
    }
    return 0;
}
