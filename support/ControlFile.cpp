#include "support/ControlFile.h"

#include "base/Error.h"
#include "support/FileHash.h"
#include "support/IniText.h"
#include "support/UpdateNames.h"

#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <optional>

namespace Corvadine {

namespace {

constexpr qsizetype MostDescriptionCharacters = 500;
constexpr qint64 MostPackages = 50;

TError Senseless(const QString& reason)
{
    return { TErrorKind::BadInput, QStringLiteral("Cannot use the update server's answer: %1").arg(reason) };
}

// One section's values, each of a type; what is missing or of another type throws.
class TSectionReader {
public:
    TSectionReader(const TIniText& text, QString section) : FText(text), FSection(std::move(section)) { }

    QString Text(const char* key) const
    {
        const auto value = FText.Value(FSection, QString::fromLatin1(key));
        if (!value || value->isEmpty())
            throw Bad(key);
        return *value;
    }

    QString Text(const char* key, const QString& missing) const
    {
        return FText.Value(FSection, QString::fromLatin1(key)).value_or(missing);
    }

    qint64 Number(const char* key, qint64 least, qint64 most) const
    {
        constexpr qsizetype MostDigits = 18; // fits the type whatever the digits are
        const QString text = Text(key);
        const bool isNumber = text.size() <= MostDigits
            && std::all_of(text.begin(), text.end(), [](QChar c) { return c >= u'0' && c <= u'9'; });
        const qint64 value = isNumber ? text.toLongLong() : -1;
        if (!isNumber || value < least || value > most)
            throw Bad(key);
        return value;
    }

    bool Flag(const char* key) const { return Number(key, 0, 1) == 1; }
    bool Flag(const char* key, bool missing) const { return Has(key) ? Flag(key) : missing; }
    bool Has(const char* key) const { return FText.Value(FSection, QString::fromLatin1(key)).has_value(); }

    QString Version(const char* key) const
    {
        QString text = Text(key);
        if (!ParseVersion(text))
            throw Bad(key);
        return text;
    }

    QByteArray Sha256(const char* key) const
    {
        constexpr qsizetype HashBytes = 32;
        const QByteArray text = Text(key).toLatin1().toLower();
        QByteArray hash = QByteArray::fromHex(text);
        if (hash.size() != HashBytes || hash.toHex() != text) // fromHex() passes over what is no digit
            throw Bad(key);
        return hash;
    }

    QDate Date(const char* key) const
    {
        const QDate date = QDate::fromString(Text(key), TUpdateSettings::QtDateFormat());
        if (!date.isValid())
            throw Bad(key);
        return date;
    }

    QDateTime DateAndTime() const
    {
        const QTime time = QTime::fromString(Text("time"), TUpdateSettings::QtTimeFormat());
        if (!time.isValid())
            throw Bad("time");
        return { Date("date"), time, Qt::UTC };
    }

