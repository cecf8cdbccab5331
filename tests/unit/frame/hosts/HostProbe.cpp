// A host with a made version resource: it prints how the module would describe it.
#include <cstdio>

#include "frame/HostIdentification.h"

int main() {
    mv::HostDescription host;
    const auto status = mv::GetHostDescription(hostapi::FourCharacterCode("test"), host);
    std::printf("%d %08x %u.%u stage %u build %u\n", static_cast<int>(status),
                static_cast<unsigned>(host.signature), static_cast<unsigned>(host.versionMajor),
                static_cast<unsigned>(host.versionMinor), static_cast<unsigned>(host.releaseStage),
                static_cast<unsigned>(host.buildNumber));
    return 0;
}
