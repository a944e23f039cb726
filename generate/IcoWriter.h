#pragma once

#include "generate/Raster.h"

#include <QByteArray>

#include <vector>

namespace Corvadine {

// A Windows icon file with `images` (4 channels) in the given order
// (https://learn.microsoft.com/en-us/previous-versions/ms997538(v=msdn.10)).
// Images with both sides below 256 are 32-bit bitmaps with an AND mask, which old programs need; larger ones
// are PNG (https://devblogs.microsoft.com/oldnewthing/20101022-00/?p=12473), compressed at `compression` as
// EncodePng takes it. A side of 256 or more is 0 in the directory, where one byte is all there is; readers
// take the true size from the image itself. REQUIRES: at most 65535 images, all of 4 channels.
QByteArray EncodeIco(const std::vector<TRaster>& images, int compression);

} // namespace Corvadine
