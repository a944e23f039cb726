#pragma once

#include "support/UpdateEngine.h"
#include "support/UpdateSettings.h"
#include "tests/Testing.h"

#include <QByteArray>
#include <QHash>
#include <QSslServer>
#include <QString>
#include <QStringList>

#include <vector>

// An update server on loopback, real releases, and an engine that is run to its end. Everything happens on
// the test's own thread.
namespace Corvadine::Testing {

// What the server does after the bytes of an answer.
enum class TThen { Close, Stall, SendForEver };

struct TAnswer {
    QByteArray Bytes; // headers and body as they go over the line
    TThen Then = TThen::Close;
    int DripMilliseconds = 0; // other than 0: between every tenth of the bytes
};

TAnswer Ok(const QByteArray& body);
TAnswer RedirectTo(const QString& url);

// Serves answers by path over TLS on a free port of localhost; 404 for other paths.
class TUpdateServer : public QObject {
public:
    // With the certificate tests/data/tls/CERTIFICATE.pem.
    explicit TUpdateServer(const QString& certificate = "localhost");

    void Put(const QString& path, const TAnswer& answer) { FAnswers[path] = answer; }
    // `https://localhost:PORT` and the path.
    QUrl Url(const QString& path = TUpdateSettings::ControlFilePath) const;
    // The first line and headers of all requests so far.
    const QStringList& Requests() const { return FRequests; }

private:
    void Answer(QSslSocket& socket);
    void Drip(QSslSocket& socket, const TAnswer& answer);

    QSslServer FServer;
    QHash<QString, TAnswer> FAnswers;
    QStringList FRequests;
};

// What tools/make-update puts on a server, by file name, with a key pair made for the tests. It can be
// tampered with and signed again.
class TUpdateRelease {
public:
    // Runs `make-update release` on `folder` with further arguments. The date is 22/11/2020 14:30 UTC.
    // With `error` it must fail, and that is what it says.
    TUpdateRelease(const QString& folder, const QString& version, const QStringList& arguments = {},
        QByteArray* error = nullptr);

    TFolderContent Files;

    QByteArray& Control() { return Files["Corvadine.INF"]; }
    QByteArray& Signature() { return Files["Corvadine.INF.sig"]; }
    QByteArray& Package() { return Files["Corvadine.CAB"]; }

    // Replaces all of `from`, which must be there, in the control file.
    void Replace(const QByteArray& from, const QByteArray& to);
    void Sign();
    // Another package, with its true size and hash in the control file, signed again.
    void ReplacePackage(const QByteArray& bytes);
    void PutOn(TUpdateServer& server) const;
    // What `make-update renew` makes of it.
    void Renew(const QStringList& arguments);

    static QByteArray PublicKey();
};

// A new program that hardly packs, a help file that packs well, and a file in a folder.
const QByteArray& NewProgram();
inline const QByteArray NewHelp(400 * 1024, 'h');
inline const QByteArray NewPresets = "new presets";

// A release of these three: "corvadine", "Corvadine.chm", "presets/colours.txt".
TUpdateRelease MakeRelease(const QString& version, const QStringList& arguments = {});
// Version 1.1.0, made once: the program by version, the others by checksum, the help optional.
TUpdateRelease Release();
inline const QString PackageUrlPath = "/Corvadine/Corvadine.CAB";
inline const QByteArray OkHeaders = "HTTP/1.1 200 OK\r\n\r\n";

// A program folder with old files of these names and a database.
void PutOldFiles(const QString& programFolder);

// Settings for a program of version 1.0.0 on "linux-x86_64" in `programFolder`, with limits that make a test
// fast.
TUpdateSettings TestUpdateSettings(const TUpdateServer& server, const QString& programFolder);

// How one step of an engine ended.
struct TUpdateOutcome {
    QString Signal; // the final signal's name
    QString Text;   // of Failed
    std::vector<TUpdateItem> Items;
    TStagedUpdate Update;
    qint64 LastDone = 0; // of Progress
    qint64 Total = 0;
};

TUpdateOutcome RunCheck(TUpdateEngine& engine);
TUpdateOutcome RunDownload(TUpdateEngine& engine, const std::vector<std::size_t>& chosen);
// Runs the event loop until the engine's next final signal; fails the test when none comes.
TUpdateOutcome AwaitOutcome(TUpdateEngine& engine);

// FolderContent() but for what a check remembers.
TFolderContent ContentOf(const QString& folder);

} // namespace Corvadine::Testing
