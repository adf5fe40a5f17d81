// The five actions as the host meets them: documents, events, views and ends. What they show of Streamlabs
// Desktop is told by the scripts.

#include "actions/BaseSlobsPropertyView.h"
#include "actions/SlobsAudioWidget.h"
#include "actions/SlobsRecordWidget.h"
#include "actions/SlobsSceneWidget.h"
#include "actions/SlobsSettings.h"
#include "actions/SlobsSourceWidget.h"
#include "actions/SlobsStreamWidget.h"
#include "devhost/fakes/JsonMatch.h"
#include "relay/MekZoPluginEventType.h"
#include "tests/RelayTest.h"
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
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>
#include <QWebSocket>

#include <functional>
#include <memory>

#ifdef Q_OS_UNIX
#include <sys/resource.h>
#endif

using namespace Qt::StringLiterals;

namespace {

using Made = std::unique_ptr<BaseSlobsWidget>;

template <typename Action>
constexpr auto kMakeOne = []() -> Made { return std::make_unique<Action>(); };

QMap<QString, Made (*)()> const makers{{u"stream"_s, kMakeOne<SlobsStreamWidget>},
    {u"record"_s, kMakeOne<SlobsRecordWidget>}, {u"scene"_s, kMakeOne<SlobsSceneWidget>},
    {u"source"_s, kMakeOne<SlobsSourceWidget>}, {u"mute"_s, kMakeOne<SlobsAudioWidget>}};

QJsonObject hostEvent(QString const& type)
{
    return {{u"event"_s, QJsonObject{{u"type"_s, type}}}};
}

//! The documents that an action sends to the host.
struct Documents : QSignalSpy
{
    explicit Documents(ZOPlugin& action) : QSignalSpy(&action, &ZOPlugin::eventSent) {}

    QJsonObject lastMessage() const { return last().first().toJsonObject(); }
    QJsonObject lastDocument() const { return lastMessage()["event"_L1]["payload"_L1].toObject(); }
};

} // namespace

class tst_Actions : public RelayTest
{
    Q_OBJECT

private:
    QString const responses = u"remote.subject.streamlabs.response"_s;
    QByteArray const linked = R"({"task":"onStreamlabsAuthResult","authorized":true,"token":"t","port":5})";
    void publish(QByteArray const& text) { relay->publish(responses, json(text)); }

    //! What the actions have sent to it.
    QList<QJsonObject> commands;

    void init() override
    {
        RelayTest::init();
        connect(relay.get(), &RelayServer::commandReceived, relay.get(),
            [this](QJsonObject const& command) { commands.append(command); });
        relay->addCommandHandler(
            u"remote.command.slobs.service.task"_s, [](QWebSocket*, QJsonObject const&) {});
        commands.clear();
    }

private slots:
    // Every document in tests/data/settings: what the host hands over, and what the action then says of
    // itself. What was written is read again as it is, and not written once more.
    void readsDocuments()
    {
        QDir const folder(QStringLiteral(LUMEN_TEST_DATA "/settings"));
        QVERIFY(folder.count() > 20);
        for (auto const& name : folder.entryList({u"*.json"_s})) {
            QFile file(folder.filePath(name));
            QVERIFY(file.open(QIODevice::ReadOnly));
            QJsonObject const row = json(file.readAll());
            QJsonObject data = row.value("data"_L1).toObject();
            bool rewritten = row.value("rewritten"_L1).toBool();
            QJsonObject document;
            for (int round = 0; round < 2; ++round) {
                auto const action = makers[row.value("action"_L1).toString()]();
                Documents documents(*action);
                QVERIFY(action->init(u"key"_s, data));
                QVERIFY2(documents.count() == int(rewritten), qPrintable(name));
                QCOMPARE(log->take(u"warning: convert legacy data to new format"_s), rewritten);
                QJsonObject const written = rewritten ? documents.lastDocument() : document;
                QJsonObject reply;
                action->eventReceived(hostEvent(MekZoPluginEventType::kUpdateSettingsEvent), reply);
                QVERIFY2(written.isEmpty() || documents.lastDocument() == written, qPrintable(name));
                document = documents.lastDocument();
                data = {{u"payload"_s, document}};
                rewritten = false;
            }
            QVERIFY2(jsonIncludes(document, row.value("settings"_L1)), qPrintable(name));
            QCOMPARE(document.value("version"_L1), 2);
            for (auto const& key : row.value("absent"_L1).toArray()) {
                QVERIFY2(!document.contains(key.toString()), qPrintable(name));
            }
        }
        log->clear(); // some documents name images that do not exist
    }

