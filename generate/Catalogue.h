#pragma once

#include <QSize>
#include <QString>
#include <QStringView>

#include <vector>

namespace Corvadine {

struct TPlatforms {
    bool Android = false;
    bool IPhone = false;
    bool IPad = false;
    bool Windows = false;

    bool operator==(const TPlatforms&) const = default;
};

enum class TOutputKind {
    Icon,     // a PNG from the icon source
    Launch,   // a PNG from the launch source, or from the icon source if there is no launch source
    AppStore, // a PNG from the icon source; never transparent, unlike other square pictures
    MainIcon, // the Windows icon: ten images of the icon source in one file
};

// One image file that a project needs for a platform.
struct TCatalogueEntry {
    bool TPlatforms::*Platform; // the platform that needs the image
    TOutputKind Kind;
    QStringView ID;     // name of the element in the project file that receives the image's path
    QSize Size;         // pixels; for the Windows icon, the size of its largest image
    int TwoxFactor = 0; // if not 0, the box is this multiple of the "2x" size, and Size is unused
};

// Returns the images that the ticked platforms need, in the order in which they are generated and written
// into the project file. The Windows icon comes last.
std::vector<TCatalogueEntry> CatalogueOf(const TPlatforms& platforms);

// BoxOf() gets this launch size when no launch image is chosen.
inline constexpr QSize NoLaunchSize { 1, 1 };

// Returns the size in pixels of the box that the entry's source is fitted into. `twoxSize` is the project's
// "2x Width", `launchSize` the pixel size of the launch source. If the entry has a TwoxFactor, its box is
// `twoxSize` wide, and `twoxSize` * launch width / launch height high. Both sides are then multiplied by
// TwoxFactor. So a portrait source gives landscape boxes. Older releases did the same, and the sizes of
// existing projects must not change. No side is below 1.
QSize BoxOf(const TCatalogueEntry& entry, int twoxSize, QSize launchSize);

// One entry of the window's generation list. It stands for one output.
struct TGenRec {
    int Width = 0;  // pixels; 0 for the Windows icon
    int Height = 0; // pixels; 0 for the Windows icon
    QString ID;

    bool operator==(const TGenRec&) const = default;
};

// Returns the window's generation list at the start of a run. The list lacks the Windows icon, which the run
// adds when the icon's file is written. The parameters mean the same as in BoxOf().
std::vector<TGenRec> BuildGenList(const TPlatforms& platforms, int twoxSize, QSize launchSize);

// Returns the name, without folder, of the file that holds the image `id`.
QString ImageFileName(const QString& id);

} // namespace Corvadine
