#include "generate/GenerationRun.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/StagedFile.h"
#include "generate/WorkQueue.h"

#include <algorithm>
#include <mutex>
#include <thread>
#include <tuple>

namespace Corvadine {

namespace {

class TRun {
public:
    TRun(const TGenJob& job, const TGenProgress& progress)
        : FJob(job)
        , FProgress(progress)
        , FSizes(ReadSourceSizes(job))
        , FOutputs(OutputsOf(job, FSizes))
        , FFiles(FOutputs.size())
    {
        for (const TOutput& output : FOutputs)
            RefuseHuge(output, FSizes);
        RefuseOverwritingSources(job, FOutputs);
    }

    std::vector<TOutput> Run(int workers)
    {
        RunTasks(Tasks(), workers);
        WriteFiles();
        return FOutputs;
    }

private:
    // Returns the tasks in their order. The launch source is loaded first, because it is usually larger than
    // the icon source. The icon source follows, then the outputs. Outputs that take longest come first.
    std::vector<TTask> Tasks()
    {
        constexpr int LaunchTask = 0;
        constexpr int IconTask = 1;
        std::vector<TTask> tasks {
            { [this] {
                if (FSizes.Launch)
                    FSources.Launch = LoadSource(FJob.LaunchFile);
            } },
            { [this] { FSources.Icon = LoadSource(FJob.IconFile); } },
        };
        for (const std::size_t index : LongestFirst())
            tasks.push_back(
                { [this, index] { Render(index); }, FOutputs[index].FromLaunch ? LaunchTask : IconTask });
        return tasks;
    }

    // Returns the indices of the outputs to render, those that take longest first. Leaves out outputs that
    // are equal to an earlier output.
    std::vector<std::size_t> LongestFirst() const
    {
        std::vector<std::size_t> indices;
        for (std::size_t i = 0; i < FOutputs.size(); ++i)
            if (FOutputs[i].SameAs == i)
                indices.push_back(i);
        const auto effort = [this](std::size_t index) {
            const TOutput& output = FOutputs[index];
            const QSize canvas = output.Recipe.Canvas;
            return std::pair(
                output.Kind == TOutputKind::MainIcon, qint64 { canvas.width() } * canvas.height());
        };
        std::stable_sort(indices.begin(), indices.end(),
            [&effort](std::size_t a, std::size_t b) { return effort(a) > effort(b); });
        return indices;
    }

    void Render(std::size_t index)
    {
        FFiles[index] = RenderOutput(FOutputs[index], FSources, FJob.Options);
        const std::lock_guard lock(FProgressMutex);
        FDone += static_cast<int>(std::count_if(FOutputs.begin(), FOutputs.end(),
            [index](const TOutput& output) { return output.SameAs == index; }));
        if (FProgress)
            FProgress(FDone, static_cast<int>(FOutputs.size()));
    }

    void WriteFiles()
    {
        const TNewFolder folder(FJob.OutputFolder);
        std::vector<TStagedFile> staged;
        staged.reserve(FOutputs.size());
        for (const TOutput& output : FOutputs)
            staged.emplace_back(output.Path, FFiles[output.SameAs]);
        TStagedFile::CommitAll(staged);
    }

    const TGenJob& FJob;
    const TGenProgress& FProgress;
    TSourceSizes FSizes;
    std::vector<TOutput> FOutputs;
    std::vector<QByteArray> FFiles; // indexed by TOutput::SameAs

    TRenderSources FSources;
    std::mutex FProgressMutex;
    int FDone = 0;
};

} // namespace

std::vector<TOutput> RunGeneration(const TGenJob& job, int workers, const TGenProgress& progress)
{
    if (job.OutputFolder.isEmpty())
        throw TError(TErrorKind::BadInput, u"Cannot generate: the project has no output folder"_s);
    const int cores = std::max(static_cast<int>(std::thread::hardware_concurrency()), 1);
    return TRun(job, progress).Run(workers > 0 ? workers : cores);
}

} // namespace Corvadine
