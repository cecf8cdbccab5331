// Hot loops over rows of pixels, one body for each instruction set. All give the bytes of the
// plain form. Only plain data crosses this line, as with the ray kernels.
#pragma once

#include <cstddef>
#include <cstdint>

namespace mv {

// Where a row is read with a shift of less than a pixel: for each column the whole column to the
// left of the place, the share of its right neighbour, and which column that is. Run i of columns
// ends before runEnds[i], the last one at the width: in a run the columns follow each other, and
// the share is one and the same.
struct ShiftedColumns {
    const std::int32_t* left;
    const std::int32_t* right;
    const double* share;
    const std::int32_t* runEnds;
};

// Pixels of three weighted colours and alpha, 0..white: the alpha behind each three of colors, and
// for each channel the index into the tone table, which ends with lastIndex.
struct TonedPixels {
    const double* colors;
    const std::int32_t* indices;
    const float* toneTable;
    std::int32_t lastIndex;
    double white;
    double inverseWhite;
};

// The tone curve of float pictures, whose white is 1.
struct ToneRule {
    double contrast;
    double exponent;
    bool isEncoded;  // the Rec. 709 transfer function behind the power
};

struct RowKernels {
    // Takes count floats of an encoded signal, 0..white, into linear light in place. With period
    // channels a pixel, channel skip (alpha; -1 for none) stays as it is.
    void (*linearize)(float* values, std::int32_t count, std::int32_t period, std::int32_t skip,
                      double inverseWhite, float white);
    // out[x] = the bilinear sample between two rows of pixels, times gain: doubles or floats.
    void (*shiftToDouble[5])(double* out, const float* upper, const float* lower,
                             const ShiftedColumns& columns, double lowerShare, double gain,
                             std::int32_t from, std::int32_t end);
    void (*shiftToFloat[5])(float* out, const float* upper, const float* lower,
                            const ShiftedColumns& columns, double lowerShare, std::int32_t from,
                            std::int32_t end);
    // Divides each pixel's sums by the weight behind them; 0 where there is no weight.
    void (*normalize[5])(float* out, const float* sums, std::int32_t pixels);
    // Indices into the tone table, from weighted colours: contrast, clamp to 0..white, scale.
    void (*toneIndices)(std::int32_t* out, const double* colors, std::int32_t count,
                        double contrast, double white, double indexScale);
    // The tone curve of count colours, as floats of which none is negative.
    void (*toneFloats)(float* out, const double* colors, std::int32_t count, const ToneRule& rule);
    // Pixels of three colours and alpha, packed, with samples of one or two bytes; a multiple of
    // four of them. Weighted colours are toned, become straight and are laid over what is in. in
    // and out may be one. See Unpremultiply and the blend mode "normal".
    void (*blendOver[3])(unsigned char* out, const unsigned char* in, const TonedPixels& pixels,
                         std::int32_t count);
};

// Null where the plain form is to be used.
const RowKernels* SelectRowKernels() noexcept;

extern const RowKernels kRowKernelsSse2;
extern const RowKernels kRowKernelsAvx2;
extern const RowKernels kRowKernelsAvx512;

}  // namespace mv
