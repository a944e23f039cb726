#pragma once

#include "generate/GenJob.h"
#include "project/ProjectUpdater.h"
#include "store/Project.h"

#include <QJsonArray>
#include <QString>
#include <QStringList>

// What several commands need to know or say about the elements of a project file.
namespace Corvadine {

// The images that `job` generates for `project`, as the update of its project file wants them.
// Throws TError(NotFound) if the project file is missing.
TProjectImages ImagesOf(const TProject& project, const TGenJob& job);

// Those changes that change something, one line each: "line 83  iPad_AppIcon152  old.png -> new.png".
QStringList ChangeLines(const TUpdateResult& update);

// The same as objects with "id", "line", "old" and "new".
QJsonArray ChangesJson(const TUpdateResult& update);

// The number of elements that need no change.
int CountRight(const TUpdateResult& update);

// A heading and a line for each ID that no element has; nothing if there are none.
QStringList MissingLines(const TUpdateResult& update);

// `texts` as they stand below a heading.
QStringList Indented(const QStringList& texts);

// "1 image", "2 images".
QString Counted(qsizetype count, const QString& noun);

} // namespace Corvadine
