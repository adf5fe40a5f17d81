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

//! Of documents before version 2.
inline QString const kLegacyItemId = QString::fromLatin1("item_id");
inline QString const kLegacyItemName = QString::fromLatin1("item_name");
inline QString const kLegacyPayload = QString::fromLatin1("payload");
inline QString const kLegacyAudioSource = QString::fromLatin1("audioSource");

} // namespace SlobsSettingsKeys
