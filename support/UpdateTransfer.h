#pragma once

#include "support/UpdateSettings.h"

#include <QCryptographicHash>
#include <QNetworkAccessManager>
#include <QObject>
#include <QTimer>

#include <optional>

class QIODevice;
class QNetworkReply;

namespace Corvadine {

// A network manager as updates want it: no cookies, no cache, no proxy.
void PrepareForUpdates(QNetworkAccessManager& manager);

// What to fetch and how much of it at most.
struct TTransferRequest {
    QUrl Url;
    QString Name;         // what messages call it
    qint64 MostBytes = 0; // one more ends the transfer
    std::optional<qint64> ExactBytes;
};

// One download over HTTPS into a device. Redirects are followed to other https addresses only, a few times;
// TLS errors are final; the headers have little time; the body is read as fast as it can be written and no
// further than the bounds. Ends in Finished or Failed, once, unless it is stopped. A slot may stop it, but
// not delete it at once.
class TUpdateTransfer : public QObject {
    Q_OBJECT

public:
    // `sink`, open for writing, and `manager` must outlive the object.
    TUpdateTransfer(const TUpdateSettings& settings, QNetworkAccessManager& manager, TTransferRequest request,
        QIODevice& sink, QObject* parent = nullptr);
    ~TUpdateTransfer() override;

    void Start();
    // No signal follows.
    void Stop();

    // Of all that was received. REQUIRES: Finished.
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
    QNetworkReply* FReply = nullptr; // none before the start and after the end
    QUrl FUrl;                       // of FReply
    QTimer FStall;
    QCryptographicHash FHash { QCryptographicHash::Sha256 };
    QString FTlsReason;
    qint64 FReceived = 0;
    int FRedirects = 0;
};

} // namespace Corvadine
