#include "effect/MovedRows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <vector>

namespace mv {
namespace {

struct Picture {
    ShiftedPicture shape;
    std::vector<float> values;

    explicit Picture(const ShiftedPicture& wanted) : shape(wanted) {
        std::uint32_t state = 5;
        values.resize(static_cast<std::size_t>(shape.width * shape.height * shape.channels));
        for (float& value : values) {
            state = state * 1664525u + 1013904223u;
            value = static_cast<float>(state >> 8) / 65536.0f;
        }
    }

    std::size_t Index(std::int32_t x, std::int32_t y, int c) const {
        return static_cast<std::size_t>((y * shape.width + x) * shape.channels + c);
    }
};

// Rows and columns in the order in which nothing is overwritten that is read later.
std::vector<float> MovedInPlace(const Picture& picture) {
    const ShiftedPicture& s = picture.shape;
    std::vector<float> moved = picture.values;
    for (std::int32_t row = 0; row < s.height; ++row) {
        for (std::int32_t column = 0; column < s.width; ++column) {
            const std::int32_t y = s.dy >= 0.0 ? row : s.height - 1 - row;
            const std::int32_t x = s.dx >= 0.0 ? column : s.width - 1 - column;
            const auto left = static_cast<std::int32_t>(x + s.dx);
            const auto upper = static_cast<std::int32_t>(y + s.dy);
            const std::int32_t right = std::min(left + 1, s.width - 1);
            const std::int32_t lower = std::min(upper + 1, s.height - 1);
            const double fx = x + s.dx - left;
            const double fy = y + s.dy - upper;
            for (int c = 0; c < s.channels; ++c) {
                const double value =
                    (1.0 - fx) * (1.0 - fy) *
                        static_cast<double>(moved[picture.Index(left, upper, c)]) +
                    fx * (1.0 - fy) * static_cast<double>(moved[picture.Index(right, upper, c)]) +
                    (1.0 - fx) * fy * static_cast<double>(moved[picture.Index(left, lower, c)]) +
                    fx * fy * static_cast<double>(moved[picture.Index(right, lower, c)]);
                moved[picture.Index(x, y, c)] = static_cast<float>(value);
            }
        }
    }
    return moved;
}

class MovedRowsTest : public testing::TestWithParam<ShiftedPicture> {};

TEST_P(MovedRowsTest, RunsInAnyOrderAreThoseOfTheMoveInPlace) {
    const Picture picture(GetParam());
    const ShiftedPicture& shape = picture.shape;
    const RowKernels* kernels = SelectRowKernels();
    ASSERT_NE(kernels, nullptr);
    ASSERT_TRUE(MovedRows::Serves(shape));
    const std::vector<float> expected = MovedInPlace(picture);
    std::vector<unsigned char> columnMemory(ShiftColumns::Bytes(shape.width));
    ShiftColumns columns;
    columns.Fill(columnMemory.data(), shape.width, shape.dx);
    const MovedRows::Source source = [&](std::int32_t y, std::int32_t from, std::int32_t end,
                                         float* out) {
        ASSERT_LT(from, end);
        std::copy_n(&picture.values[picture.Index(from, y, 0)], (end - from) * shape.channels, out);
    };
    std::vector<unsigned char> memory(MovedRows::Bytes(shape));
    MovedRows rows;
    rows.SetUp(memory.data(), shape, columns.Get(), *kernels, source);
    std::uint32_t state = 9;
    const auto below = [&state](std::int32_t count) {
        state = state * 1664525u + 1013904223u;
        return static_cast<std::int32_t>((state >> 8) % static_cast<std::uint32_t>(count));
    };
    std::int32_t y = 0;
    for (int i = 0; i < 400; ++i) {
        // Rows that follow each other up and down, and now and then another one.
        y = i % 7 == 0 ? below(shape.height) : std::clamp(y + below(3) - 1, 0, shape.height - 1);
        const std::int32_t from = below(shape.width);
        const std::int32_t end = from + 1 + below(shape.width - from);
        const auto count = static_cast<std::size_t>((end - from) * shape.channels);
        std::vector<float> run(count + 1, -1.0f);
        rows.Fill(y, from, end, run.data());
        EXPECT_TRUE(
            std::equal(run.begin(), run.end() - 1,
                       expected.begin() + static_cast<std::ptrdiff_t>(picture.Index(from, y, 0))))
            << y << ": " << from << " to " << end;
        EXPECT_EQ(run.back(), -1.0f);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Shifts, MovedRowsTest,
    testing::Values(ShiftedPicture{23, 17, 3, -0.5, -0.5}, ShiftedPicture{23, 17, 3, 0.25, 0.4},
                    ShiftedPicture{23, 17, 1, -0.3, 0.1}, ShiftedPicture{23, 17, 4, 0.2, -0.125},
                    ShiftedPicture{23, 17, 2, 0.0, -0.5}, ShiftedPicture{23, 17, 3, -0.4, 0.0},
                    ShiftedPicture{23, 17, 3, 0.0, 0.0}, ShiftedPicture{1, 9, 3, -0.5, -0.5},
                    ShiftedPicture{9, 1, 3, -0.5, -0.5}, ShiftedPicture{2, 2, 2, -0.25, -0.5}));

TEST(MovedRows, DoNotServeShiftsThatFarPixelsDoNotFeel) {
    EXPECT_FALSE(MovedRows::Serves({6000, 4000, 3, 0.1, -1e-14}));
    EXPECT_FALSE(MovedRows::Serves({6000, 4000, 3, -1e-14, 0.1}));
    EXPECT_TRUE(MovedRows::Serves({6000, 4000, 3, 1e-14, 1e-14}));
    EXPECT_TRUE(MovedRows::Serves({6000, 4000, 3, -1e-9, -1e-9}));
}

}  // namespace
}  // namespace mv
