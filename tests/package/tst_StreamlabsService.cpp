// The service between a relay and the stand-in for Streamlabs Desktop, over real sockets.

#include "devhost/fakes/JsonMatch.h"
#include "devhost/fakes/RelayServer.h"
#include "devhost/fakes/StreamlabsStandIn.h"
#include "streamlabs/StreamlabsService.h"
#include "tests/LoggedTest.h"
#include "tests/TestJson.h"
#include "tests/TestPort.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

//! Time stands still, so that no list is ever held back: on a busy machine any call may take long.
class Service : public StreamlabsService
{
protected:
    std::chrono::nanoseconds now() const override { return 0ns; }
};

class tst_StreamlabsService : public LoggedTest
{
    Q_OBJECT

private:
    //! That it makes once it is let in.
    static constexpr int kRequests = 20;
    //! The key LEDs, and the publications that they follow.
    QMap<QString, QString> const ledTasks{
        {u"STREAM"_s, u"onQueryStreamingStatus"_s}, {u"RECORD"_s, u"onQueryRecordingStatus"_s}};

    void link() { service->connectSlobs(desktop->token(), desktop->port()); }
    void connectAndWait()
    {
        link();
        QTRY_COMPARE(requests.size(), kRequests);
        settle();
        published.clear();
        requests.clear();
        ledChanges.clear();
    }
    //! Waits until the connection is so old that its loss is reported at once.
    static void growUp()
    {
        QElapsedTimer since;
        since.start();
        QTRY_VERIFY(since.hasExpired(1000));
    }
    //! Closes without waiting, as a host does that connects again at once.
    void close()
    {
        service->closeSlobs();
        log->take(u"critical: StreamlabsService::connectSlobs \"\" 0"_s);
        published.clear();
    }
    //! Sends a task as an action does, through the relay.
    void task(QByteArray const& text)
    {
        QJsonObject command = json(text);
        command.insert("task"_L1, u"remote.command.slobs.service.task"_s);
        relay->dispatchEvent(command);
    }
    //! Whether something published since the last call includes \a expected; what came before it is dropped.
    bool takePublished(QByteArray const& expected)
    {
        for (qsizetype i = 0; i < published.size(); ++i) {
            if (jsonIncludes(published.at(i), json(expected))) {
                published.remove(0, i + 1);
                return true;
            }
        }
        return false;
    }
    bool awaitPublished(QByteArray const& expected)
    {
        return QTest::qWaitFor([&] { return takePublished(expected); });
    }
    //! Request \a number as "RESOURCE METHOD ARGUMENTS".
    QString requested(qsizetype number) const
    {
        auto const params = requests.at(number).value("params"_L1).toObject();
        return params.value("resource"_L1).toString() + u' ' +
               requests.at(number).value("method"_L1).toString() + u' ' +
               QString::fromUtf8(
                   QJsonDocument(params.value("args"_L1).toArray()).toJson(QJsonDocument::Compact));
    }
    //! What was published, by task names, one after the other.
    QString publishedTasks() const
    {
        QStringList tasks;
        for (auto const& payload : published) {
            tasks.append(payload.value("task"_L1).toString());
        }
        return tasks.join(u' ');
    }
    //! Everything that the service would tell an action that asks.
    QList<QJsonObject> state()
    {
        published.clear();
        for (auto const* query : {"queryAuthState", "queryStreamingStatus", "queryRecordingStatus",
                 "queryScenes", "queryCollections", "queryAudioList"}) {
            task(R"({"event":")" + QByteArray(query) + R"("})");
        }
        return std::exchange(published, {});
    }
    //! Has the next two requests answered after \a reconnect, before the answer that lets the service in,
    //! whose request has the number \a next.
    void answerLate(int next, std::function<void()> const& reconnect)
    {
        desktop->setHoldingReplies(true);
        task(R"({"event":"refreshScenes"})");
        task(R"({"event":"refreshAudioList"})");
        QTRY_COMPARE(requests.size(), 2);
        reconnect();
        QTRY_COMPARE(requests.size(), 3);
        QCOMPARE(requests.last().value("id"_L1), next);
        desktop->releaseReplies();
        desktop->setHoldingReplies(false);
        QTRY_COMPARE(requests.size(), kRequests + 2);
        settle();
        for (int const late : {kRequests + 1, kRequests + 2}) {
            QVERIFY(log->take(u"critical: no such id %1"_s.arg(late)));
        }
    }
    //! The text of an event of \a resource.
    static QString event(QString const& resource, QJsonValue const& data = QJsonValue::Undefined)
    {
        QJsonObject const result{{u"_type"_s, u"EVENT"_s}, {u"resourceId"_s, resource}, {u"data"_s, data}};
        return compact({{u"id"_s, QJsonValue::Null}, {u"result"_s, result}});
    }
    void sendEvent(QString const& resource, QJsonValue const& data = QJsonValue::Undefined)
    {
        desktop->sendObject(json(event(resource, data).toUtf8()));
    }
    //! Waits until what the stand-in has sent so far has been handled.
    void settle()
    {
        static int marker = 0;
        QString const mark = u"marker %1"_s.arg(++marker);
        sendEvent(mark);
        QTRY_COMPARE(log->count(u"debug: TODO: onEventReceived \"%1\""_s.arg(mark)), 1);
    }

