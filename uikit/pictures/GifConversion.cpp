#include "uikit/pictures/GifConversion.h"

#include "uikit/pictures/GifConverter.h"
#include "uikit/pictures/PictureFile.h"

#include <QFile>
#include <QThread>

GifConversion::GifConversion(QObject* parent) : QObject(parent) {}

GifConversion::~GifConversion()
{
    stop();
}

void GifConversion::start(QString const& source, QString const& copy, QSize const& size)
{
    stop();
    cancelled = false;
    sourcePath = source;
    result = source;
    thread.reset(QThread::create([=, this] { work(source, copy, size); }));
    connect(thread.get(), &QThread::finished, this, [this] {
        // It may be the late word of a thread that was stopped and has a successor.
        if (!thread || !thread->isFinished()) {
            return;
        }
        join();
        emit finished();
    });
    thread->start();
}

void GifConversion::cancel()
{
    if (thread) {
        cancelled = true;
    }
}

void GifConversion::stop()
{
    if (!thread) {
        return;
    }
    cancelled = true;
    join();
}

void GifConversion::work(QString const& source, QString const& copy, QSize const& size)
{
    if (PictureFile::copy(source, copy)) {
        result = copy;
    }
    int last = -1;
    GifConverter::convert(result, result, size, [&](qsizetype done, qsizetype all) {
        auto const percent = static_cast<int>(100 * done / all);
        if (percent != last) {
            emit progressed(percent);
        }
        last = percent;
        return !cancelled;
    });
}

void GifConversion::join()
{
    thread->wait();
    thread.reset();
    if (cancelled && result != sourcePath) {
        QFile::remove(result);
    }
}
