#include "streamlabs/SlobsMessages.h"

#include "relay/ZoRemoteCommands.h"

#include <utility>

using namespace Qt::StringLiterals;
using namespace SlobsAgentPrivate;
using namespace ZoRemoteCommands;
using namespace ZoRemoteFields;

namespace {

constexpr auto kEvent = "event"_L1;
constexpr auto kActiveId = "activeId"_L1;
constexpr auto kSceneId = "sceneId"_L1;
constexpr auto kSceneItemId = "sceneItemId"_L1;
constexpr auto kSourceId = "sourceId"_L1;
constexpr auto kVisible = "visible"_L1;
constexpr auto kMuted = "muted"_L1;

constexpr auto kAuthorized = "authorized"_L1;
constexpr auto kToken = "token"_L1;
constexpr auto kPort = "port"_L1;
constexpr auto kStreamingStatus = "streamingStatus"_L1;
constexpr auto kRecordingStatus = "recordingStatus"_L1;
constexpr auto kList = "list"_L1;

bool isResult(QJsonObject const& message, QString const& name)
{
    return message.value(kFieldTask) == QJsonValue(name);
}

template <typename Record>
QList<Record> recordsOf(QJsonObject const& message)
{
    // Arrays that share their data, as they do for all who handle one message, compare equal without a look
    // at it.
    static std::pair<QJsonArray, QList<Record>> last;
    QJsonArray const list = message.value(kList).toArray();
    if (last.first != list) {
        QList<Record> records;
        records.reserve(list.size());
        for (auto const& element : list) {
            fromJson(element.toObject(), records.emplaceBack());
        }
        last = {list, std::move(records)};
    }
    return last.second;
}

} // namespace

QString SlobsMessages::nameOf(QJsonObject const& message)
{
    return message.value(kFieldTask).toString();
}

// ---- Tasks

QJsonObject SlobsMessages::toTask(QString const& name)
{
    return {{kFieldTask, kSlobsServiceTask}, {kEvent, name}};
}

QJsonObject SlobsMessages::toSetActiveScene(QString const& id)
{
    QJsonObject task = toTask(kSetActiveScene);
    task.insert(kActiveId, id);
    return task;
}

QJsonObject SlobsMessages::toSetSourceVisible(Source const& source, bool visible)
{
    QJsonObject task = toTask(kSetSourceVisibility);
    task.insert(kSceneId, source.sceneId);
    task.insert(kSceneItemId, source.sceneItemId);
    task.insert(kSourceId, source.sourceId);
    task.insert(kVisible, visible);
    return task;
}

QJsonObject SlobsMessages::toRefreshAudioList(QString const& sceneId)
{
    QJsonObject task = toTask(kRefreshAudioList);
    task.insert(kSceneId, sceneId);
    return task;
}

QJsonObject SlobsMessages::toSetAudioMute(QString const& sourceId, bool muted)
{
    QJsonObject task = toTask(kSetAudioMute);
    task.insert(kSourceId, sourceId);
    task.insert(kMuted, muted);
    return task;
}

std::optional<QString> SlobsMessages::nameOfTask(QJsonObject const& task)
{
    QJsonValue const name = task.value(kEvent);
    return name.isUndefined() ? std::nullopt : std::optional(name.toString());
}

QString SlobsMessages::fromSetActiveScene(QJsonObject const& task)
{
    return task.value(kActiveId).toString();
}

SlobsMessages::Source SlobsMessages::fromSetSourceVisible(QJsonObject const& task)
{
    Source source;
    source.sceneId = task.value(kSceneId).toString();
    source.sceneItemId = task.value(kSceneItemId).toString();
    source.sourceId = task.value(kSourceId).toString();
    source.visible = task.value(kVisible).toBool();
    return source;
}

QString SlobsMessages::fromRefreshAudioList(QJsonObject const& task)
{
    return task.value(kSceneId).toString();
}

