// The five actions as the host meets them: documents, events, views and ends. What they show of Streamlabs
// Desktop is told by the scripts.

#include "actions/BaseSlobsDisplayView.h"
#include "actions/BaseSlobsPropertyView.h"
#include "actions/SlobsAudioWidget.h"
#include "actions/SlobsRecordWidget.h"
#include "actions/SlobsSceneWidget.h"
#include "actions/SlobsSourceWidget.h"
#include "actions/SlobsStreamWidget.h"
#include "devhost/JsonMatch.h"
#include "devhost/RelayServer.h"
#include "devhost/StreamlabsStandIn.h"
#include "relay/MekZoPluginEventType.h"
#include "relay/ZoLumenProxy.h"
#include "streamlabs/StreamlabsService.h"
#include "tests/LogRecorder.h"
#include "tests/TestJson.h"

#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>
#include <QWebSocket>

#include <memory>
#include <optional>

#ifdef Q_OS_UNIX
#include <sys/resource.h>
#endif

using namespace Qt::StringLiterals;

namespace {

using Made = std::unique_ptr<BaseSlobsWidget>;

template <typename Action>
Made makeOne()
{
    return std::make_unique<Action>();
}

QMap<QString, Made (*)()> const makers{{u"stream"_s, makeOne<SlobsStreamWidget>},
    {u"record"_s, makeOne<SlobsRecordWidget>}, {u"scene"_s, makeOne<SlobsSceneWidget>},
    {u"source"_s, makeOne<SlobsSourceWidget>}, {u"mute"_s, makeOne<SlobsAudioWidget>}};
QStringList const allActions = makers.keys();

Made make(QString const& action)
{
    return makers.value(action)();
}

QJsonObject hostEvent(QString const& type)
{
    return {{u"event"_s, QJsonObject{{u"type"_s, type}}}};
}

//! The documents that an action sends to the host.
class Documents
{
public:
    explicit Documents(ZOPlugin& action) : m_spy(&action, &ZOPlugin::eventSent) {}

    qsizetype count() const { return m_spy.size(); }
    QJsonObject lastMessage() const { return m_spy.last().first().toJsonObject(); }
    QJsonObject last() const { return lastMessage()["event"_L1]["payload"_L1].toObject(); }

private:
    QSignalSpy m_spy;
};

} // namespace

class tst_Actions : public QObject
{
    Q_OBJECT

private:
    QString const responses = u"remote.subject.streamlabs.response"_s;
    void publish(QByteArray const& text) { relay->publish(responses, json(text)); }

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

    // Every document in tests/data/settings: what the host hands over, and what the action then says of
    // itself.
    void readsDocuments_data()
    {
        QTest::addColumn<QJsonObject>("row");
        QDir const folder(QStringLiteral(LUMEN_TEST_DATA "/settings"));
        for (auto const& name : folder.entryList({u"*.json"_s})) {
            QFile file(folder.filePath(name));
            QVERIFY(file.open(QIODevice::ReadOnly));
            QTest::newRow(qPrintable(name)) << json(file.readAll());
        }
        QVERIFY(folder.count() > 20);
    }

    void readsDocuments()
    {
        QFETCH(QJsonObject, row);
        auto const action = make(row.value("action"_L1).toString());
        Documents documents(*action);
        QVERIFY(action->init(u"key"_s, row.value("data"_L1).toObject()));
        bool const rewritten = row.value("rewritten"_L1).toBool();
        QCOMPARE(documents.count(), rewritten ? 1 : 0);
        QCOMPARE(log->take(u"warning: convert legacy data to new format"_s), rewritten);

        QJsonObject reply;
        action->eventReceived(hostEvent(MekZoPluginEventType::kUpdateSettingsEvent), reply);
        QJsonObject const document = documents.last();
        QVERIFY2(jsonIncludes(document, row.value("settings"_L1)), qPrintable(compact(document).left(2000)));
        QCOMPARE(document.value("version"_L1), 2);
        for (auto const& key : row.value("absent"_L1).toArray()) {
            QVERIFY2(!document.contains(key.toString()), qPrintable(key.toString()));
        }

        // What was written is read again as it is, and not written once more.
        auto const again = make(row.value("action"_L1).toString());
        Documents secondTime(*again);
        again->init(u"key"_s, QJsonObject{{u"payload"_s, document}});
        QCOMPARE(secondTime.count(), 0);
        again->eventReceived(hostEvent(MekZoPluginEventType::kUpdateSettingsEvent), reply);
        QCOMPARE(secondTime.last(), document);
        log->clear(); // some documents name images that do not exist
    }

