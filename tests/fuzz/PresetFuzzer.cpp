// Preset files: any bytes as the file and any name, read, listed, saved and deleted, on a disk that
// may refuse any of it.
#include <cmath>
#include <list>

#include "FuzzInput.h"
#include "FuzzTarget.h"
#include "MemoryFiles.h"
#include "frame/pfFilterRadialBlur.h"
#include "parameters/PresetText.h"
#include "parameters/pfUndoBuffer.h"

namespace {

using fuzzing::DiskFaults;
using fuzzing::MemoryFiles;
using fuzzing::Require;

mv::pfFilterRadialBlur& Filter() {
    static mv::pfFilterRadialBlur filter("fuzz", "fuzz", 1, 2, 6, "fuzz");
    return filter;
}

std::string Content(const std::string& path) {
    const std::string* const content = MemoryFiles::Get().Find(path);
    return content == nullptr ? std::string() : *content;
}

bool HoldsPreset(const std::string& content, const std::string& name) {
    mv::PresetTokens tokens(content);
    return mv::FindPreset(tokens, name);
}

std::string WithoutBlanks(std::string name) {
    for (char& character : name) {
        if (std::string(" \t\n\v\f\r").find(character) != std::string::npos) {
            character = '_';
        }
    }
    return name;
}

void Load(const std::string& name, const std::string& path, bool undoable) {
    mv::pfParameters& parameters = Filter().GetParameters();
    const std::string before = Content(path);
    const bool found =
        parameters.LoadSettings(name, path, undoable ? &Filter().GetUndoBuffer() : nullptr);
    Require(Content(path) == before, "loading leaves the file");
    Require(!found || HoldsPreset(before, name), "what is loaded is in the file");
    const mv::RenderSettings settings = Filter().MakeRenderSettings(64, 48);
    Require(settings.mode >= 1 && settings.mode <= 2 && settings.blend >= 1 &&
                settings.blend <= 23 && settings.show >= 1 && settings.show <= 4,
            "lists stand on one of their entries");
    Require(settings.strength >= 0.0 && !std::isnan(settings.strength), "hard bounds hold");
    Require(settings.hue >= -1.0 && settings.hue <= 1.0, "hard bounds hold");
}

void Save(const std::string& name, const std::string& path) {
    mv::pfParameters& parameters = Filter().GetParameters();
    const std::string before = Content(path);
    if (!parameters.SaveSettings(name, path, "RadialBlur")) {
        Require(Content(path) == before, "what cannot be saved changes nothing");
        return;
    }
    const std::string saved = WithoutBlanks(name);
    const std::string once = Content(path);
    const DiskFaults& faults = MemoryFiles::Get().Faults();
    if (faults.refusesReading || faults.replacement != mv::FileReplacement::Done) {
        Require(once.starts_with(before), "a disk that refuses something costs nothing");
        Require(!faults.refusesAdding || once == before, "what was refused is not there");
        return;
    }
    // A file that breaks off behind the word "name" takes the new block's first word for a name,
    // and an owner's line within the replaced block goes with it.
    std::string owner = "RadialBlur";
    if (HoldsPreset(once, saved) && mv::pfParameters::IsSettingFileValid(path, owner)) {
        Require(parameters.LoadSettings(saved, path, nullptr), "what was saved can be loaded");
        Require(parameters.SaveSettings(name, path, "RadialBlur"), "and saved again");
        Require(Content(path) == once, "save, load, save is a fixed point");
    }
}

void Delete(const std::string& name, const std::string& path) {
    const std::string before = Content(path);
    const bool done = mv::pfParameters::DeleteSettings(name, path);
    const std::string after = Content(path);
    Require(done || after == before, "what cannot be deleted changes nothing");
    Require(after.size() <= before.size() + 2, "deleting makes nothing longer");
}

void List(const std::string& path) {
    std::list<std::string> names;
    const std::string before = Content(path);
    if (mv::pfParameters::GetSettingNames(path, names, "RadialBlur")) {
        for (const std::string& name : names) {
            Require(HoldsPreset(before, name), "what is listed is in the file");
        }
    }
    std::string owner = "RadialBlur";
    static_cast<void>(mv::pfParameters::IsSettingFileValid(path, owner));
    Require(Content(path) == before, "listing leaves the file");
}

// Every second input finds a disk that takes everything.
DiskFaults Faults(int head) {
    DiskFaults faults;
    if ((head & 0x80) != 0) {
        faults.replacement = static_cast<mv::FileReplacement>(1 + (head >> 4 & 3));
        faults.refusesAdding = (head & 8) != 0;
    } else if ((head & 0x78) == 0x40) {
        faults.refusesReading = true;
    }
    return faults;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::string path = "presets.cfg";
    fuzzing::FuzzInput input(data, size);
    const int head = input.Byte();
    const int operation = head % 8;
    const std::string name = input.Text(static_cast<std::size_t>(input.Below(24)));
    MemoryFiles& files = MemoryFiles::Get();
    files.Restart(path, input.Rest(), Faults(head));
    if ((head & 0xF8) == 0x48) {
        files.Remove(path);
    }
    // Every input starts from the same values.
    Filter().Reset(false);
    if (operation < 3) {
        Load(name, path, operation == 1);
    } else if (operation < 5) {
        Save(name, path);
    } else if (operation < 7) {
        Delete(name, path);
    } else {
        List(path);
    }
    Require(files.Count() <= 1, "no file is made beside the one that was named");
    return 0;
}

std::vector<std::string> fuzzing::Seeds() {
    static const std::string kFile =
        "FileOwner RadialBlur\n\nname soft_glow\nOrigin 0.250000 0.750000\nIntensity 1.500000\n"
        "Strength 0.400000\nMode 2\nInvertGradient 1\nBlendMode 5\nSelectionShow 1\n"
        "\nname rays\nStrength 1e40\nMode 9\nHue nan\nContrast inf\n";
    std::vector<std::string> seeds;
    for (char operation = 0; operation < 8; ++operation) {
        for (const std::string& name : {std::string("soft_glow"), std::string("rays"),
                                        std::string("new one"), std::string()}) {
            std::string head(1, operation);
            head.push_back(static_cast<char>(name.size()));
            seeds.push_back(head + name + kFile);
            seeds.push_back(head + name + "\xEF\xBB\xBF" + mv::ToCarriageReturns(kFile) +
                            "\xFF\x1A");
        }
    }
    for (const char head :
         {'\x43', '\x4B', '\x83', '\x8B', '\x93', '\xA3', '\xB3', '\x86', '\xB6'}) {
        seeds.push_back(std::string(1, head) + "\x04" + "rays" + kFile);
        seeds.push_back(std::string(1, head) + "\x03" + "new" + kFile);
    }
    seeds.push_back(std::string("\x03\x01x", 3));
    seeds.push_back(std::string("\x03\x01xFileOwner Other\nname a\n"));
    return seeds;
}