    //! Neither a text, nor a list with records, nor an object that says more than which scene it is about.
    QJsonArray const oddValues{5, true, QJsonValue(), QJsonArray{5, u"x"_s, QJsonValue()}, QJsonObject(),
        QJsonObject{{u"sceneId"_s, u"scene_00000000-0000-4000-8000-00000000000e"_s}}};
    //! The state of a service that has no link.
    QList<QJsonObject> const unlinked{
        json(R"({"task":"onStreamlabsAuthResult","authorized":false,"token":"","port":0})"),
        json(R"({"task":"onQueryStreamingStatus","streamingStatus":""})"),
        json(R"({"task":"onQueryRecordingStatus","recordingStatus":""})"),
        json(R"({"task":"onQueryScenes","activeId":"","list":[]})"),
        json(R"({"task":"onQueryCollections","list":[]})"), json(R"({"task":"onQueryAudioList","list":[]})")};
    std::unique_ptr<RelayServer> relay;
    std::unique_ptr<StreamlabsStandIn> desktop;
    std::unique_ptr<StreamlabsService> service;
    QList<QJsonObject> published;
    QList<QJsonObject> requests;
    QStringList ledChanges;

private slots:
    void init() override
    {
        LoggedTest::init();
        published.clear();
        requests.clear();
        ledChanges.clear();
        relay = std::make_unique<RelayServer>();
        connect(relay.get(), &RelayServer::published, this,
            [this](QString const& subject, QJsonObject const& payload) {
                QCOMPARE(subject, u"remote.subject.streamlabs.response"_s);
                published.append(payload);
            });
        connect(relay.get(), &RelayServer::ledChanged, this,
            [this](QString const& app, QString const& function, bool on) {
                QCOMPARE(app, u"SLOBS"_s);
                QCOMPARE(published.last().value("task"_L1), ledTasks.value(function));
                ledChanges.append(function + (on ? u" on"_s : u" off"_s));
            });
        desktop = std::make_unique<StreamlabsStandIn>();
        desktop->model().setTransitionTime(0ms);
        connect(desktop.get(), &StreamlabsStandIn::requestReceived, this,
            [this](QJsonObject const& request) { requests.append(request); });
        QVERIFY(desktop->start(ownPort()));
        service = std::make_unique<Service>();
        service->init(relay.get());
    }

    void cleanup() override
    {
        service.reset();
        desktop.reset();
        relay.reset();
        LoggedTest::cleanup();
    }

