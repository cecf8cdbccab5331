#include "RandomJobs.h"

#include <cmath>

namespace endtoend {
namespace {

struct Size {
    int width;
    int height;
};

Size DrawSize(Random& random) {
    static const Size small[] = {{1, 1},  {1, 2},  {2, 1},  {2, 2}, {3, 3},   {1, 17}, {19, 1},
                                 {2, 33}, {40, 2}, {3, 25}, {5, 4}, {64, 48}, {48, 48}};
    if (random.OneIn(3)) {
        return small[random.Below(static_cast<int>(sizeof small / sizeof small[0]))];
    }
    return {1 + random.Below(48), 1 + random.Below(40)};
}

// Which planes there are, in one of the ways in which hosts say so.
void DeclarePlanes(Random& random, int colors, bool alpha, int depthIndex, RenderJob& job) {
    static const int depths[] = {8, 16, 32};
    static const int gray[] = {1, 10, 17};
    static const int rgb[] = {3, 11, 16};
    static const int multichannel[] = {7, 14, 16};
    oracle::ImageFacts& facts = job.facts;
    facts.depth = depths[depthIndex];
    if (facts.depth == 8 && random.OneIn(6)) {
        facts.depth = 0;
    }
    const int extra = random.OneIn(3) ? 1 + random.Below(2) : 0;
    facts.planes = colors + (alpha ? 1 : 0) + extra;
    facts.transparencyMask = alpha ? 1 : 0;
    facts.layerPlanes = colors;
    facts.nonLayerPlanes = 0;
    if (colors == 1) {
        facts.imageMode = gray[depthIndex];
    } else if (colors == 3) {
        facts.imageMode = random.OneIn(4) ? multichannel[depthIndex] : rgb[depthIndex];
    } else {
        facts.imageMode = multichannel[depthIndex];
    }
    if (!alpha && random.OneIn(2)) {
        facts.layerPlanes = 0;
        facts.nonLayerPlanes = colors;
    }
}

double DrawSample(Random& random, int kind, double place, double& held) {
    switch (kind) {
        case 0:
            return random.Unit();
        case 1:
            return place;
        case 2:
            return held;
        case 3:
            return random.OneIn(2) ? 1.0 : 0.0;
        case 4:
            return random.OneIn(9) ? random.Unit() : 0.0;
        default:
            if (random.OneIn(5)) {
                held = random.Unit();
            }
            return held;
    }
}

double DrawAlpha(Random& random, int kind) {
    switch (kind) {
        case 0:
            return 1.0;
        case 1:
            return random.Unit();
        case 2:
            return random.OneIn(2) ? 1.0 : 0.0;
        default:
            return random.Unit() * 0.02;
    }
}

void FillPicture(Random& random, int colors, bool alpha, RenderJob& job) {
    const bool isFloat = job.facts.depth == 32;
    const double white = isFloat ? 1.0 : job.facts.depth == 16 ? 32768.0 : 255.0;
    const int kind = random.Below(6);
    const int alphaKind = random.Below(4);
    double low = 0.0;
    double high = 1.0;
    if (isFloat && random.OneIn(3)) {
        high = 3.0;
    }
    if (isFloat && random.OneIn(6)) {
        low = -0.2;
    }
    double held[3] = {random.Unit(), random.Unit(), random.Unit()};
    for (int y = 0; y < job.height; ++y) {
        for (int x = 0; x < job.width; ++x) {
            for (int plane = 0; plane < job.facts.planes; ++plane) {
                double value = random.Unit();
                if (plane < colors) {
                    const double place = (x * (plane + 1.0) + y * (3.0 - plane)) /
                                         (job.width * (plane + 1.0) + job.height * (3.0 - plane));
                    value = DrawSample(random, kind, place, held[plane]);
                    value = low + (high - low) * value;
                } else if (alpha && plane == colors) {
                    value = DrawAlpha(random, alphaKind);
                }
                const double scaled = value * white;
                job.Set(x, y, plane, isFloat ? scaled : std::floor(scaled + 0.5));
            }
        }
    }
}

void DrawMask(Random& random, RenderJob& job) {
    const int kind = random.Below(3);
    for (std::uint8_t& value : job.mask) {
        value = static_cast<std::uint8_t>(kind == 0   ? random.Below(256)
                                          : kind == 1 ? 255 * random.Below(2)
                                                      : 200);
    }
}

double DrawOrigin(Random& random, int size) {
    switch (random.Below(9)) {
        case 0:
            return random.Unit();
        case 1:
            return random.Between(-2.0, 3.0);
        case 2:
            return (random.Below(size) + 0.5) / size;
        case 3:
            return 0.0;
        case 4:
            return 1.0;
        case 5:
            return static_cast<double>(random.Below(size)) / size;
        case 6:
            return random.Between(-60.0, 60.0);
        case 7:
            return -random.Unit() / size;
        default:
            return 0.5;
    }
}

double OneOf(Random& random, std::initializer_list<double> values) {
    return values.begin()[random.Below(static_cast<int>(values.size()))];
}

void DrawBlur(Random& random, RenderJob& job) {
    oracle::Settings& s = job.settings;
    s.originX = DrawOrigin(random, job.width);
    s.originY = DrawOrigin(random, job.height);
    s.strength = random.OneIn(2) ? random.Unit() : OneOf(random, {0.0, 0.01, 0.25, 1.0, 1.5, 7.0});
    s.zoomStart = random.OneIn(2) ? random.Between(-0.5, 0.5)
                                  : OneOf(random, {0.5, 0.5, 0.0, -0.5, 0.7, -1.25});
    s.holdoutRadius = random.OneIn(2) ? 0.0 : random.Between(0.0, 1.2);
    s.invertGradient = random.OneIn(2);
}

void DrawColor(Random& random, RenderJob& job) {
    oracle::Settings& s = job.settings;
    s.intensity = random.OneIn(2) ? 1.0 : OneOf(random, {0.0, 0.5, random.Between(0.0, 3.0), 7.5});
    s.gammaCorrection = random.OneIn(2);
    s.contrast = random.OneIn(2) ? 0.0 : random.Between(0.0, 2.0);
    s.gammaCorrective =
        random.OneIn(2) ? 1.0 : OneOf(random, {0.0, 0.5, random.Between(0.1, 3.0), 3.0});
    if (random.OneIn(3)) {
        s.hue = OneOf(random, {0.0, 1.0, -1.0, random.Between(-1.0, 1.0)});
        s.saturation = OneOf(random, {0.0, 1.0, -1.0, random.Between(-1.0, 1.0)});
        s.lightness = OneOf(random, {0.0, 1.0, -1.0, random.Between(-1.0, 1.0)});
    }
}

void DrawSelection(Random& random, RenderJob& job) {
    oracle::Settings& s = job.settings;
    if (random.OneIn(2)) {
        s.selectionLow = OneOf(random, {0.0, 255.0, 64.0, random.Between(0.0, 255.0)});
        s.selectionHigh = OneOf(random, {0.0, 255.0, 64.0, random.Between(0.0, 255.0)});
    }
    if (random.OneIn(3)) {
        s.selectionSoften = random.Between(0.0, 3.0);
        s.selectionClimax = OneOf(random, {1.0, -1.0, 0.0, random.Between(-1.0, 1.0)});
    }
    s.useSizeSelection = random.OneIn(3);
}

}  // namespace

RenderJob RandomPicture(Random& random, int shape, int width, int height) {
    RenderJob job;
    job.width = width;
    job.height = height;
    const int colors = 1 + shape % 3;
    const bool alpha = shape / 3 % 2 == 1;
    DeclarePlanes(random, colors, alpha, shape / 6, job);
    const int unit = job.SampleBytes();
    job.Allocate(random.Below(4) * unit, random.Below(4) * unit, random.Below(5), random.OneIn(3));
    FillPicture(random, colors, alpha, job);
    for (std::uint8_t& byte : job.output) {
        byte = static_cast<std::uint8_t>(random.Below(256));
    }
    DrawMask(random, job);
    return job;
}

namespace {

RenderJob DrawJob(Random& random, int number, Size size) {
    RenderJob job = RandomPicture(random, number % kShapes, size.width, size.height);
    DrawBlur(random, job);
    DrawColor(random, job);
    DrawSelection(random, job);
    const int round = number / kShapes;
    job.settings.mode = 1 + (round + number) % 2;
    job.settings.blendMode = 1 + round % 23;
    job.settings.selectionShow = round % 5 == 4 ? 2 + round / 5 % 3 : 1;
    return job;
}

}  // namespace

RenderJob RandomJob(int number) {
    Random random(static_cast<std::uint32_t>(number) * 2654435761u + 17u);
    const Size size = DrawSize(random);
    return DrawJob(random, number, size);
}

RenderJob RandomLargeJob(int number) {
    Random random(static_cast<std::uint32_t>(number) * 2246822519u + 5u);
    const Size size{30 + random.Below(200), 30 + random.Below(160)};
    return DrawJob(random, number, size);
}

}  // namespace endtoend
