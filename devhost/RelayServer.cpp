#include "devhost/RelayServer.h"

#include "devhost/DevHostLog.h"
#include "relay/ZoRemoteCommands.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QMetaMethod>
#include <QWebSocket>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;
using namespace ZoRemoteCommands;

namespace {

//! Characters from which on a text is sent to one client at a time and kept only while it is the latest.
constexpr qsizetype large = 8192;

QString compactText(QJsonObject const& message)
{
    return QString::fromUtf8(QJsonDocument(message).toJson(QJsonDocument::Compact));
}

} // namespace

RelayServer::RelayServer(QObject* parent)
    : QObject(parent), m_upgrader(u"LUMEN relay"_s, QWebSocketServer::NonSecureMode)
{
    connect(&m_tcpServer, &QTcpServer::newConnection, this, [this] {
        while (auto* socket = m_tcpServer.nextPendingConnection()) {
            // A WebSocket frame leaves in two writes, and the second must not wait for the client's delayed
            // ACK.
            socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
            m_upgrader.handleConnection(socket);
        }
    });
    connect(&m_upgrader, &QWebSocketServer::newConnection, this, &RelayServer::acceptClients);
    m_turn.setSingleShot(true);
    m_turn.setInterval(0);
    m_turn.callOnTimeout(this, &RelayServer::sendNextWaiting);
}

RelayServer::~RelayServer()
{
    for (auto* client : std::as_const(m_clients)) {
        client->disconnect(this);
        delete client; // before the server, which owns the TCP sockets as well
    }
}

bool RelayServer::listen(quint16 port)
{
    if (!m_tcpServer.listen(QHostAddress::LocalHost, port)) {
        qCWarning(devHostLog) << "relay: cannot listen on port" << port << m_tcpServer.errorString();
        return false;
    }
    return true;
}

void RelayServer::close()
{
    m_tcpServer.close();
    for (auto* client : QList(m_clients)) {
        client->close(QWebSocketProtocol::CloseCodeGoingAway);
    }
}

void RelayServer::drop()
{
    for (auto* client : QList(m_clients)) {
        client->abort();
    }
}

int RelayServer::subscriberCount(QString const& subject) const
{
    return static_cast<int>(m_subscribers.value(subject).size());
}

// ---- What services in the host's process call

void RelayServer::addCommandHandler(QString const& command, CommandHandler handler)
{
    m_handlers[command] = std::move(handler);
}

void RelayServer::removeCommandHandler(QString const& command)
{
    m_handlers.remove(command);
}

void RelayServer::publish(QString const& subject, QJsonObject const& payload)
{
    if (auto const subscribers = m_subscribers.value(subject); !subscribers.isEmpty()) {
        QString const task = payload.value("task"_L1).toString();
        QString const text = textOf(task, payload);
        for (auto* client : subscribers) {
            deliver(client, task, text);
        }
    }
    emit published(subject, payload);
}

// Lists are published again and again as they are, when keys ask for them and while an item is dragged, and
// statuses go to and fro.
QString RelayServer::textOf(QString const& task, QJsonObject const& payload)
{
    auto& published = m_published[task];
    auto const known = std::ranges::find(published, payload, &Published::payload);
    if (known != published.end()) {
        return known->text;
    }
    std::erase_if(published, [](Published const& last) { return last.text.size() >= large; });
    constexpr std::size_t most = 4;
    if (published.size() == most) {
        published.erase(published.begin());
    }
    published.push_back({payload, compactText(payload)});
    return published.back().text;
}

// Some hundred kilobytes to each of many clients would hold up the thread that all of them share, so such
// texts go to one client at a time, and what has not gone when the next of its kind comes never does.
void RelayServer::deliver(QWebSocket* client, QString const& task, QString const& text)
{
    bool const isLarge = text.size() >= large;
    auto const isOfClient = [client](Waiting const& waiting) { return waiting.client == client; };
    if (!isLarge && std::ranges::none_of(m_waiting, isOfClient)) {
        sendText(client, text);
        return;
    }
    // The last of its kind, so that a client never ends with an older one than was published last.
    auto const last = std::find_if(m_waiting.rbegin(), m_waiting.rend(),
        [&](Waiting const& waiting) { return isOfClient(waiting) && waiting.task == task; });
    if (isLarge && last != m_waiting.rend() && last->text.size() >= large) {
        last->text = text; // in its place, or the last in the queue would never have their turn
    } else {
        m_waiting.push_back({client, task, text});
    }
    m_turn.start();
}

