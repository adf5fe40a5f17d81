#pragma once

#include <QObject>
#include <QWebSocket>

#include <memory>
#include <utility>

class QUrl;

//! The WebSocket (RFC 6455, version 13, no origin) under each link of the package.
//!
//! It adds two things to QWebSocket. What it stores is bounded: a frame or message of more than `maxSize`
//! ends the connection with a warning in the log, for a frame when its header has come. And its owner may
//! replace or destroy it from inside of one of its signals: the QWebSocket, which is then still at work, is
//! silenced at once and deleted by the event loop. Otherwise it is deleted at once.
//!
//! Everything on the thread of the owner.
class WebSocketClient
{
public:
    //! Bytes; of a message that has several frames, its length as UTF-16.
    static constexpr quint64 kMaxSize = 64ULL * 1024 * 1024;

    WebSocketClient();
    //! Aborts the connection without a signal.
    ~WebSocketClient();
    WebSocketClient(WebSocketClient const&) = delete;
    WebSocketClient& operator=(WebSocketClient const&) = delete;

    //! Puts a new QWebSocket in the place of the present one, which is aborted without a signal. What was
    //! connected by `on` has to be connected again.
    void renew();
    //! As QWebSocket::open.
    void open(QUrl const& url);

    QWebSocket* get() const { return socket.get(); }
    QWebSocket* operator->() const { return socket.get(); }

    //! Connects \a signal of the present QWebSocket to \a slot for as long as \a context lives. The only way
    //! to connect anything that may end in the destruction of this object.
    template <typename Signal, typename Slot>
    void on(Signal signal, QObject const* context, Slot slot)
    {
        QObject::connect(socket.get(), signal, context,
            [emitting = std::weak_ptr(socket), slot = std::move(slot)](auto const&... values) -> void {
                auto const held = emitting.lock();
                slot(values...);
            });
    }

private:
    void giveUp();

    //! Shared with the slots that are running.
    std::shared_ptr<QWebSocket> socket;
};
