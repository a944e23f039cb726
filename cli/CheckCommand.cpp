#include "cli/ProjectCommands.h"
#include "cli/ProjectElements.h"
#include "generate/OutputCheck.h"

namespace Corvadine {

namespace {

// Findings as lines that name the file first, as compilers do, and as objects.
struct TFindings {
    QStringList Lines;
    QJsonArray Json;

    void Add(const QString& id, const QString& path, const QString& place, const QString& text)
    {
        Lines.append(QStringLiteral("%1: %2").arg(place, text));
        Json.append(QJsonObject { { QStringLiteral("id"), id }, { QStringLiteral("path"), path },
            { QStringLiteral("text"), text } });
    }
};

void AddFileFindings(TFindings& findings, const TGenJob& job)
{
    for (const TOutputFinding& finding : CheckOutputs(job))
        findings.Add(finding.ID, finding.Path, finding.Path, finding.Text);
}

void AddElementFindings(TFindings& findings, const QString& projectFile, const TUpdateResult& update)
{
    for (const TElementChange& change : update.Changes)
        if (change.Differs)
            findings.Add(change.ID, projectFile, QStringLiteral("%1:%2").arg(projectFile).arg(change.Line),
                QStringLiteral("%1 is '%2' instead of '%3'").arg(change.ID, change.OldText, change.NewText));
}

class TCheckCommand : public TProjectsCommand {
public:
    const char* Name() const override { return "check"; }
    const char* Description() const override
    {
        return "Verify images and project files; exit status 1 unless all is right";
    }

protected:
    TCommandResult RunOn(TCliContext&, const TProject& project) override
    {
        const TGenJob job = JobOf(project);
        const TUpdateResult update = PlanUpdate(ImagesOf(project, job), TImageFiles::Assumed);
        TFindings findings;
        AddFileFindings(findings, job);
        AddElementFindings(findings, project.ProjectFile, update);

        TCommandResult result;
        result.Json = { { QStringLiteral("findings"), findings.Json },
            { QStringLiteral("missing"), QJsonArray::fromStringList(update.MissingIDs) } };
        // Which elements there are depends on the IDE that wrote the file, so a missing one is no fault.
        result.Lines = findings.Lines;
        if (!update.MissingIDs.isEmpty())
            result.Lines.append(QStringLiteral("note: no element in %1 for %2")
                                    .arg(project.ProjectFile, update.MissingIDs.join(QStringLiteral(", "))));
        result.Lines.append(findings.Lines.isEmpty()
                ? QStringLiteral("OK")
                : Counted(findings.Lines.size(), QStringLiteral("finding")));
        result.Warnings = JobWarnings(job);
        result.Exit = findings.Lines.isEmpty() ? TExit::Done : TExit::Failed;
        return result;
    }
};

} // namespace

TCommandPtr MakeCheckCommand()
{
    return std::make_unique<TCheckCommand>();
}

} // namespace Corvadine
