#include "bench/BareHops.h"
#include "bench/BenchRow.h"
#include "bench/LoadedHost.h"
#include "uikit/ZoBaseHotkeyWidget.h"

#include <QElapsedTimer>
#include <QEvent>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLabel>
#include <QTcpServer>
#include <QTcpSocket>
#include <QWebSocket>
#include <QWebSocketServer>
#include <QWidget>

#ifdef __GLIBC__
#include <malloc.h>
#endif

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

//! The face of a key in a window like that of the keys, told directly what to show: what showing it costs
//! without us on the way.
class BareFace
{
public:
    BareFace()
    {
        window.resize(LoadedHost::kWindowSize);
        window.show();
        constexpr int kWarmUp = 10;
        for (int i = 0; i < kWarmUp; ++i) {
            change();
        }
    }

    //! Returns when it is painted.
    void change()
    {
        int const before = paints.painted;
        isOn = !isOn;
        face.setIconTitle(isOn ? u"Stream"_s : u"Stop Stream"_s);
        face.setIconAsset(isOn ? on : off);
        waitUntil([&] { return paints.painted > before; });
    }

private:
    QString const on = u":/Streamlabs/images/slobs_stream_on.gif"_s;
    QString const off = u":/Streamlabs/images/slobs_stream_off.png"_s;
    QWidget window;
    ZoBaseHotkeyWidget face{&window};
    PaintCounter paints{face.findChild<QLabel*>(u"lblTitle"_s)};
    bool isOn = false;
};

QString eventFrame(QString const& status)
{
    return uR"(a["{\"jsonrpc\":\"2.0\",\"id\":null,\"result\":{\"_type\":\"EVENT\",\"emitter\":\"STREAM\",)"
           uR"(\"resourceId\":\"StreamingService.streamingStatusChange\",\"data\":\"%1\"}}"])"_s.arg(status);
}

BenchRow row(QString const& what, QString const& floorIs, double limit, std::vector<double> ours,
    std::vector<double> floor, double q)
{
    return {.what = what,
        .floorIs = floorIs,
        .ours = quantile(std::move(ours), q),
        .floor = quantile(std::move(floor), q),
        .limit = limit};
}

constexpr double kMedian = 0.5;
constexpr double kTail = 0.99;

//! From the finger to the request and from the event to the repainted face.
QList<BenchRow> pressAndFace()
{
    LoadedHost host(0, 0);
    host.place(u"stream"_s);
    host.waitForSubscribers(1);
    auto& desktop = host.desktop;
    ConsoleKey* const key = host.console.key(0);
    auto* const title = key->faceWidget()->findChild<QLabel*>(u"lblTitle"_s);
    PaintCounter paints(title);

    int requests = 0;
    // What the other application does with a request is not ours.
    QObject::disconnect(&desktop.transport(), &SockJsServer::messageReceived, &desktop, nullptr);
    QObject::connect(
        &desktop.transport(), &SockJsServer::frameReceived, &desktop, [&requests] { ++requests; });

    BareHops::Texts texts;
    auto const compact = [](QJsonObject const& object) {
        return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
    };
    QObject listener;
    QObject::connect(&host.relay, &RelayServer::commandReceived, &listener,
        [&](QJsonObject const& command) { texts.there = compact(command); });
    QObject::connect(&desktop.transport(), &SockJsServer::frameReceived, &listener,
        [&](int, QString const& frame) { texts.request = frame; });
    QObject::connect(&host.relay, &RelayServer::published, &listener,
        [&](QString const&, QJsonObject const& payload) { texts.back = compact(payload); });

    auto const press = [&] {
        int const before = requests;
        key->trigger(); // down and up are for the face
        waitUntil([&] { return requests > before; });
    };
    bool live = false;
    QString const on = eventFrame(u"live"_s);
    QString const off = eventFrame(u"offline"_s);
    auto const change = [&] {
        int const before = paints.painted;
        live = !live;
        desktop.transport().sendRawFrame(live ? on : off);
        waitUntil([&] { return paints.painted > before; });
    };
    constexpr int kWarmUp = 100;
    for (int i = 0; i < kWarmUp; ++i) {
        press();
        change();
    }
    listener.disconnect();
    QObject::disconnect(&host.relay, nullptr, &listener, nullptr);
    QObject::disconnect(&desktop.transport(), nullptr, &listener, nullptr);
    texts.answers = {on};
    BareHops hops(texts);
    hops.connectBoth();
    BareFace face;

    std::vector<double> pressTimes;
    std::vector<double> thereTimes;
    std::vector<double> faceTimes;
    std::vector<double> backTimes;
    constexpr int kRounds = 10000;
    for (int round = 0; round < kRounds; ++round) {
        thereTimes.push_back(microseconds([&] { hops.runThere(); }));
        pressTimes.push_back(microseconds(press));
        backTimes.push_back(microseconds([&] {
            hops.runBack();
            face.change();
        }));
        faceTimes.push_back(microseconds(change));
    }
    QString const bare = u"the same bytes over bare WebSockets"_s;
    QString const bareFace = bare + u", then the same face told directly"_s;
    constexpr double kPressLimit = 2;
    constexpr double kLimit = 1.5;
    return {row(u"press to request, through the library (median)"_s, bare, kPressLimit, pressTimes,
                thereTimes, kMedian),
        row(u"press to request, through the library (99th percentile)"_s, bare, kPressLimit, pressTimes,
            thereTimes, kTail),
        row(u"status event to repainted face (median)"_s, bareFace, kLimit, faceTimes, backTimes, kMedian),
        row(u"status event to repainted face (99th percentile)"_s, bareFace, kLimit, faceTimes, backTimes,
            kTail)};
}

