#include "actions/SlobsTargetWidget.h"

#include "actions/SlobsAgent.h"
#include "actions/SlobsPanelMessages.h"
#include "actions/SlobsSettings.h"
#include "relay/ZoRemoteCommands.h"

#include <QDebug>
#include <QJsonDocument>
#include <QPointer>

void SlobsTargetWidget::startWithPayload(QJsonObject const& payload)
{
    readSettings(payload);
    sendSettingsToViews(payload);
}

bool SlobsTargetWidget::migrateLegacyPayload(QJsonObject const& document, int version)
{
    if (version >= SlobsSettings::kVersion) {
        return false;
    }
    readSettings(convertLegacyKeys(document));
    return true;
}

void SlobsTargetWidget::onStreamlabsStateChanged(bool isAuthorized, QString const& newToken, int newPort)
{
    BaseSlobsWidget::onStreamlabsStateChanged(isAuthorized, newToken, newPort);
}

void SlobsTargetWidget::onPropertyMessageReceived(QJsonObject const& message)
{
    if (!message.contains(ZoRemoteFields::kFieldTask)) {
        qWarning("%s::onPropertyMessageReceived %s", metaObject()->className(),
            QJsonDocument(message).toJson(QJsonDocument::Compact).constData());
        return;
    }
    QString const task = SlobsMessages::nameOf(message);
    if (task == SlobsAgentPrivate::kCcSetWidgetSettings) {
        readSettings(SlobsPanelMessages::settingsOf(message));
        QPointer<SlobsTargetWidget> const self(this); // the host may delete the action over its settings
        saveWidgetSettings();
        if (self) {
            emit sendToDisplayView(message);
        }
    } else if (task == refreshTask()) {
        refreshList();
    }
}
