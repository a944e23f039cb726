#include "widgets/FileDrop.h"

#include "base/Files.h"

#include <QDropEvent>
#include <QMimeData>
#include <QUrl>

namespace Corvadine {

QString OfferedFile(const QDropEvent& event)
{
    const QList<QUrl> urls = event.mimeData()->urls();
    if (urls.size() != 1 || !urls.first().isLocalFile() || !event.possibleActions().testFlag(Qt::CopyAction))
        return {};
    const QString file = AbsolutePath(urls.first().toLocalFile());
    return FileExists(file) ? file : QString();
}

void AcceptCopy(QDropEvent& event)
{
    event.setDropAction(Qt::CopyAction);
    event.accept();
}

} // namespace Corvadine
