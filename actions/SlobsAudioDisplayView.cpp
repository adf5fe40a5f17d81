#include "actions/SlobsAudioDisplayView.h"

#include "actions/SlobsPanelMessages.h"
#include "actions/SlobsSettingsKeys.h"
#include "actions/SlobsTarget.h"
#include "streamlabs/SlobsMessages.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;
using StreamlabsApiPrivate::AudioSource;

void SlobsAudioDisplayView::refreshUiState()
{
    auto const found = std::ranges::find(std::as_const(sources), sourceId, &AudioSource::sourceId);
    bool const exists = !sourceId.isEmpty() && found != sources.cend();
    showState(exists && found->muted ? 1 : 0, exists && link.authorized);
}

void SlobsAudioDisplayView::onWidgetMessageReceived(QJsonObject const& message)
{
    QString const task = SlobsMessages::nameOf(message);
    if (task == SlobsAgentPrivate::kQueryAudioListResult) {
        SlobsMessages::fromAudioList(message, sources);
    } else if (task == SlobsAgentPrivate::kCcGetWidgetSettings ||
               task == SlobsAgentPrivate::kCcSetWidgetSettings) {
        sourceId =
            SlobsPanelMessages::settingsOf(message).value(SlobsSettingsKeys::kAudioSourceId).toString();
    } else {
        return;
    }
    refreshUiState();
}
