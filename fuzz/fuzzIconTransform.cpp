// Pictures on key faces. The input is mode, format, ratio of pixels, sizes of picture and face, then pixels.

#include "fuzz/Fuzz.h"
#include "uikit/pictures/IconTransform.h"

#include <cstring>

using namespace IconTransform;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    constexpr std::size_t kHead = 9;
    if (size < kHead) {
        return 0;
    }
    auto const word = [data](std::size_t at) { return data[at] | ((data[at + 1] & 0x0F) << 8); };
    if (word(3) * word(5) > 1 << 14) {
        return 0; // takes its time
    }
    auto const mode = Mode{data[0] % 5};
    auto const format = static_cast<QImage::Format>(data[1] % QImage::NImageFormats);
    QImage picture(word(3), word(5), format);
    QSize const face(data[7] + 1, data[8] + 1);
    if (format == QImage::Format_Indexed8 || picture.depth() == 1) {
        // No reader gives less than a colour, but indexes may be beyond the last.
        picture.setColorTable(QList<QRgb>(data[2] + 1, 0x80123456));
    }
    picture.fill(data[2]);
    if (!picture.isNull()) {
        auto const count = qMin(static_cast<qsizetype>(size - kHead), picture.sizeInBytes());
        std::memcpy(picture.bits(), data + kHead, static_cast<std::size_t>(count));
        picture.setDevicePixelRatio(1 + data[2] % 3);
    }

    QImage const shown = apply(picture, mode, face);
    Fuzz::require(shown.isNull() == picture.isNull(), "a picture is shown");
    Fuzz::require(
        shown.isNull() || (shown.size() == face && shown.devicePixelRatio() == 1), "it fills the face");
    return 0;
}
