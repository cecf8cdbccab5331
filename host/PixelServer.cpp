#include "PixelServer.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace mv::host {
namespace {

constexpr std::uint8_t kRowPaddingByte = 0xA5;
constexpr std::int16_t kPadWithEdge = -1;
constexpr std::int16_t kPadWithNothing = -2;

int WholeRate(hostapi::Fixed rate) {
    return std::max(1, rate >> 16);
}

bool Overhangs(const hostapi::Rect& rect, int width, int height) {
    return rect.left < 0 || rect.top < 0 || rect.right > width || rect.bottom > height;
}

}  // namespace

bool IsEmpty(const hostapi::Rect& rect) {
    return rect.left >= rect.right || rect.top >= rect.bottom;
}

PixelServer::PixelServer(const HostDocument& document, const HostOffer& offer,
                         Complaints& complaints)
    : document_(document), offer_(offer), complaints_(complaints) {
    if (!document.mask.empty()) {
        mask_.width = document.image.width;
        mask_.height = document.image.height;
        mask_.planes = 1;
        mask_.bytes = document.mask;
    }
}

void PixelServer::Restart(hostapi::FilterRecord& record) {
    destination_ = {};
    if (!offer_.sparesCopies) {
        MakeDestination();
    }
    in_ = {};
    out_ = {};
    selection_ = {};
    record.inRect = record.outRect = record.maskRect = {};
    record.inData = record.outData = record.maskData = nullptr;
    record.inRowBytes = record.outRowBytes = record.maskRowBytes = 0;
}

hostapi::OSErr PixelServer::Advance(hostapi::FilterRecord& record) {
    StorePending();
    Check(in_, "inData");
    Check(selection_, "maskData");
    if (const hostapi::OSErr error = DeliverInput(record); error != hostapi::noErr) {
        return error;
    }
    if (const hostapi::OSErr error = DeliverOutput(record); error != hostapi::noErr) {
        return error;
    }
    return DeliverMask(record);
}

hostapi::OSErr PixelServer::DeliverInput(hostapi::FilterRecord& record) {
    const Request request{record.inRect,       record.inLoPlane,
                          record.inHiPlane,    WholeRate(record.inputRate),
                          record.inputPadding, offer_.inRowPadding};
    const hostapi::OSErr error =
        Deliver(in_, request, document_.image, OutputContents::CopyOfImage);
    record.inData = in_.Data();
    record.inRowBytes = static_cast<std::int32_t>(in_.rowBytes);
    record.inPlaneBytes = static_cast<std::int32_t>(document_.image.SampleBytes());
    record.inColumnBytes = (request.highPlane - request.lowPlane + 1) * record.inPlaneBytes;
    return error;
}

// Output is never scaled: at a reduced rate it holds the top left part of the destination.
hostapi::OSErr PixelServer::DeliverOutput(hostapi::FilterRecord& record) {
    const Request request{record.outRect,       record.outLoPlane,   record.outHiPlane, 1,
                          record.outputPadding, offer_.outRowPadding};
    const hostapi::OSErr error = Deliver(out_, request, Destination(), offer_.outputContents);
    record.outData = out_.Data();
    record.outRowBytes = static_cast<std::int32_t>(out_.rowBytes);
    record.outPlaneBytes = static_cast<std::int32_t>(document_.image.SampleBytes());
    record.outColumnBytes = (request.highPlane - request.lowPlane + 1) * record.outPlaneBytes;
    return error;
}

hostapi::OSErr PixelServer::DeliverMask(hostapi::FilterRecord& record) {
    Request request;
    if (record.haveMask != 0 && mask_.width > 0) {
        request = {record.maskRect,      0, 0, WholeRate(record.maskRate), record.maskPadding,
                   offer_.maskRowPadding};
    }
    const hostapi::OSErr error = Deliver(selection_, request, mask_, OutputContents::CopyOfImage);
    record.maskData = selection_.Data();
    record.maskRowBytes = static_cast<std::int32_t>(selection_.rowBytes);
    return error;
}

hostapi::OSErr PixelServer::Deliver(Delivered& area, const Request& request, const HostImage& from,
                                    OutputContents contents) {
    if (IsEmpty(request.rect)) {
        area = {};
        return hostapi::noErr;
    }
    // The rate is not compared: hosts that keep a delivery look at rectangle and planes alone.
    const bool same = area.Data() != nullptr &&
                      std::memcmp(&area.request.rect, &request.rect, sizeof request.rect) == 0 &&
                      area.request.lowPlane == request.lowPlane &&
                      area.request.highPlane == request.highPlane;
    if (same && !offer_.refillsAlways) {
        return hostapi::noErr;
    }
    area = {};
    if (request.lowPlane < 0 || request.highPlane < request.lowPlane ||
        request.highPlane >= from.planes) {
        return hostapi::paramErr;
    }
    const bool padded =
        offer_.supportsPadding && request.padding >= kPadWithNothing && request.padding <= 255;
    if (!padded && Overhangs(request.rect, from.width / request.rate, from.height / request.rate)) {
        return hostapi::paramErr;
    }
    const int planeCount = request.highPlane - request.lowPlane + 1;
    const auto planes = static_cast<std::size_t>(planeCount);
    area.request = request;
    const int columns = request.rect.right - request.rect.left;
    area.usedRowBytes = static_cast<std::size_t>(columns) * planes * from.SampleBytes();
    area.rowBytes = area.usedRowBytes + static_cast<std::size_t>(request.rowPadding);
    if (offer_.sparesCopies && &area == &in_ && IsWhole(request, from)) {
        // Nobody writes to input; the record has no const.
        area.image = const_cast<std::uint8_t*>(from.bytes.data());
        return hostapi::noErr;
    }
    const int rows = request.rect.bottom - request.rect.top;
    if (!area.block.Allocate(area.rowBytes * static_cast<std::size_t>(rows), offer_.placement,
                             offer_.freshBytes)) {
        area = {};
        return hostapi::memFullErr;
    }
    for (int y = 0; y < rows; ++y) {
        std::uint8_t* const row = area.block.Data() + static_cast<std::size_t>(y) * area.rowBytes;
        if (contents == OutputContents::Zero) {
            std::fill_n(row, area.usedRowBytes, std::uint8_t{0});
        } else if (contents == OutputContents::CopyOfImage) {
            FillRow(area, from, request.rect.top + y, row);
        }
        std::fill(row + area.usedRowBytes, row + area.rowBytes, kRowPaddingByte);
    }
    return hostapi::noErr;
}

