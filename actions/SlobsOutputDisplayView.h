#pragma once

#include "actions/BaseSlobsDisplayView.h"
#include "actions/SlobsOutput.h"

//! The key face of an output: state 1 while it is on.
class SlobsOutputDisplayView : public BaseSlobsDisplayView
{
    Q_OBJECT

public:
    explicit SlobsOutputDisplayView(SlobsOutput const& kind, QWidget* parent = nullptr);

    void refreshUiState() override;

public slots:
    void onWidgetMessageReceived(QJsonObject const& message) override;

private:
    SlobsOutput const& output;
    QString status;
};
