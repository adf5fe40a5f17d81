#pragma once

#include "relay/WebSocketClient.h"
#include "relay/ZoRemoteCommands.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QString>

//! A relay client that speaks the mixer commands of the console.
//!
//! Created closed; `connectToServer` opens it. It does not reconnect: after a loss make a new one. Commands
//! sent while the socket is not open are lost without a word. A frame or message of more than 64 MiB ends the
//! connection with a warning. A delegate may be deleted from inside of its signals.
//!
//! The numbers "deck", "category", "effectType", "presetId", "page" and "level" are the host's; this class
//! only carries them. A "sender" is the context of the key that asks, so that the host can address that key.
class ZoMixerPluginDelegate : public QObject
{
    Q_OBJECT

public:
    explicit ZoMixerPluginDelegate(QObject* parent = nullptr);
    //! Aborts the connection: no close handshake, no signal.
    ~ZoMixerPluginDelegate() override;

    //! Opens ws://127.0.0.1:PORT, PORT being that of ZoLumenProxy. Failures are not reported.
    void connectToServer();
    //! Sends \a message as one compact text frame (RFC 6455).
    void sendTextMessage(QJsonObject const& message);

    //! {"task", "subjects": [string, …]}
    void subscribeSubjects(QList<QString> const& subjects);
    //! {"task", "subject": string}
    void subscribeSubject(QString const& subject);
    //! {"task", "subject": string}
    void subjectSendMessage(QString const& subject);
    //! {"task"}
    void queryMixerMute() { sendCommand(ZoRemoteCommands::kQueryMixerMute); }
    //! {"task", "muted": bool, "mixers": array}
    void updateMixerMute(bool muted, QJsonArray const& mixers);
    //! {"task"}
    void queryMixerVolume() { sendCommand(ZoRemoteCommands::kQueryMixerVolume); }
    //! {"task", "deck": number, "category": number, "volume": number}
    void updateMixerVolume(int deck, int category, int volume);
    //! {"task"}
    void queryMixerEffect() { sendCommand(ZoRemoteCommands::kQueryMixerEffect); }
    //! {"task", "enable": bool, "effectType": number, "presetId": number}
    void updateMixerEffect(bool enable, int effectType, int presetId);
    //! {"task"}
    void queryHeadphoneOutput() { sendCommand(ZoRemoteCommands::kQueryHeadphoneOutput); }
    //! {"task", "on": bool}
    void updateHeadphoneOutput(bool on);
    //! {"task"}
    void queryMonitor() { sendCommand(ZoRemoteCommands::kQueryMonitor); }
    //! {"task", "on": bool}
    void updateMonitor(bool on);
    //! {"task", "page": number}
    void updatePageSwitch(int page);
    //! {"task"}
    void queryHotkeyProfile() { sendCommand(ZoRemoteCommands::kQueryHotkeyProfile); }
    //! {"task", "profileId": string}
    void updateHotkeyProfile(QString const& profileId);
    //! {"task"}
    void queryMixerProfile() { sendCommand(ZoRemoteCommands::kQueryMixerProfile); }
    //! {"task", "profileId": string}
    void updateMixerProfile(QString const& profileId);
    //! {"task", "id": string}
    void enterGroup(QString const& id);
    //! {"task", "sender": string, "level": number}
    void updateFunctionKeyLedLevel(QString const& sender, int level);
    //! {"task", "sender": string, "appName": string, "functionName": string, "status": bool}
    void updateFunctionKeyLedAppControl(
        QString const& sender, QString const& appName, QString const& functionName, bool status);
    //! {"task", "sender": string}
    void updateFunctionKeyImageColor(QString const& sender);
    //! {"task"}
    void turnOffPanel() { sendCommand(ZoRemoteCommands::kTurnOffPanel); }
    //! {"task"}
    void queryPageNumber() { sendCommand(ZoRemoteCommands::kQueryPageIndicatorNumber); }

signals:
    //! Declared for the host's other users of the class; this one never emits it.
    void connected(QJsonObject const& message);
    //! A message from the relay, or {"error": "Content was broken"} for a text that is not a JSON object.
    void response(QJsonObject const& message);

private:
    void sendCommand(QString const& command, QJsonObject arguments = {});
    void onConnected();
    void onTextMessageReceived(QString const& text);

    WebSocketClient socket;
};
