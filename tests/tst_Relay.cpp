// The clients of the host's relay, and the development host's relay itself.

#include "actions/SlobsAgent.h"
#include "actions/SlobsMessagePool.h"
#include "devhost/RelayServer.h"
#include "relay/ZoLumenProxy.h"
#include "relay/ZoMixerPluginDelegate.h"
#include "relay/ZoRemoteCommands.h"
#include "tests/LogRecorder.h"
#include "tests/TestJson.h"

#include <QSignalSpy>
#include <QTest>
#include <QWebSocket>

#include <memory>
#include <optional>

using namespace Qt::StringLiterals;
using namespace StreamlabsApiPrivate;

namespace {

QString const subject = ZoRemoteSubjects::kSubjectStreamlabsResponse;

// A client that keeps every text and sends what a test wants.
class RawClient
{
public:
    explicit RawClient(RelayServer const& relay) : texts(&socket, &QWebSocket::textMessageReceived)
    {
        socket.open(QUrl(u"ws://127.0.0.1:%1"_s.arg(relay.port())));
    }

    QJsonObject last() const { return json(texts.last().first().toString().toUtf8()); }

    QWebSocket socket;
    QSignalSpy texts;
};

} // namespace

class tst_Relay : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void relayAnswers_data();
    void relayAnswers();
    void relayServesServicesAndSubscribers();
    void relaySendsTheNewestLast();
    void relayAcknowledgesOnlyOnRequestWhenToldSo();

    void agentSends_data();
    void agentSends();
    void agentDispatches();
    void agentComesBack();
    void agentsShareOneParsing();
    void sharedParsingIsInvisible();
    void resultsDecode_data();
    void resultsDecode();
    void resultsOfAnotherKindLeaveTheOutputsAlone();
    void ledsFollowTheStatus_data();
    void ledsFollowTheStatus();

    void mixerSends_data();
    void mixerSends();
    void mixerReceives();

private:
    std::optional<LogRecorder> log;
    std::unique_ptr<RelayServer> relay;
};

void tst_Relay::init()
{
    log.emplace();
    relay = std::make_unique<RelayServer>();
    QVERIFY(relay->listen());
    ZoLumenProxy::getInstance().port = relay->port();
}

void tst_Relay::cleanup()
{
    relay.reset();
    QCOMPARE(log->problems(), QStringList());
    log.reset();
}

// ---- The relay

void tst_Relay::relayAnswers_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("answer");

    QTest::newRow("register") << uR"({"task":"remote.command.register.to.server","id":"","category":""})"_s
                              << QByteArray(R"({"task":"remote.command.register.to.server","success":true})");
    QTest::newRow("subscribe")
        << uR"({"task":"remote.command.subscribe.subject","subject":"a"})"_s
        << QByteArray(R"({"task":"remote.command.subscribe.subject","subject":"a","success":true})");
    QTest::newRow("subscribe several")
        << uR"({"task":"remote.command.subscribe.subjects","subjects":["a","b"]})"_s
        << QByteArray(R"({"task":"remote.command.subscribe.subjects","subjects":["a","b"],"success":true})");
    QTest::newRow("subscribe to nothing") << uR"({"task":"remote.command.subscribe.subject"})"_s
                                          << QByteArray(R"({"task":"remote.command.subscribe.subject",)"
                                                        R"("error":"no \"subject\""})");
    QTest::newRow("subscribe to numbers")
        << uR"({"task":"remote.command.subscribe.subjects","subjects":["a",1]})"_s
        << QByteArray(R"({"task":"remote.command.subscribe.subjects",)"
                      R"("error":"\"subjects\" is not a list of names"})");
    QTest::newRow("unknown") << uR"({"task":"make.coffee"})"_s
                             << QByteArray(R"({"task":"make.coffee","error":"unknown command"})");
    QTest::newRow("no task") << u"{}"_s << QByteArray(R"({"error":"no \"task\""})");
    QTest::newRow("array") << u"[]"_s << QByteArray(R"({"error":"not a JSON object"})");
    QTest::newRow("no JSON") << u"hello"_s << QByteArray(R"({"error":"not a JSON object"})");
}

