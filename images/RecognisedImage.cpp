#include "images/RecognisedImage.h"

#include "base/Files.h"
#include "base/PathRules.h"

#include <QImageReader>
#include <QStringList>

namespace Corvadine {

namespace {

QStringList RecognisedExtensions()
{
    static const QStringList Videos { "avi", "mpe", "mpg", "mpeg", "wmv" };
    QStringList extensions;
    for (const QByteArray& format : QImageReader::supportedImageFormats())
        if (!Videos.contains(QString::fromLatin1(format), Qt::CaseInsensitive))
            extensions.append(QString::fromLatin1(format));
    return extensions;
}

} // namespace

bool IsRecognisedImageName(const QString& path)
{
    static const QStringList Extensions = RecognisedExtensions(); // once: asking every plugin is slow
    return Extensions.contains(ExtensionOf(path).mid(1), Qt::CaseInsensitive);
}

bool IsRecognisedImageFile(const QString& path)
{
    return IsRecognisedImageName(path) && !FolderExists(path);
}

} // namespace Corvadine
