#include "streamlabs/StreamlabsService.h"

#include "relay/ZoRemoteCommands.h"
#include "streamlabs/ListPacer.h"
#include "streamlabs/SceneListCache.h"
#include "streamlabs/SlobsMessages.h"
#include "streamlabs/SockJsSocket.h"
#include "streamlabs/StreamlabsApi.h"

#include <QDebug>
#include <QMap>

#include <deque>
#include <functional>
#include <optional>
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

//! What all of the names above begin with.
constexpr auto kRpcPrefix = "slobs.jsonrpc."_L1;

// Request ids run from 1 to this and start again.
constexpr int kMaxRequestId = 2147483637;

} // namespace

// The host may react to whatever it is told by stopping the service, deleting it or sending it elsewhere. So
// what calls out answers whether the life in which it was called goes on, and who has more to say asks first.
// All that an answer or an event changes is changed before any of it is told.
class StreamlabsService::Impl
{
public:
    using Handler = std::function<void(QJsonObject const&)>;

    explicit Impl(StreamlabsService* service) : q(service) {}

    void initSocket();
    void initStreamlabsHandlers();
    void initRccHandlers();
    void reset();
    //! Ends the current life: what is being told of it stops there.
    void beginLife() { life = std::make_shared<char>(); }

    //! \name False when the life is over, or as good as over: the link is lost
    //!@{
    bool makeJsonRpcRequest(QString const& name, QJsonObject const& request);
    bool requestAudioList()
    {
        return makeJsonRpcRequest(rpcGetAudioList, StreamlabsApi::makeGetAudioListObject({}));
    }
    bool requestSceneList()
    {
        return makeJsonRpcRequest(rpcGetSceneList, StreamlabsApi::makeGetSceneListObject());
    }
    bool subscribeEvent();
    bool requestState();
    bool publish(QJsonObject const& payload);
    bool dispatch(QJsonObject const& event);
    bool publishAuthState();
    bool publishStreamingStatus();
    bool publishRecordingStatus();
    using MakeMessage = QJsonObject (*)(QString const& status);
    bool publishStatus(QString const& status, bool& isShown, MakeMessage makeResult, MakeMessage makeLed);
    bool publishList(ListPacer& list);
    bool publishSceneList() { return publishList(sceneListPacer); }
    bool publishAudioList() { return publishList(audioListPacer); }
    //! Tells what `loseStatuses` has left to tell.
    bool publishStatusesLost();
    //!@}
    //! Sends the request when connected, and tries to connect when not.
    void requestOrReconnect(QString const& name, QJsonObject const& message);
    //! Forgets the two statuses; that they are gone is to be told as far as they were known.
    void loseStatuses();

    void handleStreamlabsResponse(QJsonObject const& message);
    void onSubscribed(QString const& name, QString const& resourceId);
    void onAuthorization(QJsonObject const& message);
    void onCollectionSchema(QJsonObject const& message);
    void onEventReceived(QJsonObject const& event);
    void onConnected();
    void onDisconnected();
    void onServiceTask(QJsonObject const& task);

    void refreshSceneData(QJsonObject const& data);
    void refreshSourceData(QJsonObject const& data);

    struct Address
    {
        QString token;
        int port = 0;

        bool operator==(Address const&) const = default;
    };

