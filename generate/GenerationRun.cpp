#include "generate/GenerationRun.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/StagedFile.h"
#include "generate/RenderTasks.h"

#include <algorithm>
#include <mutex>

namespace Corvadine {

namespace {

class TRun {
public:
    TRun(const TGenJob& job, const TGenProgress& progress)
        : FJob(job)
        , FProgress(progress)
        , FSizes(ReadSourceSizes(job.IconFile, job.LaunchFile))
        , FOutputs(OutputsOf(job, FSizes))
        , FFiles(FOutputs.size())
    {
        for (const TOutput& output : FOutputs)
            RefuseHuge(output, FSizes);
        RefuseOverwritingSources(job, FOutputs);
    }

    std::vector<TOutput> Run(int workers)
    {
        const TRenderSteps steps { [this] {
                                      if (FSizes.Launch)
                                          FSources.Launch = LoadSource(FJob.LaunchFile);
                                  },
            [this] { FSources.Icon = LoadSource(FJob.IconFile); },
            [this](std::size_t index) { Render(index); } };
        RunTasks(RenderTasks(FOutputs, steps), workers);
        WriteFiles();
        return FOutputs;
    }

private:
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
    return TRun(job, progress).Run(workers);
}

} // namespace Corvadine