constexpr int kManyKeys = 32;
constexpr int kSceneCount = 50;
constexpr int kItemsPerScene = 40;
//! One that a key of the mix shows.
QString const draggedItem = u"Item 2.2"_s;

//! One text to many WebSockets in this process, of which one parses it.
class BareFanOut
{
public:
    explicit BareFanOut(int clients)
    {
        QObject::connect(&tcp, &QTcpServer::newConnection, &tcp, [this] {
            QTcpSocket* const socket = tcp.nextPendingConnection();
            socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
            server.handleConnection(socket);
        });
        tcp.listen(QHostAddress::LocalHost);
        for (int i = 0; i < clients; ++i) {
            auto& client = receivers.emplace_back(std::make_unique<QWebSocket>());
            QObject::connect(
                client.get(), &QWebSocket::textMessageReceived, client.get(), [this](QString const& text) {
                    parsed = received > 0 ? parsed : QJsonDocument::fromJson(text.toUtf8());
                    ++received;
                });
            client->open(QUrl(u"ws://127.0.0.1:%1"_s.arg(tcp.serverPort())));
            waitUntil([this] { return server.hasPendingConnections(); });
            senders.emplace_back(server.nextPendingConnection());
        }
        waitUntil([this] {
            return std::ranges::all_of(receivers, [](auto const& client) { return client->isValid(); });
        });
    }

    void run(QString const& text)
    {
        received = 0;
        for (auto const& sender : senders) {
            sender->sendTextMessage(text);
        }
        waitUntil([this] { return received == senders.size(); });
    }

private:
    QTcpServer tcp;
    QWebSocketServer server{QString(), QWebSocketServer::NonSecureMode};
    std::vector<std::unique_ptr<QWebSocket>> senders;
    std::vector<std::unique_ptr<QWebSocket>> receivers;
    std::size_t received = 0;
    QJsonDocument parsed;
};

//! The frame that the stand-in sends upon \a change.
template <typename Change>
QString frameUpon(LoadedHost& host, Change const& change)
{
    QString frame;
    QObject listener;
    QObject::connect(&host.desktop.transport(), &SockJsServer::frameSent, &listener,
        [&](int, QString const& sent) { frame = sent; });
    change(host.desktop.model());
    waitUntil([&] { return !frame.isEmpty(); });
    drain();
    return frame;
}

