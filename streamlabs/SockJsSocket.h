#pragma once

#include <QElapsedTimer>
#include <QJsonObject>
#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>

class QWebSocket;

//! The transport to Streamlabs Desktop: the part of SockJS over a WebSocket (RFC 6455) that the service
//! needs.
//!
//! It hands whole JSON objects up and knows nothing of JSON-RPC. It never reconnects; `open` may be called
//! again at any time and gives up what was there before (for an address that cannot even be tried, such as
//! port 70000, when the 10 s are over). Everything happens on the thread that owns the object.
//!
//! What touches the network is virtual, so that a program can put another transport below the frames.
//!
//! Failures: a socket error is logged, "QAbstractSocket::SocketError" and the error, and shows as
//! `disconnected`. An attempt that has not connected within 10 000 ms is aborted. An attempt that fails
//! sooner is reported no sooner than 1 000 ms after its `open`, since a refused loopback connection fails
//! within microseconds and users of this class reconnect at once. The loss of an established connection is
//! reported without delay.
class SockJsSocket : public QObject
{
    Q_OBJECT

public:
    explicit SockJsSocket(QObject* parent = nullptr);
    //! Gives the connection up without a signal.
    ~SockJsSocket() override;

    //! Connects to ws://HOST:PORT/api/087/mekhdmek/websocket. Ends in `connected` or `disconnected`, unless
    //! another `open` comes first.
    virtual void open(QString const& host, int port);
    //! Closes an established connection normally (code 1000); otherwise does nothing.
    virtual void close();
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
    void onConnected();
    void onDisconnected();
    void onConnectTimeout();

    std::unique_ptr<QWebSocket> socket;
    std::unique_ptr<QTimer> connectTimer;
    //! Holds the report of a quick failure back.
    QTimer failureTimer;
    //! Since `open`; invalid unless an attempt is under way.
    QElapsedTimer attempt;
};
