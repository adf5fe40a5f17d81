#include "actions/SlobsAgent.h"

#include "actions/SlobsMessagePool.h"
#include "relay/ZoRemoteCommands.h"

#include <QDebug>
#include <QHash>
#include <QJsonDocument>
#include <QUrl>

#include <utility>

using namespace Qt::StringLiterals;
using namespace SlobsAgentPrivate;
using namespace ZoRemoteCommands;

namespace {

//! The host's settings page on which the Streamlabs account is linked.
constexpr int kSettingsPage = 7;

QString toText(QJsonObject const& message)
{
    return QString::fromUtf8(QJsonDocument(message).toJson(QJsonDocument::Compact));
}

bool isResult(QJsonObject const& message, QString const& name)
{
    return message.value("task"_L1) == QJsonValue(name);
}

//! The messages of one task that tell a status. Every key asks for it, and there are few that it can be.
struct StatusMessages
{
    QString task;
    QString key;
    QHash<QString, QJsonObject> made{};

    QJsonObject of(QString const& status)
    {
        constexpr qsizetype kMost = 16; // more than there are, should a foreign program make some up
        if (made.size() == kMost && !made.contains(status)) {
            made.clear();
        }
        QJsonObject& message = made[status];
        if (message.isEmpty()) {
            message = {{u"task"_s, task}, {key, status}};
        }
        return message;
    }
};

QJsonObject makeLed(QString const& functionName, bool on)
{
    return {{u"task"_s, kUpdateFunctionKeyLedAppControl}, {u"sender"_s, QString()},
        {u"appName"_s, u"SLOBS"_s}, {u"functionName"_s, functionName}, {u"status"_s, on}};
}

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

void SlobsAgent::sendRccEvent(QJsonObject const& event)
{
    send(toText(event));
}

// At once: otherwise it leaves when the event loop has its next turn, after all that a pressed key draws.
void SlobsAgent::send(QString const& text)
{
    QWebSocket* const used = socket.get(); // outlives us when `disconnected` comes from inside
    used->sendTextMessage(text);
    used->flush();
}

void SlobsAgent::onTextMessageReceived(QString const& text)
{
    auto const message = messages->take(text);
    if (!message->object()) {
        qCritical() << "[SlobsAgent] Content was broken";
        return;
    }
    QString const task = message->object()->value("task"_L1).toString();
    if (Handler const handler = handlers.value(task)) {
        SlobsMessagePool::Handling const handling(message);
        handler(*message->object());
    } else {
        qDebug() << "[SlobsAgent]" << task << "???";
    }
}

// ---- To the relay and the host

void SlobsAgent::subscribe(QString const& subject, QString const& id, QString const& category)
{
    sendRccEvent(
        {{u"task"_s, kSubscribeSubject}, {u"subject"_s, subject}, {u"id"_s, id}, {u"category"_s, category}});
}

void SlobsAgent::subscribe(QList<QString> const& subjects, QString const& id, QString const& category)
{
    sendRccEvent({{u"task"_s, kSubscribeSubjects}, {u"subjects"_s, QJsonArray::fromStringList(subjects)},
        {u"id"_s, id}, {u"category"_s, category}});
}

void SlobsAgent::showSettingsLogin()
{
    sendRccEvent({{u"task"_s, kLaunchSettingPage}, {u"params"_s, QJsonObject{{u"page"_s, kSettingsPage}}}});
}

// ---- Tasks for the service

void SlobsAgent::sendServiceTask(QString const& name)
{
    // The same text each time, and it is what somebody waits for who has pressed a key.
    static QHash<QString, QString> texts;
    QString& text = texts[name];
    if (text.isEmpty()) {
        text = toText({{u"task"_s, kSlobsServiceTask}, {u"event"_s, name}});
    }
    send(text);
}

void SlobsAgent::sendServiceTask(QString const& name, QJsonObject arguments)
{
    arguments.insert("task"_L1, kSlobsServiceTask);
    arguments.insert("event"_L1, name);
    sendRccEvent(arguments);
}

void SlobsAgent::queryAuthState()
{
    sendServiceTask(kQueryAuthState);
}

void SlobsAgent::refreshModel()
{
    sendServiceTask(kRefreshModel);
}

void SlobsAgent::queryStreamingStatus()
{
    sendServiceTask(kQueryStreamingStatus);
}

void SlobsAgent::queryRecordingStatus()
{
    sendServiceTask(kQueryRecordingStatus);
}

void SlobsAgent::toggleStreaming()
{
    sendServiceTask(kToggleStreamingStatus);
}

void SlobsAgent::toggleRecording()
{
    sendServiceTask(kToggleRecordingStatus);
}

void SlobsAgent::refreshScenes()
{
    sendServiceTask(kRefreshScenes);
}

void SlobsAgent::queryScenes()
{
    sendServiceTask(kQueryScenes);
}

void SlobsAgent::setActiveScene(QString const& id)
{
    sendServiceTask(kSetActiveScene, {{u"activeId"_s, id}});
}

void SlobsAgent::setSourceVisible(Source const& source, bool visible)
{
    sendServiceTask(
        kSetSourceVisibility, {{u"sceneId"_s, source.sceneId}, {u"sceneItemId"_s, source.sceneItemId},
                                  {u"sourceId"_s, source.sourceId}, {u"visible"_s, visible}});
}

void SlobsAgent::refreshCollections()
{
    sendServiceTask(kRefreshCollections);
}

void SlobsAgent::queryCollections()
{
    sendServiceTask(kQueryCollections);
}

void SlobsAgent::refreshAudioList(QString const& sceneId)
{
    sendServiceTask(kRefreshAudioList, {{u"sceneId"_s, sceneId}});
}

void SlobsAgent::queryAudioList()
{
    sendServiceTask(kQueryAudioList);
}

void SlobsAgent::setAudioMute(QString const& sourceId, bool muted)
{
    sendServiceTask(kSetAudioMute, {{u"sourceId"_s, sourceId}, {u"muted"_s, muted}});
}

// ---- Results

QJsonObject SlobsAgent::toAuthState(bool authorized, QString const& token, int port)
{
    return {{u"task"_s, kQueryAuthStateResult}, {u"authorized"_s, authorized}, {u"token"_s, token},
        {u"port"_s, port}};
}

QJsonObject SlobsAgent::toStreamingStatus(QString const& status)
{
    static StatusMessages messages{kQueryStreamingStatusResult, u"streamingStatus"_s};
    return messages.of(status);
}

QJsonObject SlobsAgent::toRecordingStatus(QString const& status)
{
    static StatusMessages messages{kQueryRecordingStatusResult, u"recordingStatus"_s};
    return messages.of(status);
}

QJsonObject SlobsAgent::toSceneList(QList<Scene> const& scenes, QString const& activeId)
{
    return toSceneList(toJson(scenes), activeId);
}

QJsonObject SlobsAgent::toSceneList(QJsonArray const& encodedScenes, QString const& activeId)
{
    return {{u"task"_s, kQueryScenesResult}, {u"activeId"_s, activeId}, {u"list"_s, encodedScenes}};
}

QJsonObject SlobsAgent::toCollectionList(QList<CollectionSchema> const& collections)
{
    return {{u"task"_s, kQueryCollectionsResult}, {u"list"_s, toJson(collections)}};
}

QJsonObject SlobsAgent::toAudioList(QList<AudioSource> const& sources)
{
    return {{u"task"_s, kQueryAudioListResult}, {u"list"_s, toJson(sources)}};
}

void SlobsAgent::fromAuthState(QJsonObject const& message, bool& authorized, QString& token, int& port)
{
    if (!isResult(message, kQueryAuthStateResult)) {
        return;
    }
    authorized = message.value("authorized"_L1).toBool();
    token = message.value("token"_L1).toString();
    port = message.value("port"_L1).toInt(-1);
}

void SlobsAgent::fromStreamingStatus(QJsonObject const& message, QString& status)
{
    if (isResult(message, kQueryStreamingStatusResult)) {
        status = message.value("streamingStatus"_L1).toString();
    }
}

void SlobsAgent::fromRecordingStatus(QJsonObject const& message, QString& status)
{
    if (isResult(message, kQueryRecordingStatusResult)) {
        status = message.value("recordingStatus"_L1).toString();
    }
}

void SlobsAgent::fromSceneList(QJsonObject const& message, QList<Scene>& scenes, QString& activeId)
{
    if (!isResult(message, kQueryScenesResult)) {
        return;
    }
    activeId = message.value("activeId"_L1).toString();
    scenes = SlobsMessagePool::list<Scene>(message);
}

void SlobsAgent::fromCollectionList(QJsonObject const& message, QList<CollectionSchema>& collections)
{
    if (isResult(message, kQueryCollectionsResult)) {
        collections = SlobsMessagePool::list<CollectionSchema>(message);
    }
}

void SlobsAgent::fromAudioList(QJsonObject const& message, QList<AudioSource>& sources)
{
    if (isResult(message, kQueryAudioListResult)) {
        sources = SlobsMessagePool::list<AudioSource>(message);
    }
}

// ---- Key LEDs

bool SlobsAgent::isStreaming(QString const& streamingStatus)
{
    return streamingStatus == "live"_L1 || streamingStatus == "starting"_L1;
}

bool SlobsAgent::isRecording(QString const& recordingStatus)
{
    return recordingStatus == "recording"_L1;
}

QJsonObject SlobsAgent::setStreamingLed(QString const& streamingStatus)
{
    // Made once, for they go out with every status.
    static QJsonObject const on = makeLed(u"STREAM"_s, true);
    static QJsonObject const off = makeLed(u"STREAM"_s, false);
    return isStreaming(streamingStatus) ? on : off;
}

QJsonObject SlobsAgent::setRecordingLed(QString const& recordingStatus)
{
    static QJsonObject const on = makeLed(u"RECORD"_s, true);
    static QJsonObject const off = makeLed(u"RECORD"_s, false);
    return isRecording(recordingStatus) ? on : off;
}
