// A picture that passes through a blur in pieces, so that it is never in memory as a whole.
#pragma once

#include <cstdint>

namespace mv {

// Rows of blurred pixels around a run of one of them.
class BlurredRows {
public:
    // What to add a column's floats to, in the row of the run or in the one above or below, for
    // columns from one left of the run to one right of it, as far as they are in the picture.
    virtual const float* Row(std::int32_t y) const = 0;

protected:
    ~BlurredRows() = default;
};

// Where a blur takes its pixels from and where it gives the blurred ones. Sides of the blur call
// at the same time.
class PictureStream {
public:
    // Puts pixels from to end - 1 of row y to out, packed. One side's calls come one by one.
    virtual void Read(std::uint32_t side, std::int32_t y, std::int32_t from, std::int32_t end,
                      float* out) = 0;
    // Announces such a call soon, or a Write, for what memory does not give at once.
    virtual void ExpectRead(std::int32_t y, std::int32_t from, std::int32_t end) const = 0;
    virtual void ExpectWrite(std::int32_t y, std::int32_t from, std::int32_t end) const = 0;
    // Takes blurred pixels from to end - 1 of row y, of which each comes once.
    virtual void Write(std::int32_t y, std::int32_t from, std::int32_t end,
                       const BlurredRows& rows) = 0;
    // Whether a pixel takes so long that few should be asked for at a time, since the host hears
    // nothing meanwhile.
    virtual bool IsSlow() const = 0;
    // Row y has been written to its end; gives the host's status.
    virtual std::int32_t EndRow(std::int32_t y) = 0;

protected:
    ~PictureStream() = default;
};

}  // namespace mv