SlobsMessages::AudioSource SlobsMessages::fromSetAudioMute(QJsonObject const& task)
{
    return {task.value(kSourceId).toString(), {}, task.value(kMuted).toBool()};
}

// ---- Results

QJsonObject SlobsMessages::toAuthState(bool authorized, QString const& token, int port)
{
    return {{kFieldTask, kQueryAuthStateResult}, {kAuthorized, authorized}, {kToken, token}, {kPort, port}};
}

QJsonObject SlobsMessages::toStreamingStatus(QString const& status)
{
    return {{kFieldTask, kQueryStreamingStatusResult}, {kStreamingStatus, status}};
}

QJsonObject SlobsMessages::toRecordingStatus(QString const& status)
{
    return {{kFieldTask, kQueryRecordingStatusResult}, {kRecordingStatus, status}};
}

QJsonObject SlobsMessages::toSceneList(QList<Scene> const& scenes, QString const& activeId)
{
    return toSceneList(toJson(scenes), activeId);
}

QJsonObject SlobsMessages::toSceneList(QJsonArray const& encodedScenes, QString const& activeId)
{
    return {{kFieldTask, kQueryScenesResult}, {kActiveId, activeId}, {kList, encodedScenes}};
}

QJsonObject SlobsMessages::toCollectionList(QList<CollectionSchema> const& collections)
{
    return {{kFieldTask, kQueryCollectionsResult}, {kList, toJson(collections)}};
}

QJsonObject SlobsMessages::toAudioList(QList<AudioSource> const& sources)
{
    return {{kFieldTask, kQueryAudioListResult}, {kList, toJson(sources)}};
}

void SlobsMessages::fromAuthState(QJsonObject const& message, bool& authorized, QString& token, int& port)
{
    if (isResult(message, kQueryAuthStateResult)) {
        authorized = message.value(kAuthorized).toBool();
        token = message.value(kToken).toString();
        port = message.value(kPort).toInt(-1);
    }
}

void SlobsMessages::fromStreamingStatus(QJsonObject const& message, QString& status)
{
    if (isResult(message, kQueryStreamingStatusResult)) {
        status = message.value(kStreamingStatus).toString();
    }
}

void SlobsMessages::fromRecordingStatus(QJsonObject const& message, QString& status)
{
    if (isResult(message, kQueryRecordingStatusResult)) {
        status = message.value(kRecordingStatus).toString();
    }
}

void SlobsMessages::fromSceneList(QJsonObject const& message, QList<Scene>& scenes, QString& activeId)
{
    if (isResult(message, kQueryScenesResult)) {
        activeId = message.value(kActiveId).toString();
        scenes = recordsOf<Scene>(message);
    }
}

void SlobsMessages::fromCollectionList(QJsonObject const& message, QList<CollectionSchema>& collections)
{
    if (isResult(message, kQueryCollectionsResult)) {
        collections = recordsOf<CollectionSchema>(message);
    }
}

void SlobsMessages::fromAudioList(QJsonObject const& message, QList<AudioSource>& sources)
{
    if (isResult(message, kQueryAudioListResult)) {
        sources = recordsOf<AudioSource>(message);
    }
}

// ---- Key LEDs

bool SlobsMessages::isStreaming(QString const& streamingStatus)
{
    return streamingStatus == "live"_L1 || streamingStatus == "starting"_L1;
}

bool SlobsMessages::isRecording(QString const& recordingStatus)
{
    return recordingStatus == "recording"_L1;
}

QJsonObject SlobsMessages::setStreamingLed(QString const& streamingStatus)
{
    return toKeyLedAppControl({}, u"SLOBS"_s, u"STREAM"_s, isStreaming(streamingStatus));
}

QJsonObject SlobsMessages::setRecordingLed(QString const& recordingStatus)
{
    return toKeyLedAppControl({}, u"SLOBS"_s, u"RECORD"_s, isRecording(recordingStatus));
}
