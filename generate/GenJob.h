#pragma once

#include "generate/GenSettings.h"

#include <QString>
#include <QStringList>

namespace Corvadine {

struct TProject;

// One project's generation, taken as a whole at the start of a run.
struct TGenJob {
    TGenSettings Settings;
    QString IconFile;   // full path; empty when none is chosen: its outputs are made from BlankSourceImage()
    QString LaunchFile; // full path; empty when none is chosen: its outputs are rendered from the icon source
};

// Which platforms `project` ticks.
TPlatforms PlatformsOf(const TProject& project);

// The project's "2x Width" in pixels. Throws TError(BadInput), naming the project file, if it has no value.
int TwoxSizeOf(const TProject& project);

// The job that `project` asks for. An unknown output format means true colour. Throws TError(BadInput),
// naming the project file, for an option that has no value or names no filter.
TGenJob JobOf(const TProject& project);

// What makes `job` pointless or its outputs blank, one sentence each, found without looking at the sources.
QStringList JobWarnings(const TGenJob& job);

} // namespace Corvadine
