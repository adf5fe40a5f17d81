#include "devhost/window/MainWindow.h"

#include "devhost/host/DevHost.h"
#include "devhost/host/PackageActions.h"
#include "devhost/window/ConsoleHistory.h"
#include "devhost/window/HostSettingsDialog.h"
#include "ui_MainWindow.h"

#include <QAbstractItemView>
#include <QCloseEvent>
#include <QFileDialog>
#include <QLabel>
#include <QSettings>

#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;

MainWindow::MainWindow(DevHost& host, QString settingsFile, QWidget* parent)
    : QMainWindow(parent)
    , ui(std::make_unique<Ui::MainWindow>())
    , devHost(host)
    , console(host.console())
    , history(new ConsoleHistory(console, this))
    , settingsPath(std::move(settingsFile))
    , hostSettings(new HostSettingsDialog(host, this))
    , link(new QLabel)
{
    ui->setupUi(this);
    ui->middle->setStretchFactor(0, 1);
    ui->middle->setStretchFactor(1, 0);
    link->setObjectName(u"lblLink"_s);
    constexpr auto kSoon = std::chrono::milliseconds(500);
    storing.setSingleShot(true);
    storing.setInterval(kSoon);
    storing.callOnTimeout(this, &MainWindow::store);
    connectHost();
    connectMenus();
    fill();
    restore();
    showLink();
}

MainWindow::~MainWindow() = default;

void MainWindow::fill()
{
    auto const actions = PackageActions::read(devHost.plugin());
    QHash<QString, QString> labels;
    for (auto const& action : actions) {
        labels.insert(action.id, action.label);
        actionIds.append(action.id);
    }
    ui->listActions->setActions(actions);
    constexpr int kMargin = 3;
    auto* const about = new QLabel(tr("%1, relay on port %2")
            .arg(PackageActions::packageLabel(devHost.plugin()))
            .arg(devHost.relay().port()));
    link->setMargin(kMargin);
    about->setMargin(kMargin);
    ui->statusbar->addWidget(link);
    ui->statusbar->addPermanentWidget(about);
    ui->desktop->watch(devHost);
    ui->traffic->watch(devHost);
    ui->console->watch(console, labels);
}

void MainWindow::connectHost()
{
    connect(&devHost, &DevHost::ready, this, [this] { // with the keys that came
        history->restart();
        restoreConsole();
    });
    connect(&devHost.relay(), &RelayServer::ledChanged, this,
        [this](QString const&, QString const& function, bool on) { ui->console->setLed(function, on); });
    connect(&devHost.relay(), &RelayServer::settingsPageRequested, this, &MainWindow::openSettings);
    connect(hostSettings, &HostSettingsDialog::statusChanged, this, &MainWindow::showLink);
    connect(hostSettings, &QDialog::finished, this, [this] {
        // A panel's gear goes when the link comes, and the focus must not fall on "Go live" for it.
        if (focusBefore && !focusBefore->isVisible()) {
            ui->inspector->focusPanel();
        }
    });
    connect(ui->console, &ConsoleView::currentChanged, this, &MainWindow::onCurrentKeyChanged);
    connect(ui->console, &ConsoleView::arranged, this, [this] { storing.start(); });
    connect(ui->listActions, &ActionList::chosen, this, &MainWindow::place);
    connect(ui->desktop, &DesktopPanel::refused, this, &MainWindow::tell);
    connect(ui->inspector, &KeyInspector::iconBuilderAsked, this,
        [this] { tell(tr("The online icon builder belongs to the console's own host.")); });
}

