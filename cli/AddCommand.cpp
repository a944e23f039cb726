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
            throw TError(TErrorKind::Usage,
                QStringLiteral("'%1' is no .dproj file").arg(QString::fromStdString(FFile)));
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
        return { { { QStringLiteral("project"), ProjectJson(project) } }, { QString::number(project.ID) } };
    }

private:
    static void CheckFile(const QString& file)
    {
        const QString attempt = QStringLiteral("add the project");
        if (FolderExists(file))
            throw TError(TErrorKind::BadInput, attempt, file, QStringLiteral("it is a folder"));
        if (!FileExists(file))
            throw TError(TErrorKind::NotFound, attempt, file, QStringLiteral("the file does not exist"));
    }

    // The database holds to this too, but says it in its own words and tells capitals from small letters.
    static void CheckIsNew(TCliContext& context, const QString& file)
    {
        for (const TProject& project : context.Projects())
            if (IsSameFileName(project.ProjectFile, file))
                throw TError(TErrorKind::BadInput, QStringLiteral("add the project"), file,
                    QStringLiteral("it has been added before, with the ID %1").arg(project.ID));
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
