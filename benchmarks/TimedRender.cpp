#include "TimedRender.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "Module.h"

namespace mv::benchmarks {
namespace {

using hostapi::FourCharacterCode;

double Now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

// Notes when each stage reports for the first time.
class StageClock {
public:
    void Report(std::int32_t done, std::int32_t total) {
        const double now = Now();
        if (last_ > 0.0) {
            longest_ = std::max(longest_, now - last_);
        }
        last_ = now;
        const int stage =
            total > 0 ? std::clamp(static_cast<int>(6.0 * done / total), 0, kStages - 1) : 0;
        if (firsts_[static_cast<std::size_t>(stage)] == 0.0) {
            firsts_[static_cast<std::size_t>(stage)] = now;
        }
    }

    void Finish(RenderTimes& times) const {
        double end = last_;
        for (std::size_t stage = kStages; stage-- > 0;) {
            if (firsts_[stage] > 0.0) {
                times.stages[stage] = end - firsts_[stage];
                end = firsts_[stage];
            }
        }
        times.longestInterval = longest_;
    }

private:
    std::array<double, kStages> firsts_{};
    double last_ = 0.0;
    double longest_ = 0.0;
};

}  // namespace

hostapi::EntryPoint LoadModule() {
    static host::Module module;
    std::string reason;
    if (!module.Load(host::DefaultModulePath(), reason)) {
        std::fprintf(stderr, "%s\n", reason.c_str());
        std::exit(1);
    }
    return module.GetEntryPoint();
}

host::HostDocument MakePicture(const RenderCase& wanted) {
    const int planes = wanted.colors + (wanted.alpha ? 1 : 0);
    host::HostImage image(wanted.width, wanted.height, planes, wanted.depth);
    const double white = wanted.depth == 8 ? 255.0 : wanted.depth == 16 ? 32768.0 : 1.0;
    std::uint32_t state = 1;
    for (int y = 0; y < wanted.height; ++y) {
        for (int x = 0; x < wanted.width; ++x) {
            for (int plane = 0; plane < planes; ++plane) {
                state = state * 1664525u + 1013904223u;
                const double noise = (state >> 24) / 255.0;
                const double ramp =
                    (x + y * (plane + 1)) % wanted.width / static_cast<double>(wanted.width);
                image.Set(
                    x, y, plane,
                    white * (plane == wanted.colors ? 1.0 - noise * 0.3 : 0.5 * (noise + ramp)));
            }
        }
    }
    std::vector<std::uint8_t> mask;
    if (wanted.mask) {
        mask.resize(static_cast<std::size_t>(wanted.width) *
                    static_cast<std::size_t>(wanted.height));
        for (std::size_t i = 0; i < mask.size(); ++i) {
            mask[i] = static_cast<std::uint8_t>(i * 7 % 256);
        }
    }
    return host::MakeDocument(std::move(image), wanted.alpha, std::move(mask));
}

RenderTimes Render(hostapi::EntryPoint entryPoint, const RenderCase& wanted,
                   const host::HostDocument& document) {
    host::HostSession session(entryPoint, document);
    session.Play({{FourCharacterCode("STRE"), wanted.strength},
                  {FourCharacterCode("MODE"), std::int32_t{wanted.mode}},
                  {FourCharacterCode("ORIX"), wanted.originX},
                  {FourCharacterCode("ORIY"), wanted.originY},
                  {FourCharacterCode("HORA"), wanted.holdout},
                  {FourCharacterCode("ZOST"), wanted.zoomStart},
                  {FourCharacterCode("SELS"), wanted.soften}});
    session.Descriptor().playInfo = hostapi::plugInDialogSilent;
    StageClock clock;
    session.Hooks().progress = [&clock](std::int32_t done, std::int32_t total) {
        // The last report puts the bar back to its start.
        if (total > 1) {
            clock.Report(done, total);
        }
    };
    RenderTimes times;
    const host::RunOutcome outcome = session.Run();
    if (outcome.status != hostapi::noErr) {
        std::fprintf(stderr, "the module gave %d\n", outcome.status);
        std::exit(1);
    }
    times.seconds = outcome.startSeconds;
    times.suiteBytes = session.Counts().bufferBytesPeak;
    clock.Finish(times);
    return times;
}

}  // namespace mv::benchmarks
