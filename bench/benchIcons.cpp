#include "bench/BenchRow.h"
#include "relay/ZoLumenProxy.h"
#include "uikit/DialogIconBuilder.h"
#include "uikit/pictures/GifConverter.h"
#include "uikit/pictures/IconTransform.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QImage>
#include <QPainter>
#include <QProcess>
#include <QPushButton>
#include <QRadialGradient>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <list>
#include <Magick++.h>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

using Frames = std::list<Magick::Image>;

constexpr QSize kVideo{640, 480};
constexpr QSize kShown{144, 108};
constexpr int kFrames = 60;

QImage noisyPhoto(QSize const& size)
{
    QRandomGenerator random(7);
    QImage photo(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        auto* const line = reinterpret_cast<QRgb*>(photo.scanLine(y));
        for (int x = 0; x < size.width(); ++x) {
            int const shade = static_cast<int>(120 + 60 * std::sin(x / 97.0) + 40 * std::cos(y / 61.0));
            int const level = std::clamp(shade + random.bounded(13) - 6, 0, 255);
            line[x] = qRgb(level, level * 3 / 4, 255 - level / 2);
        }
    }
    return photo;
}

//! A camera that moves over a textured ground, with shaded balls in front.
void writeVideo(QString const& path)
{
    QImage const ground = noisyPhoto({2 * kVideo.width(), kVideo.height()});
    Frames frames;
    for (int i = 0; i < kFrames; ++i) {
        QImage frame(kVideo, QImage::Format_RGBA8888);
        QPainter painter(&frame);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.drawImage(-((i * 4) % kVideo.width()), 0, ground);
        for (int ball = 0; ball < 6; ++ball) {
            QPointF const center(
                320 + 200 * std::cos(i * 0.1 + ball), 240 + 150 * std::sin(i * 0.13 + ball * 1.3));
            QRadialGradient shade(center, 80);
            shade.setColorAt(0, QColor::fromHsv(ball * 60, 200, 255));
            shade.setColorAt(1, QColor::fromHsv(ball * 60 + 20, 255, 90));
            painter.setBrush(shade);
            painter.drawEllipse(center, 80, 80);
        }
        painter.end();
        auto& image = frames.emplace_back(640, 480, "RGBA", Magick::CharPixel, frame.constBits());
        image.magick("GIF");
        image.animationDelay(5);
        image.quantizeDither(false);
        image.quantizeColors(256);
        image.quantize();
    }
    Magick::writeImages(frames.begin(), frames.end(), path.toStdString(), true);
}

Frames shownFrames(QString const& path)
{
    Frames frames;
    Frames shown;
    Magick::readImages(&frames, path.toStdString());
    Magick::coalesceImages(&shown, frames.begin(), frames.end());
    return shown;
}

void resize(Frames& frames)
{
    for (auto& frame : frames) {
        frame.resize(Magick::Geometry(
            static_cast<std::size_t>(kShown.width()), static_cast<std::size_t>(kShown.height())));
    }
}

//! Of all frames of \a path against \a wanted, in decibels.
double psnr(QString const& path, Frames& wanted)
{
    Frames got = shownFrames(path);
    if (got.size() != wanted.size()) {
        return 0;
    }
    double squares = 0;
    double count = 0;
    auto other = wanted.begin();
    for (auto& frame : got) {
        std::vector<uchar> a(3 * frame.columns() * frame.rows());
        auto b = a;
        frame.write(0, 0, frame.columns(), frame.rows(), "RGB", Magick::CharPixel, a.data());
        other->write(0, 0, frame.columns(), frame.rows(), "RGB", Magick::CharPixel, b.data());
        ++other;
        for (std::size_t i = 0; i < a.size(); ++i) {
            squares += (a[i] - b[i]) * (a[i] - b[i]);
        }
        count += static_cast<double>(a.size());
    }
    return 10 * std::log10(255.0 * 255.0 * count / squares);
}

double milliseconds(double microseconds)
{
    return microseconds / 1000;
}

//! The longest time for which the event loop does not turn while the dialog converts, ms.
double longestGap(QString const& video, QString const& folder)
{
    ZoLumenProxy::getInstance().configDir = folder;
    DialogIconBuilder dialog;
    dialog.setImagePath(video);
    dialog.show();
    double longest = 0;
    QElapsedTimer sinceLast;
    QTimer beat;
    beat.setTimerType(Qt::PreciseTimer);
    beat.callOnTimeout([&] {
        longest = std::max(longest, milliseconds(static_cast<double>(sinceLast.nsecsElapsed()) / 1000));
        sinceLast.start();
    });
    QEventLoop loop;
    QTimer::singleShot(500, &loop, &QEventLoop::quit);
    loop.exec(); // showing the dialog is not converting
    QObject::connect(&dialog, &QDialog::finished, &loop, &QEventLoop::quit);
    beat.start(1);
    sinceLast.start();
    dialog.findChild<QPushButton*>(u"btnOk"_s)->click();
    loop.exec();
    return longest;
}

