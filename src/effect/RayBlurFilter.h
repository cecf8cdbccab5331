// The frame that both blurs share: rays of four sides, lines, scatter, normalisation.
#pragma once

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>

#include "diagnostics/Log.h"
#include "effect/ClearImageFilter.h"
#include "effect/RayBlurMemory.h"
#include "effect/RayGeometry.h"
#include "effect/RayGroupPlan.h"
#include "effect/RaySector.h"
#include "effect/RaySide.h"
#include "effect/WindowTable.h"
#include "image/MorvenhaleFilter.h"

namespace mv {

// A smear along the lines through one centre, at a cost that does not depend on its length.
// Rays run from the centre to every border pixel; each is resampled into a line, and what Blur
// (the derived class) makes of the window around each of its pixels is scattered, weighted, into
// an accumulator, which is divided by its weights at the end. The four sides run in parallel
// and give the sums of the four one after the other. The plain form accumulates the whole picture;
// the fast form keeps the sums of seams between sectors of rays, and of what rays pass at present.
// Lives on its caller's stack.
//
// Blur gives: kLineCount, kName, and
//   void BuildTables(double* const* lines, std::int32_t n)
//   void Value(double* out, const double* const* lines, std::int32_t n, std::int32_t i, double L)
// and for the fast form
//   std::uint64_t FastDoubles(), void PrepareFast(Side&), bool BlurGroup(Side&, const Ray*)
// which blurs four neighbouring rays, or refuses those that need the plain form.
template <class Blur, class Image, class AccumulatorPixel, class Selection>
class RayBlurFilter : public MorvenhaleFilter {
protected:
    using Accumulator = PixelArray<AccumulatorPixel, 0, false>;
    static constexpr int kChannels = Image::Pixel_t::kChannels;
    static constexpr int kColors = Image::Pixel_t::kColors;

public:
    using MorvenhaleFilter::MorvenhaleFilter;

    Image imageIn;
    Image imageOut;
    // Scales the blur length per pixel; without data there is no scale.
    Selection imageSelection;
    double zoomStart = 0.5;
    double strength = 0.0;
    std::int32_t centerX = 0;
    std::int32_t centerY = 0;
    double holdoutRadius = 0.0;
    // Where the picture comes from and goes to, instead of the images' data; see CanStream.
    PictureStream* stream = nullptr;

    // Whether the picture, of which the images need all but the data, may come as a stream. To be
    // asked before one is set.
    bool CanStream() {
        Divide();
        return IsFast() && std::min(field_.width, field_.height) >= SectorWindow::kLeastSize;
    }

    virtual std::int32_t render(std::uint32_t position, std::uint32_t range) {
        WriteLog(kTrace, Blur::kName, "<C_Image, C_ImageSelection>::render()");
        const LogScope scope;
        progressPosition_ = position;
        progressRange_ = range;
        SidePlaces<Side> places;
        places.SetCount(host_->GetThreadCount(kSideCount));
        places_ = &places;
        if (!AllocateSums() || !AllocatePlaces()) {
            Free();
            return host_->StatusOutOfMemory();
        }
        totalSteps_ = static_cast<std::uint32_t>(3 * imageIn.height + 2 * imageIn.width);
        stepsDone_ = 0;
        const std::int32_t status = RunStages();
        Free();
        return status;
    }

    // One side of the image: thread_index 0 to 3.
    std::int32_t render_chunk(std::uint32_t thread_index, std::uint32_t thread_iterations,
                              std::uint32_t threadID) {
        WriteLog(kTrace, Blur::kName, "<C_Image, C_ImageSelection>::render_chunk(thread_index(",
                 thread_index, "), thread_iterations(", thread_iterations, "), threadID(", threadID,
                 "))");
        const typename SidePlaces<Side>::Stay stay(*places_);
        Side& side = stay.Get();
        BeginSide(side, thread_index);
        std::int32_t status = host_->StatusOk();
        const SideSectors& sectors = memory_.sums.Sectors(thread_index);
        for (int i = 0; i < sectors.count && IsOk(status); ++i) {
            status = BlurSector(side, sectors.sectors[i]);
        }
        sideStatus_[thread_index] = status;
        return status;
    }

protected:
    using Side = RaySide<Blur, kChannels>;

