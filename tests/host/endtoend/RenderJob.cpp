#include "RenderJob.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <sstream>

namespace endtoend {
namespace {

using hostapi::FourCharacterCode;

std::size_t Bytes(int rows, int rowBytes) {
    return static_cast<std::size_t>(rows) * static_cast<std::size_t>(rowBytes);
}

std::int16_t Short(int value) {
    return static_cast<std::int16_t>(value);
}

}  // namespace

void RenderJob::Allocate(int inputPadding, int outputPadding, int maskPadding, bool withMask) {
    inputRowBytes = width * PixelBytes() + inputPadding;
    outputRowBytes = width * PixelBytes() + outputPadding;
    maskRowBytes = width + maskPadding;
    input.assign(Bytes(height, inputRowBytes), 0);
    output.assign(Bytes(height, outputRowBytes), 0x5A);
    mask.assign(withMask ? Bytes(height, maskRowBytes) : 0, 255);
}

double RenderJob::Get(int x, int y, int plane) const {
    const std::uint8_t* at = input.data() + Bytes(y, inputRowBytes) +
                             static_cast<std::size_t>(x * PixelBytes() + plane * SampleBytes());
    if (facts.depth == 16) {
        std::uint16_t word = 0;
        std::memcpy(&word, at, sizeof word);
        return word;
    }
    if (facts.depth == 32) {
        float single = 0.0f;
        std::memcpy(&single, at, sizeof single);
        return static_cast<double>(single);
    }
    return *at;
}

void RenderJob::Set(int x, int y, int plane, double value) {
    std::uint8_t* at = input.data() + Bytes(y, inputRowBytes) +
                       static_cast<std::size_t>(x * PixelBytes() + plane * SampleBytes());
    if (facts.depth == 16) {
        const auto word = static_cast<std::uint16_t>(value);
        std::memcpy(at, &word, sizeof word);
    } else if (facts.depth == 32) {
        const auto single = static_cast<float>(value);
        std::memcpy(at, &single, sizeof single);
    } else {
        *at = static_cast<std::uint8_t>(value);
    }
}

RenderJob PlainJob(int width, int height, int colors, bool alpha, int depth, double fraction) {
    RenderJob job;
    job.width = width;
    job.height = height;
    job.facts.depth = depth;
    job.facts.planes = colors + (alpha ? 1 : 0);
    job.facts.layerPlanes = colors;
    job.facts.transparencyMask = alpha ? 1 : 0;
    if (colors == 1) {
        job.facts.imageMode = depth == 32 ? 17 : depth == 16 ? 10 : 1;
    } else if (colors == 2) {
        job.facts.imageMode = depth == 16 ? 14 : 7;
    } else {
        job.facts.imageMode = depth == 32 ? 16 : depth == 16 ? 11 : 3;
    }
    job.Allocate(0, 0, 0, false);
    const double white = depth == 32 ? 1.0 : depth == 16 ? 32768.0 : 255.0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (int plane = 0; plane < job.facts.planes; ++plane) {
                job.Set(x, y, plane, plane == colors ? white : fraction * white);
            }
        }
    }
    return job;
}

mv::host::ScriptValues ScriptOf(const oracle::Settings& s) {
    return {{FourCharacterCode("ORIX"), s.originX},
            {FourCharacterCode("ORIY"), s.originY},
            {FourCharacterCode("INTE"), s.intensity},
            {FourCharacterCode("STRE"), s.strength},
            {FourCharacterCode("ZOST"), s.zoomStart},
            {FourCharacterCode("HORA"), s.holdoutRadius},
            {FourCharacterCode("MODE"), std::int32_t{s.mode}},
            {FourCharacterCode("INGR"), s.invertGradient},
            {FourCharacterCode("GAMA"), s.gammaCorrection},
            {FourCharacterCode("CONT"), s.contrast},
            {FourCharacterCode("GAMC"), s.gammaCorrective},
            {FourCharacterCode("HSLH"), s.hue},
            {FourCharacterCode("HSLS"), s.saturation},
            {FourCharacterCode("HSLL"), s.lightness},
            {FourCharacterCode("SELL"), s.selectionLow},
            {FourCharacterCode("SELH"), s.selectionHigh},
            {FourCharacterCode("SELS"), s.selectionSoften},
            {FourCharacterCode("SELC"), s.selectionClimax},
            {FourCharacterCode("USES"), s.useSizeSelection},
            {FourCharacterCode("BLND"), std::int32_t{s.blendMode}},
            {FourCharacterCode("SHOW"), std::int32_t{s.selectionShow}}};
}