    void editsDocuments()
    {
        SlobsSettings::Document document{{u"a"_s}, {u"1"_s, u"2"_s}, {}, {}};
        for (int const index : {-1, 2}) {
            QVERIFY(!SlobsSettings::replaceAt(document, &SlobsSettings::Document::titles, index, u"x"_s));
        }
        QVERIFY(SlobsSettings::replaceAt(document, &SlobsSettings::Document::titles, 1, u"b"_s));
        QCOMPARE(document.titles, QStringList({u"a"_s, u"b"_s}));
    }

    void answersEvents()
    {
        SlobsStreamWidget action;
        Documents documents(action);
        QVERIFY(action.init(u"key 7"_s));
        auto const answer = [&](QJsonObject const& message) {
            QJsonObject reply;
            reply.insert("result"_L1, action.eventReceived(message, reply));
            return reply;
        };
        QCOMPARE(answer({}), json(R"({"result":-1,"error":403})"));
        QJsonObject const unknown = json(R"({"result":-1,"error":404})");
        QCOMPARE(answer(json(R"({"event":"mek.zo.plugin.event.key.up"})")), unknown);
        QCOMPARE(answer(hostEvent(u"mek.coffee"_s)), unknown);
        auto const* const mask = action.pluginWidget()->findChild<QLabel*>(u"lblMaskClick"_s);
        for (auto const& type : {u"app.triggered"_s, u"key.down"_s, u"key.up"_s, u"update.settings"_s}) {
            QCOMPARE(
                answer(hostEvent(u"mek.zo.plugin.event."_s + type)), json(R"({"result":0,"success":true})"));
            QCOMPARE(mask->isHidden(), type != "key.down"_L1);
        }
        QVERIFY(log->take(u"debug: [APP EVENT][APP Triggered]"_s)); // not linked

        QCOMPARE(documents.count(), 1);
        QVERIFY(jsonIncludes(documents.lastMessage(),
            json(R"({"event":{"type":"mek.zo.plugin.event.set.settings","SDKVersion":"1.0.0",)"
                 R"("AppVersion":"1.1.0","payload":{"version":2}},"target":"key 7"})")));
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
        QCOMPARE(documents.lastDocument().value("titlelist"_L1), json(R"({"l":["Off","On"]})").value("l"_L1));
        QCOMPARE(action.actionIconFilePath(), u":/Streamlabs/images/slobs_stream_off.png"_s);
    }

    // What a press asks for is told by the scripts.
    void asksTheServiceAndThePanel()
    {
        for (auto const& [name, query, hasTarget] :
            {std::tuple(u"stream"_s, u"queryStreamingStatus"_s, false),
                {u"record"_s, u"queryRecordingStatus"_s, false}, {u"scene"_s, u"queryScenes"_s, true},
                {u"source"_s, u"queryScenes"_s, true}, {u"mute"_s, u"queryAudioList"_s, true}}) {
            commands.clear();
            auto const action = makers[name]();
            Documents const documents(*action);
            action->init(u"key"_s);
            QTRY_COMPARE(commands.size(), 3);
            QCOMPARE(commands.at(0).value("task"_L1), u"remote.command.subscribe.subject"_s);
            QCOMPARE(commands.at(1).value("event"_L1), u"queryAuthState"_s);
            QCOMPARE(commands.at(2).value("event"_L1), query);

            action->onPropertyMessageReceived(json(R"({"payload":{"scene_id":"x"}})"));
            QCOMPARE(log->take(u"Widget::onPropertyMessageReceived {\"payload\""_s), hasTarget);
            action->onPropertyMessageReceived(json(R"({"task":"dance"})"));
            QCOMPARE(documents.count(), 0);
        }
    }

