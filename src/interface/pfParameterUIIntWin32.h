#pragma once

#include "interface/pfParameterUIWin32.h"

namespace mv {

class pfParameterInt;

// An edit and a slider for whole numbers. Typed numbers are truncated, and no limit is applied to
// them. Owned by the filter, dialog's thread only.
class pfParameterUIIntWin32 final : public pfParameterUIWin32 {
public:
    pfParameterUIIntWin32(int editId, int sliderId) noexcept
        : editId_(editId), sliderId_(sliderId) {}

    void Setup() override;
    void Refresh() override;
    bool ReadWindow() override;
    bool OwnsId(int id) const override;
    void FocusLost(int id) override;

private:
    pfParameterInt* Parameter() const noexcept;
    bool ReadEdit();

    int editId_;
    int sliderId_;
};

}  // namespace mv
