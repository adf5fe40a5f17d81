// lumen-soak: the loaded library under everything at once, compared with the truth whenever it is quiet.

#include "bench/LoadedHost.h"
#include "devhost/host/DevHost.h"
#include "devhost/script/PanelUser.h"
#include "plugin/IBuiltInPackageLibrary.h"
#include "relay/ZoRemoteCommands.h"

#include <QApplication>
#include <QComboBox>
#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QTimer>

#ifdef __GLIBC__
#include <malloc.h>
#endif

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int kKeyCount = 32;
constexpr qsizetype kMostLines = 60;
//! What was done and logged last, in order.
QStringList recent;
bool isVerbose = false;

void remember(QString const& line)
{
    if (recent.size() == kMostLines) {
        recent.removeFirst();
    }
    constexpr qsizetype kMostCharacters = 300;
    recent.append(line.left(kMostCharacters));
    if (isVerbose) {
        std::printf("%s\n", qPrintable(recent.last()));
        std::fflush(stdout);
    }
}
QString const rightToken = u"stand-in-token"_s;

//! The limit counts the time in which what was under way was worked off, so that a busy machine spoils
//! nothing.
template <typename Condition>
bool waitFor(std::chrono::milliseconds limit, Condition const& condition)
{
    constexpr auto kInterval = 10ms;
    for (auto waited = 0ms; waited < limit; waited += kInterval) {
        drain();
        if (condition()) {
            return true;
        }
        settle(kInterval);
    }
    return false;
}

class Soak : public QObject
{
public:
    explicit Soak(quint32 seed) : printedSeed(seed) { listDeeds(); }

    //! Ends the program at the first difference.
    void run(std::chrono::milliseconds time);

private:
    using Entries = QList<StandInModel::Entry>;

    struct Deed
    {
        int weight;
        QString name;
        std::function<void()> run;
    };
    struct Footprint
    {
        double memory = 0; //!< MiB
        qsizetype descriptors = 0;
    };
    //! What a key has been set to.
    struct Key
    {
        QString action{};
        QString sceneId{};
        QString itemId{};
        QString audioId{};
    };

    void listDeeds();
    void start();
    void doSomething();
    void heal();
    void rest();
    void press();
    Footprint footprint();
    QStringList differences();
    void compareKey(int index, QStringList& differences);
    [[noreturn]] void fail(QString const& what, QStringList const& details = {});

    //! \name Deeds
    //!@{
    void place(int index);
    QJsonObject chooseSettings(Key& key);
    void chooseInPanel();
    void retitle();
    void replaceContents();
    void connectWith(QString const& token);
    //!@}

    //! \name Chance
    //!@{
    int below(qsizetype bound) { return random.bounded(qMax(static_cast<int>(bound), 1)); }
    bool chance(int percent) { return below(100) < percent; }
    template <typename List>
    auto any(List const& list)
    {
        return list.value(below(list.size()));
    }
    QJsonObject any(QJsonValue const& list) { return list[below(list.toArray().size())].toObject(); }
    // No backslash and no line end: what the link makes of them is known, and no truth.
    QString anyName()
    {
        return any(QStringList{u"Cam "_s, u"Chat \"live\" "_s, u"配信終了"_s, u"Alert 🔔"_s, u"Vídeo'"_s}) +
               QString::number(below(20));
    }
    // Every other time what a key shows.
    QString anyScene() { return chance(50) ? anySet(&Key::sceneId) : any(model().sceneEntries()).id; }
    QString anyNode() { return chance(50) ? anySet(&Key::itemId) : any(model().nodeEntries(anyScene())).id; }
    QString anyAudio() { return chance(50) ? anySet(&Key::audioId) : any(model().audioEntries()).id; }
    QString anySet(QString Key::* id)
    {
        QStringList ids;
        for (auto const& key : keys) {
            ids.append(key.*id);
        }
        ids.removeAll(QString());
        return any(ids);
    }
    QString anyCollection() { return any(QJsonValue(model().collections())).value("id"_L1).toString(); }
    ConsoleKey& anyKey() { return *devHost.console().key(below(kKeyCount)); }
    //!@}

