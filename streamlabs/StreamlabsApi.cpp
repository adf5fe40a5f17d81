#include "streamlabs/StreamlabsApi.h"

#include <QDebug>

using namespace Qt::StringLiterals;
using namespace StreamlabsApiPrivate;

namespace {

template <typename Record>
void decodeList(QJsonArray const& array, QList<Record>& records)
{
    records.clear();
    records.reserve(array.size());
    for (auto const& element : array) {
        if (element.isObject()) {
            fromJson(element.toObject(), records.emplaceBack());
        }
    }
}

template <typename Record>
QJsonArray encodeList(QList<Record> const& records)
{
    QJsonArray array;
    for (auto const& record : records) {
        array.append(toJson(record));
    }
    return array;
}

QJsonObject makeCall(QString const& method, QString const& resource)
{
    return StreamlabsApi::makeJsonRpcObject(method, StreamlabsApi::makeEmptyArgsObject(resource));
}

QJsonObject makeCall(QString const& method, QString const& resource, QVariant const& arg)
{
    return StreamlabsApi::makeJsonRpcObject(method, StreamlabsApi::makeArgsObject(resource, arg));
}

} // namespace

// ---- Records

void StreamlabsApiPrivate::fromJson(QJsonObject const& object, Source& source)
{
    source.id = object.value("id"_L1).toString();
    source.name = object.value("name"_L1).toString();
    source.parentId = object.value("parentId"_L1).toString();
    source.sceneId = object.value("sceneId"_L1).toString();
    source.sceneItemId = object.value("sceneItemId"_L1).toString();
    source.sceneNodeType = object.value("sceneNodeType"_L1).toString();
    source.sourceId = object.value("sourceId"_L1).toString();
    source.locked = object.value("locked"_L1).toBool(false);
    source.streamVisible = object.value("streamVisible"_L1).toBool(true);
    source.recordVisible = object.value("recordVisible"_L1).toBool(true);
    source.visible = object.value("visible"_L1).toBool(true);
}

void StreamlabsApiPrivate::fromJson(QJsonObject const& object, Scene& scene)
{
    scene.id = object.value("id"_L1).toString();
    scene.name = object.value("name"_L1).toString();
    if (object.contains("nodes"_L1)) {
        fromJson(object.value("nodes"_L1).toArray(), scene.nodes);
    }
}

void StreamlabsApiPrivate::fromJson(QJsonObject const& object, SourceSchema& source)
{
    source.id = object.value("id"_L1).toString();
    source.name = object.value("name"_L1).toString();
    source.type = object.value("type"_L1).toString();
    source.channel = object.value("channel"_L1).toInt();
}

void StreamlabsApiPrivate::fromJson(QJsonObject const& object, CollectionSchema& collection)
{
    collection.id = object.value("id"_L1).toString();
    collection.name = object.value("name"_L1).toString();
    if (object.contains("scenes"_L1)) {
        fromJson(object.value("scenes"_L1).toArray(), collection.scenes);
    }
    if (object.contains("sources"_L1)) {
        fromJson(object.value("sources"_L1).toArray(), collection.sources);
    }
    qDebug() << ">>" << collection.scenes.size() << collection.sources.size();
}

void StreamlabsApiPrivate::fromJson(QJsonObject const& object, AudioSource& source)
{
    source.sourceId = object.value("sourceId"_L1).toString();
    source.name = object.value("name"_L1).toString();
    source.muted = object.value("muted"_L1).toBool(false);
}

void StreamlabsApiPrivate::fromJson(QJsonArray const& array, QList<Source>& sources)
{
    decodeList(array, sources);
}

void StreamlabsApiPrivate::fromJson(QJsonArray const& array, QList<Scene>& scenes)
{
    decodeList(array, scenes);
}

void StreamlabsApiPrivate::fromJson(QJsonArray const& array, QList<SourceSchema>& sources)
{
    decodeList(array, sources);
}