// The host's own picture has the size only: its buffers are exchanged for the job's.
mv::host::HostDocument DocumentOf(const RenderJob& job) {
    mv::host::HostDocument document;
    const int planes = job.facts.planes > 0 ? job.facts.planes : 1;
    document.image = mv::host::HostImage(job.width, job.height, planes, 8 * job.SampleBytes());
    document.imageMode = Short(job.facts.imageMode);
    document.depthStated = job.facts.depth;
    document.planesStated = Short(planes);
    document.layerPlanes = Short(job.facts.layerPlanes);
    document.transparencyMask = Short(job.facts.transparencyMask);
    document.nonLayerPlanes = Short(job.facts.nonLayerPlanes);
    if (!job.mask.empty()) {
        document.mask.assign(Bytes(job.height, job.width), 255);
    }
    return document;
}

JobSession::JobSession(const RenderJob& job, mv::host::HostOffer offer, mv::host::HostFaults faults,
                       hostapi::EntryPoint entry)
    : job_(job),
      session_(
          entry, DocumentOf(job),
          [&offer] {
              offer.placement = mv::host::Placement::GuardPage;
              return offer;
          }(),
          std::move(faults)),
      input_(job.input.size()),
      output_(job.output.size()) {
    if (!job.mask.empty()) {
        mask_ = std::make_unique<GuardedBytes>(job.mask.size());
        std::copy(job.mask.begin(), job.mask.end(), mask_->Data());
    }
    std::copy(job.input.begin(), job.input.end(), input_.Data());
    std::copy(job.output.begin(), job.output.end(), output_.Data());
    session_.Hooks().afterAdvance = [this](hostapi::FilterRecord& record) { Deliver(record); };
}

void JobSession::Deliver(hostapi::FilterRecord& record) {
    // No host delivers no planes; one that says so says it afterwards.
    record.planes = Short(job_.facts.planes);
    record.inData = input_.Data();
    record.inRowBytes = job_.inputRowBytes;
    record.outData = output_.Data();
    record.outRowBytes = job_.outputRowBytes;
    record.maskData = mask_ ? mask_->Data() : nullptr;
    record.maskRowBytes = mask_ ? job_.maskRowBytes : 0;
}

hostapi::OSErr JobSession::Start() {
    session_.Play(ScriptOf(job_.settings));
    const hostapi::OSErr prepared = session_.Call(hostapi::filterSelectorPrepare);
    return prepared != hostapi::noErr ? prepared : session_.Call(hostapi::filterSelectorStart);
}

std::vector<std::uint8_t> JobSession::Output() const {
    return {output_.Data(), output_.Data() + output_.Size()};
}

std::string JobSession::Reproach() const {
    std::ostringstream text;
    const mv::host::SessionCounts counts = session_.Counts();
    if (counts.buffersLive != 0) {
        text << counts.buffersLive << " buffers left; ";
    }
    if (counts.suitesHeld != 0 || counts.suitesAcquired != counts.suitesReleased) {
        text << "suites held; ";
    }
    if (counts.descriptorTokensOpen != 0) {
        text << "descriptor tokens open; ";
    }
    // The descriptor that was recorded stays with the host.
    if (counts.handlesLive > 1) {
        text << counts.handlesLive << " handles left; ";
    }
    for (const std::string& complaint : session_.GetComplaints()) {
        text << complaint << "; ";
    }
    if (!input_.FrontIntact() || !output_.FrontIntact() || (mask_ && !mask_->FrontIntact())) {
        text << "bytes in front of a buffer were written; ";
    }
    if (!std::equal(job_.input.begin(), job_.input.end(), input_.Data())) {
        text << "the source was written to; ";
    }
    const auto& record = const_cast<mv::host::HostSession&>(session_).Record();
    const hostapi::Rect none{};
    if (std::memcmp(&record.inRect, &none, sizeof none) != 0 ||
        std::memcmp(&record.outRect, &none, sizeof none) != 0 ||
        std::memcmp(&record.maskRect, &none, sizeof none) != 0) {
        text << "rectangles were not cleared; ";
    }
    return text.str();
}

