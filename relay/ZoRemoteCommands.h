#pragma once

#include <QJsonObject>
#include <QString>

//! The relay's vocabulary. Every relay message is one JSON object in one WebSocket text frame, serialised
//! compactly, {"task": command name, …arguments at top level}. The texts are the protocol, capital letters
//! included.
//!
//! The strings are built on the heap and not literals: whatever the package hands to the host may outlive the
//! library's static data.

//! Members that more than one form has.
namespace ZoRemoteFields {

inline QString const kFieldTask = QString::fromLatin1("task");
inline QString const kFieldSubject = QString::fromLatin1("subject");
inline QString const kFieldSubjects = QString::fromLatin1("subjects");
inline QString const kFieldId = QString::fromLatin1("id");
inline QString const kFieldCategory = QString::fromLatin1("category");
inline QString const kFieldSender = QString::fromLatin1("sender");

} // namespace ZoRemoteFields

//! Commands: what a client asks the relay, and what the relay answers with.
namespace ZoRemoteCommands {

inline QString const kRegisterToServer = QString::fromLatin1("remote.command.register.to.server");
inline QString const kSubscribeSubject = QString::fromLatin1("remote.command.subscribe.subject");
inline QString const kSubscribeSubjects = QString::fromLatin1("remote.command.subscribe.subjects");
inline QString const kSubjectSendMessage = QString::fromLatin1("remote.command.subject.send.message");
inline QString const kQueryMixerMute = QString::fromLatin1("remote.command.query.mixer.mute");
inline QString const kUpdateMixerMute = QString::fromLatin1("remote.command.update.mixer.mute");
inline QString const kQueryMixerVolume = QString::fromLatin1("remote.command.query.mixer.volume");
inline QString const kUpdateMixerVolume = QString::fromLatin1("remote.command.update.mixer.volume");
inline QString const kQueryMixerEffect = QString::fromLatin1("remote.command.query.mixer.effect");
inline QString const kUpdateMixerEffect = QString::fromLatin1("remote.command.update.mixer.effect");
inline QString const kQueryHeadphoneOutput = QString::fromLatin1("remote.command.query.headphone.output");
inline QString const kUpdateHeadphoneOutput = QString::fromLatin1("remote.command.update.headphone.output");
inline QString const kQueryMonitor = QString::fromLatin1("remote.command.query.monitor");
inline QString const kUpdateMonitor = QString::fromLatin1("remote.command.update.monitor");
inline QString const kUpdatePageSwitch = QString::fromLatin1("remote.command.update.pageswitch");
inline QString const kQueryHotkeyProfile = QString::fromLatin1("remote.command.query.hotkey.profile");
inline QString const kUpdateHotkeyProfile = QString::fromLatin1("remote.command.update.hotkey.profile");
inline QString const kQueryMixerProfile = QString::fromLatin1("remote.command.query.mixer.profile");
inline QString const kUpdateMixerProfile = QString::fromLatin1("remote.command.update.mixer.profile");
inline QString const kEnterGroup = QString::fromLatin1("remote.command.enter.group");
inline QString const kUpdateFunctionKeyLedLevel =
    QString::fromLatin1("remote.command.update.function.key.led.level");
inline QString const kUpdateFunctionKeyLedAppControl =
    QString::fromLatin1("remote.command.update.function.key.led.App.Control");
inline QString const kUpdateFunctionKeyImageColor =
    QString::fromLatin1("remote.command.update.function.key.Image.Color");
inline QString const kTurnOffPanel = QString::fromLatin1("remote.command.turn.off.panel");
inline QString const kQueryPageIndicatorNumber = QString::fromLatin1("QueryPageIndicatorNumber");
inline QString const kSlobsServiceTask = QString::fromLatin1("remote.command.slobs.service.task");
inline QString const kLaunchSettingPage = QString::fromLatin1("LaunchSettingPage");

//! The command that switches the LED of a key: {"task", "sender", "appName", "functionName": strings,
//! "status": bool}
inline QJsonObject toKeyLedAppControl(
    QString const& sender, QString const& appName, QString const& functionName, bool status)
{
    using namespace Qt::StringLiterals;
    return {{ZoRemoteFields::kFieldTask, kUpdateFunctionKeyLedAppControl},
        {ZoRemoteFields::kFieldSender, sender}, {u"appName"_s, appName}, {u"functionName"_s, functionName},
        {u"status"_s, status}};
}

} // namespace ZoRemoteCommands

//! Subjects: what clients subscribe to and services publish on.
namespace ZoRemoteSubjects {

inline QString const kSubjectStreamlabsResponse = QString::fromLatin1("remote.subject.streamlabs.response");

} // namespace ZoRemoteSubjects
