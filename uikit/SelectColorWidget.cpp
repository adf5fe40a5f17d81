#include "uikit/SelectColorWidget.h"

#include "ui_SelectColorWidget.h"
#include "uikit/KitStyle.h"

#include <algorithm>

using namespace Qt::StringLiterals;

std::array<QColor, 10> const SelectColorWidget::colorTable{
    QColor(255, 0, 0),
    QColor(255, 125, 0),
    QColor(0, 255, 0),
    QColor(0, 255, 125),
    QColor(0, 255, 255),
    QColor(0, 125, 255),
    QColor(0, 0, 255),
    QColor(125, 0, 255),
    QColor(255, 0, 255),
    QColor(255, 125, 255),
};

SelectColorWidget::SelectColorWidget(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::SelectColorWidget>())
{
    ui->setupUi(this);
    setStyleSheet(KitStyle::sheet(u"SelectColorWidget"_s));
    int id = 0;
    for (QPushButton* button :
        {ui->btnColor_01, ui->btnColor_02, ui->btnColor_03, ui->btnColor_04, ui->btnColor_05, ui->btnColor_06,
            ui->btnColor_07, ui->btnColor_08, ui->btnColor_09, ui->btnColor_10}) {
        ui->btnColorGroup->setId(button, id++);
    }
    ui->btnColor_01->setChecked(true);
    connect(ui->btnColorGroup, &QButtonGroup::idClicked, this, [this](int clicked) {
        bool const known = clicked >= 0 && clicked < std::ssize(colorTable);
        emit colorSelected(known ? colorTable.at(static_cast<size_t>(clicked)) : QColor());
    });
}

SelectColorWidget::~SelectColorWidget() = default;

void SelectColorWidget::selectTargetColor(QColor const& color)
{
    // Compared by value: the same colour may come as HSV from a colour dialog.
    auto const* const found = std::find_if(colorTable.cbegin(), colorTable.cend(),
        [&color](QColor const& entry) { return color.isValid() && entry.rgba() == color.rgba(); });
    if (found == colorTable.cend()) {
        return;
    }
    // Checking a button is no click, and only clicks are reported.
    ui->btnColorGroup->button(static_cast<int>(found - colorTable.cbegin()))->setChecked(true);
}
