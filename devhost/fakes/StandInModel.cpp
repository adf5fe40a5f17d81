#include "devhost/fakes/StandInModel.h"

#include <QSet>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

QString const kOffline = u"offline"_s;
QString const kStarting = u"starting"_s;
QString const kLive = u"live"_s;
QString const kEnding = u"ending"_s;
QString const kReconnecting = u"reconnecting"_s;
QString const kRecording = u"recording"_s;
QString const kStopping = u"stopping"_s;
QString const kWriting = u"writing"_s;

bool isOn(QString const& status)
{
    return status == kStarting || status == kLive || status == kReconnecting || status == kRecording;
}

// The element with that id, or else the first with that name.
template <typename List>
auto* find(List& list, QString const& target)
{
    auto found =
        std::find_if(list.begin(), list.end(), [&](auto const& element) { return element.id == target; });
    if (found == list.end()) {
        found = std::find_if(
            list.begin(), list.end(), [&](auto const& element) { return element.name == target; });
    }
    return found == list.end() ? nullptr : &*found;
}

template <typename Named>
QJsonObject idAndName(Named const& named)
{
    return {{u"id"_s, named.id}, {u"name"_s, named.name}};
}

} // namespace

StandInModel::StandInModel(QObject* parent) : QObject(parent)
{
    streaming.event = StandInEvents::kStreamingStatusChange;
    recording.event = StandInEvents::kRecordingStatusChange;
    for (Output* output : {&streaming, &recording}) {
        output->timer.setSingleShot(true);
        connect(&output->timer, &QTimer::timeout, this, [this, output] { enter(*output, output->upcoming); });
    }
    loading.setSingleShot(true);
    connect(&loading, &QTimer::timeout, this, &StandInModel::finishLoading);
    loadDemo();
}

// ---- Contents

void StandInModel::loadDemo()
{
    clear();
    {
        Collection& show = newCollection(u"Main Show"_s);
        newDevice(show, u"Desktop Audio"_s);
        newDevice(show, u"Mic/Aux"_s);
        newDevice(show, u"Gästemikrofon"_s);
        auto const source = [&](QString const& name, QString const& type) {
            return newSource(show, {{}, name, type}).id;
        };
        QString const webcam = source(u"Webcam"_s, u"dshow_input"_s);
        QString const alerts = source(u"Alert Box 🔔"_s, u"browser_source"_s);
        QString const music = newSource(show, {{}, u"音楽 🎵"_s, u"ffmpeg_source"_s, true}).id;

        Scene& soon = newScene(show, u"Starting Soon ⏳"_s);
        newItem(show, soon, source(u"Фон"_s, u"image_source"_s));
        newItem(show, soon, source(u"Countdown"_s, u"text_gdiplus"_s));
        newItem(show, soon, music);

        Scene& game = newScene(show, u"Gameplay 🎮"_s);
        newItem(show, game, source(u"Game Capture"_s, u"game_capture"_s));
        QString const overlays = newFolder(show, game, u"Overlays"_s);
        newItem(show, game, alerts, overlays);
        newItem(show, game, source(u"Chat \"live\""_s, u"browser_source"_s), overlays);
        newItem(show, game, webcam);

        Scene& chatting = newScene(show, u"Just Chatting"_s);
        newItem(show, chatting, webcam);
        newItem(show, chatting, alerts);

        Scene& guests = newScene(show, u"Just Chatting"_s);
        newItem(show, guests, webcam);
        newItem(show, guests, source(u"Gäste – Vídeo"_s, u"ndi_source"_s));

        newItem(show, newScene(show, u"配信終了"_s), source(u"Credits"_s, u"text_gdiplus"_s));
        currentCollectionId = show.id;
    }
    {
        Collection& podcast = newCollection(u"Podcast 🎙"_s);
        newDevice(podcast, u"Studio Mic"_s);
        newItem(podcast, newScene(podcast, u"Talk"_s),
            newSource(podcast, {{}, u"Wide Shot"_s, u"dshow_input"_s}).id);
        newScene(podcast, u"Break"_s);
    }
    emit changed();
}

