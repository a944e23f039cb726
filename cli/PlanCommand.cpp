#include "cli/CliContext.h"
#include "cli/ProjectCommands.h"
#include "cli/ProjectElements.h"
#include "generate/OutputPlan.h"

namespace Corvadine {

namespace {

// Returns the path of the source that fills the output. Returns an empty path if no source is chosen; the
// output is then plain white.
QString SourceFile(const TOutput& output, const TGenJob& job)
{
    return output.FromLaunch ? job.LaunchFile : job.IconFile;
}

QString SourceName(const TOutput& output, const TGenJob& job)
{
    if (SourceFile(output, job).isEmpty())
        return u"none"_s;
    return output.FromLaunch ? u"launch"_s : u"icon"_s;
}

QStringList OutputLines(const TOutputPlan& plan, const TGenJob& job)
{
    const auto chosen = [](const QString& file) { return file.isEmpty() ? u"(none)"_s : file; };
    QStringList lines { u"Icon image:    "_s + chosen(job.IconFile),
        u"Launch image:  "_s + chosen(job.LaunchFile), QString(),
        Counted(static_cast<qsizetype>(plan.Outputs.size()), u"image"_s) };
    std::vector<QStringList> rows;
    for (const TOutput& output : plan.Outputs) {
        const QSize size = output.Recipe.Canvas;
        rows.push_back({ u"  "_s + output.ID, u"%1x%2"_s.arg(size.width()).arg(size.height()),
            SourceName(output, job), output.Path });
    }
    return lines + AlignedRows(rows);
}

QJsonArray OutputsJson(const TOutputPlan& plan, const TGenJob& job)
{
    QJsonArray outputs;
    for (const TOutput& output : plan.Outputs) {
        const QSize size = output.Recipe.Canvas;
        outputs.append(QJsonObject { { u"name"_s, output.ID }, { u"width"_s, size.width() },
            { u"height"_s, size.height() }, { u"source"_s, SourceName(output, job) },
            { u"sourceFile"_s, SourceFile(output, job) }, { u"path"_s, output.Path } });
    }
    return outputs;
}

class TPlanCommand : public TProjectCommand {
public:
    const char* Name() const override { return "plan"; }
    const char* Description() const override
    {
        return "Show what generate and update would do; write nothing";
    }

protected:
    TCommandResult RunOn(TCliContext& context, const TProject& project) override
    {
        const TGenJob job = JobOf(project);
        const TUpdateResult update = PlanUpdate(ImagesOf(project, job), TImageFiles::Assumed);
        const TOutputPlan plan = PlanOutputs(job);
        QStringList lines = OutputLines(plan, job);
        lines << QString() << DryRunLines(update, project.ProjectFile);
        return { { { u"outputs"_s, OutputsJson(plan, job) }, { u"changes"_s, ChangesJson(update) },
                     { u"right"_s, CountRight(update) },
                     { u"missing"_s, QJsonArray::fromStringList(update.MissingIDs) } },
            lines, plan.Warnings + ClearWarnings(project, context.OwnFolders()) };
    }
};

} // namespace

TCommandPtr MakePlanCommand()
{
    return std::make_unique<TPlanCommand>();
}

} // namespace Corvadine
