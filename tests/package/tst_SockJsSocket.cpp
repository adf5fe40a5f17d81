#include "devhost/fakes/SockJsServer.h"
#include "streamlabs/SockJsSocket.h"
#include "tests/LogRecorder.h"
#include "tests/TestJson.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <QThread>
#include <QTimer>
#include <QWebSocketServer>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

QString const host = u"127.0.0.1"_s;
QString const remoteClosed =
    u"critical: QAbstractSocket::SocketError QAbstractSocket::RemoteHostClosedError"_s;

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
    void reportsAnyOtherEndAtOnce();
    void reportsAnEarlyEndLate();
    void forgetsAnEndThatIsHeldBack();
    void aborts();
    void givesUpOnAServerThatSaysNothing();
    void refusesTooMuchData();
    void allowsAnythingFromInside_data();
    void allowsAnythingFromInside();

private:
    void open()
    {
        QSignalSpy opened(socket.get(), &SockJsSocket::textMessageReceived);
        socket->open(host, server->port());
        QTRY_COMPARE(opened.value(0).value(0).toString(), u"o"_s);
        QVERIFY(socket->isValid());
    }

    bool awaitLine(QString const& part)
    {
        return QTest::qWaitFor([&] { return log->take(part); });
    }
    bool awaitError() { return awaitLine(u"critical: QAbstractSocket::SocketError"_s); }

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

void tst_SockJsSocket::reportsAnyOtherEndAtOnce()
{
    socket->close(); // nothing to close
    QSignalSpy lost(socket.get(), &SockJsSocket::disconnected);
    QSignalSpy gone(server.get(), &SockJsServer::clientDisconnected);
    auto const openForLong = [this] {
        QElapsedTimer since;
        since.start();
        open();
        QTRY_VERIFY(since.hasExpired(1000));
    };
    open();
    socket->close(); // has no need to be old
    QCOMPARE(lost.size(), 1);
    QTRY_COMPARE(gone.size(), 1);

    openForLong();
    server->drop();
    QTRY_COMPARE_WITH_TIMEOUT(lost.size(), 2, 500);
    QVERIFY(!socket->isValid());
    QVERIFY(log->take(remoteClosed));

    // From inside of our answer to the server's farewell, which goes on and must not close what opens anew.
    openForLong();
    connect(
        socket.get(), &SockJsSocket::disconnected, this, [this] { socket->open(host, server->port()); },
        Qt::SingleShotConnection);
    socket->sendTextMessage(u"h"_s); // that nobody reads it makes the end a reset
    quint16 const port = server->port();
    server->close();
    QVERIFY(server->listen(port));
    QTRY_COMPARE(lost.size(), 3);
    QVERIFY(log->take(u"critical: QAbstractSocket::SocketError"_s));
    QTRY_VERIFY(socket->isValid());
    socket->abort();
    lost.clear();

    // From inside of what finds it out.
    openForLong();
    connect(socket.get(), &SockJsSocket::disconnected, this, [this] { socket.reset(); });
    server->drop();
    for (int i = 0; i < 3 && socket; ++i) {
        socket->sendTextMessage(u"[\"x\"]"_s);
    }
    QVERIFY(!socket);
    QCOMPARE(lost.size(), 1);
    log->take(u"critical: QAbstractSocket::SocketError"_s);
}

