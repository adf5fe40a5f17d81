// The clients of the host's relay, and the development host's relay itself.

#include "actions/SlobsAgent.h"
#include "relay/ZoMixerPluginDelegate.h"
#include "tests/RelayTest.h"
#include "tests/TestJson.h"

#include <QEventLoop>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QWebSocket>

#include <array>
#include <functional>
#include <memory>
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

QString const subscribe = QString::fromLatin1(R"({"task":"remote.command.subscribe.subject","subject":"s"})");
QByteArray const task = "slobs.service.task\",\"event\":\"";

} // namespace

class tst_Relay : public RelayTest
{
    Q_OBJECT

private:
    QString url() const { return u"ws://127.0.0.1:%1"_s.arg(relay->port()); }

private slots:
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
            listener.ask(subscribe);
        }
        QCOMPARE(relay->subscriberCount(u"s"_s), 1);

        // Large and small ones, faster than a client takes them.
        listener.texts.clear();
        QList<QJsonObject> sent{{{u"task"_s, u"news"_s}, {u"text"_s, u"ä'\"\\"_s}}};
        for (int const size : {1000000, 10, 1000000, 1000000, 10}) {
            sent.append({{u"task"_s, u"t"_s}, {u"number"_s, sent.size()}, {u"list"_s, QString(size, u'x')}});
        }
        for (auto const& payload : std::as_const(sent)) {
            relay->publish(u"s"_s, payload);
            relay->publish(u"nobody listens"_s, payload);
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
        relay->publish(u"s"_s, sent.first()); // to nobody
        QTRY_COMPARE(relay->subscriberCount(u"s"_s), 0);
    }

    // Who hears of what was sent may drop whom it goes to next; who does not read is dropped.
    void relayLosesClientsWhileItSends()
    {
        std::array<std::unique_ptr<RawClient>, 3> clients;
        for (auto& client : clients) {
            client = std::make_unique<RawClient>(*relay);
            client->ask(subscribe);
        }
        clients[2]->ask(uR"({"task":"remote.command.subscribe.subject","subject":"large"})"_s);
        QJsonObject const payload{{u"task"_s, u"t"_s}, {u"list"_s, QString(1 << 20, u'x')}};
        for (int i = 0; i < 64; ++i) {
            QCOMPARE(relay->clientCount(), 3);
            relay->publish(u"large"_s, payload);
        }
        QVERIFY(log->take(u"warning: relay: client 3 dropped, it does not read"_s));
        QCOMPARE(relay->clientCount(), 2);
        QTRY_COMPARE(clients[2]->socket.state(), QAbstractSocket::UnconnectedState);

        QList<int> receivers;
        connect(relay.get(), &RelayServer::messageSent, relay.get(), [&](int client) {
            receivers.append(client);
            relay->drop();
        });
        relay->publish(u"s"_s, {{u"task"_s, u"t"_s}});
        QCOMPARE(receivers, QList({1}));
        QCOMPARE(relay->clientCount(), 0);
    }

    // ---- What the clients send

    void clientsSend()
    {
        SlobsAgent agent;
        ZoMixerPluginDelegate mixer;
        Source source;
        fromJson(json(R"({"sceneId":"s","sceneItemId":"i","sourceId":"x"})"), source);
        // A name in small letters stands behind "remote.command.".
        struct Row
        {
            std::function<void()> send;
            QByteArray name;
            QByteArray more{};
        };
        Row const rows[] = {
            {[&] { agent.registerToServer(u"i"_s, u"c"_s); }, "register.to.server",
                R"(,"id":"i","category":"c")"},
            {[&] { agent.subscribe(u"s"_s, u"i"_s, u"c"_s); }, "subscribe.subject",
                R"(,"subject":"s","id":"i","category":"c")"},
            {[&] { agent.subscribe(QStringList{u"s"_s, u"t"_s}, u""_s, u""_s); }, "subscribe.subjects",
                R"(,"subjects":["s","t"],"id":"","category":"")"},
            {[&] { agent.showSettingsLogin(); }, "LaunchSettingPage", R"(,"params":{"page":7})"},
            {[&] { agent.queryAuthState(); }, task + "queryAuthState"},
            {[&] { agent.refreshModel(); }, task + "refreshModel"},
            {[&] { agent.queryStreamingStatus(); }, task + "queryStreamingStatus"},
            {[&] { agent.queryRecordingStatus(); }, task + "queryRecordingStatus"},
            {[&] { agent.toggleStreaming(); }, task + "toggleStreamingStatus"},
            {[&] { agent.toggleRecording(); }, task + "toggleRecordingStatus"},
            {[&] { agent.refreshScenes(); }, task + "refreshScenes"},
            {[&] { agent.queryScenes(); }, task + "queryScenes"},
            {[&] { agent.refreshCollections(); }, task + "refreshCollections"},
            {[&] { agent.queryCollections(); }, task + "queryCollections"},
            {[&] { agent.queryAudioList(); }, task + "queryAudioList"},
            {[&] { agent.setActiveScene(u"x"_s); }, task + "setActiveScene", R"(,"activeId":"x")"},
            {[&] { agent.refreshAudioList(u"s"_s); }, task + "refreshAudioList", R"(,"sceneId":"s")"},
            {[&] { agent.setAudioMute(u"x"_s, true); }, task + "setAudioMute",
                R"(,"sourceId":"x","muted":true)"},
            {[&] { agent.setSourceVisible(source, false); }, task + "setSourceVisible",
                R"(,"sceneId":"s","sceneItemId":"i","sourceId":"x","visible":false)"},
            {[&] { mixer.subscribeSubjects({u"a"_s, u"b"_s}); }, "subscribe.subjects",
                R"(,"subjects":["a","b"])"},
            {[&] { mixer.subscribeSubject(u"a"_s); }, "subscribe.subject", R"(,"subject":"a")"},
            {[&] { mixer.subjectSendMessage(u"a"_s); }, "subject.send.message", R"(,"subject":"a")"},
            {[&] { mixer.queryMixerMute(); }, "query.mixer.mute"},
            {[&] { mixer.updateMixerMute(true, {1, 2}); }, "update.mixer.mute",
                R"(,"mixers":[1,2],"muted":true)"},
            {[&] { mixer.queryMixerVolume(); }, "query.mixer.volume"},
            {[&] { mixer.updateMixerVolume(1, 2, 80); }, "update.mixer.volume",
                R"(,"category":2,"deck":1,"volume":80)"},
            {[&] { mixer.queryMixerEffect(); }, "query.mixer.effect"},
            {[&] { mixer.updateMixerEffect(true, 3, 4); }, "update.mixer.effect",
                R"(,"effectType":3,"enable":true,"presetId":4)"},
            {[&] { mixer.queryHeadphoneOutput(); }, "query.headphone.output"},
            {[&] { mixer.updateHeadphoneOutput(true); }, "update.headphone.output", R"(,"on":true)"},
            {[&] { mixer.queryMonitor(); }, "query.monitor"},
            {[&] { mixer.updateMonitor(false); }, "update.monitor", R"(,"on":false)"},
            {[&] { mixer.updatePageSwitch(3); }, "update.pageswitch", R"(,"page":3)"},
            {[&] { mixer.queryHotkeyProfile(); }, "query.hotkey.profile"},
            {[&] { mixer.updateHotkeyProfile(u"p"_s); }, "update.hotkey.profile", R"(,"profileId":"p")"},
            {[&] { mixer.queryMixerProfile(); }, "query.mixer.profile"},
            {[&] { mixer.updateMixerProfile(u"p"_s); }, "update.mixer.profile", R"(,"profileId":"p")"},
            {[&] { mixer.enterGroup(u"g"_s); }, "enter.group", R"(,"id":"g")"},
            {[&] { mixer.updateFunctionKeyLedLevel(u"k"_s, 9); }, "update.function.key.led.level",
                R"(,"level":9,"sender":"k")"},
            {[&] { mixer.updateFunctionKeyLedAppControl(u"k"_s, u"A"_s, u"F"_s, true); },
                "update.function.key.led.App.Control",
                R"(,"appName":"A","functionName":"F","sender":"k",)"
                R"("status":true)"},
            {[&] { mixer.updateFunctionKeyImageColor(u"k"_s); }, "update.function.key.Image.Color",
                R"(,"sender":"k")"},
            {[&] { mixer.turnOffPanel(); }, "turn.off.panel"},
            {[&] { mixer.queryPageNumber(); }, "QueryPageIndicatorNumber"},
        };
        rows[0].send(); // lost: not connected
        QSignalSpy received(relay.get(), &RelayServer::messageReceived);
        QSignalSpy connected(&agent, &SlobsAgent::connected);
        QSignalSpy responses(&mixer, &ZoMixerPluginDelegate::response);
        agent.connectRcc(url());
        mixer.connectToServer();
        QTRY_VERIFY(connected.size() == 1 && responses.size() == 1);
        for (auto const& [send, name, more] : rows) {
            received.clear();
            send();
            QTRY_COMPARE(received.size(), 1);
            QByteArray const prefix = QChar::isLower(uint(name.front())) ? "remote.command." : "";
            QCOMPARE(json(received.first().last().toByteArray()),
                json("{\"task\":\"" + prefix + name + '"' + more + '}'));
        }
        log->clear(); // most of them need a service
    }

    // ---- What they get

    void clientsReceive()
    {
        SlobsAgent agent;
        QList<QJsonObject> messages;
        agent.addRccEventHandler(u"x"_s, [](QJsonObject const&) { QFAIL("replaced"); });
        agent.addRccEventHandler(u"x"_s, [&](QJsonObject const& message) { messages.append(message); });
        ZoMixerPluginDelegate mixer;
        QSignalSpy responses(&mixer, &ZoMixerPluginDelegate::response);
        agent.connectRcc(url());
        mixer.connectToServer();
        QTRY_COMPARE(responses.size(), 1);
        QTRY_COMPARE(log->count(u"debug: [SlobsAgent] \"remote.command.register.to.server\" ???"_s), 1);

        QString const broken = u"critical: [SlobsAgent] Content was broken"_s;
        for (auto const& [text, line] : {std::pair("[1]", broken), {"nonsense", broken}, {"", broken},
                 {R"({"task":5})", u"debug: [SlobsAgent] \"\" ???"_s},
                 {R"({"task":"X"})", u"debug: [SlobsAgent] \"X\" ???"_s}}) {
            responses.clear();
            relay->sendToAll(QString::fromLatin1(text));
            QVERIFY(awaitLine(line));
            QTRY_COMPARE(responses.size(), 1);
            QCOMPARE(responses.first().first().toJsonObject(),
                json(line == broken ? R"({"error":"Content was broken"})" : text));
            QCOMPARE(log->take(u"[ConnectToServer]Error"_s), line == broken);
        }

        // The mixer handles each message once for each time that its socket has connected.
        mixer.connectToServer();
        QTRY_COMPARE(responses.size(), 3); // the welcome
        QString const text = uR"({"task":"x","y":1})"_s;
        relay->sendToAll(text);
        QTRY_COMPARE(responses.size(), 5);
        QTRY_COMPARE(messages, QList({json(text.toUtf8())}));
        QCOMPARE(responses.last().first().toJsonObject(), messages.first());
    }

    void agentComesBack()
    {
        SlobsAgent agent;
        int heard = 0;
        agent.addRccEventHandler(u"x"_s, [&heard](QJsonObject const&) { ++heard; });
        QSignalSpy disconnected(&agent, &SlobsAgent::disconnected);
        for (int round = 1; round <= 3; ++round) {
            agent.connectRcc(url());
            QTRY_COMPARE(relay->clientCount(), 1);
            relay->sendToAll(uR"({"task":"x"})"_s);
            QTRY_COMPARE(heard, round);
            round == 1 ? agent.disconnectRcc() : relay->drop();
            for (int i = 0; round == 3 && i < 3; ++i) {
                agent.queryScenes(); // finds out itself that nobody is there any more
                QVERIFY(i < 2 || disconnected.size() == round);
            }
            QTRY_COMPARE(disconnected.size(), round);
            QTRY_COMPARE(relay->clientCount(), 0);
        }
    }

    void clientsMayGoFromInside()
    {
        std::unique_ptr<SlobsAgent> agent;
        std::function<void()> const ends[] = {[&agent] { agent.reset(); },
            [&agent] {
                QEventLoop loop;
                QTimer::singleShot(0, &loop, [&] {
                    agent.reset();
                    QTimer::singleShot(0, &loop, &QEventLoop::quit); // what is deleted later goes first
                });
                loop.exec();
            }};
        std::function<void(std::function<void()> const&)> const ways[] = {
            [&](auto const& end) { connect(agent.get(), &SlobsAgent::connected, this, end); },
            [&](auto const& end) { connect(agent.get(), &SlobsAgent::disconnected, this, end); },
            [&](auto const& end) {
                agent->addRccEventHandler(u"x"_s, [end](QJsonObject const&) { end(); });
            }};
        for (auto const& end : ends) {
            for (auto const& listen : ways) {
                agent = std::make_unique<SlobsAgent>();
                listen(end);
                agent->connectRcc(url());
                QTRY_VERIFY(!agent || relay->clientCount() == 1);
                relay->sendToAll(uR"({"task":"x"})"_s);
                relay->sendToAll(u"nonsense"_s); // which nobody takes any more
                if (&listen == &ways[1]) {       // what it sends finds out that nobody is there any more
                    QVERIFY(awaitLine(u"Content was broken"_s));
                    relay->drop();
                    for (int i = 0; agent && i < 3; ++i) {
                        agent->queryScenes();
                    }
                }
                QTRY_VERIFY(!agent && relay->clientCount() == 0);
            }
        }

        auto mixer = std::make_unique<ZoMixerPluginDelegate>();
        connect(mixer.get(), &ZoMixerPluginDelegate::response, this, [&mixer] { mixer.reset(); });
        mixer->connectToServer();
        QTRY_VERIFY(!mixer && relay->clientCount() == 0);
    }

    // The fuzzer's inputs prove that what is encoded is decoded the same.
    void oddResultsDecode()
    {
        // What is there afterwards of [true,"before",1,2,2,2]; the last three are lengths.
        std::pair<char const*, char const*> const rows[] = {
            {R"("onStreamlabsAuthResult","authorized":1,"token":2,"port":"3")", R"([false,"",-1,2,2,2])"},
            {R"("onQueryStreamingStatus","streamingStatus":null)", R"([true,"",1,2,2,2])"},
            {R"("onQueryRecordingStatus")", R"([true,"",1,2,2,2])"},
            {R"("onQueryScenes","activeId":"a","list":[5])", R"([true,"a",1,1,2,2])"},
            {R"("onQueryScenes","list":{})", R"([true,"",1,0,2,2])"},
            {R"("onQueryCollections")", R"([true,"before",1,2,0,2])"},
            {R"("onQueryAudioList","list":[{},[],null])", R"([true,"before",1,2,2,3])"},
            {R"("queryAudioList","list":[])", R"([true,"before",1,2,2,2])"},
        };
        for (auto const& [text, expected] : rows) {
            QJsonObject const message = json(QByteArray("{\"task\":") + text + '}');
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
            QCOMPARE(
                QJsonArray({authorized, status, port, scenes.size(), collections.size(), sources.size()}),
                QJsonDocument::fromJson(expected).array());
        }
    }

    void leds()
    {
        for (auto const& [status, streams, records] :
            {std::tuple(u"live"_s, true, false), {u"starting"_s, true, false}, {u"recording"_s, false, true},
                {u"Live"_s, false, false}, {u""_s, false, false}}) {
            QCOMPARE(SlobsAgent::setStreamingLed(status).value("status"_L1), streams);
            QCOMPARE(SlobsAgent::setRecordingLed(status).value("status"_L1), records);
        }
        QCOMPARE(SlobsAgent::setStreamingLed(u"live"_s),
            json(R"({"task":"remote.command.update.function.key.led.App.Control","sender":"",)"
                 R"("appName":"SLOBS","functionName":"STREAM","status":true})"));
    }
};

QTEST_GUILESS_MAIN(tst_Relay)
#include "tst_Relay.moc"