void StreamlabsApiPrivate::fromJson(QJsonArray const& array, QList<CollectionSchema>& collections)
{
    decodeList(array, collections);
}

void StreamlabsApiPrivate::fromJson(QJsonArray const& array, QList<AudioSource>& sources)
{
    decodeList(array, sources);
}

QJsonObject StreamlabsApiPrivate::toJson(Source const& source)
{
    return {{u"id"_s, source.id}, {u"name"_s, source.name}, {u"parentId"_s, source.parentId},
        {u"sceneId"_s, source.sceneId}, {u"sceneItemId"_s, source.sceneItemId},
        {u"sceneNodeType"_s, source.sceneNodeType}, {u"sourceId"_s, source.sourceId},
        {u"locked"_s, source.locked}, {u"streamVisible"_s, source.streamVisible},
        {u"recordVisible"_s, source.recordVisible}, {u"visible"_s, source.visible}};
}

QJsonObject StreamlabsApiPrivate::toJson(Scene const& scene)
{
    return {{u"id"_s, scene.id}, {u"name"_s, scene.name}, {u"nodes"_s, toJson(scene.nodes)}};
}

QJsonObject StreamlabsApiPrivate::toJson(SourceSchema const& source)
{
    return {{u"id"_s, source.id}, {u"name"_s, source.name}, {u"type"_s, source.type},
        {u"channel"_s, source.channel}};
}

QJsonObject StreamlabsApiPrivate::toJson(CollectionSchema const& collection)
{
    return {{u"id"_s, collection.id}, {u"name"_s, collection.name}, {u"scenes"_s, toJson(collection.scenes)},
        {u"sources"_s, toJson(collection.sources)}};
}

QJsonObject StreamlabsApiPrivate::toJson(AudioSource const& source)
{
    return {{u"sourceId"_s, source.sourceId}, {u"name"_s, source.name}, {u"muted"_s, source.muted}};
}

QJsonArray StreamlabsApiPrivate::toJson(QList<Source> const& sources)
{
    return encodeList(sources);
}

QJsonArray StreamlabsApiPrivate::toJson(QList<Scene> const& scenes)
{
    return encodeList(scenes);
}

QJsonArray StreamlabsApiPrivate::toJson(QList<SourceSchema> const& sources)
{
    return encodeList(sources);
}

QJsonArray StreamlabsApiPrivate::toJson(QList<CollectionSchema> const& collections)
{
    return encodeList(collections);
}

QJsonArray StreamlabsApiPrivate::toJson(QList<AudioSource> const& sources)
{
    return encodeList(sources);
}

// ---- Requests

QJsonObject StreamlabsApi::makeJsonRpcObject(QString const& method, QJsonObject const& params)
{
    return {{u"jsonrpc"_s, u"2.0"_s}, {u"method"_s, method}, {u"params"_s, params}};
}

QJsonObject StreamlabsApi::makeEmptyArgsObject(QString const& resource)
{
    return {{u"resource"_s, resource}, {u"args"_s, QJsonArray()}};
}

QJsonObject StreamlabsApi::makeArgsObject(QString const& resource, QVariant const& arg)
{
    bool const isBool = arg.metaType().id() == QMetaType::Bool;
    QJsonValue const value = isBool ? QJsonValue(arg.toBool()) : QJsonValue(arg.toString());
    return {{u"resource"_s, resource}, {u"args"_s, QJsonArray{value}}};
}

QJsonObject StreamlabsApi::makeAuthObject(QString const& token)
{
    return makeCall(kMethodAuth, kServiceTcpServer, token);
}

QJsonObject StreamlabsApi::makeQueryModelObject()
{
    return makeCall(kMethodStreamingGetModel, kServiceStreaming);
}

QJsonObject StreamlabsApi::makeToggleStreamObject()
{
    return makeCall(kMethodStreamingToggleStream, kServiceStreaming);
}

QJsonObject StreamlabsApi::makeToggleRecordObject()
{
    return makeCall(kMethodStreamingToggleRecord, kServiceStreaming);
}

