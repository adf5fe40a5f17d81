#include "devhost/window/DesktopPanel.h"

#include "devhost/host/DevHost.h"
#include "devhost/window/DarkTheme.h"
#include "ui_DesktopPanel.h"

#include <QAction>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QListView>
#include <QPainter>
#include <QSpinBox>
#include <QStyle>

#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;
using Part = DesktopControl::Part;

namespace {

//! What the window adds to a control.
struct Look
{
    //! The control, or the beginning of the names of several.
    QString control;
    //! On a button.
    QString shortText;
    QString shortcut;
};

Look lookOf(DesktopControl const& control)
{
    bool const isInList = control.part != Part::Application && control.part != Part::Collections;
    QString const verb = control.name.section(u'-', 0, 0);
    for (auto const& look : {Look{u"stream"_s, {}, u"Ctrl+B"_s}, {u"record"_s, {}, u"Ctrl+R"_s},
             {u"interrupt"_s, {}, u"Ctrl+I"_s}, {u"start"_s, DesktopPanel::tr("Start"), u"Ctrl+U"_s},
             {u"stop"_s, DesktopPanel::tr("Quit"), u"Ctrl+U"_s},
             {u"drop"_s, DesktopPanel::tr("Drop link"), u"Ctrl+D"_s}, {u"token"_s, {}, u"Ctrl+T"_s},
             {u"generate"_s, DesktopPanel::tr("Generate…"), u"Ctrl+G"_s}, {u"scene"_s, u"▶"_s, {}},
             {u"add"_s, u"+"_s, isInList ? u"Ins"_s : QString()}, {u"rename"_s, {}, u"F2"_s},
             {u"remove"_s, u"−"_s, isInList ? u"Del"_s : QString()}}) {
        if (look.control == verb) {
            return look;
        }
    }
    return {};
}

//! Ends with "…" where it is too narrow, and then says the whole when it is pointed at.
class Heading final : public QLabel
{
public:
    using QLabel::QLabel;

protected:
    void paintEvent([[maybe_unused]] QPaintEvent* event) override
    {
        QPainter painter(this);
        style()->drawItemText(&painter, contentsRect(), static_cast<int>(alignment()), palette(), isEnabled(),
            fontMetrics().elidedText(text(), Qt::ElideRight, contentsRect().width()), foregroundRole());
    }
    bool event(QEvent* event) override
    {
        if (event->type() == QEvent::ToolTip) {
            bool const isCut = fontMetrics().horizontalAdvance(text()) > contentsRect().width();
            setToolTip(isCut ? text() : QString());
        }
        return QLabel::event(event);
    }
};

} // namespace

DesktopPanel::DesktopPanel(QWidget* parent) : QWidget(parent), ui(std::make_unique<Ui::DesktopPanel>())
{
    ui->setupUi(this);
    makeActions();
    ui->btnLive->setDefaultAction(controlActions[u"stream"_s]);
    ui->btnRecord->setDefaultAction(controlActions[u"record"_s]);
    ui->btnRun->setDefaultAction(controlActions[u"stop"_s]);
    ui->btnDropLink->setDefaultAction(controlActions[u"drop"_s]);
    ui->btnGenerate->setDefaultAction(controlActions[u"generate"_s]);
    ui->btnAddCollection->setDefaultAction(controlActions[u"add-collection"_s]);
    ui->btnRemoveCollection->setDefaultAction(controlActions[u"remove-collection"_s]);
    lastTabStop = ui->btnRemoveCollection;
    makeList(Part::Scenes, EntryModel::Mark::Active, u"Scenes"_s, tr("Scenes"), 3);
    makeList(Part::Items, EntryModel::Mark::Ticked, u"Items"_s, tr("Items"), 4);
    makeList(Part::Audio, EntryModel::Mark::Ticked, u"Audio"_s, tr("Audio, ticked is muted"), 2);
    setTabOrder(lastTabStop, ui->edtToken);
    for (auto* const button : findChildren<QToolButton*>()) {
        button->setAccessibleName(button->defaultAction()->text().remove(u'&'));
    }

    constexpr auto kFrame = std::chrono::milliseconds(16);
    refreshing.setSingleShot(true);
    refreshing.setInterval(kFrame);
    refreshing.callOnTimeout(this, &DesktopPanel::refresh);
}