    StandInModel& model() { return devHost.standIn().model(); }
    bool isLinked() { return connected && devHost.standIn().isRunning(); }

    quint32 printedSeed;
    QRandomGenerator random;
    int steps = 0;
    int rests = 0;
    QList<Deed> allDeeds;
    QElapsedTimer total;
    QElapsedTimer sinceTraffic;
    QWidget window;
    DevHost devHost;
    std::array<Key, kKeyCount> keys;
    QHash<QString, bool> leds;
    //! The service was told last to connect, and with the right token.
    bool connected = true;
    //! Something changed that Streamlabs Desktop has no event for, or one that leads to no new list.
    bool needsRefresh = false;
};

// ---- Everything at once

void Soak::listDeeds()
{
    auto const handshake = [this](SockJsServer::Handshake kind) {
        devHost.standIn().transport().setHandshake(kind);
        devHost.standIn().drop();
    };
    auto const refused = [this] {
        devHost.standIn().setToken(u"another"_s);
        devHost.standIn().drop();
        connected = false;
    };
    auto const task = [this] {
        devHost.sendTask(any(QStringList{u"refreshModel"_s, u"refreshCollections"_s, u"refreshScenes"_s,
                             u"queryCollections"_s, u"queryScenes"_s}),
            {});
    };
    auto const drag = [this] {
        QString const item = anyNode();
        for (int i = below(60); i > 0; --i) {
            model().moveItem(item, {1, 1});
            QCoreApplication::processEvents();
        }
    };
    auto const newSettings = [this] {
        int const index = below(kKeyCount);
        devHost.console().key(index)->setSettings(chooseSettings(keys.at(index)));
    };
    auto const addScene = [this] {
        return model().sceneEntries().size() < 45 && model().addScene(anyName());
    };
    auto const addCollection = [this] {
        return model().collections().size() < 4 && model().addCollection(anyName());
    };
    auto const disconnect = [this] {
        devHost.plugin().disconnectDesktop();
        connected = false;
    };
    auto const blindly = [this](auto const& deed) {
        return [this, deed] {
            deed();
            needsRefresh = true;
        };
    };
    allDeeds = {
        {8, u"stream"_s, [this] { model().toggleStreaming(); }},
        {8, u"record"_s, [this] { model().toggleRecording(); }},
        {2, u"interrupt"_s, [this] { model().interruptStream(); }},
        {12, u"switch scene"_s, [this] { model().switchScene(anyScene()); }},
        {4, u"add scene"_s, blindly(addScene)},
        {4, u"remove scene"_s, blindly([this] { model().removeScene(anyScene()); })},
        {5, u"rename scene"_s, [this] { model().renameScene(anyScene(), anyName()); }},
        {6, u"add item"_s, [this] { model().addItem(anyScene(), anyName()); }},
        {1, u"add folder"_s, [this] { model().addFolder(anyScene(), anyName()); }},
        {6, u"remove node"_s, blindly([this] { model().removeItem(anyNode()); })},
        {6, u"rename node"_s, [this] { model().renameItem(anyNode(), anyName()); }},
        {20, u"show or hide"_s, [this] { model().setItemVisible(anyNode(), chance(50)); }},
        {3, u"lock"_s, [this] { model().setItemLocked(anyNode(), chance(50)); }},
        {6, u"drag"_s, drag},
        {2, u"add audio"_s, [this] { model().addAudioSource(anyName()); }},
        {2, u"remove audio"_s, [this] { model().removeAudioSource(anyAudio()); }},
        {3, u"rename audio"_s, [this] { model().renameAudioSource(anyAudio(), anyName()); }},
        {12, u"mute"_s, [this] { model().setMuted(anyAudio(), chance(50)); }},
        {1, u"add collection"_s, addCollection},
        {1, u"remove collection"_s, [this] { model().removeCollection(anyCollection()); }},
        {3, u"switch collection"_s, [this] { model().switchCollection(anyCollection()); }},

        {20, u"press"_s, [this] { anyKey().press(); }},
        {8, u"choose"_s, [this] { chooseInPanel(); }},
        {4, u"retitle"_s, [this] { retitle(); }},
        {4, u"replace key"_s, [this] { place(below(kKeyCount)); }},
        {3, u"new settings"_s, newSettings},
        {2, u"open or close panel"_s, [this] { anyKey().panelWidget()->setVisible(chance(50)); }},
        {2, u"click refresh"_s, [this] { PanelUser::click(*anyKey().panelWidget(), u"btnRefresh"_s); }},
        {1, u"language"_s,
            [this] { devHost.plugin().package()->translate(chance(50) ? u"de_DE"_s : u"en_US"_s); }},
        {1, u"task"_s, task},

        {3, u"drop"_s, [this] { devHost.standIn().drop(); }},
        {1, u"stop"_s, [this] { devHost.standIn().stop(); }},
        {2, u"start"_s,
            [this] {
                devHost.standIn().isRunning() || devHost.standIn().start(devHost.standIn().lastPort());
            }},
        {1, u"other contents"_s, [this] { replaceContents(); }},
        {1, u"other token"_s, refused},
        {1, u"connect, wrong token"_s, [this] { connectWith(u"wrong"_s); }},
        {1, u"disconnect"_s, disconnect},
        {2, u"connect"_s, [this] { connectWith(rightToken); }},
        {1, u"no such page"_s, [handshake] { handshake(SockJsServer::Handshake::NotFound); }},
        {1, u"no answer"_s,
            [this, handshake] {
                if (chance(10)) { // it costs ten seconds
                    handshake(SockJsServer::Handshake::NeverAnswer);
                }
            }},
    };
}

