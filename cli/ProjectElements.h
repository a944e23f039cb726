#pragma once

#include "generate/GenJob.h"
#include "project/ProjectUpdater.h"
#include "store/Project.h"

#include <QJsonArray>
#include <QString>
#include <QStringList>

// Functions for the commands that set or print the elements of a project file.
namespace Corvadine {

// Returns the images that `job` generates for `project`, in the form that the functions of ProjectUpdater.h
// take. Throws TError(Io) if the project file is missing.
TProjectImages ImagesOf(const TProject& project, const TGenJob& job);

// Returns the elements that would change or have changed, as objects with "id", "line", "old" and "new".
QJsonArray ChangesJson(const TUpdateResult& update);

// Returns the number of elements that have the right text already.
int CountRight(const TUpdateResult& update);

// Returns lines that tell what an update of `projectFile` would do: the number of elements that would change,
// a line for each of them, and the IDs that no element has.
QStringList DryRunLines(const TUpdateResult& update, const QString& projectFile);

} // namespace Corvadine
