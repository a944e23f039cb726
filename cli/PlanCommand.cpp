#include "cli/CliContext.h"
#include "cli/ProjectCommands.h"
#include "cli/ProjectElements.h"
#include "generate/OutputPlan.h"

namespace Corvadine {

namespace {

QString SourceName(const TPlannedOutput& output)
{
    if (output.SourceFile.isEmpty())
        return QStringLiteral("none");
    return output.FromLaunch ? QStringLiteral("launch") : QStringLiteral("icon");
}

QStringList OutputLines(const TOutputPlan& plan, const TGenJob& job)
{
    const auto chosen = [](const QString& file) { return file.isEmpty() ? QStringLiteral("(none)") : file; };
    QStringList lines { QStringLiteral("Icon image:    ") + chosen(job.IconFile),
        QStringLiteral("Launch image:  ") + chosen(job.LaunchFile), QString(),
        Counted(static_cast<qsizetype>(plan.Outputs.size()), QStringLiteral("image")) };
    std::vector<QStringList> rows;
    for (const TPlannedOutput& output : plan.Outputs)
        rows.push_back({ QStringLiteral("  ") + output.Record.ID,
            QStringLiteral("%1x%2").arg(output.Size.width()).arg(output.Size.height()), SourceName(output),
            output.Path });
    return lines + AlignedRows(rows);
}

QStringList ElementLines(const TUpdateResult& update, const QString& projectFile)
{
    const QStringList changes = ChangeLines(update);
    QStringList lines { QString(),
        QStringLiteral("%1 would change in %2 (%3 right already)")
            .arg(Counted(changes.size(), QStringLiteral("element")), projectFile)
            .arg(CountRight(update)) };
    return lines + changes + MissingLines(update);
}

QJsonArray OutputsJson(const TOutputPlan& plan)
{
    QJsonArray outputs;
    for (const TPlannedOutput& output : plan.Outputs)
        outputs.append(QJsonObject { { QStringLiteral("name"), output.Record.ID },
            { QStringLiteral("width"), output.Size.width() },
            { QStringLiteral("height"), output.Size.height() },
            { QStringLiteral("source"), SourceName(output) },
            { QStringLiteral("sourceFile"), output.SourceFile }, { QStringLiteral("path"), output.Path } });
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
    TCommandResult RunOn(TCliContext&, const TProject& project) override
    {
        const TGenJob job = JobOf(project);
        const TUpdateResult update = PlanUpdate(ImagesOf(project, job), TImageFiles::Assumed);
        const TOutputPlan plan = PlanOutputs(job);
        TCommandResult result {
            { { QStringLiteral("outputs"), OutputsJson(plan) },
                { QStringLiteral("changes"), ChangesJson(update) },
                { QStringLiteral("right"), CountRight(update) },
                { QStringLiteral("missing"), QJsonArray::fromStringList(update.MissingIDs) } },
            OutputLines(plan, job) + ElementLines(update, project.ProjectFile), plan.Warnings
        };
        return result;
    }
};

} // namespace

TCommandPtr MakePlanCommand()
{
    return std::make_unique<TPlanCommand>();
}

} // namespace Corvadine
