#pragma once

#include "interface/pfParameterUIWin32.h"

namespace mv {

class pfParameterFloat;

// An edit and a slider that counts in hundredths. The window in which the user is working is
// never rewritten, and only that window is read. Owned by the filter, dialog's thread only.
class pfParameterUIFloatWin32 final : public pfParameterUIWin32 {
public:
    pfParameterUIFloatWin32(int editId, int sliderId) noexcept
        : editId_(editId), sliderId_(sliderId) {}

    void Setup() override;
    void Refresh() override;
    bool ReadWindow() override;
    bool OwnsId(int id) const override;
    void FocusLost(int id) override;

private:
    pfParameterFloat* Parameter() const noexcept;
    bool ReadEdit();

    int editId_;
    int sliderId_;
};

}  // namespace mv
