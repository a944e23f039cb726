#include "generate/pixels/Resampler.h"

#include "generate/pixels/ResampleKernels.h"

#include <algorithm>

namespace Corvadine {

namespace {

// A TFilterTable in the layout of Kernels::TPixelWeights: in pairs of pixels. The number of pairs is a
// multiple of four. Near the end of a row the first pair is moved back, so that no kernel reads past the row.
class TPairWeights {
public:
    // `pairCount` is the PairCount() of the source.
    TPairWeights(const TFilterTable& table, int pairCount)
        : FPairs(std::min((table.TapCount / 2 + 1 + 3) / 4 * 4, pairCount))
        , FWeights(
              static_cast<std::size_t>(table.TargetSize) * static_cast<std::size_t>(FPairs) * 2 + OverRead)
    {
        FFirst.reserve(static_cast<std::size_t>(table.TargetSize));
        const std::int16_t* from = table.Weights.data();
        std::int16_t* to = FWeights.data();
        const std::ptrdiff_t weights = std::ptrdiff_t { FPairs } * 2;
        for (const int firstPixel : table.First) {
            const int firstPair = std::min(firstPixel / 2, pairCount - FPairs);
            const int shift = firstPixel - firstPair * 2;
            std::copy_n(from, std::min(table.TapCount, FPairs * 2 - shift), to + shift);
            FFirst.push_back(firstPair);
            from += table.TapCount;
            to += weights;
        }
    }

    Kernels::TPixelWeights View() const
    {
        return { FFirst.data(), FWeights.data(), FFirst.size(), static_cast<std::size_t>(FPairs) };
    }

private:
    static constexpr std::size_t OverRead = 6; // number of values that a kernel may read past the last weight

    int FPairs;
    std::vector<int> FFirst;
    std::vector<std::int16_t> FWeights;
};

// The source's rows, filtered to the target's width. A row is made when the vertical pass first needs it.
// Only the rows for one target row are kept.
class TNarrowedRows {
public:
    TNarrowedRows(const TPixelPairImage& source, const TFilterTable& columns, int keptRows)
        : FSource(source)
        , FColumns(columns, source.PairCount())
        , FKept(QSize(columns.TargetSize, keptRows))
        , FRows(static_cast<std::size_t>(keptRows))
    {
    }

    // Returns `keptRows` rows, beginning with row `first`. Past the source's end, its last row is repeated.
    // The rows are valid until the next call. REQUIRES: `first` is not smaller than in an earlier call.
    const std::int16_t* const* From(int first)
    {
        const int last = FSource.Height() - 1;
        Narrow(std::max(FNext, first), std::min(first + FKept.Height() - 1, last));
        for (int i = 0; i < FKept.Height(); ++i)
            FRows[static_cast<std::size_t>(i)] = Kept(std::min(first + i, last));
        return FRows.data();
    }

private:
    std::int16_t* Kept(int y) { return FKept.Row(y % FKept.Height()); }

    void Narrow(int first, int last)
    {
        Kernels::TRowBatch batch;
        for (int y = first; y <= last; ++y) {
            batch.Rows[batch.Count] = FSource.Row(y);
            batch.Out[batch.Count] = Kept(y);
            if (++batch.Count == Kernels::TRowBatch::Most || y == last) {
                Kernels::SumPixelPairs(batch, FColumns.View());
                batch.Count = 0;
            }
        }
        FNext = std::max(FNext, last + 1);
    }

    const TPixelPairImage& FSource;
    TPairWeights FColumns;
    TFilteredRows FKept;
    std::vector<const std::int16_t*> FRows;
    int FNext = 0;
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

void Resample(const TPixelPairImage& source, QSize size, TResampleFilter filter, const TFilteredRowSink& sink)
{
    const TFilterTable rows = BuildFilterTable(filter, source.Height(), size.height());
    const TFilterTable columns = BuildFilterTable(filter, source.Width(), size.width());
    const auto taps = static_cast<std::size_t>(rows.TapCount);
    const auto values = static_cast<std::size_t>(size.width()) * PixelChannels;

    TNarrowedRows narrowed(source, columns, rows.TapCount);
    TFilteredRows row(QSize(size.width(), 1));
    for (int y = 0; y < size.height(); ++y) {
        const auto target = static_cast<std::size_t>(y);
        Kernels::SumRows(
            narrowed.From(rows.First[target]), &rows.Weights[target * taps], taps, values, row.Row(0));
        sink(y, row.Row(0));
    }
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
