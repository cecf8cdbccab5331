#pragma once

#include "interface/pfParameterUIWin32.h"

namespace mv {

// A drop-down list that is filled anew at every refresh. Owned by the filter, dialog's thread
// only.
class pfParameterUIListWin32 final : public pfParameterUIWin32 {
public:
    explicit pfParameterUIListWin32(int listId) noexcept : listId_(listId) {}

    void Setup() override;
    void Refresh() override;
    bool ReadWindow() override;
    bool OwnsId(int id) const override;

private:
    int listId_;
};

}  // namespace mv