    void asksForEverythingOnceAuthenticated()
    {
        link();
        QTRY_COMPARE(requests.size(), kRequests);
        settle();

        QStringList methods;
        for (qsizetype i = 0; i < requests.size(); ++i) {
            QCOMPARE(requests.at(i).value("id"_L1), i + 1);
            methods.append(requested(i).section(u' ', 0, 1));
        }
        QCOMPARE(methods.join(u", "),
            u"TcpServerService auth, StreamingService streamingStatusChange, "
            "StreamingService recordingStatusChange, ScenesService sceneAdded, ScenesService sceneRemoved, "
            "ScenesService itemAdded, ScenesService itemRemoved, ScenesService itemUpdated, "
            "SourcesService sourceUpdated, SourcesService sourceAdded, SourcesService sourceRemoved, "
            "ScenesService sceneSwitched, SceneCollectionsService collectionSwitched, "
            "SceneCollectionsService collectionAdded, SceneCollectionsService collectionRemoved, "
            "StreamingService getModel, ScenesService activeSceneId, AudioService getSources, "
            "ScenesService getScenes, StreamingService getModel"_s);
        QCOMPARE(publishedTasks(),
            u"onStreamlabsAuthResult onQueryStreamingStatus onQueryRecordingStatus onQueryScenes "
            "onQueryAudioList onQueryScenes onQueryStreamingStatus onQueryRecordingStatus"_s);
        QCOMPARE(published.first(),
            json(R"({"task":"onStreamlabsAuthResult","authorized":true,"token":"stand-in-token","port":)" +
                 QByteArray::number(desktop->port()) + "}"));
        QCOMPARE(
            ledChanges, QStringList({u"STREAM off"_s, u"RECORD off"_s, u"STREAM off"_s, u"RECORD off"_s}));
        QVERIFY(log->take(u"info: connected to Streamlabs server"_s));
        QCOMPARE(published.at(5).value("list"_L1).toArray().size(), desktop->model().scenes().size());
        QCOMPARE(published.at(5).value("activeId"_L1).toString(), desktop->model().activeSceneId());
        QCOMPARE(published.at(4).value("list"_L1).toArray().size(), desktop->model().audioSources().size());
    }

    // Outside of the class, for moc cannot read some of the texts in them.
    void servesTasks();
    void logsTasksItDoesNotKnow();
    // What somebody does in Streamlabs Desktop, and what is published of it, in order.
    void followsEvents()
    {
        connectAndWait();
        StandInModel& model = desktop->model();
        QVERIFY(model.setItemVisible(u"Webcam"_s, false) && model.setItemLocked(u"Webcam"_s, true) &&
                model.renameItem(u"Webcam"_s, u"Kamera"_s) && model.setMuted(u"Mic/Aux"_s, true) &&
                model.renameAudioSource(u"Mic/Aux"_s, u"Mikro"_s) && model.addAudioSource(u"Line In"_s));
        auto const* const scenes = R"({"task":"onQueryScenes"})";
        auto const* const renamed = R"({"task":"onQueryScenes","list":[{"nodes":[{"name":"Kamera"}]},)"
                                    R"({"nodes":[{"name":"Kamera"}]},{"nodes":[{"name":"Kamera"}]}]})";
        for (auto const* publication :
            {R"({"task":"onQueryScenes","list":[{"nodes":[{"name":"Webcam","visible":false,"locked":false}]}]})",
                R"({"task":"onQueryScenes","list":[{"nodes":[{"visible":false,"locked":true}]}]})", renamed,
                R"({"task":"onQueryAudioList","list":[{"name":"Mic/Aux","muted":true}]})", scenes,
                R"({"task":"onQueryAudioList","list":[{"name":"Mikro","muted":true}]})", scenes, scenes,
                R"({"task":"onQueryAudioList","list":[{"name":"Line In"}]})"}) {
            QVERIFY2(awaitPublished(publication), publication);
        }
    }

    void survivesBadInput();

    void takesAnswersOfAWrongTypeForEmpty()
    {
        for (auto const& answer : oddValues) {
            for (auto const& method : {u"StreamingService.getModel"_s, u"ScenesService.activeSceneId"_s,
                     u"ScenesService.getScenes"_s, u"AudioService.getSources"_s}) {
                desktop->scriptResult(method, answer);
            }
            connectAndWait();
            QCOMPARE(state().sliced(1), unlinked.sliced(1));
            close();
        }
    }