void tst_Relay::relayAnswers()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, answer);
    RawClient client(*relay);
    QTRY_COMPARE(client.texts.size(), 1);
    QCOMPARE(client.last(), json(R"({"task":"remote.command.register.to.server","success":true})"));

    client.socket.sendTextMessage(text);
    QTRY_COMPARE(client.texts.size(), 2);
    QCOMPARE(client.last(), json(answer));
    QCOMPARE(log->take(u"warning: relay: message rejected,"_s), answer.contains("error"));
}

void tst_Relay::relayServesServicesAndSubscribers()
{
    RawClient listener(*relay);
    RawClient other(*relay);
    QTRY_COMPARE(relay->clientCount(), 2);
    QTRY_COMPARE(listener.texts.size(), 1);
    QTRY_COMPARE(other.texts.size(), 1);
    for (int i = 0; i < 2; ++i) { // asking twice is asking once
        listener.socket.sendTextMessage(uR"({"task":"remote.command.subscribe.subject","subject":"s"})"_s);
    }
    QTRY_COMPARE(listener.texts.size(), 3);
    QCOMPARE(relay->subscriberCount(u"s"_s), 1);

    QJsonObject const payload = json(R"({"task":"news","text":"ä'\"\\"})");
    relay->publish(u"s"_s, payload);
    relay->publish(u"nobody listens"_s, payload);
    QTRY_COMPARE(listener.texts.size(), 4);
    QCOMPARE(listener.last(), payload);

    QList<QJsonObject> commands;
    relay->addCommandHandler(u"c"_s, [&](QWebSocket* connection, QJsonObject const& command) {
        QVERIFY(connection);
        commands.append(command);
    });
    other.socket.sendTextMessage(uR"({"task":"c","x":1})"_s);
    QTRY_COMPARE(commands.size(), 1);
    QCOMPARE(commands.first(), json(R"({"task":"c","x":1})"));
    relay->removeCommandHandler(u"c"_s);
    other.socket.sendTextMessage(uR"({"task":"c"})"_s);
    QTRY_COMPARE(other.texts.size(), 2);
    QVERIFY(log->take(u"unknown command"_s));
    QCOMPARE(commands.size(), 1);

    QSignalSpy leds(relay.get(), &RelayServer::ledChanged);
    relay->dispatchEvent(SlobsAgent::setRecordingLed(u"recording"_s));
    QCOMPARE(leds.takeFirst(), QVariantList({u"SLOBS"_s, u"RECORD"_s, true}));
    relay->dispatchEvent(json(R"({"task":"make.coffee"})"));
    QVERIFY(log->take(u"warning: relay: event of the host ignored,"_s));

    relay->drop();
    QTRY_COMPARE(relay->clientCount(), 0);
    QCOMPARE(relay->subscriberCount(u"s"_s), 0);
    QCOMPARE(other.texts.size(), 2);
}

// Large and small payloads of one task, faster than the client takes them.
void tst_Relay::relaySendsTheNewestLast()
{
    RawClient client(*relay);
    QTRY_VERIFY(client.socket.isValid());
    client.socket.sendTextMessage(uR"({"task":"remote.command.subscribe.subject","subject":"s"})"_s);
    QTRY_VERIFY(!client.texts.isEmpty() && client.texts.last().first().toString().contains(u"subscribe"_s));
    client.texts.clear();
    int number = 0;
    for (bool const isLarge : {true, true, false, true, false, false, true, true}) {
        relay->publish(u"s"_s,
            {{u"task"_s, u"t"_s}, {u"number"_s, ++number}, {u"list"_s, QString(isLarge ? 10000 : 10, u'x')}});
    }
    auto const lastNumber = [&] {
        return client.texts.isEmpty()
                   ? 0
                   : json(client.texts.last().first().toByteArray()).value("number"_L1).toInt();
    };
    QTRY_COMPARE(lastNumber(), number);
    int before = 0;
    for (auto const& text : std::as_const(client.texts)) {
        int const sent = json(text.first().toByteArray()).value("number"_L1).toInt();
        QVERIFY2(sent > before, qPrintable(QString::number(sent)));
        before = sent;
    }
    QCOMPARE(client.texts.size(), 6); // 1 and 7 gave way to newer ones
}

void tst_Relay::relayAcknowledgesOnlyOnRequestWhenToldSo()
{
    relay->setAcknowledgesAtOnce(false);
    RawClient client(*relay);
    QTRY_COMPARE(client.socket.state(), QAbstractSocket::ConnectedState);
    client.socket.sendTextMessage(uR"({"task":"remote.command.register.to.server"})"_s);
    QTRY_COMPARE(client.texts.size(), 1);
    QVERIFY(client.last().value("success"_L1).toBool());
}

// ---- The agent

void tst_Relay::agentSends_data()
{
    using Send = std::function<void(SlobsAgent&)>;
    QTest::addColumn<Send>("send");
    QTest::addColumn<QByteArray>("text");

    auto const row = [](char const* name, Send const& send, QByteArray const& text) {
        QTest::newRow(name) << send << text;
    };
    auto const task = [&](char const* event, Send const& send, QByteArray const& more = {}) {
        row(event, send,
            R"({"task":"remote.command.slobs.service.task","event":")" + QByteArray(event) + '"' + more +
                '}');
    };
    row(
        "subscribe", [](SlobsAgent& a) { a.subscribe(u"s"_s, u"i"_s, u"c"_s); },
        R"({"task":"remote.command.subscribe.subject","subject":"s","id":"i","category":"c"})");
    row(
        "subscribe several",
        [](SlobsAgent& a) {
            a.subscribe(QStringList{u"s"_s, u"t"_s}, {}, {});
        },
        R"({"task":"remote.command.subscribe.subjects","subjects":["s","t"],"id":"","category":""})");
    row(
        "settings", [](SlobsAgent& a) { a.showSettingsLogin(); },
        R"({"task":"LaunchSettingPage","params":{"page":7}})");
    task("queryAuthState", [](SlobsAgent& a) { a.queryAuthState(); });
    task("refreshModel", [](SlobsAgent& a) { a.refreshModel(); });
    task("queryStreamingStatus", [](SlobsAgent& a) { a.queryStreamingStatus(); });
    task("queryRecordingStatus", [](SlobsAgent& a) { a.queryRecordingStatus(); });
    task("toggleStreamingStatus", [](SlobsAgent& a) { a.toggleStreaming(); });
    task("toggleRecordingStatus", [](SlobsAgent& a) { a.toggleRecording(); });
    task("refreshScenes", [](SlobsAgent& a) { a.refreshScenes(); });
    task("queryScenes", [](SlobsAgent& a) { a.queryScenes(); });
    task(
        "setActiveScene", [](SlobsAgent& a) { a.setActiveScene(u"x"_s); }, R"(,"activeId":"x")");
    Source source;
    source.sceneId = u"s"_s;
    source.sceneItemId = u"i"_s;
    source.sourceId = u"x"_s;
    task(
        "setSourceVisible", [source](SlobsAgent& a) { a.setSourceVisible(source, true); },
        R"(,"sceneId":"s","sceneItemId":"i","sourceId":"x","visible":true)");
    task("refreshCollections", [](SlobsAgent& a) { a.refreshCollections(); });
    task("queryCollections", [](SlobsAgent& a) { a.queryCollections(); });
    task(
        "refreshAudioList", [](SlobsAgent& a) { a.refreshAudioList(u"s"_s); }, R"(,"sceneId":"s")");
    task("queryAudioList", [](SlobsAgent& a) { a.queryAudioList(); });
    task(
        "setAudioMute", [](SlobsAgent& a) { a.setAudioMute(u"x"_s, false); },
        R"(,"sourceId":"x","muted":false)");
}

