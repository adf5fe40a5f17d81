#include "uikit/Visibility.h"

#include "uikit/KitStyle.h"

#include <QCoreApplication>
#include <QEvent>
#include <QWidget>

void Visibility::styleWhenShown(QWidget* panel)
{
    if (panel->isVisible()) {
        return;
    }
    QCoreApplication::removePostedEvents(panel, QEvent::PolishRequest);
    for (auto* widget : panel->findChildren<QWidget*>()) {
        QCoreApplication::removePostedEvents(widget, QEvent::PolishRequest);
    }
}

void Visibility::styleUpon(QEvent const* event, QWidget* widget, QString const& section)
{
    if (event->type() == QEvent::Polish) {
        widget->setStyleSheet(KitStyle::sheet(section) + widget->styleSheet());
    }
}

void Visibility::set(QWidget* child, bool visible)
{
    if (!visible || child->isWindow() || child->parentWidget()->isVisible()) {
        child->setVisible(visible);
        return;
    }
    // As if it had never been hidden on its own.
    child->setAttribute(Qt::WA_WState_Hidden, false);
    child->setAttribute(Qt::WA_WState_ExplicitShowHide, false);
}
