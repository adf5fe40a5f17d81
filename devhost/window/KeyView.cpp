#include "devhost/window/KeyView.h"

#include "devhost/host/ConsoleKey.h"
#include "devhost/window/DarkTheme.h"
#include "devhost/window/Magnifier.h"

#include <QContextMenuEvent>
#include <QDrag>
#include <QDragEnterEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

bool isPressKey(int key)
{
    return key == Qt::Key_Space || key == Qt::Key_Return || key == Qt::Key_Enter;
}

} // namespace

KeyView::KeyView(QWidget* parent) : QWidget(parent), stage(new QWidget(this))
{
    stage->setGeometry({{kMargin, kMargin}, ConsoleKey::kFaceSize});
    stage->setAttribute(Qt::WA_TransparentForMouseEvents);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    updateFocusPolicy();
    setAcceptDrops(true);
}

QString KeyView::actionMimeType()
{
    return u"application/x-lumen-action"_s;
}

QString KeyView::keyMimeType()
{
    return u"application/x-lumen-key"_s;
}

QSize KeyView::sizeHint() const
{
    return ConsoleKey::kFaceSize * magnification + QSize(2 * kMargin, 2 * kMargin);
}

void KeyView::setKey(int index, ConsoleKey* key, QString const& label)
{
    if (key != shownKey || index != position) {
        letGo(false);
    }
    position = index;
    shownKey = key;
    actionLabel = label;
    setObjectName(u"key%1"_s.arg(index));

    QWidget* const face = key ? key->faceWidget() : nullptr;
    if (shownFace && shownFace != face && shownFace->parentWidget() == stage) {
        shownFace->hide();
    }
    shownFace = face;
    if (face) {
        face->setParent(stage);
        face->move(0, 0);
        face->show();
    }
    describe();
    update();
}

void KeyView::setCurrent(bool current)
{
    isCurrent = current;
    updateFocusPolicy();
    update();
}

void KeyView::setLive(bool live)
{
    letGo(false);
    isLive = live;
    setCursor(live ? Qt::PointingHandCursor : Qt::ArrowCursor);
    updateFocusPolicy();
}

void KeyView::setMagnification(double factor)
{
    if (factor != magnification) {
        magnification = factor;
        stage->setGraphicsEffect(factor > 1 ? new Magnifier(factor) : nullptr);
        updateGeometry();
    }
}

// A key that is pressed with the mouse keeps its hands off the focus, which would choose it.
void KeyView::updateFocusPolicy()
{
    if (isLive) {
        setFocusPolicy(isCurrent ? Qt::TabFocus : Qt::NoFocus);
    } else {
        setFocusPolicy(isCurrent ? Qt::StrongFocus : Qt::ClickFocus);
    }
}

void KeyView::describe()
{
    if (!shownKey) {
        setAccessibleName(tr("Key %1, free").arg(position));
        setToolTip({});
        return;
    }
    auto const face = shownKey->face();
    setAccessibleName((face.invalid ? tr("Key %1, %2: %3, invalid") : tr("Key %1, %2: %3"))
            .arg(QString::number(position), actionLabel, face.title));
    setToolTip(tr("Key %1: %2").arg(QString::number(position), actionLabel));
}

// ---- Pressing

void KeyView::hold(int by)
{
    if (shownKey && !isHeld()) {
        heldBy = by;
        shownKey->keyDown();
    }
}

void KeyView::letGo(bool triggers)
{
    if (std::exchange(heldBy, kNothing) == kNothing || !shownKey) {
        return;
    }
    if (triggers) {
        shownKey->keyUp();
    } else {
        shownKey->release();
    }
}

void KeyView::mousePressEvent(QMouseEvent* event)
{
    mayDrag = !isLive && event->button() == Qt::LeftButton;
    if (!isLive) {
        emit chosen();
    } else if (event->button() == Qt::LeftButton) {
        hold(kMouse);
    }
}

void KeyView::mouseMoveEvent(QMouseEvent* event)
{
    if (rect().contains(event->position().toPoint())) {
        return;
    }
    if (heldBy == kMouse) {
        letGo(false);
    }
    if (std::exchange(mayDrag, false)) {
        startDrag();
    }
}

void KeyView::mouseReleaseEvent(QMouseEvent* event)
{
    mayDrag = false;
    if (heldBy == kMouse && event->button() == Qt::LeftButton) {
        letGo(rect().contains(event->position().toPoint()));
    }
}

