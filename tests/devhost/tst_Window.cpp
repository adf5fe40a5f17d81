// The development host's window with the loaded library, used as a person uses it.

#include "devhost/host/DevHost.h"
#include "devhost/window/ActionList.h"
#include "devhost/window/ConsoleView.h"
#include "devhost/window/DarkTheme.h"
#include "devhost/window/EntryModel.h"
#include "devhost/window/KeyLed.h"
#include "devhost/window/KeyView.h"
#include "devhost/window/MainWindow.h"
#include "devhost/window/TrafficModel.h"
#include "relay/ZoRemoteCommands.h"
#include "tests/LogRecorder.h"

#include <QAbstractItemModelTester>
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>
#include <QTreeView>
#include <QWebSocket>

#include <functional>
#include <optional>

using namespace Qt::StringLiterals;

class tst_Window : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void placesAndRemoves_data();
    void placesAndRemoves();
    void pressesAKey_data();
    void pressesAKey();
    void movesAmongKeys();
    void undoes();
    void editsScenesAndMixer();
    void operatesDesktop();
    void listChangesWhatDiffers();
    void showsTraffic();
    void forgetsOldTraffic();
    void linksInTheSettings();
    void leavesARealDesktopAlone();
    void isForEverybody();
    void keepsHighContrast();
    void largeWindowsHaveLargerKeys();

private:
    using Step = std::function<void(tst_Window&)>;

    void open(DevHost::Options options = {});
    void close();

    template <typename Widget = QWidget>
    Widget& find(char const* name) const
    {
        auto* const widget = window->findChild<Widget*>(QString::fromLatin1(name));
        if (!widget) {
            qFatal("the window has no %s", name);
        }
        return *widget;
    }
    void trigger(char const* action) const
    {
        QTRY_VERIFY(find<QAction>(action).isEnabled());
        find<QAction>(action).trigger();
    }
    //! As a person does: not before it lets itself be pressed.
    void click(char const* button) const
    {
        QTRY_VERIFY(find(button).isEnabled());
        QTest::mouseClick(&find(button), Qt::LeftButton);
    }
    void clickRow(char const* list, int row, bool box = false) const;
    void key(char const* widget, Qt::Key key) const { QTest::keyClick(&find(widget), key); }
    //! Types into the editor that is open in a list.
    void name(char const* list, QString const& text) const;
    void chooseInMenu(QString const& text) const;
    KeyView& keyView(int index) const { return find<KeyView>(qPrintable(u"key%1"_s.arg(index))); }
    QString listed(char const* list) const;
    StandInModel& desktop() const { return host->standIn().model(); }
    ConsoleKey::Face face(int index) const { return host->console().key(index)->face(); }

    std::optional<LogRecorder> log;
    std::optional<QTemporaryDir> folder;
    std::unique_ptr<DevHost> host;
    std::unique_ptr<MainWindow> window;
};

// ---- The window and its user

void tst_Window::init()
{
    log.emplace();
    folder.emplace();
    open();
}

void tst_Window::cleanup()
{
    close();
    // The library's own "critical" lines are common, and the offscreen platform has its limits.
    QStringList warnings = log->problems().filter(u"warning: "_s);
    warnings.removeIf([](QString const& line) { return line.contains(u"This plugin does not support"_s); });
    QCOMPARE(warnings.join(u'\n'), QString());
    log.reset();
}

void tst_Window::open(DevHost::Options options)
{
    options.pluginFile = QStringLiteral(LUMEN_TEST_LIBRARY);
    options.configDir = folder->path();
    host = std::make_unique<DevHost>();
    host->standIn().model().setTransitionTime(std::chrono::milliseconds(0));
    host->standIn().model().setLoadingTime(std::chrono::milliseconds(0));
    QVERIFY2(host->start(options), qPrintable(host->errorString()));
    window = std::make_unique<MainWindow>(*host, folder->filePath(u"window.ini"_s));
    window->show();
    window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
    if (host->usesStandIn()) {
        QTRY_COMPARE(find<QLabel>("lblLink").text(), u"● Linked to Streamlabs Desktop"_s);
        QTRY_COMPARE(host->standIn().authorizedCount(), 1);
    }
}

void tst_Window::close()
{
    window->close();
    QVERIFY(host->stop());
    window.reset();
    host.reset();
}

void tst_Window::clickRow(char const* list, int row, bool box) const
{
    auto& view = find<QAbstractItemView>(list);
    QRect const rect = view.visualRect(view.model()->index(row, 0));
    constexpr int kBoxMiddle = 10;
    QTest::mouseClick(view.viewport(), Qt::LeftButton, {},
        box ? QPoint(rect.left() + kBoxMiddle, rect.center().y()) : rect.center());
}

