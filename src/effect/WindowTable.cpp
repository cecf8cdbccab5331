#include "effect/WindowTable.h"

namespace mv {

std::int32_t FirstCutWindow(const WindowRule& rule, std::int32_t n) {
    // Rounding may put neighbours out of order by less than a sample.
    constexpr std::int32_t kSpare = 2;
    std::int32_t whole = 0;
    std::int32_t cut = n;
    while (whole < cut) {
        const std::int32_t i = whole + (cut - whole) / 2;
        if (PlaceWindow(WindowLength(rule, i, 1.0), rule.zoomStart, i, n).isCut) {
            cut = i;
        } else {
            whole = i + 1;
        }
    }
    return cut > kSpare ? cut - kSpare : 0;
}

void WindowTable::Fill(const WindowRule& rule, std::int32_t i, std::int32_t n) {
    const double length = WindowLength(rule, i, 1.0);
    const Window window = PlaceWindow(length, rule.zoomStart, i, n);
    const auto low = static_cast<std::int32_t>(window.a + 1.0);
    const double lowShare = low - window.a;
    const auto high = static_cast<std::int32_t>(window.b);
    const double highShare = window.b - high;
    positions_[i] = {1.0 - highShare,
                     highShare,
                     lowShare,
                     1.0 - lowShare,
                     length > 1.0 ? length : 1.0,
                     high,
                     low};
}

void WindowTable::FillAll(const WindowRule& rule, std::int32_t from, std::int32_t to,
                          std::int32_t n, const RayKernels* kernels) {
    if (kernels != nullptr) {
        from = kernels->fillWindows(positions_, rule, from, to, n);
    }
    for (std::int32_t i = from; i < to; ++i) {
        Fill(rule, i, n);
    }
}

}  // namespace mv
