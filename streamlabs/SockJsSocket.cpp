#include "streamlabs/SockJsSocket.h"

#include "streamlabs/SockJsCodec.h"

#include <QDebug>
#include <QJsonDocument>
#include <QUrl>

#include <chrono>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using std::chrono::milliseconds;

namespace {

constexpr auto kConnectTimeout = 10s;
constexpr auto kQuietTimeAfterOpen = 1000ms;
constexpr int kHeartbeatsToMiss = 3;
// Heartbeats closer than this, and timers later than this, tell of a standstill of ours.
constexpr auto kStandstill = 1000ms;

#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
constexpr auto kErrorSignal = &QWebSocket::errorOccurred;
#else
constexpr auto kErrorSignal = qOverload<QAbstractSocket::SocketError>(&QWebSocket::error);
#endif

} // namespace

SockJsSocket::SockJsSocket(QObject* parent) : QObject(parent)
{
    // Precise, for a coarse timer may fire a twentieth early.
    for (QTimer* timer : {&connectTimer, &failureTimer}) {
        timer->setSingleShot(true);
        timer->setTimerType(Qt::PreciseTimer);
    }
    connectTimer.setObjectName(u"connectTimer"_s);
    connect(&connectTimer, &QTimer::timeout, this, &SockJsSocket::onTimeout);
    connect(&failureTimer, &QTimer::timeout, this, &SockJsSocket::reportEnd);
    renewSocket();
}

SockJsSocket::~SockJsSocket() = default;

// A new one each time: nothing of the connection before can reach the next, even when we are inside of it.
void SockJsSocket::renewSocket()
{
    connectTimer.stop();
    failureTimer.stop();
    heartbeatDistance = 0ms;
    sinceHeartbeat.invalidate();
    socket.renew();
    socket.on(&QWebSocket::connected, this, [this] { onConnected(); });
    socket.on(&QWebSocket::disconnected, this, [this] { onDisconnected(); });
    socket.on(
        &QWebSocket::textMessageReceived, this, [this](QString const& text) { onMessageReceived(text); });
    socket.on(&QWebSocket::textFrameReceived, this, [this](QString const&, bool) { onFrame(); });
    socket.on(&QWebSocket::binaryFrameReceived, this, [this](QByteArray const&, bool) { onFrame(); });
    socket.on(&QWebSocket::aboutToClose, this, [this] { awaitFrame(); });
    socket.on(kErrorSignal, this,
        [](QAbstractSocket::SocketError error) { qCritical() << "QAbstractSocket::SocketError" << error; });
}

void SockJsSocket::open(QString const& host, int port)
{
    renewSocket();
    isUp = false;
    attempt.start();
    awaitFrame();
    socket.open(QUrl(u"ws://%1:%2/api/087/mekhdmek/websocket"_s.arg(host, QString::number(port))));
}

void SockJsSocket::close()
{
    if (socket->isValid()) {
        attempt.invalidate();
        socket->close(QWebSocketProtocol::CloseCodeNormal);
    }
}

void SockJsSocket::abort()
{
    renewSocket();
    if (isUp) {
        reportEnd();
    }
}

qint64 SockJsSocket::sendTextMessage(QString const& text)
{
    // At once: otherwise it leaves when the event loop has its next turn, after all that a pressed key draws.
    QWebSocket* const used = socket.get(); // outlives us when `disconnected` comes from inside
    qint64 const sent = used->sendTextMessage(text);
    used->flush();
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
    if (text == "h"_L1) {
        onHeartbeat();
    }
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
    isUp = true;
    emit connected();
}

void SockJsSocket::onDisconnected()
{
    connectTimer.stop();
    if (attempt.isValid() && attempt.elapsed() < kQuietTimeAfterOpen.count()) {
        failureTimer.start(kQuietTimeAfterOpen - milliseconds(attempt.elapsed()));
    } else {
        reportEnd();
    }
}

void SockJsSocket::reportEnd()
{
    isUp = false;
    emit disconnected();
}

// ---- Servers that say nothing

void SockJsSocket::awaitFrame()
{
    waiting.start();
    connectTimer.start(heartbeatDistance > 0ms ? kHeartbeatsToMiss * heartbeatDistance : kConnectTimeout);
}

void SockJsSocket::onFrame()
{
    if (heartbeatDistance > 0ms) {
        awaitFrame();
    } else {
        connectTimer.stop();
    }
}

void SockJsSocket::onHeartbeat()
{
    if (!sinceHeartbeat.isValid()) {
        sinceHeartbeat.start();
    } else if (milliseconds const distance(sinceHeartbeat.elapsed()); distance >= kStandstill) {
        sinceHeartbeat.start();
        heartbeatDistance = distance;
        awaitFrame();
    }
}

void SockJsSocket::onTimeout()
{
    milliseconds const late = milliseconds(waiting.elapsed()) - connectTimer.intervalAsDuration();
    if (late > kStandstill) {
        awaitFrame(); // it was this process that slept
        return;
    }
    if (connectTimer.interval() > 0) {
        waiting.start();
        connectTimer.start(0ms); // what has come at the last moment is read first
        return;
    }
    if (heartbeatDistance > 0ms) {
        qWarning() << "[SockJsSocket] nothing came in the time of" << kHeartbeatsToMiss << "heartbeats,"
                   << heartbeatDistance.count() << "ms each";
    }
    renewSocket();
    onDisconnected();
}
