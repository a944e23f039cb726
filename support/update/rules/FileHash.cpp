#include "support/update/rules/FileHash.h"

#include "base/Error.h"
#include "base/Files.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>

namespace Corvadine {

QByteArray FileSha256(const QString& path)
{
    const QString attempt = u"read"_s;
    QFile file(path);
    OpenForReading(file, attempt);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!hash.addData(&file))
        throw TError(TErrorKind::Io, attempt, path, file.errorString());
    return hash.result();
}

void VerifyFile(const QString& path, const QString& name, qint64 size, const QByteArray& sha256)
{
    const QFileInfo info(path);
    if (info.isSymLink() || info.size() != size || FileSha256(path) != sha256)
        throw TError(
            TErrorKind::BadInput, u"use"_s, name, u"it is not the file that the publisher released"_s);
}

} // namespace Corvadine
