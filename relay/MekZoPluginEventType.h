#pragma once

#include <QString>

//! Names of the host's events, and the keys of their envelope:
//! {"event": {"type": event name, "payload": …, "SDKVersion": …, "AppVersion": …}, "target": key context}.
//! Messages that follow JSON-RPC 2.0 use its six keys in its meaning.
namespace MekZoPluginEventType {

inline QString const kFieldTarget = QString::fromLatin1("target");
inline QString const kFieldEvent = QString::fromLatin1("event");
inline QString const kFieldType = QString::fromLatin1("type");
inline QString const kFieldSDK = QString::fromLatin1("SDKVersion");
inline QString const kFieldApp = QString::fromLatin1("AppVersion");
inline QString const kFieldPayload = QString::fromLatin1("payload");

inline QString const kJsonRpc = QString::fromLatin1("jsonrpc");
inline QString const kMethod = QString::fromLatin1("method");
inline QString const kParams = QString::fromLatin1("params");
inline QString const kId = QString::fromLatin1("id");
inline QString const kResult = QString::fromLatin1("result");
inline QString const kError = QString::fromLatin1("error");

inline QString const kSetSettingsEvent = QString::fromLatin1("mek.zo.plugin.event.set.settings");
inline QString const kGetSettingsEvent = QString::fromLatin1("mek.zo.plugin.event.get.settings");
inline QString const kKeyUpEvent = QString::fromLatin1("mek.zo.plugin.event.key.up");
inline QString const kKeyDownEvent = QString::fromLatin1("mek.zo.plugin.event.key.down");
inline QString const kAppTriggeredEvent = QString::fromLatin1("mek.zo.plugin.event.app.triggered");
inline QString const kDidReceiveSettingsEvent =
    QString::fromLatin1("mek.zo.plugin.event.did.receive.settings");
inline QString const kDidUpdateSettingsEvent = QString::fromLatin1("mek.zo.plugin.event.did.update.settings");
inline QString const kUpdateSettingsEvent = QString::fromLatin1("mek.zo.plugin.event.update.settings");
inline QString const kSetLanguageEvent = QString::fromLatin1("mek.set.language");
inline QString const kPluginWillRemoveEvent = QString::fromLatin1("mek.will.remove");
inline QString const kSetSLOBSParamEvent = QString::fromLatin1("mek.set.slobs.param");
inline QString const kDeviceDidConnectEvent = QString::fromLatin1("mek.zo.plugin.event.device.did.connect");
inline QString const kDeviceDidDisconnectEvent =
    QString::fromLatin1("mek.zo.plugin.event.device.did.disconnect");
inline QString const kPluginWillAppearEvent = QString::fromLatin1("mek.zo.plugin.event.plugin.will.appear");
inline QString const kPluginWillDisappearEvent =
    QString::fromLatin1("mek.zo.plugin.event.plugin.will.disappear");
inline QString const kPluginPropertyInspectorWillAppearEvent =
    QString::fromLatin1("mek.zo.plugin.event.plugin.property.inspector.will.appear");
//! The protocol has no name of its own for the inspector's disappearance: hosts send the will-appear text.
inline QString const kPluginPropertyInspectorWillDisappearEvent = kPluginWillAppearEvent;

} // namespace MekZoPluginEventType
