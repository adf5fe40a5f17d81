#pragma once

#include <QImage>
#include <QSize>

//! The name by which hosts know how a picture comes onto a face.
namespace MekMixerHelper {

//! See `IconTransform::onFace`.
QImage getProcessPluginIcon(QImage const& image, QSize const& size, qreal devicePixelRatio = 1);

} // namespace MekMixerHelper
