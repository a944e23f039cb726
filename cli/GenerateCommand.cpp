#include "base/PathRules.h"
#include "cli/CliContext.h"
#include "cli/Options.h"
#include "cli/ProjectCommands.h"
#include "cli/ProjectElements.h"
#include "generate/GenerationRun.h"

#include <CLI/CLI.hpp>

namespace Corvadine {

namespace {

// Shows the progress in one line of a terminal. The destructor clears the line.
class TProgressLine {
public:
    TProgressLine(std::ostream& stream, const QString& title) : FStream(stream), FTitle(OneLine(title)) { }
    ~TProgressLine() { FStream << '\r' << std::string(FLength, ' ') << '\r' << std::flush; }
    Q_DISABLE_COPY_MOVE(TProgressLine)

    void Show(int done, int total)
    {
        const std::string line = FTitle + ": " + std::to_string(done) + " of " + std::to_string(total);
        FLength = std::max(FLength, line.size());
        FStream << '\r' << line << std::flush;
    }

private:
    std::ostream& FStream;
    std::string FTitle;
    std::size_t FLength = 0; // bytes of the longest text; no text has more columns than bytes
};

class TGenerateCommand : public TProjectsCommand {
public:
    const char* Name() const override { return "generate"; }
    const char* Description() const override { return "Render the images of projects"; }

    void Declare(CLI::App& app) override
    {
        TProjectsCommand::Declare(app);
        const auto take = [this](const QString& text) { FJobs = ParseNumber(text, 1, MostJobs); };
        AddTextOption(app, "--jobs", take, "Images rendered at a time (default: one per core)")
            ->type_name("N");
    }

protected:
    TCommandResult RunOn(TCliContext& context, const TProject& project) override
    {
        const TGenJob job = JobOf(project);
        QJsonArray images;
        for (const TOutput& output : Generate(context, project, job))
            images.append(output.Path);
        const QString line = u"%1 in %2"_s.arg(Counted(images.size(), u"image"_s), project.OutputFolder);
        return { { { u"folder"_s, project.OutputFolder }, { u"images"_s, images } }, { line },
            JobWarnings(job) };
    }

private:
    static constexpr int MostJobs = 1024;

    std::vector<TOutput> Generate(TCliContext& context, const TProject& project, const TGenJob& job) const
    {
        if (!context.Environment().ShowsProgress)
            return RunGeneration(job, FJobs);
        TProgressLine progress(context.Environment().Err, FileNameOf(project.ProjectFile));
        return RunGeneration(job, FJobs, [&progress](int done, int total) { progress.Show(done, total); });
    }

    int FJobs = 0;
};

} // namespace

TCommandPtr MakeGenerateCommand()
{
    return std::make_unique<TGenerateCommand>();
}

} // namespace Corvadine
