#include "interface/pfParameterUIRGBWin32.h"

#include "parameters/pfParameterRGB.h"

namespace mv {

void pfParameterUIRGBWin32::Refresh() {
    if (Parameter() != nullptr && Swatch() != nullptr) {
        FinishRefresh({swatchId_});
    }
}

bool pfParameterUIRGBWin32::OwnsId(int id) const {
    return id != kNoId && id == swatchId_;
}

pfParameterRGB* pfParameterUIRGBWin32::Parameter() const noexcept {
    return dynamic_cast<pfParameterRGB*>(GetParameter());
}

}  // namespace mv
