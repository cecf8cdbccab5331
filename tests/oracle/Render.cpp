#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "oracle/Blend.h"
#include "oracle/Color.h"
#include "oracle/HslSelection.h"
#include "oracle/Oracle.h"
#include "oracle/Rays.h"

namespace oracle {
namespace {

double ReadSample(Sample sample, const unsigned char* at) {
    if (sample == Sample::Byte) {
        return *at;
    }
    if (sample == Sample::Word) {
        std::uint16_t value = 0;
        std::memcpy(&value, at, sizeof value);
        return value;
    }
    float value = 0.0f;
    std::memcpy(&value, at, sizeof value);
    return static_cast<double>(value);
}

// Integer samples are cut, not rounded; the value lies in their range.
void WriteSample(Sample sample, double value, unsigned char* at) {
    if (sample == Sample::Byte) {
        *at = static_cast<unsigned char>(value);
    } else if (sample == Sample::Word) {
        const auto word = static_cast<std::uint16_t>(value);
        std::memcpy(at, &word, sizeof word);
    } else {
        const auto single = static_cast<float>(value);
        std::memcpy(at, &single, sizeof single);
    }
}

class Renderer {
public:
    Renderer(const Job& job, Summation summation, Stages* stages)
        : job_(job),
          shape_(job.shape),
          p_(job.settings),
          summation_(summation),
          stages_(stages),
          channels_(job.shape.Channels()) {}

    void Run() {
        FloatImage image = Select();
        const unsigned char* weightMask = p_.useSizeSelection ? nullptr : job_.mask;
        if (weightMask != nullptr) {
            Multiply(image, weightMask);
        }
        Keep(&Stages::selected, image);
        if (p_.selectionShow != 1) {
            Show(image);
            return;
        }
        const double cx = Centre(p_.originX * job_.width);
        const double cy = Centre(p_.originY * job_.height);
        double dx = std::fabs(cx - std::floor(cx)) - 0.5;
        double dy = std::fabs(cy - std::floor(cy)) - 0.5;
        if (p_.gammaCorrection) {
            Linearise(image);
        }
        if (p_.strength == 0.0) {
            dx = 0.0;
            dy = 0.0;
        } else {
            Move(image, dx, dy);
            Keep(&Stages::prepared, image);
            image = BlurAlongRays(image, shape_, RaysFor(cx, cy));
        }
        Keep(&Stages::blurred, image);
        Compose(image, -dx, -dy);
    }

private:
    static double Centre(double value) {
        const double limit = 1073741824.0;
        if (std::isnan(value)) {
            return 0.0;
        }
        return std::min(std::max(value, -limit), limit);
    }

    void Keep(FloatImage Stages::*member, const FloatImage& image) {
        if (stages_ != nullptr) {
            stages_->*member = image;
        }
    }

    std::int64_t PixelOffset(int x) const {
        return static_cast<std::int64_t>(x) * job_.planes * shape_.SampleBytes();
    }

    double Source(int x, int y, int c) const {
        return ReadSample(shape_.sample, job_.input + y * job_.inputRowBytes + PixelOffset(x) +
                                             c * shape_.SampleBytes());
    }

    void Store(int x, int y, int c, double value) const {
        WriteSample(
            shape_.sample, value,
            job_.output + y * job_.outputRowBytes + PixelOffset(x) + c * shape_.SampleBytes());
    }

    // The colours that the selection looks at: weighted by alpha in single precision and cut back
    // to the channel's own type.
    Triple Reference(int x, int y) const {
        Triple color{};
        for (int c = 0; c < shape_.colors; ++c) {
            color[static_cast<std::size_t>(c)] = Source(x, y, c);
        }
        if (!shape_.alpha) {
            return color;
        }
        const float alpha = static_cast<float>(Source(x, y, shape_.colors));
        const float factor = shape_.sample == Sample::Byte   ? alpha * 0.003921569f
                             : shape_.sample == Sample::Word ? alpha * 3.0517578e-05f
                                                             : alpha;
        for (int c = 0; c < shape_.colors; ++c) {
            double& value = color[static_cast<std::size_t>(c)];
            const float product = static_cast<float>(value) * factor;
            value = shape_.sample == Sample::Float ? static_cast<double>(product)
                                                   : std::trunc(static_cast<double>(product));
        }
        return color;
    }

