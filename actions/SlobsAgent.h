#pragma once

#include "relay/WebSocketClient.h"
#include "streamlabs/SlobsMessages.h"

#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>

class SlobsMessagePool;

//! An action's client of the host's relay. What it sends to the service and gets from there has the forms of
//! SlobsMessages.
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
class SlobsAgent : public QObject, public SlobsMessages
{
    Q_OBJECT

public:
    using Handler = std::function<void(QJsonObject const& message)>;

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

    //! To the relay: {"task", "id", "category"}.
    void registerToServer(QString const& id, QString const& category);
    //! To the relay: {"task", "subject": string or "subjects": array, "id", "category"}.
    void subscribe(QString const& subject, QString const& id, QString const& category);
    void subscribe(QList<QString> const& subjects, QString const& id, QString const& category);
    //! To the host: open the settings at the page where the Streamlabs account is linked.
    //! {"task": "LaunchSettingPage", "params": {"page": 7}}
    void showSettingsLogin();

    //! \name To the service: the tasks of SlobsMessages
    //!@{
    void queryAuthState() { sendRccEvent(toTask(SlobsAgentPrivate::kQueryAuthState)); }
    void refreshModel() { sendRccEvent(toTask(SlobsAgentPrivate::kRefreshModel)); }
    void queryStreamingStatus() { sendRccEvent(toTask(SlobsAgentPrivate::kQueryStreamingStatus)); }
    void queryRecordingStatus() { sendRccEvent(toTask(SlobsAgentPrivate::kQueryRecordingStatus)); }
    void toggleStreaming() { sendRccEvent(toTask(SlobsAgentPrivate::kToggleStreamingStatus)); }
    void toggleRecording() { sendRccEvent(toTask(SlobsAgentPrivate::kToggleRecordingStatus)); }
    void refreshScenes() { sendRccEvent(toTask(SlobsAgentPrivate::kRefreshScenes)); }
    void queryScenes() { sendRccEvent(toTask(SlobsAgentPrivate::kQueryScenes)); }
    void setActiveScene(QString const& id) { sendRccEvent(toSetActiveScene(id)); }
    void setSourceVisible(Source const& source, bool visible)
    {
        sendRccEvent(toSetSourceVisible(source, visible));
    }
    void refreshCollections() { sendRccEvent(toTask(SlobsAgentPrivate::kRefreshCollections)); }
    void queryCollections() { sendRccEvent(toTask(SlobsAgentPrivate::kQueryCollections)); }
    //! Of all scenes when \a sceneId is empty.
    void refreshAudioList(QString const& sceneId) { sendRccEvent(toRefreshAudioList(sceneId)); }
    void queryAudioList() { sendRccEvent(toTask(SlobsAgentPrivate::kQueryAudioList)); }
    void setAudioMute(QString const& sourceId, bool muted) { sendRccEvent(toSetAudioMute(sourceId, muted)); }
    //!@}

signals:
    void connected();
    void disconnected();

private slots:
    void onTextMessageReceived(QString const& text);

private:
    WebSocketClient socket;
    QMap<QString, Handler> handlers;
    std::shared_ptr<SlobsMessagePool> messages;
};
