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

    void receives();
    void sendsFramesThatTheServerUnderstands();
    void reportsAnEndAtOnce();
    void reportsAQuickFailureLate();
    void goesOnWhileAFailureIsHeldBack();
    void givesUpAfterTenSeconds();

private:
    void open()
    {
        QSignalSpy opened(socket.get(), &SockJsSocket::textMessageReceived);
        socket->open(host, server->port());
        QTRY_COMPARE(opened.value(0).value(0).toString(), u"o"_s);
        QVERIFY(socket->isValid());
    }

    bool awaitError()
    {
        return QTest::qWaitFor([this] { return log->take(u"critical: QAbstractSocket::SocketError"_s); });
    }

    std::optional<LogRecorder> log;
    std::unique_ptr<SockJsServer> server;
    std::unique_ptr<SockJsSocket> socket;
};

void tst_SockJsSocket::init()
{
    log.emplace();
    server = std::make_unique<SockJsServer>();
    QVERIFY(server->listen());
    socket = std::make_unique<SockJsSocket>();
}

void tst_SockJsSocket::cleanup()
{
    socket.reset();
    server.reset();
    QCOMPARE(log->problems(), QStringList());
    log.reset();
}

void tst_SockJsSocket::receives()
{
    open();
    QString const large(20'000'000, u'x');
    QString got;
    connect(
        socket.get(), &SockJsSocket::textMessageReceived, this, [&](QString const& text) { got += text; });
    connect(socket.get(), &SockJsSocket::jsonMessageReceived, this,
        [&](QJsonObject const& object) { got += compact(object); });

    std::pair<QString, QString> const frames[] = {
        {u"h"_s, u"h"_s}, {uR"(c[3000,"Go away!"])"_s, uR"(c[3000,"Go away!"])"_s},
        {uR"(a["{\"id\":\"x\",\"result\":true}"])"_s, uR"({"id":"x","result":true})"_s},
        {uR"(a["{\"a\":\"🎮\",\"b\":\"\ud83c\udfae\"}"])"_s, uR"({"a":"🎮","b":"🎮"})"_s},
        {uR"(a["{\"a\":\"say \\\"hi\\\"\"}"])"_s, uR"({"a":"say 'hi'"})"_s},
        {uR"(a["{\"a\":1,\n\"b\":2}"])"_s, uR"({"a":1,"b":2})"_s},
        {uR"(a["{\"a\":\"%1\"}"])"_s.arg(large), uR"({"a":"%1"})"_s.arg(large)},
        // Nothing to hand up.
        {u"a[\"[1,2]\"]"_s, {}}, {u"a[\"{}\"]"_s, {}}, {uR"(a["{\"a\":1}","{\"b\":2}"])"_s, {}},
        {u"a[\"nonsense\"]"_s, {}}, {uR"(a["{\"a\":"])"_s, {}},
        {uR"(a["{\"a\":%1%2}"])"_s.arg(QString(5000, u'['), QString(5000, u']')), {}}, // too deep
    };
    for (auto const& [frame, expected] : frames) {
        got.clear();
        server->sendRawFrame(frame);
        server->sendRawFrame(u"end"_s);
        QTRY_VERIFY_WITH_TIMEOUT(got.endsWith(u"end"_s), 20000);
        QCOMPARE(got, expected + u"end"_s);
    }
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

void tst_SockJsSocket::reportsAnEndAtOnce()
{
    socket->close(); // nothing to close
    open();
    QSignalSpy lost(socket.get(), &SockJsSocket::disconnected);
    QSignalSpy gone(server.get(), &SockJsServer::clientDisconnected);
    socket->close();
    QTRY_COMPARE(lost.size(), 1);
    QTRY_COMPARE(gone.size(), 1);

    open();
    QElapsedTimer since;
    since.start();
    server->drop();
    QTRY_COMPARE(lost.size(), 2);
    QVERIFY(since.elapsed() < 900);
    QVERIFY(!socket->isValid());
    QVERIFY(log->take(u"critical: QAbstractSocket::SocketError QAbstractSocket::RemoteHostClosedError"_s));
}

void tst_SockJsSocket::reportsAQuickFailureLate()
{
    server->setHandshake(SockJsServer::Handshake::NotFound);
    for (int const port : {unusedPort(), int(server->port())}) {
        QSignalSpy lost(socket.get(), &SockJsSocket::disconnected);
        QElapsedTimer since;
        since.start();
        socket->open(host, port);
        QVERIFY(awaitError());
        socket->close(); // changes nothing
        QTRY_COMPARE_WITH_TIMEOUT(lost.size(), 1, 3000);
        QVERIFY2(
            since.elapsed() >= 1000 && since.elapsed() < 1500, qPrintable(QString::number(since.elapsed())));
        QVERIFY(!lost.wait(1100));
        log->take(u"critical: QAbstractSocket::SocketError"_s); // of a refused handshake there are two
    }
}

void tst_SockJsSocket::goesOnWhileAFailureIsHeldBack()
{
    QSignalSpy lost(socket.get(), &SockJsSocket::disconnected);
    auto const fail = [this] {
        socket->open(host, unusedPort());
        QVERIFY(awaitError());
    };
    fail();
    socket->close();
    open();
    QVERIFY(!lost.wait(1300)); // the time at which the failure was due passes
    QVERIFY(socket->isValid());

    socket->close();
    QTRY_COMPARE(lost.size(), 1);
    fail();
    socket.reset();
    QVERIFY(!lost.wait(1200));
}

void tst_SockJsSocket::givesUpAfterTenSeconds()
{
    for (int const port : {int(server->port()), 70000}) {
        socket = std::make_unique<SockJsSocket>();
        server->setHandshake(SockJsServer::Handshake::NeverAnswer);
        QSignalSpy lost(socket.get(), &SockJsSocket::disconnected);
        connect(socket.get(), &SockJsSocket::disconnected, this, [this] {
            server->setHandshake(SockJsServer::Handshake::Answer);
            socket->open(host, server->port());
        });
        QElapsedTimer since;
        since.start();
        socket->open(host, port);
        QTRY_COMPARE_WITH_TIMEOUT(lost.size(), 1, 12000);
        QVERIFY2(since.elapsed() >= 10000, qPrintable(QString::number(since.elapsed())));
        log->take(u"critical: QAbstractSocket::SocketError"_s);
        // The attempt that was begun at once has nothing to do with the end of this one.
        QTRY_VERIFY(socket->isValid());
        QVERIFY(!lost.wait(1300));
    }
}

QTEST_GUILESS_MAIN(tst_SockJsSocket)
#include "tst_SockJsSocket.moc"
