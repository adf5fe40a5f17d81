#include "uikit/pictures/GifConverter.h"

#include "uikit/pictures/GifColors.h"
#include "uikit/pictures/GifFile.h"

#include <QColor>
#include <QDebug>
#include <QFile>
#include <QImage>
#include <QSaveFile>

#include <algorithm>
#include <deque>
#include <exception>
#include <future>
#include <list>
#include <Magick++.h>
#include <mutex>
#include <new>
#include <stdexcept>
#include <utility>

namespace {

//! A GIF file has two bytes for the length of a side.
constexpr int kTooLong = 65'536;

qint64 area(QSize const& size)
{
    return qint64{size.width()} * size.height();
}

//! Where memory runs out Qt hands out a picture without pixels.
QImage complete(QImage image)
{
    if (image.isNull()) {
        throw std::bad_alloc();
    }
    return image;
}

//! Once, by whoever comes first. ImageMagick bears it that the host uses it as well and has done so before.
void prepareMagick()
{
    static std::once_flag once;
    std::call_once(once, [] { Magick::InitializeMagick(nullptr); });
}

QImage toImage(Magick::Image picture)
{
    auto image = complete(QImage(
        static_cast<int>(picture.columns()), static_cast<int>(picture.rows()), QImage::Format_RGBA8888));
    picture.write(0, 0, picture.columns(), picture.rows(), "RGBA", Magick::CharPixel, image.bits());
    return image;
}

//! The frame's own picture, whatever its place on the canvas.
QImage decoded(GifFile::Frame frame)
{
    frame.area.moveTo(0, 0);
    QByteArray const file = GifFile::head(frame.area.size()) + GifFile::frame(frame) + GifFile::kEnd;
    std::list<Magick::Image> pictures;
    Magick::readImages(&pictures, Magick::Blob(file.constData(), static_cast<std::size_t>(file.size())));
    auto image = pictures.empty() ? QImage() : toImage(pictures.front());
    if (image.size() != frame.area.size()) {
        throw std::runtime_error("has a frame that cannot be read");
    }
    return image;
}

//! The animation as it is shown: each frame drawn over what its predecessors left.
class Canvas
{
public:
    explicit Canvas(QSize const& size) : image(complete(QImage(size, QImage::Format_RGBA8888)))
    {
        image.fill(Qt::transparent);
    }

    //! \a picture is the frame's own.
    QImage const& draw(GifFile::Frame const& frame, QImage const& picture)
    {
        image.detach(); // from the one that is being scaled
        image = complete(std::move(image));
        dispose();
        last = frame.area & image.rect();
        disposal = frame.disposal;
        if (!last.isEmpty()) {
            kept = disposal == GifFile::Disposal::Previous ? complete(image.copy(last)) : QImage();
            drawOver(picture, frame.area.topLeft());
        }
        return image;
    }

private:
    static QRgb* line(QImage& target, int y) { return reinterpret_cast<QRgb*>(target.scanLine(y)); }

    void dispose()
    {
        for (int y = 0; y < last.height(); ++y) {
            auto* to = line(image, last.y() + y) + last.x();
            if (disposal == GifFile::Disposal::Background) {
                std::fill_n(to, last.width(), QRgb{0});
            } else if (disposal == GifFile::Disposal::Previous) {
                std::copy_n(line(kept, y), last.width(), to);
            }
        }
    }

    void drawOver(QImage const& picture, QPoint corner)
    {
        for (int y = last.top(); y <= last.bottom(); ++y) {
            auto const* from = picture.constScanLine(y - corner.y()) + 4 * qsizetype{last.x() - corner.x()};
            auto* to = image.scanLine(y) + 4 * qsizetype{last.x()};
            for (auto const* end = to + 4 * qsizetype{last.width()}; to != end; to += 4, from += 4) {
                if (from[3] != 0) {
                    std::copy_n(from, 4, to);
                }
            }
        }
    }

    QImage image;
    QImage kept;
    QRect last;
    GifFile::Disposal disposal = GifFile::Disposal::Keep;
};

//! GIF knows no half-transparent pixels: each becomes opaque or wholly transparent, and those all alike.
QImage resized(QImage const& shown, QSize const& size)
{
    auto image = complete(shown.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
            .convertToFormat(QImage::Format_ARGB32));
    for (int y = 0; y < image.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            line[x] = qAlpha(line[x]) < 128 ? 0 : line[x] | 0xFF000000U;
        }
    }
    return image;
}

