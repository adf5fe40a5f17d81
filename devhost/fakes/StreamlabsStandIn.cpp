#include "devhost/fakes/StreamlabsStandIn.h"

#include "devhost/fakes/DevHostLog.h"

#include <QJsonDocument>
#include <QRegularExpression>
#include <QUuid>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int kParseError = -32700;
constexpr int kInvalidRequest = -32600;
constexpr int kMethodNotFound = -32601;
constexpr int kInvalidParams = -32602;
constexpr int kInternalError = -32603;

// As JavaScript, the language of the real application, sees it.
bool isTruthy(QJsonValue const& value)
{
    switch (value.type()) {
    case QJsonValue::Bool:
        return value.toBool();
    case QJsonValue::Double:
        return value.toDouble() != 0;
    case QJsonValue::String:
        return !value.toString().isEmpty();
    case QJsonValue::Array:
    case QJsonValue::Object:
        return true;
    case QJsonValue::Null:
    case QJsonValue::Undefined:
        break;
    }
    return false;
}

QString compact(QJsonObject const& object)
{
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

struct Resource
{
    QString name;
    QStringList objectIds;
};

// `Name` or `Name["id", …]`. Where the part behind the name is no JSON array, all of it is the (unknown)
// name.
Resource parseResource(QString const& address)
{
    static QRegularExpression const form(uR"(^\s*(\w+)\s*(\[.*\])\s*$)"_s);
    QRegularExpressionMatch const match = form.match(address);
    QJsonDocument const ids = QJsonDocument::fromJson(match.captured(2).toUtf8());
    if (!ids.isArray()) {
        return {address.trimmed(), {}};
    }
    Resource resource{match.captured(1), {}};
    for (QJsonValue const id : ids.array()) {
        resource.objectIds.append(id.toString());
    }
    return resource;
}

// A model as the API hands out the objects behind it: with the address to call them by.
QJsonObject helper(QJsonObject model, QString const& name, QStringList const& ids)
{
    model[u"_type"_s] = u"HELPER"_s;
    model[u"resourceId"_s] =
        name +
        QString::fromUtf8(QJsonDocument(QJsonArray::fromStringList(ids)).toJson(QJsonDocument::Compact));
    return model;
}

QJsonArray sceneHelpers(QJsonArray const& scenes)
{
    QJsonArray helpers;
    for (QJsonValue const value : scenes) {
        QJsonObject scene = value.toObject();
        QString const sceneId = scene[u"id"_s].toString();
        QJsonArray nodes;
        for (QJsonValue const nodeValue : scene[u"nodes"_s].toArray()) {
            QJsonObject const node = nodeValue.toObject();
            QString const id = node[u"id"_s].toString();
            nodes.append(node[u"sceneNodeType"_s].toString() == "folder"_L1
                             ? helper(node, u"SceneItemFolder"_s, {sceneId, id})
                             : helper(node, u"SceneItem"_s, {sceneId, id, node[u"sourceId"_s].toString()}));
        }
        scene[u"nodes"_s] = nodes;
        helpers.append(helper(scene, u"Scene"_s, {sceneId}));
    }
    return helpers;
}

QJsonArray audioHelpers(QJsonArray const& sources)
{
    QJsonArray helpers;
    for (QJsonValue const value : sources) {
        QJsonObject const source = value.toObject();
        helpers.append(helper(source, u"AudioSource"_s, {source[u"sourceId"_s].toString()}));
    }
    return helpers;
}

QJsonObject eventMessage(QString const& emitter, QString const& resourceId, QJsonObject result)
{
    result[u"_type"_s] = u"EVENT"_s;
    result[u"emitter"_s] = emitter;
    result[u"resourceId"_s] = resourceId;
    return {{u"jsonrpc"_s, u"2.0"_s}, {u"id"_s, QJsonValue::Null}, {u"result"_s, result}};
}

QJsonObject subscription(QString const& emitter, QString const& resourceId)
{
    return {{u"_type"_s, u"SUBSCRIPTION"_s}, {u"emitter"_s, emitter}, {u"resourceId"_s, resourceId}};
}

} // namespace

StreamlabsStandIn::StreamlabsStandIn(QObject* parent) : QObject(parent), expectedToken(u"stand-in-token"_s)
{
    fillMethodTable();
    connect(&server, &SockJsServer::clientConnected, this, [this](int client) {
        clients.insert(client, {});
        emit clientCountChanged();
    });
    connect(&server, &SockJsServer::clientDisconnected, this, [this](int client) {
        clients.remove(client);
        emit clientCountChanged();
    });
    connect(&server, &SockJsServer::messageReceived, this, &StreamlabsStandIn::handleMessage);
    connect(&standInModel, &StandInModel::apiEvent, this, &StreamlabsStandIn::sendEvent);
}

