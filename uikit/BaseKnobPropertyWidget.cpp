#include "uikit/BaseKnobPropertyWidget.h"

#include "ui_BaseKnobPropertyWidget.h"
#include "uikit/BaseKnobStateWidget.h"
#include "uikit/CurrentTitle.h"
#include "uikit/KitStyle.h"
#include "uikit/pictures/PictureFile.h"

#include <QDebug>
#include <QEvent>

#include <algorithm>

using namespace Qt::StringLiterals;

BaseKnobPropertyWidget::BaseKnobPropertyWidget(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::BaseKnobPropertyWidget>())
{
    ui->setupUi(this);
    setStyleSheet(KitStyle::sheet(u"BasePropertyWidget"_s) + KitStyle::sheet(u"BaseKnobPropertyWidget"_s));
    ui->btnSetting->setStyleSheet(KitStyle::sheet(u"KnobSetting"_s));
    ui->lineEdtPluginTitle->setAttribute(Qt::WA_MacShowFocusRect, false);
    ui->btnSetting->hide();
    lineEditConnect();
    BaseKnobStateWidget* const knob = ui->knobStateWidget;
    connect(knob, &BaseKnobStateWidget::iconIndexChanged, this, &BaseKnobPropertyWidget::onIconIndexChanged);
    connect(knob, &BaseKnobStateWidget::colorSelected, this, [this, knob](QColor const& color) {
        knobColor = color;
        knob->updateIconView(color);
        emit knobColorSelected(color);
    });
    connect(ui->btnSetting, &QPushButton::clicked, this, &BaseKnobPropertyWidget::settingButtonClicked);
}

BaseKnobPropertyWidget::~BaseKnobPropertyWidget() = default;

void BaseKnobPropertyWidget::setKnobIconList(QList<QString> const& icons)
{
    iconList = icons;
    if (QString const icon = getCurrentIcon(); !icon.isEmpty()) {
        setIcon(icon);
    }
    if (iconList.size() <= 1) {
        hideButtons();
    }
}

void BaseKnobPropertyWidget::setKnobTitleList(QList<QString> const& titles)
{
    titleList = titles;
    updateCurrentTitle();
}

void BaseKnobPropertyWidget::setIcon(QString const& path)
{
    QPixmap const icon =
        PictureFile::pixmap(path, ui->lblIcon->size(), devicePixelRatioF(), PictureFile::Fit::Face);
    if (!icon.isNull()) {
        ui->lblIcon->setPixmap(icon);
    }
}

void BaseKnobPropertyWidget::setKnobColor(QColor const& color)
{
    if (!color.isValid()) {
        qWarning() << "[BaseKnobPropertyWidget][setKnobColor] Not a colour" << color;
        return;
    }
    knobColor = color;
    ui->knobStateWidget->setCurrentColor(color);
    showKnobColor();
}

void BaseKnobPropertyWidget::showKnobColor()
{
    ui->knobStateWidget->updateIconView(knobColor);
}

void BaseKnobPropertyWidget::showKnobColorTransparent()
{
    ui->knobStateWidget->updateIconView(Qt::transparent);
}

void BaseKnobPropertyWidget::showColorSelect()
{
    ui->knobStateWidget->showColorSelect();
}

void BaseKnobPropertyWidget::hideColorSelect()
{
    ui->knobStateWidget->hideColorSelect();
}

void BaseKnobPropertyWidget::generateButtonsByStateNames(QList<QString> const& names)
{
    ui->knobStateWidget->generateButtonsByStateNames(names);
}

void BaseKnobPropertyWidget::showButtons()
{
    ui->knobStateWidget->showButtons();
}

void BaseKnobPropertyWidget::hideButtons()
{
    ui->knobStateWidget->hideButtons();
}

void BaseKnobPropertyWidget::setCurrentId(int id)
{
    ui->knobStateWidget->clickButton(id);
}

QString BaseKnobPropertyWidget::getCurrentIcon() const
{
    return iconList.value(currentIndex);
}

void BaseKnobPropertyWidget::lineEditDisconnect()
{
    disconnect(ui->lineEdtPluginTitle, &QLineEdit::textChanged, this, &BaseKnobPropertyWidget::onTextChanged);
}

// Not `textEdited`: a host may put a title into the line edit itself and expects it to be stored.
void BaseKnobPropertyWidget::lineEditConnect()
{
    connect(ui->lineEdtPluginTitle, &QLineEdit::textChanged, this, &BaseKnobPropertyWidget::onTextChanged,
        Qt::UniqueConnection);
}

void BaseKnobPropertyWidget::onTextChanged(QString const& text)
{
    ui->knobStateWidget->setCurrentTitle(text);
    // A host that set fewer titles than there are states must not cost the user what was typed.
    qsizetype const states = std::max(
        {iconList.size(), titleList.size(), qsizetype{ui->knobStateWidget->totalButtonNum()}, qsizetype{1}});
    if (currentIndex >= 0 && currentIndex < states) {
        titleList.resize(std::max(titleList.size(), qsizetype{currentIndex} + 1));
        titleList[currentIndex] = text;
    }
    emit knobTitleChanged(currentIndex, text);
}

void BaseKnobPropertyWidget::onIconIndexChanged(int index)
{
    currentIndex = index;
    if (QString const icon = getCurrentIcon(); !icon.isEmpty()) {
        setIcon(icon);
    }
    updateCurrentTitle();
    emit stateIndexChanged(index);
}

void BaseKnobPropertyWidget::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange) {
        ui->retranslateUi(this);
    }
}

void BaseKnobPropertyWidget::updateCurrentTitle()
{
    showCurrentTitle(*this, *ui->lineEdtPluginTitle, *ui->knobStateWidget, titleList, currentIndex);
}
