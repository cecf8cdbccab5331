#include "interface/pfParameterUIPositionWin32.h"

#include "interface/ControlValues.h"
#include "parameters/pfParameterPosition.h"

namespace mv {

namespace {

constexpr int kTypedCapacity = 51;

PixelSize imageSize;

}  // namespace

void pfParameterUIPositionWin32::SetImageSize(PixelSize size) noexcept {
    imageSize = size;
}

pfParameterPosition* pfParameterUIPositionWin32::Parameter() const noexcept {
    return dynamic_cast<pfParameterPosition*>(GetParameter());
}

void pfParameterUIPositionWin32::Setup() {
    Refresh();
}

void pfParameterUIPositionWin32::Refresh() {
    const pfParameterPosition* parameter = Parameter();
    if (parameter == nullptr || GetWindow() == nullptr) {
        return;
    }
    RefreshEdit(editIdX_, imageSize.width, parameter->GetX());
    RefreshEdit(editIdY_, imageSize.height, parameter->GetY());
    FinishRefresh({editIdX_, editIdY_});
}

void pfParameterUIPositionWin32::RefreshEdit(int id, int size, double fraction) const noexcept {
    if (Item(id) == nullptr) {
        return;
    }
    char typed[kTypedCapacity] = {};
    GetDlgItemTextA(GetWindow(), id, typed, kTypedCapacity);
    if (!PixelTextMeans(typed, size, fraction)) {
        char text[kNumberCapacity];
        FormatPixel(fraction, size, text);
        WriteText(id, text);
    }
}

bool pfParameterUIPositionWin32::ReadWindow() {
    pfParameterPosition* parameter = Parameter();
    if (parameter == nullptr || GetWindow() == nullptr) {
        return false;
    }
    double x = parameter->GetX();
    double y = parameter->GetY();
    ReadEdit(editIdX_, imageSize.width, x);
    ReadEdit(editIdY_, imageSize.height, y);
    return parameter->Set(x, y);
}

void pfParameterUIPositionWin32::ReadEdit(int id, int size, double& fraction) const noexcept {
    if (HasFocus(id)) {
        char typed[kTypedCapacity] = {};
        GetDlgItemTextA(GetWindow(), id, typed, kTypedCapacity);
        FractionFromPixelText(typed, size, fraction);
    }
}

bool pfParameterUIPositionWin32::OwnsId(int id) const {
    return id != kNoId && (id == editIdX_ || id == editIdY_);
}

}  // namespace mv