// All that is understood. Ids only: a name in the place of an id is as unknown here as it is there.
void StreamlabsStandIn::fillMethodTable()
{
    auto const value = [](auto const& read) { return [read](Call const&) { return Answer{read(), 0, {}}; }; };
    auto const missing = [](QString const& what) {
        return Answer{{}, kInvalidParams, what + u" not found"_s};
    };

    methods = {
        {u"TcpServerService.auth"_s, [this](Call const& call) { return authorize(call); }},

        {u"StreamingService.getModel"_s, value([this] { return standInModel.streamingModel(); })},
        {u"StreamingService.toggleRecording"_s, value([this] {
             standInModel.toggleRecording();
             return QJsonValue();
         })},

        {u"ScenesService.activeSceneId"_s, value([this] { return standInModel.activeSceneId(); })},
        {u"ScenesService.getScenes"_s, value([this] { return sceneHelpers(standInModel.scenes()); })},
        {u"ScenesService.makeSceneActive"_s,
            [this](Call const& call) {
                QString const id = call.args[0].toString();
                return Answer{
                    !id.isEmpty() && standInModel.sceneId(id) == id && standInModel.switchScene(id), 0, {}};
            }},

        {u"SceneCollectionsService.collections"_s, value([this] { return standInModel.collections(); })},

        {u"AudioService.getSources"_s, value([this] { return audioHelpers(standInModel.audioSources()); })},
        {u"AudioService.getSourcesForScene"_s,
            [this, missing](Call const& call) {
                QString const id = call.args[0].toString();
                if (id.isEmpty() || standInModel.sceneId(id) != id) {
                    return missing(u"Scene"_s);
                }
                return Answer{audioHelpers(standInModel.audioSourcesOfScene(id)), 0, {}};
            }},

        {u"SceneItem.setVisibility"_s,
            [this, missing](Call const& call) {
                QJsonObject const item = standInModel.item(call.objectIds.value(1));
                if (item.isEmpty() || call.objectIds != QStringList{item[u"sceneId"_s].toString(),
                                                            item[u"sceneItemId"_s].toString(),
                                                            item[u"sourceId"_s].toString()}) {
                    return missing(u"Scene item"_s);
                }
                standInModel.setItemVisible(call.objectIds[1], isTruthy(call.args[0]));
                return Answer{};
            }},
        {u"AudioSource.setMuted"_s,
            [this, missing](Call const& call) {
                QString const id = call.objectIds.value(0);
                if (id.isEmpty() || standInModel.audioSourceId(id) != id) {
                    return missing(u"Audio source"_s);
                }
                standInModel.setMuted(id, isTruthy(call.args[0]));
                return Answer{};
            }},
    };

    promises = {
        {u"StreamingService.toggleStreaming"_s,
            [this] {
                standInModel.toggleStreaming();
                return QJsonValue();
            }},
        {u"SceneCollectionsService.fetchSceneCollectionsSchema"_s,
            [this] { return QJsonValue(standInModel.collectionSchemas()); }},
    };

    streams = {
        StandInEvents::kStreamingStatusChange,
        StandInEvents::kRecordingStatusChange,
        StandInEvents::kSceneAdded,
        StandInEvents::kSceneRemoved,
        StandInEvents::kSceneSwitched,
        StandInEvents::kItemAdded,
        StandInEvents::kItemRemoved,
        StandInEvents::kItemUpdated,
        StandInEvents::kCollectionAdded,
        StandInEvents::kCollectionRemoved,
        StandInEvents::kCollectionSwitched,
        StandInEvents::kSourceAdded,
        StandInEvents::kSourceRemoved,
        StandInEvents::kSourceUpdated,
    };
}

bool StreamlabsStandIn::start(quint16 port)
{
    if (!server.listen(port)) {
        return false;
    }
    startedPort = server.port();
    qInfo("StreamlabsStandIn: listening on 127.0.0.1:%d", server.port());
    emit runningChanged();
    return true;
}

void StreamlabsStandIn::stop()
{
    server.close();
    emit runningChanged();
}

void StreamlabsStandIn::quit()
{
    stop(); // first, so that no client hears of the rest
    standInModel.endOutputs();
}

void StreamlabsStandIn::drop()
{
    server.drop();
}

int StreamlabsStandIn::authorizedCount() const
{
    return static_cast<int>(std::count_if(
        clients.cbegin(), clients.cend(), [](Client const& client) { return client.authorized; }));
}

void StreamlabsStandIn::releaseReplies()
{
    for (QJsonObject const& message : std::exchange(heldReplies, {})) {
        sendObject(message);
        emit replySent(message);
    }
}

void StreamlabsStandIn::scriptReply(QString const& method, Script const& script)
{
    scripts.insert(method, script);
}

void StreamlabsStandIn::scriptResult(QString const& method, QJsonValue const& result)
{
    scriptReply(method, [result](QJsonObject const& request) {
        return QJsonObject{{u"jsonrpc"_s, u"2.0"_s}, {u"id"_s, request[u"id"_s]}, {u"result"_s, result}};
    });
}

