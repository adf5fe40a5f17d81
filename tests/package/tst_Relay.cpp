// The clients of the host's relay, and the development host's relay itself.

#include "actions/SlobsAgent.h"
#include "devhost/fakes/RelayServer.h"
#include "relay/ZoLumenProxy.h"
#include "relay/ZoMixerPluginDelegate.h"
#include "tests/LogRecorder.h"
#include "tests/TestJson.h"

#include <QEventLoop>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QWebSocket>

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <tuple>

using namespace Qt::StringLiterals;
using namespace StreamlabsApiPrivate;

namespace {

// A client that keeps every text and sends what a test wants.
struct RawClient
{
    //! Waits for the relay's welcome.
    explicit RawClient(RelayServer const& relay) : texts(&socket, &QWebSocket::textMessageReceived)
    {
        socket.open(QUrl(u"ws://127.0.0.1:%1"_s.arg(relay.port())));
        texts.wait();
    }

    QJsonObject last() const { return json(texts.last().first().toString().toUtf8()); }

    //! The one answer to \a text.
    QJsonObject ask(QString const& text)
    {
        texts.clear();
        socket.sendTextMessage(text);
        return texts.wait() && texts.size() == 1 ? last() : QJsonObject();
    }

    QWebSocket socket;
    QSignalSpy texts;
};

using Clients = std::tuple<SlobsAgent, ZoMixerPluginDelegate>;

} // namespace

class tst_Relay : public QObject
{
    Q_OBJECT

private:
    QString url() const { return u"ws://127.0.0.1:%1"_s.arg(relay->port()); }

    std::optional<LogRecorder> log;
    std::unique_ptr<RelayServer> relay;

private slots:
    void init()
    {
        log.emplace();
        relay = std::make_unique<RelayServer>();
        QVERIFY(relay->listen());
        ZoLumenProxy::getInstance().port = relay->port();
    }

    void cleanup()
    {
        relay.reset();
        QCOMPARE(log->problems(), QStringList());
        log.reset();
    }

    // ---- The relay

    void relayAnswers()
    {
        RawClient client(*relay);
        QCOMPARE(client.last(), json(R"({"task":"remote.command.register.to.server","success":true})"));

        std::pair<char const*, char const*> const answers[] = {
            {R"({"task":"remote.command.subscribe.subject","subject":"a"})", nullptr},
            {R"({"task":"remote.command.subscribe.subjects","subjects":["a","b"]})", nullptr},
            {R"({"task":"remote.command.subscribe.subject"})", "no \"subject\""},
            {R"({"task":"remote.command.subscribe.subjects","subjects":["a",1]})",
                "\"subjects\" is not a list of names"},
            {R"({"task":"make.coffee"})", "unknown command"},
            {R"({"task":"remote.command.update.function.key.led.App.Control","appName":"SLOBS",)"
             R"("functionName":"STREAM","status":"yes"})",
                "no \"appName\", \"functionName\" or \"status\""},
            {R"({"task":"LaunchSettingPage"})", "no \"page\" in \"params\""},
            {"{}", "no \"task\""},
            {"[]", "not a JSON object"},
            {"hello", "not a JSON object"},
        };
        for (auto const& [text, error] : answers) {
            QJsonObject answer = QJsonDocument::fromJson(text).object();
            if (error) {
                answer = {{u"task"_s, answer.value("task"_L1)}, {u"error"_s, QLatin1StringView(error)}};
            } else {
                answer.insert("success"_L1, true);
            }
            QCOMPARE(client.ask(QString::fromLatin1(text)), answer);
            QCOMPARE(log->take(u"warning: relay: message rejected,"_s), error != nullptr);
        }
        client.socket.sendBinaryMessage("{}");
        QTRY_COMPARE(client.last(), json(R"({"error":"not a text frame"})"));
        QVERIFY(log->take(u"warning: relay: message rejected,"_s));
    }

