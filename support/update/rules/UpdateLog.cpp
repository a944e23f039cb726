#include "support/update/rules/UpdateLog.h"

#include "base/Error.h"
#include "base/Files.h"
#include "support/update/rules/UpdateSettings.h"

#include <QDateTime>
#include <QFile>

namespace Corvadine {

namespace {

constexpr qsizetype LongestText = 1000;

QString OnOneLine(QString text)
{
    text.truncate(LongestText);
    for (QChar& character : text)
        if (!character.isPrint())
            character = u' ';
    return text.trimmed();
}

QString Now()
{
    const QDateTime now = QDateTime::currentDateTime();
    // The functions of QDate and QTime ignore the user's locale, which could have other separators.
    return now.date().toString(TUpdateSettings::QtDateFormat) + u' '
        + now.time().toString(TUpdateSettings::QtTimeFormat);
}

} // namespace

void TUpdateLog::Write(const QString& step, const QString& result) const
{
    QFile file(FPath);
    if (file.size() > LargestSize)
        DropOlderHalf();
    if (file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text))
        file.write(u"%1 %2: %3\n"_s.arg(Now(), OnOneLine(step), OnOneLine(result)).toUtf8());
}

void TUpdateLog::DropOlderHalf() const
{
    try {
        const QByteArray lines = ReadFile(FPath, u"read the log"_s);
        WriteFileAtomically(FPath, lines.mid(lines.indexOf('\n', lines.size() / 2) + 1));
    } catch (const TError&) {
        // The failure is ignored, because the next Write() tries again.
    }
}

} // namespace Corvadine
