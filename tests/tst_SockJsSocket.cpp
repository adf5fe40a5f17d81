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
    void reportsAQuickFailureLate();
    void goesOnWhileAFailureIsHeldBack();
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

    auto const text = [](char const* name, QString const& frame) {
        QTest::newRow(name) << frame << true << QString();
    };
    text("heartbeat", u"h"_s);
    text("close frame", uR"(c[3000,"Go away!"])"_s);
    text("cut frame", uR"(a["{\"id\":1)"_s);
    text("nothing of SockJS", u"hello"_s);

    auto const message = [](char const* name, QString const& inner, QString const& object = {}) {
        QTest::newRow(name) << u"a[\"%1\"]"_s.arg(inner) << false << object;
    };
    message("object", uR"({\"id\":\"x\",\"result\":true})"_s, uR"({"id":"x","result":true})"_s);
    message(
        "emoji, raw and escaped", uR"({\"a\":\"🎮\",\"b\":\"\ud83c\udfae\"})"_s, uR"({"a":"🎮","b":"🎮"})"_s);
    message("quote in a value", uR"({\"a\":\"say \\\"hi\\\"\"})"_s, uR"({"a":"say 'hi'"})"_s);
    message("line break between members", uR"({\"a\":1,\n\"b\":2})"_s, uR"({"a":1,"b":2})"_s);
    message("array", u"[1,2]"_s);
    message("empty object", u"{}"_s);
    message("two messages", uR"({\"a\":1}","{\"b\":2})"_s);
    message("no JSON", u"nonsense"_s);
    message("cut JSON", uR"({\"a\":)"_s);
    message("too deep", uR"({\"a\":%1%2})"_s.arg(QString(5000, u'['), QString(5000, u']')));
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
    QStringList got;
    for (auto const& arguments : std::as_const(objects)) {
        got.append(compact(arguments.first().toJsonObject()));
    }
    QCOMPARE(got.join(u'|'), object);
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

void tst_SockJsSocket::reportsAQuickFailureLate()
{
    server->setHandshake(SockJsServer::Handshake::NotFound);
    QVERIFY(server->listen());
    for (int const port : {unusedPort(), int(server->port())}) {
        QSignalSpy lost(socket.get(), &SockJsSocket::disconnected);
        QElapsedTimer since;
        since.start();
        socket->open(host, port);
        QTRY_COMPARE_WITH_TIMEOUT(lost.size(), 1, 3000);
        QVERIFY2(
            since.elapsed() >= 1000 && since.elapsed() < 1500, qPrintable(QString::number(since.elapsed())));
    }
    while (log->take(u"critical: QAbstractSocket::SocketError"_s)) {
    }
}

void tst_SockJsSocket::goesOnWhileAFailureIsHeldBack()
{
    QSignalSpy lost(socket.get(), &SockJsSocket::disconnected);
    auto const fail = [this] {
        socket->open(host, unusedPort());
        QString const refused =
            u"critical: QAbstractSocket::SocketError QAbstractSocket::ConnectionRefused"_s;
        QTRY_COMPARE(log->count(refused), 1);
        QVERIFY(log->take(refused));
    };
    fail();
    socket->close();
    QTRY_COMPARE_WITH_TIMEOUT(lost.size(), 1, 3000);
    QVERIFY(!lost.wait(1100));

    fail();
    socket->close();
    open();
    QVERIFY(!lost.wait(1300)); // the time at which the failure was due passes
    QVERIFY(socket->isValid());

    socket->close();
    QTRY_COMPARE(lost.size(), 2);
    fail();
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
