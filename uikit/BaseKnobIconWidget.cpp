#include "uikit/BaseKnobIconWidget.h"

#include "ui_BaseKnobIconWidget.h"
#include "uikit/BaseKnob.h"
#include "uikit/KitStyle.h"

using namespace Qt::StringLiterals;

BaseKnobIconWidget::BaseKnobIconWidget(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::BaseKnobIconWidget>())
{
    ui->setupUi(this);
    setStyleSheet(KitStyle::sheet(u"BaseKnobIconWidget"_s));
    ui->lblMaskDisable->hide();
}

BaseKnobIconWidget::~BaseKnobIconWidget() = default;

void BaseKnobIconWidget::setKnobValue(int value)
{
    ui->base->setKnobValue(value);
}

void BaseKnobIconWidget::setKnobMaximum(int maximum)
{
    ui->base->setMaxValue(maximum);
}

void BaseKnobIconWidget::setKnobMinimum(int minimum)
{
    ui->base->setMinValue(minimum);
}

void BaseKnobIconWidget::setKnobColor(QColor const& color)
{
    ui->base->setKnobColor(color);
}

void BaseKnobIconWidget::setKnobIcon(QString const& path)
{
    ui->base->setKnobIcon(path);
}

void BaseKnobIconWidget::showIcon()
{
    ui->base->showIcon();
}

void BaseKnobIconWidget::hideIcon()
{
    ui->base->hideIcon();
}

void BaseKnobIconWidget::setTitle(QString const& title)
{
    ui->lblImageText->setText(title);
}

void BaseKnobIconWidget::showTitle()
{
    ui->lblImageText->show();
}

void BaseKnobIconWidget::hideTitle()
{
    ui->lblImageText->hide();
}

void BaseKnobIconWidget::showDisable()
{
    ui->lblMaskDisable->show();
}

void BaseKnobIconWidget::hideDisable()
{
    ui->lblMaskDisable->hide();
}