bool StandInModel::generate(int scenes, int itemsPerScene, int audioSources)
{
    scenes = qMax(scenes, 1);
    if (objectCount(scenes, itemsPerScene, audioSources) > kMostObjects) {
        return false;
    }
    clear();
    Collection& collection = newCollection(u"Generated"_s);
    for (int s = 1; s <= scenes; ++s) {
        Scene& scene = newScene(collection, u"Scene %1"_s.arg(s));
        for (int i = 1; i <= itemsPerScene; ++i) {
            newItem(collection, scene,
                newSource(collection, {{}, u"Item %1.%2"_s.arg(s).arg(i), u"image_source"_s}).id);
        }
    }
    for (int a = 1; a <= audioSources; ++a) {
        newDevice(collection, u"Audio %1"_s.arg(a));
    }
    currentCollectionId = collection.id;
    emit changed();
    return true;
}

void StandInModel::clear()
{
    loading.stop();
    heldEvents.clear();
    allCollections.clear();
    lastId = 0;
    endOutputs();
}

QString StandInModel::newId(QString const& prefix)
{
    return prefix + u"00000000-0000-4000-8000-%1"_s.arg(++lastId, 12, 16, QLatin1Char('0'));
}

StandInModel::Collection& StandInModel::newCollection(QString const& name)
{
    Collection& collection = allCollections.emplace_back();
    collection.id = newId();
    collection.name = name;
    return collection;
}

StandInModel::Scene& StandInModel::newScene(Collection& collection, QString const& name)
{
    Scene& scene = collection.scenes.emplace_back(Scene{newId(u"scene_"_s), name, {}});
    if (collection.activeSceneId.isEmpty()) {
        collection.activeSceneId = scene.id;
    }
    return scene;
}

StandInModel::Source const& StandInModel::newSource(Collection& collection, Source source)
{
    source.id = newId(source.type + u'_');
    collection.sourceIds.append(source.id);
    return *collection.sources.insert(source.id, source);
}

StandInModel::Source const& StandInModel::newDevice(Collection& collection, QString const& name)
{
    int const channel = ++collection.lastChannel;
    return newSource(collection, {{}, name, u"wasapi_input_capture"_s, true, false, false, channel});
}

QString StandInModel::newItem(
    Collection& collection, Scene& scene, QString const& sourceId, QString const& folderId)
{
    Node node;
    node.id = newId();
    node.sourceId = sourceId;
    node.parentId = folderId;
    collection.insertNode(scene, node);
    return node.id;
}

QString StandInModel::newFolder(Collection& collection, Scene& scene, QString const& name)
{
    Node node;
    node.id = newId();
    node.folderName = name;
    collection.insertNode(scene, node);
    return node.id;
}

// ---- JSON models and look-up

QJsonObject StandInModel::Source::model() const
{
    return {{u"id"_s, id}, {u"sourceId"_s, id}, {u"name"_s, name}, {u"type"_s, type}, {u"audio"_s, audio},
        {u"video"_s, video}, {u"async"_s, false}, {u"muted"_s, muted}, {u"width"_s, video ? 1920 : 0},
        {u"height"_s, video ? 1080 : 0}, {u"channel"_s, channel == 0 ? QJsonValue() : QJsonValue(channel)}};
}

QJsonObject StandInModel::Source::audioModel() const
{
    return {{u"sourceId"_s, id}, {u"name"_s, name}, {u"muted"_s, muted},
        {u"fader"_s, QJsonObject{{u"db"_s, 0}, {u"deflection"_s, 1}, {u"mul"_s, 1}}}, {u"audioMixers"_s, 255},
        {u"forceMono"_s, false}, {u"mixerHidden"_s, false}, {u"monitoringType"_s, 0},
        {u"syncOffset"_s, QJsonObject{{u"sec"_s, 0}, {u"nsec"_s, 0}}}};
}

QString StandInModel::Collection::nameOf(Node const& node) const
{
    return node.isFolder() ? node.folderName : sources[node.sourceId].name;
}

StandInModel::Node const* StandInModel::Collection::findNode(QString const& target, Kind kind) const
{
    auto const isWanted = [kind](Node const& node) { return kind == Kind::Any || !node.isFolder(); };
    if (auto const found = nodes.constFind(target); found != nodes.cend() && isWanted(*found)) {
        return &*found;
    }
    for (Scene const& scene : scenes) {
        for (QString const& nodeId : scene.nodes) {
            if (auto const node = nodes.constFind(nodeId); isWanted(*node) && nameOf(*node) == target) {
                return &*node;
            }
        }
    }
    return nullptr;
}

