#include "actions/SlobsTargetWidget.h"

#include "actions/SlobsAgent.h"

#include <QDebug>
#include <QJsonDocument>
#include <QPointer>

using namespace Qt::StringLiterals;

void SlobsTargetWidget::startWithPayload(QJsonObject const& payload)
{
    readSettings(payload);
    sendSettingsToViews(payload);
}

void SlobsTargetWidget::onStreamlabsStateChanged(bool isAuthorized, QString const& newToken, int newPort)
{
    BaseSlobsWidget::onStreamlabsStateChanged(isAuthorized, newToken, newPort);
}

void SlobsTargetWidget::onPropertyMessageReceived(QJsonObject const& message)
{
    if (!message.contains("task"_L1)) {
        qWarning("%s::onPropertyMessageReceived %s", metaObject()->className(),
            QJsonDocument(message).toJson(QJsonDocument::Compact).constData());
        return;
    }
    QString const task = message.value("task"_L1).toString();
    if (task == SlobsAgentPrivate::kCcSetWidgetSettings) {
        readSettings(message.value("payload"_L1).toObject());
        QPointer<SlobsTargetWidget> const self(this); // the host may delete the action over its settings
        saveWidgetSettings();
        if (self) {
            emit sendToDisplayView(message);
        }
    } else if (task == refreshTask()) {
        refreshList();
    }
}