void tst_SockJsSocket::reportsAnEarlyEndLate()
{
    server->setHandshake(SockJsServer::Handshake::NotFound);
    SockJsServer droppingServer;
    SockJsServer strictServer;
    QTcpServer closingServer;
    QTcpServer resettingServer;
    QVERIFY(droppingServer.listen() && strictServer.listen());
    QVERIFY(closingServer.listen(QHostAddress::LocalHost) && resettingServer.listen(QHostAddress::LocalHost));
    connect(&droppingServer, &SockJsServer::clientConnected, &droppingServer, &SockJsServer::drop);
    connect(&strictServer, &SockJsServer::messageReceived, this, [] {});
    connect(socket.get(), &SockJsSocket::textMessageReceived, this, [this] {
        socket->sendTextMessage(uR"(["{"auth":"a"b"}"])"_s); // ends the connection
    });
    connect(&closingServer, &QTcpServer::newConnection, this,
        [&] { closingServer.nextPendingConnection()->disconnectFromHost(); });
    connect(&resettingServer, &QTcpServer::newConnection, this,
        [&] { resettingServer.nextPendingConnection()->abort(); });

    QSignalSpy lost(socket.get(), &SockJsSocket::disconnected);
    for (int const port : {unusedPort(), int(server->port()), int(droppingServer.port()),
             int(strictServer.port()), int(closingServer.serverPort()), int(resettingServer.serverPort())}) {
        auto const reported = lost.size();
        QElapsedTimer since;
        since.start();
        socket->open(host, port);
        QVERIFY(QTest::qWaitFor([&] { return since.hasExpired(500); }));
        QVERIFY(!socket->isValid());
        socket->close(); // changes nothing
        QTRY_COMPARE_WITH_TIMEOUT(lost.size(), reported + 1, 3000);
        QVERIFY2(
            since.elapsed() >= 1000 && since.elapsed() < 1500, qPrintable(QString::number(since.elapsed())));
        while (log->take(u"critical: QAbstractSocket::SocketError"_s)) {
        }
    }
    QVERIFY(!lost.wait(1100));
}

void tst_SockJsSocket::forgetsAnEndThatIsHeldBack()
{
    QSignalSpy lost(socket.get(), &SockJsSocket::disconnected);
    auto const fail = [this] {
        socket->open(host, unusedPort());
        QVERIFY(awaitError());
    };
    fail();
    open();
    QVERIFY(!lost.wait(1300)); // the time at which the failure was due passes
    QVERIFY(socket->isValid());

    fail();
    socket->abort();
    QVERIFY(!lost.wait(1200));
    fail();
    socket.reset();
    QVERIFY(!lost.wait(1200));
}

void tst_SockJsSocket::aborts()
{
    QSignalSpy lost(socket.get(), &SockJsSocket::disconnected);
    socket->abort();
    socket->open(host, server->port());
    socket->abort(); // of an attempt nobody has heard
    QCOMPARE(lost.size(), 0);

    open();
    server->drop();
    QVERIFY(awaitError());
    QCOMPARE(lost.size(), 0);
    socket->abort(); // nobody has heard of this end yet
    QCOMPARE(lost.size(), 1);

    open();
    socket->abort();
    QCOMPARE(lost.size(), 2);
    QVERIFY(!socket->isValid());
    QTRY_COMPARE(server->clientCount(), 0);
    QVERIFY(!lost.wait(1100));
}

void tst_SockJsSocket::givesUpOnAServerThatSaysNothing()
{
    QWebSocketServer silentServer(QString(), QWebSocketServer::NonSecureMode);
    QVERIFY(silentServer.listen(QHostAddress::LocalHost));
    auto* const timer = socket->findChild<QTimer*>(u"connectTimer"_s);
    QSignalSpy lost(socket.get(), &SockJsSocket::disconnected);
    for (int const port : {int(silentServer.serverPort()), 70000, int(server->port())}) {
        server->setHandshake(SockJsServer::Handshake::NeverAnswer);
        socket->open(host, port);
        QVERIFY(port != silentServer.serverPort() || QTest::qWaitFor([this] { return socket->isValid(); }));
        QCOMPARE(timer->intervalAsDuration(), 10s);
        QVERIFY(timer->isActive());
        timer->start(1);
        QVERIFY(lost.wait());
        QVERIFY(!socket->isValid());
        log->take(u"critical: QAbstractSocket::SocketError"_s); // port 70000
        server->setHandshake(SockJsServer::Handshake::Answer);
        open();
        QVERIFY(!timer->isActive());
    }

    // Heartbeats tell how long a silence may be; those that come at once do not.
    lost.clear();
    server->sendRawFrame(u"h"_s);
    server->sendRawFrame(u"h"_s);
    QSignalSpy heard(socket.get(), &SockJsSocket::textMessageReceived);
    QTRY_COMPARE(heard.size(), 2);
    QVERIFY(!timer->isActive());
    server->setHeartbeatInterval(1200ms);
    QTRY_VERIFY(timer->isActive());
    QVERIFY(timer->interval() >= 3000 && timer->interval() < 5000);
    server->setHeartbeatInterval(0ms);
    QThread::msleep(1200);
    timer->start(1); // so that this time was overslept
    QTRY_VERIFY(timer->interval() >= 3000);
    QVERIFY(socket->isValid());
    timer->start(1);
    QTRY_COMPARE(lost.size(), 1);
    QVERIFY(log->take(u"warning: [SockJsSocket] nothing came in the time of 3 heartbeats, 1"_s));
}

