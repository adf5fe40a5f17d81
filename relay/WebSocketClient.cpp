#include "relay/WebSocketClient.h"

#include <QDebug>
#include <QUrl>

namespace {

struct Deleter
{
    //! False only when none of the socket's signals is on the stack.
    bool later = true;

    void operator()(QWebSocket* socket) const
    {
        if (later) {
            socket->deleteLater();
        } else {
            delete socket;
        }
    }
};

} // namespace

WebSocketClient::WebSocketClient()
{
    renew();
}

WebSocketClient::~WebSocketClient()
{
    giveUp();
}

void WebSocketClient::renew()
{
    giveUp();
    socket.reset(new QWebSocket(QString(), QWebSocketProtocol::Version13), Deleter());
    socket->setMaxAllowedIncomingFrameSize(kMaxSize);
    socket->setMaxAllowedIncomingMessageSize(kMaxSize);
    auto const warn = [ending = socket.get()] {
        if (ending->closeCode() == QWebSocketProtocol::CloseCodeTooMuchData) {
            qWarning() << "[WebSocketClient] too much data:" << ending->requestUrl().authority()
                       << ending->closeReason();
        }
    };
    // Its TCP socket makes it emit this a second time.
    QObject::connect(socket.get(), &QWebSocket::aboutToClose, socket.get(), warn, Qt::SingleShotConnection);
}

void WebSocketClient::open(QUrl const& url)
{
    socket->open(url);
    // QWebSocket takes a frame out of its TCP socket when it is complete. That is what the TCP socket has to
    // be able to hold; it would hold anything, and does so while a slot of ours runs an event loop.
    socket->setReadBufferSize(kMaxSize);
}

void WebSocketClient::giveUp()
{
    if (!socket) {
        return;
    }
    socket->disconnect();
    socket->abort();
    // Whoever is inside of one of its signals has a share, and the outermost of them, which goes last,
    // leaves the deletion to the event loop that it returns to.
    std::get_deleter<Deleter>(socket)->later = socket.use_count() > 1;
    socket.reset();
}
