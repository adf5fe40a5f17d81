#include "streamlabs/StreamlabsService.h"

#include "actions/SlobsAgent.h"
#include "relay/ZoRemoteCommands.h"
#include "streamlabs/SceneListCache.h"
#include "streamlabs/SockJsCodec.h"
#include "streamlabs/SockJsSocket.h"
#include "streamlabs/StreamlabsApi.h"

#include <QDebug>
#include <QMap>

#include <functional>
#include <utility>

using namespace Qt::StringLiterals;
using namespace StreamlabsApiPrivate;

namespace {

QString const localhost = u"127.0.0.1"_s;

// Names under which requests are sent: the keys of their response handlers and the vocabulary of the log.
QString const rpcAuthorization = u"slobs.jsonrpc.auth"_s;
QString const rpcQueryModel = u"slobs.jsonrpc.model.get"_s;
QString const rpcToggleStream = u"slobs.jsonrpc.stream.toggle"_s;
QString const rpcToggleRecord = u"slobs.jsonrpc.record.toggle"_s;
QString const rpcGetSceneList = u"slobs.jsonrpc.scene.list"_s;
QString const rpcGetActiveScene = u"slobs.jsonrpc.scene.get.active"_s;
QString const rpcSetActiveScene = u"slobs.jsonrpc.scene.set.active"_s;
QString const rpcGetCollectionList = u"slobs.jsonrpc.collection.list"_s;
QString const rpcGetCollectionSchema = u"slobs.jsonrpc.collection.schema"_s;
QString const rpcGetAudioList = u"slobs.jsonrpc.audio.list"_s;
QString const rpcSetAudioMute = u"slobs.jsonrpc.audio.mute"_s;
QString const rpcRegStreamingStatusChange = u"slobs.jsonrpc.register.stream.change"_s;
QString const rpcRegRecordingStatusChange = u"slobs.jsonrpc.register.record.change"_s;
QString const rpcRegSceneAdd = u"slobs.jsonrpc.register.scene.add"_s;
QString const rpcRegSceneRemove = u"slobs.jsonrpc.register.scene.remove"_s;
QString const rpcRegSceneSwitch = u"slobs.jsonrpc.register.scene.switch"_s;
QString const rpcRegSceneItemAdd = u"slobs.jsonrpc.register.scene.item.add"_s;
QString const rpcRegSceneItemRemove = u"slobs.jsonrpc.register.scene.item.remove"_s;
QString const rpcRegSceneItemUpdate = u"slobs.jsonrpc.register.scene.item.update"_s;
// The three collection names stand one off from their texts, and stay so: they are only told apart in the
// log, and one handler serves all three.
QString const rpcRegCollectionAdd = u"slobs.jsonrpc.register.collection.switch"_s;
QString const rpcRegCollectionRemove = u"slobs.jsonrpc.register.collection.add"_s;
QString const rpcRegCollectionSwitch = u"slobs.jsonrpc.register.collection.remove"_s;
QString const rpcRegSourceAdded = u"slobs.jsonrpc.register.source.added"_s;
QString const rpcRegSourceRemove = u"slobs.jsonrpc.register.source.removed"_s;
QString const rpcRegSourceUpdate = u"slobs.jsonrpc.register.source.update"_s;

// Request ids run from 1 to this and start again.
constexpr int maxRequestId = 2147483637;

} // namespace

class StreamlabsService::Impl
{
public:
    using Handler = std::function<void(QJsonObject const&)>;

    explicit Impl(StreamlabsService* service) : q(service) {}

    void initSocket();
    void initStreamlabsHandlers();
    void initRccHandlers();
    void reset();

    void makeJsonRpcRequest(QString const& name, QJsonObject const& request);
    void requestAudioList()
    {
        makeJsonRpcRequest(rpcGetAudioList, StreamlabsApi::makeGetAudioListObject({}));
    }
    void requestSceneList() { makeJsonRpcRequest(rpcGetSceneList, StreamlabsApi::makeGetSceneListObject()); }
    //! Sends the request when connected, and tries to connect when not.
    void requestOrReconnect(QString const& name, QJsonObject const& message);