    // A relay that acknowledges on request only: asked once, half a second after the connection, and then all
    // goes on.
    void asksTheRelayThatDoesNotSpeak()
    {
        relay->setAcknowledgesAtOnce(false);
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
        QVERIFY(QTest::qWaitFor(
            [&] { return log->take(u"warning: Slobs::onMessage QJsonObject({\"reason\""_s); }));
        relay->sendToAll(uR"({"task":"remote.command.register.to.server","success":true})"_s);
        QVERIFY(!QTest::qWaitFor([&] { return !commands.isEmpty(); }, 700));
    }

    void knowsNothingWithoutTheRelay()
    {
        SlobsStreamWidget action;
        auto* const panel = qobject_cast<BaseSlobsPropertyView*>(action.propertyWidget());
        QPushButton button; // a host may keep the parts of the login pane wherever it likes
        QLabel pane;
        panel->registerLoginPane(&button, &pane);
        QVERIFY(button.isHidden() && pane.isHidden());
        action.init(u"key"_s);
        auto const* const mask = action.pluginWidget()->findChild<QLabel*>(u"lblMaskInvalid"_s);
        QVERIFY(button.isVisible() && pane.isVisible());
        QVERIFY(!mask->isHidden()); // nobody has said yet that the link is there
        QTRY_COMPARE(relay->subscriberCount(responses), 1);
        publish(linked);
        publish(R"({"task":"onQueryStreamingStatus","streamingStatus":"starting"})");
        QTRY_COMPARE(action.actionTitle(), u"Stream"_s);
        QVERIFY(mask->isHidden() && pane.isHidden());
        publish(R"({"task":"onStreamlabsAuthResult","authorized":true,"token":"","port":5})");
        QTRY_VERIFY(!pane.isHidden()); // without a token there is nothing to be linked with
        QSignalSpy pages(relay.get(), &RelayServer::settingsPageRequested);
        QTest::mouseClick(&button, Qt::LeftButton);
        QTRY_COMPARE(pages, QList({QVariantList({7})}));
        publish(linked);
        QTRY_VERIFY(pane.isHidden());
        relay->drop();
        QTRY_VERIFY(!mask->isHidden());
        QVERIFY(!pane.isHidden());
    }

    // An attempt that fails at once fails while the action is being made.
    void startsWithoutAnyConnection()
    {
#ifdef Q_OS_UNIX
        rlimit limit{};
        QCOMPARE(getrlimit(RLIMIT_NOFILE, &limit), 0);
        rlimit const none{0, limit.rlim_max};
        for (auto const maker : makers) {
            maker(); // fonts and the like are read at the first time
            QCOMPARE(setrlimit(RLIMIT_NOFILE, &none), 0);
            auto const action = maker();
            setrlimit(RLIMIT_NOFILE, &limit);
            QVERIFY(action->pluginWidget() && action->propertyWidget());
        }
#endif
    }

    void endsInAnyOrder()
    {
        // a: action, f: face, p: panel, r: relay, F and P: adopted by the host
        for (auto const& order : u"a fpa pfa Fa Pa FPa ra FPra fa pra"_s.split(u' ')) {
            for (auto const maker : makers) {
                auto host = std::make_unique<QWidget>();
                auto action = maker();
                action->init(u"key"_s);
                QPointer<QWidget> const face = action->pluginWidget();
                QPointer<QWidget> const panel = action->propertyWidget();
                QMap<QChar, std::function<void()>> const steps{{u'a', [&] { action.reset(); }},
                    {u'f', [&] { delete face.data(); }}, {u'p', [&] { delete panel.data(); }},
                    {u'F', [&] { face->setParent(host.get()); }},
                    {u'P', [&] { panel->setParent(host.get()); }}, {u'r', [&] { relay->drop(); }}};
                for (QChar const step : order) {
                    steps[step]();
                    QCoreApplication::processEvents();
                }
                // What the host has adopted is its own, the rest is gone.
                QVERIFY2(face.isNull() != order.contains(u'F'), qPrintable(order));
                QVERIFY2(panel.isNull() != order.contains(u'P'), qPrintable(order));
                if (face) {
                    face->grab();
                }
                host.reset();
                QVERIFY(face.isNull() && panel.isNull());
                QCoreApplication::processEvents();
            }
        }
    }

