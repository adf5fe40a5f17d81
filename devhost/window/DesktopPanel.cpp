#include "devhost/window/DesktopPanel.h"

#include "devhost/host/DevHost.h"
#include "devhost/window/DarkTheme.h"
#include "devhost/window/GenerateDialog.h"
#include "ui_DesktopPanel.h"

#include <QSignalBlocker>

#include <chrono>

using namespace Qt::StringLiterals;

DesktopPanel::DesktopPanel(QWidget* parent) : QWidget(parent), ui(std::make_unique<Ui::DesktopPanel>())
{
    ui->setupUi(this);
    ui->listScenes->setModel(&scenes);
    ui->listItems->setModel(&items);
    ui->listAudio->setModel(&audio);

    ui->btnLive->setDefaultAction(ui->actLive);
    ui->btnRecord->setDefaultAction(ui->actRecord);
    ui->btnRun->setDefaultAction(ui->actRun);
    ui->btnDropLink->setDefaultAction(ui->actDropLink);
    ui->btnGenerate->setDefaultAction(ui->actGenerate);
    ui->btnAddCollection->setDefaultAction(ui->actAddCollection);
    ui->btnRemoveCollection->setDefaultAction(ui->actRemoveCollection);
    ui->btnSwitchScene->setDefaultAction(ui->actSwitchScene);
    ui->btnAddScene->setDefaultAction(ui->actAddScene);
    ui->btnRemoveScene->setDefaultAction(ui->actRemoveScene);
    ui->btnAddItem->setDefaultAction(ui->actAddItem);
    ui->btnRemoveItem->setDefaultAction(ui->actRemoveItem);
    ui->btnAddAudio->setDefaultAction(ui->actAddAudio);
    ui->btnRemoveAudio->setDefaultAction(ui->actRemoveAudio);
    for (auto* const button : findChildren<QToolButton*>()) {
        button->setAccessibleName(button->defaultAction()->text().remove(u'&'));
    }
    offer(ui->listScenes, {ui->actSwitchScene, ui->actAddScene, ui->actRenameScene, ui->actRemoveScene});
    offer(ui->listItems, {ui->actAddItem, ui->actRenameItem, ui->actRemoveItem});
    offer(ui->listAudio, {ui->actAddAudio, ui->actRenameAudio, ui->actRemoveAudio});

    constexpr auto kFrame = std::chrono::milliseconds(16);
    refreshing.setSingleShot(true);
    refreshing.setInterval(kFrame);
    refreshing.callOnTimeout(this, &DesktopPanel::refresh);
}

DesktopPanel::~DesktopPanel() = default;

void DesktopPanel::offer(QListView* list, QList<QAction*> const& actions)
{
    // The style draws the boxes of the ticks a shade darker than this, which must differ from the ground.
    QPalette palette = list->palette();
    palette.setColor(QPalette::Window, DarkTheme::kFaintText);
    list->setPalette(palette);
    for (auto* const action : actions) {
        action->setShortcutContext(Qt::WidgetShortcut);
    }
    list->addActions(actions);
}

void DesktopPanel::watch(DevHost& host)
{
    devHost = &host;
    if (!host.usesStandIn()) {
        ui->lblReal->setText(
            tr("A running Streamlabs Desktop is used, on port %1. Its own window shows what is "
               "going on there.")
                .arg(host.desktop().port));
        ui->pages->setCurrentWidget(ui->pageReal);
        for (auto* const action : actions()) {
            action->setEnabled(false);
        }
        return;
    }
    connect(&desktop(), &StandInModel::changed, this, &DesktopPanel::refreshSoon);
    connect(&host.standIn(), &StreamlabsStandIn::clientCountChanged, this, &DesktopPanel::refreshSoon);
    connect(&host.standIn(), &StreamlabsStandIn::runningChanged, this, &DesktopPanel::refreshSoon);
    connectActions();
    connectLists();
    refresh();
}

void DesktopPanel::focusFirst()
{
    ui->btnLive->setFocus(Qt::ShortcutFocusReason);
}

StandInModel& DesktopPanel::desktop() const
{
    return devHost->standIn().model();
}

void DesktopPanel::check(bool done)
{
    if (!done) {
        emit refused(tr("Streamlabs Desktop cannot do that now."));
    }
}

// ---- What its user does

