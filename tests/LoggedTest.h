#pragma once

#include "tests/LogRecorder.h"

#include <QObject>
#include <QTest>

#include <optional>

//! A test that fails on each warning and critical line that it does not take out of its log. Whoever has more
//! to set up or take down overrides `init` and `cleanup`, and calls these.
class LoggedTest : public QObject
{
    Q_OBJECT

protected slots:
    virtual void init() { log.emplace(); }
    virtual void cleanup()
    {
        QCOMPARE(log->problems(), QStringList());
        log.reset();
    }

protected:
    bool awaitLine(QString const& part)
    {
        return QTest::qWaitFor([&] { return log->take(part); });
    }
    void takeAll(QString const& part)
    {
        while (log->take(part)) {
        }
    }

    std::optional<LogRecorder> log;
};