    // Each resource, with data that says nothing: what follows from the event itself, and only that.
    void takesEventsOfAWrongTypeForEmpty()
    {
        // Tasks that are published, a part of the first, and the resources.
        std::tuple<QString, QByteArray, QString> const reactions[] = {
            {u"onQueryStreamingStatus"_s, R"({"streamingStatus":""})",
                u"StreamingService.streamingStatusChange"_s},
            {u"onQueryRecordingStatus"_s, R"({"recordingStatus":""})",
                u"StreamingService.recordingStatusChange"_s},
            {u"onQueryScenes"_s, R"({"activeId":""})", u"ScenesService.sceneSwitched"_s},
            {u"onQueryScenes"_s, "{}",
                u"ScenesService.sceneAdded ScenesService.sceneRemoved ScenesService.itemAdded "
                "ScenesService.itemRemoved ScenesService.itemUpdated SourcesService.sourceUpdated"_s},
            {u"onQueryScenes onQueryAudioList"_s, "{}",
                u"SourcesService.sourceAdded SourcesService.sourceRemoved"_s},
            {u"onQueryAudioList onQueryScenes"_s, "{}",
                u"SceneCollectionsService.collectionSwitched SceneCollectionsService.collectionAdded "
                "SceneCollectionsService.collectionRemoved"_s},
        };
        auto const lists = [this] {
            auto const known = state();
            return QJsonArray{known.at(3).value("list"_L1), known.at(5).value("list"_L1)};
        };
        connectAndWait();
        auto const before = lists();
        for (auto const& [tasks, publication, resources] : reactions) {
            for (auto const& resource : resources.split(u' ')) {
                for (auto const& data : oddValues) {
                    sendEvent(resource, data);
                    QTRY_COMPARE(resource + publishedTasks(), resource + tasks);
                    QVERIFY2(takePublished(publication), qPrintable(resource));
                    QCOMPARE(lists(), before);
                }
            }
        }
    }

    void refusedToken()
    {
        service->connectSlobs(u"wrong"_s, desktop->port());
        QVERIFY(awaitLine(u"critical: unrecognized response"_s));
        QCOMPARE(requests.size(), 1);
        QCOMPARE(published, QList<QJsonObject>());

        // A server that answers with a plain "no". The connection stays open, and asking again is possible.
        close();
        desktop->scriptResult(u"TcpServerService.auth"_s, false);
        service->connectSlobs(u"wrong"_s, desktop->port());
        QVERIFY(awaitLine(u"critical: auth failed"_s));
        QCOMPARE(publishedTasks(), u"onStreamlabsAuthResult"_s);
        task(R"({"event":"refreshModel"})");
        QTRY_COMPARE(requests.size(), 3);
        QVERIFY(awaitLine(u"critical: unrecognized response"_s));
    }

    // A subscription that is answered with a name of our own is as good as not answered.
    void takesSubscriptionsToStreamsOnly()
    {
        for (auto const& resource : {u"EVENT"_s, u"slobs.jsonrpc.auth"_s}) {
            desktop->scriptResult(u"StreamingService.streamingStatusChange"_s,
                QJsonObject{{u"_type"_s, u"SUBSCRIPTION"_s}, {u"resourceId"_s, resource}});
            connectAndWait();
            sendEvent(resource, u"live"_s);
            settle();
            QCOMPARE(published, QList<QJsonObject>());
            QCOMPARE(log->count(u"debug: TODO: onEventReceived \"%1\""_s.arg(resource)), 2);
            close();
        }
    }

