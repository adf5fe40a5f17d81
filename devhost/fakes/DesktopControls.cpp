#include "devhost/fakes/DesktopControls.h"

#include "devhost/fakes/StreamlabsStandIn.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;
using namespace DesktopPlaces;

namespace {

using Part = DesktopControl::Part;
using Words = QStringList const&;
using Desktop = StreamlabsStandIn&;

bool meansOn(QString const& word)
{
    return word == "on"_L1;
}

//! There are no events for it: clients learn of it as of a restart of the application.
bool replaceContents(Desktop desktop, auto const& replace)
{
    bool const wasRunning = desktop.isRunning();
    desktop.quit();
    bool const done = replace();
    return (!wasRunning || desktop.start(desktop.lastPort())) && done;
}

//! What can be meant by a word in \a place.
QList<StandInModel::Entry> candidates(StandInModel const& model, QString const& place)
{
    if (place == kScene) {
        return model.sceneEntries();
    }
    if (place == kAudio) {
        return model.audioEntries();
    }
    QList<StandInModel::Entry> entries;
    if (place == kItem) {
        for (auto const& scene : model.sceneEntries()) {
            entries += model.nodeEntries(scene.id);
        }
    } else {
        for (auto const& collection : model.collections()) {
            entries.append({collection[u"id"_s].toString(), collection[u"name"_s].toString()});
        }
    }
    return entries;
}

} // namespace

