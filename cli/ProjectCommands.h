#pragma once

#include "cli/Command.h"
#include "store/Project.h"

#include <string>
#include <vector>

// The base classes of commands on projects.
namespace Corvadine {

// A command on one project.
class TProjectCommand : public TCommand {
public:
    void Declare(CLI::App& app) override;
    TCommandResult Run(TCliContext& context) final;

protected:
    virtual TCommandResult RunOn(TCliContext& context, const TProject& project) = 0;

private:
    std::string FProject;
};

// A command on the projects that are named, or on all projects. After a failure the command goes on with the
// next project. Each result is printed as soon as the project is done.
class TProjectsCommand : public TCommand {
public:
    void Declare(CLI::App& app) override;
    void CheckUsage() const override;
    TCommandResult Run(TCliContext& context) final;

protected:
    virtual TCommandResult RunOn(TCliContext& context, const TProject& project) = 0;

private:
    TCommandResult RunOnName(TCliContext& context, const QString& name);
    QStringList Names(TCliContext& context) const;

    std::vector<std::string> FProjects;
    bool FAll = false;
};

} // namespace Corvadine
