#pragma once

#include "interface/PreviewScale.h"
#include "interface/pfParameterUIWin32.h"

namespace mv {

class pfParameterPosition;

// Two edits that show a position in pixels of the image. A text that already means the stored
// fraction stays as it was typed. Owned by the filter, dialog's thread only.
class pfParameterUIPositionWin32 final : public pfParameterUIWin32 {
public:
    pfParameterUIPositionWin32(int editIdX, int editIdY) noexcept
        : editIdX_(editIdX), editIdY_(editIdY) {}

    void Setup() override;
    void Refresh() override;
    bool ReadWindow() override;
    bool OwnsId(int id) const override;

    pfParameterPosition* Parameter() const noexcept;

    // The image that all positions are measured in; the dialog says so when it opens.
    static void SetImageSize(PixelSize size) noexcept;

private:
    void RefreshEdit(int id, int imageSize, double fraction) const noexcept;
    void ReadEdit(int id, int imageSize, double& fraction) const noexcept;

    int editIdX_;
    int editIdY_;
};

}  // namespace mv
