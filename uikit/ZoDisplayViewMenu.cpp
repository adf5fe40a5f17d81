#include "uikit/ZoDisplayViewMenu.h"

#include <QCoreApplication>
#include <QCursor>
#include <QEvent>

ZoDisplayViewMenu::ZoDisplayViewMenu(QPushButton* button, QWidget* parent)
    : QMenu(parent ? parent : button), opener(button)
{
    setWindowFlags(windowFlags() | Qt::FramelessWindowHint);
}

// Measured from the button and not from where the menu was about to open: near an edge of the screen the menu
// would already have been moved aside.
void ZoDisplayViewMenu::showEvent(QShowEvent* event)
{
    if (opener) {
        QPoint const corner = opener->mapToGlobal(QPoint(0, 0));
        move(corner.x() + (opener->width() - width()) / 2, corner.y() - height());
    }
    QMenu::showEvent(event);
}

// While a menu is open, nobody tells its button that the mouse has left it.
void ZoDisplayViewMenu::hideEvent(QHideEvent* event)
{
    QMenu::hideEvent(event);
    if (opener && !opener->rect().contains(opener->mapFromGlobal(QCursor::pos()))) {
        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(opener, &leave);
        opener->update();
    }
}
