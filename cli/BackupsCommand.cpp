#include "base/Literals.h"
#include "cli/CliContext.h"
#include "cli/ProjectCommands.h"
#include "project/Backups.h"

#include <CLI/CLI.hpp>

#include <QJsonArray>

namespace Corvadine {

namespace {

QString ReasonText(TBackupReason reason)
{
    return reason == TBackupReason::Update ? u"update"_s : u"before restore"_s;
}

// Returns the last column of the list: why the backup was made, or what is wrong with it.
QString StateText(const TBackup& backup)
{
    if (!backup.Reason)
        return u"no record"_s;
    return backup.Fault.isEmpty() ? ReasonText(*backup.Reason) : u"damaged: %1"_s.arg(backup.Fault);
}

class TBackupsCommand : public TProjectCommand {
public:
    const char* Name() const override { return "backups"; }
    const char* Description() const override { return "List the backups of a project file, oldest first"; }

    void Declare(CLI::App& app) override
    {
        TProjectCommand::Declare(app);
        app.add_option("--prune", FKept,
               "Remove those older than the KEEP newest whole ones; those without a record stay")
            ->type_name("KEEP")
            ->check(CLI::Range(1, 1'000'000));
    }

protected:
    TCommandResult RunOn(TCliContext& context, const TProject& project) override
    {
        TCommandResult result;
        QStringList removed;
        if (FKept > 0) {
            removed = context.Backups().Prune(project.ProjectFile, FKept);
            result.Lines.append(u"%1 removed"_s.arg(Counted(removed.size(), u"backup"_s)));
        }
        QJsonArray backups;
        std::vector<QStringList> rows;
        for (const TBackup& backup : context.Backups().List(project.ProjectFile)) {
            backups.append(QJsonObject { { u"name"_s, backup.Name }, { u"path"_s, backup.Path },
                { u"time"_s, backup.Time.toString(Qt::ISODate) },
                { u"reason"_s, backup.Reason ? QJsonValue(ReasonText(*backup.Reason)) : QJsonValue() },
                { u"fault"_s, backup.Fault.isEmpty() ? QJsonValue() : QJsonValue(backup.Fault) } });
            rows.push_back(
                { backup.Time.toString(u"yyyy-MM-dd HH:mm:ss"_s), backup.Name, StateText(backup) });
        }
        result.Lines += AlignedRows(rows);
        result.Json = { { u"backups"_s, backups }, { u"removed"_s, QJsonArray::fromStringList(removed) } };
        return result;
    }

private:
    int FKept = 0; // 0: nothing is removed
};

} // namespace

TCommandPtr MakeBackupsCommand()
{
    return std::make_unique<TBackupsCommand>();
}

} // namespace Corvadine
