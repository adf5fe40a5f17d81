#pragma once

#include <QDateTime>
#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QPointF>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <chrono>
#include <functional>
#include <utility>
#include <vector>

//! The events of Streamlabs Desktop's remote-control API, "<service>.<event>", with what they carry.
namespace StandInEvents {

//! The new status, a string.
inline QString const kStreamingStatusChange = QString::fromLatin1("StreamingService.streamingStatusChange");
inline QString const kRecordingStatusChange = QString::fromLatin1("StreamingService.recordingStatusChange");
//! A whole scene with its nodes; a removed one as it last was.
inline QString const kSceneAdded = QString::fromLatin1("ScenesService.sceneAdded");
inline QString const kSceneRemoved = QString::fromLatin1("ScenesService.sceneRemoved");
inline QString const kSceneSwitched = QString::fromLatin1("ScenesService.sceneSwitched");
//! One scene item. Folders have no events.
inline QString const kItemAdded = QString::fromLatin1("ScenesService.itemAdded");
inline QString const kItemRemoved = QString::fromLatin1("ScenesService.itemRemoved");
inline QString const kItemUpdated = QString::fromLatin1("ScenesService.itemUpdated");
//! One collection, {"id", "name"}.
inline QString const kCollectionAdded = QString::fromLatin1("SceneCollectionsService.collectionAdded");
inline QString const kCollectionRemoved = QString::fromLatin1("SceneCollectionsService.collectionRemoved");
inline QString const kCollectionSwitched = QString::fromLatin1("SceneCollectionsService.collectionSwitched");
//! One source. A scene counts as a source of the type "scene" with the id of the scene.
inline QString const kSourceAdded = QString::fromLatin1("SourcesService.sourceAdded");
inline QString const kSourceRemoved = QString::fromLatin1("SourcesService.sourceRemoved");
inline QString const kSourceUpdated = QString::fromLatin1("SourcesService.sourceUpdated");

} // namespace StandInEvents

//! What a pretended Streamlabs Desktop holds: scene collections with scenes, items, folders and sources, and
//! the status of the stream and the recording. Nothing of the network.
//!
//! Sources belong to a collection and are shown in scenes through items; several items may show one source.
//! An item's name is the name of its source. An audio source is a source with sound: a device, which every
//! scene hears, or a source that scenes show.
//!
//! A target is named by its id or, for people, by its name. Names need not be unique: the first match counts,
//! scenes and sources in list order, items in display order from the first scene on.
//!
//! Operations answer false, and change nothing, when the target does not exist in the loaded collection. An
//! operation that would set what is set already answers true and sends no event. Ids are numbered in order of
//! creation, so the same steps give the same ids.
//!
//! Receivers of the signals may read; they operate the model later, from the event loop.
class StandInModel : public QObject
{
    Q_OBJECT

public:
    //! Starts with `loadDemo()`.
    explicit StandInModel(QObject* parent = nullptr);

    //! \name Contents
    //! These replace everything, status included, without an API event: meant for the time before clients
    //! connect.
    //!@{
    //! Two small collections with what trips up clients: a folder, shared sources, two scenes of one name,
    //! emoji, other scripts and quotes in names.
    void loadDemo();
    //! One collection "Generated": "Scene 1" (the active one) …, each with "Item <scene>.1" …, and the audio
    //! devices "Audio 1" …. At least one scene. False, and nothing is changed, when that makes more than
    //! `kMostObjects` scenes, items and audio sources.
    bool generate(int scenes, int itemsPerScene, int audioSources);
    static constexpr int kMostObjects = 60000;
    static qint64 objectCount(qint64 scenes, qint64 itemsPerScene, qint64 audioSources)
    {
        return scenes * (1 + itemsPerScene) + audioSources;
    }
    //!@}

