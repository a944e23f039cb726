// Measures each stage of a run on one thread. Also measures each level of compression, and for comparison
// each level of zlib.
// usage: StagesBench ICON LAUNCH [Google Benchmark's options]

#include "base/Literals.h"
#include "base/StagedFile.h"
#include "generate/GenerationRun.h"
#include "generate/pixels/Composition.h"
#include "generate/pixels/IcoWriter.h"
#include "generate/pixels/Palette.h"
#include "generate/pixels/PngWriter.h"
#include "generate/pixels/Resampler.h"
#include "images/SourceImage.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <zlib.h>

#include <algorithm>
#include <iostream>
#include <string>
#include <type_traits>

using namespace Corvadine;

namespace {

constexpr int Compression = 6;

// The stages of a run. A stage gets the results of earlier stages as arguments.
class TStages {
public:
    TStages(const QString& icon, const QString& launch)
    {
        FJob.IconFile = icon;
        FJob.LaunchFile = launch;
        FJob.Platforms = { true, true, true, true };
        FJob.Options.Format = TOutputFormat::TrueColor;
        FSources = LoadSources(FJob);
        const auto outputs = OutputsOf(FJob, FSources.Sizes());
        for (std::size_t i = 0; i < outputs.size(); ++i)
            if (outputs[i].SameAs == i && outputs[i].Kind != TOutputKind::MainIcon)
                FOutputs.push_back(outputs[i]);
    }

    void Decode(bool launch) const
    {
        benchmark::DoNotOptimize(LoadSourceImage(launch ? FJob.LaunchFile : FJob.IconFile));
    }

    void Convert() const
    {
        for (const QString& file : { FJob.IconFile, FJob.LaunchFile }) {
            static QMap<QString, QImage> images;
            QImage& image = images[file];
            if (image.isNull())
                image = LoadSourceImage(file);
            benchmark::DoNotOptimize(TPixelPairImage(image).Row(0));
        }
    }

    // Returns the scaled sources: first a source at each size of the catalogue, then the icon at the ten
    // sizes of the Windows icon. Filtered pictures are computed only in Compose().
    std::vector<TFittedImage> Resample(TResampleFilter filter) const
    {
        std::vector<TFittedImage> fitted;
        for (const TOutput& output : FOutputs)
            fitted.push_back(
                (output.FromLaunch ? FSources.Launch : FSources.Icon)->At(output.Recipe.Fitted, filter));
        for (const int side : IconSizes)
            fitted.push_back(FSources.Icon->At(FittedSize(FSources.Sizes().Icon, { side, side }), filter));
        return fitted;
    }

    std::vector<TRaster> Compose(const std::vector<TFittedImage>& fitted) const
    {
        std::vector<TRaster> rasters;
        for (std::size_t i = 0; i < fitted.size(); ++i) {
            const bool keeps = i >= FOutputs.size() || KeepsAlpha(FOutputs[i]);
            rasters.push_back(
                keeps ? WithAlpha(fitted[i]) : FlattenedOnCanvas(fitted[i], FOutputs[i].Recipe.Canvas, {}));
        }
        return rasters;
    }

    std::vector<TPaletteRaster> Reduce(const std::vector<TRaster>& rasters) const
    {
        std::vector<TPaletteRaster> reduced;
        for (std::size_t i = 0; i < FOutputs.size(); ++i)
            reduced.push_back(
                ReduceColors(rasters[i], KeepsAlpha(FOutputs[i]) ? std::nullopt : std::optional(TColor {})));
        return reduced;
    }

    std::vector<QByteArray> Encode(const std::vector<TRaster>& rasters) const
    {
        const auto icons = rasters.begin() + static_cast<std::ptrdiff_t>(FOutputs.size());
        std::vector<QByteArray> files;
        for (auto raster = rasters.begin(); raster != icons; ++raster)
            files.push_back(EncodePng(*raster, Compression));
        files.push_back(EncodeIco({ icons, rasters.end() }, Compression));
        return files;
    }

