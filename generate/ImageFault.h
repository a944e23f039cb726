#pragma once

#include "generate/pixels/Rendering.h"

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <QString>

#include <optional>

namespace Corvadine {

enum class TFaultKind {
    Missing, // there is no file
    Damaged, // the file cannot be decoded completely, or has a form that no run writes
    Stale,   // the file is whole, but made from other sources or settings
};

// A fault of one generated file.
struct TImageFault {
    TFaultKind Kind;
    QString Text; // for example "it has 96 x 96 pixels instead of 48 x 48"
};

// The required form of the PNG file of an output. Members without a value are not checked.
struct TPngForm {
    std::optional<QSize> Size; // pixels
    TOutputFormat Format = TOutputFormat::Colors256;
    std::optional<bool> HasAlpha; // false: no alpha channel, and no transparent pixel either
    QImage Pixels;                // Format_ARGB32
};

// Returns `rendered` as Format_ARGB32.
QImage ToImage(const TRendered& rendered);

// Returns what is wrong with the PNG file at `path`, or nothing. The file is decoded once. Its compression
// does not matter. REQUIRES: the file exists.
std::optional<TImageFault> PngFault(const QString& path, const TPngForm& form);

// The required form of the Windows icon. Members without a value are not checked.
struct TIconForm {
    std::optional<QSize> Source; // size of the icon source in pixels, which decides the sizes of the images
    QByteArray File;             // what a run writes
};

// Returns what is wrong with the Windows icon at `path`, or nothing. An icon must hold ten images. REQUIRES:
// the file exists.
std::optional<TImageFault> IconFault(const QString& path, const TIconForm& form);

} // namespace Corvadine
