#include "devhost/gallery/GalleryPose.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDeadlineTimer>
#include <QMouseEvent>
#include <QToolTip>

using namespace Qt::StringLiterals;

namespace {

constexpr int kPatience = 5000; // ms

template <typename Condition>
void waitFor(Condition const& condition, char const* what)
{
    QDeadlineTimer const deadline(kPatience);
    while (!condition()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, kPatience / 100);
        if (deadline.hasExpired()) {
            qFatal("The gallery waited in vain for %s.", what);
        }
    }
}

} // namespace

void GalleryPose::hover(QWidget& widget)
{
    widget.ensurePolished();
    widget.setAttribute(Qt::WA_UnderMouse);
    // A push button believes only a move.
    QPointF const at = QRectF(widget.rect()).center();
    QMouseEvent move(QEvent::MouseMove, at, widget.mapToGlobal(at), Qt::NoButton, Qt::NoButton, {});
    QCoreApplication::sendEvent(&widget, &move);
}

void GalleryPose::press(QAbstractButton& button)
{
    hover(button);
    button.setDown(true);
}

void GalleryPose::focus(QWidget& widget)
{
    widget.window()->show();
    widget.window()->activateWindow();
    waitFor([&] { return widget.isActiveWindow(); }, "a window");
    widget.setFocus(Qt::TabFocusReason);
    waitFor([&] { return widget.hasFocus(); }, "the focus");
}

QPixmap GalleryPose::tooltip(QWidget& widget, QString const& text)
{
    widget.window()->show();
    QToolTip::showText(widget.mapToGlobal(QPoint(0, widget.height())), text, &widget);
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window->objectName() == "qtooltip_label"_L1 && window->isVisible()) {
            QPixmap picture = window->grab();
            QToolTip::hideText();
            return picture;
        }
    }
    qFatal("The gallery waited in vain for a tooltip.");
}
