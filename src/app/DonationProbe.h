#pragma once

#include <QObject>
#include <QUrl>

class QNetworkAccessManager;

// Fetches the donation page in the background only to learn whether it can be reached;
// the page's text is thrown away.
class DonationProbe : public QObject {
    Q_OBJECT
public:
    explicit DonationProbe(QObject *parent = nullptr);

    void start(const QUrl &page);

signals:
    // Nothing readable came back: no network, an error status or text that is not UTF-8.
    void unreachable();
    void reachable();

private:
    // Made by start() when there is something to fetch: a manager costs its set-up.
    QNetworkAccessManager *m_network = nullptr;
};
