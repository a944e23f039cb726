#pragma once

#include "generate/Catalogue.h"
#include "generate/pixels/RenderOptions.h"

#include <QString>
#include <QStringList>

namespace Corvadine {

struct TProject;

// The settings of one run. They are copied, so changes to the project during the run have no effect.
struct TGenJob {
    TPlatforms Platforms;
    int TwoxSize = 400; // "2x Width", pixels
    TRenderOptions Options;
    QString OutputFolder;
    QString IconFile;   // full path; if empty, BlankSourceImage() is the icon source
    QString LaunchFile; // full path; if empty, launch images are rendered from the icon source
};

// The platforms that `project` ticks.
TPlatforms PlatformsOf(const TProject& project);

// Returns the job that `project` asks for. An unknown output format means true color. Throws
// TError(BadInput), naming the project file, for an option that has no value and for an unknown filter.
TGenJob JobOf(const TProject& project);

// Returns one sentence for each setting that makes `job` pointless or its outputs blank. Does not read
// the sources.
QStringList JobWarnings(const TGenJob& job);

} // namespace Corvadine
