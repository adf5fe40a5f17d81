#include "tests/TestGif.h"
#include "uikit/GifConverter.h"
#include "uikit/GifFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QImageReader>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <list>
#include <Magick++.h>

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
QList<QImage> shown(QByteArray const& file, QSize const& size = {})
{
    Frames frames = read(file);
    Frames whole;
    Magick::coalesceImages(&whole, frames.begin(), frames.end());
    QList<QImage> images;
    for (auto& frame : whole) {
        if (size.isValid()) {
            frame.resize(Magick::Geometry(
                static_cast<std::size_t>(size.width()), static_cast<std::size_t>(size.height())));
        }
        QImage image(
            static_cast<int>(frame.columns()), static_cast<int>(frame.rows()), QImage::Format_RGBA8888);
        frame.write(0, 0, frame.columns(), frame.rows(), "RGBA", Magick::CharPixel, image.bits());
        images.append(withoutHiddenColors(image));
    }
    return images;
}

double psnr(QList<QImage> const& got, QList<QImage> const& wanted)
{
    double squares = 0;
    double count = 0;
    for (qsizetype i = 0; i < wanted.size(); ++i) {
        for (int y = 0; y < wanted[i].height(); ++y) {
            for (int x = 0; x < wanted[i].width(); ++x) {
                auto const a = got[i].pixel(x, y);
                auto const b = wanted[i].pixel(x, y);
                for (int const difference : {qRed(a) - qRed(b), qGreen(a) - qGreen(b), qBlue(a) - qBlue(b)}) {
                    squares += difference * difference;
                }
                count += 3;
            }
        }
    }
    return 10 * std::log10(255.0 * 255.0 * count / squares);
}

void put(QString const& path, QByteArray const& bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
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

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(u".?"_s)); }

    void keepsTheAnimation_data();
    void keepsTheAnimation();
    void resizesAsWellAsImageMagick();
    void refuses_data();
    void refuses();
    void stopsWithoutATrace();

private:
    QString path(QString const& name) const { return folder.filePath(name); }

    QTemporaryDir folder;
};

void tst_GifConverter::keepsTheAnimation_data()
{
    QTest::addColumn<QByteArray>("file");
    QRect const part(5, 4, 20, 15);
    quint8 const clear = 9;
    QTest::newRow("one frame") << gif({{}});
    QTest::newRow("opaque, played for ever") << gif({{}, {}, {}});
    QTest::newRow("played once") << gif({{}, {}}, std::nullopt);
    QTest::newRow("played three times") << gif({{}, {}}, 3);
    QTest::newRow("delays") << gif({{.delay = 0}, {.delay = 1}, {.delay = 65535}, {.delay = 7}});
    QTest::newRow("nothing moves") << gif({{.shift = 1}, {.area = {0, 0, 1, 1}, .transparent = 12}});
    QTest::newRow("parts drawn over") << gif({{}, {.area = part}, {.area = part.translated(9, 8)}});
    QTest::newRow("own colours") << gif({{}, {.area = part, .shift = 40}, {.shift = 17}});
    QTest::newRow("interlaced") << gif({{.interlaced = true}, {.area = part, .interlaced = true}});
    QTest::newRow("transparent") << gif(
        {{.transparent = clear}, {.transparent = clear}, {.transparent = clear}});
    QTest::newRow("holes that open") << gif({{.disposal = Disposal::Background},
        {.area = part, .disposal = Disposal::Background, .transparent = clear}, {.area = part}, {}});
    QTest::newRow("undrawn again") << gif({{}, {.area = part, .disposal = Disposal::Previous},
        {.area = {0, 0, 4, 4}, .disposal = Disposal::Previous}, {.area = {9, 9, 9, 9}}});
    QTest::newRow("undrawn first frame")
        << gif({{.area = part, .disposal = Disposal::Previous, .transparent = clear},
               {.area = {1, 1, 9, 9}, .transparent = clear}});
    QTest::newRow("partly off the canvas") << gif({{}, {.area = {30, 20, 30, 30}}, {.area = {35, 0, 9, 9}}});
    QTest::newRow("no end mark") << gif({{}, {}}).chopped(1);
    QTest::newRow("stray bytes") << gif({{}, {}}).chopped(1).append(3, '\0') + ";and more";
    QTest::newRow("old signature") << gif({{}, {}}).replace("GIF89a", "GIF87a");
}

//! At its own size an animation of few colours must come out as it went in, pixel for pixel.
void tst_GifConverter::keepsTheAnimation()
{
    QFETCH(QByteArray, file);
    put(path(u"a.gif"_s), file);
    QVERIFY(GifConverter::convert(path(u"a.gif"_s), path(u"b.gif"_s), kCanvas));

    auto const result = get(path(u"b.gif"_s));
    QCOMPARE(shown(result), shown(file));
    Frames const before = read(file);
    Frames const after = read(result);
    QCOMPARE(after.size(), before.size());
    for (auto a = after.begin(), b = before.begin(); a != after.end(); ++a, ++b) {
        QCOMPARE(a->animationDelay(), b->animationDelay());
        QCOMPARE(a->animationIterations(), b->animationIterations());
    }

    // The player that shows icons agrees.
    QImageReader player(path(u"b.gif"_s));
    QImageReader original(path(u"a.gif"_s));
    QCOMPARE(player.loopCount(), original.loopCount());
    for (auto const& image : shown(file)) {
        QCOMPARE(withoutHiddenColors(player.read()), image);
    }
}

