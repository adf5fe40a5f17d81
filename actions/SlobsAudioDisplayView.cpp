#include "actions/SlobsAudioDisplayView.h"

#include "actions/SlobsAgent.h"
#include "actions/SlobsTarget.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;
using StreamlabsApiPrivate::AudioSource;

void SlobsAudioDisplayView::refreshUiState()
{
    auto const found = std::ranges::find(std::as_const(sources), sourceId, &AudioSource::sourceId);
    bool const exists = !sourceId.isEmpty() && found != sources.cend();
    showState(exists && found->muted ? 1 : 0, exists && authorized);
}

void SlobsAudioDisplayView::onWidgetMessageReceived(QJsonObject const& message)
{
    QString const task = message.value("task"_L1).toString();
    if (task == SlobsAgentPrivate::kQueryAudioListResult) {
        SlobsAgent::fromAudioList(message, sources);
    } else if (task == SlobsAgentPrivate::kCcGetWidgetSettings ||
               task == SlobsAgentPrivate::kCcSetWidgetSettings) {
        sourceId = message.value("payload"_L1).toObject().value(SlobsSettingsKeys::kAudioSourceId).toString();
    } else {
        return;
    }
    refreshUiState();
}
