#include "devhost/window/ActionList.h"

#include "devhost/window/DarkTheme.h"
#include "devhost/window/KeyView.h"

#include <QMimeData>
#include <QPainter>

ActionList::ActionList(QWidget* parent) : QListWidget(parent)
{
    setDragEnabled(true);
    setDragDropMode(QAbstractItemView::DragOnly);
    setDefaultDropAction(Qt::CopyAction);
    constexpr int kIcon = 24;
    setIconSize(QSize(kIcon, kIcon));
    connect(this, &QListWidget::itemActivated, this,
        [this](QListWidgetItem const* item) { emit chosen(item->data(Qt::UserRole).toString()); });
}

void ActionList::setActions(QList<PackageAction> const& actions)
{
    clear();
    constexpr int kRowHeight = 36;
    for (auto const& action : actions) {
        auto* const item = new QListWidgetItem(action.icon, action.label, this);
        item->setData(Qt::UserRole, action.id);
        item->setSizeHint(QSize(0, kRowHeight));
        item->setToolTip(
            tr("%1\nDrag it onto a key; double-click or Enter takes the next free one.").arg(action.id));
    }
    setCurrentRow(0);
}

QString ActionList::currentAction() const
{
    return currentItem() ? currentItem()->data(Qt::UserRole).toString() : QString();
}

QMimeData* ActionList::mimeData(QList<QListWidgetItem*> const& items) const
{
    auto* const carried = new QMimeData;
    carried->setData(KeyView::actionMimeType(), items.value(0)->data(Qt::UserRole).toString().toUtf8());
    return carried;
}

void ActionList::paintEvent(QPaintEvent* event)
{
    QListWidget::paintEvent(event);
    if (count() == 0) {
        QPainter painter(viewport());
        painter.setPen(DarkTheme::text(DarkTheme::kFaintText));
        constexpr int kMargin = 12;
        painter.drawText(viewport()->rect().adjusted(kMargin, kMargin, -kMargin, -kMargin),
            Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, tr("The package offers no actions."));
    }
}