    std::int32_t LongestLine() const { return std::max(imageIn.width, imageIn.height); }

    bool HasSelection() const { return imageSelection.data != nullptr; }

    // The rays of all sides start at the centre, at the same distance 0 and without a holdout. Of
    // windows that are longer than coordinates are exact, those that a line's end cuts need not
    // come last, as who shares windows takes for granted.
    bool AreWindowsAlike() const {
        constexpr double kLongest = 1e12;
        const double reach = strength * LongestLine() * (std::fabs(zoomStart) + 1.0);
        return reach < kLongest && HasCenter(field_) && holdoutRadius == 0.0;
    }

    RayField field_{};

private:
    void Divide() {
        field_ = {imageIn.width, imageIn.height, centerX - imageIn.origin_x,
                  centerY - imageIn.origin_y};
        memory_.sums.Divide(field_);
    }

    bool IsFast() const { return static_cast<const Blur*>(this)->FastDoubles() != 0; }

    bool AllocateSums() {
        if (stream == nullptr) {
            Divide();
        }
        return (!IsFast() || memory_.AllocateSeams()) &&
               (stream == nullptr || memory_.AllocateStream(field_, places_->Count())) &&
               memory_.AllocateAccumulator(imageIn);
    }

    void Free() {
        memory_.Free();
        for (std::uint32_t i = 0; i < places_->Count(); ++i) {
            places_->At(i).Free(*host_);
        }
    }

    std::int32_t BlurSector(Side& side, const RaySector& sector) {
        if (stream != nullptr) {
            return StreamSector(side, sector);
        }
        side.pixels = LanePixelsOf(imageIn, sector.IsXMajor());
        if (side.fastBuffer != nullptr) {
            side.sums.Begin(sector, LanePixelsOf(imageOut, sector.IsXMajor()));
        }
        const std::int32_t status = BlurRays(side, sector.FirstRay(), sector.LastRay());
        if (side.fastBuffer != nullptr && IsOk(status)) {
            side.sums.End();
            for (std::int32_t lane = 0; lane < side.sums.LaneCount(); ++lane) {
                side.sums.ClearUnreached(lane, INT32_MIN, INT32_MAX);
            }
        }
        return status;
    }

    // A window follows the rays.
    std::int32_t StreamSector(Side& side, const RaySector& sector) {
        std::int32_t status = host_->StatusOk();
        const std::int32_t most =
            stream->IsSlow() ? SectorWindow::kFewRays : SectorWindow::kMostRays;
        side.pixels = side.window.Begin(sector, RayOf(side, sector.FirstRay()));
        side.sums.Begin(sector, side.pixels);
        for (std::int32_t k = sector.FirstRay(); k <= sector.LastRay() && IsOk(status);) {
            const std::int32_t last = std::min(k + most - 1, sector.LastRay());
            side.window.ReadTo(RayOf(side, last));
            status = BlurRays(side, k, last);
            if (IsOk(status)) {
                side.window.WriteBehind(side.sums,
                                        RayOf(side, std::max(last - kRaysInGroup + 1, k)));
                status = ReportAgain();
            }
            k = last + 1;
        }
        if (IsOk(status)) {
            side.sums.End();
            side.window.End(side.sums);
        }
        return status;
    }

    Ray RayOf(const Side& side, std::int32_t k) const {
        return MakeRay(field_, EndPixel(field_, side.index, k));
    }

    std::int32_t BlurRays(Side& side, std::int32_t k, std::int32_t last) {
        std::int32_t status = host_->StatusOk();
        while (k <= last && IsOk(status)) {
            const std::int32_t done = BlurNext(side, k, last);
            k += done;
            for (std::int32_t i = 0; i < done && IsOk(status); ++i) {
                status = side.isOutOfMemory ? host_->StatusOutOfMemory() : ReportStepDone();
            }
        }
        return status;
    }