StandInModel::Source const* StandInModel::Collection::findAudioSource(QString const& target) const
{
    if (auto const found = sources.constFind(target); found != sources.cend() && found->audio) {
        return &*found;
    }
    for (QString const& sourceId : sourceIds) {
        if (auto const source = sources.constFind(sourceId); source->audio && source->name == target) {
            return &*source;
        }
    }
    return nullptr;
}

QJsonObject StandInModel::Collection::itemModel(Node const& item) const
{
    return {{u"id"_s, item.id}, {u"sceneItemId"_s, item.id}, {u"sceneId"_s, item.sceneId},
        {u"sourceId"_s, item.sourceId}, {u"name"_s, nameOf(item)}, {u"sceneNodeType"_s, u"item"_s},
        {u"parentId"_s, item.parentId}, {u"visible"_s, item.visible}, {u"locked"_s, item.locked},
        {u"streamVisible"_s, true}, {u"recordingVisible"_s, true},
        {u"transform"_s,
            QJsonObject{
                {u"position"_s, QJsonObject{{u"x"_s, item.position.x()}, {u"y"_s, item.position.y()}}},
                {u"scale"_s, QJsonObject{{u"x"_s, 1}, {u"y"_s, 1}}},
                {u"crop"_s, QJsonObject{{u"top"_s, 0}, {u"bottom"_s, 0}, {u"left"_s, 0}, {u"right"_s, 0}}},
                {u"rotation"_s, 0}}}};
}

QJsonObject StandInModel::Collection::sceneModel(Scene const& scene) const
{
    QHash<QString, QJsonArray> children;
    for (QString const& nodeId : scene.nodes) {
        children[nodes[nodeId].parentId].append(nodeId);
    }

    QJsonArray models;
    for (QString const& nodeId : scene.nodes) {
        Node const& node = *nodes.constFind(nodeId);
        models.append(!node.isFolder() ? itemModel(node)
                                       : QJsonObject{{u"id"_s, nodeId}, {u"sceneId"_s, scene.id},
                                             {u"name"_s, node.folderName}, {u"sceneNodeType"_s, u"folder"_s},
                                             {u"childrenIds"_s, children.value(nodeId)}});
    }
    return {{u"id"_s, scene.id}, {u"name"_s, scene.name}, {u"nodes"_s, models}};
}

QJsonObject StandInModel::Collection::schema() const
{
    QJsonArray sceneSchemas;
    for (Scene const& scene : scenes) {
        QJsonArray items;
        for (QString const& nodeId : scene.nodes) {
            if (auto const node = nodes.constFind(nodeId); !node->isFolder()) {
                items.append(QJsonObject{{u"sceneItemId"_s, nodeId}, {u"sourceId"_s, node->sourceId}});
            }
        }
        QJsonObject sceneSchema = idAndName(scene);
        sceneSchema[u"sceneItems"_s] = items;
        sceneSchemas.append(sceneSchema);
    }

    QJsonArray sourceSchemas;
    for (QString const& sourceId : sourceIds) {
        QJsonObject const source = sources[sourceId].model();
        QJsonObject sourceSchema;
        for (QString const& key : {u"id"_s, u"name"_s, u"type"_s, u"channel"_s}) {
            sourceSchema[key] = source[key];
        }
        sourceSchemas.append(sourceSchema);
    }

    QJsonObject result = idAndName(*this);
    result[u"scenes"_s] = sceneSchemas;
    result[u"sources"_s] = sourceSchemas;
    return result;
}

void StandInModel::Collection::insertNode(Scene& scene, Node const& node)
{
    // The contents of a folder follow it.
    qsizetype position = scene.nodes.size();
    if (!node.parentId.isEmpty()) {
        position = scene.nodes.indexOf(node.parentId) + 1;
        while (position < scene.nodes.size() && nodes[scene.nodes[position]].parentId == node.parentId) {
            ++position;
        }
    }
    scene.nodes.insert(position, node.id);
    nodes.insert(node.id, node)->sceneId = scene.id;
}

