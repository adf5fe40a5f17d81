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
    QTest::addColumn<bool>("waits");          // the last one goes out later

    QTest::newRow("once") << Milliseconds{0} << 5 << Milliseconds{0} << false;
    QTest::newRow("cheap") << Milliseconds{0, 1, 2, 3} << 1 << Milliseconds{0, 1, 2, 3} << false;
    QTest::newRow("just dear") << Milliseconds{0, 2} << 2 << Milliseconds{0} << true;
    QTest::newRow("a storm") << Milliseconds{0, 6, 7, 8, 54} << 5 << Milliseconds{0} << true;
    QTest::newRow("rested") << Milliseconds{0, 55} << 5 << Milliseconds{0, 55} << false;
    QTest::newRow("rested while one waits")
        << Milliseconds{0, 6, 55, 109} << 5 << Milliseconds{0, 55} << true;
    QTest::newRow("rested twice") << Milliseconds{0, 6, 55, 110} << 5 << Milliseconds{0, 55, 110} << false;
}

void tst_ListPacer::publishesAtOnceOrOnceLater()
{
    QFETCH(Milliseconds, changes);
    QFETCH(int, cost);
    QFETCH(Milliseconds, atOnce);
    QFETCH(bool, waits);

    std::chrono::milliseconds now = 0ms;
    int state = -1;
    Milliseconds published;
    ListPacer pacer(
        [&] {
            return QJsonObject{{QStringLiteral("state"), state}};
        },
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
    QCOMPARE(pacer.isWaiting(), waits);
    if (waits) {
        QTRY_VERIFY(!pacer.isWaiting()); // one more, and it tells of the newest state
        QCOMPARE(published, atOnce + Milliseconds{changes.last()});
    }
    pacer.publish();
    pacer.cancel();
    QVERIFY(!pacer.isWaiting());
}

void tst_ListPacer::mayGoWhileItPublishes()
{
    std::unique_ptr<ListPacer> pacer;
    auto const go = [&](QJsonObject const&) { pacer.reset(); };
    pacer = std::make_unique<ListPacer>([] { return QJsonObject(); }, go);
    pacer->publish();
    QVERIFY(!pacer);
}

QTEST_GUILESS_MAIN(tst_ListPacer)
#include "tst_ListPacer.moc"
