#include "dialogs/CommandIcons.h"

#include <QApplication>
#include <QFile>
#include <QHash>
#include <QStyle>

namespace Corvadine {

QIcon CommandIcon(const QString& name)
{
    const QString drawing = QStringLiteral(":/icons/%1.png").arg(name); // "@2x" variants are found by QIcon
    if (QFile::exists(drawing))
        return QIcon(drawing);

    static const QHash<QString, QStyle::StandardPixmap> StandIns {
        { QStringLiteral("add-project"), QStyle::SP_FileDialogNewFolder },
        { QStringLiteral("delete-all"), QStyle::SP_DialogCancelButton },
        { QStringLiteral("add-image"), QStyle::SP_DialogOkButton },
        { QStringLiteral("up"), QStyle::SP_FileDialogToParent },
    };
    const auto standIn = StandIns.constFind(name);
    return standIn == StandIns.cend() ? QIcon() : QApplication::style()->standardIcon(*standIn);
}

} // namespace Corvadine