DesktopPanel::~DesktopPanel() = default;

void DesktopPanel::makeActions()
{
    for (auto const& control : DesktopControls::all()) {
        if (control.name == "collection"_L1) {
            continue; // chosen in the box of collections
        }
        Look const look = lookOf(control);
        QString title = control.title.section(u'|', 0, 0);
        if (control.places.size() > 1 && control.part == Part::Application) {
            title += u'…'; // it asks
        }
        auto* const action = new QAction(title, this);
        action->setObjectName(control.name);
        if (!look.shortText.isEmpty()) {
            action->setIconText(look.shortText);
        }
        action->setShortcut(QKeySequence(look.shortcut));
        action->setToolTip(look.shortcut.isEmpty()
                               ? QString(title).remove(u'&')
                               : tr("%1 (%2)").arg(QString(title).remove(u'&'), look.shortcut));
        connect(action, &QAction::triggered, this, [this, &control] { trigger(control); });
        controlActions.insert(control.name, action);
        if (control.part == Part::Application || control.part == Part::Collections) {
            addAction(action);
        }
    }
}

void DesktopPanel::makeList(
    Part part, EntryModel::Mark mark, QString const& name, QString const& heading, int stretch)
{
    auto* const view = new QListView(this);
    List const made{new Heading(heading, this), view, new EntryModel(mark, this)};
    made.heading->setObjectName(u"lbl"_s + name);
    made.heading->setProperty("heading", true);
    made.heading->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    auto* const head = new QHBoxLayout;
    constexpr int kGap = 2;
    head->setSpacing(kGap);
    head->addWidget(made.heading, 1);
    for (auto const& control : DesktopControls::all()) {
        if (control.part != part) {
            continue;
        }
        auto* const action = controlActions[control.name];
        action->setShortcutContext(Qt::WidgetShortcut);
        view->addAction(action);
        if (action->iconText() != action->text().remove(u'&')) {
            auto* const button = new QToolButton(this);
            button->setObjectName(u"btn-"_s + control.name);
            button->setAutoRaise(true);
            button->setDefaultAction(action);
            head->addWidget(button);
            setTabOrder(std::exchange(lastTabStop, button), button);
        }
    }
    setTabOrder(std::exchange(lastTabStop, view), view);

    view->setObjectName(u"list"_s + name);
    view->setModel(made.model);
    view->setAccessibleName(heading);
    view->setFrameShape(QFrame::NoFrame);
    view->setContextMenuPolicy(Qt::ActionsContextMenu);
    view->setEditTriggers(QAbstractItemView::EditKeyPressed);
    view->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    view->setUniformItemSizes(true);
    constexpr int kLeastHeight = 56;
    view->setMinimumHeight(kLeastHeight);
    // The style draws the boxes of the ticks a shade darker than this, which must differ from the ground.
    QPalette palette = view->palette();
    palette.setColor(QPalette::Window, DarkTheme::kFaintText);
    view->setPalette(palette);
    ui->lists->addLayout(head);
    ui->lists->addWidget(view, stretch);
    lists.insert(part, made);
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
    connectLists();
    refresh();
}

void DesktopPanel::connectLists()
{
    auto const edits = [this](Part part, QString const& rename, QString const& tick, QString const& untick) {
        auto const* const model = list(part).model;
        connect(model, &EntryModel::renameAsked, this,
            [this, rename](QString const& id, QString const& name) { run(rename, {id, name}); });
        connect(model, &EntryModel::tickAsked, this,
            [this, tick, untick](QString const& id, bool on) { run(on ? tick : untick, {id}); });
    };
    edits(Part::Scenes, u"rename-scene"_s, {}, {});
    edits(Part::Items, u"rename-item"_s, u"show"_s, u"hide"_s);
    edits(Part::Audio, u"rename-audio"_s, u"mute"_s, u"unmute"_s);
    auto const* const view = list(Part::Scenes).view;
    connect(view, &QListView::activated, controlActions[u"scene"_s], &QAction::trigger);
    connect(view->selectionModel(), &QItemSelectionModel::currentChanged, this,
        [this](QModelIndex const& current) {
            shownSceneIndex = current;
            refreshSoon();
        });
    connect(ui->boxCollection, &QComboBox::activated, this,
        [this](int row) { run(u"collection"_s, {ui->boxCollection->itemData(row).toString()}); });
    connect(
        ui->edtToken, &QLineEdit::editingFinished, this, [this] { run(u"token"_s, {ui->edtToken->text()}); });
}

