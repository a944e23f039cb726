#include "generate/pixels/ResampleFilter.h"

#include <algorithm>
#include <cmath>

namespace Corvadine {

namespace {

struct TKernel {
    double Radius;
    double (*Weight)(double distance); // `distance` from the kernel's center is never negative
};

double Tent(double x)
{
    return x < 1 ? 1 - x : 0;
}

double Hermite(double x)
{
    return x < 1 ? (2 * x - 3) * x * x + 1 : 0;
}

double Bell(double x)
{
    if (x < 0.5)
        return 0.75 - x * x;
    return x < 1.5 ? 0.5 * (x - 1.5) * (x - 1.5) : 0;
}

// Mitchell and Netravali's two-parameter family of cubics.
double Cubic(double x, double b, double c)
{
    if (x < 1)
        return ((12 - 9 * b - 6 * c) * x * x * x + (-18 + 12 * b + 6 * c) * x * x + (6 - 2 * b)) / 6;
    if (x < 2)
        return ((-b - 6 * c) * x * x * x + (6 * b + 30 * c) * x * x + (-12 * b - 48 * c) * x
                   + (8 * b + 24 * c))
            / 6;
    return 0;
}

// sin(pi x) for 0 <= x < 3. Plain arithmetic gives the same bits on every system. The argument is reduced to
// |x| <= 1/2. There the Taylor series up to x^19 is exact enough for 14-bit weights.
double SinPi(double x)
{
    constexpr double Pi = 3.14159265358979323846;
    const double turns = std::floor(x + 0.5);
    const double angle = Pi * (x - turns);
    double term = angle;
    double sum = angle;
    for (int k = 2; k < 20; k += 2) {
        term *= -angle * angle / (k * (k + 1));
        sum += term;
    }
    return std::fmod(turns, 2) == 0 ? sum : -sum;
}

double Lanczos3(double x)
{
    constexpr double PiSquared = 9.86960440108935861883;
    if (x >= 3)
        return 0;
    return x < 1e-9 ? 1 : 3 * SinPi(x) * SinPi(x / 3) / (PiSquared * x * x);
}

// Rounds a value that is not negative to the nearest integer. A negative value gives 0 or less. The library's
// own rounding is a function call, which is slow for millions of weights.
int Rounded(double value)
{
    const double raised = value + 0.5;
    return static_cast<int>(raised);
}

// Turns weights into integers that add up to exactly 1 << WeightBits. Rounds the running sum, not each
// weight: rounded one by one, the thousands of tiny weights of a strong reduction would all become 0.
void Quantize(const std::vector<double>& weights, std::int16_t* out)
{
    constexpr int Above = 1 << 16; // keeps the sum positive, as Rounded() requires
    double total = 0;
    for (const double weight : weights)
        total += weight;
    const double scale = (1 << TFilterTable::WeightBits) / total;
    double sum = 0;
    int rounded = 0;
    for (const double weight : weights) {
        sum += weight;
        const int next = Rounded(sum * scale + Above) - Above;
        *out++ = static_cast<std::int16_t>(next - rounded);
        rounded = next;
    }
}

TFilterTable EmptyTable(int targetSize, int tapCount)
{
    TFilterTable table { targetSize, tapCount + tapCount % 2, {}, {} };
    table.First.reserve(static_cast<std::size_t>(targetSize));
    table.Weights.resize(static_cast<std::size_t>(targetSize) * static_cast<std::size_t>(table.TapCount));
    return table;
}

TFilterTable KernelTable(const TKernel& kernel, int sourceSize, int targetSize)
{
    const double scale = static_cast<double>(sourceSize) / targetSize;
    const double widening = std::max(scale, 1.0);
    const double support = kernel.Radius * widening;
    const int mostTaps = std::min(static_cast<int>(std::ceil(support * 2)) + 1, sourceSize);
    TFilterTable table = EmptyTable(targetSize, mostTaps);
    std::vector<double> weights;
    for (int target = 0; target < targetSize; ++target) {
        const double center = (target + 0.5) * scale;
        const int first = std::max(Rounded(center - support), 0);
        const int end = std::min(Rounded(center + support), sourceSize);
        weights.clear();
        for (int source = first; source < end; ++source)
            weights.push_back(kernel.Weight(std::abs(source + 0.5 - center) / widening));
        table.First.push_back(first);
        Quantize(weights,
            &table.Weights[static_cast<std::size_t>(target) * static_cast<std::size_t>(table.TapCount)]);
    }
    return table;
}

// Interpolates between the two source positions around each target position's center. At the edges only the
// outermost source position has a weight.
TFilterTable InterpolatingTable(int sourceSize, int targetSize)
{
    const double scale = static_cast<double>(sourceSize) / targetSize;
    TFilterTable table = EmptyTable(targetSize, 2);
    for (int target = 0; target < targetSize; ++target) {
        const double position = std::clamp((target + 0.5) * scale - 0.5, 0.0, sourceSize - 1.0);
        const int first = static_cast<int>(position);
        table.First.push_back(first);
        Quantize({ 1 - (position - first), position - first },
            &table.Weights[static_cast<std::size_t>(target) * 2]);
    }
    return table;
}

TFilterTable PickingTable(double offset, int sourceSize, int targetSize)
{
    TFilterTable table = EmptyTable(targetSize, 1);
    for (int target = 0; target < targetSize; ++target) {
        const auto source = static_cast<int>((target + offset) * sourceSize / targetSize);
        table.First.push_back(std::min(source, sourceSize - 1));
        table.Weights[static_cast<std::size_t>(target) * 2] = 1 << TFilterTable::WeightBits;
    }
    return table;
}

} // namespace

const std::vector<TFilterInfo>& FilterInfos()
{
    static const std::vector<TFilterInfo> Infos {
        { TResampleFilter::rfNone, "none", "None" },
        { TResampleFilter::rfBell, "bell", "Bell (Quality)" },
        { TResampleFilter::rfBicubic, "bicubic", "Bicubic (Quality)" },
        { TResampleFilter::rfBilinear, "bilinear", "Bilinear (Quality)" },
        { TResampleFilter::rfBSpline, "bspline", "B-Spline (Quality)" },
        { TResampleFilter::rfFastLinear, "fastlinear", "Fast Linear (Speed)" },
        { TResampleFilter::rfHermite, "hermite", "Hermite (Quality)" },
        { TResampleFilter::rfLanczos3, "lanczos3", "Lanczos 3 (Quality)" },
        { TResampleFilter::rfLinear, "linear", "Linear (Speed)" },
        { TResampleFilter::rfMitchell, "mitchell", "Mitchell (Quality)" },
        { TResampleFilter::rfNearest, "nearest", "Nearest (Quality)" },
        { TResampleFilter::rfTriangle, "triangle", "Triangle (Speed)" },
    };
    return Infos;
}

std::optional<TResampleFilter> FilterOfCode(int code)
{
    for (const TFilterInfo& info : FilterInfos())
        if (static_cast<int>(info.Filter) == code)
            return info.Filter;
    return std::nullopt;
}

bool IsPickingFilter(TResampleFilter filter)
{
    return filter == TResampleFilter::rfNone || filter == TResampleFilter::rfNearest;
}

TFilterTable BuildFilterTable(TResampleFilter filter, int sourceSize, int targetSize)
{
    const auto kernelTable = [=](double radius, double (*weight)(double)) {
        return KernelTable({ radius, weight }, sourceSize, targetSize);
    };
    switch (filter) {
    case TResampleFilter::rfNone:
        return PickingTable(0, sourceSize, targetSize);
    case TResampleFilter::rfNearest:
        return PickingTable(0.5, sourceSize, targetSize);
    case TResampleFilter::rfLinear:
    case TResampleFilter::rfFastLinear:
        return InterpolatingTable(sourceSize, targetSize);
    case TResampleFilter::rfTriangle:
    case TResampleFilter::rfBilinear:
        return kernelTable(1, Tent);
    case TResampleFilter::rfHermite:
        return kernelTable(1, Hermite);
    case TResampleFilter::rfBell:
        return kernelTable(1.5, Bell);
    case TResampleFilter::rfBSpline:
        return kernelTable(2, [](double x) { return Cubic(x, 1, 0); });
    case TResampleFilter::rfMitchell:
        return kernelTable(2, [](double x) { return Cubic(x, 1.0 / 3, 1.0 / 3); });
    case TResampleFilter::rfBicubic: // Keys' cubic with a = -0.5 is Cubic() with b = 0, c = 0.5
        return kernelTable(2, [](double x) { return Cubic(x, 0, 0.5); });
    case TResampleFilter::rfLanczos3:
        return kernelTable(3, Lanczos3);
    }
    Q_UNREACHABLE();
}

} // namespace Corvadine
