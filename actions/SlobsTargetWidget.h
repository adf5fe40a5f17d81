#pragma once

#include "actions/BaseSlobsWidget.h"
#include "actions/SlobsTarget.h"

//! The action whose key is set to something in Streamlabs Desktop, chosen in the panel: what the scene, the
//! source and the audio action have in common.
//!
//! Messages of the panel: {"task": "setWidgetSettings", "payload": the action's settings keys} is taken over,
//! saved and passed to the face; the action's refresh task asks the service to read the list anew.
class SlobsTargetWidget : public BaseSlobsWidget
{
    Q_OBJECT

public:
    using BaseSlobsWidget::BaseSlobsWidget;

    void startWithPayload(QJsonObject const& payload) override;
    bool migrateLegacyPayload(QJsonObject const& document, int version) override;
    void onStreamlabsStateChanged(bool isAuthorized, QString const& newToken, int newPort) override;
    void onPropertyMessageReceived(QJsonObject const& message) override;

protected:
    //! Takes the action's own settings from a document of version 2 or from the panel.
    virtual void readSettings(QJsonObject const& payload) = 0;
    //! The panel's task for reading the list anew, and what it leads to.
    virtual QString refreshTask() const = 0;
    virtual void refreshList() = 0;
};