    // The keys hear that the old link is gone, and are linked again once the new token is accepted. A refused
    // one leaves them unlinked, although there is a connection.
    void changesTheTokenOfALiveLink()
    {
        connectAndWait();
        desktop->model().setStreaming(true);
        QVERIFY(awaitPublished(R"({"streamingStatus":"live"})"));
        for (auto const& [token, isLinked] : {std::pair(u"wrong"_s, false), {desktop->token(), true}}) {
            requests.clear();
            published.clear();
            QJsonValue const lostToken = state().first().value("token"_L1);
            service->connectSlobs(token, desktop->port());
            QCOMPARE(published.value(0).value("authorized"_L1), false);
            QCOMPARE(published.value(0).value("token"_L1), lostToken);
            QCOMPARE(publishedTasks().count(u"onQueryStreamingStatus"_s), isLinked ? 0 : 2);
            QTRY_COMPARE(requests.size(), isLinked ? kRequests : 1);
            settle();
            QCOMPARE(state().first().value("authorized"_L1), isLinked);
            QCOMPARE(log->take(u"critical: unrecognized response"_s), !isLinked);
            QCOMPARE(desktop->clientCount(), 1);
        }
        QCOMPARE(state().at(1).value("streamingStatus"_L1), u"live"_s);
        requests.clear();
        published.clear();
        service->closeSlobs(); // a host that reconnects does the same in two steps
        service->connectSlobs(u"wrong"_s, desktop->port());
        QVERIFY(takePublished(R"({"task":"onStreamlabsAuthResult","authorized":false})"));
        log->take(u"critical: StreamlabsService::connectSlobs \"\" 0"_s);
        QVERIFY(awaitLine(u"critical: unrecognized response"_s));
    }

    void collectionSchemaArrivesTwice()
    {
        connectAndWait();
        // As a promise, which the stand-in makes of it like the real one.
        for (int round = 0; round < 2; ++round) {
            task(R"({"event":"refreshCollections"})");
            QVERIFY(awaitPublished(
                R"({"task":"onQueryCollections","list":[{"name":"Main Show"},{"name":"Podcast 🎙"}]})"));
        }
        desktop->scriptResult(u"SceneCollectionsService.fetchSceneCollectionsSchema"_s,
            json(R"({"l":[{"id":"c","name":"Direct","scenes":[],"sources":[]}]})").value("l"_L1));
        task(R"({"event":"refreshCollections"})");
        QVERIFY(awaitPublished(R"({"task":"onQueryCollections","list":[{"id":"c","name":"Direct"}]})"));

        auto const before = state();
        desktop->scriptResult(u"SceneCollectionsService.fetchSceneCollectionsSchema"_s,
            json(R"({"_type":"SUBSCRIPTION","resourceId":"p","emitter":"PROMISE"})"));
        task(R"({"event":"refreshCollections"})");
        desktop->sendObject(
            json(R"({"id":null,"result":{"_type":"EVENT","resourceId":"p","data":"no","isRejected":true}})"));
        QTRY_COMPARE(requests.size(), 4);
        settle();
        QCOMPARE(published, QList<QJsonObject>());
        log->take(u"warning: [onGetCollectionSchema] rejected"_s);
        QCOMPARE(state(), before);
    }

    void comesBackAfterALoss()
    {
        connectAndWait();
        desktop->model().setStreaming(true);
        desktop->model().setRecording(true);
        QTRY_COMPARE(desktop->model().recordingStatus(), u"recording"_s);
        growUp();
        published.clear();
        ledChanges.clear();

        QElapsedTimer since;
        since.start();
        quint16 const port = desktop->port();
        desktop->stop();
        QTRY_COMPARE(published.size(), 4);
        QVERIFY(since.elapsed() < 900);
        QCOMPARE(published.sliced(1), QList({unlinked.at(1), unlinked.at(1), unlinked.at(2)}));
        QVERIFY(takePublished(R"({"authorized":false,"token":"stand-in-token"})"));
        QCOMPARE(ledChanges, QStringList({u"STREAM off"_s, u"STREAM off"_s, u"RECORD off"_s}));

        QVERIFY(awaitPublished(R"({"authorized":false})")); // a refused attempt, a second later
        QVERIFY(desktop->start(port));
        since.restart();
        QVERIFY(awaitPublished(R"({"task":"onQueryStreamingStatus","streamingStatus":"live"})"));
        QVERIFY2(since.elapsed() < 1500, qPrintable(QString::number(since.elapsed())));
        QVERIFY(awaitPublished(R"({"task":"onQueryRecordingStatus","recordingStatus":"recording"})"));
        QCOMPARE(desktop->authorizedCount(), 1);

        // Events are handled once, although the streams were subscribed to on both connections.
        settle();
        published.clear();
        desktop->model().switchScene(u"配信終了"_s);
        settle();
        QCOMPARE(publishedTasks(), u"onQueryScenes"_s);
        takeAll(u"critical: QAbstractSocket::SocketError"_s);
    }