bool PixelServer::IsWhole(const Request& request, const HostImage& image) {
    return request.rate == 1 && request.rowPadding == 0 && request.lowPlane == 0 &&
           request.highPlane == image.planes - 1 && request.rect.left == 0 &&
           request.rect.top == 0 && request.rect.right == image.width &&
           request.rect.bottom == image.height;
}

// A reduced row takes every n-th pixel. What lies outside the image is padded byte by byte.
void PixelServer::FillRow(Delivered& area, const HostImage& from, int y, std::uint8_t* row) const {
    const Request& request = area.request;
    const int width = from.width / request.rate;
    const int height = from.height / request.rate;
    const bool wholePixels = request.lowPlane == 0 && request.highPlane == from.planes - 1;
    if (request.rate == 1 && wholePixels && !Overhangs(request.rect, width, height)) {
        std::memcpy(row, from.bytes.data() + from.Offset(request.rect.left, y, 0),
                    area.usedRowBytes);
        return;
    }
    const std::size_t pixelBytes =
        area.usedRowBytes / static_cast<std::size_t>(request.rect.right - request.rect.left);
    for (int x = request.rect.left; x < request.rect.right; ++x, row += pixelBytes) {
        const bool inside = x >= 0 && x < width && y >= 0 && y < height;
        if (inside || (request.padding == kPadWithEdge && width > 0 && height > 0)) {
            const int fromX = std::clamp(x, 0, width - 1) * request.rate;
            const int fromY = std::clamp(y, 0, height - 1) * request.rate;
            std::memcpy(row, from.bytes.data() + from.Offset(fromX, fromY, request.lowPlane),
                        pixelBytes);
        } else if (request.padding >= 0) {
            std::fill_n(row, pixelBytes, static_cast<std::uint8_t>(request.padding));
        }
    }
}

void PixelServer::Check(const Delivered& area, const char* name) {
    if (area.block.Data() == nullptr) {
        return;
    }
    bool intact = area.block.MarginsIntact();
    const std::size_t rows = area.rowBytes == 0 ? 0 : area.block.Size() / area.rowBytes;
    for (std::size_t y = 0; y < rows && intact; ++y) {
        const std::uint8_t* const row = area.block.Data() + y * area.rowBytes;
        intact = std::all_of(row + area.usedRowBytes, row + area.rowBytes,
                             [](std::uint8_t byte) { return byte == kRowPaddingByte; });
    }
    if (!intact) {
        complaints_.push_back(std::string("memory outside the pixels of ") + name +
                              " was written to");
    }
}

void PixelServer::StorePending() {
    if (out_.block.Data() == nullptr) {
        return;
    }
    Check(out_, "outData");
    MakeDestination();
    const Request& request = out_.request;
    const int left = std::max<int>(request.rect.left, 0);
    const int right = std::min<int>(request.rect.right, destination_.width);
    const int top = std::max<int>(request.rect.top, 0);
    const int bottom = std::min<int>(request.rect.bottom, destination_.height);
    const std::size_t pixelBytes =
        out_.usedRowBytes / static_cast<std::size_t>(request.rect.right - request.rect.left);
    for (int y = top; y < bottom; ++y) {
        const std::uint8_t* from = out_.block.Data() +
                                   static_cast<std::size_t>(y - request.rect.top) * out_.rowBytes +
                                   static_cast<std::size_t>(left - request.rect.left) * pixelBytes;
        if (pixelBytes == destination_.PixelBytes() && left < right) {
            std::memcpy(destination_.bytes.data() + destination_.Offset(left, y, 0), from,
                        static_cast<std::size_t>(right - left) * pixelBytes);
            continue;
        }
        for (int x = left; x < right; ++x, from += pixelBytes) {
            std::memcpy(destination_.bytes.data() + destination_.Offset(x, y, request.lowPlane),
                        from, pixelBytes);
        }
    }
}

void PixelServer::MakeDestination() {
    if (destination_.width == 0) {
        destination_ = document_.image;
    }
}

void PixelServer::ClipToSelection() {
    MakeDestination();
    const HostImage& source = document_.image;
    for (int y = 0; y < mask_.height; ++y) {
        for (int x = 0; x < mask_.width; ++x) {
            const double weight = mask_.Get(x, y, 0) / 255.0;
            for (int plane = 0; plane < source.planes && weight < 1.0; ++plane) {
                const double before = source.Get(x, y, plane);
                const double after = destination_.Get(x, y, plane);
                destination_.Set(x, y, plane, before + (after - before) * weight);
            }
        }
    }
}

}  // namespace mv::host
