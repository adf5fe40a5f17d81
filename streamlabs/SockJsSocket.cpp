#include "streamlabs/SockJsSocket.h"

#include "streamlabs/SockJsCodec.h"

#include <QDebug>
#include <QJsonDocument>
#include <QUrl>
#include <QWebSocket>

#include <chrono>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto connectTimeout = 10s;
constexpr auto quietTimeAfterOpen = 1000ms;

#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
constexpr auto errorSignal = &QWebSocket::errorOccurred;
#else
constexpr auto errorSignal = qOverload<QAbstractSocket::SocketError>(&QWebSocket::error);
#endif

} // namespace

SockJsSocket::SockJsSocket(QObject* parent)
    : QObject(parent)
    , socket(std::make_unique<QWebSocket>(QString(), QWebSocketProtocol::Version13))
    , connectTimer(std::make_unique<QTimer>())
{
    // Precise, for a coarse timer may fire a twentieth early.
    connectTimer->setSingleShot(true);
    connectTimer->setTimerType(Qt::PreciseTimer);
    connectTimer->setInterval(connectTimeout);
    failureTimer.setSingleShot(true);
    failureTimer.setTimerType(Qt::PreciseTimer);

    connect(socket.get(), &QWebSocket::connected, this, &SockJsSocket::onConnected);
    connect(socket.get(), &QWebSocket::disconnected, this, &SockJsSocket::onDisconnected);
    connect(socket.get(), &QWebSocket::textMessageReceived, this, &SockJsSocket::onMessageReceived);
    connect(socket.get(), errorSignal, this,
        [](QAbstractSocket::SocketError error) { qCritical() << "QAbstractSocket::SocketError" << error; });
    connect(connectTimer.get(), &QTimer::timeout, this, &SockJsSocket::onConnectTimeout);
    connect(&failureTimer, &QTimer::timeout, this, &SockJsSocket::disconnected);
}

SockJsSocket::~SockJsSocket()
{
    connectTimer->stop();
    disconnect(socket.get(), &QWebSocket::textMessageReceived, this, nullptr);
    disconnect(socket.get(), &QWebSocket::disconnected, this, nullptr);
    disconnect(socket.get(), &QWebSocket::connected, this, nullptr);
    connectTimer.reset();
    socket.reset();
}

void SockJsSocket::open(QString const& host, int port)
{
    failureTimer.stop(); // a failure still held back belongs to an attempt that no longer matters
    attempt.start();
    connectTimer->start();
    socket->open(QUrl(u"ws://%1:%2/api/087/mekhdmek/websocket"_s.arg(host, QString::number(port))));
}

void SockJsSocket::close()
{
    if (socket->isValid()) {
        socket->close(QWebSocketProtocol::CloseCodeNormal);
    }
}

void SockJsSocket::abort()
{
    socket->abort();
}

qint64 SockJsSocket::sendTextMessage(QString const& text)
{
    // At once: otherwise it leaves when the event loop has its next turn, after all that a pressed key draws.
    qint64 const sent = socket->sendTextMessage(text);
    socket->flush();
    return sent;
}

void SockJsSocket::sendJsonMessage(QJsonObject const& object)
{
    sendTextMessage(SockJsCodec::encodeClientFrame(object));
}

bool SockJsSocket::isValid() const
{
    return socket->isValid();
}

void SockJsSocket::onMessageReceived(QString const& text)
{
    auto const inner = SockJsCodec::messageOf(text);
    if (!inner) {
        emit textMessageReceived(text);
        return;
    }
    QJsonParseError error;
    auto const document = QJsonDocument::fromJson(SockJsCodec::unescape(*inner).toUtf8(), &error);
    QJsonObject const object = document.object();
    if (error.error == QJsonParseError::NoError && !object.isEmpty()) {
        emit jsonMessageReceived(object);
    }
}

void SockJsSocket::onConnected()
{
    connectTimer->stop();
    attempt.invalidate();
    emit connected();
}

void SockJsSocket::onDisconnected()
{
    connectTimer->stop();
    if (attempt.isValid()) {
        auto const remaining = quietTimeAfterOpen - std::chrono::milliseconds(attempt.elapsed());
        attempt.invalidate();
        if (remaining > 0ms) {
            failureTimer.start(remaining);
            return;
        }
    }
    emit disconnected();
}

void SockJsSocket::onConnectTimeout()
{
    socket->abort();
    // A URL that the socket refuses to try, such as one with port 70000, leaves nothing to abort and no
    // signal. Otherwise there was one, and who heard it may have opened again: that attempt has its timer
    // running.
    if (attempt.isValid() && !connectTimer->isActive()) {
        onDisconnected();
    }
}