    TError Bad(const char* key) const
    {
        return Senseless(
            QStringLiteral("\"%1\" in [%2] is missing or makes no sense").arg(QLatin1String(key), FSection));
    }

private:
    const TIniText& FText;
    QString FSection;
};

TControlPackage ReadPackage(const TSectionReader& section, const TUpdateLimits& limits)
{
    TControlPackage package;
    package.Name = CheckedTarget(section.Text("file"));
    if (package.Name.contains(u'/'))
        throw section.Bad("file");
    package.Compressed = section.Flag("compressed");
    package.Size = section.Number("newsize", 1, limits.Package);
    package.Sha256 = section.Sha256("newchecksum");
    return package;
}

TComparison ReadComparison(const TSectionReader& section)
{
    const QString text = section.Text("compare").toLower();
    if (text == u"version")
        return TComparison::Version;
    if (text == u"date")
        return TComparison::Date;
    if (text == u"checksum")
        return TComparison::Checksum;
    throw section.Bad("compare");
}

TControlEntry ReadEntry(
    const TSectionReader& section, const TControlFile& control, const TUpdateLimits& limits)
{
    TControlEntry entry;
    const QString folder = section.Text("targetdir", {});
    entry.Target = CheckedTarget((folder.isEmpty() ? folder : folder + u'/') + section.Text("file"));
    entry.Platform = section.Text("platform", {});
    entry.Comparison = ReadComparison(section);
    entry.Version = section.Version("newversion");
    if (ParseVersion(entry.Version) > ParseVersion(control.Version))
        throw section.Bad("newversion"); // accepting the release would not cover the file
    entry.Date = section.DateAndTime();
    entry.Size = section.Number("newsize", 0, limits.Installed);
    entry.Sha256 = section.Sha256("newchecksum");
    entry.Description = section.Text("descr", {});
    if (entry.Description.size() > MostDescriptionCharacters)
        throw section.Bad("descr");
    entry.Mandatory = section.Flag("mandatory");
    entry.Executable = section.Flag("executable", false);
    const auto packageCount = static_cast<qint64>(control.Packages.size());
    entry.Package = static_cast<std::size_t>(section.Number("package", 1, packageCount) - 1);
    const TControlPackage& package = control.Packages[entry.Package];
    if (!package.Compressed && (package.Size != entry.Size || package.Sha256 != entry.Sha256))
        throw section.Bad("package");
    return entry;
}

bool SharePlatform(const TControlEntry& one, const TControlEntry& other)
{
    return one.Platform.isEmpty() || other.Platform.isEmpty() || one.Platform == other.Platform;
}

// Whether both cannot stand in one folder tree, also where upper and lower case are the same.
bool Collide(const QString& one, const QString& other)
{
    return one.compare(other, Qt::CaseInsensitive) == 0 || one.startsWith(other + u'/', Qt::CaseInsensitive)
        || other.startsWith(one + u'/', Qt::CaseInsensitive);
}

void CheckTogether(const TControlFile& control, const TUpdateLimits& limits)
{
    QSet<QString> packageNames;
    for (const TControlPackage& package : control.Packages) {
        const QString name = package.Name.toLower();
        if (packageNames.contains(name))
            throw Senseless(QStringLiteral("two packages are called %1").arg(package.Name));
        packageNames.insert(name);
    }
    qint64 total = 0;
    for (auto entry = control.Files.begin(); entry != control.Files.end(); ++entry) {
        total += entry->Size;
        for (auto other = control.Files.begin(); other != entry; ++other)
            if ((SharePlatform(*entry, *other) || entry->Package == other->Package)
                && Collide(entry->Target, other->Target))
                throw Senseless(
                    QStringLiteral("%1 and %2 cannot both be installed").arg(entry->Target, other->Target));
    }
    for (std::size_t i = 0; i < control.Packages.size(); ++i) {
        const auto files = std::count_if(control.Files.begin(), control.Files.end(),
            [i](const TControlEntry& entry) { return entry.Package == i; });
        if (!control.Packages[i].Compressed && files != 1)
            throw Senseless(QStringLiteral("%1 is not one file").arg(control.Packages[i].Name));
    }
    if (total > limits.Installed)
        throw Senseless(QStringLiteral("its files are too large"));
}

} // namespace

TControlFile ParseControlFile(const QByteArray& bytes, const TUpdateLimits& limits)
{
    const TIniText text(bytes, QStringLiteral("the update server's answer"));
    const TSectionReader update(text, QStringLiteral("update"));
    if (update.Text("signature") != TUpdateSettings::Signature)
        throw update.Bad("signature");
    const TSectionReader application(text, QStringLiteral("application"));
    if (application.Text("appname") != TUpdateSettings::ApplicationName)
        throw application.Bad("appname");

    TControlFile control;
    control.ValidUntil = update.Date("validuntil");
    control.Offered = application.Flag("appupdate");
    control.Version = application.Version("newversion");
    control.Date = application.DateAndTime();
    if (application.Has("localversion"))
        control.OldestProgram = *ParseVersion(application.Version("localversion"));

    const qint64 packageCount =
        TSectionReader(text, QStringLiteral("packages")).Number("count", 1, MostPackages);
    for (qint64 i = 1; i <= packageCount; ++i)
        control.Packages.push_back(
            ReadPackage(TSectionReader(text, QStringLiteral("package%1").arg(i)), limits));
    const qint64 fileCount = TSectionReader(text, QStringLiteral("files")).Number("count", 1, limits.Files);
    for (qint64 i = 1; i <= fileCount; ++i)
        control.Files.push_back(
            ReadEntry(TSectionReader(text, QStringLiteral("file%1").arg(i)), control, limits));
    CheckTogether(control, limits);
    return control;
}

TKnownRelease KnownReleaseOf(const TControlFile& control)
{
    return { ParseVersion(control.Version).value(), !control.Offered };
}

bool IsOffered(const TControlFile& control, const TUpdateSettings& settings)
{
    if (QDateTime::currentDateTimeUtc().date() > control.ValidUntil)
        throw TError(TErrorKind::BadInput,
            QStringLiteral("The update server's answer was valid until %1 only, and was not used")
                .arg(control.ValidUntil.toString(TUpdateSettings::QtDateFormat())));
    const TKnownRelease offered = KnownReleaseOf(control);
    const TKnownRelease known = NewestKnownRelease(settings.ProgramFolder);
    const TVersion newest = std::max(NewestAcceptedVersion(settings), known.Version);
    if (offered.Version < newest)
        throw TError(TErrorKind::BadInput,
            QStringLiteral(
                "The update server offers version %1, which is older than version %2, the newest one known "
                "here; it was not used")
                .arg(VersionText(offered.Version), VersionText(newest)));
    if (offered < known)
        throw TError(TErrorKind::BadInput,
            QStringLiteral("The update server offers version %1, which its publisher has withdrawn; it was "
                           "not used")
                .arg(control.Version));
    if (!control.Offered)
        return false;
    if (ParseVersion(settings.InstalledVersion) < control.OldestProgram)
        throw TError(TErrorKind::BadInput,
            QStringLiteral(
                "Version %1 is available, but this copy of Corvadine is too old to be updated; please "
                "install it anew")
                .arg(control.Version));
    return true;
}

bool IsForPlatform(const TControlEntry& entry, const TUpdateSettings& settings)
{
    return entry.Platform.isEmpty() || entry.Platform == settings.Platform;
}

bool IsNewer(const TControlEntry& entry, const TUpdateSettings& settings)
{
    if (!IsForPlatform(entry, settings))
        return false;
    CheckTargetOnDisk(settings.ProgramFolder, entry.Target);
    const QString path = settings.ProgramFolder + u'/' + entry.Target;
    const QFileInfo info(path);
    if (!info.exists())
        return true;
    switch (entry.Comparison) {
    case TComparison::Version:
        return ParseVersion(entry.Version) > NewestAcceptedVersion(settings);
    case TComparison::Date:
        return info.lastModified() < entry.Date;
    case TComparison::Checksum:
        break;
    }
    return info.size() != entry.Size || FileSha256(path) != entry.Sha256;
}

} // namespace Corvadine
