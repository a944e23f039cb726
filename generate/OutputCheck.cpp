#include "generate/OutputCheck.h"

#include "base/Error.h"
#include "base/Files.h"
#include "generate/RenderTasks.h"
#include "images/SourceImage.h"

#include <algorithm>
#include <functional>
#include <memory>

namespace Corvadine {

namespace {

// One source as far as it can be read.
struct TSource {
    QString Name;
    QString File;
    std::optional<QSize> Size;                   // nothing if the header cannot be read
    std::shared_ptr<const TRenderSource> Loaded; // null unless the whole file can be decoded
    QString Fault;                               // why it cannot be loaded

    // Runs a step of the loading. If the step fails, keeps the reason.
    void Try(const std::function<void()>& step)
    {
        try {
            step();
        } catch (const TError& error) {
            Fault = error.Reason();
        }
    }
};

class TCheck {
public:
    TCheck(const TGenJob& job, TCheckDepth depth)
        : FJob(job)
        , FDepth(depth)
        , FIcon { u"icon"_s, job.IconFile, {}, {}, {} }
        , FLaunch { u"launch"_s, job.LaunchFile, {}, {}, {} }
    {
        FIcon.Try([this] { FIcon.Size = ReadSourceSizes(FJob.IconFile, {}).Icon; });
        FLaunch.Try([this] { FLaunch.Size = ReadSourceSizes({}, FJob.LaunchFile).Launch; });
        // If the launch source cannot be read, its outputs must not count as outputs of the icon source. So
        // an unknown size is not one pixel wide.
        constexpr QSize UnknownSize(2, 2);
        FSizes.Icon = FIcon.Size.value_or(UnknownSize);
        if (!FLaunch.File.isEmpty())
            FSizes.Launch = FLaunch.Size.value_or(UnknownSize);
        FOutputs = OutputsOf(FJob, FSizes);
        FFaults.resize(FOutputs.size());
    }

    TOutputCheck Run(int workers)
    {
        const TRenderSteps steps { [this] { Load(FLaunch); }, [this] { Load(FIcon); },
            [this](std::size_t index) { CheckAlike(index); } };
        RunTasks(RenderTasks(FOutputs, steps), workers);
        TOutputCheck result;
        result.OutputCount = static_cast<int>(FOutputs.size());
        for (std::size_t i = 0; i < FOutputs.size(); ++i) {
            if (FFaults[i])
                result.Findings.push_back({ FOutputs[i].ID, FOutputs[i].Path, *FFaults[i] });
            result.ComparedCount += Compares(FOutputs[i]) ? 1 : 0;
        }
        for (const TSource* source : { &FIcon, &FLaunch })
            if (!source->Fault.isEmpty())
                result.UnreadableSources.push_back(
                    { source->Name, source->File, source->Fault, CountOutputs(*source) });
        return result;
    }

private:
    static void Load(TSource& source)
    {
        if (source.Size)
            source.Try([&source] { source.Loaded = LoadSource(source.File); });
    }

    const TSource& SourceOf(const TOutput& output) const { return output.FromLaunch ? FLaunch : FIcon; }

    int CountOutputs(const TSource& source) const
    {
        return static_cast<int>(std::count_if(FOutputs.begin(), FOutputs.end(),
            [&](const TOutput& output) { return &SourceOf(output) == &source; }));
    }

    bool Compares(const TOutput& output) const
    {
        return FDepth == TCheckDepth::Pixels && SourceOf(output).Loaded && IsSizeKnown(output);
    }

    // The size of an output depends on its source. The size of a launch image also depends on the launch
    // source.
    bool IsSizeKnown(const TOutput& output) const
    {
        const bool needsLaunch = output.Kind == TOutputKind::Launch && !FLaunch.File.isEmpty();
        return SourceOf(output).Size && (!needsLaunch || FLaunch.Size);
    }

    // Checks all outputs that have the content of output `first`. The content is rendered once.
    void CheckAlike(std::size_t first)
    {
        const TOutput& output = FOutputs[first];
        std::function<std::optional<TImageFault>(const QString& path)> check;
        try {
            RefuseHuge(output, FSizes);
            if (output.Kind == TOutputKind::MainIcon)
                check = [form = IconForm(output)](const QString& path) { return IconFault(path, form); };
            else
                check = [form = PngForm(output)](const QString& path) { return PngFault(path, form); };
        } catch (const TError& error) {
            check = [reason = error.Reason()](const QString&) {
                return TImageFault { TFaultKind::Stale, reason };
            };
        }
        for (std::size_t i = first; i < FOutputs.size(); ++i) {
            if (FOutputs[i].SameAs != first)
                continue;
            if (FileExists(FOutputs[i].Path))
                FFaults[i] = check(FOutputs[i].Path);
            else
                FFaults[i] = TImageFault { TFaultKind::Missing, u"the file does not exist"_s };
        }
    }

    TIconForm IconForm(const TOutput& output) const
    {
        const bool compares = Compares(output);
        return { FIcon.Size, compares ? RenderMainIcon(*FIcon.Loaded, FJob.Options.Filter) : QByteArray() };
    }

    TPngForm PngForm(const TOutput& output) const
    {
        const std::shared_ptr<const TRenderSource>& source = SourceOf(output).Loaded;
        TPngForm form;
        form.Format = FJob.Options.Format;
        if (IsSizeKnown(output))
            form.Size = output.Recipe.Canvas;
        if (!output.Recipe.KeepsAlpha)
            form.HasAlpha = false;
        else if (source)
            form.HasAlpha = source->HasAlpha();
        if (Compares(output))
            form.Pixels = ToImage(RenderPixels(*source, output.Recipe, FJob.Options));
        return form;
    }

    const TGenJob& FJob;
    TCheckDepth FDepth;
    TSource FIcon;
    TSource FLaunch;
    TSourceSizes FSizes;
    std::vector<TOutput> FOutputs;
    std::vector<std::optional<TImageFault>>
        FFaults; // one per output; each element is written by one thread only
};

} // namespace

TOutputCheck CheckOutputs(const TGenJob& job, TCheckDepth depth, int workers)
{
    return TCheck(job, depth).Run(workers);
}

} // namespace Corvadine
