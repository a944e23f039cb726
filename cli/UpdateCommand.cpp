#include "cli/CliContext.h"
#include "cli/ProjectCommands.h"
#include "cli/ProjectElements.h"

#include <CLI/CLI.hpp>

namespace Corvadine {

namespace {

// What the window says, with the names where its first sentence announces them, and without a backup that was
// not made.
QStringList UpdateLines(const TUpdateResult& update)
{
    QStringList lines { update.CountMessage() };
    lines += Indented(update.MissingIDs);
    if (update.BackupPath.isEmpty())
        return lines << QStringLiteral("Nothing had to change, so no backup was made.");
    return lines << TUpdateResult::BackupMessage() << Indented({ update.BackupPath });
}

QString Message(const TUpdateResult& update)
{
    return update.BackupPath.isEmpty() ? update.CountMessage() : update.ClosingMessage();
}

QStringList DryRunLines(const TUpdateResult& update, const QString& projectFile)
{
    const QStringList changes = ChangeLines(update);
    return QStringList { QStringLiteral("%1 would change in %2 (%3 right already)")
                             .arg(Counted(changes.size(), QStringLiteral("element")), projectFile)
                             .arg(CountRight(update)) }
    + changes + MissingLines(update);
}

class TUpdateCommand : public TProjectsCommand {
public:
    const char* Name() const override { return "update"; }
    const char* Description() const override
    {
        return "Point project files at their generated images, after a backup";
    }

    void Declare(CLI::App& app) override
    {
        TProjectsCommand::Declare(app);
        app.add_flag("--dry-run", FDryRun, "Only show what would change");
    }

protected:
    TCommandResult RunOn(TCliContext& context, const TProject& project) override
    {
        const TProjectImages images = ImagesOf(project, JobOf(project));
        const TUpdateResult update =
            FDryRun ? PlanUpdate(images, TImageFiles::Existing) : Update(context, images);
        TCommandResult result;
        result.Json = { { QStringLiteral("dryRun"), FDryRun },
            { QStringLiteral("updated"), update.UpdatedCount },
            { QStringLiteral("written"), update.IsWritten },
            { QStringLiteral("changes"), ChangesJson(update) },
            { QStringLiteral("missing"), QJsonArray::fromStringList(update.MissingIDs) },
            { QStringLiteral("backup"),
                update.BackupPath.isEmpty() ? QJsonValue() : QJsonValue(update.BackupPath) },
            { QStringLiteral("message"), FDryRun ? QJsonValue() : QJsonValue(Message(update)) } };
        result.Lines = FDryRun ? DryRunLines(update, project.ProjectFile) : UpdateLines(update);
        if (update.UpdatedCount == 0 && update.MissingIDs.isEmpty())
            result.Warnings.append(
                QStringLiteral("There are no generated images in %1").arg(project.OutputFolder));
        return result;
    }

private:
    TUpdateResult Update(const TCliContext& context, const TProjectImages& images)
    {
        TUpdateResult update = UpdateProject(images,
            { context.BackupFolder(), context.Environment().Now(), TBackupPolicy::Required, FBackups });
        FBackups.append(update.BackupPath);
        return update;
    }

    bool FDryRun = false;
    // Copies of one template share file name and ProjectGuid, so only this tells their backups apart.
    QStringList FBackups;
};

} // namespace

TCommandPtr MakeUpdateCommand()
{
    return std::make_unique<TUpdateCommand>();
}

} // namespace Corvadine