//! \a canvas as large as fits into \a box, which may leave one side open with 0; rounded as ImageMagick does.
QSize fitted(QSize const& canvas, QSize const& box)
{
    double const wide = static_cast<double>(box.width()) / canvas.width();
    double const high = static_cast<double>(box.height()) / canvas.height();
    double const scale = box.width() == 0 ? high : box.height() == 0 ? wide : std::min(wide, high);
    return (QSizeF(canvas) * scale)
        .boundedTo(QSizeF(kTooLong, kTooLong)) // in numbers that an int can hold
        .toSize()
        .expandedTo({1, 1});
}

//! A GIF file of one frame. Left to itself ImageMagick would choose the colours, which can take it half a
//! second, so it is given a picture that has them already.
QByteArray encoded(GifColors::Picture const& picture, QSize const& size)
{
    auto const columns = static_cast<std::size_t>(size.width());
    auto const rows = static_cast<std::size_t>(size.height());
    Magick::Image image(Magick::Geometry(columns, rows), Magick::Color("black"));
    image.magick("GIF");
    image.quantizeDither(false);
    image.colorMapSize(static_cast<std::size_t>(picture.colors.size()));
    for (qsizetype i = 0; i < picture.colors.size(); ++i) {
        QColor const color(picture.colors[i]);
        image.colorMap(
            static_cast<std::size_t>(i), Magick::ColorRGB(color.redF(), color.greenF(), color.blueF()));
    }
    auto* pixels = image.setPixels(0, 0, columns, rows);
#if MagickLibVersion >= 0x700
    for (auto const index : picture.indexes) {
        MagickCore::SetPixelIndex(image.constImage(), static_cast<uchar>(index), pixels);
        pixels += MagickCore::GetPixelChannels(image.constImage());
    }
#else
    Q_UNUSED(pixels)
    auto* indexes = image.getIndexes();
    for (auto const index : picture.indexes) {
        *indexes++ = static_cast<uchar>(index);
    }
#endif
    image.syncPixels();
    std::list<Magick::Image> frames{image};
    Magick::Blob file;
    Magick::writeImages(frames.begin(), frames.end(), &file, true);
    return {static_cast<char const*>(file.data()), static_cast<qsizetype>(file.length())};
}

//! Writes the frames of a file, always one behind, since what comes next decides what becomes of a frame.
class Writer
{
public:
    Writer(QIODevice& target, std::optional<quint16> loopCount) : device(target), loops(loopCount) {}

    void add(QImage const& shown, quint16 delay)
    {
        bool const isFirst = previous.isNull();
        if (isFirst) {
            device.write(GifFile::head(shown.size(), loops));
        } else {
            flush(opensHole(shown) ? GifFile::Disposal::Background : GifFile::Disposal::Keep);
        }

        bool const isWhole = isFirst || pending.disposal == GifFile::Disposal::Background;
        bytes = encoded(GifColors::reduce(isWhole ? shown : changes(shown)), shown.size());
        // ImageMagick has just written it, in one piece.
        pending = GifFile::read(bytes).value().frames.front();
        pending.delay = delay;
        pending.transparent = 0;
        previous = shown;
    }
    void end()
    {
        flush(GifFile::Disposal::Keep);
        device.putChar(GifFile::kEnd);
    }

private:
    void flush(GifFile::Disposal disposal)
    {
        pending.disposal = disposal;
        device.write(GifFile::frame(pending));
    }

    template <typename Visit>
    void forEachPixel(QImage const& shown, Visit visit) const
    {
        for (int y = 0; y < shown.height(); ++y) {
            auto const* before = reinterpret_cast<QRgb const*>(previous.constScanLine(y));
            auto const* now = reinterpret_cast<QRgb const*>(shown.constScanLine(y));
            for (int x = 0; x < shown.width(); ++x) {
                visit(x, y, before[x], now[x]);
            }
        }
    }
    //! A pixel that was there and is no more cannot be drawn: the canvas has to be cleared before.
    bool opensHole(QImage const& shown) const
    {
        bool opens = false;
        forEachPixel(shown, [&](int, int, QRgb before, QRgb now) { opens |= now == 0 && before != 0; });
        return opens;
    }
    //! Keeping what has not changed makes files smaller and, as every frame has its own colours, keeps
    //! pictures at rest from flickering.
    QImage changes(QImage const& shown) const
    {
        QImage changed = complete(shown.copy());
        forEachPixel(shown, [&](int x, int y, QRgb before, QRgb now) {
            if (before == now) {
                reinterpret_cast<QRgb*>(changed.scanLine(y))[x] = 0;
            }
        });
        return changed;
    }

