#pragma once

#include <QJsonObject>
#include <QString>

//! What a key is set to: the id that counts, and the name as last seen, to be shown when the target is gone.
struct SlobsTarget
{
    //! Empty while nothing is chosen.
    QString id;
    QString name = unknownName();

    static QString unknownName();
    //! Reads the members \a idKey and \a nameKey of a settings document; a missing name stays unknown.
    static SlobsTarget fromJson(QJsonObject const& document, QString const& idKey, QString const& nameKey);
    void writeTo(QJsonObject& document, QString const& idKey, QString const& nameKey) const;

    bool operator==(SlobsTarget const&) const = default;
};

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

//! Tasks between an action's panel and the action, besides those of SlobsAgentPrivate.
namespace SlobsPanelTasks {

inline QString const kRefreshScene = QString::fromLatin1("refreshScene");
inline QString const kRefreshAudioList = QString::fromLatin1("refreshAudioList");

} // namespace SlobsPanelTasks
