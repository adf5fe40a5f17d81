#include "bench/LoadedHost.h"

#include "devhost/host/DevHost.h"
#include "relay/ZoRemoteCommands.h"

#include <QAbstractEventDispatcher>
#include <QEvent>
#include <QFile>
#include <QTimer>

#include <cstdio>

using namespace Qt::StringLiterals;

void settle(std::chrono::milliseconds time)
{
    QEventLoop loop;
    QTimer::singleShot(time, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

void drain()
{
    // What is written to a loopback socket can be read at once, so an idle turn means that nothing is left.
    constexpr int kSure = 3;
    for (int idle = 0; idle < kSure;) {
        bool const busy = QAbstractEventDispatcher::instance()->processEvents(QEventLoop::AllEvents);
        idle = busy ? 0 : idle + 1;
    }
}

double residentMemory()
{
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

LoadedHost::LoadedHost(int scenes, int items, quint16 port)
{
    if (scenes > 0) {
        constexpr int kAudioDevices = 20;
        desktop.model().generate(scenes, items, kAudioDevices);
    }
    sceneList = desktop.model().scenes();
    audioList = desktop.model().audioSources();
    if ((port == 0 && !desktop.start()) || !relay.listen() ||
        !plugin.load({DevHost::builtPluginFile(), relay.port(), {}, u"en_US"_s})) {
        std::fprintf(stderr, "no host: %s\n", qPrintable(plugin.errorString()));
        std::exit(1);
    }
    console.setPackage(plugin.package());
    bool linked = false;
    auto const watch =
        QObject::connect(&relay, &RelayServer::published, [&](QString const&, QJsonObject const& payload) {
            linked = linked || payload.value("authorized"_L1).toBool();
        });
    plugin.startService(relay, desktop.token(), port == 0 ? desktop.port() : port);
    waitUntil([&] { return linked; });
    QObject::disconnect(watch);
    window.resize(kWindowSize);
    window.show();
    settle(std::chrono::milliseconds(200));
}

LoadedHost::~LoadedHost()
{
    plugin.stopService();
    console.setPackage(nullptr);
    plugin.unload();
}

void LoadedHost::place(QString const& action, QJsonObject const& settings)
{
    int const index = console.firstFreeIndex();
    console.place(index, console.actionIdOf(action), settings);
    QWidget* const face = console.key(index)->faceWidget();
    face->setParent(&window);
    face->move(index % 8 * 160, index / 8 * 120);
    face->show();
}

void LoadedHost::placeMix(int keys, QString const& item)
{
    for (int i = 0; i < keys; ++i) {
        QJsonObject const scene = sceneList.at(i % sceneList.size()).toObject();
        QJsonArray const nodes = scene.value("nodes"_L1).toArray();
        QJsonObject const shown = item.isEmpty() ? nodes.at(nodes.isEmpty() ? 0 : i % nodes.size()).toObject()
                                                 : desktop.model().item(item);
        switch (i % 5) {
        case 0:
            place(u"scene"_s, {{u"version"_s, 2}, {u"scene_id"_s, scene.value("id"_L1)}});
            break;
        case 1:
            place(u"source"_s, {{u"version"_s, 2}, {u"scene_id"_s, shown.value("sceneId"_L1)},
                                   {u"scene_item_id"_s, shown.value("sceneItemId"_L1)}});
            break;
        case 2:
            place(u"mute"_s,
                {{u"version"_s, 2}, {u"audio_source_id"_s,
                                        audioList.at(i % audioList.size()).toObject().value("sourceId"_L1)}});
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

void LoadedHost::waitForSubscribers(int keys)
{
    waitUntil([&] { return relay.subscriberCount(ZoRemoteSubjects::kSubjectStreamlabsResponse) == keys; });
    settle(std::chrono::milliseconds(300));
}

bool PaintCounter::eventFilter(QObject* watched, QEvent* event)
{
    painted += event->type() == QEvent::Paint ? 1 : 0;
    return QObject::eventFilter(watched, event);
}
