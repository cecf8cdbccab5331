// The preset list and its buttons, through the real boxes.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "support/DialogTest.h"

namespace mv::windowstest {
namespace {

constexpr int kList = 1001;
constexpr int kSave = 1002;
constexpr int kDelete = 1003;
constexpr int kOpen = 1015;
constexpr int kName = 1073;

class Presets : public DialogTest {
protected:
    Presets() {
        char folder[MAX_PATH] = {};
        GetTempPathA(MAX_PATH, folder);
        folder_ = std::filesystem::path(folder) / "radial_blur_presets";
        std::filesystem::remove_all(folder_);
        std::filesystem::create_directories(folder_);
    }
    ~Presets() override {
        std::error_code error;
        std::filesystem::remove_all(folder_, error);
    }

    std::string Path(const char* name) const { return (folder_ / name).string(); }

    static void WriteFile(const std::string& path, const std::string& text) {
        std::ofstream(path) << text;
    }

    static std::string ReadFile(const std::string& path) {
        std::ostringstream text;
        text << std::ifstream(path).rdbuf();
        return text.str();
    }

    static std::string TwoPresets() {
        return "FileOwner RadialBlur\n\nname soft\nStrength 0.100000\nMode 1\n"
               "\nname hard\nStrength 0.900000\nIntensity 3.000000\n";
    }

    void OpenWith(const std::string& path) {
        PutText("Preset Path", path);
        Open(60, 40);
    }

    std::vector<std::string> Names() {
        std::vector<std::string> names;
        const auto count = static_cast<int>(SendMessageA(user->Control(kList), CB_GETCOUNT, 0, 0));
        for (int i = 0; i < count; ++i) {
            char text[256] = {};
            SendMessageA(user->Control(kList), CB_GETLBTEXT, static_cast<WPARAM>(i),
                         reinterpret_cast<LPARAM>(text));
            names.emplace_back(text);
        }
        return names;
    }

    // Presses the button and gives the box that comes up.
    HWND BoxAfter(int button, const char* title) {
        user->PostClick(button);
        const HWND box = AwaitThreadWindow(run->ThreadId(), title);
        EXPECT_NE(box, nullptr) << title;
        return box;
    }

    static void Answer(HWND box, int id) {
        PostMessageA(box, WM_COMMAND, static_cast<WPARAM>(id),
                     reinterpret_cast<LPARAM>(GetDlgItem(box, id)));
    }

    static bool Gone(HWND box) {
        return Eventually([&] { return !IsWindow(box); });
    }

    static std::string BoxText(HWND box) {
        std::string all;
        for (HWND child = GetWindow(box, GW_CHILD); child != nullptr;
             child = GetWindow(child, GW_HWNDNEXT)) {
            char text[512] = {};
            SendMessageA(child, WM_GETTEXT, sizeof text, reinterpret_cast<LPARAM>(text));
            all += text;
            all += '|';
        }
        return all;
    }

    static void Name(HWND box, const char* name) {
        SendMessageA(GetDlgItem(box, kName), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(name));
    }

