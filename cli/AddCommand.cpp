#include "base/Error.h"
#include "base/Files.h"
#include "base/SystemFiles.h"
#include "cli/CliContext.h"
#include "cli/Command.h"
#include "cli/Options.h"
#include "cli/Settings.h"
#include "project/ProjectPaths.h"
#include "store/ProjectsTable.h"

namespace Corvadine {

namespace {

class TAddCommand : public TCommand {
public:
    const char* Name() const override { return "add"; }
    const char* Description() const override { return "Add a project and print its ID"; }

    void Declare(CLI::App& app) override
    {
        AddRequired(app, "FILE", FFile, "Project file (.dproj)");
        FSettings.Declare(app);
    }

    void CheckUsage() const override
    {
        if (!IsProjectFileName(QString::fromStdString(FFile)))
            throw TError(TErrorKind::Usage, u"'%1' is no .dproj file"_s.arg(QString::fromStdString(FFile)));
    }

    TCommandResult Run(TCliContext& context) override
    {
        const QString file = AbsolutePath(QString::fromStdString(FFile));
        CheckFile(file);
        FSettings.CheckPaths();
        const TNewFolder dataFolder(context.DataFolder());
        CheckIsNew(context, file);
        TProjectsTable& table = context.Table();
        table.Append();
        table.SetField(TField::ProjectFile, file);
        table.SetField(TField::OutputFolder, DeriveOutputFolder(file));
        FSettings.SetFields(table);
        table.Post();

        const TProject project = table.Current();
        return { { { u"project"_s, ProjectJson(project) } }, { QString::number(project.ID) },
            ClearWarnings(project, context.OwnFolders()) };
    }

private:
    static void CheckFile(const QString& file)
    {
        const QString attempt = u"add the project"_s;
        if (FolderExists(file))
            throw TError(TErrorKind::BadInput, attempt, file, u"it is a folder"_s);
        if (!FileExists(file))
            throw TError(TErrorKind::Io, attempt, file, u"the file does not exist"_s);
    }

    // The database refuses duplicates, too, but its error text is technical. Besides, the database takes
    // "A.dproj" and "a.dproj" for two files, even on systems where both names mean one file.
    static void CheckIsNew(TCliContext& context, const QString& file)
    {
        for (const TProject& project : context.Projects())
            if (IsSameFileName(project.ProjectFile, file))
                throw TError(TErrorKind::BadInput, u"add the project"_s, file,
                    u"it has been added before, with the ID %1"_s.arg(project.ID));
    }

    std::string FFile;
    TSettingsOptions FSettings;
};

} // namespace

TCommandPtr MakeAddCommand()
{
    return std::make_unique<TAddCommand>();
}

} // namespace Corvadine
