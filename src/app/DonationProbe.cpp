#include "DonationProbe.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QStringDecoder>

DonationProbe::DonationProbe(QObject *parent) : QObject(parent) {}

void DonationProbe::start(const QUrl &page) {
    if (!page.isValid() || page.isEmpty()) {
        emit unreachable();
        return;
    }
    if (!m_network)
        m_network = new QNetworkAccessManager(this);
    QNetworkRequest request(page);
    request.setTransferTimeout(20000);
    QNetworkReply *reply = m_network->get(request);
    connect(reply, &QNetworkReply::finished, this, [this, reply] {
        reply->deleteLater();
        if (reply->error() != QNetworkReply::NoError) {
            emit unreachable();
            return;
        }
        QStringDecoder utf8(QStringDecoder::Utf8);
        const QString text = utf8.decode(reply->readAll());
        if (utf8.hasError())
            emit unreachable();
        else
            emit reachable();
    });
}