void Soak::doSomething()
{
    // Each step has numbers of its own, so that what one of them draws moves none behind it.
    random.seed(printedSeed + static_cast<quint32>(++steps) * 2654435761U);
    int sum = 0;
    for (auto const& deed : std::as_const(allDeeds)) {
        sum += deed.weight;
    }
    int at = below(sum);
    auto const deed =
        std::ranges::find_if(allDeeds, [&at](Deed const& one) { return (at -= one.weight) < 0; });
    remember(u"%1 %2"_s.arg(steps).arg(deed->name));
    deed->run();
    switch (below(3)) {
    case 0:
        break; // the next one before anybody hears of this
    case 1:
        QCoreApplication::processEvents();
        break;
    default:
        settle(std::chrono::milliseconds(below(30)));
    }
}

// On what is there, or was in another collection, or on nothing; as this or an earlier version stored it.
QJsonObject Soak::chooseSettings(Key& key)
{
    key = {.action = key.action};
    QJsonObject const collection = any(QJsonValue(model().collectionSchemas()));
    QJsonObject const scene = any(collection.value("scenes"_L1));
    QJsonObject const item = any(scene.value("sceneItems"_L1));
    QJsonObject const source = any(collection.value("sources"_L1));
    QJsonObject settings;
    if (chance(80)) {
        settings.insert("version"_L1, 2);
    }
    if (chance(10)) {
        return settings;
    }
    if (key.action == "scene"_L1 || key.action == "source"_L1) {
        key.sceneId = scene.value("id"_L1).toString();
        settings.insert("scene_id"_L1, key.sceneId);
    }
    if (key.action == "source"_L1) {
        key.itemId = item.value("sceneItemId"_L1).toString();
        settings.insert("scene_item_id"_L1, key.itemId);
    }
    if (key.action == "mute"_L1) {
        key.audioId = chance(80) ? anyAudio() : source.value("id"_L1).toString();
        settings.insert("audio_source_id"_L1, key.audioId);
    }
    return settings;
}