std::span<DesktopControl const> DesktopControls::all()
{
    static QString const onOff = u"on|off"_s;
    static std::array const controls = std::to_array<DesktopControl>({
        {u"stream"_s, Part::Application, {onOff}, u"Go &live|End the &stream"_s,
            [](Desktop d, Words w) { return d.isRunning() && d.model().setStreaming(meansOn(w[0])); }},
        {u"record"_s, Part::Application, {onOff}, u"&Record|Stop the &recording"_s,
            [](Desktop d, Words w) { return d.isRunning() && d.model().setRecording(meansOn(w[0])); }},
        {u"interrupt"_s, Part::Application, {}, u"&Interrupt a live stream, which reconnects"_s,
            [](Desktop d, Words) { return d.isRunning() && d.model().interruptStream(); }},
        {u"start"_s, Part::Application, {}, u"Start the &application"_s,
            [](Desktop d, Words) { return d.isRunning() || d.start(d.lastPort()); }},
        {u"stop"_s, Part::Application, {}, u"Q&uit the application"_s,
            [](Desktop d, Words) {
                d.quit();
                return true;
            }},
        {u"drop"_s, Part::Application, {}, u"&Drop its connections, as a crash does"_s,
            [](Desktop d, Words) {
                d.drop();
                return true;
            }},
        {u"token"_s, Part::Application, {kToken}, u"Change its API &token"_s,
            [](Desktop d, Words w) {
                d.setToken(w[0]);
                return true;
            }},
        {u"generate"_s, Part::Application, {kScenes, kItemsEach, kAudioSources},
            u"&Generate a collection in the place of all and restart"_s,
            [](Desktop d, Words w) {
                return replaceContents(
                    d, [&] { return d.model().generate(w[0].toInt(), w[1].toInt(), w[2].toInt()); });
            }},
        {u"demo"_s, Part::Application, {}, u"L&oad the demo collections and restart"_s,
            [](Desktop d, Words) {
                return replaceContents(d, [&] {
                    d.model().loadDemo();
                    return true;
                });
            }},
        {u"collection"_s, Part::Collections, {kCollection}, u"Switch to the collection"_s,
            [](Desktop d, Words w) { return d.model().switchCollection(w[0]); }},
        {u"add-collection"_s, Part::Collections, {kName}, u"Add a &collection"_s,
            [](Desktop d, Words w) { return d.model().addCollection(w[0]); }},
        {u"remove-collection"_s, Part::Collections, {kCollection}, u"Re&move the collection"_s,
            [](Desktop d, Words w) { return d.model().removeCollection(w[0]); }},
        {u"scene"_s, Part::Scenes, {kScene}, u"Switch to the scene"_s,
            [](Desktop d, Words w) { return d.model().switchScene(w[0]); }},
        {u"add-scene"_s, Part::Scenes, {kName}, u"Add a scene"_s,
            [](Desktop d, Words w) { return d.model().addScene(w[0]); }},
        {u"rename-scene"_s, Part::Scenes, {kScene, kName}, u"Rename the scene"_s,
            [](Desktop d, Words w) { return d.model().renameScene(w[0], w[1]); }},
        {u"remove-scene"_s, Part::Scenes, {kScene}, u"Remove the scene"_s,
            [](Desktop d, Words w) { return d.model().removeScene(w[0]); }},
        {u"show"_s, Part::Items, {kItem}, u"Show the item"_s,
            [](Desktop d, Words w) { return d.model().setItemVisible(w[0], true); }},
        {u"hide"_s, Part::Items, {kItem}, u"Hide the item"_s,
            [](Desktop d, Words w) { return d.model().setItemVisible(w[0], false); }},
        {u"drag"_s, Part::Items, {kItem}, u"Move the item by a pixel"_s,
            [](Desktop d, Words w) { return d.model().moveItem(w[0], QPointF(1, 1)); }},
        {u"add-item"_s, Part::Items, {kScene, kName}, u"Add an item"_s,
            [](Desktop d, Words w) { return d.model().addItem(w[0], w[1]); }},
        {u"rename-item"_s, Part::Items, {kItem, kName}, u"Rename the item"_s,
            [](Desktop d, Words w) { return d.model().renameItem(w[0], w[1]); }},
        {u"remove-item"_s, Part::Items, {kItem}, u"Remove the item"_s,
            [](Desktop d, Words w) { return d.model().removeItem(w[0]); }},
        {u"mute"_s, Part::Audio, {kAudio}, u"Mute the audio source"_s,
            [](Desktop d, Words w) { return d.model().setMuted(w[0], true); }},
        {u"unmute"_s, Part::Audio, {kAudio}, u"Unmute the audio source"_s,
            [](Desktop d, Words w) { return d.model().setMuted(w[0], false); }},
        {u"add-audio"_s, Part::Audio, {kName}, u"Add an audio source"_s,
            [](Desktop d, Words w) { return d.model().addAudioSource(w[0]); }},
        {u"rename-audio"_s, Part::Audio, {kAudio, kName}, u"Rename the audio source"_s,
            [](Desktop d, Words w) { return d.model().renameAudioSource(w[0], w[1]); }},
        {u"remove-audio"_s, Part::Audio, {kAudio}, u"Remove the audio source"_s,
            [](Desktop d, Words w) { return d.model().removeAudioSource(w[0]); }},
    });
    return controls;
}

DesktopControl const* DesktopControls::find(QString const& name)
{
    auto const found = std::ranges::find(all(), name, &DesktopControl::name);
    return found == all().end() ? nullptr : &*found;
}

QString DesktopControls::run(
    DesktopControl const& control, StreamlabsStandIn& standIn, QStringList const& words)
{
    if (control.operate(standIn, words)) {
        return {};
    }
    for (qsizetype i = 0; i < words.size(); ++i) {
        QString const& place = control.places[i];
        if (place != kScene && place != kItem && place != kAudio && place != kCollection) {
            continue;
        }
        QStringList names;
        for (auto const& entry : candidates(standIn.model(), place)) {
            if (entry.id == words[i] || entry.name == words[i]) {
                names.clear();
                break;
            }
            names.append(u'"' + entry.name + u'"');
        }
        if (!names.isEmpty()) {
            names.removeDuplicates();
            return u"\"%1\" is none of %2"_s.arg(words[i], names.join(u", "_s));
        }
    }
    return standIn.isRunning() ? u"the stand-in cannot do that now"_s
                               : u"the stand-in cannot do that while it does not run"_s;
}
