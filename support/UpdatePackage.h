#pragma once

#include <QFile>
#include <QHash>
#include <QSet>
#include <QString>

#include <memory>

struct archive;

namespace Corvadine {

// What to do with the files of a package, by their names in it. Every name passed CheckedTarget().
struct TPackagePlan {
    struct TWanted {
        QString Path; // of the new file; its folder exists
        qint64 Size = 0;
    };

    QHash<QString, TWanted> Wanted; // exactly these are extracted
    QSet<QString> Known;            // these may be there; Wanted are among them
};

// Takes files out of a CAB or ZIP archive in small steps, so that a window lives meanwhile. The archive is
// not trusted to be what its publisher meant to make: a name that the plan does not know, a name that comes
// twice, anything but a regular file, and more or fewer bytes than planned end the extraction.
class TPackageExtractor {
public:
    // Throws TError: Io if the file cannot be read, BadInput if it is no such archive.
    TPackageExtractor(const QString& path, TPackagePlan plan);
    ~TPackageExtractor();
    Q_DISABLE_COPY_MOVE(TPackageExtractor)

    // Extracts at most about a megabyte more; false once all planned files are complete on disk.
    // Throws TError; files may then be there in part.
    bool Step();

private:
    struct TInput;

    bool NextEntry();
    bool CopyBlock();
    void CompleteEntry();

    TPackagePlan FPlan;
    std::unique_ptr<TInput> FInput;
    ::archive* FArchive;
    QFile FOutput; // open while a wanted file is being extracted
    QString FEntry;
    qint64 FWritten = 0;
    QSet<QString> FSeen;
};

} // namespace Corvadine
