#include "tests/TestFolder.h"
#include "tests/TestGif.h"
#include "uikit/pictures/GifConverter.h"
#include "uikit/pictures/GifFile.h"

#include <QDir>
#include <QImageReader>
#include <QRegularExpression>
#include <QTest>

#include <array>
#include <cmath>
#include <list>
#include <Magick++.h>

#ifdef Q_OS_LINUX
#include <sys/resource.h>
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;

namespace {

using namespace TestGif;
using Disposal = GifFile::Disposal;

using Frames = std::list<Magick::Image>;

Frames read(QByteArray const& file)
{
    Frames frames;
    Magick::readImages(&frames, Magick::Blob(file.constData(), static_cast<std::size_t>(file.size())));
    return frames;
}

QByteArray write(Frames& frames)
{
    Magick::Blob file;
    Magick::writeImages(frames.begin(), frames.end(), &file, true);
    return {static_cast<char const*>(file.data()), static_cast<qsizetype>(file.length())};
}

//! With each pixel opaque or wholly transparent.
QImage withoutHiddenColors(QImage image)
{
    image.convertTo(QImage::Format_ARGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            image.setPixel(x, y, qAlpha(image.pixel(x, y)) < 128 ? 0 : image.pixel(x, y) | 0xFF000000U);
        }
    }
    return image;
}

//! What is seen, frame by frame, resized as ImageMagick does it left to itself.
Frames played(QByteArray const& file, QSize const& size = {})
{
    Frames frames = read(file);
    Frames whole;
    Magick::coalesceImages(&whole, frames.begin(), frames.end());
    for (auto& frame : whole) {
        if (size.isValid()) {
            frame.resize(Magick::Geometry(
                static_cast<std::size_t>(size.width()), static_cast<std::size_t>(size.height())));
        }
    }
    return whole;
}

QList<QImage> shown(Frames frames)
{
    QList<QImage> images;
    for (auto& frame : frames) {
        QImage image(
            static_cast<int>(frame.columns()), static_cast<int>(frame.rows()), QImage::Format_RGBA8888);
        frame.write(0, 0, frame.columns(), frame.rows(), "RGBA", Magick::CharPixel, image.bits());
        images.append(withoutHiddenColors(image));
    }
    return images;
}

double distance(QList<QImage> const& got, QList<QImage> const& wanted)
{
    double squares = 0;
    for (qsizetype i = 0; i < wanted.size(); ++i) {
        for (qsizetype at = 0; at < wanted[i].sizeInBytes(); ++at) {
            squares += std::pow(got[i].constBits()[at] - wanted[i].constBits()[at], 2);
        }
    }
    return squares;
}

