#include "uikit/BasePropertyWidget.h"

#include "ui_BasePropertyWidget.h"
#include "uikit/CurrentTitle.h"
#include "uikit/IconStateWidget.h"
#include "uikit/Visibility.h"
#include "uikit/ZoDisplayViewMenu.h"
#include "uikit/ZoDisplayViewTextSetting.h"

#include <QDebug>
#include <QEvent>
#include <QPushButton>
#include <QWidgetAction>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr QRect kFixedIconGeometry{70, 81, 100, 72};
constexpr QSize kTextSettingSize{286, 138};

} // namespace

BasePropertyWidget::BasePropertyWidget(QWidget* parent)
    : PropertyLostDelegates(parent), ui(std::make_unique<Ui::BasePropertyWidget>())
{
    ui->setupUi(this);
    ui->lineEdtPluginTitle->setAttribute(Qt::WA_MacShowFocusRect, false);
    lineEditConnect();
    IconStateWidget* const icons = ui->iconStateWidget;
    connect(icons, &IconStateWidget::iconPathChanged, this, &BasePropertyWidget::onIconPathChanged);
    connect(icons, &IconStateWidget::iconIndexChanged, this, &BasePropertyWidget::onIconIndexChanged);
    connect(icons, &IconStateWidget::iconFolderChanging, this, &PropertyLostDelegates::iconFolderChanging);
    connect(icons, &IconStateWidget::iconFolderChanged, this, &PropertyLostDelegates::iconFolderChanged);
    connect(icons, &IconStateWidget::buildIcon, this, &PropertyLostDelegates::buildIcon);
    icons->hideTextEditButton();
}

BasePropertyWidget::~BasePropertyWidget() = default;

void BasePropertyWidget::setPluginTitleList(QList<QString> const& titles)
{
    titleList = titles;
    updateCurrentTitle();
}

void BasePropertyWidget::setPluginIconList(QList<QString> const& icons)
{
    iconList = icons;
    if (currentIndex >= 0 && currentIndex < iconList.size()) {
        ui->iconStateWidget->updateCurrentIcon(iconList.at(currentIndex));
    }
    if (iconList.size() <= 1) {
        ui->iconStateWidget->hideButtons();
    }
}

void BasePropertyWidget::setDefaultIconList(QList<QString> const& icons)
{
    defaultIconList = icons;
    ui->iconStateWidget->setDefaultIcon(defaultIconList.value(currentIndex));
}

void BasePropertyWidget::setCurrentId(int id)
{
    ui->iconStateWidget->clickButton(id);
}

void BasePropertyWidget::setIconChangeable(bool changeable)
{
    ui->iconStateWidget->setIconChangeable(changeable);
}

void BasePropertyWidget::setIconType(BaseIconProperty::Type type, bool resize)
{
    if (type == BaseIconProperty::Changeable) {
        ui->iconStateWidget->setIconChangeable(true);
    } else if (type == BaseIconProperty::Fixed) {
        ui->iconStateWidget->hideButtons();
        ui->iconStateWidget->hideImageText();
        if (resize) {
            ui->iconStateWidget->setIconGeometry(kFixedIconGeometry);
        }
        ui->iconStateWidget->setIconChangeable(false);
    }
}

void BasePropertyWidget::setTextEditable(bool editable)
{
    if (editable) {
        ui->iconStateWidget->showTextEditButton();
    } else {
        ui->iconStateWidget->hideTextEditButton();
    }
}

QString BasePropertyWidget::iconTitle() const
{
    return ui->lineEdtPluginTitle->text();
}

void BasePropertyWidget::generateButtonsByStateNames(QList<QString> const& names, bool fromLeft)
{
    ui->iconStateWidget->generateButtonsByStateNames(names, fromLeft);
}

void BasePropertyWidget::setButtonTooltip(int id, QString const& tooltip)
{
    ui->iconStateWidget->setButtonTooltip(id, tooltip);
}

void BasePropertyWidget::hideButtons()
{
    ui->iconStateWidget->hideButtons();
}

void BasePropertyWidget::showImageText()
{
    ui->iconStateWidget->showImageText();
}

void BasePropertyWidget::setTitleIsReadOnly(bool readOnly)
{
    ui->lineEdtPluginTitle->setReadOnly(readOnly);
    ui->lineEdtPluginTitle->setFocusPolicy(readOnly ? Qt::NoFocus : Qt::ClickFocus);
}

void BasePropertyWidget::setPluginMissingMode()
{
    ui->iconStateWidget->setIconChangeable(false);
    ui->iconStateWidget->hideButtons();
    ui->iconStateWidget->hideImageText();
    ui->lineEdtPluginTitle->hide();
}

void BasePropertyWidget::setViewAttribute(ZoDisplayViewAttribute const& attribute)
{
    viewAttribute = attribute;
    if (viewAttribute.family.isEmpty()) {
        viewAttribute.family = font().family();
    }
    if (textSetting) {
        textSetting->setViewAttribute(viewAttribute);
    }
}

