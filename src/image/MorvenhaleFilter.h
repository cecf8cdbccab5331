#pragma once

#include <cstdint>

#include "frame/MorvenhaleHost.h"
#include "image/PixelArray.h"

namespace mv {

// Base of all pipeline stages. A stage lives on its caller's stack for one render, reaches
// everything through the one host pointer, and never makes a thread, a lock or a host call of
// its own. Failures travel as status values.
class MorvenhaleFilter {
public:
    explicit MorvenhaleFilter(MorvenhaleHost* host) : host_(host) {}
    virtual ~MorvenhaleFilter() = default;

    MorvenhaleFilter(const MorvenhaleFilter&) = delete;
    MorvenhaleFilter& operator=(const MorvenhaleFilter&) = delete;

protected:
    bool IsOk(std::int32_t status) const { return status == host_->StatusOk(); }

    // Null without memory.
    template <class T>
    T* Allocate(std::uint64_t bytes) const {
        return static_cast<T*>(AllocateBlock(*host_, bytes));
    }

    // Progress of a stage is a fraction of the whole pipeline, which counts in range parts.
    std::int32_t ReportStep(std::uint32_t position, std::uint32_t range, std::uint32_t step,
                            std::uint32_t steps) const {
        return host_->ReportProgress(static_cast<std::int32_t>(position * steps + step),
                                     static_cast<std::int32_t>(range * steps), 0);
    }

    MorvenhaleHost* host_;
};

// The rows of one band: rows / bands each, the last band takes the rest.
struct RowBand {
    std::int32_t first;
    std::int32_t end;
};

inline RowBand BandOf(std::int32_t rows, std::uint32_t index, std::uint32_t bands) {
    const std::uint32_t band = static_cast<std::uint32_t>(rows) / bands;
    const std::uint32_t first = index * band;
    const std::uint32_t end =
        index == bands - 1 ? static_cast<std::uint32_t>(rows) : (index + 1) * band;
    return {static_cast<std::int32_t>(first), static_cast<std::int32_t>(end)};
}

}  // namespace mv
