#include "uikit/pictures/IconTransform.h"

#include <QPainter>

namespace {

QRect centered(QSize const& inner, QSize const& outer)
{
    return {(outer.width() - inner.width()) / 2, (outer.height() - inner.height()) / 2, inner.width(),
        inner.height()};
}

//! The format of a face that \a picture is painted on: its own, if that can be painted on at all.
QImage::Format faceFormat(QImage const& picture)
{
    switch (picture.pixelFormat().colorModel()) {
    case QPixelFormat::Indexed:
        return QImage::Format_ARGB32;
    case QPixelFormat::CMYK:
        return QImage::Format_RGB32;
    default:
        return picture.format();
    }
}

//! Whether pixels may stand for colours that \a picture does not have, as some files do.
bool lacksColors(QImage const& picture)
{
    return picture.pixelFormat().colorModel() == QPixelFormat::Indexed &&
           picture.colorCount() < 1 << picture.depth();
}

//! \a picture as the rest here takes it: Qt reads beyond a palette that is too short, and Qt 6.4 crashes when
//! it enlarges a picture that has a palette and, as one whose name ends in @2x, a ratio of its own.
QImage plain(QImage picture)
{
    picture.setDevicePixelRatio(1);
    if (lacksColors(picture)) {
        auto colors = picture.colorTable();
        colors += QList<QRgb>((1 << picture.depth()) - colors.size(), qRgb(0, 0, 0));
        picture.setColorTable(colors);
    }
    return picture;
}

//! As much of \a picture as a face has room for, without conversion of the rest.
QImage cut(QImage const& picture, QPoint corner, QSize const& face)
{
    auto part = picture.copy(QRect(corner, picture.size().boundedTo(face)));
    part.convertTo(faceFormat(part));
    return part;
}

template <typename Paint>
QImage painted(QSize const& face, QImage::Format format, Paint paint)
{
    QImage image(face, format);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    paint(painter);
    return image;
}

QImage filled(QImage const& picture, QSize const& face)
{
    constexpr qint64 kMaxScaledPixels = qint64{4} * 1024 * 1024;
    auto source = picture;
    auto const size = source.size().scaled(face, Qt::KeepAspectRatioByExpanding);
    // Of a banner of 10,000 x 1 a strip of some pixels is seen, but the whole would scale to a gigabyte.
    if (qint64{size.width()} * size.height() > kMaxScaledPixels) {
        QSize seen = QSize(qCeil(static_cast<double>(face.width()) * source.width() / size.width()) + 2,
            qCeil(static_cast<double>(face.height()) * source.height() / size.height()) + 2)
                         .boundedTo(source.size());
        // The middle stays the middle: as much is left off on both sides.
        seen.rwidth() += (source.width() - seen.width()) & 1;
        seen.rheight() += (source.height() - seen.height()) & 1;
        source = source.copy(centered(seen, source.size()));
    }
    source.convertTo(faceFormat(source)); // scaled within a palette, what is between two colours is lost
    auto const scaled = source.scaled(face, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation);
    return scaled.copy(centered(face, scaled.size()));
}

} // namespace

QImage IconTransform::apply(QImage const& picture, Mode mode, QSize const& face)
{
    if (picture.isNull()) {
        return {};
    }
    if (picture.devicePixelRatio() != 1 || lacksColors(picture)) {
        return apply(plain(picture), mode, face);
    }
    switch (mode) {
    case Mode::Fill:
        return filled(picture, face);
    case Mode::Fit: {
        auto const format = faceFormat(picture);
        auto const scaled =
            picture.convertToFormat(format).scaled(face, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        return painted(face, format,
            [&](QPainter& painter) { painter.drawImage(centered(scaled.size(), face), scaled); });
    }
    case Mode::Stretch:
        return picture.convertToFormat(faceFormat(picture))
            .scaled(face, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    case Mode::Tile: {
        auto const tile = cut(picture, {}, face);
        return painted(
            face, tile.format(), [&](QPainter& painter) { painter.fillRect(QRect({}, face), QBrush(tile)); });
    }
    case Mode::Center: {
        auto const outside = centered(face, picture.size()).topLeft();
        auto const middle = cut(picture, {qMax(0, outside.x()), qMax(0, outside.y())}, face);
        return painted(face, middle.format(),
            [&](QPainter& painter) { painter.drawImage(centered(middle.size(), face), middle); });
    }
    }
    return {};
}

QImage IconTransform::onFace(QImage const& image, QSize const& size, qreal devicePixelRatio)
{
    if (size.isEmpty()) {
        return {};
    }
    QSize const device = (QSizeF(size) * devicePixelRatio).toSize();
    QImage face;
    if (image.isNull()) {
        face = QImage(device, QImage::Format_ARGB32_Premultiplied);
        face.fill(Qt::transparent);
    } else if (QSizeF const own = image.deviceIndependentSize();
        own.width() > size.width() || own.height() > size.height()) {
        face = apply(image, Mode::Fill, device);
    } else {
        auto const picture = image.scaled((own * devicePixelRatio).toSize().expandedTo({1, 1}),
            Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        // In a format that can be transparent around the picture.
        face = apply(picture.convertToFormat(QImage::Format_ARGB32_Premultiplied), Mode::Center, device);
    }
    face.setDevicePixelRatio(devicePixelRatio);
    return face;
}
