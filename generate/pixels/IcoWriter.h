#pragma once

#include "generate/pixels/Raster.h"

#include <QByteArray>

#include <span>

namespace Corvadine {

// Returns a Windows icon file with `images` (4 channels) in the given order
// (https://learn.microsoft.com/en-us/previous-versions/ms997538(v=msdn.10)).
// Images with both sides below 256 are stored as 32-bit bitmaps with the AND mask that old programs need.
// All other images are stored as PNG (https://devblogs.microsoft.com/oldnewthing/20101022-00/?p=12473) with
// the `compression` of EncodePng(). The directory has one byte for each side and stores a side of 256 or
// more as 0. Readers take the true size from the image itself. Throws as EncodePng() does. REQUIRES: at
// most 65535 images.
QByteArray EncodeIco(std::span<const TRaster> images, int compression);

} // namespace Corvadine