void tst_Relay::agentSends()
{
    QFETCH(std::function<void(SlobsAgent&)>, send);
    QFETCH(QByteArray, text);
    QList<QJsonObject> commands;
    connect(relay.get(), &RelayServer::commandReceived, relay.get(),
        [&](QJsonObject const& command) { commands.append(command); });
    relay->addCommandHandler(u"remote.command.slobs.service.task"_s, [](QWebSocket*, QJsonObject const&) {});

    SlobsAgent agent;
    send(agent); // lost: not connected
    QSignalSpy connected(&agent, &SlobsAgent::connected);
    agent.connectRcc(u"ws://127.0.0.1:%1"_s.arg(relay->port()));
    QTRY_COMPARE(connected.size(), 1);
    send(agent);
    QTRY_COMPARE(commands.size(), 1);
    QCOMPARE(commands.first(), json(text));
}

void tst_Relay::agentDispatches()
{
    SlobsAgent agent;
    int first = 0;
    QList<QJsonObject> second;
    agent.addRccEventHandler(u"onQueryScenes"_s, [&](QJsonObject const&) { ++first; });
    agent.addRccEventHandler(u"onQueryScenes"_s, [&](QJsonObject const& message) { second.append(message); });
    QSignalSpy disconnected(&agent, &SlobsAgent::disconnected);
    agent.connectRcc(u"ws://127.0.0.1:%1"_s.arg(relay->port()));
    QTRY_COMPARE(log->count(u"debug: [SlobsAgent] \"remote.command.register.to.server\" ???"_s), 1);

    for (auto const* text : {"[1]", "nonsense", "", R"({"task":5})", R"({"task":"ONQUERYSCENES"})"}) {
        relay->sendToAll(QString::fromLatin1(text));
    }
    relay->sendToAll(uR"({"task":"onQueryScenes","activeId":"x"})"_s);
    QTRY_COMPARE(second.size(), 1);
    QCOMPARE(second.first(), json(R"({"task":"onQueryScenes","activeId":"x"})"));
    QCOMPARE(first, 0);
    for (int i = 0; i < 3; ++i) {
        QVERIFY(log->take(u"critical: [SlobsAgent] Content was broken"_s));
    }
    QVERIFY(log->take(u"debug: [SlobsAgent] \"\" ???"_s));
    QVERIFY(log->take(u"debug: [SlobsAgent] \"ONQUERYSCENES\" ???"_s));

    agent.disconnectRcc();
    QTRY_COMPARE(disconnected.size(), 1);
}

