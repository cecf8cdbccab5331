// Draws a sample picture: the one of the first run, or a scene by its name.
#include <cstdio>
#include <cstring>

#include "pictures/PictureFile.h"
#include "sample/Scenes.h"

namespace {

struct Scene {
    const char* name;
    mv::host::Picture (*paint)();
};

constexpr Scene kScenes[] = {
    {"lake", mv::host::sample::PaintLake},     {"street", mv::host::sample::PaintStreet},
    {"stage", mv::host::sample::PaintStage},   {"flower", mv::host::sample::PaintFlower},
    {"road", mv::host::sample::PaintRoad},     {"window", mv::host::sample::PaintWindow},
    {"tunnel", mv::host::sample::PaintTunnel},
};

int ShowUsage() {
    std::fputs("Usage: make_sample_picture OUTPUT.png [SCENE]\nScenes:", stderr);
    for (const Scene& scene : kScenes) {
        std::fprintf(stderr, " %s", scene.name);
    }
    std::fputs("; without one it is the first\n", stderr);
    return 2;
}

}  // namespace

int main(int count, char** words) {
    if (count != 2 && count != 3) {
        return ShowUsage();
    }
    for (const Scene& scene : kScenes) {
        if (count == 3 && std::strcmp(words[2], scene.name) != 0) {
            continue;
        }
        const auto failure = mv::host::WritePicture(words[1], scene.paint());
        if (failure) {
            std::fprintf(stderr, "make_sample_picture: %s\n", failure->text.c_str());
            return 6;
        }
        return 0;
    }
    return ShowUsage();
}
