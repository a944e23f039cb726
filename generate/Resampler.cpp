#include "generate/Resampler.h"

#include "generate/ResampleKernels.h"

#include <algorithm>

namespace Corvadine {

namespace {

// A TFilterTable in the layout of Kernels::TPixelWeights.
class TPixelWeightTable {
public:
    explicit TPixelWeightTable(const TFilterTable& table)
        : FFirst(table.First), FPairs((static_cast<std::size_t>(table.TapCount) / 2 + 1) / 2 * 2)
    {
        const auto targets = static_cast<std::size_t>(table.TargetSize);
        const auto taps = static_cast<std::size_t>(table.TapCount);
        FWeights.resize(targets * FPairs * 8);
        for (std::size_t target = 0; target < targets; ++target)
            for (std::size_t tap = 0; tap < taps; ++tap)
                for (std::size_t channel = 0; channel < 4; ++channel)
                    FWeights[(target * FPairs + tap / 2) * 8 + channel * 2 + tap % 2] =
                        table.Weights[target * taps + tap];
    }

    Kernels::TPixelWeights View() const { return { FFirst.data(), FWeights.data(), FFirst.size(), FPairs }; }

    // Pixels that a row must have beyond its end so that reading whole groups of taps stays inside.
    std::size_t Overhang() const { return FPairs * 2; }

private:
    std::vector<int> FFirst;
    std::size_t FPairs;
    std::vector<std::int16_t> FWeights;
};

} // namespace

QSize FittedSize(QSize source, QSize box)
{
    const qint64 w = source.width();
    const qint64 h = source.height();
    const auto scaled = [](qint64 side, qint64 numerator, qint64 denominator) {
        return static_cast<int>(
            std::max<qint64>((side * numerator * 2 + denominator) / (denominator * 2), 1));
    };
    if (box.width() * h <= box.height() * w)
        return { box.width(), scaled(h, box.width(), w) };
    return { scaled(w, box.height(), h), box.height() };
}

TPremultipliedImage Resample(const TPremultipliedImage& source, QSize size, TResampleFilter filter)
{
    const TFilterTable vertical = BuildFilterTable(filter, source.Height(), size.height());
    const TPixelWeightTable horizontal(BuildFilterTable(filter, source.Width(), size.width()));
    const auto taps = static_cast<std::size_t>(vertical.TapCount);
    const auto values = static_cast<std::size_t>(source.Width()) * TPremultipliedImage::Channels;

    // One source-wide row at a time: it is still in the cache when the horizontal pass reads it.
    TPremultipliedImage row(QSize(source.Width() + static_cast<int>(horizontal.Overhang()), 1));
    std::fill(row.Row(0), row.Row(0) + row.Stride(), std::int16_t { 0 });
    std::vector<const std::int16_t*> rows(taps);
    TPremultipliedImage result(size);
    for (int y = 0; y < size.height(); ++y) {
        const auto target = static_cast<std::size_t>(y);
        for (std::size_t tap = 0; tap < taps; ++tap)
            rows[tap] =
                source.Row(std::min(vertical.First[target] + static_cast<int>(tap), source.Height() - 1));
        Kernels::SumRows(rows.data(), &vertical.Weights[target * taps], taps, values, row.Row(0));
        Kernels::SumPixels(row.Row(0), horizontal.View(), result.Row(y));
    }
    return result;
}

QImage PickPixels(const QImage& source, QSize size, TResampleFilter filter)
{
    const TFilterTable columns = BuildFilterTable(filter, source.width(), size.width());
    const TFilterTable rows = BuildFilterTable(filter, source.height(), size.height());
    QImage result(size, source.format());
    for (int y = 0; y < size.height(); ++y) {
        const auto* from =
            reinterpret_cast<const QRgb*>(source.constScanLine(rows.First[static_cast<std::size_t>(y)]));
        auto* to = reinterpret_cast<QRgb*>(result.scanLine(y));
        for (int x = 0; x < size.width(); ++x)
            to[x] = from[columns.First[static_cast<std::size_t>(x)]];
    }
    return result;
}

} // namespace Corvadine
