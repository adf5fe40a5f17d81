#pragma once

#include "actions/BaseSlobsDisplayView.h"
#include "streamlabs/StreamlabsApi.h"

//! The key face of a scene: state 1 while it is the active one, invalid while it does not exist.
class SlobsSceneDisplayView : public BaseSlobsDisplayView
{
    Q_OBJECT

public:
    using BaseSlobsDisplayView::BaseSlobsDisplayView;

    void refreshUiState() override;

public slots:
    void onWidgetMessageReceived(QJsonObject const& message) override;

private:
    QString activeSceneId;
    QList<StreamlabsApiPrivate::Scene> scenes;
    QString sceneId;
};
