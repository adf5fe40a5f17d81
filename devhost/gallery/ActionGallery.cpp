#include "devhost/gallery/ActionGallery.h"

#include "actions/BaseSlobsDisplayView.h"
#include "actions/BaseSlobsPropertyView.h"
#include "actions/SlobsAgent.h"
#include "actions/SlobsAudioWidget.h"
#include "actions/SlobsRecordWidget.h"
#include "actions/SlobsSceneWidget.h"
#include "actions/SlobsSourceWidget.h"
#include "actions/SlobsStreamWidget.h"
#include "devhost/gallery/GalleryPose.h"
#include "devhost/gallery/GallerySheet.h"
#include "uikit/BasePropertyWidget.h"

#include <QAbstractItemView>
#include <QComboBox>

#include <functional>
#include <memory>

using namespace Qt::StringLiterals;
using namespace GalleryPose;

namespace {

// Nothing is to the right of it in a panel.
constexpr int kPanelWidth = 616;

struct Action
{
    QString name;
    std::function<std::unique_ptr<BaseSlobsWidget>()> make;
    //! The keys that choose a target, empty where there is none.
    QJsonObject settings;
    //! The same for a target that is gone.
    QJsonObject gone;
    //! What the service publishes while the target is off, and on.
    QJsonObject off;
    QJsonObject on;
};

template <typename Widget>
std::unique_ptr<BaseSlobsWidget> make()
{
    return std::make_unique<Widget>();
}

QJsonObject scenes(QString const& active, bool visible)
{
    StreamlabsApiPrivate::Source camera;
    camera.id = camera.sceneItemId = u"item-camera"_s;
    camera.name = u"Camera"_s;
    camera.sceneId = u"scene-main"_s;
    camera.visible = visible;
    return SlobsAgent::toSceneList(
        {{u"scene-start"_s, u"Starting soon"_s, {}}, {u"scene-main"_s, u"Main scene"_s, {camera}}}, active);
}

QJsonObject audio(bool muted)
{
    StreamlabsApiPrivate::AudioSource microphone;
    microphone.sourceId = u"mic"_s;
    microphone.name = u"Microphone"_s;
    microphone.muted = muted;
    return SlobsAgent::toAudioList({microphone});
}

QList<Action> actions()
{
    QString const live = u"live"_s;
    QString const recording = u"recording"_s;
    QString const offline = u"offline"_s;
    return {
        {u"Stream"_s, make<SlobsStreamWidget>, {}, {}, SlobsAgent::toStreamingStatus(offline),
            SlobsAgent::toStreamingStatus(live)},
        {u"Record"_s, make<SlobsRecordWidget>, {}, {}, SlobsAgent::toRecordingStatus(offline),
            SlobsAgent::toRecordingStatus(recording)},
        {u"Scene"_s, make<SlobsSceneWidget>,
            {{u"scene_id"_s, u"scene-main"_s}, {u"scene_name"_s, u"Main scene"_s}},
            {{u"scene_id"_s, u"gone"_s}, {u"scene_name"_s, u"Deleted scene"_s}},
            scenes(u"scene-start"_s, false), scenes(u"scene-main"_s, true)},
        {u"Source"_s, make<SlobsSourceWidget>,
            {{u"scene_id"_s, u"scene-main"_s}, {u"scene_name"_s, u"Main scene"_s},
                {u"scene_item_id"_s, u"item-camera"_s}, {u"scene_item_name"_s, u"Camera"_s}},
            {{u"scene_id"_s, u"scene-main"_s}, {u"scene_name"_s, u"Main scene"_s},
                {u"scene_item_id"_s, u"gone"_s}, {u"scene_item_name"_s, u"Deleted source"_s}},
            scenes(u"scene-start"_s, false), scenes(u"scene-main"_s, true)},
        {u"Mute"_s, make<SlobsAudioWidget>,
            {{u"audio_source_id"_s, u"mic"_s}, {u"audio_source_name"_s, u"Microphone"_s}},
            {{u"audio_source_id"_s, u"gone"_s}, {u"audio_source_name"_s, u"Deleted source"_s}}, audio(false),
            audio(true)},
    };
}

//! One action with its views, brought into a state as the service and the host would.
class Placed
{
public:
    Placed(Action const& action, QJsonObject settings) : widget(action.make())
    {
        settings.insert(u"version"_s, 2);
        widget->init(u"gallery"_s, {{u"payload"_s, settings}});
    }

