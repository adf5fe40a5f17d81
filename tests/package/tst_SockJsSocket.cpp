#include "devhost/fakes/SockJsServer.h"
#include "streamlabs/SockJsSocket.h"
#include "tests/LoggedTest.h"
#include "tests/TestJson.h"
#include "tests/TestPort.h"

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
#include <vector>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

QString const host = u"127.0.0.1"_s;
QString const remoteClosed =
    u"critical: QAbstractSocket::SocketError QAbstractSocket::RemoteHostClosedError"_s;

} // namespace

class tst_SockJsSocket : public LoggedTest
{
    Q_OBJECT

private:
    void init() override
    {
        LoggedTest::init();
        server = std::make_unique<SockJsServer>();
        QVERIFY(server->listen());
        socket = std::make_unique<SockJsSocket>();
    }

    void cleanup() override
    {
        socket.reset();
        server.reset();
        LoggedTest::cleanup();
    }

private slots:

    void receives(); // outside of the class, for moc cannot read some of the texts in it

    void sendsFramesThatTheServerUnderstands()
    {
        open();
        QSignalSpy messages(server.get(), &SockJsServer::messageReceived);
        QSignalSpy frames(server.get(), &SockJsServer::frameReceived);
        socket->sendJsonMessage({{u"resource"_s, u"SceneItem['a', 'ä']"_s}});
        QTRY_COMPARE(messages.size(), 1);
        QCOMPARE(messages.first().at(1).toString(), u"{\"resource\":\"SceneItem[\\\"a\\\", \\\"ä\\\"]\"}"_s);

        QCOMPARE(socket->sendTextMessage(u"[\"as it is\"]"_s), 12);
        QTRY_COMPARE(frames.size(), 2);
        QCOMPARE(frames.last().at(1).toString(), u"[\"as it is\"]"_s);
    }

    void reportsAnyOtherEndAtOnce()
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

        // From inside of our answer to the server's farewell, which goes on and must not close what opens
        // anew.
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

    // However it comes about.
    void reportsAnEarlyEndLate()
    {
        server->setHandshake(SockJsServer::Handshake::NotFound);
        SockJsServer droppingServer;
        SockJsServer strictServer;
        QTcpServer closingServer;
        QTcpServer resettingServer;
        QVERIFY(droppingServer.listen() && strictServer.listen());
        QVERIFY(
            closingServer.listen(QHostAddress::LocalHost) && resettingServer.listen(QHostAddress::LocalHost));
        connect(&droppingServer, &SockJsServer::clientConnected, &droppingServer, &SockJsServer::drop);
        connect(&strictServer, &SockJsServer::messageReceived, this, [] {});
        connect(&closingServer, &QTcpServer::newConnection, this,
            [&] { closingServer.nextPendingConnection()->disconnectFromHost(); });
        connect(&resettingServer, &QTcpServer::newConnection, this,
            [&] { resettingServer.nextPendingConnection()->abort(); });

        QList<qint64> ends;
        QElapsedTimer since;
        since.start();
        std::vector<std::unique_ptr<SockJsSocket>> sockets;
        for (int const port :
            {int(ownPort()), int(server->port()), int(droppingServer.port()), int(strictServer.port()),
                int(closingServer.serverPort()), int(resettingServer.serverPort())}) {
            auto* const young = sockets.emplace_back(std::make_unique<SockJsSocket>()).get();
            connect(young, &SockJsSocket::disconnected, this, [&] { ends.append(since.elapsed()); });
            connect(young, &SockJsSocket::textMessageReceived, this, [young] {
                young->sendTextMessage(u"[\"{\"auth\":\"a\"b\"}\"]"_s); // ends the connection
            });
            young->open(host, port);
        }
        QTRY_VERIFY(since.hasExpired(500));
        for (auto const& young : sockets) {
            QVERIFY(!young->isValid());
            young->close(); // changes nothing
        }
        QTRY_COMPARE(ends.size(), sockets.size());
        QVERIFY(ends.first() >= 1000 && ends.last() < 1500);
        QTRY_VERIFY(since.hasExpired(2200));
        QCOMPARE(ends.size(), sockets.size());
        takeErrors();
    }

