#include "app/SettingsFile.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/SystemFiles.h"
#include "base/Utf8.h"

#include <QStringConverter>

#include <algorithm>

namespace Corvadine {

namespace {

const QByteArray Section = "Corvadine";

// Returns the bytes of the file. A file in UTF-16 or UTF-32 becomes UTF-8, because new values are written in
// UTF-8. Throws as ReadFile() does.
QByteArray ReadBytes(const QString& path)
{
    QByteArray bytes = ReadFile(path, u"read the settings file"_s);
    const auto marked = QStringConverter::encodingForData(bytes);
    if (!marked || marked == QStringConverter::Utf8)
        return bytes;
    const QString text = QStringDecoder(*marked).decode(bytes);
    return text.toUtf8();
}

// Decodes one value. Each value is decoded by itself, because the older release may have written some of the
// lines in another encoding.
QString Decoded(const QByteArray& value)
{
    const std::optional<QString> text = DecodeUtf8(value);
    return text ? *text : LegacyText(value);
}

bool IsSame(const QByteArray& left, const QByteArray& right)
{
    return left.compare(right, Qt::CaseInsensitive) == 0;
}

qsizetype LineEnd(const QByteArray& bytes, qsizetype at)
{
    const auto* end =
        std::find_if(bytes.cbegin() + at, bytes.cend(), [](char c) { return c == '\r' || c == '\n'; });
    return end - bytes.cbegin();
}

} // namespace

struct TSettingsFile::TPlaces {
    bool HasSection = false;
    qsizetype SectionEnd = 0; // behind the last line of the section
    qsizetype ValueAt = -1;   // -1 if the section does not have the key
    qsizetype ValueSize = 0;
};

TSettingsFile::TSettingsFile(const QString& path)
    : FPath(path), FBytes(FileExists(path) ? ReadBytes(path) : QByteArray())
{
}

TSettingsFile::TPlaces TSettingsFile::Find(const QByteArray& key) const
{
    TPlaces places;
    bool isOwn = false;
    for (qsizetype at = FBytes.startsWith(Utf8Mark) ? Utf8Mark.size() : 0, end = 0; at < FBytes.size();
         at = end + 1) {
        end = LineEnd(FBytes, at);
        const QByteArray line = FBytes.mid(at, end - at);
        const QByteArray content = line.trimmed();
        const bool isHeading = content.startsWith('[');
        if (isHeading && content.contains(']'))
            isOwn = IsSame(content.mid(1, content.indexOf(']') - 1).trimmed(), Section);
        if (!isOwn || content.isEmpty())
            continue;
        places.HasSection = true;
        places.SectionEnd = end;
        const qsizetype equals = line.indexOf('=');
        if (isHeading || equals < 0 || places.ValueAt >= 0 || !IsSame(line.left(equals).trimmed(), key))
            continue;
        const QByteArray value = line.mid(equals + 1).trimmed();
        places.ValueAt = at + (value.isEmpty() ? equals + 1 : line.indexOf(value, equals + 1));
        places.ValueSize = value.size();
    }
    return places;
}

bool TSettingsFile::HasSection() const
{
    return Find({}).HasSection;
}

QString TSettingsFile::Text(const QByteArray& key, const QString& missing) const
{
    const TPlaces places = Find(key);
    return places.ValueAt < 0 ? missing : Decoded(FBytes.mid(places.ValueAt, places.ValueSize));
}

int TSettingsFile::Integer(const QByteArray& key, int missing) const
{
    bool isNumber = false;
    const int value = Text(key).toInt(&isNumber);
    return isNumber ? value : missing;
}

bool TSettingsFile::Boolean(const QByteArray& key, bool missing) const
{
    const QString text = Text(key).toLower();
    if (QStringList { "1", "true", "yes", "on" }.contains(text))
        return true;
    return !QStringList { "0", "false", "no", "off" }.contains(text) && missing;
}

void TSettingsFile::SetText(const QByteArray& key, const QString& value)
{
    QByteArray bytes = value.toUtf8();
    if (bytes != bytes.trimmed() || LineEnd(bytes, 0) < bytes.size())
        bytes.clear();
    TPlaces places = Find(key);
    if (places.ValueAt >= 0) {
        FBytes.replace(places.ValueAt, places.ValueSize, bytes);
        return;
    }
    const QByteArray lineBreak = FBytes.contains("\r\n") ? "\r\n" : "\n";
    if (!places.HasSection) {
        if (!FBytes.isEmpty() && !FBytes.endsWith('\n'))
            FBytes += lineBreak;
        FBytes += '[' + Section + ']';
        places.SectionEnd = FBytes.size();
        FBytes += lineBreak;
    }
    FBytes.insert(places.SectionEnd, lineBreak + key + '=' + bytes);
}

void TSettingsFile::SetInteger(const QByteArray& key, int value)
{
    SetText(key, QString::number(value));
}

void TSettingsFile::Save() const
{
    WriteFileAtomically(FPath, FBytes);
}

} // namespace Corvadine
