#include "support/update/rules/ControlFile.h"

#include "base/Error.h"
#include "support/update/rules/FileHash.h"
#include "support/update/rules/IniText.h"
#include "support/update/rules/UpdateNames.h"
#include "support/update/rules/UpdateSignature.h"

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
    return { TErrorKind::BadInput, u"Cannot use the update server's answer: %1"_s.arg(reason) };
}

// Reads the values of one section. Throws TError if a value is missing or has another type.
class TSectionReader {
public:
    TSectionReader(const TIniText& text, QString section) : FText(text), FSection(std::move(section)) { }

    bool Has(QLatin1String key) const { return FText.Value(FSection, key).has_value(); }

    QString Text(QLatin1String key, const QString& missing) const
    {
        return FText.Value(FSection, key).value_or(missing);
    }

    QString Text(QLatin1String key) const
    {
        QString text = Text(key, {});
        Require(!text.isEmpty(), key);
        return text;
    }

    qint64 Number(QLatin1String key, qint64 least, qint64 most) const
    {
        constexpr qsizetype MostDigits = 18; // every number of 18 digits fits qint64
        const QString text = Text(key);
        Require(text.size() <= MostDigits
                && std::all_of(text.begin(), text.end(), [](QChar c) { return c >= u'0' && c <= u'9'; }),
            key);
        const qint64 value = text.toLongLong();
        Require(value >= least && value <= most, key);
        return value;
    }

    bool Flag(QLatin1String key) const { return Number(key, 0, 1) == 1; }

    QString Version(QLatin1String key) const
    {
        QString text = Text(key);
        Require(ParseVersion(text).has_value(), key);
        return text;
    }

    QByteArray Sha256(QLatin1String key) const
    {
        constexpr qsizetype HashBytes = 32;
        const QByteArray text = Text(key).toLatin1().toLower();
        QByteArray hash = QByteArray::fromHex(text);
        Require(hash.size() == HashBytes && hash.toHex() == text, key); // fromHex() skips other characters
        return hash;
    }

    QDate Date(QLatin1String key) const
    {
        const QDate date = QDate::fromString(Text(key), TUpdateSettings::QtDateFormat);
        Require(date.isValid(), key);
        return date;
    }

    QDateTime DateAndTime() const
    {
        const QTime time = QTime::fromString(Text("time"_L1), TUpdateSettings::QtTimeFormat);
        Require(time.isValid(), "time"_L1);
        return { Date("date"_L1), time, Qt::UTC };
    }

    void Require(bool condition, QLatin1String key) const
    {
        if (!condition)
            throw Senseless(u"\"%1\" in [%2] is missing or makes no sense"_s.arg(key, FSection));
    }

private:
    const TIniText& FText;
    QString FSection;
};

TControlPackage ReadPackage(const TSectionReader& section, const TUpdateLimits& limits)
{
    TControlPackage package;
    package.Name = CheckedTarget(section.Text("file"_L1));
    section.Require(!package.Name.contains(u'/'), "file"_L1);
    package.Compressed = section.Flag("compressed"_L1);
    package.Size = section.Number("newsize"_L1, 1, limits.Package);
    package.Sha256 = section.Sha256("newchecksum"_L1);
    return package;
}

TComparison ReadComparison(const TSectionReader& section)
{
    const QString text = section.Text("compare"_L1).toLower();
    if (text == u"version")
        return TComparison::Version;
    if (text == u"date")
        return TComparison::Date;
    section.Require(text == u"checksum", "compare"_L1);
    return TComparison::Checksum;
}

TUpdateFile ReadFileSection(
    const TSectionReader& section, const TControlFile& control, const TUpdateLimits& limits)
{
    TUpdateFile file;
    const QString folder = section.Text("targetdir"_L1, {});
    file.Target = CheckedTarget((folder.isEmpty() ? folder : folder + u'/') + section.Text("file"_L1));
    file.Platform = section.Text("platform"_L1, {});
    file.Comparison = ReadComparison(section);
    file.Version = section.Version("newversion"_L1);
    // If a file were newer than the release, the file would still be offered after the release was installed.
    section.Require(ParseVersion(file.Version) <= ParseVersion(control.Version), "newversion"_L1);
    file.Date = section.DateAndTime();
    file.Size = section.Number("newsize"_L1, 0, limits.Installed);
    file.Sha256 = section.Sha256("newchecksum"_L1);
    file.Description = section.Text("descr"_L1, {});
    section.Require(file.Description.size() <= MostDescriptionCharacters, "descr"_L1);
    file.Mandatory = section.Flag("mandatory"_L1);
    file.Executable = section.Has("executable"_L1) && section.Flag("executable"_L1);
    const auto packageCount = static_cast<qint64>(control.Packages.size());
    file.Package = static_cast<std::size_t>(section.Number("package"_L1, 1, packageCount) - 1);
    const TControlPackage& package = control.Packages[file.Package];
    section.Require(
        package.Compressed || (package.Size == file.Size && package.Sha256 == file.Sha256), "package"_L1);
    return file;
}

bool SharePlatform(const TUpdateFile& one, const TUpdateFile& other)
{
    return one.Platform.isEmpty() || other.Platform.isEmpty() || one.Platform == other.Platform;
}

