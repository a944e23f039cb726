#pragma once

#include "cli/Cli.h"
#include "cli/CliOutput.h"
#include "store/Project.h"

#include <QDateTime>
#include <QString>

#include <memory>
#include <vector>

namespace Corvadine {

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
    QString BackupFolder() const;

    // All projects in the order in which they were added; none while there is no database, which is not
    // created for that. Throws TError: NotFound for a missing data folder, Database.
    std::vector<TProject> Projects();

    // The project that the user calls `name`: its ID, or the path of its file, relative or not.
    // Throws TError as Projects does, NotFound, and Usage for an empty name.
    TProject FindProject(const QString& name);

    // The table for writing, open; the database is created when missing. Throws TError(Database).
    // REQUIRES: the data folder exists.
    TProjectsTable& Table();

private:
    QString DatabasePath() const;
    TProjectStore& Store();

    const TCliEnvironment& FEnvironment;
    TCliOutput& FOutput;
    QString FDataFolder;
    std::unique_ptr<TProjectStore> FStore;
    std::unique_ptr<TProjectsTable> FTable;
};

} // namespace Corvadine