void DesktopPanel::focusFirst()
{
    ui->btnLive->setFocus(Qt::ShortcutFocusReason);
}

StandInModel& DesktopPanel::desktop() const
{
    return devHost->standIn().model();
}

DesktopPanel::List const& DesktopPanel::list(Part part) const
{
    return *lists.constFind(part);
}

QString DesktopPanel::chosen(Part part) const
{
    return list(part).model->idAt(list(part).view->currentIndex());
}

QString DesktopPanel::shownScene() const
{
    return list(Part::Scenes).model->idAt(shownSceneIndex);
}

// ---- What its user does

void DesktopPanel::trigger(DesktopControl const& control)
{
    if (control.places.contains(DesktopPlaces::kToken)) {
        ui->edtToken->setFocus(Qt::ShortcutFocusReason);
        ui->edtToken->selectAll();
    } else if (control.places.contains(DesktopPlaces::kScenes)) {
        askForNumbers(control);
    } else if (control.name.startsWith("rename-"_L1)) {
        if (auto* const view = list(control.part).view; view->currentIndex().isValid()) {
            view->edit(view->currentIndex());
        }
    } else {
        QStringList words;
        for (auto const& place : control.places) {
            words.append(wordFor(control, place));
        }
        run(control.name, words);
        if (control.places.contains(DesktopPlaces::kName) && lists.contains(control.part)) {
            editLast(list(control.part).view);
        }
    }
}

QString DesktopPanel::wordFor(DesktopControl const& control, QString const& place)
{
    if (place == DesktopPlaces::kScene) {
        return shownScene();
    }
    if (place == DesktopPlaces::kItem || place == DesktopPlaces::kAudio) {
        return chosen(control.part);
    }
    if (place == DesktopPlaces::kCollection) {
        return desktop().activeCollectionId();
    }
    if (place == DesktopPlaces::kName) {
        switch (control.part) {
        case Part::Scenes:
            return tr("Scene %1").arg(list(control.part).model->rowCount() + 1);
        case Part::Items:
            return tr("Item %1").arg(list(control.part).model->rowCount() + 1);
        case Part::Audio:
            return tr("Audio %1").arg(list(control.part).model->rowCount() + 1);
        default:
            return tr("Collection %1").arg(desktop().collections().size() + 1);
        }
    }
    QString const status =
        control.name == "stream"_L1 ? desktop().streamingStatus() : desktop().recordingStatus();
    return status == "offline"_L1 ? u"on"_s : u"off"_s;
}

void DesktopPanel::run(QString const& control, QStringList const& words)
{
    if (words.contains(QString()) && control != "token"_L1) {
        emit refused(tr("Nothing is chosen."));
    } else if (QString const problem =
                   DesktopControls::run(*DesktopControls::find(control), devHost->standIn(), words);
        !problem.isEmpty()) {
        emit refused(tr("Streamlabs Desktop: %1.").arg(problem));
    }
    refreshSoon(); // the widgets show what is, not what was clicked
}

