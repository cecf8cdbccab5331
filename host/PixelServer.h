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

    // The destination starts as a copy of the source; nothing is delivered.
    void Restart(hostapi::FilterRecord& record);
    // Stores the pending output, then delivers what the record's rectangles ask for.
    hostapi::OSErr Advance(hostapi::FilterRecord& record);
    // Stores what was last delivered for output and may have been written to since.
    void StorePending();
    // Restricts the destination to the selection, as autoMask asks.
    void ClipToSelection();

    const HostImage& Destination() const { return destination_; }
    HostImage TakeDestination() { return std::move(destination_); }

private:
    struct Request {
        hostapi::Rect rect{};
        int lowPlane = 0;
        int highPlane = 0;
        int rate = 1;
        std::int16_t padding = 0;
        std::int32_t rowPadding = 0;
    };
    struct Delivered {
        HostBlock block;
        Request request;
        std::size_t usedRowBytes = 0;
        std::size_t rowBytes = 0;
    };

    hostapi::OSErr DeliverInput(hostapi::FilterRecord& record);
    hostapi::OSErr DeliverOutput(hostapi::FilterRecord& record);
    hostapi::OSErr DeliverMask(hostapi::FilterRecord& record);
    // On success area.block holds the pixels, or nothing when the rectangle is empty.
    hostapi::OSErr Deliver(Delivered& area, const Request& request, const HostImage& from,
                           bool blank);
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
