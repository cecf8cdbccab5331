#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

#include "hostapi/HostApi.h"

namespace mv {

// Under which application the module runs. No decision depends on it: it is the place for a
// workaround that only one host needs.
struct HostDescription {
    hostapi::OSType signature = 0;
    std::uint8_t versionMajor = 0;
    std::uint8_t versionMinor = 0;
    std::uint8_t releaseStage = 0;
    std::uint16_t buildNumber = 0;
};

// Describes the host from the version resource of its program. `recordSignature`, as the filter
// record has it, stands in where the program's name tells nothing. The first success is kept for
// good. Gives 0, or -108 when there is no memory; a host without a version resource is described
// as nothing, with the result 0. For the host's thread only.
std::int32_t GetHostDescription(hostapi::OSType recordSignature,
                                HostDescription& description) noexcept;

// The host's version, packed, if it is one of those asked for; else 0.
std::uint32_t TestHostSignature(const HostDescription& description,
                                std::initializer_list<hostapi::OSType> signatures) noexcept;
// The same for one signature, which must be a known one.
std::uint32_t TestHostSignature(const HostDescription& description,
                                hostapi::OSType signature) noexcept;

// The steps, of which none needs a version resource at hand.

// The signature of the host that an internal name belongs to, 0 for a name that is not known.
hostapi::OSType SignatureOfInternalName(std::string_view internalName) noexcept;
std::uint8_t ReleaseStageOfFlags(std::uint32_t flags, std::uint32_t flagsMask) noexcept;
std::uint16_t BuildNumberOfFileType(std::uint32_t fileType) noexcept;
// The path of a text inside a version resource.
std::string VersionTextKey(std::uint32_t translation, std::string_view name);
// Reads major and minor version, and for a two-digit minor the stage, from a text such as "6.52".
void ParseFileVersion(std::string_view text, HostDescription& description) noexcept;
std::uint32_t PackedVersion(const HostDescription& description) noexcept;

}  // namespace mv
