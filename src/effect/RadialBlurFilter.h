#pragma once

#include "effect/RayBlurFilter.h"

namespace mv {

// The blur of the mode "normal": each pixel of a ray becomes the mean over a window of its line,
// taken from a running sum. A window cut at an end of the line is still divided by its full
// length, so streaks fall off toward the end of a ray; that is meant.
template <class Image, class AccumulatorPixel, class Selection>
class RadialBlurFilter final
    : public RayBlurFilter<RadialBlurFilter<Image, AccumulatorPixel, Selection>, Image,
                           AccumulatorPixel, Selection> {
    using Base = RayBlurFilter<RadialBlurFilter, Image, AccumulatorPixel, Selection>;
    friend Base;
    using Base::kChannels;
    using Side = typename Base::Side;

    static constexpr int kLineCount = 2;
    static constexpr const char* kName = "RadialBlurFilter";
    static constexpr int kStride = PrefixStride(kChannels);

public:
    using Base::Base;

private:
    // Lines and windows of four rays. The shared table serves every ray of a side where windows
    // depend on the step alone.
    struct FastState {
        double* prefix[kRaysInGroup] = {};
        double* last[kRaysInGroup] = {};
        WindowTable shared;
        WindowTable own[kRaysInGroup];
        bool hasShared = false;
    };

    // lines[0] holds the samples, lines[1] becomes their running sum, entries 0 to n + 1.
    void BuildTables(double* const* lines, std::int32_t n) const {
        const double* s = lines[0];
        double* prefix = lines[1];
        for (std::int32_t k = 0; k <= n + 1; ++k) {
            for (int c = 0; c < kChannels; ++c) {
                prefix[k * kChannels + c] = prefix[(k - 1) * kChannels + c] + s[k * kChannels + c];
            }
        }
    }

    // The exact integral of the step function of the samples from a to b, over the length.
    void Value(double* out, const double* const* lines, std::int32_t n, std::int32_t i,
               double length) const {
        const double* prefix = lines[1];
        const Window window = PlaceWindow(length, this->zoomStart, i, n);
        const auto ja = static_cast<std::int32_t>(window.a + 1.0);
        const double fa = ja - window.a;
        const auto ib = static_cast<std::int32_t>(window.b);
        const double fb = window.b - ib;
        const double* low = prefix + ja * kChannels;
        const double* high = prefix + ib * kChannels;
        for (int c = 0; c < kChannels; ++c) {
            double sum = (1.0 - fb) * high[c] + fb * high[c + kChannels] - fa * low[c - kChannels] -
                         (1.0 - fa) * low[c];
            if (length > 1.0) {
                sum /= length;
            }
            out[c] = sum;
        }
    }

    // 0 where the fast form does not serve.
    std::uint64_t FastDoubles() const {
        if (kernels_ == nullptr || this->HasSelection()) {
            return 0;
        }
        const std::int32_t steps = this->LongestLine();
        return kRaysInGroup * LineDoubles(steps) + (kRaysInGroup + 1) * WindowTable::Doubles(steps);
    }

    // Entries from -2 on, and the last sample behind them.
    static std::uint64_t LineDoubles(std::int32_t steps) {
        return static_cast<std::uint64_t>(steps + kLineSlack + 1) * kStride + 4;
    }

    void PrepareFast(Side& side) const {
        FastState& fast = side.fast;
        const std::int32_t steps = this->LongestLine();
        double* memory = side.fastBuffer;
        for (int g = 0; g < kRaysInGroup; ++g) {
            fast.prefix[g] = memory + kLineLead * kStride;
            fast.last[g] = memory + LineDoubles(steps) - 4;
            memory += LineDoubles(steps);
        }
        for (WindowTable& table : fast.own) {
            table.SetMemory(memory, steps);
            memory += WindowTable::Doubles(steps);
        }
        fast.shared.SetMemory(memory, steps);
        fast.hasShared = this->AreWindowsAlike();
        if (fast.hasShared) {
            const WindowRule rule{0.0, 0.0, this->strength, this->zoomStart};
            fast.shared.FillAll(rule, 0, steps, INT32_MAX);
        }
    }

    bool BlurGroup(Side& side, const Ray* rays) {
        RayGroupPlan plan;
        if (!plan.Make(rays)) {
            return false;
        }
        SampleGroup(side, plan);
        const std::int32_t ownFrom = PlaceWindows(side, plan);
        ScatterGroup(side, plan, ownFrom);
        return true;
    }

    void SampleGroup(Side& side, RayGroupPlan& plan) const {
        FastState& fast = side.fast;
        RayGroup group = this->MakeGroup(side, plan);
        double minor[kRaysInGroup];
        for (int g = 0; g < kRaysInGroup; ++g) {
            minor[g] = plan.rays[g].minor;
            for (std::int32_t i = 0; i < plan.lead[g]; ++i) {
                SampleStep(fast, plan, g, i, minor[g]);
            }
            group.minor[g] = minor[g];
            group.prefix[g] = fast.prefix[g] + plan.lead[g] * kStride;
            group.last[g] = fast.last[g];
        }
        group.steps = plan.common;
        kernels_->sample[kChannels](group);
        for (int g = 0; g < kRaysInGroup; ++g) {
            const std::int32_t n = plan.rays[g].steps;
            for (std::int32_t i = plan.lead[g] + plan.common; i < n; ++i) {
                SampleStep(fast, plan, g, i, group.minor[g]);
            }
            double* end = fast.prefix[g] + n * kStride;
            for (int c = 0; c < kChannels; ++c) {
                end[c] = end[c - kStride] + fast.last[g][c];
                end[kStride + c] = end[c] + fast.last[g][c];
            }
        }
    }

    void SampleStep(FastState& fast, const RayGroupPlan& plan, int g, std::int32_t i,
                    double& minor) const {
        const Ray& ray = plan.rays[g];
        double* entry = fast.prefix[g] + i * kStride;
        this->SamplePixel(ray, ray.start + ray.sign * i, minor, fast.last[g]);
        for (int c = 0; c < kChannels; ++c) {
            entry[c] = entry[c - kStride] + fast.last[g][c];
        }
        minor += ray.slope;
    }

    // Gives the first common step from which rays use tables of their own: 0 without a shared
    // one, else where the first line's end begins to cut windows.
    std::int32_t PlaceWindows(Side& side, const RayGroupPlan& plan) const {
        FastState& fast = side.fast;
        std::int32_t ownFrom = fast.hasShared ? plan.common : 0;
        for (int g = 0; fast.hasShared && g < kRaysInGroup; ++g) {
            const Ray& ray = plan.rays[g];
            const std::int32_t cut = fast.own[g].FillCut(this->RuleOf(ray), ray.steps);
            ownFrom = std::min(ownFrom, std::max(cut - plan.lead[g], 0));
        }
        for (int g = 0; g < kRaysInGroup; ++g) {
            const Ray& ray = plan.rays[g];
            const WindowRule rule = this->RuleOf(ray);
            fast.own[g].FillAll(rule, 0, plan.lead[g], ray.steps);
            fast.own[g].FillAll(rule, plan.lead[g] + ownFrom, ray.steps, ray.steps);
        }
        return ownFrom;
    }

    void ScatterGroup(Side& side, RayGroupPlan& plan, std::int32_t ownFrom) {
        FastState& fast = side.fast;
        RayGroup group = this->MakeGroup(side, plan);
        std::int32_t tested = 0;
        std::int32_t safe[kRaysInGroup];
        for (int g = 0; g < kRaysInGroup; ++g) {
            safe[g] = side.zone.SafeStep(plan.rays[g]);
            tested = std::max(tested, safe[g] - plan.lead[g]);
            group.minor[g] = plan.rays[g].minor;
            for (std::int32_t i = 0; i < plan.lead[g]; ++i) {
                ScatterStep(side, plan, g, i, i < safe[g], fast.own[g], group.minor[g]);
            }
        }
        tested = std::min(tested, plan.common);
        for (std::int32_t i = 0; i < tested; ++i) {
            for (int g = 0; g < kRaysInGroup; ++g) {
                const WindowTable& table = i < ownFrom ? fast.shared : fast.own[g];
                ScatterStep(side, plan, g, plan.lead[g] + i, true, table, group.minor[g]);
            }
        }
        this->OpenLanes(side, group, tested, plan.common);
        RunScatter(fast, plan, group, tested, std::max(tested, ownFrom), true);
        RunScatter(fast, plan, group, std::max(tested, ownFrom), plan.common, false);
        for (int g = 0; g < kRaysInGroup; ++g) {
            for (std::int32_t i = plan.lead[g] + plan.common; i < plan.rays[g].steps; ++i) {
                ScatterStep(side, plan, g, i, i < safe[g], fast.own[g], group.minor[g]);
            }
        }
    }

    // Common steps from to end, with the shared table or the rays' own ones.
    void RunScatter(const FastState& fast, const RayGroupPlan& plan, RayGroup& group,
                    std::int32_t from, std::int32_t end, bool useShared) const {
        if (from >= end) {
            return;
        }
        RayGroup part = group;
        part.lane += from;
        part.steps = end - from;
        WindowPositions windows[kRaysInGroup];
        for (int g = 0; g < kRaysInGroup; ++g) {
            // Windows count their entries from the line's first sample.
            part.prefix[g] = fast.prefix[g];
            windows[g] = (useShared ? fast.shared : fast.own[g]).From(plan.lead[g] + from);
        }
        kernels_->scatter[kChannels](part, windows);
        std::copy(part.minor, part.minor + kRaysInGroup, group.minor);
    }

    void ScatterStep(Side& side, const RayGroupPlan& plan, int g, std::int32_t i, bool mustTest,
                     const WindowTable& table, double& minor) {
        const Ray& ray = plan.rays[g];
        const WindowPositions at = table.From(i);
        const double* high = side.fast.prefix[g] + *at.high * kStride;
        const double* low = side.fast.prefix[g] + *at.low * kStride;
        ChannelArray<double, kChannels> value;
        for (int c = 0; c < kChannels; ++c) {
            const double sum = *at.highKeep * high[c] + *at.highNext * high[c + kStride] -
                               *at.lowNext * low[c - kStride] - *at.lowKeep * low[c];
            value[c] = sum / *at.divisor;
        }
        this->SplatStep(side, ray, mustTest, ray.start + ray.sign * i, minor, value);
        minor += ray.slope;
    }

    const RayKernels* kernels_ = SelectRayKernels();
};

}  // namespace mv
