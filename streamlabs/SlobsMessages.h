#pragma once

#include "streamlabs/StreamlabsApi.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QString>

#include <optional>

//! Names of the tasks that actions send to the service, and of the results that it publishes.
namespace SlobsAgentPrivate {

inline QString const kQueryAuthState = QString::fromLatin1("queryAuthState");
inline QString const kQueryAuthStateResult = QString::fromLatin1("onStreamlabsAuthResult");
inline QString const kRefreshModel = QString::fromLatin1("refreshModel");
inline QString const kQueryStreamingStatus = QString::fromLatin1("queryStreamingStatus");
inline QString const kQueryStreamingStatusResult = QString::fromLatin1("onQueryStreamingStatus");
inline QString const kQueryRecordingStatus = QString::fromLatin1("queryRecordingStatus");
inline QString const kQueryRecordingStatusResult = QString::fromLatin1("onQueryRecordingStatus");
inline QString const kToggleStreamingStatus = QString::fromLatin1("toggleStreamingStatus");
inline QString const kToggleRecordingStatus = QString::fromLatin1("toggleRecordingStatus");
inline QString const kRefreshScenes = QString::fromLatin1("refreshScenes");
inline QString const kQueryScenes = QString::fromLatin1("queryScenes");
inline QString const kQueryScenesResult = QString::fromLatin1("onQueryScenes");
inline QString const kSetActiveScene = QString::fromLatin1("setActiveScene");
inline QString const kSetSourceVisibility = QString::fromLatin1("setSourceVisible");
inline QString const kRefreshCollections = QString::fromLatin1("refreshCollections");
inline QString const kQueryCollections = QString::fromLatin1("queryCollections");
inline QString const kQueryCollectionsResult = QString::fromLatin1("onQueryCollections");
inline QString const kRefreshAudioList = QString::fromLatin1("refreshAudioList");
inline QString const kQueryAudioList = QString::fromLatin1("queryAudioList");
inline QString const kQueryAudioListResult = QString::fromLatin1("onQueryAudioList");
inline QString const kSetAudioMute = QString::fromLatin1("setAudioMute");
//! Between an action's settings panel and the action itself.
inline QString const kCcSetWidgetSettings = QString::fromLatin1("setWidgetSettings");
inline QString const kCcGetWidgetSettings = QString::fromLatin1("getWidgetSettings");

} // namespace SlobsAgentPrivate

//! The messages between actions and service: each form is written and read here and nowhere else. Pure
//! functions, nothing is sent. GUI thread only.
//!
//! An action sends tasks, {"task": "remote.command.slobs.service.task", "event": task name, …arguments}; the
//! service publishes results, {"task": result name, …}, on "remote.subject.streamlabs.response".
class SlobsMessages
{
public:
    using Scene = StreamlabsApiPrivate::Scene;
    using Source = StreamlabsApiPrivate::Source;
    using CollectionSchema = StreamlabsApiPrivate::CollectionSchema;
    using AudioSource = StreamlabsApiPrivate::AudioSource;

    //! What \a message is called: its "task", empty when that is no text.
    static QString nameOf(QJsonObject const& message);

    //! \name Tasks
    //!@{
    //! The task \a name, which has no arguments.
    static QJsonObject toTask(QString const& name);
    //! "activeId": \a id
    static QJsonObject toSetActiveScene(QString const& id);
    //! "sceneId", "sceneItemId", "sourceId": of \a source; "visible": bool
    static QJsonObject toSetSourceVisible(Source const& source, bool visible);
    //! "sceneId": \a sceneId, empty for the sources of all scenes
    static QJsonObject toRefreshAudioList(QString const& sceneId);
    //! "sourceId": \a sourceId, "muted": bool
    static QJsonObject toSetAudioMute(QString const& sourceId, bool muted);

    //! The name of a task; nothing when the message has none, and empty when that is no text.
    static std::optional<QString> nameOfTask(QJsonObject const& task);
    //! The arguments of the above. What is missing or of another type is empty or false.
    static QString fromSetActiveScene(QJsonObject const& task);
    //! The three ids and `visible`.
    static Source fromSetSourceVisible(QJsonObject const& task);
    static QString fromRefreshAudioList(QJsonObject const& task);
    //! The id and `muted`.
    static AudioSource fromSetAudioMute(QJsonObject const& task);
    //!@}

    //! \name Results
    //!@{
    //! {"task": "onStreamlabsAuthResult", "authorized": bool, "token": string, "port": integer}
    static QJsonObject toAuthState(bool authorized, QString const& token, int port);
    //! {"task": "onQueryStreamingStatus", "streamingStatus": string}
    static QJsonObject toStreamingStatus(QString const& status);
    //! {"task": "onQueryRecordingStatus", "recordingStatus": string}
    static QJsonObject toRecordingStatus(QString const& status);
    //! {"task": "onQueryScenes", "activeId": string, "list": array of Scene}
    static QJsonObject toSceneList(QList<Scene> const& scenes, QString const& activeId);
    //! The same for scenes that are encoded already.
    static QJsonObject toSceneList(QJsonArray const& encodedScenes, QString const& activeId);
    //! {"task": "onQueryCollections", "list": array of CollectionSchema}
    static QJsonObject toCollectionList(QList<CollectionSchema> const& collections);
    //! {"task": "onQueryAudioList", "list": array of AudioSource}
    static QJsonObject toAudioList(QList<AudioSource> const& sources);

    //! Decoders of the above. A message of another task leaves the outputs as they are; "port" is -1 when
    //! missing; a "list" that is missing or not an array gives an empty list, and an element that is no
    //! object an empty record.
    //!
    //! Every key has an action, a face and a panel, and all of them ask for the records of the same list:
    //! those of the last list of each kind are kept and shared. Of 2,000 items that is 2 ms once instead of
    //! 96 times with 32 keys.
    static void fromAuthState(QJsonObject const& message, bool& authorized, QString& token, int& port);
    static void fromStreamingStatus(QJsonObject const& message, QString& status);
    static void fromRecordingStatus(QJsonObject const& message, QString& status);
    static void fromSceneList(QJsonObject const& message, QList<Scene>& scenes, QString& activeId);
    static void fromCollectionList(QJsonObject const& message, QList<CollectionSchema>& collections);
    static void fromAudioList(QJsonObject const& message, QList<AudioSource>& sources);
    //!@}

    //! What counts as on, for key faces and LEDs alike: a stream that is "starting" or "live", a recording
    //! only once it runs.
    static bool isStreaming(QString const& streamingStatus);
    static bool isRecording(QString const& recordingStatus);

    //! Key LED commands for the relay: {"task": "remote.command.update.function.key.led.App.Control",
    //! "sender": "", "appName": "SLOBS", "functionName": "STREAM" or "RECORD", "status": whether it is on}.
    static QJsonObject setStreamingLed(QString const& streamingStatus);
    static QJsonObject setRecordingLed(QString const& recordingStatus);
};
