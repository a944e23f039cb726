#pragma once

#include "project/ProjectPaths.h"

#include <QSize>
#include <QString>

#include <vector>

namespace Corvadine {

// One output image.
struct TGenRec {
    int Width = 0; // pixels; 0 for the Windows icon, whose ten sizes are its own
    int Height = 0;
    QString ID; // the project-file element that receives the path, and the file's base name

    bool operator==(const TGenRec&) const = default;
};

struct TPlatforms {
    bool Android = false;
    bool IPhone = false;
    bool IPad = false;
    bool Windows = false;

    bool operator==(const TPlatforms&) const = default;
};

// The images that a project needs, in the order in which they are generated and written into the project
// file. `twoxSize` is the project's "2x Width"; `launchSize` the pixel size of the launch source, 1 x 1 if
// there is none. The launch images' height follows from width over height of the source, so a portrait source
// gives landscape boxes: projects generated long ago have images of these sizes, and generated again they
// must keep them. It is never below 1. The Windows icon is not in the list; see MainIconEntry().
std::vector<TGenRec> BuildGenList(const TPlatforms& platforms, int twoxSize, QSize launchSize);

// The entry that follows the list when Windows is ticked.
TGenRec MainIconEntry();

// Whether the entry is rendered from the launch source (if there is one) rather than from the icon source.
bool IsLaunchEntry(const QString& id);

// Whether the entry's image must not be transparent although it is square.
bool IsAppStoreEntry(const QString& id);

} // namespace Corvadine
