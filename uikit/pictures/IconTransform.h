#pragma once

#include <QDateTime>
#include <QImage>
#include <QSize>
#include <QString>

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

//! The modes that scale the picture, so that its single pixels do not matter.
constexpr bool scales(Mode mode)
{
    return mode == Mode::Fill || mode == Mode::Fit || mode == Mode::Stretch;
}

} // namespace IconTransform

//! Reads the picture that is being edited, and keeps it, so that trying the modes does not decode it again.
//!
//! Of large JPEG photos the scaling modes get an eighth of the size, straight from the decoder: it takes a
//! fraction of the time and looks the same on a key face. Pictures are turned upright as their file says.
class IconPicture
{
public:
    //! Largest picture that is decoded, in pixels.
    static constexpr qint64 kMaxPixels = qint64{64} * 1024 * 1024;

    //! Null when the file is missing, unreadable, no picture, or too large; all of these are logged.
    QImage read(QString const& path, IconTransform::Mode mode);

private:
    QString file;
    QDateTime changed;
    QImage full;
    QImage eighth;
};
