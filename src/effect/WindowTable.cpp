#include "effect/WindowTable.h"

namespace mv {

bool WindowTable::Fill(const WindowRule& rule, std::int32_t i, std::int32_t n) {
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
    return !window.isCut;
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

std::int32_t WindowTable::FillCut(const WindowRule& rule, std::int32_t n) {
    std::int32_t first = n;
    while (first > 0 && !Fill(rule, first - 1, n)) {
        --first;
    }
    return first;
}

}  // namespace mv
