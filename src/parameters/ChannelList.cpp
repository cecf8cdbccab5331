// pfParameterList::FillChannelList: the names of a document's channels.
#include <algorithm>
#include <new>

#include "parameters/pfParameterList.h"

namespace mv {

namespace {

struct ChannelCounts {
    int total;
    int colours;
    bool hasTransparency;
};

ChannelCounts CountChannels(const hostapi::FilterRecord& record) noexcept {
    const int listed = record.inLayerPlanes + record.inTransparencyMask + record.inLayerMasks +
                       record.inInvertedLayerMasks + record.inNonLayerPlanes;
    const int total = std::max<int>(record.planes, listed);
    int colours = record.inLayerPlanes;
    if (record.inTransparencyMask == 0 && colours == 0) {
        colours = record.inNonLayerPlanes;
    }
    if (colours == 0) {
        colours = record.planes;
    }
    return {total, colours, record.inTransparencyMask > 0 && total >= record.inLayerPlanes + 1};
}

}  // namespace

void pfParameterList::FillChannelList(const hostapi::FilterRecord* record) noexcept {
    try {
        ClearEntries();
        // The leading blank is part of the entry.
        AddEntry(" none");
        if (record != nullptr) {
            AddChannelEntries(*record);
        }
    } catch (const std::bad_alloc&) {
        // The entries so far stand.
    }
}

void pfParameterList::AddChannelEntries(const hostapi::FilterRecord& record) {
    ChannelCounts counts = CountChannels(record);
    bool hasRed = false;
    switch (record.imageMode) {
        case hostapi::plugInModeGrayScale:
        case hostapi::plugInModeGray16:
            counts.colours = std::min(counts.colours, 1);
            // Meant as it is: the gray channel is called red, and it is there without colours.
            hasRed = true;
            break;
        case hostapi::plugInModeRGBColor:
        case hostapi::plugInModeMultichannel:
        case hostapi::plugInModeRGB48:
        case hostapi::plugInModeDeepMultichannel:
            counts.colours = std::min(counts.colours, 3);
            hasRed = counts.colours >= 1;
            break;
        default:
            return;
    }
    if (hasRed) {
        AddEntry("red");
    }
    if (counts.colours >= 2) {
        AddEntry("green");
    }
    if (counts.colours >= 3) {
        AddEntry("blue");
    }
    if (counts.hasTransparency) {
        AddEntry("transparency");
    }
    const int remaining = counts.total - counts.colours - (counts.hasTransparency ? 1 : 0);
    for (int i = 0; i < remaining; ++i) {
        AddEntry("alpha " + std::to_string(i));
    }
}

}  // namespace mv
