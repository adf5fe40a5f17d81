#include "uikit/pictures/GifColors.h"

#include <QHash>

#include <Magick++.h>

namespace {

constexpr std::size_t kMostColors = 255;

//! The same picture with so few colours that a table holds them.
QImage reduced(QImage const& image)
{
    auto const columns = static_cast<std::size_t>(image.width());
    auto const rows = static_cast<std::size_t>(image.height());
    QImage pixels = image.convertToFormat(QImage::Format_RGBX8888);
    Magick::Image picture(columns, rows, "RGBA", Magick::CharPixel, pixels.constBits());
    picture.quantizeDither(false);
    picture.quantizeColors(kMostColors);
    picture.quantize();
    picture.write(0, 0, columns, rows, "RGBA", Magick::CharPixel, pixels.bits());
    return pixels.convertToFormat(QImage::Format_RGB32);
}

} // namespace

GifColors::Picture GifColors::reduce(QImage const& image)
{
    Picture picture{{qRgb(0, 0, 0)}, QByteArray(qsizetype{image.width()} * image.height(), 0)};
    QHash<QRgb, char> numbers;
    auto const fill = [&](QImage const& shown) {
        picture.colors.resize(1);
        numbers.clear();
        auto* index = picture.indexes.data();
        for (int y = 0; y < image.height(); ++y) {
            auto const* alpha = reinterpret_cast<QRgb const*>(image.constScanLine(y));
            auto const* color = reinterpret_cast<QRgb const*>(shown.constScanLine(y));
            for (int x = 0; x < image.width(); ++x, ++index) {
                if (qAlpha(alpha[x]) == 0) {
                    *index = 0;
                    continue;
                }
                auto const wanted = color[x] | 0xFF000000U;
                auto found = numbers.constFind(wanted);
                if (found == numbers.constEnd()) {
                    if (picture.colors.size() > static_cast<qsizetype>(kMostColors)) {
                        return false;
                    }
                    found = numbers.insert(wanted, static_cast<char>(picture.colors.size()));
                    picture.colors.append(wanted);
                }
                *index = *found;
            }
        }
        return true;
    };
    if (!fill(image)) {
        fill(reduced(image));
    }
    return picture;
}