void tst_Relay::agentComesBack()
{
    SlobsAgent agent;
    int handled = 0;
    agent.addRccEventHandler(u"x"_s, [&](QJsonObject const&) { ++handled; });
    QSignalSpy disconnected(&agent, &SlobsAgent::disconnected);
    for (int round = 1; round <= 3; ++round) {
        agent.connectRcc(u"ws://127.0.0.1:%1"_s.arg(relay->port()));
        QTRY_COMPARE(relay->clientCount(), 1);
        relay->sendToAll(uR"({"task":"x"})"_s);
        QTRY_COMPARE(handled, round);
        relay->drop();
        QTRY_COMPARE(disconnected.size(), round);
        QTRY_COMPARE(relay->clientCount(), 0);
    }
}

void tst_Relay::agentsShareOneParsing()
{
    QString const text = uR"({"task":"onQueryAudioList","list":[{"sourceId":"a"},7]})"_s;
    std::weak_ptr<SlobsMessage> watched;
    {
        auto const one = SlobsMessagePool::shared();
        auto const two = SlobsMessagePool::shared();
        auto const message = one->take(text);
        watched = message;
        QCOMPARE(two->take(QString(text.constData(), text.size())), message);

        SlobsMessagePool::Handling const handling(message);
        auto const list = SlobsMessagePool::list<AudioSource>(*message->object());
        QCOMPARE(list.size(), 2); // what is no object counts as an empty one
        QCOMPARE(SlobsMessagePool::list<AudioSource>(*message->object()).constData(), list.constData());
        QCOMPARE(SlobsMessagePool::list<AudioSource>(json(R"({"list":[{}]})")).size(), 1);

        // Both have taken it: the next message shows that it is not kept.
        QVERIFY(one->take(u"{}"_s) != message);
        QVERIFY(one->take(text) != message);
    }
    QVERIFY(watched.expired());

    auto const alone = SlobsMessagePool::shared();
    auto const absent = SlobsMessagePool::shared(); // an agent that never gets anything
    watched = alone->take(text);
    QVERIFY(!watched.expired());
    QTRY_VERIFY_WITH_TIMEOUT(watched.expired(), 3000);
    for (int i = 0; i < 100; ++i) {
        watched = i == 0 ? std::weak_ptr(alone->take(QString::number(i))) : watched;
        alone->take(QString::number(i));
    }
    QVERIFY(watched.expired());
}