    void handleStreamlabsResponse(QJsonObject const& message);
    void onAuthorization(QJsonObject const& message);
    void onCollectionSchema(QJsonObject const& message);
    void onEventReceived(QJsonObject const& event);
    void onDisconnected();
    void onServiceTask(QJsonObject const& task);

    void subscribeEvent();
    void subscribe(QString const& name, QJsonObject const& subscription, Handler handler);
    void refreshSceneData(QJsonObject const& data);
    void refreshSourceData(QJsonObject const& data);

    void publish(QJsonObject const& payload);
    void publishAuthState();
    void publishStreamingStatus();
    void publishRecordingStatus();
    //! Clears and publishes the two statuses, as far as they were known.
    void publishStatusesLost();
    void publishSceneList();
    void publishCollections();
    void publishAudioList();

    StreamlabsService* q;
    QString token;
    int port = 0;
    QString streamingStatus;
    QString recordingStatus;
    QString activeSceneId;
    SceneListCache scenes;
    QList<CollectionSchema> collections;
    QList<AudioSource> audioSources;
    //! What the handler that the relay has holds: gone when the relay is.
    std::weak_ptr<bool> heldByRelay;
    int requestId = 0;
    QMap<int, QString> pendingRequests;
    //! What was sent last under each name. Most requests are the same each time but for the id.
    QMap<QString, std::pair<QJsonObject, SockJsCodec::NumberedFrame>> sentRequests;
    std::unique_ptr<SockJsSocket> socket;
    //! Keyed by request name, by "EVENT", or by the resource id of an answered subscription.
    QMap<QString, Handler> responseHandlers;
    QMap<QString, Handler> taskHandlers;
};

// ---- The service

StreamlabsService::StreamlabsService(QObject* parent) : QObject(parent), d(std::make_unique<Impl>(this)) {}

StreamlabsService::~StreamlabsService()
{
    deinit();
}

void StreamlabsService::init(ZoInterfaceRcc* newRelay)
{
    if (relay() != newRelay) {
        deinit();
    }
    d->initSocket();
    d->initStreamlabsHandlers();
    rcc = newRelay;
    d->initRccHandlers();
}

void StreamlabsService::connectSlobs(QString const& token, int port)
{
    if (port < 1 || token.isEmpty()) {
        qCritical() << "StreamlabsService::connectSlobs" << token << port;
        return;
    }
    d->token = token;
    d->port = port;
    if (d->socket) {
        d->socket->open(localhost, port);
    }
}

void StreamlabsService::closeSlobs()
{
    // `disconnected` may come from inside `close`, and must find nothing to reconnect to.
    d->token.clear();
    d->port = 0;
    if (d->socket) {
        d->socket->close();
    }
    d->publishStatusesLost(); // for when it comes later; keys and LEDs must not stay lit
    d->reset();
}

void StreamlabsService::deinit()
{
    if (auto* host = relay()) {
        host->removeCommandHandler(ZoRemoteCommands::kSlobsServiceTask);
    }
    rcc = nullptr; // the host may delete its relay now
}

// A relay destroys its handlers with it.
ZoInterfaceRcc* StreamlabsService::relay()
{
    if (d->heldByRelay.expired()) {
        rcc = nullptr;
    }
    return rcc;
}

std::unique_ptr<SockJsSocket> StreamlabsService::makeSocket() const
{
    return std::make_unique<SockJsSocket>();
}

void StreamlabsService::addRccTaskHandler(QString const& command, CommandHandler handler)
{
    if (auto* host = relay()) {
        host->addCommandHandler(command, std::move(handler));
    }
}

void StreamlabsService::sendRccMessage(QString const& subject, QJsonObject const& payload)
{
    if (auto* host = relay()) {
        host->publish(subject, payload);
    }
}

void StreamlabsService::dispatchRccEvent(QJsonObject const& event)
{
    if (auto* host = relay()) {
        host->dispatchEvent(event);
    }
}

// ---- Set-up

