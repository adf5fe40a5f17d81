#pragma once

#include <QJsonObject>
#include <QString>

//! What an action and its two views tell each other, besides the results that the action passes on: each form
//! is written and read here.
namespace SlobsPanelMessages {

//! Tasks of a panel: to have its list read anew.
inline QString const kRefreshScene = QString::fromLatin1("refreshScene");
inline QString const kRefreshAudioList = QString::fromLatin1("refreshAudioList");

//! {"task": \a name}
QJsonObject toTask(QString const& name);
//! {"task": "getWidgetSettings", "payload": \a settings}: to the views, the settings of their action.
QJsonObject toGetSettings(QJsonObject const& settings);
//! {"task": "setWidgetSettings", "payload": \a settings}: from the panel, what the user has chosen; the face
//! gets it too.
QJsonObject toSetSettings(QJsonObject const& settings);
//! The payload of the two.
QJsonObject settingsOf(QJsonObject const& message);

//! {"event": "openSettingsAuth"}: the user wants to link Streamlabs Desktop.
QJsonObject toOpenLogin();
bool isOpenLogin(QJsonObject const& message);

} // namespace SlobsPanelMessages
