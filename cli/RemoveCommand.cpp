#include "base/Literals.h"
#include "cli/CliContext.h"
#include "cli/ProjectCommands.h"
#include "cli/Settings.h"
#include "store/ProjectsTable.h"

namespace Corvadine {

namespace {

class TRemoveCommand : public TProjectCommand {
public:
    const char* Name() const override { return "remove"; }
    const char* Description() const override { return "Forget a project; its files stay"; }

protected:
    TCommandResult RunOn(TCliContext& context, const TProject& project) override
    {
        TProjectsTable& table = context.Table();
        if (table.LocateByID(project.ID)) // false if another program has just removed it
            table.Delete();
        return { { { u"project"_s, ProjectJson(project) } },
            { u"Removed project %1, %2"_s.arg(project.ID).arg(project.ProjectFile) } };
    }
};

} // namespace

TCommandPtr MakeRemoveCommand()
{
    return std::make_unique<TRemoveCommand>();
}

} // namespace Corvadine