void StreamlabsStandIn::sendObject(QJsonObject const& message)
{
    QString const text = compact(message);
    for (int const client : clients.keys()) {
        server.send(client, text);
    }
}

void StreamlabsStandIn::handleMessage(int client, QString const& message)
{
    QJsonParseError error;
    QJsonDocument const document = QJsonDocument::fromJson(message.toUtf8(), &error);
    if (error.error != QJsonParseError::NoError) {
        answer({client, {}, {}, {}}, {{}, kParseError, u"Invalid JSON: "_s + error.errorString()});
    } else if (!document.isObject()) {
        answer({client, {}, {}, {}}, {{}, kInvalidRequest, u"Invalid request: no object"_s});
    } else {
        handleRequest(client, document.object());
    }
}

void StreamlabsStandIn::handleRequest(int client, QJsonObject const& request)
{
    emit requestReceived(request);
    if (!clients.contains(client)) { // a receiver may drop the connection
        return;
    }

    QJsonValue const id = request[u"id"_s];
    QJsonObject const params = request[u"params"_s].toObject();
    Resource const resource = parseResource(params[u"resource"_s].toString());
    QString const method = resource.name + u'.' + request[u"method"_s].toString();
    Call const call{client, id, resource.objectIds, params[u"args"_s].toArray()};

    if (Script const script = scripts.value(method)) {
        if (QJsonObject const message = script(request); !message.isEmpty()) {
            reply(client, message);
        }
        return;
    }

    QStringList missing;
    if (!isTruthy(id)) {
        missing.append(u"id"_s);
    }
    if (!isTruthy(request[u"params"_s])) {
        missing.append(u"params"_s);
    } else if (!isTruthy(params[u"resource"_s])) {
        missing.append(u"params.resource"_s);
    }

    if (!missing.isEmpty()) {
        answer(call, {{}, kInvalidRequest, u"Invalid request, missing: "_s + missing.join(u", "_s)});
    } else if (method != "TcpServerService.auth"_L1 && !clients.value(client).authorized) {
        answer(call, {{}, kInternalError, u"Authorization required"_s});
    } else {
        dispatch(method, call);
    }
}

void StreamlabsStandIn::dispatch(QString const& method, Call const& call)
{
    if (auto const found = methods.constFind(method); found != methods.cend()) {
        answer(call, (*found)(call));
    } else if (auto const promise = promises.constFind(method); promise != promises.cend()) {
        answerPromise(call, *promise);
    } else if (streams.contains(method)) {
        clients[call.client].streams.insert(method);
        answer(call, {subscription(u"STREAM"_s, method), 0, {}});
    } else {
        answer(call, {{}, kMethodNotFound, u"Resource or method not found: "_s + method});
    }
}

StreamlabsStandIn::Answer StreamlabsStandIn::authorize(Call const& call)
{
    if (expectedToken.isEmpty() || call.args[0] != QJsonValue(expectedToken)) {
        qCInfo(devHostLog, "the stand-in refuses a client: its token is wrong");
        return {{}, kInternalError, u"Invalid token"_s};
    }
    clients[call.client].authorized = true;
    emit clientCountChanged();
    return {true, 0, {}};
}

// Promises are kept in the next turn of the event loop.
void StreamlabsStandIn::answerPromise(Call const& call, std::function<QJsonValue()> const& work)
{
    QString const resourceId = QUuid::createUuid().toString(QUuid::WithoutBraces);
    answer(call, {subscription(u"PROMISE"_s, resourceId), 0, {}});
    QJsonObject const event =
        eventMessage(u"PROMISE"_s, resourceId, {{u"data"_s, work()}, {u"isRejected"_s, false}});
    QMetaObject::invokeMethod(
        this, [this, client = call.client, event] { reply(client, event); }, Qt::QueuedConnection);
}

void StreamlabsStandIn::answer(Call const& call, Answer const& answer)
{
    // QJsonObject drops what is undefined, and an answer always has an id.
    QJsonObject message{{u"jsonrpc"_s, u"2.0"_s}, {u"id"_s, call.id.isUndefined() ? QJsonValue() : call.id}};
    if (answer.errorCode == 0) {
        message[u"result"_s] = answer.result;
    } else {
        message[u"error"_s] = QJsonObject{{u"code"_s, answer.errorCode}, {u"message"_s, answer.errorMessage}};
    }
    reply(call.client, message);
}

void StreamlabsStandIn::reply(int client, QJsonObject const& message)
{
    if (holdingReplies) {
        heldReplies.push_back(message);
    } else if (clients.contains(client)) {
        server.send(client, compact(message));
        emit replySent(message);
    }
}

void StreamlabsStandIn::sendEvent(QString const& resourceId, QJsonValue const& data)
{
    QString const text = compact(eventMessage(u"STREAM"_s, resourceId, {{u"data"_s, data}}));
    for (int const client : clients.keys()) {
        if (clients.value(client).streams.contains(resourceId)) {
            server.send(client, text);
        }
    }
}
