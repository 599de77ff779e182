#pragma once

#include <QHash>
#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>

// A tiny HTTP/1.0 server on 127.0.0.1 for the start-up checks: it answers the paths it
// was given and 404 for everything else, and remembers every path asked for.
class LoopbackHttpServer : public QObject {
public:
    QStringList requested;

    LoopbackHttpServer() {
        m_server.listen(QHostAddress::LocalHost);
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *socket = m_server.nextPendingConnection())
                connect(socket, &QTcpSocket::readyRead, this, [this, socket] { answer(socket); });
        });
    }

    void serve(const QString &path, const QByteArray &body) { m_pages.insert(path, body); }
    QString url(const QString &path) const {
        return QStringLiteral("http://127.0.0.1:%1%2").arg(m_server.serverPort()).arg(path);
    }

private:
    void answer(QTcpSocket *socket) {
        // The request stays in the socket until its header is complete.
        const QByteArray request = socket->peek(socket->bytesAvailable());
        if (!request.contains("\r\n\r\n"))
            return;
        socket->readAll();
        const QString path = QString::fromLatin1(request.split(' ').value(1));
        requested << path;
        const bool found = m_pages.contains(path);
        const QByteArray body = found ? m_pages.value(path) : QByteArray("missing");
        socket->write((found ? "HTTP/1.0 200 OK\r\n" : "HTTP/1.0 404 Not Found\r\n") +
                      QByteArray("Content-Length: ") + QByteArray::number(body.size()) +
                      "\r\nConnection: close\r\n\r\n" + body);
        socket->disconnectFromHost();
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    }

    QTcpServer m_server;
    QHash<QString, QByteArray> m_pages;
};
