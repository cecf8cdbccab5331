#include "support/TestRender.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace mv::test {

TestFilter::TestFilter(std::int32_t threads, bool isBackward)
    : pfFilterRadialBlur("Test", "Test", 1, 0, 0, "test"),
      threads_(threads),
      isBackward_(isBackward) {}

std::int32_t TestFilter::GetThreadCount(std::int32_t wanted) {
    return wanted < 1 ? threads_ : std::min(threads_, wanted);
}

std::int32_t TestFilter::Iterate(std::int32_t iterations, IterateFunction function) {
    if (!isBackward_) {
        return pfFilterRadialBlur::Iterate(iterations, std::move(function));
    }
    unsigned status = 0;
    for (std::int32_t i = iterations - 1; i >= 0 && status == 0; --i) {
        status = function(static_cast<unsigned>(i), static_cast<unsigned>(iterations), 0);
    }
    return static_cast<std::int32_t>(status);
}

void TestFilter::SetValue(const std::string& name, double value) {
    for (int i = 0; i < GetParameters().GetCount(); ++i) {
        pfParameter* parameter = GetParameters().GetParameter(i);
        if (parameter->GetName() != name) {
            continue;
        }
        if (auto* number = dynamic_cast<pfParameterFloat*>(parameter)) {
            number->Set(value);
        } else if (auto* list = dynamic_cast<pfParameterList*>(parameter)) {
            list->Set(static_cast<std::int32_t>(value));
        } else if (auto* flag = dynamic_cast<pfParameterBool*>(parameter)) {
            flag->Set(value != 0.0);
        }
        return;
    }
    ADD_FAILURE() << "no parameter " << name;
}

void TestFilter::SetOrigin(double x, double y) {
    auto* origin = dynamic_cast<pfParameterPosition*>(GetParameters().GetParameter(0));
    ASSERT_NE(origin, nullptr);
    origin->Set(x, y);
}

std::vector<TestShape> AllShapes() {
    std::vector<TestShape> shapes;
    for (const int depth : {8, 16, 32}) {
        for (const int colors : {1, 2, 3}) {
            for (const bool alpha : {false, true}) {
                shapes.push_back({colors, alpha, depth, colors + (alpha ? 1 : 0)});
            }
        }
    }
    return shapes;
}

TestPicture MakeNoise(const TestShape& shape, int width, int height, std::uint32_t seed,
                      bool withMask) {
    TestPicture picture{shape, width, height, {}, {}};
    std::uint32_t state = seed;
    const auto next = [&state] {
        state = state * 1664525u + 1013904223u;
        return state >> 8;
    };
    const auto samples = static_cast<std::size_t>(width * height * shape.planes);
    const auto size = static_cast<std::size_t>(shape.depth / 8);
    picture.bytes.resize(samples * size);
    for (std::size_t i = 0; i < samples; ++i) {
        // Some samples are black or white, as pictures have them.
        const std::uint32_t draw = next();
        const double share = draw % 7 == 0 ? 0.0 : draw % 7 == 1 ? 1.0 : (draw % 1000) / 999.0;
        if (shape.depth == 8) {
            picture.bytes[i] = static_cast<std::uint8_t>(share * 255.0);
        } else if (shape.depth == 16) {
            const auto value = static_cast<std::uint16_t>(share * 32768.0);
            std::memcpy(&picture.bytes[i * size], &value, size);
        } else {
            const auto value = static_cast<float>(share * 1.25 - 0.1);
            std::memcpy(&picture.bytes[i * size], &value, size);
        }
    }
    if (withMask) {
        picture.mask.resize(static_cast<std::size_t>(width * height));
        for (std::uint8_t& value : picture.mask) {
            value = static_cast<std::uint8_t>(next());
        }
    }
    return picture;
}

hostapi::FilterRecord MakeRecord(TestPicture& picture, std::vector<std::uint8_t>& out) {
    const TestShape& shape = picture.shape;
    hostapi::FilterRecord record{};
    record.imageSize = {static_cast<std::int16_t>(picture.height),
                        static_cast<std::int16_t>(picture.width)};
    record.inRect = {0, 0, static_cast<std::int16_t>(picture.height),
                     static_cast<std::int16_t>(picture.width)};
    record.outRect = record.inRect;
    record.planes = static_cast<std::int16_t>(shape.planes);
    record.depth = shape.depth;
    const bool isGray = shape.colors == 1;
    record.imageMode = shape.depth == 8    ? (isGray ? 1 : 3)
                       : shape.depth == 16 ? (isGray ? 10 : 11)
                                           : (isGray ? 17 : 16);
    record.inLayerPlanes = static_cast<std::int16_t>(shape.colors);
    record.inTransparencyMask = shape.alpha ? 1 : 0;
    record.inRowBytes = picture.width * shape.planes * shape.depth / 8;
    record.outRowBytes = record.inRowBytes;
    record.inData = picture.bytes.data();
    record.outData = out.data();
    record.maskData = picture.mask.empty() ? nullptr : picture.mask.data();
    record.maskRowBytes = picture.width;
    return record;
}

std::vector<std::uint8_t> RenderPicture(TestFilter& filter, TestPicture& picture) {
    std::vector<std::uint8_t> out(picture.bytes.size(), 0xA5);
    hostapi::FilterRecord record = MakeRecord(picture, out);
    EXPECT_EQ(filter.SelectRenderTemplate(&record), 0);
    return out;
}

std::vector<std::uint8_t> RenderInPlace(TestFilter& filter, TestPicture& picture) {
    std::vector<std::uint8_t> out = picture.bytes;
    hostapi::FilterRecord record = MakeRecord(picture, out);
    record.inData = out.data();
    EXPECT_EQ(filter.SelectRenderTemplate(&record), 0);
    return out;
}

}  // namespace mv::test
