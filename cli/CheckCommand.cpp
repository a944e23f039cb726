#include "cli/CliOutput.h"
#include "cli/ProjectCommands.h"
#include "cli/ProjectElements.h"
#include "generate/OutputCheck.h"

#include <CLI/CLI.hpp>

namespace Corvadine {

namespace {

// The findings in two forms: as JSON objects, and as lines that begin with the file, like the lines of
// a compiler.
struct TFindings {
    QStringList Lines;
    QJsonArray Json;

    void Add(const QString& line, const QJsonObject& json)
    {
        Lines.append(line);
        Json.append(json);
    }
};

QString KindName(TFaultKind kind)
{
    switch (kind) {
    case TFaultKind::Missing:
        return u"missing"_s;
    case TFaultKind::Damaged:
        return u"damaged"_s;
    case TFaultKind::Stale:
        return u"stale"_s;
    }
    return {};
}

QJsonObject FindingJson(const QString& kind, const QString& id, const QString& path, const QString& text)
{
    return { { u"kind"_s, kind }, { u"id"_s, id }, { u"path"_s, path }, { u"text"_s, text } };
}

void AddFileFindings(TFindings& findings, const TOutputCheck& check)
{
    for (const TUnreadableSource& source : check.UnreadableSources) {
        const QString text =
            u"the %1 image cannot be loaded (%2); of %3 made from it only the form was checked"_s.arg(
                source.Name, source.Reason, Counted(source.OutputCount, u"image"_s));
        findings.Add(
            u"%1: %2"_s.arg(source.Path, text), FindingJson(u"source"_s, source.Name, source.Path, text));
    }
    for (const TOutputFinding& finding : check.Findings) {
        const auto& [kind, text] = finding.Fault;
        const QString prefix = kind == TFaultKind::Missing ? QString() : KindName(kind) + u": "_s;
        findings.Add(u"%1: %2%3"_s.arg(finding.Path, prefix, text),
            FindingJson(KindName(kind), finding.ID, finding.Path, text));
    }
}

void AddElementFindings(TFindings& findings, const QString& projectFile, const TUpdateResult& update)
{
    for (const TElementChange& change : update.Changes) {
        if (!change.Differs)
            continue;
        const QString text = u"%1 is '%2' instead of '%3'"_s.arg(change.ID, change.OldText, change.NewText);
        findings.Add(u"%1:%2: %3"_s.arg(projectFile).arg(change.Line).arg(text),
            FindingJson(u"entry"_s, change.ID, projectFile, text));
    }
}

class TCheckCommand : public TProjectsCommand {
public:
    const char* Name() const override { return "check"; }
    const char* Description() const override
    {
        return "Verify images and project files; exit status 1 unless all is right";
    }

    void Declare(CLI::App& app) override
    {
        TProjectsCommand::Declare(app);
        app.add_flag("--form", FForm,
            "Only look whether images are whole and have the right\n"
            "size and color type; do not render them for comparison");
    }

protected:
    TCommandResult RunOn(TCliContext&, const TProject& project) override
    {
        const TGenJob job = JobOf(project);
        const TUpdateResult update = PlanUpdate(ImagesOf(project, job), TImageFiles::Assumed);
        const TOutputCheck check = CheckOutputs(job, FForm ? TCheckDepth::Form : TCheckDepth::Pixels);
        TFindings findings;
        AddFileFindings(findings, check);
        AddElementFindings(findings, project.ProjectFile, update);

        TCommandResult result;
        result.Json = { { u"findings"_s, findings.Json }, { u"images"_s, check.OutputCount },
            { u"compared"_s, check.ComparedCount },
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

private:
    bool FForm = false;
};

} // namespace

TCommandPtr MakeCheckCommand()
{
    return std::make_unique<TCheckCommand>();
}

} // namespace Corvadine