// Three agents, one of which connects late and one of which hears more: each gets what it would get alone.
void tst_Relay::sharedParsingIsInvisible()
{
    QList<QJsonObject> sent;
    for (int i = 0; i < 60; ++i) {
        sent.append({{u"task"_s, i % 7 == 0 ? u"unknown"_s : u"onQueryScenes"_s},
            {u"activeId"_s, QString::number(i / 2)},
            {u"list"_s, QJsonArray{QJsonObject{{u"id"_s, QString::number(i / 3)}}}}});
    }
    struct Listener
    {
        SlobsAgent agent;
        QStringList heard;
    };
    std::array<Listener, 3> listeners;
    QStringList expected;
    for (auto& listener : listeners) {
        listener.agent.addRccEventHandler(u"onQueryScenes"_s, [&listener](QJsonObject const& message) {
            QList<Scene> scenes;
            QString activeId;
            SlobsAgent::fromSceneList(message, scenes, activeId);
            listener.heard.append(activeId + u'/' + scenes.value(0).id);
        });
    }
    for (qsizetype i = 0; i < sent.size(); ++i) {
        if (i == 0 || i == 20) {
            for (std::size_t l = i == 0 ? 0 : 2; l < (i == 0 ? 2U : 3U); ++l) {
                listeners.at(l).agent.connectRcc(u"ws://127.0.0.1:%1"_s.arg(relay->port()));
            }
            QTRY_COMPARE(relay->clientCount(), i == 0 ? 2 : 3);
        }
        relay->sendToAll(compact(sent.at(i)));
        if (i % 7 != 0) {
            expected.append(u"%1/%2"_s.arg(i / 2).arg(i / 3));
        }
    }
    QTRY_COMPARE(listeners[0].heard, expected);
    QTRY_COMPARE(listeners[1].heard, expected);
    QTRY_COMPARE(listeners[2].heard, expected.sliced(17));
}

