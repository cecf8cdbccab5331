#pragma once

#include "effect/RayBlurFilter.h"
#include "effect/SpectralWindow.h"
#include "effect/kernels/SpectralKernels.h"

namespace mv {

// The blur of the mode "abberative": the window of each pixel is cut into five segments, and each
// colour has its own weights over them, so that a streak runs through the colours along its
// length. Windows cut at the end of a line are true means and do not get dimmer.
template <class Image, class AccumulatorPixel, class Selection>
class VolumetricAbberationFilter final
    : public RayBlurFilter<VolumetricAbberationFilter<Image, AccumulatorPixel, Selection>, Image,
                           AccumulatorPixel, Selection> {
    using Base = RayBlurFilter<VolumetricAbberationFilter, Image, AccumulatorPixel, Selection>;
    friend Base;
    friend typename Base::Side;
    using Base::kChannels;
    using Base::kColors;
    using Side = typename Base::Side;

    static constexpr int kLineCount = 5;
    static constexpr const char* kName = "VolumetricAbberationFilter";

public:
    using Base::Base;

    bool invert_gradient = false;

private:
    // lines: samples, then sums upward once and twice, then downward once and twice. Beyond the
    // line the downward sums start anew on every ray: 0 at n + 1, the recursion's value at n + 2.
    void BuildTables(double* const* lines, std::int32_t n) const {
        const double* s = lines[0];
        for (int c = 0; c < kChannels; ++c) {
            double once = 0.0;
            double twice = 0.0;
            for (std::int32_t k = 0; k <= n + 1; ++k) {
                once = once + s[k * kChannels + c];
                twice = twice + once;
                lines[1][k * kChannels + c] = once;
                lines[2][k * kChannels + c] = twice;
            }
            lines[3][(n + 2) * kChannels + c] = -s[(n + 1) * kChannels + c];
            lines[4][(n + 2) * kChannels + c] = 0.0;
            lines[3][(n + 1) * kChannels + c] = 0.0;
            lines[4][(n + 1) * kChannels + c] = 0.0;
            once = 0.0;
            twice = 0.0;
            for (std::int32_t k = n; k >= -2; --k) {
                once = once + s[k * kChannels + c];
                twice = twice + once;
                lines[3][k * kChannels + c] = once;
                lines[4][k * kChannels + c] = twice;
            }
        }
    }

    void Value(double* out, const double* const* lines, std::int32_t n, std::int32_t i,
               double length) const {
        const SpectralTables tables{lines[1], lines[2], lines[3], lines[4]};
        SpectralWindow<kColors, kChannels>(out, length, this->zoomStart, i, n, tables,
                                           invert_gradient);
    }

    // The lines of four rays, a ray to a lane.
    struct FastState {
        SpectralLines lines{};
    };

    static constexpr std::ptrdiff_t kStride = kChannels * kRaysInGroup;
    static constexpr int kFastLineCount = 4;

    std::uint64_t FastDoubles() const {
        if (kernels_ == nullptr || this->HasSelection()) {
            return 0;
        }
        return kFastLineCount * LineDoubles();
    }

    // Steps that a ray of a group may walk before the first common one: none from inside.
    std::int32_t MostLead() const {
        return HasCenter(this->field_) ? 0 : std::min(this->LongestLine(), 2048);
    }

    std::uint64_t LineDoubles() const {
        return static_cast<std::uint64_t>(MostLead() + this->LongestLine() + kLineSlack) * kStride;
    }

    void PrepareFast(Side& side) const {
        double* memory = side.fastBuffer + (kLineLead + MostLead()) * kStride;
        const auto next = static_cast<std::ptrdiff_t>(LineDoubles());
        side.fast.lines = {memory, memory + next, memory + 2 * next, memory + 3 * next};
    }

    bool BlurGroup(Side& side, const Ray* rays) {
        RayGroupPlan plan;
        if (!plan.Make(rays) ||
            *std::max_element(plan.lead, plan.lead + kRaysInGroup) > MostLead()) {
            return false;
        }
        SampleGroup(side, plan);
        SumGroup(side.fast.lines, plan);
        ScatterGroup(side, plan);
        return true;
    }

    // Steps from the first common one to the end of the longest line.
    static std::int32_t MostSteps(const RayGroupPlan& plan) {
        std::int32_t most = plan.common;
        for (int g = 0; g < kRaysInGroup; ++g) {
            most = std::max(most, plan.rays[g].steps - plan.lead[g]);
        }
        return most;
    }

    // Channel 0 of an entry of ray g.
    static double* Entry(double* line, std::int32_t k, int g) {
        return line + static_cast<std::ptrdiff_t>(k) * kStride + g;
    }

    // Steps that not all rays have go alone; then each line is extended by its last sample, two
    // entries beyond the longest, and by its first.
    void SampleGroup(const Side& side, const RayGroupPlan& plan) const {
        const SpectralLines& lines = side.fast.lines;
        RayGroup group = this->MakeGroup(side, plan);
        for (int g = 0; g < kRaysInGroup; ++g) {
            group.minor[g] = plan.rays[g].minor;
            SampleAlone(side, plan, g, -plan.lead[g], 0, group.minor[g]);
            SumUp(lines, g, -plan.lead[g], 0);
        }
        group.steps = plan.common;
        kernels_->sample[kChannels](group, lines);
        const std::int32_t end = MostSteps(plan) + 2;
        for (int g = 0; g < kRaysInGroup; ++g) {
            const std::int32_t first = -plan.lead[g];
            const std::int32_t behind = first + plan.rays[g].steps;
            SampleAlone(side, plan, g, plan.common, behind, group.minor[g]);
            for (int c = 0; c < kChannels; ++c) {
                const std::ptrdiff_t channel = c * kRaysInGroup;
                const double last = Entry(lines.down1, behind - 1, g)[channel];
                for (std::int32_t k = behind; k < end; ++k) {
                    Entry(lines.down1, k, g)[channel] = last;
                }
                Entry(lines.down1, first - 1, g)[channel] = Entry(lines.down1, first, g)[channel];
                Entry(lines.down1, first - 2, g)[channel] = Entry(lines.down1, first, g)[channel];
            }
        }
    }

    // Entries from to end - 1 of ray g.
    void SampleAlone(const Side& side, const RayGroupPlan& plan, int g, std::int32_t from,
                     std::int32_t end, double& minor) const {
        const Ray& ray = plan.rays[g];
        for (std::int32_t k = from; k < end; ++k, minor += ray.slope) {
            ChannelArray<double, kChannels> sample;
            this->SamplePixel(side, ray, plan.firstMajor + ray.sign * k, minor, sample);
            for (int c = 0; c < kChannels; ++c) {
                Entry(side.fast.lines.down1, k, g)[c * kRaysInGroup] = sample[c];
            }
        }
    }

    // Entries from to end - 1 of ray g, onto nothing, which two entries before them are, too.
    static void SumUp(const SpectralLines& lines, int g, std::int32_t from, std::int32_t end) {
        for (int c = 0; c < kChannels; ++c) {
            for (double* line : {lines.up1, lines.up2}) {
                Entry(line, from - 2, g)[c * kRaysInGroup] = 0.0;
                Entry(line, from - 1, g)[c * kRaysInGroup] = 0.0;
            }
        }
        SumUpFurther(lines, g, from, end);
    }

    static void SumUpFurther(const SpectralLines& lines, int g, std::int32_t from,
                             std::int32_t end) {
        for (int c = 0; c < kChannels; ++c) {
            const std::ptrdiff_t channel = c * kRaysInGroup;
            double once = Entry(lines.up1, from - 1, g)[channel];
            double twice = Entry(lines.up2, from - 1, g)[channel];
            for (std::int32_t k = from; k < end; ++k) {
                once = once + Entry(lines.down1, k, g)[channel];
                twice = twice + once;
                Entry(lines.up1, k, g)[channel] = once;
                Entry(lines.up2, k, g)[channel] = twice;
            }
        }
    }

    // Entries from down to the last one, onto the one above.
    static void SumDown(const SpectralLines& lines, int g, std::int32_t from, std::int32_t last) {
        for (int c = 0; c < kChannels; ++c) {
            const std::ptrdiff_t channel = c * kRaysInGroup;
            double once = Entry(lines.down1, from + 1, g)[channel];
            double twice = Entry(lines.down2, from + 1, g)[channel];
            for (std::int32_t k = from; k >= last; --k) {
                once = once + Entry(lines.down1, k, g)[channel];
                twice = twice + once;
                Entry(lines.down1, k, g)[channel] = once;
                Entry(lines.down2, k, g)[channel] = twice;
            }
        }
    }

    // Upward behind what all four rays have, and downward; the downward sums of each ray start
    // beyond its own end.
    void SumGroup(const SpectralLines& lines, const RayGroupPlan& plan) const {
        const std::int32_t end = MostSteps(plan) + 2;
        for (int g = 0; g < kRaysInGroup; ++g) {
            SumUpFurther(lines, g, plan.common, end);
            const std::int32_t n = plan.rays[g].steps - plan.lead[g];
            for (int c = 0; c < kChannels; ++c) {
                const std::ptrdiff_t channel = c * kRaysInGroup;
                Entry(lines.down1, n + 2, g)[channel] = -Entry(lines.down1, n + 1, g)[channel];
                Entry(lines.down2, n + 2, g)[channel] = 0.0;
                Entry(lines.down1, n + 1, g)[channel] = 0.0;
                Entry(lines.down2, n + 1, g)[channel] = 0.0;
            }
            SumDown(lines, g, n, plan.common + 1);
        }
        kernels_->sumDown[kChannels](lines, plan.common);
        for (int g = 0; g < kRaysInGroup; ++g) {
            SumDown(lines, g, -3, -2 - plan.lead[g]);
        }
    }

    SpectralRule RuleOfGroup(const RayGroupPlan& plan) const {
        SpectralRule rule{};
        for (int g = 0; g < kRaysInGroup; ++g) {
            const WindowRule ray = this->RuleOf(plan.rays[g]);
            rule.startDistance[g] = ray.startDistance;
            rule.holdout[g] = ray.holdout;
            rule.lead[g] = plan.lead[g];
            rule.steps[g] = plan.rays[g].steps;
        }
        rule.fewestSteps = plan.common;
        rule.strength = this->strength;
        rule.zoomStart = this->zoomStart;
        rule.isShared = this->AreWindowsAlike();
        rule.areAsLong = MostSteps(plan) == plan.common;
        rule.invertGradient = invert_gradient;
        return rule;
    }

    void ScatterGroup(Side& side, const RayGroupPlan& plan) {
        RayGroup group = this->MakeGroup(side, plan);
        std::int32_t safe[kRaysInGroup];
        std::int32_t tested = 0;
        for (int g = 0; g < kRaysInGroup; ++g) {
            const std::int32_t lead = plan.lead[g];
            group.minor[g] = plan.rays[g].minor;
            safe[g] = side.zone.SafeStep(plan.rays[g]) - lead;
            tested = std::max(tested, safe[g]);
            for (std::int32_t k = -lead; k < 0; ++k) {
                ScatterStep(side, plan, g, k, k < safe[g], group.minor[g]);
            }
        }
        tested = std::min(tested, plan.common);
        for (std::int32_t k = 0; k < tested; ++k) {
            for (int g = 0; g < kRaysInGroup; ++g) {
                ScatterStep(side, plan, g, k, true, group.minor[g]);
            }
        }
        group.lane += tested;
        group.steps = plan.common - tested;
        constexpr int hasAlpha = kChannels > kColors ? 1 : 0;
        kernels_->scatter[kChannels][hasAlpha](group, side.fast.lines, RuleOfGroup(plan), tested);
        for (int g = 0; g < kRaysInGroup; ++g) {
            const std::int32_t end = plan.rays[g].steps - plan.lead[g];
            for (std::int32_t k = plan.common; k < end; ++k) {
                ScatterStep(side, plan, g, k, k < safe[g], group.minor[g]);
            }
        }
    }

    // One step of one ray, at entry k, from its lane of the lines.
    void ScatterStep(Side& side, const RayGroupPlan& plan, int g, std::int32_t k, bool mustTest,
                     double& minor) {
        const SpectralLines& lines = side.fast.lines;
        const Ray& ray = plan.rays[g];
        const std::int32_t i = plan.lead[g] + k;
        const std::int32_t first = -plan.lead[g];
        const SpectralTables tables{Entry(lines.up1, first, g), Entry(lines.up2, first, g),
                                    Entry(lines.down1, first, g), Entry(lines.down2, first, g)};
        ChannelArray<double, kChannels> value;
        SpectralWindow<kColors, kChannels, kRaysInGroup>(
            value, WindowLength(this->RuleOf(ray), i, 1.0), this->zoomStart, i, ray.steps, tables,
            invert_gradient);
        this->SplatStep(side, ray, mustTest, plan.firstMajor + ray.sign * k, minor, value);
        minor += ray.slope;
    }

    const SpectralKernels* kernels_ = SelectSpectralKernels();
};

}  // namespace mv
