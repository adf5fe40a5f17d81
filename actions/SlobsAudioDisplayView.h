#pragma once

#include "actions/BaseSlobsDisplayView.h"
#include "streamlabs/StreamlabsApi.h"

//! The key face of an audio source: state 1 while it is muted, invalid while it does not exist.
class SlobsAudioDisplayView : public BaseSlobsDisplayView
{
    Q_OBJECT

public:
    using BaseSlobsDisplayView::BaseSlobsDisplayView;

    void refreshUiState() override;

public slots:
    void onWidgetMessageReceived(QJsonObject const& message) override;

private:
    QList<StreamlabsApiPrivate::AudioSource> sources;
    QString sourceId;
};