void tst_Window::name(char const* list, QString const& text) const
{
    auto* const editor = find(list).findChild<QLineEdit*>();
    QVERIFY(editor && editor->hasFocus());
    editor->selectAll();
    QTest::keyClicks(editor, text);
    QTest::keyClick(editor, Qt::Key_Return);
}

void tst_Window::chooseInMenu(QString const& text) const
{
    auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    QVERIFY(menu);
    for (auto* const action : menu->actions()) {
        if (action->text() == text) {
            // Not with the mouse: where it was last, a menu takes its click as one that was to open the menu.
            menu->setActiveAction(action);
            QTest::keyClick(menu, Qt::Key_Return);
        }
    }
}

QString tst_Window::listed(char const* list) const
{
    auto const& model = *find<QAbstractItemView>(list).model();
    QStringList rows;
    for (int row = 0; row < model.rowCount(); ++row) {
        auto const index = model.index(row, 0);
        rows.append(index.data(Qt::EditRole).toString() +
                    (index.data(Qt::CheckStateRole).toInt() == Qt::Checked ? u"+"_s : QString()));
    }
    return rows.join(u'|');
}

// ---- Keys

void tst_Window::placesAndRemoves_data()
{
    QTest::addColumn<Step>("place");
    QTest::addColumn<Step>("remove");
    auto const streamIn = [](ActionList& list) {
        return list.findItems(u"Stream"_s, Qt::MatchExactly).first();
    };
    auto const choose = [streamIn](tst_Window& t) {
        auto& list = t.find<ActionList>("listActions");
        list.setCurrentItem(streamIn(list));
    };

    QTest::newRow("double-click, Delete") << Step([streamIn](tst_Window& t) {
        auto& list = t.find<ActionList>("listActions");
        QPoint const at = list.visualItemRect(streamIn(list)).center();
        QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, at);
        QTest::mouseDClick(list.viewport(), Qt::LeftButton, {}, at);
    }) << Step([](tst_Window& t) { t.key("key0", Qt::Key_Delete); });
    QTest::newRow("Enter, context menu") << Step([choose](tst_Window& t) {
        choose(t);
        t.key("listActions", Qt::Key_Return);
    }) << Step([](tst_Window& t) {
        QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(), QPoint());
        QApplication::sendEvent(&t.keyView(0), &event);
        t.chooseInMenu(u"Remove"_s);
    });
    QTest::newRow("menus") << Step([choose](tst_Window& t) {
        choose(t);
        t.trigger("actPlace");
    }) << Step([](tst_Window& t) { t.trigger("actRemove"); });
    QTest::newRow("a drop, another on it") << Step([](tst_Window& t) {
        emit t.keyView(0).actionDropped(u"com.zentrix.slobs.webapp.mute"_s);
        emit t.keyView(0).actionDropped(u"com.zentrix.slobs.webapp.stream"_s);
    }) << Step([](tst_Window& t) { t.host->console().remove(0); });
}

void tst_Window::placesAndRemoves()
{
    QFETCH(Step, place);
    QFETCH(Step, remove);
    auto const& hint = find<QLabel>("lblHint");
    QVERIFY(hint.isVisible());
    QVERIFY(!find<QAction>("actRemove").isEnabled());

    place(*this);
    QCOMPARE(host->console().indices(), QList<int>({0}));
    QCOMPARE(host->console().key(0)->actionId(), u"com.zentrix.slobs.webapp.stream"_s);
    QWidget* const face = host->console().key(0)->faceWidget();
    QVERIFY(keyView(0).isAncestorOf(face));
    QVERIFY(face->isVisible());
    QCOMPARE(face->size(), ConsoleKey::kFaceSize);
    QVERIFY(host->console().key(0)->panelWidget()->isVisible());
    QVERIFY(!hint.isVisible());
    QTRY_COMPARE(keyView(0).accessibleName(), u"Key 0, Stream: Stop Stream"_s);

    // The editors of a key that was placed directly are open.
    auto& title = find<QLineEdit>("lineEdtPluginTitle");
    QVERIFY(!title.isReadOnly());
    QTest::mouseClick(&title, Qt::LeftButton);
    title.selectAll();
    QTest::keyClicks(&title, u"On air"_s);
    QCOMPARE(host->console().key(0)->settings().value("titlelist"_L1).toArray().last(), u"On air"_s);

    remove(*this);
    QTRY_VERIFY(host->console().indices().isEmpty());
    QVERIFY(hint.isVisible());
    QCOMPARE(keyView(0).accessibleName(), u"Key 0, free"_s);
}

