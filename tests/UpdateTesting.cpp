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

// Runs a tool and returns its standard output. If `error` is given, the tool must fail, and `error` receives
// the error output of the tool.
QByteArray Run(const char* program, const QStringList& arguments, QByteArray* error = nullptr)
{
    QProcess tool;
    tool.start(program, arguments);
    EXPECT_TRUE(tool.waitForFinished());
    const QByteArray errors = tool.readAllStandardError();
    EXPECT_EQ(tool.exitCode() != 0, error != nullptr) << errors.toStdString();
    if (error)
        *error = errors;
    return tool.readAllStandardOutput();
}

// The key pair for all tests of this process. The folder is removed at the end of the process.
struct TKeyPair {
    QTemporaryDir Folder;
    QString Path = Folder.filePath("secret.key");
    QByteArray Public = QByteArray::fromBase64(Run(CORVADINE_MAKE_UPDATE, { "key", Path }));
    // The seed and the public key, as libsodium needs them.
    QByteArray Secret = QByteArray::fromBase64(FileBytes(Path)) + Public;
};

const TKeyPair& Keys()
{
    static const TKeyPair Pair;
    return Pair;
}

void PutAll(const TFolderContent& files, const QTemporaryDir& folder)
{
    for (const auto& [name, bytes] : files)
        PutFile(folder.filePath(name), bytes);
}

// Runs make-update with the files `before` in its output folder. Returns the files of the output
// folder afterwards.
TFolderContent Make(const QString& command, const TFolderContent& before, const QStringList& arguments,
    QByteArray* error = nullptr)
{
    const QTemporaryDir output;
    PutAll(before, output);
    Run(CORVADINE_MAKE_UPDATE,
        QStringList { command, "--output", output.path(), "--days", "36500", "--key", Keys().Path,
            "--checker", CORVADINE_CHECK_UPDATE }
            + arguments,
        error);
    return FolderContent(output.path());
}

} // namespace

TAnswer Ok(const QByteArray& body)
{
    return { "HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(body.size())
        + "\r\nConnection: close\r\n\r\n" + body };
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

QUrl TUpdateServer::Url() const
{
    return QUrl(u"https://localhost:%1"_s.arg(FServer.serverPort()) + TUpdateSettings::ControlFilePath);
}

void TUpdateServer::Answer(QSslSocket& socket)
{
    static const TAnswer Missing { "HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n" };
    const QString request = QString::fromLatin1(socket.readAll());
    EXPECT_TRUE(request.contains("User-Agent: TWebUpdate\r\n"));
    const TAnswer answer = FAnswers.value(request.section(u' ', 1, 1), Missing);
    const qsizetype piece = answer.DripMilliseconds > 0 ? answer.Bytes.size() / 10 + 1 : 1024 * 1024;
    auto* const timer = new QTimer(&socket);
    connect(timer, &QTimer::timeout, &socket, [&socket, timer, piece, answer, left = answer.Bytes]() mutable {
        socket.write(left.left(piece));
        left.remove(0, piece);
        if (answer.Then == TThen::SendForEver && socket.bytesToWrite() < 64 * 1024)
            left = QByteArray(16 * 1024, 'x');
        if (!left.isEmpty() || answer.Then == TThen::SendForEver)
            return;
        timer->stop();
        if (answer.Then == TThen::Close)
            socket.disconnectFromHost();
    });
    timer->start(answer.DripMilliseconds);
}

TUpdateRelease::TUpdateRelease(const TFolderContent& content, const QStringList& arguments, QByteArray* error)
{
    const QTemporaryDir folder;
    PutAll(content, folder);
    QFile::setPermissions(
        folder.filePath("corvadine"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    const QStringList release { "--date", "22/11/2020 14:30", "--version", "1.1.0", "--files",
        folder.path() };
    Files = Make("release", {}, release + arguments, error);
}

void TUpdateRelease::Withdraw()
{
    Files = Make("renew", Files, { "--date", "23/11/2020 14:30", "--withdraw" });
}

std::string TUpdateRelease::Faults() const
{
    const QTemporaryDir folder;
    PutAll(Files, folder);
    QByteArray error;
    Run(CORVADINE_CHECK_UPDATE, { PublicKey().toBase64(), folder.filePath("Corvadine.INF"), folder.path() },
        &error);
    return error.toStdString();
}

void TUpdateRelease::Replace(const QByteArray& from, const QByteArray& to)
{
    ASSERT_TRUE(Control().contains(from)) << from.toStdString();
    Control().replace(from, to);
    const auto data = [](const auto& bytes) { return reinterpret_cast<const unsigned char*>(bytes.data()); };
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
        QByteArray bytes(200 * 1024, '\0');
        QRandomGenerator(1).fillRange(reinterpret_cast<quint32*>(bytes.data()), bytes.size() / 4);
        return bytes;
    }();
    return Bytes;
}

TUpdateRelease MakeRelease(const QStringList& arguments)
{
    return TUpdateRelease(
        { { "corvadine", NewProgram() }, { "Corvadine.chm", NewHelp }, { "presets/colors.txt", NewPresets } },
        arguments);
}

TUpdateRelease Release()
{
    static const TUpdateRelease Made = MakeRelease({ "--by-version", "corvadine", "--optional", "*.chm" });
    return Made;
}

void PutOldFiles(const QString& programFolder)
{
    PutFile(programFolder + "/corvadine", "old program");
    PutFile(programFolder + "/Corvadine.chm", "old help");
    PutFile(programFolder + "/presets/colors.txt", "old presets");
    PutFile(programFolder + "/Corvadine.db", "database");
}

TUpdateSettings TestUpdateSettings(const TUpdateServer& server, const QString& programFolder)
{
    TUpdateSettings settings { TUpdateFolder(programFolder) };
    settings.Url = server.Url();
    settings.PublicKey = TUpdateRelease::PublicKey();
    settings.CaCertificates = FileBytes(TlsFolder + "authority.pem");
    settings.InstalledVersion = { 1 };
    settings.Platform = "linux-x86_64";
    return settings;
}

TUpdateOutcome RunCheck(TUpdateEngine& engine)
{
    engine.Check();
    return AwaitOutcome(engine);
}

TUpdateOutcome RunDownload(TUpdateEngine& engine, const std::vector<std::size_t>& chosen)
{
    TUpdateOutcome checked = RunCheck(engine);
    if (checked.Files.empty())
        return checked;
    engine.Download(chosen);
    return AwaitOutcome(engine);
}

TUpdateOutcome AwaitOutcome(TUpdateEngine& engine)
{
    TUpdateOutcome outcome;
    QEventLoop loop;
    QObject context; // its destructor ends the connections
    const auto end = [&](const char* signal) {
        EXPECT_TRUE(outcome.Signal.isEmpty()) << outcome.Signal.toStdString() << " and then " << signal;
        EXPECT_FALSE(engine.IsBusy());
        outcome.Signal = QString::fromLatin1(signal);
        loop.quit();
    };
    QObject::connect(&engine, &TUpdateEngine::Checked, &context, [&](const std::vector<TUpdateFile>& files) {
        outcome.Files = files;
        end("Checked");
    });
    QObject::connect(&engine, &TUpdateEngine::Downloaded, &context, [&] { end("Downloaded"); });
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
    QTimer::singleShot(30'000, &loop, &QEventLoop::quit);
    loop.exec();
    EXPECT_FALSE(outcome.Signal.isEmpty()) << "the engine did not end";
    return outcome;
}

TFolderContent ContentOf(const QString& folder)
{
    return FolderContent(folder, { "CorvadineUpdate.known" });
}

} // namespace Corvadine::Testing
