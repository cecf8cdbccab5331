// Sizes and offsets at the edges of 2^31 and 2^32 bytes: computed in 64 bits, right or refused.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <map>

#include "RandomJobs.h"
#include "RenderJob.h"
#include "TestLength.h"

namespace endtoend {
namespace {

using hostapi::FilterRecord;

constexpr std::uint64_t kTwoGigabytes = std::uint64_t{1} << 31;
constexpr std::uint64_t kFourGigabytes = std::uint64_t{1} << 32;
// Of the tone curve, and of the decoding under 256 weights.
constexpr std::uint32_t kMostTableBytes = 256 * 256 * sizeof(float);

// A mock of the Buffer suite: it keeps a list of what it was asked for, refuses what is larger
// than its limit, and maps the rest so that only pages in use take memory.
struct Mock {
    std::vector<std::uint32_t> asked;
    std::map<void*, std::size_t> live;
    std::uint64_t limit = 0;
    bool isTwofold = true;  // wanted and least size were always the same
};
Mock mock;

hostapi::Ptr MockNew(std::uint32_t* requested, std::uint32_t size) {
    mock.isTwofold = mock.isTwofold && requested[0] == size;
    mock.asked.push_back(size);
    if (size > mock.limit) {
        return nullptr;
    }
    void* const block = mmap(nullptr, std::max<std::size_t>(size, 1), PROT_READ | PROT_WRITE,
                             MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (block == MAP_FAILED) {
        return nullptr;
    }
    mock.live[block] = std::max<std::size_t>(size, 1);
    return static_cast<hostapi::Ptr>(block);
}

void MockDispose(hostapi::Ptr* buffer) {
    const auto found = mock.live.find(*buffer);
    ASSERT_NE(found, mock.live.end());
    munmap(found->first, found->second);
    mock.live.erase(found);
    *buffer = nullptr;
}

// Address space of which only the touched pages take memory.
class Expanse {
public:
    explicit Expanse(std::uint64_t size) : size_(size) {
        void* const memory = mmap(nullptr, size, PROT_READ | PROT_WRITE,
                                  MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        data_ = memory == MAP_FAILED ? nullptr : static_cast<std::uint8_t*>(memory);
    }
    ~Expanse() {
        if (data_ != nullptr) {
            munmap(data_, size_);
        }
    }
    Expanse(const Expanse&) = delete;
    Expanse& operator=(const Expanse&) = delete;
    std::uint8_t* Data() const { return data_; }

private:
    std::uint64_t size_;
    std::uint8_t* data_ = nullptr;
};

class SizesTest : public testing::Test {
protected:
    void SetUp() override { mock = Mock{}; }
    void TearDown() override { EXPECT_TRUE(mock.live.empty()); }
};

struct Extent {
    int width;
    int height;
};

// A gray, two-channel or RGB picture of bytes whose every row is the same one, in and out, unless
// it is to have all its rows.
class OneRowSession {
public:
    OneRowSession(Extent extent, int colors, bool alpha, bool hasAllRows = false)
        : job_(PlainJob(8, 8, colors, alpha, 8, 0.5)),
          session_(job_),
          rowBytes_(hasAllRows ? extent.width * job_.facts.planes : 0),
          row_(static_cast<std::size_t>(extent.width * job_.facts.planes) *
               static_cast<std::size_t>(hasAllRows ? extent.height : 1)),
          output_(row_.Size()) {
        std::fill_n(row_.Data(), row_.Size(), std::uint8_t{100});
        std::fill_n(output_.Data(), output_.Size(), std::uint8_t{0x5A});
        mv::host::HostSession& host = session_.Host();
        host.BufferSuite().New = MockNew;
        host.BufferSuite().Dispose = MockDispose;
        host.Record().imageSize = {static_cast<std::int16_t>(extent.height),
                                   static_cast<std::int16_t>(extent.width)};
        current = this;
        host.Record().advanceState = []() -> hostapi::OSErr {
            FilterRecord& record = current->session_.Host().Record();
            record.inData = current->row_.Data();
            record.outData = current->output_.Data();
            record.inRowBytes = record.outRowBytes = current->rowBytes_;
            record.maskData = nullptr;
            return hostapi::noErr;
        };
    }
    hostapi::OSErr Start(const oracle::Settings& settings) {
        session_.Host().Play(ScriptOf(settings));
        return session_.Host().Call(hostapi::filterSelectorStart);
    }
    int ProgressCalls() const {
        return const_cast<JobSession&>(session_).Host().Counts().progressCalls;
    }
    bool IsUntouched() const {
        return std::all_of(output_.Data(), output_.Data() + output_.Size(),
                           [](std::uint8_t byte) { return byte == 0x5A; });
    }
    const GuardedBytes& Output() const { return output_; }

private:
    static inline OneRowSession* current = nullptr;

    RenderJob job_;
    JobSession session_;
    std::int32_t rowBytes_;
    GuardedBytes row_;
    GuardedBytes output_;
};

// The largest and the next larger square-like extents around so many bytes of working image.
std::vector<Extent> ExtentsAround(std::uint64_t bytes, int channels) {
    const std::uint64_t pixels = bytes / (4 * static_cast<std::uint64_t>(channels));
    std::vector<Extent> extents;
    for (const int width : {32767, 30000, 24577, 19001}) {
        const auto height = static_cast<int>(pixels / static_cast<std::uint64_t>(width));
        for (const int rows : {height - 1, height, height + 1}) {
            if (rows > 0 && rows <= 32767) {
                extents.push_back({width, rows});
            }
        }
    }
    return extents;
}

TEST_F(SizesTest, AWorkingImageAtTheEdgesIsAskedForWithItsTrueSizeOrNotAtAll) {
    int below = 0;
    int above = 0;
    // Without a blur, which does not need the whole picture at a time.
    oracle::Settings settings;
    settings.strength = 0.0;
    for (const int colors : {1, 2, 3}) {
        for (const bool alpha : {false, true}) {
            const int channels = colors + (alpha ? 1 : 0);
            for (const std::uint64_t edge : {kTwoGigabytes, kFourGigabytes}) {
                for (const Extent& extent : ExtentsAround(edge, channels)) {
                    mock = Mock{};
                    mock.limit = 1 << 20;
                    OneRowSession session(extent, colors, alpha);
                    EXPECT_EQ(session.Start(settings), hostapi::memFullErr);
                    EXPECT_TRUE(session.IsUntouched());
                    EXPECT_EQ(session.ProgressCalls(), 1);
                    EXPECT_TRUE(mock.isTwofold);
                    EXPECT_TRUE(mock.live.empty());
                    const std::uint64_t truth = std::uint64_t{4} *
                                                static_cast<std::uint64_t>(channels) *
                                                static_cast<std::uint64_t>(extent.width) *
                                                static_cast<std::uint64_t>(extent.height);
                    const bool isAskable = truth < kFourGigabytes;
                    (isAskable ? below : above) += 1;
                    const auto isTable = [](std::uint32_t size) { return size <= kMostTableBytes; };
                    const auto others = std::count_if(mock.asked.begin(), mock.asked.end(),
                                                      [&](auto size) { return !isTable(size); });
                    EXPECT_EQ(others, isAskable ? 1 : 0) << extent.width << " " << extent.height;
                    EXPECT_EQ(std::count(mock.asked.begin(), mock.asked.end(), truth),
                              isAskable ? 1 : 0)
                        << extent.width << " x " << extent.height << ", " << channels;
                }
            }
        }
    }
    EXPECT_GT(below, 30);
    EXPECT_GT(above, 15);
}

// The working image would take more than 2 GiB and its sums more than 4, but the blur keeps a small
// part of them at a time.
TEST_F(SizesTest, TheBlurAsksForASmallPartOfTheWorkingImage) {
    const Extent extent = IsLongForm() ? Extent{23171, 23171} : Extent{4000, 3000};
    const std::uint64_t part = IsLongForm() ? 50 : 8;
    mock.limit = kFourGigabytes;
    OneRowSession session(extent, 1, false, !IsLongForm());
    EXPECT_EQ(session.Start({}), hostapi::noErr);
    const std::uint64_t working = std::uint64_t{4} * static_cast<std::uint64_t>(extent.width) *
                                  static_cast<std::uint64_t>(extent.height);
    const auto isLarge = [&](std::uint32_t size) { return size > working / part; };
    EXPECT_EQ(std::count_if(mock.asked.begin(), mock.asked.end(), isLarge), 0);
    EXPECT_TRUE(mock.live.empty());
}

// Beyond 2^31 bytes of working image the last row is what the first one is.
TEST_F(SizesTest, AWorkingImageOfMoreThanTwoGigabytesIsRight) {
    if (!IsLongForm()) {
        GTEST_SKIP() << "the long form renders half a billion pixels";
    }
    mock.limit = kFourGigabytes;
    oracle::Settings settings;
    settings.strength = 0.0;
    OneRowSession session({23171, 23171}, 1, false);
    ASSERT_EQ(session.Start(settings), hostapi::noErr);
    OneRowSession small({64, 48}, 1, false);
    ASSERT_EQ(small.Start(settings), hostapi::noErr);
    const GuardedBytes& output = session.Output();
    EXPECT_TRUE(std::all_of(output.Data(), output.Data() + output.Size(),
                            [&](std::uint8_t byte) { return byte == small.Output().Data()[0]; }));
}

// Rows of a small picture so far apart that row times distance passes 2^31 and 2^32.
TEST_F(SizesTest, RowsThatLieAGigabyteApart) {
    constexpr std::int32_t kApart = (1 << 30) + 4096 + 3;
    constexpr int kHeight = 6;
    Random random(71);
    for (const bool fromBelow : {false, true}) {
        RenderJob job = RandomPicture(random, 5, 9, kHeight);
        job.mask.assign(static_cast<std::size_t>(kHeight * 9), 150);
        job.maskRowBytes = 9;
        const std::uint64_t size = std::uint64_t{kApart} * (kHeight - 1) + 4096;
        const Expanse input(size);
        const Expanse output(size);
        const Expanse mask(size);
        ASSERT_TRUE(input.Data() != nullptr && output.Data() != nullptr && mask.Data() != nullptr);
        const auto row = [&](std::uint8_t* data, int y) {
            const int stored = fromBelow ? kHeight - 1 - y : y;
            return data + static_cast<std::ptrdiff_t>(stored) * kApart;
        };
        const auto used = static_cast<std::size_t>(9 * job.PixelBytes());
        for (int y = 0; y < kHeight; ++y) {
            std::memcpy(row(input.Data(), y),
                        &job.input[static_cast<std::size_t>(y * job.inputRowBytes)], used);
            std::memcpy(row(output.Data(), y),
                        &job.output[static_cast<std::size_t>(y * job.outputRowBytes)], used);
            std::memcpy(row(mask.Data(), y), &job.mask[static_cast<std::size_t>(9 * y)], 9);
        }
        JobSession session(job);
        const auto deliver = session.Host().Hooks().afterAdvance;
        session.Host().Hooks().afterAdvance = [&](FilterRecord& record) {
            deliver(record);
            record.inData = row(input.Data(), 0);
            record.outData = row(output.Data(), 0);
            record.maskData = row(mask.Data(), 0);
            record.inRowBytes = record.outRowBytes = record.maskRowBytes =
                fromBelow ? -kApart : kApart;
        };
        ASSERT_EQ(session.Start(), hostapi::noErr);
        const std::vector<std::uint8_t> expected = ExpectedOutput(job);
        for (int y = 0; y < kHeight; ++y) {
            EXPECT_EQ(
                std::memcmp(row(output.Data(), y),
                            &expected[static_cast<std::size_t>(y * job.outputRowBytes)], used),
                0)
                << y;
        }
    }
}

}  // namespace
}  // namespace endtoend
