#include "app/SettingsFile.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/SystemFiles.h"

#include <QStringConverter>

// The library needs no converter, because Decoded() converts the file to UTF-8 first. SI_IMPLEMENTATION makes
// this file contain the code of the library.
#define SI_NO_CONVERSION
#define SI_IMPLEMENTATION
#include <SimpleIni.h>

#include <string>

namespace Corvadine {

namespace {

constexpr const char* Section = "Corvadine";

// Decodes the file by its byte order mark. Without such a mark, decodes UTF-8. If the bytes are not UTF-8,
// decodes the 8-bit code page.
QString Decoded(const QByteArray& bytes)
{
    if (const auto marked = QStringConverter::encodingForData(bytes))
        return QStringDecoder(*marked).decode(bytes);
    QStringDecoder utf8(QStringConverter::Utf8);
    QString text = utf8.decode(bytes);
    return utf8.hasError() ? LegacyText(bytes) : text;
}

} // namespace

struct TSettingsFile::TIni {
    CSimpleIniA Values { true }; // UTF-8; this type ignores upper and lower case in names
};

TSettingsFile::TSettingsFile(const QString& path) : FPath(path), FIni(std::make_unique<TIni>())
{
    if (!FileExists(path))
        return;
    const QByteArray utf8 = Decoded(ReadFile(path, u"read the settings file"_s)).toUtf8();
    FIni->Values.LoadData(utf8.constData(), static_cast<std::size_t>(utf8.size()));
}

TSettingsFile::~TSettingsFile() = default;

bool TSettingsFile::HasSection() const
{
    return FIni->Values.SectionExists(Section);
}

QString TSettingsFile::Text(const char* key, const QString& missing) const
{
    const char* value = FIni->Values.GetValue(Section, key);
    return value != nullptr ? QString::fromUtf8(value) : missing;
}

int TSettingsFile::Integer(const char* key, int missing) const
{
    bool isNumber = false;
    const int value = Text(key).trimmed().toInt(&isNumber);
    return isNumber ? value : missing;
}

bool TSettingsFile::Boolean(const char* key, bool missing) const
{
    return FIni->Values.GetBoolValue(Section, key, missing);
}

void TSettingsFile::SetText(const char* key, const QString& value)
{
    FIni->Values.SetValue(Section, key, value.toUtf8().constData());
}

void TSettingsFile::SetInteger(const char* key, int value)
{
    SetText(key, QString::number(value));
}

void TSettingsFile::Save() const
{
    std::string text;
    FIni->Values.Save(text);
    WriteFileAtomically(FPath, QByteArray::fromStdString(text));
}

} // namespace Corvadine