void StreamlabsService::Impl::initSocket()
{
    socket = q->makeSocket();
    connect(socket.get(), &SockJsSocket::connected, q, [this] {
        qInfo() << "connected to Streamlabs server";
        if (token.isEmpty()) {
            socket->close(); // closed during the attempt, which cannot be stopped then
        }
    });
    connect(socket.get(), &SockJsSocket::textMessageReceived, q, [this](QString const& frame) {
        // A SockJS server speaks first; heartbeats and close frames need no answer.
        if (frame == "o"_L1) {
            makeJsonRpcRequest(rpcAuthorization, StreamlabsApi::makeAuthObject(token));
        }
    });
    connect(socket.get(), &SockJsSocket::jsonMessageReceived, q,
        [this](QJsonObject const& message) { handleStreamlabsResponse(message); });
    connect(socket.get(), &SockJsSocket::disconnected, q, [this] { onDisconnected(); });
}

void StreamlabsService::Impl::initStreamlabsHandlers()
{
    auto const result = [](QJsonObject const& message) { return message.value("result"_L1); };

    responseHandlers = {
        {rpcAuthorization, [this](QJsonObject const& message) { onAuthorization(message); }},
        {kTypeEvent, [this](QJsonObject const& event) { onEventReceived(event); }},
        {rpcQueryModel,
            [this, result](QJsonObject const& message) {
                qDebug() << "[onGetModel]";
                QJsonObject const model = result(message).toObject();
                streamingStatus = model.value("streamingStatus"_L1).toString();
                publishStreamingStatus();
                recordingStatus = model.value("recordingStatus"_L1).toString();
                publishRecordingStatus();
            }},
        {rpcGetSceneList,
            [this, result](QJsonObject const& message) {
                QList<Scene> list;
                fromJson(result(message).toArray(), list);
                scenes.replace(std::move(list));
                publishSceneList();
                qDebug() << "[onGetSceneList]";
            }},
        {rpcGetActiveScene,
            [this, result](QJsonObject const& message) {
                activeSceneId = result(message).toString();
                publishSceneList();
                qDebug() << "[onGetActiveScene]";
            }},
        {rpcGetCollectionList,
            [this, result](QJsonObject const& message) {
                fromJson(result(message).toArray(), collections);
                publishCollections();
                qDebug() << "[onGetCollectionList]";
            }},
        {rpcGetCollectionSchema, [this](QJsonObject const& message) { onCollectionSchema(message); }},
        {rpcGetAudioList,
            [this, result](QJsonObject const& message) {
                fromJson(result(message).toArray(), audioSources);
                publishAudioList();
                qDebug() << "[onGetAudioList]";
            }},
    };
}

void StreamlabsService::Impl::initRccHandlers()
{
    using namespace SlobsAgentPrivate;

    auto const text = [](QJsonObject const& task, QLatin1StringView key) {
        return task.value(key).toString();
    };

    taskHandlers = {
        {kQueryAuthState, [this](QJsonObject const&) { publishAuthState(); }},
        {kRefreshModel,
            [this](QJsonObject const&) {
                requestOrReconnect(rpcQueryModel, StreamlabsApi::makeQueryModelObject());
            }},
        {kQueryStreamingStatus, [this](QJsonObject const&) { publishStreamingStatus(); }},
        {kToggleStreamingStatus,
            [this](QJsonObject const&) {
                makeJsonRpcRequest(rpcToggleStream, StreamlabsApi::makeToggleStreamObject());
            }},
        {kQueryRecordingStatus, [this](QJsonObject const&) { publishRecordingStatus(); }},
        {kToggleRecordingStatus,
            [this](QJsonObject const&) {
                makeJsonRpcRequest(rpcToggleRecord, StreamlabsApi::makeToggleRecordObject());
            }},
        {kRefreshScenes,
            [this](QJsonObject const&) {
                requestOrReconnect(rpcGetSceneList, StreamlabsApi::makeGetSceneListObject());
            }},
        {kQueryScenes, [this](QJsonObject const&) { publishSceneList(); }},
        {kSetActiveScene,
            [this, text](QJsonObject const& task) {
                makeJsonRpcRequest(
                    rpcSetActiveScene, StreamlabsApi::makeSetActiveSceneObject(text(task, "activeId"_L1)));
            }},
        {kSetSourceVisibility,
            [this, text](QJsonObject const& task) {
                // Shares the scene's request name: neither answer has a handler of its own.
                makeJsonRpcRequest(
                    rpcSetActiveScene, StreamlabsApi::makeSetSourceVisibleObject(text(task, "sceneId"_L1),
                                           text(task, "sceneItemId"_L1), text(task, "sourceId"_L1),
                                           task.value("visible"_L1).toBool()));
            }},
        {kRefreshCollections,
            [this](QJsonObject const&) {
                requestOrReconnect(rpcGetCollectionSchema, StreamlabsApi::makeGetCollectionSchemaObject());
            }},
        {kQueryCollections, [this](QJsonObject const&) { publishCollections(); }},
        {kRefreshAudioList,
            [this, text](QJsonObject const& task) {
                requestOrReconnect(
                    rpcGetAudioList, StreamlabsApi::makeGetAudioListObject(text(task, "sceneId"_L1)));
            }},
        {kQueryAudioList, [this](QJsonObject const&) { publishAudioList(); }},
        {kSetAudioMute,
            [this, text](QJsonObject const& task) {
                makeJsonRpcRequest(
                    rpcSetAudioMute, StreamlabsApi::makeSetAudioMuteObject(
                                         text(task, "sourceId"_L1), task.value("muted"_L1).toBool()));
            }},
    };

    auto const held = std::make_shared<bool>();
    heldByRelay = held;
    q->addRccTaskHandler(ZoRemoteCommands::kSlobsServiceTask,
        [this, held](QWebSocket*, QJsonObject const& task) { onServiceTask(task); });
}

