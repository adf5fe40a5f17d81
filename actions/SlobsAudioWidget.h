#pragma once

#include "actions/SlobsTargetWidget.h"
#include "streamlabs/StreamlabsApi.h"

#include <QList>

//! Mutes or unmutes one audio source; the key is lit while the source is muted.
//! Settings: "audio_source_id", "audio_source_name".
class SlobsAudioWidget : public SlobsTargetWidget
{
    Q_OBJECT

public:
    explicit SlobsAudioWidget(QObject* parent = nullptr);

    void startWithDefault() override;
    void prepareWidgetSettings(QJsonObject& document) override;
    void onConnectToRcc() override;
    //! Asks for the opposite of what the last audio list says, and to mute a source that the list does not
    //! have.
    int onAppTriggeredEvent(QJsonObject const& event) override;

protected:
    QJsonObject convertLegacyKeys(QJsonObject const& document) const override;
    void readSettings(QJsonObject const& payload) override;
    QString refreshTask() const override;
    void refreshList() override;

private:
    SlobsTarget source;
    QList<StreamlabsApiPrivate::AudioSource> sources;
};
