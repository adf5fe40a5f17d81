#include "devhost/MainWindow.h"

#include "devhost/DarkTheme.h"
#include "devhost/DevHost.h"
#include "devhost/HostSettingsDialog.h"
#include "devhost/PackageActions.h"
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
    , m_host(host)
    , m_console(host.console())
    , m_settingsFile(std::move(settingsFile))
    , m_settings(new HostSettingsDialog(host, this))
    , m_link(new QLabel)
{
    ui->setupUi(this);
    ui->middle->setStretchFactor(0, 1);
    ui->middle->setStretchFactor(1, 0);
    m_link->setObjectName(u"lblLink"_s);
    constexpr auto soon = std::chrono::milliseconds(500);
    m_storing.setSingleShot(true);
    m_storing.setInterval(soon);
    m_storing.callOnTimeout(this, &MainWindow::store);
    connectHost();
    connectMenus();
    fill();
    restore();
    showLink();
}

MainWindow::~MainWindow() = default;

void MainWindow::fill()
{
    auto const actions = PackageActions::read(m_host.plugin());
    QHash<QString, QString> labels;
    for (auto const& action : actions) {
        labels.insert(action.id, action.label);
        m_actionIds.append(action.id);
    }
    ui->listActions->setActions(actions);
    constexpr int margin = 3;
    auto* const about = new QLabel(tr("%1, relay on port %2")
            .arg(PackageActions::packageLabel(m_host.plugin()))
            .arg(m_host.relay().port()));
    m_link->setMargin(margin);
    about->setMargin(margin);
    ui->statusbar->addWidget(m_link);
    ui->statusbar->addPermanentWidget(about);
    ui->desktop->watch(m_host);
    ui->traffic->watch(m_host);
    ui->console->watch(m_console, labels);
}

void MainWindow::connectHost()
{
    connect(&m_host, &DevHost::ready, this, &MainWindow::restoreConsole); // with the keys that came
    connect(&m_host.relay(), &RelayServer::ledChanged, this,
        [this](QString const&, QString const& function, bool on) { ui->console->setLed(function, on); });
    connect(&m_host.relay(), &RelayServer::settingsPageRequested, this, &MainWindow::openSettings);
    connect(m_settings, &HostSettingsDialog::statusChanged, this, &MainWindow::showLink);
    connect(m_settings, &QDialog::finished, this, [this] {
        // A panel's gear goes when the link comes, and the focus must not fall on "Go live" for it.
        if (m_focusBefore && !m_focusBefore->isVisible()) {
            ui->inspector->focusPanel();
        }
    });
    connect(ui->console, &ConsoleView::currentChanged, this, &MainWindow::onCurrentKeyChanged);
    connect(ui->console, &ConsoleView::arranged, this, [this] { m_storing.start(); });
    connect(ui->listActions, &ActionList::chosen, this, &MainWindow::place);
    connect(ui->desktop, &DesktopPanel::refused, this, &MainWindow::tell);
    connect(ui->inspector, &KeyInspector::iconBuilderAsked, this,
        [this] { tell(tr("The online icon builder belongs to the console's own host.")); });
}

void MainWindow::connectMenus()
{
    connect(ui->actSettings, &QAction::triggered, this, &MainWindow::openSettings);
    connect(ui->actConnect, &QAction::triggered, m_settings, &HostSettingsDialog::connectDesktop);
    connect(ui->actReconnect, &QAction::triggered, m_settings, &HostSettingsDialog::reconnectDesktop);
    connect(ui->actDisconnect, &QAction::triggered, m_settings, &HostSettingsDialog::disconnectDesktop);
    connect(ui->actSavePicture, &QAction::triggered, this, &MainWindow::askForPicture);
    connect(ui->actQuit, &QAction::triggered, this, &QWidget::close);

    connect(ui->actPress, &QAction::triggered, ui->console, &ConsoleView::pressCurrent);
    connect(ui->actEditTitle, &QAction::triggered, this, [this] {
        ui->tabs->setCurrentWidget(ui->inspector);
        ui->inspector->focusTitle();
    });
    connect(ui->actRemove, &QAction::triggered, ui->console, &ConsoleView::removeCurrent);
    connect(ui->actPlace, &QAction::triggered, this, [this] { place(ui->listActions->currentAction()); });
    connect(ui->actPlaceAll, &QAction::triggered, this, [this] {
        for (auto const& id : std::as_const(m_actionIds)) {
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
    bool const taken = m_console.key(index);
    ui->actPress->setEnabled(taken);
    ui->actRemove->setEnabled(taken);
    ui->actEditTitle->setEnabled(taken);
    ui->inspector->showKey(m_console, index);
}

void MainWindow::openSettings()
{
    m_focusBefore = focusWidget();
    m_settings->show();
    m_settings->raise();
    m_settings->activateWindow();
}

void MainWindow::showLink()
{
    QPalette palette = m_link->palette();
    palette.setColor(QPalette::WindowText, m_settings->isLinked() ? DarkTheme::good : DarkTheme::faintText);
    m_link->setPalette(palette);
    m_link->setText(u"● "_s + m_settings->status());
}

void MainWindow::tell(QString const& text)
{
    constexpr int readingTime = 8000;
    ui->statusbar->showMessage(text, readingTime);
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
    m_settings->close();
    event->accept();
}

void MainWindow::store() const
{
    if (m_settingsFile.isEmpty()) {
        return;
    }
    QSettings settings(m_settingsFile, QSettings::IniFormat);
    settings.setValue(u"window/geometry"_s, saveGeometry());
    settings.setValue(u"window/middle"_s, ui->middle->saveState());
    settings.setValue(u"inspector/iconFolder"_s, ui->inspector->iconFolder());
    ui->console->store(settings);
}

void MainWindow::restore()
{
    if (m_settingsFile.isEmpty()) {
        return;
    }
    QSettings const settings(m_settingsFile, QSettings::IniFormat);
    restoreGeometry(settings.value(u"window/geometry"_s).toByteArray());
    ui->middle->restoreState(settings.value(u"window/middle"_s).toByteArray());
    ui->inspector->setIconFolder(settings.value(u"inspector/iconFolder"_s).toString());
    restoreConsole();
}

void MainWindow::restoreConsole()
{
    if (!m_settingsFile.isEmpty()) {
        ui->console->restore(QSettings(m_settingsFile, QSettings::IniFormat));
    }
}
