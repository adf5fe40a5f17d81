#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QRect>
#include <QSize>

#include <optional>

//! The block structure of a GIF file (GIF89a), without its pictures: what is needed to judge a file before a
//! decoder sees it, to hand a decoder one frame at a time, and to join frames into a file.
//!
//! Cheap: reading walks the blocks and neither decodes nor copies anything.
struct GifFile
{
    //! Reading stops after one more. A frame can be as short as 12 bytes, and the list of those of a large
    //! file would be seven times as large as the file.
    static constexpr qsizetype kMostFrames = 10'000;

    //! What happens to a frame's area before the next frame is drawn.
    enum class Disposal : quint8 { Unspecified = 0, Keep = 1, Background = 2, Previous = 3 };

    struct Frame
    {
        //! On the canvas, in pixels; may be empty and may reach outside the canvas.
        QRect area;
        //! In hundredths of a second.
        quint16 delay = 0;
        Disposal disposal = Disposal::Unspecified;
        //! Colour index that stands for "nothing drawn here".
        std::optional<quint8> transparent = std::nullopt;
        bool interlaced = false;
        //! The colour table in force, three bytes a colour, 2 to 256 colours, a power of two; may be empty.
        QByteArrayView colors = {};
        //! The LZW code size, the data blocks and their end mark.
        QByteArrayView data = {};
    };

    QSize canvas;
    //! How often the animation repeats, 0 for ever; nothing when the file does not say (it plays once).
    std::optional<quint16> loops;
    QList<Frame> frames;

    //! Reads \a bytes; the frames point into it. Nothing when it is no GIF file or stops within a block. A
    //! missing end mark and stray bytes between blocks are accepted, for players accept them too. Who gets
    //! more than `kMostFrames` frames knows that there are too many, and not how many.
    static std::optional<GifFile> read(QByteArrayView bytes);

    //! The parts of a file, to be written one after the other: one head, any number of frames, one `kEnd`.
    static QByteArray head(QSize canvas, std::optional<quint16> loops = std::nullopt);
    static QByteArray frame(Frame const& frame);
    static constexpr char kEnd = ';';
};