    void answersEvents()
    {
        SlobsStreamWidget action;
        Documents documents(action);
        QVERIFY(action.init(u"key 7"_s));
        auto const answer = [&](QJsonObject const& message, int expected) {
            QJsonObject reply;
            int const result = action.eventReceived(message, reply);
            return result == expected ? reply : QJsonObject{{u"result"_s, result}};
        };
        QCOMPARE(answer({}, -1), json(R"({"error":403})"));
        QCOMPARE(answer(json(R"({"event":"mek.zo.plugin.event.key.up"})"), -1), json(R"({"error":404})"));
        QCOMPARE(answer(hostEvent(u"mek.coffee"_s), -1), json(R"({"error":404})"));
        for (auto const* type : {"key.down", "key.up", "app.triggered", "update.settings"}) {
            QCOMPARE(answer(hostEvent(u"mek.zo.plugin.event."_s + QString::fromLatin1(type)), 0),
                json(R"({"success":true})"));
        }
        QVERIFY(log->take(u"debug: [APP EVENT][APP Triggered]"_s)); // not linked
        QJsonObject reply;
        QCOMPARE(static_cast<ZOPlugin&>(action).eventReceived({}, reply, 5), -1);

        QCOMPARE(documents.count(), 1);
        QJsonObject const sent = documents.lastMessage();
        QCOMPARE(sent.value("target"_L1).toString(), u"key 7"_s);
        QVERIFY(jsonIncludes(
            sent, json(R"({"event":{"type":"mek.zo.plugin.event.set.settings","SDKVersion":"1.0.0",)"
                       R"("AppVersion":"1.1.0","payload":{"version":2}}})")));
    }

    void showsThePress()
    {
        SlobsStreamWidget action;
        action.init(u"key"_s);
        auto const* const mask = action.pluginWidget()->findChild<QLabel*>(u"lblMaskClick"_s);
        QVERIFY(mask->isHidden());
        action.onKeyDownEvent({});
        QVERIFY(!mask->isHidden());
        QCOMPARE(action.actionTitle(), u"Stop Stream"_s);
        action.onKeyUpEvent({});
        QVERIFY(mask->isHidden());
    }

    void reportsEdits()
    {
        SlobsStreamWidget action;
        Documents documents(action);
        action.init(u"key"_s);
        auto* const frame = action.propertyWidget()->findChild<QWidget*>(u"base"_s);
        auto* const edit = frame->findChild<QLineEdit*>(u"lineEdtPluginTitle"_s);
        QVERIFY(edit->isReadOnly()); // until the host opens the editors
        QVERIFY(QMetaObject::invokeMethod(frame, "setTitleIsReadOnly", Q_ARG(bool, false)));
        auto const* const title = action.pluginWidget()->findChild<QLabel*>(u"lblTitle"_s);
        // The panel begins with the other state than the one that the face shows.
        for (auto const& [typed, shown] : {std::pair(u"On"_s, u"Stop Stream"_s), {u"Off"_s, u"Off"_s}}) {
            edit->selectAll();
            QTest::keyClicks(edit, typed);
            QCOMPARE(title->text(), shown);
            QCOMPARE(action.actionTitle(), shown);
            QVERIFY(QMetaObject::invokeMethod(frame, "setCurrentId", Q_ARG(int, 0)));
        }
        QCOMPARE(documents.last().value("titlelist"_L1), json(R"({"l":["Off","On"]})").value("l"_L1));
        QCOMPARE(action.actionIconFilePath(), u":/Streamlabs/images/slobs_stream_off.png"_s);
    }