QByteArray get(QString const& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class tst_GifConverter : public QObject
{
    Q_OBJECT

private:
    QString path(QString const& name) const { return folder.path(name); }

    TestFolder folder;

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(u".?"_s)); }

    void keepsTheAnimation_data()
    {
        using QTest::newRow;
        QTest::addColumn<QByteArray>("file");
        QRect const part(5, 4, 20, 15);
        quint8 const clear = 9;
        auto const cleared = Disposal::Background;
        auto const undrawn = Disposal::Previous;
        newRow("one frame") << gif({{}});
        newRow("once, old signature") << gif({{}, {}}, std::nullopt).replace("GIF89a", "GIF87a");
        newRow("three times, delays") << gif({{.delay = 0}, {.delay = 1}, {.delay = 65535}, {.delay = 7}}, 3);
        newRow("nothing moves") << gif({{.shift = 1}, {.area = {0, 0, 1, 1}, .transparent = 12}});
        newRow("parts drawn over") << gif({{}, {.area = part}, {.area = part.translated(9, 8)}});
        newRow("own colours") << gif({{}, {.area = part, .shift = 40}, {.shift = 17}});
        newRow("interlaced") << gif({{.interlaced = true}, {.area = part, .interlaced = true}});
        newRow("transparent") << gif(
            {{.transparent = clear}, {.transparent = clear}, {.transparent = clear}});
        newRow("holes that open") << gif({{.disposal = cleared},
            {.area = part, .disposal = cleared, .transparent = clear}, {.area = part}, {}});
        newRow("undrawn again") << gif({{}, {.area = part, .disposal = undrawn},
            {.area = {0, 0, 4, 4}, .disposal = undrawn}, {.area = {9, 9, 9, 9}}});
        newRow("undrawn first frame") << gif({{.area = part, .disposal = undrawn, .transparent = clear},
            {.area = {1, 1, 9, 9}, .transparent = clear}});
        newRow("partly off the canvas") << gif({{}, {.area = {30, 20, 30, 30}}, {.area = {35, 0, 9, 9}}});
        newRow("no end mark") << gif({{}, {}}).chopped(1);
        newRow("stray bytes") << gif({{}, {}}).chopped(1).append(3, '\0') + ";and more";
    }

    //! At its own size an animation of few colours must come out as it went in, pixel for pixel.
    void keepsTheAnimation()
    {
        QFETCH(QByteArray, file);
        folder.file(u"a.gif"_s, file);
        QVERIFY(GifConverter::convert(path(u"a.gif"_s), path(u"b.gif"_s), kCanvas));

        auto const result = get(path(u"b.gif"_s));
        Frames const before = read(file);
        Frames const after = read(result);
        auto const wanted = shown(played(file));
        QCOMPARE(shown(played(result)), wanted);
        for (auto a = after.begin(), b = before.begin(); a != after.end(); ++a, ++b) {
            QCOMPARE(a->animationDelay(), b->animationDelay());
        }

        // The player that shows icons agrees.
        QImageReader player(path(u"b.gif"_s));
        QCOMPARE(player.loopCount(), QImageReader(path(u"a.gif"_s)).loopCount());
        for (auto const& image : wanted) {
            QCOMPARE(withoutHiddenColors(player.read()), image);
        }
    }

    void resizesAsWellAsImageMagick()
    {
        // A ball over a shaded ground, at the second frame beside a hole: the mean of what lies in each
        // pixel.
        auto const draw = [](int i, QSize const& size) {
            constexpr int kSamples = 8;
            QImage image(size, QImage::Format_RGBA8888);
            for (int y = 0; y < size.height(); ++y) {
                for (int x = 0; x < size.width(); ++x) {
                    std::array<int, 4> sum{};
                    for (int sample = 0; sample < kSamples * kSamples; ++sample) {
                        int const row = sample / kSamples;
                        int const column = sample % kSamples;
                        double const u = (x + (column + 0.5) / kSamples) * 64 / size.width();
                        double const v = (y + (row + 0.5) / kSamples) * 48 / size.height();
                        double const r = std::hypot(u - 20 - 9 * i, v - 20) / 20;
                        QColor const color = r < 1 ? QColor(int(255 * r), 90, int(200 - 150 * r))
                                             : i == 1 && u > 45
                                                 ? QColor(0, 0, 0, 0)
                                                 : QColor(int(3 * u), int(5 * v), int(255 - 2 * u - v));
                        sum[0] += color.red() * color.alpha() / 255;
                        sum[1] += color.green() * color.alpha() / 255;
                        sum[2] += color.blue() * color.alpha() / 255;
                        sum[3] += color.alpha() / 255;
                    }
                    int const seen = qMax(sum[3], 1);
                    bool const isOpaque = 2 * sum[3] >= kSamples * kSamples;
                    image.setPixel(x, y, isOpaque ? qRgb(sum[0] / seen, sum[1] / seen, sum[2] / seen) : 0);
                }
            }
            return image;
        };
        Frames frames;
        for (int i = 0; i < 2; ++i) {
            frames.emplace_back(64, 48, "RGBA", Magick::CharPixel, draw(i, {64, 48}).constBits())
                .magick("GIF");
        }
        auto const file = write(frames);
        auto resized = played(file, {30, 20});
        QSize const size = shown(resized).first().size();
        QList const wanted{draw(0, size), draw(1, size)};
        auto const floor = shown(played(write(resized)));

        // In place.
        folder.file(u"a.gif"_s, file);
        QVERIFY(GifConverter::convert(path(u"a.gif"_s), path(u"a.gif"_s), {30, 20}));
        auto const result = shown(played(get(path(u"a.gif"_s))));
        QCOMPARE(result.size(), 2);
        QCOMPARE(result[1].size(), wanted[1].size());
        for (qsizetype i = 0; i < result.size(); ++i) {
            QCOMPARE(result[i].createAlphaMask(), floor[i].createAlphaMask());
        }
        QCOMPARE_LE(distance(result, wanted), distance(floor, wanted));
    }

    void refuses_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QString>("reason");
        auto const good = gif({{}, {}});
        auto const notGif = u"is not a complete GIF file"_s;
        auto const tooLarge = u"is too large"_s;
        auto const row = [](char const* name, QByteArray const& file, QString const& reason,
                             QSize size = kCanvas) { QTest::newRow(name) << file << size << reason; };
        auto const drawn = [](GifFile::Frame const& frame, int times = 1) {
            return GifFile::head(kCanvas) + GifFile::frame(frame).repeated(times) + GifFile::kEnd;
        };
        row("something else", "\x89PNG\r\n\x1a\n", notGif);
        row("empty", {}, notGif);
        row("a head only", good.first(13), notGif);
        row("cut within the colours", good.first(100), notGif);
        row("cut within the pixels", good.chopped(20), notGif);
        row("gigantic canvas", gif({{}}, 0, {65'535, 65'535}), tooLarge);
        row("no canvas", gif({{}}, 0, {0, 30}), notGif);
        auto frame = GifFile::read(good)->frames.front();
        QByteArray const damaged("\x07\x03zzz\0", 6);
        row("damaged pixels", drawn({.area = frame.area, .colors = frame.colors, .data = damaged}), {});
        frame.area = {0, 0, 65'535, 65'535};
        row("gigantic frame", drawn(frame), tooLarge);
        frame.area = {0, 0, 3000, 3000};
        row("more pixels than an animation has", drawn(frame, 445), tooLarge);
        frame.area = {0, 0, 0, 1};
        row("empty frame", drawn(frame), {});
        frame.area = {0, 0, 1, 1};
        row("endless", drawn(frame, 10'001), tooLarge);
        for (auto const size : {QSize(), QSize(0, 0), QSize(60'000, 60'000), QSize(0, 2'000'000'000)}) {
            row(qPrintable(u"to %1 x %2 pixels"_s.arg(size.width()).arg(size.height())), good,
                u"cannot have this size"_s, size);
        }
    }

    void refuses()
    {
        QFETCH(QByteArray, file);
        QFETCH(QSize, size);
        QFETCH(QString, reason);
        TestFolder place;
        auto const target = place.path(u"icon.gif"_s);
        folder.file(u"a.gif"_s, file);
        place.file(u"icon.gif"_s, "as it was");
        QTest::ignoreMessage(
            QtWarningMsg, QRegularExpression(u"^\\[GifConverter\\]\\[convert\\].*"_s + reason));
        QVERIFY(!GifConverter::convert(path(u"a.gif"_s), target, size));
        QCOMPARE(get(target), "as it was");
        QCOMPARE(QDir(place.path()).entryList(QDir::Files), QStringList(u"icon.gif"_s));
    }

    void takesNoMoreMemoryThanThePictureNeeds()
    {
#ifdef Q_OS_LINUX
        auto const source = folder.file(u"a.gif"_s, gif({{}, {}, {}}));
        QVERIFY(GifConverter::convert(source, path(u"b.gif"_s), {30, 20})); // what is set up once
        rlimit limit{};
        QCOMPARE(getrlimit(RLIMIT_AS, &limit), 0);
        auto const pages = get(u"/proc/self/statm"_s).split(' ').first().toULongLong();
        constexpr rlim_t kSpare = 256ULL << 20; // most of it for the stacks and heaps of threads
        rlimit const tight{pages * rlim_t(sysconf(_SC_PAGESIZE)) + kSpare, limit.rlim_max};
        QCOMPARE(setrlimit(RLIMIT_AS, &tight), 0);
        bool const isConverted = GifConverter::convert(source, path(u"b.gif"_s), {30, 20});
        setrlimit(RLIMIT_AS, &limit);
        QVERIFY(isConverted);
#endif
    }

    void stopsWithoutATrace()
    {
        TestFolder place;
        auto const target = place.path(u"icon.gif"_s);
        auto const source = folder.file(u"a.gif"_s, gif({{}, {}, {}}));
        QList<qsizetype> steps;
        QVERIFY(!GifConverter::convert(source, target, kCanvas, [&](qsizetype done, qsizetype all) {
            steps << done << all;
            return done < 2;
        }));
        QCOMPARE(steps, (QList<qsizetype>{0, 3, 1, 3, 2, 3}));
        QVERIFY(QDir(place.path()).isEmpty());

        // Nothing to read, and nowhere to write.
        QVERIFY(!GifConverter::convert(path(u"missing.gif"_s), target, kCanvas));
        QVERIFY(!GifConverter::convert(place.path(), target, kCanvas));
        for (auto const& nowhere : {place.path(), place.path(u"missing/icon.gif"_s)}) {
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"cannot be written"_s));
            QVERIFY(!GifConverter::convert(source, nowhere, kCanvas));
        }
    }
};

QTEST_GUILESS_MAIN(tst_GifConverter)
#include "tst_GifConverter.moc"
