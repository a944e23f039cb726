#include "generate/GenerationRun.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/StagedFile.h"
#include "generate/WorkQueue.h"
#include "images/SourceImage.h"

#include <algorithm>
#include <mutex>
#include <thread>

namespace Corvadine {

namespace {

std::shared_ptr<const TRenderSource> LoadSource(const QString& file)
{
    return std::make_shared<TRenderSource>(
        file.isEmpty() ? BlankSourceImage() : LoadSourceImage(file, TDecoderChoice::ByContent));
}

// The size of a source from its header. Whether it is transparent shows only once it is decoded; "yes" is
// right for telling outputs apart.
TSourceInfo HeaderInfo(const QString& file)
{
    if (file.isEmpty())
        return {};
    return { ReadImageHeader(file, TDecoderChoice::ByContent).Size, true };
}

std::optional<TSourceInfo> LaunchHeaderInfo(const QString& file)
{
    return file.isEmpty() ? std::nullopt : std::optional(HeaderInfo(file));
}

// Entries of the list whose files are equal, so that they are rendered once.
struct TEqualOutputs {
    TRecipe Recipe; // as far as the headers tell
    std::vector<TGenRec> Records;
    QByteArray File;
};

class TRun {
public:
    TRun(const TGenJob& job, int workers, const TGenProgress& progress)
        : FJob(job)
        , FWorkers(workers > 0 ? workers : std::max(static_cast<int>(std::thread::hardware_concurrency()), 1))
        , FProgress(progress)
        , FIconInfo(HeaderInfo(job.IconFile))
        , FLaunchInfo(LaunchHeaderInfo(job.LaunchFile))
        , FList(PlanGenList(job.Settings, FLaunchInfo))
    {
    }

    std::vector<TGenRec> Run()
    {
        GroupOutputs();
        RunTasks(Tasks(), FWorkers);
        WriteFiles();
        return FList;
    }

private:
    void GroupOutputs()
    {
        for (const TGenRec& record : FList) {
            if (record.ID == MainIconID)
                continue;
            const TRecipe recipe = RecipeOf(record, FIconInfo, FLaunchInfo);
            const auto same = std::find_if(FOutputs.begin(), FOutputs.end(),
                [&recipe](const TEqualOutputs& outputs) { return outputs.Recipe == recipe; });
            if (same != FOutputs.end())
                same->Records.push_back(record);
            else
                FOutputs.push_back({ recipe, { record }, {} });
        }
        std::stable_sort(FOutputs.begin(), FOutputs.end(),
            [](const TEqualOutputs& a, const TEqualOutputs& b) { return Pixels(a) > Pixels(b); });
    }

    static qint64 Pixels(const TEqualOutputs& outputs)
    {
        return qint64 { outputs.Recipe.Canvas.width() } * outputs.Recipe.Canvas.height();
    }

    // The sources first, the larger one ahead; then whatever takes longest.
    std::vector<TTask> Tasks()
    {
        constexpr int LaunchTask = 0;
        constexpr int IconTask = 1;
        std::vector<TTask> tasks {
            { [this] {
                if (FLaunchInfo)
                    FSources.Launch = LoadSource(FJob.LaunchFile);
            } },
            { [this] { FSources.Icon = LoadSource(FJob.IconFile); } },
        };
        if (FJob.Settings.Platforms.Windows)
            tasks.push_back({ [this] { MakeMainIcon(); }, IconTask });
        for (TEqualOutputs& outputs : FOutputs)
            tasks.push_back(
                { [this, &outputs] { Make(outputs); }, outputs.Recipe.FromLaunch ? LaunchTask : IconTask });
        return tasks;
    }

    void MakeMainIcon()
    {
        FMainIcon = RenderMainIcon(*FSources.Icon, FJob.Settings.Filter);
        Advance(1);
    }

    void Make(TEqualOutputs& outputs)
    {
        TRecipe recipe = outputs.Recipe;
        const TRenderSource& source = recipe.FromLaunch ? *FSources.Launch : *FSources.Icon;
        recipe.KeepsAlpha = recipe.KeepsAlpha && source.Info().HasAlpha;
        outputs.File = RenderPng(FSources, FJob.Settings, recipe);
        Advance(static_cast<int>(outputs.Records.size()));
    }

    void Advance(int files)
    {
        const std::lock_guard lock(FProgressMutex);
        FDone += files;
        if (FProgress)
            FProgress(FDone, static_cast<int>(FList.size()));
    }

    void WriteFiles()
    {
        const TNewFolder folder(FJob.Settings.OutputFolder);
        std::vector<TStagedFile> staged;
        staged.reserve(FList.size());
        for (const TEqualOutputs& outputs : FOutputs)
            for (const TGenRec& record : outputs.Records)
                staged.emplace_back(PathOf(record), outputs.File);
        if (FJob.Settings.Platforms.Windows)
            staged.emplace_back(PathOf(MainIconEntry()), FMainIcon);
        for (TStagedFile& file : staged)
            file.Commit();
    }

    QString PathOf(const TGenRec& record) const { return OutputPath(FJob.Settings, record); }

    const TGenJob& FJob;
    int FWorkers;
    const TGenProgress& FProgress;
    TSourceInfo FIconInfo;
    std::optional<TSourceInfo> FLaunchInfo;
    std::vector<TGenRec> FList;

    TRenderSources FSources;
    std::vector<TEqualOutputs> FOutputs;
    QByteArray FMainIcon;
    std::mutex FProgressMutex;
    int FDone = 0;
};

} // namespace

std::vector<TGenRec> RunGeneration(const TGenJob& job, int workers, const TGenProgress& progress)
{
    if (job.Settings.OutputFolder.isEmpty())
        throw TError(
            TErrorKind::BadInput, QStringLiteral("Cannot generate: the project has no output folder"));
    return TRun(job, workers, progress).Run();
}

TRenderSources LoadSources(const TGenJob& job)
{
    return { LoadSource(job.IconFile), job.LaunchFile.isEmpty() ? nullptr : LoadSource(job.LaunchFile) };
}

std::vector<TGenRec> PlanGenList(const TGenSettings& settings, const std::optional<TSourceInfo>& launch)
{
    std::vector<TGenRec> list =
        BuildGenList(settings.Platforms, settings.TwoxSize, launch ? launch->Size : QSize(1, 1));
    if (settings.Platforms.Windows)
        list.push_back(MainIconEntry());
    return list;
}

} // namespace Corvadine
