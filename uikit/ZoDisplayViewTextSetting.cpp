#include "uikit/ZoDisplayViewTextSetting.h"

#include "ui_ZoDisplayViewTextSetting.h"
#include "uikit/KitStyle.h"
#include "uikit/ZoDisplayViewStyleSheet.h"

#include <QColorDialog>
#include <QEvent>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QPointer>
#include <QStyledItemDelegate>

using namespace Qt::StringLiterals;

namespace {

constexpr int kSmallestOffered = 6;
constexpr int kLargestOffered = 18;

enum AlignmentId { Left, Center, Right };

} // namespace

ZoDisplayViewTextSetting::ZoDisplayViewTextSetting(QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::ZoDisplayViewTextSetting>())
{
    ui->setupUi(this);
    ui->widgetTitle->setStyleSheet(KitStyle::sheet(u"TextSettingTitle"_s));
    ui->widgetBody->setStyleSheet(KitStyle::sheet(u"TextSettingBody"_s));
    setWindowFlags(Qt::Dialog | Qt::FramelessWindowHint);
    ui->btnAlginGroup->setId(ui->btnAlignLeft, Left);
    ui->btnAlginGroup->setId(ui->btnAlignCenter, Center);
    ui->btnAlginGroup->setId(ui->btnAlignRight, Right);
    fillLists();
    connectControls();
    adjustUi();
}

ZoDisplayViewTextSetting::~ZoDisplayViewTextSetting() = default;

void ZoDisplayViewTextSetting::setViewAttribute(ZoDisplayViewAttribute const& attribute)
{
    current = attribute;
    adjustUi();
}

ZoDisplayViewAttribute ZoDisplayViewTextSetting::getViewAttribute() const
{
    return current;
}

QString ZoDisplayViewTextSetting::getColorTooltip(QColor const& color)
{
    return u"%1 : %2"_s.arg(tr("LAB_TIP_TEXT_EDIT_COLOR"), color.name());
}

void ZoDisplayViewTextSetting::filterNotSupportFont(QList<QString>& families)
{
    static QList<QString> const unsupported{u"Cambria Math"_s, u"Fixedsys"_s, u"Marlett"_s, u"Modern"_s,
        u"Myanmar Text"_s, u"Roman"_s, u"Script"_s, u"Small Fonts"_s, u"System"_s, u"Terminal"_s,
        u"Webdings"_s};
    families.removeIf([](QString const& family) { return unsupported.contains(family); });
}

void ZoDisplayViewTextSetting::reject()
{
    emit aboutToClose();
}

void ZoDisplayViewTextSetting::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    // Keys that are pressed while a menu is open go to the widget inside it that has the focus.
    ui->comboBoxFontFamily->setFocus(Qt::PopupFocusReason);
}

void ZoDisplayViewTextSetting::changeEvent(QEvent* event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::LanguageChange) {
        ui->retranslateUi(this);
        showColor();
    }
}

void ZoDisplayViewTextSetting::keyPressEvent(QKeyEvent* event)
{
    bool const enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (auto* const button = qobject_cast<QPushButton*>(focusWidget()); button && enter) {
        button->click();
        return;
    }
    QDialog::keyPressEvent(event);
}

// The menu would use Tab to go to its next entry, of which there is none.
bool ZoDisplayViewTextSetting::focusNextPrevChild(bool next)
{
    QWidget* const start = focusWidget() ? focusWidget() : this;
    QWidget* widget = start;
    do {
        widget = next ? widget->nextInFocusChain() : widget->previousInFocusChain();
        if (isAncestorOf(widget) && widget->isVisible() && widget->isEnabled() && !widget->focusProxy() &&
            (widget->focusPolicy() & Qt::TabFocus)) {
            // A group is one stop, and the arrow keys start from the choice made.
            auto const* const button = qobject_cast<QAbstractButton*>(widget);
            QWidget* const chosen = button && button->group() ? button->group()->checkedButton() : nullptr;
            (chosen ? chosen : widget)->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
            return true;
        }
    } while (widget != start);
    return false;
}

void ZoDisplayViewTextSetting::fillLists()
{
    // Only a styled delegate lets the panel's style sheet reach the entries of the drop-down list.
    ui->comboBoxFontFamily->setItemDelegate(new QStyledItemDelegate(ui->comboBoxFontFamily));
    for (QString const& family : QFontDatabase::families()) {
        ui->comboBoxFontFamily->addItem(family, family);
    }
    for (int size = kSmallestOffered; size <= kLargestOffered; ++size) {
        ui->comboBoxFontSize->addItem(u"%1 px"_s.arg(size), size);
    }
}

