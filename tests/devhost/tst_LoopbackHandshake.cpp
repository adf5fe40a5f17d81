// Who gets into the development host's relay and stand-in, and what one who is in may send.

#include "devhost/fakes/LoopbackHandshake.h"
#include "devhost/fakes/RelayServer.h"
#include "devhost/fakes/SockJsServer.h"
#include "tests/LoggedTest.h"

#include <QSignalSpy>
#include <QTcpSocket>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

QByteArray const requestLine = "GET /api/087/s/websocket HTTP/1.1\r\n";
QByteArray const upgrade = "Upgrade: websocket\r\nConnection: Upgrade\r\n"
                           "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\nSec-WebSocket-Version: 13\r\n";

struct RawClient
{
    explicit RawClient(quint16 port) { socket.connectToHost(u"127.0.0.1"_s, port); }
    //! Asks for an upgrade.
    RawClient(quint16 port, QByteArray fields) : RawClient(port)
    {
        socket.write(requestLine + fields.replace("PORT", QByteArray::number(port)) + upgrade + "\r\n");
    }

    //! The status in the answer, or nothing when there is none.
    QByteArray status()
    {
        return QTest::qWaitFor([this] { return socket.canReadLine(); }) ? socket.readLine().mid(9, 3)
                                                                        : QByteArray();
    }
    bool ends()
    {
        return QTest::qWaitFor([this] { return socket.state() == QAbstractSocket::UnconnectedState; });
    }

    QTcpSocket socket;
};

} // namespace

class tst_LoopbackHandshake : public LoggedTest
{
    Q_OBJECT

private:
    RelayServer relay;
    SockJsServer standIn;

private slots:
    void initTestCase() { QVERIFY(relay.listen() && standIn.listen()); }
    void cleanup() override
    {
        relay.drop();
        standIn.drop();
        LoggedTest::cleanup();
    }

    void judges_data()
    {
        QTest::addColumn<QByteArray>("fields"); // PORT stands for the server's
        QTest::addColumn<QByteArray>("status");
        std::pair<QByteArray, QByteArrayList> const expected[] = {
            {"101", {"Host: 127.0.0.1:PORT\r\n", "hOsT:LocalHost:PORT \r\n", "Host: [::1]:PORT\r\n",
                        "Host: 127.9.9.9:PORT\r\n", "Host: localhost:PORT\r\nOrigin:\r\n",
                        "X-Origin: http://a\r\nHost: localhost:PORT\r\n"}},
            {"403",
                {"", "Host:\r\n", "Host: localhost\r\n", "Host: localhost:1\r\n", "Host: PORT\r\n",
                    "Host: :PORT\r\n", "Host: evil.example:PORT\r\n", "Host: localhost.evil.example:PORT\r\n",
                    "Host: 127.0.0.1.evil.example:PORT\r\n", "Host: 192.168.0.1:PORT\r\n",
                    "Host: 0.0.0.0:PORT\r\n", "Host: localhost:PORT\r\nHost: localhost:PORT\r\n",
                    "Host: localhost:PORT\r\nOrigin: http://localhost:PORT\r\n",
                    "Host: localhost:PORT\r\noRIGIN:null\r\n",
                    "Origin: \r\nHost: localhost:PORT\r\nOrigin: \r\n"}},
            {"400",
                {"Host: localhost:PORT\r\nX: y\nOrigin: http://a\r\n",
                    "Host: localhost:PORT\r\nX: y\rZ: z\r\n", "Host: localhost:PORT\r\nOrigin : http://a\r\n",
                    "Host: localhost:PORT\r\n Origin: http://a\r\n", "Host: localhost:PORT\r\nOrigin\r\n"}},
            {"431", {"Host: localhost:PORT\r\nX: " + QByteArray(17000, 'x') + "\r\n"}}};
        for (auto const& [status, heads] : expected) {
            for (auto const& fields : heads) {
                QTest::addRow("%s: %s", status.constData(), fields.left(60).simplified().constData())
                    << fields << status;
            }
        }
    }

    void judges()
    {
        QFETCH(QByteArray, fields);
        QFETCH(QByteArray, status);
        for (quint16 const port : {relay.port(), standIn.port()}) {
            RawClient client(port, fields);
            QCOMPARE(client.status(), status);
            QVERIFY(status == "101" || client.ends());
        }
    }

    void waitsForHeads()
    {
        LoopbackHandshake handshake;
        QSignalSpy requested(&handshake, &LoopbackHandshake::requested);
        QVERIFY(handshake.listen(0));
        RawClient slow(handshake.port());
        for (QByteArray const& piece : {requestLine, QByteArray("Host: localhost:"),
                 QByteArray::number(handshake.port()) + "\r\n\r", QByteArray("\nthe first frame")}) {
            QCOMPARE(requested.size(), 0);
            slow.socket.write(piece);
            QTRY_COMPARE(slow.socket.bytesToWrite(), 0);
        }
        QTRY_COMPARE(requested.size(), 1);
        QVERIFY(requested.first().first().value<QTcpSocket*>()->peek(100000).startsWith("GET "));
        QCOMPARE(requested.first().last(), requestLine.trimmed());

        handshake.setLimits(1h, 2);
        RawClient oldest(handshake.port());
        oldest.socket.write(requestLine);
        QTRY_COMPARE(oldest.socket.bytesToWrite(), 0);
        RawClient const second(handshake.port());
        RawClient const third(handshake.port());
        QVERIFY(oldest.ends());
        QCOMPARE(second.socket.state(), QAbstractSocket::ConnectedState);
        QCOMPARE(slow.socket.state(), QAbstractSocket::ConnectedState);

        handshake.setLimits(1ms, 2);
        RawClient never(handshake.port());
        QCOMPARE(never.status(), "408");
        QVERIFY(never.ends());
    }

    // What is too large goes as soon as it is announced.
    void dropsWhoSendsTooMuch()
    {
        for (auto const& [port, line] : {std::pair(relay.port(), u"warning: relay: client"_s),
                 {standIn.port(), u"warning: the stand-in: a connection has ended"_s}}) {
            RawClient client(port, "Host: localhost:PORT\r\n");
            QCOMPARE(client.status(), "101");
            client.socket.write(QByteArray::fromHex("81ff000000000400000100000000"));
            QVERIFY(client.ends());
            QVERIFY(awaitLine(line));
        }
        QTRY_COMPARE(relay.clientCount() + standIn.clientCount(), 0);
    }

    void forgetsWhoLeavesDuringTheUpgrade()
    {
        for (quint16 const port : {relay.port(), standIn.port()}) {
            for (int i = 0; i < 20; ++i) {
                RawClient client(port, "Host: localhost:PORT\r\n");
                QVERIFY(client.socket.waitForConnected());
                client.socket.flush();
                i % 2 == 0 ? client.socket.abort() : client.socket.close();
                QTRY_COMPARE(relay.clientCount() + standIn.clientCount(), 0);
            }
        }
    }
};

QTEST_GUILESS_MAIN(tst_LoopbackHandshake)
#include "tst_LoopbackHandshake.moc"