void Soak::place(int index)
{
    Key& key = keys.at(index);
    key.action = QStringList{u"stream"_s, u"record"_s, u"scene"_s, u"source"_s, u"mute"_s}.at(index % 5);
    QJsonObject const settings = chooseSettings(key);
    Console& console = devHost.console();
    console.place(index, console.actionIdOf(key.action), settings);
    QWidget* const face = console.key(index)->faceWidget();
    face->setParent(&window);
    face->move(index % 8 * 160, index / 8 * 120);
    face->show();
}

void Soak::chooseInPanel()
{
    int const index = below(kKeyCount);
    QWidget& panel = *devHost.console().key(index)->panelWidget();
    auto const boxes = panel.findChildren<QComboBox*>(QRegularExpression(u"^dropdown"_s));
    auto* const box = any(boxes);
    if (!box) {
        return;
    }
    QStringList const entries =
        PanelUser::look(panel, box->objectName()).value("entries"_L1).toVariant().toStringList();
    if (entries.isEmpty()) {
        return;
    }
    QString const entry = any(entries);
    QString const id = box->itemData(box->findText(entry)).toString();
    QString const problem = PanelUser::choose(panel, box->objectName(), entry);
    if (!problem.isEmpty() || box->currentData().toString() != id) {
        fail(u"key %1 does not take \"%2\" %3"_s.arg(index).arg(entry, problem));
    }
    // The key does what the boxes then say.
    Key& key = keys.at(index);
    for (auto const* shown : boxes) {
        QString const name = shown->objectName();
        (name == "dropdownAudioList"_L1      ? key.audioId
            : name == "dropdownSceneList"_L1 ? key.sceneId
                                             : key.itemId) = shown->currentData().toString();
    }
}

void Soak::retitle()
{
    ConsoleKey& key = anyKey();
    int const state = below(2);
    QString const title = anyName();
    auto* const frame = key.panelWidget()->findChild<QObject*>(u"base"_s);
    QMetaObject::invokeMethod(frame, "setCurrentId", Q_ARG(int, state));
    QString const problem = PanelUser::type(*key.panelWidget(), u"lineEdtPluginTitle"_s, title);
    if (!problem.isEmpty() || key.settings().value("titlelist"_L1)[state].toString() != title) {
        fail(u"key %1 does not take the title \"%2\" %3"_s.arg(key.index()).arg(title, problem));
    }
}

void Soak::replaceContents()
{
    bool const ran = devHost.standIn().isRunning();
    devHost.standIn().stop();
    if (chance(50)) {
        model().generate(40, 30, 10);
    } else {
        model().loadDemo();
    }
    if (ran) {
        devHost.standIn().start(devHost.standIn().lastPort());
    }
}

void Soak::connectWith(QString const& token)
{
    chance(50) ? devHost.connectDesktop(token) : devHost.reconnectDesktop(token);
    connected = token == devHost.standIn().token();
}

// ---- Rest

void Soak::heal()
{
    devHost.standIn().transport().setHandshake(SockJsServer::Handshake::Answer);
    devHost.standIn().setToken(rightToken);
    if (!devHost.standIn().isRunning() && !devHost.standIn().start(devHost.standIn().lastPort())) {
        fail(u"the stand-in cannot listen again"_s);
    }
    if (!connected) {
        connectWith(rightToken);
    }
}

