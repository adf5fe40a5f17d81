#include "uikit/MekMixerHelper.h"

#include "uikit/AnimatedIcon.h"
#include "uikit/pictures/IconTransform.h"

#include <QDebug>
#include <QFileInfo>
#include <QImageReader>

using namespace Qt::StringLiterals;

QImage MekMixerHelper::getProcessPluginIcon(QImage const& image, QSize const& size, qreal devicePixelRatio)
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
        face = IconTransform::apply(image, IconTransform::Mode::Fill, device);
    } else {
        auto const picture = image.scaled((own * devicePixelRatio).toSize().expandedTo({1, 1}),
            Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        // In a format that can be transparent around the picture.
        face = IconTransform::apply(picture.convertToFormat(QImage::Format_ARGB32_Premultiplied),
            IconTransform::Mode::Center, device);
    }
    face.setDevicePixelRatio(devicePixelRatio);
    return face;
}

QImage MekMixerHelper::readPicture(QString const& path, qreal devicePixelRatio)
{
    if (!QFileInfo(path).isFile()) {
        qWarning() << "[MekMixerHelper][readPicture] No such file" << path;
        return {};
    }
    QImageReader reader(path);
    if (!reader.format().startsWith("svg")) {
        // As QIcon does it: "name@2x.png" beside "name.png" is the same picture, sharp on such screens.
        QFileInfo const file(path);
        QString const twice = file.path() + u'/' + file.completeBaseName() + "@2x."_L1 + file.suffix();
        if (devicePixelRatio > 1 && QFileInfo::exists(twice)) {
            QImage image = IconPicture().read(twice, IconTransform::Mode::Fill);
            image.setDevicePixelRatio(2);
            if (!image.isNull()) {
                return image;
            }
        }
        return IconPicture().read(path, IconTransform::Mode::Fill);
    }
    QImage image;
    if (QSize const size = AnimatedIcon::canvasSize(path); size.isValid()) {
        reader.setScaledSize((QSizeF(size) * devicePixelRatio).toSize());
        image = reader.read();
        image.setDevicePixelRatio(devicePixelRatio);
    }
    if (image.isNull()) {
        qWarning() << "[MekMixerHelper][readPicture] Not a readable drawing" << path << reader.errorString();
    }
    return image;
}

QPixmap MekMixerHelper::readIcon(QString const& path, QSize const& size, qreal devicePixelRatio)
{
    QImage const picture = readPicture(path, devicePixelRatio);
    return picture.isNull() ? QPixmap()
                            : QPixmap::fromImage(getProcessPluginIcon(picture, size, devicePixelRatio));
}
