#include "devhost/script/PanelUser.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QCoreApplication>
#include <QJsonArray>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QRegularExpression>
#include <QStandardItemModel>

using namespace Qt::StringLiterals;

namespace {

bool canBeChosen(QComboBox const& box, int index)
{
    auto const* const model = qobject_cast<QStandardItemModel const*>(box.model());
    return !model || model->item(index)->isEnabled();
}

template <typename Widget>
Widget* find(QWidget& panel, QString const& objectName, QString& problem)
{
    auto* const widget = panel.findChild<Widget*>(objectName);
    if (!widget) {
        QStringList names;
        for (auto const* const other : panel.findChildren<Widget*>(QRegularExpression(u"^(?!qt_)."_s))) {
            names.append(other->objectName());
        }
        problem = u"the panel has no such \"%1\", but %2"_s.arg(objectName, names.join(u", "_s));
    } else if (!widget->isEnabledTo(&panel) || !widget->isVisibleTo(&panel)) {
        problem = u"\"%1\" is hidden or disabled"_s.arg(objectName);
    }
    return problem.isEmpty() ? widget : nullptr;
}

void press(
    QWidget& widget, int key, QString const& text = {}, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    QKeyEvent down(QEvent::KeyPress, key, modifiers, text);
    QCoreApplication::sendEvent(&widget, &down);
    QKeyEvent up(QEvent::KeyRelease, key, modifiers, text);
    QCoreApplication::sendEvent(&widget, &up);
}

} // namespace

QString PanelUser::choose(QWidget& panel, QString const& objectName, QString const& text)
{
    QString problem;
    auto* const box = find<QComboBox>(panel, objectName, problem);
    if (!box) {
        return problem;
    }
    int const index = box->findText(text);
    if (index < 0 || !canBeChosen(*box, index)) {
        QStringList entries;
        for (auto const& entry : look(panel, objectName)[u"entries"_s].toArray()) {
            entries.append(u'"' + entry.toString() + u'"');
        }
        return u"\"%1\" cannot be chosen in \"%2\", but %3"_s.arg(
            text, objectName, entries.isEmpty() ? u"nothing can"_s : entries.join(u", "_s));
    }
    box->setCurrentIndex(index); // what the pop-up does with a picked entry
    emit box->activated(index);
    return {};
}

QString PanelUser::click(QWidget& panel, QString const& objectName, [[maybe_unused]] QString const& text)
{
    QString problem;
    auto* const button = find<QAbstractButton>(panel, objectName, problem);
    if (!button) {
        return problem;
    }
    QPointF const at = button->rect().center();
    for (auto const type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
        QMouseEvent event(type, at, button->mapToGlobal(at), Qt::LeftButton,
            type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
        QCoreApplication::sendEvent(button, &event);
    }
    return {};
}

QString PanelUser::type(QWidget& panel, QString const& objectName, QString const& text)
{
    QString problem;
    auto* const field = find<QLineEdit>(panel, objectName, problem);
    if (!field) {
        return problem;
    }
    if (field->isReadOnly()) {
        return u"\"%1\" is read-only"_s.arg(objectName);
    }
    field->selectAll();
    press(*field, Qt::Key_Delete);
    for (char32_t const c : text.toUcs4()) {
        press(*field, 0, QString::fromUcs4(&c, 1));
    }
    return {};
}

QJsonObject PanelUser::look(QWidget const& panel, QString const& objectName)
{
    auto const* const widget = panel.findChild<QWidget*>(objectName);
    if (!widget) {
        return {{u"exists"_s, false}};
    }
    QJsonObject look{{u"exists"_s, true}, {u"visible"_s, widget->isVisibleTo(&panel)},
        {u"enabled"_s, widget->isEnabledTo(&panel)}, {u"tooltip"_s, widget->toolTip()}};
    if (auto const* const box = qobject_cast<QComboBox const*>(widget)) {
        QJsonArray entries;
        for (int i = 0; i < box->count(); ++i) {
            if (canBeChosen(*box, i)) {
                entries.append(box->itemText(i));
            }
        }
        look.insert("entries"_L1, entries);
        look.insert("text"_L1, box->currentText());
    } else if (QVariant const text = widget->property("text"); text.isValid()) {
        look.insert("text"_L1, text.toString());
    }
    return look;
}
