#include "base/Literals.h"
#include "cli/CliContext.h"
#include "cli/Command.h"
#include "cli/Settings.h"

#include <QJsonArray>

namespace Corvadine {

namespace {

class TListCommand : public TCommand {
public:
    const char* Name() const override { return "list"; }
    const char* Description() const override { return "List the projects"; }

    void Declare(CLI::App&) override { }

    TCommandResult Run(TCliContext& context) override
    {
        QJsonArray projects;
        std::vector<QStringList> rows;
        for (const TProject& project : context.Projects()) {
            projects.append(ProjectJson(project));
            rows.push_back({ QString::number(project.ID), project.ProjectFile });
        }
        return { { { u"projects"_s, projects } }, AlignedRows(rows) };
    }
};

} // namespace

TCommandPtr MakeListCommand()
{
    return std::make_unique<TListCommand>();
}

} // namespace Corvadine
