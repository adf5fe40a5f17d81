#pragma once

#include <QImage>
#include <QPixmap>
#include <QSize>
#include <QString>

//! How the kit brings pictures onto faces.
namespace MekMixerHelper {

//! \a image centred on a transparent canvas of \a size. One that is larger in either dimension is first
//! scaled, ratio kept, until it covers the canvas, and loses what hangs over; a smaller one stays as it is. A
//! null image gives an empty canvas.
//!
//! \a size counts in logical pixels, as does the image's own size; the canvas has \a devicePixelRatio times
//! as many.
QImage getProcessPluginIcon(QImage const& image, QSize const& size, qreal devicePixelRatio = 1);

//! The still picture in the file \a path, upright; drawings (SVG), and pictures that have one of twice the
//! size beside them ("name@2x.png"), come sharp for \a devicePixelRatio. Null when it is missing, unreadable
//! or too large, which is logged.
QImage readPicture(QString const& path, qreal devicePixelRatio);

//! The same, as `getProcessPluginIcon` fits it.
QPixmap readIcon(QString const& path, QSize const& size, qreal devicePixelRatio);

} // namespace MekMixerHelper