std::vector<std::uint8_t> ExpectedOutput(const RenderJob& job) {
    std::vector<std::uint8_t> output = job.output;
    const std::optional<oracle::Shape> shape = oracle::ChooseShape(job.facts);
    if (shape) {
        oracle::Job work;
        work.width = job.width;
        work.height = job.height;
        work.shape = *shape;
        work.planes = job.facts.planes;
        work.input = job.input.data();
        work.inputRowBytes = job.inputRowBytes;
        work.output = output.data();
        work.outputRowBytes = job.outputRowBytes;
        work.mask = job.mask.empty() ? nullptr : job.mask.data();
        work.maskRowBytes = job.maskRowBytes;
        work.settings = oracle::Validated(job.settings);
        oracle::Render(work);
    }
    return output;
}

std::vector<std::uint8_t> RenderedOutput(const RenderJob& job) {
    JobSession session(job);
    EXPECT_EQ(session.Start(), hostapi::noErr) << Describe(job);
    EXPECT_EQ(session.Reproach(), "") << Describe(job);
    return session.Output();
}

void ExpectSameBytes(const RenderJob& job) {
    EXPECT_EQ(Difference(job, RenderedOutput(job), ExpectedOutput(job)), "");
}

std::string Difference(const RenderJob& job, const std::vector<std::uint8_t>& actual,
                       const std::vector<std::uint8_t>& expected) {
    if (actual == expected) {
        return {};
    }
    RenderJob left = job;
    RenderJob right = job;
    left.input = actual;
    left.inputRowBytes = job.outputRowBytes;
    right.input = expected;
    right.inputRowBytes = job.outputRowBytes;
    std::ostringstream text;
    text.precision(9);
    int count = 0;
    for (int y = 0; y < job.height; ++y) {
        for (int x = 0; x < job.width; ++x) {
            for (int plane = 0; plane < job.facts.planes; ++plane) {
                const double a = left.Get(x, y, plane);
                const double b = right.Get(x, y, plane);
                if ((a == b && std::signbit(a) == std::signbit(b)) ||
                    (std::isnan(a) && std::isnan(b))) {
                    continue;
                }
                if (++count <= 5) {
                    text << "pixel (" << x << ", " << y << ") plane " << plane << ": " << a
                         << " instead of " << b << "; ";
                }
            }
        }
    }
    text << count << " samples of " << job.width * job.height * job.facts.planes << " differ\n"
         << Describe(job);
    return text.str();
}

std::string Describe(const RenderJob& job) {
    const oracle::Settings& s = job.settings;
    std::ostringstream text;
    text.precision(17);
    text << job.width << " x " << job.height << ", mode " << job.facts.imageMode << ", depth "
         << job.facts.depth << ", planes " << job.facts.planes << ", layer planes "
         << job.facts.layerPlanes << ", transparency " << job.facts.transparencyMask
         << ", other planes " << job.facts.nonLayerPlanes << ", mask " << !job.mask.empty()
         << ", origin " << s.originX << " " << s.originY << ", intensity " << s.intensity
         << ", strength " << s.strength << ", start " << s.zoomStart << ", holdout "
         << s.holdoutRadius << ", mode " << s.mode << ", invert " << s.invertGradient << ", gamma "
         << s.gammaCorrection << " " << s.gammaCorrective << ", contrast " << s.contrast << ", hsl "
         << s.hue << " " << s.saturation << " " << s.lightness << ", selection " << s.selectionLow
         << " " << s.selectionHigh << " " << s.selectionSoften << " " << s.selectionClimax
         << ", size selection " << s.useSizeSelection << ", blend " << s.blendMode << ", show "
         << s.selectionShow;
    return text.str();
}

}  // namespace endtoend