void tst_GifConverter::resizesAsWellAsImageMagick()
{
    // A ball over a shaded ground, at the second frame beside a hole.
    QSize const size(64, 48);
    QSize const small(30, 20);
    Frames frames;
    for (int i = 0; i < 2; ++i) {
        QImage image(size, QImage::Format_RGBA8888);
        for (int y = 0; y < size.height(); ++y) {
            for (int x = 0; x < size.width(); ++x) {
                double const r = std::hypot(x - 20 - 9 * i, y - 20) / 20;
                image.setPixel(x, y,
                    r < 1              ? qRgb(int(255 * r), 90, int(200 - 150 * r))
                    : i == 1 && x > 45 ? 0
                                       : qRgb(3 * x, 5 * y, 255 - 2 * x - y));
            }
        }
        frames.emplace_back(64, 48, "RGBA", Magick::CharPixel, image.constBits()).magick("GIF");
    }
    Magick::Blob source;
    Magick::writeImages(frames.begin(), frames.end(), &source, true);
    QByteArray const file(static_cast<char const*>(source.data()), static_cast<qsizetype>(source.length()));

    Frames plain;
    Frames whole = read(file);
    Magick::coalesceImages(&plain, whole.begin(), whole.end());
    for (auto& frame : plain) {
        frame.resize(Magick::Geometry(30, 20));
    }
    Magick::writeImages(plain.begin(), plain.end(), &source, true);
    QByteArray const floor(static_cast<char const*>(source.data()), static_cast<qsizetype>(source.length()));

    // In place, and with the height left to follow.
    put(path(u"a.gif"_s), file);
    QVERIFY(GifConverter::convert(path(u"a.gif"_s), path(u"a.gif"_s), small));
    auto const result = shown(get(path(u"a.gif"_s)));
    auto const wanted = shown(file, small);
    QCOMPARE(result.size(), 2);
    QCOMPARE(result[1].size(), wanted[1].size());
    for (qsizetype i = 0; i < result.size(); ++i) {
        QCOMPARE(result[i].createAlphaMask(), shown(floor)[i].createAlphaMask());
    }
    QCOMPARE_GE(psnr(result, wanted), psnr(shown(floor), wanted));
}

void tst_GifConverter::refuses_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("reason");
    auto const good = gif({{}, {}});
    auto const notGif = u"is not a complete GIF file"_s;
    auto const tooLarge = u"is too large"_s;
    QTest::newRow("empty") << QByteArray() << kCanvas << notGif;
    QTest::newRow("something else") << QByteArray("\x89PNG\r\n\x1a\n") << kCanvas << notGif;
    QTest::newRow("a head only") << good.first(13) << kCanvas << notGif;
    QTest::newRow("cut within the colours") << good.first(100) << kCanvas << notGif;
    QTest::newRow("cut within the pixels") << good.first(good.size() - 20) << kCanvas << notGif;
    QTest::newRow("damaged pixels") << GifFile::head(kCanvas) +
                                           GifFile::frame({.area = {{}, kCanvas},
                                               .colors = colors(),
                                               .data = QByteArray("\x07\x03zzz\0", 6)}) +
                                           ";"
                                    << kCanvas << QString();
    QTest::newRow("gigantic canvas") << gif({{}}, 0, {60'000, 60'000}) << kCanvas << tooLarge;
    QTest::newRow("no canvas") << gif({{}}, 0, {0, 30}) << kCanvas << notGif;
    auto frame = GifFile::read(good)->frames.front();
    frame.area = {0, 0, 65'535, 65'535};
    QTest::newRow("gigantic frame") << GifFile::head(kCanvas) + GifFile::frame(frame) + ";" << kCanvas
                                    << tooLarge;
    frame.area = {0, 0, 1, 1};
    QTest::newRow("endless") << GifFile::head({1, 1}) + GifFile::frame(frame).repeated(10'001) + ";"
                             << kCanvas << tooLarge;
    QTest::newRow("invalid size") << good << QSize() << u"cannot have this size"_s;
    QTest::newRow("no size") << good << QSize(0, 0) << u"cannot have this size"_s;
    QTest::newRow("gigantic size") << good << QSize(60'000, 60'000) << u"cannot have this size"_s;
}

void tst_GifConverter::refuses()
{
    QFETCH(QByteArray, file);
    QFETCH(QSize, size);
    QFETCH(QString, reason);
    QTemporaryDir place;
    auto const target = place.filePath(u"icon.gif"_s);
    put(path(u"a.gif"_s), file);
    put(target, "as it was");
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"^\\[GifConverter\\]\\[convert\\].*"_s + reason));
    QVERIFY(!GifConverter::convert(path(u"a.gif"_s), target, size));
    QCOMPARE(get(target), "as it was");
    QCOMPARE(QDir(place.path()).entryList(QDir::Files), QStringList(u"icon.gif"_s));
}

void tst_GifConverter::stopsWithoutATrace()
{
    QTemporaryDir place;
    auto const source = path(u"a.gif"_s);
    auto const target = place.filePath(u"icon.gif"_s);
    put(source, gif({{}, {}, {}}));
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
    for (auto const& nowhere : {place.path(), place.filePath(u"missing/icon.gif"_s)}) {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"cannot be written"_s));
        QVERIFY(!GifConverter::convert(source, nowhere, kCanvas));
    }
}

QTEST_GUILESS_MAIN(tst_GifConverter)
#include "tst_GifConverter.moc"
