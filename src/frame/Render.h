// The body of the typed render. Each pixel shape instantiates it in a source file of its own.
#pragma once

#include "diagnostics/Log.h"
#include "effect/RadialBlurEffect.h"
#include "frame/PixelShapes.h"
#include "frame/pfFilterRadialBlur.h"

namespace mv {

template <class HostPixel>
std::int32_t pfFilterRadialBlur::Render(HostImage<HostPixel>& input, HostImage<HostPixel>& output,
                                        MaskImage& mask, hostapi::FilterRecord*) {
    RadialBlurEffect<HostImage<HostPixel>, MaskImage> effect(this);
    effect.imageIn = input;
    effect.imageOut = output;
    effect.imageSelection = input;
    effect.settings = MakeRenderSettings(output.width, output.height);
    if (effect.settings.useSizeSelection) {
        effect.imageOffset = mask;
    } else {
        effect.imageMult = mask;
    }
    WriteLog(kTrace, "Render()");
    WriteLog(kTrace, "imageIn:", effect.imageIn);
    WriteLog(kTrace, "imageOut:", effect.imageOut);
    WriteLog(kTrace, "imageSelection:", mask);
    WriteLog(kTrace, "imageOffset:", effect.imageOffset);
    WriteLog(kTrace, "imageMult:", effect.imageMult);
    const LogScope scope;
    return static_cast<std::int16_t>(effect.render());
}

}  // namespace mv
