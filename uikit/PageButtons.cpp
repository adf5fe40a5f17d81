#include "uikit/PageButtons.h"

#include <QButtonGroup>
#include <QPushButton>
#include <QWidget>

using namespace Qt::StringLiterals;

void PageButtons::append(QWidget* area, QButtonGroup* group, QList<QString> const& names, bool fromLeft)
{
    qsizetype const rowWidth = kWidth * names.size();
    if (area->width() < rowWidth) {
        return;
    }
    int const margin = (area->width() - static_cast<int>(rowWidth)) / 2;
    QString const look =
        u"QPushButton {background-image: url(:/images/component_btn_page_unselected.png); border: none;}"
        "QPushButton:hover, QPushButton:checked"
        " {border-image: url(:/images/component_btn_page_selected.png);}"
        "QPushButton:focus {outline: 1px solid #FF9900;}"
        "QToolTip {color: white; background-color: rgb(30,30,30); font-size: 12px; border: 1px solid black;}"_s;
    int id = 0;
    for (QString const& name : names) {
        auto* button = new QPushButton(area);
        int const offset = margin + kWidth * id;
        button->setGeometry(fromLeft ? offset : area->width() - offset - kWidth, kTop, kWidth, kHeight);
        button->setCheckable(true);
        button->setAutoDefault(false);
        button->setToolTip(name);
        button->setAccessibleName(name);
        button->setStyleSheet(look);
        group->addButton(button, id++);
        button->show();
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
