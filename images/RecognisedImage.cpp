#include "images/RecognisedImage.h"

#include "base/Files.h"
#include "base/PathRules.h"

#include <QImageReader>
#include <QStringList>

namespace Corvadine {

namespace {

QStringList ReadableExtensions()
{
    QStringList extensions;
    for (const QByteArray& format : QImageReader::supportedImageFormats())
        extensions.append(QString::fromLatin1(format));
    return extensions;
}

bool IsReadable(const QString& extension)
{
    static const QStringList Extensions = ReadableExtensions(); // asks every plugin
    return Extensions.contains(extension, Qt::CaseInsensitive);
}

bool IsVideo(const QString& extension)
{
    static const QStringList Extensions { "AVI", "MPE", "MPG", "MPEG", "WMV" };
    return Extensions.contains(extension, Qt::CaseInsensitive);
}

} // namespace

bool IsRecognisedImageName(const QString& path)
{
    const QString extension = ExtensionOf(path).mid(1);
    return IsReadable(extension) && !IsVideo(extension);
}

bool IsRecognisedImageFile(const QString& path)
{
    return IsRecognisedImageName(path) && !FolderExists(path);
}

} // namespace Corvadine
