#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <vector>

namespace Corvadine {

// One file that a check found to be newer than what is installed, as the user is asked about it.
struct TUpdateItem {
    QString Name; // relative to the program folder, with '/'
    QString Version;
    QDateTime Date;         // UTC
    qint64 Size = 0;        // bytes once installed
    QString Description;    // plain text, never to be taken for markup
    bool Mandatory = false; // the user cannot leave it out
};

// One file of a staged update: complete, of the size and hash that the publisher signed.
struct TStagedUpdateFile {
    QString Target;     // relative to the program folder, with '/'; passed CheckedTarget()
    QString StagedPath; // absolute, inside the staging folder; has its final permissions and date
    qint64 Size = 0;
    QByteArray Sha256; // 32 bytes
};

// A downloaded, verified update that waits in the program folder to be moved into place.
struct TStagedUpdate {
    QString StagingFolder; // absolute
    QString Version;       // of the release
    std::vector<TStagedUpdateFile> Files;
};

} // namespace Corvadine
