#include "cli/ProjectCommands.h"

#include "base/Error.h"
#include "cli/CliContext.h"
#include "cli/Options.h"

#include <CLI/CLI.hpp>

#include <QJsonArray>

namespace Corvadine {

namespace {

constexpr const char* ProjectHelp = "ID of the project, or path of its .dproj file";

// Tells which of several projects a line is about.
void NameProject(TCommandResult& result, const QString& name)
{
    const QString prefix = QStringLiteral("project %1: ").arg(name);
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
        throw TError(TErrorKind::Usage, QStringLiteral("--all goes without the name of a project"));
    if (!FAll && FProjects.empty())
        throw TError(TErrorKind::Usage, QStringLiteral("PROJECT or --all is required"));
}

TCommandResult TProjectsCommand::Run(TCliContext& context)
{
    const QStringList names = Names(context);
    TCommandResult total;
    QJsonArray projects;
    for (const QString& name : names) {
        TCommandResult result = RunOnName(context, name);
        projects.append(JsonOf(result));
        if (!result.Error.isEmpty() && !total.Json.contains(QLatin1String("error")))
            total.Json.insert(QLatin1String("error"), result.Error); // the first; each project has its own
        if (result.Exit != TExit::Done)
            total.Exit = TExit::Failed;
        if (names.size() > 1) {
            NameProject(result, name);
            if (!result.Lines.isEmpty())
                result.Lines.prepend(QStringLiteral("Project %1:").arg(name));
        }
        context.Output().Show(result);
    }
    total.Json.insert(QLatin1String("projects"), projects);
    if (names.isEmpty())
        total.Warnings.append(QStringLiteral("There are no projects in %1").arg(context.DataFolder()));
    return total;
}

TCommandResult TProjectsCommand::RunOnName(TCliContext& context, const QString& name)
{
    TCommandResult result;
    QJsonObject identity { { QStringLiteral("project"), name } };
    try {
        const TProject project = context.FindProject(name);
        identity = { { QStringLiteral("id"), static_cast<qint64>(project.ID) },
            { QStringLiteral("project"), project.ProjectFile } };
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
