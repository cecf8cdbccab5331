// Remembers the tone tables of past renders. A table takes 65,000 powers, a hundred times as long
// as the rest of a small render, and hangs on three numbers alone. The linker puts this in front of
// the module's function, which is called for every new set of numbers.
#include <cstring>
#include <memory>

#include "effect/TransferFunction.h"

namespace {

struct Table {
    double exponent = 0.0;
    double white = 0.0;
    bool isOn = false;
    bool isFilled = false;
    float values[mv::kGammaTableSize];
};

constexpr std::size_t kTables = 64;

}  // namespace

void FillReally(float* table, double exponent, bool isOn,
                double white) __asm__("__real__ZN2mv14FillGammaTableEPfdbd");
void FillFromMemory(float* table, double exponent, bool isOn,
                    double white) __asm__("__wrap__ZN2mv14FillGammaTableEPfdbd");

void FillFromMemory(float* table, double exponent, bool isOn, double white) {
    static const auto tables = std::make_unique<Table[]>(kTables);
    static std::size_t oldest = 0;
    for (std::size_t i = 0; i < kTables; ++i) {
        const Table& known = tables[i];
        if (known.isFilled && known.exponent == exponent && known.isOn == isOn &&
            known.white == white) {
            std::memcpy(table, known.values, sizeof known.values);
            return;
        }
    }
    FillReally(table, exponent, isOn, white);
    Table& next = tables[oldest++ % kTables];
    next.exponent = exponent;
    next.isOn = isOn;
    next.white = white;
    next.isFilled = true;
    std::memcpy(next.values, table, sizeof next.values);
}
