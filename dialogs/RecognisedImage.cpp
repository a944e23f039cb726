#include "dialogs/RecognisedImage.h"

#include "base/Files.h"
#include "base/PathRules.h"
#include "images/SourceImage.h"

#include <QStringList>

namespace Corvadine {

namespace {

bool IsVideo(const QString& path)
{
    static const QStringList Extensions { "AVI", "MPE", "MPG", "MPEG", "WMV" };
    return Extensions.contains(ExtensionOf(path).mid(1), Qt::CaseInsensitive);
}

} // namespace

bool IsRecognisedImageFile(const QString& path)
{
    return HasReadableExtension(path) && !IsVideo(path) && !FolderExists(path);
}

} // namespace Corvadine
