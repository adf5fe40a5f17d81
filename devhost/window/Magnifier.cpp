#include "devhost/window/Magnifier.h"

#include <QPainter>

QRectF Magnifier::boundingRectFor(QRectF const& rect) const
{
    return {rect.topLeft(), rect.size() * times};
}

void Magnifier::draw(QPainter* painter)
{
    QPoint offset;
    QPixmap const picture = sourcePixmap(Qt::LogicalCoordinates, &offset, NoPad);
    painter->save();
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    painter->drawPixmap(
        QRectF(offset, picture.deviceIndependentSize() * times), picture, QRectF(picture.rect()));
    painter->restore();
}