void tst_Window::pressesAKey_data()
{
    QTest::addColumn<Step>("press");
    QTest::addColumn<bool>("triggers");
    auto const row = [](char const* name, bool triggers, Step const& press) {
        QTest::newRow(name) << press << triggers;
    };
    row("mouse", true, [](tst_Window& t) { t.click("key0"); });
    row("space", true, [](tst_Window& t) { t.key("key0", Qt::Key_Space); });
    row("enter", true, [](tst_Window& t) { t.key("key0", Qt::Key_Enter); });
    row("menu", true, [](tst_Window& t) { t.trigger("actPress"); });
    row("mouse while one edits", false, [](tst_Window& t) {
        t.trigger("actLive");
        t.click("key0");
        t.key("key0", Qt::Key_Space);
    });
    row("right button", false, [](tst_Window& t) { QTest::mouseClick(&t.keyView(0), Qt::RightButton); });
    row("held key repeats", true, [](tst_Window& t) {
        for (bool const repeats : {false, true, true}) {
            QKeyEvent down(QEvent::KeyPress, Qt::Key_Space, {}, {}, repeats);
            QApplication::sendEvent(&t.keyView(0), &down);
        }
        QTest::keyRelease(&t.keyView(0), Qt::Key_Space);
    });
    row("taken back with Escape", false, [](tst_Window& t) {
        QTest::mousePress(&t.keyView(0), Qt::LeftButton);
        t.key("key0", Qt::Key_Escape);
        QTest::mouseRelease(&t.keyView(0), Qt::LeftButton);
    });
    row("focus leaves", false, [](tst_Window& t) {
        QTest::keyPress(&t.keyView(0), Qt::Key_Space);
        t.trigger("actGoActions");
        QTest::keyRelease(&t.keyView(0), Qt::Key_Space);
    });
    row("page turns", false, [](tst_Window& t) {
        QTest::mousePress(&t.keyView(0), Qt::LeftButton);
        t.trigger("actNextPage");
        t.trigger("actPreviousPage");
        QTest::mouseRelease(&t.keyView(0), Qt::LeftButton);
    });
    row("action goes", false, [](tst_Window& t) {
        QTest::mousePress(&t.keyView(0), Qt::LeftButton);
        t.trigger("actRemove");
        QTest::mouseRelease(&t.keyView(0), Qt::LeftButton);
        t.host->console().place(0, t.host->console().actionIdOf(u"stream"_s));
    });
}

void tst_Window::pressesAKey()
{
    QFETCH(Step, press);
    QFETCH(bool, triggers);
    QVERIFY(host->console().place(0, host->console().actionIdOf(u"stream"_s)));
    trigger("actGoConsole");
    trigger("actLive");
    QTRY_VERIFY(!face(0).invalid);
    QSignalSpy statuses(&desktop(), &StandInModel::apiEvent);

    press(*this);
    QVERIFY(!keyView(0).isHeld());
    QCOMPARE(find<ConsoleView>("console").current(), 0);
    if (triggers) {
        QTRY_COMPARE(desktop().streamingStatus(), u"live"_s);
        QTRY_COMPARE(find<QLabel>("lblLive").text(), u"live"_s);
        QTRY_VERIFY(find<KeyLed>("ledStream").isLit());
        QVERIFY(!find<KeyLed>("ledRecord").isLit());
        QTRY_COMPARE(face(0).title, u"Stream"_s);
        QCOMPARE(statuses.count(), 2); // starting, live: triggered once
    } else {
        // What the press has sent would arrive before the answer to this.
        host->sendTask(u"toggleRecordingStatus"_s, {});
        QTRY_COMPARE(desktop().recordingStatus(), u"recording"_s);
        QCOMPARE(desktop().streamingStatus(), u"offline"_s);
    }
}

void tst_Window::movesAmongKeys()
{
    auto& console = find<ConsoleView>("console");
    for (auto const& action : {u"mute"_s, u"record"_s, u"scene"_s, u"source"_s, u"stream"_s}) {
        QVERIFY(console.place(host->console().actionIdOf(action)));
    }
    trigger("actGoKey");
    QVERIFY(host->console().key(4)->panelWidget()->isAncestorOf(window->focusWidget()));
    trigger("actGoConsole");

    QCOMPARE(console.current(), 4);
    for (auto const& [pressed, expected] : {std::pair(Qt::Key_Right, 4), {Qt::Key_Down, 9}, {Qt::Key_Left, 8},
             {Qt::Key_Up, 3}, {Qt::Key_Up, 3}, {Qt::Key_Left, 2}}) {
        QTest::keyClick(window->focusWidget(), pressed);
        QCOMPARE(console.current(), expected);
        QCOMPARE(window->focusWidget(), &keyView(expected));
    }
    trigger("actNextPage");
    QCOMPARE(console.current(), 17);
    QVERIFY(!host->console().key(2)->faceWidget()->isVisible());
    QVERIFY(!find<QAction>("actPress").isEnabled());
    trigger("actPreviousPage");

    // Two keys swap their places, and a key moves to a free one.
    auto const actionOn = [&](int index) {
        auto const* const key = host->console().key(index);
        return key ? key->actionId().section(u'.', -1) : u"-"_s;
    };
    emit keyView(4).keyDropped(0);
    QCOMPARE(actionOn(0), u"stream"_s);
    QCOMPARE(actionOn(4), u"mute"_s);
    emit keyView(12).keyDropped(0);
    QCOMPARE(actionOn(0), u"-"_s);
    QCOMPARE(actionOn(12), u"stream"_s);
    QCOMPARE(console.current(), 12);

    // A smaller console has more pages; the current key stays the same.
    auto& size = find<QComboBox>("boxSize");
    size.setCurrentIndex(0);
    emit size.activated(0);
    QCOMPARE(console.current(), 12);
    QVERIFY(host->console().key(12)->faceWidget()->isVisible());
    QVERIFY(!host->console().key(4)->faceWidget()->isVisible());
    QCOMPARE(find<QLabel>("lblPage").text(), u"Page 3 of 43"_s);

    // All of it is kept for the next time.
    auto const taken = host->console().indices();
    close();
    open();
    QCOMPARE(find<ConsoleView>("console").current(), 12);
    QCOMPARE(find<QComboBox>("boxSize").currentText(), u"3 x 2 keys"_s);
    QCOMPARE(host->console().indices(), taken);
}