    //! \name Settings
    //!@{
    //! How long "starting", "ending", "stopping", "writing" and "reconnecting" last, 400 ms by default. With
    //! 0 the next status comes in the next turn of the event loop; none is left out.
    void setTransitionTime(std::chrono::milliseconds time) { transitionTime = time; }
    //! How long a collection takes to load, 400 ms by default, 0 as above. Until then there are no scenes and
    //! no sources, and events wait.
    void setLoadingTime(std::chrono::milliseconds time) { loadingTime = time; }
    //! Whether a recording that stops passes through "writing", as in newer versions. False by default.
    void setRecordingWrites(bool writes) { recordingWrites = writes; }
    //!@}

    //! \name Reading
    //! The API's JSON models; an empty object or string for what does not exist, and no scenes or audio
    //! sources while a collection loads.
    //!@{
    //! "offline", "starting", "live", "reconnecting" or "ending".
    QString streamingStatus() const { return streaming.status; }
    //! "offline", "starting", "recording", "stopping" or "writing".
    QString recordingStatus() const { return recording.status; }
    //! {"streamingStatus", "streamingStatusTime", "recordingStatus", …, "replayBufferStatus", …}; times in
    //! ISO 8601.
    QJsonObject streamingModel() const;
    bool isLoading() const { return loading.isActive(); }
    QString activeSceneId() const;
    //! The id of a target given by id or name.
    QString sceneId(QString const& target) const;
    QString audioSourceId(QString const& target) const;
    //! {"id", "name", "nodes": [item or folder, …]}
    QJsonArray scenes() const;
    QJsonObject scene(QString const& target) const;
    QJsonObject item(QString const& target) const;
    //! {"sourceId", "name", "muted", "fader", …}
    QJsonArray audioSources() const;
    //! The devices and what the scene shows.
    QJsonArray audioSourcesOfScene(QString const& target) const;
    //! The id of the collection that is loaded or loading.
    QString activeCollectionId() const { return currentCollectionId; }
    //! [{"id", "name"}, …]
    QJsonArray collections() const;
    //! [{"id", "name", "scenes": [{"id", "name", "sceneItems": [{"sceneItemId", "sourceId"}, …]}, …],
    //! "sources": [{"id", "name", "type", "channel"}, …]}, …]
    QJsonArray collectionSchemas() const;

    //! One row of a list in a window, without the weight of the API's models.
    struct Entry
    {
        QString id;
        QString name;
        //! The scene is the active one, the item is visible, the audio source is muted.
        bool on = false;
        bool isFolder = false;

        bool operator==(Entry const&) const = default;
    };
    QList<Entry> sceneEntries() const;
    //! Items and folders of a scene in display order.
    QList<Entry> nodeEntries(QString const& target) const;
    QList<Entry> audioEntries() const;
    //!@}

    //! \name Stream and recording
    //! offline → starting → live → ending → offline; offline → starting → recording → stopping (→ writing) →
    //! offline. The first step is taken at once. A change of mind turns around from any status.
    //!@{
    bool setStreaming(bool on);
    bool toggleStreaming();
    bool setRecording(bool on);
    bool toggleRecording();
    //! A hiccup of the network: live → reconnecting → live. False when not live.
    bool interruptStream();
    //! Both are offline at once and without an event, as when the application ends.
    void endOutputs();
    //!@}

    //! \name Scenes
    //!@{
    bool switchScene(QString const& target);
    bool addScene(QString const& name);
    //! Removes its items with it, and the sources that nothing shows any more. The first other scene takes
    //! over when it was active. False for the last scene.
    bool removeScene(QString const& target);
    bool renameScene(QString const& target, QString const& name);
    //!@}

    //! \name Items and folders
    //!@{
    //! Adds an item with a new source to the scene \a target, behind its last node or the last one in \a
    //! folder.
    bool addItem(QString const& target, QString const& name, QString const& folder = {});
    //! To the scene \a target.
    bool addFolder(QString const& target, QString const& name);
    //! Of an item or folder. An item's source goes too when nothing else shows it; the contents of a folder
    //! stay.
    bool removeItem(QString const& target);
    //! Renames the item's source, and so every item that shows it; or a folder.
    bool renameItem(QString const& target, QString const& name);
    bool setItemVisible(QString const& item, bool visible);
    bool setItemLocked(QString const& item, bool locked);
    //! One step of a drag, in px.
    bool moveItem(QString const& item, QPointF const& by);
    //!@}

