#include "devhost/gallery/ImageGallery.h"

#include "devhost/gallery/GallerySheet.h"

#include <QDir>
#include <QGuiApplication>
#include <QIcon>
#include <QImageReader>
#include <QMap>
#include <QPainter>

using namespace Qt::StringLiterals;

namespace {

// Buttons and faces stand on what they stand on in a panel.
constexpr QColor kPlate{40, 40, 40};
constexpr int kLargestSmall = 40;

QPixmap read(QString const& path)
{
    qreal const ratio = qGuiApp->devicePixelRatio();
    QImageReader reader(path);
    QSize const size = reader.size();
    if (path.endsWith(".svg"_L1)) {
        // As a style sheet draws it.
        return QIcon(path).pixmap(size, ratio);
    }
    // Finds the picture of twice the size beside it, where there is one.
    QPixmap picture(path);
    if (picture.isNull()) {
        qFatal("The gallery cannot read %s.", qPrintable(path));
    }
    return picture;
}

//! Pictures beside each other.
QPixmap row(QList<QPixmap> const& pictures)
{
    constexpr int kGap = 6;
    QSize size(kGap, 0);
    for (QPixmap const& picture : pictures) {
        QSize const one = picture.deviceIndependentSize().toSize();
        size = {size.width() + one.width() + kGap, std::max(size.height(), one.height() + 2 * kGap)};
    }
    qreal const ratio = qGuiApp->devicePixelRatio();
    QPixmap whole((QSizeF(size) * ratio).toSize());
    whole.setDevicePixelRatio(ratio);
    whole.fill(kPlate);
    QPainter painter(&whole);
    int x = kGap;
    for (QPixmap const& picture : pictures) {
        painter.drawPixmap(x, kGap, picture);
        x += picture.deviceIndependentSize().toSize().width() + kGap;
    }
    return whole;
}

void addFolder(GallerySheet& sheet, QString const& folder)
{
    struct Images
    {
        QStringList variants;
        QList<QPixmap> pictures;
    };
    // The variants of one image (normal, hover, pressed, disabled) in one cell.
    QMap<QString, Images> small;
    QMap<QString, QPixmap> large;
    for (QFileInfo const& file : QDir(folder).entryInfoList(QDir::Files, QDir::Name)) {
        QString const name = file.completeBaseName();
        if (name.endsWith("@2x"_L1)) {
            continue;
        }
        QPixmap const picture = read(file.filePath());
        if (picture.deviceIndependentSize().height() > kLargestSmall) {
            large.insert(file.fileName(), picture);
            continue;
        }
        static QStringList const order{u"_n"_s, u"_m"_s, u"_c"_s, u"_d"_s};
        qsizetype const variant = order.indexOf(name.right(2));
        QString const base = (variant < 0 ? name : name.chopped(2)).mid(name.indexOf(u'_') + 1);
        Images& images = small[base + u"  ."_s + file.suffix()];
        qsizetype at = 0;
        while (at < images.variants.size() && order.indexOf(images.variants.at(at)) < variant) {
            ++at;
        }
        images.variants.insert(at, variant < 0 ? QString() : order.at(variant));
        images.pictures.insert(at, picture);
    }
    for (auto const& [name, images] : small.asKeyValueRange()) {
        sheet.add(name + u'\n' + images.variants.join(u' '), row(images.pictures));
    }
    for (auto const& [name, picture] : large.asKeyValueRange()) {
        sheet.add(name, row({picture}));
    }
}

} // namespace

void ImageGallery::addTo(GallerySheet& sheet)
{
    sheet.beginGroup(u"images-kit"_s, u"Images of the kit (normal, hover, pressed, disabled)"_s);
    addFolder(sheet, u":/images"_s);
    sheet.beginGroup(u"images-actions"_s, u"Images of the actions (animations: their first frame)"_s);
    addFolder(sheet, u":/Streamlabs/images"_s);
}
