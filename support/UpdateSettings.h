#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <chrono>

namespace Corvadine {

// The bounds that keep a hostile or broken server from taking time, memory or disk at will.
struct TUpdateLimits {
    std::chrono::milliseconds Headers { 5'000 };         // from a request to the end of the headers
    std::chrono::milliseconds Stall { 30'000 };          // without a byte from the server
    std::chrono::milliseconds CheckTotal { 60'000 };     // for a whole check
    std::chrono::milliseconds DownloadTotal { 300'000 }; // for a whole download, besides what its size takes
    qint64 LeastRate = 16LL * 1024;                      // at so many bytes a second
    int Redirects = 5;                                   // per transfer
    qint64 ControlFile = 256LL * 1024;                   // bytes
    qint64 Package = 512LL * 1024 * 1024;                // bytes of one download
    qint64 Installed = 1024LL * 1024 * 1024;             // bytes of all files of a release together
    int Files = 500;                                     // in a control file
};

// Where updates come from and what is trusted: a value, so that a test or an administrator can point it
// elsewhere. docs/UPDATES.md describes the server's side.
struct TUpdateSettings {
    // The product's settings of the update engine, all in one place.
    static constexpr QLatin1String ControlFilePath { "/Corvadine/Corvadine.INF" }; // on the host of the build
    static constexpr QLatin1String SignatureSuffix { ".sig" }; // to the control file's URL
    static constexpr QLatin1String Agent { "TWebUpdate" };     // the user agent of every request
    static constexpr QLatin1String Signature { "WebUpdate" };  // [update] signature= of every control file
    static constexpr QLatin1String ApplicationName { "Corvadine" }; // [application] appname=
    static constexpr QLatin1String LogFileName { "WUPDATE.LOG" };   // in the current folder
    static constexpr QLatin1String TempDirectory {
        "."
    }; // downloads go below it; the program folder in a check
    static constexpr QLatin1String DateFormat { "dd/mm/yyyy" }; // in the control file and the log
    static constexpr QChar DateSeparator = u'/';
    static constexpr QLatin1String TimeFormat { "hh:nn" }; // nn are minutes; 24 hours
    static constexpr QChar TimeSeparator = u':';
    static constexpr bool PostUpdateInfo = false; // nothing is reported back to the server

    // The two formats as Qt spells them.
    static QString QtDateFormat()
    {
        return QString(DateFormat)
            .replace(QStringLiteral("mm"), QStringLiteral("MM"))
            .replace(u'/', DateSeparator);
    }
    static QString QtTimeFormat()
    {
        return QString(TimeFormat)
            .replace(QStringLiteral("nn"), QStringLiteral("mm"))
            .replace(u':', TimeSeparator);
    }

    // Names in the program folder that belong to updates.
    static constexpr QLatin1String OverrideFileName {
        "CorvadineUpdate.ini"
    }; // an administrator's URL and key
    static constexpr QLatin1String AcceptedFileName { "CorvadineUpdate.accepted" }; // see AcceptedVersion.h
    static constexpr QLatin1String KnownFileName { "CorvadineUpdate.known" };       // see AcceptedVersion.h
    static constexpr QLatin1String LockFileName { "CorvadineUpdate.lock" };         // see StagedUpdate.h
    static constexpr QLatin1String StagingFolderName { "CorvadineUpdate.staging" }; // see StagedUpdate.h

    QUrl Url;                  // of the control file; https, or the check fails
    QByteArray PublicKey;      // 32 bytes of Ed25519; empty switches updates off: every check fails
    QByteArray CaCertificates; // PEM, trusted in place of the system's own; empty: the system's are
    QString ProgramFolder;     // absolute; holds the files that are compared and replaced
    QString InstalledVersion;  // of this program: "1.0.0"
    QString Platform;          // whose files of a release are ours: "linux-x86_64"
    TUpdateLimits Limits;
};

// The settings of this build for the program in `programFolder`, with the URL and the key that an
// administrator may have put into its CorvadineUpdate.ini:
//     [update]
//     url=https://updates.example.com/Corvadine/Corvadine.INF
//     key=<public key, 44 characters of base64>
// Either may be missing. Throws TError for such a file that cannot be read or whose values make no sense:
// falling back to the build's own server would be a surprise to who wrote it.
TUpdateSettings LoadUpdateSettings(const QString& programFolder);

} // namespace Corvadine
