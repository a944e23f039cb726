#pragma once

#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace Corvadine {

// Filter codes as the project database stores them.
enum class TResampleFilter {
    rfNone = 0,
    rfTriangle = 1,
    rfHermite = 2,
    rfBell = 3,
    rfBSpline = 4,
    rfLanczos3 = 5,
    rfMitchell = 6,
    rfNearest = 7,
    rfLinear = 8,
    rfFastLinear = 9,
    rfBilinear = 10,
    rfBicubic = 11,
};

struct TFilterInfo {
    TResampleFilter Filter;
    const char* Name;    // on the command line
    const char* Caption; // in the window
};

// All filters, in the order in which the window lists them.
const std::vector<TFilterInfo>& FilterInfos();

// Returns the filter whose stored code is `code`, or nothing for an unknown code.
std::optional<TResampleFilter> FilterOfCode(int code);

// Whether the filter copies single source pixels instead of mixing several.
bool IsPickingFilter(TResampleFilter filter);

// Tells how each target position along one axis is computed: from some source positions, called taps. Each
// tap has a weight.
struct TFilterTable {
    static constexpr int WeightBits = 14; // the weights of one target position add up to exactly 1 << 14

    int TargetSize = 0;
    int TapCount = 0;                  // taps per target position, always even; unused taps have weight 0
    std::vector<int> First;            // the first source position of each target position
    std::vector<std::int16_t> Weights; // TargetSize x TapCount; a tap past the source's end has weight 0
};

// Builds the table for scaling `sourceSize` positions to `targetSize`. To reduce a picture, kernels are
// widened by the factor of the reduction. At the picture's edges kernels are cut off, and the remaining
// weights are normalized. The filters:
// Triangle, Bilinear: tent of radius 1.
// Hermite: 2|x|^3 - 3|x|^2 + 1.
// Bell: quadratic B-spline.
// B-Spline: cubic of Mitchell and Netravali, SIGGRAPH 1988 (https://doi.org/10.1145/54852.378514), with B = 1
// and C = 0.
// Mitchell: the same cubic with B = 1/3 and C = 1/3.
// Bicubic: Keys' cubic with a = -0.5, IEEE TASSP 29 (1981) (https://doi.org/10.1109/TASSP.1981.1163711).
// Lanczos 3: sinc(x) sinc(x/3).
// Linear, Fast Linear: interpolation between the two source positions around the target position's center.
// Nearest: the source position nearest to the target position's center.
// None: the source position at the target position's left or upper edge.
// The table is the same on every system, because it uses no C library function whose results may differ in
// the last bit. REQUIRES: both sizes are at least 1.
TFilterTable BuildFilterTable(TResampleFilter filter, int sourceSize, int targetSize);

} // namespace Corvadine
