#include "cli/Command.h"

namespace Corvadine {

std::vector<TCommandPtr> MakeCommands()
{
    std::vector<TCommandPtr> commands;
    for (const auto make : { MakeAddCommand, MakeListCommand, MakeShowCommand, MakeSetCommand,
             MakeRemoveCommand, MakePlanCommand, MakeGenerateCommand, MakeUpdateCommand, MakeCheckCommand,
             MakeClearCommand, MakeBackupsCommand, MakeRestoreCommand })
        commands.push_back(make());
    return commands;
}

} // namespace Corvadine
