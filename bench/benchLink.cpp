#include "actions/SlobsAgent.h"
#include "bench/BareHops.h"
#include "bench/BenchRow.h"
#include "devhost/fakes/RelayServer.h"
#include "devhost/fakes/StreamlabsStandIn.h"
#include "relay/WebSocketClient.h"
#include "relay/ZoRemoteCommands.h"
#include "streamlabs/SockJsCodec.h"
#include "streamlabs/StreamlabsService.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <QJsonDocument>
#include <QStringBuilder>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <QWebSocketServer>

#include <chrono>
#include <ctime>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

template <typename Condition>
void waitUntil(Condition const& condition)
{
    while (!condition()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

//! An agent, the relay, the service and the stand-in, connected, in one process as in the host.
struct Chain
{
    RelayServer relay;
    StreamlabsStandIn desktop;
    StreamlabsService service;
    SlobsAgent agent;
    bool answered = false;

    Chain()
    {
        relay.listen();
        desktop.start();
        service.init(&relay);
        service.connectSlobs(desktop.token(), desktop.port());
        agent.connectRcc(u"ws://127.0.0.1:%1"_s.arg(relay.port()));
        waitUntil([this] { return desktop.authorizedCount() == 1 && relay.clientCount() == 1; });
        agent.subscribe(ZoRemoteSubjects::kSubjectStreamlabsResponse, {}, {});
        waitUntil(
            [this] { return relay.subscriberCount(ZoRemoteSubjects::kSubjectStreamlabsResponse) == 1; });
        // What the start has set going must be over.
        QEventLoop settle;
        QTimer::singleShot(std::chrono::milliseconds(300), &settle, &QEventLoop::quit);
        settle.exec();
        agent.addRccEventHandler(
            SlobsAgentPrivate::kQueryStreamingStatusResult, [this](QJsonObject const&) { answered = true; });
    }

    void run()
    {
        answered = false;
        agent.toggleStreaming();
        waitUntil([this] { return answered; });
    }
};

QList<BenchRow> roundTrip()
{
    Chain chain;
    // One event per press, and a status that is not that of the press before. What the other application does
    // with a request is not ours: its transport answers for it, with frames that are ready-made.
    QString const beforeId = uR"(a["{\"jsonrpc\":\"2.0\",\"id\":)"_s;
    QString const afterId = uR"(,\"result\":{\"_type\":\"SUBSCRIPTION\",\"resourceId\":\"promise\",)"
                            uR"(\"emitter\":\"PROMISE\"}}"])"_s;
    QString const starting =
        uR"(a["{\"jsonrpc\":\"2.0\",\"id\":null,\"result\":{\"_type\":\"EVENT\",\"emitter\":\"STREAM\",)"
        uR"(\"resourceId\":\"StreamingService.streamingStatusChange\",\"data\":\"starting\"}}"])"_s;
    QString const offline = QString(starting).replace("starting"_L1, "offline"_L1);
    auto& transport = chain.desktop.transport();
    int id = 0;
    chain.desktop.scriptReply(u"StreamingService.toggleStreaming"_s, [&id](QJsonObject const& request) {
        id = request.value("id"_L1).toInt();
        return QJsonObject();
    });
    chain.agent.toggleStreaming();
    waitUntil([&id] { return id > 0; });
    QObject::disconnect(&transport, &SockJsServer::messageReceived, &chain.desktop, nullptr);
    QObject::connect(&transport, &SockJsServer::frameReceived, &chain.desktop, [&] {
        transport.sendRawFrame(beforeId % QString::number(++id) % afterId);
        transport.sendRawFrame(id % 2 == 0 ? starting : offline);
    });

    // The same bytes for the floor, listened to on one round.
    BareHops::Texts texts;
    auto const compact = [](QJsonObject const& object) {
        return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
    };
    {
        QObject listener;
        QObject::connect(&chain.relay, &RelayServer::commandReceived, &listener,
            [&](QJsonObject const& command) { texts.there = compact(command); });
        QObject::connect(&transport, &SockJsServer::frameReceived, &listener,
            [&](int, QString const& frame) { texts.request = frame; });
        QObject::connect(&transport, &SockJsServer::frameSent, &listener,
            [&](int, QString const& frame) { texts.answers.append(frame); });
        QObject::connect(&chain.relay, &RelayServer::published, &listener,
            [&](QString const&, QJsonObject const& payload) { texts.back = compact(payload); });
        chain.run();
    }
    constexpr int kWarmUp = 200;
    constexpr int kRounds = 20000;
    BareHops hops(texts);
    hops.connectBoth();
    for (int i = 0; i < kWarmUp; ++i) {
        chain.run();
        hops.run();
    }
    return {compare(
        {.what = u"key press to Streamlabs Desktop and its status back to the key"_s,
            .floorIs = u"the same bytes over bare WebSockets"_s,
            .limit = 2.0},
        kRounds, [&] { chain.run(); }, [&] { hops.run(); })};
}

