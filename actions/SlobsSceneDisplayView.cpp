#include "actions/SlobsSceneDisplayView.h"

#include "actions/SlobsPanelMessages.h"
#include "actions/SlobsSettingsKeys.h"
#include "actions/SlobsTarget.h"
#include "streamlabs/SlobsMessages.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

void SlobsSceneDisplayView::refreshUiState()
{
    using StreamlabsApiPrivate::Scene;
    bool const inList =
        !sceneId.isEmpty() && std::ranges::find(std::as_const(scenes), sceneId, &Scene::id) != scenes.cend();
    showState(inList && sceneId == activeSceneId ? 1 : 0, link.authorized && inList);
}

void SlobsSceneDisplayView::onWidgetMessageReceived(QJsonObject const& message)
{
    QString const task = SlobsMessages::nameOf(message);
    if (task == SlobsAgentPrivate::kQueryScenesResult) {
        SlobsMessages::fromSceneList(message, scenes, activeSceneId);
    } else if (task == SlobsAgentPrivate::kCcGetWidgetSettings ||
               task == SlobsAgentPrivate::kCcSetWidgetSettings) {
        sceneId = SlobsPanelMessages::settingsOf(message).value(SlobsSettingsKeys::kSceneId).toString();
    } else {
        return;
    }
    refreshUiState();
}
