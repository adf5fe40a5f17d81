#pragma once

#include <QList>
#include <QMainWindow>
#include <QPointer>
#include <QString>
#include <QTimer>

#include <memory>

class Console;
class ConsoleHistory;
class DevHost;
class HostSettingsDialog;
class QAction;
class QLabel;

namespace Ui {
class MainWindow;
}

//! The window of a started development host: the actions, the console, the settings of the chosen key or the
//! traffic, and Streamlabs Desktop at the side.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    //! \a settingsFile: where size and choices are kept for the next time; empty for nowhere. The \a host
    //! must have started; it is stopped before the window goes.
    MainWindow(DevHost& host, QString settingsFile, QWidget* parent = nullptr);
    ~MainWindow() override;

    //! A picture of the window as PNG or whatever the suffix says, in its device's pixels. False when the
    //! file cannot be written.
    bool savePicture(QString const& file);
    //! Tells the user in the status bar.
    void tell(QString const& text);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void fill();
    void connectHost();
    void connectMenus();
    void place(QString const& actionId);
    void onCurrentKeyChanged(int index);
    void openSettings();
    void askForPicture();
    void showLink();
    void store() const;
    void restore();
    void restoreConsole();

    std::unique_ptr<Ui::MainWindow> ui;
    DevHost& devHost;
    Console& console;
    ConsoleHistory* history;
    QString settingsPath;
    HostSettingsDialog* hostSettings;
    //! When the settings were opened.
    QPointer<QWidget> focusBefore;
    QLabel* link;
    QStringList actionIds;
    //! The choices are stored soon after a change, for a program may end without being closed.
    QTimer storing;
};