QList<BenchRow> decodeLargeFrame()
{
    constexpr int kScenes = 50;
    constexpr int kItems = 40;
    QString frame;
    {
        Chain chain;
        chain.desktop.model().generate(kScenes, kItems, 0);
        QObject listener;
        QObject::connect(
            &chain.desktop.transport(), &SockJsServer::frameSent, &listener, [&](int, QString const& sent) {
                if (sent.size() > frame.size()) {
                    frame = sent;
                }
            });
        chain.agent.refreshScenes();
        waitUntil([&] { return !frame.isEmpty(); });
    }

    QByteArray const clean = SockJsCodec::unescape(*SockJsCodec::messageOf(frame)).toUtf8();
    qsizetype members = 0;
    constexpr int kRounds = 101;
    return {compare(
        {.what = u"decode one frame of 50 scenes with 40 items (%1 kB)"_s.arg(clean.size() / 1000),
            .floorIs = u"QJsonDocument::fromJson of the clean bytes"_s,
            .limit = 1.4},
        kRounds,
        [&] {
            auto const message = SockJsCodec::messageOf(frame);
            members += QJsonDocument::fromJson(SockJsCodec::unescape(*message).toUtf8()).object().size();
        },
        [&] { members += QJsonDocument::fromJson(clean).object().size(); })};
}

constexpr auto kIdleTime = std::chrono::seconds(10);

//! CPU time in per cent of one core while the event loop runs for ten seconds.
double idleCpu()
{
    std::clock_t const before = std::clock();
    QEventLoop loop;
    QTimer::singleShot(kIdleTime, &loop, &QEventLoop::quit);
    loop.exec();
    constexpr double kPercent = 100;
    return kPercent * static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC /
           std::chrono::duration<double>(kIdleTime).count();
}

//! The limit is absolute here: 1 % of one core.
BenchRow cpuRow(QString const& peer, double cpu)
{
    return {.what = u"CPU of the service while Streamlabs Desktop %1, over 10 s"_s.arg(peer),
        .floorIs = u"1 % of one core"_s,
        .unit = u"%"_s,
        .ours = cpu,
        .floor = 1,
        .limit = 1};
}

QList<BenchRow> cpuWhileClosed()
{
    StreamlabsStandIn desktop;
    desktop.start();
    quint16 const port = desktop.port();
    desktop.stop();

    RelayServer relay;
    StreamlabsService service;
    service.init(&relay);
    service.connectSlobs(u"token"_s, port);
    return {cpuRow(u"is closed"_s, idleCpu())};
}

//! The service against a peer, which has its share in the CPU time, and how often it came in \a attempts.
QList<BenchRow> costOfPeer(QString const& peer, QString const& token, quint16 port, int const& attempts)
{
    RelayServer relay;
    StreamlabsService service;
    service.init(&relay);
    service.connectSlobs(token, port);
    BenchRow const cpu = cpuRow(peer, idleCpu());
    return {cpu, {.what = u"the same: attempts a second"_s,
                     .floorIs = u"one a second"_s,
                     .unit = u"/s"_s,
                     .ours = attempts / std::chrono::duration<double>(kIdleTime).count(),
                     .floor = 1,
                     .limit = 1.1}};
}

