#pragma once

#include <QByteArray>
#include <QString>

namespace Corvadine {

// SHA-256 (32 bytes) of a file's content. Throws TError(Io) when the file is missing or cannot be read.
QByteArray FileSha256(const QString& path);

// Throws TError unless the file at `path` is no link and has `size` bytes and this SHA-256. Messages call the
// file `name`.
void VerifyFile(const QString& path, const QString& name, qint64 size, const QByteArray& sha256);

} // namespace Corvadine
