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

#include <algorithm>
#include <functional>
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

    void relayAnswers();
    void relayServesServicesAndSubscribers();
    void relaySendsTheNewestLast();
    void relayAcknowledgesOnlyOnRequestWhenToldSo();

    void agentSends_data();
    void agentSends();
    void agentDispatches();
    void agentComesBack();
    void agentsShareOneParsing();
    void agentsTellTextsApart_data();
    void agentsTellTextsApart();
    void sharedParsingIsInvisible();
    void resultsDecode_data();
    void resultsDecode();
    void statusesDecode();
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

void tst_Relay::relayAnswers()
{
    RawClient client(*relay);
    QTRY_COMPARE(client.texts.size(), 1);
    QCOMPARE(client.last(), json(R"({"task":"remote.command.register.to.server","success":true})"));

    std::pair<char const*, QByteArray> const answers[] = {
        {R"({"task":"remote.command.subscribe.subject","subject":"a"})",
            R"({"task":"remote.command.subscribe.subject","subject":"a","success":true})"},
        {R"({"task":"remote.command.subscribe.subjects","subjects":["a","b"]})",
            R"({"task":"remote.command.subscribe.subjects","subjects":["a","b"],"success":true})"},
        {R"({"task":"remote.command.subscribe.subject"})",
            R"({"task":"remote.command.subscribe.subject","error":"no \"subject\""})"},
        {R"({"task":"remote.command.subscribe.subjects","subjects":["a",1]})",
            R"({"task":"remote.command.subscribe.subjects","error":"\"subjects\" is not a list of names"})"},
        {R"({"task":"make.coffee"})", R"({"task":"make.coffee","error":"unknown command"})"},
        {R"({"task":"remote.command.update.function.key.led.App.Control","appName":"SLOBS",)"
         R"("functionName":"STREAM","status":"yes"})",
            R"({"task":"remote.command.update.function.key.led.App.Control",)"
            R"("error":"no \"appName\", \"functionName\" or \"status\""})"},
        {R"({"task":"LaunchSettingPage"})",
            R"({"task":"LaunchSettingPage","error":"no \"page\" in \"params\""})"},
        {"{}", R"({"error":"no \"task\""})"},
        {"[]", R"({"error":"not a JSON object"})"},
        {"hello", R"({"error":"not a JSON object"})"},
    };
    for (auto const& [text, answer] : answers) {
        client.texts.clear();
        client.socket.sendTextMessage(QString::fromLatin1(text));
        QTRY_COMPARE(client.texts.size(), 1);
        QCOMPARE(client.last(), json(answer));
        QCOMPARE(log->take(u"warning: relay: message rejected,"_s), answer.contains("error"));
    }
    client.socket.sendBinaryMessage("{}");
    QTRY_COMPARE(client.last(), json(R"({"error":"not a text frame"})"));
    QVERIFY(log->take(u"warning: relay: message rejected,"_s));
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
    for (int i = 0; i < 14; ++i) { // to and fro between more than the relay remembers
        QJsonObject const status{{u"task"_s, u"status"_s}, {u"value"_s, i % 7}};
        relay->publish(u"s"_s, status);
        QTRY_COMPARE(listener.texts.size(), 5 + i);
        QCOMPARE(listener.last(), status);
    }

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

    listener.socket.abort();
    for (int i = 0; i < 3; ++i) {
        relay->publish(u"s"_s, payload); // which finds out that nobody is there any more
        QVERIFY(i < 2 || relay->subscriberCount(u"s"_s) == 0);
    }
    relay->drop();
    QTRY_COMPARE(relay->clientCount(), 0);
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
    QList<int> numbers;
    QTRY_VERIFY(!client.texts.isEmpty() && client.last().value("number"_L1) == number);
    for (auto const& text : std::as_const(client.texts)) {
        numbers.append(json(text.first().toByteArray()).value("number"_L1).toInt());
    }
    QVERIFY(std::ranges::adjacent_find(numbers, std::greater_equal()) == numbers.end());
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
    using A = SlobsAgent;
    QTest::addColumn<std::function<void(A&)>>("send");
    auto const row = [](QByteArray const& text, auto method, auto const&... arguments) {
        QTest::newRow(text.constData()) << std::function([=](A& agent) { (agent.*method)(arguments...); });
    };
    auto const task = [&](QByteArray const& event, char const* more, auto method, auto const&... arguments) {
        row(R"({"task":"remote.command.slobs.service.task","event":")" + event + '"' + more + '}', method,
            arguments...);
    };
    using Text = QString const&;
    row(R"({"task":"remote.command.subscribe.subject","subject":"s","id":"i","category":"c"})",
        qOverload<Text, Text, Text>(&A::subscribe), u"s"_s, u"i"_s, u"c"_s);
    row(R"({"task":"remote.command.subscribe.subjects","subjects":["s","t"],"id":"","category":""})",
        qOverload<QStringList const&, Text, Text>(&A::subscribe), QStringList{u"s"_s, u"t"_s}, u""_s, u""_s);
    row(R"({"task":"LaunchSettingPage","params":{"page":7}})", &A::showSettingsLogin);
    task("queryAuthState", "", &A::queryAuthState);
    task("refreshModel", "", &A::refreshModel);
    task("queryStreamingStatus", "", &A::queryStreamingStatus);
    task("queryRecordingStatus", "", &A::queryRecordingStatus);
    task("toggleStreamingStatus", "", &A::toggleStreaming);
    task("toggleRecordingStatus", "", &A::toggleRecording);
    task("refreshScenes", "", &A::refreshScenes);
    task("queryScenes", "", &A::queryScenes);
    task("refreshCollections", "", &A::refreshCollections);
    task("queryCollections", "", &A::queryCollections);
    task("queryAudioList", "", &A::queryAudioList);
    task("setActiveScene", R"(,"activeId":"x")", &A::setActiveScene, u"x"_s);
    task("refreshAudioList", R"(,"sceneId":"s")", &A::refreshAudioList, u"s"_s);
    task("setAudioMute", R"(,"sourceId":"x","muted":false)", &A::setAudioMute, u"x"_s, false);
    Source source;
    source.sceneId = u"s"_s;
    source.sceneItemId = u"i"_s;
    source.sourceId = u"x"_s;
    task("setSourceVisible", R"(,"sceneId":"s","sceneItemId":"i","sourceId":"x","visible":true)",
        &A::setSourceVisible, source, true);
}

