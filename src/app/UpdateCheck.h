#pragma once

#include <QObject>
#include <QString>
#include <QUrl>
#include <optional>

class QNetworkAccessManager;

// Looks in the background for a newer version in an appcast feed (an RSS channel whose
// items carry an enclosure with the version and the download address). Silent when the
// feed can't be fetched or read.
class UpdateCheck : public QObject {
    Q_OBJECT
public:
    struct Release {
        QString version;
        QUrl download;
    };

    explicit UpdateCheck(QObject *parent = nullptr);

    void start(const QUrl &feed, const QString &ourVersion);

    // The item with the highest version; absent when the feed holds none.
    static std::optional<Release> newestRelease(const QByteArray &appcast);
    static bool isNewer(const QString &candidate, const QString &ours);

signals:
    void newVersionAvailable(const QString &version, const QUrl &download);
    // Emitted at the end of every check, whatever came of it.
    void finished();

private:
    // Made by start() when there is something to fetch: a manager costs its set-up.
    QNetworkAccessManager *m_network = nullptr;
};
