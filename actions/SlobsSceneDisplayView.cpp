#include "actions/SlobsSceneDisplayView.h"

#include "actions/SlobsAgent.h"
#include "actions/SlobsTarget.h"

#include <utility>

using namespace Qt::StringLiterals;

void SlobsSceneDisplayView::refreshUiState()
{
    bool const inList = !sceneId.isEmpty() && sceneIds.contains(sceneId);
    showState(inList && sceneId == activeSceneId ? 1 : 0, authorized && inList);
}

void SlobsSceneDisplayView::onWidgetMessageReceived(QJsonObject const& message)
{
    QString const task = message.value("task"_L1).toString();
    if (task == SlobsAgentPrivate::kQueryScenesResult) {
        QList<StreamlabsApiPrivate::Scene> scenes;
        SlobsAgent::fromSceneList(message, scenes, activeSceneId);
        sceneIds.clear();
        for (auto const& scene : std::as_const(scenes)) {
            sceneIds.append(scene.id);
        }
    } else if (task == SlobsAgentPrivate::kCcGetWidgetSettings ||
               task == SlobsAgentPrivate::kCcSetWidgetSettings) {
        sceneId = message.value("payload"_L1).toObject().value(SlobsSettingsKeys::kSceneId).toString();
    } else {
        return;
    }
    refreshUiState();
}
