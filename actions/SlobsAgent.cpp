#include "actions/SlobsAgent.h"

#include "actions/SlobsMessagePool.h"
#include "relay/ZoRemoteCommands.h"

#include <QDebug>
#include <QJsonArray>
#include <QJsonDocument>
#include <QUrl>

#include <utility>

using namespace Qt::StringLiterals;
using namespace ZoRemoteCommands;
using namespace ZoRemoteFields;

namespace {

//! The host's settings page on which the Streamlabs account is linked.
constexpr int kSettingsPage = 7;

} // namespace

SlobsAgent::SlobsAgent(QObject* parent) : QObject(parent), messages(SlobsMessagePool::shared()) {}

SlobsAgent::~SlobsAgent() = default;

void SlobsAgent::connectRcc(QString const& url)
{
    socket.renew();
    socket.on(&QWebSocket::connected, this, [this] { emit connected(); });
    socket.on(
        &QWebSocket::textMessageReceived, this, [this](QString const& text) { onTextMessageReceived(text); });
    socket.on(&QWebSocket::disconnected, this, [this] { emit disconnected(); });
    socket.open(QUrl(url));
}

void SlobsAgent::disconnectRcc()
{
    socket->abort();
}

void SlobsAgent::addRccEventHandler(QString const& task, Handler handler)
{
    handlers[task] = std::move(handler);
}

// At once: otherwise it leaves when the event loop has its next turn, after all that a pressed key draws.
void SlobsAgent::sendRccEvent(QJsonObject const& event)
{
    QWebSocket* const used = socket.get(); // outlives us when `disconnected` comes from inside
    used->sendTextMessage(QString::fromUtf8(QJsonDocument(event).toJson(QJsonDocument::Compact)));
    used->flush();
}

void SlobsAgent::onTextMessageReceived(QString const& text)
{
    auto const message = messages->take(text);
    if (!message) {
        qCritical() << "[SlobsAgent] Content was broken";
        return;
    }
    QString const task = nameOf(*message);
    if (Handler const handler = handlers.value(task)) {
        handler(*message);
    } else {
        qDebug() << "[SlobsAgent]" << task << "???";
    }
}

void SlobsAgent::registerToServer(QString const& id, QString const& category)
{
    sendRccEvent({{kFieldTask, kRegisterToServer}, {kFieldId, id}, {kFieldCategory, category}});
}

void SlobsAgent::subscribe(QString const& subject, QString const& id, QString const& category)
{
    sendRccEvent({{kFieldTask, kSubscribeSubject}, {kFieldSubject, subject}, {kFieldId, id},
        {kFieldCategory, category}});
}

void SlobsAgent::subscribe(QList<QString> const& subjects, QString const& id, QString const& category)
{
    sendRccEvent({{kFieldTask, kSubscribeSubjects}, {kFieldSubjects, QJsonArray::fromStringList(subjects)},
        {kFieldId, id}, {kFieldCategory, category}});
}

void SlobsAgent::showSettingsLogin()
{
    sendRccEvent({{kFieldTask, kLaunchSettingPage}, {u"params"_s, QJsonObject{{u"page"_s, kSettingsPage}}}});
}
