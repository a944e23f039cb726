#include "cli/CliContext.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/PathRules.h"
#include "base/SystemFiles.h"
#include "project/Backups.h"
#include "store/ProjectStore.h"
#include "store/ProjectsTable.h"

#include <algorithm>

namespace Corvadine {

namespace {

bool IsID(const QString& name)
{
    return !name.isEmpty() && std::all_of(name.cbegin(), name.cend(), [](QChar character) {
        return character >= u'0' && character <= u'9';
    });
}

// Returns whether `name` means this project. A path is compared both as a full path and as it was typed,
// because a database from another system has paths of another form.
bool IsCalled(const TProject& project, const QString& name)
{
    if (IsID(name))
        return project.ID == name.toLongLong();
    return project.ProjectFile == name || IsSameFileName(project.ProjectFile, AbsolutePath(name));
}

} // namespace

TCliContext::TCliContext(const TCliEnvironment& environment, TCliOutput& output, const QString& dataFolder)
    : FEnvironment(environment)
    , FOutput(output)
    , FDataFolder(AbsolutePath(dataFolder.isEmpty() ? environment.ProgramFolder : dataFolder))
{
}

TCliContext::~TCliContext() = default;

TBackups& TCliContext::Backups()
{
    if (!FBackups)
        FBackups = std::make_unique<TBackups>(
            WithTrailingDelimiter(FDataFolder) + QString::fromLatin1(BackupFolderName), DatabasePath(),
            FEnvironment.BusyTimeout);
    return *FBackups;
}

std::vector<TProject> TCliContext::Projects()
{
    if (!FolderExists(FDataFolder))
        throw TError(TErrorKind::Io, u"open the data folder"_s, FDataFolder, u"the folder does not exist"_s);
    if (!FileExists(DatabasePath()) && !FolderExists(DatabasePath()))
        return {};
    return Store().ReadProjects();
}

TProject TCliContext::FindProject(const QString& name)
{
    if (name.isEmpty()) // probably from a script with a variable that is not set
        throw TError(TErrorKind::Usage, u"Cannot find the project: the ID or path given is empty"_s);
    const auto projects = Projects();
    const auto found = std::find_if(projects.cbegin(), projects.cend(),
        [&name](const TProject& project) { return IsCalled(project, name); });
    if (found == projects.cend())
        throw TError(TErrorKind::Io, u"find the project"_s, name,
            u"%1 has no project of this %2"_s.arg(DatabasePath(), IsID(name) ? u"ID"_s : u"path"_s));
    return *found;
}

TProjectsTable& TCliContext::Table()
{
    if (!FTable) {
        auto table = std::make_unique<TProjectsTable>();
        table->Open(Store());
        FTable = std::move(table);
    }
    return *FTable;
}

QString TCliContext::DatabasePath() const
{
    return WithTrailingDelimiter(FDataFolder) + QString::fromLatin1(ProjectDatabaseName);
}

TProjectStore& TCliContext::Store()
{
    if (!FStore)
        FStore = std::make_unique<TProjectStore>(DatabasePath(), FEnvironment.BusyTimeout);
    return *FStore;
}

} // namespace Corvadine