void tst_Relay::agentSends()
{
    QFETCH(std::function<void(SlobsAgent&)>, send);
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
    QCOMPARE(commands.first(), json(QTest::currentDataTag()));
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
        for (int i = 0; round > 1 && i < 3; ++i) {
            agent.queryScenes(); // finds out itself that nobody is there any more
            QVERIFY(i < 2 || disconnected.size() == round);
        }
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
    watched = alone->take(text);
    for (int i = 0; i < 100; ++i) {
        alone->take(QString::number(i));
    }
    QVERIFY(watched.expired());
}

void tst_Relay::agentsTellTextsApart_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("other");

    QTest::newRow("ASCII") << uR"({"task":"a"})"_s << uR"({"task":"b"})"_s;
    QTest::newRow("as long in UTF-16") << uR"({"task":"é"})"_s << uR"({"task":"e"})"_s;
    QTest::newRow("as long in UTF-8") << uR"({"task":"é"})"_s << uR"({"task":"ee"})"_s;
    QTest::newRow("other script") << uR"({"task":"字"})"_s << uR"({"task":"子"})"_s;
    QTest::newRow("beyond the first plane") << uR"({"task":"😀"})"_s << uR"({"task":"😁"})"_s;
}

void tst_Relay::agentsTellTextsApart()
{
    QFETCH(QString, text);
    QFETCH(QString, other);

    auto const one = SlobsMessagePool::shared();
    auto const two = SlobsMessagePool::shared();
    auto const three = SlobsMessagePool::shared();
    auto const message = one->take(text);
    QVERIFY(two->take(other)->object() == json(other.toUtf8()));
    QCOMPARE(three->take(QString(text.constData(), text.size())), message);
    QVERIFY(message->object() == json(text.toUtf8()));
}