    // A host may delete an action over what it hears from it.
    void endsInsideItsOwnSignal()
    {
        using Cause = std::function<void(BaseSlobsWidget*)>;
        auto const legacy = [](BaseSlobsWidget* action) {
            QVERIFY(action->init(u"key"_s, {{u"payload"_s, json(R"({"title":["a","b"]})")}}));
        };
        auto const event = [](BaseSlobsWidget* action) {
            QJsonObject reply;
            QCOMPARE(action->eventReceived(hostEvent(MekZoPluginEventType::kUpdateSettingsEvent), reply), 0);
            QCOMPARE(reply, json(R"({"success":true})"));
        };
        auto const title = [](BaseSlobsWidget* action) {
            auto* const edit = action->propertyWidget()->findChild<QLineEdit*>();
            edit->setReadOnly(false);
            QTest::keyClicks(edit, u"x"_s);
        };
        auto const target = [](BaseSlobsWidget* action) {
            QRegularExpression const list(u"dropdown(Scene|Audio)List"_s);
            emit action->propertyWidget()->findChildren<QComboBox*>(list).constFirst()->activated(0);
        };
        auto const targetAndLogin = [](BaseSlobsWidget* action) {
            emit qobject_cast<BaseSlobsPropertyView*>(action->propertyWidget())
                ->sendToWidget(json(R"({"task":"setWidgetSettings","event":"openSettingsAuth"})"));
        };
        for (auto const& [names, cause] :
            {std::pair(u"stream record scene source mute"_s, Cause(legacy)), {u"stream"_s, event},
                {u"stream"_s, title}, {u"scene source mute"_s, target}, {u"scene"_s, targetAndLogin}}) {
            for (auto const& name : names.split(u' ')) {
                for (bool const adopted : {false, true}) {
                    QWidget host;
                    QPointer<BaseSlobsWidget> const action = makers[name]().release();
                    QPointer<QWidget> const panel = action->propertyWidget();
                    panel->setParent(adopted ? &host : nullptr);
                    action->init(u"key"_s);
                    connect(action, &ZOPlugin::eventSent, &host, [&] { delete action; });
                    cause(action);
                    QVERIFY(!action);
                    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
                    QCOMPARE(panel.isNull(), !adopted);
                }
            }
        }
        log->clear(); // legacy documents
    }

    // Actions come and go while everything runs: connecting, pressed, in the middle of lists and animations.
    void endsAtAnyMoment()
    {
        QRandomGenerator random(4);
        QWidget host;
        host.show();
        std::array<Made, 6> actions;
        for (int round = 0; round < 400; ++round) {
            Made& action = actions.at(random.bounded(6U));
            switch (action ? random.bounded(6) : 0) {
            case 0: // a new one comes most often
                action = makers.values().at(random.bounded(makers.size()))();
                action->init(u"key"_s);
                action->pluginWidget()->setParent(random.bounded(2) == 0 ? &host : nullptr);
                action->pluginWidget()->show();
                break;
            case 1:
                action->onKeyDownEvent({});
                break;
            case 2:
                action->onAppTriggeredEvent({});
                break;
            case 3:
                delete action->pluginWidget();
                break;
            case 4:
                action.reset();
                break;
            default:
                publish(linked);
                publish(R"({"task":"onQueryStreamingStatus","streamingStatus":"live"})");
                publish(R"({"task":"onQueryScenes","list":[{"id":"s","nodes":[{"sceneItemId":"i"}]}]})");
            }
            for (quint32 i = random.bounded(4U); i > 0; --i) {
                QCoreApplication::processEvents();
            }
            if (round == 200) {
                relay->drop();
            }
        }
        actions = {};
        QCoreApplication::processEvents();
        log->clear();
    }
};

QTEST_MAIN(tst_Actions)
#include "tst_Actions.moc"
