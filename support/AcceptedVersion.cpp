#include "support/AcceptedVersion.h"

#include "base/Error.h"
#include "base/Files.h"
#include "support/UpdateSettings.h"

#include <QFile>
#include <QRegularExpression>

#include <algorithm>
#include <cassert>

namespace Corvadine {

namespace {

constexpr QLatin1String Withdrawn { " withdrawn" };

QString AcceptedPath(const QString& programFolder)
{
    return programFolder + u'/' + TUpdateSettings::AcceptedFileName;
}

QString KnownPath(const QString& programFolder)
{
    return programFolder + u'/' + TUpdateSettings::KnownFileName;
}

QString RecordedText(const QString& path)
{
    constexpr qint64 MostBytes = 64;
    QFile file(path);
    try {
        OpenForReading(file, QStringLiteral("read the record of updates"));
    } catch (const TError&) {
        return {};
    }
    return QString::fromLatin1(file.read(MostBytes)).trimmed();
}

std::optional<TVersion> Accepted(const QString& programFolder)
{
    return ParseVersion(RecordedText(AcceptedPath(programFolder)));
}

} // namespace

QString VersionText(const TVersion& version)
{
    const QString text = QStringLiteral("%1.%2.%3").arg(version[0]).arg(version[1]).arg(version[2]);
    return version[3] == 0 ? text : QStringLiteral("%1.%2").arg(text).arg(version[3]);
}

std::optional<TVersion> ParseVersion(const QString& text)
{
    static const QRegularExpression Form(QStringLiteral("\\A[0-9]{1,5}(\\.[0-9]{1,5}){1,3}\\z"));
    if (!Form.match(text).hasMatch())
        return {};
    TVersion version {};
    auto number = version.begin();
    for (const QStringView digits : QStringView(text).split(u'.'))
        *number++ = digits.toInt();
    return version;
}

TVersion NewestAcceptedVersion(const TUpdateSettings& settings)
{
    const auto installed = ParseVersion(settings.InstalledVersion);
    if (!installed)
        throw TError(TErrorKind::BadInput,
            QStringLiteral("Cannot check for updates: \"%1\" is no version").arg(settings.InstalledVersion));
    return std::max(*installed, Accepted(settings.ProgramFolder).value_or(TVersion {}));
}

void RecordAcceptedVersion(const QString& programFolder, const QString& version)
{
    const auto accepted = ParseVersion(version);
    assert(accepted);
    if (accepted > Accepted(programFolder))
        WriteFileAtomically(AcceptedPath(programFolder), version.toLatin1() + '\n');
}

TKnownRelease NewestKnownRelease(const QString& programFolder)
{
    QString text = RecordedText(KnownPath(programFolder));
    const bool isWithdrawn = text.endsWith(Withdrawn);
    if (isWithdrawn)
        text.chop(Withdrawn.size());
    const auto version = ParseVersion(text);
    return version ? TKnownRelease { *version, isWithdrawn } : TKnownRelease {};
}

void RecordKnownRelease(const QString& programFolder, const TKnownRelease& release)
{
    if (release <= NewestKnownRelease(programFolder))
        return;
    const QString text =
        VersionText(release.Version) + (release.IsWithdrawn ? QString(Withdrawn) : QString());
    WriteFileAtomically(KnownPath(programFolder), text.toLatin1() + '\n');
}

} // namespace Corvadine
