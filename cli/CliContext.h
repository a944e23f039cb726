#pragma once

#include "cli/Cli.h"
#include "cli/CliOutput.h"
#include "generate/ClearRule.h"
#include "store/Project.h"

#include <QDateTime>
#include <QString>

#include <memory>
#include <vector>

namespace Corvadine {

class TBackups;
class TProjectStore;
class TProjectsTable;

// The data that commands work on: the data folder and the project database in it. The database is opened on
// first use.
class TCliContext {
public:
    // An empty `dataFolder` means the program's own folder.
    TCliContext(const TCliEnvironment& environment, TCliOutput& output, const QString& dataFolder);
    ~TCliContext();
    TCliContext(const TCliContext&) = delete;
    TCliContext& operator=(const TCliContext&) = delete;

    TCliOutput& Output() const { return FOutput; }
    const TCliEnvironment& Environment() const { return FEnvironment; }
    QString DataFolder() const { return FDataFolder; }
    TOwnFolders OwnFolders() const { return { FEnvironment.ProgramFolder, FDataFolder }; }
    // The backups in the data folder.
    TBackups& Backups();

    // Returns all projects in the order in which they were added. If there is no database, returns no
    // projects and creates no database. Throws TError(Io), also for a missing data folder.
    std::vector<TProject> Projects();

    // Returns the project whose ID is `name`, or whose project file is the relative or full path `name`.
    // Throws TError(Usage) for an empty name. Throws TError(Io) as Projects() does, and if there is no
    // such project.
    TProject FindProject(const QString& name);

    // Returns the open table, for writing. Creates the database if it is missing. Throws TError(Io).
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
