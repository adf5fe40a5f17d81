#include "devhost/fakes/StreamlabsStandIn.h"

#include <QJsonDocument>
#include <QRegularExpression>
#include <QTcpSocket>
#include <QTest>
#include <QWebSocket>

#include <algorithm>
#include <memory>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

QJsonValue parse(QString const& json)
{
    return QJsonDocument::fromJson("[" + json.toUtf8() + "]").array().at(0);
}

QString text(QJsonArray const& array)
{
    return QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Compact));
}

// A client of its own make, which decodes the frames by the book.
class Client
{
public:
    QWebSocket socket;
    QStringList frames;
    QList<QJsonObject> messages;

    explicit Client(quint16 port)
    {
        QObject::connect(&socket, &QWebSocket::textMessageReceived, &socket, [this](QString const& frame) {
            frames.append(frame);
            for (QJsonValue const message : parse(frame.mid(1)).toArray()) {
                messages.append(parse(message.toString()).toObject());
            }
        });
        socket.open(QUrl(u"ws://127.0.0.1:%1/api/087/session/websocket"_s.arg(port)));
    }
    bool gets(QString const& frame)
    {
        return QTest::qWaitFor([&] { return frames.contains(frame); });
    }
    bool ends() const
    {
        return QTest::qWaitFor([&] { return socket.state() == QAbstractSocket::UnconnectedState; });
    }
    // Sends "<resource> <method> <args>" and waits for the answer.
    QJsonObject call(QString const& line)
    {
        static QRegularExpression const form(u"^(\\w+(?:\\[.*?\\])?) (\\w+) ?(.*)$"_s);
        QStringList const parts = form.match(line).capturedTexts();
        messages.clear();
        QJsonObject const params{{u"resource"_s, parts[1]}, {u"args"_s, parse(u'[' + parts[3] + u']')}};
        QJsonObject const request{{u"id"_s, 7}, {u"method"_s, parts[2]}, {u"params"_s, params}};
        socket.sendTextMessage(text({QString::fromUtf8(QJsonDocument(request).toJson())}));
        auto const answer = [this] {
            return std::ranges::find(messages, 7, [](auto const& message) { return message[u"id"_s]; });
        };
        return QTest::qWaitFor([&] { return answer() != messages.end(); }) ? *answer() : QJsonObject();
    }
    QJsonValue result(QString const& line) { return call(line).value(u"result"_s); }
    // "<event>:<status or name, and what is special about it>|…"
    QString story() const
    {
        QStringList lines;
        for (QJsonObject const& message : messages) {
            QJsonValue const event = message[u"result"_s];
            if (!message[u"id"_s].isNull() || event[u"_type"_s] != u"EVENT"_s) {
                continue;
            }
            QJsonValue const data = event[u"data"_s];
            QString line = event[u"resourceId"_s].toString().section(u'.', 1) + u':' +
                           data.toString(data[u"name"_s].toString());
            line += data[u"locked"_s].toBool() ? u" locked"_s : QString();
            lines.append(line + (data[u"visible"_s].toBool(true) ? QString() : u" hidden"_s));
        }
        return lines.join(u'|');
    }
};

} // namespace

class tst_StreamlabsStandIn : public QObject
{
    Q_OBJECT

    std::unique_ptr<StreamlabsStandIn> standIn;
    std::unique_ptr<Client> client;

