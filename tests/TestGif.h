#pragma once

#include "uikit/pictures/GifFile.h"

#include <QByteArray>
#include <QList>
#include <QRect>
#include <QSize>

#include <functional>
#include <optional>

//! Makes GIF files of any structure, without an encoder.
namespace TestGif {

constexpr QSize kCanvas{40, 30};

//! 64 colours that lie far apart.
inline QByteArray colors(int shift = 0)
{
    QByteArray table;
    for (int i = 0; i < 64; ++i) {
        for (int const part : {i >> 4, (i >> 2) & 3, i & 3}) {
            table.append(static_cast<char>((part * 80 + shift) & 0xFF));
        }
    }
    return table;
}

//! The pixels as a GIF decoder reads them, in codes that never grow: compression is none of our concern here.
inline QByteArray pixels(QSize const& size, std::function<int(int x, int y)> const& color)
{
    QByteArray codes;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            if (codes.size() % 100 == 0) {
                codes.append('\x80');
            }
            codes.append(static_cast<char>(color(x, y)));
        }
    }
    codes.append('\x81');
    QByteArray data("\x07");
    for (qsizetype i = 0; i < codes.size(); i += 255) {
        auto const block = codes.sliced(i, qMin<qsizetype>(255, codes.size() - i));
        data.append(static_cast<char>(block.size())).append(block);
    }
    return data.append('\0');
}

struct Drawn
{
    QRect area{{}, kCanvas};
    GifFile::Disposal disposal = GifFile::Disposal::Keep;
    quint16 delay = 4;
    std::optional<quint8> transparent = std::nullopt;
    int shift = 0;
    bool interlaced = false;
};

inline QByteArray gif(QList<Drawn> const& frames, std::optional<quint16> loops = 0, QSize canvas = kCanvas)
{
    QByteArray file = GifFile::head(canvas, loops);
    int number = 0;
    for (auto const& drawn : frames) {
        ++number;
        auto const table = colors(drawn.shift);
        auto const data =
            pixels(drawn.area.size(), [&](int x, int y) { return (x / 3 + y / 2 * 5 + number * 7) % 64; });
        file += GifFile::frame({.area = drawn.area,
            .delay = drawn.delay,
            .disposal = drawn.disposal,
            .transparent = drawn.transparent,
            .interlaced = drawn.interlaced,
            .colors = table,
            .data = data});
    }
    return file + GifFile::kEnd;
}

//! Frames of one colour each, the first black and the others red; \a area may lie outside the canvas.
inline QByteArray flat(QSize canvas, int frames, QRect area = {})
{
    auto const table = QByteArray::fromHex("000000ff0000").repeated(32);
    area = area.isNull() ? QRect({}, canvas) : area;
    QByteArray file = GifFile::head(canvas, 0);
    for (int i = 0; i < frames; ++i) {
        auto const data = pixels(area.size(), [i](int, int) { return qMin(i, 1); });
        file += GifFile::frame({.area = area, .delay = 2, .colors = table, .data = data});
    }
    return file + GifFile::kEnd;
}

} // namespace TestGif
