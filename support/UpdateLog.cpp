#include "support/UpdateLog.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/PathRules.h"
#include "support/UpdateSettings.h"

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
    // Without a locale, whose separators could be others.
    return now.date().toString(TUpdateSettings::QtDateFormat()) + u' '
        + now.time().toString(TUpdateSettings::QtTimeFormat());
}

} // namespace

TUpdateLog::TUpdateLog(const QString& programFolder)
    : FPath(WithTrailingDelimiter(programFolder) + TUpdateSettings::LogFileName)
{
}

void TUpdateLog::Write(const QString& step, const QString& result) const
{
    QFile file(FPath);
    if (file.size() > LargestSize)
        DropOlderHalf();
    if (file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text))
        file.write(QStringLiteral("%1 %2: %3\n").arg(Now(), OnOneLine(step), OnOneLine(result)).toUtf8());
}

void TUpdateLog::DropOlderHalf() const
{
    try {
        const QByteArray lines = ReadFile(FPath, QStringLiteral("read the log"));
        WriteFileAtomically(FPath, lines.mid(lines.indexOf('\n', lines.size() / 2) + 1));
    } catch (const TError&) {
        // It grows on; the next line tries again.
    }
}

} // namespace Corvadine