    StreamlabsService* q;
    Address address;
    QString streamingStatus;
    QString recordingStatus;
    //! Whether keys or a LED may show a status: one was told, and that it is gone was not told to the end.
    bool showsStreaming = false;
    bool showsRecording = false;
    QString activeSceneId;
    SceneListCache scenes;
    QList<CollectionSchema> collections;
    QList<AudioSource> audioSources;
    ListPacer sceneListPacer{[this] { return SlobsMessages::toSceneList(scenes.json(), activeSceneId); },
        [this](QJsonObject const& payload) { publish(payload); }, [this] { return q->now(); }};
    ListPacer collectionsPacer{[this] { return SlobsMessages::toCollectionList(collections); },
        [this](QJsonObject const& payload) { publish(payload); }, [this] { return q->now(); }};
    ListPacer audioListPacer{[this] { return SlobsMessages::toAudioList(audioSources); },
        [this](QJsonObject const& payload) { publish(payload); }, [this] { return q->now(); }};
    //! What is still to be told of statuses that were lost. Whoever ends a life tells it first: keys and LEDs
    //! must not stay lit.
    std::deque<std::function<bool()>> farewells;
    //! What the handler that the relay has holds: gone when the relay is.
    std::weak_ptr<bool> heldByRelay;
    //! Held by what is under way; replaced when that is to stop.
    std::shared_ptr<char> life = std::make_shared<char>();
    //! The socket has connected, and the loss has not been reported.
    bool isUp = false;
    //! Where to go when the link that is being ended has been reported lost.
    std::optional<Address> nextAddress;
    //! The address of a live link was changed: keys that were linked are not until the new one is accepted.
    bool awaitsAcceptance = false;
    int requestId = 0;
    QMap<int, QString> pendingRequests;
    std::unique_ptr<SockJsSocket> socket;
    //! By request name: what its answer leads to, or, until it is answered, the events that it subscribes to.
    QMap<QString, Handler> responseHandlers;
    //! By the resource id of an answered subscription. What comes from outside selects among these alone.
    QMap<QString, Handler> streamHandlers;
    //! Where the handler of the collections has gone while they are promised.
    QString collectionsPromise;
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
    d->beginLife();
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
    Impl::Address const address{token, port};
    if (d->isUp && !(d->socket->isValid() && address == d->address)) {
        // Keys that follow another link, or one that was closed a moment ago, hear of its end first.
        d->nextAddress = address;
        if (d->socket->isValid()) {
            d->awaitsAcceptance = true;
            d->socket->abort();
        } else {
            d->onDisconnected();
        }
        return;
    }
    if (!d->publishStatusesLost()) {
        return;
    }
    d->beginLife();
    d->address = address;
    d->nextAddress.reset();
    d->pendingRequests.clear();
    if (d->socket) {
        d->socket->open(localhost, port);
    }
}

void StreamlabsService::closeSlobs()
{
    // All of it before anything is told: `disconnected` may come from inside `close`, and must find nothing
    // to reconnect to.
    d->loseStatuses();
    d->reset();
    std::weak_ptr const life = d->life;
    if (d->socket) {
        d->socket->close();
    }
    if (!life.expired()) {
        d->publishStatusesLost();
    }
}

