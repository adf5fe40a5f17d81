#include "actions/SlobsSourceDisplayView.h"

#include "actions/SlobsPanelMessages.h"
#include "actions/SlobsSettingsKeys.h"
#include "streamlabs/SlobsMessages.h"

using namespace Qt::StringLiterals;

void SlobsSourceDisplayView::refreshUiState()
{
    auto const* item = StreamlabsApiPrivate::findItem(scenes, sceneId, sceneItemId);
    showState(item && item->visible ? 1 : 0, item && link.authorized);
}

void SlobsSourceDisplayView::onWidgetMessageReceived(QJsonObject const& message)
{
    QString const task = SlobsMessages::nameOf(message);
    if (task == SlobsAgentPrivate::kQueryScenesResult) {
        QString activeId;
        SlobsMessages::fromSceneList(message, scenes, activeId);
    } else if (task == SlobsAgentPrivate::kCcGetWidgetSettings ||
               task == SlobsAgentPrivate::kCcSetWidgetSettings) {
        QJsonObject const payload = SlobsPanelMessages::settingsOf(message);
        sceneId = payload.value(SlobsSettingsKeys::kSceneId).toString();
        sceneItemId = payload.value(SlobsSettingsKeys::kSceneItemId).toString();
    } else {
        return;
    }
    refreshUiState();
}
