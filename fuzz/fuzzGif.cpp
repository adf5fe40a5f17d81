// GIF files, read and converted. The input is the file.

#include "fuzz/Fuzz.h"
#include "uikit/pictures/GifConverter.h"
#include "uikit/pictures/GifFile.h"

#include <QFile>
#include <QTemporaryDir>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize kIcon{30, 20};

QByteArray contents(QString const& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void put(QString const& path, QByteArrayView bytes)
{
    QFile file(path);
    Fuzz::require(file.open(QIODevice::WriteOnly) && file.write(bytes.data(), bytes.size()) == bytes.size(),
        "there is room");
}

bool isSame(GifFile::Frame const& a, GifFile::Frame const& b)
{
    return a.area == b.area && a.delay == b.delay && a.disposal == b.disposal &&
           a.transparent == b.transparent && a.interlaced == b.interlaced && a.colors == b.colors &&
           a.data == b.data;
}

//! What is written from its parts is read as it was.
void rewrite(GifFile const& file)
{
    QByteArray bytes = GifFile::head(file.canvas, file.loops);
    for (auto const& frame : file.frames) {
        bytes += GifFile::frame(frame);
    }
    bytes += GifFile::kEnd;
    auto const again = GifFile::read(bytes);
    Fuzz::require(again && again->canvas == file.canvas && again->loops == file.loops &&
                      std::ranges::equal(again->frames, file.frames, isSame),
        "a file of the same parts is the same");
}

//! Large pictures are allowed, but take their time.
bool isSmall(GifFile const& file)
{
    constexpr qint64 kMost = qint64{64} * 64;
    auto const isSmallFrame = [](GifFile::Frame const& frame) {
        return qint64{frame.area.width()} * frame.area.height() <= kMost;
    };
    return qint64{file.canvas.width()} * file.canvas.height() <= kMost && file.frames.size() <= 4 &&
           std::ranges::all_of(file.frames, isSmallFrame);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static QTemporaryDir const folder(u"/dev/shm/lumen-fuzz-XXXXXX"_s);
    static QString const from = folder.filePath(u"from.gif"_s);
    static QString const to = folder.filePath(u"to.gif"_s);

    auto const input = Fuzz::bytes(data, size);
    auto const file = GifFile::read(input);
    if (file) {
        rewrite(*file);
        if (!isSmall(*file)) {
            return 0;
        }
    }
    put(from, input);
    put(to, "as it was");
    if (!GifConverter::convert(from, to, kIcon)) {
        Fuzz::require(contents(to) == "as it was", "a failure leaves the destination as it was");
        return 0;
    }
    auto const converted = contents(to);
    auto const result = GifFile::read(converted);
    Fuzz::require(
        file && result && result->frames.size() == file->frames.size() && result->loops == file->loops,
        "the animation stays");
    Fuzz::require(result->canvas.boundedTo(kIcon) == result->canvas, "it fits");
    Fuzz::require(
        std::ranges::equal(result->frames, file->frames, {}, &GifFile::Frame::delay, &GifFile::Frame::delay),
        "delays stay");
    return 0;
}
