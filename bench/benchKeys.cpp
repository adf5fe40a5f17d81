#include "bench/BareHops.h"
#include "bench/BenchRow.h"
#include "devhost/Console.h"
#include "devhost/DevHost.h"
#include "devhost/PluginHost.h"
#include "devhost/RelayServer.h"
#include "devhost/StreamlabsStandIn.h"
#include "relay/ZoRemoteCommands.h"
#include "uikit/ZoBaseHotkeyWidget.h"

#include <QAbstractEventDispatcher>
#include <QAbstractItemModel>
#include <QComboBox>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QEventLoop>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLabel>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
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

template <typename Condition>
void waitUntil(Condition const& condition)
{
    while (!condition()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

void settle(std::chrono::milliseconds time)
{
    QEventLoop loop;
    QTimer::singleShot(time, &loop, &QEventLoop::quit);
    loop.exec();
}

constexpr QSize windowSize(1300, 500);

//! What a host has, with the loaded library, its service connected, and a window for the faces. Other than
//! the development host it does not listen to what the service publishes: only the keys do.
class Host
{
public:
    Host(int scenes, int items)
    {
        if (scenes > 0) {
            desktop.model().generate(scenes, items, 20);
        }
        if (!desktop.start() || !relay.listen() ||
            !plugin.load({DevHost::builtPluginFile(), relay.port(), {}, u"en_US"_s})) {
            std::fprintf(stderr, "no host: %s\n", qPrintable(plugin.errorString()));
            std::exit(1);
        }
        console.setPackage(plugin.package());
        plugin.startService(relay, desktop.token(), desktop.port());
        waitUntil([&] { return desktop.authorizedCount() == 1; });
        window.resize(windowSize);
        window.show();
        settle(std::chrono::milliseconds(200));
    }

    ~Host()
    {
        plugin.stopService();
        console.setPackage(nullptr);
        plugin.unload();
    }

    Host(Host const&) = delete;
    Host& operator=(Host const&) = delete;

    void place(QString const& action, QJsonObject const& settings = {})
    {
        int const index = console.firstFreeIndex();
        console.place(index, console.actionIdOf(action), settings);
        QWidget* const face = console.key(index)->faceWidget();
        face->setParent(&window);
        face->move(index % 8 * 160, index / 8 * 120);
        face->show();
    }

    //! A mix of all five actions on targets of the generated collection.
    void placeMix(int keys) { placeMix(keys, desktop.model().scenes(), desktop.model().audioSources()); }

    void placeMix(int keys, QJsonArray const& scenes, QJsonArray const& audio)
    {
        for (int i = 0; i < keys; ++i) {
            QJsonObject const scene = scenes.at(i % scenes.size()).toObject();
            QJsonObject const item = scene.value("nodes"_L1).toArray().at(i).toObject();
            switch (i % 5) {
            case 0:
                place(u"scene"_s, {{u"version"_s, 2}, {u"scene_id"_s, scene.value("id"_L1)}});
                break;
            case 1:
                place(u"source"_s, {{u"version"_s, 2}, {u"scene_id"_s, scene.value("id"_L1)},
                                       {u"scene_item_id"_s, item.value("sceneItemId"_L1)}});
                break;
            case 2:
                place(u"mute"_s,
                    {{u"version"_s, 2},
                        {u"audio_source_id"_s, audio.at(i % audio.size()).toObject().value("sourceId"_L1)}});
                break;
            case 3:
                place(u"stream"_s);
                break;
            default:
                place(u"record"_s);
                break;
            }
        }
    }

    void waitForSubscribers(int keys)
    {
        waitUntil(
            [&] { return relay.subscriberCount(ZoRemoteSubjects::kSubjectStreamlabsResponse) == keys; });
        settle(std::chrono::milliseconds(300));
    }

    StreamlabsStandIn desktop;
    RelayServer relay;
    PluginHost plugin;
    Console console{QString()};
    QWidget window;
};

//! Counts how often a widget has been painted.
class PaintCounter : public QObject
{
public:
    explicit PaintCounter(QWidget* widget) { widget->installEventFilter(this); }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        painted += event->type() == QEvent::Paint ? 1 : 0;
        return QObject::eventFilter(watched, event);
    }

    int painted = 0;
};

//! The face of a key in a window like that of the keys, told directly what to show: what showing it costs
//! without us on the way.
class BareFace
{
public:
    BareFace()
    {
        window.resize(windowSize);
        window.show();
        constexpr int warmUp = 10;
        for (int i = 0; i < warmUp; ++i) {
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

constexpr double median = 0.5;
constexpr double tail = 0.99;

//! From the finger to the request and from the event to the repainted face.
QList<BenchRow> pressAndFace()
{
    Host host(0, 0);
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
    constexpr int warmUp = 100;
    for (int i = 0; i < warmUp; ++i) {
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
    constexpr int rounds = 10000;
    for (int round = 0; round < rounds; ++round) {
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
    constexpr double limit = 1.5;
    return {
        row(u"press to request, through the library (median)"_s, bare, limit, pressTimes, thereTimes, median),
        row(u"press to request, through the library (99th percentile)"_s, bare, limit, pressTimes, thereTimes,
            tail),
        row(u"status event to repainted face (median)"_s, bareFace, limit, faceTimes, backTimes, median),
        row(u"status event to repainted face (99th percentile)"_s, bareFace, limit, faceTimes, backTimes,
            tail)};
}

constexpr int manyKeys = 32;
constexpr int sceneCount = 50;
constexpr int itemsPerScene = 40;
//! One that a key of the mix shows.
QString const draggedItem = u"Item 2.2"_s;

//! Until all that is under way in this process has been worked off.
void drain()
{
    // What is written to a loopback socket can be read at once, so an idle turn means that nothing is left.
    constexpr int sure = 3;
    for (int idle = 0; idle < sure;) {
        bool const busy = QAbstractEventDispatcher::instance()->processEvents(QEventLoop::AllEvents);
        idle = busy ? 0 : idle + 1;
    }
}

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
        // One after the other is the fastest way: less memory is in use at a time.
        for (auto const& sender : senders) {
            sender->sendTextMessage(text);
            waitUntil([this, expected = received + 1] { return received == expected; });
        }
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
QString frameUpon(Host& host, Change const& change)
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

//! Microseconds from the frame of an item that was hidden or shown until every key has worked off the list.
struct ItemUpdated
{
    std::vector<double> ours;
    std::vector<double> transport;
    //! Round by round, for the median of differences is steadier than the difference of medians.
    std::vector<double> beyond;

    void measure(int keys)
    {
        Host host(sceneCount, itemsPerScene);
        host.placeMix(keys);
        host.waitForSubscribers(keys);
        drain();
        QString published;
        QObject::connect(&host.relay, &RelayServer::published, &host.window,
            [&](QString const&, QJsonObject const& payload) {
                published = QString::fromUtf8(QJsonDocument(payload).toJson(QJsonDocument::Compact));
            });
        QString const hidden =
            frameUpon(host, [](StandInModel& model) { model.setItemVisible(draggedItem, false); });
        QString const shown =
            frameUpon(host, [](StandInModel& model) { model.setItemVisible(draggedItem, true); });
        QObject::disconnect(&host.relay, nullptr, &host.window, nullptr);

        BareFanOut bare(keys);
        constexpr int rounds = 21;
        for (int round = 0; round < rounds; ++round) {
            transport.push_back(microseconds([&] { bare.run(published); }));
            ours.push_back(microseconds([&] {
                host.desktop.transport().sendRawFrame(round % 2 == 0 ? hidden : shown);
                drain();
            }));
            beyond.push_back(ours.back() - transport.back());
        }
    }
};

QList<BenchRow> itemUpdated()
{
    ItemUpdated one;
    ItemUpdated many;
    // Anew each time: where the buffers come to lie decides on some per cent.
    constexpr int repetitions = 7;
    for (int i = 0; i < repetitions; ++i) {
        one.measure(1);
        many.measure(manyKeys);
    }
    constexpr double limit = 1.5;
    return {row(u"one item of 2,000 changed, 32 keys"_s, u"the same bytes to 32 sockets, parsed once"_s,
                limit, many.ours, many.transport, median),
        row(u"one item of 2,000 changed, 32 keys, beyond that transport"_s, u"the same with 1 key"_s, limit,
            many.beyond, one.beyond, median)};
}

//! Resident memory, KiB, without what is free again.
double residentMemory()
{
#ifdef __GLIBC__
    malloc_trim(0);
#endif
    QFile file(u"/proc/self/status"_s);
    if (file.open(QIODevice::ReadOnly)) {
        for (auto const& line : file.readAll().split('\n')) {
            if (line.startsWith("VmRSS:")) {
                return line.mid(6).trimmed().split(' ').first().toDouble();
            }
        }
    }
    return 0;
}

//! Of the GUI thread while it lives, ms.
class LongestGap
{
public:
    LongestGap()
    {
        beat.setTimerType(Qt::PreciseTimer);
        beat.callOnTimeout([this] {
            longest = std::max(longest, static_cast<double>(sinceLast.nsecsElapsed()) / 1e6);
            sinceLast.start();
        });
        sinceLast.start();
        beat.start(1);
    }

    double longest = 0;

private:
    QTimer beat;
    QElapsedTimer sinceLast;
};

//! An item is dragged for a minute.
QList<BenchRow> drag()
{
    Host host(sceneCount, itemsPerScene);
    host.placeMix(manyKeys);
    host.waitForSubscribers(manyKeys);
    QString const moved = frameUpon(host, [](StandInModel& model) { model.moveItem(draggedItem, {1, 1}); });
    settle(std::chrono::seconds(2));

    QTimer mouse;
    mouse.setTimerType(Qt::PreciseTimer);
    mouse.setInterval(std::chrono::milliseconds(1000 / 60));
    mouse.callOnTimeout([&] { host.desktop.transport().sendRawFrame(moved); });
    // What the keys and their panels show does not change.
    int changes = 0;
    std::vector<std::unique_ptr<PaintCounter>> paints;
    for (int const index : host.console.indices()) {
        ConsoleKey const* const key = host.console.key(index);
        // A playing icon is painted for each of its frames, and the title over it with it.
        if (!key->face().icon.endsWith(".gif"_L1)) {
            paints.push_back(
                std::make_unique<PaintCounter>(key->faceWidget()->findChild<QLabel*>(u"lblTitle"_s)));
        }
        for (auto const* box : key->panelWidget()->findChildren<QComboBox*>()) {
            QObject::connect(
                box->model(), &QAbstractItemModel::rowsInserted, &host.window, [&] { ++changes; });
        }
    }
    // Without the messages that are under way.
    auto const memoryAtRest = [&] {
        mouse.stop();
        drain();
        return residentMemory();
    };
    // What the first seconds take stays; it must not grow from there.
    constexpr auto warmUp = std::chrono::seconds(10);
    mouse.start();
    settle(warmUp);
    double const before = memoryAtRest();
    double longest = 0;
    {
        mouse.start();
        LongestGap gap;
        settle(std::chrono::minutes(1));
        longest = gap.longest;
    }
    double const after = memoryAtRest();
    for (auto const& counter : paints) {
        changes += counter->painted;
    }
    constexpr double stall = 50;
    return {{.what = u"longest stall of the GUI thread while an item is dragged for a minute, 32 keys"_s,
                .floorIs = u"1 ms"_s,
                .unit = u"ms"_s,
                .ours = longest,
                .floor = 1,
                .limit = stall},
        {.what = u"memory after that minute"_s,
            .floorIs = u"before it"_s,
            .unit = u"KiB"_s,
            .ours = after,
            .floor = before,
            .limit = 1.02},
        {.what = u"still faces painted and panels filled during that minute"_s,
            .floorIs = u"nothing that they show has changed"_s,
            .unit = QString(),
            .ours = static_cast<double>(changes),
            .floor = 1,
            .limit = 0}};
}

//! From placing the last key until all faces are true.
QList<BenchRow> placing()
{
    Host host(sceneCount, itemsPerScene);
    host.placeMix(1); // what all keys share
    host.waitForSubscribers(1);
    drain();
    auto const scenes = host.desktop.model().scenes();
    auto const audio = host.desktop.model().audioSources();
    double const before = residentMemory();
    QElapsedTimer timer;
    timer.start();
    host.placeMix(manyKeys, scenes, audio);
    auto const keys = host.console.indices();
    waitUntil([&] {
        return std::ranges::none_of(keys, [&](int index) { return host.console.key(index)->face().invalid; });
    });
    double const took = static_cast<double>(timer.nsecsElapsed()) / 1e6;
    drain();
    double const after = residentMemory();
    return {{.what = u"32 keys placed, all faces true"_s,
                .floorIs = u"1 ms"_s,
                .unit = u"ms"_s,
                .ours = took,
                .floor = 1,
                .limit = 300},
        {.what = u"memory of one key of 32"_s,
            .floorIs = u"1 KiB"_s,
            .unit = u"KiB"_s,
            .ours = (after - before) / manyKeys,
            .floor = 1,
            .limit = 400}};
}

} // namespace

Benchmarks benchKeys()
{
    return {{u"press"_s, pressAndFace}, {u"item-updated"_s, itemUpdated}, {u"drag"_s, drag},
        {u"placing"_s, placing}};
}
