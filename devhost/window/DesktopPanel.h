#pragma once

#include "devhost/window/EntryModel.h"

#include <QTimer>
#include <QWidget>

#include <memory>

class DevHost;
class QAction;
class QLabel;
class QListView;
class QToolButton;

namespace Ui {
class DesktopPanel;
}

//! The other application beside the console: what the stand-in for Streamlabs Desktop shows, and what its
//! user does in it. With a running Streamlabs Desktop only a line that says so.
//!
//! Its `actions` are what a menu can offer.
class DesktopPanel : public QWidget
{
    Q_OBJECT

public:
    explicit DesktopPanel(QWidget* parent = nullptr);
    ~DesktopPanel() override;

    //! Shows the \a host's Streamlabs Desktop. The host must outlive the panel, or not be used any more.
    void watch(DevHost& host);

    //! Shows at once what has changed, not with the next frame of the screen.
    void refresh();
    //! Where the keyboard goes first.
    void focusFirst();

signals:
    //! Something could not be done, and why.
    void refused(QString const& why);

private:
    StandInModel& desktop() const;
    void connectActions();
    void connectLists();
    //! Buttons and context menu of one list: their keys work in that list only.
    void offer(QListView* list, QList<QAction*> const& actions);

    //! One refresh for all that happens within a frame of the screen.
    void refreshSoon();
    void refreshOutputs();
    static void showOutput(QToolButton* button, QLabel* label, QString const& status);
    void refreshCollections();

    void run(bool on);
    void replaceContents(std::function<void()> const& replace);
    void generate();
    void addScene();
    void addItem();
    void addAudio();
    void switchScene();
    //! Shows what was added, ready to get its name.
    void editLast(QListView* list);
    void check(bool done);
    QString shownScene() const { return scenes.idAt(shownSceneIndex); }

    std::unique_ptr<Ui::DesktopPanel> ui;
    DevHost* devHost = nullptr;
    EntryModel scenes{EntryModel::Mark::Active};
    EntryModel items{EntryModel::Mark::Ticked};
    EntryModel audio{EntryModel::Mark::Ticked};
    //! The scene whose items are listed.
    QPersistentModelIndex shownSceneIndex;
    QString activeScene;
    QTimer refreshing;
};
