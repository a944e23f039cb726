#include "base/Error.h"
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
        app.add_option(
               "NAME", FName, "Backup to put back, as backups lists it (default: the newest of an update)")
            ->type_name("");
        app.add_flag("--undo", FIsUndo, "Put back what the last restore replaced");
        app.add_flag("--force", FIsForced, "Also a backup of another path, without a record, or damaged");
    }

    void CheckUsage() const override
    {
        if (FIsUndo && !FName.empty())
            throw TError(TErrorKind::Usage, u"--undo names a backup by itself, so NAME cannot be given"_s);
        if (FIsForced && FName.empty())
            throw TError(TErrorKind::Usage, u"--force needs the NAME of a backup"_s);
    }

protected:
    TCommandResult RunOn(TCliContext& context, const TProject& project) override
    {
        const TRestoredBackup restored = context.Backups().Restore(project.ProjectFile,
            { QString::fromStdString(FName), FIsUndo, FIsForced, context.Environment().Now() });
        const QString name = FileNameOf(restored.BackupPath);
        TCommandResult result;
        result.Lines = { restored.IsWritten ? u"Restored %1"_s.arg(name)
                                            : u"The project file already has the content of %1"_s.arg(name) };
        if (!restored.SavedPath.isEmpty())
            result.Lines.append(u"What it replaced is kept as %1"_s.arg(FileNameOf(restored.SavedPath)));
        result.Json = { { u"restored"_s, restored.BackupPath }, { u"written"_s, restored.IsWritten },
            { u"saved"_s, restored.SavedPath.isEmpty() ? QJsonValue() : QJsonValue(restored.SavedPath) } };
        return result;
    }

private:
    std::string FName;
    bool FIsUndo = false;
    bool FIsForced = false;
};

} // namespace

TCommandPtr MakeRestoreCommand()
{
    return std::make_unique<TRestoreCommand>();
}

} // namespace Corvadine
