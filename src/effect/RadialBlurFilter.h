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
    friend typename Base::Side;
    using Base::kChannels;
    using Side = typename Base::Side;

    static constexpr int kLineCount = 2;
    static constexpr const char* kName = "RadialBlurFilter";
    static constexpr int kEntry = EntryDoubles(kChannels);
    static constexpr int kRayDoubles = kEntry / kRaysInGroup;

public:
    using Base::Base;

private:
    // Lines and windows of four rays. The shared table serves every ray of a side where windows
    // depend on the step alone.
    struct FastState {
        double* lines = nullptr;
        double* last = nullptr;
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
        return LineDoubles(steps) + (kRaysInGroup + 1) * WindowTable::Doubles(steps);
    }

    // Steps that a ray of a group may walk before the first common one.
    std::int32_t MostLead() const { return std::min(this->LongestLine(), 2048); }

    // Room for the leads and two entries before them, and the last samples behind.
    std::uint64_t LineDoubles(std::int32_t steps) const {
        return static_cast<std::uint64_t>(MostLead() + steps + kLineSlack + 2) * kEntry;
    }

    void PrepareFast(Side& side) const {
        FastState& fast = side.fast;
        const std::int32_t steps = this->LongestLine();
        double* memory = side.fastBuffer;
        fast.lines = memory + (kLineLead + MostLead()) * kEntry;
        // No more than what is read before it is written: memory that is touched has its price.
        std::fill_n(fast.lines - kLineLead * kEntry, kLineLead * kEntry, 0.0);
        memory += LineDoubles(steps);
        fast.last = memory - kEntry;
        std::fill_n(fast.last, kEntry, 0.0);
        for (WindowTable& table : fast.own) {
            table.SetMemory(memory);
            memory += WindowTable::Doubles(steps);
        }
        fast.shared.SetMemory(memory);
        fast.hasShared = this->AreWindowsAlike();
        if (fast.hasShared) {
            const WindowRule rule{0.0, 0.0, this->strength, this->zoomStart};
            fast.shared.FillAll(rule, 0, steps, INT32_MAX, kernels_);
        }
    }

    // No window ends beyond its step. A length is subtracted and added again, and may come back a
    // little longer.
    bool DoWindowsReachBackOnly(const RayGroupPlan& plan) const {
        constexpr double kLongestExact = 1e9;
        return this->zoomStart >= 0.5 &&
               std::all_of(plan.rays, plan.rays + kRaysInGroup, [this](const Ray& ray) {
                   const WindowRule rule = this->RuleOf(ray);
                   return rule.strength * (rule.startDistance + ray.steps) < kLongestExact;
               });
    }

    // How far four rays have come: common steps that are sampled, and those that are scattered.
    struct Walk {
        RayGroupPlan plan;
        RayGroup sample;
        RayGroup scatter;
        std::int32_t sampled = 0;
        std::int32_t scattered = 0;
        std::int32_t safe[kRaysInGroup];  // see SideZone::SafeStep
        std::int32_t tested = 0;          // common steps before all rays are safe
    };

    bool BlurGroup(Side& side, const Ray* rays) {
        Walk walk;
        if (!walk.plan.Make(rays) ||
            *std::max_element(walk.plan.lead, walk.plan.lead + kRaysInGroup) > MostLead()) {
            return false;
        }
        FastState& fast = side.fast;
        const std::int32_t common = walk.plan.common;
        StartWalk(side, walk);
        const std::int32_t ownFrom = PlaceWindows(side, walk);
        // Both in one go where no window waits for samples beyond its step.
        const std::int32_t bothEnd = DoWindowsReachBackOnly(walk.plan) ? common - 1 : 0;
        const bool goesInOne = walk.tested < bothEnd;
        SampleLeads(side, walk);
        SampleTo(fast, walk, goesInOne ? walk.tested + 1 : common);
        if (!goesInOne) {
            SampleTails(side, walk);
        }
        ScatterTested(side, walk, ownFrom);
        if (goesInOne) {
            BlurTo(fast, walk, std::min(ownFrom, bothEnd), true);
            BlurTo(fast, walk, bothEnd, false);
            SampleTo(fast, walk, common);
            SampleTails(side, walk);
        }
        ScatterTo(fast, walk, ownFrom, true);
        ScatterTo(fast, walk, common, false);
        ScatterTails(side, walk);
        return true;
    }

    void StartWalk(const Side& side, Walk& walk) const {
        walk.sample = this->MakeGroup(side, walk.plan);
        for (int g = 0; g < kRaysInGroup; ++g) {
            const Ray& ray = walk.plan.rays[g];
            walk.sample.minor[g] = ray.minor;
            // Windows count their entries from the line's first sample.
            walk.sample.line[g] = LineOf(side.fast, walk.plan, g);
            walk.safe[g] = side.zone.SafeStep(ray);
            walk.tested = std::max(walk.tested, walk.safe[g] - walk.plan.lead[g]);
        }
        walk.tested = std::min(walk.tested, walk.plan.common);
        walk.sample.last = side.fast.last;
        walk.scatter = walk.sample;
    }

    // Entry 0 of a ray's line. The lines lie entry by entry from the first common step on.
    static double* LineOf(const FastState& fast, const RayGroupPlan& plan, int g) {
        return fast.lines - std::ptrdiff_t{plan.lead[g]} * kEntry + RayOffset(kChannels, g);
    }

    void SampleLeads(const Side& side, Walk& walk) const {
        const FastState& fast = side.fast;
        for (int g = 0; g < kRaysInGroup; ++g) {
            std::fill_n(LineOf(fast, walk.plan, g) - kEntry, kRayDoubles, 0.0);
            for (std::int32_t i = 0; i < walk.plan.lead[g]; ++i) {
                SampleStep(side, walk.plan, g, i, walk.sample.minor[g]);
            }
        }
    }

    // The next steps of the kernels' share, in the images and on the lines.
    RayGroup NextSteps(const FastState& fast, const RayGroup& group, std::int32_t done,
                       std::int32_t steps) const {
        RayGroup part = group;
        part.image += done * group.imageStep;
        part.lines = fast.lines + std::ptrdiff_t{done} * kEntry;
        part.lane += done;
        part.steps = steps;
        return part;
    }

    static void TakeMinor(RayGroup& to, const RayGroup& from) {
        std::copy(from.minor, from.minor + kRaysInGroup, to.minor);
    }

    void SampleTo(const FastState& fast, Walk& walk, std::int32_t end) const {
        if (walk.sampled < end) {
            RayGroup part = NextSteps(fast, walk.sample, walk.sampled, end - walk.sampled);
            kernels_->sample[kChannels](part);
            TakeMinor(walk.sample, part);
            walk.sampled = end;
        }
    }

    // What rays have beyond the common steps, and two entries beyond their ends.
    void SampleTails(const Side& side, Walk& walk) const {
        const FastState& fast = side.fast;
        for (int g = 0; g < kRaysInGroup; ++g) {
            const std::int32_t n = walk.plan.rays[g].steps;
            for (std::int32_t i = walk.plan.lead[g] + walk.plan.common; i < n; ++i) {
                SampleStep(side, walk.plan, g, i, walk.sample.minor[g]);
            }
            const double* last = fast.last + RayOffset(kChannels, g);
            double* end = LineOf(fast, walk.plan, g) + std::ptrdiff_t{n} * kEntry;
            for (int c = 0; c < kChannels; ++c) {
                end[c] = end[c - kEntry] + last[c];
                end[kEntry + c] = end[c] + last[c];
            }
        }
    }

    void SampleStep(const Side& side, const RayGroupPlan& plan, int g, std::int32_t i,
                    double& minor) const {
        const FastState& fast = side.fast;
        const Ray& ray = plan.rays[g];
        double* last = fast.last + RayOffset(kChannels, g);
        double* entry = LineOf(fast, plan, g) + std::ptrdiff_t{i} * kEntry;
        this->SamplePixel(side, ray, ray.start + ray.sign * i, minor, last);
        for (int c = 0; c < kChannels; ++c) {
            entry[c] = entry[c - kEntry] + last[c];
        }
        minor += ray.slope;
    }

    // Gives the first common step from which rays use windows of their own: 0 without shared
    // ones, else where the first line's end begins to cut them. Tables hold them for the steps
    // that rays walk alone.
    std::int32_t PlaceWindows(Side& side, const Walk& walk) const {
        FastState& fast = side.fast;
        const RayGroupPlan& plan = walk.plan;
        std::int32_t ownFrom = fast.hasShared ? plan.common : 0;
        for (int g = 0; fast.hasShared && g < kRaysInGroup; ++g) {
            const Ray& ray = plan.rays[g];
            const std::int32_t cut = FirstCutWindow(this->RuleOf(ray), ray.steps);
            ownFrom = std::min(ownFrom, std::max(cut - plan.lead[g], 0));
        }
        for (int g = 0; g < kRaysInGroup; ++g) {
            const Ray& ray = plan.rays[g];
            const std::int32_t lead = plan.lead[g];
            const WindowRule rule = this->RuleOf(ray);
            fast.own[g].FillAll(rule, 0, lead, ray.steps, kernels_);
            fast.own[g].FillAll(rule, lead + ownFrom, lead + walk.tested, ray.steps, kernels_);
            fast.own[g].FillAll(rule, lead + plan.common, ray.steps, ray.steps, kernels_);
        }
        return ownFrom;
    }

    // Those of the common steps from the next one to be scattered on.
    RayWindows NextWindows(const FastState& fast, const Walk& walk, bool areShared) const {
        RayWindows windows;
        windows.shared = areShared ? fast.shared.From(walk.scattered) : nullptr;
        for (int g = 0; g < kRaysInGroup; ++g) {
            const Ray& ray = walk.plan.rays[g];
            windows.rules[g] = this->RuleOf(ray);
            windows.first[g] = walk.plan.lead[g] + walk.scattered;
            windows.samples[g] = ray.steps;
        }
        return windows;
    }

    // Leads, and the common steps at which an earlier side may be met.
    void ScatterTested(Side& side, Walk& walk, std::int32_t ownFrom) {
        const RayGroupPlan& plan = walk.plan;
        for (int g = 0; g < kRaysInGroup; ++g) {
            for (std::int32_t i = 0; i < plan.lead[g]; ++i) {
                ScatterStep(side, walk, g, i, i < walk.safe[g], side.fast.own[g]);
            }
        }
        for (std::int32_t i = 0; i < walk.tested; ++i) {
            for (int g = 0; g < kRaysInGroup; ++g) {
                const WindowTable& table = i < ownFrom ? side.fast.shared : side.fast.own[g];
                ScatterStep(side, walk, g, plan.lead[g] + i, true, table);
            }
        }
        walk.scattered = walk.tested;
    }

    // One step is sampled ahead.
    void BlurTo(const FastState& fast, Walk& walk, std::int32_t end, bool useShared) const {
        if (walk.scattered >= end) {
            return;
        }
        RayGroup part = NextSteps(fast, walk.scatter, walk.sampled, end - walk.scattered);
        part.lane = walk.scatter.lane + walk.scattered;
        kernels_->blur[kChannels](part, NextWindows(fast, walk, useShared));
        TakeMinor(walk.scatter, part);
        for (int g = 0; g < kRaysInGroup; ++g) {
            walk.sample.minor[g] = part.minor[g] + part.slope[g];
        }
        walk.sampled += end - walk.scattered;
        walk.scattered = end;
    }

    // Common steps with the shared table or the rays' own ones.
    void ScatterTo(const FastState& fast, Walk& walk, std::int32_t end, bool useShared) const {
        if (walk.scattered >= end) {
            return;
        }
        RayGroup part = NextSteps(fast, walk.scatter, walk.scattered, end - walk.scattered);
        kernels_->scatter[kChannels](part, NextWindows(fast, walk, useShared));
        TakeMinor(walk.scatter, part);
        walk.scattered = end;
    }

    void ScatterTails(Side& side, Walk& walk) {
        for (int g = 0; g < kRaysInGroup; ++g) {
            const std::int32_t from = walk.plan.lead[g] + walk.plan.common;
            for (std::int32_t i = from; i < walk.plan.rays[g].steps; ++i) {
                ScatterStep(side, walk, g, i, i < walk.safe[g], side.fast.own[g]);
            }
        }
    }

    void ScatterStep(Side& side, Walk& walk, int g, std::int32_t i, bool mustTest,
                     const WindowTable& table) {
        const Ray& ray = walk.plan.rays[g];
        const WindowPosition& at = *table.From(i);
        const double* high = walk.scatter.line[g] + std::ptrdiff_t{at.high} * kEntry;
        const double* low = walk.scatter.line[g] + std::ptrdiff_t{at.low} * kEntry;
        ChannelArray<double, kChannels> value;
        for (int c = 0; c < kChannels; ++c) {
            const double sum = at.highKeep * high[c] + at.highNext * high[c + kEntry] -
                               at.lowNext * low[c - kEntry] - at.lowKeep * low[c];
            value[c] = sum / at.divisor;
        }
        this->SplatStep(side, ray, mustTest, ray.start + ray.sign * i, walk.scatter.minor[g],
                        value);
        walk.scatter.minor[g] += ray.slope;
    }

    const RayKernels* kernels_ = SelectRayKernels();
};

}  // namespace mv
