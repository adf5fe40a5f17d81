#include "bench/BareHops.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTcpSocket>
#include <QUrl>

#include <utility>

using namespace Qt::StringLiterals;

BareHops::BareHops(Texts texts, Leaving leaving) : m_texts(std::move(texts)), m_leaving(leaving)
{
    prepare(m_first);
    prepare(m_second);
    connect(&m_second.client, &QWebSocket::textMessageReceived, this, [this] {
        if (++m_answered == m_texts.answers.size()) {
            m_first.peer->sendTextMessage(m_texts.back);
        }
    });
    connect(&m_first.client, &QWebSocket::textMessageReceived, this, [this] { m_done = true; });
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
            if (&hop == &m_first) {
                sendFrom(m_second.client, m_texts.request);
                return;
            }
            m_arrived = true;
            for (qsizetype i = 0; m_answers && i < m_texts.answers.size(); ++i) {
                hop.peer->sendTextMessage(m_texts.answers.at(i));
            }
        });
    });
}

void BareHops::sendFrom(QWebSocket& client, QString const& text) const
{
    client.sendTextMessage(text);
    if (m_leaving == Leaving::AtOnce) {
        client.flush();
    }
}

bool BareHops::connectBoth()
{
    for (auto* hop : {&m_first, &m_second}) {
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
    m_answers = true;
    m_done = false;
    m_answered = 0;
    sendFrom(m_first.client, m_texts.there);
    while (!m_done) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

void BareHops::runThere()
{
    m_answers = false;
    m_arrived = false;
    sendFrom(m_first.client, m_texts.there);
    while (!m_arrived) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

void BareHops::runBack()
{
    m_done = false;
    m_answered = 0;
    for (auto const& answer : std::as_const(m_texts.answers)) {
        m_second.peer->sendTextMessage(answer);
    }
    while (!m_done) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}
