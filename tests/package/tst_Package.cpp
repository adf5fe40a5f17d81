// The built library, loaded as the host loads it.

#include "devhost/host/DevHost.h"
#include "plugin/IBuiltInPackageLibrary.h"
#include "relay/ZOPlugin.h"
#include "tests/LoggedTest.h"
#include "tests/TestJson.h"

#include <QDeadlineTimer>
#include <QJsonArray>
#include <QProcess>
#include <QRandomGenerator>
#include <QTest>
#include <QTimer>
#include <QWidget>

#include <algorithm>
#include <functional>
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

std::unique_ptr<IBuiltInPackageLibrary> makePackage(QLibrary& library)
{
    auto const instance = reinterpret_cast<IBuiltInPackageLibrary* (*)()>(library.resolve("instance"));
    return std::unique_ptr<IBuiltInPackageLibrary>(instance ? instance() : nullptr);
}

//! As QTest::qWaitFor, which sleeps between two looks, for what is waited for a thousand times.
bool soon(std::function<bool()> const& isSo)
{
    QTimer awake;
    awake.start(std::chrono::seconds(1));
    QDeadlineTimer const end(std::chrono::seconds(5));
    while (!isSo() && !end.hasExpired()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return isSo();
}

//! A host's relay that can react to a call of the package, and knows what it was told last.
class ReactingRelay final : public ZoInterfaceRcc
{
public:
    void addCommandHandler(QString const&, CommandHandler newHandler) override
    {
        handler = std::move(newHandler);
    }
    void removeCommandHandler(QString const&) override { handler = {}; }
    void publish(QString const&, QJsonObject const& payload) override
    {
        for (auto member = payload.begin(); member != payload.end(); ++member) {
            told[member.key()] = member.value();
        }
        react();
    }
    void dispatchEvent(QJsonObject const& event) override
    {
        told[event.value("functionName"_L1).toString()] = event.value("status"_L1);
        react();
    }
    void send(QString const& task)
    {
        if (CommandHandler const call = handler) {
            call(nullptr, {{u"event"_s, task}});
        }
    }

    CommandHandler handler;
    QMap<QString, QJsonValue> told;
    int calls = 0;
    int reactAt = 0;
    std::function<void()> reaction;

private:
    void react()
    {
        if (++calls == reactAt) {
            reaction();
        }
    }
};

} // namespace

class tst_Package : public LoggedTest
{
    Q_OBJECT

private:
    PluginHost::Parameters parameters(
        QString const& language = u"en_US"_s, QString const& file = libraryFile) const
    {
        return {file, relay.port(), u"/tmp"_s, language};
    }

    RelayServer relay;

private slots:
    void cleanup() override
    {
        // A link that was closed has nothing to connect with again.
        takeAll(u"critical: StreamlabsService::connectSlobs \"\" 0"_s);
        LoggedTest::cleanup();
    }

    void exportsTwoFunctions()
    {
#ifdef Q_OS_LINUX
        QProcess nm;
        nm.start(u"nm"_s, {u"--dynamic"_s, u"--defined-only"_s, u"--extern-only"_s,
                              u"--format=just-symbols"_s, libraryFile});
        QVERIFY2(nm.waitForFinished() && nm.exitCode() == 0, "binutils are needed");
        QCOMPARE(nm.readAllStandardOutput(), "instance\nsdk\n");
#endif
        QLibrary library(libraryFile);
        auto const sdk = reinterpret_cast<int (*)()>(library.resolve("sdk"));
        QVERIFY(sdk);
        QCOMPARE(sdk(), 4);
        QVERIFY(makePackage(library) != makePackage(library));
        QVERIFY(library.unload());
    }

