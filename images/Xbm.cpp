#include "images/Xbm.h"

#include "images/FileBytes.h"

#include <QRegularExpression>

namespace Corvadine {

QSize XbmSize(QIODevice& file)
{
    static const QRegularExpression Defines(
        QStringLiteral("^#define[ \\t]+\\S+[ \\t]+(\\d+)\\s+#define[ \\t]+\\S+[ \\t]+(\\d+)"),
        QRegularExpression::MultilineOption);
    constexpr qint64 MostHeaderBytes = qint64 { 64 } * 1024; // comments may stand before the lines
    file.seek(0);
    const auto match = Defines.match(QString::fromLatin1(file.read(MostHeaderBytes)));
    return match.hasMatch() ? QSize(match.captured(1).toInt(), match.captured(2).toInt()) : QSize();
}

bool EndsXbmEarly(QIODevice& file, QSize size)
{
    TFileBytes bytes(file);
    const qint64 needed = (qint64 { size.width() } + 7) / 8 * size.height();
    qint64 numbers = 0;
    for (qint64 at = bytes.Find('{', 0); at < bytes.Size(); ++at) {
        const int byte = bytes.At(at);
        if (byte == '}')
            return numbers < needed;
        if (byte == 'x' || byte == 'X') // as in 0x7F
            ++numbers;
    }
    return true;
}

} // namespace Corvadine
