#include "devhost/SockJsServer.h"
#include "streamlabs/SockJsSocket.h"
#include "tests/LogRecorder.h"
#include "tests/TestJson.h"

#include <QElapsedTimer>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTest>

#include <memory>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

QString const host = u"127.0.0.1"_s;

int unusedPort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return server.serverPort();
}

} // namespace

class tst_SockJsSocket : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void receives_data();
    void receives();
    void receivesAVeryLargeFrame();
    void sendsFramesThatTheServerUnderstands();
    void reportsALossAtOnce();
    void closesNormally();
    void reportsAQuickFailureLate_data();
    void reportsAQuickFailureLate();
    void aNewAttemptForgetsTheFailureHeldBack();
    void closeWhileAFailureIsHeldBack();
    void goesWhileAFailureIsHeldBack();
    void givesUpAfterTenSeconds_data();
    void givesUpAfterTenSeconds();

private:
    void open()
    {
        QSignalSpy opened(socket.get(), &SockJsSocket::textMessageReceived);
        QVERIFY(server->listen());
        socket->open(host, server->port());
        QTRY_COMPARE(opened.size(), 1);
        QCOMPARE(opened.first().first().toString(), u"o"_s);
        QVERIFY(socket->isValid());
    }

    void openWhereNobodyListens()
    {
        socket->open(host, unusedPort());
        QTRY_COMPARE(log->count(refused), 1);
        QVERIFY(log->take(refused));
    }

    QString const refused =
        u"critical: QAbstractSocket::SocketError QAbstractSocket::ConnectionRefusedError"_s;
    std::optional<LogRecorder> log;
    std::unique_ptr<SockJsServer> server;
    std::unique_ptr<SockJsSocket> socket;
};

void tst_SockJsSocket::init()
{
    log.emplace();
    server = std::make_unique<SockJsServer>();
    socket = std::make_unique<SockJsSocket>();
}

void tst_SockJsSocket::cleanup()
{
    socket.reset();
    server.reset();
    QCOMPARE(log->problems(), QStringList());
    log.reset();
}

void tst_SockJsSocket::receives_data()
{
    QTest::addColumn<QString>("frame");
    QTest::addColumn<bool>("isText");
    QTest::addColumn<QString>("object"); // none when empty

    QTest::newRow("heartbeat") << u"h"_s << true << QString();
    QTest::newRow("close frame") << uR"(c[3000,"Go away!"])"_s << true << QString();
    QTest::newRow("cut frame") << uR"(a["{\"id\":1)"_s << true << QString();
    QTest::newRow("nothing of SockJS") << u"hello"_s << true << QString();
    QTest::newRow("message") << uR"(a["{\"jsonrpc\":\"2.0\",\"id\":\"x\",\"result\":true}"])"_s << false
                             << uR"({"id":"x","jsonrpc":"2.0","result":true})"_s;
    QTest::newRow("emoji, raw and escaped")
        << uR"(a["{\"a\":\"🎮\",\"b\":\"\ud83c\udfae\"}"])"_s << false << uR"({"a":"🎮","b":"🎮"})"_s;
    QTest::newRow("quote in a value")
        << uR"(a["{\"a\":\"say \\\"hi\\\"\"}"])"_s << false << uR"({"a":"say 'hi'"})"_s;
    QTest::newRow("line break between members")
        << uR"(a["{\"a\":1,\n\"b\":2}"])"_s << false << uR"({"a":1,"b":2})"_s;
    QTest::newRow("array") << uR"(a["[1,2]"])"_s << false << QString();
    QTest::newRow("empty object") << uR"(a["{}"])"_s << false << QString();
    QTest::newRow("two messages") << uR"(a["{\"a\":1}","{\"b\":2}"])"_s << false << QString();
    QTest::newRow("no JSON") << uR"(a["nonsense"])"_s << false << QString();
    QTest::newRow("cut JSON") << uR"(a["{\"a\":"])"_s << false << QString();
    QTest::newRow("too deep") << uR"(a["{\"a\":%1%2}"])"_s.arg(QString(5000, u'['), QString(5000, u']'))
                              << false << QString();
}

void tst_SockJsSocket::receives()
{
    QFETCH(QString, frame);
    QFETCH(bool, isText);
    QFETCH(QString, object);
    open();
    QSignalSpy texts(socket.get(), &SockJsSocket::textMessageReceived);
    QSignalSpy objects(socket.get(), &SockJsSocket::jsonMessageReceived);

    server->sendRawFrame(frame);
    server->sendRawFrame(u"end"_s);
    QTRY_VERIFY(!texts.isEmpty() && texts.last().first().toString() == "end"_L1);

    QCOMPARE(texts.size(), isText ? 2 : 1);
    QCOMPARE(texts.first().first().toString(), isText ? frame : u"end"_s);
    QCOMPARE(objects.size(), object.isEmpty() ? 0 : 1);
    if (!object.isEmpty()) {
        QCOMPARE(compact(objects.first().first().toJsonObject()), object);
    }
}

void tst_SockJsSocket::receivesAVeryLargeFrame()
{
    open();
    QSignalSpy objects(socket.get(), &SockJsSocket::jsonMessageReceived);
    constexpr qsizetype size = 20'000'000;
    server->sendRawFrame(uR"(a["{\"a\":\"%1\"}"])"_s.arg(QString(size, u'x')));
    QTRY_COMPARE_WITH_TIMEOUT(objects.size(), 1, 20000);
    QCOMPARE(objects.first().first().toJsonObject().value("a"_L1).toString().size(), size);
}

