#include "support/update/UpdateTransfer.h"

#include "base/Literals.h"

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
    // This header keeps Qt from decompressing, so that we count and hash the bytes that the server sends.
    request.setRawHeader("Accept-Encoding", "identity");
    request.setRawHeader("Accept-Language", "*"); // otherwise Qt sends the user's language
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    return request;
}

bool IsRedirect(int status)
{
    constexpr std::array Redirects { 301, 302, 303, 307, 308 };
    return std::find(Redirects.begin(), Redirects.end(), status) != Redirects.end();
}

} // namespace

void PrepareForUpdates(QNetworkAccessManager& manager)
{
    // A proxy from the environment would see our requests, and its failures would look like the server's own.
    manager.setProxy(QNetworkProxy::NoProxy);
    manager.setAutoDeleteReplies(false);
}

TUpdateTransfer::TUpdateTransfer(const TUpdateSettings& settings, QNetworkAccessManager& manager,
    TTransferRequest request, QIODevice& sink, QObject* parent)
    : QObject(parent), FSettings(settings), FManager(manager), FRequest(std::move(request)), FSink(sink)
{
    FStall.setSingleShot(true);
    connect(&FStall, &QTimer::timeout, this,
        [this] { Fail(u"the server %1 does not answer any more"_s.arg(FUrl.host())); });
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
    reply->deleteLater(); // also ends the reply; abort() would make Qt warn of late errors
}

void TUpdateTransfer::Fetch(const QUrl& url)
{
    FUrl = url;
    if (url.scheme() != u"https" || url.host().isEmpty()) {
        Fail(u"the address %1 is not secure"_s.arg(url.toDisplayString(QUrl::RemoveQuery)));
        return;
    }
    FReply = FManager.get(RequestFor(url, FSettings));
    FReply->setReadBufferSize(ReadBufferBytes);
    // Qt collects headers in memory without a bound, and emits no signal before the headers end. So the
    // server gets little time for the headers. The time begins when the request was sent, because connecting
    // may take longer.
    connect(FReply, &QNetworkReply::requestSent, this, [this] { FStall.start(FSettings.Limits.Headers); });
    connect(FReply, &QNetworkReply::metaDataChanged, this, &TUpdateTransfer::HeadersArrived);
    connect(FReply, &QNetworkReply::readyRead, this, &TUpdateTransfer::BodyArrived);
    connect(FReply, &QNetworkReply::finished, this, &TUpdateTransfer::ReplyEnded);
    connect(FReply, &QNetworkReply::sslErrors, this, [this](const QList<QSslError>& errors) {
        if (!errors.isEmpty()) // kept for the message of Fail(); the errors themselves end the transfer
            FTlsReason = errors.first().errorString();
    });
    FStall.start(FSettings.Limits.Stall);
}

// Checks the headers at once, because the body may never end.
void TUpdateTransfer::HeadersArrived()
{
    constexpr int Ok = 200;
    constexpr int NotFound = 404;
    FStall.start(FSettings.Limits.Stall);
    const int status = FReply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    bool isAnnounced = false;
    const qint64 announced = FReply->header(QNetworkRequest::ContentLengthHeader).toLongLong(&isAnnounced);
    if (IsRedirect(status))
        Redirect();
    else if (status == NotFound)
        Fail(u"the server %1 does not have it"_s.arg(FUrl.host()));
    else if (status != Ok && status != 0)
        Fail(u"the server %1 answered with the status %2"_s.arg(FUrl.host()).arg(status));
    else if (FReply->hasRawHeader("Transfer-Encoding")) // because Qt collects chunk extensions of any length
        Fail(u"the server %1 sends it in pieces"_s.arg(FUrl.host()));
    else if (isAnnounced
        && (FRequest.IsExact ? announced != FRequest.MostBytes : announced > FRequest.MostBytes))
        Fail(u"the server announces %1 bytes, which is not its size"_s.arg(announced));
}

void TUpdateTransfer::BodyArrived()
{
    while (FReply && FReply->bytesAvailable() > 0) {
        const QByteArray bytes = FReply->read(ReadBufferBytes);
        FReceived += bytes.size();
        if (FReceived > FRequest.MostBytes) {
            Fail(u"the server sends more than it should"_s);
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
    BodyArrived(); // reads the last bytes
    if (!FReply)
        return;
    if (FReply->error() != QNetworkReply::NoError)
        Fail(NetworkReason());
    else if (FRequest.IsExact && FReceived != FRequest.MostBytes)
        Fail(u"the server sent %1 bytes of %2"_s.arg(FReceived).arg(FRequest.MostBytes));
    else {
        Stop();
        emit Finished();
    }
}

void TUpdateTransfer::Redirect()
{
    const QUrl target = FUrl.resolved(FReply->attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl());
    if (++FRedirects > FSettings.Limits.Redirects) {
        Fail(u"the server sends us from one address to the next"_s);
        return;
    }
    Stop();
    Fetch(target);
}

void TUpdateTransfer::Fail(const QString& reason)
{
    Stop();
    emit Failed(u"Cannot download %1: %2"_s.arg(FRequest.Name, reason));
}

QString TUpdateTransfer::NetworkReason() const
{
    const QString host = FUrl.host();
    switch (FReply->error()) {
    case QNetworkReply::HostNotFoundError:
        return u"there is no server %1, or this computer is not connected"_s.arg(host);
    case QNetworkReply::ConnectionRefusedError:
        return u"the server %1 does not accept connections"_s.arg(host);
    case QNetworkReply::RemoteHostClosedError:
        return u"the server %1 ended the connection too early"_s.arg(host);
    case QNetworkReply::SslHandshakeFailedError:
        return u"the server cannot prove that it is %1 (%2)"_s.arg(
            host, FTlsReason.isEmpty() ? FReply->errorString() : FTlsReason);
    default:
        return FReply->errorString();
    }
}

} // namespace Corvadine
