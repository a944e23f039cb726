#pragma once

#include "base/Literals.h"
#include "support/update/rules/UpdateFolder.h"
#include "support/update/rules/Version.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <chrono>
#include <utility>

namespace Corvadine {

// Bounds for the time, memory and disk space that a hostile or broken server can take.
struct TUpdateLimits {
    std::chrono::milliseconds Headers { 5'000 };         // from a request to the end of the headers
    std::chrono::milliseconds Stall { 30'000 };          // of silence from the server
    std::chrono::milliseconds CheckTotal { 60'000 };     // for a whole check
    std::chrono::milliseconds DownloadTotal { 300'000 }; // for a download; LeastRate adds time for its size
    qint64 LeastRate = 16LL * 1024;                      // bytes per second
    int Redirects = 5;                                   // per transfer
    qint64 ControlFile = 256LL * 1024;                   // bytes
    qint64 Package = 512LL * 1024 * 1024;                // bytes of one download
    qint64 Installed = 1024LL * 1024 * 1024;             // bytes of all files of a release together
    int Files = 500;                                     // in a control file
};

// The source of updates, and the key that is trusted. The settings are a value, so that a test or an
// administrator can set another server. docs/UPDATES.md describes the server's side.
struct TUpdateSettings {
    // The product's settings of the update engine.
    static constexpr QLatin1String ControlFilePath { "/Corvadine/Corvadine.INF" }; // on CORVADINE_UPDATE_HOST
    static constexpr QLatin1String SignatureSuffix { ".sig" }; // added to the control file's name
    static constexpr QLatin1String Agent { "TWebUpdate" };     // the user agent of every request
    static constexpr QLatin1String Signature { "WebUpdate" };  // [update] signature= of every control file
    static constexpr QLatin1String ApplicationName { "Corvadine" }; // [application] appname=
    static constexpr QLatin1String LogFileName { "WUPDATE.LOG" };   // in the program folder
    static constexpr QLatin1String TempDirectory { "." };           // for staging; in the program folder
    static constexpr QLatin1String DateFormat { "dd/mm/yyyy" };     // in the control file and the log
    static constexpr QChar DateSeparator = u'/';
    static constexpr QLatin1String TimeFormat { "hh:nn" }; // nn: minutes; hh: 00 to 23
    static constexpr QChar TimeSeparator = u':';
    static constexpr bool PostUpdateInfo = false; // nothing is reported back to the server

    static constexpr QStringView QtDateFormat = u"dd/MM/yyyy"; // DateFormat in Qt's notation
    static constexpr QStringView QtTimeFormat = u"hh:mm";      // TimeFormat in Qt's notation

    explicit TUpdateSettings(TUpdateFolder folder) : Folder(std::move(folder)) { }

    TUpdateFolder Folder;         // the folder whose files are compared and replaced
    QUrl Url;                     // of the control file; checks fail unless the scheme is https
    QByteArray PublicKey;         // 32 bytes of Ed25519; if empty, updates are off: every check fails
    QByteArray CaCertificates;    // PEM; if not empty, trusted instead of the system's certificates
    TVersion InstalledVersion {}; // of this program
    QString Platform;             // such as "linux-x86_64"; we take the files for this platform
    TUpdateLimits Limits;
};

// Returns the settings of this build for the program in `folder`. The URL and the key of an administrator's
// CorvadineUpdate.ini replace the URL and the key of the build:
//     [update]
//     url=https://updates.example.com/Corvadine/Corvadine.INF
//     key=<public key, 44 characters of base64>
// The file and each value may be missing. Throws TError if the file cannot be read or a value makes no sense.
// We do not ask the build's own server in this case, because that would surprise the administrator.
TUpdateSettings LoadUpdateSettings(const TUpdateFolder& folder);

// Returns the newer of the program's own version and the newest version that an update has installed. No
// update may be older than this version.
TVersion NewestAcceptedVersion(const TUpdateSettings& settings);

} // namespace Corvadine
