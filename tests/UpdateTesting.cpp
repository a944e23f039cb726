#include "tests/UpdateTesting.h"

#include <QCryptographicHash>
#include <QEventLoop>
#include <QProcess>
#include <QRandomGenerator>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslSocket>
#include <QTimer>

#include <sodium.h>

namespace Corvadine::Testing {

namespace {

const QString TlsFolder = QStringLiteral(CORVADINE_TEST_DATA "/tls/");

// What make-update prints, or what it fails with in `error`, if one is expected.
QByteArray Run(const QStringList& arguments, QByteArray* error = nullptr)
{
    QProcess tool;
    tool.start(QStringLiteral(CORVADINE_MAKE_UPDATE), arguments);
    EXPECT_TRUE(tool.waitForFinished());
    const QByteArray errors = tool.readAllStandardError();
    EXPECT_EQ(tool.exitCode() != 0, error != nullptr) << errors.toStdString();
    if (error)
        *error = errors;
    return tool.readAllStandardOutput();
}

// One for all tests of a process, in a folder that goes with it.
struct TKeyPair {
    QTemporaryDir Folder;
    QString Path = Folder.filePath("secret.key");
    QByteArray Public = QByteArray::fromBase64(Run({ "key", Path }));
    // As libsodium wants it: the seed and the public key.
    QByteArray Secret = QByteArray::fromBase64(FileBytes(Path)) + Public;
};

const TKeyPair& Keys()
{
    static const TKeyPair Pair;
    return Pair;
}

// With the tests' key for `--key`.
void RunMakeUpdate(const QStringList& arguments, QByteArray* error = nullptr)
{
    Run(arguments + QStringList { "--key", Keys().Path }, error);
}

} // namespace

TAnswer Ok(const QByteArray& body)
{
    return { "HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(body.size())
        + "\r\nConnection: close\r\n\r\n" + body };
}

TAnswer RedirectTo(const QString& url)
{
    return { "HTTP/1.1 302 Found\r\nLocation: " + url.toLatin1()
        + "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n" };
}

TUpdateServer::TUpdateServer(const QString& certificate)
{
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.setLocalCertificate(QSslCertificate(FileBytes(TlsFolder + certificate + ".pem")));
    tls.setPrivateKey(QSslKey(FileBytes(TlsFolder + certificate + ".key"), QSsl::Ec));
    FServer.setSslConfiguration(tls);
    EXPECT_TRUE(FServer.listen(QHostAddress::LocalHost));
    connect(&FServer, &QTcpServer::pendingConnectionAvailable, this, [this] {
        while (QTcpSocket* const socket = FServer.nextPendingConnection())
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
                if (socket->peek(64 * 1024).contains("\r\n\r\n"))
                    Answer(*qobject_cast<QSslSocket*>(socket));
            });
    });
}

QUrl TUpdateServer::Url(const QString& path) const
{
    return QUrl(QStringLiteral("https://localhost:%1%2").arg(FServer.serverPort()).arg(path));
}