    // Four rays at a time where they walk alike, one by one elsewhere. Gives how many.
    std::int32_t BlurNext(Side& side, std::int32_t k, std::int32_t rays) {
        auto* blur = static_cast<Blur*>(this);
        if (side.fastBuffer != nullptr && k + kRaysInGroup - 1 <= rays) {
            Ray group[kRaysInGroup];
            for (std::int32_t g = 0; g < kRaysInGroup; ++g) {
                group[g] = RayOf(side, k + g);
            }
            if (blur->BlurGroup(side, group)) {
                return kRaysInGroup;
            }
        }
        BlurRay(side, RayOf(side, k));
        return 1;
    }

    std::int32_t RunStages() {
        ClearImageFilter<Accumulator> clear(host_);
        clear.image = memory_.sums.accumulator;
        std::int32_t status = clear.render(progressPosition_ * 3, progressRange_ * 3);
        if (IsOk(status)) {
            status = RunSides();
        }
        if (IsOk(status)) {
            const MeasuringPoint point(host_->GetActiveMeasurements(), "normalization");
            status = host_->Iterate(static_cast<std::int32_t>(kSideCount),
                                    [this](unsigned index, unsigned count, unsigned) {
                                        return static_cast<unsigned>(Normalize(index, count));
                                    });
        }
        if (IsOk(status) && stream != nullptr) {
            const MeasuringPoint point(host_->GetActiveMeasurements(), "composition of seams");
            status = host_->Iterate(static_cast<std::int32_t>(kSideCount),
                                    [this](unsigned index, unsigned count, unsigned) {
                                        return static_cast<unsigned>(WriteKept(index, count));
                                    });
        }
        return status;
    }

    // A side that failed on another thread fails the render: its rays are missing.
    std::int32_t RunSides() {
        const MeasuringPoint point(host_->GetActiveMeasurements(),
                                   stream != nullptr ? "selection to composition" : "rays");
        std::fill(sideStatus_, sideStatus_ + kSideCount, host_->StatusOk());
        std::int32_t status =
            host_->Iterate(static_cast<std::int32_t>(kSideCount),
                           [this](unsigned index, unsigned count, unsigned id) {
                               return static_cast<unsigned>(memory_.sums.IsLate(index)
                                                                ? host_->StatusOk()
                                                                : render_chunk(index, count, id));
                           });
        for (std::uint32_t side = 0; side < kSideCount && IsOk(status); ++side) {
            status = sideStatus_[side];
        }
        for (std::uint32_t side = 0; side < kSideCount; ++side) {
            if (IsOk(status) && memory_.sums.IsLate(side)) {
                status = render_chunk(side, kSideCount, 0);
            } else if (IsOk(status)) {
                status = AddAllLater(memory_.lists[side]);
            }
            memory_.lists[side].Clear();
        }
        return status;
    }

    std::int32_t AddAllLater(const ContributionList<kChannels>& list) {
        std::int32_t status = host_->StatusOk();
        const auto add = [this](const auto& entry) { memory_.sums.Add(entry); };
        list.ForEach(add, [this, &status] { return IsOk(status = ReportAgain()); });
        return status;
    }

    // The host hears that the render goes on, though no step of it is done.
    std::int32_t ReportAgain() {
        const std::uint32_t done = stepsDone_.load(std::memory_order_relaxed);
        return ReportStep(progressPosition_, progressRange_, done, totalSteps_);
    }

    // All before the first ray runs, so that what fails later is not for want of memory.
    bool AllocatePlaces() {
        const std::uint64_t fastDoubles = static_cast<const Blur*>(this)->FastDoubles();
        for (std::uint32_t i = 0; i < places_->Count(); ++i) {
            Side& place = places_->At(i);
            if (!place.Allocate(*host_, LongestLine(), fastDoubles)) {
                return false;
            }
            place.windowMemory = memory_.windows[i];
            if (fastDoubles != 0) {
                static_cast<Blur*>(this)->PrepareFast(place);
            }
        }
        return true;
    }

    void BeginSide(Side& side, std::uint32_t index) {
        side.index = index;
        side.zone = memory_.sums.Zone(index);
        if (side.fastBuffer != nullptr) {
            const std::uint64_t fastDoubles = static_cast<const Blur*>(this)->FastDoubles();
            side.sums.SetUp(side.fastBuffer + fastDoubles, memory_.sums.Target(), index);
        }
        if (stream != nullptr) {
            side.window.SetUp(side.windowMemory, field_, kChannels, index, memory_.kept, *stream);
        }
    }

