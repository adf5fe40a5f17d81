#include "bench/BenchRow.h"
#include "uikit/ZoBaseHotkeyWidget.h"

#include <QEventLoop>
#include <QImage>
#include <QLabel>
#include <QMovie>
#include <QPixmap>
#include <QTimer>
#include <QWidget>

#include <array>
#include <chrono>
#include <ctime>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize kFace{150, 108};
constexpr int kRounds = 301;

QString image(QLatin1StringView name)
{
    return u":/Streamlabs/images/"_s + name;
}

//! Two pictures in turn, since one that is set once more costs nothing.
class Alternating
{
public:
    Alternating(QLatin1StringView first, QLatin1StringView second) : paths{image(first), image(second)} {}

    QString const& next()
    {
        turn = 1 - turn;
        return paths.at(turn);
    }

private:
    std::array<QString, 2> paths;
    std::size_t turn = 0;
};

QList<BenchRow> setStillPicture()
{
    ZoBaseHotkeyWidget face;
    QLabel label;
    label.resize(kFace);
    Alternating ours("slobs_stream_off.png"_L1, "slobs_record_off.png"_L1);
    Alternating bare = ours;
    return {compare(
        {.what = u"setting a 150 x 108 PNG on a face"_s,
            .floorIs = u"QImage's constructor, QPixmap::fromImage and QLabel::setPixmap"_s,
            .limit = 2},
        kRounds, [&] { face.setIconAsset(ours.next()); },
        [&] { label.setPixmap(QPixmap::fromImage(QImage(bare.next()))); })};
}

QList<BenchRow> setAnimation()
{
    ZoBaseHotkeyWidget face;
    QLabel label;
    label.resize(kFace);
    QMovie movie;
    label.setMovie(&movie);
    Alternating ours("slobs_stream_on.gif"_L1, "slobs_mute_on.gif"_L1);
    Alternating bare = ours;
    return {compare(
        {.what = u"setting a 150 x 108 GIF on a face"_s,
            .floorIs = u"QMovie's stop, setFileName and start"_s,
            .limit = 3},
        kRounds, [&] { face.setIconAsset(ours.next()); },
        [&] {
            movie.stop();
            movie.setFileName(bare.next());
            movie.start();
        })};
}

//! Percent of one core.
double cpuOver(std::chrono::seconds duration)
{
    std::clock_t const before = std::clock();
    QEventLoop loop;
    QTimer::singleShot(duration, &loop, &QEventLoop::quit);
    loop.exec();
    constexpr double kPercent = 100;
    return kPercent * static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC /
           std::chrono::duration<double>(duration).count();
}

//! The limits are absolute here: a quarter of one core, and nothing to speak of while hidden.
QList<BenchRow> cpuOfAnimatedFaces()
{
    constexpr int kColumns = 8;
    constexpr int kRows = 4;
    constexpr auto kDuration = std::chrono::seconds(10);
    QWidget keys;
    keys.resize(kColumns * kFace.width(), kRows * kFace.height());
    for (int key = 0; key < kColumns * kRows; ++key) {
        auto* const face = new ZoBaseHotkeyWidget(&keys);
        face->move(key % kColumns * kFace.width(), key / kColumns * kFace.height());
        face->setIconTitle(u"Stream"_s);
        face->setIconAsset(image("slobs_stream_on.gif"_L1));
    }
    BenchRow const row{.floorIs = u"1 % of one core"_s, .unit = u"%"_s, .floor = 1};
    BenchRow shown = row;
    keys.show();
    shown.what = u"CPU of 32 animated faces over 10 s"_s;
    shown.ours = cpuOver(kDuration);
    shown.limit = 25;
    BenchRow hidden = row;
    keys.hide();
    hidden.what = u"CPU of the same faces, hidden, over 10 s"_s;
    hidden.ours = cpuOver(kDuration);
    hidden.limit = 0.1;
    return {shown, hidden};
}

} // namespace

//! Key faces: setting pictures, playing animations. Needs a QApplication.
Benchmarks benchFaces()
{
    return {{u"still-face"_s, setStillPicture}, {u"moving-face"_s, setAnimation},
        {u"moving-faces"_s, cpuOfAnimatedFaces}};
}