    void connectClient()
    {
        client = std::make_unique<Client>(standIn->port());
        QVERIFY(client->gets(u"o"_s));
    }
    void authorize() { QCOMPARE(client->result(u"TcpServerService auth \"secret\""_s), true); }
    void subscribe()
    {
        authorize();
        QString const all = u"Streaming streamingStatusChange recordingStatusChange,"
                            "Scenes sceneAdded sceneRemoved sceneSwitched itemAdded itemRemoved itemUpdated,"
                            "SceneCollections collectionAdded collectionRemoved collectionSwitched,"
                            "Sources sourceAdded sourceRemoved sourceUpdated"_s;
        for (QString const& service : (all + u',' + all).split(u',')) { // twice makes no second subscription
            QString const name = service.section(u' ', 0, 0) + u"Service"_s;
            for (QString const& stream : service.split(u' ').sliced(1)) {
                QCOMPARE(client->result(name + u' ' + stream),
                    QJsonObject({{u"_type"_s, u"SUBSCRIPTION"_s}, {u"emitter"_s, u"STREAM"_s},
                        {u"resourceId"_s, name + u'.' + stream}}));
            }
        }
    }

private slots:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(u".*"_s));
        standIn = std::make_unique<StreamlabsStandIn>();
        standIn->setToken(u"secret"_s);
        standIn->model().setTransitionTime(0ms);
        standIn->model().setLoadingTime(0ms);
        QVERIFY(standIn->start());
        connectClient();
    }

    void handshake()
    {
        std::pair<QByteArray, QByteArray> const answers[] = {{"/api/999/x-1_y/websocket", "101"},
            {"/api/087/s/websocket?t=1", "101"}, {"/", "404"}, {"/api/08/s/websocket", "404"},
            {"/api/abc/s/websocket", "404"}, {"/api/087//websocket", "404"},
            {"/api/087/a.b/websocket", "404"}, {"/api/087/s/xhr", "404"}, {"/rpc/087/s/websocket", "404"},
            {"/api/087/s/websocket/x", "404"}};
        for (auto const& [path, status] : answers) {
            QTcpSocket socket;
            socket.connectToHost(u"127.0.0.1"_s, standIn->port());
            socket.write("GET " + path +
                         " HTTP/1.1\r\nHost: localhost:" + QByteArray::number(standIn->port()) +
                         "\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
                         "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\nSec-WebSocket-Version: 13\r\n\r\n");
            QTRY_VERIFY2(socket.canReadLine(), path);
            QCOMPARE(path + socket.readLine().mid(9, 3), path + status);
            QTRY_COMPARE(socket.state() == QAbstractSocket::ConnectedState, status == "101");
        }
    }

    void clientFrames()
    {
        QString received;
        connect(&standIn->transport(), &SockJsServer::messageReceived, standIn.get(),
            [&](int, QString const& message) { received += message + u','; });
        // The messages of a frame, followed by "end" unless the frame is broken.
        for (auto const& [frame, messages] :
            {std::pair(R"(["a\t😀"])", "a\t😀,end,"), {R"(["a","b"])", "a,b,end,"}, {R"("a")", "a,end,"},
                {"[]", "end,"}, {"", "end,"}, {"a", ""}, {R"(["a")", ""}, {"[1]", ""}, {R"(["a",null])", ""},
                {R"({"a":"b"})", ""}, {"5", ""}, {R"("a","b")", ""}}) {
            connectClient();
            received.clear();
            client->socket.sendTextMessage(QString::fromUtf8(frame));
            client->socket.sendTextMessage(u"[\"end\"]"_s);
            bool const broken = !*messages;
            QVERIFY2(!broken || client->ends(), frame);
            QTRY_COMPARE(received, QString::fromUtf8(messages));
            QTRY_COMPARE(standIn->clientCount(), broken ? 0 : 1);
        }
    }

    void serverFrames()
    {
        SockJsServer& transport = standIn->transport();
        int const id = transport.clients().constFirst();
        transport.send(id, u"\"\\\n😀é"_s);
        QVERIFY(client->gets(u"a[\"\\\"\\\\\\n😀é\"]"_s));
        transport.sendBacklog(id, {u"1"_s, u"2"_s});
        QVERIFY(client->gets(u"a[\"1\",\"2\"]"_s));
        QVERIFY(!client->frames.contains(u"h"_s));
        transport.setHeartbeatInterval(1ms);
        QVERIFY(client->gets(u"h"_s));
    }

    void endsAndRestarts()
    {
        quint16 const port = standIn->port();
        standIn->drop();
        QVERIFY(client->ends());
        QCOMPARE(client->frames, QStringList{u"o"_s});
        connectClient();
        standIn->stop();
        QVERIFY(standIn->clientCount() == 0 && !standIn->isRunning() && client->ends());
        QCOMPARE(client->frames.constLast(), u"c[3000,\"Go away!\"]"_s);
        QVERIFY(standIn->start(port));
        connectClient();
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"cannot listen"_s));
        QVERIFY(!StreamlabsStandIn().start(port));
    }

    void requests()
    {
        // Id and result, or id and code of the error. The id 7 is that of a client with authorization.
        std::pair<char const*, char const*> const answers[] = {
            {R"({"id":1,"method":"auth","params":{"resource":"TcpServerService","args":["no"]}})",
                "[1,-32603]"},
            {R"({"id":1,"method":"auth","params":{"resource":"TcpServerService"}})", "[1,-32603]"},
            {R"({"id":"s","method":"getModel","params":{"resource":"StreamingService"}})", R"(["s",-32603])"},
            {"{", "[null,-32700]"}, {"[7]", "[null,-32600]"},
            {R"({"method":"getModel","params":{"resource":"StreamingService"}})", "[null,-32600]"},
            {R"({"id":0,"method":"getModel","params":{"resource":"StreamingService"}})", "[0,-32600]"},
            {R"({"id":1,"method":"getModel"})", "[1,-32600]"},
            {R"({"id":1,"method":"getModel","params":{"args":[]}})", "[1,-32600]"},
            {"ScenesService makeSceneActive \"Gameplay\"", "[7,false]"}, {"ScenesService nope", "[7,-32601]"},
            {"Nope getScenes", "[7,-32601]"}, {"StreamingService toggleRecording", "[7,null]"},
            {R"(SceneItem["a", "b", "c"] setVisibility false)", "[7,-32602]"},
            {"SceneItem['a', 'b', 'c'] setVisibility false", "[7,-32601]"},
            {"SceneItem setVisibility false", "[7,-32602]"},
            {R"(AudioSource["Mic/Aux"] setMuted true)", "[7,-32602]"},
            {R"(AudioService getSourcesForScene "x")", "[7,-32602]"}};
        for (auto const& [request, answer] : answers) {
            client->messages.clear();
            if (QByteArray(answer).startsWith("[7")) {
                authorize();
                client->call(QString::fromLatin1(request));
            } else {
                client->socket.sendTextMessage(text({QString::fromLatin1(request)}));
            }
            QTRY_COMPARE(client->messages.size(), 1);
            QJsonObject const message = client->messages.constLast();
            bool const failed = message.contains(u"error"_s);
            QVERIFY2(message.contains(u"id"_s) && message.contains(u"result"_s) != failed, request);
            QJsonValue const result = failed ? message[u"error"_s][u"code"_s] : message[u"result"_s];
            QVERIFY2(text({message[u"id"_s], result}) == QLatin1StringView(answer), request);
        }
    }

    void changes()
    {
        subscribe();
        auto const tells = [this](QString const& story, bool done) {
            QVERIFY(done);
            QTRY_COMPARE(client->story(), story);
            client->call(u"ScenesService getScenes"_s); // what is still under way comes before the answer
            QCOMPARE(client->story(), QString());
        };
        StandInModel& m = standIn->model();
        QString const no = u"no"_s;
        tells({}, !(m.switchScene(no) || m.removeScene(no) || m.addItem(u"配信終了"_s, no, u"Overlays"_s) ||
                      m.removeItem(no) || m.setItemVisible(u"Overlays"_s, false) || m.removeAudioSource(no) ||
                      m.setMuted(u"Фон"_s, true) || m.removeCollection(no) || m.switchCollection(no)));
        // The active scene, with sources of its own.
        tells(u"sceneSwitched:Gameplay 🎮|sceneRemoved:Starting Soon ⏳|sourceRemoved:Фон|"
              "sourceRemoved:Countdown|sourceRemoved:音楽 🎵"_s,
            m.removeScene(m.activeSceneId()));
        tells(u"sceneSwitched:配信終了|sceneAdded:New|sourceUpdated:Old|sceneRemoved:Old"_s,
            m.switchScene(u"配信終了"_s) && m.switchScene(m.activeSceneId()) && m.addScene(u"New"_s) &&
                m.renameScene(u"New"_s, u"Old"_s) && m.removeScene(u"Old"_s));
        tells(u"sourceAdded:New|itemAdded:New|sourceUpdated:Old|itemUpdated:Old hidden|"
              "itemUpdated:Old locked hidden|itemUpdated:Old locked hidden|"
              "itemRemoved:Old locked hidden|sourceRemoved:Old|itemRemoved:Webcam"_s,
            m.addItem(u"Gameplay 🎮"_s, u"New"_s, u"Overlays"_s) && m.renameItem(u"New"_s, u"Old"_s) &&
                m.setItemVisible(u"Old"_s, false) && m.setItemLocked(u"Old"_s, true) &&
                m.moveItem(u"Old"_s, {1, 2}) && m.removeItem(u"Old"_s) && m.removeItem(u"Webcam"_s) &&
                m.removeItem(u"Overlays"_s));
        tells(u"collectionAdded:New|collectionRemoved:Main Show|sceneSwitched:Talk|"
              "collectionSwitched:Podcast 🎙"_s,
            m.addCollection(u"New"_s) && m.removeCollection(m.activeCollectionId()));
    }

    void objects()
    {
        authorize();
        QJsonValue const scene = client->result(u"ScenesService getScenes"_s)[1];
        QCOMPARE(scene[u"resourceId"_s].toString(), u"Scene[\"%1\"]"_s.arg(scene[u"id"_s].toString()));
        QJsonObject const folder = scene[u"nodes"_s][1].toObject();
        QJsonObject const item = scene[u"nodes"_s][2].toObject();
        QCOMPARE(folder.keys().join(u' '), u"_type childrenIds id name resourceId sceneId sceneNodeType"_s);
        QCOMPARE(item.keys().join(u' '),
            u"_type id locked name parentId recordingVisible resourceId sceneId "
            "sceneItemId sceneNodeType sourceId streamVisible transform visible"_s);
        QVERIFY(folder[u"childrenIds"_s][0] == item[u"id"_s] && item[u"parentId"_s] == folder[u"id"_s]);
        QJsonArray const audio = client->result(u"AudioService getSources"_s).toArray();
        QString const heard = u"AudioService getSourcesForScene \"%1\""_s.arg(scene[u"id"_s].toString());
        QCOMPARE(client->result(heard).toArray().size(), audio.size() - 1); // not another scene's music
    }

    void loadsCollection()
    {
        subscribe();
        StandInModel& model = standIn->model();
        model.setLoadingTime(1h);
        QVERIFY(
            model.switchCollection(u"Podcast 🎙"_s) && model.setRecording(true) && !model.addScene(u"x"_s));
        QTRY_COMPARE(model.recordingStatus(), u"recording"_s);
        QCOMPARE(client->result(u"ScenesService getScenes"_s), QJsonValue(QJsonArray()));
        QCOMPARE(client->story(), QString());
        model.setLoadingTime(0ms);
        QVERIFY(model.switchCollection(u"Main Show"_s));
        QTRY_COMPARE(client->story(), u"recordingStatusChange:starting|recordingStatusChange:recording|"
                                      "sceneSwitched:Starting Soon ⏳|collectionSwitched:Main Show"_s);
    }
};

QTEST_GUILESS_MAIN(tst_StreamlabsStandIn)
#include "tst_StreamlabsStandIn.moc"