// Each step is taken back and done again, and then all of them from the last to the first.
void tst_Window::undoes()
{
    auto const state = [this] {
        QVariantMap keys;
        for (int const index : host->console().indices()) {
            auto const* const key = host->console().key(index);
            keys[QString::number(index)] = QVariantList{key->actionId(), key->settings(), key->face().title};
        }
        return keys;
    };
    auto& undo = find<QAction>("actUndo");
    QVERIFY(!undo.isEnabled());
    std::pair<QString, std::function<void()>> const steps[] = {
        {u"placing mute"_s,
            [&] {
                host->console().place(3, u"com.zentrix.slobs.webapp.mute"_s);
                find<ConsoleView>("console").setCurrent(3);
            }},
        {u"the title of key 3"_s,
            [&] {
                auto& title = find<QLineEdit>("lineEdtPluginTitle");
                title.selectAll();
                for (QChar const letter : u"Mic!"_s) {
                    QTest::keyClick(&title, letter.toLatin1());
                    QTest::qWait(0); // as slowly as a person
                }
            }},
        {u"the picture of key 3"_s,
            [&] {
                QJsonObject settings = host->console().key(3)->settings();
                settings["iconlist"_L1] = QJsonArray{u":/a.png"_s, u":/b.png"_s};
                host->console().key(3)->setSettings(settings);
            }},
        {u"placing actions"_s, [&] { trigger("actPlaceAll"); }},
        {u"moving a key"_s, [&] { emit keyView(3).keyDropped(4); }},
        {u"removing mute"_s, [&] { host->console().remove(3); }},
    };
    QList<QVariantMap> before;
    for (auto const& [text, act] : steps) {
        before.append(state());
        act();
        QTRY_COMPARE(undo.text(), u"&Undo "_s + text);
        auto const after = state();
        trigger("actUndo");
        QCOMPARE(state(), before.last());
        trigger("actRedo");
        QCOMPARE(state(), after);
    }
    while (!before.isEmpty()) {
        trigger("actUndo");
        QCOMPARE(state(), before.takeLast());
    }
    QVERIFY(!undo.isEnabled());
    log->clear(); // of pictures that do not exist
}

// ---- Streamlabs Desktop

