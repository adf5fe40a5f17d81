#pragma once

#include <QByteArray>
#include <QImage>
#include <QList>

#include <vector>

//! Chooses the colours of a GIF frame and redraws the frame in them.
//!
//! Fast enough to give each frame of an animation a table of its own: some milliseconds for a key face.
//! A picture of up to 255 colours keeps them exactly. Otherwise the colours are found by splitting the
//! picture's colours where the error is largest and then moving each to the middle of what it stands for.
//! No dithering: at 255 colours for a key face it costs more (noise that flickers, and larger files) than it
//! gains.
//!
//! An object keeps its working memory from picture to picture.
class GifColors
{
public:
    struct Picture
    {
        //! Entry 0 stands for "transparent" and is no colour; at least 1 and at most 256 entries.
        QList<QRgb> colors;
        //! One byte a pixel, row by row, without padding.
        QByteArray indexes;
    };

    //! \a image must be of Format_ARGB32. A pixel of alpha 0 becomes index 0, every other counts as opaque.
    Picture reduce(QImage const& image);

private:
    //! All pixels whose colours differ in the low bits only, and their mean colour.
    struct Bin
    {
        float count = 0;
        float channels[3] = {};
        quint8 index = 0;
    };
    struct Box
    {
        std::size_t begin = 0;
        std::size_t end = 0;
        double error = 0;
        int axis = 0;
        float middle = 0;
    };

    bool reduceExactly(QImage const& image, Picture& picture) const;
    void fillBins(QImage const& image);
    Box measured(std::size_t begin, std::size_t end) const;
    std::vector<Bin> splitBoxes();
    void assignNearest(std::vector<Bin>& colors);

    std::vector<quint32> binOfColor; // number of the bin plus one, 0 where no pixel has such a colour
    std::vector<Bin> bins;
    std::vector<quint32> order; // of the bins, so that a box is a range
};
