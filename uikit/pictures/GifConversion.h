#pragma once

#include <QObject>
#include <QSize>
#include <QString>

#include <atomic>
#include <memory>

class QThread;

//! Turns one animation into an icon file without holding up the thread that asked: a copy is made and
//! converted in place (GifConverter), on a thread of its own.
//!
//! The object belongs to one thread with an event loop, which gets the signals. Its thread never outlives it.
class GifConversion : public QObject
{
    Q_OBJECT

public:
    explicit GifConversion(QObject* parent = nullptr);
    //! As `stop`.
    ~GifConversion() override;

    //! Copies \a source to \a copy, whose folder exists, and resizes it there. Where the copy cannot be made,
    //! \a source itself is resized. Ends in `finished`. What was under way before is stopped.
    void start(QString const& source, QString const& copy, QSize const& size);
    //! Ends the work soon, after the frame in hand; `finished` follows.
    void cancel();
    //! Ends the work before it returns; there is no signal.
    void stop();

    bool isRunning() const { return thread != nullptr; }
    bool isCancelled() const { return cancelled; }
    //! The file that was converted: the copy, or the source. After a cancelled run there is no copy any more.
    QString path() const { return result; }

signals:
    //! 0 to 100, when it changes.
    void progressed(int percent);
    void finished();

private:
    void work(QString const& source, QString const& copy, QSize const& size);
    void join();

    std::unique_ptr<QThread> thread;
    std::atomic_bool cancelled = false;
    QString sourcePath;
    QString result; // the thread's until it is joined
};