void tst_Window::editsScenesAndMixer()
{
    QSignalSpy resets(find<QAbstractItemView>("listScenes").model(), &QAbstractItemModel::modelReset);
    trigger("actPlaceAll"); // whose keys have shortcuts as well
    clickRow("listScenes", 1);
    key("listScenes", Qt::Key_Return);
    QTRY_COMPARE(desktop().activeSceneId(), desktop().sceneId(u"Gameplay 🎮"_s));
    clickRow("listScenes", 0);
    key("listScenes", Qt::Key_F2);
    name("listScenes", u"Soon"_s);
    QTRY_COMPARE(listed("listScenes"), u"Soon|Gameplay 🎮|Just Chatting|Just Chatting|配信終了"_s);
    clickRow("listScenes", 4);
    key("listScenes", Qt::Key_Delete);
    QTRY_COMPARE(listed("listScenes"), u"Soon|Gameplay 🎮|Just Chatting|Just Chatting"_s);

    clickRow("listScenes", 0);
    QTRY_COMPARE(listed("listItems"), u"Фон+|Countdown+|音楽 🎵+"_s);
    clickRow("listItems", 1, true);
    QTRY_COMPARE(listed("listItems"), u"Фон+|Countdown|音楽 🎵+"_s);
    click("btn-add-item");
    name("listItems", u"Clock"_s);
    QTRY_COMPARE(listed("listItems"), u"Фон+|Countdown|音楽 🎵+|Clock+"_s);
    clickRow("listItems", 0);
    click("btn-remove-item");
    trigger("hide"); // which is the next one now
    QTRY_COMPARE(listed("listItems"), u"Countdown|音楽 🎵+|Clock+"_s);

    trigger("add-scene");
    name("listScenes", u"Finale"_s);
    QTRY_COMPARE(listed("listScenes"), u"Soon|Gameplay 🎮|Just Chatting|Just Chatting|Finale"_s);
    QCOMPARE(listed("listItems"), QString());
    clickRow("listAudio", 1);
    key("listAudio", Qt::Key_Space);
    QTRY_VERIFY(listed("listAudio").contains("|Mic/Aux+|"_L1));

    // What others do is shown as well, and the choice follows the active scene.
    desktop().switchScene(u"Soon"_s);
    QTRY_COMPARE(find<QLabel>("lblItems").text(), u"Shown in Soon"_s);
    desktop().setItemVisible(u"Clock"_s, false);
    QTRY_COMPARE(listed("listItems"), u"Countdown|音楽 🎵+|Clock"_s);
    desktop().removeScene(u"Just Chatting"_s);
    QTRY_COMPARE(listed("listScenes"), u"Soon|Gameplay 🎮|Just Chatting|Finale"_s);
    QCOMPARE(resets.count(), 0);
}

void tst_Window::operatesDesktop()
{
    click("btnLive");
    QTRY_COMPARE(find<QToolButton>("btnLive").text(), u"End the stream"_s);
    QVERIFY(!find<QAction>("stream").isCheckable()); // a tick would say that it is done
    trigger("record");
    QTRY_COMPARE(find<QLabel>("lblRecord").text(), u"recording"_s);
    auto& collections = find<QComboBox>("boxCollection");
    collections.setCurrentIndex(1);
    emit collections.activated(1);
    QTRY_COMPARE(listed("listScenes"), u"Talk|Break"_s);
    click("btnAddCollection");
    QTRY_COMPARE(collections.count(), 3);

    trigger("generate");
    auto& dialog = find<QDialog>("numbers");
    dialog.activateWindow();
    QTRY_VERIFY(dialog.isAncestorOf(QApplication::focusWidget()));
    QTest::keyClicks(QApplication::focusWidget(), u"7"_s); // over the number of scenes
    QTest::keyClick(&dialog, Qt::Key_Return);
    QTRY_COMPARE(find<QAbstractItemView>("listScenes").model()->rowCount(), 7);

    QSignalSpy back(&host->standIn().transport(), &SockJsServer::clientConnected);
    click("btnDropLink");
    QTRY_COMPARE(back.count(), 1);
    QTRY_COMPARE(host->standIn().authorizedCount(), 1);
    trigger("token");
    QTest::keyClicks(window->focusWidget(), u"secret"_s);
    QTest::keyClick(window->focusWidget(), Qt::Key_Return);
    QTRY_COMPARE(host->standIn().token(), u"secret"_s);
    click("btnRun");
    QTRY_COMPARE(find<QToolButton>("btnRun").text(), u"Start"_s);
    QCOMPARE(find<QLabel>("lblLive").text(), QString());
    QVERIFY(!find("btnLive").isEnabled());
    QTRY_VERIFY(find<QLabel>("lblLink").text().contains("Not linked"_L1));
}

void tst_Window::listChangesWhatDiffers()
{
    struct
    {
        QString before;
        QString after;    // one letter an entry; a capital one is on
        QString expected; // rows removed, inserted, changed
    } const cases[] = {
        {u""_s, u"abc"_s, u"0 3 0"_s},
        {u"abc"_s, u""_s, u"3 0 0"_s},
        {u"abc"_s, u"aBc"_s, u"0 0 1"_s},
        {u"abcd"_s, u"aBcD"_s, u"0 0 3"_s}, // from the first to the last
        {u"abc"_s, u"axbc"_s, u"0 1 0"_s},
        {u"aaa"_s, u"aa"_s, u"1 0 0"_s},
        {u"abcd"_s, u"Axyd"_s, u"2 2 1"_s},
        {u"ab"_s, u"ba"_s, u"2 2 0"_s},
    };
    auto const entries = [](QString const& letters) {
        QList<StandInModel::Entry> list;
        for (QChar const letter : letters) {
            list.append({QString(letter.toLower()), QString(letter.toLower()), letter.isUpper(), false});
        }
        return list;
    };
    for (auto const& [before, after, expected] : cases) {
        EntryModel model(EntryModel::Mark::Ticked);
        QAbstractItemModelTester const tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.setEntries(entries(before));
        int removed = 0;
        int inserted = 0;
        int changed = 0;
        connect(&model, &EntryModel::rowsRemoved, this, [&](auto&, int a, int b) { removed += b - a + 1; });
        connect(&model, &EntryModel::rowsInserted, this, [&](auto&, int a, int b) { inserted += b - a + 1; });
        connect(&model, &EntryModel::dataChanged, this,
            [&](QModelIndex const& a, QModelIndex const& b) { changed += b.row() - a.row() + 1; });
        model.setEntries(entries(after));

        QString shown;
        for (int row = 0; row < model.rowCount(); ++row) {
            auto const index = model.index(row);
            QString const letter = index.data(Qt::DisplayRole).toString();
            shown += index.data(Qt::CheckStateRole).toInt() == Qt::Checked ? letter.toUpper() : letter;
        }
        QCOMPARE(before + shown, before + after);
        QCOMPARE(
            u"%1: %2 %3 %4"_s.arg(after).arg(removed).arg(inserted).arg(changed), after + u": "_s + expected);
    }
}