    void waitsForTheRelay()
    {
        QStringList commands;
        connect(relay.get(), &RelayServer::commandReceived, relay.get(), [&](QJsonObject const& command) {
            commands.append(command.value("event"_L1).toString(command.value("task"_L1).toString()));
        });
        relay->addCommandHandler(
            u"remote.command.slobs.service.task"_s, [](QWebSocket*, QJsonObject const&) {});
        QHash<QString, QString> const queries{{u"stream"_s, u"queryStreamingStatus"_s},
            {u"record"_s, u"queryRecordingStatus"_s}, {u"scene"_s, u"queryScenes"_s},
            {u"source"_s, u"queryScenes"_s}, {u"mute"_s, u"queryAudioList"_s}};
        for (auto const& name : allActions) {
            commands.clear();
            auto const action = make(name);
            action->init(u"key"_s);
            QTRY_COMPARE(commands, QStringList({u"remote.command.subscribe.subject"_s, u"queryAuthState"_s,
                                       queries.value(name)}));
        }
    }

    void asksForWhatIsMissing_data()
    {
        QTest::addColumn<QByteArray>("settings");
        QTest::addColumn<QByteArray>("list");
        QTest::addColumn<QByteArray>("asksFor");
        QTest::newRow("source")
            << QByteArray(R"({"version":2,"scene_id":"s","scene_item_id":"gone"})")
            << QByteArray(R"({"task":"onQueryScenes","activeId":"s","list":[]})")
            << QByteArray(R"({"sceneId":"s","sceneItemId":"gone","sourceId":"","visible":true})");
        QTest::newRow("mute") << QByteArray(R"({"version":2,"audio_source_id":"gone"})")
                              << QByteArray(R"({"task":"onQueryAudioList","list":[]})")
                              << QByteArray(R"({"sourceId":"gone","muted":true})");
    }

    // Nobody knows what state it is in: a press asks for the one that a streamer notices.
    void asksForWhatIsMissing()
    {
        QFETCH(QByteArray, settings);
        QFETCH(QByteArray, list);
        QFETCH(QByteArray, asksFor);
        QList<QJsonObject> tasks;
        relay->addCommandHandler(u"remote.command.slobs.service.task"_s,
            [&](QWebSocket*, QJsonObject const& task) { tasks.append(task); });
        auto const action = make(QString::fromLatin1(QTest::currentDataTag()));
        action->init(u"key"_s, {{u"payload"_s, json(settings)}});
        QTRY_COMPARE(tasks.size(), 2); // its queries
        publish(R"({"task":"onStreamlabsAuthResult","authorized":true,"token":"t","port":5})");
        publish(list.constData());
        auto const press = [&] {
            action->onAppTriggeredEvent({});
            return QTest::qWaitFor([&] { return tasks.size() > 2; }, 50);
        };
        QTRY_VERIFY(press());
        QVERIFY2(jsonIncludes(tasks.at(2), json(asksFor)), qPrintable(compact(tasks.at(2))));
        log->clear();
    }

    // A relay that acknowledges on request only: asked once, half a second after the connection, and then all
    // goes on.
    void asksTheRelayThatDoesNotSpeak()
    {
        relay->setAcknowledgesAtOnce(false);
        QList<QJsonObject> commands;
        connect(relay.get(), &RelayServer::commandReceived, relay.get(),
            [&](QJsonObject const& command) { commands.append(command); });
        relay->addCommandHandler(
            u"remote.command.slobs.service.task"_s, [](QWebSocket*, QJsonObject const&) {});
        SlobsStreamWidget action;
        QTRY_COMPARE(relay->clientCount(), 1);
        QElapsedTimer since;
        since.start();
        QTRY_COMPARE(commands.size(), 4);
        QVERIFY2(since.elapsed() >= 450, qPrintable(QString::number(since.elapsed())));
        QCOMPARE(
            commands.first(), json(R"({"task":"remote.command.register.to.server","id":"","category":""})"));

        // An answer without success: a line in the log, and nothing sent.
        commands.clear();
        relay->sendToAll(uR"({"task":"remote.command.register.to.server","reason":"full"})"_s);
        QTRY_COMPARE(log->count(u"warning: Slobs::onMessage QJsonObject({\"reason\":\"full\""_s), 1);
        QVERIFY(log->take(u"warning: Slobs::onMessage"_s));
        relay->sendToAll(uR"({"task":"remote.command.register.to.server","success":true})"_s);
        QVERIFY(!QTest::qWaitFor([&] { return !commands.isEmpty(); }, 700));
    }

