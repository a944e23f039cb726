#pragma once

#include "cli/CommandResult.h"

#include <memory>
#include <vector>

namespace CLI {
class App;
}

namespace Corvadine {

class TCliContext;

// One command of the program. An object parses and runs one command line.
class TCommand {
public:
    TCommand() = default;
    virtual ~TCommand() = default;
    TCommand(const TCommand&) = delete;
    TCommand& operator=(const TCommand&) = delete;

    virtual const char* Name() const = 0;
    virtual const char* Description() const = 0; // one line, for the list of commands and the command's help

    // Declares positionals and options. Parsing stores their values in this object, and refuses values out of
    // range. The object must live until parsing has ended.
    virtual void Declare(CLI::App& app) = 0;

    // Throws TError(Usage) for combinations of options that make no sense. Reads no files.
    virtual void CheckUsage() const { }

    // Runs the command and returns its result. Throws TError.
    virtual TCommandResult Run(TCliContext& context) = 0;
};

using TCommandPtr = std::unique_ptr<TCommand>;

// One function per command, each in the file of the command's name.
TCommandPtr MakeAddCommand();
TCommandPtr MakeListCommand();
TCommandPtr MakeShowCommand();
TCommandPtr MakeSetCommand();
TCommandPtr MakeRemoveCommand();
TCommandPtr MakePlanCommand();
TCommandPtr MakeGenerateCommand();
TCommandPtr MakeUpdateCommand();
TCommandPtr MakeCheckCommand();
TCommandPtr MakeClearCommand();
TCommandPtr MakeBackupsCommand();
TCommandPtr MakeRestoreCommand();

// Returns a new object of every command, in the order of the program's help.
std::vector<TCommandPtr> MakeCommands();

} // namespace Corvadine