    void relayServesServicesAndSubscribers()
    {
        RawClient listener(*relay);
        RawClient other(*relay);
        for (int i = 0; i < 2; ++i) { // asking twice is asking once
            listener.ask(uR"({"task":"remote.command.subscribe.subject","subject":"s"})"_s);
        }
        QCOMPARE(relay->subscriberCount(u"s"_s), 1);

        QJsonObject const payload{{u"task"_s, u"news"_s}, {u"text"_s, u"ä'\"\\"_s}};
        relay->publish(u"s"_s, payload);
        relay->publish(u"nobody listens"_s, payload);
        QTRY_COMPARE(listener.texts.size(), 2);
        QCOMPARE(listener.last(), payload);

        // Large and small ones, faster than a client takes them.
        listener.texts.clear();
        QList<QJsonObject> sent;
        for (int const size : {1000000, 10, 1000000, 1000000, 10}) {
            sent.append({{u"task"_s, u"t"_s}, {u"number"_s, sent.size()}, {u"list"_s, QString(size, u'x')}});
            relay->publish(u"s"_s, sent.last());
        }
        QTRY_COMPARE(listener.texts.size(), sent.size());
        for (qsizetype i = 0; i < sent.size(); ++i) {
            QCOMPARE(json(listener.texts.at(i).first().toByteArray()), sent.at(i));
        }

        QList<QJsonObject> commands;
        relay->addCommandHandler(u"c"_s, [&](QWebSocket* connection, QJsonObject const& command) {
            QVERIFY(connection);
            commands.append(command);
        });
        other.socket.sendTextMessage(uR"({"task":"c","x":1})"_s);
        QTRY_COMPARE(commands, QList({json(R"({"task":"c","x":1})")}));
        relay->removeCommandHandler(u"c"_s);
        other.ask(uR"({"task":"c"})"_s);
        QVERIFY(log->take(u"unknown command"_s));
        QCOMPARE(commands.size(), 1);

        QSignalSpy leds(relay.get(), &RelayServer::ledChanged);
        relay->dispatchEvent(SlobsAgent::setRecordingLed(u"recording"_s));
        QCOMPARE(leds.takeFirst(), QVariantList({u"SLOBS"_s, u"RECORD"_s, true}));
        relay->dispatchEvent(json(R"({"task":"make.coffee"})"));
        QVERIFY(log->take(u"warning: relay: event of the host ignored,"_s));

        listener.socket.abort();
        relay->publish(u"s"_s, payload); // to nobody
        QTRY_COMPARE(relay->subscriberCount(u"s"_s), 0);
        relay->drop();
        QTRY_COMPARE(relay->clientCount(), 0);
        QCOMPARE(other.texts.size(), 1);
    }

    // Who hears of what was sent may drop whom it goes to next.
    void relayLosesClientsWhileItSends()
    {
        std::array<std::unique_ptr<RawClient>, 3> clients;
        for (auto& client : clients) {
            client = std::make_unique<RawClient>(*relay);
            client->ask(uR"({"task":"remote.command.subscribe.subject","subject":"s"})"_s);
            client->texts.clear();
        }
        QList<int> receivers;
        connect(relay.get(), &RelayServer::messageSent, relay.get(), [&](int client) {
            receivers.append(client);
            relay->drop();
        });
        relay->publish(u"s"_s, {{u"task"_s, u"t"_s}});
        QCOMPARE(receivers, QList({1}));
        QCOMPARE(relay->clientCount(), 0);
    }

    void relayDropsWhoDoesNotRead()
    {
        RawClient listener(*relay);
        RawClient const other(*relay);
        listener.ask(uR"({"task":"remote.command.subscribe.subject","subject":"s"})"_s);
        QJsonObject const payload{{u"task"_s, u"t"_s}, {u"list"_s, QString(1 << 20, u'x')}};
        for (int i = 0; i < 63; ++i) {
            relay->publish(u"s"_s, payload);
        }
        QCOMPARE(relay->clientCount(), 2);
        relay->publish(u"s"_s, payload);
        QVERIFY(log->take(u"warning: relay: client 1 dropped, it does not read"_s));
        QCOMPARE(relay->clientCount(), 1);
        QTRY_COMPARE(listener.socket.state(), QAbstractSocket::UnconnectedState);
    }

    // ---- What the clients send

