#pragma once

#include "cli/Cli.h"
#include "cli/CliOutput.h"
#include "store/Project.h"

#include <QDateTime>
#include <QString>

#include <memory>
#include <vector>

namespace Corvadine {

class TBackups;
class TProjectStore;
class TProjectsTable;

// What the commands work on: the data folder with the project database in it, opened on first use.
class TCliContext {
public:
    // An empty `dataFolder` means the program's own.
    TCliContext(const TCliEnvironment& environment, TCliOutput& output, const QString& dataFolder);
    ~TCliContext();
    TCliContext(const TCliContext&) = delete;
    TCliContext& operator=(const TCliContext&) = delete;

    TCliOutput& Output() const { return FOutput; }
    const TCliEnvironment& Environment() const { return FEnvironment; }
    QString DataFolder() const { return FDataFolder; }
    // The backups in the data folder.
    TBackups& Backups();

    // All projects in the order in which they were added. None if there is no database; none is created.
    // Throws TError(Io), also for a missing data folder.
    std::vector<TProject> Projects();

    // The project with the ID `name`, or with the project file `name`, as a relative or full path.
    // Throws TError: Io as Projects does, and if there is no such project; Usage for an empty name.
    TProject FindProject(const QString& name);

    // The table for writing, open; the database is created when missing. Throws TError(Io).
    // REQUIRES: the data folder exists.
    TProjectsTable& Table();

private:
    QString DatabasePath() const;
    TProjectStore& Store();

    const TCliEnvironment& FEnvironment;
    TCliOutput& FOutput;
    QString FDataFolder;
    std::unique_ptr<TBackups> FBackups;
    std::unique_ptr<TProjectStore> FStore;
    std::unique_ptr<TProjectsTable> FTable;
};

} // namespace Corvadine
