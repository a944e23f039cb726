#include "tests/Testing.h"

#include <QDirIterator>

namespace Corvadine::Testing {

void PutFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
    ASSERT_EQ(file.write(bytes), bytes.size());
}

QByteArray FileBytes(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

void SetFileTime(const QString& path, const QDateTime& time)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.setFileTime(time, QFile::FileModificationTime));
}

TFolderContent FolderContent(const QString& folder, const QStringList& except)
{
    TFolderContent content;
    QDirIterator entries(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
        QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QFileInfo info = entries.nextFileInfo();
        const QString name = QDir(folder).relativeFilePath(info.filePath());
        if (info.isSymLink())
            content[name] = "link to " + info.symLinkTarget().toUtf8();
        else if (info.isDir() && QDir(info.filePath()).isEmpty())
            content[name + '/'] = {};
        else if (!info.isDir() && !except.contains(info.fileName()))
            content[name] = FileBytes(info.filePath());
    }
    return content;
}

} // namespace Corvadine::Testing