// ---- Traffic, settings, and all the rest

void tst_Window::showsTraffic()
{
    auto& lines = *find<QTreeView>("lines").model();
    QString published;
    connect(host.get(), &DevHost::publicationReceived, this, [&](QJsonObject const& payload) {
        published = payload.value("streamingStatus"_L1)
                        .toString(payload.value("recordingStatus"_L1).toString(published));
    });
    auto const goLive = [&](bool on) {
        desktop().setStreaming(on);
        return QTest::qWaitFor([&] { return published == (on ? "live"_L1 : "offline"_L1); });
    };
    QVERIFY(goLive(true)); // heard before anybody looks
    trigger("actGoTraffic");
    QVERIFY(goLive(false));
    auto const shows = [&](QString const& way, QString const& part,
                           int column = TrafficModel::MessageColumn) {
        for (int row = 0; row < lines.rowCount(); ++row) {
            if (lines.index(row, TrafficModel::WayColumn).data() == way &&
                lines.index(row, column).data().toString().contains(part)) {
                return true;
            }
        }
        return false;
    };
    QTRY_VERIFY(shows(u"Streamlabs Desktop → service"_s, u"\"data\":\"live\""_s));
    QTRY_VERIFY(shows(u"Streamlabs Desktop → service"_s, u"\"data\":\"ending\""_s));
    QTRY_VERIFY(shows(u"relay → client 1"_s, u"\"streamingStatus\":\"ending\""_s));
    // The newest stays in sight, unless one looks at an older one.
    auto* const bar = find<QTreeView>("lines").verticalScrollBar();
    QTRY_VERIFY(bar->maximum() > 0 && bar->value() == bar->maximum());
    bar->setValue(0);
    int const rangeBefore = bar->maximum();
    QVERIFY(goLive(true));
    QTRY_VERIFY(shows(u"relay → client 1"_s, u"\"streamingStatus\":\"live\""_s));
    QTRY_VERIFY(bar->maximum() > rangeBefore); // once the new ones have been laid out
    QCOMPARE(bar->value(), 0);
    QWebSocket namesItself;
    connect(&namesItself, &QWebSocket::connected, &namesItself, [&] {
        namesItself.sendTextMessage(
            uR"({"task":"remote.command.subscribe.subject","subject":"s","id":"key-4","category":"a.b.scene"})"_s);
    });
    namesItself.open(QUrl(u"ws://127.0.0.1:%1"_s.arg(host->relay().port())));
    auto const isAbout = [&](QString const& way, QString const& task) {
        return shows(way, task, TrafficModel::TaskColumn);
    };
    QTRY_VERIFY(isAbout(u"relay → client 2, scene key-4"_s, u"remote.command.subscribe.subject"_s));
    host->sendTask(u"refreshScenes"_s, {});
    QTRY_VERIFY(isAbout(u"client 1 → relay"_s, u"refreshScenes"_s));
    QTRY_VERIFY(isAbout(u"relay → client 1"_s, u"onQueryScenes"_s));
    QTRY_VERIFY(isAbout(u"service → Streamlabs Desktop"_s, u"getScenes"_s));
    QTRY_VERIFY(isAbout(u"Streamlabs Desktop → service"_s, u"getScenes"_s)); // its answer
    QVERIFY(isAbout(u"Streamlabs Desktop → service"_s, u"streamingStatusChange"_s));
    QVERIFY(shows(u"service → relay"_s, u"\"functionName\":\"STREAM\""_s));
    find<QTreeView>("lines").setCurrentIndex(lines
            .match(lines.index(0, TrafficModel::MessageColumn), Qt::DisplayRole, u"\"jsonrpc\""_s, 1,
                Qt::MatchContains)
            .value(0));
    QVERIFY(find<QPlainTextEdit>("details").toPlainText().contains(u"\n    \"jsonrpc\": \"2.0\""_s));

    int const all = lines.rowCount();
    QTest::keyClicks(window->focusWidget(), u"RELAY ending"_s);
    int const some = lines.rowCount();
    QVERIFY(some > 0 && some < all);
    QVERIFY(!shows(u"Streamlabs Desktop → service"_s, {}));
    QCOMPARE(find<QLabel>("lblCount").text(), u"%1 of %2 messages"_s.arg(some).arg(all));
    find<QLineEdit>("edtFilter").clear();

    click("btnPause");
    desktop().setRecording(true);
    QTRY_COMPARE(published, u"recording"_s);
    click("btnPause");
    host->relay().sendToAll(u"the next"_s);
    QTRY_VERIFY(shows(u"relay → client 1"_s, u"the next"_s));
    QVERIFY(!shows(u"relay → client 1"_s, u"\"recordingStatus\":\"recording\""_s));
    QVERIFY(log->take(u"[MixerPluginDelegate]"_s));
}

