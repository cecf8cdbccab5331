// The in-memory picture that a session serves, and how it is declared to a module.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace mv::host {

// Interleaved samples without row padding: 8 bit 0..255, 16 bit 0..32768, 32 bit float.
// A plain value; whoever holds it owns the samples.
struct HostImage {
    int width = 0;
    int height = 0;
    int planes = 0;
    int depth = 8;  // 8, 16 or 32 bits per sample
    std::vector<std::uint8_t> bytes;

    HostImage() = default;
    HostImage(int imageWidth, int imageHeight, int imagePlanes, int imageDepth);

    std::size_t SampleBytes() const { return static_cast<std::size_t>(depth) / 8; }
    std::size_t PixelBytes() const { return static_cast<std::size_t>(planes) * SampleBytes(); }
    std::size_t RowBytes() const { return static_cast<std::size_t>(width) * PixelBytes(); }
    std::size_t Offset(int x, int y, int plane) const;
    // The sample as a number in its own scale.
    double Get(int x, int y, int plane) const;
    // Stores a number that is in the scale already; integers are rounded and clamped to the type.
    void Set(int x, int y, int plane, double value);
};

// A picture with everything that the record says about it. Any field may be set to something
// else than MakeDocument chose, sensible or not.
struct HostDocument {
    HostImage image;
    std::vector<std::uint8_t> mask;  // width * height, 255 selected; empty: no selection
    std::int16_t imageMode = 3;
    std::int32_t depthStated = 8;  // 0 in hosts from before the field
    std::int16_t planesStated = 3;
    std::int16_t layerPlanes = 0;
    std::int16_t transparencyMask = 0;
    std::int16_t layerMasks = 0;
    std::int16_t invertedLayerMasks = 0;
    std::int16_t nonLayerPlanes = 3;
    std::int16_t filterCase = 1;
    bool isFloating = false;
    double horizontalResolution = 72.0;  // pixels per inch
    double verticalResolution = 72.0;
};

// Declares a gray (1 colour) or RGB (3 colours) image as published hosts do: without alpha it is
// flat, its colours counted as planes of no layer; with alpha it is a layer with editable
// transparency. The image has colours + (alpha ? 1 : 0) planes.
HostDocument MakeDocument(HostImage image, bool alpha, std::vector<std::uint8_t> mask = {});

// A multichannel document of image.planes channels, without alpha.
HostDocument MakeMultichannelDocument(HostImage image, std::vector<std::uint8_t> mask = {});

}  // namespace mv::host