    void knowsNothingWithoutTheRelay()
    {
        SlobsStreamWidget action;
        action.init(u"key"_s);
        auto const* const mask = action.pluginWidget()->findChild<QLabel*>(u"lblMaskInvalid"_s);
        auto const* const pane = action.propertyWidget()->findChild<QLabel*>(u"txtWarningMessage"_s);
        QVERIFY(!mask->isHidden()); // nobody has said yet that the link is there
        QTRY_COMPARE(relay->subscriberCount(responses), 1);
        while (log->take(u"warning: relay: message rejected"_s)) { // no service answers
        }
        QTRY_COMPARE(log->count(u"unknown command"_s), 0);
        publish(R"({"task":"onStreamlabsAuthResult","authorized":true,"token":"t","port":5})");
        publish(R"({"task":"onQueryStreamingStatus","streamingStatus":"starting"})");
        QTRY_COMPARE(action.actionTitle(), u"Stream"_s);
        QVERIFY(mask->isHidden() && pane->isHidden());
        publish(R"({"task":"onStreamlabsAuthResult","authorized":true,"token":"","port":5})");
        QTRY_VERIFY(!pane->isHidden()); // without a token there is nothing to be linked with
        publish(R"({"task":"onStreamlabsAuthResult","authorized":true,"token":"t","port":5})");
        QTRY_VERIFY(pane->isHidden());
        relay->drop();
        QTRY_VERIFY(!mask->isHidden());
        QVERIFY(!pane->isHidden());
        log->clear();
    }

    // An attempt that fails at once fails while the action is being made.
    void startsWithoutAnyConnection()
    {
#ifdef Q_OS_UNIX
        rlimit limit{};
        QCOMPARE(getrlimit(RLIMIT_NOFILE, &limit), 0);
        rlimit none = limit;
        none.rlim_cur = 0;
        for (auto const& name : allActions) {
            make(name); // fonts and the like are read at the first time
            QCOMPARE(setrlimit(RLIMIT_NOFILE, &none), 0);
            auto const action = make(name);
            setrlimit(RLIMIT_NOFILE, &limit);
            QVERIFY(action->pluginWidget() && action->propertyWidget());
        }
#endif
    }

    void asksForTheSettingsPage()
    {
        SlobsRecordWidget action;
        action.init(u"key"_s);
        QSignalSpy pages(relay.get(), &RelayServer::settingsPageRequested);
        QTRY_COMPARE(relay->subscriberCount(responses), 1);
        auto* const button = action.propertyWidget()->findChild<QPushButton*>(u"btnGoAuth"_s);
        publish(R"({"task":"onStreamlabsAuthResult"})");
        QTRY_VERIFY(!button->isHidden());
        QTest::mouseClick(button, Qt::LeftButton);
        QTRY_COMPARE(pages.size(), 1);
        QCOMPARE(pages.first().first().toInt(), 7);
        log->clear();
    }