void MainWindow::connectMenus()
{
    connect(ui->actSettings, &QAction::triggered, this, &MainWindow::openSettings);
    connect(ui->actConnect, &QAction::triggered, hostSettings, &HostSettingsDialog::connectDesktop);
    connect(ui->actReconnect, &QAction::triggered, hostSettings, &HostSettingsDialog::reconnectDesktop);
    connect(ui->actDisconnect, &QAction::triggered, hostSettings, &HostSettingsDialog::disconnectDesktop);
    connect(ui->actSavePicture, &QAction::triggered, this, &MainWindow::askForPicture);
    connect(ui->actQuit, &QAction::triggered, this, &QWidget::close);

    connect(ui->actLive, &QAction::toggled, ui->console, &ConsoleView::setLive);
    connect(ui->console, &ConsoleView::liveChanged, ui->actLive, &QAction::setChecked);
    connect(ui->console, &ConsoleView::liveChanged, this, [this] { storing.start(); });
    connect(ui->actPress, &QAction::triggered, ui->console, &ConsoleView::pressCurrent);
    connect(ui->actEditTitle, &QAction::triggered, this, [this] {
        ui->tabs->setCurrentWidget(ui->inspector);
        ui->inspector->focusTitle();
    });
    ui->console->addAction(ui->actEditTitle); // elsewhere F2 edits what is there
    connect(ui->actRemove, &QAction::triggered, ui->console, &ConsoleView::removeCurrent);
    auto* const undo = history->stack().createUndoAction(this, tr("&Undo"));
    auto* const redo = history->stack().createRedoAction(this, tr("&Redo"));
    undo->setObjectName(u"actUndo"_s);
    undo->setShortcut(QKeySequence::Undo);
    redo->setObjectName(u"actRedo"_s);
    redo->setShortcut(QKeySequence::Redo);
    ui->menuKeys->insertActions(ui->actLive, {undo, redo, ui->menuKeys->insertSeparator(ui->actLive)});
    connect(ui->actPlace, &QAction::triggered, this, [this] { place(ui->listActions->currentAction()); });
    connect(ui->actPlaceAll, &QAction::triggered, this, [this] {
        for (auto const& id : std::as_const(actionIds)) {
            place(id);
        }
    });
    connect(ui->actPreviousPage, &QAction::triggered, this, [this] { ui->console->turnPage(-1); });
    connect(ui->actNextPage, &QAction::triggered, this, [this] { ui->console->turnPage(1); });

    connect(ui->actGoActions, &QAction::triggered, this,
        [this] { ui->listActions->setFocus(Qt::ShortcutFocusReason); });
    connect(ui->actGoConsole, &QAction::triggered, ui->console, &ConsoleView::focusCurrent);
    connect(ui->actGoKey, &QAction::triggered, this, [this] {
        ui->tabs->setCurrentWidget(ui->inspector);
        ui->inspector->focusPanel();
    });
    connect(ui->actGoTraffic, &QAction::triggered, this, [this] {
        ui->tabs->setCurrentWidget(ui->traffic);
        ui->traffic->focusFilter();
    });
    connect(ui->actGoDesktop, &QAction::triggered, ui->desktop, &DesktopPanel::focusFirst);
    ui->menuDesktop->addActions(ui->desktop->actions());
}

void MainWindow::place(QString const& actionId)
{
    if (!ui->console->place(actionId)) {
        tell(tr("Every key is taken."));
    }
}

void MainWindow::onCurrentKeyChanged(int index)
{
    bool const taken = console.key(index);
    ui->actPress->setEnabled(taken);
    ui->actRemove->setEnabled(taken);
    ui->actEditTitle->setEnabled(taken);
    ui->inspector->showKey(console, index);
}

void MainWindow::openSettings()
{
    focusBefore = focusWidget();
    hostSettings->show();
    hostSettings->raise();
    hostSettings->activateWindow();
}

void MainWindow::showLink()
{
    hostSettings->showStatusOn(*link);
}

void MainWindow::tell(QString const& text)
{
    constexpr int kReadingTime = 8000;
    ui->statusbar->showMessage(text, kReadingTime);
}

// ---- Pictures and keeping

bool MainWindow::savePicture(QString const& file)
{
    ui->desktop->refresh();
    for (auto* const view : findChildren<QAbstractItemView*>()) {
        view->doItemsLayout(); // which views put off
    }
    return grab().save(file);
}

void MainWindow::askForPicture()
{
    QPixmap const picture = grab(); // without the dialog
    auto* const dialog = new QFileDialog(this, tr("Save a picture"), {}, tr("Pictures (*.png *.jpg)"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setDefaultSuffix(u"png"_s);
    connect(dialog, &QFileDialog::fileSelected, this, [this, picture](QString const& file) {
        tell(picture.save(file) ? tr("Saved as %1.").arg(file) : tr("%1 cannot be written.").arg(file));
    });
    dialog->open();
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    store();
    hostSettings->close();
    event->accept();
}

void MainWindow::store() const
{
    if (settingsPath.isEmpty()) {
        return;
    }
    QSettings settings(settingsPath, QSettings::IniFormat);
    settings.setValue(u"window/geometry"_s, saveGeometry());
    settings.setValue(u"window/middle"_s, ui->middle->saveState());
    settings.setValue(u"inspector/iconFolder"_s, ui->inspector->iconFolder());
    ui->console->store(settings);
}

void MainWindow::restore()
{
    if (settingsPath.isEmpty()) {
        return;
    }
    QSettings const settings(settingsPath, QSettings::IniFormat);
    restoreGeometry(settings.value(u"window/geometry"_s).toByteArray());
    ui->middle->restoreState(settings.value(u"window/middle"_s).toByteArray());
    ui->inspector->setIconFolder(settings.value(u"inspector/iconFolder"_s).toString());
    restoreConsole();
}

void MainWindow::restoreConsole()
{
    if (!settingsPath.isEmpty()) {
        ui->console->restore(QSettings(settingsPath, QSettings::IniFormat));
    }
}
