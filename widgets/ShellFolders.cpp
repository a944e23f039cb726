#include "widgets/ShellFolders.h"

#include "base/Literals.h"

#include <QCollator>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QLocale>

#include <algorithm>
#include <vector>

namespace Corvadine {

namespace {

QList<TFolderEntry> ListDrives()
{
    QList<TFolderEntry> drives;
    for (const QFileInfo& drive : QDir::drives())
        drives.append({ drive.filePath(), true });
    return drives;
}

// An entry with its sort key. With thousands of entries, comparing keys is faster than comparing names.
struct TSortedEntry {
    TFolderEntry Entry;
    QCollatorSortKey Key;

    bool operator<(const TSortedEntry& other) const
    {
        return Entry.IsFolder != other.Entry.IsFolder ? Entry.IsFolder : Key < other.Key;
    }
};

// Returns the order of names in the user's language. A system without language settings has the "C" locale,
// which cannot sort numbers by value or ignore case. Such a system uses the order of English.
QCollator PeoplesOrder()
{
    const QLocale locale;
    QCollator collator(locale.language() == QLocale::C ? QLocale(QLocale::English) : locale);
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    return collator;
}

} // namespace

QString RootFolder()
{
    const bool hasDrives = QDir::rootPath() != "/"_L1;
    return hasDrives ? QString() : u"/"_s;
}

std::optional<QString> ParentFolder(const QString& folder)
{
    if (folder == RootFolder())
        return std::nullopt;
    if (QDir(folder).isRoot())
        return RootFolder();
    const QString parent = QFileInfo(folder).path();
    return parent == folder ? std::nullopt : std::optional(parent);
}

QStringList FolderChain(const QString& path)
{
    QStringList chain { path };
    while (const auto parent = ParentFolder(chain.constFirst()))
        chain.prepend(*parent);
    return chain;
}

QString EntryPath(const QString& folder, const QString& name)
{
    return folder.isEmpty() || folder.endsWith(u'/') ? folder + name : folder + u'/' + name;
}

QString FolderLabel(const QString& folder)
{
    if (folder.isEmpty())
        return u"Computer"_s;
    if (!QDir(folder).isRoot())
        return QFileInfo(folder).fileName();
    // A drive ("C:/") loses its delimiter. A server ("//server") has no delimiter at its end.
    return folder.size() > 1 && folder.endsWith(u'/') ? folder.chopped(1) : folder;
}

std::optional<QString> ExistingFolder(const QString& path)
{
    if (path.isEmpty())
        return std::nullopt;
    const QFileInfo info(QDir::fromNativeSeparators(path));
    if (!info.isDir())
        return std::nullopt;
    return QDir::cleanPath(info.absoluteFilePath());
}

QList<TFolderEntry> ListFolder(const QString& folder, const QStringList& masks)
{
    if (folder.isEmpty())
        return ListDrives();

    const QCollator collator = PeoplesOrder();
    std::vector<TSortedEntry> found;
    const QDir::Filters kinds = QDir::AllDirs | QDir::NoDotAndDotDot;
    QDirIterator entries(folder, masks, masks.isEmpty() ? kinds : kinds | QDir::Files);
    while (entries.hasNext()) {
        const QFileInfo info = entries.nextFileInfo();
        found.push_back({ { info.fileName(), info.isDir() }, collator.sortKey(info.fileName()) });
    }
    std::sort(found.begin(), found.end());

    QList<TFolderEntry> list;
    list.reserve(static_cast<qsizetype>(found.size()));
    for (TSortedEntry& entry : found)
        list.append(std::move(entry.Entry));
    return list;
}

bool HasFolders(const QString& folder)
{
    return folder.isEmpty() || QDirIterator(folder, QDir::AllDirs | QDir::NoDotAndDotDot).hasNext();
}

} // namespace Corvadine
