#pragma once

#include "uikit/pictures/IconTransform.h"

#include <QImage>
#include <QPixmap>
#include <QSize>
#include <QString>

//! Reads picture files, for key faces, previews and the icon builder alike.
//!
//! Pictures come upright, as their file says. Of large JPEG photos whatever scales them gets an eighth of the
//! size, straight from the decoder: it takes a fraction of the time and looks the same on a key face. What is
//! missing, no picture or too large is logged and comes back null.
//!
//! An object keeps the picture that is being edited, so that trying the modes does not decode it again.
class PictureFile
{
public:
    //! Largest still picture that is decoded, in pixels.
    static constexpr qint64 kMaxPixels = qint64{64} * 1024 * 1024;

    //! How a picture meets the size that it is shown in: as `IconTransform::onFace` has it, or stretched.
    enum class Fit { Face, Stretch };

    //! Width and height that the file's header states; nothing is decoded. For an animation, what all its
    //! frames are drawn on. Invalid when the file is missing, a folder, not a picture, empty, or beyond
    //! \a maxPixels.
    static QSize size(QString const& path, qint64 maxPixels = kMaxPixels);

    //! The suffix that tells what the file is: its own, unless its content is a picture of another kind; then
    //! "gif", or "png" for all still pictures.
    static QString suffix(QString const& path);

    //! Copies a file that is to be written once more, which the plain copy of a read-only file could not be.
    //! False when it cannot be copied or \a copy is there already.
    static bool copy(QString const& source, QString const& copy);

    //! Another one when the file at \a path has changed; resources stay as they are.
    static QString identity(QString const& path);

    //! The still picture at \a path for a screen of \a devicePixelRatio. Drawings (SVG), and pictures that
    //! have one of twice the size beside them ("name@2x.png"), come sharp. Drawings are drawn in the size
    //! \a drawing (px before the ratio), by default their own.
    static QImage sharp(QString const& path, qreal devicePixelRatio, QSize const& drawing = {});

    //! The same in \a size (px before the ratio). Keys and panels switch between the same few pictures all
    //! the time: they come from `QPixmapCache` until the file changes, in 5 us instead of the 0.4 ms that
    //! decoding and scaling one takes.
    static QPixmap pixmap(QString const& path, QSize const& size, qreal devicePixelRatio, Fit fit);

    //! The still picture at \a path, as large as \a mode needs it.
    QImage read(QString const& path, IconTransform::Mode mode);

private:
    QString current; // its identity
    QImage full;
    QImage eighth;
};
