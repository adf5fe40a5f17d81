#include "actions/SlobsOutputDisplayView.h"

#include "streamlabs/SlobsMessages.h"

SlobsOutputDisplayView::SlobsOutputDisplayView(SlobsOutput const& kind, QWidget* parent)
    : BaseSlobsDisplayView(parent), output(kind)
{}

void SlobsOutputDisplayView::refreshUiState()
{
    showState(output.isOn(status) ? 1 : 0, link.authorized);
}

void SlobsOutputDisplayView::onWidgetMessageReceived(QJsonObject const& message)
{
    if (SlobsMessages::nameOf(message) == output.resultTask) {
        output.decode(message, status);
        refreshUiState();
    }
}