void tst_SockJsSocket::sendsFramesThatTheServerUnderstands()
{
    open();
    QSignalSpy messages(server.get(), &SockJsServer::messageReceived);
    QSignalSpy frames(server.get(), &SockJsServer::frameReceived);
    socket->sendJsonMessage({{u"resource"_s, u"SceneItem['a', 'ä']"_s}});
    QTRY_COMPARE(messages.size(), 1);
    QCOMPARE(messages.first().at(1).toString(), uR"({"resource":"SceneItem[\"a\", \"ä\"]"})"_s);

    QCOMPARE(socket->sendTextMessage(u"[\"as it is\"]"_s), 12);
    QTRY_COMPARE(frames.size(), 2);
    QCOMPARE(frames.last().at(1).toString(), u"[\"as it is\"]"_s);
}

void tst_SockJsSocket::reportsALossAtOnce()
{
    open();
    QSignalSpy lost(socket.get(), &SockJsSocket::disconnected);
    QElapsedTimer since;
    since.start();
    server->drop();
    QTRY_COMPARE(lost.size(), 1);
    QVERIFY(since.elapsed() < 900);
    QVERIFY(!socket->isValid());
    QVERIFY(log->take(u"critical: QAbstractSocket::SocketError QAbstractSocket::RemoteHostClosedError"_s));
}

void tst_SockJsSocket::closesNormally()
{
    socket->close(); // nothing to close
    open();
    QSignalSpy lost(socket.get(), &SockJsSocket::disconnected);
    QSignalSpy gone(server.get(), &SockJsServer::clientDisconnected);
    socket->close();
    QTRY_COMPARE(lost.size(), 1);
    QTRY_COMPARE(gone.size(), 1);
    socket->open(host, server->port());
    QTRY_VERIFY(socket->isValid());
}

void tst_SockJsSocket::reportsAQuickFailureLate_data()
{
    QTest::addColumn<bool>("nobodyListens");
    QTest::newRow("nobody listens") << true;
    QTest::newRow("the server has no such path") << false;
}

void tst_SockJsSocket::reportsAQuickFailureLate()
{
    QFETCH(bool, nobodyListens);
    server->setHandshake(SockJsServer::Handshake::NotFound);
    QVERIFY(server->listen());
    QSignalSpy lost(socket.get(), &SockJsSocket::disconnected);
    QElapsedTimer since;
    since.start();
    socket->open(host, nobodyListens ? unusedPort() : server->port());
    QTRY_COMPARE_WITH_TIMEOUT(lost.size(), 1, 3000);
    QVERIFY2(since.elapsed() >= 1000 && since.elapsed() < 1500, qPrintable(QString::number(since.elapsed())));
    while (log->take(u"critical: QAbstractSocket::SocketError"_s)) {
    }
}

void tst_SockJsSocket::aNewAttemptForgetsTheFailureHeldBack()
{
    QSignalSpy lost(socket.get(), &SockJsSocket::disconnected);
    openWhereNobodyListens();
    socket->close();
    open();
    QVERIFY(!lost.wait(1300)); // the time at which the first failure was due passes
    QVERIFY(socket->isValid());
}

void tst_SockJsSocket::closeWhileAFailureIsHeldBack()
{
    QSignalSpy lost(socket.get(), &SockJsSocket::disconnected);
    openWhereNobodyListens();
    socket->close();
    QTRY_COMPARE_WITH_TIMEOUT(lost.size(), 1, 3000);
    QVERIFY(!lost.wait(1100));
}

void tst_SockJsSocket::goesWhileAFailureIsHeldBack()
{
    QSignalSpy lost(socket.get(), &SockJsSocket::disconnected);
    openWhereNobodyListens();
    socket.reset();
    QVERIFY(!lost.wait(1200));
}

void tst_SockJsSocket::givesUpAfterTenSeconds_data()
{
    QTest::addColumn<int>("port"); // 0: a server that never answers
    QTest::newRow("no answer") << 0;
    QTest::newRow("no such port") << 70000;
}

void tst_SockJsSocket::givesUpAfterTenSeconds()
{
    QFETCH(int, port);
    server->setHandshake(SockJsServer::Handshake::NeverAnswer);
    QVERIFY(server->listen());
    QSignalSpy lost(socket.get(), &SockJsSocket::disconnected);
    connect(socket.get(), &SockJsSocket::disconnected, this, [this] {
        server->setHandshake(SockJsServer::Handshake::Answer);
        socket->open(host, server->port());
    });
    QElapsedTimer since;
    since.start();
    socket->open(host, port == 0 ? server->port() : port);
    QTRY_COMPARE_WITH_TIMEOUT(lost.size(), 1, 12000);
    QVERIFY2(since.elapsed() >= 10000, qPrintable(QString::number(since.elapsed())));
    log->take(u"critical: QAbstractSocket::SocketError"_s);
    // The attempt that was begun at once has nothing to do with the end of this one.
    QTRY_VERIFY(socket->isValid());
    QVERIFY(!lost.wait(1300));
}

QTEST_GUILESS_MAIN(tst_SockJsSocket)
#include "tst_SockJsSocket.moc"