    // Encodes all rasters with a level from 1 to 10. Returns the total size in bytes.
    static double EncodeAt(int level, const std::vector<TRaster>& rasters)
    {
        double total = 0;
        for (const TRaster& raster : rasters)
            total += static_cast<double>(EncodePng(raster, level).size());
        return total;
    }

    // Deflates the rows of all rasters with a level of zlib, from 1 to 9. Returns the total size in bytes.
    static double DeflateByZlib(int level, const std::vector<TRaster>& rasters)
    {
        double total = 0;
        std::vector<std::uint8_t> packed;
        for (const TRaster& raster : rasters) {
            uLongf size = compressBound(raster.FilteredRows().size());
            packed.resize(size);
            compress2(
                packed.data(), &size, raster.FilteredRows().data(), raster.FilteredRows().size(), level);
            total += static_cast<double>(size);
        }
        return total;
    }

    // Writes as many files as a run does.
    static void Write(const QString& folder, const std::vector<QByteArray>& files)
    {
        constexpr std::size_t FileCount = 38;
        std::vector<TStagedFile> staged;
        for (std::size_t i = 0; i < FileCount; ++i)
            staged.emplace_back(folder + u"/%1"_s.arg(i), files[i % files.size()]);
        for (TStagedFile& file : staged)
            file.Commit();
    }

private:
    bool KeepsAlpha(const TOutput& output) const
    {
        const auto& source = output.FromLaunch ? FSources.Launch : FSources.Icon;
        return output.Recipe.KeepsAlpha && source->HasAlpha();
    }

    TGenJob FJob;
    TRenderSources FSources;
    std::vector<TOutput> FOutputs; // no Windows icon; equal outputs are listed once
};

// Measures `action` under `name`. If `action` returns a number of bytes, the result shows this number.
template <typename TAction> void Register(const std::string& name, TAction action)
{
    benchmark::RegisterBenchmark(name.c_str(),
        [action](benchmark::State& state) {
            for ([[maybe_unused]] auto _ : state) {
                if constexpr (std::is_void_v<decltype(action())>)
                    action();
                else
                    state.counters["bytes"] = action();
            }
        })
        ->Unit(benchmark::kMillisecond)
        ->MinTime(0.5);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 3) {
        std::cerr << "usage: StagesBench ICON LAUNCH [options]\n";
        return 2;
    }
    QCoreApplication application(argc, argv);
    const TStages stages(QString::fromLocal8Bit(argv[1]), QString::fromLocal8Bit(argv[2]));
    const auto fitted = stages.Resample(TResampleFilter::rfMitchell);
    const auto rasters = stages.Compose(fitted);
    const auto files = stages.Encode(rasters);
    const QTemporaryDir folder;

    Register("stage: decode the icon", [&] { stages.Decode(false); });
    Register("stage: decode the launch image", [&] { stages.Decode(true); });
    Register("stage: convert both", [&] { stages.Convert(); });
    for (const TFilterInfo& info : FilterInfos())
        Register(std::string("stage: resample and compose, ") + info.Name, [&stages, filter = info.Filter] {
            benchmark::DoNotOptimize(stages.Compose(stages.Resample(filter)));
        });
    Register("stage: encode", [&] { benchmark::DoNotOptimize(stages.Encode(rasters)); });
    Register("stage: reduce to 256 colors", [&] { benchmark::DoNotOptimize(stages.Reduce(rasters)); });
    for (int level = 1; level <= 10; ++level) {
        Register("level " + std::to_string(level), [&, level] { return TStages::EncodeAt(level, rasters); });
        if (level < 10)
            Register("zlib " + std::to_string(level),
                [&, level] { return TStages::DeflateByZlib(level, rasters); });
    }
    Register("stage: write and sync", [&] { TStages::Write(folder.path(), files); });

    argc -= 2;
    argv += 2;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
