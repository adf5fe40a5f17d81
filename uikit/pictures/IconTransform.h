#pragma once

#include <QImage>
#include <QSize>

//! How a still picture fills a key face.
namespace IconTransform {

//! Of every key face, in pixels.
constexpr QSize kFace{150, 108};

//! In the order in which they are offered; the numbers are the list's.
enum class Mode { Fill, Fit, Stretch, Tile, Center };

//! \a picture on a face of \a face pixels; a null picture gives a null image.
//! Fill and Stretch cover the face; the other modes leave what they do not cover transparent, or black where
//! the picture's format knows no transparency.
QImage apply(QImage const& picture, Mode mode, QSize const& face = kFace);

//! \a image centred on a transparent canvas of \a size. One that is larger in either dimension is first
//! scaled, ratio kept, until it covers the canvas, and loses what hangs over; a smaller one stays as it is. A
//! null image gives an empty canvas.
//!
//! \a size counts in logical pixels, as does the image's own size; the canvas has \a devicePixelRatio times
//! as many.
QImage onFace(QImage const& image, QSize const& size, qreal devicePixelRatio = 1);

//! The modes that scale the picture, so that its single pixels do not matter.
constexpr bool scales(Mode mode)
{
    return mode == Mode::Fill || mode == Mode::Fit || mode == Mode::Stretch;
}

} // namespace IconTransform
