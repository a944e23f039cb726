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
    int DripMilliseconds = 0; // the pause after every tenth of the bytes; 0: no pauses
};

inline const QByteArray OkHeaders = "HTTP/1.1 200 OK\r\n\r\n";
TAnswer Ok(const QByteArray& body);

// Serves answers by path over TLS on a free port of localhost. Answers 404 for other paths. Fails the test if
// a request has another user agent than ours.
class TUpdateServer : public QObject {
public:
    // The server has the certificate tests/data/tls/CERTIFICATE.pem.
    explicit TUpdateServer(const QString& certificate = "localhost");

    void Put(const QString& path, const TAnswer& answer) { FAnswers[path] = answer; }
    // Returns the address of the control file.
    QUrl Url() const;

private:
    void Answer(QSslSocket& socket);

    QSslServer FServer;
    QHash<QString, TAnswer> FAnswers;
};

// The files of one release, as tools/make-update makes them for a server. Files has the content of each file
// by its name. The release is signed with a key made for the tests. Tests change the files and sign them
// again.
class TUpdateRelease {
public:
    // Runs `make-update release` on the files `content`, with the further arguments `arguments`. The release
    // is version 1.1.0 of 22/11/2020 14:30 UTC. The file "corvadine" is executable. If `error` is given,
    // make-update must fail, and `error` receives its text.
    explicit TUpdateRelease(
        const TFolderContent& content, const QStringList& arguments = {}, QByteArray* error = nullptr);

    TFolderContent Files;

    QByteArray& Control() { return Files["Corvadine.INF"]; }
    QByteArray& Signature() { return Files["Corvadine.INF.sig"]; }
    QByteArray& Package() { return Files["Corvadine.CAB"]; }

    // Replaces every `from` in the control file, and signs the control file again. REQUIRES: the control file
    // contains `from`.
    void Replace(const QByteArray& from, const QByteArray& to);
    // Replaces the package, and writes the true size and hash of the new package into the control file.
    void ReplacePackage(const QByteArray& bytes);
    void PutOn(TUpdateServer& server) const;
    // Withdraws the release with `make-update renew --withdraw`.
    void Withdraw();
    // Returns the fault that check-update finds in the release. REQUIRES: there is a fault.
    std::string Faults() const;

    static QByteArray PublicKey();
};

// The files of a new release: a program that hardly shrinks when packed, a help file that shrinks well, and a
// file in a folder.
const QByteArray& NewProgram();
inline const QByteArray NewHelp(400 * 1024, 'h');
inline const QByteArray NewPresets = "new presets";

// Returns a release of these three files, named "corvadine", "Corvadine.chm" and "presets/colors.txt".
TUpdateRelease MakeRelease(const QStringList& arguments);
// Returns a release that is made only once. The program is compared by version, and the other files by
// checksum. The help is optional.
TUpdateRelease Release();
inline const QString PackageUrlPath = "/Corvadine/Corvadine.CAB";

// Makes a program folder with old files of these names and a database.
void PutOldFiles(const QString& programFolder);

// Returns settings for a program of version 1.0.0 on "linux-x86_64" in `programFolder`.
TUpdateSettings TestUpdateSettings(const TUpdateServer& server, const QString& programFolder);

// How one step of an engine ended.
struct TUpdateOutcome {
    QString Signal; // the final signal's name
    QString Text;   // the text of the signal Failed
    std::vector<TUpdateFile> Files;
    qint64 LastDone = 0; // `done` of the last signal Progress
    qint64 Total = 0;
};

TUpdateOutcome RunCheck(TUpdateEngine& engine);
// Runs a check. If the check finds files, downloads the files `chosen`.
TUpdateOutcome RunDownload(TUpdateEngine& engine, const std::vector<std::size_t>& chosen);
// Runs the event loop until the engine emits a final signal. Fails the test if no signal comes.
TUpdateOutcome AwaitOutcome(TUpdateEngine& engine);

// Returns FolderContent() without the record of the known release, because a check writes this record.
TFolderContent ContentOf(const QString& folder);

} // namespace Corvadine::Testing
