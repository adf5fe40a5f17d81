#pragma once

#include <QString>

//! Keys of the actions' own settings.
namespace SlobsSettingsKeys {

inline QString const kSceneId = QString::fromLatin1("scene_id");
inline QString const kSceneName = QString::fromLatin1("scene_name");
inline QString const kSceneItemId = QString::fromLatin1("scene_item_id");
inline QString const kSceneItemName = QString::fromLatin1("scene_item_name");
inline QString const kAudioSourceId = QString::fromLatin1("audio_source_id");
inline QString const kAudioSourceName = QString::fromLatin1("audio_source_name");

} // namespace SlobsSettingsKeys