    void clientsSend_data()
    {
        using A = SlobsAgent;
        using M = ZoMixerPluginDelegate;
        QTest::addColumn<std::function<void(Clients&)>>("send");
        auto const row = []<typename Client, typename... Parameters>(QByteArray const& task, char const* more,
                             void (Client::*method)(Parameters...), auto const&... values) {
            QTest::newRow(("{\"task\":\"" + task + '"' + more + '}').constData())
                << std::function([=](Clients& clients) { (std::get<Client>(clients).*method)(values...); });
        };
        auto const task = [&](QByteArray const& event, char const* more, auto method, auto const&... values) {
            row(R"(remote.command.slobs.service.task","event":")" + event, more, method, values...);
        };
        using Text = QString const&;
        row("remote.command.subscribe.subject", R"(,"subject":"s","id":"i","category":"c")",
            qOverload<Text, Text, Text>(&A::subscribe), u"s"_s, u"i"_s, u"c"_s);
        row("remote.command.subscribe.subjects", R"(,"subjects":["s","t"],"id":"","category":"")",
            qOverload<QStringList const&, Text, Text>(&A::subscribe), u"s t"_s.split(u' '), u""_s, u""_s);
        row("LaunchSettingPage", R"(,"params":{"page":7})", &A::showSettingsLogin);
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
        fromJson(json(R"({"sceneId":"s","sceneItemId":"i","sourceId":"x"})"), source);
        task("setSourceVisible", R"(,"sceneId":"s","sceneItemId":"i","sourceId":"x","visible":true)",
            &A::setSourceVisible, source, true);
        row("remote.command.subscribe.subjects", R"(,"subjects":["a","b"])", &M::subscribeSubjects,
            QStringList{u"a"_s, u"b"_s});
        row("remote.command.subscribe.subject", R"(,"subject":"a")", &M::subscribeSubject, u"a"_s);
        row("remote.command.subject.send.message", R"(,"subject":"a")", &M::subjectSendMessage, u"a"_s);
        row("remote.command.query.mixer.mute", "", &M::queryMixerMute);
        row("remote.command.update.mixer.mute", R"(,"mixers":[1,2],"muted":true)", &M::updateMixerMute, true,
            QJsonArray{1, 2});
        row("remote.command.query.mixer.volume", "", &M::queryMixerVolume);
        row("remote.command.update.mixer.volume", R"(,"category":2,"deck":1,"volume":80)",
            &M::updateMixerVolume, 1, 2, 80);
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
            R"(,"appName":"A","functionName":"F","sender":"k","status":true)",
            &M::updateFunctionKeyLedAppControl, u"k"_s, u"A"_s, u"F"_s, true);
        row("remote.command.update.function.key.Image.Color", R"(,"sender":"k")",
            &M::updateFunctionKeyImageColor, u"k"_s);
        row("remote.command.turn.off.panel", "", &M::turnOffPanel);
        row("QueryPageIndicatorNumber", "", &M::queryPageNumber);
    }

    void clientsSend()
    {
        QFETCH(std::function<void(Clients&)>, send);
        Clients clients;
        auto& [agent, mixer] = clients;
        send(clients); // lost: not connected
        QSignalSpy received(relay.get(), &RelayServer::messageReceived);
        QSignalSpy connected(&agent, &SlobsAgent::connected);
        QSignalSpy responses(&mixer, &ZoMixerPluginDelegate::response);
        agent.connectRcc(url());
        mixer.connectToServer();
        QTRY_VERIFY(connected.size() == 1 && responses.size() == 1);
        send(clients);
        QTRY_COMPARE(received.size(), 1);
        QCOMPARE(json(received.first().last().toByteArray()), json(QTest::currentDataTag()));
        log->take(u"\"unknown command\""_s); // most of them need a service
    }

    // ---- The agent

    void agentDispatchesAndComesBack()
    {
        SlobsAgent agent;
        QList<QJsonObject> messages;
        agent.addRccEventHandler(u"x"_s, [](QJsonObject const&) { QFAIL("replaced"); });
        agent.addRccEventHandler(u"x"_s, [&](QJsonObject const& message) { messages.append(message); });
        QSignalSpy disconnected(&agent, &SlobsAgent::disconnected);
        agent.connectRcc(url());
        QTRY_COMPARE(log->count(u"debug: [SlobsAgent] \"remote.command.register.to.server\" ???"_s), 1);

        QString const broken = u"critical: [SlobsAgent] Content was broken"_s;
        for (auto const& [text, line] : {std::pair(u"[1]"_s, broken), {u"nonsense"_s, broken},
                 {u""_s, broken}, {uR"({"task":5})"_s, u"debug: [SlobsAgent] \"\" ???"_s},
                 {uR"({"task":"X"})"_s, u"debug: [SlobsAgent] \"X\" ???"_s}}) {
            relay->sendToAll(text);
            QVERIFY(QTest::qWaitFor([this, &part = line] { return log->take(part); }));
        }
        QString const text = uR"({"task":"x","y":1})"_s;
        relay->sendToAll(text);
        QTRY_COMPARE(messages, QList({json(text.toUtf8())}));
        agent.disconnectRcc();
        QTRY_COMPARE(disconnected.size(), 1);
        QTRY_COMPARE(relay->clientCount(), 0);

        for (int round = 2; round <= 4; ++round) {
            agent.connectRcc(url());
            QTRY_COMPARE(relay->clientCount(), 1);
            relay->sendToAll(text);
            QTRY_COMPARE(messages.size(), round);
            relay->drop();
            for (int i = 0; round > 2 && i < 3; ++i) {
                agent.queryScenes(); // finds out itself that nobody is there any more
                QVERIFY(i < 2 || disconnected.size() == round);
            }
            QTRY_COMPARE(disconnected.size(), round);
            QTRY_COMPARE(relay->clientCount(), 0);
        }
    }

    void clientsMayGoFromInside()
    {
        auto agent = std::make_unique<SlobsAgent>();
        auto const remove = [&agent] { agent.reset(); };
        auto const removeInLoop = [&agent] {
            QEventLoop loop;
            QTimer::singleShot(0, &loop, [&] {
                agent.reset();
                QTimer::singleShot(0, &loop, &QEventLoop::quit); // what is deleted later goes first
            });
            loop.exec();
        };
        for (auto const& act : {std::function<void()>(remove), std::function<void()>(removeInLoop)}) {
            for (auto const signal : {&SlobsAgent::connected, &SlobsAgent::disconnected}) {
                agent = std::make_unique<SlobsAgent>();
                connect(agent.get(), signal, this, act);
                agent->connectRcc(url());
                QTRY_VERIFY(!agent || relay->clientCount() == 1);
                if (agent) { // what it sends finds out that nobody is there any more
                    relay->drop();
                    for (int i = 0; agent && i < 3; ++i) {
                        agent->queryScenes();
                    }
                }
                QTRY_VERIFY(!agent && relay->clientCount() == 0);
            }
            agent = std::make_unique<SlobsAgent>();
            agent->addRccEventHandler(u"x"_s, [act](QJsonObject const&) { act(); });
            agent->connectRcc(url());
            QTRY_COMPARE(relay->clientCount(), 1);
            relay->sendToAll(uR"({"task":"x"})"_s);
            relay->sendToAll(u"nonsense"_s); // which nobody takes any more
            QTRY_VERIFY(!agent && relay->clientCount() == 0);
        }

        auto mixer = std::make_unique<ZoMixerPluginDelegate>();
        connect(mixer.get(), &ZoMixerPluginDelegate::response, this, [&mixer] { mixer.reset(); });
        mixer->connectToServer();
        QTRY_VERIFY(!mixer && relay->clientCount() == 0);
    }

    // Agents that connect one after the other: each gets what it would get alone.
    void sharedParsingIsInvisible()
    {
        struct Listener
        {
            SlobsAgent agent;
            QStringList heard;
        };
        std::array<Listener, 3> listeners;
        for (auto& [agent, heard] : listeners) {
            agent.addRccEventHandler(u"onQueryScenes"_s, [&list = heard](QJsonObject const& message) {
                QList<Scene> scenes;
                QString activeId;
                SlobsAgent::fromSceneList(message, scenes, activeId);
                list.append(activeId + u'/' + scenes.value(0).id);
            });
        }
        QStringList expected;
        for (int i = 0; i < 60; ++i) {
            if (i == 0 || i == 10 || i == 20) {
                listeners[i / 10U].agent.connectRcc(url());
                QTRY_COMPARE(relay->clientCount(), i / 10 + 1);
            }
            bool const isKnown = i % 7 != 0;
            QJsonArray const scenes{QJsonObject{{u"id"_s, QString::number(i / 3)}}};
            relay->sendToAll(compact({{u"task"_s, isKnown ? u"onQueryScenes"_s : u"unknown"_s},
                {u"activeId"_s, QString::number(i / 2)}, {u"list"_s, scenes}}));
            if (isKnown) {
                expected.append(u"%1/%2"_s.arg(i / 2).arg(i / 3));
            }
        }
        QTRY_COMPARE(listeners[0].heard, expected);
        QTRY_COMPARE(listeners[1].heard, expected.sliced(8));
        QTRY_COMPARE(listeners[2].heard, expected.sliced(17));
    }

    void resultsDecode()
    {
        // What is decoded and written out again; null: what it was.
        std::pair<char const*, char const*> const rows[] = {
            {R"({"task":"onStreamlabsAuthResult","authorized":true,"token":"t","port":5})", nullptr},
            {R"({"task":"onStreamlabsAuthResult","authorized":1,"token":2,"port":"3"})",
                R"({"task":"onStreamlabsAuthResult","authorized":false,"token":"","port":-1})"},
            {R"({"task":"onQueryStreamingStatus","streamingStatus":null})",
                R"({"task":"onQueryStreamingStatus","streamingStatus":""})"},
            {R"({"task":"onQueryRecordingStatus","recordingStatus":"recording"})", nullptr},
            {R"({"task":"onQueryScenes","activeId":"a","list":[{"id":"a","name":"n","nodes":[]}]})", nullptr},
            {R"({"task":"onQueryScenes","list":[5]})",
                R"({"task":"onQueryScenes","activeId":"","list":[{"id":"","name":"","nodes":[]}]})"},
            {R"({"task":"onQueryScenes","list":{}})", R"({"task":"onQueryScenes","activeId":"","list":[]})"},
            {R"({"task":"onQueryCollections","list":[{"id":"c"}]})",
                R"({"task":"onQueryCollections","list":[{"id":"c","name":"","scenes":[],"sources":[]}]})"},
            {R"({"task":"onQueryAudioList","list":[{"sourceId":"a","name":"n","muted":true}]})", nullptr},
        };
        for (auto const& [encoded, decoded] : rows) {
            QJsonObject const message = json(encoded);
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
            QList const written{SlobsAgent::toAuthState(authorized, text, port),
                SlobsAgent::toStreamingStatus(text), SlobsAgent::toRecordingStatus(text),
                SlobsAgent::toSceneList(scenes, text), SlobsAgent::toCollectionList(collections),
                SlobsAgent::toAudioList(sources)};
            QVERIFY2(written.contains(json(decoded ? decoded : encoded)), encoded);
        }
    }

    void statusesAndLeds()
    {
        for (int i = 0; i < 80; ++i) { // more than are remembered, and each of them again
            QString const status = QString::number(i % 40);
            QString decoded;
            SlobsAgent::fromStreamingStatus(SlobsAgent::toStreamingStatus(status), decoded);
            QCOMPARE(decoded, status);
        }

        QByteArray const led = R"({"task":"remote.command.update.function.key.led.App.Control","sender":"",)"
                               R"("appName":"SLOBS","functionName":)";
        for (auto const& [status, streams, records] :
            {std::tuple(u"live"_s, "true}", "false}"), {u"starting"_s, "true}", "false}"},
                {u"recording"_s, "false}", "true}"}, {u"ending"_s, "false}", "false}"},
                {u"Live"_s, "false}", "false}"}, {u""_s, "false}", "false}"}}) {
            QCOMPARE(SlobsAgent::setStreamingLed(status), json(led + R"("STREAM","status":)" + streams));
            QCOMPARE(SlobsAgent::setRecordingLed(status), json(led + R"("RECORD","status":)" + records));
        }
    }

    // ---- The mixer delegate

    void mixerReceives()
    {
        ZoMixerPluginDelegate mixer;
        QSignalSpy responses(&mixer, &ZoMixerPluginDelegate::response);
        mixer.connectToServer();
        QTRY_COMPARE(responses.size(), 1);
        char const* const broken = R"({"error":"Content was broken"})";
        for (auto const& [text, response] :
            {std::pair(R"({"a":1})", R"({"a":1})"), {"[1]", broken}, {"nonsense", broken}, {"", broken}}) {
            responses.clear();
            relay->sendToAll(QString::fromLatin1(text));
            QTRY_COMPARE(responses.size(), 1);
            QCOMPARE(responses.first().first().toJsonObject(), json(response));
            QCOMPARE(log->take(u"[ConnectToServer]Error"_s), response == broken);
        }

        // Each message is handled once for each time that the socket has connected.
        responses.clear();
        mixer.connectToServer();
        QTRY_COMPARE(responses.size(), 2); // the welcome
        relay->sendToAll(uR"({"b":2})"_s);
        QTRY_COMPARE(responses.size(), 4);
        QCOMPARE(responses.at(3).first().toJsonObject(), json(R"({"b":2})"));
    }
};

QTEST_GUILESS_MAIN(tst_Relay)
#include "tst_Relay.moc"
