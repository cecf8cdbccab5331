#include "frame/MorvenhalePlugin.h"

#include <utility>

namespace mv {

MorvenhalePlugin::MorvenhalePlugin(std::string name, std::string maker, std::uint32_t versionMajor,
                                   std::uint32_t versionMinor, std::uint32_t versionPatch,
                                   std::string description)
    : name_(std::move(name)),
      maker_(std::move(maker)),
      versionMajor_(versionMajor),
      versionMinor_(versionMinor),
      versionPatch_(versionPatch),
      description_(std::move(description)) {}

}  // namespace mv
