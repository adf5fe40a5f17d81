#pragma once

#include <QByteArray>
#include <QImage>
#include <QList>

//! Chooses the colours of a GIF frame and redraws the frame in them.
//!
//! Each frame gets a table of its own. A picture of up to 255 colours keeps them exactly; otherwise
//! ImageMagick reduces them, without dithering: at 255 colours for a key face that costs more (noise that
//! flickers, and larger files) than it gains.
namespace GifColors {

struct Picture
{
    //! Entry 0 stands for "transparent" and is no colour; at least 1 and at most 256 entries.
    QList<QRgb> colors;
    //! One byte a pixel, row by row, without padding.
    QByteArray indexes;
};

//! \a image must be of Format_ARGB32. A pixel of alpha 0 becomes index 0, every other counts as opaque.
//! Throws what Magick++ throws (no memory), as the whole of GifConverter's inside does.
Picture reduce(QImage const& image);

} // namespace GifColors
