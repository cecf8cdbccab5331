// Preset files under every environment that a host may have left: same bytes, and the environment
// as it was. As in a call into the module, the work itself runs in the default floating-point one.
#include <fenv.h>
#include <gtest/gtest.h>
#include <immintrin.h>
#include <locale.h>
#include <pthread.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <list>
#include <locale>

#include "frame/pfFilterRadialBlur.h"
#include "interface/NumberText.h"
#include "parameters/pfParameters.h"
#include "platform/FloatEnvironment.h"
#include "support/ScopedEnvironment.h"

namespace mv {
namespace {

namespace fs = std::filesystem;

// The C++ library's side of such a locale.
class Commas final : public std::numpunct<char> {
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

class PresetEnvironment : public testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "preset_env_XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
        plain_ = Work(folder_);
        EXPECT_NE(plain_.find("Strength 0.123457"), std::string::npos) << plain_;
    }
    void TearDown() override { fs::remove_all(folder_); }

    // Saves, loads, lists, saves again, deletes; what the files held and what was read.
    static std::string Work(const fs::path& folder) {
        const FloatEnvironmentGuard guard;
        const std::string path = (folder / "presets.cfg").string();
        const std::string given = (folder / "given.cfg").string();
        std::ofstream(given) << "FileOwner RadialBlur\nname a\nStrength 0.1234567891\n"
                                "Origin 0.3000000001 1e-3\nIntensity 4.9406e-324\nContrast 1.5\n";
        pfFilterRadialBlur filter("test", "test", 1, 2, 6, "test");
        pfParameters& parameters = filter.GetParameters();
        std::string result;
        const auto content = [&] {
            std::ifstream file(path, std::ios::binary);
            result.append(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
            result += "--\n";
        };
        result += parameters.LoadSettings("a", given, nullptr) ? "loaded\n" : "not loaded\n";
        parameters.SaveSettings("first look", path, "RadialBlur");
        content();
        filter.Reset(false);
        parameters.SaveSettings("second", path, "RadialBlur");
        parameters.LoadSettings("first_look", path, nullptr);
        parameters.SaveSettings("second", path, "RadialBlur");
        content();
        std::list<std::string> names;
        pfParameters::GetSettingNames(path, names, "RadialBlur");
        for (const std::string& name : names) {
            result += name + "\n";
        }
        pfParameters::DeleteSettings("first_look", path);
        content();
        char text[kNumberCapacity];
        FormatNumber(filter.MakeRenderSettings(1000, 500).centerX, text);
        double typed = 0.0;
        ParseNumber("0.1", typed);
        result += std::string(text) + (typed == 0.1 ? " as typed" : " not as typed");
        fs::remove(path);
        return result;
    }

    fs::path folder_;
    std::string plain_;
};

TEST_F(PresetEnvironment, ALocaleWithCommas) {
    const std::string command = "localedef --no-archive -i de_DE -f UTF-8 '" +
                                (folder_ / "de_DE.UTF-8").string() + "' >/dev/null 2>&1";
    const int made = std::system(command.c_str());
    const test::ScopedEnvironment path("LOCPATH", folder_.string());
    ASSERT_NE(setlocale(LC_ALL, "de_DE.UTF-8"), nullptr) << made << ", is 'locales' installed?";
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Commas));
    const std::string result = Work(folder_);
    const std::string point = localeconv()->decimal_point;
    std::locale::global(before);
    setlocale(LC_ALL, "C");
    EXPECT_EQ(result, plain_);
    EXPECT_EQ(point, ",");
}

TEST_F(PresetEnvironment, DenormalsFlushedToZero) {
    const unsigned before = _mm_getcsr();
    _mm_setcsr(before | 0x8040u);
    const std::string result = Work(folder_);
    const unsigned after = _mm_getcsr();
    _mm_setcsr(before);
    EXPECT_EQ(result, plain_);
    EXPECT_EQ(after & 0x8040u, 0x8040u);
}

TEST_F(PresetEnvironment, RoundingUpward) {
    fesetround(FE_UPWARD);
    const std::string result = Work(folder_);
    const int after = fegetround();
    fesetround(FE_TONEAREST);
    EXPECT_EQ(result, plain_);
    EXPECT_EQ(after, FE_UPWARD);
}

TEST_F(PresetEnvironment, ExceptionsUnmasked) {
    constexpr int kAll = FE_DIVBYZERO | FE_INVALID | FE_OVERFLOW | FE_UNDERFLOW | FE_INEXACT;
    feclearexcept(FE_ALL_EXCEPT);
    feenableexcept(kAll);
    const std::string result = Work(folder_);
    const int after = fegetexcept();
    fedisableexcept(FE_ALL_EXCEPT);
    EXPECT_EQ(result, plain_);
    EXPECT_EQ(after, kAll);
}

TEST_F(PresetEnvironment, AStackOf128Kilobytes) {
    std::string result;
    std::function<void()> work = [&] { result = Work(folder_); };
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, std::size_t{128} << 10), 0);
    pthread_t thread{};
    const auto run = [](void* function) -> void* {
        (*static_cast<std::function<void()>*>(function))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &work), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    EXPECT_EQ(result, plain_);
}

TEST_F(PresetEnvironment, AFolderWithLettersBeyondAscii) {
    const fs::path folder = folder_ / "Gr\xC3\xBC\xC3\x9F\x65 \xE6\x97\xA5\xE6\x9C\xAC \xFF\xFE";
    fs::create_directories(folder);
    EXPECT_EQ(Work(folder), plain_);
}

}  // namespace
}  // namespace mv