    FloatImage Select() const {
        FloatImage image(job_.width, job_.height, channels_);
        const Ranges ranges = BuildRanges(shape_, p_);
        const double white = shape_.White();
        for (int y = 0; y < job_.height; ++y) {
            for (int x = 0; x < job_.width; ++x) {
                const double e = EvaluateRanges(shape_, ranges, Reference(x, y));
                const double weight =
                    shape_.alpha ? Source(x, y, shape_.colors) * shape_.InverseWhite() : 1.0;
                for (int c = 0; c < channels_; ++c) {
                    double value = Source(x, y, c);
                    if (shape_.alpha) {
                        value = value * weight;
                    }
                    if (p_.selectionShow != 3) {
                        value = value * e;
                    } else if (c < shape_.colors) {
                        value = e * white;
                    }
                    image.At(x, y, c) = static_cast<float>(value);
                }
            }
        }
        return image;
    }

    void Multiply(FloatImage& image, const unsigned char* mask) const {
        for (int y = 0; y < image.height; ++y) {
            for (int x = 0; x < image.width; ++x) {
                const double m = mask[y * job_.maskRowBytes + x] * 0.00392156862745098;
                for (int c = 0; c < channels_; ++c) {
                    float& value = image.At(x, y, c);
                    value = static_cast<float>(static_cast<double>(value) * m);
                }
            }
        }
    }

    void Show(const FloatImage& image) const {
        const double white = shape_.White();
        const unsigned char* sizeMask = p_.useSizeSelection ? job_.mask : nullptr;
        for (int y = 0; y < image.height; ++y) {
            for (int x = 0; x < image.width; ++x) {
                for (int c = 0; c < shape_.colors; ++c) {
                    double value = static_cast<double>(image.At(x, y, c));
                    if (shape_.sample != Sample::Float) {
                        value = Clamped(value, white);
                    }
                    if (p_.selectionShow == 4) {
                        // Unscaled at every depth: meant so.
                        value = sizeMask != nullptr ? sizeMask[y * job_.maskRowBytes + x] : white;
                    }
                    Store(x, y, c, value);
                }
                if (shape_.alpha) {
                    Store(x, y, shape_.colors, white);
                }
            }
        }
    }

    void Linearise(FloatImage& image) const {
        for (int y = 0; y < image.height; ++y) {
            for (int x = 0; x < image.width; ++x) {
                for (int c = 0; c < shape_.colors; ++c) {
                    float& value = image.At(x, y, c);
                    const double v = static_cast<double>(value) * shape_.InverseWhite();
                    const double linear =
                        v > 0.081 ? std::pow(v * 0.9099181073703367 + 0.09008189262966335,
                                             2.2222222222222223)
                                  : v * 0.2222222222222222;
                    value = static_cast<float>(linear) * static_cast<float>(shape_.White());
                }
            }
        }
    }

    static double Bilinear(const FloatImage& image, double px, double py, int c) {
        const int ix = static_cast<int>(px);
        const int iy = static_cast<int>(py);
        const double fx = px - ix;
        const double fy = py - iy;
        // Without a fraction a pixel is copied: a neighbour that is no number stays out of it.
        if (fx == 0.0 && fy == 0.0) {
            return static_cast<double>(image.At(ix, iy, c));
        }
        const int right = ix == image.width - 1 ? ix : ix + 1;
        const int lower = iy == image.height - 1 ? iy : iy + 1;
        return (1.0 - fx) * (1.0 - fy) * static_cast<double>(image.At(ix, iy, c)) +
               fx * (1.0 - fy) * static_cast<double>(image.At(right, iy, c)) +
               (1.0 - fx) * fy * static_cast<double>(image.At(ix, lower, c)) +
               fx * fy * static_cast<double>(image.At(right, lower, c));
    }