StandInModel::Node StandInModel::Collection::takeNode(QString const& nodeId)
{
    Node node = nodes.take(nodeId);
    find(scenes, node.sceneId)->nodes.removeOne(nodeId);
    return node;
}

StandInModel::Source StandInModel::Collection::takeSource(QString const& sourceId)
{
    sourceIds.removeOne(sourceId);
    return sources.take(sourceId);
}

// ---- Reading

QJsonObject StandInModel::streamingModel() const
{
    QString const streamingSince = streaming.since.toString(Qt::ISODateWithMs);
    QString const recordingSince = recording.since.toString(Qt::ISODateWithMs);
    return {{u"streamingStatus"_s, streaming.status}, {u"streamingStatusTime"_s, streamingSince},
        {u"recordingStatus"_s, recording.status}, {u"recordingStatusTime"_s, recordingSince},
        {u"replayBufferStatus"_s, kOffline}, {u"replayBufferStatusTime"_s, streamingSince}};
}

QString StandInModel::activeSceneId() const
{
    Collection const* const collection = loaded();
    return collection ? collection->activeSceneId : QString();
}

QString StandInModel::sceneId(QString const& target) const
{
    Collection const* const collection = loaded();
    Scene const* const scene = collection ? find(collection->scenes, target) : nullptr;
    return scene ? scene->id : QString();
}

QString StandInModel::audioSourceId(QString const& target) const
{
    Collection const* const collection = loaded();
    Source const* const source = collection ? collection->findAudioSource(target) : nullptr;
    return source ? source->id : QString();
}

QJsonArray StandInModel::scenes() const
{
    QJsonArray models;
    if (Collection const* const collection = loaded()) {
        for (Scene const& scene : collection->scenes) {
            models.append(collection->sceneModel(scene));
        }
    }
    return models;
}

QJsonObject StandInModel::scene(QString const& target) const
{
    Collection const* const collection = loaded();
    Scene const* const scene = collection ? find(collection->scenes, target) : nullptr;
    return scene ? collection->sceneModel(*scene) : QJsonObject();
}

QJsonObject StandInModel::item(QString const& target) const
{
    Collection const* const collection = loaded();
    Node const* const item = collection ? collection->findNode(target, Kind::Item) : nullptr;
    return item ? collection->itemModel(*item) : QJsonObject();
}

QJsonArray StandInModel::audioSources() const
{
    QJsonArray models;
    if (Collection const* const collection = loaded()) {
        for (QString const& id : collection->sourceIds) {
            if (Source const source = collection->sources[id]; source.audio) {
                models.append(source.audioModel());
            }
        }
    }
    return models;
}

QJsonArray StandInModel::audioSourcesOfScene(QString const& target) const
{
    Collection const* const collection = loaded();
    Scene const* const scene = collection ? find(collection->scenes, target) : nullptr;
    QJsonArray models;
    if (!scene) {
        return models;
    }
    QSet<QString> shown;
    for (QString const& id : scene->nodes) {
        shown.insert(collection->nodes[id].sourceId);
    }
    for (QString const& id : collection->sourceIds) {
        if (Source const source = collection->sources[id];
            source.audio && (source.channel != 0 || shown.contains(id))) {
            models.append(source.audioModel());
        }
    }
    return models;
}

QList<StandInModel::Entry> StandInModel::sceneEntries() const
{
    QList<Entry> entries;
    if (Collection const* const collection = loaded()) {
        for (Scene const& scene : collection->scenes) {
            entries.append({scene.id, scene.name, scene.id == collection->activeSceneId, false});
        }
    }
    return entries;
}

QList<StandInModel::Entry> StandInModel::nodeEntries(QString const& target) const
{
    Collection const* const collection = loaded();
    Scene const* const scene = collection ? find(collection->scenes, target) : nullptr;
    QList<Entry> entries;
    if (!scene) {
        return entries;
    }
    entries.reserve(scene->nodes.size());
    for (QString const& nodeId : scene->nodes) {
        Node const& node = *collection->nodes.constFind(nodeId);
        QString const& name =
            node.isFolder() ? node.folderName : collection->sources.constFind(node.sourceId)->name;
        entries.append({node.id, name, node.visible, node.isFolder()});
    }
    return entries;
}

