#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

#include <memory>
#include <optional>

namespace Corvadine {

// A compiled help file. The constructor reads the whole file into memory. The content is not trusted: sizes
// are limited, and damaged objects count as missing. Names in the file are looked up in the archive, never
// on the disk.
class TChmArchive {
public:
    // Throws TError(Io) if the file cannot be read. Throws TError(BadInput) if the file is not a help file,
    // is damaged or is larger than 64 MiB.
    explicit TChmArchive(const QString& path);
    ~TChmArchive();
    Q_DISABLE_COPY_MOVE(TChmArchive)

    // Returns the content of the object `path`, such as "/page.html". Upper and lower case are alike. Returns
    // nothing if the object is missing, damaged or larger than 16 MiB.
    std::optional<QByteArray> Read(const QString& path) const;

    // Returns the path of the page with the topic number `number`, or an empty path if there is no such page.
    QString TopicPage(quint32 number) const { return FTopics.value(number); }

    // Returns the path of the page to open first, or an empty path if the file does not name such a page.
    const QString& HomePage() const { return FHomePage; }

    // Returns the path of the table of contents (see HelpContents.h), or an empty path if the file does not
    // name it.
    const QString& ContentsFile() const { return FContentsFile; }

    // Returns the title, or an empty text if the file has none.
    const QString& Title() const { return FTitle; }

private:
    class TObjects;

    void ReadSystem();
    void ReadTopics();

    std::unique_ptr<TObjects> FObjects;
    QString FHomePage;
    QString FContentsFile;
    QString FTitle;
    QHash<quint32, QString> FTopics;
};

} // namespace Corvadine