void Soak::rest()
{
    remember(u"at rest"_s);
    ++rests;
    // Now and then the link stays down.
    if (devHost.standIn().isRunning() || chance(50)) {
        heal();
    }
    QStringList open;
    bool const isQuiet = waitFor(30s, [&] {
        open.clear();
        auto const unless = [&open](bool isDone, QString const& what) {
            if (!isDone) {
                open.append(what);
            }
        };
        unless(devHost.standIn().authorizedCount() == (isLinked() ? 1 : 0), u"the link is up or down"_s);
        unless(!model().isLoading(), u"the collection is loading"_s);
        unless(QStringList{u"offline"_s, u"live"_s}.contains(model().streamingStatus()), u"stream"_s);
        unless(QStringList{u"offline"_s, u"recording"_s}.contains(model().recordingStatus()), u"record"_s);
        // The host's own client is one of them.
        unless(devHost.relay().subscriberCount(ZoRemoteSubjects::kSubjectStreamlabsResponse) == kKeyCount + 1,
            u"not every key has subscribed"_s);
        unless(sinceTraffic.elapsed() > 100, u"there is traffic"_s);
        return open.isEmpty();
    });
    if (!isQuiet) {
        fail(u"it did not become quiet within 30 s"_s, open);
    }
    if (isLinked() && std::exchange(needsRefresh, false)) {
        devHost.sendTask(u"refreshScenes"_s, {});
    }
    // A large list may still wait for its turn.
    if (!waitFor(5s, [this] { return differences().isEmpty(); })) {
        fail(isLinked() ? u"linked, but"_s : u"not linked, but"_s, differences());
    }
    if (isLinked()) {
        press();
    }
}

// What a key asks for happens there, and comes back.
void Soak::press()
{
    int const index = below(kKeyCount);
    ConsoleKey& key = *devHost.console().key(index);
    QString const before = key.face().title;
    QJsonValue const titles = key.settings().value("titlelist"_L1);
    bool const isSceneShown = keys.at(index).sceneId == model().activeSceneId();
    if (key.face().invalid || titles[0] == titles[1] ||
        (keys.at(index).action == "scene"_L1 && isSceneShown)) {
        return;
    }
    key.press();
    if (!waitFor(5s, [&] { return key.face().title != before; })) {
        fail(u"a press of key %1 (%2) led to nothing"_s.arg(index).arg(keys.at(index).action));
    }
}

void Soak::compareKey(int index, QStringList& differences)
{
    Key const& key = keys.at(index);
    ConsoleKey const& shown = *devHost.console().key(index);
    QWidget const& panel = *shown.panelWidget();
    QJsonObject const settings = shown.settings();
    auto const expect = [&](QString const& what, QVariant const& is, QVariant const& truth) {
        if (is != truth) {
            auto const text = [](QVariant const& value) {
                return value.typeId() == QMetaType::QStringList ? value.toStringList().join(" | "_L1)
                                                                : value.toString();
            };
            differences.append(u"key %1 (%2): %3 is \"%4\", the truth is \"%5\""_s.arg(index).arg(
                key.action, what, text(is), text(truth)));
        }
    };
    bool exists = true; // the target and, of an item, its scene
    bool isMissing = false;
    bool isOn = false;
    auto const compareBox = [&](QString const& name, Entries entries, QString const& id) {
        entries.removeIf([](StandInModel::Entry const& entry) { return entry.isFolder; });
        QStringList names;
        for (auto const& entry : std::as_const(entries)) {
            names.append(QString(entry.name).replace(u'"', u'\'')); // so the link has it, by its nature
        }
        auto const found = std::ranges::find(entries, id, &StandInModel::Entry::id);
        exists = exists && found != entries.end();
        isMissing = isMissing || (found == entries.end() && !id.isEmpty());
        isOn = exists && found->on;
        if (isLinked()) {
            QString const current = id.isEmpty() ? entries.value(0).id : id;
            expect(name, PanelUser::look(panel, name).value("entries"_L1).toVariant().toStringList(), names);
            expect(name + u", current"_s, panel.findChild<QComboBox*>(name)->currentData(),
                current.isEmpty() ? QVariant() : current);
        }
    };
    if (key.action == "stream"_L1) {
        isOn = isLinked() && model().streamingStatus() == "live"_L1;
    } else if (key.action == "record"_L1) {
        isOn = isLinked() && model().recordingStatus() == "recording"_L1;
    } else if (key.action == "mute"_L1) {
        compareBox(u"dropdownAudioList"_s, model().audioEntries(), key.audioId);
    } else {
        compareBox(u"dropdownSceneList"_s, model().sceneEntries(), key.sceneId);
    }
    if (key.action == "source"_L1) {
        QString const scene = key.sceneId.isEmpty() ? model().sceneEntries().value(0).id : key.sceneId;
        compareBox(u"dropdownSceneItemList"_s, model().nodeEntries(scene), key.itemId);
    }
    bool const isOutput = key.action == "stream"_L1 || key.action == "record"_L1;
    expect(u"the invalid mark"_s, shown.face().invalid, !isLinked() || !exists);
    if (isLinked() || isOutput) { // a target stays as it was last seen
        expect(u"the title"_s, shown.face().title, settings.value("titlelist"_L1)[isOn ? 1 : 0].toString());
    }
    expect(u"the saved scene"_s, settings.value("scene_id"_L1).toString(), key.sceneId);
    expect(u"the saved item"_s, settings.value("scene_item_id"_L1).toString(), key.itemId);
    expect(u"the saved audio source"_s, settings.value("audio_source_id"_L1).toString(), key.audioId);
    expect(u"the login button"_s, PanelUser::look(panel, u"btnGoAuth"_s).value("visible"_L1).toBool(),
        !isLinked());
    QString const warning = !isLinked() ? u"LAB_PLUGIN_LAUNCH_STLOBS"_s
                            : isMissing ? u"LAB_INVALID_SELECTION"_s
                                        : QString();
    expect(u"the warning"_s, PanelUser::look(panel, u"txtWarningMessage"_s).value("text"_L1).toString(),
        warning.isEmpty() ? warning
                          : QCoreApplication::translate("BaseSlobsPropertyView", warning.toLatin1()));
}

