#pragma once

#include <QFile>
#include <QHash>
#include <QSet>
#include <QString>

#include <memory>

struct archive;

namespace Corvadine {

// The files to extract from a package. Files are named as in the package. CheckedTarget() accepts each name.
struct TPackagePlan {
    struct TWanted {
        QString Path;        // the file to write; its folder exists
        qint64 Size = 0;     // bytes
        bool IsExact = true; // if false, the file may be smaller than Size
    };

    QHash<QString, TWanted> Wanted; // the files to extract
    QSet<QString> Known;            // all files that the archive may hold; includes Wanted
};

// Extracts files from a CAB or ZIP archive in small steps, so that the window can react in between. The
// archive is not trusted. The extraction fails if a name is not in the plan or comes twice, or if an entry is
// not a regular file. It also fails if a file is larger or smaller than planned.
class TPackageExtractor {
public:
    // Throws TError(Io) if the file cannot be read. Throws TError(BadInput) if the file is neither a CAB nor
    // a ZIP archive.
    TPackageExtractor(const QString& path, TPackagePlan plan);
    ~TPackageExtractor();
    Q_DISABLE_COPY_MOVE(TPackageExtractor)

    // Extracts the next part, about one megabyte at most. Returns false when the archive has ended and all
    // planned files are complete. Throws TError if the extraction fails. Some files may then exist in part.
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
