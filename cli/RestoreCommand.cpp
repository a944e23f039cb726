#include "base/PathRules.h"
#include "cli/CliContext.h"
#include "cli/ProjectCommands.h"
#include "project/Backups.h"

#include <CLI/CLI.hpp>

namespace Corvadine {

namespace {

class TRestoreCommand : public TProjectCommand {
public:
    const char* Name() const override { return "restore"; }
    const char* Description() const override { return "Put a backup of a project file back"; }

    void Declare(CLI::App& app) override
    {
        TProjectCommand::Declare(app);
        app.add_option("NAME", FName, "Backup to put back, as backups lists it (default: the newest)")
            ->type_name("");
    }

protected:
    TCommandResult RunOn(TCliContext& context, const TProject& project) override
    {
        const TRestoredBackup restored = RestoreBackup(project.ProjectFile, context.BackupFolder(),
            QString::fromStdString(FName), context.Environment().Now());
        TCommandResult result;
        result.Lines = { QStringLiteral("Restored %1").arg(FileNameOf(restored.BackupPath)) };
        if (!restored.SavedPath.isEmpty())
            result.Lines.append(
                QStringLiteral("What it replaced is kept as %1").arg(FileNameOf(restored.SavedPath)));
        result.Json = { { QStringLiteral("restored"), restored.BackupPath },
            { QStringLiteral("saved"),
                restored.SavedPath.isEmpty() ? QJsonValue() : QJsonValue(restored.SavedPath) } };
        return result;
    }

private:
    std::string FName;
};

} // namespace

TCommandPtr MakeRestoreCommand()
{
    return std::make_unique<TRestoreCommand>();
}

} // namespace Corvadine