QList<StandInModel::Entry> StandInModel::audioEntries() const
{
    QList<Entry> entries;
    if (Collection const* const collection = loaded()) {
        for (QString const& id : collection->sourceIds) {
            if (Source const& source = *collection->sources.constFind(id); source.audio) {
                entries.append({source.id, source.name, source.muted, false});
            }
        }
    }
    return entries;
}

QJsonArray StandInModel::collections() const
{
    QJsonArray models;
    for (Collection const& collection : allCollections) {
        models.append(idAndName(collection));
    }
    return models;
}

QJsonArray StandInModel::collectionSchemas() const
{
    QJsonArray models;
    for (Collection const& collection : allCollections) {
        models.append(collection.schema());
    }
    return models;
}

// ---- Stream and recording

bool StandInModel::setStreaming(bool on)
{
    if (on != isOn(streaming.status)) {
        enter(streaming, on ? QStringList{kStarting, kLive} : QStringList{kEnding, kOffline});
    }
    return true;
}

bool StandInModel::toggleStreaming()
{
    return setStreaming(!isOn(streaming.status));
}

bool StandInModel::setRecording(bool on)
{
    if (on == isOn(recording.status)) {
        return true;
    }
    if (on) {
        enter(recording, {kStarting, kRecording});
    } else if (recordingWrites) {
        enter(recording, {kStopping, kWriting, kOffline});
    } else {
        enter(recording, {kStopping, kOffline});
    }
    return true;
}

bool StandInModel::toggleRecording()
{
    return setRecording(!isOn(recording.status));
}

bool StandInModel::interruptStream()
{
    if (streaming.status != kLive) {
        return false;
    }
    enter(streaming, {kReconnecting, kLive});
    return true;
}

void StandInModel::endOutputs()
{
    for (Output* output : {&streaming, &recording}) {
        output->timer.stop();
        output->upcoming.clear();
        output->status = kOffline;
        output->since = QDateTime::currentDateTimeUtc();
    }
    emit changed();
}

// Takes the first status at once and the others one by one.
void StandInModel::enter(Output& output, QStringList statuses)
{
    output.status = statuses.takeFirst();
    output.since = QDateTime::currentDateTimeUtc();
    output.upcoming = std::move(statuses);
    if (output.upcoming.isEmpty()) {
        output.timer.stop();
    } else {
        output.timer.start(transitionTime);
    }
    publish(output.event, output.status);
}

// ---- Scenes

bool StandInModel::switchScene(QString const& target)
{
    Collection* const collection = loaded();
    Scene const* const scene = collection ? find(collection->scenes, target) : nullptr;
    if (!scene) {
        return false;
    }
    if (std::exchange(collection->activeSceneId, scene->id) != scene->id) {
        publish(StandInEvents::kSceneSwitched, collection->sceneModel(*scene));
    }
    return true;
}

bool StandInModel::addScene(QString const& name)
{
    Collection* const collection = loaded();
    if (!collection) {
        return false;
    }
    publish(StandInEvents::kSceneAdded, collection->sceneModel(newScene(*collection, name)));
    return true;
}

bool StandInModel::removeScene(QString const& target)
{
    Collection* const collection = loaded();
    Scene const* const found = collection ? find(collection->scenes, target) : nullptr;
    if (!found || collection->scenes.size() == 1) {
        return false;
    }

    Scene const scene = *found;
    QJsonObject const model = collection->sceneModel(scene);
    QStringList sourceIds;
    for (QString const& id : scene.nodes) {
        sourceIds.append(collection->takeNode(id).sourceId);
    }
    std::erase_if(collection->scenes, [&](Scene const& other) { return other.id == scene.id; });
    if (collection->activeSceneId == scene.id) {
        switchScene(collection->scenes.front().id);
    }
    publish(StandInEvents::kSceneRemoved, model);
    dropUnusedSources(*collection, sourceIds);
    return true;
}

bool StandInModel::renameScene(QString const& target, QString const& name)
{
    Collection* const collection = loaded();
    Scene* const scene = collection ? find(collection->scenes, target) : nullptr;
    if (!scene) {
        return false;
    }
    if (std::exchange(scene->name, name) != name) {
        publish(StandInEvents::kSourceUpdated, Source{scene->id, name, u"scene"_s}.model());
    }
    return true;
}

// ---- Items and folders