QStringList Soak::differences()
{
    QStringList differences;
    for (int index = 0; index < kKeyCount; ++index) {
        compareKey(index, differences);
    }
    for (auto const& [led, isOn] : {std::pair(u"STREAM"_s, model().streamingStatus() == "live"_L1),
             {u"RECORD"_s, model().recordingStatus() == "recording"_L1}}) {
        if (leds.value(led) != (isOn && isLinked())) {
            differences.append(u"the LED %1 is %2"_s.arg(led, leds.value(led) ? u"on"_s : u"off"_s));
        }
    }
    return differences;
}

// ---- The run

void Soak::fail(QString const& what, QStringList const& details)
{
    constexpr qsizetype kMost = 20;
    std::printf("\n%s\nDIFFERENCE, seed %u, step %d, times at rest %d: %s\n    %s\n",
        qPrintable(recent.join(u'\n')), printedSeed, steps, rests, qPrintable(what),
        qPrintable(details.first(qMin(kMost, details.size())).join("\n    "_L1)));
    std::fflush(stdout);
    std::_Exit(1);
}

void Soak::start()
{
    auto const heard = [this] { sinceTraffic.start(); };
    connect(&devHost.standIn().transport(), &SockJsServer::frameReceived, this, heard);
    connect(&devHost.standIn().transport(), &SockJsServer::frameSent, this, heard);
    connect(&devHost.relay(), &RelayServer::messageReceived, this, heard);
    connect(&devHost.relay(), &RelayServer::published, this, heard);
    connect(&devHost, &DevHost::ledChanged, this,
        [this](QString const&, QString const& function, bool isOn) { leds.insert(function, isOn); });
    bool isReady = false;
    connect(&devHost, &DevHost::ready, this, [&isReady] { isReady = true; });
    DevHost::Options options;
    options.keepsKeys = false;
    if (!devHost.start(options) || !waitFor(10s, [&isReady] { return isReady; })) {
        fail(u"there is no host: "_s + devHost.errorString());
    }
    model().setTransitionTime(20ms);
    model().setLoadingTime(30ms);
    window.resize(1300, 500);
    window.show();
    for (int index = 0; index < kKeyCount; ++index) {
        place(index);
    }
}

