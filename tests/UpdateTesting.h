#pragma once

#include "support/update/UpdateEngine.h"
#include "tests/Testing.h"

#include <QHash>
#include <QSslServer>

// An update server on loopback, real releases, and an engine that is run to its end. Everything happens on
// the test's own thread.
namespace Corvadine::Testing {

// What the server does after the bytes of an answer.
enum class TThen { Close, Stall, SendForEver };

struct TAnswer {
    QByteArray Bytes; // headers and body as they are sent
    TThen Then = TThen::Close;
    int DripMilliseconds = 0; // other than 0: the pause after every tenth of the bytes
};

inline const QByteArray OkHeaders = "HTTP/1.1 200 OK\r\n\r\n";
TAnswer Ok(const QByteArray& body);

// Serves answers by path over TLS on a free port of localhost; 404 for other paths. Fails the test when a
// request has another user agent than ours.
class TUpdateServer : public QObject {
public:
    // With the certificate tests/data/tls/CERTIFICATE.pem.
    explicit TUpdateServer(const QString& certificate = "localhost");

    void Put(const QString& path, const TAnswer& answer) { FAnswers[path] = answer; }
    // Of the control file.
    QUrl Url() const;

private:
    void Answer(QSslSocket& socket);

    QSslServer FServer;
    QHash<QString, TAnswer> FAnswers;
};

// What tools/make-update puts on a server, by file name, with a key pair made for the tests. Tests tamper
// with it and sign it again.
class TUpdateRelease {
public:
    // Runs `make-update release` on these files with further arguments, for version 1.1.0 of 22/11/2020 14:30
    // UTC. "corvadine" is executable. With `error` it must fail, and that is what it says.
    explicit TUpdateRelease(
        const TFolderContent& content, const QStringList& arguments = {}, QByteArray* error = nullptr);

    TFolderContent Files;

    QByteArray& Control() { return Files["Corvadine.INF"]; }
    QByteArray& Signature() { return Files["Corvadine.INF.sig"]; }
    QByteArray& Package() { return Files["Corvadine.CAB"]; }

    // Replaces all of `from`, which must be there, in the control file, and signs it again.
    void Replace(const QByteArray& from, const QByteArray& to);
    // Another package, with its true size and hash in the control file.
    void ReplacePackage(const QByteArray& bytes);
    void PutOn(TUpdateServer& server) const;
    // What `make-update renew --withdraw` makes of it.
    void Withdraw();
    // What check-update has against it. REQUIRES: there is a fault.
    std::string Faults() const;

    static QByteArray PublicKey();
};

// A new program that hardly packs, a help file that packs well, and a file in a folder.
const QByteArray& NewProgram();
inline const QByteArray NewHelp(400 * 1024, 'h');
inline const QByteArray NewPresets = "new presets";

// Of these three: "corvadine", "Corvadine.chm", "presets/colors.txt".
TUpdateRelease MakeRelease(const QStringList& arguments);
// The same, made once: the program by version, the others by checksum, the help optional.
TUpdateRelease Release();
inline const QString PackageUrlPath = "/Corvadine/Corvadine.CAB";

// A program folder with old files of these names and a database.
void PutOldFiles(const QString& programFolder);

// Settings for a program of version 1.0.0 on "linux-x86_64" in `programFolder`.
TUpdateSettings TestUpdateSettings(const TUpdateServer& server, const QString& programFolder);

// How one step of an engine ended.
struct TUpdateOutcome {
    QString Signal; // the final signal's name
    QString Text;   // of Failed
    std::vector<TUpdateFile> Files;
    qint64 LastDone = 0; // of Progress
    qint64 Total = 0;
};

TUpdateOutcome RunCheck(TUpdateEngine& engine);
// A check, and if it finds files, their download.
TUpdateOutcome RunDownload(TUpdateEngine& engine, const std::vector<std::size_t>& chosen);
// Runs the event loop until the engine's next final signal; fails the test when none comes.
TUpdateOutcome AwaitOutcome(TUpdateEngine& engine);

// FolderContent() but for what a check remembers.
TFolderContent ContentOf(const QString& folder);

} // namespace Corvadine::Testing