// Three agents, one of which connects late and one of which hears more: each gets what it would get alone.
void tst_Relay::sharedParsingIsInvisible()
{
    struct Listener
    {
        SlobsAgent agent;
        QStringList heard;
    };
    std::array<Listener, 3> listeners;
    auto const join = [&](std::size_t number) {
        auto& listener = listeners.at(number);
        listener.agent.addRccEventHandler(u"onQueryScenes"_s, [&listener](QJsonObject const& message) {
            QList<Scene> scenes;
            QString activeId;
            SlobsAgent::fromSceneList(message, scenes, activeId);
            listener.heard.append(activeId + u'/' + scenes.value(0).id);
        });
        listener.agent.connectRcc(u"ws://127.0.0.1:%1"_s.arg(relay->port()));
        QTRY_COMPARE(relay->clientCount(), static_cast<int>(number) + 1);
    };
    join(0);
    join(1);
    QStringList expected;
    for (int i = 0; i < 60; ++i) {
        if (i == 20) {
            join(2);
        }
        QJsonArray const scenes{QJsonObject{{u"id"_s, QString::number(i / 3)}}};
        relay->sendToAll(compact({{u"task"_s, i % 7 == 0 ? u"unknown"_s : u"onQueryScenes"_s},
            {u"activeId"_s, QString::number(i / 2)}, {u"list"_s, scenes}}));
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
    QTest::addColumn<QByteArray>("decoded"); // written out again
    auto const row = [](char const* message, QByteArray const& decoded) {
        QTest::newRow(message) << decoded;
    };
    QByteArray const noAuth = R"({"task":"onStreamlabsAuthResult","authorized":false,"token":"","port":-1})";
    auto const scenes = [](QByteArray const& activeId, QByteArray const& list) {
        return R"({"task":"onQueryScenes","activeId":")" + activeId + R"(","list":)" + list + '}';
    };

    row(R"({"task":"onStreamlabsAuthResult","authorized":true,"token":"t","port":5})",
        R"({"task":"onStreamlabsAuthResult","authorized":true,"token":"t","port":5})");
    row(R"({"task":"onStreamlabsAuthResult"})", noAuth);
    row(R"({"task":"onStreamlabsAuthResult","authorized":1,"token":2,"port":"3"})", noAuth);
    row(R"({"task":"onQueryStreamingStatus","streamingStatus":"live"})",
        R"({"task":"onQueryStreamingStatus","streamingStatus":"live"})");
    row(R"({"task":"onQueryRecordingStatus","recordingStatus":null})",
        R"({"task":"onQueryRecordingStatus","recordingStatus":""})");
    row(R"({"task":"onQueryScenes","activeId":"a","list":[{"id":"a","name":"n","nodes":[]}]})",
        scenes("a", R"([{"id":"a","name":"n","nodes":[]}])"));
    row(R"({"task":"onQueryScenes","activeId":"a"})", scenes("a", "[]"));
    row(R"({"task":"onQueryScenes","list":[5]})", scenes("", R"([{"id":"","name":"","nodes":[]}])"));
    row(R"({"task":"onQueryScenes","list":{}})", scenes("", "[]"));
    row(R"({"task":"onQueryCollections","list":[{"id":"c"}]})",
        R"({"task":"onQueryCollections","list":[{"id":"c","name":"","scenes":[],"sources":[]}]})");
    row(R"({"task":"onQueryAudioList","list":[{"sourceId":"a","name":"n","muted":true}]})",
        R"({"task":"onQueryAudioList","list":[{"sourceId":"a","name":"n","muted":true}]})");
}

void tst_Relay::resultsDecode()
{
    QFETCH(QByteArray, decoded);
    QJsonObject const message = json(QTest::currentDataTag());
    QString const task = message.value("task"_L1).toString();

    // Filled beforehand, so that clearing shows. A message of another kind must not touch them.
    bool authorized = true;
    QString text = u"before"_s;
    int port = 1;
    QList<Scene> scenes(2);
    QList<CollectionSchema> collections(2);
    QList<AudioSource> sources(2);
    SlobsAgent::fromAuthState(message, authorized, text, port);
    SlobsAgent::fromStreamingStatus(message, text);
    SlobsAgent::fromRecordingStatus(message, text);
    SlobsAgent::fromSceneList(message, scenes, text);
    SlobsAgent::fromCollectionList(message, collections);
    SlobsAgent::fromAudioList(message, sources);

    QCOMPARE(port == 1, task != "onStreamlabsAuthResult"_L1);
    QCOMPARE(scenes.size() == 2, task != "onQueryScenes"_L1);
    QCOMPARE(collections.size() == 2, task != "onQueryCollections"_L1);
    QCOMPARE(sources.size() == 2, task != "onQueryAudioList"_L1);
    QList const written{SlobsAgent::toAuthState(authorized, text, port), SlobsAgent::toStreamingStatus(text),
        SlobsAgent::toRecordingStatus(text), SlobsAgent::toSceneList(scenes, text),
        SlobsAgent::toCollectionList(collections), SlobsAgent::toAudioList(sources)};
    QVERIFY(written.contains(json(decoded)));
}

void tst_Relay::statusesDecode()
{
    for (int i = 0; i < 80; ++i) { // more than are remembered, and each of them again
        QString const status = QString::number(i % 40);
        QString streaming;
        QString recording;
        SlobsAgent::fromStreamingStatus(SlobsAgent::toStreamingStatus(status), streaming);
        SlobsAgent::fromRecordingStatus(SlobsAgent::toRecordingStatus(status), recording);
        QCOMPARE(streaming, status);
        QCOMPARE(recording, status);
    }
}

void tst_Relay::ledsFollowTheStatus()
{
    QStringList lit;
    for (auto const& status : {u"live"_s, u"starting"_s, u"recording"_s, u"ending"_s, u"Live"_s, QString()}) {
        for (auto const& led : {SlobsAgent::setStreamingLed(status), SlobsAgent::setRecordingLed(status)}) {
            if (led.value("status"_L1).toBool()) {
                lit.append(led.value("functionName"_L1).toString() + u' ' + status);
            }
        }
    }
    QCOMPARE(lit, QStringList({u"STREAM live"_s, u"STREAM starting"_s, u"RECORD recording"_s}));
    QCOMPARE(SlobsAgent::setStreamingLed(u"live"_s),
        json(R"({"task":"remote.command.update.function.key.led.App.Control","sender":"",)"
             R"("appName":"SLOBS","functionName":"STREAM","status":true})"));
    QCOMPARE(SlobsAgent::setRecordingLed({}),
        json(R"({"task":"remote.command.update.function.key.led.App.Control","sender":"",)"
             R"("appName":"SLOBS","functionName":"RECORD","status":false})"));
}

// ---- The mixer delegate

void tst_Relay::mixerSends_data()
{
    using M = ZoMixerPluginDelegate;
    QTest::addColumn<std::function<void(M&)>>("send");
    auto const row = [](QByteArray const& task, char const* more, auto method, auto const&... arguments) {
        QTest::newRow((R"({"task":")" + task + '"' + more + '}').constData())
            << std::function([=](M& mixer) { (mixer.*method)(arguments...); });
    };
    row("remote.command.subscribe.subjects", R"(,"subjects":["a","b"])", &M::subscribeSubjects,
        QStringList{u"a"_s, u"b"_s});
    row("remote.command.subscribe.subject", R"(,"subject":"a")", &M::subscribeSubject, u"a"_s);
    row("remote.command.subject.send.message", R"(,"subject":"a")", &M::subjectSendMessage, u"a"_s);
    row("remote.command.query.mixer.mute", "", &M::queryMixerMute);
    row("remote.command.update.mixer.mute", R"(,"mixers":[1,2],"muted":true)", &M::updateMixerMute, true,
        QJsonArray{1, 2});
    row("remote.command.query.mixer.volume", "", &M::queryMixerVolume);
    row("remote.command.update.mixer.volume", R"(,"category":2,"deck":1,"volume":80)", &M::updateMixerVolume,
        1, 2, 80);
    row("remote.command.query.mixer.effect", "", &M::queryMixerEffect);
    row("remote.command.update.mixer.effect", R"(,"effectType":3,"enable":true,"presetId":4)",
        &M::updateMixerEffect, true, 3, 4);
    row("remote.command.query.headphone.output", "", &M::queryHeadphoneOutput);
    row("remote.command.update.headphone.output", R"(,"on":true)", &M::updateHeadphoneOutput, true);
    row("remote.command.query.monitor", "", &M::queryMonitor);
    row("remote.command.update.monitor", R"(,"on":false)", &M::updateMonitor, false);
    row("remote.command.update.pageswitch", R"(,"page":3)", &M::updatePageSwitch, 3);
    row("remote.command.query.hotkey.profile", "", &M::queryHotkeyProfile);
    row("remote.command.update.hotkey.profile", R"(,"profileId":"p")", &M::updateHotkeyProfile, u"p"_s);
    row("remote.command.query.mixer.profile", "", &M::queryMixerProfile);
    row("remote.command.update.mixer.profile", R"(,"profileId":"p")", &M::updateMixerProfile, u"p"_s);
    row("remote.command.enter.group", R"(,"id":"g")", &M::enterGroup, u"g"_s);
    row("remote.command.update.function.key.led.level", R"(,"level":9,"sender":"k")",
        &M::updateFunctionKeyLedLevel, u"k"_s, 9);
    row("remote.command.update.function.key.led.App.Control",
        R"(,"appName":"A","functionName":"F","sender":"k","status":true)", &M::updateFunctionKeyLedAppControl,
        u"k"_s, u"A"_s, u"F"_s, true);
    row("remote.command.update.function.key.Image.Color", R"(,"sender":"k")", &M::updateFunctionKeyImageColor,
        u"k"_s);
    row("remote.command.turn.off.panel", "", &M::turnOffPanel);
    row("QueryPageIndicatorNumber", "", &M::queryPageNumber);
}

void tst_Relay::mixerSends()
{
    QFETCH(std::function<void(ZoMixerPluginDelegate&)>, send);
    QJsonObject const expected = json(QTest::currentDataTag());
    QList<QJsonObject> commands;
    relay->addCommandHandler(expected.value("task"_L1).toString(), [](QWebSocket*, QJsonObject const&) {});
    connect(relay.get(), &RelayServer::commandReceived, relay.get(),
        [&](QJsonObject const& command) { commands.append(command); });

    ZoMixerPluginDelegate mixer;
    QSignalSpy responses(&mixer, &ZoMixerPluginDelegate::response);
    send(mixer); // lost: not connected
    mixer.connectToServer();
    QTRY_COMPARE(responses.size(), 1); // the relay's welcome
    send(mixer);
    QTRY_COMPARE(commands.size(), 1);
    QCOMPARE(commands.first(), expected);
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