void DesktopPanel::connectActions()
{
    // A button shows what is, not what was clicked: the refresh sets it right.
    connect(ui->actLive, &QAction::triggered, this, [this] {
        check(desktop().toggleStreaming());
        refreshSoon();
    });
    connect(ui->actRecord, &QAction::triggered, this, [this] {
        check(desktop().toggleRecording());
        refreshSoon();
    });
    connect(ui->actInterrupt, &QAction::triggered, this, [this] { check(desktop().interruptStream()); });
    connect(ui->actRun, &QAction::triggered, this, [this] { run(!devHost->standIn().isRunning()); });
    connect(ui->actDropLink, &QAction::triggered, this, [this] { devHost->standIn().drop(); });
    connect(ui->actToken, &QAction::triggered, this, [this] {
        ui->edtToken->setFocus(Qt::ShortcutFocusReason);
        ui->edtToken->selectAll();
    });
    connect(ui->edtToken, &QLineEdit::editingFinished, this,
        [this] { devHost->standIn().setToken(ui->edtToken->text()); });
    connect(ui->actGenerate, &QAction::triggered, this, &DesktopPanel::generate);
    connect(ui->actDemo, &QAction::triggered, this,
        [this] { replaceContents([this] { desktop().loadDemo(); }); });
    connect(ui->boxCollection, &QComboBox::activated, this,
        [this](int row) { check(desktop().switchCollection(ui->boxCollection->itemData(row).toString())); });
    connect(ui->actAddCollection, &QAction::triggered, this, [this] {
        check(desktop().addCollection(tr("Collection %1").arg(desktop().collections().size() + 1)));
    });
    connect(ui->actRemoveCollection, &QAction::triggered, this,
        [this] { check(desktop().removeCollection(desktop().activeCollectionId())); });

    connect(ui->actAddScene, &QAction::triggered, this, &DesktopPanel::addScene);
    connect(ui->actAddItem, &QAction::triggered, this, &DesktopPanel::addItem);
    connect(ui->actAddAudio, &QAction::triggered, this, &DesktopPanel::addAudio);
    connect(ui->actSwitchScene, &QAction::triggered, this, &DesktopPanel::switchScene);
    connect(ui->actRemoveScene, &QAction::triggered, this,
        [this] { check(desktop().removeScene(scenes.idAt(ui->listScenes->currentIndex()))); });
    connect(ui->actRemoveItem, &QAction::triggered, this,
        [this] { check(desktop().removeItem(items.idAt(ui->listItems->currentIndex()))); });
    connect(ui->actRemoveAudio, &QAction::triggered, this,
        [this] { check(desktop().removeAudioSource(audio.idAt(ui->listAudio->currentIndex()))); });
    auto const renames = [](QAction* action, QListView* list) {
        connect(action, &QAction::triggered, list, [list] {
            if (list->currentIndex().isValid()) {
                list->edit(list->currentIndex());
            }
        });
    };
    renames(ui->actRenameScene, ui->listScenes);
    renames(ui->actRenameItem, ui->listItems);
    renames(ui->actRenameAudio, ui->listAudio);
}

void DesktopPanel::connectLists()
{
    connect(ui->listScenes, &QListView::activated, this, &DesktopPanel::switchScene);
    connect(ui->listScenes->selectionModel(), &QItemSelectionModel::currentChanged, this,
        [this](QModelIndex const& current) {
            shownSceneIndex = current;
            refreshSoon();
        });
    connect(&scenes, &EntryModel::renameAsked, this,
        [this](QString const& id, QString const& name) { check(desktop().renameScene(id, name)); });
    connect(&items, &EntryModel::renameAsked, this,
        [this](QString const& id, QString const& name) { check(desktop().renameItem(id, name)); });
    connect(&items, &EntryModel::tickAsked, this,
        [this](QString const& id, bool on) { check(desktop().setItemVisible(id, on)); });
    connect(&audio, &EntryModel::renameAsked, this,
        [this](QString const& id, QString const& name) { check(desktop().renameAudioSource(id, name)); });
    connect(&audio, &EntryModel::tickAsked, this,
        [this](QString const& id, bool on) { check(desktop().setMuted(id, on)); });
}

void DesktopPanel::run(bool on)
{
    if (!on) {
        devHost->standIn().stop();
    } else if (!devHost->startStandIn()) {
        emit refused(tr("Another program has taken the port meanwhile."));
    }
    refreshSoon();
}

// Clients learn of it as of a restart of the application, for there are no events for it.
void DesktopPanel::replaceContents(std::function<void()> const& replace)
{
    bool const wasRunning = devHost->standIn().isRunning();
    devHost->standIn().stop();
    replace();
    activeScene.clear();
    if (wasRunning) {
        run(true);
    }
    refreshSoon();
}

void DesktopPanel::generate()
{
    auto* const dialog = new GenerateDialog(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::accepted, this, [this, dialog] {
        replaceContents(
            [&] { desktop().generate(dialog->scenes(), dialog->items(), dialog->audioSources()); });
    });
    dialog->open();
}

