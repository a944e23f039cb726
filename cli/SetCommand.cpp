#include "base/Error.h"
#include "cli/CliContext.h"
#include "cli/ProjectCommands.h"
#include "cli/Settings.h"
#include "store/ProjectsTable.h"

namespace Corvadine {

namespace {

class TSetCommand : public TProjectCommand {
public:
    const char* Name() const override { return "set"; }
    const char* Description() const override { return "Change settings of a project"; }

    void Declare(CLI::App& app) override
    {
        TProjectCommand::Declare(app);
        FSettings.Declare(app);
    }

    void CheckUsage() const override
    {
        if (FSettings.IsEmpty())
            throw TError(TErrorKind::Usage, u"a setting to change is required"_s);
    }

protected:
    TCommandResult RunOn(TCliContext& context, const TProject& project) override
    {
        FSettings.CheckPaths();
        TProjectsTable& table = context.Table();
        if (!table.LocateByID(project.ID))
            throw TError(TErrorKind::Conflict, u"change the project"_s, project.ProjectFile,
                u"another program has removed it meanwhile"_s);
        FSettings.SetFields(table);
        table.Post();
        const TProject changed = table.Current();
        return { { { u"project"_s, ProjectJson(changed) } }, ProjectLines(changed),
            ClearWarnings(changed, context.OwnFolders()) };
    }

private:
    TSettingsOptions FSettings;
};

} // namespace

TCommandPtr MakeSetCommand()
{
    return std::make_unique<TSetCommand>();
}

} // namespace Corvadine
