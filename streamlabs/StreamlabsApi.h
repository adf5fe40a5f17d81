#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QVariant>

//! The vocabulary of Streamlabs Desktop's remote-control API, and the records that describe its state. The
//! same JSON forms travel over the host's relay.
namespace StreamlabsApiPrivate {

//! Values of a result's "_type".
inline QString const kTypeEvent = QString::fromLatin1("EVENT");
inline QString const kTypeSubscription = QString::fromLatin1("SUBSCRIPTION");
inline QString const kTypeHelper = QString::fromLatin1("HELPER");

//! Resources.
inline QString const kServiceTcpServer = QString::fromLatin1("TcpServerService");
inline QString const kServiceStreaming = QString::fromLatin1("StreamingService");
inline QString const kServiceScene = QString::fromLatin1("ScenesService");
inline QString const kServiceSource = QString::fromLatin1("SourcesService");
inline QString const kServiceCollection = QString::fromLatin1("SceneCollectionsService");
inline QString const kServiceAudio = QString::fromLatin1("AudioService");

//! Methods, properties and event streams.
inline QString const kMethodAuth = QString::fromLatin1("auth");
inline QString const kMethodStreamingGetModel = QString::fromLatin1("getModel");
inline QString const kMethodStreamingToggleStream = QString::fromLatin1("toggleStreaming");
inline QString const kMethodStreamingToggleRecord = QString::fromLatin1("toggleRecording");
inline QString const kMethodStreamingStreamChange = QString::fromLatin1("streamingStatusChange");
inline QString const kMethodStreamingRecordChange = QString::fromLatin1("recordingStatusChange");
inline QString const kMethodSceneGetActive = QString::fromLatin1("activeSceneId");
inline QString const kMethodSceneSetActive = QString::fromLatin1("makeSceneActive");
inline QString const kMethodSceneGetAll = QString::fromLatin1("getScenes");
inline QString const kMethodCollectionGetAll = QString::fromLatin1("collections");
inline QString const kMethodCollectionGetSchema = QString::fromLatin1("fetchSceneCollectionsSchema");
inline QString const kMethodAudioGetAll = QString::fromLatin1("getSources");
inline QString const kMethodAudioGetAllByScene = QString::fromLatin1("getSourcesForScene");
inline QString const kMethodSceneAdded = QString::fromLatin1("sceneAdded");
inline QString const kMethodSceneRemoved = QString::fromLatin1("sceneRemoved");
inline QString const kMethodSceneSwitch = QString::fromLatin1("sceneSwitched");
inline QString const kMethodSceneItemAdded = QString::fromLatin1("itemAdded");
inline QString const kMethodSceneItemRemoved = QString::fromLatin1("itemRemoved");
inline QString const kMethodSceneItemUpdated = QString::fromLatin1("itemUpdated");
inline QString const kMethodCollectionAdded = QString::fromLatin1("collectionAdded");
inline QString const kMethodCollectionRemove = QString::fromLatin1("collectionRemoved");
inline QString const kMethodCollectionSwitch = QString::fromLatin1("collectionSwitched");
inline QString const kMethodSourceAdded = QString::fromLatin1("sourceAdded");
inline QString const kMethodSourceRemoved = QString::fromLatin1("sourceRemoved");
inline QString const kMethodSourceUpdated = QString::fromLatin1("sourceUpdated");
inline QString const kMethodSetVisibility = QString::fromLatin1("setVisibility");
inline QString const kMethodSetMuted = QString::fromLatin1("setMuted");

//! One node of a scene: an item (a source placed in the scene) or a folder, which has no scene item id.
//! {"id", "name", "parentId", "sceneId", "sceneItemId", "sceneNodeType", "sourceId": strings, "locked",
//! "streamVisible", "recordVisible", "visible": bools}
struct Source
{
    QString id;
    QString name;
    bool recordVisible = true;
    bool streamVisible = true;
    bool visible = true;
    bool locked = false;
    QString sceneItemId;
    QString sceneId;
    QString sourceId;
    QString sceneNodeType;
    QString parentId;

    bool operator==(Source const&) const = default;
};

//! {"id", "name": strings, "nodes": array of Source in display order}
struct Scene
{
    QString id;
    QString name;
    QList<Source> nodes;

    bool operator==(Scene const&) const = default;
};

//! A source as a collection schema lists it: {"id", "name", "type": strings, "channel": integer}
struct SourceSchema
{
    QString id;
    QString name;
    QString type;
    int channel = 0;

