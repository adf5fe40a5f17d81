// The built library, loaded as the host loads it.

#include "devhost/DevHost.h"
#include "plugin/IBuiltInPackageLibrary.h"
#include "relay/ZOPlugin.h"
#include "tests/LogRecorder.h"
#include "tests/TestJson.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QProcess>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QWidget>

#include <algorithm>
#include <memory>
#include <vector>

#ifdef Q_OS_UNIX
#include <dlfcn.h>
#endif

using namespace Qt::StringLiterals;

namespace {

QString const libraryFile = QStringLiteral(LUMEN_TEST_LIBRARY);

bool isInMemory(QString const& file)
{
#ifdef Q_OS_UNIX
    void* const handle = dlopen(qPrintable(file), RTLD_LAZY | RTLD_NOLOAD);
    if (handle) {
        dlclose(handle);
    }
    return handle != nullptr;
#else
    return false;
#endif
}

} // namespace

class tst_Package : public QObject
{
    Q_OBJECT

private slots:
    void init() { log.emplace(); }
    void cleanup()
    {
        QCOMPARE(log->problems(), QStringList());
        log.reset();
    }

    void exportsTwoFunctions();
    void livesTwice();
    void goesWhileItsServiceRuns();
    void goesInAnyOrder_data();
    void goesInAnyOrder();
    void tasks();
    void knowsItsActions();
    void speaksEveryLanguage_data();
    void speaksEveryLanguage();
    void hostRefusesOtherLibraries();

private:
    PluginHost::Parameters parameters(QString const& language = u"en_US"_s) const
    {
        return {libraryFile, relay.port(), u"/tmp"_s, language};
    }

    RelayServer relay;
    std::optional<LogRecorder> log;
};