bool StandInModel::addItem(QString const& target, QString const& name, QString const& folder)
{
    Collection* const collection = loaded();
    Scene* const scene = collection ? find(collection->scenes, target) : nullptr;
    if (!scene) {
        return false;
    }
    QString folderId;
    if (!folder.isEmpty()) {
        auto const isTheFolder = [&](QString const& id) {
            Node const& node = *collection->nodes.constFind(id);
            return node.isFolder() && (id == folder || node.folderName == folder);
        };
        auto const found = std::find_if(scene->nodes.cbegin(), scene->nodes.cend(), isTheFolder);
        if (found == scene->nodes.cend()) {
            return false;
        }
        folderId = *found;
    }

    QJsonObject const source = newSource(*collection, {{}, name, u"image_source"_s}).model();
    QString const id = newItem(*collection, *scene, source[u"id"_s].toString(), folderId);
    QJsonObject const item = collection->itemModel(collection->nodes[id]);
    publish(StandInEvents::kSourceAdded, source);
    publish(StandInEvents::kItemAdded, item);
    return true;
}

bool StandInModel::addFolder(QString const& target, QString const& name)
{
    Collection* const collection = loaded();
    Scene* const scene = collection ? find(collection->scenes, target) : nullptr;
    if (!scene) {
        return false;
    }
    newFolder(*collection, *scene, name);
    emit changed();
    return true;
}

bool StandInModel::removeItem(QString const& target)
{
    Collection* const collection = loaded();
    Node const* const node = collection ? collection->findNode(target, Kind::Any) : nullptr;
    if (!node) {
        return false;
    }
    if (node->isFolder()) {
        QString const folderId = node->id;
        QString const sceneId = node->sceneId;
        collection->takeNode(folderId);
        for (QString const& id : std::as_const(find(collection->scenes, sceneId)->nodes)) {
            if (Node& child = collection->nodes[id]; child.parentId == folderId) {
                child.parentId.clear();
            }
        }
        emit changed();
        return true;
    }
    QJsonObject const model = collection->itemModel(*node);
    QString const sourceId = collection->takeNode(QString(node->id)).sourceId;
    publish(StandInEvents::kItemRemoved, model);
    dropUnusedSources(*collection, {sourceId});
    return true;
}

bool StandInModel::renameItem(QString const& target, QString const& name)
{
    Collection* const collection = loaded();
    Node const* const node = collection ? collection->findNode(target, Kind::Any) : nullptr;
    if (!node) {
        return false;
    }
    if (node->isFolder()) {
        collection->nodes[node->id].folderName = name;
        emit changed();
    } else {
        renameSource(*collection, node->sourceId, name);
    }
    return true;
}

bool StandInModel::setItemVisible(QString const& item, bool visible)
{
    return updateItem(
        item, [visible](Node& node) { return std::exchange(node.visible, visible) != visible; });
}

bool StandInModel::setItemLocked(QString const& item, bool locked)
{
    return updateItem(item, [locked](Node& node) { return std::exchange(node.locked, locked) != locked; });
}

bool StandInModel::moveItem(QString const& item, QPointF const& by)
{
    return updateItem(item, [by](Node& node) {
        node.position += by;
        return true;
    });
}

// `change` tells whether it changed anything.
bool StandInModel::updateItem(QString const& target, std::function<bool(Node&)> const& change)
{
    Collection* const collection = loaded();
    Node const* const found = collection ? collection->findNode(target, Kind::Item) : nullptr;
    if (!found) {
        return false;
    }
    Node& node = collection->nodes[found->id];
    if (change(node)) {
        publish(StandInEvents::kItemUpdated, collection->itemModel(node));
    }
    return true;
}

// ---- Audio and sources

bool StandInModel::addAudioSource(QString const& name)
{
    Collection* const collection = loaded();
    if (!collection) {
        return false;
    }
    publish(StandInEvents::kSourceAdded, newDevice(*collection, name).model());
    return true;
}

