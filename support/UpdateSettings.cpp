#include "support/UpdateSettings.h"

#include "base/Error.h"
#include "base/Files.h"
#include "support/IniText.h"
#include "support/UpdateSignature.h"

namespace Corvadine {

namespace {

void ReadOverride(TUpdateSettings& settings, const QString& path)
{
    const TIniText text(ReadFile(path, QStringLiteral("read the update settings")), path);
    const QString section = QStringLiteral("update");
    const auto refuse = [&](const QString& reason) -> TError {
        return { TErrorKind::BadInput, QStringLiteral("use"), path, reason };
    };
    if (const auto url = text.Value(section, QStringLiteral("url"))) {
        settings.Url = QUrl(*url, QUrl::StrictMode);
        if (settings.Url.scheme() != u"https" || settings.Url.host().isEmpty())
            throw refuse(QStringLiteral("its url is no address that starts with https://"));
    }
    if (const auto key = text.Value(section, QStringLiteral("key"))) {
        settings.PublicKey = PublicKeyOf(key->toLatin1());
        if (settings.PublicKey.isEmpty())
            throw refuse(QStringLiteral("its key is no public key"));
    }
}

} // namespace

TUpdateSettings LoadUpdateSettings(const QString& programFolder)
{
    TUpdateSettings settings;
    settings.Url = QUrl(QStringLiteral("https://" CORVADINE_UPDATE_HOST) + TUpdateSettings::ControlFilePath,
        QUrl::StrictMode);
    settings.PublicKey = PublicKeyOf(CORVADINE_UPDATE_KEY);
    settings.ProgramFolder = programFolder;
    settings.InstalledVersion = QStringLiteral(CORVADINE_VERSION);
    settings.Platform = QStringLiteral(CORVADINE_UPDATE_PLATFORM);
    const QString overridePath = programFolder + u'/' + TUpdateSettings::OverrideFileName;
    if (FileExists(overridePath))
        ReadOverride(settings, overridePath);
    return settings;
}

} // namespace Corvadine
