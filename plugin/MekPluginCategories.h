#pragma once

#include <QString>

//! Ids of the actions that this package offers. The host shows, stores and requests actions by these texts.
namespace MekPluginCategories {

//! The host's stand-in for an action whose package is gone.
inline QString const kUnsupportPlugin = QString::fromLatin1("com.zentrix.plugin.unsupport");

inline QString const kStreamlabsStream = QString::fromLatin1("com.zentrix.slobs.webapp.stream");
inline QString const kStreamlabsRecord = QString::fromLatin1("com.zentrix.slobs.webapp.record");
inline QString const kStreamlabsScene = QString::fromLatin1("com.zentrix.slobs.webapp.scene");
inline QString const kStreamlabsSource = QString::fromLatin1("com.zentrix.slobs.webapp.source");
//! Ends in "mute" and not in "audio", as keys have it stored.
inline QString const kStreamlabsAudio = QString::fromLatin1("com.zentrix.slobs.webapp.mute");

} // namespace MekPluginCategories
