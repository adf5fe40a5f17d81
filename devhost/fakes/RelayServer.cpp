#include "devhost/fakes/RelayServer.h"

#include "devhost/fakes/DevHostLog.h"
#include "relay/ZoRemoteCommands.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QMetaMethod>
#include <QWebSocket>

#include <utility>

using namespace Qt::StringLiterals;
using namespace ZoRemoteCommands;

namespace {

//! Bytes of a message that a client sends, and of what it has been sent and does not read.
constexpr qint64 kMost = 64LL * 1024 * 1024;

QString compactText(QJsonObject const& message)
{
    return QString::fromUtf8(QJsonDocument(message).toJson(QJsonDocument::Compact));
}

} // namespace

RelayServer::RelayServer(QObject* parent)
    : QObject(parent), upgrader(u"LUMEN relay"_s, QWebSocketServer::NonSecureMode)
{
    connect(&handshake, &LoopbackHandshake::requested, &upgrader, &QWebSocketServer::handleConnection);
    connect(&upgrader, &QWebSocketServer::newConnection, this, &RelayServer::acceptClients);
}

RelayServer::~RelayServer()
{
    for (auto* client : std::as_const(clients)) {
        client->disconnect(this);
        delete client; // before the server, which owns the TCP sockets as well
    }
}

bool RelayServer::listen(quint16 port)
{
    if (!handshake.listen(port)) {
        qCWarning(devHostLog) << "relay: cannot listen on port" << port << handshake.errorString();
        return false;
    }
    return true;
}

void RelayServer::close()
{
    handshake.close();
    for (auto* client : QList(clients)) {
        client->close(QWebSocketProtocol::CloseCodeGoingAway);
    }
}

void RelayServer::drop()
{
    for (auto* client : QList(clients)) {
        client->abort();
    }
}

int RelayServer::subscriberCount(QString const& subject) const
{
    return static_cast<int>(subscribersOf.value(subject).size());
}

// ---- What services in the host's process call

void RelayServer::addCommandHandler(QString const& command, CommandHandler handler)
{
    handlers[command] = std::move(handler);
}

void RelayServer::removeCommandHandler(QString const& command)
{
    handlers.remove(command);
}

void RelayServer::publish(QString const& subject, QJsonObject const& payload)
{
    if (auto const subscribers = subscribersOf.value(subject); !subscribers.isEmpty()) {
        QString const text = compactText(payload);
        for (auto* client : subscribers) {
            sendText(client, text);
        }
    }
    emit published(subject, payload);
}

void RelayServer::dispatchEvent(QJsonObject const& event)
{
    if (isSignalConnected(QMetaMethod::fromSignal(&RelayServer::messageReceived))) {
        emit messageReceived(0, compactText(event));
    }
    if (QString const problem = handle(nullptr, event); !problem.isEmpty()) {
        qCWarning(devHostLog) << "relay: event of the host ignored," << problem << event;
    }
}

// ---- What clients send

void RelayServer::acceptClients()
{
    while (auto* client = upgrader.nextPendingConnection()) {
        if (!client->isValid()) { // it went away during the upgrade
            delete client;        // before its TCP socket, which has its end coming
            continue;
        }
        client->setParent(this);
        clients.append(client);
        numbers.insert(client, ++lastNumber);
        connect(client, &QWebSocket::textMessageReceived, this,
            [this, client](QString const& text) { receive(client, text); });
        connect(client, &QWebSocket::binaryMessageReceived, this, [this, client](QByteArray const& bytes) {
            reject(client, QJsonValue::Undefined, u"not a text frame"_s, u"%1 bytes"_s.arg(bytes.size()));
        });
        client->setMaxAllowedIncomingFrameSize(kMost);
        client->setMaxAllowedIncomingMessageSize(kMost);
        connect(client, &QWebSocket::disconnected, this, [this, client] {
            clients.removeOne(client);
            int const number = numbers.take(client);
            names.remove(number);
            if (client->closeCode() == QWebSocketProtocol::CloseCodeTooMuchData) {
                qCWarning(devHostLog)
                    << "relay: client" << number << "has ended over a message that was too large";
            }
            for (auto& subscribers : subscribersOf) {
                subscribers.removeOne(client);
            }
            client->deleteLater();
            emit clientCountChanged();
        });
        if (acknowledgesAtOnce) {
            send(client, {{u"task"_s, kRegisterToServer}, {u"success"_s, true}});
        }
        emit clientCountChanged();
    }
}