void tst_Relay::resultsDecode_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QByteArray>("decoded"); // written out again; numbers of records for lists

    auto const row = [](char const* name, QByteArray const& message, QByteArray const& decoded) {
        QTest::newRow(name) << message << decoded;
    };
    row("auth", R"({"task":"onStreamlabsAuthResult","authorized":true,"token":"t","port":5})",
        R"({"task":"onStreamlabsAuthResult","authorized":true,"token":"t","port":5})");
    row("auth without members", R"({"task":"onStreamlabsAuthResult"})",
        R"({"task":"onStreamlabsAuthResult","authorized":false,"token":"","port":-1})");
    row("auth of wrong types", R"({"task":"onStreamlabsAuthResult","authorized":1,"token":2,"port":"3"})",
        R"({"task":"onStreamlabsAuthResult","authorized":false,"token":"","port":-1})");
    row("stream", R"({"task":"onQueryStreamingStatus","streamingStatus":"live"})",
        R"({"task":"onQueryStreamingStatus","streamingStatus":"live"})");
    row("record", R"({"task":"onQueryRecordingStatus","recordingStatus":null})",
        R"({"task":"onQueryRecordingStatus","recordingStatus":""})");
    row("scenes", R"({"task":"onQueryScenes","activeId":"a","list":[{"id":"a","name":"n","nodes":[]}]})",
        R"({"task":"onQueryScenes","activeId":"a","list":[{"id":"a","name":"n","nodes":[]}]})");
    row("scenes without a list", R"({"task":"onQueryScenes","activeId":"a"})",
        R"({"task":"onQueryScenes","activeId":"a","list":[]})");
    row("scenes with an odd list", R"({"task":"onQueryScenes","list":[5]})",
        R"({"task":"onQueryScenes","activeId":"","list":[{"id":"","name":"","nodes":[]}]})");
    row("scenes with no array", R"({"task":"onQueryScenes","list":{}})",
        R"({"task":"onQueryScenes","activeId":"","list":[]})");
    row("collections", R"({"task":"onQueryCollections","list":[{"id":"c"}]})",
        R"({"task":"onQueryCollections","list":[{"id":"c","name":"","scenes":[],"sources":[]}]})");
    row("audio", R"({"task":"onQueryAudioList","list":[{"sourceId":"a","name":"n","muted":true}]})",
        R"({"task":"onQueryAudioList","list":[{"sourceId":"a","name":"n","muted":true}]})");
}

void tst_Relay::resultsDecode()
{
    QFETCH(QByteArray, message);
    QFETCH(QByteArray, decoded);

    // Filled beforehand, so that clearing shows.
    bool authorized = true;
    QString text = u"before"_s;
    int port = 1;
    QList<Scene> scenes(2);
    QList<CollectionSchema> collections(2);
    QList<AudioSource> sources(2);
    QJsonObject const in = json(message);
    QJsonObject out;
    QString const task = in.value("task"_L1).toString();
    if (task == "onStreamlabsAuthResult"_L1) {
        SlobsAgent::fromAuthState(in, authorized, text, port);
        out = SlobsAgent::toAuthState(authorized, text, port);
    } else if (task == "onQueryStreamingStatus"_L1) {
        SlobsAgent::fromStreamingStatus(in, text);
        out = SlobsAgent::toStreamingStatus(text);
    } else if (task == "onQueryRecordingStatus"_L1) {
        SlobsAgent::fromRecordingStatus(in, text);
        out = SlobsAgent::toRecordingStatus(text);
    } else if (task == "onQueryScenes"_L1) {
        SlobsAgent::fromSceneList(in, scenes, text);
        out = SlobsAgent::toSceneList(scenes, text);
        QCOMPARE(SlobsAgent::toSceneList(toJson(scenes), text), out);
    } else if (task == "onQueryCollections"_L1) {
        SlobsAgent::fromCollectionList(in, collections);
        out = SlobsAgent::toCollectionList(collections);
    } else {
        SlobsAgent::fromAudioList(in, sources);
        out = SlobsAgent::toAudioList(sources);
    }
    QCOMPARE(out, json(decoded));
}

void tst_Relay::resultsOfAnotherKindLeaveTheOutputsAlone()
{
    for (auto const* text :
        {R"({"list":[],"authorized":false})", R"({"task":"other","list":[]})", R"({"task":1})"}) {
        QJsonObject const message = json(text);
        bool authorized = true;
        QString status = u"before"_s;
        int port = 1;
        QList<Scene> scenes(2);
        QList<CollectionSchema> collections(2);
        QList<AudioSource> sources(2);
        SlobsAgent::fromAuthState(message, authorized, status, port);
        SlobsAgent::fromStreamingStatus(message, status);
        SlobsAgent::fromRecordingStatus(message, status);
        SlobsAgent::fromSceneList(message, scenes, status);
        SlobsAgent::fromCollectionList(message, collections);
        SlobsAgent::fromAudioList(message, sources);
        QVERIFY(authorized && status == "before"_L1 && port == 1);
        QVERIFY(scenes.size() == 2 && collections.size() == 2 && sources.size() == 2);
    }
}

