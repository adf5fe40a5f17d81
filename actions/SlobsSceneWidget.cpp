#include "actions/SlobsSceneWidget.h"

#include "actions/SlobsAgent.h"
#include "actions/SlobsPanelMessages.h"
#include "actions/SlobsSceneDisplayView.h"
#include "actions/SlobsScenePropertyView.h"
#include "actions/SlobsSettingsKeys.h"

#include <QDebug>

#include <algorithm>
#include <utility>

using namespace SlobsSettingsKeys;

SlobsSceneWidget::SlobsSceneWidget(QObject* parent)
    : SlobsTargetWidget(new SlobsSceneDisplayView, new SlobsScenePropertyView, parent)
{}

void SlobsSceneWidget::startWithDefault()
{
    setStates({QString::fromLatin1("Inactive"), QString::fromLatin1("Scene")},
        {QString::fromLatin1(":/Streamlabs/images/slobs_scene_off.png"),
            QString::fromLatin1(":/Streamlabs/images/slobs_scene_on.gif")});
    scene = {};
}

void SlobsSceneWidget::readSettings(QJsonObject const& payload)
{
    scene = SlobsTarget::fromJson(payload, kSceneId, kSceneName);
}

void SlobsSceneWidget::prepareWidgetSettings(QJsonObject& document)
{
    scene.writeTo(document, kSceneId, kSceneName);
}

void SlobsSceneWidget::onConnectToRcc()
{
    SlobsTargetWidget::onConnectToRcc();
    agent().addRccEventHandler(SlobsAgentPrivate::kQueryScenesResult, [this](QJsonObject const& message) {
        QList<StreamlabsApiPrivate::Scene> scenes;
        QString activeId;
        SlobsAgent::fromSceneList(message, scenes, activeId);
        qDebug() << "onSceneResult";
        auto const found =
            std::ranges::find(std::as_const(scenes), scene.id, &StreamlabsApiPrivate::Scene::id);
        if (found != scenes.cend()) {
            scene.name = found->name; // as last seen, for the next time that the settings are saved
        }
        sendToViews(message);
    });
    agent().queryScenes();
}

int SlobsSceneWidget::onAppTriggeredEvent(QJsonObject const& event)
{
    if (!link.authorized || scene.id.isEmpty()) {
        qDebug() << "[APP EVENT][APP Triggered]" << event;
        return 0;
    }
    agent().setActiveScene(scene.id);
    return 0;
}

QString SlobsSceneWidget::refreshTask() const
{
    return SlobsPanelMessages::kRefreshScene;
}

void SlobsSceneWidget::refreshList()
{
    agent().refreshScenes();
}
