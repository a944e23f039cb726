#include "generate/Raster.h"

namespace Corvadine {

TRaster::TRaster(QSize size, int channels)
    : Size(size)
    , Channels(channels)
    , Bytes(static_cast<std::size_t>(size.width()) * static_cast<std::size_t>(size.height())
          * static_cast<std::size_t>(channels))
{
}

} // namespace Corvadine