void BasePropertyWidget::adjustTextLabel(ZoDisplayViewAttribute const& attribute)
{
    ui->iconStateWidget->adjustView(attribute);
}

void BasePropertyWidget::lineEditDisconnect()
{
    disconnect(ui->lineEdtPluginTitle, &QLineEdit::textEdited, this, &BasePropertyWidget::onTextChanged);
}

void BasePropertyWidget::lineEditConnect()
{
    connect(ui->lineEdtPluginTitle, &QLineEdit::textEdited, this, &BasePropertyWidget::onTextChanged,
        Qt::UniqueConnection);
}

void BasePropertyWidget::onTextChanged(QString const& text)
{
    if (makeRoom(titleList, currentIndex)) {
        titleList[currentIndex] = text;
    }
    ui->iconStateWidget->setCurrentTitle(text);
    emit pluginTitleChanged(currentIndex, text);
}

void BasePropertyWidget::onIconPathChanged(int index, QString const& path)
{
    qDebug() << "[BasePropertyWidget][onIconPathChanged][index, path]" << index << path;
    int const state = std::max(0, index);
    if (!makeRoom(iconList, state)) {
        qWarning() << "[BasePropertyWidget][onIconPathChanged] No such state" << state;
        return;
    }
    iconList[state] = path;
    emit pluginIconChanged(state, path);
}

void BasePropertyWidget::onIconIndexChanged(int index)
{
    qDebug() << "[BasePropertyWidget][onIconIndexChanged][index]" << index;
    currentIndex = index;
    if (currentIndex >= 0 && currentIndex < iconList.size()) {
        ui->iconStateWidget->updateCurrentIcon(iconList.at(currentIndex));
    }
    ui->iconStateWidget->setDefaultIcon(defaultIconList.value(currentIndex));
    updateCurrentTitle();
}

bool BasePropertyWidget::event(QEvent* event)
{
    Visibility::styleUpon(event, this, u"BasePropertyWidget"_s);
    return PropertyLostDelegates::event(event);
}

void BasePropertyWidget::showEvent(QShowEvent* event)
{
    PropertyLostDelegates::showEvent(event);
    if (initialised) {
        return;
    }
    initialised = true;
    ui->iconStateWidget->initPushButtonMenu([this](QPushButton* button) { initDisplayViewSetting(button); });
    textSetting->setViewAttribute(viewAttribute);
}

void BasePropertyWidget::changeEvent(QEvent* event)
{
    PropertyLostDelegates::changeEvent(event);
    if (event->type() == QEvent::LanguageChange) {
        ui->retranslateUi(this);
    }
}

// Makes `list` long enough for `index` when the action has such a state: a host that set fewer entries than
// there are states must not cost the user what was typed or chosen.
bool BasePropertyWidget::makeRoom(QList<QString>& list, int index) const
{
    qsizetype const states = std::max(
        {iconList.size(), titleList.size(), qsizetype{ui->iconStateWidget->totalButtonNum()}, qsizetype{1}});
    if (index < 0 || index >= states) {
        return false;
    }
    list.resize(std::max(list.size(), qsizetype{index} + 1));
    return true;
}

void BasePropertyWidget::updateCurrentTitle()
{
    showCurrentTitle(*this, *ui->lineEdtPluginTitle, *ui->iconStateWidget, titleList, currentIndex);
}

void BasePropertyWidget::initDisplayViewSetting(QPushButton* button)
{
    if (textSetting || menu) {
        return;
    }
    textSetting = new ZoDisplayViewTextSetting(this);
    textSetting->setFixedSize(kTextSettingSize);
    menu = new ZoDisplayViewMenu(button);
    menu->setStyleSheet(u"QMenu { background-color: #00000000; border: none;}"_s);
    auto* const action = new QWidgetAction(menu);
    action->setDefaultWidget(textSetting);
    menu->addAction(action);

    connect(textSetting, &ZoDisplayViewTextSetting::viewAttributeChanged, this,
        [this](ZoDisplayViewAttribute const& attribute) {
            viewAttribute = attribute;
            emit viewAttributeChanged(viewAttribute);
        });
    connect(textSetting, &ZoDisplayViewTextSetting::aboutToClose, menu, &QMenu::hide);
    connect(textSetting, &ZoDisplayViewTextSetting::aboutToShow, button, &QPushButton::showMenu);
    connect(menu, &QMenu::aboutToShow, button, [button] { button->setChecked(true); });
    connect(menu, &QMenu::aboutToHide, button, [button] { button->setChecked(false); });
    // A click would toggle it once more in versions of Qt that do not wait for the menu to close.
    connect(button, &QPushButton::clicked, menu, [this, button] { button->setChecked(menu->isVisible()); });
    button->setMenu(menu);
}