void StreamlabsService::Impl::reset()
{
    streamingStatus.clear();
    recordingStatus.clear();
    activeSceneId.clear();
    token.clear();
    port = 0;
    requestId = 0;
    scenes.clear();
    collections.clear();
    audioSources.clear();
    pendingRequests.clear();
    sentRequests.clear();
    initStreamlabsHandlers();
}

// ---- Requests and what comes back

void StreamlabsService::Impl::makeJsonRpcRequest(QString const& name, QJsonObject const& request)
{
    if (!socket || !socket->isValid()) {
        qWarning() << "makeJsonRpcRequest: ignore" << name << request;
        return;
    }
    if (requestId >= maxRequestId) {
        requestId = 0;
    }
    ++requestId;
    pendingRequests.insert(requestId, name);
    auto& [last, frame] = sentRequests[name];
    if (request != last) {
        last = request;
        frame = SockJsCodec::NumberedFrame(request);
    }
    socket->sendTextMessage(frame.withId(requestId));
}

void StreamlabsService::Impl::requestOrReconnect(QString const& name, QJsonObject const& message)
{
    if (socket && socket->isValid()) {
        makeJsonRpcRequest(name, message);
    } else {
        q->connectSlobs(token, port);
    }
}

void StreamlabsService::Impl::handleStreamlabsResponse(QJsonObject const& message)
{
    QJsonValue const idValue = message.value("id"_L1);
    QJsonValue const value = message.value("result"_L1);
    if (idValue.isUndefined() || value.isUndefined()) {
        qCritical() << "unrecognized response";
        return;
    }
    int const id = idValue.toInt();
    if (id != 0 && !pendingRequests.contains(id)) {
        qCritical() << "no such id" << id << message;
        return;
    }
    QString const name = pendingRequests.take(id); // events come with a null id, which counts as 0

    if (value.isObject()) {
        QJsonObject const result = value.toObject();
        QString const type = result.value("_type"_L1).toString();
        // A result without a "_type" is an answer of its own and never an event's.
        if (auto const entry = responseHandlers.constFind(type);
            !type.isEmpty() && entry != responseHandlers.constEnd()) {
            if (Handler const handler = *entry) { // a copy, for it may take itself out
                handler(result);
            } else {
                qCritical() << "[StreamlabsResponse] WTF" << type << result;
            }
            return;
        }
        if (type == kTypeSubscription) {
            // From now on the handler is found by the resource id that the stream's events carry.
            QString const resourceId = result.value("resourceId"_L1).toString();
            if (responseHandlers.contains(name)) {
                responseHandlers.insert(resourceId, responseHandlers.take(name));
            } else {
                qCritical() << "UNABLE set" << name << "to" << resourceId;
            }
            return;
        }
    }
    if (Handler const handler = responseHandlers.value(name)) {
        handler(message);
    } else {
        qCritical() << "[StreamlabsResponse] WTF WTF" << name;
    }
}

