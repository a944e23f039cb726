#include "support/update/rules/UpdateSettings.h"

#include "base/Error.h"
#include "base/Files.h"
#include "support/update/rules/IniText.h"
#include "support/update/rules/UpdateSignature.h"

#include <algorithm>

namespace Corvadine {

namespace {

void ReadOverride(TUpdateSettings& settings, const QString& path)
{
    const TIniText text(ReadFile(path, u"read the update settings"_s), path);
    const QString section = u"update"_s;
    const auto refuse = [&](const QString& reason) -> TError {
        return { TErrorKind::BadInput, u"use"_s, path, reason };
    };
    if (const auto url = text.Value(section, u"url"_s)) {
        settings.Url = QUrl(*url, QUrl::StrictMode);
        if (settings.Url.scheme() != u"https" || settings.Url.host().isEmpty())
            throw refuse(u"its url is no address that starts with https://"_s);
    }
    if (const auto key = text.Value(section, u"key"_s)) {
        settings.PublicKey = PublicKeyOf(key->toLatin1());
        if (settings.PublicKey.isEmpty())
            throw refuse(u"its key is no public key"_s);
    }
}

} // namespace

TUpdateSettings LoadUpdateSettings(const TUpdateFolder& folder)
{
    TUpdateSettings settings(folder);
    settings.Url = QUrl(QStringLiteral("https://" CORVADINE_UPDATE_HOST) + TUpdateSettings::ControlFilePath,
        QUrl::StrictMode);
    settings.PublicKey = PublicKeyOf(CORVADINE_UPDATE_KEY);
    settings.InstalledVersion = ParseVersion(QStringLiteral(CORVADINE_VERSION)).value();
    settings.Platform = QStringLiteral(CORVADINE_UPDATE_PLATFORM);
    if (FileExists(folder.OverrideFile()))
        ReadOverride(settings, folder.OverrideFile());
    return settings;
}

TVersion NewestAcceptedVersion(const TUpdateSettings& settings)
{
    return std::max(settings.InstalledVersion, settings.Folder.AcceptedVersion());
}

} // namespace Corvadine
