#include "platform/VersionResource.h"

namespace mv {

VersionResource::Result VersionResource::ReadMainFile() noexcept {
    return Result::Unreadable;
}

bool VersionResource::GetFixedInformation(FixedInformation&) const noexcept {
    return false;
}

bool VersionResource::GetTranslation(std::uint32_t&) const noexcept {
    return false;
}

bool VersionResource::GetText(const char*, std::string_view&) const noexcept {
    return false;
}

}  // namespace mv
