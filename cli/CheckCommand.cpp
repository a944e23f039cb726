#include "cli/CliOutput.h"
#include "cli/ProjectCommands.h"
#include "cli/ProjectElements.h"
#include "generate/OutputCheck.h"

namespace Corvadine {

namespace {

// The findings in two forms: as JSON objects, and as lines that begin with the file, like the lines of
// a compiler.
struct TFindings {
    QStringList Lines;
    QJsonArray Json;

    void Add(const QString& id, const QString& path, const QString& place, const QString& text)
    {
        Lines.append(u"%1: %2"_s.arg(place, text));
        Json.append(QJsonObject { { u"id"_s, id }, { u"path"_s, path }, { u"text"_s, text } });
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
            findings.Add(change.ID, projectFile, u"%1:%2"_s.arg(projectFile).arg(change.Line),
                u"%1 is '%2' instead of '%3'"_s.arg(change.ID, change.OldText, change.NewText));
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
        result.Json = { { u"findings"_s, findings.Json },
            { u"missing"_s, QJsonArray::fromStringList(update.MissingIDs) } };
        // A missing element is no fault, because each version of the IDE writes other elements.
        result.Lines = findings.Lines;
        if (!update.MissingIDs.isEmpty())
            result.Lines.append(
                u"note: no element in %1 for %2"_s.arg(project.ProjectFile, update.MissingIDs.join(u", "_s)));
        result.Lines.append(
            findings.Lines.isEmpty() ? u"OK"_s : Counted(findings.Lines.size(), u"finding"_s));
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
