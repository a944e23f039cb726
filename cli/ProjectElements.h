#pragma once

#include "generate/GenJob.h"
#include "project/ProjectUpdater.h"
#include "store/Project.h"

#include <QJsonArray>
#include <QString>
#include <QStringList>

// What several commands do and print with the elements of a project file.
namespace Corvadine {

// The images that `job` generates for `project`, for the functions of ProjectUpdater.h.
// Throws TError(Io) if the project file is missing.
TProjectImages ImagesOf(const TProject& project, const TGenJob& job);

// The elements that would change or have changed, as objects with "id", "line", "old" and "new".
QJsonArray ChangesJson(const TUpdateResult& update);

// The number of elements that are right already.
int CountRight(const TUpdateResult& update);

// What an update of `projectFile` would do: how many elements would change, a line for each of them, and the
// IDs that no element has.
QStringList DryRunLines(const TUpdateResult& update, const QString& projectFile);

} // namespace Corvadine
