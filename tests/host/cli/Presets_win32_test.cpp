// Presets in files that Windows does not give away.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include "pictures/PictureFile.h"
#include "support/ChildProcess.h"
#include "support/PresetTexts.h"
#include "support/TestFiles.h"

namespace mv::host::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

// Another program reads the file and lets nobody write to it meanwhile.
TEST(PresetsOnWindows, AFileThatIsHeldStaysAsItWas) {
    const TempFolder folder;
    const std::filesystem::path path = folder / "looks.cfg";
    const std::string file = PathToText(path);
    const std::string before = FileText(kOwnerLine + Block("a"));
    WriteText(path, before);
    const HANDLE held = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"presets", "save", file, "b"},
          {"presets", "save", file, "a", "--hue", "1", "--force"},
          {"presets", "delete", file, "a"}}) {
        const ProgramRun run = RunRadialBlur(words, {.module = ""});
        EXPECT_EQ(run.code, 6) << words[1];
        EXPECT_THAT(run.err, HasSubstr("cannot write the preset file '" + file + "'"));
    }
    EXPECT_EQ(RunRadialBlur({"presets", "list", file}, {.module = ""}).out, "a\n");
    CloseHandle(held);
    EXPECT_EQ(ReadText(path), before);
    EXPECT_THAT(folder.Names(), ElementsAre("looks.cfg"));
}

TEST(PresetsOnWindows, ReservedFilesAndFoldersThatAreMissingAreTold) {
    EXPECT_EQ(
        RunRadialBlur({"presets", "save", "Q:\\nowhere\\looks.cfg", "a"}, {.module = ""}).code, 6);
    EXPECT_EQ(RunRadialBlur({"presets", "list", "Q:\\nowhere\\looks.cfg"}, {.module = ""}).code, 3);
}

}  // namespace
}  // namespace mv::host::test