QList<BenchRow> peerThatCloses()
{
    auto server = std::make_unique<QTcpServer>();
    server->listen(QHostAddress::LocalHost);
    quint16 const port = server->serverPort();
    int attempts = 0;
    QObject::connect(server.get(), &QTcpServer::newConnection, server.get(), [&] {
        ++attempts;
        QTcpSocket* const connection = server->nextPendingConnection();
        connection->abort();
        connection->deleteLater();
    });
    auto rows = costOfPeer(u"accepts and closes"_s, u"token"_s, port, attempts);

    RelayServer relay;
    StreamlabsService service;
    service.init(&relay);
    service.connectSlobs(u"stand-in-token"_s, port);
    int const before = attempts;
    waitUntil([&] { return attempts == before + 2; }); // the longest wait begins
    server.reset();
    StreamlabsStandIn desktop;
    desktop.start(port);
    double const microsecondsBack =
        microseconds([&] { waitUntil([&desktop] { return desktop.authorizedCount() == 1; }); });
    constexpr double kPacing = 1000;
    rows.append({.what = u"and when it is itself again, until the link is back"_s,
        .floorIs = u"the second between two attempts"_s,
        .unit = u"ms"_s,
        .ours = microsecondsBack / 1000,
        .floor = kPacing,
        .limit = 1.6});
    return rows;
}

QList<BenchRow> peerThatEndsOnTheToken()
{
    StreamlabsStandIn desktop;
    desktop.start();
    int attempts = 0;
    QObject::connect(
        &desktop.transport(), &SockJsServer::clientConnected, &desktop, [&attempts] { ++attempts; });
    return costOfPeer(u"ends at each token"_s, u"a\"b"_s, desktop.port(), attempts);
}

QList<BenchRow> peerThatIsSilent()
{
    QWebSocketServer server(QString(), QWebSocketServer::NonSecureMode);
    server.listen(QHostAddress::LocalHost);
    int attempts = 0;
    QObject::connect(&server, &QWebSocketServer::newConnection, &server, [&] {
        ++attempts;
        QWebSocket const* const connection = server.nextPendingConnection();
        QObject::connect(connection, &QWebSocket::disconnected, connection, &QObject::deleteLater);
    });
    return costOfPeer(u"upgrades and is silent"_s, u"token"_s, server.serverPort(), attempts);
}

//! In kB, of what the process holds or has held at most.
double memory(QByteArray const& what)
{
    QFile file(u"/proc/self/status"_s);
    if (file.open(QIODevice::ReadOnly)) {
        for (QByteArray const& line : file.readAll().split('\n')) {
            if (line.startsWith(what)) {
                return line.simplified().split(' ').value(1).toDouble();
            }
        }
    }
    return 0;
}

QList<BenchRow> peerThatFloods()
{
    constexpr int kParts = 500;
    QByteArray const part(1'000'000, 'x');
    SockJsServer server;
    server.listen();
    int attempts = 0;
    QTimer next; // a part a turn, for the peer is not to hold the rest
    int sent = 0;
    QObject::connect(&server, &SockJsServer::frameReceived, &server, [&] {
        ++attempts;
        server.sendRawBytes("\x81\x7f" + QByteArray::fromHex("000000001dcd6500")); // 500,000,000
        sent = 0;
        next.start(0);
    });
    QObject::connect(&next, &QTimer::timeout, &server, [&] {
        server.sendRawBytes(part);
        if (++sent == kParts || server.clientCount() == 0) {
            next.stop();
        }
    });
    if (QFile peak(u"/proc/self/clear_refs"_s); peak.open(QIODevice::WriteOnly)) {
        peak.write("5"); // from here on
    }
    double const before = memory("VmRSS:");
    auto rows = costOfPeer(u"sends 500 MB in one frame"_s, u"token"_s, server.port(), attempts);
    constexpr double kKilo = 1024;
    rows.append({.what = u"the same: memory at most, beyond what there was"_s,
        .floorIs = u"the 64 MiB that a frame may have"_s,
        .unit = u"MiB"_s,
        .ours = (memory("VmHWM:") - before) / kKilo,
        .floor = static_cast<double>(WebSocketClient::kMaxSize) / kKilo / kKilo,
        .limit = 1});
    return rows;
}

QList<BenchRow> badPeers()
{
    return peerThatCloses() + peerThatEndsOnTheToken() + peerThatIsSilent() + peerThatFloods();
}

} // namespace

Benchmarks benchLink()
{
    return {{u"round-trip"_s, roundTrip}, {u"decode"_s, decodeLargeFrame}, {u"closed"_s, cpuWhileClosed},
        {u"peers"_s, badPeers}};
}