void tst_Package::exportsTwoFunctions()
{
#ifdef Q_OS_LINUX
    QProcess nm;
    nm.start(u"nm"_s,
        {u"--dynamic"_s, u"--defined-only"_s, u"--extern-only"_s, u"--format=just-symbols"_s, libraryFile});
    QVERIFY2(nm.waitForFinished() && nm.exitCode() == 0, "binutils are needed");
    QStringList symbols = QString::fromLatin1(nm.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
    symbols.sort();
    QCOMPARE(symbols, QStringList({u"instance"_s, u"sdk"_s}));
#endif
    QLibrary library(libraryFile);
    auto const sdk = reinterpret_cast<int (*)()>(library.resolve("sdk"));
    auto const instance = reinterpret_cast<IBuiltInPackageLibrary* (*)()>(library.resolve("instance"));
    QVERIFY(sdk && instance);
    QCOMPARE(sdk(), 4);
    {
        std::unique_ptr<IBuiltInPackageLibrary> const one(instance());
        std::unique_ptr<IBuiltInPackageLibrary> const two(instance());
        QVERIFY(one && two && one != two);
    }
    QVERIFY(library.unload());
}

// From loading to unloading, and again; what the package has handed out stays good.
void tst_Package::livesTwice()
{
    for (int life = 1; life <= 2; ++life) {
        QMap<QString, QString> labels;
        QString version;
        QJsonObject list;
        QList<QJsonObject> published;
        {
            DevHost host;
            host.standIn().model().setTransitionTime(std::chrono::milliseconds(0));
            connect(&host, &DevHost::publicationReceived, this,
                [&](QJsonObject const& payload) { published.append(payload); });
            DevHost::Options options;
            options.pluginFile = libraryFile;
            options.language = u"de_DE"_s;
            QVERIFY2(host.start(options), qPrintable(host.errorString()));
            auto* package = host.plugin().package();
            labels = package->mapping();
            version = package->versionName();
            list = package->list();
            QCOMPARE(package->makeWidget(u"com.zentrix.unknown"_s, life), nullptr);
            QVERIFY(log->take(u"debug: [dll] makeInstance() \"com.zentrix.unknown\" %1"_s.arg(life)));

            QTRY_COMPARE(host.standIn().authorizedCount(), 1);
            host.sendTask(u"toggleStreamingStatus"_s, {});
            QTRY_COMPARE(host.standIn().model().streamingStatus(), u"live"_s);
            QTRY_VERIFY(
                published.contains(json(R"({"task":"onQueryStreamingStatus","streamingStatus":"live"})")));
            host.reconnectDesktop();
            host.plugin().disconnectDesktop();
            QTRY_COMPARE(host.standIn().clientCount(), 0);
            host.connectDesktop();
            QTRY_COMPARE(host.standIn().authorizedCount(), 1);
            QVERIFY(isInMemory(libraryFile));
            QVERIFY(host.stop());
        }
        QVERIFY(!isInMemory(libraryFile));
        QCOMPARE(labels.value(u"LAB_SIDEBAR_STLOBS_SCENE"_s), u"Szene"_s);
        QCOMPARE(labels.size(), 6);
        QCOMPARE(version, u"1.0.4"_s);
        QCOMPARE(list.value("subnode"_L1).toArray().size(), 5);
        QCoreApplication::processEvents(); // nothing of the library is left to be called

        log->take(u"critical: UNABLE set \"slobs.jsonrpc.stream.toggle\" to"_s);
        while (log->take(u"critical: StreamlabsService::connectSlobs \"\" 0"_s)) {
        }
    }
}

// A host that deletes the package without stopping the service first.
void tst_Package::goesWhileItsServiceRuns()
{
    StreamlabsStandIn desktop;
    QVERIFY(desktop.start());
    QLibrary library(libraryFile);
    auto const instance = reinterpret_cast<IBuiltInPackageLibrary* (*)()>(library.resolve("instance"));
    QVERIFY(instance);
    std::unique_ptr<IBuiltInPackageLibrary> package(instance());
    package->startService(&relay, json(R"({"token":"t"})"));
    QVERIFY(log->take(u"critical: StreamlabsService::connectSlobs \"t\" 0"_s));
    package->startService(&relay, {{u"token"_s, desktop.token()}, {u"port"_s, desktop.port()}});
    QTRY_COMPARE(desktop.authorizedCount(), 1); // the first one was stopped
    package.reset();
    QVERIFY(log->take(u"debug: StreamlabsDll::~StreamlabsDll()"_s));
    relay.dispatchEvent(json(R"({"task":"remote.command.slobs.service.task","event":"queryAuthState"})"));
    QVERIFY(log->take(u"\"unknown command\""_s));
    QVERIFY(library.unload());
    QVERIFY(!isInMemory(libraryFile));
    QTRY_COMPARE(desktop.clientCount(), 0);
    log->take(u"critical: StreamlabsService::connectSlobs \"\" 0"_s);
}

// Whatever a host deletes first, and whatever is going on.
void tst_Package::goesInAnyOrder_data()
{
    QTest::addColumn<int>("moment");
    QTest::addColumn<unsigned>("seed");
    QTest::newRow("connecting") << 0 << 1U;
    QTest::newRow("connected") << 1 << 2U;
    QTest::newRow("pressed") << 2 << 3U;
}

void tst_Package::goesInAnyOrder()
{
    QFETCH(int, moment);
    QFETCH(unsigned, seed);
    QRandomGenerator random(seed);
    // a: actions, v: their views, l: library object, r: relay, s: stopService
    QString order = u"alrsv"_s;
    for (int round = 0; round < 16; ++round) {
        std::ranges::shuffle(order, random);
        StreamlabsStandIn desktop;
        desktop.model().setTransitionTime(std::chrono::milliseconds(0));
        QVERIFY(desktop.start());
        auto host = std::make_unique<RelayServer>();
        QVERIFY(host->listen());
        QLibrary library(libraryFile);
        auto const instance = reinterpret_cast<IBuiltInPackageLibrary* (*)()>(library.resolve("instance"));
        QVERIFY(instance);
        std::unique_ptr<IBuiltInPackageLibrary> package(instance());
        package->init({{u"port"_s, host->port()}});
        QVERIFY(package->loadConfig());
        package->startService(host.get(), {{u"token"_s, desktop.token()}, {u"port"_s, desktop.port()}});
        std::vector<std::unique_ptr<ZOPlugin>> actions;
        std::vector<std::unique_ptr<QWidget>> views;
        auto const list = package->list().value("subnode"_L1).toArray();
        for (auto const& entry : list) {
            auto& action = actions.emplace_back(
                package->makeWidget(entry.toObject().value("category"_L1).toString(), 0));
            QVERIFY(action->init(u"key"_s));
            auto* const view = views.emplace_back(std::make_unique<QWidget>()).get();
            action->pluginWidget()->setParent(view);
            action->propertyWidget()->setParent(view);
            action->propertyWidget()->hide();
            view->show();
        }
        if (moment > 0) {
            QTRY_COMPARE(host->subscriberCount(u"remote.subject.streamlabs.response"_s), int(actions.size()));
            QTRY_COMPARE(desktop.authorizedCount(), 1);
        }
        if (moment > 1) {
            for (auto const& action : actions) {
                QJsonObject reply;
                action->eventReceived(json(R"({"event":{"type":"mek.zo.plugin.event.key.down"}})"), reply);
                action->eventReceived(
                    json(R"({"event":{"type":"mek.zo.plugin.event.app.triggered"}})"), reply);
            }
        }
        for (QChar const step : std::as_const(order)) {
            if (step == u'a') {
                actions.clear();
            } else if (step == u'v') {
                views.clear();
            } else if (step == u'l') {
                package.reset();
            } else if (step == u'r') {
                host.reset();
            } else if (package) {
                package->stopService();
            }
            QCoreApplication::processEvents();
        }
        QVERIFY(library.unload());
        QVERIFY2(!isInMemory(libraryFile), qPrintable(order));
    }
    log->clear();
}

void tst_Package::tasks()
{
    StreamlabsStandIn desktop;
    QVERIFY(desktop.start());
    PluginHost host;
    QVERIFY2(host.load(parameters()), qPrintable(host.errorString()));
    QJsonObject reply = json(R"({"kept":1})");
    auto const send = [&](QByteArray const& text) {
        QJsonObject task = json(text);
        if (task.contains("payload"_L1)) {
            task.insert(
                "payload"_L1, QJsonObject{{u"token"_s, desktop.token()}, {u"port"_s, desktop.port()}});
        }
        host.package()->onTask(task, reply);
        QVERIFY(log->take(u"debug: StreamlabsDll::onMessage QJsonObject("_s));
        QCOMPARE(reply, json(R"({"kept":1})"));
    };

    for (auto const* text :
        {R"({"task":"connect","payload":{}})", R"({"task":"disconnect"})", R"({"task":"reconnect"})"}) {
        send(text); // no service: nothing happens
    }
    host.startService(relay, {}, desktop.port());
    QVERIFY(log->take(u"debug: StreamlabsDll::stopService QObject(0x0)"_s));
    QVERIFY(log->take(u"debug: StreamlabsDll::startService QJsonObject({\"port\":"_s));
    QVERIFY(log->take(u"critical: StreamlabsService::connectSlobs \"\""_s));
    QSignalSpy clients(&desktop, &StreamlabsStandIn::clientCountChanged);
    for (auto const* text :
        {R"({"payload":{}})", R"({"task":"Connect","payload":{}})", R"({"task":1,"payload":{}})"}) {
        send(text);
    }
    QVERIFY(!clients.wait(100));
    send(R"({"task":"connect","payload":{}})");
    QTRY_COMPARE(desktop.authorizedCount(), 1);
    send(R"({"task":"disconnect"})");
    QTRY_COMPARE(desktop.clientCount(), 0);
    send(R"({"task":"connect","payload":{}})");
    QTRY_COMPARE(desktop.authorizedCount(), 1);
    send(R"({"task":"reconnect","payload":{}})");
    QTRY_COMPARE(desktop.clientCount(), 1);
    QTRY_COMPARE(desktop.authorizedCount(), 1);
    send(R"({"task":"reconnect"})"); // without a payload there is nothing to connect to
    QTRY_COMPARE(desktop.clientCount(), 0);
    host.stopService();
    QVERIFY(log->take(u"debug: StreamlabsDll::stopService StreamlabsService(0x"_s));
    while (log->take(u"critical: StreamlabsService::connectSlobs \"\" 0"_s)) {
    }
}

void tst_Package::knowsItsActions()
{
    PluginHost host;
    QVERIFY2(host.load(parameters()), qPrintable(host.errorString()));
    QJsonObject const list = host.package()->list();
    QCOMPARE(host.package()->versionCode(), 14);
    QCOMPARE(list.value("category"_L1).toString(), u"com.zentrix.slobs"_s);
    QCOMPARE(list.value("dependency"_L1).toObject().value("minSdk"_L1), PluginHost::sdkVersion);
    auto const labels = host.package()->mapping();
    QVERIFY(labels.contains(list.value("title"_L1).toString()));

    QStringList ids;
    for (auto const& entry : list.value("subnode"_L1).toArray()) {
        QJsonObject const action = entry.toObject();
        ids.append(action.value("category"_L1).toString());
        QVERIFY(labels.contains(action.value("title"_L1).toString()));
        QCOMPARE(action.value("type"_L1).toString(), u"hotkey"_s);
        QCOMPARE(action.value("supportMultiAction"_L1), true);
    }
    QCOMPARE(ids.join(u' ').remove("com.zentrix.slobs.webapp."_L1), u"mute record scene source stream"_s);
}

void tst_Package::speaksEveryLanguage_data()
{
    QTest::addColumn<QString>("scene");
    QTest::newRow("de_DE") << u"Szene"_s;
    QTest::newRow("en_US") << u"Scene"_s;
    QTest::newRow("ja_JP") << u"シーン"_s;
    QTest::newRow("ko_KR") << u"장면"_s;
    QTest::newRow("zh_CN") << u"场景"_s;
    QTest::newRow("zh_TW") << u"場景"_s;
    QTest::newRow("xx_XX") << u"LAB_SIDEBAR_STLOBS_SCENE"_s;
}

void tst_Package::speaksEveryLanguage()
{
    QFETCH(QString, scene);
    QString const language = QString::fromLatin1(QTest::currentDataTag());
    PluginHost host;
    QVERIFY2(host.load(parameters(language)), qPrintable(host.errorString()));
    QCOMPARE(host.package()->mapping().value(u"LAB_SIDEBAR_STLOBS_SCENE"_s), scene);
    bool const unknown = language == "xx_XX"_L1;
    QCOMPARE(log->take(u"warning: [dll] load translation failed \"Streamlabs\" \"xx_XX\""_s), unknown);
    QCOMPARE(log->take(u"warning: The package has no texts in \"xx_XX\""_s), unknown);

    // A language that does not exist leaves the one in use.
    QCOMPARE(host.package()->translate(u"yy_YY"_s), nullptr);
    QVERIFY(log->take(u"warning: [dll] load translation failed \"Streamlabs\" \"yy_YY\""_s));
    QCOMPARE(host.package()->mapping().value(u"LAB_SIDEBAR_STLOBS_SCENE"_s), scene);
}

void tst_Package::hostRefusesOtherLibraries()
{
    QTemporaryDir folder;
    QString const text = folder.filePath(u"libtext.so"_s);
    QFile file(text);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("no library") > 0);
    file.close();
    for (auto const& [name, reason] :
        {std::pair(folder.filePath(u"missing"_s), u"missing"_s), std::pair(text, u"libtext.so"_s),
            std::pair(QStringLiteral(LUMEN_TEST_QT_LIBRARY), u"\"sdk\""_s)}) {
        PluginHost host;
        PluginHost::Parameters other = parameters();
        other.file = name;
        QVERIFY(!host.load(other));
        QVERIFY2(host.errorString().contains(reason), qPrintable(host.errorString()));
        QVERIFY(!host.isLoaded());
    }
}

QTEST_MAIN(tst_Package)
#include "tst_Package.moc"