void TUpdateServer::Answer(QSslSocket& socket)
{
    const QString request = QString::fromLatin1(socket.readAll());
    FRequests.append(request);
    const auto answer = FAnswers.constFind(request.section(u' ', 1, 1));
    if (answer == FAnswers.cend()) {
        socket.write("HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
        socket.disconnectFromHost();
        return;
    }
    if (answer->DripMilliseconds > 0) {
        Drip(socket, *answer);
        return;
    }
    socket.write(answer->Bytes);
    if (answer->Then == TThen::Close)
        socket.disconnectFromHost();
    if (answer->Then == TThen::SendForEver) {
        const auto sendMore = [&socket] {
            if (socket.bytesToWrite() < 64 * 1024)
                socket.write(QByteArray(16 * 1024, 'x'));
        };
        connect(&socket, &QSslSocket::encryptedBytesWritten, this, sendMore);
        sendMore();
    }
}

void TUpdateServer::Drip(QSslSocket& socket, const TAnswer& answer)
{
    auto* const timer = new QTimer(&socket);
    const qsizetype piece = answer.Bytes.size() / 10 + 1;
    connect(timer, &QTimer::timeout, &socket, [&socket, piece, left = answer.Bytes]() mutable {
        socket.write(left.left(piece));
        left.remove(0, piece);
        if (left.isEmpty())
            socket.disconnectFromHost();
    });
    timer->start(answer.DripMilliseconds);
}

TUpdateRelease::TUpdateRelease(
    const QString& folder, const QString& version, const QStringList& arguments, QByteArray* error)
{
    const QTemporaryDir output;
    RunMakeUpdate(QStringList { "release", "--output", output.path(), "--date", "22/11/2020 14:30", "--days",
                      "36500", "--version", version, "--files", folder }
            + arguments,
        error);
    Files = FolderContent(output.path());
}

void TUpdateRelease::Renew(const QStringList& arguments)
{
    const QTemporaryDir output;
    for (const auto& [name, bytes] : Files)
        PutFile(output.filePath(name), bytes);
    RunMakeUpdate(QStringList { "renew", "--output", output.path() } + arguments);
    Files = FolderContent(output.path());
}

void TUpdateRelease::Replace(const QByteArray& from, const QByteArray& to)
{
    ASSERT_TRUE(Control().contains(from)) << from.toStdString();
    Control().replace(from, to);
}

void TUpdateRelease::Sign()
{
    const auto data = [](const QByteArray& bytes) {
        return reinterpret_cast<const unsigned char*>(bytes.constData());
    };
    Signature().resize(crypto_sign_BYTES);
    crypto_sign_detached(reinterpret_cast<unsigned char*>(Signature().data()), nullptr, data(Control()),
        static_cast<unsigned long long>(Control().size()), data(Keys().Secret));
}

void TUpdateRelease::ReplacePackage(const QByteArray& bytes)
{
    const auto values = [](const QByteArray& package) {
        return "newsize=" + QByteArray::number(package.size())
            + "\r\nnewchecksum=" + QCryptographicHash::hash(package, QCryptographicHash::Sha256).toHex();
    };
    Replace(values(Package()), values(bytes));
    Package() = bytes;
    Sign();
}

void TUpdateRelease::PutOn(TUpdateServer& server) const
{
    for (const auto& [name, bytes] : Files)
        server.Put("/Corvadine/" + name, Ok(bytes));
}

QByteArray TUpdateRelease::PublicKey()
{
    return Keys().Public;
}

const QByteArray& NewProgram()
{
    static const QByteArray Bytes = [] {
        std::vector<quint32> words(50 * 1024);
        QRandomGenerator(1).fillRange(words.data(), static_cast<qsizetype>(words.size()));
        return QByteArray(reinterpret_cast<const char*>(words.data()), 200 * 1024);
    }();
    return Bytes;
}

TUpdateRelease MakeRelease(const QString& version, const QStringList& arguments)
{
    const QTemporaryDir folder;
    const QString program = folder.filePath("corvadine");
    PutFile(program, NewProgram());
    QFile::setPermissions(program, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    PutFile(folder.filePath("Corvadine.chm"), NewHelp);
    PutFile(folder.filePath("presets/colours.txt"), NewPresets);
    return { folder.path(), version, arguments };
}

TUpdateRelease Release()
{
    static const TUpdateRelease Made =
        MakeRelease("1.1.0", { "--by-version", "corvadine", "--optional", "*.chm" });
    return Made;
}

void PutOldFiles(const QString& programFolder)
{
    PutFile(programFolder + "/corvadine", "old program");
    PutFile(programFolder + "/Corvadine.chm", "old help");
    PutFile(programFolder + "/presets/colours.txt", "old presets");
    PutFile(programFolder + "/Corvadine.db", "database");
}

TUpdateSettings TestUpdateSettings(const TUpdateServer& server, const QString& programFolder)
{
    TUpdateSettings settings;
    settings.Url = server.Url();
    settings.PublicKey = TUpdateRelease::PublicKey();
    settings.CaCertificates = FileBytes(TlsFolder + "authority.pem");
    settings.ProgramFolder = programFolder;
    settings.InstalledVersion = "1.0.0";
    settings.Platform = "linux-x86_64";
    settings.Limits.Stall = std::chrono::seconds(8);
    settings.Limits.CheckTotal = std::chrono::seconds(20);
    settings.Limits.DownloadTotal = std::chrono::seconds(20);
    return settings;
}

TUpdateOutcome RunCheck(TUpdateEngine& engine)
{
    engine.Check();
    return AwaitOutcome(engine);
}

TUpdateOutcome RunDownload(TUpdateEngine& engine, const std::vector<std::size_t>& chosen)
{
    engine.Download(chosen);
    return AwaitOutcome(engine);
}

TUpdateOutcome AwaitOutcome(TUpdateEngine& engine)
{
    TUpdateOutcome outcome;
    QEventLoop loop;
    QObject context; // ends the connections
    const auto end = [&](const char* signal) {
        EXPECT_TRUE(outcome.Signal.isEmpty()) << outcome.Signal.toStdString() << " and then " << signal;
        EXPECT_FALSE(engine.IsBusy());
        outcome.Signal = QString::fromLatin1(signal);
        loop.quit();
    };
    QObject::connect(&engine, &TUpdateEngine::Checked, &context, [&](const std::vector<TUpdateItem>& items) {
        outcome.Items = items;
        end("Checked");
    });
    QObject::connect(&engine, &TUpdateEngine::Downloaded, &context, [&](const TStagedUpdate& update) {
        outcome.Update = update;
        end("Downloaded");
    });
    QObject::connect(&engine, &TUpdateEngine::Failed, &context, [&](const QString& text) {
        outcome.Text = text;
        end("Failed");
    });
    QObject::connect(&engine, &TUpdateEngine::Cancelled, &context, [&] { end("Cancelled"); });
    QObject::connect(&engine, &TUpdateEngine::Progress, &context, [&](qint64 done, qint64 total) {
        EXPECT_LE(outcome.LastDone, done);
        outcome.LastDone = done;
        outcome.Total = total;
    });
    constexpr int GiveUpMilliseconds = 30'000;
    QTimer::singleShot(GiveUpMilliseconds, &loop, &QEventLoop::quit);
    loop.exec();
    EXPECT_FALSE(outcome.Signal.isEmpty()) << "the engine did not end";
    return outcome;
}

TFolderContent ContentOf(const QString& folder)
{
    return FolderContent(folder, { TUpdateSettings::KnownFileName });
}

} // namespace Corvadine::Testing
