#include "actions/SlobsSceneDisplayView.h"

#include "actions/SlobsAgent.h"
#include "actions/SlobsTarget.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

void SlobsSceneDisplayView::refreshUiState()
{
    using StreamlabsApiPrivate::Scene;
    bool const inList =
        !sceneId.isEmpty() && std::ranges::find(std::as_const(scenes), sceneId, &Scene::id) != scenes.cend();
    showState(inList && sceneId == activeSceneId ? 1 : 0, authorized && inList);
}

void SlobsSceneDisplayView::onWidgetMessageReceived(QJsonObject const& message)
{
    QString const task = message.value("task"_L1).toString();
    if (task == SlobsAgentPrivate::kQueryScenesResult) {
        SlobsAgent::fromSceneList(message, scenes, activeSceneId);
    } else if (task == SlobsAgentPrivate::kCcGetWidgetSettings ||
               task == SlobsAgentPrivate::kCcSetWidgetSettings) {
        sceneId = message.value("payload"_L1).toObject().value(SlobsSettingsKeys::kSceneId).toString();
    } else {
        return;
    }
    refreshUiState();
}
