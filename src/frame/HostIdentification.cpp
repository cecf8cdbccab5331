#include "frame/HostIdentification.h"

#include <algorithm>
#include <new>

#include "platform/VersionResource.h"

namespace mv {

namespace {

using hostapi::FourCharacterCode;
using hostapi::OSType;

constexpr std::int32_t kOutOfMemory = -108;
constexpr std::uint32_t kDefaultTranslation = 0x04090000;

constexpr std::uint32_t kDebugFlag = 1;
constexpr std::uint32_t kPrereleaseFlag = 2;

struct HostName {
    std::string_view name;
    OSType signature;
};

// Searched in this order for a name that the internal name contains. "PM6" so stands for "PM65" as
// well, which is meant.
constexpr HostName kHostNames[] = {
    {"CorelDrw", FourCharacterCode("Cdrw")},
    {"PhotoPnt", FourCharacterCode("Mprn")},
    {"DeBabelizer Pro", FourCharacterCode("BABL")},
    {"Adobe After Effects", FourCharacterCode("FXTC")},
    {"Adobe Illustrator", FourCharacterCode("ART5")},
    {"PM5", FourCharacterCode("ALD5")},
    {"PM6", FourCharacterCode("ALD6")},
    {"PM65", FourCharacterCode("AD65")},
    {"PhotoDeluxe", FourCharacterCode("PHUT")},
    {"Photoshp", FourCharacterCode("8BIM")},
    {"Adobe Premiere", FourCharacterCode("PrMr")},
};

// The signatures that can be asked for one at a time.
constexpr OSType kHostSignatures[] = {
    FourCharacterCode("Cdrw"), FourCharacterCode("Mprn"), FourCharacterCode("BABL"),
    FourCharacterCode("FXTC"), FourCharacterCode("ART3"), FourCharacterCode("ARTZ"),
    FourCharacterCode("ARTY"), FourCharacterCode("ART5"), FourCharacterCode("ALD5"),
    FourCharacterCode("ALD6"), FourCharacterCode("AD65"), FourCharacterCode("PHUT"),
    FourCharacterCode("8BIM"), FourCharacterCode("PrMr"),
};

// Letters of the classic alphabet alone; the process's locale has no say.
constexpr char ToLower(char character) noexcept {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
}

bool ContainsIgnoringCase(std::string_view text, std::string_view part) noexcept {
    return std::search(text.begin(), text.end(), part.begin(), part.end(),
                       [](char a, char b) { return ToLower(a) == ToLower(b); }) != text.end();
}

// Takes the digits at the beginning off the text. A number beyond all versions stays at a bound.
unsigned TakeNumber(std::string_view& text) noexcept {
    constexpr unsigned kBound = 100000;
    unsigned number = 0;
    while (!text.empty() && text.front() >= '0' && text.front() <= '9') {
        number = std::min(number * 10 + static_cast<unsigned>(text.front() - '0'), kBound);
        text.remove_prefix(1);
    }
    return number;
}

std::uint8_t ToByte(unsigned number) noexcept {
    return static_cast<std::uint8_t>(std::min(number, 255u));
}

void Describe(const VersionResource& resource, OSType recordSignature,
              HostDescription& description) {
    description.signature = recordSignature;
    VersionResource::FixedInformation fixed;
    if (resource.GetFixedInformation(fixed)) {
        description.releaseStage = ReleaseStageOfFlags(fixed.flags, fixed.flagsMask);
        description.buildNumber = BuildNumberOfFileType(fixed.fileType);
    }
    std::uint32_t translation = kDefaultTranslation;
    resource.GetTranslation(translation);
    std::string_view text;
    if (resource.GetText(VersionTextKey(translation, "InternalName").c_str(), text)) {
        if (const OSType signature = SignatureOfInternalName(text); signature != 0) {
            description.signature = signature;
        }
    }
    if (resource.GetText(VersionTextKey(translation, "FileVersion").c_str(), text)) {
        ParseFileVersion(text, description);
    }
}

}  // namespace

OSType SignatureOfInternalName(std::string_view internalName) noexcept {
    for (const HostName& host : kHostNames) {
        if (ContainsIgnoringCase(internalName, host.name)) {
            return host.signature;
        }
    }
    return 0;
}

std::uint8_t ReleaseStageOfFlags(std::uint32_t flags, std::uint32_t flagsMask) noexcept {
    const std::uint32_t valid = flags & flagsMask;
    if ((valid & kDebugFlag) != 0) {
        return 0;
    }
    return (valid & kPrereleaseFlag) != 0 ? 2 : 3;
}

std::uint16_t BuildNumberOfFileType(std::uint32_t fileType) noexcept {
    switch (fileType) {
        case 1:
            return 11;
        case 0x40000:
            return 10;
        default:
            return 12;
    }
}

std::string VersionTextKey(std::uint32_t translation, std::string_view name) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string key = "\\StringFileInfo\\";
    for (int shift = 28; shift >= 0; shift -= 4) {
        key += kDigits[(translation >> shift) & 15u];
    }
    key += '\\';
    key += name;
    return key;
}

void ParseFileVersion(std::string_view text, HostDescription& description) noexcept {
    description.versionMajor = ToByte(TakeNumber(text));
    const std::size_t point = text.find('.');
    unsigned minor = 0;
    if (point != std::string_view::npos) {
        text.remove_prefix(point + 1);
        minor = TakeNumber(text);
    }
    if (minor > 10) {
        description.releaseStage = ToByte(minor % 10);
        minor /= 10;
    }
    description.versionMinor = ToByte(minor);
}

std::uint32_t PackedVersion(const HostDescription& description) noexcept {
    return (static_cast<std::uint32_t>(description.versionMajor & 15u) << 24) |
           (static_cast<std::uint32_t>(description.versionMinor & 15u) << 20) |
           (static_cast<std::uint32_t>(description.releaseStage & 15u) << 16) |
           description.buildNumber;
}

std::uint32_t TestHostSignature(const HostDescription& description,
                                std::initializer_list<OSType> signatures) noexcept {
    const bool listed =
        std::find(signatures.begin(), signatures.end(), description.signature) != signatures.end();
    return listed ? PackedVersion(description) : 0;
}

std::uint32_t TestHostSignature(const HostDescription& description, OSType signature) noexcept {
    const bool known = std::find(std::begin(kHostSignatures), std::end(kHostSignatures),
                                 signature) != std::end(kHostSignatures);
    return known && description.signature == signature ? PackedVersion(description) : 0;
}

std::int32_t GetHostDescription(OSType recordSignature, HostDescription& description) noexcept {
    static HostDescription kept;
    static bool isKept = false;
    if (!isKept) {
        HostDescription fresh;
        try {
            VersionResource resource;
            switch (resource.ReadMainFile()) {
                case VersionResource::Result::NoMemory:
                    return kOutOfMemory;
                case VersionResource::Result::Unreadable:
                    break;
                case VersionResource::Result::Ok:
                    Describe(resource, recordSignature, fresh);
                    break;
            }
        } catch (const std::bad_alloc&) {
            return kOutOfMemory;
        }
        kept = fresh;
        isKept = true;
    }
    description = kept;
    return 0;
}

}  // namespace mv
