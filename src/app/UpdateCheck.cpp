#include "UpdateCheck.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QVersionNumber>
#include <QXmlStreamReader>

UpdateCheck::UpdateCheck(QObject *parent) : QObject(parent) {}

void UpdateCheck::start(const QUrl &feed, const QString &ourVersion) {
    if (!feed.isValid() || feed.isEmpty()) {
        emit finished();
        return;
    }
    if (!m_network)
        m_network = new QNetworkAccessManager(this);
    QNetworkRequest request(feed);
    request.setTransferTimeout(20000);
    QNetworkReply *reply = m_network->get(request);
    connect(reply, &QNetworkReply::finished, this, [this, reply, ourVersion] {
        reply->deleteLater();
        if (reply->error() == QNetworkReply::NoError) {
            const auto release = newestRelease(reply->readAll());
            if (release && isNewer(release->version, ourVersion))
                emit newVersionAvailable(release->version, release->download);
        }
        emit finished();
    });
}

namespace {
// The version an enclosure or an item names; the short (marketing) form is preferred
// because that is the form our own version has.
struct ItemFields {
    QString shortVersion;
    QString version;
    QUrl enclosure;
    QUrl link;
};

void readEnclosure(const QXmlStreamAttributes &attributes, ItemFields &item) {
    for (const QXmlStreamAttribute &attribute : attributes) {
        const QStringView name = attribute.name();
        if (name == QLatin1String("shortVersionString"))
            item.shortVersion = attribute.value().toString().trimmed();
        else if (name == QLatin1String("version"))
            item.version = attribute.value().toString().trimmed();
        else if (name == QLatin1String("url"))
            item.enclosure = QUrl(attribute.value().toString().trimmed());
    }
}
} // namespace

std::optional<UpdateCheck::Release> UpdateCheck::newestRelease(const QByteArray &appcast) {
    QXmlStreamReader xml(appcast);
    std::optional<Release> newest;
    std::optional<ItemFields> item;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement()) {
            const QStringView name = xml.name();
            if (name == QLatin1String("item")) {
                item = ItemFields{};
            } else if (item && name == QLatin1String("enclosure")) {
                readEnclosure(xml.attributes(), *item);
            } else if (item && name == QLatin1String("shortVersionString")) {
                item->shortVersion = xml.readElementText().trimmed();
            } else if (item && name == QLatin1String("version")) {
                item->version = xml.readElementText().trimmed();
            } else if (item && name == QLatin1String("link")) {
                item->link = QUrl(xml.readElementText().trimmed());
            }
        } else if (xml.isEndElement() && xml.name() == QLatin1String("item") && item) {
            const QString version =
                item->shortVersion.isEmpty() ? item->version : item->shortVersion;
            if (!version.isEmpty() && (!newest || isNewer(version, newest->version)))
                newest = Release{version, item->enclosure.isEmpty() ? item->link : item->enclosure};
            item.reset();
        }
    }
    if (xml.hasError())
        return std::nullopt;
    return newest;
}

bool UpdateCheck::isNewer(const QString &candidate, const QString &ours) {
    const QVersionNumber theirs = QVersionNumber::fromString(candidate);
    return !theirs.isNull() &&
           QVersionNumber::compare(theirs, QVersionNumber::fromString(ours)) > 0;
}
