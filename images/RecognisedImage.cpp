#include "images/RecognisedImage.h"

#include "base/Files.h"
#include "base/PathRules.h"

#include <QStringList>

namespace Corvadine {

namespace {

bool HasOneOf(const QStringList& extensions, const QString& path)
{
    return extensions.contains(ExtensionOf(path).mid(1), Qt::CaseInsensitive);
}

} // namespace

bool IsRecognisedImageName(const QString& path)
{
    static const QStringList Extensions { "bmp", "gif", "ico", "jfif", "jpeg", "jpg", "pbm", "pgm", "png",
        "pnm", "ppm", "tif", "tiff", "webp", "xbm" };
    return HasOneOf(Extensions, path);
}

bool IsUnreadImageName(const QString& path)
{
    static const QStringList Extensions { "ai", "avif", "heic", "heif", "icns", "j2k", "jng", "jp2", "jxl",
        "mng", "pdf", "psd", "svg", "svgz", "tga", "xpm" };
    return HasOneOf(Extensions, path);
}

bool IsRecognisedImageFile(const QString& path)
{
    return IsRecognisedImageName(path) && !FolderExists(path);
}

} // namespace Corvadine
