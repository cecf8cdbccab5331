#pragma once

#include <list>

#include "hostapi/HostApi.h"

namespace mv {

class pfFilter;
class pfParameterUI;

// The dialog as the filter sees it. Owned by the filter, used on the host's thread only.
class pfPreview {
public:
    virtual ~pfPreview() = default;

    // Runs the dialog to its end. True for OK, false for Cancel. Nothing passed in is kept.
    virtual bool Show(pfFilter* filter, hostapi::FilterRecord* filterRecord,
                      std::list<pfParameterUI*>* controls) = 0;

    // Asks for a new preview frame and refreshes the undo buttons.
    virtual void ParametersChanged() = 0;

    // Colour choice for a host without a colour picker; channels run 0.0 to 1.0, in and out.
    virtual bool AlternativeColorSelection(hostapi::FilterRecord* filterRecord, double& red,
                                           double& green, double& blue) = 0;
};

}  // namespace mv
