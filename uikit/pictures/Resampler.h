#pragma once

#include <QImage>
#include <QSize>

#include <vector>

//! Scales pictures of one size to another with the kernels that ImageMagick takes when it is left to itself,
//! to within rounding of what its `resize` gives and in a fraction of the time: an animation has many frames.
//!
//! An opaque picture gets the Lanczos kernel of three lobes, which is sharp; one with holes gets the softer
//! kernel of Mitchell and Netravali (B = C = 1/3), which does not ring at their edges, and its colours count
//! as much as their pixels are opaque.
//!
//! Sources: C. E. Duchon, "Lanczos Filtering in One and Two Dimensions", 1979; D. P. Mitchell and A. N.
//! Netravali, "Reconstruction Filters in Computer Graphics", 1988.
class Resampler
{
public:
    //! Neither size may be empty.
    Resampler(QSize const& from, QSize const& to);

    //! \a picture has the size `from` and QImage::Format_RGBA8888, the result the same format; null when
    //! memory runs out. Any thread.
    QImage scaled(QImage const& picture) const;

private:
    //! What the pixels of a line, from \a first on, give to one pixel of the result.
    struct Tap
    {
        int first = 0;
        std::vector<float> weights;
    };
    using Taps = std::vector<Tap>;
    struct Kernel
    {
        double (*weight)(double x);
        double support; // pixels of the larger scale
    };

    static Taps taps(int from, int to, Kernel const& kernel);
    template <bool isOpaque>
    static void addLine(uchar const* line, float weight, std::vector<float>& sum);
    static void putPixel(std::vector<float> const& line, Tap const& tap, uchar* pixel);

    QSize size;
    Taps sharpColumns;
    Taps sharpRows;
    Taps softColumns;
    Taps softRows;
};
