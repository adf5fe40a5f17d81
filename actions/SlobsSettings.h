#pragma once

#include "uikit/ZoDisplayViewAttribute.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

//! The settings document of an action, as the host stores it:
//! {"version": 2, "titlelist": [title per state], "iconlist": [image path per state], "displayView": text
//! look, …keys of the action}.
//!
//! Earlier versions, and what has no version, had {"title": [title, …], "states": [{"Image": path}, …]}, and
//! some actions other keys of their own. Functions over values: what is missing or of another type leaves
//! what was there.
namespace SlobsSettings {

constexpr int kVersion = 2;

//! What all actions have in their documents.
struct Document
{
    QStringList titles;
    QStringList icons;
    ZoDisplayViewAttribute look;
    //! As it was read: what nobody here knows is written back.
    QJsonObject source;
};

//! 0 when there is none.
int versionOf(QJsonObject const& json);
//! What \a json says, and \a defaults for the rest, such as for states of which it says nothing.
Document read(QJsonObject const& json, Document const& defaults);
QJsonObject write(Document const& document);

//! Replaces the entry of state \a index in \a list, one of the two of \a document. False when there is no
//! such state.
bool replaceAt(Document& document, QStringList Document::* list, int index, QString const& text);

//! \name Conversion from earlier versions, with whatever it does not know
//!@{
//! Titles and images.
QJsonObject convertLists(QJsonObject json);
//! {"item_id", "item_name"}, of the source action
QJsonObject convertItem(QJsonObject json);
//! {"payload": {"audioSource", "audio_source_name"}}, of the audio action
QJsonObject convertAudioSource(QJsonObject json);
//!@}

} // namespace SlobsSettings
