#pragma once

#include "relay/ZoInterfaceRcc.h"

#include <QJsonObject>
#include <QObject>
#include <QString>

#include <chrono>
#include <memory>

class SockJsSocket;

//! The one owner of the link to Streamlabs Desktop.
//!
//! It keeps the connection open (reconnecting at once after every loss, until `closeSlobs`), authenticates,
//! subscribes to the events of streaming, recording, scenes, items, sources and collections, and keeps what
//! it learns. Actions reach it over the host's relay: they send tasks as the relay command
//! "remote.command.slobs.service.task", and it publishes on the relay subject
//! "remote.subject.streamlabs.response", both in the forms of SlobsMessages. The key LEDs for
//! stream and record follow through the relay's event dispatch.
//!
//! The lists go out as often as the relay can bear, see ListPacer; statuses and the auth state always at
//! once.
//!
//! Whatever it calls may stop it, delete it, close its link or send it elsewhere: what it was about to tell
//! then stays untold, but for statuses that were lost. An answer or an event is taken in as a whole before
//! any of it is told.
//!
//! Order of calls: `init`, then `connectSlobs` and `closeSlobs` as often as wanted, `deinit`, deletion.
//! Everything happens on the thread that owns the object.
//!
//! Failures are logged at critical level and otherwise ignored; what an action learns is the published auth
//! state. Requests made while not connected are dropped with a warning.
class StreamlabsService : public QObject
{
    Q_OBJECT

public:
    using CommandHandler = ZoInterfaceRcc::CommandHandler;

    explicit StreamlabsService(QObject* parent = nullptr);
    //! Drops the relay handler if `deinit` has not, since its code may be unloaded next.
    ~StreamlabsService() override;

    //! Binds the service to the host's relay until `deinit` or destruction. A relay that goes earlier is not
    //! called any more.
    void init(ZoInterfaceRcc* newRelay);
    //! Connects to Streamlabs Desktop on 127.0.0.1. A \a port below 1 or an empty \a token changes nothing
    //! but the log. A link that is up with another token or port ends first, and is reported lost as any
    //! other; it then counts as linked once the new token has been accepted.
    void connectSlobs(QString const& token, int port);
    //! Closes the link and forgets everything, token and port included. A status that was known is published
    //! as empty, for keys and LEDs must not stay lit.
    void closeSlobs();
    void deinit();

    //! Registers \a handler for the relay command \a command. Nothing without a relay.
    void addRccTaskHandler(QString const& command, CommandHandler handler);
    //! Publishes \a payload on the relay subject \a subject. Nothing without a relay.
    void sendRccMessage(QString const& subject, QJsonObject const& payload);
    //! Hands \a event to the relay's event dispatch. Nothing without a relay.
    void dispatchRccEvent(QJsonObject const& event);

protected:
    //! The transport that `init` binds to. Never null.
    virtual std::unique_ptr<SockJsSocket> makeSocket() const;
    //! Time since any moment, monotonic: what the pace of the lists goes by.
    virtual std::chrono::nanoseconds now() const;

private:
    class Impl;

    //! The host's relay while it is there, otherwise null.
    ZoInterfaceRcc* relay();

    std::unique_ptr<Impl> d;
    ZoInterfaceRcc* rcc = nullptr;
};