    void logsPanelMessagesWithoutATask()
    {
        for (auto const& [name, kind] :
            {std::pair(u"scene"_s, u"Scene"_s), {u"source"_s, u"Source"_s}, {u"mute"_s, u"Audio"_s}}) {
            auto const action = make(name);
            Documents documents(*action);
            action->init(u"key"_s);
            action->onPropertyMessageReceived(json(R"({"payload":{"scene_id":"x"}})"));
            QVERIFY(log->take(u"warning: Slobs%1Widget::onPropertyMessageReceived"_s.arg(kind)));
            action->onPropertyMessageReceived(json(R"({"task":"dance"})"));
            QCOMPARE(documents.count(), 0);
        }
    }

    void endsInAnyOrder_data()
    {
        QTest::addColumn<QString>(
            "order"); // a: action, f: face, p: panel, r: relay, F and P: adopted by the host first
        for (auto const* order :
            {"a", "fpa", "pfa", "Fa", "Pa", "FPa", "aF", "aFP", "ra", "FPra", "fa", "pra"}) {
            QTest::newRow(order) << QString::fromLatin1(order);
        }
    }

    void endsInAnyOrder()
    {
        QFETCH(QString, order);
        for (auto const& name : allActions) {
            auto host = std::make_unique<QWidget>();
            auto action = make(name);
            action->init(u"key"_s);
            QPointer<QWidget> const face = action->pluginWidget();
            QPointer<QWidget> const panel = action->propertyWidget();
            if (order.contains(u'F')) {
                face->setParent(host.get());
            }
            if (order.contains(u'P')) {
                panel->setParent(host.get());
            }
            for (QChar const step : order) {
                if (step == u'a') {
                    action.reset();
                } else if (step == u'f') {
                    qDeleteAll(QWidgetList{face});
                } else if (step == u'p') {
                    qDeleteAll(QWidgetList{panel});
                } else if (step == u'r') {
                    relay->drop();
                    QCoreApplication::processEvents();
                }
            }
            // What the host has adopted is its own, the rest is gone.
            QCOMPARE(!face.isNull(), order.contains(u'F'));
            QCOMPARE(!panel.isNull(), order.contains(u'P'));
            if (face) {
                face->grab();
            }
            host.reset();
            QVERIFY(face.isNull() && panel.isNull());
            QCoreApplication::processEvents();
        }
        log->clear();
    }

    // Actions come and go while everything runs: connecting, pressed, in the middle of lists and animations.
    void endsAtAnyMoment()
    {
        StreamlabsStandIn desktop;
        desktop.model().setTransitionTime(std::chrono::milliseconds(0));
        QVERIFY(desktop.start());
        auto service = std::make_unique<StreamlabsService>();
        service->init(relay.get());
        service->connectSlobs(desktop.token(), desktop.port());
        QTRY_COMPARE(desktop.authorizedCount(), 1);

        QRandomGenerator random(4);
        QWidget host;
        host.show();
        std::array<std::unique_ptr<BaseSlobsWidget>, 6> actions;
        for (int round = 0; round < 400; ++round) {
            auto& action = actions.at(random.bounded(6U));
            switch (random.bounded(7)) {
            case 0:
            case 1:
                action = make(allActions.at(random.bounded(allActions.size())));
                action->init(u"key"_s);
                if (random.bounded(2) == 0) {
                    action->pluginWidget()->setParent(&host);
                    action->pluginWidget()->show();
                }
                break;
            case 2:
                delete (action ? action->pluginWidget() : nullptr);
                break;
            case 3:
            case 4:
                if (action) {
                    random.bounded(2) == 0 ? action->onKeyDownEvent({}) : action->onAppTriggeredEvent({});
                }
                break;
            case 5:
                desktop.model().switchScene(random.bounded(2) == 0 ? u"配信終了"_s : u"Just Chatting"_s);
                break;
            default:
                action.reset();
                break;
            }
            for (quint32 i = random.bounded(4U); i > 0; --i) {
                QCoreApplication::processEvents();
            }
            if (round == 200) {
                relay->drop();
            }
            if (round == 300) {
                service.reset();
            }
        }
        actions = {};
        QCoreApplication::processEvents();
        log->clear();
    }
};

QTEST_MAIN(tst_Actions)
#include "tst_Actions.moc"
