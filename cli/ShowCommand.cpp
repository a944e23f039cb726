#include "base/Literals.h"
#include "cli/CliContext.h"
#include "cli/ProjectCommands.h"
#include "cli/Settings.h"

namespace Corvadine {

namespace {

class TShowCommand : public TProjectCommand {
public:
    const char* Name() const override { return "show"; }
    const char* Description() const override { return "Show the settings of a project"; }

protected:
    TCommandResult RunOn(TCliContext&, const TProject& project) override
    {
        return { { { u"project"_s, ProjectJson(project) } }, ProjectLines(project) };
    }
};

} // namespace

TCommandPtr MakeShowCommand()
{
    return std::make_unique<TShowCommand>();
}

} // namespace Corvadine