void DesktopPanel::addScene()
{
    check(desktop().addScene(tr("Scene %1").arg(scenes.rowCount() + 1)));
    editLast(ui->listScenes);
}

void DesktopPanel::addItem()
{
    check(desktop().addItem(shownScene(), tr("Item %1").arg(items.rowCount() + 1)));
    editLast(ui->listItems);
}

void DesktopPanel::addAudio()
{
    check(desktop().addAudioSource(tr("Audio %1").arg(audio.rowCount() + 1)));
    editLast(ui->listAudio);
}

void DesktopPanel::switchScene()
{
    check(desktop().switchScene(scenes.idAt(ui->listScenes->currentIndex())));
}

void DesktopPanel::editLast(QListView* list)
{
    int const before = list->model()->rowCount();
    refresh();
    if (int const rows = list->model()->rowCount(); rows > before) {
        auto const last = list->model()->index(rows - 1, 0);
        list->setFocus();
        list->setCurrentIndex(last);
        list->edit(last);
    }
}

// ---- What it shows

void DesktopPanel::refreshSoon()
{
    if (!refreshing.isActive()) { // not put off by what goes on changing
        refreshing.start();
    }
}

void DesktopPanel::refresh()
{
    refreshing.stop();
    if (!devHost || !devHost->usesStandIn()) {
        return;
    }
    refreshOutputs();
    refreshCollections();

    scenes.setEntries(desktop().sceneEntries());
    if (QString const active = desktop().activeSceneId(); active != activeScene) {
        activeScene = active;
        ui->listScenes->setCurrentIndex(scenes.indexOf(active));
    } else if (!shownSceneIndex.isValid()) {
        ui->listScenes->setCurrentIndex(scenes.indexOf(active));
    }
    items.setEntries(desktop().nodeEntries(shownScene()));
    audio.setEntries(desktop().audioEntries());
    ui->lblItems->setText(
        shownSceneIndex.isValid() ? tr("Shown in %1").arg(shownSceneIndex.data().toString()) : tr("Items"));
    ui->lblScenes->setText(desktop().isLoading() ? tr("Scenes are being loaded …") : tr("Scenes"));
}

void DesktopPanel::showOutput(QToolButton* button, QLabel* label, QString const& status)
{
    bool const on = status != "offline"_L1;
    button->defaultAction()->setChecked(on);
    QPalette palette;
    if (on) {
        palette.setColor(QPalette::Button, DarkTheme::kOnAir);
    }
    button->setPalette(palette);
    label->setText(status);
}

void DesktopPanel::refreshOutputs()
{
    auto& standIn = devHost->standIn();
    QString const streaming = desktop().streamingStatus();
    QString const recording = desktop().recordingStatus();
    QString const offline = u"offline"_s;
    ui->actLive->setText(streaming == offline ? tr("Go &live") : tr("End the &stream"));
    ui->actRecord->setText(recording == offline ? tr("&Record") : tr("Stop the &recording"));
    showOutput(ui->btnLive, ui->lblLive, streaming);
    showOutput(ui->btnRecord, ui->lblRecord, recording);
    ui->actInterrupt->setEnabled(streaming == "live"_L1);

    bool const running = standIn.isRunning();
    ui->actRun->setText(running ? tr("Q&uit the application") : tr("Start the &application"));
    ui->actRun->setIconText(running ? tr("Quit") : tr("Start"));
    ui->actDropLink->setEnabled(standIn.clientCount() > 0);
    ui->lblApplication->setText(
        !running                        ? tr("Stand-in, not running")
        : standIn.authorizedCount() > 0 ? tr("Stand-in on port %1, linked").arg(standIn.port())
        : standIn.clientCount() > 0     ? tr("Stand-in on port %1, wrong token").arg(standIn.port())
                                        : tr("Stand-in on port %1, no client").arg(standIn.port()));
    if (!ui->edtToken->hasFocus()) {
        ui->edtToken->setText(standIn.token());
    }
}

void DesktopPanel::refreshCollections()
{
    auto const collections = desktop().collections();
    auto* const box = ui->boxCollection;
    bool same = box->count() == collections.size();
    for (int row = 0; same && row < box->count(); ++row) {
        QJsonObject const collection = collections.at(row).toObject();
        same = box->itemData(row).toString() == collection.value("id"_L1).toString() &&
               box->itemText(row) == collection.value("name"_L1).toString();
    }
    if (!same) {
        box->clear();
        for (auto const& value : collections) {
            QJsonObject const collection = value.toObject();
            box->addItem(collection.value("name"_L1).toString(), collection.value("id"_L1).toString());
        }
    }
    box->setCurrentIndex(box->findData(desktop().activeCollectionId()));
    ui->actRemoveCollection->setEnabled(collections.size() > 1);
}