//! With contents and keys that are the same each time.
Soak::Footprint Soak::footprint()
{
    random.seed(1);
    devHost.standIn().stop();
    model().loadDemo();
    devHost.plugin().package()->translate(u"en_US"_s);
    heal();
    for (int index = 0; index < kKeyCount; ++index) {
        devHost.console().remove(index);
    }
    for (int index = 0; index < kKeyCount; ++index) {
        place(index);
    }
    rest();
    settle(1s);
#ifdef __GLIBC__
    malloc_trim(0);
#endif
    return {.memory = residentMemory() / 1024, .descriptors = QDir(u"/proc/self/fd"_s).count()};
}

void Soak::run(std::chrono::milliseconds time)
{
    sinceTraffic.start();
    total.start();
    start();
    // What the first tenth takes (caches, fonts, buffers) stays.
    auto const warm = time / 10;
    std::optional<Footprint> before;
    qint64 reported = 0;
    while (total.elapsed() < time.count()) {
        for (int deeds = 5 + below(40); deeds > 0; --deeds) {
            doSomething();
        }
        rest();
        if (!before && total.elapsed() > warm.count()) {
            before = footprint();
        }
        if (total.elapsed() > reported) {
            constexpr qint64 kInterval = 30'000;
            reported = total.elapsed() + kInterval;
            std::printf("%6.1f min %6d steps %5d times at rest: no difference\n",
                static_cast<double>(total.elapsed()) / 60'000, steps, rests);
            std::fflush(stdout);
        }
    }
    Footprint const after = footprint();
    std::printf("memory %.1f MiB, was %.1f; descriptors %lld, were %lld\n", after.memory, before->memory,
        static_cast<long long>(after.descriptors), static_cast<long long>(before->descriptors));
    constexpr double kMostGrowth = 16;
    if (after.memory > before->memory + kMostGrowth || after.descriptors > before->descriptors) {
        fail(u"it takes more than after the first tenth"_s);
    }
    if (!devHost.stop()) {
        fail(u"the library stayed in memory"_s);
    }
    std::printf("%d steps, %d times at rest: no difference\n", steps, rests);
}

} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication const app(argc, argv);
    QCoreApplication::setApplicationName(u"lumen-soak"_s);
    QCommandLineParser parser;
    parser.setApplicationDescription(u"Does everything at random, and compares what the keys show with the "
                                     u"truth at rest. Ends with 1 at the first difference."_s);
    QCommandLineOption const seedOption(u"seed"_s, u"Repeat the steps of the run with seed N."_s, u"N"_s,
        QString::number(QRandomGenerator::global()->generate()));
    QCommandLineOption const verbose(u"verbose"_s, u"Print each step and the package's log."_s);
    parser.addOptions({seedOption, verbose});
    parser.addPositionalArgument(u"MINUTES"_s, u"How long; 10 by default."_s, u"[MINUTES]"_s);
    parser.addHelpOption();
    parser.process(app);
    double const minutes = parser.positionalArguments().value(0, u"10"_s).toDouble();
    bool isSeed = false;
    quint32 const seed = parser.value(seedOption).toUInt(&isSeed);
    if (minutes <= 0 || !isSeed) {
        std::fprintf(stderr, "MINUTES and N are numbers.\n");
        return 2;
    }
    isVerbose = parser.isSet(verbose);
    qInstallMessageHandler(
        [](QtMsgType, QMessageLogContext const&, QString const& text) { remember(u"    "_s + text); });
    std::printf("seed %u\n", seed);
    std::fflush(stdout);
    Soak(seed).run(std::chrono::milliseconds(qRound64(minutes * 60'000)));
    return 0;
}
