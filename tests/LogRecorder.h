#pragma once

#include <QString>
#include <QStringList>

//! Collects what is logged while it lives, as "level: text". A test takes out the lines that it expects and
//! ends with `QCOMPARE(log.problems(), QStringList())`, so that a warning nobody expected fails it.
class LogRecorder
{
public:
    LogRecorder();
    ~LogRecorder();
    LogRecorder(LogRecorder const&) = delete;
    LogRecorder& operator=(LogRecorder const&) = delete;

    //! Takes the first line out that contains \a part, such as `critical: "auth failed"`. False when there is
    //! none.
    bool take(QString const& part);
    //! How many lines contain \a part.
    qsizetype count(QString const& part) const;
    //! The warnings and critical lines that nobody has taken.
    QStringList problems() const;
    void clear() { recorded.clear(); }

private:
    static void record(QtMsgType type, QMessageLogContext const& context, QString const& text);

    QStringList recorded;
    QtMessageHandler previous;
};
