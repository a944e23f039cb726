#include "cli/CliContext.h"
#include "cli/ProjectCommands.h"
#include "project/Backups.h"

#include <QJsonArray>

namespace Corvadine {

namespace {

class TBackupsCommand : public TProjectCommand {
public:
    const char* Name() const override { return "backups"; }
    const char* Description() const override { return "List the backups of a project file, oldest first"; }

protected:
    TCommandResult RunOn(TCliContext& context, const TProject& project) override
    {
        QJsonArray backups;
        std::vector<QStringList> rows;
        for (const TBackup& backup : ListBackups(project.ProjectFile, context.BackupFolder())) {
            backups.append(QJsonObject { { QStringLiteral("name"), backup.Name },
                { QStringLiteral("path"), backup.Path },
                { QStringLiteral("time"), backup.Time.toString(Qt::ISODate) } });
            rows.push_back({ backup.Time.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")), backup.Name });
        }
        return { { { QStringLiteral("backups"), backups } }, AlignedRows(rows) };
    }
};

} // namespace

TCommandPtr MakeBackupsCommand()
{
    return std::make_unique<TBackupsCommand>();
}

} // namespace Corvadine