    QIODevice& device;
    std::optional<quint16> loops;
    QImage previous;
    QByteArray bytes;
    GifFile::Frame pending; // points into bytes
};

bool isWithinLimits(GifFile const& file)
{
    if (file.frames.size() > GifFile::kMostFrames) {
        return false;
    }
    qint64 const canvas = area(file.canvas);
    qint64 largest = canvas;
    qint64 all = 0;
    for (auto const& frame : file.frames) {
        qint64 const pixels = area(frame.area.size());
        largest = std::max(largest, pixels);
        all += std::max(canvas, pixels);
    }
    return largest <= GifConverter::kMaxPixels && all <= GifConverter::kMaxTotalPixels;
}

bool refuse(QString const& file, char const* reason)
{
    qWarning() << "[GifConverter][convert]" << file << reason;
    return false;
}

//! A thread for each piece of work costs next to nothing, and a pool would wait for ever for one that cannot
//! be had.
template <typename Work>
std::future<QImage> run(Work&& work)
{
    return std::async(std::launch::async, std::forward<Work>(work));
}

//! The same as `convert`, and throws what ImageMagick and the allocation of memory do.
bool convertOrThrow(
    QString const& source, QString const& destination, QSize const& size, GifConverter::Step const& step)
{
    QFile input(source);
    if (!input.open(QIODevice::ReadOnly)) {
        return false;
    }
    if (input.size() > GifConverter::kMaxFileBytes) {
        return refuse(source, "is too large");
    }
    QByteArray const bytes = input.read(input.size());
    input.close();
    auto const file = GifFile::read(bytes);
    if (!file || file->frames.isEmpty() || file->canvas.isEmpty()) {
        return refuse(source, "is not a complete GIF file");
    }
    if (!isWithinLimits(*file)) {
        return refuse(source, "is too large");
    }
    bool const isSize = qMin(size.width(), size.height()) >= 0 && !size.isNull();
    QSize const target = isSize ? fitted(file->canvas, size) : QSize();
    if (!isSize || area(target) > GifConverter::kMaxPixels ||
        qMax(target.width(), target.height()) >= kTooLong) {
        return refuse(destination, "cannot have this size");
    }

    QSaveFile output(destination);
    if (!output.open(QIODevice::WriteOnly)) {
        return refuse(destination, "cannot be written");
    }
    prepareMagick();
    Canvas canvas(file->canvas);
    Writer writer(output, file->loops);
    // Two frames are decoded ahead and one is scaled while another is drawn or written.
    constexpr qsizetype kAhead = 2;
    // Each waits for its work at its end, so nothing above goes before.
    std::deque<std::future<QImage>> decoding;
    std::deque<std::pair<std::future<QImage>, quint16>> scaling;
    auto const decode = [&](qsizetype number) {
        if (number < file->frames.size()) {
            decoding.push_back(run([&frame = file->frames[number]] { return decoded(frame); }));
        }
    };
    auto const writeFirst = [&] {
        writer.add(scaling.front().first.get(), scaling.front().second);
        scaling.pop_front();
    };
    for (qsizetype number = 0; number < kAhead; ++number) {
        decode(number);
    }
    for (qsizetype done = 0; done < file->frames.size(); ++done) {
        if (step && !step(done, file->frames.size())) {
            return false;
        }
        auto const& frame = file->frames[done];
        QImage const picture = decoding.front().get();
        decoding.pop_front();
        decode(done + kAhead);
        scaling.emplace_back(
            run([&, shown = canvas.draw(frame, picture)] { return resized(shown, target); }), frame.delay);
        if (scaling.size() > 1) {
            writeFirst();
        }
    }
    while (!scaling.empty()) {
        writeFirst();
    }
    writer.end();
    return output.commit() || refuse(destination, "cannot be written");
}

} // namespace

bool GifConverter::convert(
    QString const& source, QString const& destination, QSize const& size, Step const& step)
{
    try {
        return convertOrThrow(source, destination, size, step);
    } catch (std::exception const& failure) {
        return refuse(source, failure.what());
    }
}
