#include "images/StoredIcon.h"

#include <QByteArray>
#include <QIODevice>
#include <QtEndian>

namespace Corvadine {

QSize StoredIconSize(QIODevice& file, int index)
{
    constexpr qint64 HeaderBytes = 6;
    constexpr qint64 EntryBytes = 16;     // ICONDIRENTRY
    constexpr qint64 OffsetAt = 12;       // dwImageOffset
    constexpr qsizetype NeededBytes = 24; // up to the size in a PNG
    file.seek(HeaderBytes + EntryBytes * index + OffsetAt);
    const QByteArray offset = file.read(4);
    if (offset.size() < 4 || !file.seek(qFromLittleEndian<quint32>(offset.data())))
        return {};
    const QByteArray image = file.read(NeededBytes);
    if (image.size() < NeededBytes)
        return {};
    if (image.startsWith("\x89PNG"))
        return { qFromBigEndian<qint32>(image.data() + 16), qFromBigEndian<qint32>(image.data() + 20) };
    // The height of a bitmap counts its mask, too.
    return { qFromLittleEndian<qint32>(image.data() + 4), qFromLittleEndian<qint32>(image.data() + 8) / 2 };
}

} // namespace Corvadine
