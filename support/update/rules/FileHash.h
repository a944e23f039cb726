#pragma once

#include <QByteArray>
#include <QString>

namespace Corvadine {

// Returns the SHA-256 (32 bytes) of a file's content. Throws TError(Io) if the file is missing or cannot
// be read.
QByteArray FileSha256(const QString& path);

// Throws TError if the file at `path` is a link, or does not have `size` bytes and this SHA-256. Messages
// call the file `name`.
void VerifyFile(const QString& path, const QString& name, qint64 size, const QByteArray& sha256);

} // namespace Corvadine
