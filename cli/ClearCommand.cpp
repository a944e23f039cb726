#include "base/Error.h"
#include "base/Files.h"
#include "cli/CliContext.h"
#include "cli/CliOutput.h"
#include "cli/ProjectCommands.h"
#include "generate/ClearFiles.h"
#include "generate/ClearRule.h"

#include <CLI/CLI.hpp>

namespace Corvadine {

namespace {

class TClearCommand : public TProjectCommand {
public:
    const char* Name() const override { return "clear"; }
    const char* Description() const override { return "Delete all files in the output folder of a project"; }

    void Declare(CLI::App& app) override
    {
        TProjectCommand::Declare(app);
        app.add_flag("--yes", FYes,
            "Really delete them; without it, the command only tells how\n"
            "many files there are and how many Corvadine did not make");
    }

protected:
    TCommandResult RunOn(TCliContext& context, const TProject& project) override
    {
        const QString folder = project.OutputFolder;
        if (FolderExists(folder))
            RefuseToClear(project, context.OwnFolders());
        if (!FYes)
            throw TError(TErrorKind::Usage, u"clear"_s, folder,
                u"this would delete %1 in it, %2 of them not made by Corvadine, which needs --yes"_s
                    .arg(Counted(FilesByMask(folder, AllFilesMask).size(), u"file"_s))
                    .arg(ForeignFiles(folder).size()));
        TCommandResult result;
        int count = 0;
        if (FolderExists(folder)) {
            count = DeleteFilesByMask(folder, AllFilesMask);
            result.Lines.append(u"%1 Images Deleted"_s.arg(count));
        }
        result.Json = { { u"folder"_s, folder }, { u"deleted"_s, count } };
        return result;
    }

private:
    bool FYes = false;
};

} // namespace

TCommandPtr MakeClearCommand()
{
    return std::make_unique<TClearCommand>();
}

} // namespace Corvadine