void RelayServer::sendNextWaiting()
{
    auto const next = std::ranges::find_if(
        m_waiting, [](Waiting const& waiting) { return waiting.client->bytesToWrite() == 0; });
    if (next == m_waiting.end()) {
        return; // one that has taken all it was sent starts the next turn
    }
    auto const [client, task, text] = *next;
    m_waiting.erase(next); // before it is sent, for sending may show that the client is gone
    sendText(client, text);
    if (!m_waiting.empty()) {
        m_turn.start();
    }
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
    while (auto* client = m_upgrader.nextPendingConnection()) {
        client->setParent(this);
        m_clients.append(client);
        m_numbers.insert(client, ++m_lastNumber);
        connect(client, &QWebSocket::textMessageReceived, this,
            [this, client](QString const& text) { receive(client, text); });
        connect(client, &QWebSocket::binaryMessageReceived, this, [this, client](QByteArray const& bytes) {
            reject(client, QJsonValue::Undefined, u"not a text frame"_s, u"%1 bytes"_s.arg(bytes.size()));
        });
        connect(client, &QWebSocket::bytesWritten, this, [this] {
            if (!m_waiting.empty()) {
                m_turn.start();
            }
        });
        connect(client, &QWebSocket::disconnected, this, [this, client] {
            m_clients.removeOne(client);
            m_numbers.remove(client);
            for (auto& subscribers : m_subscribers) {
                subscribers.removeOne(client);
            }
            std::erase_if(m_waiting, [client](Waiting const& waiting) { return waiting.client == client; });
            client->deleteLater();
            emit clientCountChanged();
        });
        if (m_acknowledgesAtOnce) {
            send(client, {{u"task"_s, kRegisterToServer}, {u"success"_s, true}});
        }
        emit clientCountChanged();
    }
}

void RelayServer::receive(QWebSocket* client, QString const& text)
{
    if (isSignalConnected(QMetaMethod::fromSignal(&RelayServer::messageReceived))) {
        emit messageReceived(m_numbers.value(client), text);
    }
    if (text != m_lastReceived) {
        m_lastReceived = text;
        m_lastCommand = QJsonDocument::fromJson(text.toUtf8());
    }
    QJsonObject const command = m_lastCommand.object();
    QString const problem = m_lastCommand.isObject() ? handle(client, command) : u"not a JSON object"_s;
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
        subscribe(client, {subject});
        acknowledge({{u"task"_s, task}, {u"subject"_s, subject}});
    } else if (task == kSubscribeSubjects) {
        QJsonArray const subjects = command.value("subjects"_L1).toArray();
        QStringList names;
        for (auto const& subject : subjects) {
            names.append(subject.toString());
        }
        if (!command.value("subjects"_L1).isArray() || names.contains(QString())) {
            return u"\"subjects\" is not a list of names"_s;
        }
        subscribe(client, names);
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
    } else if (auto const handler = m_handlers.value(task)) {
        handler(client, command);
    } else {
        return u"unknown command"_s;
    }
    emit commandReceived(command);
    return {};
}

void RelayServer::subscribe(QWebSocket* client, QStringList const& subjects)
{
    if (!client) {
        return; // the host hears everything through the signals
    }
    for (auto const& subject : subjects) {
        auto& subscribers = m_subscribers[subject];
        if (!subscribers.contains(client)) {
            subscribers.append(client);
        }
    }
}

void RelayServer::sendToAll(QString const& text)
{
    for (auto* client : QList(m_clients)) {
        sendText(client, text);
    }
}

void RelayServer::send(QWebSocket* client, QJsonObject const& message)
{
    sendText(client, compactText(message));
}

void RelayServer::sendText(QWebSocket* client, QString const& text)
{
    client->sendTextMessage(text);
    if (text.size() < large) {
        client->flush(); // what a key waits for is not to wait for the event loop's next turn
    }
    if (isSignalConnected(QMetaMethod::fromSignal(&RelayServer::messageSent))) {
        emit messageSent(m_numbers.value(client), text);
    }
}
