#pragma once

#include <QByteArray>
#include <QString>

namespace Corvadine {

// SHA-256 (32 bytes) of a file's content. Throws TError: NotFound, or Io when it cannot be read.
QByteArray FileSha256(const QString& path);

// Throws TError unless the file at `path` is a regular file, no link, of this size and SHA-256. `name` is
// what messages call it.
void VerifyFile(const QString& path, const QString& name, qint64 size, const QByteArray& sha256);

} // namespace Corvadine