    void forgetsAnEndThatIsHeldBack()
    {
        SockJsSocket aborted;
        auto deleted = std::make_unique<SockJsSocket>();
        int ends = 0;
        for (auto* const failing : {socket.get(), &aborted, deleted.get()}) {
            connect(failing, &SockJsSocket::disconnected, this, [&] { ++ends; });
            failing->open(host, ownPort());
            QVERIFY(awaitError());
        }
        open();
        aborted.abort();
        deleted.reset();
        // The time at which the failures were due passes.
        QVERIFY(!QTest::qWaitFor([&] { return ends > 0; }, 1300));
        QVERIFY(socket->isValid());
    }

    void aborts()
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

    void givesUpOnAServerThatSaysNothing()
    {
        QWebSocketServer silentServer(QString(), QWebSocketServer::NonSecureMode);
        QVERIFY(silentServer.listen(QHostAddress::LocalHost));
        auto* const timer = socket->findChild<QTimer*>(u"connectTimer"_s);
        QSignalSpy lost(socket.get(), &SockJsSocket::disconnected);
        for (int const port : {int(silentServer.serverPort()), 70000, int(server->port())}) {
            server->setHandshake(SockJsServer::Handshake::NeverAnswer);
            socket->open(host, port);
            QVERIFY(
                port != silentServer.serverPort() || QTest::qWaitFor([this] { return socket->isValid(); }));
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

    void refusesTooMuchData()
    {
        QByteArray const mebibyte =
            "\x7f" + QByteArray::fromHex("0000000000100000") + QByteArray(1 << 20, 'x');
        // A header alone, and a message in parts that never ends.
        for (QByteArray const& bytes : {"\x81\x7f" + QByteArray::fromHex("0000000004000001"),
                 '\x01' + mebibyte + ('\0' + mebibyte).repeated(64)}) {
            open();
            server->sendRawBytes(bytes);
            QTRY_VERIFY(!socket->isValid());
            QVERIFY(log->take(u"warning: [WebSocketClient] too much data: \"127.0.0.1:"_s));
            QVERIFY(awaitLine(
                u"warning: the stand-in: a connection has ended over a frame that was too large"_s));
        }
    }

    // Also where what is deleted later goes, in an event loop of the slot's own.
    void allowsAnythingFromInside_data()
    {
        using Act = std::function<void()>;
        QTest::addColumn<Act>("act");
        QTest::newRow("close") << Act([this] { socket->close(); });
        QTest::newRow("abort") << Act([this] { socket->abort(); });
        QTest::newRow("open") << Act([this] { socket->open(host, server->port()); });
        QTest::newRow("delete") << Act([this] { socket.reset(); });
        QTest::newRow("delete in an event loop") << Act([this] {
            QEventLoop loop;
            QTimer::singleShot(0, &loop, [&] {
                socket.reset();
                QTimer::singleShot(10ms, &loop, &QEventLoop::quit);
            });
            loop.exec();
        });
    }

    void allowsAnythingFromInside()
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
                    server->sendRawFrame(u"a[\"{\\\"a\\\":1}\"]"_s);
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
        takeErrors();
    }

private:
    void open()
    {
        QSignalSpy opened(socket.get(), &SockJsSocket::textMessageReceived);
        socket->open(host, server->port());
        QTRY_COMPARE(opened.value(0).value(0).toString(), u"o"_s);
        QVERIFY(socket->isValid());
    }

    void takeErrors() { takeAll(u"critical: QAbstractSocket::SocketError"_s); }
    bool awaitError() { return awaitLine(u"critical: QAbstractSocket::SocketError"_s); }

    std::unique_ptr<SockJsServer> server;
    std::unique_ptr<SockJsSocket> socket;
};

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

QTEST_GUILESS_MAIN(tst_SockJsSocket)
#include "tst_SockJsSocket.moc"
