#pragma once

#include "interface/pfParameterUIWin32.h"

namespace mv {

class pfParameterRGB;

// A colour swatch. The dialog paints it and chooses its colour. Owned by the filter, dialog's
// thread only.
class pfParameterUIRGBWin32 final : public pfParameterUIWin32 {
public:
    explicit pfParameterUIRGBWin32(int swatchId) noexcept : swatchId_(swatchId) {}

    void Refresh() override;
    bool OwnsId(int id) const override;

    pfParameterRGB* Parameter() const noexcept;
    HWND Swatch() const noexcept { return Item(swatchId_); }

private:
    int swatchId_;
};

}  // namespace mv
