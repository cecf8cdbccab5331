#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

namespace mv {

// The version resource of a program file. Only Windows has such a thing; elsewhere no file can be
// read. Owns a copy of the resource, so that what it gives out stays valid as long as it lives.
// Used by one thread.
class VersionResource {
public:
    enum class Result { Ok, Unreadable, NoMemory };

    struct FixedInformation {
        std::uint32_t flagsMask = 0;
        std::uint32_t flags = 0;
        std::uint32_t fileType = 0;
    };

    // The main file of this process, which is the host's program.
    Result ReadMainFile() noexcept;

    bool GetFixedInformation(FixedInformation& information) const noexcept;
    // The language in the upper half and the code page in the lower.
    bool GetTranslation(std::uint32_t& translation) const noexcept;
    // `key` is a full path inside the resource. False when there is no such text.
    bool GetText(const char* key, std::string_view& text) const noexcept;

private:
    std::unique_ptr<unsigned char[]> block_;
};

}  // namespace mv
