#include "uikit/ZoBaseHotkeyWidget.h"

#include "ui_ZoBaseHotkeyWidget.h"
#include "uikit/AnimatedIcon.h"
#include "uikit/pictures/PictureFile.h"
#include "uikit/ZoDisplayViewAttribute.h"
#include "uikit/ZoDisplayViewLabelHandler.h"

#include <QCryptographicHash>
#include <QFileInfo>
#include <QPainter>
#include <QPixmapCache>
#include <QStyle>
#include <QStyleOption>

using namespace Qt::StringLiterals;

namespace {

// Of the title, px.
constexpr int kTitleBottom = 108;

bool isGif(QString const& path)
{
    return QFileInfo(path).suffix().compare("gif"_L1, Qt::CaseInsensitive) == 0;
}

//! One copy of what looks the same on all keys, which is 65 KB each.
QPixmap shared(QPixmap const& picture)
{
    QImage const image = picture.toImage();
    QByteArrayView const bits(image.constBits(), image.sizeInBytes());
    QString const key =
        u"ZoBaseHotkeyWidget "_s +
        QString::fromLatin1(QCryptographicHash::hash(bits.toByteArray(), QCryptographicHash::Sha1).toHex());
    QPixmap known;
    if (!QPixmapCache::find(key, &known)) {
        QPixmapCache::insert(key, picture);
        known = picture;
    }
    return known;
}

// A style sheet would load the picture once for every key, shown or not.
void showMask(QLabel* mask, QString const& path)
{
    qreal const ratio = mask->devicePixelRatioF();
    if (mask->pixmap().isNull() || mask->pixmap().devicePixelRatio() != ratio) {
        mask->setAlignment(Qt::AlignCenter);
        mask->setPixmap(PictureFile::pixmap(path, mask->size(), ratio, PictureFile::Fit::Face));
    }
    mask->show();
}

} // namespace

ZoBaseHotkeyWidget::ZoBaseHotkeyWidget(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::ZoBaseHotkeyWidget>())
{
    ui->setupUi(this);
    animation = new AnimatedIcon(ui->lblIcon);
    ui->lblMaskClick->hide();
    ui->lblMaskInvalid->hide();
    ui->lblMaskInactive->hide();
}

ZoBaseHotkeyWidget::~ZoBaseHotkeyWidget() = default;

void ZoBaseHotkeyWidget::setIconPixmap(QPixmap const& pixmap)
{
    covered.reset();
    shownPath.clear();
    shownIdentity.clear();
    showPixmap(pixmap, true);
}

void ZoBaseHotkeyWidget::setIconAsset(QString const& path)
{
    qreal const ratio = devicePixelRatioF();
    QString const identity = QString::number(ratio) + u' ' + PictureFile::identity(path);
    if (!path.isEmpty() && identity == shownIdentity) {
        uncover();
        return;
    }
    if (!isGif(path)) {
        showPixmap(PictureFile::pixmap(path, ui->lblIcon->size(), ratio, PictureFile::Fit::Face), true);
    } else if (!play(path)) {
        showPixmap({}, true); // an empty face is honest, the picture of another state is not
    }
    covered.reset();
    shownPath = path;
    shownIdentity = identity;
    // A host may have framed the label.
    QString const look = u"border:0px;background-color:#00000000;"_s;
    if (ui->lblIcon->styleSheet() != look) {
        ui->lblIcon->setStyleSheet(look);
    }
}

void ZoBaseHotkeyWidget::setIconTitle(QString const& title)
{
    if (title != ui->lblTitle->text()) {
        ui->lblTitle->setText(title);
        ZoDisplayViewLabelHandler::fitText(ui->lblTitle);
    }
}

void ZoBaseHotkeyWidget::setDownImage(QPixmap const& pixmap)
{
    if (!covered) {
        bool const isPlaying = animation->isPlaying();
        animation->stop();
        covered = std::make_unique<Covered>(
            Covered{ui->lblIcon->pixmap(), ui->lblIcon->hasScaledContents(), isPlaying});
    }
    showPixmap(pixmap, false);
}

void ZoBaseHotkeyWidget::keyDown()
{
    showMask(ui->lblMaskClick, u":/images/mainpage_btn_click.png"_s);
}

void ZoBaseHotkeyWidget::keyUp()
{
    ui->lblMaskClick->hide();
    uncover();
}

void ZoBaseHotkeyWidget::uncover()
{
    if (auto const icon = std::move(covered)) {
        // Also for an animation: its file may have gone meanwhile.
        showPixmap(icon->pixmap, icon->isScaled);
        if (icon->isPlaying) {
            play(shownPath);
        }
    }
}

void ZoBaseHotkeyWidget::showInvalid()
{
    showMask(ui->lblMaskInvalid, u":/images/mainpage_btn_invalid.svg"_s);
}

void ZoBaseHotkeyWidget::hideInvalid()
{
    ui->lblMaskInvalid->hide();
}

void ZoBaseHotkeyWidget::showInactive()
{
    showMask(ui->lblMaskInactive, u":/images/mainpage_btn_disable.png"_s);
}

void ZoBaseHotkeyWidget::hideInactive()
{
    ui->lblMaskInactive->hide();
}

void ZoBaseHotkeyWidget::showText()
{
    ui->lblTitle->show();
}

void ZoBaseHotkeyWidget::hideText()
{
    ui->lblTitle->hide();
}

void ZoBaseHotkeyWidget::adjustView(ZoDisplayViewAttribute const& attribute)
{
    ZoDisplayViewLabelHandler::modifyIconWidgetLabel(ui->lblTitle, kTitleBottom, attribute);
}

QImage ZoBaseHotkeyWidget::processHotkeyIcon(QImage const& image, QSize const& size)
{
    return IconTransform::onFace(image, size);
}

// With WA_StyledBackground Qt would stroke the rounded border anew under every change of an icon or a title.
void ZoBaseHotkeyWidget::paintEvent([[maybe_unused]] QPaintEvent* event)
{
    qreal const ratio = devicePixelRatioF();
    QSize const pixels = (QSizeF(size()) * ratio).toSize();
    if (backdrop.size() != pixels || backdrop.devicePixelRatio() != ratio) {
        backdrop = QPixmap(pixels);
        backdrop.setDevicePixelRatio(ratio);
        backdrop.fill(Qt::transparent);
        QStyleOption option;
        option.initFrom(this);
        QPainter painter(&backdrop);
        style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, this);
        painter.end();
        backdrop = shared(backdrop);
    }
    QPainter(this).drawPixmap(0, 0, backdrop);
}

bool ZoBaseHotkeyWidget::event(QEvent* event)
{
    bool const isHandled = QWidget::event(event);
    if (event->type() == QEvent::Polish) {
        ZoDisplayViewLabelHandler::fitText(ui->lblTitle);
    }
    return isHandled;
}

void ZoBaseHotkeyWidget::changeEvent(QEvent* event)
{
    backdrop = {}; // of whatever is left of the palette, the font, the style sheet …
    QWidget::changeEvent(event);
}

bool ZoBaseHotkeyWidget::play(QString const& path)
{
    return animation->play(path, ui->lblIcon->size());
}

void ZoBaseHotkeyWidget::showPixmap(QPixmap const& pixmap, bool scaled)
{
    QLabel* const label = ui->lblIcon;
    if (!label->movie() && label->hasScaledContents() == scaled &&
        label->pixmap().cacheKey() == pixmap.cacheKey()) {
        return;
    }
    label->setScaledContents(scaled);
    label->setPixmap(pixmap);
    animation->stop(); // now that nobody needs its last frame
}