void tst_SockJsSocket::refusesTooMuchData()
{
    QByteArray const mebibyte = "\x7f" + QByteArray::fromHex("0000000000100000") + QByteArray(1 << 20, 'x');
    // A header alone, and a message in parts that never ends.
    for (QByteArray const& bytes : {"\x81\x7f" + QByteArray::fromHex("0000000004000001"),
             '\x01' + mebibyte + ('\0' + mebibyte).repeated(64)}) {
        open();
        server->sendRawBytes(bytes);
        QTRY_VERIFY(!socket->isValid());
        QVERIFY(log->take(u"warning: [WebSocketClient] too much data: \"127.0.0.1:"_s));
        QVERIFY(
            awaitLine(u"warning: the stand-in: a connection has ended over a frame that was too large"_s));
    }
}

void tst_SockJsSocket::allowsAnythingFromInside_data()
{
    using Act = std::function<void()>;
    QTest::addColumn<Act>("act");
    auto const row = [](char const* name, Act const& act) {
        QTest::newRow(name) << act;
        QTest::addRow("%s in an event loop", name) << Act([act] {
            QEventLoop loop;
            QTimer::singleShot(0, &loop, [&] {
                act();
                // What is deleted later would go here.
                QTimer::singleShot(10ms, &loop, &QEventLoop::quit);
            });
            loop.exec();
        });
    };
    row("close", [this] { socket->close(); });
    row("abort", [this] { socket->abort(); });
    row("open", [this] { socket->open(host, server->port()); });
    row("delete", [this] { socket.reset(); });
}

void tst_SockJsSocket::allowsAnythingFromInside()
{
    QFETCH(std::function<void()>, act);
    for (int inside = 0; inside < 4; ++inside) {
        socket = std::make_unique<SockJsSocket>();
        int acted = 0;
        auto const signal = [&](int which) {
            QVERIFY(socket); // says nothing once it is deleted
            if (which == inside && ++acted == 1) {
                act();
            }
        };
        connect(socket.get(), &SockJsSocket::connected, this, [&] { signal(0); });
        connect(socket.get(), &SockJsSocket::textMessageReceived, this, [&] { signal(1); });
        connect(socket.get(), &SockJsSocket::jsonMessageReceived, this, [&] { signal(2); });
        connect(socket.get(), &SockJsSocket::disconnected, this, [&] { signal(3); });
        QObject onlyFirst;
        connect(server.get(), &SockJsServer::clientConnected, &onlyFirst, [&] {
            for (int i = 0; i < 3; ++i) { // in one read with what comes before and after
                server->sendRawFrame(uR"(a["{\"a\":1}"])"_s);
            }
        });
        socket->open(host, server->port());
        if (inside == 3) {
            QTRY_VERIFY(socket->isValid());
            socket->abort();
        }
        QTRY_VERIFY(acted > 0);
        if (socket) {
            open();
        } else {
            QTRY_COMPARE(server->clientCount(), 0);
        }
    }
    while (log->take(u"critical: QAbstractSocket::SocketError"_s)) {
    }
}

QTEST_GUILESS_MAIN(tst_SockJsSocket)
#include "tst_SockJsSocket.moc"