    void link(bool linked)
    {
        face().onStreamlabsStateChanged(linked, u"token"_s, 1);
        panel().onStreamlabsStateChanged(linked, u"token"_s, 1);
    }
    void publish(QJsonObject const& message)
    {
        face().onWidgetMessageReceived(message);
        panel().onWidgetMessageReceived(message);
    }
    void openEditors()
    {
        auto& frame = part<BasePropertyWidget>(panel(), u"base"_s);
        frame.setTitleIsReadOnly(false);
        frame.setIconChangeable(true);
        frame.setTextEditable(true);
        frame.generateButtonsByStateNames({widget->actionTitle(), widget->actionTitle()}, true);
        frame.setCurrentId(1);
    }

    BaseSlobsDisplayView& face() { return *qobject_cast<BaseSlobsDisplayView*>(widget->pluginWidget()); }
    BaseSlobsPropertyView& panel() { return *qobject_cast<BaseSlobsPropertyView*>(widget->propertyWidget()); }
    BaseSlobsWidget& action() { return *widget; }

private:
    std::unique_ptr<BaseSlobsWidget> widget;
};

void addFaces(GallerySheet& sheet, Action const& action)
{
    for (bool const on : {false, true}) {
        Placed placed(action, action.settings);
        placed.link(true);
        placed.publish(on ? action.on : action.off);
        QString const state = action.name + (on ? u", on"_s : u", off"_s);
        sheet.add(state, placed.face());
        placed.action().onKeyDownEvent({});
        sheet.add(state + u", pressed"_s, placed.face());
        placed.action().onKeyUpEvent({});
        placed.link(false);
        sheet.add(state + u", not linked"_s, placed.face());
    }
}

void addPanels(GallerySheet& sheet, Action const& action)
{
    Placed placed(action, action.settings);
    placed.openEditors();
    placed.link(false);
    sheet.add(action.name + u", not linked"_s, placed.panel(), kPanelWidth);
    placed.link(true);
    placed.publish(action.on);
    sheet.add(action.name + u", linked"_s, placed.panel(), kPanelWidth);
    if (action.settings.isEmpty()) {
        return;
    }
    Placed gone(action, action.gone);
    gone.link(true);
    gone.publish(action.on);
    sheet.add(action.name + u", target gone; the frame in action mode"_s, gone.panel(), kPanelWidth);
    Placed nothing(action, {});
    nothing.openEditors();
    nothing.link(true);
    sheet.add(action.name + u", nothing chosen, nothing there"_s, nothing.panel(), kPanelWidth);
}

void addHands(GallerySheet& sheet, Action const& action)
{
    Placed placed(action, action.settings);
    placed.openEditors();
    placed.link(false);
    placed.publish(action.on);
    focus(part(placed.panel(), u"dropdownSceneList"_s));
    hover(part(placed.panel(), u"btnGoAuth"_s));
    hover(part(placed.panel(), u"btnRefresh"_s));
    sheet.add(
        action.name + u", both buttons pointed at, the list with the focus"_s, placed.panel(), kPanelWidth);

    Placed gone(action, action.gone);
    gone.link(true);
    gone.publish(action.on);
    auto& open = part<QComboBox>(gone.panel(), u"dropdownSceneItemList"_s);
    focus(open);
    open.showPopup();
    sheet.add(u"Open list, the last entry gone"_s, *open.view()->window());
    open.hidePopup();
}

} // namespace

void ActionGallery::addTo(GallerySheet& sheet)
{
    auto const all = actions();
    sheet.beginGroup(u"action-faces"_s, u"Key faces of the actions"_s);
    for (Action const& action : all) {
        addFaces(sheet, action);
    }
    for (Action const& action : all) {
        sheet.beginGroup(u"panel-"_s + action.name.toLower(), u"Settings panel of %1"_s.arg(action.name));
        addPanels(sheet, action);
    }
    sheet.beginGroup(u"panel-hands"_s, u"A settings panel in use"_s);
    addHands(sheet, all.at(3));
}
