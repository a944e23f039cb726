#include "generate/GenerationRun.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/StagedFile.h"
#include "generate/RenderTasks.h"

#include <QScopeGuard>

#include <algorithm>
#include <mutex>
#include <optional>

namespace Corvadine {

namespace {

class TRun {
public:
    TRun(const TGenJob& job, const TGenProgress& progress)
        : FJob(job)
        , FProgress(progress)
        , FSizes(ReadSourceSizes(job.IconFile, job.LaunchFile))
        , FOutputs(OutputsOf(job, FSizes))
        , FStaged(FOutputs.size())
    {
        for (const TOutput& output : FOutputs)
            RefuseHuge(output, FSizes);
        RefuseOverwritingSources(job, FOutputs);
    }

    std::vector<TOutput> Run(int workers)
    {
        const TNewFolder folder(FJob.OutputFolder);
        // After a failure the folder must be empty before it is removed.
        const auto dropStaged = qScopeGuard([this] { FStaged.clear(); });
        const TRenderSteps steps { [this] { LoadLaunch(); },
            [this] { FSources.Icon = LoadSource(FJob.IconFile, UseOf(FSizes.Icon, false)); },
            [this](std::size_t index) { Render(index); } };
        RunTasks(RenderTasks(FOutputs, steps), workers);
        Commit();
        return FOutputs;
    }

private:
    void LoadLaunch()
    {
        if (FSizes.Launch)
            FSources.Launch = LoadSource(FJob.LaunchFile, UseOf(*FSizes.Launch, true));
    }

    // Returns the use of the launch source if `isLaunch`, otherwise the use of the icon source. `source` is
    // the size of this source. If an output copies pixels, the decoded picture must be kept.
    TSourceUse UseOf(QSize source, bool isLaunch) const
    {
        const bool isCopied = std::any_of(FOutputs.begin(), FOutputs.end(), [&](const TOutput& output) {
            return output.FromLaunch == isLaunch && CopiesPixels(output, source, FJob.Options.Filter);
        });
        return isCopied ? TSourceUse::Any : TSourceUse::FilteredOutputs;
    }

    // Renders one output, and stages its file and all files with the same content. While this task waits
    // for the disk, other tasks render.
    void Render(std::size_t index)
    {
        const QByteArray file = RenderOutput(FOutputs[index], FSources, FJob.Options);
        int staged = 0;
        for (std::size_t i = index; i < FOutputs.size(); ++i) {
            if (FOutputs[i].SameAs == index) {
                FStaged[i].emplace(FOutputs[i].Path, file);
                ++staged;
            }
        }
        const std::lock_guard lock(FProgressMutex);
        FDone += staged;
        if (FProgress)
            FProgress(FDone, static_cast<int>(FOutputs.size()));
    }

    void Commit()
    {
        std::vector<TStagedFile> staged;
        staged.reserve(FStaged.size());
        for (std::optional<TStagedFile>& file : FStaged)
            staged.push_back(*std::move(file));
        TStagedFile::CommitAll(staged);
    }

    const TGenJob& FJob;
    const TGenProgress& FProgress;
    TSourceSizes FSizes;
    std::vector<TOutput> FOutputs;
    std::vector<std::optional<TStagedFile>> FStaged; // for each output; empty until its task is done

    TRenderSources FSources;
    std::mutex FProgressMutex;
    int FDone = 0;
};

} // namespace

std::vector<TOutput> RunGeneration(const TGenJob& job, int workers, const TGenProgress& progress)
{
    if (job.OutputFolder.isEmpty())
        throw TError(TErrorKind::BadInput, u"Cannot generate: the project has no output folder"_s);
    return TRun(job, progress).Run(workers);
}

} // namespace Corvadine