void KeyView::keyPressEvent(QKeyEvent* event)
{
    switch (int const key = event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
        if (!event->modifiers().testFlags(Qt::ControlModifier | Qt::ShiftModifier)) {
            emit arrowPressed(key);
        } else if (!isLive) {
            emit moveAsked(key);
        }
        break;
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
        if (!isLive) {
            emit removeAsked();
        }
        break;
    case Qt::Key_Escape:
        letGo(false);
        break;
    default:
        if (!isPressKey(key) || !isLive) {
            QWidget::keyPressEvent(event);
        } else if (!event->isAutoRepeat()) {
            hold(key);
        }
    }
}

void KeyView::keyReleaseEvent(QKeyEvent* event)
{
    if (!isPressKey(event->key())) {
        QWidget::keyReleaseEvent(event);
    } else if (heldBy == event->key() && !event->isAutoRepeat()) {
        letGo(true);
    }
}

void KeyView::focusInEvent(QFocusEvent* event)
{
    QWidget::focusInEvent(event);
    emit chosen();
    update();
}

void KeyView::focusOutEvent(QFocusEvent* event)
{
    QWidget::focusOutEvent(event);
    if (heldBy != kMouse) {
        letGo(false); // the key of the keyboard will come up elsewhere
    }
    update();
}

void KeyView::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    letGo(false);
}

void KeyView::contextMenuEvent(QContextMenuEvent* event)
{
    if (isLive) {
        return;
    }
    emit chosen();
    emit menuAsked(
        event->reason() == QContextMenuEvent::Keyboard ? mapToGlobal(rect().center()) : event->globalPos());
}

// ---- Dragging

void KeyView::startDrag()
{
    if (!shownFace) {
        return;
    }
    auto* const carried = new QMimeData;
    carried->setData(keyMimeType(), QByteArray::number(position));
    auto* const drag = new QDrag(this);
    drag->setMimeData(carried);
    drag->setPixmap(shownFace->grab());
    drag->setHotSpot(shownFace->rect().center());
    drag->exec(Qt::MoveAction);
}

bool KeyView::canTake(QDropEvent const* event) const
{
    // A key of another window is none of this console.
    return !isLive && event->source() &&
           (event->mimeData()->hasFormat(actionMimeType()) || event->mimeData()->hasFormat(keyMimeType()));
}

void KeyView::dragEnterEvent(QDragEnterEvent* event)
{
    if (canTake(event)) {
        event->acceptProposedAction();
        setDropTarget(true);
    }
}

void KeyView::dragLeaveEvent([[maybe_unused]] QDragLeaveEvent* event)
{
    setDropTarget(false);
}

void KeyView::dropEvent(QDropEvent* event)
{
    setDropTarget(false);
    if (!canTake(event)) {
        return;
    }
    event->acceptProposedAction();
    if (event->mimeData()->hasFormat(actionMimeType())) {
        emit actionDropped(QString::fromUtf8(event->mimeData()->data(actionMimeType())));
    } else {
        emit keyDropped(event->mimeData()->data(keyMimeType()).toInt());
    }
}

void KeyView::setDropTarget(bool target)
{
    dropTarget = target;
    update();
}

// ---- Looks

void KeyView::paintEvent([[maybe_unused]] QPaintEvent* event)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    constexpr qreal kRadius = 5;
    if (!shownFace) {
        painter.setPen(DarkTheme::kOutline);
        painter.setBrush(DarkTheme::kFreeKey);
        painter.drawRoundedRect(
            QRectF(rect()).adjusted(kMargin + 0.5, kMargin + 0.5, -kMargin - 0.5, -kMargin - 0.5), kRadius,
            kRadius);
        painter.setPen(DarkTheme::kFaintText.darker(170));
        painter.drawText(rect(), Qt::AlignCenter, QString::number(position));
    }
    if (isCurrent || dropTarget) {
        bool const strong = hasFocus() || dropTarget;
        QPen pen(strong ? DarkTheme::kAccent : DarkTheme::kAccent.darker(190), 2);
        if (dropTarget) {
            pen.setStyle(Qt::DashLine);
        }
        painter.setPen(pen);
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(rect()).adjusted(1.5, 1.5, -1.5, -1.5), kRadius, kRadius);
    }
}
