#include "actions/SlobsSourceDisplayView.h"

#include "actions/SlobsAgent.h"
#include "actions/SlobsSourceWidget.h"

using namespace Qt::StringLiterals;

void SlobsSourceDisplayView::refreshUiState()
{
    auto const* item = SlobsSourceWidget::findItem(scenes, sceneId, sceneItemId);
    showState(item && item->visible ? 1 : 0, item && authorized);
}

void SlobsSourceDisplayView::onWidgetMessageReceived(QJsonObject const& message)
{
    QString const task = message.value("task"_L1).toString();
    if (task == SlobsAgentPrivate::kQueryScenesResult) {
        QString activeId;
        SlobsAgent::fromSceneList(message, scenes, activeId);
    } else if (task == SlobsAgentPrivate::kCcGetWidgetSettings ||
               task == SlobsAgentPrivate::kCcSetWidgetSettings) {
        QJsonObject const payload = message.value("payload"_L1).toObject();
        sceneId = payload.value(SlobsSettingsKeys::kSceneId).toString();
        sceneItemId = payload.value(SlobsSettingsKeys::kSceneItemId).toString();
    } else {
        return;
    }
    refreshUiState();
}
