#include "base/Error.h"
#include "fuzz/Fuzzing.h"
#include "images/SourceImage.h"

#include <algorithm>
#include <array>

using namespace Corvadine;

// Pictures: a file is either refused with a text, or gives a picture. The picture has one of four formats
// and the size that the header tells. The thumbnail fits its box.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString file = Fuzzing::FileWith(u"picture"_s, Fuzzing::BytesOf(data, size));
    try {
        const TImageHeader header = ReadImageHeader(file);
        constexpr qint64 MostMebibytes = 16; // larger pictures only cost time
        if (header.DecodedMebibytes > MostMebibytes)
            return 0;
        const QImage image = LoadSourceImage(file);
        Fuzzing::Require(image.size() == header.Size);
        constexpr std::array Formats { QImage::Format_ARGB32, QImage::Format_RGB32, QImage::Format_RGBA64,
            QImage::Format_RGBX64 };
        Fuzzing::Require(std::find(Formats.begin(), Formats.end(), image.format()) != Formats.end());
        constexpr QSize Box(24, 16);
        const TThumbnail thumbnail = LoadThumbnail(file, Box);
        Fuzzing::Require(
            thumbnail.Picture.width() <= Box.width() && thumbnail.Picture.height() <= Box.height());
    } catch (const TError& error) {
        Fuzzing::Require(error.Text().contains(file));
    }
    return 0;
}
