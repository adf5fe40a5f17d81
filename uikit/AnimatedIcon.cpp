#include "uikit/AnimatedIcon.h"

#include <QDebug>
#include <QEvent>
#include <QFileInfo>
#include <QImageReader>
#include <QPainter>
#include <QPixmap>
#include <QStyle>

#include <algorithm>

namespace {

constexpr QSize kKeyFace{150, 108};
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

QSize AnimatedIcon::canvasSize(QString const& path, qint64 maxPixels)
{
    if (!QFileInfo(path).isFile()) {
        return {};
    }
    QSize const size = QImageReader(path).size();
    if (size.isEmpty() || qint64{size.width()} * size.height() > maxPixels) {
        return {};
    }
    return size;
}

QSize AnimatedIcon::fitted(QSize const& picture, QSize const& box)
{
    return fittedByRatio(picture, box, static_cast<double>(box.width()) / std::max(1, box.height()));
}

QSize AnimatedIcon::fittedToKeyFace(QSize const& picture)
{
    return fittedByRatio(picture, kKeyFace, kKeyFaceRatio);
}

bool AnimatedIcon::play(QString const& path, QSize const& size)
{
    auto next = std::make_unique<QMovie>();
    bool started = false;
    if (!size.isEmpty() && canvasSize(path).isValid()) {
        next->setCacheMode(QMovie::CacheNone);
        next->setFileName(path);
        next->setScaledSize(inDevicePixels(size));
        next->start();
        started = next->state() == QMovie::Running && !next->currentPixmap().isNull();
    }
    if (!started) {
        qWarning() << "[AnimatedIcon][play] Not a playable picture" << path;
        return false;
    }
    connect(next.get(), &QMovie::frameChanged, this, [this] {
        // A picture of one frame would be decoded again and again.
        if (!target->isVisible() || movie->frameCount() == 1) {
            movie->setPaused(true);
        }
    });
    shownSize = size;
    target->setScaledContents(false);
    target->setMovie(next.get());
    target->update();
    movie = std::move(next);
    return true;
}

void AnimatedIcon::stop()
{
    if (!movie) {
        return;
    }
    if (target->movie() == movie.get()) {
        QPixmap frame = movie->currentPixmap();
        frame.setDevicePixelRatio(static_cast<double>(frame.width()) / shownSize.width());
        target->setPixmap(frame);
    }
    movie.reset();
}

bool AnimatedIcon::isPlaying() const
{
    return movie && movie->state() != QMovie::NotRunning;
}

bool AnimatedIcon::eventFilter(QObject* watched, QEvent* event)
{
    if (!movie || target->movie() != movie.get()) {
        return false;
    }
    switch (event->type()) {
    case QEvent::Show:
        movie->setPaused(false);
        break;
    case QEvent::Hide:
        movie->setPaused(true);
        break;
    case QEvent::Paint:
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
    movie->setScaledSize(inDevicePixels(shownSize));
    QPainter painter(target);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(QStyle::alignedRect(
                           target->layoutDirection(), target->alignment(), shownSize, target->contentsRect()),
        movie->currentPixmap());
}