    // From loading to unloading, and again.
    void livesTwice()
    {
        auto const live = json(R"({"task":"onQueryStreamingStatus","streamingStatus":"live"})");
        for (int life = 1; life <= 2; ++life) {
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
                auto* const package = host.plugin().package();
                QCOMPARE(package->mapping().value(u"LAB_SIDEBAR_STLOBS_SCENE"_s), u"Szene"_s);
                QCOMPARE(package->makeWidget(u"com.zentrix.unknown"_s, life), nullptr);
                QVERIFY(log->take(u"debug: [dll] makeInstance() \"com.zentrix.unknown\" %1"_s.arg(life)));

                QTRY_COMPARE(host.standIn().authorizedCount(), 1);
                host.sendTask(u"toggleStreamingStatus"_s, {});
                QTRY_VERIFY(published.contains(live));
                QVERIFY(isInMemory(libraryFile));
                QVERIFY(host.stop());
            }
            QVERIFY(!isInMemory(libraryFile));
            QVERIFY(published.contains(live));
            QCoreApplication::processEvents(); // nothing of the library is left to be called
            log->take(u"critical: UNABLE set \"slobs.jsonrpc.stream.toggle\" to"_s);
        }
    }

    // A host that deletes the package without stopping the service first.
    void goesWhileItsServiceRuns()
    {
        StreamlabsStandIn desktop;
        QVERIFY(desktop.start());
        QLibrary library(libraryFile);
        auto package = makePackage(library);
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
    }

    // Whatever a host deletes first, and whatever is going on.
    void goesInAnyOrder()
    {
        QRandomGenerator random(1);
        for (int round = 0; round < 48; ++round) {
            StreamlabsStandIn desktop;
            desktop.model().setTransitionTime(std::chrono::milliseconds(0));
            QVERIFY(desktop.start());
            auto host = std::make_unique<RelayServer>();
            QVERIFY(host->listen());
            QLibrary library(libraryFile);
            auto package = makePackage(library);
            package->init({{u"port"_s, host->port()}});
            package->startService(host.get(), {{u"token"_s, desktop.token()}, {u"port"_s, desktop.port()}});
            std::vector<std::unique_ptr<ZOPlugin>> actions;
            std::vector<std::unique_ptr<QWidget>> views;
            for (auto const& name : {u"stream"_s, u"record"_s, u"scene"_s, u"source"_s, u"mute"_s}) {
                auto& action =
                    actions.emplace_back(package->makeWidget(u"com.zentrix.slobs.webapp."_s + name, 0));
                QVERIFY(action->init(u"key"_s));
                auto* const view = views.emplace_back(std::make_unique<QWidget>()).get();
                action->pluginWidget()->setParent(view);
                action->propertyWidget()->setParent(view);
                action->propertyWidget()->hide();
                view->show();
            }
            int const moment = round % 3; // connecting, connected, pressed
            if (moment > 0) {
                QTRY_COMPARE(
                    host->subscriberCount(u"remote.subject.streamlabs.response"_s), int(actions.size()));
                QTRY_COMPARE(desktop.authorizedCount(), 1);
            }
            if (moment > 1) {
                for (auto const& action : actions) {
                    action->onKeyDownEvent({});
                    action->onAppTriggeredEvent({});
                }
            }
            std::function<void()> steps[] = {[&] { actions.clear(); }, [&] { views.clear(); },
                [&] { host.reset(); }, [&] { package.reset(); },
                [&] { package ? package->stopService() : void(); }};
            std::ranges::shuffle(steps, random);
            for (auto const& step : steps) {
                step();
                QCoreApplication::processEvents();
            }
            QVERIFY(library.unload());
            QVERIFY2(!isInMemory(libraryFile), qPrintable(QString::number(round)));
        }
        log->clear();
    }

    // A host that reacts to what it is told, whatever that is, by ending the service or sending it elsewhere.
    void mayEndInsideOfAnyCall()
    {
        StreamlabsStandIn desktop;
        desktop.model().setTransitionTime(std::chrono::milliseconds(0));
        QVERIFY(desktop.start());
        QLibrary library(libraryFile);
        std::unique_ptr<IBuiltInPackageLibrary> package;
        ReactingRelay host;
        auto const address = [&](QString const& token) {
            return QJsonObject{{u"token"_s, token}, {u"port"_s, desktop.port()}};
        };
        auto const task = [&](QString const& name, QString const& token = {}) {
            QJsonObject reply;
            if (package) {
                package->onTask({{u"task"_s, name}, {u"payload"_s, address(token)}}, reply);
            }
        };
        // Linked, live and recording, a list and a mute, another token, and the end; until the host reacts.
        auto const hasReacted = [&] { return host.reactAt > 0 && host.calls >= host.reactAt; };
        auto const passesAnEvening = [&] {
            std::pair<std::function<void()>, std::pair<QString, QJsonValue>> const steps[] = {
                {[&] { package->startService(&host, address(u"old"_s)); },
                    {u"activeId"_s, desktop.model().activeSceneId()}},
                {[&] { host.send(u"toggleStreamingStatus"_s); }, {u"STREAM"_s, true}},
                {[&] { host.send(u"toggleRecordingStatus"_s); }, {u"RECORD"_s, true}},
                {[&] { host.send(u"refreshCollections"_s); }, {u"task"_s, u"onQueryCollections"_s}},
                {[&] { desktop.model().setMuted(u"Mic/Aux"_s, true); }, {u"task"_s, u"onQueryScenes"_s}},
                {[&] {
                     desktop.setToken(u"new"_s);
                     task(u"connect"_s, u"new"_s);
                 },
                    {u"RECORD"_s, true}},
                {[&] { task(u"disconnect"_s); }, {u"RECORD"_s, false}},
            };
            for (auto const& [step, expected] : steps) {
                auto const& wanted = expected; // clang 14 captures no structured binding
                step();
                if (!soon([&] { return hasReacted() || host.told.value(wanted.first) == wanted.second; })) {
                    return false;
                }
                if (hasReacted()) {
                    break;
                }
            }
            return true;
        };
        auto const isTrue = [&] {
            return host.told.value(u"authorized"_s) == true &&
                   host.told.value(u"streamingStatus"_s) == desktop.model().streamingStatus() &&
                   host.told.value(u"recordingStatus"_s) == desktop.model().recordingStatus();
        };
        auto const isDark = [&] {
            return !host.told.value(u"STREAM"_s).toBool() && !host.told.value(u"RECORD"_s).toBool();
        };
        struct Reaction
        {
            char const* name;
            std::function<void()> react;
            bool stays;
            std::function<bool()> isRight;
        };
        Reaction const reactions[] = {
            {"stop", [&] { package->stopService(); }, false, isDark},
            {"disconnect", [&] { task(u"disconnect"_s); }, true, isDark},
            {"start", [&] { package->startService(&host, address(desktop.token())); }, true, isTrue},
            {"connect", [&] { task(u"connect"_s, desktop.token()); }, true, isTrue},
            {"reconnect", [&] { task(u"reconnect"_s, desktop.token()); }, true, isTrue},
            {"delete", [&] { package.reset(); }, false, [] { return true; }},
        };
        auto const begin = [&](int reactAt) {
            package = makePackage(library);
            host.told.clear();
            host.calls = 0;
            host.reactAt = reactAt;
            desktop.setToken(u"old"_s);
            desktop.model().setStreaming(false);
            desktop.model().setRecording(false);
            desktop.model().setMuted(u"Mic/Aux"_s, false);
        };
        begin(0);
        QVERIFY(passesAnEvening());
        int const calls = host.calls;
        QVERIFY2(calls > 30, qPrintable(QString::number(calls)));
        for (auto const& [name, react, stays, isRight] : reactions) {
            host.reaction = react;
            for (int at = 1; at <= calls; ++at) {
                QString const where = u"%1 at call %2"_s.arg(QString::fromLatin1(name)).arg(at);
                begin(at);
                QVERIFY2(passesAnEvening(), qPrintable(where));
                if (!hasReacted()) {
                    continue; // lists that take long are published less often
                }
                QVERIFY2(soon(isRight), qPrintable(where));
                QCOMPARE(host.handler != nullptr, stays);
                package.reset();
                QVERIFY2(!host.handler, qPrintable(where));
            }
        }
        log->clear();
        QVERIFY(library.unload());
        QVERIFY(!isInMemory(libraryFile));
    }

    void tasks()
    {
        StreamlabsStandIn desktop;
        QVERIFY(desktop.start());
        PluginHost host;
        QVERIFY2(host.load(parameters()), qPrintable(host.errorString()));
        QJsonObject const address{{u"token"_s, desktop.token()}, {u"port"_s, desktop.port()}};
        auto const send = [&](QByteArray const& text) {
            QJsonObject task = json(text);
            if (task.contains("payload"_L1)) {
                task.insert("payload"_L1, address);
            }
            QJsonObject reply = json(R"({"kept":1})");
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
        for (auto const* text :
            {R"({"payload":{}})", R"({"task":"Connect","payload":{}})", R"({"task":1,"payload":{}})"}) {
            send(text);
        }
        QVERIFY(!QTest::qWaitFor([&] { return desktop.clientCount() > 0; }, 100));
        for (auto const& [text, links] : {std::pair(R"({"task":"connect","payload":{}})", 1),
                 {R"({"task":"disconnect"})", 0}, {R"({"task":"reconnect","payload":{}})", 1},
                 {R"({"task":"reconnect"})", 0}}) { // without a payload there is nothing to connect to
            send(text);
            QTRY_COMPARE(desktop.authorizedCount(), links);
            QTRY_COMPARE(desktop.clientCount(), links);
        }
        host.stopService();
        QVERIFY(log->take(u"debug: StreamlabsDll::stopService StreamlabsService(0x"_s));
    }

    // What the package hands out stays good when its library is gone.
    void knowsItsActions()
    {
        PluginHost host;
        QVERIFY2(host.load(parameters(u"de_DE"_s)), qPrintable(host.errorString()));
        QJsonObject const list = host.package()->list();
        QString const version = host.package()->versionName();
        auto const labels = host.package()->mapping();
        QCOMPARE(host.package()->versionCode(), 14);
        QVERIFY(host.unload() && !isInMemory(libraryFile));
        QCOMPARE(version, u"1.0.4"_s);
        QCOMPARE(list.value("category"_L1).toString(), u"com.zentrix.slobs"_s);
        QCOMPARE(list.value("dependency"_L1).toObject().value("minSdk"_L1), PluginHost::kSdkVersion);
        QVERIFY(labels.contains(list.value("title"_L1).toString()));
        QCOMPARE(labels.value(u"LAB_SIDEBAR_STLOBS_SCENE"_s), u"Szene"_s);

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

    void speaksEveryLanguage()
    {
        QString const label = u"LAB_SIDEBAR_STLOBS_SCENE"_s;
        for (auto const& [language, scene] : {std::pair(u"de_DE"_s, u"Szene"_s), {u"en_US"_s, u"Scene"_s},
                 {u"ja_JP"_s, u"シーン"_s}, {u"ko_KR"_s, u"장면"_s}, {u"zh_CN"_s, u"场景"_s},
                 {u"zh_TW"_s, u"場景"_s}, {u"xx_XX"_s, label}}) {
            PluginHost host;
            QVERIFY2(host.load(parameters(language)), qPrintable(host.errorString()));
            QCOMPARE(host.package()->mapping().value(label), scene);
            bool const unknown = scene == label;
            QCOMPARE(
                log->take(u"warning: [dll] load translation failed \"Streamlabs\" \"xx_XX\""_s), unknown);
            QCOMPARE(log->take(u"warning: The package has no texts in \"xx_XX\""_s), unknown);

            // A language that does not exist leaves the one in use.
            QCOMPARE(host.package()->translate(u"yy_YY"_s), nullptr);
            QVERIFY(log->take(u"warning: [dll] load translation failed \"Streamlabs\" \"yy_YY\""_s));
            QCOMPARE(host.package()->mapping().value(label), scene);
        }
    }

    void hostRefusesOtherLibraries()
    {
        for (auto const& [file, reason] : {std::pair(u"/nowhere/missing"_s, u"missing"_s),
                 {QStringLiteral(LUMEN_TEST_README), u"README.md"_s},
                 {QStringLiteral(LUMEN_TEST_QT_LIBRARY), u"\"sdk\""_s}}) {
            PluginHost host;
            QVERIFY(!host.load(parameters(u"en_US"_s, file)));
            QVERIFY2(host.errorString().contains(reason), qPrintable(host.errorString()));
            QVERIFY(!host.isLoaded());
        }
    }
};

QTEST_MAIN(tst_Package)
#include "tst_Package.moc"