void tst_Window::forgetsOldTraffic()
{
    TrafficModel model;
    QAbstractItemModelTester const tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < TrafficModel::kMostLines - 700; ++i) {
            model.add(u"way"_s, {}, u"%1.%2"_s.arg(round).arg(i), 5);
        }
        QVERIFY(QSignalSpy(&model, &TrafficModel::rowsInserted).wait());
        QVERIFY(model.rowCount() <= TrafficModel::kMostLines);
    }
    QCOMPARE(model.index(0, TrafficModel::MessageColumn).data(), u"1.600"_s);
    model.clear();
    model.add(u"way"_s, {}, QString(TrafficModel::kLongestText + 1, u'x'), TrafficModel::kLongestText + 7);
    QTRY_COMPARE(model.rowCount(), 1);
    auto const whole = model.index(0, 0).data(TrafficModel::kWholeTextRole).toString();
    QVERIFY(whole.endsWith(u"… and 7 more characters"_s));
}

void tst_Window::linksInTheSettings()
{
    auto& page = find<QDialog>("HostSettingsDialog");
    QVERIFY(host->console().place(0, host->console().actionIdOf(u"record"_s)));
    QTRY_VERIFY(!face(0).invalid);
    QVERIFY(!page.isVisible());
    host->relay().dispatchEvent(
        {{u"task"_s, ZoRemoteCommands::kLaunchSettingPage}, {u"params"_s, QJsonObject{{u"page"_s, 7}}}});
    QVERIFY(page.isVisible());

    auto& token = find<QLineEdit>("edtToken");
    auto& status = find<QLabel>("lblStatus");
    QString const right = token.text();
    QCOMPARE(find<QSpinBox>("spinPort").value(), host->standIn().port());
    token.setText(u"wrong"_s);
    click("btnReconnect");
    QTRY_VERIFY(status.text().contains(u"Not linked"_s));
    QTRY_VERIFY(face(0).invalid);
    token.setText(right);
    click("btnReconnect");
    QTRY_COMPARE(status.text(), u"● Linked to Streamlabs Desktop"_s);
    QTRY_VERIFY(!face(0).invalid);
    trigger("actDisconnect");
    QTRY_COMPARE(find<QLabel>("lblLink").text(), u"○ Disconnected"_s);
    click("btnConnect");
    QTRY_COMPARE(status.text(), u"● Linked to Streamlabs Desktop"_s);

    // The gear that has opened them goes with the link, and the keyboard stays where it was.
    page.close();
    trigger("actDisconnect");
    auto const* const panel = host->console().key(0)->panelWidget();
    auto* const gear = panel->findChild<QWidget*>(u"btnGoAuth"_s);
    QTRY_VERIFY(gear->isVisible());
    gear->setFocus();
    QTest::keyClick(gear, Qt::Key_Space);
    QTRY_VERIFY(page.isVisible());
    click("btnConnect");
    QTRY_VERIFY(!gear->isVisible());
    click("btnClose");
    QVERIFY(panel->isAncestorOf(window->focusWidget()));
    QVERIFY(window->focusWidget()->isVisible());
}

void tst_Window::leavesARealDesktopAlone()
{
    close();
    StreamlabsStandIn elsewhere;
    QVERIFY(elsewhere.start());
    DevHost::Options options;
    options.desktop = {elsewhere.port(), elsewhere.token()};
    open(options);
    QTRY_COMPARE(find<QLabel>("lblLink").text(), u"● Linked to Streamlabs Desktop"_s);
    QVERIFY(find<QLabel>("lblReal").isVisible());
    QVERIFY(find<QLabel>("lblReal").text().contains(QString::number(elsewhere.port())));
    for (auto const* const action : find<QMenu>("menuDesktop").actions()) {
        QVERIFY2(!action->isEnabled(), qPrintable(action->text()));
    }
}

