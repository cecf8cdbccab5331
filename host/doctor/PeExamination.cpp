#include "doctor/PeExamination.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "doctor/PropertyList.h"
#include "doctor/Terminology.h"

namespace mv::host {
namespace {

constexpr const char* kGetAgain = "get the file again from where it came";

std::string Lower(std::string_view text) {
    std::string result(text);
    for (char& character : result) {
        character = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    }
    return result;
}

bool IsSystemLibrary(const std::string& name) {
    static constexpr std::array<std::string_view, 34> kNames = {
        "advapi32.dll", "bcrypt.dll",   "comctl32.dll", "comdlg32.dll", "crypt32.dll",
        "d2d1.dll",     "d3d11.dll",    "dbghelp.dll",  "dwmapi.dll",   "dxgi.dll",
        "gdi32.dll",    "gdiplus.dll",  "imm32.dll",    "iphlpapi.dll", "kernel32.dll",
        "mpr.dll",      "msimg32.dll",  "msvcrt.dll",   "ntdll.dll",    "ole32.dll",
        "oleaut32.dll", "opengl32.dll", "psapi.dll",    "rpcrt4.dll",   "secur32.dll",
        "setupapi.dll", "shell32.dll",  "shlwapi.dll",  "ucrtbase.dll", "user32.dll",
        "uxtheme.dll",  "version.dll",  "winmm.dll",    "ws2_32.dll"};
    return std::find(kNames.begin(), kNames.end(), name) != kNames.end() ||
           name == "windowscodecs.dll" || name == "wininet.dll" || name == "winspool.drv" ||
           name.starts_with("api-ms-win-") || name.starts_with("ext-ms-");
}

// Comes with Microsoft's own package for programs of its compiler.
bool IsRuntimeLibrary(const std::string& name) {
    return name.starts_with("msvcp") || name.starts_with("vcruntime") ||
           name.starts_with("concrt") || name.starts_with("vcomp") || name.starts_with("mfc");
}

std::string Joined(const std::vector<std::string>& texts) {
    std::string result;
    for (const std::string& text : texts) {
        result += (result.empty() ? "" : ", ") + text;
    }
    return result;
}

void CheckMachine(const PeImage& image, Examination& result) {
    if (image.machine == kMachineX64 && image.is64Bit) {
        result.Add(FindingLevel::Good, "it is made for 64-bit Windows (x86-64)");
    } else if (image.machine == kMachineX86) {
        result.Add(FindingLevel::Fault, "it is a 32-bit file, which a 64-bit editor cannot load",
                   "get the 64-bit module, or use it in a 32-bit editor");
    } else if (image.machine == kMachineArm64) {
        result.Add(FindingLevel::Fault,
                   "it is made for ARM processors, and an editor for x86-64 cannot load it",
                   "get the module for x86-64");
    } else {
        result.Add(FindingLevel::Fault, "it is made for a processor that 64-bit Windows is not for",
                   "get the module for x86-64");
    }
    if ((image.flags & kFlagLibrary) != 0) {
        result.Add(FindingLevel::Good, "it is a library, as modules are");
    } else {
        result.Add(FindingLevel::Fault, "it is a program to be started, not a module to be loaded",
                   "give the .8bf file that came with it");
    }
}

void CheckEntryPoint(const PeImage& image, const PropertyList* list, Examination& result) {
    const std::vector<std::string> names = ReadExports(image);
    if (!names.empty() && names.size() <= 20) {
        result.State("exports", "Exports", names);
    }
    const bool named = list != nullptr && !list->entryPoint64.empty();
    const std::string wanted = named ? list->entryPoint64 : "ENTRYPOINT";
    if (std::find(names.begin(), names.end(), wanted) != names.end()) {
        result.Add(FindingLevel::Good, "it exports " + wanted + ", which hosts call");
    } else {
        result.Add(FindingLevel::Fault,
                   "it does not export " + wanted + ", which hosts call to run a filter",
                   "use another file: this one is no filter module, or was built wrongly");
    }
    if (list != nullptr && !named) {
        result.Add(FindingLevel::Fault, "its property list names no function for 64-bit Windows",
                   list->entryPoint32.empty()
                       ? "get the module for 64-bit Windows"
                       : "it serves 32-bit editors only; get the 64-bit one");
    }
}

void CheckProperties(const PropertyList& list, Examination& result) {
    if (list.found < list.promised) {
        result.Add(FindingLevel::Fault,
                   "its property list breaks off after " + std::to_string(list.found) + " of " +
                       std::to_string(list.promised) + " properties",
                   kGetAgain);
    }
    if (list.kind == "8BFM") {
        result.Add(FindingLevel::Good, "its property list (PIPL) says that it is a filter");
    } else {
        result.Add(FindingLevel::Fault,
                   "its property list says that it is " + KindWords(list.kind) + ", not a filter",
                   "use it where your editor takes such modules");
    }
    if (list.name.empty() || list.category.empty()) {
        result.Add(FindingLevel::Fault, "it names no menu entry, so hosts have none to show",
                   kGetAgain);
    } else {
        result.State("menu", "In the menu", {"Filter > " + list.category + " > " + list.name});
    }
    result.State("interface", "Interface", {list.version});
    result.State("modes", "Image modes", list.modes);
    if (!list.layerSupport.empty()) {
        result.State("layers", "Layers", {list.layerSupport});
    }
    result.State("cases", "Cases", list.cases);
    if (!list.enableRule.empty()) {
        result.State("enabled", "Enabled when", {list.enableRule});
    }
    if (!list.strange.empty()) {
        result.State("otherProperties", "More properties", list.strange);
    }
}

void CheckTerminology(const PeResource* resource, const PropertyList& list, Examination& result) {
    if (resource == nullptr) {
        result.Add(FindingLevel::Note,
                   "it has no scripting terms (AETE): runs of it cannot be "
                   "recorded",
                   "nothing need be done; it works by hand");
        return;
    }
    const Terminology terms = ReadTerminology(resource->data);
    if (!terms.whole) {
        result.Add(FindingLevel::Warning, "its scripting terms (AETE) break off",
                   "it will work by hand; for recorded runs " + std::string(kGetAgain));
        return;
    }
    result.State("terminology", "Scripting", {list.terminology});
    result.State("event", "Script event", {terms.suite + " / " + terms.event});
    result.State("parameters", "Script values", terms.parameters);
    result.Add(FindingLevel::Good, "its scripting terms (AETE) name " +
                                       std::to_string(terms.parameters.size()) + " values");
}

void CheckImports(const PeImage& image, Examination& result) {
    std::vector<std::string> imports = ReadImports(image);
    std::vector<std::string> foreign;
    std::vector<std::string> runtime;
    for (const std::string& name : imports) {
        const std::string lower = Lower(name);
        if (IsRuntimeLibrary(lower)) {
            runtime.push_back(name);
        } else if (!IsSystemLibrary(lower)) {
            foreign.push_back(name);
        }
    }
    if (foreign.empty() && runtime.empty()) {
        result.Add(FindingLevel::Good, imports.empty() ? "it needs no library at all"
                                                       : "it needs libraries of Windows only");
    }
    if (!runtime.empty()) {
        result.Add(FindingLevel::Warning, "it needs the compiler's runtime: " + Joined(runtime),
                   "install Microsoft's Visual C++ redistributable package for x64");
    }
    if (!foreign.empty()) {
        result.Add(FindingLevel::Fault,
                   "it needs libraries that are not part of Windows: " + Joined(foreign),
                   "put them where your editor finds them, or get a module that needs none");
    }
    result.State("imports", "Needs", std::move(imports));
}

void CheckProtections(const PeImage& image, Examination& result) {
    const bool moves =
        (image.protections & kProtectDynamicBase) != 0 && (image.flags & kFlagFixedAddress) == 0;
    const bool noExecute = (image.protections & kProtectNoExecute) != 0;
    if (moves && noExecute) {
        result.Add(FindingLevel::Good,
                   std::string("Windows may place it anywhere in memory (ASLR") +
                       ((image.protections & kProtectHighEntropy) != 0 ? ", full range" : "") +
                       ") and forbid it to run data (NX)");
        return;
    }
    if (!moves) {
        result.Add(FindingLevel::Warning, "it asks for a fixed place in memory (no ASLR)",
                   "editors with strict protection refuse it; get a newer build");
    }
    if (!noExecute) {
        result.Add(FindingLevel::Warning,
                   "it does not allow that data be kept from running (no NX)",
                   "editors with strict protection refuse it; get a newer build");
    }
}

void CheckVersion(const std::vector<PeResource>& resources, Examination& result) {
    const auto found = std::find_if(resources.begin(), resources.end(),
                                    [](const PeResource& r) { return r.type == "#16"; });
    if (found == resources.end()) {
        result.Add(FindingLevel::Note, "it states no version", "nothing need be done");
        return;
    }
    const VersionInfo version = ReadVersionInfo(found->data);
    result.State("version", "Version", {version.fileVersion});
    struct Entry {
        const char* name;
        const char* key;
        const char* label;
    };
    static constexpr Entry kEntries[] = {{"CompanyName", "maker", "Maker"},
                                         {"FileDescription", "description", "Description"},
                                         {"OriginalFilename", "originalName", "Original name"},
                                         {"LegalCopyright", "copyright", "Copyright"}};
    for (const Entry& entry : kEntries) {
        const std::string text = version.Text(entry.name);
        if (!text.empty()) {
            result.State(entry.key, entry.label, {text});
        }
    }
}

// Whether the signature is good only its issuer's chain can tell, which is not looked at.
void CheckSignature(const PeImage& image, Examination& result) {
    const PeImage::Directory directory = image.DirectoryAt(kSignatureDirectory);
    if (directory.size == 0) {
        result.Add(FindingLevel::Note, "it is not signed",
                   "editors load it all the same; if Windows holds it back, see its Properties and "
                   "choose Unblock");
    } else if (image.file.U16(std::uint64_t{directory.address} + 6) == 2) {
        result.Add(FindingLevel::Good, "it carries a signature (" + std::to_string(directory.size) +
                                           " bytes, which are not verified here)");
    } else {
        result.Add(FindingLevel::Warning, "it carries a signature of an unknown kind", kGetAgain);
    }
}

// The system does not look at a library's sum, so a wrong one says: changed since it was built.
void CheckSum(const PeImage& image, Examination& result) {
    if (image.checkSum == 0) {
        result.Add(FindingLevel::Note, "it states no check sum, so damage cannot be seen",
                   "compare its SHA-256 with the one that was published");
    } else if (image.checkSum == ComputeCheckSum(image)) {
        result.Add(FindingLevel::Good,
                   "its check sum is right: no byte changed since it was built");
    } else {
        result.Add(FindingLevel::Fault,
                   "its check sum is wrong: it was damaged or changed after it was built",
                   kGetAgain);
    }
}

const PeResource* Find(const std::vector<PeResource>& resources, std::string_view type) {
    const auto found = std::find_if(resources.begin(), resources.end(),
                                    [type](const PeResource& r) { return r.type == type; });
    return found == resources.end() ? nullptr : &*found;
}

std::string KindOf(const PeImage& image, const PropertyList* list) {
    const std::string bits = image.machine == kMachineX64   ? "64-bit Windows"
                             : image.machine == kMachineX86 ? "32-bit Windows"
                                                            : "Windows on another processor";
    if ((image.flags & kFlagLibrary) == 0) {
        return "a program for " + bits;
    }
    if (list == nullptr) {
        return "a library for " + bits + ", not a module of an editor";
    }
    return (list->kind == "8BFM" ? "a filter module" : KindWords(list->kind)) + " for " + bits;
}

}  // namespace

bool HasEnding(std::string_view name, std::string_view ending) {
    return name.size() > ending.size() && Lower(name).ends_with(ending);
}

void ExamineWindowsFile(const PeImage& image, std::string_view fileName, Examination& result) {
    const std::vector<PeResource> resources = ReadResources(image);
    const PeResource* const properties = Find(resources, "PIPL");
    PropertyList list;
    if (properties != nullptr) {
        list = ReadPropertyList(properties->data);
    }
    const PropertyList* const listOrNone = properties != nullptr ? &list : nullptr;
    result.kind = KindOf(image, listOrNone);
    if (image.file.Size() < image.endOfData) {
        result.Add(FindingLevel::Fault,
                   "it ends early: it has " + std::to_string(image.file.Size()) +
                       " bytes, and its headers speak of " + std::to_string(image.endOfData),
                   "the copy or the download was cut off; " + std::string(kGetAgain));
    } else {
        CheckSum(image, result);
    }
    CheckMachine(image, result);
    CheckEntryPoint(image, listOrNone, result);
    if (listOrNone == nullptr) {
        result.Add(
            FindingLevel::Fault,
            "it has no property list (PIPL), so hosts do not see that it is a filter",
            "use the .8bf file of a filter; this one is something else, or was built wrongly");
    } else {
        CheckProperties(list, result);
        CheckTerminology(Find(resources, "AETE"), list, result);
    }
    CheckImports(image, result);
    CheckProtections(image, result);
    CheckSignature(image, result);
    CheckVersion(resources, result);
    if ((image.flags & kFlagLibrary) != 0 && !HasEnding(fileName, ".8bf")) {
        result.Add(FindingLevel::Warning,
                   "its name does not end in .8bf, by which editors find filters", "rename it");
    }
}

}  // namespace mv::host