void DesktopPanel::askForNumbers(DesktopControl const& control)
{
    auto* const dialog = new QDialog(this);
    dialog->setObjectName(u"numbers"_s);
    dialog->setWindowTitle(QString(control.title).remove(u'&'));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    auto* const form = new QFormLayout(dialog);
    QList<QSpinBox*> numbers;
    for (auto const& place : control.places) {
        QString label = place.toLower().replace(u'_', u' ');
        label[0] = label[0].toUpper();
        auto* const number = new QSpinBox;
        number->setRange(place == DesktopPlaces::kScenes ? 1 : 0, StandInModel::kMostObjects);
        number->setValue(place == DesktopPlaces::kAudioSources ? 10 : 40);
        number->setAccelerated(true);
        form->addRow(u'&' + label, number);
        numbers.append(number);
    }
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    form->addRow(buttons);
    connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    connect(dialog, &QDialog::accepted, this, [this, name = control.name, numbers] {
        QStringList words;
        for (auto const* const number : numbers) {
            words.append(number->cleanText());
        }
        activeScene.clear();
        run(name, words);
    });
    numbers.constFirst()->selectAll();
    dialog->open();
}

void DesktopPanel::editLast(QListView* view)
{
    int const before = view->model()->rowCount();
    refresh();
    if (int const rows = view->model()->rowCount(); rows > before) {
        auto const last = view->model()->index(rows - 1, 0);
        view->setFocus();
        view->setCurrentIndex(last);
        view->edit(last);
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
    refreshApplication();
    refreshCollections();

    auto const& scenes = list(Part::Scenes);
    scenes.model->setEntries(desktop().sceneEntries());
    if (QString const active = desktop().activeSceneId(); active != activeScene) {
        activeScene = active;
        scenes.view->setCurrentIndex(scenes.model->indexOf(active));
    } else if (!shownSceneIndex.isValid()) {
        scenes.view->setCurrentIndex(scenes.model->indexOf(active));
    }
    list(Part::Items).model->setEntries(desktop().nodeEntries(shownScene()));
    list(Part::Audio).model->setEntries(desktop().audioEntries());
    list(Part::Items)
        .heading->setText(shownSceneIndex.isValid() ? tr("Shown in %1").arg(shownSceneIndex.data().toString())
                                                    : tr("Items"));
    scenes.heading->setText(desktop().isLoading() ? tr("Scenes are being loaded …") : tr("Scenes"));
}

void DesktopPanel::refreshOutput(
    QString const& control, QToolButton* button, QLabel* label, QString const& status)
{
    bool const on = status != "offline"_L1;
    auto* const action = controlActions[control];
    action->setText(DesktopControls::find(control)->title.section(u'|', on ? 1 : 0, on ? 1 : 0));
    action->setEnabled(devHost->standIn().isRunning());
    QPalette palette;
    if (on) {
        palette.setColor(QPalette::Button, DarkTheme::kOnAir);
        palette.setColor(QPalette::ButtonText, DarkTheme::kText);
    }
    button->setPalette(palette);
    label->setText(devHost->standIn().isRunning() ? status : QString());
}

void DesktopPanel::refreshApplication()
{
    auto& standIn = devHost->standIn();
    QString const streaming = desktop().streamingStatus();
    refreshOutput(u"stream"_s, ui->btnLive, ui->lblLive, streaming);
    refreshOutput(u"record"_s, ui->btnRecord, ui->lblRecord, desktop().recordingStatus());
    controlActions[u"interrupt"_s]->setEnabled(streaming == "live"_L1);

    bool const running = standIn.isRunning();
    controlActions[u"start"_s]->setEnabled(!running);
    controlActions[u"stop"_s]->setEnabled(running);
    ui->btnRun->setDefaultAction(controlActions[running ? u"stop"_s : u"start"_s]);
    ui->btnRun->setAccessibleName(ui->btnRun->defaultAction()->text().remove(u'&'));
    controlActions[u"drop"_s]->setEnabled(standIn.clientCount() > 0);
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
        auto const collection = collections.at(row);
        same = collection[u"id"_s] == box->itemData(row).toString() &&
               collection[u"name"_s] == box->itemText(row);
    }
    if (!same) {
        box->clear();
        for (auto const& collection : collections) {
            box->addItem(collection[u"name"_s].toString(), collection[u"id"_s].toString());
        }
    }
    box->setCurrentIndex(box->findData(desktop().activeCollectionId()));
    controlActions[u"remove-collection"_s]->setEnabled(collections.size() > 1);
}
