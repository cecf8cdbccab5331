// The process around the module is not as it expects it: another locale, another floating-point
// environment, a small stack, a strange home. Same bytes, and everything is given back as it was.
#include <fenv.h>
#include <gtest/gtest.h>
#include <immintrin.h>
#include <locale.h>
#include <pthread.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <locale>

#include "Module.h"
#include "RandomJobs.h"
#include "RenderJob.h"
#include "TestLength.h"

namespace endtoend {
namespace {

namespace fs = std::filesystem;

constexpr unsigned kFlushBits = 0x8040u;  // denormals are zero, results flushed to zero

// The C++ library's side of such a locale.
class Commas final : public std::numpunct<char> {
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

// A folder of this test's own, gone with it.
class ScratchFolder {
public:
    ScratchFolder() {
        std::string pattern = (fs::temp_directory_path() / "radial_blur_env_XXXXXX").string();
        path_ = mkdtemp(pattern.data());
    }
    ~ScratchFolder() {
        std::error_code error;
        fs::remove_all(path_, error);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    const fs::path& Path() const { return path_; }

private:
    fs::path path_;
};

// Sets a variable for the length of an object.
class Variable {
public:
    Variable(const char* name, const std::string& value) : name_(name) {
        if (const char* const before = getenv(name); before != nullptr) {
            before_ = before;
            wasSet_ = true;
        }
        setenv(name, value.c_str(), 1);
    }
    ~Variable() {
        if (wasSet_) {
            setenv(name_, before_.c_str(), 1);
        } else {
            unsetenv(name_);
        }
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    const char* name_;
    std::string before_;
    bool wasSet_ = false;
};

// A module of its own, with static objects that are made in the environment of the test.
class FreshModule {
public:
    explicit FreshModule(const ScratchFolder& folder) {
        const fs::path copy = folder.Path() / "radial_blur_copy.so";
        fs::copy_file(ModulePath(), copy, fs::copy_options::overwrite_existing);
        std::string reason;
        isLoaded_ = module_.Load(copy, reason);
        EXPECT_TRUE(isLoaded_) << reason;
    }
    hostapi::EntryPoint Entry() const { return module_.GetEntryPoint(); }

private:
    mv::host::Module module_;
    bool isLoaded_ = false;
};

// What the module gives: pictures of every shape and mode, and the values that it recorded.
struct Results {
    std::vector<std::vector<std::uint8_t>> pictures;
    std::string values;

    bool operator==(const Results&) const = default;
};

// `enter` and `leave` set the environment and take it back around each call into the module: the
// test's own numbers are not to depend on it.
Results RunSuite(
    hostapi::EntryPoint entry, const std::function<void()>& enter = [] {},
    const std::function<void()>& leave = [] {}) {
    Results results;
    for (int number = 0; number < Times(72, 720); ++number) {
        const RenderJob job = RandomJob(number);
        JobSession session(job, {}, {}, entry);
        session.Host().Play(ScriptOf(job.settings));
        enter();
        const hostapi::OSErr status = session.Host().Call(hostapi::filterSelectorStart);
        leave();
        results.pictures.push_back(session.Output());
        results.values += std::to_string(status) + session.Reproach();
        if (session.Host().Recorded()) {
            for (const auto& value : *session.Host().Recorded()) {
                const double* const number64 = std::get_if<double>(&value.value);
                const double raw = number64 != nullptr ? *number64 : 0.0;
                results.values.append(reinterpret_cast<const char*>(&raw), sizeof raw);
            }
        }
    }
    return results;
}

class EnvironmentTest : public testing::Test {
protected:
    static void SetUpTestSuite() { plain = new Results(RunSuite(Entry())); }
    static void TearDownTestSuite() { delete plain; }

