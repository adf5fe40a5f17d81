#pragma once

#include "actions/BaseSlobsWidget.h"
#include "actions/SlobsOutput.h"

class SlobsOutputDisplayView;
class SlobsOutputPropertyView;

//! The action that starts and stops an output of Streamlabs Desktop. It has no settings of its own. A press
//! never changes the face: that follows when the service publishes what Streamlabs Desktop has reported.
class SlobsOutputWidget : public BaseSlobsWidget
{
    Q_OBJECT

public:
    SlobsOutputWidget(SlobsOutput const& kind, SlobsOutputDisplayView* displayView,
        SlobsOutputPropertyView* propertyView, QObject* parent);

    void startWithDefault() override;
    bool migrateLegacyPayload(QJsonObject const& document, int version) override;
    void onStreamlabsStateChanged(bool isAuthorized, QString const& newToken, int newPort) override;
    void onConnectToRcc() override;
    int onAppTriggeredEvent(QJsonObject const& event) override;

private:
    SlobsOutput const& output;
    QString status;
};
