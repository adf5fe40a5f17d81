#include "devhost/fakes/LoopbackHandshake.h"

#include <QHostAddress>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

// More than any browser or WebSocket library sends as the head of a request.
constexpr qint64 kMostHead = 16384;

} // namespace

LoopbackHandshake::LoopbackHandshake(QObject* parent) : QObject(parent)
{
    connect(&server, &QTcpServer::newConnection, this, &LoopbackHandshake::accept);
}

void LoopbackHandshake::setLimits(std::chrono::milliseconds patience, int mostUnfinished)
{
    timeLimit = patience;
    unfinishedLimit = mostUnfinished;
}

void LoopbackHandshake::close()
{
    server.close();
    drop();
}

void LoopbackHandshake::drop()
{
    while (!unfinished.isEmpty()) {
        unfinished.takeFirst()->abort();
    }
}

void LoopbackHandshake::accept()
{
    while (auto* const socket = server.nextPendingConnection()) {
        socket->setParent(this);
        // A WebSocket frame leaves in two writes, and the second, like any small frame, would wait up to 40
        // ms for the client to acknowledge what came before.
        socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        if (unfinished.size() >= unfinishedLimit) {
            unfinished.takeFirst()->abort();
        }
        unfinished.append(socket);
        connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
            unfinished.removeOne(socket);
            socket->deleteLater();
        });
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { read(socket); });
        QTimer::singleShot(timeLimit, socket, [this, socket] {
            if (unfinished.removeOne(socket)) {
                refuse(socket, "408 Request Timeout");
            }
        });
        read(socket);
    }
}

void LoopbackHandshake::read(QTcpSocket* socket)
{
    QByteArray const head = socket->peek(kMostHead);
    qsizetype const end = head.indexOf("\r\n\r\n");
    if (end < 0 && head.size() < kMostHead) {
        return;
    }
    disconnect(socket, &QTcpSocket::readyRead, this, nullptr);
    unfinished.removeOne(socket);
    QByteArray const problem = end < 0 ? "431 Request Header Fields Too Large" : problemOf(head.left(end));
    if (problem.isEmpty()) {
        emit requested(socket, head.left(head.indexOf("\r\n")));
    } else {
        refuse(socket, problem);
    }
}

QByteArray LoopbackHandshake::problemOf(QByteArray const& head) const
{
    constexpr auto kMalformed = "400 Bad Request";
    QStringList hosts;
    QStringList origins;
    QStringList const lines = QString::fromLatin1(head).split("\r\n"_L1);
    for (QString const& line : lines) {
        if (line.contains(u'\n') || line.contains(u'\r')) {
            return kMalformed; // the upgrader would see two lines where this sees one
        }
    }
    for (QString const& line : lines.sliced(1)) {
        qsizetype const colon = line.indexOf(u':');
        QString const name = line.left(colon).toLower();
        if (colon < 1 || name != name.trimmed()) {
            return kMalformed;
        }
        QString const value = line.mid(colon + 1).trimmed();
        if (name == "host"_L1) {
            hosts.append(value);
        } else if (name == "origin"_L1) {
            origins.append(value);
        }
    }
    bool const isOfAPage = origins.size() > 1 || !origins.join(QString()).isEmpty();
    return isOfAPage || hosts.size() != 1 || !isOurs(hosts.first()) ? "403 Forbidden" : QByteArray();
}

// Where a name of the page's own has been made to point here, only the name tells.
bool LoopbackHandshake::isOurs(QString const& host) const
{
    qsizetype const colon = host.lastIndexOf(u':');
    if (host.mid(colon + 1) != QString::number(port())) {
        return false;
    }
    QString const name = host.left(colon).toLower();
    QHostAddress const address(name);
    return name == "localhost"_L1 || name == "[::1]"_L1 ||
           (address.protocol() == QAbstractSocket::IPv4Protocol && address.isLoopback());
}

void LoopbackHandshake::refuse(QTcpSocket* socket, QByteArray const& status)
{
    // Unread input would turn the close into a reset, and the client might never see the answer.
    socket->readAll();
    socket->write("HTTP/1.1 " + status +
                  "\r\nContent-Type: text/plain; charset=UTF-8\r\nConnection: close\r\nContent-Length: " +
                  QByteArray::number(status.size()) + "\r\n\r\n" + status);
    socket->disconnectFromHost();
}
