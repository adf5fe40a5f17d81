#include "uikit/MekMixerHelper.h"

#include "uikit/pictures/IconTransform.h"

QImage MekMixerHelper::getProcessPluginIcon(QImage const& image, QSize const& size, qreal devicePixelRatio)
{
    return IconTransform::onFace(image, size, devicePixelRatio);
}
