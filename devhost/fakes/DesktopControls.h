#pragma once

#include <QString>
#include <QStringList>

#include <span>

class StreamlabsStandIn;

//! One thing that people do in the pretended Streamlabs Desktop. Lines of scripts, their help and the
//! window's menus are all made from these.
struct DesktopControl
{
    //! What a menu offers it with.
    enum class Part { Application, Collections, Scenes, Items, Audio };

    //! As scripts call it, such as "rename-scene".
    QString name;
    Part part;
    //! What its words stand for: one of `DesktopPlaces`, or its choices, such as "on|off".
    QStringList places;
    //! As menus call it, an "&" before the letter that chooses it; one for each choice, separated by "|".
    QString title;
    //! False when it could not be done.
    bool (*operate)(StreamlabsStandIn& standIn, QStringList const& words);
};

//! Words of controls.
namespace DesktopPlaces {

//! What exists already, by name or id.
inline QString const kScene = QString::fromLatin1("SCENE");
inline QString const kItem = QString::fromLatin1("ITEM");
inline QString const kAudio = QString::fromLatin1("AUDIO");
inline QString const kCollection = QString::fromLatin1("COLLECTION");
//! What it shall be called.
inline QString const kName = QString::fromLatin1("NAME");
inline QString const kToken = QString::fromLatin1("TOKEN");
//! Numbers of a collection to be generated.
inline QString const kScenes = QString::fromLatin1("SCENES");
inline QString const kItemsEach = QString::fromLatin1("ITEMS_EACH");
inline QString const kAudioSources = QString::fromLatin1("AUDIO_SOURCES");

} // namespace DesktopPlaces

namespace DesktopControls {

std::span<DesktopControl const> all();
//! Null when there is none.
DesktopControl const* find(QString const& name);

//! Operates the control with a word for each of its places. What is wrong, for people; empty when it is done.
QString run(DesktopControl const& control, StreamlabsStandIn& standIn, QStringList const& words);

} // namespace DesktopControls
