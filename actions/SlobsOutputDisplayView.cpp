#include "actions/SlobsOutputDisplayView.h"

using namespace Qt::StringLiterals;

SlobsOutputDisplayView::SlobsOutputDisplayView(SlobsOutput const& kind, QWidget* parent)
    : BaseSlobsDisplayView(parent), output(kind)
{}

void SlobsOutputDisplayView::refreshUiState()
{
    showState(output.isOn(status) ? 1 : 0, authorized);
}

void SlobsOutputDisplayView::onWidgetMessageReceived(QJsonObject const& message)
{
    if (message.value("task"_L1) == output.resultTask) {
        output.decode(message, status);
        refreshUiState();
    }
}
