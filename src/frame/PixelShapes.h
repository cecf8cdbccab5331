// The eighteen host pixel types: three layouts, with and without alpha, in three sample types.
// Layouts without alpha keep the index that their type name has; no code reads it.
#pragma once

#include "image/PixelRGB.h"

namespace mv {

template <class T, int white>
using GrayPixel = PixelRGB<LayoutGrayPixel<-1>, T, false, false, white>;

template <class T, int white>
using GrayAlphaPixel = PixelRGB<LayoutGrayPixel<1>, T, true, false, white>;

template <class T, int white>
using TwoChannelPixel = PixelRGB<Layout2ChannelPixel<0>, T, false, false, white>;

template <class T, int white>
using TwoChannelAlphaPixel = PixelRGB<Layout2ChannelPixel<2>, T, true, false, white>;

template <class T, int white>
using RGBPixel = PixelRGB<LayoutRGBAPixel<0, 1, 2, 3>, T, false, false, white>;

template <class T, int white>
using RGBAlphaPixel = PixelRGB<LayoutRGBAPixel<0, 1, 2, 3>, T, true, false, white>;

}  // namespace mv
