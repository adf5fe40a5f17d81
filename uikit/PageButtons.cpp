#include "uikit/PageButtons.h"

#include "uikit/Visibility.h"

#include <QButtonGroup>
#include <QEvent>
#include <QPushButton>
#include <QWidget>

using namespace Qt::StringLiterals;

namespace {

class PageButton : public QPushButton
{
public:
    using QPushButton::QPushButton;

protected:
    bool event(QEvent* event) override
    {
        Visibility::styleUpon(event, this, u"PageButtons"_s);
        return QPushButton::event(event);
    }
};

} // namespace

void PageButtons::append(QWidget* area, QButtonGroup* group, QList<QString> const& names, bool fromLeft)
{
    qsizetype const rowWidth = kWidth * names.size();
    if (area->width() < rowWidth) {
        return;
    }
    int const margin = (area->width() - static_cast<int>(rowWidth)) / 2;
    int id = 0;
    for (QString const& name : names) {
        auto* button = new PageButton(area);
        int const offset = margin + kWidth * id;
        button->setGeometry(fromLeft ? offset : area->width() - offset - kWidth, kTop, kWidth, kHeight);
        button->setCheckable(true);
        button->setAutoDefault(false);
        button->setToolTip(name);
        button->setAccessibleName(name);
        group->addButton(button, id++);
        Visibility::set(button, true);
        Visibility::styleWhenShown(button);
    }
}

// The buttons are not deleted: a page click whose handler makes new buttons is still inside the old one.
void PageButtons::retire(QButtonGroup* group)
{
    for (QAbstractButton* button : group->buttons()) {
        group->removeButton(button);
        button->hide();
    }
}
