#pragma once

#include <QByteArray>
#include <QPoint>
#include <QSize>

//! Bytes of an animated GIF (GIF89a, endless, 20 ms a frame) for tests; Qt cannot write one.
//!
//! Every frame is one colour: black, red, green, blue and again. \a frame and \a offset place the frames,
//! which may lie outside the canvas.
inline QByteArray tinyGif(QSize canvas, int frames, QSize frame = {}, QPoint offset = {})
{
    QByteArray gif;
    auto const word = [&gif](int value) {
        gif.append(static_cast<char>(value & 0xff)).append(static_cast<char>((value >> 8) & 0xff));
    };
    QSize const size = frame.isEmpty() ? canvas : frame;
    gif.append("GIF89a");
    word(canvas.width());
    word(canvas.height());
    // A table of 128 colours makes every code 8 bits wide as long as the code table is cleared often enough.
    gif.append('\xf6').append('\0').append('\0');
    QByteArray const palette = QByteArray::fromHex("000000ff000000ff000000ff");
    gif.append(palette).append(qsizetype{128} * 3 - palette.size(), '\x80');
    gif.append(QByteArray::fromHex("21ff0b4e45545343415045322e300301000000"));
    for (int i = 0; i < frames; ++i) {
        gif.append(QByteArray::fromHex("21f9040002000000")).append('\x2c');
        word(offset.x());
        word(offset.y());
        word(size.width());
        word(size.height());
        gif.append('\0').append('\x07');
        QByteArray codes;
        for (int left = size.width() * size.height(); left > 0; left -= 100) {
            codes.append('\x80').append(qMin(left, 100), static_cast<char>(i % 4));
        }
        codes.append('\x81');
        for (qsizetype at = 0; at < codes.size(); at += 255) {
            QByteArray const block = codes.mid(at, 255);
            gif.append(static_cast<char>(block.size())).append(block);
        }
        gif.append('\0');
    }
    return gif.append('\x3b');
}