bool StandInModel::removeAudioSource(QString const& target)
{
    Collection* const collection = loaded();
    Source const* const found = collection ? collection->findAudioSource(target) : nullptr;
    if (!found) {
        return false;
    }

    QString const sourceId = found->id;
    QList<QJsonObject> items;
    for (Scene const& scene : collection->scenes) {
        for (QString const& id : QStringList(scene.nodes)) { // a copy, since takeNode changes the list
            if (Node const& node = *collection->nodes.constFind(id); node.sourceId == sourceId) {
                items.append(collection->itemModel(node));
                collection->takeNode(id);
            }
        }
    }
    QJsonObject const source = collection->takeSource(sourceId).model();
    for (QJsonObject const& item : std::as_const(items)) {
        publish(StandInEvents::kItemRemoved, item);
    }
    publish(StandInEvents::kSourceRemoved, source);
    return true;
}

bool StandInModel::renameAudioSource(QString const& target, QString const& name)
{
    Collection* const collection = loaded();
    Source const* const source = collection ? collection->findAudioSource(target) : nullptr;
    if (!source) {
        return false;
    }
    renameSource(*collection, source->id, name);
    return true;
}

bool StandInModel::setMuted(QString const& target, bool muted)
{
    Collection* const collection = loaded();
    Source const* const found = collection ? collection->findAudioSource(target) : nullptr;
    if (!found) {
        return false;
    }
    Source& source = collection->sources[found->id];
    if (std::exchange(source.muted, muted) != muted) {
        publish(StandInEvents::kSourceUpdated, source.model());
    }
    return true;
}

void StandInModel::renameSource(Collection& collection, QString const& sourceId, QString const& name)
{
    Source& source = collection.sources[sourceId];
    if (std::exchange(source.name, name) != name) {
        publish(StandInEvents::kSourceUpdated, source.model());
    }
}

// Devices need nobody to show them.
void StandInModel::dropUnusedSources(Collection& collection, QStringList const& candidates)
{
    QSet<QString> shown;
    for (Node const& node : std::as_const(collection.nodes)) {
        shown.insert(node.sourceId);
    }
    QList<QJsonObject> dropped;
    for (QString const& id : candidates) {
        if (!shown.contains(id) && collection.sources.contains(id) && collection.sources[id].channel == 0) {
            dropped.append(collection.takeSource(id).model());
        }
    }
    for (QJsonObject const& source : std::as_const(dropped)) {
        publish(StandInEvents::kSourceRemoved, source);
    }
}

// ---- Collections

bool StandInModel::addCollection(QString const& name)
{
    Collection& collection = newCollection(name);
    newScene(collection, u"Scene"_s);
    publish(StandInEvents::kCollectionAdded, idAndName(collection));
    return true;
}

bool StandInModel::removeCollection(QString const& target)
{
    Collection const* const found = find(allCollections, target);
    if (!found || allCollections.size() == 1) {
        return false;
    }
    QString const id = found->id;
    QJsonObject const model = idAndName(*found);
    std::erase_if(allCollections, [&](Collection const& other) { return other.id == id; });
    if (currentCollectionId == id) {
        load(allCollections.front().id);
    }
    publish(StandInEvents::kCollectionRemoved, model);
    return true;
}

bool StandInModel::switchCollection(QString const& target)
{
    Collection const* const collection = find(allCollections, target);
    if (!collection) {
        return false;
    }
    if (collection->id != currentCollectionId) {
        load(collection->id);
    }
    return true;
}

StandInModel::Collection* StandInModel::loaded()
{
    return isLoading() ? nullptr : find(allCollections, currentCollectionId);
}

StandInModel::Collection const* StandInModel::loaded() const
{
    return isLoading() ? nullptr : find(allCollections, currentCollectionId);
}

void StandInModel::load(QString const& collectionId)
{
    currentCollectionId = collectionId;
    loading.start(loadingTime);
    emit changed();
}

void StandInModel::finishLoading()
{
    for (auto const& [resourceId, data] : std::exchange(heldEvents, {})) {
        publish(resourceId, data);
    }
    if (Collection const* const collection = loaded()) { // unless a receiver switched again
        publish(StandInEvents::kSceneSwitched, scene(collection->activeSceneId));
        publish(StandInEvents::kCollectionSwitched, idAndName(*collection));
    }
}

void StandInModel::publish(QString const& resourceId, QJsonValue const& data)
{
    if (isLoading()) {
        heldEvents.emplace_back(resourceId, data);
    } else {
        emit apiEvent(resourceId, data);
    }
    emit changed();
}
