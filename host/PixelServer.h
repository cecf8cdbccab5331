// Serves advanceState: delivers what the record asks for, takes back what was delivered for output.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "HostImage.h"
#include "HostMemory.h"
#include "HostOffer.h"
#include "HostStores.h"
#include "hostapi/HostApi.h"

namespace mv::host {

// The pixels of one session: the source, the destination that grows out of it, and the three
// delivered buffers. Owned by the session and reached only under its lock.
class PixelServer {
public:
    PixelServer(const HostDocument& document, const HostOffer& offer, Complaints& complaints);

    // The destination is the source again; nothing is delivered.
    void Restart(hostapi::FilterRecord& record);
    // Stores the pending output, then delivers what the record's rectangles ask for.
    hostapi::OSErr Advance(hostapi::FilterRecord& record);
    // Stores what was last delivered for output and may have been written to since.
    void StorePending();
    // Restricts the destination to the selection, as autoMask asks.
    void ClipToSelection();

    // The source as long as nothing was stored.
    const HostImage& Destination() const {
        return destination_.width > 0 ? destination_ : document_.image;
    }
    HostImage TakeDestination() {
        MakeDestination();
        return std::move(destination_);
    }

private:
    struct Request {
        hostapi::Rect rect{};
        int lowPlane = 0;
        int highPlane = 0;
        int rate = 1;
        std::int16_t padding = 0;
        std::int32_t rowPadding = 0;
    };
    // The pixels are the block's, or an image's own.
    struct Delivered {
        HostBlock block;
        std::uint8_t* image = nullptr;
        Request request;
        std::size_t usedRowBytes = 0;
        std::size_t rowBytes = 0;

        std::uint8_t* Data() const { return image != nullptr ? image : block.Data(); }
    };

    hostapi::OSErr DeliverInput(hostapi::FilterRecord& record);
    hostapi::OSErr DeliverOutput(hostapi::FilterRecord& record);
    hostapi::OSErr DeliverMask(hostapi::FilterRecord& record);
    // On success area.Data() is where the pixels are, or null when the rectangle is empty.
    hostapi::OSErr Deliver(Delivered& area, const Request& request, const HostImage& from,
                           OutputContents contents);
    static bool IsWhole(const Request& request, const HostImage& image);
    void MakeDestination();
    void FillRow(Delivered& area, const HostImage& from, int y, std::uint8_t* row) const;
    void Check(const Delivered& area, const char* name);

    const HostDocument& document_;
    const HostOffer& offer_;
    Complaints& complaints_;
    HostImage mask_;
    HostImage destination_;
    Delivered in_;
    Delivered out_;
    Delivered selection_;
};

bool IsEmpty(const hostapi::Rect& rect);

}  // namespace mv::host
