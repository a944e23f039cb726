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

// All twelve, in the order in which the window lists them.
const std::vector<TFilterInfo>& FilterInfos();

// The filter of a stored code; empty for a code that names none.
std::optional<TResampleFilter> FilterOfCode(int code);

// Whether the filter copies single source pixels and so mixes nothing.
bool IsPickingFilter(TResampleFilter filter);

// Which source positions make up each target position along one axis, and with which weights.
struct TFilterTable {
    static constexpr int WeightBits = 14; // the weights of one target position add up to exactly 1 << 14

    int TargetSize = 0;
    int TapCount = 0;                  // taps of every target position, even; unused ones have weight 0
    std::vector<int> First;            // per target position: its first source position
    std::vector<std::int16_t> Weights; // TargetSize x TapCount; a tap past the source's end has weight 0
};

// Kernel filters are widened by the scale when shrinking, cut off at the picture's edges and normalised
// there. Definitions: Triangle, Bilinear: tent of radius 1. Hermite: 2|x|^3 - 3|x|^2 + 1. Bell: quadratic
// B-spline. B-Spline, Mitchell: B,C cubics with (1, 0) and (1/3, 1/3), Mitchell and Netravali, SIGGRAPH 1988
// (https://doi.org/10.1145/54852.378514). Bicubic: Keys' cubic with a = -0.5, IEEE TASSP 29 (1981)
// (https://doi.org/10.1109/TASSP.1981.1163711). Lanczos 3: sinc(x) sinc(x/3).
// Linear and Fast Linear interpolate between the two source positions around the sample point; Nearest takes
// the position nearest to the centre, None the one at the target's upper left corner.
// The same table on every system: it uses no function of the C library whose last bit may differ.
// REQUIRES: both sizes are at least 1.
TFilterTable BuildFilterTable(TResampleFilter filter, int sourceSize, int targetSize);

} // namespace Corvadine