    //! \name Audio
    //!@{
    //! Adds an audio device.
    bool addAudioSource(QString const& name);
    //! Removes the items that show it first.
    bool removeAudioSource(QString const& target);
    bool renameAudioSource(QString const& target, QString const& name);
    bool setMuted(QString const& target, bool muted);
    //!@}

    //! \name Collections
    //!@{
    //! Adds a collection with one empty scene; it is not loaded.
    bool addCollection(QString const& name);
    //! Another collection is loaded when it was the active one. False for the last one.
    bool removeCollection(QString const& target);
    //! Drops scenes and sources at once and loads the others in the loading time. Then follow the events that
    //! waited, the switch of the scene and the switch of the collection.
    bool switchCollection(QString const& target);
    //!@}

signals:
    //! An event of the API: \a resourceId is one of StandInEvents, \a data as described there.
    void apiEvent(QString const& resourceId, QJsonValue const& data);
    //! Something changed that a window may show, whether the API has an event for it or not.
    void changed();

private:
    struct Source
    {
        QString id;
        QString name;
        QString type;
        bool audio = false;
        bool video = true;
        bool muted = false;
        int channel = 0; // output channel of an audio device, 0 for anything else

        QJsonObject model() const;
        QJsonObject audioModel() const;
    };

    struct Node
    {
        QString id;
        QString sceneId;
        QString sourceId;   // empty for a folder
        QString folderName; // empty for an item, which has the name of its source
        QString parentId;
        bool visible = true;
        bool locked = false;
        QPointF position;

        bool isFolder() const { return sourceId.isEmpty(); }
    };

    enum class Kind { Item, Any };

    struct Scene
    {
        QString id;
        QString name;
        QStringList nodes; // in display order
    };

    struct Collection
    {
        QString id;
        QString name;
        QString activeSceneId;
        std::vector<Scene> scenes;
        QHash<QString, Node> nodes;
        QStringList sourceIds; // in order of creation
        QHash<QString, Source> sources;
        int lastChannel = 0;

        QString nameOf(Node const& node) const;
        Node const* findNode(QString const& target, Kind kind) const;
        Source const* findAudioSource(QString const& target) const;
        QJsonObject sceneModel(Scene const& scene) const;
        QJsonObject itemModel(Node const& item) const;
        QJsonObject schema() const;

        void insertNode(Scene& scene, Node const& node);
        Node takeNode(QString const& nodeId);
        Source takeSource(QString const& sourceId);
    };

    // The stream or the recording on its way through its statuses.
    struct Output
    {
        QString event;
        QString status;
        QDateTime since;
        QStringList upcoming;
        QTimer timer;
    };

    QString newId(QString const& prefix = {});
    Collection& newCollection(QString const& name);
    Scene& newScene(Collection& collection, QString const& name);
    Source const& newSource(Collection& collection, Source source);
    Source const& newDevice(Collection& collection, QString const& name);
    QString newItem(
        Collection& collection, Scene& scene, QString const& sourceId, QString const& folderId = {});
    QString newFolder(Collection& collection, Scene& scene, QString const& name);

    void clear();
    Collection* loaded();
    Collection const* loaded() const;
    void load(QString const& collectionId);
    void finishLoading();
    bool updateItem(QString const& target, std::function<bool(Node&)> const& change);
    void renameSource(Collection& collection, QString const& sourceId, QString const& name);
    void dropUnusedSources(Collection& collection, QStringList const& candidates);
    void enter(Output& output, QStringList statuses);
    void publish(QString const& resourceId, QJsonValue const& data);

    std::vector<Collection> allCollections;
    QString currentCollectionId;
    QTimer loading;
    std::vector<std::pair<QString, QJsonValue>> heldEvents;
    Output streaming;
    Output recording;
    qulonglong lastId = 0;
    std::chrono::milliseconds transitionTime{400};
    std::chrono::milliseconds loadingTime{400};
    bool recordingWrites = false;
};
