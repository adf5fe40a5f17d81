#pragma once

#include "devhost/fakes/LoopbackHandshake.h"
#include "relay/ZoInterfaceRcc.h"

#include <QHash>
#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QWebSocketServer>

//! The host's relay: a WebSocket server (RFC 6455) on the loopback interface that carries commands and
//! published payloads between action objects, services and the host.
//!
//! Each message is one JSON object in one text frame, {"task": command, …}. What the relay understands:
//! - "remote.command.register.to.server": acknowledged. A new client is acknowledged without asking.
//! - "remote.command.subscribe.subject" with "subject", "remote.command.subscribe.subjects" with "subjects".
//! - every command that a service has registered a handler for: handed to the handler.
//! - "remote.command.update.function.key.led.App.Control" with "appName", "functionName" and "status" (bool),
//!   and "LaunchSettingPage" with "params": {"page": number}: what the host itself does.
//!
//! Acknowledgements repeat the command, {"task": command, "success": true, "subject" or "subjects"}. Anything
//! else is logged and answered with {"task": what came, "error": why}.
//!
//! What is published is serialised once and sent to each subscriber as it comes. Programs of this machine are
//! served, and no page in a browser (`LoopbackHandshake`). A client that sends more than 64 MiB in one
//! message, or leaves more than that unread, is dropped with a line in the log.
//!
//! Everything runs on the thread of the object.
class RelayServer : public QObject, public ZoInterfaceRcc
{
    Q_OBJECT

public:
    explicit RelayServer(QObject* parent = nullptr);
    ~RelayServer() override;

    //! Listens on 127.0.0.1; \a port 0 takes a free one. False, and a line in the log, when the port is
    //! taken.
    bool listen(quint16 port = 0);
    //! Closes every connection and stops listening. Handlers stay.
    void close();
    //! 0 while not listening.
    quint16 port() const { return handshake.port(); }
    int clientCount() const { return static_cast<int>(clients.size()); }
    //! The number of clients that get what is published on \a subject.
    int subscriberCount(QString const& subject) const;

    //! What a client has called itself in a subscription, "category" and "id"; empty when it has not.
    QString clientName(int number) const { return names.value(number); }

    //! Whether a new client is acknowledged at once (the default) or has to ask for it.
    void setAcknowledgesAtOnce(bool atOnce) { acknowledgesAtOnce = atOnce; }

    void addCommandHandler(QString const& command, CommandHandler handler) override;
    void removeCommandHandler(QString const& command) override;
    void publish(QString const& subject, QJsonObject const& payload) override;
    void dispatchEvent(QJsonObject const& event) override;

    //! Sends \a text to every client as it is, whatever it holds.
    void sendToAll(QString const& text);
    //! Breaks every connection without a close handshake. Listening goes on.
    void drop();

signals:
    void clientCountChanged();
    //! A client or the host has sent a command that the relay understands.
    void commandReceived(QJsonObject const& command);
    void published(QString const& subject, QJsonObject const& payload);
    //! The LED of the key for \a functionName ("STREAM", "RECORD") of \a appName ("SLOBS") was switched.
    void ledChanged(QString const& appName, QString const& functionName, bool on);
    //! An action asks for the host's settings at this page.
    void settingsPageRequested(int page);
    //! \name Traffic
    //! Every message for an inspector, which costs nothing while nobody is connected. Clients are numbered
    //! from 1 in the order of their connections; 0 is a service in the host's process, which calls.
    //!@{
    void messageReceived(int client, QString const& text);
    void messageSent(int client, QString const& text);
    //!@}

private slots:
    void receive(QWebSocket* client, QString const& text);

private:
    void acceptClients();
    //! What is wrong with \a command, or nothing. \a client is null for the host's own commands.
    QString handle(QWebSocket* client, QJsonObject const& command);
    //! Logs and answers \a what is not understood.
    void reject(QWebSocket* client, QJsonValue const& task, QString const& problem, QString const& what);
    void subscribe(QWebSocket* client, QStringList const& subjects, QJsonObject const& command);
    void send(QWebSocket* client, QJsonObject const& message);
    //! Nothing is sent to a client that is gone.
    void sendText(QWebSocket* client, QString const& text);

    LoopbackHandshake handshake;
    QWebSocketServer upgrader;
    QList<QWebSocket*> clients;
    QHash<QWebSocket*, int> numbers;
    QHash<int, QString> names;
    int lastNumber = 0;
    QHash<QString, QList<QWebSocket*>> subscribersOf;
    QHash<QString, CommandHandler> handlers;
    bool acknowledgesAtOnce = true;
};
