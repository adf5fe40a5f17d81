#include "uikit/pictures/PictureFile.h"

#include <QDateTime>
#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QPixmapCache>
#include <QtEndian>

using namespace Qt::StringLiterals;

namespace {

//! Drawn on the GUI thread.
constexpr qint64 kMaxDrawnPixels = qint64{2560} * 1600;

qint64 pixelsOf(QSize const& size)
{
    return qint64{size.width()} * size.height();
}

//! The logical screen of a GIF file, which all of its frames are drawn on. Where it is larger than 32,767
//! pixels Qt states the first frame's side instead. See "Graphics Interchange Format, version 89a", section
//! 18.
QSize gifScreen(QString const& path)
{
    constexpr qsizetype kWidthAt = 6;
    constexpr qsizetype kHeightAt = 8;
    constexpr qsizetype kEnd = 10;
    QFile file(path);
    QByteArray const head = file.open(QIODevice::ReadOnly) ? file.read(kEnd) : QByteArray();
    if (head.size() < kEnd || !head.startsWith("GIF8")) {
        return {};
    }
    return {qFromLittleEndian<quint16>(head.constData() + kWidthAt),
        qFromLittleEndian<quint16>(head.constData() + kHeightAt)};
}

} // namespace

QSize PictureFile::size(QString const& path, qint64 maxPixels)
{
    if (!QFileInfo(path).isFile()) {
        return {};
    }
    QSize const size = QImageReader(path).size().expandedTo(gifScreen(path));
    return size.isEmpty() || pixelsOf(size) > maxPixels ? QSize() : size;
}

QString PictureFile::suffix(QString const& path)
{
    QString named = QFileInfo(path).suffix();
    QByteArray const format = QFileInfo(path).isFile() ? QImageReader(path).format() : QByteArray();
    QString const kind = named.toLower() == "jpg"_L1 ? u"jpeg"_s : named.toLower();
    if (format.isEmpty() || kind == QLatin1StringView(format)) {
        return named;
    }
    return format == "gif" ? u"gif"_s : u"png"_s;
}

bool PictureFile::copy(QString const& source, QString const& copy)
{
    if (!QFile::copy(source, copy)) {
        return false;
    }
    // Not every file system has permissions; there the copy can be written anyway.
    QFile::setPermissions(copy, QFile::permissions(copy) | QFile::ReadOwner | QFile::WriteOwner);
    return true;
}

QString PictureFile::identity(QString const& path)
{
    if (path.startsWith(u':')) {
        return path;
    }
    QFileInfo const file(path);
    return u"%1 %2 %3"_s.arg(file.lastModified().toMSecsSinceEpoch()).arg(file.size()).arg(path);
}

QImage PictureFile::sharp(QString const& path, qreal devicePixelRatio, QSize const& drawing)
{
    if (!QFileInfo(path).isFile()) { // opening a pipe would wait for its other end
        qWarning() << "[PictureFile][sharp] No such file" << path;
        return {};
    }
    QImageReader reader(path);
    if (!reader.format().startsWith("svg")) {
        // As QIcon does it: "name@2x.png" beside "name.png" is the same picture, sharp on such screens.
        QFileInfo const file(path);
        QString const twice = file.path() + u'/' + file.completeBaseName() + "@2x."_L1 + file.suffix();
        if (devicePixelRatio > 1 && QFileInfo::exists(twice)) {
            QImage image = PictureFile().read(twice, IconTransform::Mode::Fill);
            image.setDevicePixelRatio(2);
            if (!image.isNull()) {
                return image;
            }
        }
        return PictureFile().read(path, IconTransform::Mode::Fill);
    }
    QSize const drawn = drawing.isEmpty() ? size(path) : drawing;
    QImage image;
    if (!drawn.isEmpty() && pixelsOf(drawn) <= kMaxDrawnPixels) {
        reader.setScaledSize((QSizeF(drawn) * devicePixelRatio).toSize());
        image = reader.read();
        image.setDevicePixelRatio(devicePixelRatio);
    }
    if (image.isNull()) {
        qWarning() << "[PictureFile][sharp] Not a readable drawing" << path << reader.errorString();
    }
    return image;
}

QPixmap PictureFile::pixmap(QString const& path, QSize const& size, qreal devicePixelRatio, Fit fit)
{
    QString const key = u"PictureFile %1 %2 %3 %4 %5"_s.arg(int(fit))
                            .arg(size.width())
                            .arg(size.height())
                            .arg(devicePixelRatio)
                            .arg(identity(path));
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap)) {
        return pixmap;
    }
    QImage image = sharp(path, devicePixelRatio, fit == Fit::Stretch ? size : QSize());
    if (image.isNull()) {
        return {};
    }
    if (fit == Fit::Face) {
        image = IconTransform::onFace(image, size, devicePixelRatio);
    } else {
        QSize const device = (QSizeF(size) * devicePixelRatio).toSize();
        image = IconTransform::apply(image, IconTransform::Mode::Stretch, device);
        image.setDevicePixelRatio(devicePixelRatio);
    }
    pixmap = QPixmap::fromImage(image);
    QPixmapCache::insert(key, pixmap);
    return pixmap;
}

QImage PictureFile::read(QString const& path, IconTransform::Mode mode)
{
    if (QString const now = identity(path); now != current) {
        current = now;
        full = {};
        eighth = {};
    }
    if (!full.isNull()) {
        return full;
    }
    if (IconTransform::scales(mode) && !eighth.isNull()) {
        return eighth;
    }

    QImageReader reader(path);
    reader.setAutoTransform(true);
    QSize const size = reader.size();
    if (pixelsOf(size) > kMaxPixels) {
        qWarning() << "[PictureFile][read]" << path << "is too large" << size;
        return {};
    }
    // Large enough that the eighth is still twice a face.
    bool const isReduced = IconTransform::scales(mode) && reader.format() == "jpeg" &&
                           size.width() >= 16 * IconTransform::kFace.width() &&
                           size.height() >= 16 * IconTransform::kFace.width();
    if (isReduced) {
        reader.setScaledSize(size / 8);
    }
    QImage& picture = isReduced ? eighth : full;
    picture = reader.read();
    if (picture.isNull()) {
        qWarning() << "[PictureFile][read]" << path << reader.errorString();
    }
    return picture;
}