    void BlurRay(Side& side, const Ray& ray) {
        if (ray.steps == 0) {
            return;
        }
        SampleLine(side, ray, side.lines[0]);
        static_cast<Blur*>(this)->BuildTables(side.lines, ray.steps);
        ScatterLine(side, ray);
    }

protected:
    // All channels are sampled in the same way: alpha is one more channel.
    void SamplePixel(const Side& side, const Ray& ray, std::int32_t major, double minor,
                     double* sample) const {
        const MinorPlace place = PlaceOf(minor, ray.isXMajor ? imageIn.height : imageIn.width);
        const float* first = side.pixels.At(major, place.first);
        const float* second = side.pixels.At(major, place.second);
        for (int c = 0; c < kChannels; ++c) {
            sample[c] = first[c] * (1.0 - place.t) + second[c] * place.t;
        }
    }

    // Scatters one value at a place of the ray, weighted.
    void SplatStep(Side& side, const Ray& ray, bool mustTest, std::int32_t major, double minor,
                   const double* value) {
        const MinorPlace place = PlaceOf(minor, ray.isXMajor ? imageIn.height : imageIn.width);
        if (place.isInside) {
            if (side.fastBuffer != nullptr) {
                side.sums.Pass(side.sums.LaneOf(major), place.first);
            }
            Splat(side, ray, mustTest, major, place.first, 1.0 - place.t, value);
            Splat(side, ray, mustTest, major, place.second, place.t, value);
        }
    }

    void SampleLine(const Side& side, const Ray& ray, double* line) const {
        double minor = ray.minor;
        for (std::int32_t k = 0; k < ray.steps; ++k, minor += ray.slope) {
            SamplePixel(side, ray, ray.start + ray.sign * k, minor, line + k * kChannels);
        }
        for (int c = 0; c < kChannels; ++c) {
            line[-2 * kChannels + c] = line[c];
            line[-1 * kChannels + c] = line[c];
            line[ray.steps * kChannels + c] = line[(ray.steps - 1) * kChannels + c];
            line[(ray.steps + 1) * kChannels + c] = line[(ray.steps - 1) * kChannels + c];
        }
    }

    template <class AnyImage>
    static unsigned char* PixelAt(const AnyImage& image, const Ray& ray, std::int32_t major,
                                  std::int32_t minor) {
        return ray.isXMajor ? image.Pixel(major, minor) : image.Pixel(minor, major);
    }

    // The picture as the kernels see it, from the plan's first common row or column on.
    RayGroup MakeGroup(const Side& side, const RayGroupPlan& plan) const {
        RayGroup group{};
        const Ray& ray = plan.rays[0];
        group.imageMinor = side.pixels.minorStep;
        group.imageMask = side.pixels.minorMask;
        group.imageStep = ray.sign * side.pixels.majorStep;
        group.image = side.pixels.At(plan.firstMajor, 0);
        group.sums = &side.sums.Lanes();
        group.lane = side.sums.LaneOf(plan.firstMajor);
        group.minorSize = ray.isXMajor ? imageIn.height : imageIn.width;
        group.prefetch = plan.Prefetch();
        for (int g = 0; g < kRaysInGroup; ++g) {
            group.slope[g] = plan.rays[g].slope;
        }
        return group;
    }

    // In steps of the ray's major axis.
    WindowRule RuleOf(const Ray& ray) const {
        const double step = std::sqrt(1.0 + ray.slope * ray.slope);
        return {ray.startDistance / step, holdoutRadius / step, strength, zoomStart};
    }

private:
    void ScatterLine(Side& side, const Ray& ray) {
        const double slope = ray.slope;
        const WindowRule rule = RuleOf(ray);
        const std::int32_t safe = side.zone.SafeStep(ray);
        double selection = 1.0;
        double minor = ray.minor;
        for (std::int32_t i = 0; i < ray.steps; ++i, minor += slope) {
            const std::int32_t major = ray.start + ray.sign * i;
            if (HasSelection()) {
                ReadSelection(ray, major, minor, selection);
            }
            const double length = WindowLength(rule, i, selection);
            ChannelArray<double, kChannels> value;
            static_cast<Blur*>(this)->Value(value, side.lines, ray.steps, i, length);
            SplatStep(side, ray, i < safe, major, minor, value);
        }
    }

