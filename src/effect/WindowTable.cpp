#include "effect/WindowTable.h"

namespace mv {

void WindowTable::SetMemory(double* memory, std::int32_t steps) {
    positions_.highKeep = memory;
    positions_.highNext = memory + steps;
    positions_.lowNext = memory + 2 * static_cast<std::ptrdiff_t>(steps);
    positions_.lowKeep = memory + 3 * static_cast<std::ptrdiff_t>(steps);
    positions_.divisor = memory + 4 * static_cast<std::ptrdiff_t>(steps);
    positions_.high =
        reinterpret_cast<std::int32_t*>(memory + 5 * static_cast<std::ptrdiff_t>(steps));
    positions_.low = positions_.high + steps;
}

bool WindowTable::Fill(const WindowRule& rule, std::int32_t i, std::int32_t n) {
    const double length = WindowLength(rule, i, 1.0);
    const Window window = PlaceWindow(length, rule.zoomStart, i, n);
    const auto low = static_cast<std::int32_t>(window.a + 1.0);
    const double lowShare = low - window.a;
    const auto high = static_cast<std::int32_t>(window.b);
    const double highShare = window.b - high;
    positions_.highKeep[i] = 1.0 - highShare;
    positions_.highNext[i] = highShare;
    positions_.lowNext[i] = lowShare;
    positions_.lowKeep[i] = 1.0 - lowShare;
    positions_.divisor[i] = length > 1.0 ? length : 1.0;
    positions_.high[i] = high;
    positions_.low[i] = low;
    return !window.isCut;
}

void WindowTable::FillAll(const WindowRule& rule, std::int32_t from, std::int32_t to,
                          std::int32_t n) {
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
