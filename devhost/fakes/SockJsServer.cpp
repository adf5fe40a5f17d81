#include "devhost/fakes/SockJsServer.h"

#include "devhost/fakes/DevHostLog.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QMetaMethod>
#include <QRegularExpression>
#include <QTcpSocket>
#include <QTimer>
#include <QWebSocket>

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

constexpr quint64 kMaxClientFrame = 64ULL * 1024 * 1024;

bool isEndpoint(QByteArray const& requestLine)
{
    static QRegularExpression const endpoint(
        uR"(^GET /api/[0-9]{3}/[^/.?#\s]+/websocket(\?\S*)? HTTP/1\.[01]$)"_s);
    return endpoint.match(QString::fromLatin1(requestLine)).hasMatch();
}

QString messageFrame(QStringList const& messages)
{
    return u'a' + QString::fromUtf8(
                      QJsonDocument(QJsonArray::fromStringList(messages)).toJson(QJsonDocument::Compact));
}

// The messages in a client frame, or nothing when the frame is broken.
std::optional<QStringList> messagesOf(QString const& frame)
{
    // QJsonDocument reads no bare string, therefore the array around it.
    QJsonArray const wrapped = QJsonDocument::fromJson("[" + frame.toUtf8() + "]").array();
    if (wrapped.size() != 1) {
        return std::nullopt;
    }

    QJsonArray const messages = wrapped.first().isArray() ? wrapped.first().toArray() : wrapped;
    QStringList texts;
    for (QJsonValue const message : messages) {
        if (!message.isString()) {
            return std::nullopt;
        }
        texts.append(message.toString());
    }
    return texts;
}

} // namespace

SockJsServer::SockJsServer(QObject* parent)
    : QObject(parent), upgrader(u"SockJS"_s, QWebSocketServer::NonSecureMode)
{
    connect(&handshake, &LoopbackHandshake::requested, this, &SockJsServer::answerRequest);
    connect(&upgrader, &QWebSocketServer::newConnection, this, &SockJsServer::acceptWebSockets);
}

SockJsServer::~SockJsServer()
{
    blockSignals(true); // an owner that is going as well must not hear of it
    drop();
}

bool SockJsServer::listen(quint16 port)
{
    if (handshake.listen(port)) {
        return true;
    }
    qCWarning(devHostLog) << "the stand-in cannot listen on port" << port << handshake.errorString();
    return false;
}

void SockJsServer::close()
{
    handshake.close();
    for (int const client : clients()) {
        sendFrame(client, u"c[3000,\"Go away!\"]"_s);
        if (QWebSocket* webSocket = forget(client)) {
            webSocket->close();
        }
    }
    drop();
}

void SockJsServer::drop()
{
    for (int const client : clients()) {
        if (QWebSocket* webSocket = forget(client)) {
            webSocket->abort();
        }
    }
    handshake.drop();
    // A copy: each abort takes its socket out of the set.
    for (QSet<QTcpSocket*> const sockets = notUpgraded; QTcpSocket * socket : sockets) {
        socket->disconnect(&upgrader); // which would read the request next
        socket->abort();
    }
}

bool SockJsServer::isListening() const
{
    return handshake.isListening();
}

quint16 SockJsServer::port() const
{
    return handshake.port();
}

void SockJsServer::send(int client, QString const& message)
{
    sendBacklog(client, {message});
}

void SockJsServer::sendBacklog(int client, QStringList const& messages)
{
    sendFrame(client, messageFrame(messages));
}

void SockJsServer::setHeartbeatInterval(std::chrono::milliseconds interval)
{
    heartbeatInterval = interval;
    for (Client const& client : std::as_const(clientsById)) {
        if (interval.count() > 0) {
            client.heartbeat->start(interval);
        } else {
            client.heartbeat->stop();
        }
    }
}

void SockJsServer::sendRawFrame(QString const& frame)
{
    auto const clients = clientsById; // who hears of a frame may drop some of them
    std::for_each(clients.keyBegin(), clients.keyEnd(), [&](int client) { sendFrame(client, frame); });
}

void SockJsServer::sendRawBytes(QByteArray const& bytes)
{
    for (Client const& client : std::as_const(clientsById)) {
        if (client.tcpSocket->isWritable()) { // one that has said goodbye is still here until all is written
            client.tcpSocket->write(bytes);
        }
    }
}

