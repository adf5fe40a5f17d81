#pragma once

#include <QJsonObject>
#include <QString>

#include <functional>

class QWebSocket;

//! The host's relay as the package's service reaches it: in-process calls, no socket of its own.
//!
//! Action objects reach the same relay from outside: a WebSocket server (RFC 6455) at ws://127.0.0.1:PORT,
//! PORT being the "port" of `IBuiltInPackageLibrary::init`. Each message is one JSON object in one text
//! frame, and "task" names what it is:
//! - The host acknowledges a new client, {"task": "remote.command.register.to.server", "success": true}. An
//!   action waits for that before it says anything; after 500 ms without it asks, with the same "task" and an
//!   empty "id" and "category".
//! - {"task": "remote.command.subscribe.subject", "subject": name, …} or "remote.command.subscribe.subjects"
//! with
//!   "subjects": [names]: from now on the client gets what is published on them.
//! - Every other command goes to the handler that is registered for it, or is one of the host's own, such as
//!   {"task": "LaunchSettingPage", "params": {"page": 7}}, on which the host shows the page where the user
//!   links Streamlabs Desktop.
//!
//! Part of the contract with the host, which implements it and is compiled apart from the package: the order
//! of the operations is binary interface.
//!
//! Lifetime: the host owns the object and passes it to `IBuiltInPackageLibrary::startService`. It stays valid
//! until `stopService` has returned or the library object has been deleted, whichever comes first. The
//! package never deletes it. A host that deletes it earlier all the same destroys the handlers with it, from
//! which the package sees that it is gone.
//!
//! Threads: the host's GUI thread only. Operations may be called from inside a handler. From inside an
//! operation, and from inside a handler, the host may do with the package whatever it may do otherwise: stop
//! its service, start it anew, send it tasks, delete it. What the service was about to tell then stays
//! untold. (To unload the library the host waits until the call has returned, of course.)
//!
//! Failures: nothing is thrown, nothing is answered; what cannot be done is the host's to log.
class ZoInterfaceRcc
{
public:
    //! Called for each command of the registered name. \a connection is the relay client that sent the
    //! command; it belongs to the relay, is valid during the call only, and may be null when the command came
    //! from the host itself. \a command is the whole object as it came, {"task": name, …arguments}.
    using CommandHandler = std::function<void(QWebSocket* connection, QJsonObject const& command)>;

    //! Registers \a handler for the relay command \a command, such as "remote.command.slobs.service.task".
    //! One handler per command: a second registration replaces the first.
    virtual void addCommandHandler(QString const& command, CommandHandler handler) = 0;
    //! Drops the handler of \a command and destroys it before returning, for its code lives in the package,
    //! which may be unloaded next; a handler that drops itself is destroyed when it returns. An unknown
    //! command does nothing.
    virtual void removeCommandHandler(QString const& command) = 0;
    //! Sends \a payload, unchanged and as one text message, to every relay client that has subscribed to
    //! \a subject, such as "remote.subject.streamlabs.response".
    virtual void publish(QString const& subject, QJsonObject const& payload) = 0;
    //! Hands the host a command of its own vocabulary as if a relay client had sent it, for example
    //! {"task": "remote.command.update.function.key.led.App.Control", "sender": "", "appName": "SLOBS",
    //! "functionName": "STREAM" or "RECORD", "status": bool} to switch a key LED.
    virtual void dispatchEvent(QJsonObject const& event) = 0;

    ZoInterfaceRcc(ZoInterfaceRcc const&) = delete;
    ZoInterfaceRcc& operator=(ZoInterfaceRcc const&) = delete;

protected:
    ZoInterfaceRcc() = default;
    //! Not virtual: only the host, which knows the real type, deletes it.
    ~ZoInterfaceRcc() = default;
};
