#include "uikit/ChoiceBox.h"

#include <QEvent>
#include <QHash>
#include <QStyledItemDelegate>
#include <QStyleOptionComboBox>
#include <QStylePainter>

using namespace Qt::StringLiterals;

namespace {

constexpr int kShown = Qt::UserRole + 1; // a text; none: the name

//! Also what lets a style sheet reach the entries.
class ChoiceDelegate : public QStyledItemDelegate
{
public:
    explicit ChoiceDelegate(ChoiceBox* choices) : QStyledItemDelegate(choices), box(choices) {}

protected:
    void initStyleOption(QStyleOptionViewItem* option, QModelIndex const& index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        option->text = box->shownText(index.row());
    }

private:
    ChoiceBox* const box;
};

} // namespace

void ChoiceBox::tellApart()
{
    QHash<QString, QList<int>> places;
    for (int i = 0; i < count(); ++i) {
        places[itemText(i)].append(i);
    }
    for (auto const& [name, same] : places.asKeyValueRange()) {
        for (qsizetype i = 0; same.size() > 1 && i < same.size(); ++i) {
            setItemData(same[i], u"%1 · %2/%3"_s.arg(name).arg(i + 1).arg(same.size()), kShown);
        }
    }
}

QString ChoiceBox::shownText(int index) const
{
    QString const shown = itemData(index, kShown).toString();
    return shown.isEmpty() ? itemText(index) : shown;
}

bool ChoiceBox::event(QEvent* event)
{
    if (event->type() == QEvent::Polish) { // makes the pop-up, which most boxes never need
        setItemDelegate(new ChoiceDelegate(this));
    }
    return QComboBox::event(event);
}

void ChoiceBox::paintEvent([[maybe_unused]] QPaintEvent* event)
{
    QStylePainter painter(this);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    QRect const place =
        style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
    option.currentText =
        option.fontMetrics.elidedText(shownText(currentIndex()), Qt::ElideRight, place.width());
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}