    // Beside the image the value of the previous read stands.
    void ReadSelection(const Ray& ray, std::int32_t major, double minor, double& value) const {
        const MinorPlace place = PlaceOf(minor, ray.isXMajor ? imageIn.height : imageIn.width);
        if (place.isInside) {
            const double first = *PixelAt(imageSelection, ray, major, place.first);
            const double second = *PixelAt(imageSelection, ray, major, place.second);
            value = (first * (1.0 - place.t) + second * place.t) * kMaskScale;
        }
    }

protected:
    // Adds at once where no earlier side can reach, and to the side's list elsewhere.
    void Splat(Side& side, const Ray& ray, bool mustTest, std::int32_t major, std::int32_t minor,
               double part, const double* value) {
        // Nothing of a sample that is a number adds nothing.
        if (Image::Pixel_t::kWhite != 1 && part == 0.0) {
            return;
        }
        const std::int32_t x = ray.isXMajor ? major : minor;
        const std::int32_t y = ray.isXMajor ? minor : major;
        if (!mustTest || side.zone.Contains(x, y)) {
            ChannelArray<double, kChannels> weighted;
            for (int c = 0; c < kChannels; ++c) {
                weighted[c] = part * value[c];
            }
            BlurSums<Image, AccumulatorPixel>::AddTo(SumsOf(side, x, y, major, minor), weighted,
                                                     static_cast<float>(part));
            return;
        }
        std::uint32_t place = 0;
        if (!memory_.sums.Find(x, y, place)) {
            return;
        }
        auto* entry = memory_.lists[side.index].Append();
        if (entry == nullptr) {
            side.isOutOfMemory = true;
            return;
        }
        entry->pixel = place;
        entry->weight = static_cast<float>(part);
        for (int c = 0; c < kChannels; ++c) {
            entry->value[c] = part * value[c];
        }
    }

private:
    unsigned char* SumsOf(const Side& side, std::int32_t x, std::int32_t y, std::int32_t major,
                          std::int32_t minor) const {
        if (side.fastBuffer != nullptr) {
            return reinterpret_cast<unsigned char*>(side.sums.Sums(side.sums.LaneOf(major), minor));
        }
        return memory_.sums.accumulator.Pixel(x, y);
    }

    std::int32_t Normalize(std::uint32_t index, std::uint32_t count) {
        std::int32_t status = host_->StatusOk();
        const RowBand band = BandOf(imageOut.height, index, count);
        for (std::int32_t y = band.first; y < band.end && IsOk(status); ++y) {
            if (stream != nullptr) {
                memory_.sums.NormalizeRow(memory_.kept, y);
            } else {
                memory_.sums.NormalizeRow(imageOut, y);
            }
            status = ReportStepDone();
        }
        return status;
    }

    std::int32_t WriteKept(std::uint32_t index, std::uint32_t count) {
        std::int32_t status = host_->StatusOk();
        const RowBand band = BandOf(imageOut.height, index, count);
        for (std::int32_t y = band.first; y < band.end && IsOk(status); ++y) {
            memory_.kept.WriteRow(*stream, y);
            status = stream->EndRow(y);
        }
        return status;
    }

    std::int32_t ReportStepDone() {
        const std::uint32_t done = stepsDone_.fetch_add(1, std::memory_order_relaxed);
        return ReportStep(progressPosition_, progressRange_, done, totalSteps_);
    }

    RayBlurMemory<Image, AccumulatorPixel> memory_{host_};
    // Of the render that runs, on its stack.
    SidePlaces<Side>* places_ = nullptr;
    std::int32_t sideStatus_[kSideCount] = {};
    std::uint32_t totalSteps_ = 0;
    std::atomic<std::uint32_t> stepsDone_{0};
    std::uint32_t progressPosition_ = 0;
    std::uint32_t progressRange_ = 1;
};

}  // namespace mv
