#include "bench/BareHops.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTcpSocket>
#include <QUrl>

#include <utility>

using namespace Qt::StringLiterals;

BareHops::BareHops(Texts texts) : messages(std::move(texts))
{
    prepare(first);
    prepare(second);
    connect(&second.client, &QWebSocket::textMessageReceived, this, [this] {
        if (++answered == messages.answers.size()) {
            first.peer->sendTextMessage(messages.back);
        }
    });
    connect(&first.client, &QWebSocket::textMessageReceived, this, [this] { done = true; });
}

void BareHops::prepare(Hop& hop)
{
    connect(&hop.tcp, &QTcpServer::newConnection, this, [&hop] {
        QTcpSocket* const socket = hop.tcp.nextPendingConnection();
        socket->setParent(nullptr);
        socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        hop.upgrader.handleConnection(socket);
    });
    connect(&hop.upgrader, &QWebSocketServer::newConnection, this, [this, &hop] {
        hop.peer = hop.upgrader.nextPendingConnection();
        hop.peer->setParent(&hop.upgrader);
        connect(hop.peer, &QWebSocket::textMessageReceived, this, [this, &hop] {
            if (&hop == &first) {
                second.client.sendTextMessage(messages.request);
                return;
            }
            arrived = true;
            for (qsizetype i = 0; answers && i < messages.answers.size(); ++i) {
                hop.peer->sendTextMessage(messages.answers.at(i));
            }
        });
    });
}

bool BareHops::connectBoth()
{
    for (auto* hop : {&first, &second}) {
        if (!hop->tcp.listen(QHostAddress::LocalHost)) {
            return false;
        }
        hop->client.open(QUrl(u"ws://127.0.0.1:%1"_s.arg(hop->tcp.serverPort())));
        while (!hop->peer || !hop->client.isValid()) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }
    return true;
}

void BareHops::run()
{
    answers = true;
    done = false;
    answered = 0;
    first.client.sendTextMessage(messages.there);
    while (!done) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

void BareHops::runThere()
{
    answers = false;
    arrived = false;
    first.client.sendTextMessage(messages.there);
    while (!arrived) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

void BareHops::runBack()
{
    done = false;
    answered = 0;
    for (auto const& answer : std::as_const(messages.answers)) {
        second.peer->sendTextMessage(answer);
    }
    while (!done) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}