void tst_Relay::ledsFollowTheStatus_data()
{
    QTest::addColumn<QString>("status");
    QTest::addColumn<bool>("stream");
    QTest::addColumn<bool>("record");
    QTest::newRow("live") << u"live"_s << true << false;
    QTest::newRow("starting") << u"starting"_s << true << false;
    QTest::newRow("recording") << u"recording"_s << false << true;
    QTest::newRow("ending") << u"ending"_s << false << false;
    QTest::newRow("capital") << u"Live"_s << false << false;
    QTest::newRow("empty") << QString() << false << false;
}

void tst_Relay::ledsFollowTheStatus()
{
    QFETCH(QString, status);
    QFETCH(bool, stream);
    QFETCH(bool, record);
    QJsonObject led = json(R"({"task":"remote.command.update.function.key.led.App.Control","sender":"",)"
                           R"("appName":"SLOBS","functionName":"STREAM"})");
    led.insert("status"_L1, stream);
    QCOMPARE(SlobsAgent::setStreamingLed(status), led);
    led.insert("functionName"_L1, u"RECORD"_s);
    led.insert("status"_L1, record);
    QCOMPARE(SlobsAgent::setRecordingLed(status), led);
}

// ---- The mixer delegate

void tst_Relay::mixerSends_data()
{
    using Send = std::function<void(ZoMixerPluginDelegate&)>;
    QTest::addColumn<Send>("send");
    QTest::addColumn<QByteArray>("text");

    auto const row = [](QByteArray const& text, Send const& send) {
        QTest::newRow(text.constData()) << send << text;
    };
    using M = ZoMixerPluginDelegate;
    row(R"({"subjects":[],"task":"remote.command.subscribe.subjects"})",
        [](M& m) { m.subscribeSubjects({}); });
    row(R"({"subjects":["a","b"],"task":"remote.command.subscribe.subjects"})", [](M& m) {
        m.subscribeSubjects({u"a"_s, u"b"_s});
    });
    row(R"({"subject":"a","task":"remote.command.subscribe.subject"})",
        [](M& m) { m.subscribeSubject(u"a"_s); });
    row(R"({"subject":"a","task":"remote.command.subject.send.message"})",
        [](M& m) { m.subjectSendMessage(u"a"_s); });
    row(R"({"task":"remote.command.query.mixer.mute"})", [](M& m) { m.queryMixerMute(); });
    row(R"({"mixers":[1,2],"muted":true,"task":"remote.command.update.mixer.mute"})", [](M& m) {
        m.updateMixerMute(true, {1, 2});
    });
    row(R"({"task":"remote.command.query.mixer.volume"})", [](M& m) { m.queryMixerVolume(); });
    row(R"({"category":2,"deck":1,"task":"remote.command.update.mixer.volume","volume":80})",
        [](M& m) { m.updateMixerVolume(1, 2, 80); });
    row(R"({"task":"remote.command.query.mixer.effect"})", [](M& m) { m.queryMixerEffect(); });
    row(R"({"effectType":3,"enable":true,"presetId":4,"task":"remote.command.update.mixer.effect"})",
        [](M& m) { m.updateMixerEffect(true, 3, 4); });
    row(R"({"task":"remote.command.query.headphone.output"})", [](M& m) { m.queryHeadphoneOutput(); });
    row(R"({"on":true,"task":"remote.command.update.headphone.output"})",
        [](M& m) { m.updateHeadphoneOutput(true); });
    row(R"({"task":"remote.command.query.monitor"})", [](M& m) { m.queryMonitor(); });
    row(R"({"on":false,"task":"remote.command.update.monitor"})", [](M& m) { m.updateMonitor(false); });
    row(R"({"page":3,"task":"remote.command.update.pageswitch"})", [](M& m) { m.updatePageSwitch(3); });
    row(R"({"task":"remote.command.query.hotkey.profile"})", [](M& m) { m.queryHotkeyProfile(); });
    row(R"({"profileId":"p","task":"remote.command.update.hotkey.profile"})",
        [](M& m) { m.updateHotkeyProfile(u"p"_s); });
    row(R"({"task":"remote.command.query.mixer.profile"})", [](M& m) { m.queryMixerProfile(); });
    row(R"({"profileId":"p","task":"remote.command.update.mixer.profile"})",
        [](M& m) { m.updateMixerProfile(u"p"_s); });
    row(R"({"id":"g","task":"remote.command.enter.group"})", [](M& m) { m.enterGroup(u"g"_s); });
    row(R"({"level":9,"sender":"k","task":"remote.command.update.function.key.led.level"})",
        [](M& m) { m.updateFunctionKeyLedLevel(u"k"_s, 9); });
    row(R"({"appName":"A","functionName":"F","sender":"k","status":true,)"
        R"("task":"remote.command.update.function.key.led.App.Control"})",
        [](M& m) { m.updateFunctionKeyLedAppControl(u"k"_s, u"A"_s, u"F"_s, true); });
    row(R"({"sender":"k","task":"remote.command.update.function.key.Image.Color"})",
        [](M& m) { m.updateFunctionKeyImageColor(u"k"_s); });
    row(R"({"task":"remote.command.turn.off.panel"})", [](M& m) { m.turnOffPanel(); });
    row(R"({"task":"QueryPageIndicatorNumber"})", [](M& m) { m.queryPageNumber(); });
}

