#include "cli/CliContext.h"
#include "cli/ProjectCommands.h"
#include "cli/ProjectElements.h"

#include <CLI/CLI.hpp>

namespace Corvadine {

namespace {

// Returns the lines of the window's message. The first sentence announces the missing IDs, so the IDs follow
// this sentence. The sentence about the backup is printed only if a backup was made.
QStringList UpdateLines(const TUpdateResult& update)
{
    QStringList lines { update.CountMessage() };
    lines += Indented(update.MissingIDs);
    if (update.BackupPath.isEmpty())
        return lines << u"Nothing had to change, so no backup was made."_s;
    return lines << TUpdateResult::BackupMessage() << Indented({ update.BackupPath });
}

QString Message(const TUpdateResult& update)
{
    return update.BackupPath.isEmpty() ? update.CountMessage() : update.ClosingMessage();
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
        const TUpdateResult update = FDryRun
            ? PlanUpdate(images, TImageFiles::Existing)
            : UpdateProject(images, { context.Backups(), context.Environment().Now() });
        TCommandResult result;
        result.Json = { { u"dryRun"_s, FDryRun }, { u"updated"_s, update.UpdatedCount },
            { u"written"_s, update.IsWritten }, { u"changes"_s, ChangesJson(update) },
            { u"missing"_s, QJsonArray::fromStringList(update.MissingIDs) },
            { u"backup"_s, update.BackupPath.isEmpty() ? QJsonValue() : QJsonValue(update.BackupPath) },
            { u"message"_s, FDryRun ? QJsonValue() : QJsonValue(Message(update)) } };
        result.Lines = FDryRun ? DryRunLines(update, project.ProjectFile) : UpdateLines(update);
        if (update.UpdatedCount == 0 && update.MissingIDs.isEmpty())
            result.Warnings.append(u"There are no generated images in %1"_s.arg(project.OutputFolder));
        return result;
    }

private:
    bool FDryRun = false;
};

} // namespace

TCommandPtr MakeUpdateCommand()
{
    return std::make_unique<TUpdateCommand>();
}

} // namespace Corvadine