// Nothing is clipped, without a name for a screen reader, or out of the keyboard's reach; and it fits a small
// screen.
void tst_Window::isForEverybody()
{
    constexpr QSize kScreen(1366, 768);
    constexpr QSize kDecoration(10, 40);
    QVERIFY(window->minimumSizeHint().width() + kDecoration.width() <= kScreen.width());
    QVERIFY(window->minimumSizeHint().height() + kDecoration.height() <= kScreen.height());
    window->resize(kScreen - kDecoration);
    trigger("actPlaceAll");

    // What the mouse drags and clicks, the keyboard does as well.
    auto& console = host->console();
    QStringList const before{console.key(0)->actionId(), console.key(1)->actionId()};
    find<KeyView>("key0").setFocus();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Right, Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(QStringList({console.key(1)->actionId(), console.key(0)->actionId()}), before);
    QCOMPARE(QApplication::focusWidget()->objectName(), u"key1"_s);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_F2);
    QCOMPARE(QApplication::focusWidget()->objectName(), u"lineEdtPluginTitle"_s);
    QSet<QKeySequence> taken;
    for (auto const* const action : window->findChildren<QAction*>()) {
        if (action->isEnabled() && !action->shortcut().isEmpty() &&
            action->shortcutContext() == Qt::WindowShortcut) {
            QVERIFY2(!taken.contains(action->shortcut()), qPrintable(action->text()));
            taken.insert(action->shortcut());
        }
    }

    QSet<QWidget const*> reached;
    trigger("actGoActions");
    for (auto const* page : {"actGoKey", "actGoTraffic"}) {
        trigger(page);
        for (int i = 0; i < 60; ++i) {
            reached.insert(QApplication::focusWidget());
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
        for (auto const* const widget : window->findChildren<QWidget*>()) {
            auto const* const button = qobject_cast<QAbstractButton const*>(widget);
            if (!widget->isVisible() || widget->window() != window.get() ||
                widget->objectName().startsWith("qt_"_L1)) {
                continue;
            }
            if ((button && !button->text().isEmpty()) || qobject_cast<QComboBox const*>(widget)) {
                QVERIFY2(
                    widget->width() >= widget->minimumSizeHint().width(), qPrintable(widget->objectName()));
            }
            bool const tabs = widget->isEnabled() && (widget->focusPolicy() & Qt::TabFocus);
            if (!tabs || widget->focusProxy()) {
                continue;
            }
            QVERIFY2(reached.contains(widget), qPrintable(widget->objectName() + u" cannot be reached"_s));
            auto* const accessible = QAccessible::queryAccessibleInterface(const_cast<QWidget*>(widget));
            QVERIFY2(!accessible->text(QAccessible::Name).isEmpty(),
                qPrintable(widget->objectName() + u" has no name"_s));
        }
    }
}

void tst_Window::keepsHighContrast()
{
    QPalette const before = QApplication::palette();
    for (auto const& [text, ground, isKept] : {std::tuple(QColor(Qt::black), QColor(Qt::white), true),
             {Qt::white, Qt::black, true}, {Qt::black, QColor(240, 240, 240), false}}) {
        DarkTheme::setHighContrast(text, ground);
        DarkTheme::apply(*qApp);
        bool const keeps = isKept; // clang 14 captures no structured binding
        QCOMPARE(window->palette().color(QPalette::Window) == ground, keeps);
        QCOMPARE(DarkTheme::text(DarkTheme::kAccent) == text, keeps);
    }
    qApp->setStyleSheet({});
    QApplication::setPalette(before);
}

void tst_Window::largeWindowsHaveLargerKeys()
{
    QVERIFY(host->console().place(0, host->console().actionIdOf(u"stream"_s)));
    trigger("actLive");
    QTRY_VERIFY(!face(0).invalid);
    QSize const before = keyView(0).size();
    auto const snapshot = [this] { return host->console().key(0)->faceWidget()->grab().toImage(); };
    QImage const plain = snapshot();
    window->resize(2400, 1500);
    QTRY_VERIFY(keyView(0).width() > 2 * ConsoleKey::kFaceSize.width());
    auto const middleOfFace = [&] {
        QImage const view = keyView(0).grab().toImage();
        return view.pixelColor(view.width() / 2, view.height() / 2);
    };
    QCOMPARE(snapshot(), plain);
    QColor const off = middleOfFace(); // inside of the drawing, and outside of the face's own size
    QTest::mouseClick(&keyView(0), Qt::LeftButton, {}, keyView(0).rect().bottomRight() - QPoint(9, 9));
    QTRY_COMPARE(face(0).title, u"Stream"_s);
    QTRY_VERIFY(middleOfFace() != off);
    window->resize(1340, 720);
    QTRY_COMPARE(keyView(0).size(), before);
}

QTEST_MAIN(tst_Window)
#include "tst_Window.moc"
