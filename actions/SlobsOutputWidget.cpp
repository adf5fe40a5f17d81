#include "actions/SlobsOutputWidget.h"

#include "actions/SlobsAgent.h"
#include "actions/SlobsOutputDisplayView.h"
#include "actions/SlobsOutputPropertyView.h"
#include "actions/SlobsSettings.h"

#include <QDebug>

SlobsOutputWidget::SlobsOutputWidget(SlobsOutput const& kind, SlobsOutputDisplayView* displayView,
    SlobsOutputPropertyView* propertyView, QObject* parent)
    : BaseSlobsWidget(displayView, propertyView, parent), output(kind)
{}

void SlobsOutputWidget::startWithDefault()
{
    setStates(output.titles, output.icons);
}

bool SlobsOutputWidget::migrateLegacyPayload([[maybe_unused]] QJsonObject const& document, int version)
{
    return version < SlobsSettings::kVersion;
}

void SlobsOutputWidget::onStreamlabsStateChanged(bool isAuthorized, QString const& newToken, int newPort)
{
    BaseSlobsWidget::onStreamlabsStateChanged(isAuthorized, newToken, newPort);
}

void SlobsOutputWidget::onConnectToRcc()
{
    BaseSlobsWidget::onConnectToRcc();
    agent().addRccEventHandler(output.resultTask, [this](QJsonObject const& message) {
        output.decode(message, status);
        sendToViews(message);
    });
    (agent().*output.query)();
}

int SlobsOutputWidget::onAppTriggeredEvent(QJsonObject const& event)
{
    if (!link.authorized) {
        qDebug() << "[APP EVENT][APP Triggered]" << event;
        return 0;
    }
    (agent().*output.toggle)();
    return 0;
}