    // In place, in the order in which a pixel is overwritten after its last read. At the border
    // that the picture moves away from, the neighbour has moved already: meant so.
    void Move(FloatImage& image, double dx, double dy) const {
        for (int row = 0; row < image.height; ++row) {
            const int y = dy >= 0.0 ? row : image.height - 1 - row;
            for (int column = 0; column < image.width; ++column) {
                const int x = dx >= 0.0 ? column : image.width - 1 - column;
                float moved[4] = {};
                for (int c = 0; c < channels_; ++c) {
                    moved[c] = static_cast<float>(Bilinear(image, x + dx, y + dy, c));
                }
                for (int c = 0; c < channels_; ++c) {
                    image.At(x, y, c) = moved[c];
                }
            }
        }
    }

    RaySettings RaysFor(double cx, double cy) const {
        RaySettings rays;
        rays.centreX = static_cast<int>(cx);
        rays.centreY = static_cast<int>(cy);
        rays.strength = p_.strength;
        rays.zoomStart = p_.zoomStart;
        const auto w = static_cast<std::int64_t>(job_.width);
        const auto h = static_cast<std::int64_t>(job_.height);
        rays.holdoutPixels =
            p_.holdoutRadius * (std::sqrt(static_cast<double>(w * w + h * h)) * 0.5);
        rays.spectral = p_.mode != 1;
        rays.invertGradient = p_.invertGradient;
        rays.summation = summation_;
        return rays;
    }

    void Compose(const FloatImage& image, double dx, double dy) const {
        const std::vector<float> table =
            shape_.sample == Sample::Float ? std::vector<float>() : GammaTable(shape_, p_);
        const double white = shape_.White();
        for (int y = 0; y < job_.height; ++y) {
            for (int x = 0; x < job_.width; ++x) {
                Pixel blurred;
                Pixel result;
                for (int c = 0; c < channels_; ++c) {
                    const double value = Bilinear(image, x + dx, y + dy, c) * p_.intensity;
                    if (c < shape_.colors) {
                        blurred.color[static_cast<std::size_t>(c)] = value;
                        result.color[static_cast<std::size_t>(c)] = Source(x, y, c);
                    } else {
                        blurred.alpha = value;
                        result.alpha = Source(x, y, c);
                    }
                }
                ColorStage(shape_, p_, table, blurred);
                BlendPixels(shape_, result, blurred, p_.blendMode);
                for (int c = 0; c < shape_.colors; ++c) {
                    const double value = result.color[static_cast<std::size_t>(c)];
                    Store(x, y, c,
                          shape_.sample == Sample::Float ? AtLeastZero(value)
                                                         : Clamped(value, white));
                }
                if (shape_.alpha) {
                    Store(x, y, shape_.colors, Clamped(result.alpha, white));
                }
            }
        }
    }

    const Job& job_;
    const Shape& shape_;
    const Settings& p_;
    Summation summation_;
    Stages* stages_;
    int channels_;
};

}  // namespace

Settings Validated(Settings s) {
    s.intensity = std::max(s.intensity, 0.0);
    s.strength = std::max(s.strength, 0.0);
    s.holdoutRadius = std::max(s.holdoutRadius, 0.0);
    s.contrast = std::max(s.contrast, 0.0);
    s.gammaCorrective = std::max(s.gammaCorrective, 0.0);
    s.hue = std::min(std::max(s.hue, -1.0), 1.0);
    s.saturation = std::min(std::max(s.saturation, -1.0), 1.0);
    s.lightness = std::min(std::max(s.lightness, -1.0), 1.0);
    s.selectionLow = std::min(std::max(s.selectionLow, 0.0), 255.0);
    s.selectionHigh = std::min(std::max(s.selectionHigh, 0.0), 255.0);
    s.selectionSoften = std::min(std::max(s.selectionSoften, 0.0), 3.0);
    s.selectionClimax = std::min(std::max(s.selectionClimax, -1.0), 1.0);
    s.mode = std::min(std::max(s.mode, 1), 2);
    s.blendMode = std::min(std::max(s.blendMode, 1), 23);
    s.selectionShow = std::min(std::max(s.selectionShow, 1), 4);
    return s;
}

void Render(const Job& job, Summation summation, Stages* stages) {
    if (job.width <= 0 || job.height <= 0) {
        return;
    }
    Renderer(job, summation, stages).Run();
}

}  // namespace oracle
