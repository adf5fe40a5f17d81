#include "actions/SlobsAudioWidget.h"

#include "actions/SlobsAgent.h"
#include "actions/SlobsAudioDisplayView.h"
#include "actions/SlobsAudioPropertyView.h"
#include "actions/SlobsPanelMessages.h"
#include "actions/SlobsSettings.h"
#include "actions/SlobsSettingsKeys.h"

#include <QDebug>

#include <algorithm>
#include <utility>

using namespace SlobsSettingsKeys;
using StreamlabsApiPrivate::AudioSource;

SlobsAudioWidget::SlobsAudioWidget(QObject* parent)
    : SlobsTargetWidget(new SlobsAudioDisplayView, new SlobsAudioPropertyView, parent)
{}

void SlobsAudioWidget::startWithDefault()
{
    setStates({QString::fromLatin1("Unmute"), QString::fromLatin1("Mute")},
        {QString::fromLatin1(":/Streamlabs/images/slobs_mute_off.png"),
            QString::fromLatin1(":/Streamlabs/images/slobs_mute_on.gif")});
    source = {};
}

void SlobsAudioWidget::readSettings(QJsonObject const& payload)
{
    source = SlobsTarget::fromJson(payload, kAudioSourceId, kAudioSourceName);
}

void SlobsAudioWidget::prepareWidgetSettings(QJsonObject& document)
{
    source.writeTo(document, kAudioSourceId, kAudioSourceName);
}

QJsonObject SlobsAudioWidget::convertLegacyKeys(QJsonObject const& document) const
{
    return SlobsSettings::convertAudioSource(document);
}

void SlobsAudioWidget::onConnectToRcc()
{
    SlobsTargetWidget::onConnectToRcc();
    agent().addRccEventHandler(SlobsAgentPrivate::kQueryAudioListResult, [this](QJsonObject const& message) {
        SlobsAgent::fromAudioList(message, sources);
        auto const found = std::ranges::find(std::as_const(sources), source.id, &AudioSource::sourceId);
        if (found != sources.cend()) {
            source.name = found->name; // as last seen, for the next time that the settings are saved
        }
        sendToViews(message);
    });
    agent().queryAudioList();
}

int SlobsAudioWidget::onAppTriggeredEvent([[maybe_unused]] QJsonObject const& event)
{
    if (!link.authorized || source.id.isEmpty()) {
        qDebug() << "[APP EVENT][APP Triggered]" << source.id;
        return 0;
    }
    auto const found = std::ranges::find(std::as_const(sources), source.id, &AudioSource::sourceId);
    bool const muted = found != sources.cend() && found->muted;
    qDebug() << "onAppTriggeredEvent" << source.id << (muted ? "true" : "false");
    agent().setAudioMute(source.id, !muted);
    return 0;
}

QString SlobsAudioWidget::refreshTask() const
{
    return SlobsPanelMessages::kRefreshAudioList;
}

void SlobsAudioWidget::refreshList()
{
    agent().refreshAudioList({});
}
