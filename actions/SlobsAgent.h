#pragma once

#include "relay/WebSocketClient.h"
#include "streamlabs/StreamlabsApi.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>

class SlobsMessagePool;

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

//! An action's client of the host's relay, and the one place where the messages between actions and service
//! are encoded and decoded.
//!
//! Every message is one JSON object in one WebSocket text frame with its name under "task". What the service
//! publishes on "remote.subject.streamlabs.response" arrives as it was published, so handlers are registered
//! under result names ("onQueryScenes"); the relay's own answers arrive under the relay command's name.
//!
//! Agents do not reconnect: after `disconnected` the agent is idle until `connectRcc` is called again. What
//! is sent while not connected is lost. A message leaves while it is sent, which may be when the loss of the
//! connection shows, as `disconnected` from inside. A frame or message of more than 64 MiB ends the
//! connection with a warning. An agent may be deleted from inside of its handlers and signals, whatever they
//! come from. GUI thread only.
class SlobsAgent : public QObject
{
    Q_OBJECT

public:
    using Handler = std::function<void(QJsonObject const& message)>;
    using Scene = StreamlabsApiPrivate::Scene;
    using Source = StreamlabsApiPrivate::Source;
    using CollectionSchema = StreamlabsApiPrivate::CollectionSchema;
    using AudioSource = StreamlabsApiPrivate::AudioSource;

    explicit SlobsAgent(QObject* parent = nullptr);
    //! Disconnects without a signal.
    ~SlobsAgent() override;

    //! Opens the relay's \a url, "ws://127.0.0.1:PORT".
    void connectRcc(QString const& url);
    //! Aborts the connection: no close handshake.
    void disconnectRcc();
    //! Messages whose "task" is \a task go to \a handler; an earlier handler of the same task is replaced.
    void addRccEventHandler(QString const& task, Handler handler);
    void sendRccEvent(QJsonObject const& event);

    //! To the relay: {"task", "subject": string or "subjects": array, "id", "category"}.
    void subscribe(QString const& subject, QString const& id, QString const& category);
    void subscribe(QList<QString> const& subjects, QString const& id, QString const& category);
    //! To the host: open the settings at the page where the Streamlabs account is linked.
    //! {"task": "LaunchSettingPage", "params": {"page": 7}}
    void showSettingsLogin();

    //! To the service: {"task": "remote.command.slobs.service.task", "event": task name, …arguments}.
    void queryAuthState();
    void refreshModel();
    void queryStreamingStatus();
    void queryRecordingStatus();
    void toggleStreaming();
    void toggleRecording();
    void refreshScenes();
    void queryScenes();
    //! "activeId": \a id
    void setActiveScene(QString const& id);
    //! "sceneId", "sceneItemId", "sourceId": of \a source; "visible": bool
    void setSourceVisible(Source const& source, bool visible);
    void refreshCollections();
    void queryCollections();
    //! "sceneId": \a sceneId, empty for the sources of all scenes
    void refreshAudioList(QString const& sceneId);
    void queryAudioList();
    //! "sourceId": \a sourceId, "muted": bool
    void setAudioMute(QString const& sourceId, bool muted);

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
    //! missing; a "list" that is missing or not an array gives an empty list.
    static void fromAuthState(QJsonObject const& message, bool& authorized, QString& token, int& port);
    static void fromStreamingStatus(QJsonObject const& message, QString& status);
    static void fromRecordingStatus(QJsonObject const& message, QString& status);
    static void fromSceneList(QJsonObject const& message, QList<Scene>& scenes, QString& activeId);
    static void fromCollectionList(QJsonObject const& message, QList<CollectionSchema>& collections);
    static void fromAudioList(QJsonObject const& message, QList<AudioSource>& sources);

    //! What counts as on, for key faces and LEDs alike: a stream that is "starting" or "live", a recording
    //! only once it runs.
    static bool isStreaming(QString const& streamingStatus);
    static bool isRecording(QString const& recordingStatus);

    //! Key LED commands for the relay: {"task": "remote.command.update.function.key.led.App.Control",
    //! "sender": "", "appName": "SLOBS", "functionName": "STREAM" or "RECORD", "status": bool}. The stream's
    //! LED is lit while it is "starting" or "live", the record's only while it is "recording".
    static QJsonObject setStreamingLed(QString const& streamingStatus);
    static QJsonObject setRecordingLed(QString const& recordingStatus);

signals:
    void connected();
    void disconnected();

private slots:
    void onTextMessageReceived(QString const& text);

private:
    void send(QString const& text);
    void sendServiceTask(QString const& name);
    void sendServiceTask(QString const& name, QJsonObject arguments);

    WebSocketClient socket;
    QMap<QString, Handler> handlers;
    std::shared_ptr<SlobsMessagePool> messages;
};