void StreamlabsService::Impl::onAuthorization(QJsonObject const& message)
{
    if (message.value("result"_L1).toBool()) {
        subscribeEvent();
        makeJsonRpcRequest(rpcQueryModel, StreamlabsApi::makeQueryModelObject());
        makeJsonRpcRequest(rpcGetActiveScene, StreamlabsApi::makeGetActiveSceneObject());
        requestAudioList();
        requestSceneList();
        makeJsonRpcRequest(rpcQueryModel, StreamlabsApi::makeQueryModelObject());
    } else {
        qCritical() << "auth failed";
    }
    publishAuthState();
}

// Streamlabs Desktop may answer with a promise. Its one event then comes here in place of an answer, with the
// schema under "data", and this handler has to move back from the promise's resource id for the next request
// to find it.
void StreamlabsService::Impl::onCollectionSchema(QJsonObject const& message)
{
    bool const isPromise = !message.contains("result"_L1);
    if (isPromise) {
        QString const resourceId = message.value("resourceId"_L1).toString();
        responseHandlers.insert(rpcGetCollectionSchema, responseHandlers.take(resourceId));
        if (message.value("isRejected"_L1).toBool()) {
            qWarning() << "[onGetCollectionSchema] rejected" << message.value("data"_L1);
            return;
        }
    }
    fromJson(message.value(isPromise ? "data"_L1 : "result"_L1).toArray(), collections);
    publishCollections();
    qDebug() << "[onGetCollectionSchema]";
}

void StreamlabsService::Impl::onEventReceived(QJsonObject const& event)
{
    QString const resourceId = event.value("resourceId"_L1).toString();
    auto const entry = responseHandlers.constFind(resourceId);
    if (entry == responseHandlers.constEnd()) {
        qDebug() << "TODO: onEventReceived" << resourceId;
    } else if (Handler const handler = *entry) {
        handler(event);
    } else {
        qCritical() << "WHY no handler" << resourceId;
    }
}

void StreamlabsService::Impl::onDisconnected()
{
    publishAuthState();
    publishStatusesLost();
    q->connectSlobs(token, port);
}

void StreamlabsService::Impl::onServiceTask(QJsonObject const& task)
{
    QJsonValue const event = task.value("event"_L1);
    if (event.isUndefined()) {
        qCritical() << "[onServiceTask] Unknown task" << task;
        return;
    }
    QString const name = event.toString();
    auto const entry = taskHandlers.constFind(name);
    if (entry == taskHandlers.constEnd()) {
        qCritical() << "[onServiceTask] TODO" << name;
    } else if (*entry) {
        (*entry)(task);
    } else {
        qCritical() << "[onServiceTask]" << name;
    }
}

// ---- Events

void StreamlabsService::Impl::subscribe(QString const& name, QJsonObject const& subscription, Handler handler)
{
    responseHandlers[name] = std::move(handler);
    makeJsonRpcRequest(name, subscription);
}

