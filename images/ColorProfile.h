#pragma once

#include <QByteArray>
#include <QImage>

#include <memory>

class QIODevice;

namespace Corvadine {

struct TCloseProfile {
    void operator()(void* profile) const;
};

// A profile of Little CMS 2; null stands for sRGB.
using TColorProfile = std::unique_ptr<void, TCloseProfile>;

// Returns the profile of `image`, which Qt has decoded from `file`. For a PNG without an ICC profile, builds
// one from its chunks gAMA and cHRM. A profile that cannot be read counts as none. Moves the position of
// `file`.
TColorProfile ProfileOf(const QImage& image, QIODevice& file);

// Converts `image` from `profile` to sRGB, with perceptual intent and black-point compensation. Keeps the
// depth of `image`, and removes its color space. The pixels stay as they are in three cases: the profile is
// null, the profile is for other channels than the image has, or the profile differs from sRGB only by
// rounding. REQUIRES: the image is null or has Format_ARGB32, Format_RGB32, Format_RGBA64 or Format_RGBX64.
void ConvertToSrgb(QImage& image, const TColorProfile& profile);

// Converts inks to sRGB, as ConvertToSrgb() does. A pixel of `inks` is four bytes for cyan, magenta, yellow
// and black, 255 without ink. Returns Format_RGB32, or a null image if `icc` is no profile of such inks.
QImage InksToSrgb(QImage inks, const QByteArray& icc);

} // namespace Corvadine
