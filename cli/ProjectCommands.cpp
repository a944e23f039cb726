#include "cli/ProjectCommands.h"

#include "base/Error.h"
#include "cli/CliContext.h"
#include "cli/Options.h"

#include <CLI/CLI.hpp>

#include <QJsonArray>

namespace Corvadine {

namespace {

constexpr const char* ProjectHelp = "ID of the project, or path of its .dproj file";

// Puts the project's name before the warnings and the error.
void NameProject(TCommandResult& result, const QString& name)
{
    const QString prefix = u"project %1: "_s.arg(name);
    for (QString& warning : result.Warnings)
        warning.prepend(prefix);
    if (!result.Error.isEmpty())
        result.Error.prepend(prefix);
}

} // namespace

void TProjectCommand::Declare(CLI::App& app)
{
    AddRequired(app, "PROJECT", FProject, ProjectHelp);
}

TCommandResult TProjectCommand::Run(TCliContext& context)
{
    return RunOn(context, context.FindProject(QString::fromStdString(FProject)));
}

void TProjectsCommand::Declare(CLI::App& app)
{
    app.add_option("PROJECT", FProjects, ProjectHelp)->type_name("");
    app.add_flag("--all", FAll, "All projects");
}

void TProjectsCommand::CheckUsage() const
{
    if (FAll && !FProjects.empty())
        throw TError(TErrorKind::Usage, u"--all goes without the name of a project"_s);
    if (!FAll && FProjects.empty())
        throw TError(TErrorKind::Usage, u"PROJECT or --all is required"_s);
}

TCommandResult TProjectsCommand::Run(TCliContext& context)
{
    const QStringList names = Names(context);
    TCommandResult total;
    QJsonArray projects;
    for (const QString& name : names) {
        TCommandResult result = RunOnName(context, name);
        projects.append(JsonOf(result));
        if (!result.Error.isEmpty() && !total.Json.contains("error"_L1))
            total.Json.insert("error"_L1, result.Error); // the first error; each project's object has its own
        if (result.Exit != TExit::Done)
            total.Exit = TExit::Failed;
        if (names.size() > 1) {
            NameProject(result, name);
            if (!result.Lines.isEmpty())
                result.Lines.prepend(u"Project %1:"_s.arg(name));
        }
        context.Output().Show(result);
    }
    total.Json.insert("projects"_L1, projects);
    if (names.isEmpty())
        total.Warnings.append(u"There are no projects in %1"_s.arg(context.DataFolder()));
    return total;
}

TCommandResult TProjectsCommand::RunOnName(TCliContext& context, const QString& name)
{
    TCommandResult result;
    QJsonObject identity { { u"project"_s, name } };
    try {
        const TProject project = context.FindProject(name);
        identity = { { u"id"_s, static_cast<qint64>(project.ID) }, { u"project"_s, project.ProjectFile } };
        result = RunOn(context, project);
    } catch (...) {
        result = FailureOf(std::current_exception());
    }
    for (auto member = identity.constBegin(); member != identity.constEnd(); ++member)
        result.Json.insert(member.key(), member.value());
    return result;
}

QStringList TProjectsCommand::Names(TCliContext& context) const
{
    QStringList names;
    for (const std::string& name : FProjects)
        names.append(QString::fromStdString(name));
    if (FAll)
        for (const TProject& project : context.Projects())
            names.append(QString::number(project.ID));
    return names;
}

} // namespace Corvadine