void ZoDisplayViewTextSetting::connectControls()
{
    connectList(ui->comboBoxFontFamily,
        [](ZoDisplayViewAttribute& stored, QVariant const& picked) { stored.family = picked.toString(); });
    connectList(ui->comboBoxFontSize,
        [](ZoDisplayViewAttribute& stored, QVariant const& picked) { stored.size = picked.toInt(); });

    connect(ui->btnBold, &QPushButton::clicked, this, [this](bool checked) {
        current.bold = checked;
        emit viewAttributeChanged(current);
    });
    connect(ui->btnItalic, &QPushButton::clicked, this, [this](bool checked) {
        current.italic = checked;
        emit viewAttributeChanged(current);
    });
    connect(ui->btnUnderLine, &QPushButton::clicked, this, [this](bool checked) {
        current.underLine = checked;
        emit viewAttributeChanged(current);
    });
    connect(ui->btnAlginGroup, &QButtonGroup::idClicked, this, [this](int id) {
        current.horAlignment = id == Left ? Qt::AlignLeft : id == Right ? Qt::AlignRight : Qt::AlignHCenter;
        emit viewAttributeChanged(current);
    });
    connect(ui->btnSelectColor, &QPushButton::clicked, this, &ZoDisplayViewTextSetting::selectColor);
    connect(ui->btnClose, &QPushButton::clicked, this, &ZoDisplayViewTextSetting::aboutToClose);
}

void ZoDisplayViewTextSetting::connectList(
    QComboBox* list, void (*store)(ZoDisplayViewAttribute& attribute, QVariant const& picked))
{
    auto const edit = [this, list, store](int index) {
        ZoDisplayViewAttribute edited = current;
        store(edited, list->itemData(index));
        if (index >= 0 && edited != current) {
            current = edited;
            emit viewAttributeChanged(current);
        }
    };
    connect(list, &QComboBox::currentIndexChanged, this, edit);
    // While the stored value is not in the list the user may pick the entry that happens to be shown.
    connect(list, &QComboBox::activated, this, edit);
}

void ZoDisplayViewTextSetting::adjustUi()
{
    // None of this reports anything: buttons report clicks, and lists what differs from the stored look.
    ui->btnBold->setChecked(current.bold);
    ui->btnItalic->setChecked(current.italic);
    ui->btnUnderLine->setChecked(current.underLine);
    switch (current.horAlignment) {
    case Qt::AlignLeft:
        ui->btnAlignLeft->setChecked(true);
        break;
    case Qt::AlignRight:
        ui->btnAlignRight->setChecked(true);
        break;
    default:
        ui->btnAlignCenter->setChecked(true);
        break;
    }
    showColor();
    if (int const index = ui->comboBoxFontFamily->findData(current.family); index >= 0) {
        ui->comboBoxFontFamily->setCurrentIndex(index);
    }
    if (int const index = ui->comboBoxFontSize->findData(current.size); index >= 0) {
        ui->comboBoxFontSize->setCurrentIndex(index);
    }
}

void ZoDisplayViewTextSetting::showColor()
{
    ui->labelColor->setStyleSheet(ZoDisplayViewStyleSheet::getColorLabelString(current.color));
    QString const tooltip = getColorTooltip(current.color);
    ui->btnSelectColor->setToolTip(tooltip);
    ui->btnSelectColor->setAccessibleName(tooltip);
}

void ZoDisplayViewTextSetting::selectColor()
{
    // The dialog closes the menu that carries the panel, so it must belong to the window behind the menu.
    QWidget* owner = window();
    while (owner->windowType() == Qt::Popup && owner->parentWidget()) {
        owner = owner->parentWidget()->window();
    }
    // While the dialog is open the host may delete the panel, and with its window the dialog.
    QPointer<ZoDisplayViewTextSetting> const self(this);
    QPointer<QColorDialog> const dialog(new QColorDialog(current.color, owner));
    dialog->move(ui->btnSelectColor->mapToGlobal(QPoint(0, 0)));
    int const result = dialog->exec();
    QColor const chosen = dialog ? dialog->selectedColor() : QColor();
    delete dialog;
    if (!self) {
        return;
    }
    if (result == QDialog::Accepted && chosen.isValid()) {
        current.color = chosen;
        showColor();
        emit viewAttributeChanged(current);
    }
    if (self) {
        emit aboutToShow();
    }
}
