#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

#include <memory>
#include <optional>

namespace Corvadine {

// A compiled help file, read whole into memory. Whatever it holds is taken as a stranger's: sizes are
// limited, names are looked up and never followed out of the file, and what is damaged is as good as missing.
class TChmArchive {
public:
    // Throws TError: NotFound, Io, or BadInput for what is no help file.
    explicit TChmArchive(const QString& path);
    ~TChmArchive();
    Q_DISABLE_COPY_MOVE(TChmArchive)

    // The content of the object named `path`, "/page.html", in upper or lower case; nothing if there is none
    // or it cannot be read.
    std::optional<QByteArray> Read(const QString& path) const;

    // The page with this number, as a path; empty if there is none.
    QString TopicPage(quint32 number) const { return FTopics.value(number); }
    QList<quint32> TopicNumbers() const { return FTopics.keys(); }

    // The paths of the page to open first and of the contents (see HelpContents.h); empty if the file names
    // none.
    const QString& HomePage() const { return FHomePage; }
    const QString& ContentsFile() const { return FContentsFile; }
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
