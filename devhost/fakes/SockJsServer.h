#pragma once

#include "devhost/fakes/LoopbackHandshake.h"

#include <QList>
#include <QMap>
#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QWebSocketServer>

#include <chrono>

class QTcpSocket;
class QTimer;
class QWebSocket;

//! The server side of SockJS over WebSocket (SockJS protocol 0.3.3, RFC 6455), on the loopback interface
//! only, with faults that can be switched on. It knows nothing of what the messages mean.
//!
//! Endpoint: ws://127.0.0.1:<port>/api/<three digits>/<session without a dot>/websocket; any other path is
//! answered with a plain HTTP 404, and a page in a browser is refused (`LoopbackHandshake`).
//!
//! Server frames: `o` after the upgrade, `h` as heartbeat, `a["message",…]` for messages and `c[3000,"Go
//! away!"]` before a polite close. Client frames: a JSON array of strings, or one JSON string. An empty frame
//! is ignored, anything else closes the connection with code 1002, and more than 64 MiB with code 1009 and a
//! line in the log.
//!
//! Clients are named by numbers that start at 1 and are never used again. Everything runs on the thread of
//! the object; nothing blocks.
class SockJsServer : public QObject
{
    Q_OBJECT

public:
    //! What happens to the upgrade request of a new TCP connection.
    enum class Handshake {
        Answer,
        //! The connection is accepted and the request is never answered.
        NeverAnswer,
        //! Every path is answered with 404.
        NotFound,
    };

    explicit SockJsServer(QObject* parent = nullptr);
    //! Drops every connection, without a signal.
    ~SockJsServer() override;

    //! Listens on 127.0.0.1; \a port 0 takes a free one. False (and a warning in the log) when the port is
    //! taken or the server listens already.
    bool listen(quint16 port = 0);
    //! Polite end: sends the close frame to every client, closes the connections and stops listening. The
    //! clients are gone from here at once, although their sockets finish in the background.
    void close();
    //! Breaks every connection without a farewell, as a crash or a sleeping machine does. Listening goes on.
    void drop();
    bool isListening() const;
    //! The port, 0 while not listening.
    quint16 port() const;
    QList<int> clients() const { return clientsById.keys(); }
    int clientCount() const { return static_cast<int>(clientsById.size()); }

    //! Sends one message in a frame of its own. An unknown \a client is ignored.
    void send(int client, QString const& message);
    //! Sends several messages in one frame, as a server does that flushes a backlog.
    void sendBacklog(int client, QStringList const& messages);

    //! Time between two heartbeats of a connection, 25 s by default; 0 switches them off. Applies at once.
    void setHeartbeatInterval(std::chrono::milliseconds interval);

    //! \name Faults
    //!@{
    //! For the connections that come from now on; a connection left unanswered stays so.
    void setHandshake(Handshake wanted) { answer = wanted; }
    //! Sends \a frame as the text of one WebSocket message to every client, whatever it holds.
    void sendRawFrame(QString const& frame);
    //! Writes \a bytes between two WebSocket frames of every client's TCP connection.
    void sendRawBytes(QByteArray const& bytes);
    //!@}

signals:
    void clientConnected(int client);
    void clientDisconnected(int client);
    //! One message, already taken out of its frame. Frames are only looked into while somebody listens.
    void messageReceived(int client, QString const& message);
    //! \name Traffic
    //! Every frame as it went over the wire, for an inspector.
    //!@{
    void frameReceived(int client, QString const& frame);
    void frameSent(int client, QString const& frame);
    //!@}

private:
    struct Client
    {
        QWebSocket* webSocket = nullptr;
        QTcpSocket* tcpSocket = nullptr;
        QTimer* heartbeat = nullptr;
    };

    void answerRequest(QTcpSocket* socket, QByteArray const& requestLine);
    void acceptWebSockets();
    void receiveFrame(int client, QString const& frame);
    void sendFrame(int client, QString const& frame);
    void breakOff(int client);
    QWebSocket* forget(int client);

    LoopbackHandshake handshake;
    QWebSocketServer upgrader;
    QSet<QTcpSocket*> notUpgraded;
    QMap<int, Client> clientsById;
    int lastClient = 0;
    Handshake answer = Handshake::Answer;
    std::chrono::milliseconds heartbeatInterval = std::chrono::seconds{25};
};
