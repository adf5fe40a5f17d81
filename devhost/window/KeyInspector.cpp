#include "devhost/window/KeyInspector.h"

#include "devhost/host/Console.h"

#include <QLabel>
#include <QLineEdit>

using namespace Qt::StringLiterals;

namespace {

// Behind each other, in the order that the panel has given itself.
void putIntoTabOrder(QWidget* before, QWidget& panel)
{
    QList<QWidget*> order;
    for (QWidget* next = panel.nextInFocusChain(); next != &panel; next = next->nextInFocusChain()) {
        if (panel.isAncestorOf(next) && (next->focusPolicy() & Qt::TabFocus)) {
            order.append(next);
        }
    }
    for (QWidget* const widget : order) {
        QWidget::setTabOrder(before, widget);
        before = widget;
    }
}

} // namespace

KeyInspector::KeyInspector(QWidget* parent)
    : QScrollArea(parent), ground(new QWidget), hint(new QLabel(ground))
{
    setFrameShape(QFrame::NoFrame);
    setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    setFocusPolicy(Qt::NoFocus);
    ground->setFixedSize(kPanelSize);
    ground->setFocusPolicy(Qt::NoFocus);
    hint->setObjectName(u"lblHint"_s);
    hint->setGeometry(ground->rect());
    hint->setAlignment(Qt::AlignCenter);
    hint->setProperty("faint", true);
    setWidget(ground);
}

void KeyInspector::showKey(Console const& console, int index)
{
    ConsoleKey const* const key = console.key(index);
    QWidget* const panel = key ? key->panelWidget() : nullptr;
    if (shownPanel && shownPanel != panel) {
        shownPanel->hide();
    }
    shownPanel = panel;
    hint->setVisible(!panel);
    hint->setText(key ? tr("The action on key %1 has no settings.").arg(index)
                      : tr("Key %1 is free.\nDouble-click an action, or drag it onto a key.").arg(index));
    if (panel) {
        if (panel->parentWidget() != ground) {
            adopt(panel);
        }
        panel->show();
    }
}

void KeyInspector::focusPanel()
{
    if (!shownPanel) {
        return;
    }
    for (QWidget* next = shownPanel->nextInFocusChain(); next != shownPanel;
        next = next->nextInFocusChain()) {
        bool const takesKeys = next->isVisible() && next->isEnabled() && (next->focusPolicy() & Qt::TabFocus);
        if (shownPanel->isAncestorOf(next) && takesKeys) {
            next->setFocus(Qt::TabFocusReason);
            ensureWidgetVisible(next);
            return;
        }
    }
}

void KeyInspector::focusTitle()
{
    if (auto* const title =
            shownPanel ? shownPanel->findChild<QLineEdit*>(u"lineEdtPluginTitle"_s) : nullptr) {
        title->setFocus(Qt::ShortcutFocusReason);
        title->selectAll();
        ensureWidgetVisible(title);
    }
}

void KeyInspector::adopt(QWidget* panel)
{
    panel->setParent(ground);
    panel->setGeometry(ground->rect());
    putIntoTabOrder(previousInFocusChain(), *panel);
    // By signature, and only where it has them: a panel is known as a QWidget.
    QObject const* const frame = panel->findChild<QObject*>(u"base"_s);
    if (frame && frame->metaObject()->indexOfSignal("iconFolderChanging(QString&)") >= 0) {
        connect(frame, SIGNAL(iconFolderChanging(QString&)), this, SLOT(onIconFolderChanging(QString&)));
        connect(frame, SIGNAL(iconFolderChanged(QString)), this, SLOT(onIconFolderChanged(QString)));
        connect(frame, SIGNAL(buildIcon()), this, SIGNAL(iconBuilderAsked()));
    }
}

void KeyInspector::onIconFolderChanging(QString& folder) const
{
    if (!pictureFolder.isEmpty()) {
        folder = pictureFolder;
    }
}

void KeyInspector::onIconFolderChanged(QString const& folder)
{
    pictureFolder = folder;
}