void StreamlabsService::deinit()
{
    d->beginLife();
    auto* const host = relay();
    rcc = nullptr; // the host may delete its relay now
    if (host) {
        host->removeCommandHandler(ZoRemoteCommands::kSlobsServiceTask);
    }
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

std::chrono::nanoseconds StreamlabsService::now() const
{
    return std::chrono::steady_clock::now().time_since_epoch();
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
    isUp = false;
    connect(socket.get(), &SockJsSocket::connected, q, [this] { onConnected(); });
    connect(socket.get(), &SockJsSocket::textMessageReceived, q, [this](QString const& frame) {
        // A SockJS server speaks first; heartbeats and close frames need no answer.
        if (frame == "o"_L1) {
            makeJsonRpcRequest(rpcAuthorization, StreamlabsApi::makeAuthObject(address.token));
        }
    });
    connect(socket.get(), &SockJsSocket::jsonMessageReceived, q,
        [this](QJsonObject const& message) { handleStreamlabsResponse(message); });
    connect(socket.get(), &SockJsSocket::disconnected, q, [this] { onDisconnected(); });
}

void StreamlabsService::Impl::initStreamlabsHandlers()
{
    streamHandlers.clear();
    collectionsPromise.clear();
    auto const result = [](QJsonObject const& message) { return message.value("result"_L1); };

    responseHandlers = {
        {rpcAuthorization, [this](QJsonObject const& message) { onAuthorization(message); }},
        {rpcQueryModel,
            [this, result](QJsonObject const& message) {
                qDebug() << "[onGetModel]";
                QJsonObject const model = result(message).toObject();
                streamingStatus = model.value("streamingStatus"_L1).toString();
                recordingStatus = model.value("recordingStatus"_L1).toString();
                if (publishStreamingStatus()) {
                    publishRecordingStatus();
                }
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
                publishList(collectionsPacer);
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

    auto const refresh = [this](QString const& name, QJsonObject (*make)()) -> Handler {
        return [=, this](QJsonObject const&) { requestOrReconnect(name, make()); };
    };
    auto const toggle = [this](QString const& name, QJsonObject (*make)()) -> Handler {
        return [=, this](QJsonObject const&) { makeJsonRpcRequest(name, make()); };
    };
    taskHandlers = {
        {kQueryAuthState, [this](QJsonObject const&) { publishAuthState(); }},
        {kRefreshModel, refresh(rpcQueryModel, StreamlabsApi::makeQueryModelObject)},
        {kQueryStreamingStatus, [this](QJsonObject const&) { publishStreamingStatus(); }},
        {kToggleStreamingStatus, toggle(rpcToggleStream, StreamlabsApi::makeToggleStreamObject)},
        {kQueryRecordingStatus, [this](QJsonObject const&) { publishRecordingStatus(); }},
        {kToggleRecordingStatus, toggle(rpcToggleRecord, StreamlabsApi::makeToggleRecordObject)},
        {kRefreshScenes, refresh(rpcGetSceneList, StreamlabsApi::makeGetSceneListObject)},
        {kQueryScenes, [this](QJsonObject const&) { publishSceneList(); }},
        {kSetActiveScene,
            [this](QJsonObject const& task) {
                QString const id = SlobsMessages::fromSetActiveScene(task);
                makeJsonRpcRequest(rpcSetActiveScene, StreamlabsApi::makeSetActiveSceneObject(id));
            }},
        {kSetSourceVisibility,
            [this](QJsonObject const& task) {
                Source const item = SlobsMessages::fromSetSourceVisible(task);
                // Shares the scene's request name: neither answer has a handler of its own.
                makeJsonRpcRequest(rpcSetActiveScene, StreamlabsApi::makeSetSourceVisibleObject(item.sceneId,
                                                          item.sceneItemId, item.sourceId, item.visible));
            }},
        {kRefreshCollections, refresh(rpcGetCollectionSchema, StreamlabsApi::makeGetCollectionSchemaObject)},
        {kQueryCollections, [this](QJsonObject const&) { publishList(collectionsPacer); }},
        {kRefreshAudioList,
            [this](QJsonObject const& task) {
                QString const sceneId = SlobsMessages::fromRefreshAudioList(task);
                requestOrReconnect(rpcGetAudioList, StreamlabsApi::makeGetAudioListObject(sceneId));
            }},
        {kQueryAudioList, [this](QJsonObject const&) { publishAudioList(); }},
        {kSetAudioMute,
            [this](QJsonObject const& task) {
                AudioSource const source = SlobsMessages::fromSetAudioMute(task);
                makeJsonRpcRequest(
                    rpcSetAudioMute, StreamlabsApi::makeSetAudioMuteObject(source.sourceId, source.muted));
            }},
    };

    auto const held = std::make_shared<bool>();
    heldByRelay = held;
    q->addRccTaskHandler(ZoRemoteCommands::kSlobsServiceTask,
        [this, held](QWebSocket*, QJsonObject const& task) { onServiceTask(task); });
}

void StreamlabsService::Impl::reset()
{
    beginLife();
    streamingStatus.clear();
    recordingStatus.clear();
    activeSceneId.clear();
    address = {};
    nextAddress.reset();
    awaitsAcceptance = false;
    requestId = 0;
    scenes.clear();
    collections.clear();
    audioSources.clear();
    sceneListPacer.cancel();
    collectionsPacer.cancel();
    audioListPacer.cancel();
    pendingRequests.clear();
    initStreamlabsHandlers();
}

// ---- Requests and what comes back

bool StreamlabsService::Impl::makeJsonRpcRequest(QString const& name, QJsonObject const& request)
{
    if (!socket || !socket->isValid()) {
        qWarning() << "makeJsonRpcRequest: ignore" << name << request;
        return true;
    }
    if (requestId >= kMaxRequestId) {
        requestId = 0;
    }
    ++requestId;
    pendingRequests.insert(requestId, name);
    QJsonObject numbered = request;
    numbered.insert("id"_L1, requestId);
    std::weak_ptr const watch = life;
    socket->sendJsonMessage(numbered);
    // Sending may show that the link is lost some time before the socket reports it.
    return !watch.expired() && socket->isValid();
}

void StreamlabsService::Impl::requestOrReconnect(QString const& name, QJsonObject const& message)
{
    if (socket && socket->isValid()) {
        makeJsonRpcRequest(name, message);
    } else {
        q->connectSlobs(address.token, address.port);
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
        if (type == kTypeEvent) {
            onEventReceived(result);
            return;
        }
        if (type == kTypeSubscription) {
            onSubscribed(name, result.value("resourceId"_L1).toString());
            return;
        }
    }
    if (Handler const handler = responseHandlers.value(name)) { // a copy, for it may take itself out
        handler(message);
    } else {
        qCritical() << "[StreamlabsResponse] WTF WTF" << name;
    }
}

// From now on the handler is found by the resource id that the stream's events carry.
void StreamlabsService::Impl::onSubscribed(QString const& name, QString const& resourceId)
{
    if (resourceId == kTypeEvent || resourceId.startsWith(kRpcPrefix)) {
        qDebug() << "TODO: onEventReceived" << resourceId; // no stream is called as we call our requests
    } else if (Handler const handler = responseHandlers.take(name)) {
        streamHandlers.insert(resourceId, handler);
        if (name == rpcGetCollectionSchema) {
            collectionsPromise = resourceId;
        }
    } else {
        qCritical() << "UNABLE set" << name << "to" << resourceId;
    }
}

void StreamlabsService::Impl::onAuthorization(QJsonObject const& message)
{
    if (message.value("result"_L1).toBool()) {
        awaitsAcceptance = false;
        if (!subscribeEvent() || !requestState()) {
            return;
        }
    } else {
        qCritical() << "auth failed";
    }
    publishAuthState();
}

bool StreamlabsService::Impl::requestState()
{
    auto const requestModel = [this] {
        return makeJsonRpcRequest(rpcQueryModel, StreamlabsApi::makeQueryModelObject());
    };
    return requestModel() &&
           makeJsonRpcRequest(rpcGetActiveScene, StreamlabsApi::makeGetActiveSceneObject()) &&
           requestAudioList() && requestSceneList() && requestModel();
}

// Streamlabs Desktop may answer with a promise. Its one event then comes here in place of an answer, with the
// schema under "data", and this handler has to move back from the promise's resource id for the next request
// to find it.
void StreamlabsService::Impl::onCollectionSchema(QJsonObject const& message)
{
    bool const isPromise = !message.contains("result"_L1);
    if (isPromise) {
        QString const resourceId = message.value("resourceId"_L1).toString();
        responseHandlers.insert(rpcGetCollectionSchema, streamHandlers.take(resourceId));
        if (message.value("isRejected"_L1).toBool()) {
            qWarning() << "[onGetCollectionSchema] rejected" << message.value("data"_L1);
            return;
        }
    }
    fromJson(message.value(isPromise ? "data"_L1 : "result"_L1).toArray(), collections);
    publishList(collectionsPacer);
    qDebug() << "[onGetCollectionSchema]";
}

void StreamlabsService::Impl::onEventReceived(QJsonObject const& event)
{
    QString const resourceId = event.value("resourceId"_L1).toString();
    if (Handler const handler = streamHandlers.value(resourceId)) { // a copy, for it may take itself out
        handler(event);
    } else {
        qDebug() << "TODO: onEventReceived" << resourceId;
    }
}

void StreamlabsService::Impl::onConnected()
{
    isUp = true;
    qInfo() << "connected to Streamlabs server";
    if (address.token.isEmpty()) {
        socket->close(); // closed during the attempt, which cannot be stopped then
    }
}

void StreamlabsService::Impl::onDisconnected()
{
    isUp = false;
    pendingRequests.clear(); // what answers them now belongs to nobody
    loseStatuses();
    if (publishAuthState() && publishStatusesLost()) {
        auto const [token, port] = std::exchange(nextAddress, std::nullopt).value_or(address);
        q->connectSlobs(token, port);
    }
}

void StreamlabsService::Impl::onServiceTask(QJsonObject const& task)
{
    auto const name = SlobsMessages::nameOfTask(task);
    if (!name) {
        qCritical() << "[onServiceTask] Unknown task" << task;
        return;
    }
    auto const entry = taskHandlers.constFind(*name);
    if (entry == taskHandlers.constEnd()) {
        qCritical() << "[onServiceTask] TODO" << *name;
    } else if (Handler const handler = *entry) { // a copy, for it may end the service
        handler(task);
    } else {
        qCritical() << "[onServiceTask]" << *name;
    }
}

// ---- Events

bool StreamlabsService::Impl::subscribeEvent()
{
    auto const data = [](QJsonObject const& event) { return event.value("data"_L1); };
    // A promise of the last connection may have taken it along, and its event never came.
    streamHandlers.remove(std::exchange(collectionsPromise, {}));
    responseHandlers[rpcGetCollectionSchema] = [this](
                                                   QJsonObject const& answer) { onCollectionSchema(answer); };
    Handler const refreshScene = [this, data](
                                     QJsonObject const& event) { refreshSceneData(data(event).toObject()); };
    Handler const reloadSources = [this](QJsonObject const&) {
        if (requestSceneList()) {
            requestAudioList();
        }
    };
    Handler const reloadCollection = [this](QJsonObject const&) {
        if (requestAudioList()) {
            requestSceneList();
        }
    };
    struct Subscription
    {
        QString name;
        QJsonObject request;
        Handler handler;
    };
    Subscription const subscriptions[] = {
        {rpcRegStreamingStatusChange, StreamlabsApi::makeStreamStatusSubscription(),
            [this, data](QJsonObject const& event) {
                streamingStatus = data(event).toString();
                publishStreamingStatus();
            }},
        {rpcRegRecordingStatusChange, StreamlabsApi::makeRecordStatusSubscription(),
            [this, data](QJsonObject const& event) {
                recordingStatus = data(event).toString();
                publishRecordingStatus();
            }},
        {rpcRegSceneAdd, StreamlabsApi::makeSceneAddSubscription(), refreshScene},
        {rpcRegSceneRemove, StreamlabsApi::makeSceneRemoveSubscription(), refreshScene},
        {rpcRegSceneItemAdd, StreamlabsApi::makeSceneItemAddSubscription(), refreshScene},
        {rpcRegSceneItemRemove, StreamlabsApi::makeSceneItemRemoveSubscription(), refreshScene},
        {rpcRegSceneItemUpdate, StreamlabsApi::makeSceneItemUpdateSubscription(), refreshScene},
        {rpcRegSourceUpdate, StreamlabsApi::makeSourceUpdateSubscription(),
            [this, data](QJsonObject const& event) { refreshSourceData(data(event).toObject()); }},
        {rpcRegSourceAdded, StreamlabsApi::makeSourceAddSubscription(), reloadSources},
        {rpcRegSourceRemove, StreamlabsApi::makeSourceRemoveSubscription(), reloadSources},
        {rpcRegSceneSwitch, StreamlabsApi::makeSceneSwitchSubscription(),
            [this, data](QJsonObject const& event) {
                activeSceneId = data(event).toObject().value("id"_L1).toString();
                publishSceneList();
            }},
        {rpcRegCollectionSwitch, StreamlabsApi::makeCollectionSwitchSubscription(), reloadCollection},
        {rpcRegCollectionAdd, StreamlabsApi::makeCollectionAddSubscription(), reloadCollection},
        {rpcRegCollectionRemove, StreamlabsApi::makeCollectionRemoveSubscription(), reloadCollection},
    };
    for (auto const& [name, request, handler] : subscriptions) {
        responseHandlers[name] = handler;
        if (!makeJsonRpcRequest(name, request)) {
            return false;
        }
    }
    return true;
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
    bool const isAudio = data.value("audio"_L1).toBool(false);
    if (isAudio) {
        for (auto& known : audioSources) {
            if (known.sourceId == source.sourceId) {
                known.muted = source.muted;
                known.name = source.name;
            }
        }
    }
    scenes.rename(source.sourceId, source.name);
    if (!isAudio || publishAudioList()) {
        publishSceneList();
    }
}

// ---- Publications

bool StreamlabsService::Impl::publish(QJsonObject const& payload)
{
    std::weak_ptr const watch = life;
    q->sendRccMessage(ZoRemoteSubjects::kSubjectStreamlabsResponse, payload);
    return !watch.expired();
}

bool StreamlabsService::Impl::dispatch(QJsonObject const& event)
{
    std::weak_ptr const watch = life;
    q->dispatchRccEvent(event);
    return !watch.expired();
}

bool StreamlabsService::Impl::publishAuthState()
{
    bool const isLinked = socket && socket->isValid() && !awaitsAcceptance;
    return publish(SlobsMessages::toAuthState(isLinked, address.token, address.port));
}

bool StreamlabsService::Impl::publishStreamingStatus()
{
    return publishStatus(
        streamingStatus, showsStreaming, SlobsMessages::toStreamingStatus, SlobsMessages::setStreamingLed);
}

bool StreamlabsService::Impl::publishRecordingStatus()
{
    return publishStatus(
        recordingStatus, showsRecording, SlobsMessages::toRecordingStatus, SlobsMessages::setRecordingLed);
}

bool StreamlabsService::Impl::publishStatus(
    QString const& status, bool& isShown, MakeMessage makeResult, MakeMessage makeLed)
{
    isShown = isShown || !status.isEmpty();
    if (!publish(makeResult(status)) || !dispatch(makeLed(status))) {
        return false;
    }
    isShown = !status.isEmpty();
    return true;
}

bool StreamlabsService::Impl::publishList(ListPacer& list)
{
    std::weak_ptr const watch = life;
    list.publish();
    return !watch.expired();
}

void StreamlabsService::Impl::loseStatuses()
{
    auto const say = [this](QJsonObject const& result, QJsonObject const& led) {
        farewells.emplace_back([this, result] { return publish(result); });
        farewells.emplace_back([this, led] { return dispatch(led); });
    };
    streamingStatus.clear();
    recordingStatus.clear();
    if (std::exchange(showsStreaming, false)) {
        // Twice on purpose, and the recording status once: the pair is part of the protocol with the host.
        say(SlobsMessages::toStreamingStatus({}), SlobsMessages::setStreamingLed({}));
        say(SlobsMessages::toStreamingStatus({}), SlobsMessages::setStreamingLed({}));
    }
    if (std::exchange(showsRecording, false)) {
        say(SlobsMessages::toRecordingStatus({}), SlobsMessages::setRecordingLed({}));
    }
}

bool StreamlabsService::Impl::publishStatusesLost()
{
    while (!farewells.empty()) {
        auto const say = std::move(farewells.front());
        farewells.pop_front(); // before it is said, for whoever ends this life goes on with the next
        if (!say()) {
            return false;
        }
    }
    return true;
}