    // What is sent finds out before the socket has told that the other side is gone.
    void noticesALossWhileItSends()
    {
        connectAndWait();
        auto const before = state();
        growUp();
        desktop->drop();
        for (int i = 0; i < 5; ++i) {
            task(R"({"event":"refreshScenes"})");
        }
        QVERIFY(takePublished(R"({"task":"onStreamlabsAuthResult","authorized":false})"));
        QTRY_COMPARE(requests.size(), kRequests);
        settle();
        QCOMPARE(state(), before);
        QCOMPARE(desktop->clientCount(), 1);
        log->clear(); // how far the requests came is up to the operating system

        // Let in and cut off at once, it does not go on with all that it would have asked for.
        close();
        connect(
            &desktop->transport(), &SockJsServer::messageReceived, this, [this] { desktop->stop(); },
            Qt::SingleShotConnection);
        link();
        QVERIFY(awaitLine(u"critical: QAbstractSocket::SocketError"_s));
        log->take(u"critical: QAbstractSocket::SocketError"_s);
    }

    // The host reconnects: request numbers start again, old answers must not pass for new ones, and nothing
    // is subscribed to.
    void lateAnswersOfTheLastConnection()
    {
        connectAndWait();
        desktop->scriptReply(
            u"StreamingService.streamingStatusChange"_s, [](QJsonObject const&) { return QJsonObject(); });
        answerLate(1, [this] {
            close();
            link();
        });
        QCOMPARE(desktop->clientCount(), 1);
        QVERIFY(publishedTasks().startsWith(u"onStreamlabsAuthResult"_s));
        QVERIFY(takePublished(R"({"task":"onQueryScenes","list":[{"name":"Just Chatting"}]})"));

        published.clear();
        sendEvent(u"StreamingService.streamingStatusChange"_s, u"live"_s);
        settle();
        QVERIFY(log->take(u"debug: TODO: onEventReceived \"StreamingService.streamingStatusChange\""_s));
        QCOMPARE(published, QList<QJsonObject>());
    }

    // Request numbers go on, and what the lost connection was asked nobody waits for any more.
    void lateAnswersAfterALoss()
    {
        connectAndWait();
        auto const before = state();
        // No UTF-8: a WebSocket must not go on after it.
        answerLate(kRequests + 3, [this] { desktop->transport().sendRawBytes("\x81\x04\"\xff\xfe\""); });
        QVERIFY(publishedTasks().startsWith(
            u"onStreamlabsAuthResult onQueryStreamingStatus onQueryStreamingStatus onQueryRecordingStatus "
            "onStreamlabsAuthResult"_s));
        QCOMPARE(state(), before);
        log->take(u"critical: QAbstractSocket::SocketError"_s);
    }

    void closesForGood()
    {
        connectAndWait();
        desktop->model().setStreaming(true);
        QVERIFY(awaitPublished(R"({"task":"onQueryStreamingStatus","streamingStatus":"starting"})"));
        QVERIFY(awaitPublished(R"({"task":"onQueryStreamingStatus","streamingStatus":"live"})"));
        service->closeSlobs();
        QTRY_COMPARE(desktop->clientCount(), 0);
        QVERIFY(awaitLine(u"critical: StreamlabsService::connectSlobs \"\" 0"_s));
        QVERIFY(takePublished(R"({"task":"onStreamlabsAuthResult","authorized":false})"));
        QCOMPARE(ledChanges, u"STREAM on|STREAM on|STREAM off|STREAM off|RECORD off"_s.split(u'|'));
        // Neither does it come back by itself, nor with half an address.
        QSignalSpy clients(desktop.get(), &StreamlabsStandIn::clientCountChanged);
        for (auto const& [token, port] :
            {std::pair(QString(), int(desktop->port())), {u"t"_s, 0}, {u"t"_s, -1}}) {
            service->connectSlobs(token, port);
            QVERIFY(log->take(u"critical: StreamlabsService::connectSlobs \"%1\" %2"_s.arg(token).arg(port)));
        }
        QCOMPARE(state(), unlinked);
        QVERIFY(!clients.wait(1300));

        link();
        QVERIFY(awaitPublished(R"({"task":"onQueryStreamingStatus","streamingStatus":"live"})"));
    }