void StreamlabsService::Impl::subscribeEvent()
{
    auto const data = [](QJsonObject const& event) { return event.value("data"_L1); };
    // A promise of the last connection may have taken it along, and its event never came.
    responseHandlers[rpcGetCollectionSchema] = [this](
                                                   QJsonObject const& answer) { onCollectionSchema(answer); };
    Handler const refreshScene = [this, data](
                                     QJsonObject const& event) { refreshSceneData(data(event).toObject()); };
    Handler const reloadSources = [this](QJsonObject const&) {
        requestSceneList();
        requestAudioList();
    };
    Handler const reloadCollection = [this](QJsonObject const&) {
        requestAudioList();
        requestSceneList();
    };

    subscribe(rpcRegStreamingStatusChange, StreamlabsApi::makeStreamStatusSubscription(),
        [this, data](QJsonObject const& event) {
            streamingStatus = data(event).toString();
            publishStreamingStatus();
        });
    subscribe(rpcRegRecordingStatusChange, StreamlabsApi::makeRecordStatusSubscription(),
        [this, data](QJsonObject const& event) {
            recordingStatus = data(event).toString();
            publishRecordingStatus();
        });
    subscribe(rpcRegSceneAdd, StreamlabsApi::makeSceneAddSubscription(), refreshScene);
    subscribe(rpcRegSceneRemove, StreamlabsApi::makeSceneRemoveSubscription(), refreshScene);
    subscribe(rpcRegSceneItemAdd, StreamlabsApi::makeSceneItemAddSubscription(), refreshScene);
    subscribe(rpcRegSceneItemRemove, StreamlabsApi::makeSceneItemRemoveSubscription(), refreshScene);
    subscribe(rpcRegSceneItemUpdate, StreamlabsApi::makeSceneItemUpdateSubscription(), refreshScene);
    subscribe(rpcRegSourceUpdate, StreamlabsApi::makeSourceUpdateSubscription(),
        [this, data](QJsonObject const& event) { refreshSourceData(data(event).toObject()); });
    subscribe(rpcRegSourceAdded, StreamlabsApi::makeSourceAddSubscription(), reloadSources);
    subscribe(rpcRegSourceRemove, StreamlabsApi::makeSourceRemoveSubscription(), reloadSources);
    subscribe(rpcRegSceneSwitch, StreamlabsApi::makeSceneSwitchSubscription(),
        [this, data](QJsonObject const& event) {
            activeSceneId = data(event).toObject().value("id"_L1).toString();
            publishSceneList();
        });
    subscribe(rpcRegCollectionSwitch, StreamlabsApi::makeCollectionSwitchSubscription(), reloadCollection);
    subscribe(rpcRegCollectionAdd, StreamlabsApi::makeCollectionAddSubscription(), reloadCollection);
    subscribe(rpcRegCollectionRemove, StreamlabsApi::makeCollectionRemoveSubscription(), reloadCollection);
}

// Nodes are neither added nor removed here: the list as a whole is read anew on source and collection events.
void StreamlabsService::Impl::refreshSceneData(QJsonObject const& data)
{
    Source item;
    fromJson(data, item);
    scenes.updateItem(item);
    publishSceneList();
}

void StreamlabsService::Impl::refreshSourceData(QJsonObject const& data)
{
    AudioSource source;
    fromJson(data, source);
    if (data.value("audio"_L1).toBool(false)) {
        for (auto& known : audioSources) {
            if (known.sourceId == source.sourceId) {
                known.muted = source.muted;
                known.name = source.name;
            }
        }
        publishAudioList();
    }
    scenes.rename(source.sourceId, source.name);
    publishSceneList();
}

// ---- Publications

void StreamlabsService::Impl::publish(QJsonObject const& payload)
{
    q->sendRccMessage(ZoRemoteSubjects::kSubjectStreamlabsResponse, payload);
}

void StreamlabsService::Impl::publishAuthState()
{
    publish(SlobsAgent::toAuthState(socket && socket->isValid(), token, port));
}

void StreamlabsService::Impl::publishStreamingStatus()
{
    publish(SlobsAgent::toStreamingStatus(streamingStatus));
    q->dispatchRccEvent(SlobsAgent::setStreamingLed(streamingStatus));
}

void StreamlabsService::Impl::publishRecordingStatus()
{
    publish(SlobsAgent::toRecordingStatus(recordingStatus));
    q->dispatchRccEvent(SlobsAgent::setRecordingLed(recordingStatus));
}

void StreamlabsService::Impl::publishStatusesLost()
{
    if (!streamingStatus.isEmpty()) {
        streamingStatus.clear();
        // Twice on purpose, and the recording status once: the pair is part of the protocol with the host.
        publishStreamingStatus();
        publishStreamingStatus();
    }
    if (!recordingStatus.isEmpty()) {
        recordingStatus.clear();
        publishRecordingStatus();
    }
}

void StreamlabsService::Impl::publishSceneList()
{
    publish(SlobsAgent::toSceneList(scenes.json(), activeSceneId));
}

void StreamlabsService::Impl::publishCollections()
{
    publish(SlobsAgent::toCollectionList(collections));
}

void StreamlabsService::Impl::publishAudioList()
{
    publish(SlobsAgent::toAudioList(audioSources));
}
