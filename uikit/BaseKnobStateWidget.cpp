#include "uikit/BaseKnobStateWidget.h"

#include "ui_BaseKnobStateWidget.h"
#include "uikit/KitStyle.h"
#include "uikit/PageButtons.h"
#include "uikit/pictures/PictureFile.h"

#include <QAbstractButton>
#include <QButtonGroup>
#include <QPainter>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// The arc around the knob, in pixels and degrees of the picture.
constexpr QRect kArc{18, 18, 74, 74};
constexpr int kArcWidth = 10;
constexpr int kArcStart = 230;
constexpr int kArcSweep = -280;
// What QPainter counts in.
constexpr int kSixteenths = 16;

} // namespace

BaseKnobStateWidget::BaseKnobStateWidget(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::BaseKnobStateWidget>()), pages(new QButtonGroup(this))
{
    ui->setupUi(this);
    setStyleSheet(KitStyle::sheet(u"BaseKnobStateWidget"_s));
    setAttribute(Qt::WA_StyledBackground);
    pages->setExclusive(true);
    connect(
        ui->selectColorWidget, &SelectColorWidget::colorSelected, this, &BaseKnobStateWidget::colorSelected);
    connect(pages, &QButtonGroup::buttonToggled, this, [this](QAbstractButton const* button, bool isOn) {
        if (isOn) {
            ui->lblName->setText(button->toolTip());
        }
    });
    updateIconView(Qt::transparent);
}

BaseKnobStateWidget::~BaseKnobStateWidget() = default;

void BaseKnobStateWidget::setCurrentColor(QColor const& color)
{
    ui->selectColorWidget->selectTargetColor(color);
}

void BaseKnobStateWidget::updateIconView(QColor const& color)
{
    if (color == drawn) {
        return;
    }
    QImage const knob = PictureFile::sharp(u":/images/mainpage_btn_knob_n.svg"_s, devicePixelRatioF());
    if (knob.isNull()) {
        return;
    }
    QPixmap preview(knob.size());
    preview.setDevicePixelRatio(knob.devicePixelRatio());
    preview.fill(Qt::transparent);
    QPainter painter(&preview);
    painter.setRenderHint(QPainter::Antialiasing);
    if (color.isValid()) {
        painter.setPen(QPen(color, kArcWidth, Qt::SolidLine, Qt::SquareCap));
        painter.drawArc(kArc, kArcStart * kSixteenths, kArcSweep * kSixteenths);
    }
    painter.drawImage(0, 0, knob);
    painter.end();
    ui->lblBackground->setPixmap(preview);
    drawn = color;
}

void BaseKnobStateWidget::generateButtonsByStateNames(QList<QString> const& names)
{
    disconnect(pages, &QButtonGroup::idClicked, nullptr, nullptr);
    PageButtons::append(ui->widgetIcon, pages, names, false);
    clickButton(0);
    // Only now: making the buttons is no choice of the user.
    connect(pages, &QButtonGroup::idClicked, this, &BaseKnobStateWidget::iconIndexChanged);
}

void BaseKnobStateWidget::clickButton(int id)
{
    // Of two sets of buttons the later one is on top.
    auto const buttons = pages->buttons();
    auto const found = std::find_if(
        buttons.crbegin(), buttons.crend(), [&](QAbstractButton* button) { return pages->id(button) == id; });
    if (found != buttons.crend()) {
        (*found)->click();
    }
}

int BaseKnobStateWidget::totalButtonNum() const
{
    return static_cast<int>(pages->buttons().size());
}

void BaseKnobStateWidget::hideButtons()
{
    for (QAbstractButton* button : pages->buttons()) {
        button->hide();
    }
}

void BaseKnobStateWidget::showButtons()
{
    for (QAbstractButton* button : pages->buttons()) {
        button->show();
    }
}

void BaseKnobStateWidget::showColorSelect()
{
    ui->selectColorWidget->show();
}

void BaseKnobStateWidget::hideColorSelect()
{
    ui->selectColorWidget->hide();
}

void BaseKnobStateWidget::hideImageText()
{
    ui->lblImageText->hide();
}

void BaseKnobStateWidget::setCurrentTitle(QString const& title)
{
    ui->lblImageText->setText(title);
}
