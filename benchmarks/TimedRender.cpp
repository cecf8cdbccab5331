#include "TimedRender.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "Machine.h"
#include "Module.h"

namespace mv::benchmarks {
namespace {

using hostapi::FourCharacterCode;

double Now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

// Tells the stages apart by the progress that they report: sixths of the whole, of which the blur's
// begins twice, with the clearing of its sums and with the rays.
class StageClock {
public:
    explicit StageClock(const RenderCase& wanted)
        : rayShare_(2.0 * (wanted.width + wanted.height) /
                    (3.0 * wanted.height + 2.0 * wanted.width)) {}

    void Report(std::int32_t done, std::int32_t total) {
        const double now = Now();
        if (last_ > 0.0) {
            longest_ = std::max(longest_, now - last_);
        }
        last_ = now;
        const Stage stage = StageOf(6.0 * done / total);
        if (firsts_[stage] == 0.0) {
            firsts_[stage] = now;
        }
    }

    void Finish(double begin, double end, RenderTimes& times) const {
        for (std::size_t stage = kStages; stage-- > 0;) {
            if (firsts_[stage] > 0.0) {
                const double first = stage == 0 ? begin : firsts_[stage];
                times.stages[stage] = end - first;
                end = first;
            }
        }
        times.longestInterval = longest_;
    }

private:
    Stage StageOf(double sixths) {
        if (sixths < 3.0) {
            return kSelect;
        }
        if (sixths < 4.0) {
            return kMove;
        }
        if (sixths >= 5.0) {
            return kCompose;
        }
        isCleared_ = isCleared_ || (sixths < 4.02 && farthest_ > 4.3);
        farthest_ = std::max(farthest_, sixths);
        if (!isCleared_) {
            return kClear;
        }
        return sixths < 4.0 + rayShare_ ? kRays : kNormalize;
    }

    std::array<double, kStages> firsts_{};
    double last_ = 0.0;
    double longest_ = 0.0;
    double rayShare_;
    double farthest_ = 0.0;
    bool isCleared_ = false;
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
                   host::HostDocument& document, host::HostImage* result) {
    host::HostSession session(entryPoint, std::move(document),
                              {.freshBytes = host::FreshBytes::Unset,
                               .sparesCopies = !wanted.inPlace,
                               .outputContents = host::OutputContents::Unset});
    session.Play({{FourCharacterCode("STRE"), wanted.strength},
                  {FourCharacterCode("MODE"), std::int32_t{wanted.mode}},
                  {FourCharacterCode("ORIX"), wanted.originX},
                  {FourCharacterCode("ORIY"), wanted.originY},
                  {FourCharacterCode("HORA"), wanted.holdout},
                  {FourCharacterCode("ZOST"), wanted.zoomStart},
                  {FourCharacterCode("SELS"), wanted.soften}});
    session.Descriptor().playInfo = hostapi::plugInDialogSilent;
    StageClock clock(wanted);
    session.Hooks().progress = [&clock](std::int32_t done, std::int32_t total) {
        // The last report puts the bar back to its start.
        if (total > 1) {
            clock.Report(done, total);
        }
    };
    if (wanted.inPlace) {
        session.Hooks().afterAdvance = [](hostapi::FilterRecord& record) {
            record.outData = record.inData;
        };
    }
    RenderTimes times;
    PretendProcessors(wanted.threads);
    ResetPeakMemory();
    const double begin = Now();
    const host::RunOutcome outcome = session.Run();
    if (outcome.status != hostapi::noErr) {
        std::fprintf(stderr, "the module gave %d\n", outcome.status);
        std::exit(1);
    }
    times.seconds = outcome.startSeconds;
    times.suiteBytes = session.Counts().bufferBytesPeak;
    times.residentBytes = PeakMemory();
    clock.Finish(begin, begin + outcome.startSeconds, times);
    if (result != nullptr) {
        *result = session.TakeResult();
    }
    document = session.TakeDocument();
    return times;
}

}  // namespace mv::benchmarks
