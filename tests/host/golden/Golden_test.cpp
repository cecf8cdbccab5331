// Golden pictures: one for each mode, view and blend.
//
//     golden_tests MODULE            compares
//     golden_tests MODULE --write    writes the pictures anew, to be looked at before they are kept
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "HostSession.h"
#include "Module.h"
#include "pictures/PictureFile.h"

namespace {

using hostapi::FourCharacterCode;
using mv::host::Picture;

constexpr int kWidth = 120;
constexpr int kHeight = 80;

hostapi::EntryPoint entryPoint = nullptr;

struct GoldenCase {
    std::string name;
    mv::host::ScriptValues values;
};

std::vector<GoldenCase> Cases() {
    std::vector<GoldenCase> cases;
    const auto add = [&cases](const std::string& name, mv::host::ScriptValues values) {
        // A centre beside the middle, and streaks long enough to see.
        values.push_back({FourCharacterCode("ORIX"), 0.42});
        values.push_back({FourCharacterCode("ORIY"), 0.55});
        values.push_back({FourCharacterCode("STRE"), 0.5});
        cases.push_back({name, std::move(values)});
    };
    add("mode_normal", {});
    add("mode_abberative", {{FourCharacterCode("MODE"), std::int32_t{2}}});
    add("mode_abberative_inverted",
        {{FourCharacterCode("MODE"), std::int32_t{2}}, {FourCharacterCode("INGR"), true}});
    for (std::int32_t view = 2; view <= 4; ++view) {
        add("view_" + std::to_string(view), {{FourCharacterCode("SHOW"), view},
                                             {FourCharacterCode("USES"), true},
                                             {FourCharacterCode("SELS"), 1.0}});
    }
    for (std::int32_t blend = 2; blend <= 23; ++blend) {
        add("blend_" + std::to_string(blend), {{FourCharacterCode("BLND"), blend}});
    }
    return cases;
}

// Discs of light over a dark slope, with a transparent corner.
mv::host::HostImage Source() {
    mv::host::HostImage image(kWidth, kHeight, 4, 8);
    constexpr double kDiscs[][6] = {{30, 20, 9, 250, 210, 120},
                                    {78, 50, 13, 90, 190, 250},
                                    {100, 16, 6, 255, 90, 80},
                                    {52, 62, 5, 160, 255, 140}};
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            double color[3] = {20.0 + x / 3.0, 30.0 + y / 4.0, 50.0};
            for (const auto& disc : kDiscs) {
                const double away = std::hypot(x - disc[0], y - disc[1]) - disc[2];
                const double share = away < -1.0 ? 1.0 : away > 1.0 ? 0.0 : (1.0 - away) / 2.0;
                for (int c = 0; c < 3; ++c) {
                    color[c] += (disc[3 + c] - color[c]) * share;
                }
            }
            for (int c = 0; c < 3; ++c) {
                image.Set(x, y, c, color[c]);
            }
            const double corner = (kWidth - x) + (kHeight - y) - 30.0;
            image.Set(x, y, 3, corner > 20.0 ? 255.0 : corner < 0.0 ? 0.0 : corner * 255.0 / 20.0);
        }
    }
    return image;
}

Picture Render(const GoldenCase& wanted) {
    std::vector<std::uint8_t> mask(static_cast<std::size_t>(kWidth * kHeight));
    for (std::size_t i = 0; i < mask.size(); ++i) {
        mask[i] = static_cast<std::uint8_t>(i % kWidth * 2);
    }
    // Only the views look at a selection here: the others are of the whole picture.
    const bool isView = wanted.name.rfind("view_", 0) == 0;
    mv::host::HostSession session(
        entryPoint,
        mv::host::MakeDocument(Source(), true, isView ? mask : std::vector<std::uint8_t>{}));
    session.Play(wanted.values);
    session.Descriptor().playInfo = hostapi::plugInDialogSilent;
    EXPECT_EQ(session.Run().status, hostapi::noErr) << wanted.name;
    Picture picture;
    picture.width = kWidth;
    picture.height = kHeight;
    picture.alpha = true;
    picture.samples = session.Result().bytes;
    return picture;
}

std::filesystem::path PathOf(const GoldenCase& wanted) {
    return std::filesystem::path(GOLDEN_PICTURES) / (wanted.name + ".png");
}

// Values stay with a module: each case starts from the defaults of a fresh one.
class FreshModule {
public:
    explicit FreshModule(const std::filesystem::path& path) {
        std::string reason;
        if (!module_.Load(path, reason)) {
            std::fprintf(stderr, "%s\n", reason.c_str());
            std::exit(1);
        }
        entryPoint = module_.GetEntryPoint();
    }

private:
    mv::host::Module module_;
};

std::filesystem::path modulePath;

TEST(GoldenPictures, AreWhatTheModuleRenders) {
    for (const GoldenCase& wanted : Cases()) {
        const FreshModule module(modulePath);
        Picture golden;
        const auto error = mv::host::ReadPicture(PathOf(wanted), golden);
        ASSERT_FALSE(error.has_value()) << error->text;
        EXPECT_EQ(Render(wanted).samples, golden.samples) << wanted.name;
    }
}

TEST(GoldenPictures, DifferFromOneAnother) {
    std::vector<std::vector<std::uint8_t>> seen;
    for (const GoldenCase& wanted : Cases()) {
        Picture golden;
        ASSERT_FALSE(mv::host::ReadPicture(PathOf(wanted), golden).has_value()) << wanted.name;
        for (const auto& other : seen) {
            EXPECT_NE(golden.samples, other) << wanted.name;
        }
        seen.push_back(golden.samples);
    }
    EXPECT_EQ(seen.size(), 28u);
}

}  // namespace

int main(int argumentCount, char** arguments) {
    testing::InitGoogleTest(&argumentCount, arguments);
    modulePath =
        argumentCount > 1 ? std::filesystem::path(arguments[1]) : mv::host::DefaultModulePath();
    if (argumentCount > 2 && std::strcmp(arguments[2], "--write") == 0) {
        for (const GoldenCase& wanted : Cases()) {
            const FreshModule module(modulePath);
            if (const auto error = mv::host::WritePicture(PathOf(wanted), Render(wanted))) {
                std::fprintf(stderr, "%s\n", error->text.c_str());
                return 1;
            }
        }
        return 0;
    }
    return RUN_ALL_TESTS();
}
