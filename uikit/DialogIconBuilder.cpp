#include "uikit/DialogIconBuilder.h"

#include "relay/ZoLumenProxy.h"
#include "ui_DialogIconBuilder.h"
#include "uikit/AnimatedIcon.h"
#include "uikit/KitStyle.h"
#include "uikit/pictures/GifConverter.h"

#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QImageReader>
#include <QListView>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPointer>
#include <QSaveFile>
#include <QStandardPaths>
#include <QStyledItemDelegate>
#include <QThread>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

//! Where icons go; made if missing. Without a data folder there is none: a copy then fails (see copyImage)
//! and saveExtAppIcon writes nothing.
QString iconFile(QString const& suffix)
{
    auto const& data = ZoLumenProxy::getInstance().configDir;
    if (data.isEmpty()) {
        return {};
    }
    QDir const folder(data + "/icon"_L1);
    folder.mkpath(u"."_s);
    // The hour is left out on purpose: hosts expect names of this length.
    return folder.absoluteFilePath(QDateTime::currentDateTime().toString(u"yyyyMMddmmss"_s) + u'.' + suffix);
}

bool canWriteIcons()
{
    QFileInfo const folder(QFileInfo(iconFile({})).path());
    return folder.isDir() && folder.isWritable();
}

//! Whole or not at all: a full disk must not cost the picture that is there.
bool save(QImage const& image, QString const& path)
{
    if (image.isNull()) {
        return false;
    }
    QSaveFile file(path);
    // For a picture that may be written to in a folder that may not.
    file.setDirectWriteFallback(true);
    return file.open(QIODevice::WriteOnly) && image.save(&file, QFileInfo(path).suffix().toLatin1()) &&
           file.commit();
}

} // namespace

DialogIconBuilder::DialogIconBuilder(QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint), ui(std::make_unique<Ui::DialogIconBuilder>())
{
    setStyleSheet(KitStyle::sheet(u"DialogIconBuilder"_s));
    ui->setupUi(this);
    ui->cbBuilderList->setView(new QListView(ui->cbBuilderList));
    // Only a styled delegate lets the dialog's style sheet reach the entries.
    ui->cbBuilderList->setItemDelegate(new QStyledItemDelegate(ui->cbBuilderList));
    animation = new AnimatedIcon(ui->imgIcon);
    showConverting(false);
    ui->lblReplaces->hide();
    connect(
        ui->cbBuilderList, &QComboBox::currentIndexChanged, this, &DialogIconBuilder::onBuilderListChanged);
    connect(&conversion, &GifConversion::progressed, ui->progressBar, &QProgressBar::setValue);
    connect(&conversion, &GifConversion::finished, this, &DialogIconBuilder::onConversionFinished);
}

DialogIconBuilder::~DialogIconBuilder() = default;

void DialogIconBuilder::setImagePath(QString path)
{
    conversion.stop();
    showConverting(false);
    imagePath = std::move(path);
    setupImage();
}

QString DialogIconBuilder::getImagePath() const
{
    return imagePath;
}

bool DialogIconBuilder::openPicture(QString const& path)
{
    QString const before = getImagePath();
    setImagePath(path);
    if (hasPicture()) {
        return true;
    }
    QPointer<DialogIconBuilder> const self(this);
    // Not on the stack: the host may close everything meanwhile, this object and the box included.
    QPointer<QMessageBox> const box(new QMessageBox(
        QMessageBox::Warning, windowTitle(), tr("LAB_ICON_NO_PICTURE"), QMessageBox::Ok, this));
    box->exec();
    delete box;
    if (self && !before.isEmpty()) {
        setImagePath(before);
    }
    return false;
}

bool DialogIconBuilder::isGif() const
{
    return PictureFile::suffix(imagePath).compare("gif"_L1, Qt::CaseInsensitive) == 0;
}

bool DialogIconBuilder::hasPicture() const
{
    return isGif() ? scaledSize.isValid() && !QImageReader(imagePath).read().isNull() : !image.isNull();
}

void DialogIconBuilder::setupImage()
{
    if (!QFileInfo(imagePath).isFile()) {
        return;
    }
    bool const isStill = !isGif();
    ui->cbBuilderList->setEnabled(isStill);
    animation->stop();
    image = isStill ? getIconTransform(imagePath, ui->cbBuilderList->currentIndex()) : QImage();
    ui->imgIcon->setPixmap(QPixmap::fromImage(image));
    ui->lblReplaces->setVisible(!image.isNull() && !canWriteIcons()); // see copyImage
    scaledSize = {};
    if (isStill) {
        return;
    }
    scaledSize = AnimatedIcon::fittedToKeyFace(PictureFile::size(imagePath, GifConverter::kMaxPixels));
    animation->play(imagePath, ui->imgIcon->size(), GifConverter::kMaxPixels);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param)
