#pragma once

#include "support/update/rules/UpdateSettings.h"

#include <QCryptographicHash>
#include <QNetworkAccessManager>
#include <QObject>
#include <QTimer>

class QIODevice;
class QNetworkReply;

namespace Corvadine {

// Sets up `manager` for updates. After this call, `manager` uses no proxy. It also does not delete replies,
// because each transfer deletes its own replies.
void PrepareForUpdates(QNetworkAccessManager& manager);

// The address of a download, and the limit of its size.
struct TTransferRequest {
    QUrl Url;
    QString Name;         // the name of the download in messages
    qint64 MostBytes = 0; // the transfer fails if the server sends more
    bool IsExact = false; // if true, the transfer also fails if the server sends fewer
};

// A download over HTTPS into a device. Follows a few redirects, to https addresses only. Fails at every TLS
// error. Also fails if the headers take longer than TUpdateLimits::Headers, or if the body is longer or
// shorter than the request allows. Emits Finished or Failed once, unless the transfer is stopped. A slot may
// stop the transfer. A slot that deletes the transfer must call deleteLater().
class TUpdateTransfer : public QObject {
    Q_OBJECT

public:
    // `settings`, `manager` and `sink` must outlive the object. REQUIRES: `sink` is open for writing.
    TUpdateTransfer(const TUpdateSettings& settings, QNetworkAccessManager& manager, TTransferRequest request,
        QIODevice& sink, QObject* parent = nullptr);
    ~TUpdateTransfer() override;

    void Start();
    // Ends the transfer without a signal.
    void Stop();

    // Returns the SHA-256 of all received bytes. REQUIRES: the transfer has emitted Finished.
    QByteArray Sha256() const { return FHash.result(); }

signals:
    void Progress(qint64 bytes);
    void Finished();
    void Failed(const QString& text);

private:
    void Fetch(const QUrl& url);
    void HeadersArrived();
    void BodyArrived();
    void ReplyEnded();
    void Redirect();
    void Fail(const QString& reason);
    QString NetworkReason() const;

    const TUpdateSettings& FSettings;
    QNetworkAccessManager& FManager;
    TTransferRequest FRequest;
    QIODevice& FSink;
    QNetworkReply* FReply = nullptr; // null before the start and after the end
    QUrl FUrl;                       // the address that FReply fetches
    QTimer FStall;
    QCryptographicHash FHash { QCryptographicHash::Sha256 };
    QString FTlsReason;
    qint64 FReceived = 0;
    int FRedirects = 0;
};

} // namespace Corvadine
