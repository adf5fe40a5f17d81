#pragma once

#include "actions/BaseSlobsDisplayView.h"
#include "streamlabs/StreamlabsApi.h"

//! The key face of a scene item: state 1 while it is visible, invalid while it does not exist.
class SlobsSourceDisplayView : public BaseSlobsDisplayView
{
    Q_OBJECT

public:
    using BaseSlobsDisplayView::BaseSlobsDisplayView;

    void refreshUiState() override;

public slots:
    void onWidgetMessageReceived(QJsonObject const& message) override;

private:
    QList<StreamlabsApiPrivate::Scene> scenes;
    QString sceneId;
    QString sceneItemId;
};