QImage DialogIconBuilder::getIconTransform(QString path, int const mode)
{
    if (mode < 0 || mode > static_cast<int>(IconTransform::Mode::Center)) {
        qWarning("[%s] Unexpect background mode",
            "QImage DialogIconBuilder::getIconTransform(QString, const int)");
        return {};
    }
    auto const chosen = IconTransform::Mode{mode};
    return IconTransform::apply(picture.read(path, chosen), chosen);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param)
QString DialogIconBuilder::saveExtAppIcon(QPixmap pixmap)
{
    auto const path = iconFile(u"png"_s);
    return save(IconTransform::apply(pixmap.toImage(), IconTransform::Mode::Fill), path) ? path : QString();
}

void DialogIconBuilder::gifConvert(QString const& source, QString const& destination, QSize const& size)
{
    // The threads that ImageMagick computes with belong to the thread that calls it and end with it. The
    // host's own thread would keep them, and with them this library's dependencies.
    std::unique_ptr<QThread> const thread(
        QThread::create([&] { GifConverter::convert(source, destination, size); }));
    thread->start();
    thread->wait();
}

void DialogIconBuilder::on_btnOpenFile_clicked()
{
    // Not on the stack: the host may close everything meanwhile, this object and the dialog included.
    QPointer<QFileDialog> const dialog(new QFileDialog(this, tr("LAB_FILTER_IMAGE_SELECT"),
        QStandardPaths::writableLocation(QStandardPaths::PicturesLocation),
        tr("LAB_FILTER_IMAGE_FILES") + "(*.jpg *.png *.gif)"_L1));
    dialog->setFileMode(QFileDialog::ExistingFile);
    bool const isAccepted = dialog->exec() == QDialog::Accepted;
    if (!dialog) {
        return;
    }
    QString const file = isAccepted ? dialog->selectedFiles().value(0) : QString();
    delete dialog;
    if (!file.isEmpty()) {
        openPicture(file);
    }
}

void DialogIconBuilder::onBuilderListChanged(int)
{
    setupImage();
}

void DialogIconBuilder::on_btnOk_clicked()
{
    if (conversion.isRunning()) {
        return;
    }
    if (isGif()) {
        animation->stop();
        showConverting(true);
        conversion.start(imagePath, iconFile(PictureFile::suffix(imagePath)), scaledSize);
        return;
    }
    copyImage();
    saveAndAccept();
}

//! Names come back every hour. Where the name is taken, or the copy fails otherwise, the picture itself
//! becomes the icon and is overwritten; hosts rely on it.
void DialogIconBuilder::copyImage()
{
    if (imagePath.isEmpty()) {
        return;
    }
    auto const copy = iconFile(PictureFile::suffix(imagePath));
    if (PictureFile::copy(imagePath, copy)) {
        imagePath = copy;
    }
}

void DialogIconBuilder::onConversionFinished()
{
    if (conversion.isCancelled()) {
        done(Rejected);
        return;
    }
    imagePath = conversion.path();
    saveAndAccept();
}

void DialogIconBuilder::saveAndAccept()
{
    save(image, imagePath);
    QPointer<DialogIconBuilder> const self(this);
    if (!imagePath.isEmpty()) {
        emit fileChanged(QFileInfo(imagePath).absolutePath());
    }
    if (self) {
        accept();
    }
}

void DialogIconBuilder::showConverting(bool isConverting)
{
    ui->progressBar->setValue(0);
    ui->progressBar->setVisible(isConverting);
    ui->btnOk->setEnabled(!isConverting);
    ui->btnOpenFile->setEnabled(!isConverting);
    ui->btnCancel->setEnabled(true);
    if (isConverting) {
        ui->cbBuilderList->setEnabled(false);
        ui->btnCancel->setFocus();
    }
}

void DialogIconBuilder::on_btnCancel_clicked()
{
    imagePath.clear();
    if (!conversion.isRunning()) {
        done(Rejected);
        return;
    }
    // The frame in hand may take long; the dialog closes after it.
    ui->btnCancel->setEnabled(false);
    conversion.cancel();
}

void DialogIconBuilder::done(int result)
{
    conversion.stop();
    showConverting(false);
    QDialog::done(result);
}

void DialogIconBuilder::hideEvent(QHideEvent* event)
{
    // Nobody sees the progress any more, nor could cancel. Minimised it goes on.
    if (!event->spontaneous()) {
        conversion.stop();
        showConverting(false);
    }
    QDialog::hideEvent(event);
}

void DialogIconBuilder::reject()
{
    on_btnCancel_clicked();
}

void DialogIconBuilder::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && ui->widgetTitlebar->geometry().contains(event->pos())) {
        pressPoint = event->globalPosition().toPoint() - pos();
        isDragging = true;
    }
}

void DialogIconBuilder::mouseMoveEvent(QMouseEvent* event)
{
    if (isDragging) {
        move(event->globalPosition().toPoint() - pressPoint);
    }
}

void DialogIconBuilder::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton) {
        isDragging = false;
    }
}

void DialogIconBuilder::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange) {
        ui->retranslateUi(this);
    }
    QDialog::changeEvent(event);
}
