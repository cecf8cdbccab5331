#pragma once

#include "interface/pfParameterUIWin32.h"

namespace mv {

// A check box, or a push button whose action hangs on its parameter. Owned by the filter,
// dialog's thread only.
class pfParameterUIBoolWin32 final : public pfParameterUIWin32 {
public:
    explicit pfParameterUIBoolWin32(int checkId) noexcept : checkId_(checkId) {}

    void Setup() override;
    void Refresh() override;
    bool ReadWindow() override;
    bool OwnsId(int id) const override;

private:
    int checkId_;
};

}  // namespace mv
