#include "images/RecognisedImage.h"

#include "base/Files.h"
#include "base/PathRules.h"

#include <QStringList>

namespace Corvadine {

bool IsRecognisedImageName(const QString& path)
{
    static const QStringList Extensions { "bmp", "gif", "ico", "jfif", "jpeg", "jpg", "pbm", "pgm", "png",
        "pnm", "ppm", "tif", "tiff", "webp", "xbm" };
    return Extensions.contains(ExtensionOf(path).mid(1), Qt::CaseInsensitive);
}

bool IsRecognisedImageFile(const QString& path)
{
    return IsRecognisedImageName(path) && !FolderExists(path);
}

} // namespace Corvadine
