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
TProjectImages ImagesOf(const TProject& project, const TGenJob& job);

// What makes a job pointless or its outputs blank, one sentence each, found without decoding the sources.
QStringList JobWarnings(const TGenJob& job);

// Those changes that change something, one line each: "line 83  iPad_AppIcon152  old.png -> new.png".
QStringList ChangeLines(const TUpdateResult& update);

// The same as objects with "id", "line", "old" and "new".
QJsonArray ChangesJson(const TUpdateResult& update);

// The number of elements that need no change.
int CountRight(const TUpdateResult& update);

// A line that names the IDs that no element has, after `heading`; no line if there are none.
QStringList MissingLines(const QString& heading, const TUpdateResult& update);

// "1 image", "2 images".
QString Counted(qsizetype count, const QString& noun);

} // namespace Corvadine
