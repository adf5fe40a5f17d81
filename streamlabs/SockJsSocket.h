#pragma once

#include "relay/WebSocketClient.h"

#include <QElapsedTimer>
#include <QJsonObject>
#include <QObject>
#include <QString>
#include <QTimer>

#include <chrono>

//! The transport to Streamlabs Desktop: the part of SockJS over a WebSocket (RFC 6455) that the service
//! needs.
//!
//! It hands whole JSON objects up and knows nothing of JSON-RPC. It never reconnects; `open` may be called
//! again at any time and gives up what was there before, without a word. Everything happens on the thread
//! that owns the object. Each operation is allowed, and so is deletion, from inside of every signal, and of
//! whatever else a signal or an operation leads to.
//!
//! What touches the network is virtual, so that a program can put another transport below the frames.
//!
//! Failures: a socket error is logged, "QAbstractSocket::SocketError" and the error, and shows as
//! `disconnected`. An attempt without a frame from the server 10 000 ms after its `open` is aborted; so is a
//! connection that has carried two heartbeats ("h") and then nothing for three times the time between the
//! last two, with a warning (those less than 1 000 ms apart count as one, for after a standstill of this
//! process they come together), and one that gets a frame of more than 64 MiB. What fails or is lost less
//! than 1 000 ms after its `open`, established or not, is reported 1 000 ms after it, since that can be
//! within microseconds and users of this class reconnect at once. Any other loss is reported without delay.
class SockJsSocket : public QObject
{
    Q_OBJECT

public:
    explicit SockJsSocket(QObject* parent = nullptr);
    //! Gives the connection up without a signal.
    ~SockJsSocket() override;

    //! Connects to ws://HOST:PORT/api/087/mekhdmek/websocket. Ends in `connected` or `disconnected`, unless
    //! another `open` comes first. To hear of the end of what was there before, `abort` that first.
    virtual void open(QString const& host, int port);
    //! Closes an established connection normally (code 1000), which is reported as soon as it is done;
    //! otherwise does nothing.
    virtual void close();
    //! Ends an established connection or an attempt at once. When `connected` was the last that was told,
    //! `disconnected` comes from inside, even if it was being held back; otherwise nothing is reported.
    virtual void abort();
    //! Sends \a text as it is. Returns the number of bytes sent. It leaves now, and when that shows that the
    //! connection is lost, `disconnected` comes from inside.
    virtual qint64 sendTextMessage(QString const& text);
    //! Sends \a object in a SockJS client frame, `["…"]`.
    void sendJsonMessage(QJsonObject const& object);
    //! Whether the connection is established.
    virtual bool isValid() const;

signals:
    void connected();
    void disconnected();
    //! A frame that does not hold one message, as it came: "o", "h", `c[…]` and whatever else.
    void textMessageReceived(QString const& text);
    //! The JSON object of a frame with one message. Frames `a["…"]` that hold anything else, or an empty
    //! object, are dropped without a word.
    void jsonMessageReceived(QJsonObject const& object);

private slots:
    void onMessageReceived(QString const& text);

private:
    void renewSocket();
    void onConnected();
    void onDisconnected();
    void reportEnd();
    void awaitFrame();
    void onFrame();
    void onHeartbeat();
    void onTimeout();

    WebSocketClient socket;
    //! Runs until the first frame has come and, when the distance of the heartbeats is known, from each
    //! frame to the next.
    QTimer connectTimer{this};
    //! Since `connectTimer` was started.
    QElapsedTimer waiting;
    QElapsedTimer sinceHeartbeat;
    //! 0 until two heartbeats have come.
    std::chrono::milliseconds heartbeatDistance{};
    //! Holds the report of an early end back.
    QTimer failureTimer{this};
    //! Since `open`; invalid once its end is our own wish.
    QElapsedTimer attempt;
    //! Whether `connected` was the last that was told.
    bool isUp = false;
};