    void ChooseFile(const std::string& path) {
        const HWND box = BoxAfter(kOpen, "Open Presets File");
        HWND edit = GetDlgItem(box, 0x047C);
        if (edit == nullptr) {
            edit = GetDlgItem(box, 0x0480);
        }
        ASSERT_NE(edit, nullptr);
        ASSERT_TRUE(Eventually([&] { return IsWindowVisible(edit) != FALSE; }));
        SendMessageA(edit, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
        Answer(box, IDOK);
        EXPECT_TRUE(Gone(box));
        user->Settle();
    }

    std::filesystem::path folder_;
};

TEST_F(Presets, WithoutAFileOnlyOpenIsEnabled) {
    Open(60, 40);
    EXPECT_FALSE(user->Enabled(kList));
    EXPECT_FALSE(user->Enabled(kSave));
    EXPECT_FALSE(user->Enabled(kDelete));
    EXPECT_TRUE(user->Enabled(kOpen));
}

TEST_F(Presets, AStoredFileFillsTheListInOrderOfTheAlphabet) {
    WriteFile(Path("two.cfg"), TwoPresets());
    OpenWith(Path("two.cfg"));
    EXPECT_EQ(Names(), (std::vector<std::string>{"hard", "soft"}));
    EXPECT_EQ(user->Selected(kList), -1);
    EXPECT_TRUE(user->Enabled(kDelete));
}

TEST_F(Presets, AFileOfAnotherFilterIsDroppedWithoutAWord) {
    WriteFile(Path("other.cfg"), "FileOwner Other\n\nname x\n");
    OpenWith(Path("other.cfg"));
    EXPECT_TRUE(Names().empty());
    EXPECT_FALSE(user->Enabled(kSave));
    ASSERT_TRUE(user->PressCancel());
    EXPECT_EQ(TextValue("Preset Path"), "");
}

TEST_F(Presets, SelectingOneLoadsItInOneStep) {
    WriteFile(Path("two.cfg"), TwoPresets());
    OpenWith(Path("two.cfg"));
    user->Select(kList, 0);
    EXPECT_EQ(user->Text(1028), "0.9");
    EXPECT_EQ(user->Text(1013), "3");
    EXPECT_EQ(user->Selected(kList), 0);
    user->Select(kList, 1);
    EXPECT_EQ(user->Text(1028), "0.1");
    EXPECT_EQ(user->Text(1013), "3");
    user->Click(1004);
    EXPECT_EQ(user->Text(1028), "0.9");
    user->Click(1004);
    EXPECT_EQ(user->Text(1028), "0.25");
    EXPECT_EQ(user->Text(1013), "1");
    EXPECT_FALSE(user->Enabled(1004));
}

TEST_F(Presets, SavingMakesTheFileAndSelectsTheName) {
    OpenWith(Path("new.cfg"));
    EXPECT_TRUE(user->Enabled(kSave));
    EXPECT_FALSE(user->Enabled(kDelete));
    user->Type(1028, "0.75");
    const HWND box = BoxAfter(kSave, "save as");
    EXPECT_NE(BoxText(box).find("Abbrechen"), std::string::npos);
    EXPECT_NE(BoxText(box).find("Enter a Setting Name:"), std::string::npos);
    EXPECT_TRUE(Eventually([&] { return user->FocusedWindow() == GetDlgItem(box, kName); }));
    Name(box, "my first preset");
    Answer(box, IDOK);
    EXPECT_TRUE(Gone(box));
    user->Settle();
    EXPECT_EQ(Names(), (std::vector<std::string>{"my_first_preset"}));
    EXPECT_EQ(user->Selected(kList), 0);
    EXPECT_TRUE(user->Enabled(kDelete));
    const std::string text = ReadFile(Path("new.cfg"));
    EXPECT_EQ(text.find("FileOwner RadialBlur\n\nname my_first_preset\nOrigin 0.500000 0.500000\n"),
              0u);
    EXPECT_NE(text.find("\nStrength 0.750000\n"), std::string::npos);
    ASSERT_TRUE(user->PressCancel());
    EXPECT_EQ(TextValue("Preset Path"), Path("new.cfg"));
}

TEST_F(Presets, CancelInTheSaveBoxLeavesListAndFile) {
    WriteFile(Path("two.cfg"), TwoPresets());
    OpenWith(Path("two.cfg"));
    const HWND box = BoxAfter(kSave, "save as");
    Name(box, "third");
    Answer(box, IDCANCEL);
    EXPECT_TRUE(Gone(box));
    user->Settle();
    EXPECT_EQ(Names().size(), 2u);
    EXPECT_EQ(ReadFile(Path("two.cfg")), TwoPresets());
}

TEST_F(Presets, TheSelectionIsProposedAndOverwritingIsAsked) {
    WriteFile(Path("two.cfg"), TwoPresets());
    OpenWith(Path("two.cfg"));
    user->Select(kList, 1);
    user->Type(1028, "0.5");
    const HWND box = BoxAfter(kSave, "save as");
    char proposal[64] = {};
    SendMessageA(GetDlgItem(box, kName), WM_GETTEXT, sizeof proposal,
                 reinterpret_cast<LPARAM>(proposal));
    EXPECT_STREQ(proposal, "soft");
    Answer(box, IDOK);
    HWND question = AwaitThreadWindow(run->ThreadId(), "Overwrite Setting?");
    ASSERT_NE(question, nullptr);
    EXPECT_NE(BoxText(question).find("There already is a preset with that name.\nOverwrite it? "),
              std::string::npos);
    Answer(question, IDNO);
    EXPECT_TRUE(Gone(question));
    EXPECT_TRUE(IsWindow(box));
    DWORD selectionStart = 9;
    DWORD selectionEnd = 9;
    EXPECT_TRUE(Eventually([&] {
        SendMessageA(GetDlgItem(box, kName), EM_GETSEL, reinterpret_cast<WPARAM>(&selectionStart),
                     reinterpret_cast<LPARAM>(&selectionEnd));
        return selectionStart == 0 && selectionEnd == 4;
    }));
    EXPECT_EQ(ReadFile(Path("two.cfg")), TwoPresets());
    Answer(box, IDOK);
    question = AwaitThreadWindow(run->ThreadId(), "Overwrite Setting?");
    ASSERT_NE(question, nullptr);
    Answer(question, IDYES);
    EXPECT_TRUE(Gone(box));
    user->Settle();
    const std::string text = ReadFile(Path("two.cfg"));
    EXPECT_NE(text.find("name soft\nOrigin"), std::string::npos);
    EXPECT_NE(text.find("Strength 0.500000"), std::string::npos);
    EXPECT_NE(text.find("name hard\nStrength 0.900000"), std::string::npos);
    EXPECT_EQ(Names(), (std::vector<std::string>{"hard", "soft"}));
}

TEST_F(Presets, ANameThatDiffersInBlanksOnlyIsAskedAbout) {
    WriteFile(Path("blank.cfg"), "FileOwner RadialBlur\n\nname a_b\nStrength 0.1\n");
    OpenWith(Path("blank.cfg"));
    const HWND box = BoxAfter(kSave, "save as");
    Name(box, "a b");
    Answer(box, IDOK);
    const HWND question = AwaitThreadWindow(run->ThreadId(), "Overwrite Setting?");
    ASSERT_NE(question, nullptr);
    Answer(question, IDNO);
    EXPECT_TRUE(Gone(question));
    Answer(box, IDCANCEL);
    EXPECT_TRUE(Gone(box));
}

TEST_F(Presets, DeletingMovesToTheNeighbourAndLoadsIt) {
    WriteFile(Path("three.cfg"),
              "FileOwner RadialBlur\n\nname a\nStrength 0.100000\n\nname b\nStrength 0.200000\n"
              "\nname c\nStrength 0.300000\n");
    OpenWith(Path("three.cfg"));
    user->Select(kList, 2);
    HWND question = BoxAfter(kDelete, "Delete Preset?");
    EXPECT_NE(BoxText(question).find("Really delete this preset?"), std::string::npos);
    Answer(question, IDNO);
    EXPECT_TRUE(Gone(question));
    EXPECT_EQ(Names().size(), 3u);
    question = BoxAfter(kDelete, "Delete Preset?");
    Answer(question, IDYES);
    EXPECT_TRUE(Gone(question));
    user->Settle();
    EXPECT_EQ(Names(), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(user->Text(kList), "b");
    EXPECT_EQ(user->Text(1028), "0.2");
    user->Select(kList, 0);
    question = BoxAfter(kDelete, "Delete Preset?");
    Answer(question, IDYES);
    EXPECT_TRUE(Gone(question));
    user->Settle();
    EXPECT_EQ(user->Text(kList), "b");
    EXPECT_EQ(user->Text(1028), "0.2");
    question = BoxAfter(kDelete, "Delete Preset?");
    Answer(question, IDYES);
    EXPECT_TRUE(Gone(question));
    user->Settle();
    EXPECT_TRUE(Names().empty());
    EXPECT_FALSE(user->Enabled(kDelete));
    EXPECT_TRUE(user->Enabled(kSave));
    EXPECT_EQ(user->Text(1028), "0.2");
}

TEST_F(Presets, DeleteWithoutASelectionAsksNothing) {
    WriteFile(Path("two.cfg"), TwoPresets());
    OpenWith(Path("two.cfg"));
    user->Click(kDelete);
    EXPECT_EQ(FindThreadWindow(run->ThreadId(), "Delete Preset?"), nullptr);
    EXPECT_EQ(Names().size(), 2u);
}

TEST_F(Presets, OpeningAFileFillsTheListAndLoadsNothing) {
    WriteFile(Path("two.cfg"), TwoPresets());
    Open(60, 40);
    ChooseFile(Path("two.cfg"));
    EXPECT_EQ(Names().size(), 2u);
    EXPECT_EQ(user->Text(1028), "0.25");
    EXPECT_TRUE(user->Enabled(kSave));
    ASSERT_TRUE(user->PressCancel());
    EXPECT_STRCASEEQ(TextValue("Preset Path")->c_str(), Path("two.cfg").c_str());
}

TEST_F(Presets, ANewFileNameIsAccepted) {
    Open(60, 40);
    ChooseFile(Path("fresh.cfg"));
    EXPECT_TRUE(Names().empty());
    EXPECT_TRUE(user->Enabled(kSave));
    EXPECT_FALSE(user->Enabled(kDelete));
    ASSERT_TRUE(user->PressCancel());
    EXPECT_STRCASEEQ(TextValue("Preset Path")->c_str(), Path("fresh.cfg").c_str());
    EXPECT_FALSE(std::filesystem::exists(Path("fresh.cfg")));
}

TEST_F(Presets, AFileOfAnotherFilterIsNamedAndTheOldPathStays) {
    WriteFile(Path("two.cfg"), TwoPresets());
    WriteFile(Path("other.cfg"), "FileOwner Other\n\nname x\n");
    WriteFile(Path("plain.cfg"), "just words\n");
    OpenWith(Path("two.cfg"));
    ChooseFile(Path("other.cfg"));
    HWND box = AwaitThreadWindow(run->ThreadId(), "Error");
    ASSERT_NE(box, nullptr);
    EXPECT_NE(BoxText(box).find("The selected settings file belongs to the Filter: Other|"),
              std::string::npos);
    Answer(box, IDOK);
    EXPECT_TRUE(Gone(box));
    ChooseFile(Path("plain.cfg"));
    box = AwaitThreadWindow(run->ThreadId(), "Error");
    ASSERT_NE(box, nullptr);
    EXPECT_NE(BoxText(box).find("The file you selected is no valid Settingsfile."),
              std::string::npos);
    Answer(box, IDOK);
    EXPECT_TRUE(Gone(box));
    EXPECT_EQ(Names().size(), 2u);
}

}  // namespace
}  // namespace mv::windowstest