// Returns whether two names cannot exist together on a system that ignores upper and lower case. The names
// collide if they are equal, or if the file of one name lies in a folder of the other name.
bool Collide(const QString& one, const QString& other)
{
    return one.compare(other, Qt::CaseInsensitive) == 0 || one.startsWith(other + u'/', Qt::CaseInsensitive)
        || other.startsWith(one + u'/', Qt::CaseInsensitive);
}

void CheckTogether(const TControlFile& control, const TUpdateLimits& limits)
{
    QSet<QString> packageNames;
    for (std::size_t i = 0; i < control.Packages.size(); ++i) {
        const TControlPackage& package = control.Packages[i];
        const QString name = package.Name.toLower();
        if (packageNames.contains(name))
            throw Senseless(u"two packages are called %1"_s.arg(package.Name));
        packageNames.insert(name);
        const auto files = std::count_if(control.Files.begin(), control.Files.end(),
            [i](const TUpdateFile& file) { return file.Package == i; });
        if (!package.Compressed && files != 1)
            throw Senseless(u"%1 is not one file"_s.arg(package.Name));
    }
    qint64 total = 0;
    for (auto file = control.Files.begin(); file != control.Files.end(); ++file) {
        total += file->Size;
        for (auto other = control.Files.begin(); other != file; ++other)
            if ((SharePlatform(*file, *other) || file->Package == other->Package)
                && Collide(file->Target, other->Target))
                throw Senseless(u"%1 and %2 cannot both be installed"_s.arg(file->Target, other->Target));
    }
    if (total > limits.Installed)
        throw Senseless(u"its files are too large"_s);
}

} // namespace

TControlFile ReadControlFile(const QByteArray& bytes, const QByteArray& signature,
    const QByteArray& publicKey, const TUpdateLimits& limits)
{
    VerifySignature(bytes, signature, publicKey);
    const TIniText text(bytes, u"the update server's answer"_s);
    const TSectionReader update(text, u"update"_s);
    update.Require(update.Text("signature"_L1) == TUpdateSettings::Signature, "signature"_L1);
    const TSectionReader application(text, u"application"_s);
    application.Require(application.Text("appname"_L1) == TUpdateSettings::ApplicationName, "appname"_L1);

    TControlFile control;
    control.ValidUntil = update.Date("validuntil"_L1);
    control.Offered = application.Flag("appupdate"_L1);
    control.Version = application.Version("newversion"_L1);
    control.Date = application.DateAndTime();
    if (application.Has("localversion"_L1))
        control.OldestProgram = *ParseVersion(application.Version("localversion"_L1));

    const qint64 packageCount = TSectionReader(text, u"packages"_s).Number("count"_L1, 1, MostPackages);
    for (qint64 i = 1; i <= packageCount; ++i)
        control.Packages.push_back(ReadPackage(TSectionReader(text, u"package%1"_s.arg(i)), limits));
    const qint64 fileCount = TSectionReader(text, u"files"_s).Number("count"_L1, 1, limits.Files);
    for (qint64 i = 1; i <= fileCount; ++i)
        control.Files.push_back(ReadFileSection(TSectionReader(text, u"file%1"_s.arg(i)), control, limits));
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
            u"The update server's answer was valid until %1 only, and was not used"_s.arg(
                control.ValidUntil.toString(TUpdateSettings::QtDateFormat)));
    const TKnownRelease offered = KnownReleaseOf(control);
    const TKnownRelease known = settings.Folder.KnownRelease();
    const TVersion newest = std::max(NewestAcceptedVersion(settings), known.Version);
    if (offered.Version < newest)
        throw TError(TErrorKind::BadInput,
            u"The update server offers version %1, which is older than version %2, the newest one known "
            "here; it was not used"_s.arg(VersionText(offered.Version), VersionText(newest)));
    if (offered < known)
        throw TError(TErrorKind::BadInput,
            u"The update server offers version %1, which its publisher has withdrawn; it was "
            "not used"_s.arg(control.Version));
    if (!control.Offered)
        return false;
    if (settings.InstalledVersion < control.OldestProgram)
        throw TError(TErrorKind::BadInput,
            u"Version %1 is available, but this copy of Corvadine is too old to be updated; please "
            "install it anew"_s.arg(control.Version));
    return true;
}

bool IsForPlatform(const TUpdateFile& file, const TUpdateSettings& settings)
{
    return file.Platform.isEmpty() || file.Platform == settings.Platform;
}

bool IsNewer(const TUpdateFile& file, const TUpdateSettings& settings)
{
    if (!IsForPlatform(file, settings))
        return false;
    settings.Folder.CheckTarget(file.Target);
    const QString path = settings.Folder.PathOf(file.Target);
    const QFileInfo info(path);
    if (!info.exists())
        return true;
    switch (file.Comparison) {
    case TComparison::Version:
        return ParseVersion(file.Version) > NewestAcceptedVersion(settings);
    case TComparison::Date:
        return info.lastModified() < file.Date;
    case TComparison::Checksum:
        break;
    }
    return info.size() != file.Size || FileSha256(path) != file.Sha256;
}

} // namespace Corvadine