void SockJsServer::answerRequest(QTcpSocket* socket, QByteArray const& requestLine)
{
    notUpgraded.insert(socket);
    connect(socket, &QTcpSocket::disconnected, this, [this, socket] { notUpgraded.remove(socket); });
    if (answer == Handshake::NeverAnswer) {
        return;
    }
    if (answer == Handshake::NotFound || !isEndpoint(requestLine)) {
        LoopbackHandshake::refuse(socket, "404 Not Found");
    } else {
        upgrader.handleConnection(socket);
    }
}

void SockJsServer::acceptWebSockets()
{
    while (QWebSocket* webSocket = upgrader.nextPendingConnection()) {
        // The WebSocket does not tell its TCP socket, but on the loopback interface the port of the peer
        // does.
        auto const tcpSocket = std::find_if(notUpgraded.cbegin(), notUpgraded.cend(),
            [webSocket](QTcpSocket const* socket) { return socket->peerPort() == webSocket->peerPort(); });
        if (tcpSocket == notUpgraded.cend()) { // it went away during the upgrade
            delete webSocket;                  // before its TCP socket, which has its end coming
            continue;
        }

        int const id = ++lastClient;
        Client const client{webSocket, *tcpSocket, new QTimer(webSocket)};
        notUpgraded.erase(tcpSocket);
        client.tcpSocket->disconnect(this);
        client.tcpSocket->setParent(webSocket);
        clientsById.insert(id, client);

        webSocket->setMaxAllowedIncomingFrameSize(kMaxClientFrame);
        webSocket->setMaxAllowedIncomingMessageSize(kMaxClientFrame);
        connect(webSocket, &QWebSocket::textMessageReceived, this,
            [this, id](auto const& frame) { receiveFrame(id, frame); });
        connect(webSocket, &QWebSocket::binaryMessageReceived, this, [this, id] { breakOff(id); });
        connect(webSocket, &QWebSocket::disconnected, this, [this, id] {
            QWebSocket* const gone = forget(id);
            if (gone->closeCode() == QWebSocketProtocol::CloseCodeTooMuchData) {
                qCWarning(devHostLog)
                    << "the stand-in: a connection has ended over a frame that was too large";
            }
            gone->deleteLater();
        });
        connect(client.heartbeat, &QTimer::timeout, this, [this, id] { sendFrame(id, u"h"_s); });
        if (heartbeatInterval.count() > 0) {
            client.heartbeat->start(heartbeatInterval);
        }

        emit clientConnected(id);
        sendFrame(id, u"o"_s);
    }
}

void SockJsServer::receiveFrame(int client, QString const& frame)
{
    emit frameReceived(client, frame);
    if (frame.isEmpty() || !isSignalConnected(QMetaMethod::fromSignal(&SockJsServer::messageReceived))) {
        return;
    }
    std::optional<QStringList> const messages = messagesOf(frame);
    if (!messages) {
        breakOff(client);
        return;
    }
    for (QString const& message : *messages) {
        if (clientsById.contains(client)) { // a receiver may drop the connection
            emit messageReceived(client, message);
        }
    }
}

void SockJsServer::sendFrame(int client, QString const& frame)
{
    auto const found = clientsById.constFind(client);
    if (found == clientsById.cend()) {
        return;
    }
    found->webSocket->sendTextMessage(frame);
    emit frameSent(client, frame);
}

// The connection ends because of a frame that SockJS does not know.
void SockJsServer::breakOff(int client)
{
    if (QWebSocket* webSocket = forget(client)) {
        webSocket->close(QWebSocketProtocol::CloseCodeProtocolError, u"Broken framing."_s);
    }
}

// Takes a client out of the books; its socket then only waits for its own end. Null when the client is gone
// already, which a receiver of our signals may have brought about.
QWebSocket* SockJsServer::forget(int client)
{
    QWebSocket* const webSocket = clientsById.value(client).webSocket;
    if (!webSocket) {
        return nullptr;
    }
    clientsById.take(client).heartbeat->stop();
    webSocket->disconnect(this);
    connect(webSocket, &QWebSocket::disconnected, webSocket, &QObject::deleteLater);
    emit clientDisconnected(client);
    return webSocket;
}
