#include "tests/UpdateTesting.h"

#include "tests/Testing.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QEventLoop>
#include <QProcess>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslSocket>
#include <QTimer>

#include <sodium.h>

namespace Corvadine::Testing {

namespace {

const QString TlsFolder = QStringLiteral(CORVADINE_TEST_DATA "/tls/");

// One for all tests of a process, in a folder that goes with it.
struct TKeyPair {
    TKeyPair()
    {
        QProcess tool;
        tool.start(QStringLiteral(CORVADINE_MAKE_UPDATE), { QStringLiteral("key"), Path });
        EXPECT_TRUE(tool.waitForFinished() && tool.exitCode() == 0)
            << tool.readAllStandardError().toStdString();
        Public = QByteArray::fromBase64(tool.readAllStandardOutput().trimmed());
        const QByteArray seed = QByteArray::fromBase64(FileBytes(Path).trimmed());
        QByteArray ignored(crypto_sign_PUBLICKEYBYTES, '\0');
        Secret.resize(crypto_sign_SECRETKEYBYTES);
        crypto_sign_seed_keypair(Unsigned(ignored), Unsigned(Secret), Unsigned(seed));
    }

    static const unsigned char* Unsigned(const QByteArray& bytes)
    {
        return reinterpret_cast<const unsigned char*>(bytes.constData());
    }
    static unsigned char* Unsigned(QByteArray& bytes)
    {
        return reinterpret_cast<unsigned char*>(bytes.data());
    }

    QTemporaryDir Folder;
    QString Path = Folder.filePath(QStringLiteral("secret.key"));
    QByteArray Public;
    QByteArray Secret;
};

const TKeyPair& Keys()
{
    static const TKeyPair Pair;
    return Pair;
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
    tls.setLocalCertificate(QSslCertificate(FileBytes(TlsFolder + certificate + QStringLiteral(".pem"))));
    tls.setPrivateKey(QSslKey(FileBytes(TlsFolder + certificate + QStringLiteral(".key")), QSsl::Ec));
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

TUpdateRelease::TUpdateRelease(const QString& folder, const QString& version, const QStringList& arguments)
{
    const QTemporaryDir output;
    QProcess tool;
    tool.start(QStringLiteral(CORVADINE_MAKE_UPDATE),
        QStringList { QStringLiteral("release"), QStringLiteral("--key"), Keys().Path,
            QStringLiteral("--output"), output.path(), QStringLiteral("--date"),
            QStringLiteral("22/11/2020 14:30"), QStringLiteral("--days"), QStringLiteral("36500"),
            QStringLiteral("--version"), version, QStringLiteral("--files"), folder }
            + arguments);
    EXPECT_TRUE(tool.waitForFinished() && tool.exitCode() == 0) << tool.readAllStandardError().toStdString();
    Files = FolderContent(output.path());
}

void TUpdateRelease::Replace(const QByteArray& from, const QByteArray& to)
{
    ASSERT_TRUE(Control().contains(from)) << from.toStdString();
    Control().replace(from, to);
}

void TUpdateRelease::Sign()
{
    Signature().resize(crypto_sign_BYTES);
    crypto_sign_detached(TKeyPair::Unsigned(Signature()), nullptr, TKeyPair::Unsigned(Control()),
        static_cast<unsigned long long>(Control().size()), TKeyPair::Unsigned(Keys().Secret));
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
    for (auto file = Files.cbegin(); file != Files.cend(); ++file)
        server.Put(QStringLiteral("/Corvadine/") + file.key(), Ok(file.value()));
}

QByteArray TUpdateRelease::PublicKey()
{
    return Keys().Public;
}

TUpdateSettings TestUpdateSettings(const TUpdateServer& server, const QString& programFolder)
{
    TUpdateSettings settings;
    settings.Url = server.Url();
    settings.PublicKey = TUpdateRelease::PublicKey();
    settings.CaCertificates = FileBytes(TlsFolder + QStringLiteral("authority.pem"));
    settings.ProgramFolder = programFolder;
    settings.InstalledVersion = QStringLiteral("1.0.0");
    settings.Platform = QStringLiteral("linux-x86_64");
    settings.Limits.Stall = std::chrono::milliseconds(1000);
    settings.Limits.CheckTotal = std::chrono::seconds(10);
    settings.Limits.DownloadTotal = std::chrono::seconds(10);
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

QMap<QString, QByteArray> FolderContent(const QString& folder)
{
    QMap<QString, QByteArray> content;
    QDirIterator entries(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
        QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QFileInfo info = entries.nextFileInfo();
        const QString name = info.filePath().mid(folder.size() + 1);
        if (info.isSymLink())
            content[name] = "link to " + info.symLinkTarget().toUtf8();
        else if (info.isFile())
            content[name] = FileBytes(info.filePath());
    }
    return content;
}

} // namespace Corvadine::Testing
