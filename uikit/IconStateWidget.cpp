#include "uikit/IconStateWidget.h"

#include "ui_IconStateWidget.h"
#include "uikit/AnimatedIcon.h"
#include "uikit/IconBuilder.h"
#include "uikit/PageButtons.h"
#include "uikit/pictures/PictureFile.h"
#include "uikit/Visibility.h"
#include "uikit/ZoDisplayViewAttribute.h"
#include "uikit/ZoDisplayViewLabelHandler.h"

#include <QButtonGroup>
#include <QDebug>
#include <QEvent>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QPixmap>
#include <QPointer>
#include <QStandardPaths>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// Bottom line of the title in the preview, px.
constexpr int kTitleBottom = 144;

enum IconSource { LocalFile = 0, OnlineBuilder = 1, OwnIcon = 2 };

} // namespace

IconStateWidget::IconStateWidget(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::IconStateWidget>()), pages(new QButtonGroup(this))
{
    ui->setupUi(this);
    animation = new AnimatedIcon(ui->lblIcon);
    setAttribute(Qt::WA_StyledBackground);
    pages->setExclusive(true);
    connect(ui->btnSelect, &QPushButton::clicked, this, &IconStateWidget::onSelectIconFile);
}

IconStateWidget::~IconStateWidget() = default;

void IconStateWidget::setIconChangeable(bool changeable)
{
    Visibility::set(ui->btnSelect, changeable);
}

void IconStateWidget::hideButtons()
{
    for (QAbstractButton* button : pages->buttons()) {
        button->hide();
    }
}

void IconStateWidget::hideImageText()
{
    ui->lblImageText->hide();
}

void IconStateWidget::showImageText()
{
    Visibility::set(ui->lblImageText, true);
}

void IconStateWidget::hideTextEditButton()
{
    ui->btnTextEdit->hide();
}

void IconStateWidget::showTextEditButton()
{
    Visibility::set(ui->btnTextEdit, true);
}

void IconStateWidget::setIconGeometry(QRect const& geometry)
{
    if (geometry == ui->lblIcon->geometry()) {
        return;
    }
    ui->lblIcon->setGeometry(geometry);
    if (!shownPath.isEmpty()) {
        updateCurrentIcon(shownPath);
    }
}

void IconStateWidget::setCurrentTitle(QString const& title)
{
    if (title != ui->lblImageText->text()) {
        ui->lblImageText->setText(title);
        ZoDisplayViewLabelHandler::fitText(ui->lblImageText);
    }
}

void IconStateWidget::updateCurrentIcon(QString const& path)
{
    if (!QFile::exists(path)) {
        qDebug() << "[IconStateWidget][updateCurrentIcon][fileExists]" << false;
        return;
    }
    bool const isGif = QFileInfo(path).suffix().toLower().contains("gif"_L1);
    if (!(isGif ? animation->play(path, ui->lblIcon->size()) : showPicture(path))) {
        animation->stop();
        ui->lblIcon->clear(); // as on the key, where the picture of another state would be a lie
    }
    shownPath = path;
}

void IconStateWidget::setDefaultIcon(QString const& path)
{
    defaultPath = path;
}

bool IconStateWidget::showPicture(QString const& path)
{
    QPixmap const pixmap = PictureFile::pixmap(
        path, ui->lblIcon->size(), ui->lblIcon->devicePixelRatioF(), PictureFile::Fit::Stretch);
    if (pixmap.isNull()) {
        return false;
    }
    animation->stop();
    ui->lblIcon->setPixmap(pixmap);
    ui->lblIcon->setScaledContents(true);
    return true;
}

void IconStateWidget::clickButton(int id)
{
    if (QAbstractButton* const button = pages->button(id)) {
        button->click();
    }
}

void IconStateWidget::generateButtonsByStateNames(QList<QString> const& names, bool fromLeft)
{
    disconnect(pages, &QButtonGroup::idClicked, nullptr, nullptr);
    PageButtons::retire(pages);
    PageButtons::append(ui->widgetIcon, pages, names, fromLeft);
    // Made later than the rest of the window, they would be its last stops.
    QWidget* previous = ui->btnSelect;
    for (QAbstractButton* button : pages->buttons()) {
        setTabOrder(previous, button);
        previous = button;
    }
    clickButton(0);
    // Only now: making the buttons is no choice of the user.
    connect(pages, &QButtonGroup::idClicked, this, &IconStateWidget::iconIndexChanged);
}

void IconStateWidget::setButtonTooltip(int id, QString const& tooltip)
{
    if (QAbstractButton* const button = pages->button(id)) {
        button->setToolTip(tooltip);
        button->setAccessibleName(tooltip);
    }
}

int IconStateWidget::totalButtonNum() const
{
    return static_cast<int>(pages->buttons().size());
}

void IconStateWidget::adjustView(ZoDisplayViewAttribute const& attribute)
{
    ZoDisplayViewLabelHandler::modifyPropertyWidgetLabel(ui->lblImageText, kTitleBottom, attribute);
}

void IconStateWidget::initPushButtonMenu(std::function<void(QPushButton*)> const& initialise)
{
    if (initialise) {
        initialise(ui->btnTextEdit);
    }
}

void IconStateWidget::onSelectIconFile()
{
    // The host may delete the panel while one of the dialogs is open, or over what it is told.
    QPointer<IconStateWidget> const self(this);
    bool const canReset = !defaultPath.isEmpty() && defaultPath != shownPath;
    int const source = IconBuilder::showIconEditMenu(ui->btnSelect->mapFromGlobal(QPoint(0, 0)), canReset);
    if (!self) {
        return;
    }
    if (source == OnlineBuilder) {
        emit buildIcon();
        return;
    }
    if (source == OwnIcon) {
        changeIcon(QString(defaultPath)); // whoever is told may give another
        return;
    }
    if (source != LocalFile) {
        return;
    }
    QString const file = askForFile();
    if (!self || file.isEmpty()) {
        return;
    }
    emit iconFolderChanged(QFileInfo(file).absolutePath());
    if (!self) {
        return;
    }
    QString const path = IconBuilder::getOpenFileName(file);
    qDebug() << "[IconStateWidget][onSelectIconFile][imagePath]" << path;
    if (self && QFile::exists(path)) {
        changeIcon(path);
    }
}

void IconStateWidget::changeIcon(QString const& path)
{
    updateCurrentIcon(path);
    emit iconPathChanged(std::max(0, pages->checkedId()), path);
}

QString IconStateWidget::askForFile()
{
    QString folder = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    QPointer<IconStateWidget> const self(this);
    emit iconFolderChanging(folder);
    if (!self) {
        return {};
    }
    // Not on the stack: when the panel is deleted meanwhile, the dialog goes with it.
    QPointer<QFileDialog> const dialog(new QFileDialog(this, tr("LAB_FILTER_IMAGE_SELECT"), folder,
        tr("LAB_FILTER_IMAGE_FILES") + "(*.jpg *.png *.gif)"_L1));
    dialog->setFileMode(QFileDialog::ExistingFile);
    bool const accepted = dialog->exec() == QDialog::Accepted;
    QString file = dialog && accepted ? dialog->selectedFiles().value(0) : QString();
    delete dialog;
    return file;
}

bool IconStateWidget::event(QEvent* event)
{
    Visibility::styleUpon(event, this, u"IconStateWidget"_s);
    bool const isHandled = QWidget::event(event);
    if (event->type() == QEvent::Polish) {
        ZoDisplayViewLabelHandler::fitText(ui->lblImageText);
    }
    return isHandled;
}

void IconStateWidget::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange) {
        ui->retranslateUi(this);
    }
}