    static const Results* plain;
    ScratchFolder folder_;
};
const Results* EnvironmentTest::plain = nullptr;

TEST_F(EnvironmentTest, PlainRunsAgreeWithOneAnother) {
    const FreshModule module(folder_);
    EXPECT_TRUE(RunSuite(module.Entry()) == *plain);
    EXPECT_GT(plain->pictures.size(), 70u);
}

TEST_F(EnvironmentTest, ALocaleWithCommas) {
    const std::string command = "localedef --no-archive -i de_DE -f UTF-8 '" +
                                (folder_.Path() / "de_DE.UTF-8").string() + "' >/dev/null 2>&1";
    const int made = std::system(command.c_str());
    const Variable path("LOCPATH", folder_.Path().string());
    ASSERT_NE(setlocale(LC_ALL, "de_DE.UTF-8"), nullptr) << made << ", is 'locales' installed?";
    ASSERT_STREQ(localeconv()->decimal_point, ",");
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Commas));
    {
        const FreshModule module(folder_);
        EXPECT_TRUE(RunSuite(module.Entry()) == *plain);
    }
    EXPECT_STREQ(localeconv()->decimal_point, ",");
    std::locale::global(before);
    setlocale(LC_ALL, "C");
}

TEST_F(EnvironmentTest, DenormalsFlushedToZero) {
    const unsigned before = _mm_getcsr();
    bool stays = true;
    _mm_setcsr(before | kFlushBits);
    const FreshModule module(folder_);
    _mm_setcsr(before);
    const Results results = RunSuite(
        module.Entry(), [&] { _mm_setcsr(before | kFlushBits); },
        [&] {
            stays = stays && (_mm_getcsr() & kFlushBits) == kFlushBits;
            _mm_setcsr(before);
        });
    EXPECT_TRUE(results == *plain);
    EXPECT_TRUE(stays);
}

TEST_F(EnvironmentTest, RoundingUpward) {
    for (const int rounding : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        bool stays = true;
        fesetround(rounding);
        const FreshModule module(folder_);
        fesetround(FE_TONEAREST);
        const Results results = RunSuite(
            module.Entry(), [&] { fesetround(rounding); },
            [&] {
                stays = stays && fegetround() == rounding;
                fesetround(FE_TONEAREST);
            });
        EXPECT_TRUE(results == *plain) << rounding;
        EXPECT_TRUE(stays);
    }
}

// Each would end the process if it were met with the host's setting.
TEST_F(EnvironmentTest, ExceptionsUnmasked) {
    constexpr int kAll = FE_DIVBYZERO | FE_INVALID | FE_OVERFLOW | FE_UNDERFLOW | FE_INEXACT;
    const FreshModule module(folder_);
    bool stays = true;
    const Results results = RunSuite(
        module.Entry(),
        [] {
            feclearexcept(FE_ALL_EXCEPT);
            feenableexcept(kAll);
        },
        [&] {
            stays = stays && fegetexcept() == kAll && fetestexcept(FE_ALL_EXCEPT) == 0;
            fedisableexcept(FE_ALL_EXCEPT);
        });
    EXPECT_TRUE(results == *plain);
    EXPECT_TRUE(stays);
}

#ifndef RADIAL_BLUR_SANITIZED  // whose frames are several times as large
TEST_F(EnvironmentTest, AStackOf128Kilobytes) {
    const FreshModule module(folder_);
    std::function<void()> work;
    hostapi::OSErr status = 0;
    for (int number = 0; number < Times(72, 720); ++number) {
        const RenderJob job = RandomJob(number);
        JobSession session(job, {}, {}, module.Entry());
        work = [&] { status = session.Start(); };
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
        EXPECT_EQ(status, hostapi::noErr);
        EXPECT_EQ(session.Output(), plain->pictures[static_cast<std::size_t>(number)]) << number;
    }
}
#endif

// The log of the trace lies in the home folder, and is written there whatever its letters are.
TEST_F(EnvironmentTest, AHomeFolderWithLettersBeyondAscii) {
    const fs::path home = folder_.Path() /
                          "Gr\xC3\xBC\xC3\x9F"
                          "e \xE6\x97\xA5\xE6\x9C\xAC \xFF\xFE";
    fs::create_directories(home / "morvenhale");
    const fs::path log = home / "morvenhale" / "radial_blur_ps.log";
    std::ofstream(log) << "before\n";
    const Variable variable("HOME", home.string());
    {
        const FreshModule module(folder_);
        const RenderJob job = RandomJob(0);
        JobSession session(job, {}, {}, module.Entry());
        EXPECT_EQ(session.Start(), hostapi::noErr);
        EXPECT_EQ(session.Output(), plain->pictures[0]);
    }
    std::ifstream file(log);
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    EXPECT_EQ(text.substr(0, 7), "before\n");
    EXPECT_NE(text.find("pfFilter::DoStartSelector"), std::string::npos);
}

TEST_F(EnvironmentTest, HomeFoldersThatAreNone) {
    for (const std::string& home : {std::string(), std::string("/dev/null"), std::string("/"),
                                    std::string(5000, 'x'), std::string("/nowhere/at/all")}) {
        const Variable variable("HOME", home);
        const FreshModule module(folder_);
        const RenderJob job = RandomJob(1);
        JobSession session(job, {}, {}, module.Entry());
        EXPECT_EQ(session.Start(), hostapi::noErr) << home;
        EXPECT_EQ(session.Output(), plain->pictures[1]);
    }
}

}  // namespace
}  // namespace endtoend
