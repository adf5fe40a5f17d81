#include "uikit/MekTooltipButton.h"

#include "uikit/MekTooltipEvent.h"

#include <QCoreApplication>
#include <QVariant>

MekTooltipButton::~MekTooltipButton()
{
    if (QCoreApplication* const application = QCoreApplication::instance()) {
        QCoreApplication::sendPostedEvents(application, MekTooltipEvent::kType);
    }
}

bool MekTooltipButton::event(QEvent* event)
{
    switch (event->type()) {
    case QEvent::ToolTip:
        if (!reported) {
            reported = true;
            QCoreApplication::postEvent(QCoreApplication::instance(),
                new MekTooltipEvent(MekTooltipEvent::kTooltip, property("gaV4Lab").toString()));
        }
        break;
    case QEvent::Enter:
    case QEvent::Leave:
        reported = false;
        break;
    default:
        break;
    }
    return QPushButton::event(event);
}