//! From the frame of an item that was hidden or shown until every key has worked off the list.
QList<BenchRow> itemUpdated()
{
    std::vector<double> ours;
    std::vector<double> transport;
    // Anew each time: where the buffers come to lie decides on some per cent.
    constexpr int kRepetitions = 3;
    for (int i = 0; i < kRepetitions; ++i) {
        LoadedHost host(kSceneCount, kItemsPerScene);
        host.placeMix(kManyKeys);
        host.waitForSubscribers(kManyKeys);
        drain();
        QString published;
        int publications = 0;
        QObject::connect(&host.relay, &RelayServer::published, &host.window,
            [&](QString const&, QJsonObject const& payload) {
                ++publications;
                if (published.isEmpty()) {
                    published = QString::fromUtf8(QJsonDocument(payload).toJson(QJsonDocument::Compact));
                }
            });
        QString const hidden =
            frameUpon(host, [](StandInModel& model) { model.setItemVisible(draggedItem, false); });
        QString const shown =
            frameUpon(host, [](StandInModel& model) { model.setItemVisible(draggedItem, true); });
        waitUntil([&] { return publications > 0; });

        BareFanOut bare(kManyKeys);
        std::chrono::milliseconds rest(1000);
        constexpr int kRounds = 11;
        for (int round = 0; round < kRounds; ++round) {
            transport.push_back(microseconds([&] { bare.run(published); }));
            settle(rest);
            ours.push_back(microseconds([&] {
                int const before = publications;
                host.desktop.transport().sendRawFrame(round % 2 == 0 ? hidden : shown);
                waitUntil([&] { return publications > before; });
                drain();
            }));
            constexpr int kRestPerCost = 10; // that the service leaves the relay after a large list
            rest = std::chrono::milliseconds(1 + static_cast<int>(kRestPerCost * ours.back() / 1000));
        }
    }
    constexpr double kLimit = 1.5;
    return {row(u"one item of 2,000 changed, 32 keys"_s,
        u"the same bytes to 32 bare WebSockets, parsed once"_s, kLimit, ours, transport, kMedian)};
}

//! Resident memory without what is free again, KiB.
double memoryAtRest()
{
#ifdef __GLIBC__
    malloc_trim(0);
#endif
    return residentMemory();
}

struct Placing
{
    double ms = 0;
    double memory = 0;
};

//! From placing the first of 32 keys until all faces are true.
Placing placeKeys(int scenes, int items)
{
    LoadedHost host(scenes, items);
    host.placeMix(1); // what all keys share
    host.waitForSubscribers(1);
    drain();
    double const before = memoryAtRest();
    QElapsedTimer timer;
    timer.start();
    host.placeMix(kManyKeys);
    auto const keys = host.console.indices();
    waitUntil([&] {
        return std::ranges::none_of(keys, [&](int index) { return host.console.key(index)->face().invalid; });
    });
    double const took = static_cast<double>(timer.nsecsElapsed()) / 1e6;
    drain();
    return {took, (memoryAtRest() - before) / kManyKeys};
}

QList<BenchRow> placing()
{
    constexpr int kRounds = 5;
    std::vector<double> large;
    std::vector<double> small;
    std::vector<double> memory;
    for (int round = 0; round < kRounds; ++round) {
        small.push_back(placeKeys(1, 1).ms);
        auto const [ms, perKey] = placeKeys(kSceneCount, kItemsPerScene);
        large.push_back(ms);
        memory.push_back(perKey);
    }
    double const smallMs = quantile(std::move(small), kMedian);
    double const largeMs = quantile(std::move(large), kMedian);
    return {{.what = u"32 keys placed, all faces true, 2,000 items"_s,
                .floorIs = u"1 ms"_s,
                .unit = u"ms"_s,
                .ours = largeMs,
                .floor = 1,
                .limit = 300},
        {.what = u"32 keys placed, all faces true, 2,000 items: more than with 1 item"_s,
            .floorIs = u"1 ms"_s,
            .unit = u"ms"_s,
            .ours = largeMs - smallMs,
            .floor = 1,
            .limit = 100},
        {.what = u"memory of one key of 32"_s,
            .floorIs = u"1 KiB"_s,
            .unit = u"KiB"_s,
            .ours = quantile(std::move(memory), kMedian),
            .floor = 1,
            .limit = 400}};
}

} // namespace

Benchmarks benchKeys()
{
    return {{u"press"_s, pressAndFace}, {u"item-updated"_s, itemUpdated}, {u"placing"_s, placing}};
}