void tst_Relay::mixerSends()
{
    QFETCH(std::function<void(ZoMixerPluginDelegate&)>, send);
    QFETCH(QByteArray, text);
    QList<QJsonObject> commands;
    relay->addCommandHandler(json(text).value("task"_L1).toString(), [](QWebSocket*, QJsonObject const&) {});
    connect(relay.get(), &RelayServer::commandReceived, relay.get(),
        [&](QJsonObject const& command) { commands.append(command); });

    ZoMixerPluginDelegate mixer;
    QSignalSpy responses(&mixer, &ZoMixerPluginDelegate::response);
    send(mixer); // lost: not connected
    mixer.connectToServer();
    QTRY_COMPARE(responses.size(), 1); // the relay's welcome
    send(mixer);
    QTRY_COMPARE(commands.size(), 1);
    QCOMPARE(compact(commands.first()).toUtf8(), text);
}

void tst_Relay::mixerReceives()
{
    ZoMixerPluginDelegate mixer;
    QSignalSpy responses(&mixer, &ZoMixerPluginDelegate::response);
    mixer.connectToServer();
    QTRY_COMPARE(responses.size(), 1);
    auto const answers = [&](char const* text) {
        responses.clear();
        relay->sendToAll(QString::fromLatin1(text));
        relay->sendToAll(u"{}"_s);
        [&] { QTRY_VERIFY(!responses.isEmpty() && responses.last().first().toJsonObject().isEmpty()); }();
        return responses.first().first().toJsonObject();
    };
    QCOMPARE(answers(R"({"a":1})"), json(R"({"a":1})"));
    for (auto const* broken : {"[1]", "nonsense", ""}) {
        QCOMPARE(answers(broken), json(R"({"error":"Content was broken"})"));
        QVERIFY(log->take(u"debug: [MixerPluginDelegate][ConnectToServer]Error"_s));
    }

    // Each message is handled once for each time that the socket has connected.
    responses.clear();
    mixer.connectToServer();
    QTRY_COMPARE(responses.size(), 2); // the welcome
    relay->sendToAll(uR"({"b":2})"_s);
    QTRY_COMPARE(responses.size(), 4);
    QCOMPARE(responses.at(3).first().toJsonObject(), json(R"({"b":2})"));
}

QTEST_GUILESS_MAIN(tst_Relay)
#include "tst_Relay.moc"
