#include "support/UpdateTransfer.h"

#include <QIODevice>
#include <QNetworkProxy>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSslConfiguration>
#include <QSslError>

#include <array>

namespace Corvadine {

namespace {

constexpr qint64 ReadBufferBytes = 65'536;

QSslConfiguration TlsConfiguration(const TUpdateSettings& settings)
{
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.setProtocol(QSsl::TlsV1_2OrLater);
    tls.setPeerVerifyMode(QSslSocket::VerifyPeer);
    if (!settings.CaCertificates.isEmpty())
        tls.setCaCertificates(QSslCertificate::fromData(settings.CaCertificates, QSsl::Pem));
    return tls;
}

QNetworkRequest RequestFor(const QUrl& url, const TUpdateSettings& settings)
{
    QNetworkRequest request(url);
    request.setSslConfiguration(TlsConfiguration(settings));
    request.setHeader(QNetworkRequest::UserAgentHeader, TUpdateSettings::Agent.toString());
    // Asked for by hand, so that Qt does not unpack: what is counted and hashed is what the server sends.
    request.setRawHeader("Accept-Encoding", "identity");
    request.setRawHeader("Accept-Language", "*"); // otherwise the user's language is told
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    return request;
}

int StatusOf(const QNetworkReply& reply)
{
    return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

bool IsRedirect(int status)
{
    constexpr std::array Redirects { 301, 302, 303, 307, 308 };
    return std::find(Redirects.begin(), Redirects.end(), status) != Redirects.end();
}

} // namespace

void PrepareForUpdates(QNetworkAccessManager& manager)
{
    // A proxy from the environment would see where we go, and could not be told from a server that is down.
    manager.setProxy(QNetworkProxy::NoProxy);
    manager.setAutoDeleteReplies(false);
}

TUpdateTransfer::TUpdateTransfer(const TUpdateSettings& settings, QNetworkAccessManager& manager,
    TTransferRequest request, QIODevice& sink, QObject* parent)
    : QObject(parent), FSettings(settings), FManager(manager), FRequest(std::move(request)), FSink(sink)
{
    FStall.setSingleShot(true);
    connect(&FStall, &QTimer::timeout, this,
        [this] { Fail(QStringLiteral("the server %1 does not answer any more").arg(FUrl.host())); });
}

TUpdateTransfer::~TUpdateTransfer()
{
    Stop();
}

void TUpdateTransfer::Start()
{
    Fetch(FRequest.Url);
}

void TUpdateTransfer::Stop()
{
    FStall.stop();
    if (!FReply)
        return;
    QNetworkReply* const reply = std::exchange(FReply, nullptr);
    reply->disconnect(this);
    reply->deleteLater(); // ends it, too; Qt warns of errors that still are on their way after abort()
}

void TUpdateTransfer::Fetch(const QUrl& url)
{
    FUrl = url;
    if (url.scheme() != u"https" || url.host().isEmpty()) {
        Fail(QStringLiteral("the address %1 is not secure").arg(url.toDisplayString(QUrl::RemoveQuery)));
        return;
    }
    FReply = FManager.get(RequestFor(url, FSettings));
    FReply->setReadBufferSize(ReadBufferBytes);
    // Qt collects headers in memory however many there are, and tells nothing before they end: time alone
    // bounds them, and little of it. Connecting before may take long.
    connect(FReply, &QNetworkReply::requestSent, this, [this] { FStall.start(FSettings.Limits.Headers); });
    connect(FReply, &QNetworkReply::metaDataChanged, this, &TUpdateTransfer::HeadersArrived);
    connect(FReply, &QNetworkReply::readyRead, this, &TUpdateTransfer::BodyArrived);
    connect(FReply, &QNetworkReply::finished, this, &TUpdateTransfer::ReplyEnded);
    connect(FReply, &QNetworkReply::sslErrors, this, [this](const QList<QSslError>& errors) {
        if (!errors.isEmpty()) // for the message; never ignored
            FTlsReason = errors.first().errorString();
    });
    FStall.start(FSettings.Limits.Stall);
}

// Judged before the body, which may never end.
void TUpdateTransfer::HeadersArrived()
{
    FStall.start(FSettings.Limits.Stall);
    const int status = StatusOf(*FReply);
    if (IsRedirect(status)) {
        Redirect();
        return;
    }
    constexpr int Ok = 200;
    constexpr int NotFound = 404;
    if (status == NotFound) {
        Fail(QStringLiteral("the server %1 does not have it").arg(FUrl.host()));
        return;
    }
    if (status != Ok && status != 0) {
        Fail(QStringLiteral("the server %1 answered with the status %2").arg(FUrl.host()).arg(status));
        return;
    }
    // Between the pieces of a body may stand as much as a server likes, which Qt collects, too.
    if (FReply->hasRawHeader("Transfer-Encoding")) {
        Fail(QStringLiteral("the server %1 sends it in pieces").arg(FUrl.host()));
        return;
    }
    bool isNumber = false;
    const qint64 announced = FReply->header(QNetworkRequest::ContentLengthHeader).toLongLong(&isNumber);
    if (isNumber
        && (announced > FRequest.MostBytes || (FRequest.ExactBytes && announced != *FRequest.ExactBytes)))
        Fail(QStringLiteral("the server announces %1 bytes, which is not its size").arg(announced));
}

void TUpdateTransfer::BodyArrived()
{
    while (FReply && FReply->bytesAvailable() > 0) {
        const QByteArray bytes = FReply->read(ReadBufferBytes);
        FReceived += bytes.size();
        if (FReceived > FRequest.ExactBytes.value_or(FRequest.MostBytes)) {
            Fail(QStringLiteral("the server sends more than it should"));
            return;
        }
        if (FSink.write(bytes) != bytes.size()) {
            Fail(FSink.errorString());
            return;
        }
        FHash.addData(bytes);
        FStall.start(FSettings.Limits.Stall);
        emit Progress(FReceived);
    }
}

void TUpdateTransfer::ReplyEnded()
{
    BodyArrived(); // what came along with the end
    if (!FReply)
        return;
    if (FReply->error() != QNetworkReply::NoError) {
        Fail(NetworkReason());
        return;
    }
    if (FRequest.ExactBytes && FReceived != *FRequest.ExactBytes) {
        Fail(QStringLiteral("the server sent %1 bytes of %2").arg(FReceived).arg(*FRequest.ExactBytes));
        return;
    }
    Stop();
    emit Finished();
}

void TUpdateTransfer::Redirect()
{
    const QUrl target = FUrl.resolved(FReply->attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl());
    if (++FRedirects > FSettings.Limits.Redirects) {
        Fail(QStringLiteral("the server sends us from one address to the next"));
        return;
    }
    Stop();
    Fetch(target);
}

void TUpdateTransfer::Fail(const QString& reason)
{
    Stop();
    emit Failed(QStringLiteral("Cannot download %1: %2").arg(FRequest.Name, reason));
}

QString TUpdateTransfer::NetworkReason() const
{
    const QString host = FUrl.host();
    switch (FReply->error()) {
    case QNetworkReply::HostNotFoundError:
        return QStringLiteral("there is no server %1, or this computer is not connected").arg(host);
    case QNetworkReply::ConnectionRefusedError:
        return QStringLiteral("the server %1 does not accept connections").arg(host);
    case QNetworkReply::RemoteHostClosedError:
        return QStringLiteral("the server %1 ended the connection too early").arg(host);
    case QNetworkReply::SslHandshakeFailedError:
        return QStringLiteral("the server cannot prove that it is %1 (%2)")
            .arg(host, FTlsReason.isEmpty() ? FReply->errorString() : FTlsReason);
    default:
        return FReply->errorString();
    }
}

} // namespace Corvadine