    void closesDuringAnAttempt()
    {
        QSignalSpy clients(desktop.get(), &StreamlabsStandIn::clientCountChanged);
        link();
        service->closeSlobs();
        QTRY_COMPARE(clients.size(), 2); // it comes and goes
        QCOMPARE(desktop->clientCount(), 0);
        QCOMPARE(requests, QList<QJsonObject>());
        QVERIFY(awaitLine(u"critical: StreamlabsService::connectSlobs \"\" 0"_s));
    }

    void refreshingReconnects()
    {
        desktop->transport().setHandshake(SockJsServer::Handshake::NeverAnswer);
        link();
        desktop->transport().setHandshake(SockJsServer::Handshake::Answer);
        for (auto const* text : {R"({"event":"refreshModel"})", R"({"event":"refreshScenes"})",
                 R"({"event":"refreshCollections"})", R"({"event":"refreshAudioList"})"}) {
            task(text);
        }
        QTRY_COMPARE(requests.size(), kRequests);
        QCOMPARE(desktop->clientCount(), 1);
    }

    void letsGoOfTheRelay()
    {
        service->deinit();
        task(R"({"event":"queryAuthState"})");
        QVERIFY(log->take(u"warning: relay: event of the host ignored, \"unknown command\""_s));
        service->sendRccMessage(u"s"_s, {});
        service->dispatchRccEvent({});
        service->addRccTaskHandler(u"c"_s, {});
        service->deinit();

        service->init(relay.get());
        connectAndWait();
        service.reset(); // without deinit
        task(R"({"event":"queryAuthState"})");
        QVERIFY(log->take(u"warning: relay: event of the host ignored, \"unknown command\""_s));
        QCOMPARE(published, QList<QJsonObject>());
    }
};

// Each task that leads to a request, and what is logged of an answer that nobody waits for.
void tst_StreamlabsService::servesTasks()
{
    std::tuple<char const*, QString, QString> const tasks[] = {
        {R"({"event":"refreshModel"})", u"StreamingService getModel []"_s, {}},
        {R"({"event":"toggleStreamingStatus"})", u"StreamingService toggleStreaming []"_s,
            uR"(UNABLE set "slobs.jsonrpc.stream.toggle" to ")"_s},
        {R"({"event":"toggleRecordingStatus"})", u"StreamingService toggleRecording []"_s,
            uR"([StreamlabsResponse] WTF WTF "slobs.jsonrpc.record.toggle")"_s},
        {R"({"event":"refreshScenes"})", u"ScenesService getScenes []"_s, {}},
        {R"({"event":"setActiveScene","activeId":"scene_00000000-0000-4000-8000-00000000000e"})",
            uR"(ScenesService makeSceneActive ["scene_00000000-0000-4000-8000-00000000000e"])"_s,
            uR"([StreamlabsResponse] WTF WTF "slobs.jsonrpc.scene.set.active")"_s},
        {R"({"event":"setSourceVisible","sceneId":"s","sceneItemId":"i","sourceId":"x","visible":true})",
            uR"(SceneItem["s", "i", "x"] setVisibility [true])"_s, u"unrecognized response"_s},
        {R"({"event":"setSourceVisible","visible":"yes"})",
            uR"(SceneItem["", "", ""] setVisibility [false])"_s, u"unrecognized response"_s},
        {R"({"event":"refreshAudioList"})", u"AudioService getSources []"_s, {}},
        {R"({"event":"refreshAudioList","sceneId":"s"})", uR"(AudioService getSourcesForScene ["s"])"_s,
            u"unrecognized response"_s},
        {R"({"event":"setAudioMute","sourceId":"a","muted":true})", uR"(AudioSource["a"] setMuted [true])"_s,
            u"unrecognized response"_s}};
    connectAndWait();
    for (auto const& [text, request, logged] : tasks) {
        requests.clear();
        task(text);
        QTRY_COMPARE(requests.size(), 1);
        QCOMPARE(requested(0), request);
        settle();
        QVERIFY2(logged.isEmpty() || log->take(u"critical: "_s + logged), text);
    }
}

