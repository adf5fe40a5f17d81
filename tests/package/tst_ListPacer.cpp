// When a list is published, by what publishing it cost: time and cost are the test's own.

#include "streamlabs/ListPacer.h"

#include <QList>
#include <QTest>

#include <memory>
#include <utility>

using namespace std::chrono_literals;

class tst_ListPacer : public QObject
{
    Q_OBJECT

private slots:
    void publishesAtOnceOrOnceLater_data();
    void publishesAtOnceOrOnceLater();
    void mayGoWhileItPublishes();

private:
    using Milliseconds = QList<int>;
};

void tst_ListPacer::publishesAtOnceOrOnceLater_data()
{
    QTest::addColumn<Milliseconds>("changes"); // times at which the list changes
    QTest::addColumn<int>("cost");
    QTest::addColumn<Milliseconds>("atOnce"); // the changes that go out then
    QTest::addColumn<int>("wait");            // of the rest, which go out as one; -1: there is none

    QTest::newRow("once") << Milliseconds{0} << 5 << Milliseconds{0} << -1;
    QTest::newRow("cheap") << Milliseconds{0, 1, 2, 3} << 1 << Milliseconds{0, 1, 2, 3} << -1;
    QTest::newRow("just dear") << Milliseconds{0, 2} << 2 << Milliseconds{0} << 20;
    QTest::newRow("dear") << Milliseconds{0, 15} << 5 << Milliseconds{0} << 40;
    QTest::newRow("a storm") << Milliseconds{0, 5, 7, 8, 54} << 5 << Milliseconds{0} << 50;
    QTest::newRow("after a standstill") << Milliseconds{0, 64960} << 60000 << Milliseconds{0} << 40;
    QTest::newRow("rested") << Milliseconds{0, 55, 55, 55} << 5 << Milliseconds{0} << 0;
    QTest::newRow("long rested") << Milliseconds{0, 5000} << 5 << Milliseconds{0} << 0;
}

void tst_ListPacer::publishesAtOnceOrOnceLater()
{
    QFETCH(Milliseconds, changes);
    QFETCH(int, cost);
    QFETCH(Milliseconds, atOnce);
    QFETCH(int, wait);

    std::chrono::milliseconds now = 0ms;
    int state = -1;
    Milliseconds published;
    ListPacer pacer([&] { return QJsonObject{{QStringLiteral("state"), state}}; },
        [&](QJsonObject const& payload) {
            published.append(payload.value(QStringLiteral("state")).toInt());
            now += std::chrono::milliseconds(cost);
        },
        [&] { return now; });
    for (int const change : changes) {
        now = std::max(now, std::chrono::milliseconds(change));
        state = change;
        pacer.publish();
    }
    QCOMPARE(published, atOnce);
    QCOMPARE(pacer.wait().value_or(-1ms).count(), wait);
    if (wait >= 0) {
        QTRY_VERIFY(!pacer.wait()); // one more, and it tells of the newest state
        QCOMPARE(published, atOnce + Milliseconds{changes.last()});
    }
    pacer.publish();
    pacer.cancel();
    QVERIFY(!pacer.wait());
}

void tst_ListPacer::mayGoWhileItPublishes()
{
    std::unique_ptr<ListPacer> pacer;
    auto const go = [&](QJsonObject const&) { pacer.reset(); };
    pacer = std::make_unique<ListPacer>([] { return QJsonObject(); }, go, [] { return 0ns; });
    pacer->publish();
    QVERIFY(!pacer);
}

QTEST_GUILESS_MAIN(tst_ListPacer)
#include "tst_ListPacer.moc"
