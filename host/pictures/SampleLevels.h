// 16-bit samples: files count 0 to 65535, the filter interface 0 to 32768.
#pragma once

#include <algorithm>
#include <cstdint>

namespace mv::host {

constexpr std::uint32_t kInterfaceWhite = 32768;
constexpr std::uint32_t kFileWhite = 65535;

// Both round to the nearest level, so that each of the 32769 levels comes back from a file.
constexpr std::uint16_t FileToInterface(std::uint16_t level) {
    return static_cast<std::uint16_t>((level * kInterfaceWhite + kFileWhite / 2) / kFileWhite);
}

constexpr std::uint16_t InterfaceToFile(std::uint16_t level) {
    const std::uint32_t inside = std::min<std::uint32_t>(level, kInterfaceWhite);
    return static_cast<std::uint16_t>((inside * kFileWhite + kInterfaceWhite / 2) /
                                      kInterfaceWhite);
}

}  // namespace mv::host
