#include "dialogs/RecognisedImage.h"

#include "base/Files.h"
#include "base/PathRules.h"
#include "images/SourceImage.h"

#include <QSet>

namespace Corvadine {

namespace {

QSet<QString> ImageExtensions()
{
    const QStringList readable = ReadableImageExtensions();
    QSet<QString> extensions(readable.cbegin(), readable.cend());
    for (const char* video : { "avi", "mpe", "mpg", "mpeg", "wmv" })
        extensions.remove(QLatin1String(video));
    return extensions;
}

} // namespace

bool IsRecognisedImageFile(const QString& path)
{
    static const QSet<QString> Extensions = ImageExtensions(); // asking the decoders takes a while
    return Extensions.contains(ExtensionOf(path).mid(1).toLower()) && !FolderExists(path);
}

} // namespace Corvadine
