#include "uikit/AnimatedIcon.h"

#include "uikit/pictures/PictureFile.h"

#include <QDebug>
#include <QEvent>
#include <QPainter>
#include <QPixmap>
#include <QStyle>

#include <algorithm>
#include <utility>

namespace {

constexpr double kKeyFaceRatio = 1.3888888;

QSize fittedByRatio(QSize const& picture, QSize const& box, double boxRatio)
{
    if (picture.isEmpty() || box.isEmpty()) {
        return {};
    }
    qint64 const width = picture.width();
    qint64 const height = picture.height();
    double const ratio = static_cast<double>(width) / static_cast<double>(height);
    QSize size = box;
    if (ratio > boxRatio) {
        size.setHeight(static_cast<int>(height * box.width() / width));
    } else if (ratio < boxRatio) {
        size.setWidth(static_cast<int>(width * box.height() / height));
    }
    // A picture thinner than one pixel would have no frames at all.
    return size.expandedTo({1, 1});
}

} // namespace

AnimatedIcon::AnimatedIcon(QLabel* label) : QObject(label), target(label)
{
    label->installEventFilter(this);
}

AnimatedIcon::~AnimatedIcon() = default;

QSize AnimatedIcon::fitted(QSize const& picture, QSize const& box)
{
    return fittedByRatio(picture, box, static_cast<double>(box.width()) / std::max(1, box.height()));
}

QSize AnimatedIcon::fittedToKeyFace(QSize const& picture)
{
    return fittedByRatio(picture, IconTransform::kFace, kKeyFaceRatio);
}

bool AnimatedIcon::play(QString const& path, QSize const& box, qint64 maxPixels)
{
    if (resting.movie && resting.movie->fileName() == path && resting.box == box) {
        show(std::move(resting));
        current.movie->setPaused(!target->isVisible());
        return true;
    }
    Scene next{.movie = std::make_unique<QMovie>(), .box = box, .size = {}};
    QSize const canvas = PictureFile::size(path, maxPixels);
    next.size = box == IconTransform::kFace ? fittedToKeyFace(canvas) : fitted(canvas, box);
    next.movie->setCacheMode(QMovie::CacheNone);
    next.movie->setFileName(path);
    next.movie->setScaledSize(inDevicePixels(next.size));
    if (next.size.isEmpty() || (target->isVisible() && !start(next))) {
        qWarning() << "[AnimatedIcon][play] Not a playable picture" << path;
        return false;
    }
    connect(next.movie.get(), &QMovie::frameChanged, this, [this, movie = next.movie.get()] {
        // A picture of one frame would be decoded again and again.
        if (!target->isVisible() || movie->frameCount() == 1) {
            movie->setPaused(true);
        }
    });
    show(std::move(next));
    return true;
}

bool AnimatedIcon::start(Scene const& scene) const
{
    scene.movie->start();
    return scene.movie->state() == QMovie::Running && !scene.movie->currentPixmap().isNull();
}

void AnimatedIcon::show(Scene scene)
{
    target->setScaledContents(false);
    target->setMovie(scene.movie.get());
    target->update();
    current = std::move(scene);
}

void AnimatedIcon::stop()
{
    if (!current.movie) {
        return;
    }
    if (target->movie() == current.movie.get()) {
        QPixmap frame = current.movie->currentPixmap();
        frame.setDevicePixelRatio(static_cast<double>(frame.width()) / current.size.width());
        target->setPixmap(frame);
    }
    // An open file could not be replaced everywhere.
    if (current.movie->fileName().startsWith(u':') && current.movie->state() != QMovie::NotRunning) {
        current.movie->setPaused(true);
        resting = std::move(current);
    }
    current = {};
}

bool AnimatedIcon::isPlaying() const
{
    return current.movie != nullptr;
}

bool AnimatedIcon::eventFilter(QObject* watched, QEvent* event)
{
    if (!current.movie || target->movie() != current.movie.get()) {
        return false;
    }
    // One that has played to its end stays there.
    bool const isStarted = current.movie->currentFrameNumber() >= 0;
    switch (event->type()) {
    case QEvent::Show:
        current.movie->setPaused(false);
        if (!isStarted) {
            start(current);
        }
        break;
    case QEvent::Hide:
        current.movie->setPaused(true);
        break;
    case QEvent::Paint:
        if (!isStarted) {
            start(current); // grabbed while hidden
        }
        paintFrame();
        return true;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

QSize AnimatedIcon::inDevicePixels(QSize const& size) const
{
    return (QSizeF(size) * target->devicePixelRatioF()).toSize();
}

// A label draws the pixels of a movie one to one in its own units, so on a scaled screen the frames that are
// decoded for the screen's pixels would come out too large.
void AnimatedIcon::paintFrame()
{
    // The label may have moved to another screen; the next frame is decoded for it.
    current.movie->setScaledSize(inDevicePixels(current.size));
    QPainter painter(target);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(QStyle::alignedRect(target->layoutDirection(), target->alignment(), current.size,
                           target->contentsRect()),
        current.movie->currentPixmap());
}