//! 60 frames of 640 x 480, beside the plain use of ImageMagick and another program's way.
QList<BenchRow> convertAnimation()
{
    QTemporaryDir const folder;
    auto const video = folder.filePath(u"video.gif"_s);
    auto const plain = folder.filePath(u"plain.gif"_s);
    auto const ours = folder.filePath(u"ours.gif"_s);
    // On threads of their own, as the dialog works; what memory one leaves behind spares the next nothing.
    auto const timed = [](auto const& work) {
        return milliseconds(microseconds([&] { std::thread(work).join(); }));
    };
    timed([&] { writeVideo(video); });
    auto const convert = [&] { GifConverter::convert(video, ours, kShown); };

    std::vector<double> ourTimes{timed(convert)};
    double const plainTime = timed([&] {
        Frames frames = shownFrames(video);
        resize(frames);
        Magick::writeImages(frames.begin(), frames.end(), plain.toStdString(), true);
    });
    Frames wanted = shownFrames(video);
    resize(wanted);
    double const ourQuality = psnr(ours, wanted);

    QList<BenchRow> rows;
    auto const gifsicle = QStandardPaths::findExecutable(u"gifsicle"_s);
    auto const other = folder.filePath(u"gifsicle.gif"_s);
    std::vector<double> otherTimes;
    for (int round = 0; round < 5; ++round) {
        ourTimes.push_back(timed(convert));
        if (!gifsicle.isEmpty()) {
            otherTimes.push_back(timed([&] {
                QProcess::execute(gifsicle,
                    {u"--no-warnings"_s, u"--resize"_s, u"%1x%2"_s.arg(kShown.width()).arg(kShown.height()),
                        video, u"-o"_s, other});
            }));
        }
    }
    constexpr double kHalf = 0.5;
    double const ourTime = quantile(ourTimes, kHalf);
    QString const what = u"converting 60 frames of 640 x 480"_s;
    rows.append({.what = what,
        .floorIs = u"ImageMagick's readImages, coalesceImages, resize, writeImages"_s,
        .unit = u"ms"_s,
        .ours = ourTime,
        .floor = plainTime,
        .limit = 1.0 / 8});
    // The better the quality the more decibels, so floor and ours change places.
    rows.append({.what = what + u": decibels of the plain sequence's frames"_s,
        .floorIs = u"decibels of ours (PSNR of the shown frames)"_s,
        .unit = u"dB"_s,
        .ours = psnr(plain, wanted),
        .floor = ourQuality,
        .limit = 1});
    if (!gifsicle.isEmpty()) {
        rows.append({.what = what,
            .floorIs = u"gifsicle --resize, which reaches %1 dB"_s.arg(psnr(other, wanted), 0, 'f', 1),
            .unit = u"ms"_s,
            .ours = ourTime,
            .floor = quantile(otherTimes, kHalf),
            .limit = 3});
    }
    rows.append({.what = u"longest gap of the event loop meanwhile"_s,
        .floorIs = u"1 ms"_s,
        .unit = u"ms"_s,
        .ours = longestGap(video, folder.path()),
        .floor = 1,
        .limit = 50});
    return rows;
}

QList<BenchRow> transformPhoto()
{
    QTemporaryDir const folder;
    auto const file = folder.filePath(u"photo.png"_s);
    QImage const photo = noisyPhoto({4000, 3000});
    photo.save(file);
    DialogIconBuilder dialog;
    dialog.getIconTransform(file, static_cast<int>(IconTransform::Mode::Tile)); // decodes all of it
    QList<BenchRow> rows;
    QImage scaled;
    int mode = 0;
    for (auto const name : {"fill"_L1, "fit"_L1, "stretch"_L1, "tile"_L1, "center"_L1}) {
        rows.append(compare(
            {.what = u"icon of a photo of 4000 x 3000, "_s + name,
                .floorIs = u"one smooth QImage::scaled of it"_s,
                .limit = 3},
            7, [&] { dialog.getIconTransform(file, mode); },
            [&] {
                scaled = photo.scaled(
                    IconTransform::kFace, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation);
            }));
        ++mode;
    }
    return rows;
}

} // namespace

Benchmarks benchIcons()
{
    return {{u"animation"_s, convertAnimation}, {u"photo"_s, transformPhoto}};
}