QJsonObject StreamlabsApi::makeStreamStatusSubscription()
{
    return makeCall(kMethodStreamingStreamChange, kServiceStreaming);
}

QJsonObject StreamlabsApi::makeRecordStatusSubscription()
{
    return makeCall(kMethodStreamingRecordChange, kServiceStreaming);
}

QJsonObject StreamlabsApi::makeGetSceneListObject()
{
    return makeCall(kMethodSceneGetAll, kServiceScene);
}

QJsonObject StreamlabsApi::makeGetActiveSceneObject()
{
    return makeCall(kMethodSceneGetActive, kServiceScene);
}

QJsonObject StreamlabsApi::makeSetActiveSceneObject(QString const& sceneId)
{
    return makeCall(kMethodSceneSetActive, kServiceScene, sceneId);
}

QJsonObject StreamlabsApi::makeSetSourceVisibleObject(
    QString const& sceneId, QString const& sceneItemId, QString const& sourceId, bool visible)
{
    return makeCall(
        kMethodSetVisibility, u"SceneItem['%1', '%2', '%3']"_s.arg(sceneId, sceneItemId, sourceId), visible);
}

QJsonObject StreamlabsApi::makeSceneAddSubscription()
{
    return makeCall(kMethodSceneAdded, kServiceScene);
}

QJsonObject StreamlabsApi::makeSceneRemoveSubscription()
{
    return makeCall(kMethodSceneRemoved, kServiceScene);
}

QJsonObject StreamlabsApi::makeSceneSwitchSubscription()
{
    return makeCall(kMethodSceneSwitch, kServiceScene);
}

QJsonObject StreamlabsApi::makeSceneItemAddSubscription()
{
    return makeCall(kMethodSceneItemAdded, kServiceScene);
}

QJsonObject StreamlabsApi::makeSceneItemRemoveSubscription()
{
    return makeCall(kMethodSceneItemRemoved, kServiceScene);
}

QJsonObject StreamlabsApi::makeSceneItemUpdateSubscription()
{
    return makeCall(kMethodSceneItemUpdated, kServiceScene);
}

QJsonObject StreamlabsApi::makeGetCollectionListObject()
{
    return makeCall(kMethodCollectionGetAll, kServiceCollection);
}

QJsonObject StreamlabsApi::makeGetCollectionSchemaObject()
{
    return makeCall(kMethodCollectionGetSchema, kServiceCollection);
}

QJsonObject StreamlabsApi::makeCollectionAddSubscription()
{
    return makeCall(kMethodCollectionAdded, kServiceCollection);
}

QJsonObject StreamlabsApi::makeCollectionRemoveSubscription()
{
    return makeCall(kMethodCollectionRemove, kServiceCollection);
}

QJsonObject StreamlabsApi::makeCollectionSwitchSubscription()
{
    return makeCall(kMethodCollectionSwitch, kServiceCollection);
}

QJsonObject StreamlabsApi::makeGetAudioListObject(QString const& sceneId)
{
    return sceneId.isEmpty() ? makeCall(kMethodAudioGetAll, kServiceAudio)
                             : makeCall(kMethodAudioGetAllByScene, kServiceAudio, sceneId);
}

QJsonObject StreamlabsApi::makeSetAudioMuteObject(QString const& sourceId, bool muted)
{
    QString const address = u"AudioSource['%1']"_s.arg(sourceId);
    QJsonObject const params = makeArgsObject(address, muted);
    qDebug() << "resource" << address << params;
    return makeJsonRpcObject(kMethodSetMuted, params);
}

QJsonObject StreamlabsApi::makeSourceAddSubscription()
{
    return makeCall(kMethodSourceAdded, kServiceSource);
}

QJsonObject StreamlabsApi::makeSourceRemoveSubscription()
{
    return makeCall(kMethodSourceRemoved, kServiceSource);
}

QJsonObject StreamlabsApi::makeSourceUpdateSubscription()
{
    return makeCall(kMethodSourceUpdated, kServiceSource);
}