void tst_StreamlabsService::logsTasksItDoesNotKnow()
{
    for (auto const& [text, line] :
        {std::pair(R"({"sceneId":"s"})", R"(critical: [onServiceTask] Unknown task QJsonObject({"sceneId")"),
            {R"({"event":"makeCoffee"})", R"(critical: [onServiceTask] TODO "makeCoffee")"},
            {R"({"event":5})", R"(critical: [onServiceTask] TODO "")"},
            // a request without a connection
            {R"({"event":"setActiveScene"})",
                R"(warning: makeJsonRpcRequest: ignore "slobs.jsonrpc.scene.set.active" QJsonObject({"j)"}}) {
        task(text);
        QVERIFY2(log->take(QString::fromLatin1(line)), text);
    }
    QCOMPARE(published, QList<QJsonObject>());
}

// What no sane server sends: nothing changes but the log. Frames of other kinds end in the socket.
void tst_StreamlabsService::survivesBadInput()
{
    QString const unasked = u"critical: [StreamlabsResponse] WTF WTF \"\""_s;
    QString const unrecognized = u"critical: unrecognized response"_s;
    QString const noStream = u"debug: TODO: onEventReceived \""_s;
    std::pair<QString, QString> const messages[] = {
        {uR"({"result":true})"_s, unrecognized},
        {uR"({"id":1,"error":{"code":-1}})"_s, unrecognized},
        {uR"({"id":4711,"result":true})"_s, u"critical: no such id 4711 QJsonObject({\"id\":4711"_s},
        {uR"({"id":1,"result":true})"_s, u"critical: no such id 1"_s}, // has been answered
        {uR"({"id":-3,"result":true})"_s, u"critical: no such id -3"_s},
        {uR"({"id":1.5,"result":true})"_s, unasked},
        {uR"({"id":9007199254740993000,"result":5})"_s, unasked},
        {uR"({"id":"1","result":{"scenes":[]}})"_s, unasked},
        {uR"({"id":null,"result":null})"_s, unasked},
        {event(u"Coffee.ready"_s, 1), noStream + u"Coffee.ready"_s},
        {uR"({"id":null,"result":{"_type":"EVENT"}})"_s, noStream},
        // The names of our own do not select a handler.
        {event(u"EVENT"_s), noStream + u"EVENT"_s},
        {event(u"slobs.jsonrpc.model.get"_s, QJsonObject()), noStream + u"slobs.jsonrpc.model.get"_s},
        {uR"({"id":null,"result":{"_type":"slobs.jsonrpc.auth"}})"_s, unasked},
        {uR"({"id":null,"result":{"_type":"SUBSCRIPTION","resourceId":"EVENT"}})"_s, noStream + u"EVENT"_s},
        {uR"({"id":null,"result":{"_type":"SUBSCRIPTION","resourceId":"Scenes.x"}})"_s,
            u"critical: UNABLE set \"\" to \"Scenes.x\""_s},
        {uR"({"id":null,"result":{"_type":"HELPER","resourceId":"Scene"}})"_s, unasked},
    };
    connectAndWait();
    auto const before = state();
    desktop->transport().sendRawFrame(uR"(c[3000,"Go away!"])"_s);
    desktop->transport().sendRawFrame(uR"(a["{)"_s);
    for (auto const& [message, line] : messages) {
        desktop->transport().sendRawFrame(u"a[\"%1\"]"_s.arg(QString(message).replace(u'"', uR"(\")"_s)));
        settle();
        QVERIFY2(log->take(line), qPrintable(message));
        QCOMPARE(published, QList<QJsonObject>());
        QCOMPARE(state(), before);
    }
    desktop->model().setStreaming(true); // and it still works
    QVERIFY(awaitPublished(R"({"task":"onQueryStreamingStatus","streamingStatus":"live"})"));
}

QTEST_GUILESS_MAIN(tst_StreamlabsService)
#include "tst_StreamlabsService.moc"