void RelayServer::receive(QWebSocket* client, QString const& text)
{
    if (isSignalConnected(QMetaMethod::fromSignal(&RelayServer::messageReceived))) {
        emit messageReceived(numbers.value(client), text);
    }
    auto const document = QJsonDocument::fromJson(text.toUtf8());
    QJsonObject const command = document.object();
    QString const problem = document.isObject() ? handle(client, command) : u"not a JSON object"_s;
    if (!problem.isEmpty()) {
        reject(client, command.value("task"_L1), problem, text);
    }
}

void RelayServer::reject(
    QWebSocket* client, QJsonValue const& task, QString const& problem, QString const& what)
{
    qCWarning(devHostLog) << "relay: message rejected," << problem << what.left(200);
    send(client, {{u"task"_s, task}, {u"error"_s, problem}});
}

QString RelayServer::handle(QWebSocket* client, QJsonObject const& command)
{
    auto const acknowledge = [this, client](QJsonObject message) {
        if (client) {
            message.insert("success"_L1, true);
            send(client, message);
        }
    };

    QString const task = command.value("task"_L1).toString();
    if (task.isEmpty()) {
        return u"no \"task\""_s;
    }
    if (task == kRegisterToServer) {
        acknowledge({{u"task"_s, task}});
    } else if (task == kSubscribeSubject) {
        QString const subject = command.value("subject"_L1).toString();
        if (subject.isEmpty()) {
            return u"no \"subject\""_s;
        }
        subscribe(client, {subject}, command);
        acknowledge({{u"task"_s, task}, {u"subject"_s, subject}});
    } else if (task == kSubscribeSubjects) {
        QJsonArray const subjects = command.value("subjects"_L1).toArray();
        QStringList wanted;
        for (auto const& subject : subjects) {
            wanted.append(subject.toString());
        }
        if (!command.value("subjects"_L1).isArray() || wanted.contains(QString())) {
            return u"\"subjects\" is not a list of names"_s;
        }
        subscribe(client, wanted, command);
        acknowledge({{u"task"_s, task}, {u"subjects"_s, subjects}});
    } else if (task == kUpdateFunctionKeyLedAppControl) {
        QString const app = command.value("appName"_L1).toString();
        QString const function = command.value("functionName"_L1).toString();
        QJsonValue const status = command.value("status"_L1);
        if (app.isEmpty() || function.isEmpty() || !status.isBool()) {
            return u"no \"appName\", \"functionName\" or \"status\""_s;
        }
        emit ledChanged(app, function, status.toBool());
    } else if (task == kLaunchSettingPage) {
        QJsonValue const page = command.value("params"_L1).toObject().value("page"_L1);
        if (!page.isDouble()) {
            return u"no \"page\" in \"params\""_s;
        }
        emit settingsPageRequested(page.toInt());
    } else if (auto const handler = handlers.value(task)) {
        handler(client, command);
    } else {
        return u"unknown command"_s;
    }
    emit commandReceived(command);
    return {};
}

void RelayServer::subscribe(QWebSocket* client, QStringList const& subjects, QJsonObject const& command)
{
    if (!client) {
        return; // the host hears everything through the signals
    }
    if (QString const category = command.value("category"_L1).toString(); !category.isEmpty()) {
        names.insert(numbers.value(client),
            (category.section(u'.', -1) + u' ' + command.value("id"_L1).toString()).trimmed());
    }
    for (auto const& subject : subjects) {
        auto& subscribers = subscribersOf[subject];
        if (!subscribers.contains(client)) {
            subscribers.append(client);
        }
    }
}

void RelayServer::sendToAll(QString const& text)
{
    for (auto* client : QList(clients)) {
        sendText(client, text);
    }
}

void RelayServer::send(QWebSocket* client, QJsonObject const& message)
{
    sendText(client, compactText(message));
}

void RelayServer::sendText(QWebSocket* client, QString const& text)
{
    int const number = numbers.value(client);
    if (number == 0) {
        return; // whoever heard of what was sent before may have dropped it
    }
    client->sendTextMessage(text);
    if (client->bytesToWrite() > kMost) {
        qCWarning(devHostLog) << "relay: client" << number << "dropped, it does not read what it is sent";
        client->abort();
        return;
    }
    if (isSignalConnected(QMetaMethod::fromSignal(&RelayServer::messageSent))) {
        emit messageSent(number, text);
    }
}
