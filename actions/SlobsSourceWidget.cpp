#include "actions/SlobsSourceWidget.h"

#include "actions/SlobsAgent.h"
#include "actions/SlobsPanelMessages.h"
#include "actions/SlobsSettings.h"
#include "actions/SlobsSettingsKeys.h"
#include "actions/SlobsSourceDisplayView.h"
#include "actions/SlobsSourcePropertyView.h"

#include <QDebug>

#include <algorithm>
#include <utility>

using namespace SlobsSettingsKeys;
using StreamlabsApiPrivate::Scene;
using StreamlabsApiPrivate::Source;

SlobsSourceWidget::SlobsSourceWidget(QObject* parent)
    : SlobsTargetWidget(new SlobsSourceDisplayView, new SlobsSourcePropertyView, parent)
{}

void SlobsSourceWidget::startWithDefault()
{
    setStates({QString::fromLatin1("Closing"), QString::fromLatin1("Source")},
        {QString::fromLatin1(":/Streamlabs/images/slobs_source_off.png"),
            QString::fromLatin1(":/Streamlabs/images/slobs_source_on.gif")});
    scene = {};
    item = {};
}

void SlobsSourceWidget::readSettings(QJsonObject const& payload)
{
    scene = SlobsTarget::fromJson(payload, kSceneId, kSceneName);
    item = SlobsTarget::fromJson(payload, kSceneItemId, kSceneItemName);
}

void SlobsSourceWidget::prepareWidgetSettings(QJsonObject& document)
{
    scene.writeTo(document, kSceneId, kSceneName);
    item.writeTo(document, kSceneItemId, kSceneItemName);
}

QJsonObject SlobsSourceWidget::convertLegacyKeys(QJsonObject const& document) const
{
    return SlobsSettings::convertItem(document);
}

void SlobsSourceWidget::onConnectToRcc()
{
    SlobsTargetWidget::onConnectToRcc();
    agent().addRccEventHandler(SlobsAgentPrivate::kQueryScenesResult, [this](QJsonObject const& message) {
        QString activeId;
        SlobsAgent::fromSceneList(message, scenes, activeId);
        rememberNames();
        sendToViews(message);
    });
    agent().queryScenes();
}

void SlobsSourceWidget::rememberNames()
{
    auto const found = std::ranges::find(std::as_const(scenes), scene.id, &Scene::id);
    if (found != scenes.cend()) {
        scene.name = found->name;
    }
    if (auto const* node = findItem(scenes, scene.id, item.id)) {
        item.name = node->name;
    }
}

int SlobsSourceWidget::onAppTriggeredEvent([[maybe_unused]] QJsonObject const& event)
{
    if (!link.authorized || item.id.isEmpty()) {
        qDebug() << "[APP EVENT][APP Triggered]" << scene.id << item.id;
        return 0;
    }
    Source target;
    target.sceneId = scene.id;
    target.sceneItemId = item.id;
    target.visible = false;
    if (auto const* node = findItem(scenes, scene.id, item.id)) {
        target.sourceId = node->sourceId;
        target.visible = node->visible;
    }
    agent().setSourceVisible(target, !target.visible);
    return 0;
}

QString SlobsSourceWidget::refreshTask() const
{
    return SlobsPanelMessages::kRefreshScene;
}

void SlobsSourceWidget::refreshList()
{
    agent().refreshScenes();
}