    bool operator==(SourceSchema const&) const = default;
};

//! A scene collection: {"id", "name": strings, "scenes": array of Scene, "sources": array of SourceSchema}
struct CollectionSchema
{
    QString id;
    QString name;
    QList<Scene> scenes;
    QList<SourceSchema> sources;

    bool operator==(CollectionSchema const&) const = default;
};

//! {"sourceId", "name": strings, "muted": bool}
struct AudioSource
{
    QString sourceId;
    QString name;
    bool muted = false;

    bool operator==(AudioSource const&) const = default;
};

//! Decoders. A key that is missing or of another type gives the record's default; for the lists inside a
//! record a missing key leaves the list as it is.
void fromJson(QJsonObject const& object, Source& source);
void fromJson(QJsonObject const& object, Scene& scene);
void fromJson(QJsonObject const& object, SourceSchema& source);
void fromJson(QJsonObject const& object, CollectionSchema& collection);
void fromJson(QJsonObject const& object, AudioSource& source);

QJsonObject toJson(Source const& source);
QJsonObject toJson(Scene const& scene);
QJsonObject toJson(SourceSchema const& source);
QJsonObject toJson(CollectionSchema const& collection);
QJsonObject toJson(AudioSource const& source);

//! A list of any of them: it is cleared first; elements that are not objects are skipped.
template <typename Record>
void fromJson(QJsonArray const& array, QList<Record>& records)
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
QJsonArray toJson(QList<Record> const& records)
{
    QJsonArray array;
    for (auto const& record : records) {
        array.append(toJson(record));
    }
    return array;
}

//! The item \a itemId of the scene \a sceneId, or null.
Source const* findItem(QList<Scene> const& scenes, QString const& sceneId, QString const& itemId);

} // namespace StreamlabsApiPrivate

//! Builds every request that the package sends to Streamlabs Desktop (JSON-RPC 2.0):
//! {"jsonrpc": "2.0", "method": string, "params": {"resource": string, "args": array of at most one}}.
//! The "id" is missing: the service adds it when it sends. Pure functions, nothing is sent here.
//!
//! A subscription is a request whose method names an event stream of the resource.
class StreamlabsApi
{
public:
    static QJsonObject makeAuthObject(QString const& token);

    static QJsonObject makeQueryModelObject();
    static QJsonObject makeToggleStreamObject();
    static QJsonObject makeToggleRecordObject();
    static QJsonObject makeStreamStatusSubscription();
    static QJsonObject makeRecordStatusSubscription();

    static QJsonObject makeGetSceneListObject();
    static QJsonObject makeGetActiveSceneObject();
    static QJsonObject makeSetActiveSceneObject(QString const& sceneId);
    //! Addresses SceneItem['sceneId', 'sceneItemId', 'sourceId'].
    static QJsonObject makeSetSourceVisibleObject(
        QString const& sceneId, QString const& sceneItemId, QString const& sourceId, bool visible);
    static QJsonObject makeSceneAddSubscription();
    static QJsonObject makeSceneRemoveSubscription();
    static QJsonObject makeSceneSwitchSubscription();
    static QJsonObject makeSceneItemAddSubscription();
    static QJsonObject makeSceneItemRemoveSubscription();
    static QJsonObject makeSceneItemUpdateSubscription();

    static QJsonObject makeGetCollectionListObject();
    static QJsonObject makeGetCollectionSchemaObject();
    static QJsonObject makeCollectionAddSubscription();
    static QJsonObject makeCollectionRemoveSubscription();
    static QJsonObject makeCollectionSwitchSubscription();

    //! The audio sources of one scene, or all of them when \a sceneId is empty.
    static QJsonObject makeGetAudioListObject(QString const& sceneId);
    //! Addresses AudioSource['sourceId']. Logs the address and the parameters.
    static QJsonObject makeSetAudioMuteObject(QString const& sourceId, bool muted);

    static QJsonObject makeSourceAddSubscription();
    static QJsonObject makeSourceRemoveSubscription();
    static QJsonObject makeSourceUpdateSubscription();

    //! The parts that the builders above are made of.
    static QJsonObject makeJsonRpcObject(QString const& method, QJsonObject const& params);
    static QJsonObject makeEmptyArgsObject(QString const& resource);
    //! One argument: a bool stays a bool, everything else is sent as a string.
    static QJsonObject makeArgsObject(QString const& resource, QVariant const& arg);
};
