#include "streamlabs/StreamlabsApi.h"

#include <QDebug>

#include <algorithm>
#include <tuple>
#include <type_traits>

using namespace Qt::StringLiterals;
using namespace StreamlabsApiPrivate;

namespace {

//! One member of a record: its key, and its place.
template <typename Record, typename Value>
struct Member
{
    QLatin1StringView key;
    Value Record::* place;
};

template <typename Record, typename Value>
Member(QLatin1StringView, Value Record::*) -> Member<Record, Value>;

constexpr std::tuple kSourceMembers{Member{"id"_L1, &Source::id}, Member{"name"_L1, &Source::name},
    Member{"parentId"_L1, &Source::parentId}, Member{"sceneId"_L1, &Source::sceneId},
    Member{"sceneItemId"_L1, &Source::sceneItemId}, Member{"sceneNodeType"_L1, &Source::sceneNodeType},
    Member{"sourceId"_L1, &Source::sourceId}, Member{"locked"_L1, &Source::locked},
    Member{"streamVisible"_L1, &Source::streamVisible}, Member{"recordVisible"_L1, &Source::recordVisible},
    Member{"visible"_L1, &Source::visible}};
constexpr std::tuple kSceneMembers{
    Member{"id"_L1, &Scene::id}, Member{"name"_L1, &Scene::name}, Member{"nodes"_L1, &Scene::nodes}};
constexpr std::tuple kSourceSchemaMembers{Member{"id"_L1, &SourceSchema::id},
    Member{"name"_L1, &SourceSchema::name}, Member{"type"_L1, &SourceSchema::type},
    Member{"channel"_L1, &SourceSchema::channel}};
constexpr std::tuple kCollectionSchemaMembers{Member{"id"_L1, &CollectionSchema::id},
    Member{"name"_L1, &CollectionSchema::name}, Member{"scenes"_L1, &CollectionSchema::scenes},
    Member{"sources"_L1, &CollectionSchema::sources}};
constexpr std::tuple kAudioSourceMembers{Member{"sourceId"_L1, &AudioSource::sourceId},
    Member{"name"_L1, &AudioSource::name}, Member{"muted"_L1, &AudioSource::muted}};

template <typename Value>
void read(QJsonValue const& json, Value& value, Value const& otherwise)
{
    if constexpr (std::is_same_v<Value, QString>) {
        value = json.toString(otherwise);
    } else if constexpr (std::is_same_v<Value, bool>) {
        value = json.toBool(otherwise);
    } else if constexpr (std::is_same_v<Value, int>) {
        value = json.toInt(otherwise);
    } else if (!json.isUndefined()) {
        fromJson(json.toArray(), value);
    }
}

template <typename Value>
QJsonValue write(Value const& value)
{
    if constexpr (requires { toJson(value); }) {
        return toJson(value);
    } else {
        return value;
    }
}

template <typename Record, typename... Values>
void decode(QJsonObject const& object, Record& record, std::tuple<Member<Record, Values>...> const& members)
{
    Record const defaults;
    std::apply(
        [&](auto const&... member) {
            (read(object.value(member.key), record.*member.place, defaults.*member.place), ...);
        },
        members);
}

template <typename Record, typename... Values>
QJsonObject encode(Record const& record, std::tuple<Member<Record, Values>...> const& members)
{
    return std::apply(
        [&record](
            auto const&... member) { return QJsonObject{{member.key, write(record.*member.place)}...}; },
        members);
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
    decode(object, source, kSourceMembers);
}

QJsonObject StreamlabsApiPrivate::toJson(Source const& source)
{
    return encode(source, kSourceMembers);
}

void StreamlabsApiPrivate::fromJson(QJsonObject const& object, Scene& scene)
{
    decode(object, scene, kSceneMembers);
}

QJsonObject StreamlabsApiPrivate::toJson(Scene const& scene)
{
    return encode(scene, kSceneMembers);
}

void StreamlabsApiPrivate::fromJson(QJsonObject const& object, SourceSchema& source)
{
    decode(object, source, kSourceSchemaMembers);
}

QJsonObject StreamlabsApiPrivate::toJson(SourceSchema const& source)
{
    return encode(source, kSourceSchemaMembers);
}

void StreamlabsApiPrivate::fromJson(QJsonObject const& object, CollectionSchema& collection)
{
    decode(object, collection, kCollectionSchemaMembers);
    qDebug() << ">>" << collection.scenes.size() << collection.sources.size();
}

QJsonObject StreamlabsApiPrivate::toJson(CollectionSchema const& collection)
{
    return encode(collection, kCollectionSchemaMembers);
}

void StreamlabsApiPrivate::fromJson(QJsonObject const& object, AudioSource& source)
{
    decode(object, source, kAudioSourceMembers);
}

QJsonObject StreamlabsApiPrivate::toJson(AudioSource const& source)
{
    return encode(source, kAudioSourceMembers);
}

Source const* StreamlabsApiPrivate::findItem(
    QList<Scene> const& scenes, QString const& sceneId, QString const& itemId)
{
    auto const scene = std::ranges::find(scenes, sceneId, &Scene::id);
    if (scene == scenes.end() || itemId.isEmpty()) {
        return nullptr;
    }
    auto const node = std::ranges::find(scene->nodes, itemId, &Source::sceneItemId);
    return node == scene->nodes.end() ? nullptr : &*node;
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
